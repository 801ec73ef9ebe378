#include "ac4/descriptor_generator/channel_layout.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "ac4/descriptor_generator/dsi_record.h"
#include "ac4/metadata/channel_modes.h"
#include "ac4/toc_reader/channel_modes.h"

namespace mediasplit {
namespace {

constexpr std::array<std::uint32_t, 16> kModeChannels = {1, 2, 3, 5,  6,  7,  8,  7,
                                                         8, 7, 8, 11, 12, 13, 14, 24};

constexpr std::array<std::uint32_t, 19> kMaskBitChannels = {2, 1, 2, 2, 2, 2, 1, 2, 2, 1,
                                                            1, 1, 1, 2, 1, 1, 2, 2, 2};

// Masks of modes by what stands behind them: without and with four back channels, which only the
// modes 11 to 14 tell apart.
struct MaskOfMode {
    std::uint32_t plain;
    std::uint32_t with_4_back;
};
constexpr std::array<MaskOfMode, 16> kModeMasks = {{
    {0x2, 0x2},
    {0x1, 0x1},
    {0x3, 0x3},
    {0x7, 0x7},
    {0x47, 0x47},
    {0x20007, 0x20007},
    {0x20047, 0x20047},
    {0xF, 0xF},
    {0x4F, 0x4F},
    {0x40007, 0x40007},
    {0x40047, 0x40047},
    {0xD, 0xF},
    {0x4D, 0x4F},
    {0x10005, 0x10007},
    {0x10045, 0x10047},
    {0x2FF7F, 0x2FF7F},
}};
constexpr std::uint32_t kMaskOfOtherModes = 1;
constexpr std::uint32_t kMaskOneTopPair = 0x80;
constexpr std::uint32_t kMaskTwoTopPairs = 0x30;
// Deliberately the bit of the back pair: the centre flag rules it in these modes.
constexpr std::uint32_t kMaskCentre = 8;

struct SchemeOfWord {
    std::uint32_t word;
    std::int32_t scheme;
};
constexpr std::array<SchemeOfWord, 27> kMpegSchemes = {{
    {1, 2},        {2, 1},        {3, 3},        {5, 10},       {7, 5},        {71, 6},
    {79, 12},      {87, 14},      {119, 16},     {127, 19},     {2679, 17},    {2687, 18},
    {5215, 15},    {32769, 9},    {32771, 4},    {32839, 11},   {0x1007F, 20}, {0x20047, 7},
    {0x2FF7F, 13}, {0x40047, 14}, {0x40067, 16}, {0x4006F, 19}, {0x40A67, 17}, {0x40A6F, 18},
    {0x4144F, 15}, {0x5006F, 20}, {0x6FF6F, 13},
}};

// Channels that a mode with flags has beside its flagged ones and the first two.
std::uint32_t fixed_channels(std::int32_t code) {
    switch (code) {
        case kMode704:
            return 2;
        case kMode714:
            return 3;
        case kMode904:
            return 4;
        default:
            return 5;
    }
}

}  // namespace

std::int32_t convert_2_ac4_ch_mode(std::int32_t code) {
    // The escape is a mode of its own in the stream alone.
    return code == kModeEscape ? kNoChannelMode : ch_mode_from_code(code);
}

std::uint32_t chmode_2_channel_count(std::uint32_t mode) {
    return mode < kModeChannels.size() ? kModeChannels[mode] : 0;
}

std::uint32_t get_channel_mask_v1(std::uint32_t dsi_presentation_ch_mode,
                                  std::uint32_t top_channel_pairs, bool b_4_back_channels_present,
                                  bool b_centre_present) {
    if (dsi_presentation_ch_mode >= kModeMasks.size()) {
        return kMaskOfOtherModes;
    }
    const MaskOfMode& row = kModeMasks[dsi_presentation_ch_mode];
    std::uint32_t mask = b_4_back_channels_present ? row.with_4_back : row.plain;
    if (!dsi_mode_has_flags(dsi_presentation_ch_mode)) {
        return mask;
    }
    if (top_channel_pairs == 1) {
        mask |= kMaskOneTopPair;
    } else if (top_channel_pairs == 2) {
        mask |= kMaskTwoTopPairs;
    }
    return b_centre_present ? mask | kMaskCentre : mask & ~kMaskCentre;
}

std::uint32_t channel_mask_v1_to_channel_count(std::uint32_t mask) {
    std::uint32_t count = 0;
    for (std::size_t bit = 0; bit < kMaskBitChannels.size(); ++bit) {
        count += (mask >> bit & 1U) != 0 ? kMaskBitChannels[bit] : 0;
    }
    return count;
}

std::int32_t mapping_ac4_channel_config_to_mpeg_scheme(std::uint32_t word) {
    const auto* row = std::find_if(kMpegSchemes.begin(), kMpegSchemes.end(),
                                   [word](const SchemeOfWord& each) { return each.word == word; });
    return row != kMpegSchemes.end() ? row->scheme : -1;
}

std::uint32_t channel_layout_count(const AnalysisPresentation& presentation) {
    const std::int32_t code = presentation.channel_mode;
    if (code == kMode222) {
        constexpr std::uint32_t kChannelsOf222 = 24;
        return kChannelsOf222;
    }
    if (!is_immersive_mode(code)) {
        const ChannelMode* mode = find_channel_mode(code);
        return mode != nullptr ? static_cast<std::uint32_t>(mode->channels) : 0;
    }
    std::uint32_t count = presentation.b_4_back_channels_present ? 4 : 2;
    count += presentation.b_centre_present ? 1 : 0;
    const std::int32_t pairs = presentation.top_channels_present;
    count += pairs == 1 || pairs == 2 ? static_cast<std::uint32_t>(pairs) * 2 : 0;
    return count + fixed_channels(code);
}

}  // namespace mediasplit
