// Parameter sets of real encoders, held against what ffmpeg and ffprobe read in them.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>

#include "src/video/codec_text.h"
#include "src/video/parameter_sets.h"
#include "tests/support/shell_command.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {
namespace {

using Fields = std::map<std::string, std::int64_t>;

std::string run(const std::string& command) {
    return run_shell(command).output;
}

bool has_ffmpeg() {
    static const bool kFound = !run("ffmpeg -version 2>/dev/null").empty();
    return kFound;
}

std::vector<std::uint8_t> file_bytes(const std::string& path) {
    const std::string text = read_file(path);
    return {text.begin(), text.end()};
}

// The first unit whose header satisfies `wanted`, between start codes.
template <typename Wanted>
std::vector<std::uint8_t> find_unit(const std::vector<std::uint8_t>& stream, Wanted wanted) {
    constexpr std::array<std::uint8_t, 3> kStartCode = {0, 0, 1};
    auto at = std::search(stream.begin(), stream.end(), kStartCode.begin(), kStartCode.end());
    while (at != stream.end()) {
        const auto begin = at + 3;
        at = std::search(begin, stream.end(), kStartCode.begin(), kStartCode.end());
        if (begin != stream.end() && wanted(*begin)) {
            auto end = at;
            while (end != begin && *(end - 1) == 0) {
                --end;
            }
            return {begin, end};
        }
    }
    return {};
}

template <typename Record>
Record parse_first(const std::vector<std::uint8_t>& stream, int type, bool hevc,
                   Status (*parser)(const NalBuffer*, Record*, Loglist*)) {
    const std::vector<std::uint8_t> unit = find_unit(stream, [&](std::uint8_t header) {
        return (hevc ? (header >> 1) & 63 : header & 31) == type;
    });
    EXPECT_FALSE(unit.empty()) << "no unit of type " << type;
    Record record;
    const NalBuffer nal{unit.data(), static_cast<std::uint32_t>(unit.size())};
    EXPECT_EQ(parser(&nal, &record, nullptr), Status::kOk);
    return record;
}

// The elements of the first section of each title that the trace of an independent parser shows.
std::map<std::string, Fields> trace(const std::string& path) {
    std::istringstream text(
        run("ffmpeg -nostdin -v info -i " + path +
            " -c copy -bsf:v trace_headers -frames:v 1 -f null - 2>&1 | grep trace_headers"));
    std::map<std::string, Fields> sections;
    std::set<std::string> finished;
    std::string title;
    for (std::string line; std::getline(text, line);) {
        const std::string content = line.substr(line.find("] ") + 2);
        std::istringstream words(content);
        std::string position;
        std::string name;
        std::string bits;
        std::string equals;
        std::int64_t value = 0;
        if (words >> position >> name >> bits >> equals >> value && equals == "=") {
            if (finished.count(title) == 0) {
                sections[title].emplace(name, value);
            }
        } else {
            finished.insert(title);
            title = content;
        }
    }
    return sections;
}

// Elements that the records don't keep, or keep in another form.
bool is_left_out(const std::string& name) {
    for (const char* part :
         {"constraint_set", "reserved_zero", "rbsp_", "profile_compatibility_flag", "general_max_",
          "general_intra_constraint", "general_one_picture_only", "general_lower_bit_rate",
          "general_inbld", "vps_extension_flag", "layer_id_included_flag", "sub_layer_",
          "delta_scale", "scaling_list_delta", "scaling_list_pred_m", "scaling_list_dc"}) {
        if (name.find(part) != std::string::npos) {
            return true;
        }
    }
    return false;
}

void expect_same(const Fields& expected, const Fields& actual, const std::string& what) {
    EXPECT_GT(expected.size(), 10U) << what;
    for (const auto& [name, value] : expected) {
        if (is_left_out(name)) {
            continue;
        }
        const auto found = actual.find(name);
        if (found == actual.end()) {
            ADD_FAILURE() << what << " has an element that isn't compared: " << name;
            continue;
        }
        EXPECT_EQ(found->second, value) << what << ": " << name;
    }
}

std::string indexed(const char* name, std::size_t index) {
    return std::string(name) + "[" + std::to_string(index) + "]";
}

void add_avc_hrd(Fields& f, const AvcHrd& hrd) {
    f["cpb_cnt_minus1"] = hrd.cpb_cnt_minus1;
    f["bit_rate_scale"] = hrd.bit_rate_scale;
    f["cpb_size_scale"] = hrd.cpb_size_scale;
    for (std::size_t i = 0; i < hrd.cpb.size(); ++i) {
        f[indexed("bit_rate_value_minus1", i)] = hrd.cpb[i].bit_rate_value_minus1;
        f[indexed("cpb_size_value_minus1", i)] = hrd.cpb[i].cpb_size_value_minus1;
        f[indexed("cbr_flag", i)] = hrd.cpb[i].cbr_flag;
    }
    f["initial_cpb_removal_delay_length_minus1"] = hrd.initial_cpb_removal_delay_length_minus1;
    f["cpb_removal_delay_length_minus1"] = hrd.cpb_removal_delay_length_minus1;
    f["dpb_output_delay_length_minus1"] = hrd.dpb_output_delay_length_minus1;
    f["time_offset_length"] = hrd.time_offset_length;
}

// What the two standards name alike.
template <typename Vui>
void add_common_vui(Fields& f, const Vui& v) {
    f["aspect_ratio_info_present_flag"] = v.aspect_ratio_info_present_flag;
    f["aspect_ratio_idc"] = v.aspect_ratio_idc;
    f["sar_width"] = v.sar_width;
    f["sar_height"] = v.sar_height;
    f["overscan_info_present_flag"] = v.overscan_info_present_flag;
    f["overscan_appropriate_flag"] = v.overscan_appropriate_flag;
    f["video_signal_type_present_flag"] = v.video_signal_type_present_flag;
    f["video_format"] = v.video_format;
    f["video_full_range_flag"] = v.video_full_range_flag;
    f["colour_description_present_flag"] = v.colour_description_present_flag;
    f["colour_primaries"] = v.colour_primaries;
    f["transfer_characteristics"] = v.transfer_characteristics;
    f["chroma_loc_info_present_flag"] = v.chroma_loc_info_present_flag;
    f["chroma_sample_loc_type_top_field"] = v.chroma_sample_loc_type_top_field;
    f["chroma_sample_loc_type_bottom_field"] = v.chroma_sample_loc_type_bottom_field;
    f["bitstream_restriction_flag"] = v.bitstream_restriction_flag;
    f["motion_vectors_over_pic_boundaries_flag"] = v.motion_vectors_over_pic_boundaries_flag;
    f["max_bytes_per_pic_denom"] = v.max_bytes_per_pic_denom;
    f["log2_max_mv_length_horizontal"] = v.log2_max_mv_length_horizontal;
    f["log2_max_mv_length_vertical"] = v.log2_max_mv_length_vertical;
}

Fields fields_of(const AvcSps& s) {
    const AvcVui& v = s.vui;
    Fields f = {
        {"forbidden_zero_bit", s.header.forbidden_zero_bit},
        {"nal_ref_idc", s.header.nal_ref_idc},
        {"nal_unit_type", s.header.nal_unit_type},
        {"profile_idc", s.profile_idc},
        {"level_idc", s.level_idc},
        {"seq_parameter_set_id", s.seq_parameter_set_id},
        {"chroma_format_idc", s.chroma_format_idc},
        {"separate_colour_plane_flag", s.separate_colour_plane_flag},
        {"bit_depth_luma_minus8", s.bit_depth_luma_minus8},
        {"bit_depth_chroma_minus8", s.bit_depth_chroma_minus8},
        {"qpprime_y_zero_transform_bypass_flag", s.qpprime_y_zero_transform_bypass_flag},
        {"seq_scaling_matrix_present_flag", s.seq_scaling_matrix_present_flag},
        {"log2_max_frame_num_minus4", s.log2_max_frame_num_minus4},
        {"pic_order_cnt_type", s.pic_order_cnt_type},
        {"log2_max_pic_order_cnt_lsb_minus4", s.log2_max_pic_order_cnt_lsb_minus4},
        {"max_num_ref_frames", s.max_num_ref_frames},
        {"gaps_in_frame_num_allowed_flag", s.gaps_in_frame_num_value_allowed_flag},
        {"pic_width_in_mbs_minus1", s.pic_width_in_mbs_minus1},
        {"pic_height_in_map_units_minus1", s.pic_height_in_map_units_minus1},
        {"frame_mbs_only_flag", s.frame_mbs_only_flag},
        {"mb_adaptive_frame_field_flag", s.mb_adaptive_frame_field_flag},
        {"direct_8x8_inference_flag", s.direct_8x8_inference_flag},
        {"frame_cropping_flag", s.frame_cropping_flag},
        {"frame_crop_left_offset", s.frame_crop_left_offset},
        {"frame_crop_right_offset", s.frame_crop_right_offset},
        {"frame_crop_top_offset", s.frame_crop_top_offset},
        {"frame_crop_bottom_offset", s.frame_crop_bottom_offset},
        {"vui_parameters_present_flag", s.vui_parameters_present_flag},
        {"matrix_coefficients", v.matrix_coefficients},
        {"timing_info_present_flag", v.timing_info_present_flag},
        {"num_units_in_tick", v.num_units_in_tick},
        {"time_scale", v.time_scale},
        {"fixed_frame_rate_flag", v.fixed_frame_rate_flag},
        {"nal_hrd_parameters_present_flag", v.nal_hrd_parameters_present_flag},
        {"vcl_hrd_parameters_present_flag", v.vcl_hrd_parameters_present_flag},
        {"low_delay_hrd_flag", v.low_delay_hrd_flag},
        {"pic_struct_present_flag", v.pic_struct_present_flag},
        {"max_bits_per_mb_denom", v.max_bits_per_mb_denom},
        {"max_num_reorder_frames", v.max_num_reorder_frames},
        {"max_dec_frame_buffering", v.max_dec_frame_buffering},
    };
    for (std::size_t i = 0; i < s.scaling_lists.size(); ++i) {
        f[indexed("seq_scaling_list_present_flag", i)] = s.scaling_lists[i].present_flag;
    }
    add_common_vui(f, v);
    add_avc_hrd(f, v.nal_hrd);
    return f;
}

void add_profile(Fields& f, const HevcProfileTierLevel& levels) {
    const HevcProfileTier& p = levels.general;
    f["general_profile_space"] = p.profile_space;
    f["general_tier_flag"] = p.tier_flag;
    f["general_profile_idc"] = p.profile_idc;
    f["general_progressive_source_flag"] = p.progressive_source_flag;
    f["general_interlaced_source_flag"] = p.interlaced_source_flag;
    f["general_non_packed_constraint_flag"] = p.non_packed_constraint_flag;
    f["general_frame_only_constraint_flag"] = p.frame_only_constraint_flag;
    f["general_level_idc"] = p.level_idc;
}

void add_header(Fields& f, const HevcNalHeader& header) {
    f["forbidden_zero_bit"] = header.forbidden_zero_bit;
    f["nal_unit_type"] = header.nal_unit_type;
    f["nuh_layer_id"] = header.nuh_layer_id;
    f["nuh_temporal_id_plus1"] = header.nuh_temporal_id_plus1;
}

void add_ordering(Fields& f, const std::array<HevcSubLayerOrdering, kMaxHevcSubLayers>& rows,
                  const std::string& prefix) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        f[indexed((prefix + "_max_dec_pic_buffering_minus1").c_str(), i)] =
            rows[i].max_dec_pic_buffering_minus1;
        f[indexed((prefix + "_max_num_reorder_pics").c_str(), i)] = rows[i].max_num_reorder_pics;
        f[indexed((prefix + "_max_latency_increase_plus1").c_str(), i)] =
            rows[i].max_latency_increase_plus1;
    }
}

