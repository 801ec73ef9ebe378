// Sample aspect ratios by aspect_ratio_idc.
#pragma once

#include <array>
#include <cstdint>

namespace mediasplit {

struct SampleAspectRatio {
    std::uint16_t width = 0;
    std::uint16_t height = 0;
};

/// Table E-1 of ITU-T H.264, rows 0 to 16.
inline constexpr std::array<SampleAspectRatio, 17> kSampleAspectRatios = {{
    {0, 0},
    {1, 1},
    {12, 11},
    {10, 11},
    {16, 11},
    {40, 33},
    {24, 11},
    {20, 11},
    {32, 11},
    {80, 33},
    {18, 11},
    {15, 11},
    {64, 33},
    {160, 99},
    {4, 3},
    {3, 2},
    {2, 1},
}};

inline constexpr std::uint8_t kExtendedSampleAspectRatio = 255;

/// The ratio of an idc of the table; 0:0 for any other.
constexpr SampleAspectRatio sample_aspect_ratio(std::uint8_t aspect_ratio_idc) {
    return aspect_ratio_idc < kSampleAspectRatios.size() ? kSampleAspectRatios[aspect_ratio_idc]
                                                         : SampleAspectRatio{};
}

}  // namespace mediasplit
