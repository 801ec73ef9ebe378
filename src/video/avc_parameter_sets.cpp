#include "src/video/avc_parameter_sets.h"

#include <algorithm>

#include "src/video/bit_cursor.h"
#include "src/video/nal_parsing.h"
#include "src/video/vui_elements.h"

namespace mediasplit {
namespace {

// Profiles whose sets carry the chroma format, bit depths and scaling lists.
constexpr std::array<std::uint8_t, 13> kHighProfiles = {100, 110, 122, 244, 44,  83, 86,
                                                        118, 128, 138, 139, 134, 135};

// 2^exponent; over-long exponents of damaged sets give 0.
std::uint32_t power_of_two(std::uint64_t exponent) {
    return exponent < 32 ? std::uint32_t{1} << exponent : 0;
}

void read_high_profile_elements(AvcSps& sps, BitCursor& bits) {
    sps.chroma_format_idc = bits.ue();
    if (sps.chroma_format_idc == 3) {
        sps.separate_colour_plane_flag = bits.flag();
    }
    sps.bit_depth_luma_minus8 = bits.ue();
    sps.bit_depth_chroma_minus8 = bits.ue();
    sps.qpprime_y_zero_transform_bypass_flag = bits.flag();
    sps.seq_scaling_matrix_present_flag = bits.flag();
    if (sps.seq_scaling_matrix_present_flag == 0) {
        return;
    }
    sps.scaling_lists.resize(sps.chroma_format_idc == 3 ? kMaxAvcScalingLists : 8);
    for (std::size_t i = 0; i < sps.scaling_lists.size(); ++i) {
        AvcScalingList& list = sps.scaling_lists[i];
        list.present_flag = bits.flag();
        if (list.present_flag != 0) {
            parse_avc_scaling_list(&list, bits.data(), bits.position(), i < 6 ? 16 : 64);
        }
    }
}

void read_pic_order_cnt(AvcSps& sps, BitCursor& bits) {
    sps.pic_order_cnt_type = bits.ue();
    if (sps.pic_order_cnt_type == 0) {
        sps.log2_max_pic_order_cnt_lsb_minus4 = bits.ue();
        sps.max_pic_order_cnt_lsb =
            power_of_two(std::uint64_t{sps.log2_max_pic_order_cnt_lsb_minus4} + 4);
    } else if (sps.pic_order_cnt_type == 1) {
        sps.delta_pic_order_always_zero_flag = bits.flag();
        sps.offset_for_non_ref_pic = bits.se();
        sps.offset_for_top_to_bottom_field = bits.se();
        sps.num_ref_frames_in_pic_order_cnt_cycle = bits.ue();
        for_each_counted(bits, sps.num_ref_frames_in_pic_order_cnt_cycle, [&](std::uint32_t) {
            const std::int32_t offset = bits.se();
            if (sps.offset_for_ref_frame.size() < kMaxAvcPicOrderCntOffsets) {
                sps.offset_for_ref_frame.push_back(offset);
            }
        });
    }
}

// Picture size after cropping, ITU-T H.264 7.4.2.1.1. Damaged sets give meaningless sizes, in
// arithmetic that wraps.
void derive_picture_size(AvcSps& sps) {
    const std::uint32_t fields = 2U - sps.frame_mbs_only_flag;
    sps.pic_width = (sps.pic_width_in_mbs_minus1 + 1) * 16;
    sps.pic_height = (sps.pic_height_in_map_units_minus1 + 1) * 16 * fields;
    const std::uint32_t chroma_array_type =
        sps.separate_colour_plane_flag != 0 ? 0 : sps.chroma_format_idc;
    const std::uint32_t crop_unit_x = chroma_array_type == 1 || chroma_array_type == 2 ? 2 : 1;
    const std::uint32_t crop_unit_y = (chroma_array_type == 1 ? 2 : 1) * fields;
    sps.pic_width -= (sps.frame_crop_left_offset + sps.frame_crop_right_offset) * crop_unit_x;
    sps.pic_height -= (sps.frame_crop_top_offset + sps.frame_crop_bottom_offset) * crop_unit_y;
}

void read_picture_format(AvcSps& sps, BitCursor& bits) {
    sps.pic_width_in_mbs_minus1 = bits.ue();
    sps.pic_height_in_map_units_minus1 = bits.ue();
    sps.frame_mbs_only_flag = bits.flag();
    if (sps.frame_mbs_only_flag == 0) {
        sps.mb_adaptive_frame_field_flag = bits.flag();
    }
    sps.direct_8x8_inference_flag = bits.flag();
    sps.frame_cropping_flag = bits.flag();
    if (sps.frame_cropping_flag != 0) {
        sps.frame_crop_left_offset = bits.ue();
        sps.frame_crop_right_offset = bits.ue();
        sps.frame_crop_top_offset = bits.ue();
        sps.frame_crop_bottom_offset = bits.ue();
    }
    derive_picture_size(sps);
}

void read_timing(AvcVui& vui, BitCursor& bits) {
    vui.timing_info_present_flag = bits.flag();
    if (vui.timing_info_present_flag == 0) {
        return;
    }
    vui.num_units_in_tick = bits.u32(32);
    vui.time_scale = bits.u32(32);
    vui.fixed_frame_rate_flag = bits.flag();
    if (vui.num_units_in_tick == 0 || vui.time_scale == 0) {
        vui.timing_info_present_flag = 0;
    }
}

void read_hrds(AvcVui& vui, BitCursor& bits) {
    vui.nal_hrd_parameters_present_flag = bits.flag();
    if (vui.nal_hrd_parameters_present_flag != 0) {
        parse_avc_hrd_parameters(&vui.nal_hrd, bits.data(), bits.position());
    }
    vui.vcl_hrd_parameters_present_flag = bits.flag();
    if (vui.vcl_hrd_parameters_present_flag != 0) {
        parse_avc_hrd_parameters(&vui.vcl_hrd, bits.data(), bits.position());
    }
    if (vui.nal_hrd_parameters_present_flag != 0 || vui.vcl_hrd_parameters_present_flag != 0) {
        vui.low_delay_hrd_flag = bits.flag();
    }
}

void read_bitstream_restriction(AvcVui& vui, BitCursor& bits) {
    vui.bitstream_restriction_flag = bits.flag();
    if (vui.bitstream_restriction_flag == 0) {
        return;
    }
    vui.motion_vectors_over_pic_boundaries_flag = bits.flag();
    vui.max_bytes_per_pic_denom = bits.ue();
    vui.max_bits_per_mb_denom = bits.ue();
    vui.log2_max_mv_length_horizontal = bits.ue();
    vui.log2_max_mv_length_vertical = bits.ue();
    vui.max_num_reorder_frames = bits.ue();
    vui.max_dec_frame_buffering = bits.ue();
}

Status read_sps(AvcSps& sps, BitCursor& bits) {
    parse_avc_nal_header(&sps.header, bits.data(), bits.position());
    sps.profile_idc = bits.u8(8);
    sps.constraint_flags = bits.u8(8);
    sps.level_idc = bits.u8(8);
    sps.seq_parameter_set_id = bits.ue();
    sps.chroma_format_idc = 1;
    if (std::find(kHighProfiles.begin(), kHighProfiles.end(), sps.profile_idc) !=
        kHighProfiles.end()) {
        read_high_profile_elements(sps, bits);
    }
    sps.log2_max_frame_num_minus4 = bits.ue();
    sps.max_frame_num = power_of_two(std::uint64_t{sps.log2_max_frame_num_minus4} + 4);
    read_pic_order_cnt(sps, bits);
    sps.max_num_ref_frames = bits.ue();
    sps.gaps_in_frame_num_value_allowed_flag = bits.flag();
    read_picture_format(sps, bits);
    sps.vui_parameters_present_flag = bits.flag();
    if (sps.vui_parameters_present_flag == 0) {
        return Status::kOk;
    }
    const Status status = parse_avc_vui_parameters(&sps.vui, bits.data(), bits.position());
    if (sps.vui.num_units_in_tick != 0) {
        sps.frame_rate = static_cast<float>(sps.vui.time_scale) /
                         static_cast<float>(sps.vui.num_units_in_tick) * 0.5F;
    }
    return status;
}

}  // namespace

Status parse_avc_scaling_list(AvcScalingList* list, ByteSpan data, std::uint32_t& position,
                              std::size_t size) {
    if (list == nullptr || data.data() == nullptr) {
        return Status::kFailed;
    }
    BitCursor bits(data, position);
    std::uint32_t last_scale = 8;
    std::uint32_t next_scale = 8;
    for (std::size_t j = 0; j < std::min(size, list->scale.size()); ++j) {
        if (next_scale != 0) {
            list->delta_scale[j] = bits.se();
            next_scale = (last_scale + static_cast<std::uint32_t>(list->delta_scale[j])) & 255U;
            if (j == 0 && next_scale == 0) {
                list->use_default_flag = 1;
            }
        }
        if (next_scale != 0) {
            last_scale = next_scale;
        }
        list->scale[j] = static_cast<std::uint8_t>(last_scale);
    }
    return Status::kOk;
}

Status parse_avc_hrd_parameters(AvcHrd* hrd, ByteSpan data, std::uint32_t& position) {
    if (hrd == nullptr || data.data() == nullptr) {
        return Status::kFailed;
    }
    BitCursor bits(data, position);
    hrd->cpb_cnt_minus1 = bits.ue();
    hrd->bit_rate_scale = bits.u8(4);
    hrd->cpb_size_scale = bits.u8(4);
    for_each_counted(bits, std::uint64_t{hrd->cpb_cnt_minus1} + 1, [&](std::uint32_t) {
        AvcCpbEntry entry;
        entry.bit_rate_value_minus1 = bits.ue();
        entry.cpb_size_value_minus1 = bits.ue();
        entry.cbr_flag = bits.flag();
        if (hrd->cpb.size() < kMaxAvcCpbEntries) {
            hrd->cpb.push_back(entry);
        }
    });
    hrd->initial_cpb_removal_delay_length_minus1 = bits.u8(5);
    hrd->cpb_removal_delay_length_minus1 = bits.u8(5);
    hrd->dpb_output_delay_length_minus1 = bits.u8(5);
    hrd->time_offset_length = bits.u8(5);
    return Status::kOk;
}

Status parse_avc_vui_parameters(AvcVui* vui, ByteSpan data, std::uint32_t& position) {
    if (vui == nullptr || data.data() == nullptr) {
        return Status::kFailed;
    }
    BitCursor bits(data, position);
    read_aspect_ratio(*vui, bits);
    read_video_signal(*vui, vui->matrix_coefficients, bits);
    read_timing(*vui, bits);
    read_hrds(*vui, bits);
    vui->pic_struct_present_flag = bits.flag();
    read_bitstream_restriction(*vui, bits);
    return Status::kOk;
}

Status parse_avc_sps_nal(const NalBuffer* nal, AvcSps* sps, [[maybe_unused]] Loglist* loglist) {
    return parse_nal(nal, sps, read_sps);
}

}  // namespace mediasplit
