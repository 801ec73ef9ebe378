// The head of the video usability information, which is the same in H.264 and H.265.
#pragma once

#include <array>
#include <cstdint>

#include "src/video/bit_cursor.h"

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

/// aspect_ratio_info_present_flag and what follows from it. `Vui` is the record of either standard.
template <typename Vui>
void read_aspect_ratio(Vui& vui, BitCursor& bits) {
    vui.aspect_ratio_info_present_flag = bits.flag();
    if (vui.aspect_ratio_info_present_flag == 0) {
        return;
    }
    vui.aspect_ratio_idc = bits.u8(8);
    if (vui.aspect_ratio_idc == kExtendedSampleAspectRatio) {
        vui.sar_width = bits.u16(16);
        vui.sar_height = bits.u16(16);
    } else {
        const SampleAspectRatio ratio = sample_aspect_ratio(vui.aspect_ratio_idc);
        vui.sar_width = ratio.width;
        vui.sar_height = ratio.height;
    }
}

/// From overscan_info_present_flag to the chroma sample location. `matrix` is the one element that
/// the standards name differently.
template <typename Vui>
void read_video_signal(Vui& vui, std::uint8_t& matrix, BitCursor& bits) {
    vui.overscan_info_present_flag = bits.flag();
    if (vui.overscan_info_present_flag != 0) {
        vui.overscan_appropriate_flag = bits.flag();
    }
    vui.video_signal_type_present_flag = bits.flag();
    if (vui.video_signal_type_present_flag != 0) {
        vui.video_format = bits.u8(3);
        vui.video_full_range_flag = bits.flag();
        vui.colour_description_present_flag = bits.flag();
        if (vui.colour_description_present_flag != 0) {
            vui.colour_primaries = bits.u8(8);
            vui.transfer_characteristics = bits.u8(8);
            matrix = bits.u8(8);
        }
    }
    vui.chroma_loc_info_present_flag = bits.flag();
    if (vui.chroma_loc_info_present_flag != 0) {
        vui.chroma_sample_loc_type_top_field = bits.ue();
        vui.chroma_sample_loc_type_bottom_field = bits.ue();
    }
}

}  // namespace mediasplit
