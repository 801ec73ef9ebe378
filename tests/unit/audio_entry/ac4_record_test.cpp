// What is asked of AC-4 records, and numbers as texts.
#include "src/fmp4demuxer/checks/ac4_record.h"

#include <gtest/gtest.h>

#include "src/fmp4demuxer/checks/dash_audio.h"

namespace mediasplit {
namespace {

DsiPresentation with_groups(const std::vector<DsiSubstreamGroup>& groups) {
    DsiPresentation presentation;
    presentation.groups = groups;
    return presentation;
}

DsiSubstreamGroup group_of(bool present, std::optional<std::uint32_t> classifier) {
    DsiSubstreamGroup group;
    group.b_substreams_present = present ? 1 : 0;
    group.b_content_type = classifier ? 1 : 0;
    group.content_classifier = classifier.value_or(0);
    return group;
}

TEST(Ac4Record, MainComponentIsToldByTheGroupsThatArePresent) {
    using enum Ac4MainComponent;
    EXPECT_EQ(ac4_main_component(with_groups({})), kNotTold);
    EXPECT_EQ(ac4_main_component(with_groups({group_of(true, 0)})), kHere);
    EXPECT_EQ(ac4_main_component(with_groups({group_of(true, 1)})), kHere);
    EXPECT_EQ(ac4_main_component(with_groups({group_of(true, 4), group_of(true, 1)})), kHere);
    EXPECT_EQ(ac4_main_component(with_groups({group_of(true, {}), group_of(true, 1)})), kHere);
    for (std::uint32_t classifier = 2; classifier < 8; ++classifier) {
        EXPECT_EQ(ac4_main_component(with_groups({group_of(false, 0), group_of(true, classifier)})),
                  kElsewhere);
    }
    EXPECT_EQ(ac4_main_component(with_groups({group_of(true, {}), group_of(true, 4)})), kNotTold);
    EXPECT_EQ(ac4_main_component(with_groups({group_of(false, 0)})), kNotTold);
}

TEST(Ac4Record, LanguageIsTheFirstOneTold) {
    DsiSubstreamGroup none;
    DsiSubstreamGroup english;
    english.language_tag_bytes = std::string("en\0\0", 4);
    DsiSubstreamGroup german;
    german.language_tag_bytes = "de";
    EXPECT_EQ(ac4_language(with_groups({none, english, german})), "en");
    EXPECT_EQ(ac4_language(with_groups({none})), "");
    english.language_tag_bytes = std::string(3, '\0');
    EXPECT_EQ(ac4_language(with_groups({english, german})), "de");
}

TEST(Ac4Record, CodecTextHasTwoHexadecimalDigitsEach) {
    EXPECT_EQ(ac4_codec_text({2, 1, 3}), "ac-4.02.01.03");
    EXPECT_EQ(ac4_codec_text({0x7F, 0xFA, 7}), "ac-4.7f.fa.07");
    EXPECT_EQ(ac4_codec_text({2, 0, kAc4NoCompatibility}), "ac-4.02.00.ffffffff");
}

TEST(Ac4Record, RatesOfTheBox) {
    DsiRecord record;
    DsiPresentation presentation = with_groups({group_of(true, 0)});
    presentation.groups[0].substreams.resize(2);
    EXPECT_EQ(ac4_base_rate(record), std::nullopt);
    EXPECT_EQ(ac4_sampling_rate(record, presentation), std::nullopt);
    record.bitstream_version = 2;
    EXPECT_EQ(ac4_base_rate(record), 44100U);
    record.fs_index = 1;
    EXPECT_EQ(ac4_base_rate(record), 48000U);
    constexpr std::uint32_t kRates[] = {48000, 96000, 192000, 48000};
    for (std::uint32_t i = 0; i < 4; ++i) {
        presentation.groups[0].substreams[1].dsi_sf_multiplier = i;
        EXPECT_EQ(ac4_sampling_rate(record, presentation), kRates[i]);
    }
}

TEST(NumberTexts, AreComparedWithoutZerosAndCase) {
    EXPECT_TRUE(is_same_number("0", "000"));
    EXPECT_TRUE(is_same_number("00f8", "F8"));
    EXPECT_FALSE(is_same_number("", "0"));
    EXPECT_FALSE(is_same_number("0", ""));
    EXPECT_FALSE(is_same_number("10", "1"));
    EXPECT_FALSE(is_same_number("10000000F801", "F801"));
    EXPECT_TRUE(is_same_number(std::string(5000, '0') + "7", "7"));
}

}  // namespace
}  // namespace mediasplit
