#include "ac4/toc_reader/substream_syntax.h"

#include <algorithm>
#include <array>

#include "ac4/toc_reader/channel_modes.h"
#include "ac4/toc_reader/object_syntax.h"

namespace mediasplit {
namespace {

constexpr std::int32_t kBaseRate441 = 44100;
constexpr std::array<std::int32_t, 3> kRates48 = {48000, 96000, 192000};

void read_sample_rate(TocParser& parser, SubstreamInfo* info) {
    if (parser.head.fs_index == 1 && read_flag(parser.in)) {
        info->sf_multiplier = read_flag(parser.in) ? 2 : 1;
    }
    info->sample_rate = parser.head.fs_index == 1
                            ? kRates48[static_cast<std::size_t>(info->sf_multiplier)]
                            : kBaseRate441;
}

void read_bitrate_info(TocParser& parser, SubstreamInfo* info) {
    info->b_bitrate_info = read_flag(parser.in);
    if (info->b_bitrate_info) {
        info->bitrate_indicator = AC4_ANALYZE_ac4toc_get_bitrate_indicator(parser);
    }
}

// add_ch_base belongs to the 5/2 and 3/2/2 modes alone.
void read_add_ch_base(TocParser& parser, SubstreamInfo* info) {
    if (info->channel_mode >= kMode70Wide && info->channel_mode <= kMode71Top) {
        info->add_ch_base = read_flag(parser.in);
    }
}

// b_iframe or b_audio_ndot, once for each frame that shares the table; the first one is kept.
void read_frame_flags(TocParser& parser, std::int32_t frame_rate_factor, SubstreamInfo* info) {
    info->b_iframe = read_flag(parser.in);
    for (std::int32_t i = 1; i < frame_rate_factor; ++i) {
        read_flag(parser.in);
    }
}

void take_layout(const ChannelMode* mode, SubstreamInfo* info) {
    if (mode == nullptr) {
        return;
    }
    info->channel_count = mode->channels;
    info->lfe = mode->lfe;
    info->channel_bitmap = mode->bitmap;
    info->channel_mask = mode->mask;
    info->nonstd_mask = mode->nonstd_mask;
}

// The fields that end every description in a group.
void read_description_end(TocParser& parser, const GroupInfo& group, const GroupContext& context,
                          SubstreamInfo* info) {
    read_frame_flags(parser, context.frame_rate_factor, info);
    if (group.b_substreams_present) {
        info->substream_index = read_substream_index(parser);
    }
}

// ac4_substream_info_chan.
void read_chan(TocParser& parser, const GroupInfo& group, const GroupContext& context,
               SubstreamInfo* info) {
    info->channel_mode = read_channel_mode(parser);
    take_layout(find_channel_mode(info->channel_mode), info);
    if (is_immersive_mode(info->channel_mode)) {
        info->b_4_back_channels_present = read_flag(parser.in);
        info->b_centre_present = read_flag(parser.in);
        info->top_channels_present = static_cast<std::int32_t>(read_field(parser.in, 2));
    }
    read_sample_rate(parser, info);
    read_bitrate_info(parser, info);
    read_add_ch_base(parser, info);
    read_description_end(parser, group, context, info);
    info->channel_mode =
        channel_mode_in_presentation(info->channel_mode, context.presentation_version);
    take_layout(find_channel_mode(info->channel_mode), info);
}

void take_assignment(const ObjectAssignment& assignment, SubstreamDescription* substream) {
    SubstreamInfoExt& ext = substream->ext;
    ext.bed_channels = assignment.bed_channels;
    ext.isf_config = assignment.isf_config;
    ext.has_bed_objects = assignment.bed_channels > 0;
    ext.has_isf_objects = assignment.isf_objects > 0;
    ext.has_dynamic_objects = assignment.dynamic_only ||
                              assignment.bed_channels + assignment.isf_objects < ext.n_umx_objects;
    substream->info.channel_mask = assignment.std_mask;
    substream->info.nonstd_mask = assignment.nonstd_mask;
}

// ac4_substream_info_ajoc (TS 103 190-2 clause 6.2.1.9).
void read_ajoc(TocParser& parser, SubstreamDescription* substream) {
    SubstreamInfoExt& ext = substream->ext;
    substream->info.lfe = read_flag(parser.in);
    ext.b_static_dmx = read_flag(parser.in);
    if (ext.b_static_dmx) {
        ext.n_dmx_objects = 5;
    } else {
        const std::uint32_t n_signals = read_field(parser.in, 4) + 1;
        ext.n_dmx_objects = static_cast<std::int32_t>(n_signals);
        get_ac4toc_bed_dyn_obj_assignment(parser, n_signals);
    }
    if (read_flag(parser.in)) {
        AC4_ANALYZE_ac4toc_oamd_reader_parse_common_data(parser.in);
    }
    std::uint32_t n_upmix = read_field(parser.in, 4) + 1;
    if (n_upmix == 16) {
        n_upmix += read_variable_bits(parser.in, 3);
    }
    ext.n_umx_objects = static_cast<std::int32_t>(n_upmix);
    ext.n_objects = ext.n_umx_objects + (substream->info.lfe ? 1 : 0);
    take_assignment(get_ac4toc_bed_dyn_obj_assignment(parser, n_upmix), substream);
}

// Takes one substream into the sum of its group.
void add_to_group(const SubstreamDescription& substream, bool first, GroupInfo* group) {
    const SubstreamInfo& info = substream.info;
    group->common_code = first || group->common_code == info.channel_mode ? info.channel_mode : 0;
    group->channel_bitmap = join_bitmaps(group->channel_bitmap, info.channel_bitmap);
    group->lfe |= info.lfe;
    group->b_4_back_channels_present |= info.b_4_back_channels_present;
    group->b_centre_present |= info.b_centre_present;
    const std::int32_t pairs = (info.top_channels_present + 1) / 2;  // 0, 1, 1, 2
    group->top_channel_pairs = std::max(group->top_channel_pairs, pairs);
    group->n_objects += substream.ext.n_objects;

    std::int32_t core = core_channel_mode(info.channel_mode);
    if (info.audio_type == AudioType::kAjoc && substream.ext.b_static_dmx) {
        core = info.lfe ? kMode51 : kMode50;
    } else if (info.audio_type != AudioType::kChannels) {
        group->core_known = false;
    }
    const ChannelMode* mode = find_channel_mode(core);
    group->core_bitmap |= mode != nullptr ? mode->bitmap : 0;
}

}  // namespace

SubstreamDescription get_substream_info(TocParser& parser, std::int32_t frame_rate_factor) {
    SubstreamDescription substream;
    SubstreamInfo& info = substream.info;
    info.channel_mode = read_channel_mode(parser);
    const ChannelMode* mode = find_channel_mode(info.channel_mode);
    take_layout(mode, &info);
    if (mode == nullptr || mode->nonstd_mask == 0) {
        refuse(parser, kTocUnsupported);
    }
    read_sample_rate(parser, &info);
    read_bitrate_info(parser, &info);
    read_add_ch_base(parser, &info);
    if (read_flag(parser.in)) {
        AC4_ANALYZE_ac4toc_get_substream_content_type(parser, &info.content);
    }
    read_frame_flags(parser, frame_rate_factor, &info);
    info.substream_index = read_substream_index(parser);
    return substream;
}

std::int32_t read_hsf_ext_substream_info(TocParser& parser) {
    return read_substream_index(parser);
}

void read_group_head(TocParser& parser, GroupInfo* group) {
    group->position = field_position(parser.in);
    group->b_substreams_present = read_flag(parser.in);
    group->b_hsf_ext = read_flag(parser.in);
    group->n_substreams = 1;
    if (!read_flag(parser.in)) {
        group->n_substreams = read_field(parser.in, 2) + 2;
        if (group->n_substreams == 5) {
            group->n_substreams += read_variable_bits(parser.in, 2);
        }
    }
    group->b_channel_coded = read_flag(parser.in);
    if (!group->b_channel_coded) {
        group->b_oamd_substream = read_flag(parser.in);
        if (group->b_oamd_substream) {
            group->b_oamd_ndot = read_flag(parser.in);
            if (group->b_substreams_present) {
                group->oamd_substream_index = read_substream_index(parser);
            }
        }
    }
    group->substreams_position = field_position(parser.in);
}

SubstreamDescription read_group_substream(TocParser& parser, const GroupInfo& group,
                                          const GroupContext& context) {
    SubstreamDescription substream;
    SubstreamInfo& info = substream.info;
    info.sus_ver = 1;
    if (group.b_channel_coded) {
        read_chan(parser, group, context, &info);
    } else {
        const bool ajoc = read_flag(parser.in);
        info.audio_type = ajoc ? AudioType::kAjoc : AudioType::kObjects;
        if (ajoc) {
            read_ajoc(parser, &substream);
        } else {
            ac4toc_substream_info_obj_common_data_parse(parser, &info, &substream.ext);
        }
        read_sample_rate(parser, &info);
        read_bitrate_info(parser, &info);
        read_description_end(parser, group, context, &info);
    }
    if (group.b_hsf_ext && group.b_substreams_present) {
        info.hsf_substream_index = read_hsf_ext_substream_info(parser);
    }
    return substream;
}

void read_group_tail(TocParser& parser, GroupInfo* group) {
    group->content_position = field_position(parser.in);
    if (read_flag(parser.in)) {
        AC4_ANALYZE_ac4toc_get_substream_content_type(parser, &group->content);
    }
}

GroupInfo AC4_ANALYZE_ac4toc_get_substream_group_info(TocParser& parser,
                                                      const GroupContext& context) {
    GroupInfo group;
    read_group_head(parser, &group);
    // Sums are kept with the codes as they stand; presentations tell what they make of them.
    const GroupContext plain = {context.frame_rate_factor, 0};
    for (std::uint32_t i = 0; i < group.n_substreams && parser_ok(parser); ++i) {
        add_to_group(read_group_substream(parser, group, plain), i == 0, &group);
    }
    read_group_tail(parser, &group);
    return group;
}

}  // namespace mediasplit
