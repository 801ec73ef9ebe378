// Video, sequence and picture parameter sets of ITU-T H.265. The elements keep the names of the
// standard; nothing is range-checked, what the unit doesn't hold reads as 0, and entries past the
// standard's maxima are read and dropped.
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

inline constexpr std::size_t kMaxHevcSubLayers = 8;
inline constexpr std::size_t kMaxHevcHrds = 32;
inline constexpr std::size_t kMaxHevcCpbEntries = 32;
inline constexpr std::size_t kMaxHevcShortTermSets = 64;
inline constexpr std::size_t kMaxHevcShortTermPics = 16;
inline constexpr std::size_t kMaxHevcLongTermPics = 32;
inline constexpr std::size_t kMaxHevcTileColumns = 20;
inline constexpr std::size_t kMaxHevcTileRows = 22;

/// The general or one sub-layer part of profile_tier_level(), ITU-T H.265 7.3.3.
struct HevcProfileTier {
    std::uint8_t profile_space = 0;
    std::uint8_t tier_flag = 0;
    std::uint8_t profile_idc = 0;
    std::uint32_t profile_compatibility_flags = 0;  ///< flag 0 is the top bit
    std::array<std::uint8_t, 32> profile_compatibility_flag{};
    std::uint8_t progressive_source_flag = 0;
    std::uint8_t interlaced_source_flag = 0;
    std::uint8_t non_packed_constraint_flag = 0;
    std::uint8_t frame_only_constraint_flag = 0;
    std::uint32_t reserved_zero_44bits_43_12 = 0;
    std::uint16_t reserved_zero_44bits_11_0 = 0;
    std::uint8_t level_idc = 0;
};

/// profile_tier_level(), ITU-T H.265 7.3.3.
struct HevcProfileTierLevel {
    HevcProfileTier general;
    std::array<std::uint8_t, kMaxHevcSubLayers> sub_layer_profile_present_flag{};
    std::array<std::uint8_t, kMaxHevcSubLayers> sub_layer_level_present_flag{};
    std::vector<HevcProfileTier> sub_layers;  ///< one for each sub-layer below the highest
};

/// A row of the sub-layer ordering information.
struct HevcSubLayerOrdering {
    std::uint32_t max_dec_pic_buffering_minus1 = 0;
    std::uint32_t max_num_reorder_pics = 0;
    std::uint32_t max_latency_increase_plus1 = 0;
};

struct HevcCpbEntry {
    std::uint32_t bit_rate_value_minus1 = 0;
    std::uint32_t cpb_size_value_minus1 = 0;
    std::uint32_t cpb_size_du_value_minus1 = 0;
    std::uint32_t bit_rate_du_value_minus1 = 0;
    std::uint8_t cbr_flag = 0;
};

/// What hrd_parameters() tells of one sub-layer.
struct HevcHrdLayer {
    std::uint8_t fixed_pic_rate_general_flag = 0;
    std::uint8_t fixed_pic_rate_within_cvs_flag = 0;
    std::uint32_t elemental_duration_in_tc_minus1 = 0;
    std::uint8_t low_delay_hrd_flag = 0;
    std::uint32_t cpb_cnt_minus1 = 0;  ///< as read; the lists keep the first 32 entries
    std::vector<HevcCpbEntry> nal_cpb;
    std::vector<HevcCpbEntry> vcl_cpb;
};

/// hrd_parameters(), ITU-T H.265 E.2.2.
struct HevcHrd {
    std::uint8_t nal_hrd_parameters_present_flag = 0;
    std::uint8_t vcl_hrd_parameters_present_flag = 0;
    std::uint8_t sub_pic_hrd_params_present_flag = 0;
    std::uint8_t tick_divisor_minus2 = 0;
    std::uint8_t du_cpb_removal_delay_increment_length_minus1 = 0;
    std::uint8_t sub_pic_cpb_params_in_pic_timing_sei_flag = 0;
    std::uint8_t dpb_output_delay_du_length_minus1 = 0;
    std::uint8_t bit_rate_scale = 0;
    std::uint8_t cpb_size_scale = 0;
    std::uint8_t cpb_size_du_scale = 0;
    std::uint8_t initial_cpb_removal_delay_length_minus1 = 0;
    std::uint8_t au_cpb_removal_delay_length_minus1 = 0;
    std::uint8_t dpb_output_delay_length_minus1 = 0;
    std::vector<HevcHrdLayer> layers;
};

