// Sequence parameter sets of ITU-T H.264. The elements keep the names of the standard; nothing is
// range-checked, and what the unit doesn't hold reads as 0.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "src/log/status.h"
#include "src/util/bit_reader.h"
#include "src/video/nal_unit.h"

namespace mediasplit {

struct Loglist;

inline constexpr std::size_t kMaxAvcScalingLists = 12;
inline constexpr std::size_t kMaxAvcCpbEntries = 32;
inline constexpr std::size_t kMaxAvcPicOrderCntOffsets = 255;

/// scaling_list(), ITU-T H.264 7.3.2.1.1.1.
struct AvcScalingList {
    std::uint8_t present_flag = 0;
    std::uint8_t use_default_flag = 0;
    std::array<std::int32_t, 64> delta_scale{};
    std::array<std::uint8_t, 64> scale{};  ///< resulting list, the first 16 or all 64 in use
};

struct AvcCpbEntry {
    std::uint32_t bit_rate_value_minus1 = 0;
    std::uint32_t cpb_size_value_minus1 = 0;
    std::uint8_t cbr_flag = 0;
};

/// hrd_parameters(), ITU-T H.264 E.1.2.
struct AvcHrd {
    std::uint32_t cpb_cnt_minus1 = 0;  ///< as read; `cpb` keeps the first 32 entries
    std::uint8_t bit_rate_scale = 0;
    std::uint8_t cpb_size_scale = 0;
    std::vector<AvcCpbEntry> cpb;
    std::uint8_t initial_cpb_removal_delay_length_minus1 = 0;
    std::uint8_t cpb_removal_delay_length_minus1 = 0;
    std::uint8_t dpb_output_delay_length_minus1 = 0;
    std::uint8_t time_offset_length = 0;
};

/// vui_parameters(), ITU-T H.264 E.1.1.
struct AvcVui {
    std::uint8_t aspect_ratio_info_present_flag = 0;
    std::uint8_t aspect_ratio_idc = 0;
    std::uint16_t sar_width = 0;  ///< by Table E-1 for an idc below 17; 0 for an unknown idc
    std::uint16_t sar_height = 0;
    std::uint8_t overscan_info_present_flag = 0;
    std::uint8_t overscan_appropriate_flag = 0;
    std::uint8_t video_signal_type_present_flag = 0;
    std::uint8_t video_format = 0;
    std::uint8_t video_full_range_flag = 0;
    std::uint8_t colour_description_present_flag = 0;
    std::uint8_t colour_primaries = 0;
    std::uint8_t transfer_characteristics = 0;
    std::uint8_t matrix_coefficients = 0;
    std::uint8_t chroma_loc_info_present_flag = 0;
    std::uint32_t chroma_sample_loc_type_top_field = 0;
    std::uint32_t chroma_sample_loc_type_bottom_field = 0;
    std::uint8_t timing_info_present_flag = 0;  ///< cleared when the tick or the scale is 0
    std::uint32_t num_units_in_tick = 0;
    std::uint32_t time_scale = 0;
    std::uint8_t fixed_frame_rate_flag = 0;
    std::uint8_t nal_hrd_parameters_present_flag = 0;
    AvcHrd nal_hrd;
    std::uint8_t vcl_hrd_parameters_present_flag = 0;
    AvcHrd vcl_hrd;
    std::uint8_t low_delay_hrd_flag = 0;
    std::uint8_t pic_struct_present_flag = 0;
    std::uint8_t bitstream_restriction_flag = 0;
    std::uint8_t motion_vectors_over_pic_boundaries_flag = 0;
    std::uint32_t max_bytes_per_pic_denom = 0;
    std::uint32_t max_bits_per_mb_denom = 0;
    std::uint32_t log2_max_mv_length_horizontal = 0;
    std::uint32_t log2_max_mv_length_vertical = 0;
    std::uint32_t max_num_reorder_frames = 0;
    std::uint32_t max_dec_frame_buffering = 0;
};

/// seq_parameter_set_data(), ITU-T H.264 7.3.2.1.1.
struct AvcSps {
    AvcNalHeader header;
    std::uint8_t profile_idc = 0;
    std::uint8_t constraint_flags = 0;  ///< the byte between profile_idc and level_idc
    std::uint8_t level_idc = 0;
    std::uint32_t seq_parameter_set_id = 0;
    std::uint32_t chroma_format_idc = 0;  ///< 1 in a parsed set of a profile without the element
    std::uint8_t separate_colour_plane_flag = 0;
    std::uint32_t bit_depth_luma_minus8 = 0;
    std::uint32_t bit_depth_chroma_minus8 = 0;
    std::uint8_t qpprime_y_zero_transform_bypass_flag = 0;
    std::uint8_t seq_scaling_matrix_present_flag = 0;
    std::vector<AvcScalingList> scaling_lists;  ///< 8 or 12 when present
    std::uint32_t log2_max_frame_num_minus4 = 0;
    std::uint32_t max_frame_num = 0;  ///< derived
    std::uint32_t pic_order_cnt_type = 0;
    std::uint32_t log2_max_pic_order_cnt_lsb_minus4 = 0;
    std::uint32_t max_pic_order_cnt_lsb = 0;  ///< derived
    std::uint8_t delta_pic_order_always_zero_flag = 0;
    std::int32_t offset_for_non_ref_pic = 0;
    std::int32_t offset_for_top_to_bottom_field = 0;
    std::uint32_t num_ref_frames_in_pic_order_cnt_cycle = 0;  ///< as read
    std::vector<std::int32_t> offset_for_ref_frame;           ///< the first 255
    std::uint32_t max_num_ref_frames = 0;
    std::uint8_t gaps_in_frame_num_value_allowed_flag = 0;
    std::uint32_t pic_width_in_mbs_minus1 = 0;
    std::uint32_t pic_height_in_map_units_minus1 = 0;
    std::uint8_t frame_mbs_only_flag = 0;
    std::uint8_t mb_adaptive_frame_field_flag = 0;
    std::uint8_t direct_8x8_inference_flag = 0;
    std::uint8_t frame_cropping_flag = 0;
    std::uint32_t frame_crop_left_offset = 0;
    std::uint32_t frame_crop_right_offset = 0;
    std::uint32_t frame_crop_top_offset = 0;
    std::uint32_t frame_crop_bottom_offset = 0;
    std::uint32_t pic_width = 0;   ///< luma samples after cropping, derived
    std::uint32_t pic_height = 0;  ///< luma samples after cropping, of a frame, derived
    float frame_rate = 0;          ///< frames per second, 0 if the set doesn't tell
    std::uint8_t vui_parameters_present_flag = 0;
    AvcVui vui;
};

/// Parses a sequence parameter set unit (type 7) into `*sps`, whose former content is replaced.
/// Fails on null arguments or a unit without data; a unit of size 0 leaves `*sps` as it is.
Status parse_avc_sps_nal(const NalBuffer* nal, AvcSps* sps, Loglist* loglist);

// The parts of the set, each read from unescaped `data` at bit `position`, which moves on. They
// fail on null arguments only.

/// Reads a list of `size` (16 or 64) entries.
Status parse_avc_scaling_list(AvcScalingList* list, ByteSpan data, std::uint32_t& position,
                              std::size_t size);
Status parse_avc_hrd_parameters(AvcHrd* hrd, ByteSpan data, std::uint32_t& position);
Status parse_avc_vui_parameters(AvcVui* vui, ByteSpan data, std::uint32_t& position);

}  // namespace mediasplit
