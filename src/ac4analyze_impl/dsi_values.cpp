#include "src/ac4analyze_impl/dsi_values.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <string_view>

#include "src/util/text.h"

namespace mediasplit {
namespace {

constexpr std::size_t kFullCodecLength = 13;
constexpr std::uint32_t kNoPresentation = 0xFFFFFFFF;

}  // namespace

std::string ac4_codec_text(const Ac4CodecProfile& profile) {
    std::array<char, 40> text{};
    (void)std::snprintf(text.data(), text.size(), "ac-4.%02x.%02x.%02x", profile.bitstream_version,
                        profile.presentation_version, profile.mdcompat);
    return text.data();
}

int extract_value_dac4(const DsiRecord& record, Ac4CodecProfile* profile,
                       std::uint32_t* channel_mask, bool filtered) {
    *profile = {record.bitstream_version, 0, kNoPresentation};
    *channel_mask = 0;
    for (std::uint32_t i = 0; i < record.n_presentations; ++i) {
        // A presentation that the box doesn't describe counts as one of version 0.
        const DsiPresentation& presentation = dsi_entry(record.presentations, i);
        if (i == 0) {
            profile->presentation_version = presentation.version;
            *channel_mask = presentation.presentation_channel_mask_v1;
        }
        if (!filtered || presentation.version == 0 || presentation.b_multi_pid == 0) {
            profile->mdcompat = std::min(profile->mdcompat, presentation.mdcompat);
        }
    }
    return 0;
}

int extract_codec_profile_value_dac4(const DsiRecord& record, Ac4CodecProfile* profile,
                                     bool filtered) {
    std::uint32_t channel_mask = 0;
    return extract_value_dac4(record, profile, &channel_mask, filtered);
}

int extract_audio_config_value_dac4(const DsiRecord& record, std::uint32_t* channel_mask,
                                    bool filtered) {
    Ac4CodecProfile profile;
    return extract_value_dac4(record, &profile, channel_mask, filtered);
}

int extract_ac4_profile_value_from_dash_codecs(OptText codecs, Ac4CodecProfile* profile) {
    const std::string_view text = codecs.view();
    if (text.size() != kFullCodecLength || text.substr(0, 4) != "ac-4") {
        return 1;
    }
    std::array<std::uint32_t, 3> values{};
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::size_t point = 4 + i * 3;
        const std::string_view component = text.substr(point + 1, 2);
        if (text[point] != '.' || check_ac4_codec_component_value_valid(component) != 0) {
            return 1;
        }
        values[i] = str2uint_hex(component);
    }
    *profile = {values[0], values[1], values[2]};
    return 0;
}

int check_ac4_codec_component_value_valid(OptText component) {
    return component && component->size() == 2 ? check_str_hex(component) : 1;
}

}  // namespace mediasplit
