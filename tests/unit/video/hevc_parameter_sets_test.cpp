#include "src/video/hevc_parameter_sets.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/nal_builder.h"

namespace mediasplit {
namespace {

using testing::BitWriter;
using testing::build_hevc_sps;
using testing::build_hevc_vps;
using testing::CropOffsets;
using testing::escape_nal;
using testing::Fraction;
using testing::HevcProfileOptions;
using testing::HevcSpsOptions;
using testing::HevcVpsOptions;
using testing::write_hevc_profile;

template <typename Record>
Record parse(const std::vector<std::uint8_t>& unit,
             Status (*parser)(const NalBuffer*, Record*, Loglist*)) {
    Record record;
    const NalBuffer nal{unit.data(), static_cast<std::uint32_t>(unit.size())};
    EXPECT_EQ(parser(&nal, &record, nullptr), Status::kOk);
    return record;
}

HevcVps parse_vps(const std::vector<std::uint8_t>& unit) {
    return parse(unit, &parse_hevc_vps_nal);
}

HevcSps parse_sps(const std::vector<std::uint8_t>& unit) {
    return parse(unit, &parse_hevc_sps_nal);
}

HevcPps parse_pps(const std::vector<std::uint8_t>& unit) {
    return parse(unit, &parse_hevc_pps_nal);
}

// A video parameter set up to and including the layer sets.
BitWriter vps_start(unsigned max_sub_layers_minus1 = 0) {
    BitWriter out;
    out.u(0, 1).u(32, 6).u(0, 6).u(1, 3);
    out.u(0, 4).u(3, 2).u(0, 6).u(max_sub_layers_minus1, 3).flag(true).u(0xFFFF, 16);
    write_hevc_profile(out, {});
    out.u(93, 8);
    if (max_sub_layers_minus1 > 0) {
        out.u(0, 16);
    }
    out.flag(false).ue(4).ue(2).ue(0).u(0, 6).ue(0);
    return out;
}

// A sequence parameter set up to and including the bit depths, 416 x 240.
BitWriter sps_start(unsigned max_sub_layers_minus1 = 0) {
    BitWriter out;
    out.u(0, 1).u(33, 6).u(0, 6).u(1, 3);
    out.u(0, 4).u(max_sub_layers_minus1, 3).flag(true);
    write_hevc_profile(out, {});
    out.u(93, 8);
    if (max_sub_layers_minus1 > 0) {
        out.u(0, 16);
    }
    out.ue(0).ue(1).ue(416).ue(240).flag(false).ue(0).ue(0);
    return out;
}

// From log2_max_pic_order_cnt_lsb_minus4 to the transform hierarchy depths.
void write_block_sizes(BitWriter& out, std::uint32_t log2_max_poc_lsb_minus4 = 4) {
    out.ue(log2_max_poc_lsb_minus4).flag(false).ue(4).ue(2).ue(0);
    out.ue(0).ue(3).ue(0).ue(3).ue(1).ue(2);
}

// From the reference picture sets on: none, no long-term pictures, no VUI, no extension.
void write_sps_end(BitWriter& out) {
    out.ue(0).flag(false).flag(true).flag(true).flag(false).flag(false).trailing();
}

TEST(HevcParameterSets, NullArgumentsFail) {
    HevcVps vps;
    HevcSps sps;
    HevcPps pps;
    NalBuffer nal;
    EXPECT_EQ(parse_hevc_vps_nal(nullptr, &vps, nullptr), Status::kFailed);
    EXPECT_EQ(parse_hevc_sps_nal(nullptr, &sps, nullptr), Status::kFailed);
    EXPECT_EQ(parse_hevc_pps_nal(nullptr, &pps, nullptr), Status::kFailed);
    EXPECT_EQ(parse_hevc_vps_nal(&nal, &vps, nullptr), Status::kFailed);
    EXPECT_EQ(parse_hevc_sps_nal(&nal, &sps, nullptr), Status::kFailed);
    EXPECT_EQ(parse_hevc_pps_nal(&nal, &pps, nullptr), Status::kFailed);
    const std::uint8_t byte = 0x40;
    nal = {&byte, 1};
    EXPECT_EQ(parse_hevc_vps_nal(&nal, nullptr, nullptr), Status::kFailed);
    EXPECT_EQ(parse_hevc_sps_nal(&nal, nullptr, nullptr), Status::kFailed);
    EXPECT_EQ(parse_hevc_pps_nal(&nal, nullptr, nullptr), Status::kFailed);
    const ByteSpan data(&byte, 1);
    std::uint32_t at = 0;
    EXPECT_EQ(parse_hevc_profile_tier(nullptr, data, at), Status::kFailed);
    EXPECT_EQ(parse_hevc_profile_tier_level(nullptr, data, at, 0), Status::kFailed);
    EXPECT_EQ(parse_profile_present_info(nullptr, data, at, 0), Status::kFailed);
    EXPECT_EQ(parse_hevc_sub_layer_hrd_parameters(nullptr, data, at, 0, false), Status::kFailed);
    EXPECT_EQ(parse_hevc_hrd_layer(nullptr, {}, data, at), Status::kFailed);
    EXPECT_EQ(parse_hevc_hrd_parameters(nullptr, data, at, true, 0), Status::kFailed);
    EXPECT_EQ(parse_hevc_scaling_list(nullptr, data, at), Status::kFailed);
    EXPECT_EQ(parse_hevc_st_ref_pic_set(nullptr, {}, data, at, 0, 1), Status::kFailed);
    EXPECT_EQ(parse_hevc_vui_parameters(nullptr, data, at, 0), Status::kFailed);
    HevcVui vui;
    EXPECT_EQ(parse_hevc_vui_parameters(&vui, {}, at, 0), Status::kFailed);
    EXPECT_EQ(at, 0U);
}

TEST(HevcParameterSets, SizeZeroLeavesTheRecordsZero) {
    const std::uint8_t byte = 0x40;
    const NalBuffer nal{&byte, 0};
    HevcVps vps;
    HevcSps sps;
    HevcPps pps;
    EXPECT_EQ(parse_hevc_vps_nal(&nal, &vps, nullptr), Status::kOk);
    EXPECT_EQ(parse_hevc_sps_nal(&nal, &sps, nullptr), Status::kOk);
    EXPECT_EQ(parse_hevc_pps_nal(&nal, &pps, nullptr), Status::kOk);
    EXPECT_EQ(vps.header.nal_unit_type, 0);
    EXPECT_EQ(sps.vui.video_format, 0);
    EXPECT_EQ(pps.header.nal_unit_type, 0);
}

TEST(HevcProfileTierLevel, ReadsEachFieldOfTheGeneralPart) {
    BitWriter out;
    HevcProfileOptions options;
    options.space = 2;
    options.tier = 1;
    options.idc = 21;
    options.compatibility_flags = 0xA0000001;
    options.progressive = true;
    options.non_packed = true;
    options.frame_only = false;
    options.reserved_44bits = 0x123456789AB;
    write_hevc_profile(out, options);
    out.u(150, 8);
    HevcProfileTierLevel levels;
    std::uint32_t position = 0;
    EXPECT_EQ(parse_hevc_profile_tier_level(&levels, out.bytes(), position, 0), Status::kOk);
    EXPECT_EQ(position, 96U);
    const HevcProfileTier& general = levels.general;
    EXPECT_EQ(general.profile_space, 2);
    EXPECT_EQ(general.tier_flag, 1);
    EXPECT_EQ(general.profile_idc, 21);
    EXPECT_EQ(general.profile_compatibility_flags, 0xA0000001U);
    EXPECT_EQ(general.profile_compatibility_flag[0], 1);
    EXPECT_EQ(general.profile_compatibility_flag[1], 0);
    EXPECT_EQ(general.profile_compatibility_flag[2], 1);
    EXPECT_EQ(general.profile_compatibility_flag[31], 1);
    EXPECT_EQ(general.progressive_source_flag, 1);
    EXPECT_EQ(general.interlaced_source_flag, 0);
    EXPECT_EQ(general.non_packed_constraint_flag, 1);
    EXPECT_EQ(general.frame_only_constraint_flag, 0);
    EXPECT_EQ(general.reserved_zero_44bits_43_12, 0x12345678U);
    EXPECT_EQ(general.reserved_zero_44bits_11_0, 0x9AB);
    EXPECT_EQ(general.level_idc, 150);
}

TEST(HevcProfileTierLevel, SubLayersFollowTheirPresentFlags) {
    BitWriter out;
    write_hevc_profile(out, {});
    out.u(120, 8);
    out.u(0b01, 2).u(0b11, 2).u(0b00, 2);  // level only, both, none
    out.u(0, 10);                          // alignment up to eight
    out.u(63, 8);
    HevcProfileOptions second;
    second.idc = 2;
    write_hevc_profile(out, second);
    out.u(90, 8);
    HevcProfileTierLevel levels;
    std::uint32_t position = 0;
    parse_hevc_profile_tier_level(&levels, out.bytes(), position, 3);
    EXPECT_EQ(position, out.bit_count());
    ASSERT_EQ(levels.sub_layers.size(), 3U);
    EXPECT_EQ(levels.sub_layers[0].level_idc, 63);
    EXPECT_EQ(levels.sub_layers[0].profile_idc, 0);
    EXPECT_EQ(levels.sub_layers[1].level_idc, 90);
    EXPECT_EQ(levels.sub_layers[1].profile_idc, 2);
    EXPECT_EQ(levels.sub_layers[2].level_idc, 0);
    EXPECT_EQ(levels.sub_layer_level_present_flag[0], 1);
    EXPECT_EQ(levels.sub_layer_profile_present_flag[0], 0);
}

TEST(HevcVps, ReadsHeaderProfileAndTiming) {
    HevcVpsOptions options;
    options.profile.idc = 2;
    options.profile.level = 120;
    options.max_layers_minus1 = 1;
    options.timing = Fraction{1001, 24000};
    const HevcVps vps = parse_vps(build_hevc_vps(options));
    EXPECT_EQ(vps.header.nal_unit_type, 32);
    EXPECT_EQ(vps.header.nuh_temporal_id_plus1, 1);
    EXPECT_EQ(vps.vps_base_layer_internal_flag, 1);
    EXPECT_EQ(vps.vps_max_layers_minus1, 1);
    EXPECT_EQ(vps.vps_reserved_0xffff_16bits, 0xFFFF);
    EXPECT_EQ(vps.profile_tier_level.general.profile_idc, 2);
    EXPECT_EQ(vps.profile_tier_level.general.level_idc, 120);
    EXPECT_EQ(vps.ordering[0].max_dec_pic_buffering_minus1, 4U);
    EXPECT_EQ(vps.ordering[0].max_num_reorder_pics, 2U);
    EXPECT_EQ(vps.vps_timing_info_present_flag, 1);
    EXPECT_EQ(vps.vps_num_units_in_tick, 1001U);
    EXPECT_EQ(vps.vps_time_scale, 24000U);
}

TEST(HevcVps, StepsOverTheLayerSets) {
    BitWriter out;
    out.u(0, 1).u(32, 6).u(0, 6).u(1, 3);
    out.u(0, 4).u(3, 2).u(0, 6).u(0, 3).flag(true).u(0xFFFF, 16);
    write_hevc_profile(out, {});
    out.u(93, 8).flag(true).ue(4).ue(2).ue(0);
    out.u(9, 6).ue(3);
    for (int i = 0; i < 3 * 10; ++i) {
        out.flag(true);
    }
    out.flag(true).u(7, 32).u(8, 32).flag(true).ue(5).ue(0).flag(false).trailing();
    const HevcVps vps = parse_vps(escape_nal(out.bytes()));
    EXPECT_EQ(vps.vps_max_layer_id, 9);
    EXPECT_EQ(vps.vps_num_layer_sets_minus1, 3U);
    EXPECT_EQ(vps.vps_num_units_in_tick, 7U);
    EXPECT_EQ(vps.vps_time_scale, 8U);
    EXPECT_EQ(vps.vps_num_ticks_poc_diff_one_minus1, 5U);
}

TEST(HevcVps, HugeLayerSetCountEndsTheUnit) {
    BitWriter hostile;
    hostile.u(0, 1).u(32, 6).u(0, 6).u(1, 3).u(0, 4).u(3, 2).u(0, 6).u(0, 3).flag(true).u(0xFFFF,
                                                                                          16);
    write_hevc_profile(hostile, {});
    hostile.u(93, 8).flag(true).ue(4).ue(2).ue(0).u(62, 6).ue(0xFFFFFFFE);
    hostile.flag(true).u(7, 32).u(8, 32).trailing();
    const HevcVps vps = parse_vps(hostile.bytes());
    EXPECT_EQ(vps.vps_num_layer_sets_minus1, 0xFFFFFFFEU);
    EXPECT_EQ(vps.vps_timing_info_present_flag, 0);
}

TEST(HevcVps, OrderingOfTheHighestSubLayerHoldsForAll) {
    BitWriter out = vps_start(2);
    out.flag(false).flag(false).trailing();
    const HevcVps vps = parse_vps(escape_nal(out.bytes()));
    EXPECT_EQ(vps.vps_sub_layer_ordering_info_present_flag, 0);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(vps.ordering[i].max_dec_pic_buffering_minus1, 4U);
    }
    EXPECT_EQ(vps.ordering[3].max_dec_pic_buffering_minus1, 0U);
}

TEST(HevcVps, FirstHrdHasCommonPartAndLaterOnesTakeItOver) {
    BitWriter out = vps_start();
    out.flag(true).u(1, 32).u(25, 32).flag(false).ue(3);
    out.ue(0);
    out.flag(true).flag(false).flag(false).u(4, 4).u(6, 4).u(23, 5).u(15, 5).u(5, 5);
    out.flag(true).ue(7).ue(0).ue(1000).ue(99).flag(true);
    out.ue(1).flag(false);  // cprms_present_flag
    out.flag(true).ue(7).ue(0).ue(2000).ue(98).flag(false);
    out.ue(2).flag(true);
    out.flag(false).flag(true).flag(false).u(9, 4).u(8, 4).u(3, 5).u(2, 5).u(1, 5);
    out.flag(true).ue(7).ue(0).ue(3000).ue(97).flag(true);
    out.flag(true).trailing();
    const HevcVps vps = parse_vps(escape_nal(out.bytes()));
    ASSERT_EQ(vps.hrds.size(), 3U);
    EXPECT_EQ(vps.hrds[0].cprms_present_flag, 1);
    EXPECT_EQ(vps.hrds[0].hrd.bit_rate_scale, 4);
    EXPECT_EQ(vps.hrds[0].hrd.cpb_size_scale, 6);
    EXPECT_EQ(vps.hrds[0].hrd.initial_cpb_removal_delay_length_minus1, 23);
    EXPECT_EQ(vps.hrds[0].hrd.au_cpb_removal_delay_length_minus1, 15);
    EXPECT_EQ(vps.hrds[0].hrd.dpb_output_delay_length_minus1, 5);
    ASSERT_EQ(vps.hrds[0].hrd.layers.size(), 1U);
    EXPECT_EQ(vps.hrds[0].hrd.layers[0].fixed_pic_rate_within_cvs_flag, 1);
    EXPECT_EQ(vps.hrds[0].hrd.layers[0].elemental_duration_in_tc_minus1, 7U);
    ASSERT_EQ(vps.hrds[0].hrd.layers[0].nal_cpb.size(), 1U);
    EXPECT_EQ(vps.hrds[0].hrd.layers[0].nal_cpb[0].bit_rate_value_minus1, 1000U);
    EXPECT_EQ(vps.hrds[1].hrd_layer_set_idx, 1U);
    EXPECT_EQ(vps.hrds[1].cprms_present_flag, 0);
    ASSERT_EQ(vps.hrds[1].hrd.layers.size(), 1U);
    ASSERT_EQ(vps.hrds[1].hrd.layers[0].nal_cpb.size(), 1U);
    EXPECT_EQ(vps.hrds[1].hrd.layers[0].nal_cpb[0].bit_rate_value_minus1, 2000U);
    EXPECT_EQ(vps.hrds[2].hrd.bit_rate_scale, 9);
    ASSERT_EQ(vps.hrds[2].hrd.layers[0].vcl_cpb.size(), 1U);
    EXPECT_EQ(vps.hrds[2].hrd.layers[0].vcl_cpb[0].bit_rate_value_minus1, 3000U);
    EXPECT_TRUE(vps.hrds[2].hrd.layers[0].nal_cpb.empty());
}

TEST(HevcVps, ReadsAtMost32Hrds) {
    BitWriter out = vps_start();
    out.flag(true).u(1, 32).u(25, 32).flag(false).ue(40);
    for (std::uint32_t i = 0; i < 40; ++i) {
        out.ue(i);
        if (i > 0) {
            out.flag(false);
        } else {
            out.flag(false).flag(false);  // no NAL and no VCL parameters
        }
        out.flag(true).ue(0).ue(0);
    }
    const HevcVps vps = parse_vps(escape_nal(out.trailing().bytes()));
    EXPECT_EQ(vps.vps_num_hrd_parameters, 40U);
    ASSERT_EQ(vps.hrds.size(), 32U);
    EXPECT_EQ(vps.hrds[31].hrd_layer_set_idx, 31U);
}

TEST(HevcHrd, ReadsSubPictureParametersOfEachSubLayer) {
    BitWriter out;
    out.flag(true).flag(true).flag(true);
    out.u(98, 8).u(4, 5).flag(true).u(6, 5);
    out.u(1, 4).u(2, 4).u(3, 4).u(10, 5).u(11, 5).u(12, 5);
    // Sub-layer 0: no fixed rate, low delay: one entry each.
    out.flag(false).flag(false).flag(true);
    out.ue(1).ue(2).ue(3).ue(4).flag(true);
    out.ue(5).ue(6).ue(7).ue(8).flag(false);
    // Sub-layer 1: fixed within the sequence, two entries each.
    out.flag(false).flag(true).ue(9).ue(1);
    for (int i = 0; i < 4; ++i) {
        out.ue(20).ue(21).ue(22).ue(23).flag(true);
    }
    HevcHrd hrd;
    std::uint32_t position = 0;
    EXPECT_EQ(parse_hevc_hrd_parameters(&hrd, out.bytes(), position, true, 1), Status::kOk);
    EXPECT_EQ(position, out.bit_count());
    EXPECT_EQ(hrd.tick_divisor_minus2, 98);
    EXPECT_EQ(hrd.du_cpb_removal_delay_increment_length_minus1, 4);
    EXPECT_EQ(hrd.sub_pic_cpb_params_in_pic_timing_sei_flag, 1);
    EXPECT_EQ(hrd.dpb_output_delay_du_length_minus1, 6);
    EXPECT_EQ(hrd.cpb_size_du_scale, 3);
    ASSERT_EQ(hrd.layers.size(), 2U);
    EXPECT_EQ(hrd.layers[0].low_delay_hrd_flag, 1);
    ASSERT_EQ(hrd.layers[0].nal_cpb.size(), 1U);
    EXPECT_EQ(hrd.layers[0].nal_cpb[0].cpb_size_du_value_minus1, 3U);
    EXPECT_EQ(hrd.layers[0].nal_cpb[0].bit_rate_du_value_minus1, 4U);
    EXPECT_EQ(hrd.layers[0].vcl_cpb[0].bit_rate_value_minus1, 5U);
    EXPECT_EQ(hrd.layers[1].elemental_duration_in_tc_minus1, 9U);
    EXPECT_EQ(hrd.layers[1].cpb_cnt_minus1, 1U);
    EXPECT_EQ(hrd.layers[1].nal_cpb.size(), 2U);
    EXPECT_EQ(hrd.layers[1].vcl_cpb.size(), 2U);
}

TEST(HevcHrd, CpbEntriesPastTheCapacityAreReadAndDropped) {
    BitWriter out;
    for (std::uint32_t i = 0; i < 50; ++i) {
        out.ue(i).ue(1).flag(false);
    }
    std::vector<HevcCpbEntry> cpb;
    std::uint32_t position = 0;
    parse_hevc_sub_layer_hrd_parameters(&cpb, out.bytes(), position, 49, false);
    EXPECT_EQ(position, out.bit_count());
    ASSERT_EQ(cpb.size(), 32U);
    EXPECT_EQ(cpb[31].bit_rate_value_minus1, 31U);
}

TEST(HevcSps, ReadsHeaderProfileAndSize) {
    HevcSpsOptions options;
    options.profile.idc = 4;
    options.profile.level = 153;
    options.width = 3840;
    options.height = 2160;
    options.bit_depth = 12;
    const HevcSps sps = parse_sps(build_hevc_sps(options));
    EXPECT_EQ(sps.header.nal_unit_type, 33);
    EXPECT_EQ(sps.profile_tier_level.general.profile_idc, 4);
    EXPECT_EQ(sps.profile_tier_level.general.level_idc, 153);
    EXPECT_EQ(sps.chroma_format_idc, 1U);
    EXPECT_EQ(sps.pic_width, 3840U);
    EXPECT_EQ(sps.pic_height, 2160U);
    EXPECT_EQ(sps.bit_depth_luma_minus8, 4U);
    EXPECT_EQ(sps.bit_depth_chroma_minus8, 4U);
    EXPECT_EQ(sps.log2_max_pic_order_cnt_lsb_minus4, 4U);
    EXPECT_EQ(sps.log2_diff_max_min_luma_coding_block_size, 3U);
    EXPECT_EQ(sps.amp_enabled_flag, 1);
    EXPECT_EQ(sps.sps_temporal_mvp_enabled_flag, 1);
    EXPECT_EQ(sps.strong_intra_smoothing_enabled_flag, 1);
}

struct WindowCase {
    std::uint32_t chroma_format_idc;
    std::uint32_t width;
    std::uint32_t height;
};

class HevcConformanceWindow : public ::testing::TestWithParam<WindowCase> {};

TEST_P(HevcConformanceWindow, FollowsTheChromaFormat) {
    HevcSpsOptions options;
    options.chroma_format_idc = GetParam().chroma_format_idc;
    options.conformance_window = CropOffsets{1, 2, 3, 4};  // of 416 x 240
    const HevcSps sps = parse_sps(build_hevc_sps(options));
    EXPECT_EQ(sps.pic_width_in_luma_samples, 416U);
    EXPECT_EQ(sps.pic_width, GetParam().width);
    EXPECT_EQ(sps.pic_height, GetParam().height);
}

INSTANTIATE_TEST_SUITE_P(Formats, HevcConformanceWindow,
                         ::testing::Values(WindowCase{0, 413, 233}, WindowCase{1, 410, 226},
                                           WindowCase{2, 410, 233}, WindowCase{3, 413, 233}));

TEST(HevcSps, AbsentVuiGivesTheInferredValues) {
    const HevcSps sps = parse_sps(build_hevc_sps({}));
    EXPECT_EQ(sps.vui_parameters_present_flag, 0);
    EXPECT_EQ(sps.vui.video_format, 5);
    EXPECT_EQ(sps.vui.colour_primaries, 2);
    EXPECT_EQ(sps.vui.transfer_characteristics, 2);
    EXPECT_EQ(sps.vui.matrix_coeffs, 2);
    EXPECT_EQ(sps.vui.vui_timing_info_present_flag, 0);
    EXPECT_EQ(sps.vui.vui_num_units_in_tick, 1001U);
    EXPECT_EQ(sps.vui.vui_time_scale, 60000U);
    EXPECT_EQ(sps.vui.log2_max_mv_length_horizontal, 15U);
    EXPECT_EQ(sps.vui.log2_max_mv_length_vertical, 15U);
    EXPECT_EQ(sps.vui.max_bytes_per_pic_denom, 2U);
    EXPECT_EQ(sps.vui.max_bits_per_min_cu_denom, 1U);
}

TEST(HevcSps, VuiGivesColourAndTiming) {
    HevcSpsOptions options;
    options.colour = testing::HevcColour{9, 16, 9};
    options.timing = Fraction{1, 60};
    const HevcSps sps = parse_sps(build_hevc_sps(options));
    EXPECT_EQ(sps.vui.colour_primaries, 9);
    EXPECT_EQ(sps.vui.transfer_characteristics, 16);
    EXPECT_EQ(sps.vui.matrix_coeffs, 9);
    EXPECT_EQ(sps.vui.vui_timing_info_present_flag, 1);
    EXPECT_EQ(sps.vui.vui_num_units_in_tick, 1U);
    EXPECT_EQ(sps.vui.vui_time_scale, 60U);
}

TEST(HevcSps, AspectRatioComesFromTheTableAndUnknownOnesStayZero) {
    HevcSpsOptions options;
    options.aspect_ratio_idc = 14;
    HevcSps sps = parse_sps(build_hevc_sps(options));
    EXPECT_EQ(sps.vui.sar_width, 4);
    EXPECT_EQ(sps.vui.sar_height, 3);
    options.aspect_ratio_idc = 200;
    sps = parse_sps(build_hevc_sps(options));
    EXPECT_EQ(sps.vui.aspect_ratio_idc, 200);
    EXPECT_EQ(sps.vui.sar_width, 0);
}

TEST(HevcSps, ReadsTheWholeVuiAndTheExtensionFlags) {
    BitWriter out = sps_start();
    write_block_sizes(out);
    out.flag(false).flag(false).flag(false).flag(false);
    out.ue(0).flag(false).flag(false).flag(false);
    out.flag(true);  // VUI
    out.flag(true).u(255, 8).u(45, 16).u(44, 16);
    out.flag(true).flag(true);  // overscan
    out.flag(true).u(2, 3).flag(true).flag(false);
    out.flag(true).ue(1).ue(2);  // chroma location
    out.flag(true).flag(true).flag(true);
    out.flag(true).ue(1).ue(2).ue(3).ue(4);  // default display window
    out.flag(true).u(1001, 32).u(30000, 32).flag(true).ue(6).flag(true);
    out.flag(true).flag(false).flag(false).u(4, 4).u(6, 4).u(23, 5).u(15, 5).u(5, 5);
    out.flag(true).ue(0).ue(0).ue(500).ue(600).flag(true);
    out.flag(true).flag(true).flag(true).flag(false).ue(7).ue(8).ue(9).ue(10).ue(11);
    out.flag(true).flag(true).flag(false).flag(true).flag(false).u(5, 4).trailing();
    const HevcSps sps = parse_sps(escape_nal(out.bytes()));
    const HevcVui& vui = sps.vui;
    EXPECT_EQ(vui.sar_width, 45);
    EXPECT_EQ(vui.sar_height, 44);
    EXPECT_EQ(vui.overscan_appropriate_flag, 1);
    EXPECT_EQ(vui.video_format, 2);
    EXPECT_EQ(vui.video_full_range_flag, 1);
    EXPECT_EQ(vui.colour_primaries, 2);
    EXPECT_EQ(vui.chroma_sample_loc_type_top_field, 1U);
    EXPECT_EQ(vui.chroma_sample_loc_type_bottom_field, 2U);
    EXPECT_EQ(vui.neutral_chroma_indication_flag, 1);
    EXPECT_EQ(vui.field_seq_flag, 1);
    EXPECT_EQ(vui.frame_field_info_present_flag, 1);
    EXPECT_EQ(vui.def_disp_win_left_offset, 1U);
    EXPECT_EQ(vui.def_disp_win_bottom_offset, 4U);
    EXPECT_EQ(vui.vui_num_units_in_tick, 1001U);
    EXPECT_EQ(vui.vui_num_ticks_poc_diff_one_minus1, 6U);
    EXPECT_EQ(vui.vui_hrd_parameters_present_flag, 1);
    ASSERT_EQ(vui.hrd.layers.size(), 1U);
    EXPECT_EQ(vui.hrd.layers[0].nal_cpb.at(0).cpb_size_value_minus1, 600U);
    EXPECT_EQ(vui.tiles_fixed_structure_flag, 1);
    EXPECT_EQ(vui.motion_vectors_over_pic_boundaries_flag, 1);
    EXPECT_EQ(vui.restricted_ref_pic_lists_flag, 0);
    EXPECT_EQ(vui.min_spatial_segmentation_idc, 7U);
    EXPECT_EQ(vui.max_bytes_per_pic_denom, 8U);
    EXPECT_EQ(vui.max_bits_per_min_cu_denom, 9U);
    EXPECT_EQ(vui.log2_max_mv_length_horizontal, 10U);
    EXPECT_EQ(vui.log2_max_mv_length_vertical, 11U);
    EXPECT_EQ(sps.sps_extension_present_flag, 1);
    EXPECT_EQ(sps.sps_range_extension_flag, 1);
    EXPECT_EQ(sps.sps_multilayer_extension_flag, 0);
    EXPECT_EQ(sps.sps_3d_extension_flag, 1);
    EXPECT_EQ(sps.sps_scc_extension_flag, 0);
    EXPECT_EQ(sps.sps_extension_4bits, 5);
}

TEST(HevcSps, ReadsPcmLongTermPicturesAndCodingTools) {
    BitWriter out = sps_start();
    write_block_sizes(out, 2);
    out.flag(false).flag(true).flag(false);
    out.flag(true).u(7, 4).u(6, 4).ue(1).ue(2).flag(true);
    out.ue(0);
    out.flag(true).ue(2).u(33, 6).flag(true).u(12, 6).flag(false);
    out.flag(true).flag(false).flag(false).flag(false).trailing();
    const HevcSps sps = parse_sps(escape_nal(out.bytes()));
    EXPECT_EQ(sps.max_transform_hierarchy_depth_inter, 1U);
    EXPECT_EQ(sps.max_transform_hierarchy_depth_intra, 2U);
    EXPECT_EQ(sps.pcm_sample_bit_depth_luma_minus1, 7);
    EXPECT_EQ(sps.pcm_sample_bit_depth_chroma_minus1, 6);
    EXPECT_EQ(sps.log2_min_pcm_luma_coding_block_size_minus3, 1U);
    EXPECT_EQ(sps.log2_diff_max_min_pcm_luma_coding_block_size, 2U);
    EXPECT_EQ(sps.pcm_loop_filter_disabled_flag, 1);
    EXPECT_EQ(sps.lt_ref_pic_poc_lsb_sps, (std::vector<std::uint32_t>{33, 12}));
    EXPECT_EQ(sps.used_by_curr_pic_lt_sps_flag, (std::vector<std::uint8_t>{1, 0}));
    EXPECT_EQ(sps.sps_temporal_mvp_enabled_flag, 1);
    EXPECT_EQ(sps.strong_intra_smoothing_enabled_flag, 0);
}

TEST(HevcSps, LongTermPicturesPastTheCapacityAreReadAndDropped) {
    BitWriter out = sps_start();
    write_block_sizes(out, 0);
    out.flag(false).flag(false).flag(false).flag(false).ue(0);
    out.flag(true).ue(40);
    for (int i = 0; i < 40; ++i) {
        out.u(static_cast<std::uint64_t>(i % 16), 4).flag(true);
    }
    out.flag(true).flag(true).flag(false).flag(false).trailing();
    const HevcSps sps = parse_sps(escape_nal(out.bytes()));
    EXPECT_EQ(sps.num_long_term_ref_pics_sps, 40U);
    EXPECT_EQ(sps.lt_ref_pic_poc_lsb_sps.size(), 32U);
    EXPECT_EQ(sps.used_by_curr_pic_lt_sps_flag.size(), 32U);
    EXPECT_EQ(sps.strong_intra_smoothing_enabled_flag, 1);
}

HevcShortTermRefPicSet explicit_set(std::vector<HevcShortTermRefPicSet> earlier, BitWriter& out,
                                    std::uint32_t index) {
    HevcShortTermRefPicSet set;
    std::uint32_t position = 0;
    EXPECT_EQ(parse_hevc_st_ref_pic_set(&set, earlier, out.bytes(), position, index, 8),
              Status::kOk);
    EXPECT_EQ(position, out.bit_count());
    return set;
}

TEST(HevcShortTermRefPicSets, ExplicitSetAddsUpItsDistances) {
    BitWriter out;
    out.ue(2).ue(1).ue(0).flag(true).ue(2).flag(false).ue(3).flag(true);
    const HevcShortTermRefPicSet set = explicit_set({}, out, 0);
    EXPECT_EQ(set.num_negative_pics, 2U);
    EXPECT_EQ(set.num_positive_pics, 1U);
    EXPECT_EQ(set.num_delta_pocs, 3U);
    EXPECT_EQ(set.delta_poc_s0[0], -1);
    EXPECT_EQ(set.delta_poc_s0[1], -4);
    EXPECT_EQ(set.used_by_curr_pic_s0[0], 1);
    EXPECT_EQ(set.used_by_curr_pic_s0[1], 0);
    EXPECT_EQ(set.delta_poc_s1[0], 4);
    EXPECT_EQ(set.used_by_curr_pic_s1[0], 1);
}

// Reference {-1, -4 | 4}, moved by -2 and by +3, worked out by hand from equations 7-61 and 7-62.
TEST(HevcShortTermRefPicSets, PredictionMovesTheReferenceBackward) {
    BitWriter first;
    first.ue(2).ue(1).ue(0).flag(true).ue(2).flag(false).ue(3).flag(true);
    const HevcShortTermRefPicSet reference = explicit_set({}, first, 0);
    BitWriter out;
    out.flag(true).flag(true).ue(1);  // delta_rps -2
    out.flag(true);                   // -1 -> -3, used
    out.flag(false).flag(false);      // -4: dropped
    out.flag(true);                   // 4 -> 2, used
    out.flag(false).flag(true);       // the reference picture itself, -2, not used
    const HevcShortTermRefPicSet set = explicit_set({reference}, out, 1);
    ASSERT_EQ(set.num_negative_pics, 2U);
    EXPECT_EQ(set.delta_poc_s0[0], -2);
    EXPECT_EQ(set.used_by_curr_pic_s0[0], 0);
    EXPECT_EQ(set.delta_poc_s0[1], -3);
    EXPECT_EQ(set.used_by_curr_pic_s0[1], 1);
    ASSERT_EQ(set.num_positive_pics, 1U);
    EXPECT_EQ(set.delta_poc_s1[0], 2);
    EXPECT_EQ(set.num_delta_pocs, 3U);
}

TEST(HevcShortTermRefPicSets, PredictionMovesTheReferenceForward) {
    BitWriter first;
    first.ue(2).ue(1).ue(0).flag(true).ue(2).flag(false).ue(3).flag(true);
    const HevcShortTermRefPicSet reference = explicit_set({}, first, 0);
    BitWriter out;
    out.flag(true).flag(false).ue(2);  // delta_rps 3
    out.flag(true).flag(true).flag(true).flag(true);
    const HevcShortTermRefPicSet set = explicit_set({reference}, out, 1);
    ASSERT_EQ(set.num_negative_pics, 1U);
    EXPECT_EQ(set.delta_poc_s0[0], -1);  // -4 + 3
    ASSERT_EQ(set.num_positive_pics, 3U);
    EXPECT_EQ(set.delta_poc_s1[0], 2);  // -1 + 3
    EXPECT_EQ(set.delta_poc_s1[1], 3);  // the reference picture itself
    EXPECT_EQ(set.delta_poc_s1[2], 7);  // 4 + 3
}

TEST(HevcShortTermRefPicSets, SliceHeaderSetNamesItsReference) {
    std::vector<HevcShortTermRefPicSet> earlier(2);
    earlier[0].num_negative_pics = earlier[0].num_delta_pocs = 1;
    earlier[0].delta_poc_s0[0] = -5;
    BitWriter out;
    out.flag(true).ue(1).flag(true).ue(0).flag(true).flag(true);
    HevcShortTermRefPicSet set;
    std::uint32_t position = 0;
    parse_hevc_st_ref_pic_set(&set, earlier, out.bytes(), position, 2, 2);
    EXPECT_EQ(set.delta_idx_minus1, 1U);
    ASSERT_EQ(set.num_negative_pics, 2U);
    EXPECT_EQ(set.delta_poc_s0[0], -1);
    EXPECT_EQ(set.delta_poc_s0[1], -6);
}

TEST(HevcShortTermRefPicSets, ReferenceBeforeTheFirstSetCountsAsEmpty) {
    BitWriter out;
    out.flag(true).ue(9).flag(true).ue(0).flag(true);
    HevcShortTermRefPicSet set;
    std::uint32_t position = 0;
    parse_hevc_st_ref_pic_set(&set, {HevcShortTermRefPicSet{}}, out.bytes(), position, 1, 1);
    EXPECT_EQ(position, out.bit_count());
    EXPECT_EQ(set.num_negative_pics, 1U);
    EXPECT_EQ(set.delta_poc_s0[0], -1);
}

TEST(HevcShortTermRefPicSets, PicturesPastTheCapacityAreReadAndDropped) {
    BitWriter out;
    out.ue(20).ue(18);
    for (int i = 0; i < 38; ++i) {
        out.ue(0).flag(true);
    }
    HevcShortTermRefPicSet set;
    std::uint32_t position = 0;
    parse_hevc_st_ref_pic_set(&set, {}, out.bytes(), position, 0, 1);
    EXPECT_EQ(position, out.bit_count());
    EXPECT_EQ(set.num_negative_pics, 16U);
    EXPECT_EQ(set.num_positive_pics, 16U);
    EXPECT_EQ(set.delta_poc_s0[15], -16);
    EXPECT_EQ(set.delta_poc_s1[15], 16);
}

TEST(HevcShortTermRefPicSets, FullReferenceSetsPredictWithinTheCapacity) {
    HevcShortTermRefPicSet full;
    full.num_negative_pics = full.num_positive_pics = 16;
    full.num_delta_pocs = 32;
    for (int i = 0; i < 16; ++i) {
        full.delta_poc_s0[static_cast<std::size_t>(i)] = -1 - i;
        full.delta_poc_s1[static_cast<std::size_t>(i)] = 1 + i;
    }
    BitWriter out;
    out.flag(true).flag(true).ue(99);  // everything becomes negative
    for (int i = 0; i < 33; ++i) {
        out.flag(true);
    }
    HevcShortTermRefPicSet set;
    std::uint32_t position = 0;
    parse_hevc_st_ref_pic_set(&set, {full}, out.bytes(), position, 1, 8);
    EXPECT_EQ(position, out.bit_count());
    EXPECT_EQ(set.num_negative_pics, 16U);
    EXPECT_EQ(set.delta_poc_s0[0], -84);
    EXPECT_EQ(set.delta_poc_s0[15], -99);
}

TEST(HevcSps, ShortTermSetsPastTheCapacityAreReadAndDropped) {
    BitWriter out = sps_start();
    write_block_sizes(out);
    out.flag(false).flag(false).flag(false).flag(false).ue(70);
    for (int i = 0; i < 70; ++i) {
        if (i > 0) {
            out.flag(false);
        }
        out.ue(1).ue(0).ue(static_cast<std::uint32_t>(i)).flag(true);
    }
    out.flag(false).flag(true).flag(true).flag(false).flag(false).trailing();
    const HevcSps sps = parse_sps(escape_nal(out.bytes()));
    EXPECT_EQ(sps.num_short_term_ref_pic_sets, 70U);
    ASSERT_EQ(sps.st_ref_pic_sets.size(), 64U);
    EXPECT_EQ(sps.st_ref_pic_sets[63].delta_poc_s0[0], -64);
    EXPECT_EQ(sps.strong_intra_smoothing_enabled_flag, 1);
}

TEST(HevcScalingList, DefaultsFollowSizeAndMatrix) {
    EXPECT_EQ(scaling_list_default_address(0, 0).size(), 16U);
    EXPECT_EQ(scaling_list_default_address(0, 5)[15], 16);
    for (std::uint32_t size = 1; size <= 2; ++size) {
        EXPECT_EQ(scaling_list_default_address(size, 0).size(), 64U);
        EXPECT_EQ(scaling_list_default_address(size, 2)[63], 115);
        EXPECT_EQ(scaling_list_default_address(size, 3)[63], 91);
    }
    EXPECT_EQ(scaling_list_default_address(3, 0)[63], 115);
    EXPECT_EQ(scaling_list_default_address(3, 1)[63], 91);
}

TEST(HevcScalingList, ReadsPredictsAndFallsBackToDefaults) {
    BitWriter out;
    const auto flat = [&](int first, int count) {
        out.flag(true);
        for (int i = 0; i < count; ++i) {
            out.se(i == 0 ? first - 8 : 0);
        }
    };
    flat(40, 16);           // 4 x 4, matrix 0
    out.flag(false).ue(1);  // matrix 1 repeats matrix 0
    out.flag(false).ue(0);  // matrix 2: the default
    for (int i = 3; i < 6; ++i) {
        out.flag(false).ue(0);
    }
    for (int i = 0; i < 6; ++i) {
        out.flag(false).ue(0);  // 8 x 8
    }
    out.flag(true).se(12);  // 16 x 16: DC 20, then 20, 10, 10 + 250 = 4 (mod 256)
    out.se(0).se(-10).se(250);
    for (int i = 3; i < 64; ++i) {
        out.se(0);
    }
    out.flag(false).ue(1);  // matrix 1 repeats matrix 0 with its DC
    for (int i = 2; i < 6; ++i) {
        out.flag(false).ue(0);
    }
    out.flag(false).ue(0);  // 32 x 32
    out.flag(false).ue(1);
    HevcScalingList list;
    std::uint32_t position = 0;
    EXPECT_EQ(parse_hevc_scaling_list(&list, out.bytes(), position), Status::kOk);
    EXPECT_EQ(position, out.bit_count());
    ASSERT_EQ(list.matrices.size(), 20U);
    EXPECT_EQ(list.matrices[0].coefficients[0], 40);
    EXPECT_EQ(list.matrices[0].coefficients[15], 40);
    EXPECT_EQ(list.matrices[0].coefficients[16], 0);
    EXPECT_EQ(list.matrices[1].coefficients[15], 40);
    EXPECT_EQ(list.matrices[2].coefficients[15], 16);
    EXPECT_EQ(list.matrices[6].coefficients[63], 115);
    EXPECT_EQ(list.matrices[9].coefficients[63], 91);
    EXPECT_EQ(list.matrices[12].dc_coef, 20);
    EXPECT_EQ(list.matrices[12].coefficients[0], 20);
    EXPECT_EQ(list.matrices[12].coefficients[1], 10);
    EXPECT_EQ(list.matrices[12].coefficients[2], 4);
    EXPECT_EQ(list.matrices[13].dc_coef, 20);
    EXPECT_EQ(list.matrices[13].coefficients[63], 4);
    EXPECT_EQ(list.matrices[14].dc_coef, 16);
    EXPECT_EQ(list.matrices[18].coefficients[63], 115);
    EXPECT_EQ(list.matrices[19].coefficients[63], 115);
}

TEST(HevcScalingList, ReferenceBehindTheFirstListGivesTheDefault) {
    BitWriter out;
    for (int i = 0; i < 20; ++i) {
        out.flag(false).ue(0xFFFFFFFE);
    }
    HevcScalingList list;
    std::uint32_t position = 0;
    parse_hevc_scaling_list(&list, out.bytes(), position);
    ASSERT_EQ(list.matrices.size(), 20U);
    EXPECT_EQ(list.matrices[19].coefficients[63], 91);
}

TEST(HevcSps, ScalingListOfTheSetIsRead) {
    BitWriter out = sps_start();
    write_block_sizes(out);
    out.flag(true).flag(true);
    for (int i = 0; i < 20; ++i) {
        out.flag(false).ue(0);
    }
    out.flag(true).flag(true).flag(false);
    write_sps_end(out);
    const HevcSps sps = parse_sps(escape_nal(out.bytes()));
    EXPECT_EQ(sps.scaling_list.matrices.size(), 20U);
    EXPECT_EQ(sps.sample_adaptive_offset_enabled_flag, 1);
    EXPECT_EQ(sps.strong_intra_smoothing_enabled_flag, 1);
}

TEST(HevcPps, ReadsEachElement) {
    BitWriter out;
    out.u(0, 1).u(34, 6).u(0, 6).u(1, 3);
    out.ue(3).ue(2).flag(true).flag(true).u(5, 3).flag(true).flag(true);
    out.ue(4).ue(5).se(-6).flag(true).flag(true).flag(true).ue(2);
    out.se(-7).se(8).flag(true).flag(true).flag(true).flag(true).flag(true).flag(true);
    out.ue(2).ue(1).flag(false).ue(9).ue(8).ue(7).flag(true);
    out.flag(true).flag(true).flag(true).flag(false).se(-3).se(2);
    out.flag(true);
    for (int i = 0; i < 20; ++i) {
        out.flag(false).ue(0);
    }
    out.flag(true).ue(3).flag(true);
    out.flag(true).flag(true).flag(true).flag(false).flag(true).u(9, 4).trailing();
    const HevcPps pps = parse_pps(escape_nal(out.bytes()));
    EXPECT_EQ(pps.header.nal_unit_type, 34);
    EXPECT_EQ(pps.pps_pic_parameter_set_id, 3U);
    EXPECT_EQ(pps.pps_seq_parameter_set_id, 2U);
    EXPECT_EQ(pps.dependent_slice_segments_enabled_flag, 1);
    EXPECT_EQ(pps.output_flag_present_flag, 1);
    EXPECT_EQ(pps.num_extra_slice_header_bits, 5);
    EXPECT_EQ(pps.sign_data_hiding_enabled_flag, 1);
    EXPECT_EQ(pps.cabac_init_present_flag, 1);
    EXPECT_EQ(pps.num_ref_idx_l0_default_active_minus1, 4U);
    EXPECT_EQ(pps.num_ref_idx_l1_default_active_minus1, 5U);
    EXPECT_EQ(pps.init_qp_minus26, -6);
    EXPECT_EQ(pps.constrained_intra_pred_flag, 1);
    EXPECT_EQ(pps.transform_skip_enabled_flag, 1);
    EXPECT_EQ(pps.diff_cu_qp_delta_depth, 2U);
    EXPECT_EQ(pps.pps_cb_qp_offset, -7);
    EXPECT_EQ(pps.pps_cr_qp_offset, 8);
    EXPECT_EQ(pps.weighted_bipred_flag, 1);
    EXPECT_EQ(pps.transquant_bypass_enabled_flag, 1);
    EXPECT_EQ(pps.entropy_coding_sync_enabled_flag, 1);
    EXPECT_EQ(pps.column_width_minus1, (std::vector<std::uint32_t>{9, 8}));
    EXPECT_EQ(pps.row_height_minus1, (std::vector<std::uint32_t>{7}));
    EXPECT_EQ(pps.loop_filter_across_tiles_enabled_flag, 1);
    EXPECT_EQ(pps.pps_loop_filter_across_slices_enabled_flag, 1);
    EXPECT_EQ(pps.deblocking_filter_override_enabled_flag, 1);
    EXPECT_EQ(pps.pps_deblocking_filter_disabled_flag, 0);
    EXPECT_EQ(pps.pps_beta_offset_div2, -3);
    EXPECT_EQ(pps.pps_tc_offset_div2, 2);
    EXPECT_EQ(pps.scaling_list.matrices.size(), 20U);
    EXPECT_EQ(pps.lists_modification_present_flag, 1);
    EXPECT_EQ(pps.log2_parallel_merge_level_minus2, 3U);
    EXPECT_EQ(pps.slice_segment_header_extension_present_flag, 1);
    EXPECT_EQ(pps.pps_range_extension_flag, 1);
    EXPECT_EQ(pps.pps_multilayer_extension_flag, 1);
    EXPECT_EQ(pps.pps_3d_extension_flag, 0);
    EXPECT_EQ(pps.pps_scc_extension_flag, 1);
    EXPECT_EQ(pps.pps_extension_4bits, 9);
}

TEST(HevcPps, SmallSetHasDefaults) {
    const HevcPps pps = parse_pps(testing::build_hevc_pps());
    EXPECT_EQ(pps.sign_data_hiding_enabled_flag, 1);
    EXPECT_EQ(pps.diff_cu_qp_delta_depth, 0U);
    EXPECT_EQ(pps.entropy_coding_sync_enabled_flag, 1);
    EXPECT_EQ(pps.tiles_enabled_flag, 0);
    EXPECT_EQ(pps.pps_loop_filter_across_slices_enabled_flag, 1);
    EXPECT_TRUE(pps.scaling_list.matrices.empty());
}

TEST(HevcPps, TilesPastTheCapacityAreReadAndDropped) {
    BitWriter out;
    out.u(0, 1).u(34, 6).u(0, 6).u(1, 3);
    out.ue(0).ue(0).flag(false).flag(false).u(0, 3).flag(false).flag(false);
    out.ue(0).ue(0).se(0).flag(false).flag(false).flag(false).se(0).se(0);
    out.flag(false).flag(false).flag(false).flag(false).flag(true).flag(false);
    out.ue(30).ue(31).flag(false);
    for (std::uint32_t i = 0; i < 61; ++i) {
        out.ue(i);
    }
    out.flag(true).flag(true).flag(false).flag(false).flag(false).ue(5).flag(false).flag(false);
    const HevcPps pps = parse_pps(escape_nal(out.trailing().bytes()));
    EXPECT_EQ(pps.num_tile_columns_minus1, 30U);
    EXPECT_EQ(pps.column_width_minus1.size(), 20U);
    EXPECT_EQ(pps.column_width_minus1[19], 19U);
    EXPECT_EQ(pps.row_height_minus1.size(), 22U);
    EXPECT_EQ(pps.row_height_minus1[0], 30U);
    EXPECT_EQ(pps.log2_parallel_merge_level_minus2, 5U);
}

TEST(HevcParameterSets, EmulationPreventionDoesNotChangeTheFields) {
    HevcSpsOptions options;
    options.timing = Fraction{1, 3};
    options.profile.reserved_44bits = 3;
    const std::vector<std::uint8_t> unit = build_hevc_sps(options);
    const std::vector<std::uint8_t> mark = {0, 0, 3};
    ASSERT_NE(std::search(unit.begin(), unit.end(), mark.begin(), mark.end()), unit.end());
    const HevcSps sps = parse_sps(unit);
    EXPECT_EQ(sps.profile_tier_level.general.reserved_zero_44bits_43_12, 0U);
    EXPECT_EQ(sps.profile_tier_level.general.reserved_zero_44bits_11_0, 3);
    EXPECT_EQ(sps.vui.vui_num_units_in_tick, 1U);
    EXPECT_EQ(sps.vui.vui_time_scale, 3U);
    EXPECT_EQ(sps.pic_width, 416U);
}

}  // namespace
}  // namespace mediasplit