/// One hrd_parameters() of a video parameter set.
struct HevcVpsHrd {
    std::uint32_t hrd_layer_set_idx = 0;
    std::uint8_t cprms_present_flag = 0;
    HevcHrd hrd;
};

/// video_parameter_set_rbsp(), ITU-T H.265 7.3.2.1.
struct HevcVps {
    HevcNalHeader header;
    std::uint8_t vps_video_parameter_set_id = 0;
    std::uint8_t vps_base_layer_internal_flag = 0;
    std::uint8_t vps_base_layer_available_flag = 0;
    std::uint8_t vps_max_layers_minus1 = 0;
    std::uint8_t vps_max_sub_layers_minus1 = 0;
    std::uint8_t vps_temporal_id_nesting_flag = 0;
    std::uint16_t vps_reserved_0xffff_16bits = 0;
    HevcProfileTierLevel profile_tier_level;
    std::uint8_t vps_sub_layer_ordering_info_present_flag = 0;
    std::array<HevcSubLayerOrdering, kMaxHevcSubLayers> ordering{};
    std::uint8_t vps_max_layer_id = 0;
    std::uint32_t vps_num_layer_sets_minus1 = 0;
    std::uint8_t vps_timing_info_present_flag = 0;
    std::uint32_t vps_num_units_in_tick = 0;
    std::uint32_t vps_time_scale = 0;
    std::uint8_t vps_poc_proportional_to_timing_flag = 0;
    std::uint32_t vps_num_ticks_poc_diff_one_minus1 = 0;
    std::uint32_t vps_num_hrd_parameters = 0;  ///< as read
    std::vector<HevcVpsHrd> hrds;              ///< the first 32
};

/// One list of scaling_list_data(), ITU-T H.265 7.3.4.
struct HevcScalingMatrix {
    std::uint8_t scaling_list_pred_mode_flag = 0;
    std::uint32_t scaling_list_pred_matrix_id_delta = 0;
    std::int32_t dc_coef = 0;  ///< scaling_list_dc_coef_minus8 + 8; sizes 2 and 3 only
    std::array<std::uint8_t, 64> coefficients{};
};

struct HevcScalingList {
    std::vector<HevcScalingMatrix> matrices;  ///< size 0, 1, 2 six each, size 3 two; or none
};

/// A short-term reference picture set, ITU-T H.265 7.3.7, with prediction already resolved (7.4.8).
struct HevcShortTermRefPicSet {
    std::uint8_t inter_ref_pic_set_prediction_flag = 0;
    std::uint32_t delta_idx_minus1 = 0;
    std::uint8_t delta_rps_sign = 0;
    std::uint32_t abs_delta_rps_minus1 = 0;
    std::uint32_t num_negative_pics = 0;  ///< entries kept, at most 16
    std::uint32_t num_positive_pics = 0;
    std::uint32_t num_delta_pocs = 0;  ///< sum of the two
    std::array<std::int32_t, kMaxHevcShortTermPics> delta_poc_s0{};
    std::array<std::int32_t, kMaxHevcShortTermPics> delta_poc_s1{};
    std::array<std::uint8_t, kMaxHevcShortTermPics> used_by_curr_pic_s0{};
    std::array<std::uint8_t, kMaxHevcShortTermPics> used_by_curr_pic_s1{};
};