void add_hevc_hrd(Fields& f, const HevcHrd& hrd) {
    f["nal_hrd_parameters_present_flag"] = hrd.nal_hrd_parameters_present_flag;
    f["vcl_hrd_parameters_present_flag"] = hrd.vcl_hrd_parameters_present_flag;
    f["sub_pic_hrd_params_present_flag"] = hrd.sub_pic_hrd_params_present_flag;
    f["bit_rate_scale"] = hrd.bit_rate_scale;
    f["cpb_size_scale"] = hrd.cpb_size_scale;
    f["initial_cpb_removal_delay_length_minus1"] = hrd.initial_cpb_removal_delay_length_minus1;
    f["au_cpb_removal_delay_length_minus1"] = hrd.au_cpb_removal_delay_length_minus1;
    f["dpb_output_delay_length_minus1"] = hrd.dpb_output_delay_length_minus1;
    for (std::size_t i = 0; i < hrd.layers.size(); ++i) {
        const HevcHrdLayer& layer = hrd.layers[i];
        f[indexed("fixed_pic_rate_general_flag", i)] = layer.fixed_pic_rate_general_flag;
        f[indexed("fixed_pic_rate_within_cvs_flag", i)] = layer.fixed_pic_rate_within_cvs_flag;
        f[indexed("elemental_duration_in_tc_minus1", i)] = layer.elemental_duration_in_tc_minus1;
        f[indexed("low_delay_hrd_flag", i)] = layer.low_delay_hrd_flag;
        f[indexed("cpb_cnt_minus1", i)] = layer.cpb_cnt_minus1;
    }
    if (!hrd.layers.empty() && !hrd.layers[0].nal_cpb.empty()) {
        const HevcCpbEntry& entry = hrd.layers[0].nal_cpb[0];
        f["bit_rate_value_minus1[0]"] = entry.bit_rate_value_minus1;
        f["cpb_size_value_minus1[0]"] = entry.cpb_size_value_minus1;
        f["cbr_flag[0]"] = entry.cbr_flag;
    }
}

