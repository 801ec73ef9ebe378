#include "src/fmp4demuxer/checks/ac4_record.h"

#include <algorithm>
#include <array>

namespace mediasplit {
namespace {

constexpr std::uint32_t kFirstDescribedVersion = 2;  // of the bitstream

// Values of content_classifier (ETSI TS 103 190-1 4.3.3.8.1).
constexpr std::uint32_t kMusicAndEffects = 1;  // the last of the main services
constexpr std::uint32_t kVisuallyImpaired = 2;

// Factors of dsi_sf_multiplier (ETSI TS 103 190-2 E.11.2); 3 is reserved.
constexpr std::array<std::uint32_t, 4> kRateFactors = {1, 2, 4, 1};

}  // namespace

std::optional<std::uint32_t> ac4_presentation_number(const DsiPresentation& presentation) {
    if (presentation.b_extended_presentation_id != 0) {
        return presentation.extended_presentation_id;
    }
    return presentation.b_presentation_id != 0 ? std::optional(presentation.presentation_id)
                                               : std::nullopt;
}

bool ac4_has_audio(const DsiPresentation& presentation) {
    return (presentation.version == kAc4LegacyPresentation ||
            presentation.version == kAc4ImsPresentation) &&
           presentation.presentation_config_v1 != kDsiConfigEmdfOnly;
}

bool ac4_is_intact(const DsiPresentation& presentation) {
    return presentation.version == 0 || presentation.b_multi_pid == 0;
}

std::optional<std::uint32_t> ac4_base_rate(const DsiRecord& record) {
    if (record.bitstream_version < kFirstDescribedVersion) {
        return std::nullopt;
    }
    return record.fs_index == 0 ? 44100 : 48000;
}

std::optional<std::uint32_t> ac4_sampling_rate(const DsiRecord& record,
                                               const DsiPresentation& presentation) {
    const std::optional<std::uint32_t> base = ac4_base_rate(record);
    std::uint32_t factor = 1;
    for (const DsiSubstreamGroup& group : presentation.groups) {
        for (const DsiSubstream& substream : group.substreams) {
            factor = std::max(factor, kRateFactors[substream.dsi_sf_multiplier & 3]);
        }
    }
    return base ? std::optional(*base * factor) : base;
}

std::string_view ac4_language(const DsiPresentation& presentation) {
    for (const DsiSubstreamGroup& group : presentation.groups) {
        const std::string_view tag = group.language_tag_bytes;
        const std::string_view text = tag.substr(0, tag.find('\0'));
        if (!text.empty()) {
            return text;
        }
    }
    return {};
}

bool ac4_is_for_visually_impaired(const DsiPresentation& presentation) {
    return std::any_of(
        presentation.groups.begin(), presentation.groups.end(), [](const DsiSubstreamGroup& group) {
            return group.b_content_type != 0 && group.content_classifier == kVisuallyImpaired;
        });
}

Ac4MainComponent ac4_main_component(const DsiPresentation& presentation) {
    bool has_untold = false;
    bool has_other = false;
    for (const DsiSubstreamGroup& group : presentation.groups) {
        if (group.b_substreams_present == 0) {
            continue;
        }
        const bool is_told = group.b_content_type != 0;
        if (is_told && group.content_classifier <= kMusicAndEffects) {
            return Ac4MainComponent::kHere;
        }
        has_untold |= !is_told;
        has_other |= is_told;
    }
    return has_other && !has_untold ? Ac4MainComponent::kElsewhere : Ac4MainComponent::kNotTold;
}

}  // namespace mediasplit
