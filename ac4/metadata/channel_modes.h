#pragma once

#include <cstdint>

namespace mediasplit {

// Channel modes by `ch_mode` (`channel_mode` of ETSI TS 103 190-1 and -2): 0 mono,
// 1 stereo, 2 3.0, 3 5.0, 4 5.1, 5 7.0 (3/4/0), 6 7.1, 7 7.0 (5/2/0), 8 7.1, 9 7.0 (3/2/2), 10 7.1,
// 11 7.0.4, 12 7.1.4, 13 9.0.4, 14 9.1.4, 15 22.2, 16 reserved. Objects have none.
inline constexpr int kNoChannelMode = -1;

// Speakers that metadata elements depend on.
enum ChannelSet : std::uint32_t {
    kHasCentre = 1,
    kHasLeftRight = 2,
    kHasSurround = 4,
    kHasBack = 8,
    kHasWide = 16,
    kHasTopFront = 32,
    kHasLfe = 64
};

// The speakers of a mode; none for kNoChannelMode and reserved modes.
std::uint32_t ch_mode_speakers(int ch_mode);

inline bool ch_mode_has(int ch_mode, std::uint32_t speakers) {
    return (ch_mode_speakers(ch_mode) & speakers) != 0;
}

// `ch_mode` for a prefix code written as number times two, mono as 2 (so 28 is 5.1, 1018 is 9.1.4,
// and 8 and 10 are the immersive stereo forms of stereo); kNoChannelMode for an unknown code.
int ch_mode_from_code(int code);

// Core mode for such a code: 3 5.0, 4 5.1, 5 5.0.2, 6 5.1.2; kNoChannelMode for any other.
int core_ch_mode_from_code(int code);

}  // namespace mediasplit