Fields fields_of(const HevcVps& s) {
    Fields f = {
        {"vps_video_parameter_set_id", s.vps_video_parameter_set_id},
        {"vps_base_layer_internal_flag", s.vps_base_layer_internal_flag},
        {"vps_base_layer_available_flag", s.vps_base_layer_available_flag},
        {"vps_max_layers_minus1", s.vps_max_layers_minus1},
        {"vps_max_sub_layers_minus1", s.vps_max_sub_layers_minus1},
        {"vps_temporal_id_nesting_flag", s.vps_temporal_id_nesting_flag},
        {"vps_reserved_0xffff_16bits", s.vps_reserved_0xffff_16bits},
        {"vps_sub_layer_ordering_info_present_flag", s.vps_sub_layer_ordering_info_present_flag},
        {"vps_max_layer_id", s.vps_max_layer_id},
        {"vps_num_layer_sets_minus1", s.vps_num_layer_sets_minus1},
        {"vps_timing_info_present_flag", s.vps_timing_info_present_flag},
        {"vps_num_units_in_tick", s.vps_num_units_in_tick},
        {"vps_time_scale", s.vps_time_scale},
        {"vps_poc_proportional_to_timing_flag", s.vps_poc_proportional_to_timing_flag},
        {"vps_num_hrd_parameters", s.vps_num_hrd_parameters},
    };
    add_header(f, s.header);
    add_profile(f, s.profile_tier_level);
    add_ordering(f, s.ordering, "vps");
    return f;
}

