#include <gtest/gtest.h>

#include <string>

#include "src/ac4analyze_impl/dsi_values.h"

namespace mediasplit {
namespace {

DsiRecord record_with(std::vector<std::uint32_t> mdcompat) {
    DsiRecord record;
    record.bitstream_version = 2;
    record.n_presentations = static_cast<std::uint32_t>(mdcompat.size());
    for (const std::uint32_t value : mdcompat) {
        DsiPresentation presentation;
        presentation.version = 1;
        presentation.mdcompat = value;
        presentation.presentation_channel_mask_v1 = 0x47 + value;
        record.presentations.push_back(presentation);
    }
    return record;
}

TEST(DsiValues, TakesTheFirstPresentationAndTheLowestMdcompat) {
    Ac4CodecProfile profile;
    std::uint32_t mask = 0;
    DsiRecord record = record_with({3, 1, 2});
    record.presentations[0].version = 2;
    EXPECT_EQ(extract_value_dac4(record, &profile, &mask, false), 0);
    EXPECT_EQ(profile.bitstream_version, 2U);
    EXPECT_EQ(profile.presentation_version, 2U);
    EXPECT_EQ(profile.mdcompat, 1U);
    EXPECT_EQ(mask, 0x4AU);
    Ac4CodecProfile again;
    EXPECT_EQ(extract_codec_profile_value_dac4(record, &again, false), 0);
    EXPECT_EQ(again.mdcompat, 1U);
    EXPECT_EQ(extract_audio_config_value_dac4(record, &mask, true), 0);
    EXPECT_EQ(mask, 0x4AU);
}

TEST(DsiValues, FilterLeavesOutPresentationsOfSeveralStreams) {
    Ac4CodecProfile profile;
    DsiRecord record = record_with({3, 1, 2});
    record.presentations[1].b_multi_pid = 1;
    extract_codec_profile_value_dac4(record, &profile, true);
    EXPECT_EQ(profile.mdcompat, 2U);
    extract_codec_profile_value_dac4(record, &profile, false);
    EXPECT_EQ(profile.mdcompat, 1U);
    record.presentations[1].version = 0;
    extract_codec_profile_value_dac4(record, &profile, true);
    EXPECT_EQ(profile.mdcompat, 1U);
}

TEST(DsiValues, NoPresentationHasNoLowestValue) {
    Ac4CodecProfile profile;
    std::uint32_t mask = 1;
    extract_value_dac4(record_with({}), &profile, &mask, false);
    EXPECT_EQ(profile.mdcompat, 0xFFFFFFFFU);
    EXPECT_EQ(profile.presentation_version, 0U);
    EXPECT_EQ(mask, 0U);
}

TEST(DsiValues, PresentationThatIsNotDescribedCountsAsZero) {
    DsiRecord record = record_with({3});
    record.n_presentations = 2;
    Ac4CodecProfile profile;
    extract_codec_profile_value_dac4(record, &profile, true);
    EXPECT_EQ(profile.mdcompat, 0U);
}

TEST(CodecText, SplitsTheFullForm) {
    Ac4CodecProfile profile;
    EXPECT_EQ(extract_ac4_profile_value_from_dash_codecs("ac-4.02.01.03", &profile), 0);
    EXPECT_EQ(profile.bitstream_version, 2U);
    EXPECT_EQ(profile.presentation_version, 1U);
    EXPECT_EQ(profile.mdcompat, 3U);
    EXPECT_EQ(extract_ac4_profile_value_from_dash_codecs("ac-4.aF.10.fF", &profile), 0);
    EXPECT_EQ(profile.bitstream_version, 0xAFU);
    EXPECT_EQ(profile.presentation_version, 0x10U);
    EXPECT_EQ(profile.mdcompat, 0xFFU);
}

TEST(CodecText, OtherFormsAreRefused) {
    Ac4CodecProfile profile;
    for (const char* text :
         {"", "ac-4", "ac-4.2.1.3", "ac-4.02.01.3", "ac-4.02.01.033", "AC-4.02.01.03",
          "ec-3.02.01.03", "ac-4-02.01.03", "ac-4.02-01.03", "ac-4.02.01-03", "ac-4.g2.01.03",
          "ac-4.02.0g.03", "ac-4.02.01. 3", "ac-4.02.01.-3", "ac-4.0201.0.3", "ac-4.02.01.0@"}) {
        EXPECT_EQ(extract_ac4_profile_value_from_dash_codecs(text, &profile), 1) << text;
    }
    EXPECT_EQ(extract_ac4_profile_value_from_dash_codecs(nullptr, &profile), 1);
}

TEST(CodecText, ComponentIsTwoHexadecimalDigits) {
    for (const char* text : {"00", "09", "aF", "Fa"}) {
        EXPECT_EQ(check_ac4_codec_component_value_valid(text), 0) << text;
    }
    for (const char* text : {"", "0", "000", "0g", "G0", "/0", ":0", "@0", "`0", " 0"}) {
        EXPECT_EQ(check_ac4_codec_component_value_valid(text), 1) << text;
    }
    EXPECT_EQ(check_ac4_codec_component_value_valid(nullptr), 1);
}

}  // namespace
}  // namespace mediasplit
