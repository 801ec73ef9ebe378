#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// Fixed tables of ETSI TS 102 366 that headers, time slices and the report share.

namespace mediasplit {

inline constexpr std::uint16_t kSyncWord = 0x0B77;

inline constexpr std::size_t kChannelPositions = 16;  // positions of a channel map, top bit first
inline constexpr int kLfePosition = 15;

// Channels of each `acmod` in coding order, as positions in a channel map: 0 L, 1 C, 2 R, 3 Ls, 4
// Rs. 5 stands for the LFE channel, -1 for none. The one surround of 2/1 and 3/1 stands as Ls.
inline constexpr int kLfeIndex = 5;
inline constexpr std::array<std::array<int, 6>, 8> kChannelTable{{
    {0, 2, 5, -1, -1, -1},
    {1, 5, -1, -1, -1, -1},
    {0, 2, 5, -1, -1, -1},
    {0, 1, 2, 5, -1, -1},
    {0, 2, 3, 5, -1, -1},
    {0, 1, 2, 3, 5, -1},
    {0, 2, 3, 4, 5, -1},
    {0, 1, 2, 3, 4, 5},
}};

// Full bandwidth channels by `acmod` (4.4.2.3).
inline constexpr std::array<std::uint16_t, 8> kChannelCount{2, 1, 2, 3, 3, 4, 4, 5};

// Hz by `fscod` (4.4.1.3); 3 is reserved.
inline constexpr std::array<std::uint32_t, 4> kSampleRate{48000, 44100, 32000, 0};

// Blocks by `numblkscod` (E.1.3.1.5).
inline constexpr std::array<std::uint16_t, 4> kBlocksPerFrame{1, 2, 3, 6};

inline constexpr std::uint16_t kUnityScale = 51;  // pgmscl and extpgmscl: 0 dB

inline constexpr std::uint16_t kMaxFrmsizecod = 37;

// AC-3 frame size in 16-bit words by `fscod` and `frmsizecod` (4.4.1.4).
inline constexpr std::array<std::array<std::uint16_t, kMaxFrmsizecod + 1>, 3> kFrameSize{{
    {64,  64,  80,  80,  96,  96,  112,  112,  128,  128,  160,  160, 192,
     192, 224, 224, 256, 256, 320, 320,  384,  384,  448,  448,  512, 512,
     640, 640, 768, 768, 896, 896, 1024, 1024, 1152, 1152, 1280, 1280},
    {69,  70,  87,  88,  104, 105, 121,  122,  139,  140,  174,  175, 208,
     209, 243, 244, 278, 279, 348, 349,  417,  418,  487,  488,  557, 558,
     696, 697, 835, 836, 975, 976, 1114, 1115, 1253, 1254, 1393, 1394},
    {96,  96,  120,  120,  144,  144,  168,  168,  192,  192,  240,  240, 288,
     288, 336, 336,  384,  384,  480,  480,  576,  576,  672,  672,  768, 768,
     960, 960, 1152, 1152, 1344, 1344, 1536, 1536, 1728, 1728, 1920, 1920},
}};

// The older 2-bit levels that stand for the 3-bit levels `lorocmixlev` and `lorosurmixlev`.
inline constexpr std::array<std::uint16_t, 8> kCmixlevFromLoro{0, 0, 0, 0, 0, 1, 2, 2};
inline constexpr std::array<std::uint16_t, 8> kSurmixlevFromLoro{0, 0, 0, 0, 0, 1, 1, 2};

// Whether a `bsid` has the syntax of Annex E (E-AC-3) or of clause 4 and Annex D (AC-3).
constexpr bool is_oap_bsid(std::uint16_t bsid) {
    return bsid >= 11 && bsid <= 16;
}
constexpr bool is_oa_bsid(std::uint16_t bsid) {
    return bsid < 9;
}

// Number of channels that the bits of a `chanmap` imply (E.1.3.1.8): two for each of the pairs
// Lc/Rc, Lrs/Rrs, Lsd/Rsd, Lw/Rw and Lvh/Rvh, one for any other bit.
constexpr std::uint16_t chx_getnumchanexts(std::uint16_t chanmap) {
    constexpr unsigned kPairs = 1U << 10U | 1U << 9U | 1U << 6U | 1U << 5U | 1U << 4U;
    unsigned count = 0;
    for (unsigned bit = 0; bit < kChannelPositions; ++bit) {
        if ((unsigned{chanmap} >> bit & 1U) != 0) {
            count += (kPairs >> bit & 1U) != 0 ? 2 : 1;
        }
    }
    return static_cast<std::uint16_t>(count);
}

}  // namespace mediasplit