void add_vui(Fields& f, const HevcVui& v) {
    const Fields vui = {
        {"matrix_coefficients", v.matrix_coeffs},
        {"neutral_chroma_indication_flag", v.neutral_chroma_indication_flag},
        {"field_seq_flag", v.field_seq_flag},
        {"frame_field_info_present_flag", v.frame_field_info_present_flag},
        {"default_display_window_flag", v.default_display_window_flag},
        {"def_disp_win_left_offset", v.def_disp_win_left_offset},
        {"def_disp_win_right_offset", v.def_disp_win_right_offset},
        {"def_disp_win_top_offset", v.def_disp_win_top_offset},
        {"def_disp_win_bottom_offset", v.def_disp_win_bottom_offset},
        {"vui_timing_info_present_flag", v.vui_timing_info_present_flag},
        {"vui_num_units_in_tick", v.vui_num_units_in_tick},
        {"vui_time_scale", v.vui_time_scale},
        {"vui_poc_proportional_to_timing_flag", v.vui_poc_proportional_to_timing_flag},
        {"vui_hrd_parameters_present_flag", v.vui_hrd_parameters_present_flag},
        {"tiles_fixed_structure_flag", v.tiles_fixed_structure_flag},
        {"restricted_ref_pic_lists_flag", v.restricted_ref_pic_lists_flag},
        {"min_spatial_segmentation_idc", v.min_spatial_segmentation_idc},
        {"max_bits_per_min_cu_denom", v.max_bits_per_min_cu_denom},
    };
    f.insert(vui.begin(), vui.end());
    add_common_vui(f, v);
    add_hevc_hrd(f, v.hrd);
}

