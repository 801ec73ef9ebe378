#include "src/ac4analyze_impl/ac4_dsi.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "src/ac4analyze_impl/dsi_reader.h"
#include "src/util/tree_text.h"

namespace mediasplit {
namespace {

constexpr std::uint32_t kFirstDescribedVersion = 2;  // of the bitstream
constexpr std::uint32_t kLastPresentationVersion = 2;
constexpr std::uint32_t kExtendedPresBytes = 255;

using Head = DsiHead;
using Fields = DsiPresentationFields;
using Group = DsiSubstreamGroupFields;
using Substream = DsiSubstream;

constexpr DsiElement<Head> kVersions[] = {
    {"dsi_version", 3, &Head::dsi_version},
    {"bitstream_version", 7, &Head::bitstream_version},
};
constexpr DsiElement<Head> kTiming[] = {
    {"fs_index", 1, &Head::fs_index},
    {"frame_rate_index", 4, &Head::frame_rate_index},
    {"n_presentations", 9, &Head::n_presentations},
    {"b_program_id", 1, &Head::b_program_id},
};
constexpr DsiElement<Head> kProgramId[] = {
    {"short_program_id", 16, &Head::short_program_id},
    {"b_uuid", 1, &Head::b_uuid},
};
constexpr DsiElement<DsiBitRate> kBitRate[] = {
    {"bit_rate_mode", 2, &DsiBitRate::bit_rate_mode},
    {"bit_rate", 32, &DsiBitRate::bit_rate},
    {"bit_rate_precision", 32, &DsiBitRate::bit_rate_precision},
};
constexpr DsiElement<Fields> kConfig = {"presentation_config_v1", 5,
                                        &Fields::presentation_config_v1};
constexpr DsiElement<Fields> kCompatibility[] = {
    {"mdcompat", 3, &Fields::mdcompat},
    {"b_presentation_id", 1, &Fields::b_presentation_id},
};
constexpr DsiElement<Fields> kPresentationId = {"presentation_id", 5, &Fields::presentation_id};
constexpr DsiElement<Fields> kRatesAndKeys[] = {
    {"dsi_frame_rate_multiply_info", 2, &Fields::dsi_frame_rate_multiply_info},
    {"dsi_frame_rate_fraction_info", 2, &Fields::dsi_frame_rate_fraction_info},
    {"presentation_emdf_version", 5, &Fields::presentation_emdf_version},
    {"presentation_key_id", 10, &Fields::presentation_key_id},
    {"b_presentation_channel_coded", 1, &Fields::b_presentation_channel_coded},
};
constexpr DsiElement<Fields> kChannelMode = {"dsi_presentation_ch_mode", 5,
                                             &Fields::dsi_presentation_ch_mode};
constexpr DsiElement<Fields> kModeFlags[] = {
    {"pres_b_4_back_channels_present", 1, &Fields::pres_b_4_back_channels_present},
    {"pres_top_channel_pairs", 2, &Fields::pres_top_channel_pairs},
};
constexpr DsiElement<Fields> kChannelMask = {"presentation_channel_mask_v1", 24,
                                             &Fields::presentation_channel_mask_v1};
constexpr DsiElement<Fields> kCoreDiffers = {"b_presentation_core_differs", 1,
                                             &Fields::b_presentation_core_differs};
constexpr DsiElement<Fields> kCoreCoded = {"b_presentation_core_channel_coded", 1,
                                           &Fields::b_presentation_core_channel_coded};
constexpr DsiElement<Fields> kCoreMode = {"dsi_presentation_channel_mode_core", 2,
                                          &Fields::dsi_presentation_channel_mode_core};
constexpr DsiElement<Fields> kFilter = {"b_presentation_filter", 1, &Fields::b_presentation_filter};
constexpr DsiElement<Fields> kFilterHead[] = {
    {"b_enable_presentation", 1, &Fields::b_enable_presentation},
    {"n_filter_bytes", 8, &Fields::n_filter_bytes},
};
constexpr DsiElement<Fields> kMultiPid = {"b_multi_pid", 1, &Fields::b_multi_pid};
constexpr DsiElement<Fields> kGroupCount = {"n_substream_groups_minus2", 3,
                                            &Fields::n_substream_groups_minus2};
constexpr DsiElement<Fields> kSkipBytes = {"n_skip_bytes", 7, &Fields::n_skip_bytes};
constexpr DsiElement<Fields> kVirtualizedAndEmdf[] = {
    {"b_pre_virtualized", 1, &Fields::b_pre_virtualized},
    {"b_add_emdf_substreams", 1, &Fields::b_add_emdf_substreams},
};
constexpr DsiElement<Fields> kEmdfCount = {"n_add_emdf_substreams", 7,
                                           &Fields::n_add_emdf_substreams};
constexpr DsiElement<DsiEmdfSubstream> kEmdfSubstream[] = {
    {"emdf_version", 5, &DsiEmdfSubstream::emdf_version},
    {"substream_key_id", 10, &DsiEmdfSubstream::substream_key_id},
};
constexpr DsiElement<Fields> kHasBitRate = {"b_presentation_bitrate_info", 1,
                                            &Fields::b_presentation_bitrate_info};
constexpr DsiElement<Fields> kAlternative = {"b_alternative", 1, &Fields::b_alternative};
constexpr DsiElement<Fields> kIndicators[] = {
    {"de_indicator", 1, &Fields::de_indicator},
    {"orvel_sphere_indicator", 1, &Fields::orvel_sphere_indicator},
    {"reserved_field_1", 4, &Fields::reserved_field_1},
    {"b_extended_presentation_id", 1, &Fields::b_extended_presentation_id},
};
constexpr DsiElement<Fields> kExtendedId = {"extended_presentation_id", 9,
                                            &Fields::extended_presentation_id};
constexpr DsiElement<Fields> kNoExtendedId = {"reserved_field_2", 1, &Fields::reserved_field_2};

constexpr DsiElement<Group> kGroupHead[] = {
    // The tree deliberately has b_substreams_present under this name.
    {"b_presentation_filter", 1, &Group::b_substreams_present},
    {"b_hsf_ext", 1, &Group::b_hsf_ext},
    {"b_channel_coded", 1, &Group::b_channel_coded},
    {"n_substreams", 8, &Group::n_substreams},
};
constexpr DsiElement<Group> kContentType = {"b_content_type", 1, &Group::b_content_type};
constexpr DsiElement<Group> kContent[] = {
    {"content_classifier", 3, &Group::content_classifier},
    {"b_language_indicator", 1, &Group::b_language_indicator},
};
constexpr DsiElement<Group> kLanguageSize = {"n_language_tag_bytes", 6,
                                             &Group::n_language_tag_bytes};

constexpr DsiElement<Substream> kSubstreamRates[] = {
    {"dsi_sf_multiplier", 2, &Substream::dsi_sf_multiplier},
    {"b_substream_bitrate_indicator", 1, &Substream::b_substream_bitrate_indicator},
};
constexpr DsiElement<Substream> kSubstreamBitRate = {"substream_bitrate_indicator", 5,
                                                     &Substream::substream_bitrate_indicator};
constexpr DsiElement<Substream> kSubstreamMask = {"dsi_substream_channel_mask", 24,
                                                  &Substream::dsi_substream_channel_mask};
constexpr DsiElement<Substream> kAjoc = {"b_ajoc", 1, &Substream::b_ajoc};
constexpr DsiElement<Substream> kStaticDmx = {"b_static_dmx", 1, &Substream::b_static_dmx};
constexpr DsiElement<Substream> kDmxObjects = {"n_dmx_objects_minus1", 4,
                                               &Substream::n_dmx_objects_minus1};
constexpr DsiElement<Substream> kUmxObjects = {"n_umx_objects_minus1", 6,
                                               &Substream::n_umx_objects_minus1};
constexpr DsiElement<Substream> kObjectKinds[] = {
    {"b_substream_contains_bed_objects", 1, &Substream::b_substream_contains_bed_objects},
    {"b_substream_contains_dynamic_objects", 1, &Substream::b_substream_contains_dynamic_objects},
    {"b_substream_contains_ISF_objects", 1, &Substream::b_substream_contains_ISF_objects},
    {"reserved", 1, &Substream::reserved},
};

constexpr std::uint64_t kLeastSubstreamBits = 8;
constexpr std::uint64_t kLeastPresentationBits = 16;
constexpr std::uint64_t kEmdfSubstreamBits = 15;

// Makes room for `count` entries, but not for more than the bits left can hold: from here on their
// addresses stay, as the tree's identities of values need it.
template <typename Entry>
void make_room(std::vector<Entry>* list, std::uint32_t count, std::uint64_t least_bits,
               const DsiReader& in) {
    list->reserve(
        static_cast<std::size_t>(std::min<std::uint64_t>(count, in.bits_left() / least_bits + 1)));
}

Ezxml* add_node(Ezxml* parent, const char* name) {
    return parent != nullptr ? ezxml_add_child(parent, name, 0) : nullptr;
}

// --- Substream groups --------------------------------------------------------------------------

bool read_objects(DsiReader& in, Substream* substream, Ezxml* node) {
    if (!in.value(kAjoc, substream, node)) {
        return false;
    }
    if (substream->b_ajoc != 0) {
        if (!in.value(kStaticDmx, substream, node) ||
            (substream->b_static_dmx == 0 && !in.value(kDmxObjects, substream, node)) ||
            !in.value(kUmxObjects, substream, node)) {
            return false;
        }
    }
    return in.values(kObjectKinds, substream, node);
}

bool read_substream(DsiReader& in, bool channel_coded, Substream* substream, Ezxml* node) {
    if (!in.values(kSubstreamRates, substream, node) ||
        (substream->b_substream_bitrate_indicator != 0 &&
         !in.value(kSubstreamBitRate, substream, node))) {
        return false;
    }
    return channel_coded ? in.value(kSubstreamMask, substream, node)
                         : read_objects(in, substream, node);
}

bool read_language(DsiReader& in, DsiSubstreamGroup* group, Ezxml* node) {
    if (!in.value<Group>(kLanguageSize, group, node) ||
        !in.bytes(group->n_language_tag_bytes, &group->language_tag_bytes)) {
        return false;
    }
    add_string_to_xml(node, "language_tag_bytes", group->language_tag_bytes,
                      group->n_language_tag_bytes, 0);
    return true;
}

bool read_group(DsiReader& in, DsiSubstreamGroup* group, Ezxml* node) {
    if (!in.values<Group>(kGroupHead, group, node)) {
        return false;
    }
    make_room(&group->substreams, group->n_substreams, kLeastSubstreamBits, in);
    for (std::uint32_t i = 0; i < group->n_substreams; ++i) {
        if (in.bits_left() == 0) {
            return in.skip(1);
        }
        group->substreams.emplace_back();
        if (!read_substream(in, group->b_channel_coded != 0, &group->substreams.back(),
                            add_node(node, "ac4_substream_dsi"))) {
            return false;
        }
    }
    if (!in.value<Group>(kContentType, group, node)) {
        return false;
    }
    if (group->b_content_type == 0) {
        return true;
    }
    return in.values<Group>(kContent, group, node) &&
           (group->b_language_indicator == 0 || read_language(in, group, node));
}

// --- Presentations -----------------------------------------------------------------------------

bool read_identity(DsiReader& in, DsiPresentation* presentation, Ezxml* node) {
    return in.values<Fields>(kCompatibility, presentation, node) &&
           (presentation->b_presentation_id == 0 ||
            in.value<Fields>(kPresentationId, presentation, node)) &&
           in.values<Fields>(kRatesAndKeys, presentation, node);
}

bool read_layout(DsiReader& in, DsiPresentation* presentation, Ezxml* node) {
    if (presentation->b_presentation_channel_coded == 0) {
        presentation->presentation_channel_mask_v1 = kMaskNotChannelCoded;
        return true;
    }
    if (!in.value<Fields>(kChannelMode, presentation, node)) {
        return false;
    }
    const bool flagged = dsi_mode_has_flags(presentation->dsi_presentation_ch_mode);
    return (!flagged || in.values<Fields>(kModeFlags, presentation, node)) &&
           in.value<Fields>(kChannelMask, presentation, node);
}

bool read_core(DsiReader& in, DsiPresentation* presentation, Ezxml* node) {
    return in.value<Fields>(kCoreDiffers, presentation, node) &&
           (presentation->b_presentation_core_differs == 0 ||
            in.value<Fields>(kCoreCoded, presentation, node)) &&
           (presentation->b_presentation_core_channel_coded == 0 ||
            in.value<Fields>(kCoreMode, presentation, node));
}

bool read_filter(DsiReader& in, DsiPresentation* presentation, Ezxml* node) {
    if (!in.value<Fields>(kFilter, presentation, node)) {
        return false;
    }
    if (presentation->b_presentation_filter == 0) {
        return true;
    }
    if (!in.values<Fields>(kFilterHead, presentation, node) ||
        !in.bytes(presentation->n_filter_bytes, &presentation->filter_data)) {
        return false;
    }
    if (node != nullptr) {
        const std::vector<std::uint8_t> data(presentation->filter_data.begin(),
                                             presentation->filter_data.end());
        add_mem_to_xml(node, "filter_data", data, 0);
    }
    return true;
}

bool read_group_count(DsiReader& in, DsiPresentation* presentation, Ezxml* node) {
    const std::uint32_t config = presentation->presentation_config_v1;
    if (config == kDsiConfigSingle) {
        return true;
    }
    if (!in.value<Fields>(kMultiPid, presentation, node)) {
        return false;
    }
    if (config == kDsiConfigCoded) {
        return in.value<Fields>(kGroupCount, presentation, node);
    }
    return config < kDsiConfigCoded || (in.value<Fields>(kSkipBytes, presentation, node) &&
                                        in.skip(std::uint64_t{presentation->n_skip_bytes} * 8));
}

bool read_groups(DsiReader& in, DsiPresentation* presentation, Ezxml* node) {
    if (!read_group_count(in, presentation, node)) {
        return false;
    }
    const std::uint32_t count = dsi_group_count(*presentation);
    presentation->groups.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        presentation->groups.emplace_back();
        if (!read_group(in, &presentation->groups.back(),
                        add_node(node, "ac4_substream_group_dsi"))) {
            return false;
        }
    }
    return true;
}

bool read_emdf_substreams(DsiReader& in, DsiPresentation* presentation, Ezxml* node) {
    if (presentation->b_add_emdf_substreams == 0) {
        return true;
    }
    if (!in.value<Fields>(kEmdfCount, presentation, node)) {
        return false;
    }
    make_room(&presentation->emdf_substreams, presentation->n_add_emdf_substreams,
              kEmdfSubstreamBits, in);
    for (std::uint32_t i = 0; i < presentation->n_add_emdf_substreams; ++i) {
        if (in.bits_left() == 0) {
            return in.skip(1);
        }
        presentation->emdf_substreams.emplace_back();
        if (!in.values(kEmdfSubstream, &presentation->emdf_substreams.back(), node)) {
            return false;
        }
    }
    return true;
}

// Names and targets are for players: they are passed over.
bool skip_alternative(DsiReader& in, std::uint64_t start) {
    constexpr std::uint32_t kTargetBits = 3 + 8;
    std::uint32_t name_length = 0;
    std::uint32_t n_targets = 0;
    return in.align(start) && in.peel(16, &name_length) &&
           in.skip(std::uint64_t{name_length} * 8) && in.peel(5, &n_targets) &&
           in.skip(std::uint64_t{n_targets} * kTargetBits);
}

bool read_indicators(DsiReader& in, DsiPresentation* presentation, Ezxml* node) {
    return in.values<Fields>(kIndicators, presentation, node) &&
           in.value<Fields>(
               presentation->b_extended_presentation_id != 0 ? kExtendedId : kNoExtendedId,
               presentation, node);
}

// From the configuration to the added EMDF substreams. A presentation of these alone has nothing
// else there.
bool read_audio(DsiReader& in, DsiPresentation* presentation, Ezxml* node) {
    if (!in.value<Fields>(kConfig, presentation, node)) {
        return false;
    }
    if (presentation->presentation_config_v1 == kDsiConfigEmdfOnly) {
        presentation->presentation_channel_mask_v1 = kMaskNotChannelCoded;
        presentation->b_add_emdf_substreams = 1;
    } else if (!read_identity(in, presentation, node) || !read_layout(in, presentation, node) ||
               !read_core(in, presentation, node) || !read_filter(in, presentation, node) ||
               !read_groups(in, presentation, node) ||
               !in.values<Fields>(kVirtualizedAndEmdf, presentation, node)) {
        return false;
    }
    return read_emdf_substreams(in, presentation, node);
}

// ac4_presentation_v1_dsi.
bool read_v1(DsiReader& in, DsiPresentation* presentation, Ezxml* node) {
    const std::uint64_t start = in.position();
    if (!read_audio(in, presentation, node) || !in.value<Fields>(kHasBitRate, presentation, node) ||
        (presentation->b_presentation_bitrate_info != 0 &&
         !in.values(kBitRate, &presentation->bit_rate_info, node)) ||
        !in.value<Fields>(kAlternative, presentation, node) ||
        (presentation->b_alternative != 0 && !skip_alternative(in, start)) || !in.align(start)) {
        return false;
    }
    const auto used = [&] { return (in.position() - start) / 8; };
    if (used() + 1 <= presentation->pres_bytes && !read_indicators(in, presentation, node)) {
        return false;
    }
    presentation->presentation_bytes = static_cast<std::uint32_t>(used());
    return true;
}

bool read_pres_bytes(DsiReader& in, DsiPresentation* presentation, Ezxml* node) {
    std::uint32_t more = 0;
    if (!in.peel(8, &presentation->pres_bytes) ||
        (presentation->pres_bytes == kExtendedPresBytes && !in.peel(16, &more))) {
        return false;
    }
    presentation->pres_bytes += more;
    add_uint_to_xml(node, "pres_bytes", &presentation->pres_bytes, 0);
    return true;
}

// False where the reading of presentations ends.
bool read_presentation(DsiReader& in, std::uint32_t index, DsiRecord* record, Ezxml* node) {
    DsiPresentation* presentation = &record->presentations.back();
    if (!in.value(8, "presentation_version", &presentation->version, node) ||
        !read_pres_bytes(in, presentation, node)) {
        return false;
    }
    if (presentation->version == 0) {
        record->presentation_parse_end = index + 1;
        return false;
    }
    const std::uint64_t start = in.position();
    if (presentation->version <= kLastPresentationVersion && !read_v1(in, presentation, node)) {
        return false;
    }
    in.jump(start + std::uint64_t{presentation->pres_bytes} * 8);
    return true;
}

void read_presentations(DsiReader& in, DsiRecord* record, Ezxml* tree) {
    make_room(&record->presentations, record->n_presentations, kLeastPresentationBits, in);
    for (std::uint32_t i = 0; i < record->n_presentations && in.bits_left() > 0; ++i) {
        record->presentations.emplace_back();
        if (!read_presentation(in, i, record, add_node(tree, "ac4_presentation_dsi"))) {
            record->presentations.back().bad = in.failed();
            return;
        }
    }
}

bool read_program_id(DsiReader& in, DsiRecord* record, Ezxml* tree) {
    if (record->b_program_id == 0) {
        return true;
    }
    if (!in.values<Head>(kProgramId, record, tree)) {
        return false;
    }
    if (record->b_uuid == 0) {
        return true;
    }
    std::string uuid;
    if (!in.bytes(static_cast<std::uint32_t>(record->program_uuid.size()), &uuid)) {
        return false;
    }
    std::copy(uuid.begin(), uuid.end(), record->program_uuid.begin());
    add_uuid_to_xml(tree, "program_uuid", record->program_uuid, 0);
    return true;
}

bool read_head(DsiReader& in, DsiRecord* record, Ezxml* tree) {
    return in.values<Head>(kVersions, record, tree) &&
           record->bitstream_version >= kFirstDescribedVersion &&
           in.values<Head>(kTiming, record, tree) && read_program_id(in, record, tree) &&
           in.values(kBitRate, &record->bit_rate_info, tree) && in.align(0);
}

}  // namespace

std::uint32_t f_ac4_substream_group_dsi(DsiSubstreamGroup& group, std::uint64_t& position,
                                        ByteSpan data, Ezxml* node) {
    group = DsiSubstreamGroup{};
    DsiReader in(data, position);
    const bool read = read_group(in, &group, node);
    position = in.position();
    return read ? 0 : 1;
}

std::uint32_t ac4_dsi_parser(ByteSpan payload, DsiRecord& record, Ezxml* tree) {
    const std::uint32_t boxes = record.box_count + 1;
    record = DsiRecord{};
    record.box_count = boxes;
    if (payload.empty()) {
        return 1;
    }
    DsiReader in(payload);
    if (read_head(in, &record, tree)) {
        read_presentations(in, &record, tree);
    }
    return 0;
}

}  // namespace mediasplit
