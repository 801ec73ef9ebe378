#include "src/video/avc_parameter_sets.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/nal_builder.h"

namespace mediasplit {
namespace {

using testing::AvcSpsOptions;
using testing::BitWriter;
using testing::build_avc_sps;
using testing::CropOffsets;
using testing::Fraction;

AvcSps parse(const std::vector<std::uint8_t>& unit) {
    AvcSps sps;
    const NalBuffer nal{unit.data(), static_cast<std::uint32_t>(unit.size())};
    EXPECT_EQ(parse_avc_sps_nal(&nal, &sps, nullptr), Status::kOk);
    return sps;
}

AvcSps parse(const AvcSpsOptions& options) {
    return parse(build_avc_sps(options));
}

// A Main profile set up to and including direct_8x8_inference_flag, 320 x 240.
BitWriter main_profile_start() {
    BitWriter out;
    out.u(0x67, 8).u(77, 8).u(0, 8).u(30, 8).ue(0);
    out.ue(0).ue(2).ue(1).flag(false);
    out.ue(19).ue(14).flag(true).flag(true);
    return out;
}

TEST(NalRemove0x03, DropsTheThreeBehindTwoZeros) {
    const std::vector<std::uint8_t> input = {1, 0, 0, 3, 1, 0, 0, 3, 0, 0, 3, 3, 0, 3, 0, 0, 2};
    std::vector<std::uint8_t> out(32);
    const std::uint32_t size = nal_remove_0x03(out, input);
    out.resize(size);
    EXPECT_EQ(out, (std::vector<std::uint8_t>{1, 0, 0, 1, 0, 0, 0, 0, 3, 0, 3, 0, 0, 2}));
}

TEST(NalRemove0x03, DropsAThreeAtTheVeryEndAndKeepsIncompleteSequences) {
    std::vector<std::uint8_t> out(8);
    EXPECT_EQ(nal_remove_0x03(out, std::vector<std::uint8_t>{5, 0, 0, 3}), 3U);
    EXPECT_EQ(nal_remove_0x03(out, std::vector<std::uint8_t>{0, 3}), 2U);
    EXPECT_EQ(nal_remove_0x03(out, std::vector<std::uint8_t>{0, 0}), 2U);
    EXPECT_EQ(nal_remove_0x03(out, {}), 0U);
}

TEST(NalRemove0x03, CutsAtTheEndOfTheOutput) {
    std::vector<std::uint8_t> out(4, 0xEE);
    const std::vector<std::uint8_t> input = {1, 0, 0, 3, 4, 5, 6};
    EXPECT_EQ(nal_remove_0x03(std::span(out).first(3), input), 3U);
    EXPECT_EQ(out, (std::vector<std::uint8_t>{1, 0, 0, 0xEE}));
}

TEST(AvcSps, NullArgumentsFail) {
    AvcSps sps;
    NalBuffer nal;
    EXPECT_EQ(parse_avc_sps_nal(nullptr, &sps, nullptr), Status::kFailed);
    EXPECT_EQ(parse_avc_sps_nal(&nal, &sps, nullptr), Status::kFailed);
    const std::uint8_t byte = 0x67;
    nal = {&byte, 1};
    EXPECT_EQ(parse_avc_sps_nal(&nal, nullptr, nullptr), Status::kFailed);
    std::uint32_t position = 0;
    EXPECT_EQ(parse_avc_vui_parameters(nullptr, ByteSpan(&byte, 1), position), Status::kFailed);
    EXPECT_EQ(parse_avc_hrd_parameters(nullptr, ByteSpan(&byte, 1), position), Status::kFailed);
    EXPECT_EQ(parse_avc_scaling_list(nullptr, ByteSpan(&byte, 1), position, 16), Status::kFailed);
    AvcVui vui;
    EXPECT_EQ(parse_avc_vui_parameters(&vui, {}, position), Status::kFailed);
}

TEST(AvcSps, SizeZeroLeavesTheRecordZero) {
    AvcSps sps;
    const std::uint8_t byte = 0x67;
    const NalBuffer nal{&byte, 0};
    EXPECT_EQ(parse_avc_sps_nal(&nal, &sps, nullptr), Status::kOk);
    EXPECT_EQ(sps.header.nal_unit_type, 0);
    EXPECT_EQ(sps.chroma_format_idc, 0U);
    EXPECT_EQ(sps.pic_width, 0U);
}

TEST(AvcSps, ReadsHeaderProfileAndLevel) {
    AvcSpsOptions options;
    options.profile_idc = 77;
    options.constraint_flags = 0x40;
    options.level_idc = 41;
    const AvcSps sps = parse(options);
    EXPECT_EQ(sps.header.nal_ref_idc, 3);
    EXPECT_EQ(sps.header.nal_unit_type, 7);
    EXPECT_EQ(sps.profile_idc, 77);
    EXPECT_EQ(sps.constraint_flags, 0x40);
    EXPECT_EQ(sps.level_idc, 41);
    EXPECT_EQ(sps.chroma_format_idc, 1U);
    EXPECT_EQ(sps.max_frame_num, 16U);
}

TEST(AvcSps, WidthOf120MacroblocksIs1920) {
    AvcSpsOptions options;
    options.width_in_mbs = 120;
    EXPECT_EQ(parse(options).pic_width, 1920U);
}

TEST(AvcSps, BottomCropOf4MakesHeight1080At420) {
    AvcSpsOptions options;
    options.width_in_mbs = 120;
    options.height_in_map_units = 68;
    options.crop = CropOffsets{0, 0, 0, 4};
    const AvcSps sps = parse(options);
    EXPECT_EQ(sps.pic_width, 1920U);
    EXPECT_EQ(sps.pic_height, 1080U);
}

TEST(AvcSps, FieldCodingDoublesHeightAndCropUnit) {
    AvcSpsOptions options;
    options.width_in_mbs = 120;
    options.height_in_map_units = 34;
    options.frame_mbs_only = false;
    options.crop = CropOffsets{0, 0, 0, 2};
    EXPECT_EQ(parse(options).pic_height, 1080U);
}

struct CropCase {
    std::uint32_t chroma_format_idc;
    bool separate_planes;
    std::uint32_t width;
    std::uint32_t height;
};

class AvcCropUnits : public ::testing::TestWithParam<CropCase> {};

TEST_P(AvcCropUnits, FollowTheChromaFormat) {
    AvcSpsOptions options;
    options.profile_idc = 244;
    options.chroma_format_idc = GetParam().chroma_format_idc;
    options.separate_colour_plane = GetParam().separate_planes;
    options.crop = CropOffsets{1, 2, 3, 4};  // of 320 x 240
    const AvcSps sps = parse(options);
    EXPECT_EQ(sps.chroma_format_idc, GetParam().chroma_format_idc);
    EXPECT_EQ(sps.pic_width, GetParam().width);
    EXPECT_EQ(sps.pic_height, GetParam().height);
}

INSTANTIATE_TEST_SUITE_P(Formats, AvcCropUnits,
                         ::testing::Values(CropCase{0, false, 317, 233},
                                           CropCase{1, false, 314, 226},
                                           CropCase{2, false, 314, 233},
                                           CropCase{3, false, 317, 233},
                                           CropCase{3, true, 317, 233}));

class AvcHighProfiles : public ::testing::TestWithParam<int> {};

TEST_P(AvcHighProfiles, CarryChromaFormatAndBitDepth) {
    AvcSpsOptions options;
    options.profile_idc = static_cast<std::uint8_t>(GetParam());
    options.chroma_format_idc = 2;
    options.bit_depth = 10;
    const AvcSps sps = parse(options);
    EXPECT_EQ(sps.chroma_format_idc, 2U);
    EXPECT_EQ(sps.bit_depth_luma_minus8, 2U);
    EXPECT_EQ(sps.bit_depth_chroma_minus8, 2U);
    EXPECT_EQ(sps.pic_width, 320U);
}

INSTANTIATE_TEST_SUITE_P(All, AvcHighProfiles,
                         ::testing::Values(100, 110, 122, 244, 44, 83, 86, 118, 128, 138, 139, 134,
                                           135));

TEST(AvcSps, FrameRateIsHalfTheTickRate) {
    AvcSpsOptions options;
    options.timing = Fraction{1, 50};
    const AvcSps sps = parse(options);
    EXPECT_EQ(sps.vui.timing_info_present_flag, 1);
    EXPECT_FLOAT_EQ(sps.frame_rate, 25.0F);
    options.timing = Fraction{1001, 60000};
    EXPECT_FLOAT_EQ(parse(options).frame_rate, 30000.0F / 1001.0F);
}

TEST(AvcSps, ZeroTickOrScaleClearsTheTimingFlag) {
    AvcSpsOptions options;
    options.timing = Fraction{0, 50};
    AvcSps sps = parse(options);
    EXPECT_EQ(sps.vui.timing_info_present_flag, 0);
    EXPECT_EQ(sps.frame_rate, 0.0F);
    options.timing = Fraction{1, 0};
    sps = parse(options);
    EXPECT_EQ(sps.vui.timing_info_present_flag, 0);
    EXPECT_EQ(sps.frame_rate, 0.0F);
}

TEST(AvcSps, AspectRatioComesFromTheTableOrTheUnit) {
    AvcSpsOptions options;
    options.aspect_ratio_idc = 13;
    AvcSps sps = parse(options);
    EXPECT_EQ(sps.vui.sar_width, 160);
    EXPECT_EQ(sps.vui.sar_height, 99);
    options.aspect_ratio_idc = 16;
    sps = parse(options);
    EXPECT_EQ(sps.vui.sar_width, 2);
    EXPECT_EQ(sps.vui.sar_height, 1);
    options.aspect_ratio_idc = 255;
    options.sar_width = 45;
    options.sar_height = 44;
    sps = parse(options);
    EXPECT_EQ(sps.vui.sar_width, 45);
    EXPECT_EQ(sps.vui.sar_height, 44);
}

TEST(AvcSps, UnknownAspectRatioLeavesTheAspectZero) {
    AvcSpsOptions options;
    for (const int idc : {17, 20, 254}) {
        options.aspect_ratio_idc = static_cast<std::uint8_t>(idc);
        const AvcSps sps = parse(options);
        EXPECT_EQ(sps.vui.aspect_ratio_idc, idc);
        EXPECT_EQ(sps.vui.sar_width, 0);
        EXPECT_EQ(sps.vui.sar_height, 0);
    }
}

TEST(AvcSps, EmulationPreventionDoesNotChangeTheFields) {
    AvcSpsOptions options;
    options.timing = Fraction{1, 256};  // zero bytes in both words
    const std::vector<std::uint8_t> unit = build_avc_sps(options);
    ASSERT_NE(std::search_n(unit.begin(), unit.end(), 2, 0), unit.end());
    const std::vector<std::uint8_t> three = {0, 0, 3};
    ASSERT_NE(std::search(unit.begin(), unit.end(), three.begin(), three.end()), unit.end());
    const AvcSps sps = parse(unit);
    EXPECT_EQ(sps.vui.num_units_in_tick, 1U);
    EXPECT_EQ(sps.vui.time_scale, 256U);
    EXPECT_FLOAT_EQ(sps.frame_rate, 128.0F);
}

TEST(AvcSps, PictureOrderCountType0GivesTheLsbRange) {
    BitWriter out;
    out.u(0x67, 8).u(66, 8).u(0, 8).u(30, 8).ue(5);
    out.ue(3).ue(0).ue(2).ue(4).flag(true).ue(9).ue(8).flag(true).flag(true).flag(false);
    const AvcSps sps = parse(out.flag(false).trailing().bytes());
    EXPECT_EQ(sps.seq_parameter_set_id, 5U);
    EXPECT_EQ(sps.max_frame_num, 128U);
    EXPECT_EQ(sps.max_pic_order_cnt_lsb, 64U);
    EXPECT_EQ(sps.max_num_ref_frames, 4U);
    EXPECT_EQ(sps.gaps_in_frame_num_value_allowed_flag, 1);
    EXPECT_EQ(sps.pic_width, 160U);
    EXPECT_EQ(sps.pic_height, 144U);
}

TEST(AvcSps, PictureOrderCountType1KeepsItsOffsets) {
    BitWriter out;
    out.u(0x67, 8).u(66, 8).u(0, 8).u(30, 8).ue(0);
    out.ue(0).ue(1).flag(true).se(-3).se(4).ue(3).se(1).se(-1).se(0);
    out.ue(1).flag(false).ue(19).ue(14).flag(true).flag(true).flag(false).flag(false);
    const AvcSps sps = parse(out.trailing().bytes());
    EXPECT_EQ(sps.delta_pic_order_always_zero_flag, 1);
    EXPECT_EQ(sps.offset_for_non_ref_pic, -3);
    EXPECT_EQ(sps.offset_for_top_to_bottom_field, 4);
    EXPECT_EQ(sps.offset_for_ref_frame, (std::vector<std::int32_t>{1, -1, 0}));
    EXPECT_EQ(sps.pic_width, 320U);
}

TEST(AvcSps, OffsetsPastTheCapacityAreReadAndDropped) {
    BitWriter out;
    out.u(0x67, 8).u(66, 8).u(0, 8).u(30, 8).ue(0);
    out.ue(0).ue(1).flag(false).se(0).se(0).ue(300);
    for (int i = 0; i < 300; ++i) {
        out.se(i < 255 ? 0 : 1);
    }
    out.ue(1).flag(false).ue(19).ue(14).flag(true).flag(true).flag(false).flag(false);
    const AvcSps sps = parse(out.trailing().bytes());
    EXPECT_EQ(sps.num_ref_frames_in_pic_order_cnt_cycle, 300U);
    EXPECT_EQ(sps.offset_for_ref_frame, std::vector<std::int32_t>(255, 0));
    EXPECT_EQ(sps.pic_width, 320U);
    EXPECT_EQ(sps.pic_height, 240U);
}

TEST(AvcSps, ReadsScalingListsUntilTheNextScaleIsZero) {
    BitWriter out;
    out.u(0x67, 8).u(100, 8).u(0, 8).u(30, 8).ue(0);
    out.ue(1).ue(0).ue(0).flag(false).flag(true);
    out.flag(true).se(-8);               // list 0: the default list
    out.flag(true).se(8).se(2).se(-18);  // list 1: 16, 18, then 18 to the end
    for (int i = 2; i < 7; ++i) {
        out.flag(false);
    }
    out.flag(true);  // list 7: 64 entries
    for (int i = 0; i < 64; ++i) {
        out.se(i == 0 ? 249 : 1);  // wraps at 256
    }
    out.ue(0).ue(2).ue(1).flag(false).ue(19).ue(14).flag(true).flag(true);
    const AvcSps sps = parse(out.flag(false).flag(false).trailing().bytes());
    ASSERT_EQ(sps.scaling_lists.size(), 8U);
    EXPECT_EQ(sps.scaling_lists[0].use_default_flag, 1);
    EXPECT_EQ(sps.scaling_lists[0].scale[0], 8);
    EXPECT_EQ(sps.scaling_lists[0].scale[15], 8);
    EXPECT_EQ(sps.scaling_lists[0].scale[16], 0);
    EXPECT_EQ(sps.scaling_lists[1].use_default_flag, 0);
    EXPECT_EQ(sps.scaling_lists[1].scale[0], 16);
    EXPECT_EQ(sps.scaling_lists[1].scale[1], 18);
    EXPECT_EQ(sps.scaling_lists[1].scale[15], 18);
    EXPECT_EQ(sps.scaling_lists[1].delta_scale[2], -18);
    EXPECT_EQ(sps.scaling_lists[2].present_flag, 0);
    EXPECT_EQ(sps.scaling_lists[7].scale[0], 1);
    EXPECT_EQ(sps.scaling_lists[7].scale[63], 64);
    EXPECT_EQ(sps.pic_width, 320U);
}

TEST(AvcSps, ChromaFormat3HasTwelveScalingLists) {
    BitWriter out;
    out.u(0x67, 8).u(244, 8).u(0, 8).u(30, 8).ue(0);
    out.ue(3).flag(false).ue(0).ue(0).flag(false).flag(true).u(0, 12);
    out.ue(0).ue(2).ue(1).flag(false).ue(19).ue(14).flag(true).flag(true);
    const AvcSps sps = parse(out.flag(false).flag(false).trailing().bytes());
    EXPECT_EQ(sps.scaling_lists.size(), 12U);
    EXPECT_EQ(sps.pic_width, 320U);
}

TEST(AvcSps, ReadsTheWholeVui) {
    BitWriter out = main_profile_start();
    out.flag(false).flag(true);  // cropping, VUI
    out.flag(true).u(2, 8);      // 12:11
    out.flag(true).flag(true);   // overscan
    out.flag(true).u(1, 3).flag(true).flag(true).u(9, 8).u(16, 8).u(10, 8);
    out.flag(true).ue(2).ue(3);  // chroma location
    out.flag(true).u(1001, 32).u(48000, 32).flag(true);
    const auto hrd = [&](std::uint32_t count) {
        out.ue(count - 1).u(3, 4).u(5, 4);
        for (std::uint32_t i = 0; i < count; ++i) {
            out.ue(1000 + i).ue(2000 + i).flag(i % 2 == 1);
        }
        out.u(23, 5).u(22, 5).u(21, 5).u(24, 5);
    };
    out.flag(true);
    hrd(2);
    out.flag(true);
    hrd(1);
    out.flag(true);  // low_delay_hrd_flag
    out.flag(true);  // pic_struct_present_flag
    out.flag(true).flag(true).ue(2).ue(1).ue(14).ue(13).ue(3).ue(4);
    const AvcSps sps = parse(testing::escape_nal(out.trailing().bytes()));
    const AvcVui& vui = sps.vui;
    EXPECT_EQ(vui.sar_width, 12);
    EXPECT_EQ(vui.sar_height, 11);
    EXPECT_EQ(vui.overscan_appropriate_flag, 1);
    EXPECT_EQ(vui.video_format, 1);
    EXPECT_EQ(vui.video_full_range_flag, 1);
    EXPECT_EQ(vui.colour_primaries, 9);
    EXPECT_EQ(vui.transfer_characteristics, 16);
    EXPECT_EQ(vui.matrix_coefficients, 10);
    EXPECT_EQ(vui.chroma_sample_loc_type_top_field, 2U);
    EXPECT_EQ(vui.chroma_sample_loc_type_bottom_field, 3U);
    EXPECT_EQ(vui.fixed_frame_rate_flag, 1);
    EXPECT_FLOAT_EQ(sps.frame_rate, 24000.0F / 1001.0F);
    ASSERT_EQ(vui.nal_hrd.cpb.size(), 2U);
    EXPECT_EQ(vui.nal_hrd.bit_rate_scale, 3);
    EXPECT_EQ(vui.nal_hrd.cpb_size_scale, 5);
    EXPECT_EQ(vui.nal_hrd.cpb[1].bit_rate_value_minus1, 1001U);
    EXPECT_EQ(vui.nal_hrd.cpb[1].cpb_size_value_minus1, 2001U);
    EXPECT_EQ(vui.nal_hrd.cpb[1].cbr_flag, 1);
    EXPECT_EQ(vui.nal_hrd.initial_cpb_removal_delay_length_minus1, 23);
    EXPECT_EQ(vui.nal_hrd.cpb_removal_delay_length_minus1, 22);
    EXPECT_EQ(vui.nal_hrd.dpb_output_delay_length_minus1, 21);
    EXPECT_EQ(vui.nal_hrd.time_offset_length, 24);
    ASSERT_EQ(vui.vcl_hrd.cpb.size(), 1U);
    EXPECT_EQ(vui.low_delay_hrd_flag, 1);
    EXPECT_EQ(vui.pic_struct_present_flag, 1);
    EXPECT_EQ(vui.bitstream_restriction_flag, 1);
    EXPECT_EQ(vui.max_bytes_per_pic_denom, 2U);
    EXPECT_EQ(vui.max_bits_per_mb_denom, 1U);
    EXPECT_EQ(vui.log2_max_mv_length_horizontal, 14U);
    EXPECT_EQ(vui.log2_max_mv_length_vertical, 13U);
    EXPECT_EQ(vui.max_num_reorder_frames, 3U);
    EXPECT_EQ(vui.max_dec_frame_buffering, 4U);
}

TEST(AvcSps, CpbEntriesPastTheCapacityAreReadAndDropped) {
    BitWriter out = main_profile_start();
    out.flag(false).flag(true).flag(false).flag(false).flag(false).flag(false).flag(false);
    out.flag(true).ue(39).u(1, 4).u(1, 4);
    for (std::uint32_t i = 0; i < 40; ++i) {
        out.ue(i).ue(0).flag(true);
    }
    out.u(7, 5).u(7, 5).u(7, 5).u(9, 5).flag(false).flag(true).flag(true);
    const AvcSps sps = parse(out.trailing().bytes());
    EXPECT_EQ(sps.vui.nal_hrd.cpb_cnt_minus1, 39U);
    ASSERT_EQ(sps.vui.nal_hrd.cpb.size(), 32U);
    EXPECT_EQ(sps.vui.nal_hrd.cpb[31].bit_rate_value_minus1, 31U);
    EXPECT_EQ(sps.vui.nal_hrd.time_offset_length, 9);
    EXPECT_EQ(sps.vui.low_delay_hrd_flag, 1);
}

TEST(AvcSps, UnitIsCutAt512Bytes) {
    BitWriter out;
    out.u(0x67, 8).u(66, 8).u(0, 8).u(30, 8).ue(0);
    out.ue(0).ue(1).flag(false).se(0).se(0).ue(200);
    for (int i = 0; i < 200; ++i) {
        out.se(-(1 << 20));  // 43 bits each: the picture size lies behind byte 512
    }
    out.ue(1).flag(false).ue(19).ue(14).flag(true).flag(true).flag(false).flag(false);
    const AvcSps sps = parse(out.trailing().bytes());
    EXPECT_EQ(sps.profile_idc, 66);
    EXPECT_LT(sps.offset_for_ref_frame.size(), 100U);
    EXPECT_EQ(sps.pic_width, 16U);  // all zeros behind the cut
    EXPECT_EQ(sps.frame_rate, 0.0F);
}

TEST(AvcSps, ParsingReplacesTheFormerContent) {
    AvcSpsOptions options;
    options.timing = Fraction{1, 50};
    options.crop = CropOffsets{0, 0, 0, 4};
    const std::vector<std::uint8_t> first = build_avc_sps(options);
    const std::vector<std::uint8_t> second = build_avc_sps(AvcSpsOptions{});
    AvcSps sps;
    NalBuffer nal{first.data(), static_cast<std::uint32_t>(first.size())};
    parse_avc_sps_nal(&nal, &sps, nullptr);
    nal = {second.data(), static_cast<std::uint32_t>(second.size())};
    parse_avc_sps_nal(&nal, &sps, nullptr);
    EXPECT_EQ(sps.frame_rate, 0.0F);
    EXPECT_EQ(sps.frame_crop_bottom_offset, 0U);
    EXPECT_EQ(sps.pic_height, 240U);
}

}  // namespace
}  // namespace mediasplit