Fields fields_of(const HevcSps& s) {
    Fields f = {
        {"sps_video_parameter_set_id", s.sps_video_parameter_set_id},
        {"sps_max_sub_layers_minus1", s.sps_max_sub_layers_minus1},
        {"sps_temporal_id_nesting_flag", s.sps_temporal_id_nesting_flag},
        {"sps_seq_parameter_set_id", s.sps_seq_parameter_set_id},
        {"chroma_format_idc", s.chroma_format_idc},
        {"separate_colour_plane_flag", s.separate_colour_plane_flag},
        {"pic_width_in_luma_samples", s.pic_width_in_luma_samples},
        {"pic_height_in_luma_samples", s.pic_height_in_luma_samples},
        {"conformance_window_flag", s.conformance_window_flag},
        {"conf_win_left_offset", s.conf_win_left_offset},
        {"conf_win_right_offset", s.conf_win_right_offset},
        {"conf_win_top_offset", s.conf_win_top_offset},
        {"conf_win_bottom_offset", s.conf_win_bottom_offset},
        {"bit_depth_luma_minus8", s.bit_depth_luma_minus8},
        {"bit_depth_chroma_minus8", s.bit_depth_chroma_minus8},
        {"log2_max_pic_order_cnt_lsb_minus4", s.log2_max_pic_order_cnt_lsb_minus4},
        {"sps_sub_layer_ordering_info_present_flag", s.sps_sub_layer_ordering_info_present_flag},
        {"log2_min_luma_coding_block_size_minus3", s.log2_min_luma_coding_block_size_minus3},
        {"log2_diff_max_min_luma_coding_block_size", s.log2_diff_max_min_luma_coding_block_size},
        {"log2_min_luma_transform_block_size_minus2", s.log2_min_luma_transform_block_size_minus2},
        {"log2_diff_max_min_luma_transform_block_size",
         s.log2_diff_max_min_luma_transform_block_size},
        {"max_transform_hierarchy_depth_inter", s.max_transform_hierarchy_depth_inter},
        {"max_transform_hierarchy_depth_intra", s.max_transform_hierarchy_depth_intra},
        {"scaling_list_enabled_flag", s.scaling_list_enabled_flag},
        {"sps_scaling_list_data_present_flag", s.sps_scaling_list_data_present_flag},
        {"amp_enabled_flag", s.amp_enabled_flag},
        {"sample_adaptive_offset_enabled_flag", s.sample_adaptive_offset_enabled_flag},
        {"pcm_enabled_flag", s.pcm_enabled_flag},
        {"num_short_term_ref_pic_sets", s.num_short_term_ref_pic_sets},
        {"long_term_ref_pics_present_flag", s.long_term_ref_pics_present_flag},
        {"sps_temporal_mvp_enabled_flag", s.sps_temporal_mvp_enabled_flag},
        {"strong_intra_smoothing_enabled_flag", s.strong_intra_smoothing_enabled_flag},
        {"vui_parameters_present_flag", s.vui_parameters_present_flag},
        {"sps_extension_present_flag", s.sps_extension_present_flag},
    };
    add_header(f, s.header);
    add_profile(f, s.profile_tier_level);
    add_ordering(f, s.ordering, "sps");
    add_vui(f, s.vui);
    return f;
}

Fields fields_of(const HevcPps& s) {
    Fields f = {
        {"pps_pic_parameter_set_id", s.pps_pic_parameter_set_id},
        {"pps_seq_parameter_set_id", s.pps_seq_parameter_set_id},
        {"dependent_slice_segments_enabled_flag", s.dependent_slice_segments_enabled_flag},
        {"output_flag_present_flag", s.output_flag_present_flag},
        {"num_extra_slice_header_bits", s.num_extra_slice_header_bits},
        {"sign_data_hiding_enabled_flag", s.sign_data_hiding_enabled_flag},
        {"cabac_init_present_flag", s.cabac_init_present_flag},
        {"num_ref_idx_l0_default_active_minus1", s.num_ref_idx_l0_default_active_minus1},
        {"num_ref_idx_l1_default_active_minus1", s.num_ref_idx_l1_default_active_minus1},
        {"init_qp_minus26", s.init_qp_minus26},
        {"constrained_intra_pred_flag", s.constrained_intra_pred_flag},
        {"transform_skip_enabled_flag", s.transform_skip_enabled_flag},
        {"cu_qp_delta_enabled_flag", s.cu_qp_delta_enabled_flag},
        {"diff_cu_qp_delta_depth", s.diff_cu_qp_delta_depth},
        {"pps_cb_qp_offset", s.pps_cb_qp_offset},
        {"pps_cr_qp_offset", s.pps_cr_qp_offset},
        {"pps_slice_chroma_qp_offsets_present_flag", s.pps_slice_chroma_qp_offsets_present_flag},
        {"weighted_pred_flag", s.weighted_pred_flag},
        {"weighted_bipred_flag", s.weighted_bipred_flag},
        {"transquant_bypass_enabled_flag", s.transquant_bypass_enabled_flag},
        {"tiles_enabled_flag", s.tiles_enabled_flag},
        {"entropy_coding_sync_enabled_flag", s.entropy_coding_sync_enabled_flag},
        {"pps_loop_filter_across_slices_enabled_flag",
         s.pps_loop_filter_across_slices_enabled_flag},
        {"deblocking_filter_control_present_flag", s.deblocking_filter_control_present_flag},
        {"deblocking_filter_override_enabled_flag", s.deblocking_filter_override_enabled_flag},
        {"pps_deblocking_filter_disabled_flag", s.pps_deblocking_filter_disabled_flag},
        {"pps_beta_offset_div2", s.pps_beta_offset_div2},
        {"pps_tc_offset_div2", s.pps_tc_offset_div2},
        {"pps_scaling_list_data_present_flag", s.pps_scaling_list_data_present_flag},
        {"lists_modification_present_flag", s.lists_modification_present_flag},
        {"log2_parallel_merge_level_minus2", s.log2_parallel_merge_level_minus2},
        {"slice_segment_header_extension_present_flag",
         s.slice_segment_header_extension_present_flag},
        {"pps_extension_present_flag", s.pps_extension_present_flag},
    };
    add_header(f, s.header);
    return f;
}

