// Video usability information of ITU-T H.265 E.2.1.
#include "src/video/bit_cursor.h"
#include "src/video/hevc_parameter_sets.h"
#include "src/video/vui_elements.h"

namespace mediasplit {
namespace {

void read_display(HevcVui& vui, BitCursor& bits) {
    vui.neutral_chroma_indication_flag = bits.flag();
    vui.field_seq_flag = bits.flag();
    vui.frame_field_info_present_flag = bits.flag();
    vui.default_display_window_flag = bits.flag();
    if (vui.default_display_window_flag != 0) {
        vui.def_disp_win_left_offset = bits.ue();
        vui.def_disp_win_right_offset = bits.ue();
        vui.def_disp_win_top_offset = bits.ue();
        vui.def_disp_win_bottom_offset = bits.ue();
    }
}

Status read_timing(HevcVui& vui, BitCursor& bits, std::uint32_t max_sub_layers_minus1) {
    vui.vui_timing_info_present_flag = bits.flag();
    if (vui.vui_timing_info_present_flag == 0) {
        return Status::kOk;
    }
    vui.vui_num_units_in_tick = bits.u32(32);
    vui.vui_time_scale = bits.u32(32);
    vui.vui_poc_proportional_to_timing_flag = bits.flag();
    if (vui.vui_poc_proportional_to_timing_flag != 0) {
        vui.vui_num_ticks_poc_diff_one_minus1 = bits.ue();
    }
    vui.vui_hrd_parameters_present_flag = bits.flag();
    if (vui.vui_hrd_parameters_present_flag == 0) {
        return Status::kOk;
    }
    return parse_hevc_hrd_parameters(&vui.hrd, bits.data(), bits.position(), true,
                                     max_sub_layers_minus1);
}

void read_bitstream_restriction(HevcVui& vui, BitCursor& bits) {
    vui.bitstream_restriction_flag = bits.flag();
    if (vui.bitstream_restriction_flag == 0) {
        return;
    }
    vui.tiles_fixed_structure_flag = bits.flag();
    vui.motion_vectors_over_pic_boundaries_flag = bits.flag();
    vui.restricted_ref_pic_lists_flag = bits.flag();
    vui.min_spatial_segmentation_idc = bits.ue();
    vui.max_bytes_per_pic_denom = bits.ue();
    vui.max_bits_per_min_cu_denom = bits.ue();
    vui.log2_max_mv_length_horizontal = bits.ue();
    vui.log2_max_mv_length_vertical = bits.ue();
}

}  // namespace

Status parse_hevc_vui_parameters(HevcVui* vui, ByteSpan data, std::uint32_t& position,
                                 std::uint32_t max_sub_layers_minus1) {
    if (vui == nullptr || data.data() == nullptr) {
        return Status::kFailed;
    }
    BitCursor bits(data, position);
    read_aspect_ratio(*vui, bits);
    read_video_signal(*vui, vui->matrix_coeffs, bits);
    read_display(*vui, bits);
    const Status status = read_timing(*vui, bits, max_sub_layers_minus1);
    read_bitstream_restriction(*vui, bits);
    return status;
}

}  // namespace mediasplit
