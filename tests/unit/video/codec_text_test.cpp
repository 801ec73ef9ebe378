#include "src/video/codec_text.h"

#include <gtest/gtest.h>

#include "tests/support/nal_builder.h"
#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

AvcSps avc_sps(int profile, int constraints, int level) {
    AvcSps sps;
    sps.profile_idc = static_cast<std::uint8_t>(profile);
    sps.constraint_flags = static_cast<std::uint8_t>(constraints);
    sps.level_idc = static_cast<std::uint8_t>(level);
    return sps;
}

std::string avc_text(std::uint32_t px_kind, const AvcSps& sps) {
    std::string text = "left over";
    EXPECT_EQ(build_avc_codec(&text, px_kind, &sps), Status::kOk);
    return text;
}

// Main profile as in the examples of ISO/IEC 14496-15 Annex E: "hev1.1.6.L93.B0".
HevcConfig main_config() {
    HevcConfig config;
    config.general_profile_idc = 1;
    config.general_profile_compatibility_flags = 0x60000000;
    config.general_progressive_source_flag = 1;
    config.general_non_packed_constraint_flag = 1;
    config.general_frame_only_constraint_flag = 1;
    config.general_level_idc = 93;
    return config;
}

std::string hevc_text(std::uint32_t stream_id, const HevcConfig& config) {
    std::string text = "left over";
    EXPECT_EQ(build_hevc_codec(&text, stream_id, &config, "video", nullptr), Status::kOk);
    return text;
}

// A stream whose VPS says the same as `main_config`.
ParameterSet<HevcVps> main_vps() {
    testing::HevcVpsOptions options;
    options.profile.non_packed = true;
    ParameterSet<HevcVps> set;
    set.unit = testing::build_hevc_vps(options);
    const NalBuffer nal = set.nal();
    parse_hevc_vps_nal(&nal, &set.record, nullptr);
    return set;
}

TEST(BuildAvcCodec, HighProfileLevel4) {
    EXPECT_EQ(avc_text(2, avc_sps(100, 0, 40)), "avc1.640028");
}

TEST(BuildAvcCodec, KindGivesThePrefix) {
    EXPECT_EQ(avc_text(1, avc_sps(66, 0xC0, 10)), "avc3.42c00a");
    EXPECT_EQ(avc_text(0, avc_sps(66, 0xC0, 10)), ".42c00a");
    EXPECT_EQ(avc_text(5, avc_sps(0, 0, 0)), ".000000");
}

TEST(BuildAvcCodec, NullArgumentsFail) {
    std::string text;
    const AvcSps sps;
    EXPECT_EQ(build_avc_codec(nullptr, 2, &sps), Status::kFailed);
    EXPECT_EQ(build_avc_codec(&text, 2, nullptr), Status::kFailed);
}

TEST(BuildHevcCodec, StandardExampleOfTheMainProfile) {
    EXPECT_EQ(hevc_text(12, main_config()), "hev1.1.6.L93.b0");
}

TEST(BuildHevcCodec, StandardExampleWithProfileSpaceAndHighTier) {
    HevcConfig config = main_config();
    config.general_profile_space = 1;
    config.general_profile_idc = 4;
    config.general_profile_compatibility_flags = 0x82000000;
    config.general_tier_flag = 1;
    config.general_level_idc = 63;
    config.general_reserved_zero_44bits_43_12 = 0x02300000;
    EXPECT_EQ(hevc_text(12, config), "hev1.A4.41.H63.b0.23");
}

TEST(BuildHevcCodec, CompatibilityFlagsStandInReverse) {
    HevcConfig config = main_config();
    config.general_profile_idc = 2;
    config.general_non_packed_constraint_flag = 0;
    config.general_level_idc = 120;
    EXPECT_EQ(hevc_text(13, config), "hvc1.2.6.L120.90");
    config.general_profile_compatibility_flags = 0x20000000;
    EXPECT_EQ(hevc_text(13, config), "hvc1.2.4.L120.90");
}