// What ffprobe says of the first stream.
std::map<std::string, std::string> probe(const std::string& path) {
    std::istringstream text(run("ffprobe -v error -select_streams v:0 -show_streams " + path));
    std::map<std::string, std::string> values;
    for (std::string line; std::getline(text, line);) {
        const std::size_t equals = line.find('=');
        if (equals != std::string::npos) {
            values.emplace(line.substr(0, equals), line.substr(equals + 1));
        }
    }
    return values;
}

const char* chroma_name(std::uint32_t chroma_format_idc) {
    constexpr std::array<const char*, 4> kNames = {"gray", "420p", "422p", "444p"};
    return chroma_format_idc < kNames.size() ? kNames[chroma_format_idc] : "none";
}

std::string depth_suffix(std::uint32_t depth_minus8) {
    return depth_minus8 == 0 ? "" : std::to_string(depth_minus8 + 8) + "le";
}

void expect_pixel_format(const std::string& pix_fmt, std::uint32_t chroma_format_idc,
                         std::uint32_t depth_minus8) {
    const std::string name = chroma_name(chroma_format_idc) + depth_suffix(depth_minus8);
    EXPECT_TRUE(pix_fmt.ends_with(name)) << pix_fmt << " against " << name;
}

struct Encode {
    const char* name;
    const char* size;
    const char* rate;
    const char* arguments;
};

std::string encode(const Encode& c, const TempFolder& folder, const std::string& file) {
    const std::string path = folder.path(file);
    run(std::string("ffmpeg -nostdin -v error -y -f lavfi -i testsrc2=s=") + c.size +
        ":r=" + c.rate + " -frames:v 3 " + c.arguments + " " + path + " 2>&1");
    return path;
}

std::string encode_name(const ::testing::TestParamInfo<Encode>& info) {
    return info.param.name;
}

class RealAvcStreams : public ::testing::TestWithParam<Encode> {};

TEST_P(RealAvcStreams, AreReadAsOtherProgramsReadThem) {
    if (!has_ffmpeg()) {
        GTEST_SKIP() << "no ffmpeg";
    }
    const TempFolder folder;
    const std::string path = encode(GetParam(), folder, "stream.264");
    const AvcSps sps = parse_first(file_bytes(path), 7, false, &parse_avc_sps_nal);
    std::map<std::string, Fields> expected = trace(path);
    expect_same(expected["Sequence Parameter Set"], fields_of(sps), "SPS");
    std::map<std::string, std::string> seen = probe(path);
    EXPECT_EQ(std::to_string(sps.pic_width), seen["width"]);
    EXPECT_EQ(std::to_string(sps.pic_height), seen["height"]);
    EXPECT_EQ(std::to_string(sps.level_idc), seen["level"]);
    if (sps.chroma_format_idc != 0) {  // monochrome H.264 is decoded to 4:2:0
        expect_pixel_format(seen["pix_fmt"], sps.chroma_format_idc, sps.bit_depth_luma_minus8);
    }
    const std::map<int, std::string> profiles = {{66, "Constrained Baseline"},
                                                 {77, "Main"},
                                                 {100, "High"},
                                                 {110, "High 10"},
                                                 {122, "High 4:2:2"},
                                                 {244, "High 4:4:4 Predictive"}};
    ASSERT_EQ(profiles.count(sps.profile_idc), 1U);
    EXPECT_EQ(profiles.at(sps.profile_idc), seen["profile"]);
    const std::string rate = GetParam().rate;
    const float expected_rate = rate == "30000/1001" ? 30000.0F / 1001.0F : std::stof(rate);
    EXPECT_FLOAT_EQ(sps.frame_rate, expected_rate);
    // The codec text against the one in a manifest of another writer.
    run("ffmpeg -nostdin -v error -y -i " + path + " -c copy -f dash " + folder.path("m.mpd") +
        " 2>&1");
    const std::vector<std::uint8_t> manifest = file_bytes(folder.path("m.mpd"));
    std::string text;
    build_avc_codec(&text, 2, &sps);
    const std::string attribute = "codecs=\"" + text + "\"";
    EXPECT_NE(std::string(manifest.begin(), manifest.end()).find(attribute), std::string::npos)
        << text;
}

