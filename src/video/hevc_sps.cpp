// Sequence parameter sets of ITU-T H.265 7.3.2.2.
#include "src/video/bit_cursor.h"
#include "src/video/hevc_ordering.h"
#include "src/video/hevc_parameter_sets.h"
#include "src/video/nal_parsing.h"

namespace mediasplit {
namespace {

// What the standard infers for elements that the set doesn't carry.
void preset_vui(HevcVui& vui) {
    vui.video_format = 5;
    vui.colour_primaries = 2;
    vui.transfer_characteristics = 2;
    vui.matrix_coeffs = 2;
    vui.vui_num_units_in_tick = 1001;
    vui.vui_time_scale = 60000;
    vui.motion_vectors_over_pic_boundaries_flag = 1;
    vui.max_bytes_per_pic_denom = 2;
    vui.max_bits_per_min_cu_denom = 1;
    vui.log2_max_mv_length_horizontal = 15;
    vui.log2_max_mv_length_vertical = 15;
}

// Picture size inside the conformance window; the arithmetic of damaged sets wraps.
void derive_picture_size(HevcSps& sps) {
    const std::uint32_t sub_width_c =
        sps.chroma_format_idc == 1 || sps.chroma_format_idc == 2 ? 2 : 1;
    const std::uint32_t sub_height_c = sps.chroma_format_idc == 1 ? 2 : 1;
    sps.pic_width = sps.pic_width_in_luma_samples -
                    (sps.conf_win_left_offset + sps.conf_win_right_offset) * sub_width_c;
    sps.pic_height = sps.pic_height_in_luma_samples -
                     (sps.conf_win_top_offset + sps.conf_win_bottom_offset) * sub_height_c;
}

void read_picture_format(HevcSps& sps, BitCursor& bits) {
    sps.chroma_format_idc = bits.ue();
    if (sps.chroma_format_idc == 3) {
        sps.separate_colour_plane_flag = bits.flag();
    }
    sps.pic_width_in_luma_samples = bits.ue();
    sps.pic_height_in_luma_samples = bits.ue();
    sps.conformance_window_flag = bits.flag();
    if (sps.conformance_window_flag != 0) {
        sps.conf_win_left_offset = bits.ue();
        sps.conf_win_right_offset = bits.ue();
        sps.conf_win_top_offset = bits.ue();
        sps.conf_win_bottom_offset = bits.ue();
    }
    derive_picture_size(sps);
    sps.bit_depth_luma_minus8 = bits.ue();
    sps.bit_depth_chroma_minus8 = bits.ue();
}

Status read_coding_tools(HevcSps& sps, BitCursor& bits) {
    sps.log2_min_luma_coding_block_size_minus3 = bits.ue();
    sps.log2_diff_max_min_luma_coding_block_size = bits.ue();
    sps.log2_min_luma_transform_block_size_minus2 = bits.ue();
    sps.log2_diff_max_min_luma_transform_block_size = bits.ue();
    sps.max_transform_hierarchy_depth_inter = bits.ue();
    sps.max_transform_hierarchy_depth_intra = bits.ue();
    Status status = Status::kOk;
    sps.scaling_list_enabled_flag = bits.flag();
    if (sps.scaling_list_enabled_flag != 0) {
        sps.sps_scaling_list_data_present_flag = bits.flag();
        if (sps.sps_scaling_list_data_present_flag != 0) {
            status |= parse_hevc_scaling_list(&sps.scaling_list, bits.data(), bits.position());
        }
    }
    sps.amp_enabled_flag = bits.flag();
    sps.sample_adaptive_offset_enabled_flag = bits.flag();
    sps.pcm_enabled_flag = bits.flag();
    if (sps.pcm_enabled_flag != 0) {
        sps.pcm_sample_bit_depth_luma_minus1 = bits.u8(4);
        sps.pcm_sample_bit_depth_chroma_minus1 = bits.u8(4);
        sps.log2_min_pcm_luma_coding_block_size_minus3 = bits.ue();
        sps.log2_diff_max_min_pcm_luma_coding_block_size = bits.ue();
        sps.pcm_loop_filter_disabled_flag = bits.flag();
    }
    return status;
}

Status read_short_term_sets(HevcSps& sps, BitCursor& bits) {
    Status status = Status::kOk;
    sps.num_short_term_ref_pic_sets = bits.ue();
    for_each_counted(bits, sps.num_short_term_ref_pic_sets, [&](std::uint32_t i) {
        HevcShortTermRefPicSet set;
        status |= parse_hevc_st_ref_pic_set(&set, sps.st_ref_pic_sets, bits.data(), bits.position(),
                                            i, sps.num_short_term_ref_pic_sets);
        if (sps.st_ref_pic_sets.size() < kMaxHevcShortTermSets) {
            sps.st_ref_pic_sets.push_back(set);
        }
    });
    return status;
}

void read_long_term_pics(HevcSps& sps, BitCursor& bits) {
    sps.long_term_ref_pics_present_flag = bits.flag();
    if (sps.long_term_ref_pics_present_flag == 0) {
        return;
    }
    sps.num_long_term_ref_pics_sps = bits.ue();
    const std::uint64_t lsb_bits = std::uint64_t{sps.log2_max_pic_order_cnt_lsb_minus4} + 4;
    for_each_counted(bits, sps.num_long_term_ref_pics_sps, [&](std::uint32_t) {
        std::uint32_t poc_lsb = 0;
        if (lsb_bits <= 32) {
            poc_lsb = bits.u32(static_cast<std::uint32_t>(lsb_bits));
        } else {
            bits.skip(lsb_bits);
        }
        const std::uint8_t used = bits.flag();
        if (sps.lt_ref_pic_poc_lsb_sps.size() < kMaxHevcLongTermPics) {
            sps.lt_ref_pic_poc_lsb_sps.push_back(poc_lsb);
            sps.used_by_curr_pic_lt_sps_flag.push_back(used);
        }
    });
}

void read_extension_flags(HevcSps& sps, BitCursor& bits) {
    sps.sps_extension_present_flag = bits.flag();
    if (sps.sps_extension_present_flag != 0) {
        sps.sps_range_extension_flag = bits.flag();
        sps.sps_multilayer_extension_flag = bits.flag();
        sps.sps_3d_extension_flag = bits.flag();
        sps.sps_scc_extension_flag = bits.flag();
        sps.sps_extension_4bits = bits.u8(4);
    }
}

Status read_sps(HevcSps& sps, BitCursor& bits) {
    Status status = parse_hevc_nal_header(&sps.header, bits.data(), bits.position());
    sps.sps_video_parameter_set_id = bits.u8(4);
    sps.sps_max_sub_layers_minus1 = bits.u8(3);
    sps.sps_temporal_id_nesting_flag = bits.flag();
    status |= parse_hevc_profile_tier_level(&sps.profile_tier_level, bits.data(), bits.position(),
                                            sps.sps_max_sub_layers_minus1);
    sps.sps_seq_parameter_set_id = bits.ue();
    read_picture_format(sps, bits);
    sps.log2_max_pic_order_cnt_lsb_minus4 = bits.ue();
    sps.sps_sub_layer_ordering_info_present_flag = bits.flag();
    read_sub_layer_ordering(sps.ordering, bits, sps.sps_sub_layer_ordering_info_present_flag != 0,
                            sps.sps_max_sub_layers_minus1);
    status |= read_coding_tools(sps, bits);
    status |= read_short_term_sets(sps, bits);
    read_long_term_pics(sps, bits);
    sps.sps_temporal_mvp_enabled_flag = bits.flag();
    sps.strong_intra_smoothing_enabled_flag = bits.flag();
    preset_vui(sps.vui);
    sps.vui_parameters_present_flag = bits.flag();
    if (sps.vui_parameters_present_flag != 0) {
        status |= parse_hevc_vui_parameters(&sps.vui, bits.data(), bits.position(),
                                            sps.sps_max_sub_layers_minus1);
    }
    read_extension_flags(sps, bits);
    return status;
}

}  // namespace

Status parse_hevc_sps_nal(const NalBuffer* nal, HevcSps* sps, [[maybe_unused]] Loglist* loglist) {
    return parse_nal(nal, sps, read_sps);
}

}  // namespace mediasplit