/// vui_parameters(), ITU-T H.265 E.2.1. Parsing a sequence parameter set puts in the values that
/// the standard infers for absent elements, and a display timing of 60000/1001.
struct HevcVui {
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
    std::uint8_t matrix_coeffs = 0;
    std::uint8_t chroma_loc_info_present_flag = 0;
    std::uint32_t chroma_sample_loc_type_top_field = 0;
    std::uint32_t chroma_sample_loc_type_bottom_field = 0;
    std::uint8_t neutral_chroma_indication_flag = 0;
    std::uint8_t field_seq_flag = 0;
    std::uint8_t frame_field_info_present_flag = 0;
    std::uint8_t default_display_window_flag = 0;
    std::uint32_t def_disp_win_left_offset = 0;
    std::uint32_t def_disp_win_right_offset = 0;
    std::uint32_t def_disp_win_top_offset = 0;
    std::uint32_t def_disp_win_bottom_offset = 0;
    std::uint8_t vui_timing_info_present_flag = 0;
    std::uint32_t vui_num_units_in_tick = 0;
    std::uint32_t vui_time_scale = 0;
    std::uint8_t vui_poc_proportional_to_timing_flag = 0;
    std::uint32_t vui_num_ticks_poc_diff_one_minus1 = 0;
    std::uint8_t vui_hrd_parameters_present_flag = 0;
    HevcHrd hrd;
    std::uint8_t bitstream_restriction_flag = 0;
    std::uint8_t tiles_fixed_structure_flag = 0;
    std::uint8_t motion_vectors_over_pic_boundaries_flag = 0;
    std::uint8_t restricted_ref_pic_lists_flag = 0;
    std::uint32_t min_spatial_segmentation_idc = 0;
    std::uint32_t max_bytes_per_pic_denom = 0;
    std::uint32_t max_bits_per_min_cu_denom = 0;
    std::uint32_t log2_max_mv_length_horizontal = 0;
    std::uint32_t log2_max_mv_length_vertical = 0;
};

/// seq_parameter_set_rbsp(), ITU-T H.265 7.3.2.2, in the standard's order.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding)
struct HevcSps {
    HevcNalHeader header;
    std::uint8_t sps_video_parameter_set_id = 0;
    std::uint8_t sps_max_sub_layers_minus1 = 0;
    std::uint8_t sps_temporal_id_nesting_flag = 0;
    HevcProfileTierLevel profile_tier_level;
    std::uint32_t sps_seq_parameter_set_id = 0;
    std::uint32_t chroma_format_idc = 0;
    std::uint8_t separate_colour_plane_flag = 0;
    std::uint32_t pic_width_in_luma_samples = 0;
    std::uint32_t pic_height_in_luma_samples = 0;
    std::uint8_t conformance_window_flag = 0;
    std::uint32_t conf_win_left_offset = 0;
    std::uint32_t conf_win_right_offset = 0;
    std::uint32_t conf_win_top_offset = 0;
    std::uint32_t conf_win_bottom_offset = 0;
    std::uint32_t pic_width = 0;   ///< luma samples inside the conformance window, derived
    std::uint32_t pic_height = 0;  ///< likewise
    std::uint32_t bit_depth_luma_minus8 = 0;
    std::uint32_t bit_depth_chroma_minus8 = 0;
    std::uint32_t log2_max_pic_order_cnt_lsb_minus4 = 0;
    std::uint8_t sps_sub_layer_ordering_info_present_flag = 0;
    std::array<HevcSubLayerOrdering, kMaxHevcSubLayers> ordering{};
    std::uint32_t log2_min_luma_coding_block_size_minus3 = 0;
    std::uint32_t log2_diff_max_min_luma_coding_block_size = 0;
    std::uint32_t log2_min_luma_transform_block_size_minus2 = 0;
    std::uint32_t log2_diff_max_min_luma_transform_block_size = 0;
    std::uint32_t max_transform_hierarchy_depth_inter = 0;
    std::uint32_t max_transform_hierarchy_depth_intra = 0;
    std::uint8_t scaling_list_enabled_flag = 0;
    std::uint8_t sps_scaling_list_data_present_flag = 0;
    HevcScalingList scaling_list;
    std::uint8_t amp_enabled_flag = 0;
    std::uint8_t sample_adaptive_offset_enabled_flag = 0;
    std::uint8_t pcm_enabled_flag = 0;
    std::uint8_t pcm_sample_bit_depth_luma_minus1 = 0;
    std::uint8_t pcm_sample_bit_depth_chroma_minus1 = 0;
    std::uint32_t log2_min_pcm_luma_coding_block_size_minus3 = 0;
    std::uint32_t log2_diff_max_min_pcm_luma_coding_block_size = 0;
    std::uint8_t pcm_loop_filter_disabled_flag = 0;
    std::uint32_t num_short_term_ref_pic_sets = 0;        ///< as read
    std::vector<HevcShortTermRefPicSet> st_ref_pic_sets;  ///< the first 64
    std::uint8_t long_term_ref_pics_present_flag = 0;
    std::uint32_t num_long_term_ref_pics_sps = 0;            ///< as read
    std::vector<std::uint32_t> lt_ref_pic_poc_lsb_sps;       ///< the first 32
    std::vector<std::uint8_t> used_by_curr_pic_lt_sps_flag;  ///< the first 32
    std::uint8_t sps_temporal_mvp_enabled_flag = 0;
    std::uint8_t strong_intra_smoothing_enabled_flag = 0;
    std::uint8_t vui_parameters_present_flag = 0;
    HevcVui vui;
    std::uint8_t sps_extension_present_flag = 0;
    std::uint8_t sps_range_extension_flag = 0;
    std::uint8_t sps_multilayer_extension_flag = 0;
    std::uint8_t sps_3d_extension_flag = 0;
    std::uint8_t sps_scc_extension_flag = 0;
    std::uint8_t sps_extension_4bits = 0;
};