INSTANTIATE_TEST_SUITE_P(
    Encodes, RealAvcStreams,
    ::testing::Values(
        Encode{"Baseline", "176x144", "15", "-c:v libx264 -profile:v baseline -pix_fmt yuv420p"},
        Encode{"Main1080", "1920x1080", "30000/1001",
               "-c:v libx264 -preset ultrafast -profile:v main -pix_fmt yuv420p"},
        Encode{"HighCropped", "322x242", "25", "-c:v libx264 -pix_fmt yuv420p"},
        Encode{"HighInterlaced", "720x576", "25",
               "-c:v libx264 -pix_fmt yuv420p -flags +ildct+ilme -x264-params "
               "tff=1:sar=64/45:videoformat=pal:overscan=show"},
        Encode{"HighColourHrd", "640x360", "50",
               "-c:v libx264 -pix_fmt yuv420p -x264-params "
               "nal-hrd=cbr:vbv-maxrate=500:vbv-bufsize=500:bitrate=500:colorprim=bt709:transfer="
               "bt709:colormatrix=bt709:fullrange=on:chromaloc=2:pic-struct=1"},
        Encode{"HighScalingLists", "320x240", "25",
               "-c:v libx264 -pix_fmt yuv420p -x264-params cqm=jvt"},
        Encode{"High444ScalingLists", "320x240", "25",
               "-c:v libx264 -pix_fmt yuv444p -x264-params cqm=jvt"},
        Encode{"Gray", "320x240", "25", "-c:v libx264 -pix_fmt gray"},
        Encode{"High10", "320x240", "25", "-c:v libx264 -pix_fmt yuv420p10le"},
        Encode{"High422Cropped", "322x242", "25", "-c:v libx264 -pix_fmt yuv422p10le"},
        Encode{"High444Cropped", "321x241", "25", "-c:v libx264 -pix_fmt yuv444p"}),
    encode_name);

class RealHevcStreams : public ::testing::TestWithParam<Encode> {};

TEST_P(RealHevcStreams, AreReadAsOtherProgramsReadThem) {
    if (!has_ffmpeg()) {
        GTEST_SKIP() << "no ffmpeg";
    }
    const TempFolder folder;
    const std::string path = encode(GetParam(), folder, "stream.265");
    const std::vector<std::uint8_t> stream = file_bytes(path);
    const HevcVps vps = parse_first(stream, 32, true, &parse_hevc_vps_nal);
    const HevcSps sps = parse_first(stream, 33, true, &parse_hevc_sps_nal);
    const HevcPps pps = parse_first(stream, 34, true, &parse_hevc_pps_nal);
    std::map<std::string, Fields> expected = trace(path);
    expect_same(expected["Video Parameter Set"], fields_of(vps), "VPS");
    expect_same(expected["Sequence Parameter Set"], fields_of(sps), "SPS");
    expect_same(expected["Picture Parameter Set"], fields_of(pps), "PPS");
    std::map<std::string, std::string> seen = probe(path);
    EXPECT_EQ(std::to_string(sps.pic_width), seen["width"]);
    EXPECT_EQ(std::to_string(sps.pic_height), seen["height"]);
    EXPECT_EQ(std::to_string(sps.profile_tier_level.general.level_idc), seen["level"]);
    expect_pixel_format(seen["pix_fmt"], sps.chroma_format_idc, sps.bit_depth_luma_minus8);
    const std::map<int, std::string> profiles = {{1, "Main"}, {2, "Main 10"}, {4, "Rext"}};
    const int profile = sps.profile_tier_level.general.profile_idc;
    ASSERT_EQ(profiles.count(profile), 1U);
    EXPECT_EQ(profiles.at(profile), seen["profile"]);
}

INSTANTIATE_TEST_SUITE_P(
    Encodes, RealHevcStreams,
    ::testing::Values(
        Encode{"Main", "416x240", "25",
               "-c:v libx265 -pix_fmt yuv420p -x265-params log-level=none"},
        Encode{"Main10Hdr", "1280x720", "30000/1001",
               "-c:v libx265 -preset ultrafast -pix_fmt yuv420p10le -x265-params "
               "log-level=none:colorprim=bt2020:transfer=smpte2084:colormatrix=bt2020nc:hdr10=1:"
               "chromaloc=2:range=full"},
        Encode{"Rext422", "320x240", "25",
               "-c:v libx265 -pix_fmt yuv422p10le -x265-params "
               "log-level=none:hrd=1:vbv-bufsize=1000:vbv-maxrate=1000:bitrate=800"},
        Encode{"Rext444Cropped", "323x241", "25",
               "-c:v libx265 -pix_fmt yuv444p -x265-params log-level=none"},
        Encode{"Rext12", "320x240", "25",
               "-c:v libx265 -pix_fmt yuv420p12le -x265-params log-level=none"},
        Encode{"RextGray", "320x240", "25",
               "-c:v libx265 -pix_fmt gray -x265-params log-level=none"},
        Encode{"MainCropped", "322x242", "50",
               "-c:v libx265 -pix_fmt yuv420p -x265-params log-level=none:sar=5:overscan=crop"},
        Encode{"ScalingLists", "320x240", "25",
               "-c:v libx265 -pix_fmt yuv420p -x265-params log-level=none:scaling-list=default"},
        Encode{"HighTier", "1920x1080", "60",
               "-c:v libx265 -preset ultrafast -pix_fmt yuv420p -x265-params "
               "log-level=none:level-idc=5.1:high-tier=1:vbv-bufsize=60000:vbv-maxrate=60000:"
               "bitrate=40000"},
        Encode{"TemporalLayers", "320x240", "25",
               "-c:v libx265 -pix_fmt yuv420p -x265-params log-level=none:temporal-layers=2"},
        Encode{"Interlaced", "720x288", "50",
               "-c:v libx265 -pix_fmt yuv420p -x265-params log-level=none:interlace=tff:"
               "sar=2:videoformat=pal"},
        Encode{"OtherTools", "320x240", "25",
               "-c:v libx265 -pix_fmt yuv420p -x265-params "
               "log-level=none:ctu=32:min-cu-size=16:max-tu-size=16:tu-inter-depth=2:"
               "tu-intra-depth=2:rect=1:amp=1:sao=0:strong-intra-smoothing=0:weightb=1:tskip=1:"
               "constrained-intra=1:cbqpoffs=-3:crqpoffs=4:deblock=-2,1:signhide=0:wpp=0:"
               "temporal-mvp=0:ref=5"},
        Encode{"Lossless", "320x240", "25",
               "-c:v libx265 -pix_fmt yuv420p -x265-params log-level=none:lossless=1:deblock=0"}),
    encode_name);

