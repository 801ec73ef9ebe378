// Picture parameter sets of ITU-T H.265 7.3.2.3.
#include "src/video/bit_cursor.h"
#include "src/video/hevc_parameter_sets.h"
#include "src/video/nal_parsing.h"

namespace mediasplit {
namespace {

void read_slice_defaults(HevcPps& pps, BitCursor& bits) {
    pps.dependent_slice_segments_enabled_flag = bits.flag();
    pps.output_flag_present_flag = bits.flag();
    pps.num_extra_slice_header_bits = bits.u8(3);
    pps.sign_data_hiding_enabled_flag = bits.flag();
    pps.cabac_init_present_flag = bits.flag();
    pps.num_ref_idx_l0_default_active_minus1 = bits.ue();
    pps.num_ref_idx_l1_default_active_minus1 = bits.ue();
    pps.init_qp_minus26 = bits.se();
}

void read_coding_tools(HevcPps& pps, BitCursor& bits) {
    pps.constrained_intra_pred_flag = bits.flag();
    pps.transform_skip_enabled_flag = bits.flag();
    pps.cu_qp_delta_enabled_flag = bits.flag();
    if (pps.cu_qp_delta_enabled_flag != 0) {
        pps.diff_cu_qp_delta_depth = bits.ue();
    }
    pps.pps_cb_qp_offset = bits.se();
    pps.pps_cr_qp_offset = bits.se();
    pps.pps_slice_chroma_qp_offsets_present_flag = bits.flag();
    pps.weighted_pred_flag = bits.flag();
    pps.weighted_bipred_flag = bits.flag();
    pps.transquant_bypass_enabled_flag = bits.flag();
    pps.tiles_enabled_flag = bits.flag();
    pps.entropy_coding_sync_enabled_flag = bits.flag();
}

void read_sizes(std::vector<std::uint32_t>& sizes, std::uint32_t count, std::size_t capacity,
                BitCursor& bits) {
    for_each_counted(bits, count, [&](std::uint32_t) {
        const std::uint32_t size = bits.ue();
        if (sizes.size() < capacity) {
            sizes.push_back(size);
        }
    });
}

void read_tiles(HevcPps& pps, BitCursor& bits) {
    if (pps.tiles_enabled_flag == 0) {
        return;
    }
    pps.num_tile_columns_minus1 = bits.ue();
    pps.num_tile_rows_minus1 = bits.ue();
    pps.uniform_spacing_flag = bits.flag();
    if (pps.uniform_spacing_flag == 0) {
        read_sizes(pps.column_width_minus1, pps.num_tile_columns_minus1, kMaxHevcTileColumns, bits);
        read_sizes(pps.row_height_minus1, pps.num_tile_rows_minus1, kMaxHevcTileRows, bits);
    }
    pps.loop_filter_across_tiles_enabled_flag = bits.flag();
}

void read_deblocking(HevcPps& pps, BitCursor& bits) {
    pps.pps_loop_filter_across_slices_enabled_flag = bits.flag();
    pps.deblocking_filter_control_present_flag = bits.flag();
    if (pps.deblocking_filter_control_present_flag == 0) {
        return;
    }
    pps.deblocking_filter_override_enabled_flag = bits.flag();
    pps.pps_deblocking_filter_disabled_flag = bits.flag();
    if (pps.pps_deblocking_filter_disabled_flag == 0) {
        pps.pps_beta_offset_div2 = bits.se();
        pps.pps_tc_offset_div2 = bits.se();
    }
}

void read_extension_flags(HevcPps& pps, BitCursor& bits) {
    pps.pps_extension_present_flag = bits.flag();
    if (pps.pps_extension_present_flag != 0) {
        pps.pps_range_extension_flag = bits.flag();
        pps.pps_multilayer_extension_flag = bits.flag();
        pps.pps_3d_extension_flag = bits.flag();
        pps.pps_scc_extension_flag = bits.flag();
        pps.pps_extension_4bits = bits.u8(4);
    }
}

Status read_pps(HevcPps& pps, BitCursor& bits) {
    Status status = parse_hevc_nal_header(&pps.header, bits.data(), bits.position());
    pps.pps_pic_parameter_set_id = bits.ue();
    pps.pps_seq_parameter_set_id = bits.ue();
    read_slice_defaults(pps, bits);
    read_coding_tools(pps, bits);
    read_tiles(pps, bits);
    read_deblocking(pps, bits);
    pps.pps_scaling_list_data_present_flag = bits.flag();
    if (pps.pps_scaling_list_data_present_flag != 0) {
        status |= parse_hevc_scaling_list(&pps.scaling_list, bits.data(), bits.position());
    }
    pps.lists_modification_present_flag = bits.flag();
    pps.log2_parallel_merge_level_minus2 = bits.ue();
    pps.slice_segment_header_extension_present_flag = bits.flag();
    read_extension_flags(pps, bits);
    return status;
}

}  // namespace

Status parse_hevc_pps_nal(const NalBuffer* nal, HevcPps* pps, [[maybe_unused]] Loglist* loglist) {
    return parse_nal(nal, pps, read_pps);
}

}  // namespace mediasplit