/// pic_parameter_set_rbsp(), ITU-T H.265 7.3.2.3.
struct HevcPps {
    HevcNalHeader header;
    std::uint32_t pps_pic_parameter_set_id = 0;
    std::uint32_t pps_seq_parameter_set_id = 0;
    std::uint8_t dependent_slice_segments_enabled_flag = 0;
    std::uint8_t output_flag_present_flag = 0;
    std::uint8_t num_extra_slice_header_bits = 0;
    std::uint8_t sign_data_hiding_enabled_flag = 0;
    std::uint8_t cabac_init_present_flag = 0;
    std::uint32_t num_ref_idx_l0_default_active_minus1 = 0;
    std::uint32_t num_ref_idx_l1_default_active_minus1 = 0;
    std::int32_t init_qp_minus26 = 0;
    std::uint8_t constrained_intra_pred_flag = 0;
    std::uint8_t transform_skip_enabled_flag = 0;
    std::uint8_t cu_qp_delta_enabled_flag = 0;
    std::uint32_t diff_cu_qp_delta_depth = 0;
    std::int32_t pps_cb_qp_offset = 0;
    std::int32_t pps_cr_qp_offset = 0;
    std::uint8_t pps_slice_chroma_qp_offsets_present_flag = 0;
    std::uint8_t weighted_pred_flag = 0;
    std::uint8_t weighted_bipred_flag = 0;
    std::uint8_t transquant_bypass_enabled_flag = 0;
    std::uint8_t tiles_enabled_flag = 0;
    std::uint8_t entropy_coding_sync_enabled_flag = 0;
    std::uint32_t num_tile_columns_minus1 = 0;  ///< as read
    std::uint32_t num_tile_rows_minus1 = 0;     ///< as read
    std::uint8_t uniform_spacing_flag = 0;
    std::vector<std::uint32_t> column_width_minus1;  ///< the first 20
    std::vector<std::uint32_t> row_height_minus1;    ///< the first 22
    std::uint8_t loop_filter_across_tiles_enabled_flag = 0;
    std::uint8_t pps_loop_filter_across_slices_enabled_flag = 0;
    std::uint8_t deblocking_filter_control_present_flag = 0;
    std::uint8_t deblocking_filter_override_enabled_flag = 0;
    std::uint8_t pps_deblocking_filter_disabled_flag = 0;
    std::int32_t pps_beta_offset_div2 = 0;
    std::int32_t pps_tc_offset_div2 = 0;
    std::uint8_t pps_scaling_list_data_present_flag = 0;
    HevcScalingList scaling_list;
    std::uint8_t lists_modification_present_flag = 0;
    std::uint32_t log2_parallel_merge_level_minus2 = 0;
    std::uint8_t slice_segment_header_extension_present_flag = 0;
    std::uint8_t pps_extension_present_flag = 0;
    std::uint8_t pps_range_extension_flag = 0;
    std::uint8_t pps_multilayer_extension_flag = 0;
    std::uint8_t pps_3d_extension_flag = 0;
    std::uint8_t pps_scc_extension_flag = 0;
    std::uint8_t pps_extension_4bits = 0;
};