// The first bytes of the configuration box of a file with one AV1 track.
Av1Config read_av1_config(const std::vector<std::uint8_t>& file) {
    constexpr std::array<std::uint8_t, 4> kType = {'a', 'v', '1', 'C'};
    const auto at = std::search(file.begin(), file.end(), kType.begin(), kType.end());
    Av1Config config;
    if (file.end() - at < 8) {
        ADD_FAILURE() << "no av1C";
        return config;
    }
    config.seq_profile = static_cast<std::uint8_t>(at[5] >> 5);
    config.seq_level_idx_0 = static_cast<std::uint8_t>(at[5] & 31);
    config.seq_tier_0 = static_cast<std::uint8_t>(at[6] >> 7);
    config.high_bitdepth = static_cast<std::uint8_t>((at[6] >> 6) & 1);
    config.twelve_bit = static_cast<std::uint8_t>((at[6] >> 5) & 1);
    config.monochrome = static_cast<std::uint8_t>((at[6] >> 4) & 1);
    config.chroma_subsampling_x = static_cast<std::uint8_t>((at[6] >> 3) & 1);
    config.chroma_subsampling_y = static_cast<std::uint8_t>((at[6] >> 2) & 1);
    config.chroma_sample_position = static_cast<std::uint8_t>(at[6] & 3);
    return config;
}

class RealAv1Streams : public ::testing::TestWithParam<Encode> {};

TEST_P(RealAv1Streams, CodecTextBeginsAsInAnotherWritersManifest) {
    if (!has_ffmpeg()) {
        GTEST_SKIP() << "no ffmpeg";
    }
    const TempFolder folder;
    const std::string path = encode(GetParam(), folder, "stream.mp4");
    if (file_bytes(path).empty()) {
        GTEST_SKIP() << "no AV1 encoder";
    }
    const Av1Config config = read_av1_config(file_bytes(path));
    std::string text;
    const PxConfig px;
    build_av1_codec(&text, 16, &config, &px);
    run("ffmpeg -nostdin -v error -y -i " + path + " -c copy -f dash " + folder.path("m.mpd") +
        " 2>&1");
    const std::vector<std::uint8_t> bytes = file_bytes(folder.path("m.mpd"));
    const std::string manifest(bytes.begin(), bytes.end());
    const std::size_t begin = manifest.find("codecs=\"");
    ASSERT_NE(begin, std::string::npos);
    const std::string codecs =
        manifest.substr(begin + 8, manifest.find('"', begin + 8) - begin - 8);
    EXPECT_GE(codecs.size(), 13U);
    EXPECT_TRUE(text.starts_with(codecs)) << text << " against " << codecs;
}

INSTANTIATE_TEST_SUITE_P(
    Encodes, RealAv1Streams,
    ::testing::Values(
        Encode{"Main8", "320x240", "25", "-c:v libaom-av1 -cpu-used 8 -pix_fmt yuv420p"},
        Encode{"Main10", "640x360", "50", "-c:v libaom-av1 -cpu-used 8 -pix_fmt yuv420p10le"},
        Encode{"Professional422", "320x240", "25",
               "-c:v libaom-av1 -cpu-used 8 -pix_fmt yuv422p10le"}),
    encode_name);

}  // namespace
}  // namespace mediasplit
