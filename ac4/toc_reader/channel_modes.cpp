#include "ac4/toc_reader/channel_modes.h"

#include <algorithm>
#include <array>

namespace mediasplit {
namespace {

// 7.1.4 and 9.1.4 are counted with 13 and 15 channels on purpose: users of this table expect these
// figures, and layout counts proper are worked out from the channel flags instead.
constexpr std::array<ChannelMode, 19> kChannelModes = {{
    {kModeMono, 1, false, 4, 0x002, 0x00004},
    {kModeStereo, 2, false, 3, 0x001, 0x00003},
    {kModeImmersiveStereo, 2, false, 3, 0x001, 0x00003},
    {kModeImmersiveStereoObjects, 2, false, 3, 0x001, 0x00003},
    {24, 3, false, 7, 0x003, 0x00007},
    {kMode50, 5, false, 55, 0x00B, 0x00037},
    {kMode51, 6, true, 63, 0x00F, 0x0003F},
    {kMode70Back, 7, false, 247, 0x01B, 0x000F7},
    {kMode71Back, 8, true, 255, 0x01F, 0x000FF},
    {kMode70Wide, 7, false, 3127, 0x10B, 0x0C037},
    {kMode71Wide, 8, true, 3135, 0x10F, 0x0C03F},
    {kMode70Top, 7, false, 823, 0x02B, 0x00337},
    {kMode71Top, 8, true, 831, 0x02F, 0x0033F},
    {kMode704, 11, false, 64567, 0x0BB, 0x033F7},
    {kMode714, 13, true, 64575, 0x0BF, 0x033FF},
    {kMode904, 13, false, 64759, 0, 0},
    {kMode914, 15, true, 64767, 0, 0},
    {kMode222, 0, false, 0, 0, 0},
    {kModeEscape, 0, false, 0, 0, 0},
}};

constexpr std::uint32_t kMonoBitmap = 4;
constexpr std::uint32_t kStereoBitmap = 3;
constexpr std::uint32_t kMostEscapedModes = 31;

}  // namespace

const ChannelMode* find_channel_mode(std::int32_t code) {
    const auto* row = std::find_if(kChannelModes.begin(), kChannelModes.end(),
                                   [code](const ChannelMode& mode) { return mode.code == code; });
    return row != kChannelModes.end() ? row : nullptr;
}

std::int32_t channel_mode_of_bitmap(std::uint32_t bitmap) {
    if (bitmap == 0) {
        return 0;
    }
    const auto* row =
        std::find_if(kChannelModes.begin(), kChannelModes.end(),
                     [bitmap](const ChannelMode& mode) { return mode.bitmap == bitmap; });
    return row != kChannelModes.end() ? row->code : 0;
}

std::uint32_t join_bitmaps(std::uint32_t a, std::uint32_t b) {
    const bool mono_and_stereo =
        (a == kMonoBitmap && b == kStereoBitmap) || (a == kStereoBitmap && b == kMonoBitmap);
    return mono_and_stereo ? kStereoBitmap : a | b;
}

bool is_immersive_mode(std::int32_t code) {
    return code == kMode704 || code == kMode714 || code == kMode904 || code == kMode914;
}

std::int32_t core_channel_mode(std::int32_t code) {
    switch (code) {
        case kMode704:
        case kMode904:
            return kMode70Top;
        case kMode714:
        case kMode914:
            return kMode71Top;
        default:
            return 0;
    }
}

std::int32_t channel_mode_in_presentation(std::int32_t code, std::int32_t presentation_version) {
    if (presentation_version != 2) {
        return code;
    }
    if (code == kMode70Back) {
        return kModeImmersiveStereo;
    }
    return code == kMode71Back ? kModeImmersiveStereoObjects : code;
}

std::int32_t read_channel_mode(TocParser& parser) {
    const bool long_codes = parser.head.bitstream_version > 1;
    std::uint32_t code = 0;
    const auto more = [&](int n) {
        code = (code << n) | read_field(parser.in, n);
        return code;
    };
    if (more(1) == 0) {
        return kModeMono;
    }
    if (more(1) == 0b10) {
        return kModeStereo;
    }
    if (more(2) != 0b1111) {
        return static_cast<std::int32_t>(code << 1);
    }
    more(3);
    if (long_codes && code == 0b1111110) {
        more(1);
    } else if (long_codes && code == 0b1111111) {
        more(2);
    }
    if (code == (long_codes ? 0b111111111U : 0b1111111U)) {
        limited(parser, read_variable_bits(parser.in, 2), kMostEscapedModes);
        return kModeEscape;
    }
    return static_cast<std::int32_t>(code << 1);
}

}  // namespace mediasplit
