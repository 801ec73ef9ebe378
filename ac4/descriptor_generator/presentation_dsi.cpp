#include "ac4/descriptor_generator/presentation_dsi.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "ac4/descriptor_generator/channel_layout.h"
#include "ac4/descriptor_generator/descriptor_generator.h"
#include "ac4/toc_reader/channel_modes.h"

namespace mediasplit {
namespace {

constexpr std::int32_t kVersionImmersiveStereo = 2;
constexpr std::uint32_t kMostPlainPresentationId = 31;
constexpr std::int32_t kFirstCoreMode = 3;

constexpr std::uint32_t bit(bool value) {
    return value ? 1 : 0;
}

struct ConfigOfType {
    std::int32_t type_code;
    std::uint32_t config;
};
constexpr std::array<ConfigOfType, 9> kConfigs = {{
    {1, kDsiConfigSingle},
    {2, 1},
    {3, 2},
    {4, 4},
    {5, kDsiConfigCoded},
    {6, 0},
    {7, 3},
    {8, kDsiConfigEmdfOnly},
    {9, kDsiConfigCoded},
}};

std::uint32_t config_of_type(std::int32_t type_code) {
    const auto* row =
        std::find_if(kConfigs.begin(), kConfigs.end(),
                     [type_code](const ConfigOfType& each) { return each.type_code == type_code; });
    return row != kConfigs.end() ? row->config : kDsiConfigInvalid;
}

void add_emdf_substreams(const AnalysisPresentation& presentation, DsiPresentation* out) {
    out->b_add_emdf_substreams = bit(presentation.b_add_emdf_substreams ||
                                     out->presentation_config_v1 == kDsiConfigEmdfOnly);
    const auto count =
        std::clamp<std::int32_t>(presentation.n_emdf_substreams, 0,
                                 static_cast<std::int32_t>(presentation.emdf_substreams.size()));
    out->n_add_emdf_substreams = static_cast<std::uint32_t>(count);
    out->emdf_substreams.resize(out->n_add_emdf_substreams);
    for (std::size_t i = 0; i < out->emdf_substreams.size(); ++i) {
        const EmdfSubstream& emdf = presentation.emdf_substreams[i];
        out->emdf_substreams[i] = {static_cast<std::uint32_t>(emdf.emdf_version),
                                   static_cast<std::uint32_t>(emdf.key_id)};
    }
}

void set_identity(const AnalysisPresentation& presentation, DsiPresentation* out) {
    out->mdcompat = static_cast<std::uint32_t>(presentation.mdcompat);
    out->b_presentation_id = bit(presentation.presentation_group > 0);
    if (out->b_presentation_id != 0) {
        out->presentation_id = static_cast<std::uint32_t>(presentation.presentation_group - 1);
    }
    if (out->presentation_id > kMostPlainPresentationId) {
        out->b_extended_presentation_id = 1;
        out->extended_presentation_id = out->presentation_id;
    }
    // Factors 1, 2, 4 are written as 0, 1, 2.
    out->dsi_frame_rate_multiply_info =
        static_cast<std::uint32_t>(presentation.frame_rate_multiply) >> 1;
    out->dsi_frame_rate_fraction_info =
        static_cast<std::uint32_t>(presentation.frame_rate_fraction) >> 1;
    out->presentation_emdf_version = static_cast<std::uint32_t>(presentation.emdf.emdf_version);
    out->presentation_key_id = static_cast<std::uint32_t>(presentation.emdf.key_id);
}

std::uint32_t set_layout(const AnalysisPresentation& presentation, DsiPresentation* out) {
    out->presentation_channel_mask_v1 = kMaskNotChannelCoded;
    if (presentation.channel_mode == 0) {
        return 0;
    }
    const std::int32_t mode = convert_2_ac4_ch_mode(presentation.channel_mode);
    if (mode < 0) {
        return kDescriptorBadChannelMode;
    }
    out->b_presentation_channel_coded = 1;
    out->dsi_presentation_ch_mode = static_cast<std::uint32_t>(mode);
    const auto pairs = static_cast<std::uint32_t>(presentation.top_channels_present);
    if (dsi_mode_has_flags(out->dsi_presentation_ch_mode)) {
        out->pres_b_4_back_channels_present = bit(presentation.b_4_back_channels_present);
        out->pres_top_channel_pairs = pairs;
    }
    out->presentation_channel_mask_v1 =
        get_channel_mask_v1(out->dsi_presentation_ch_mode, pairs,
                            presentation.b_4_back_channels_present, presentation.b_centre_present);
    return 0;
}

// The core layouts 5.0, 5.1, 5.0.2 and 5.1.2 are written as 0 to 3. The last two have the codes of
// 7.0 and 7.1 (3/2/2), the modes 9 and 10: the two bits of the field make 2 and 3 of them.
void set_core(const AnalysisPresentation& presentation, DsiPresentation* out) {
    constexpr std::uint32_t kFieldMask = 3;
    if (presentation.core_channel_mode == 0) {
        return;
    }
    out->b_presentation_core_differs = 1;
    const std::int32_t mode = convert_2_ac4_ch_mode(presentation.core_channel_mode);
    if (mode >= kFirstCoreMode) {
        out->b_presentation_core_channel_coded = 1;
        out->dsi_presentation_channel_mode_core =
            static_cast<std::uint32_t>(mode - kFirstCoreMode) & kFieldMask;
    }
}

void set_groups(const AnalysisPresentation& presentation, const AnalysisRecord& analysis,
                std::uint32_t* named_substreams, DsiPresentation* out) {
    if (out->presentation_config_v1 == kDsiConfigCoded && presentation.n_substream_groups >= 2) {
        out->n_substream_groups_minus2 =
            static_cast<std::uint32_t>(presentation.n_substream_groups - 2);
    }
    const std::uint32_t count = std::min<std::uint32_t>(
        dsi_group_count(*out), static_cast<std::uint32_t>(presentation.groups.size()));
    out->groups.resize(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        static const AnalysisGroup kNoGroup;
        const std::int32_t number = presentation.groups[i];
        const bool kept = number >= 0 && static_cast<std::size_t>(number) < analysis.groups.size();
        const AnalysisGroup& group =
            kept ? analysis.groups[static_cast<std::size_t>(number)] : kNoGroup;
        *named_substreams += group.listed;
        if (*named_substreams > kMostNamedSubstreams) {
            out->groups.resize(i);
            return;
        }
        update_ac4_substream_group_dsi(group, analysis, &out->groups[i]);
    }
}

bool has_dialogue_enhancement(const AnalysisPresentation& presentation,
                              const AnalysisRecord& analysis) {
    const auto count = static_cast<std::size_t>(std::clamp<std::int32_t>(
        presentation.n_substreams, 0, static_cast<std::int32_t>(presentation.substreams.size())));
    return std::any_of(presentation.substreams.begin(),
                       presentation.substreams.begin() + static_cast<std::ptrdiff_t>(count),
                       [&analysis](std::int16_t slot) {
                           return slot >= 0 && analysis.substreams[static_cast<std::size_t>(slot)]
                                                   .metadata.de.b_de_data_present;
                       });
}

// Layouts that aren't immersive, whatever the presentation is marked.
constexpr std::array<std::int32_t, 7> kPlainLayouts = {kModeMono, kModeStereo, 24,         kMode50,
                                                       kMode51,   kMode70Back, kMode71Back};

std::uint32_t set_sphere_indicator(const AnalysisPresentation& presentation, DsiPresentation* out) {
    const std::int32_t code = presentation.channel_mode;
    if (presentation.presentation_version == kVersionImmersiveStereo &&
        (code == kModeImmersiveStereo || code == kModeImmersiveStereoObjects)) {
        out->orvel_sphere_indicator = bit(code == kModeImmersiveStereoObjects);
        return 0;
    }
    const bool marked = presentation.metadata.immersive_audio_indicator;
    if (std::find(kPlainLayouts.begin(), kPlainLayouts.end(), code) != kPlainLayouts.end()) {
        return marked ? kDescriptorIndicator : 0;
    }
    out->orvel_sphere_indicator = bit(marked);
    return 0;
}

std::uint32_t set_config(const AnalysisPresentation& presentation, DsiPresentation* out) {
    out->presentation_config_v1 = config_of_type(presentation.type_code);
    return out->presentation_config_v1 == kDsiConfigInvalid ? kDescriptorBadType : 0;
}

}  // namespace

DsiSubstream update_ac4_substream_dsi(const AnalysisSubstream& substream) {
    const SubstreamInfo& info = substream.info;
    DsiSubstream out;
    out.dsi_sf_multiplier = static_cast<std::uint32_t>(info.sf_multiplier);
    out.b_substream_bitrate_indicator = bit(info.b_bitrate_info);
    out.substream_bitrate_indicator = static_cast<std::uint32_t>(info.bitrate_indicator);
    if (info.audio_type == AudioType::kChannels) {
        // Coded values 0 to 3 stand for no, one, one and two pairs.
        const auto pairs = static_cast<std::uint32_t>(info.top_channels_present + 1) / 2;
        out.dsi_substream_channel_mask = get_channel_mask_v1(
            static_cast<std::uint32_t>(convert_2_ac4_ch_mode(info.channel_mode)), pairs,
            info.b_4_back_channels_present, info.b_centre_present);
        return out;
    }
    const SubstreamInfoExt& ext = substream.ext;
    out.b_ajoc = bit(info.audio_type == AudioType::kAjoc);
    if (out.b_ajoc != 0) {
        out.b_static_dmx = bit(ext.b_static_dmx);
        if (!ext.b_static_dmx) {
            out.n_dmx_objects_minus1 = static_cast<std::uint32_t>(ext.n_dmx_objects - 1);
        }
        out.n_umx_objects_minus1 = static_cast<std::uint32_t>(ext.n_umx_objects - 1);
    }
    out.b_substream_contains_bed_objects = bit(ext.has_bed_objects);
    out.b_substream_contains_dynamic_objects = bit(ext.has_dynamic_objects);
    out.b_substream_contains_ISF_objects = bit(ext.has_isf_objects);
    return out;
}

void update_ac4_substream_group_dsi(const AnalysisGroup& group, const AnalysisRecord& analysis,
                                    DsiSubstreamGroup* out) {
    out->b_substreams_present = bit(group.b_substreams_present);
    out->b_hsf_ext = bit(group.b_hsf_ext);
    out->b_channel_coded = bit(group.b_channel_coded);
    out->n_substreams = group.n_substreams;
    out->b_content_type = bit(group.b_content_type);
    out->content_classifier = static_cast<std::uint32_t>(group.content_classifier);
    out->b_language_indicator = bit(group.b_language_indicator);
    out->n_language_tag_bytes = group.language_size;
    out->language_tag_bytes.assign(group.language.data(),
                                   std::min<std::size_t>(group.language_size, kMaxLanguageBytes));
    out->substreams.clear();
    const std::size_t listed = std::min<std::size_t>(group.listed, group.substreams.size());
    for (std::size_t i = 0; i < listed; ++i) {
        const std::int16_t slot = group.substreams[i];
        out->substreams.push_back(
            slot >= 0
                ? update_ac4_substream_dsi(analysis.substreams[static_cast<std::size_t>(slot)])
                : DsiSubstream{});
    }
}

std::uint32_t update_presentation_v1_dsi(std::uint32_t index, const AnalysisRecord& analysis,
                                         std::uint32_t* named_substreams, DsiPresentation* out) {
    if (index >= kAnalysisPresentations) {
        return kDescriptorPresentations;
    }
    const AnalysisPresentation& presentation = analysis.presentations[index];
    std::uint32_t warnings = set_config(presentation, out);
    if (out->presentation_config_v1 == kDsiConfigEmdfOnly) {
        out->presentation_channel_mask_v1 = kMaskNotChannelCoded;
        add_emdf_substreams(presentation, out);
        return warnings;
    }
    set_identity(presentation, out);
    warnings |= set_layout(presentation, out);
    set_core(presentation, out);
    out->b_presentation_filter = bit(presentation.b_presentation_filter);
    out->b_enable_presentation = bit(presentation.b_enable_presentation);
    out->b_multi_pid = bit(presentation.b_multi_pid);
    set_groups(presentation, analysis, named_substreams, out);
    out->b_pre_virtualized = bit(presentation.b_pre_virtualized);
    add_emdf_substreams(presentation, out);
    out->de_indicator = bit(has_dialogue_enhancement(presentation, analysis));
    return warnings | set_sphere_indicator(presentation, out);
}

// What both syntaxes have in common; the comparison asks no more of a version 0 presentation than
// its identity.
std::uint32_t update_ac4_presentation_v0_dsi(std::uint32_t index, const AnalysisRecord& analysis,
                                             DsiPresentation* out) {
    if (index >= kAnalysisPresentations) {
        return kDescriptorPresentations;
    }
    const AnalysisPresentation& presentation = analysis.presentations[index];
    std::uint32_t warnings = set_config(presentation, out);
    if (out->presentation_config_v1 != kDsiConfigEmdfOnly) {
        set_identity(presentation, out);
        warnings |= set_layout(presentation, out);
        out->b_pre_virtualized = bit(presentation.b_pre_virtualized);
    }
    add_emdf_substreams(presentation, out);
    return warnings;
}

}  // namespace mediasplit
