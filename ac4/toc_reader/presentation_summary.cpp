// The sum that a presentation makes of its groups: layout, counts, name and targets.

#include <algorithm>
#include <limits>

#include "ac4/syntax/reading_limit.h"
#include "ac4/toc_reader/channel_modes.h"
#include "ac4/toc_reader/toc_walk.h"

namespace mediasplit {
namespace {

// Takes one layout in: a code and what it stands for.
void add_layout(std::int32_t code, std::uint32_t bitmap, LayoutSum* sum) {
    sum->common_code = !sum->any || sum->common_code == code ? code : 0;
    sum->bitmap = join_bitmaps(sum->bitmap, bitmap);
    sum->any = true;
}

void add_group(const GroupInfo& group, std::int32_t presentation_version, LayoutSum* sum) {
    const std::int32_t code = channel_mode_in_presentation(group.common_code, presentation_version);
    const ChannelMode* mode = find_channel_mode(code);
    add_layout(code, mode != nullptr ? mode->bitmap : group.channel_bitmap, sum);
    sum->core_bitmap |= group.core_bitmap;
    sum->core_known &= group.core_known;
    sum->all_channel_coded &= group.b_channel_coded;
    sum->lfe |= group.lfe;
    sum->b_4_back_channels_present |= group.b_4_back_channels_present;
    sum->b_centre_present |= group.b_centre_present;
    sum->top_channel_pairs = std::max(sum->top_channel_pairs, group.top_channel_pairs);
    sum->max_objects = std::max(sum->max_objects, group.n_objects);
    sum->substreams += static_cast<std::int32_t>(group.n_substreams);
}

void set_layout(const LayoutSum& sum, const PresentationDescription& presentation,
                PresentationInfo* info) {
    info->all_channel_coded = sum.any && sum.all_channel_coded;
    if (info->all_channel_coded) {
        // A code that all carry is kept as it is: several codes share a bitmap or have none.
        info->channel_mode =
            sum.common_code != 0 ? sum.common_code : channel_mode_of_bitmap(sum.bitmap);
    }
    if (sum.core_known) {
        const std::int32_t core = channel_mode_of_bitmap(sum.core_bitmap);
        info->core_channel_mode = core != info->channel_mode ? core : 0;
    }
    info->lfe = sum.lfe;
    info->has_objects = sum.any && !sum.all_channel_coded;
    info->max_group_objects = static_cast<std::int32_t>(
        std::min<std::int64_t>(sum.max_objects, std::numeric_limits<std::int32_t>::max()));
    info->substream_total = sum.substreams;
    info->substream_count = sum.substreams;
    const bool not_for_immersive_stereo =
        info->channel_mode >= kMode70Wide && info->channel_mode <= kMode71Top;
    if (presentation.version == 2 && not_for_immersive_stereo) {
        info->decodable = false;
    }
}

void read_name(FieldReader& in, PresentationInfo* info) {
    constexpr std::uint32_t kFullName = 32;
    if (!read_flag(in)) {
        return;
    }
    info->name_size = read_flag(in) ? read_field(in, 5) : kFullName;
    for (std::uint32_t i = 0; i < info->name_size; ++i) {
        info->presentation_name[i] = static_cast<char>(read_field(in, 8));
    }
}

void skip_optional(FieldReader& in, int n) {
    if (read_flag(in)) {
        read_field(in, n);
    }
}

TocTarget read_target(FieldReader& in, std::int32_t n_substreams) {
    TocTarget target;
    target.target_level = static_cast<std::int32_t>(read_field(in, 3));
    target.target_device_category = static_cast<std::int32_t>(read_field(in, 4));
    skip_optional(in, 4);  // tdc_extension
    skip_optional(in, 6);  // max_ducking_depth
    skip_optional(in, 5);  // loud_corr_target
    for (std::int32_t i = 0; i < n_substreams && field_ok(in); ++i) {
        if (read_flag(in)) {
            read_extended(in, 1, 1, 2);  // alt_data_set_index
        }
    }
    return target;
}

// The head of ac4_presentation_substream (ETSI TS 103 190-2 clause 6.2.3), which an alternative
// presentation opens with its name and targets. Targets beyond those kept are not looked at.
int read_name_and_targets(Ac4TocReader* reader, PresentationInfo* info) {
    if (passes_reading_limit(reader->target_bits_read,
                             static_cast<std::uint64_t>(reader->frame_bytes))) {
        return kTocLimit;
    }
    const SubstreamSegment& segment = info->presentation_substream;
    orv_bitbuf bits;
    orv_bitbuf_init(&bits, reader->bits.base + segment.offset,
                    static_cast<std::int64_t>(segment.size) * 8);
    FieldReader in;
    in.bits = &bits;
    read_name(in, info);
    std::uint32_t n_targets = read_field(in, 2) + 1;
    if (n_targets == 4) {
        n_targets += read_variable_bits(in, 2);
    }
    info->n_targets = field_ok(in) ? static_cast<std::int32_t>(n_targets) : 0;
    for (std::size_t i = 0; i < n_targets && i < info->targets.size() && field_ok(in); ++i) {
        info->targets[i] = read_target(in, info->substream_total);
    }
    reader->target_bits_read += field_position(in);
    if (in.error == FieldError::kTooLong) {
        return kTocLimit;
    }
    return field_ok(in) ? kTocOk : kTocNoData;
}

void copy_description(const TocHead& head, const PresentationDescription& presentation,
                      PresentationInfo* info) {
    const bool group_syntax = head.bitstream_version == kGroupSyntaxVersion;
    *info = PresentationInfo{};
    info->decodable = AC4_ANALYZE_ac4toc_set_decodable_flag(head.bitstream_version, presentation);
    info->b_single_substream = presentation.config == kConfigSingle;
    info->presentation_version_plus1 = presentation.version + 1;
    info->type_code = presentation_config_facts(presentation.config, group_syntax).type_code;
    info->mdcompat_plus1 = presentation.mdcompat_plus1;
    info->presentation_group_plus1 = presentation.id_plus1;
    info->b_hsf_ext = presentation.b_hsf_ext;
    info->b_emdf = presentation.emdf.substream_index >= 0 || presentation.n_add_emdf > 0;
    info->n_substream_groups_declared = presentation.group_count;
    info->n_substream_groups_used = presentation.groups_used;
    info->b_pre_virtualized = presentation.b_pre_virtualized;
    info->presentation_substream_index = presentation.presentation_substream_index;
    info->frame_rate_multiply = presentation.frame_rate_multiply;
    info->frame_rate_fraction = presentation.frame_rate_fraction;
    if (presentation.group_count > 0) {
        info->presentation_substream_group = presentation.groups[0];
    }
}

}  // namespace

std::int32_t distinct_groups(const Ac4TocReader& reader, std::int32_t* groups) {
    std::int32_t count = 0;
    for (std::int32_t i = 0; i < reader.presentation.group_count; ++i) {
        const std::int32_t group = reader.presentation.groups[static_cast<std::size_t>(i)];
        const bool kept = group < reader.n_substream_groups &&
                          static_cast<std::size_t>(group) < reader.groups.size();
        if (kept && std::find(groups, groups + count, group) == groups + count) {
            groups[count++] = group;
        }
    }
    return count;
}

LayoutSum sum_layouts(const Ac4TocReader& reader) {
    LayoutSum sum;
    const PresentationDescription& presentation = reader.presentation;
    if (reader.head.bitstream_version == kGroupSyntaxVersion) {
        std::array<std::int32_t, kMaxPresentationGroups> groups{};
        const std::int32_t count = distinct_groups(reader, groups.data());
        for (std::int32_t i = 0; i < count; ++i) {
            const std::int32_t group = groups[static_cast<std::size_t>(i)];
            add_group(reader.groups[static_cast<std::size_t>(group)], presentation.version, &sum);
        }
        return sum;
    }
    for (std::int32_t i = 0; i < presentation.substream_count; ++i) {
        const SubstreamInfo& info = reader.inline_substreams[static_cast<std::size_t>(i)].info;
        add_layout(info.channel_mode, info.channel_bitmap, &sum);
        sum.lfe |= info.lfe;
        ++sum.substreams;
    }
    return sum;
}

int AC4_ANALYZE_ac4toc_get_presentation_info_pvt(Ac4TocReader* reader, PresentationInfo* info) {
    const PresentationDescription& presentation = reader->presentation;
    copy_description(reader->head, presentation, info);
    set_layout(sum_layouts(*reader), presentation, info);
    if (presentation.presentation_substream_index < 0) {
        return kTocOk;
    }
    const int result = AC4_ANALYZE_ac4toc_get_substream_segment_info(
        reader, presentation.presentation_substream_index, &info->presentation_substream);
    if (result != kTocOk || !presentation.b_alternative) {
        return result;
    }
    return read_name_and_targets(reader, info);
}

}  // namespace mediasplit