TEST(BuildHevcCodec, ZeroConstraintBytesAtTheEndAreLeftOut) {
    HevcConfig config = main_config();
    config.general_progressive_source_flag = 0;
    config.general_non_packed_constraint_flag = 0;
    config.general_frame_only_constraint_flag = 0;
    EXPECT_EQ(hevc_text(13, config), "hvc1.1.6.L93");
    config.general_reserved_zero_44bits_11_0 = 0x00A;
    EXPECT_EQ(hevc_text(13, config), "hvc1.1.6.L93.0.0.0.0.0.a");
    config.general_reserved_zero_44bits_11_0 = 0xF00;
    config.general_interlaced_source_flag = 1;
    EXPECT_EQ(hevc_text(13, config), "hvc1.1.6.L93.40.0.0.0.f");
    config.general_reserved_zero_44bits_43_12 = 0xF0000000;
    config.general_reserved_zero_44bits_11_0 = 0;
    EXPECT_EQ(hevc_text(13, config), "hvc1.1.6.L93.4f");
}

TEST(BuildHevcCodec, EachProfileSpaceHasItsLetter) {
    HevcConfig config = main_config();
    config.general_profile_space = 2;
    EXPECT_EQ(hevc_text(13, config), "hvc1.B1.6.L93.b0");
    config.general_profile_space = 3;
    EXPECT_EQ(hevc_text(13, config), "hvc1.C1.6.L93.b0");
    config.general_profile_space = 4;
    EXPECT_EQ(hevc_text(13, config), "hvc1.6.L93.b0");
}

TEST(BuildHevcCodec, UnknownTierAndEntryAddNothing) {
    HevcConfig config = main_config();
    config.general_tier_flag = 2;
    EXPECT_EQ(hevc_text(2, config), ".1.6.b0");
}

TEST(BuildHevcCodec, NullArgumentsAndAMissingLabelFail) {
    const HevcConfig config = main_config();
    std::string text;
    EXPECT_EQ(build_hevc_codec(nullptr, 13, &config, "video", nullptr), Status::kFailed);
    EXPECT_EQ(build_hevc_codec(&text, 13, nullptr, "video", nullptr), Status::kFailed);
    EXPECT_EQ(build_hevc_codec(&text, 13, &config, nullptr, nullptr), Status::kFailed);
}

TEST(BuildHevcCodec, AgreeingVpsRaisesNothing) {
    HevcConfig config = main_config();
    config.vps.push_back(main_vps());
    const RecordingSink sink;
    EXPECT_EQ(hevc_text(13, config), "hvc1.1.6.L93.b0");
    EXPECT_TRUE(sink.ids().empty());
    EXPECT_TRUE(sink.was_evaluated(4210));
}

TEST(BuildHevcCodec, WithoutVpsNothingIsCompared) {
    const RecordingSink sink;
    hevc_text(13, main_config());
    EXPECT_FALSE(sink.was_evaluated(4210));
}

TEST(BuildHevcCodec, DifferencesToTheVpsRaise4210AndTheVpsWins) {
    HevcConfig config = main_config();
    config.vps.push_back(main_vps());
    config.general_level_idc = 120;
    config.general_profile_idc = 2;
    const RecordingSink sink;
    std::string text;
    EXPECT_EQ(build_hevc_codec(&text, 13, &config, "a stream", nullptr), Status::kRuleBroken);
    EXPECT_EQ(text, "hvc1.1.6.L93.b0");
    ASSERT_EQ(sink.ids(), (std::vector<int>{4210, 4210}));
    EXPECT_EQ(
        sink.reports()[0].text,
        "For \"a stream\" stream , the value of general_profile_idc in mp4 hvcC box mismatches "
        "the corresponding description in the elementary stream. (expected value: 1; actual "
        "value: 2)");
    EXPECT_NE(sink.reports()[1].text.find("general_level_idc"), std::string::npos);
    EXPECT_NE(sink.reports()[1].text.find("(expected value: 93; actual value: 120)"),
              std::string::npos);
    EXPECT_EQ(config.general_level_idc, 120);
}

struct FieldCase {
    const char* name;
    void (*change)(HevcConfig& config);
};

class HevcConfigFields : public ::testing::TestWithParam<FieldCase> {};