// Each parser replaces the content of its record with what the unit holds. They fail on null
// arguments or a unit without data; a unit of size 0 leaves the record as it is. No message is
// raised.
Status parse_hevc_vps_nal(const NalBuffer* nal, HevcVps* vps, Loglist* loglist);
Status parse_hevc_sps_nal(const NalBuffer* nal, HevcSps* sps, Loglist* loglist);
Status parse_hevc_pps_nal(const NalBuffer* nal, HevcPps* pps, Loglist* loglist);

// The parts of the sets, each read from unescaped `data` at bit `position`, which moves on. They
// fail on null arguments only.

/// The 88 bits of a profile; level_idc is not among them.
Status parse_hevc_profile_tier(HevcProfileTier* profile, ByteSpan data, std::uint32_t& position);
/// The present flags of the sub-layers with their alignment.
Status parse_profile_present_info(HevcProfileTierLevel* levels, ByteSpan data,
                                  std::uint32_t& position, std::uint32_t max_sub_layers_minus1);
Status parse_hevc_profile_tier_level(HevcProfileTierLevel* levels, ByteSpan data,
                                     std::uint32_t& position, std::uint32_t max_sub_layers_minus1);
/// sub_layer_hrd_parameters() of `cpb_cnt_minus1` + 1 entries.
Status parse_hevc_sub_layer_hrd_parameters(std::vector<HevcCpbEntry>* cpb, ByteSpan data,
                                           std::uint32_t& position, std::uint32_t cpb_cnt_minus1,
                                           bool sub_pic_hrd_params_present);
/// The part of hrd_parameters() that belongs to one sub-layer; `hrd` gives the common part.
Status parse_hevc_hrd_layer(HevcHrdLayer* layer, const HevcHrd& hrd, ByteSpan data,
                            std::uint32_t& position);
/// Without `common_inf_present` the common part of `*hrd` stays as the caller has set it.
Status parse_hevc_hrd_parameters(HevcHrd* hrd, ByteSpan data, std::uint32_t& position,
                                 bool common_inf_present, std::uint32_t max_sub_layers_minus1);
Status parse_hevc_scaling_list(HevcScalingList* list, ByteSpan data, std::uint32_t& position);
/// Reads set `index` of `set_count`; `earlier` holds the sets before it, of which prediction takes
/// its reference. An index equal to `set_count` is a set of a slice header.
Status parse_hevc_st_ref_pic_set(HevcShortTermRefPicSet* set,
                                 const std::vector<HevcShortTermRefPicSet>& earlier, ByteSpan data,
                                 std::uint32_t& position, std::uint32_t index,
                                 std::uint32_t set_count);
Status parse_hevc_vui_parameters(HevcVui* vui, ByteSpan data, std::uint32_t& position,
                                 std::uint32_t max_sub_layers_minus1);

/// The default scaling list (ITU-T H.265 Tables 7-5 and 7-6): 16 entries for size 0, else 64.
ByteSpan scaling_list_default_address(std::uint32_t size_id, std::uint32_t matrix_id);

}  // namespace mediasplit
