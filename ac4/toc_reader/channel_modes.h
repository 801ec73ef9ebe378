#pragma once

#include <cstdint>

#include "ac4/toc_reader/toc_parser.h"

namespace mediasplit {

// One row of the channel mode table. The code is the prefix code of the bitstream, taken as a
// number and shifted left by one, with mono written as 2.
struct ChannelMode {
    std::int32_t code = 0;
    std::int32_t channels = 0;
    bool lfe = false;
    std::uint32_t bitmap = 0;       // 0: not known
    std::uint32_t mask = 0;         // standard bed channel assignment, 10 bits
    std::uint32_t nonstd_mask = 0;  // single bed channels, 17 bits; 0: not known
};

inline constexpr std::int32_t kModeMono = 2;
inline constexpr std::int32_t kModeStereo = 4;
inline constexpr std::int32_t kMode50 = 26;
inline constexpr std::int32_t kMode51 = 28;
inline constexpr std::int32_t kMode70Back = 240;
inline constexpr std::int32_t kMode71Back = 242;
inline constexpr std::int32_t kMode70Wide = 244;
inline constexpr std::int32_t kMode71Wide = 246;
inline constexpr std::int32_t kMode70Top = 248;
inline constexpr std::int32_t kMode71Top = 250;
inline constexpr std::int32_t kMode704 = 504;
inline constexpr std::int32_t kMode714 = 506;
inline constexpr std::int32_t kMode904 = 1016;
inline constexpr std::int32_t kMode914 = 1018;
inline constexpr std::int32_t kMode222 = 1020;
inline constexpr std::int32_t kModeEscape = 1022;
inline constexpr std::int32_t kModeImmersiveStereo = 8;  // presentation_version 2
inline constexpr std::int32_t kModeImmersiveStereoObjects = 10;

// The row of a code, or null for a code that is assigned to nothing.
const ChannelMode* find_channel_mode(std::int32_t code);

// The code whose layout has exactly the channels of `bitmap`, 0 for none.
std::int32_t channel_mode_of_bitmap(std::uint32_t bitmap);

// Both layouts together. Mono and stereo joined stay stereo: the mono signal is mixed into it.
std::uint32_t join_bitmaps(std::uint32_t a, std::uint32_t b);

// 7.0.4, 7.1.4, 9.0.4 and 9.1.4: the modes with flags for back, centre and top channels.
bool is_immersive_mode(std::int32_t code);

// The layout that a core decoder makes of a mode, 0 if it has none of its own.
std::int32_t core_channel_mode(std::int32_t code);

// presentation_version 2 gives the codes of 3/4/0 and 3/4/0.1 to the two kinds of immersive stereo.
std::int32_t channel_mode_in_presentation(std::int32_t code, std::int32_t presentation_version);

// Reads channel_mode (ETSI TS 103 190-1 clause 4.3.3.4.1, TS 103 190-2 clause 6.3.2.7.2). The
// escape is the 7-bit code of all ones before bitstream_version 2 and the 9-bit one from there on.
std::int32_t read_channel_mode(TocParser& parser);

}  // namespace mediasplit