TEST_P(HevcConfigFields, ADifferenceIsNamedIn4210) {
    HevcConfig config = main_config();
    config.vps.push_back(main_vps());
    GetParam().change(config);
    const RecordingSink sink;
    std::string text;
    EXPECT_EQ(build_hevc_codec(&text, 13, &config, "s", nullptr), Status::kRuleBroken);
    ASSERT_EQ(sink.count(4210), 1U);
    EXPECT_NE(sink.reports()[0].text.find("the value of " + std::string(GetParam().name) + " in"),
              std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(
    All, HevcConfigFields,
    ::testing::Values(
        FieldCase{"general_profile_space", [](HevcConfig& c) { c.general_profile_space = 1; }},
        FieldCase{"general_tier_flag", [](HevcConfig& c) { c.general_tier_flag = 1; }},
        FieldCase{"general_profile_idc", [](HevcConfig& c) { c.general_profile_idc = 3; }},
        FieldCase{"general_level_idc", [](HevcConfig& c) { c.general_level_idc = 30; }},
        FieldCase{"general_profile_compatibility_flags",
                  [](HevcConfig& c) { c.general_profile_compatibility_flags = 0x80000000; }},
        FieldCase{"progressive_source_flag",
                  [](HevcConfig& c) { c.general_progressive_source_flag = 0; }},
        FieldCase{"general_interlaced_source_flag",
                  [](HevcConfig& c) { c.general_interlaced_source_flag = 1; }},
        FieldCase{"general_non_packed_constraint_flag",
                  [](HevcConfig& c) { c.general_non_packed_constraint_flag = 0; }},
        FieldCase{"general_frame_only_constraint_flag",
                  [](HevcConfig& c) { c.general_frame_only_constraint_flag = 0; }},
        FieldCase{"general_reserved_zero_44bits_43_12",
                  [](HevcConfig& c) { c.general_reserved_zero_44bits_43_12 = 1; }},
        FieldCase{"general_reserved_zero_44bits_11_0",
                  [](HevcConfig& c) { c.general_reserved_zero_44bits_11_0 = 1; }}));

Av1Config av1_config(int profile, int level) {
    Av1Config config;
    config.seq_profile = static_cast<std::uint8_t>(profile);
    config.seq_level_idx_0 = static_cast<std::uint8_t>(level);
    config.chroma_subsampling_x = 1;
    config.chroma_subsampling_y = 1;
    return config;
}

std::string av1_text(const Av1Config& config, std::uint32_t compatible_id) {
    PxConfig px;
    px.bl_compatible_id = compatible_id;
    std::string text = "left over";
    EXPECT_EQ(build_av1_codec(&text, 16, &config, &px), Status::kOk);
    return text;
}

TEST(BuildAv1Codec, TenBit420WithCompatibility1) {
    Av1Config config = av1_config(0, 8);
    config.high_bitdepth = 1;
    EXPECT_EQ(av1_text(config, 1), "av01.0.08M.10.0.110.09.16.09.0");
    EXPECT_EQ(av1_text(config, 4), "av01.0.08M.10.0.110.09.18.09.0");
    EXPECT_EQ(av1_text(config, 0), "av01.0.08M.10.0.110");
    EXPECT_EQ(av1_text(config, 2), "av01.0.08M.10.0.110");
}

TEST(BuildAv1Codec, BitDepthFollowsProfileAndFlags) {
    Av1Config config = av1_config(2, 13);
    config.seq_tier_0 = 1;
    config.twelve_bit = 1;
    EXPECT_EQ(av1_text(config, 0), "av01.2.13H.08.0.110");
    config.high_bitdepth = 1;
    EXPECT_EQ(av1_text(config, 0), "av01.2.13H.12.0.110");
    config.twelve_bit = 0;
    EXPECT_EQ(av1_text(config, 0), "av01.2.13H.10.0.110");
    config.seq_profile = 1;
    config.twelve_bit = 1;
    EXPECT_EQ(av1_text(config, 0), "av01.1.13H.10.0.110");
    config.seq_profile = 3;
    EXPECT_EQ(av1_text(config, 0), "av01.3.13H.08.0.110");
}

TEST(BuildAv1Codec, ChromaPositionStandsOnlyWith420) {
    Av1Config config = av1_config(0, 5);
    config.chroma_sample_position = 2;
    EXPECT_EQ(av1_text(config, 0), "av01.0.05M.08.0.112");
    config.chroma_subsampling_y = 0;
    EXPECT_EQ(av1_text(config, 0), "av01.0.05M.08.0.100");
    config.chroma_subsampling_x = 0;
    config.monochrome = 1;
    EXPECT_EQ(av1_text(config, 0), "av01.0.05M.08.1.000");
}

TEST(BuildAv1Codec, NullArgumentsFail) {
    const Av1Config config;
    const PxConfig px;
    std::string text;
    EXPECT_EQ(build_av1_codec(nullptr, 0, &config, &px), Status::kFailed);
    EXPECT_EQ(build_av1_codec(&text, 0, nullptr, &px), Status::kFailed);
    EXPECT_EQ(build_av1_codec(&text, 0, &config, nullptr), Status::kFailed);
}

TEST(CodecMatch, MissingTextsMatchOnlyEachOther) {
    using Match = bool (*)(OptText, OptText);
    for (const Match match : {Match{avc_codec_match}, Match{hevc_codec_match},
                              Match{ac4_codec_match}, Match{codec_match}, Match{codecs_match}}) {
        EXPECT_TRUE(match(nullptr, nullptr));
        EXPECT_FALSE(match("avc1", nullptr));
        EXPECT_FALSE(match(nullptr, "avc1"));
    }
    EXPECT_FALSE(codec_is_contained(nullptr, nullptr));
    EXPECT_FALSE(codec_is_contained("avc1", nullptr));
    EXPECT_FALSE(codec_is_contained(nullptr, "avc1"));
}

TEST(AvcCodecMatch, DigitsIgnoreTheCase) {
    EXPECT_TRUE(avc_codec_match("avc1.64001F", "avc1.64001f"));
    EXPECT_FALSE(avc_codec_match("AVC1.64001f", "avc1.64001f"));
    EXPECT_FALSE(avc_codec_match("avc3.64001f", "avc1.64001f"));
    EXPECT_FALSE(avc_codec_match("avc1.64001e", "avc1.64001f"));
}

TEST(AvcCodecMatch, BareExpectationMatchesByPrefix) {
    EXPECT_TRUE(avc_codec_match("avc1.64001f", "avc1"));
    EXPECT_TRUE(avc_codec_match("avc1", "avc1"));
    EXPECT_FALSE(avc_codec_match("avc3.64001f", "avc1"));
    EXPECT_FALSE(avc_codec_match("avc", "avc1"));
}

TEST(AvcCodecMatch, EqualTextsOfAnotherLengthMatchOnlyAsTheSameText) {
    const std::string a = "avc1.64001";
    const std::string b = "avc1.64001";
    EXPECT_FALSE(avc_codec_match(a, b));
    EXPECT_TRUE(avc_codec_match(a, a));
    EXPECT_FALSE(avc_codec_match("avc1.64001f", "avc1.64001f0"));
}

TEST(HevcCodecMatch, TrailingZeroFieldsAreIgnored) {
    EXPECT_TRUE(hevc_codec_match("hvc1.2.4.L120.90.0.0", "hvc1.2.4.L120.90"));
    EXPECT_TRUE(hevc_codec_match("hvc1.2.4.L120.90.0.00", "hvc1.2.4.L120.90"));
    EXPECT_FALSE(hevc_codec_match("hvc1.2.4.L120.90.0.1", "hvc1.2.4.L120.90"));
    EXPECT_FALSE(hevc_codec_match("hvc1.2.4.L120.90", "hvc1.2.4.L120.90.0.0"));
}

TEST(HevcCodecMatch, AtMostNinePointsMayStandInAll) {
    EXPECT_TRUE(hevc_codec_match("hvc1.2.4.L120.90.0.0.0.0.0", "hvc1.2.4.L120.90"));
    EXPECT_FALSE(hevc_codec_match("hvc1.2.4.L120.90.0.0.0.0.0.0", "hvc1.2.4.L120.90"));
}

TEST(HevcCodecMatch, PrefixProfileAndLevelAreStrict) {
    EXPECT_TRUE(hevc_codec_match("hvc1.2.4.L120.90", "hvc1.2.4.L120.90"));
    EXPECT_FALSE(hevc_codec_match("hvc1.2.4.L120.90", "hvc1.2.4.L123.90"));
    EXPECT_FALSE(hevc_codec_match("hvc1.2.4.l120.90", "hvc1.2.4.L120.90"));
    EXPECT_FALSE(hevc_codec_match("hvc1.02.4.L120.90", "hvc1.2.4.L120.90"));
    EXPECT_FALSE(hevc_codec_match("hev1.2.4.L120.90", "hvc1.2.4.L120.90"));
    EXPECT_FALSE(hevc_codec_match("hvc1.a2.4.L120.90", "hvc1.A2.4.L120.90"));
    EXPECT_FALSE(hevc_codec_match("hvc1.2.4.L0120.90", "hvc1.2.4.L120.90"));
}

TEST(HevcCodecMatch, FlagsAndConstraintsAllowLeadingZerosAndEitherCase) {
    EXPECT_TRUE(hevc_codec_match("hvc1.2.004.L120.90", "hvc1.2.4.L120.90"));
    EXPECT_TRUE(hevc_codec_match("hvc1.2.4C.L120.B0", "hvc1.2.4c.L120.b0"));
    EXPECT_TRUE(hevc_codec_match("hvc1.2.4.L120.90.0A", "hvc1.2.4.L120.90.a"));
    EXPECT_FALSE(hevc_codec_match("hvc1.2.5.L120.90", "hvc1.2.4.L120.90"));
    EXPECT_FALSE(hevc_codec_match("hvc1.2.4.L120.90", "hvc1.2.4.L120.b0"));
    // Only zeros of the text at hand are skipped.
    EXPECT_FALSE(hevc_codec_match("hvc1.2.4.L120.90", "hvc1.2.04.L120.90"));
}

TEST(HevcCodecMatch, RunningOutOfTextIsNoMatch) {
    EXPECT_FALSE(hevc_codec_match("hvc1.2", "hvc1.2.4.L120.90"));
    EXPECT_FALSE(hevc_codec_match("hvc1.2.0", "hvc1.2.4.L120.90"));
    EXPECT_FALSE(hevc_codec_match("hvc1.2.4.L120.", "hvc1.2.4.L120.90"));
    EXPECT_FALSE(hevc_codec_match("", "hvc1.2"));
}

TEST(HevcCodecMatch, AZeroBehindTheLevelPassesOnPurpose) {
    EXPECT_TRUE(hevc_codec_match("hvc1.2.4.L120", "hvc1.2.4.L12"));
}

TEST(HevcCodecMatch, BareExpectationMatchesByPrefix) {
    EXPECT_TRUE(hevc_codec_match("hvc1.2.4.L120.90", "hvc1"));
    EXPECT_FALSE(hevc_codec_match("hev1.2.4.L120.90", "hvc1"));
}

TEST(Ac4CodecMatch, ShortExpectationMatchesByPrefix) {
    EXPECT_TRUE(ac4_codec_match("ac-4.02.01.03", "ac-4"));
    EXPECT_TRUE(ac4_codec_match("ac-4.02.01.03", "ac-4.02.01"));
    EXPECT_TRUE(ac4_codec_match("ac-4", "ac-4"));
    EXPECT_FALSE(ac4_codec_match("ac-4.02.01.033", "ac-4"));
    EXPECT_FALSE(ac4_codec_match("ac-3", "ac-4"));
    EXPECT_FALSE(ac4_codec_match("ac-4", "ac-4.02"));
}

TEST(Ac4CodecMatch, FullExpectationMatchesExactly) {
    EXPECT_TRUE(ac4_codec_match("ac-4.02.01.03", "ac-4.02.01.03"));
    EXPECT_FALSE(ac4_codec_match("ac-4.02.01.04", "ac-4.02.01.03"));
    EXPECT_FALSE(ac4_codec_match("ac-4.02.01", "ac-4.02.01.03"));
}

TEST(Ac4CodecMatch, LongerExpectationMatchesOnlyTheSameText) {
    const std::string a = "ac-4.02.01.03.0";
    const std::string b = "ac-4.02.01.03.0";
    EXPECT_FALSE(ac4_codec_match(a, b));
    EXPECT_TRUE(ac4_codec_match(a, a));
}

TEST(CodecMatch, GoesByTheStartOfTheExpectation) {
    EXPECT_TRUE(codec_match("avc1.64001F", "avc1.64001f"));
    EXPECT_TRUE(codec_match("avc3.64001F", "avc3.64001f"));
    EXPECT_TRUE(codec_match("hvc1.2.04.L120.90", "hvc1.2.4.L120.90"));
    EXPECT_TRUE(codec_match("hev1.2.04.L120.90", "hev1.2.4.L120.90"));
    EXPECT_TRUE(codec_match("ac-4.02.01.03", "ac-4"));
    EXPECT_TRUE(codec_match("mp4a.40.2", "mp4a"));
    EXPECT_TRUE(codec_match("mp4a.40.29", "mp4a.40.2"));
    EXPECT_FALSE(codec_match("mp4a", "mp4a.40.2"));
    EXPECT_TRUE(codec_match("ec-3", "ec-3"));
    EXPECT_FALSE(codec_match("ec-3.1", "ec-3"));
    EXPECT_FALSE(codec_match("EC-3", "ec-3"));
    EXPECT_FALSE(codec_match("pxhe.08.09", "pxhe.08.0"));
}

TEST(CodecIsContained, FindsAnElementOfTheList) {
    EXPECT_TRUE(codec_is_contained("mp4a.40.2,avc1.64001f", "mp4a"));
    EXPECT_TRUE(codec_is_contained("mp4a.40.2,avc1.64001f", "avc1.64001F"));
    EXPECT_TRUE(codec_is_contained(",,mp4a.40.2,,ec-3,", "ec-3"));
    EXPECT_FALSE(codec_is_contained("mp4a.40.2,avc1.64001f", "ec-3"));
    EXPECT_FALSE(codec_is_contained(",", "ec-3"));
    EXPECT_TRUE(codec_is_contained("ec-3", "ec-3"));
}

TEST(CodecIsContained, TextsOver127CharactersAreInNoList) {
    const std::string fill(122, 'x');
    EXPECT_TRUE(codec_is_contained("ec-3," + fill, "ec-3"));
    EXPECT_FALSE(codec_is_contained("ec-3," + fill + "x", "ec-3"));
    const std::string codec(128, 'x');
    EXPECT_FALSE(codec_is_contained(codec, codec));
    EXPECT_TRUE(codec_is_contained(codec.substr(1), codec.substr(1)));
}

TEST(CodecsMatch, OrderDoesNotMatter) {
    EXPECT_TRUE(codecs_match("a,b", "b,a"));
    EXPECT_TRUE(codecs_match("avc1.64001F,mp4a.40.2", "mp4a.40.2,avc1.64001f"));
    EXPECT_FALSE(codecs_match("a,b", "a,c"));
    EXPECT_FALSE(codecs_match("a,b", "a,bb"));
    EXPECT_FALSE(codecs_match("a,b,", "ab,c"));
}

TEST(CodecsMatch, BothDirectionsAreLookedAt) {
    EXPECT_FALSE(codecs_match("a,a,b", "a,b,c"));
    EXPECT_FALSE(codecs_match("a,b,c", "a,a,b"));
    EXPECT_TRUE(codecs_match("a,a,b", "b,b,a"));
}

TEST(CodecsMatch, TextsOver127CharactersMatchOnlyThemselves) {
    const std::string a(128, 'x');
    const std::string b = a;
    EXPECT_FALSE(codecs_match(a, b));
    EXPECT_TRUE(codecs_match(a, a));
    EXPECT_TRUE(codecs_match(a.substr(1), b.substr(1)));
}

TEST(SplitPrsmCodec, OneEnhancementCodecIsFound) {
    std::string out = "left over";
    EXPECT_TRUE(splitprsmcodec("hvc1.2.4.L120.90,pxhe.08.09", &out));
    EXPECT_EQ(out, "pxhe.08.09");
    EXPECT_TRUE(splitprsmcodec("hvc1.2.4.L120.90, pxhe.08.09 ", &out));
    EXPECT_EQ(out, "pxhe.08.09");
    EXPECT_TRUE(splitprsmcodec("pav1.10.09", &out));
    EXPECT_TRUE(splitprsmcodec(",,pxav.09.03,,", &out));
    EXPECT_EQ(out, "pxav.09.03");
}

TEST(SplitPrsmCodec, TwoCodecsAreKeptButDoNotCount) {
    std::string out;
    EXPECT_FALSE(splitprsmcodec("pxhe.08.09,pxh1.08.09", &out));
    EXPECT_EQ(out, "pxhe.08.09,pxh1.08.09");
    EXPECT_TRUE(splitprsm_supplemental_codec("pxhe.08.09,pxh1.08.09", &out));
}

TEST(SplitPrsmCodec, NoCodecLeavesTheTextEmpty) {
    std::string out = "left over";
    EXPECT_FALSE(splitprsmcodec("hvc1.2.4.L120.90,mp4a.40.2", &out));
    EXPECT_EQ(out, "");
    EXPECT_FALSE(splitprsmcodec(nullptr, &out));
    EXPECT_FALSE(splitprsmcodec("", &out));
    EXPECT_FALSE(splitprsmcodec("pxhe.08.09", nullptr));
}

TEST(SplitPrsmCodec, ListsOver100CharactersAreRefused) {
    std::string out = "left over";
    const std::string fill(89, 'x');
    EXPECT_TRUE(splitprsmcodec("pxhe.08.09," + fill, &out));
    EXPECT_FALSE(splitprsmcodec("pxhe.08.09," + fill + "x", &out));
    EXPECT_EQ(out, "");
}

TEST(SplitPrsmSupplementalCodec, BrandsMayFollow) {
    std::string out;
    EXPECT_TRUE(splitprsm_supplemental_codec("pxhe.08.07/pb4h", &out));
    EXPECT_EQ(out, "pxhe.08.07/pb4h");
    EXPECT_FALSE(splitprsmcodec("pxhe.08.07/pb4h", &out));
    EXPECT_FALSE(splitprsm_supplemental_codec("pxhe.08.7", &out));
    EXPECT_FALSE(splitprsm_supplemental_codec("hvc1.2.4.L120.90", &out));
}

TEST(SplitCodec, KeepsTheCodecsOfItsKind) {
    std::optional<std::string> audio;
    std::optional<std::string> video;
    Status status = Status::kOk;
    const RecordingSink sink;
    const char* list =
        "avc1.64001f,mp4a.40.2,,ec-3,ac-3,ac-4.02.01.03,hev1.1,hvc1.1,pxa1.09.01,pxhe.08";
    EXPECT_TRUE(splitcodec_audio(list, audio, status, nullptr));
    EXPECT_EQ(audio, "mp4a.40.2,ec-3,ac-3,ac-4.02.01.03");
    EXPECT_TRUE(splitcodec_video(list, video, status, nullptr));
    EXPECT_EQ(video, "avc1.64001f,hev1.1,hvc1.1,pxa1.09.01,pxhe.08");
    EXPECT_EQ(status, Status::kOk);
    EXPECT_TRUE(sink.ids().empty());
}

TEST(SplitCodec, Av1EnhancementCodecsCountAsBothOnPurpose) {
    std::optional<std::string> audio;
    std::optional<std::string> video;
    Status status = Status::kOk;
    EXPECT_TRUE(splitcodec_audio("pav1.10.09", audio, status, nullptr));
    EXPECT_TRUE(splitcodec_video("pav1.10.09", video, status, nullptr));
    EXPECT_EQ(audio, "pav1.10.09");
    EXPECT_EQ(video, "pav1.10.09");
}

TEST(SplitCodec, UnknownCodecsRaise2021) {
    std::optional<std::string> out;
    Status status = Status::kOk;
    const RecordingSink sink;
    EXPECT_FALSE(splitcodec_audio("vp09.00,stpp", out, status, nullptr));
    EXPECT_FALSE(out.has_value());
    ASSERT_EQ(sink.ids(), (std::vector<int>{2021, 2021}));
    EXPECT_EQ(sink.reports()[0].text, "In HLS master-playlist, the codec is unsupported : vp09.00");
    EXPECT_EQ(status, Status::kOk);  // a warning
}

TEST(SplitCodec, AddsToTheTextWhatIsNotThereAlready) {
    std::optional<std::string> out = "ec-3";
    Status status = Status::kOk;
    EXPECT_TRUE(splitcodec_audio("ec-3,mp4a.40.2,mp4a.40", out, status, nullptr));
    EXPECT_EQ(out, "ec-3,mp4a.40.2");
}

TEST(SplitCodec, MissingAndLongListsGiveNothing) {
    std::optional<std::string> out;
    Status status = Status::kOk;
    EXPECT_FALSE(splitcodec_audio(nullptr, out, status, nullptr));
    EXPECT_FALSE(splitcodec_audio("ec-3," + std::string(96, 'x'), out, status, nullptr));
    EXPECT_FALSE(out.has_value());
    EXPECT_FALSE(splitcodec_video("ec-3", out, status, nullptr));
    EXPECT_FALSE(out.has_value());
}

}  // namespace
}  // namespace mediasplit
