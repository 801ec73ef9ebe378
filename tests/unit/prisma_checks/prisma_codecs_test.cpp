// Codec lists of enhancement streams.
#include "src/fmp4demuxer/checks/prisma_codecs.h"

#include <gtest/gtest.h>

#include "tests/unit/prisma_checks/prisma_scenario.h"

namespace mediasplit {
namespace {

std::uint32_t validate(OptText list, OptText expected, bool shared = false,
                       std::uint32_t profile = 8, std::string* other = nullptr) {
    std::string text;
    const std::uint32_t result =
        orvel_prisma_codecs_validation(list, expected, text, shared, profile);
    if (other != nullptr) {
        *other = text;
    }
    return result;
}

TEST(PrismaCodecList, FaultsOfTheListComeFirst) {
    for (const OptText list :
         {OptText(), OptText(""), OptText(",a"), OptText("a,"), OptText("a,,b")}) {
        EXPECT_EQ(validate(list, ""), kCodecsMalformed);
    }
    EXPECT_EQ(validate("pxhe.08.02", ""), kCodecsNoExpected);
    EXPECT_EQ(validate("pxhe.08.02", nullptr), kCodecsNoExpected);
}

TEST(PrismaCodecList, MissingCodecAsksForACompanionInBackwardCompatibleProfiles) {
    EXPECT_EQ(validate("hvc1.2", "pxhe.08.02"), kCodecsNeedCompanion);
    EXPECT_EQ(validate("hvc1.2", "pxhe.08.02", true), kCodecsWithoutOurs);
    EXPECT_EQ(validate("hvc1.2", "pxhe.05.02", false, 5), kCodecsWithoutOurs);
    EXPECT_EQ(validate("avc1.2", "pxav.09.02", false, 9), kCodecsNeedCompanion);
}

TEST(PrismaCodecList, FirstOtherCodecIsTold) {
    std::string other;
    EXPECT_EQ(validate("hvc1,pxhe.08.03,pxhe.08.04", "pxhe.08.02", false, 8, &other),
              kCodecsMismatch);
    EXPECT_EQ(other, "pxhe.08.03");
    EXPECT_EQ(validate("pxhe.08.03,pxhe.08.02", "pxhe.08.02", false, 8, &other), 0U);
    EXPECT_EQ(other, "pxhe.08.03");
}

TEST(PrismaCodecList, Av1WordsCountForTheirProfileOnly) {
    EXPECT_EQ(validate("pav1.10.02", "pav1.10.02", false, 10), 0U);
    EXPECT_EQ(validate("pav1.10.02", "pav1.10.02", true, 8), kCodecsWithoutOurs);
}

TEST(PrismaCodecList, VeryLongListsAreRead) {
    const std::string list = std::string(400, 'x') + ",pxhe.08.02";
    EXPECT_EQ(validate(list, "pxhe.08.02"), 0U);
}

TEST(PrismaCodecList, JoinedListsOfManyRepresentationsAreCut) {
    Scenario s = profile_8_in_two(kInputDash);
    for (int i = 0; i < 50; ++i) {
        s.share(std::string(99, 'x'), 1);
        s.share(std::string(200, 'y'), 1);
        s.share("far", 99);
    }
    EXPECT_TRUE(run(s).raised(4125));
}

TEST(PrismaCompatibleCodec, BothCodecsInOneList) {
    Scenario s = profile_8_in_two(kInputDash);
    s.representation().shared_init_representations.clear();
    s.set_codecs(std::string("pxhe.08.02,") + kHevcCodec);
    EXPECT_EQ(run(s).text(4113),
              "For a [Orvel Prisma] profile 8 stream with 'pxhe' video codec, in manifest, the "
              "backward-compatible codec 'hev1.1.6.L120.90' must not be indicated in the same "
              "\"codecs\" attribute.");
    EXPECT_TRUE(run(s).raised(4115));
    EXPECT_FALSE(run(profile_8_in_two(kInputDash)).raised(4113));
    Scenario nine = profile_9_in_two(kInputDash);
    nine.set_codecs(std::string("pxa1.09.02,") + kAvcCodec);
    EXPECT_TRUE(run(nine).raised(4113));
}

TEST(PrismaCompatibleCodec, BothCodecsInOneAdaptationSet) {
    EXPECT_FALSE(run(profile_8_in_two(kInputDash)).raised(4123));
    Scenario s = profile_8_in_two(kInputDash);
    s.representation().shared_init_representations.front().adaptation_set_index = 0;
    EXPECT_TRUE(run(s).raised(4123));
    Scenario five = profile_5(kInputDash);
    EXPECT_FALSE(run(five).raised(4124));
    five.share("hev1.2", 0);
    EXPECT_TRUE(run(five).raised(4124));
}

TEST(PrismaCompatibleCodec, IncompatibleStreamsStandAlone) {
    Scenario list = profile_5(kInputDash);
    EXPECT_FALSE(run(list).raised(4114));
    list.set_codecs("pxhe.05.02,hev1.2");
    EXPECT_TRUE(run(list).raised(4114));
    EXPECT_TRUE(run(list).raised(4126));
    Scenario other = profile_5(kInputDash);
    EXPECT_FALSE(run(other).raised(4116));
    other.share("hev1.2", 1);
    EXPECT_EQ(
        run(other).text(4116),
        "For a [Orvel Prisma] profile 5 stream with 'pxhe' video codec, another AdaptationSet "
        "with 'hev1' video codec must not exist, the stream is not backward compatible.");
}

TEST(PrismaCompatibleCodec, CompatibleStreamsNeedAnother) {
    for (const std::uint32_t mode : {kInputDash, kInputHls}) {
        Scenario s = profile_8_in_two(mode);
        EXPECT_FALSE(run(s).raised(4115));
        s.representation().shared_init_representations.clear();
        s.context.duplicate_codecs_1.reset();
        EXPECT_TRUE(run(s).raised(4115));
    }
    Scenario file = profile_8_in_two(kInputFile);
    EXPECT_EQ(run(file).evaluated.count(4115), 0U);
}

TEST(PrismaCompatibleCodec, RepeatedCodecsAreWarnedOf) {
    Scenario s = profile_8_in_two(kInputDash);
    EXPECT_FALSE(run(s).raised(2024));
    EXPECT_FALSE(run(s).raised(2025));
    s.share("pxhe.08.03", 1);
    EXPECT_TRUE(run(s).raised(2024));
    EXPECT_FALSE(run(s).raised(2025));
    s.share(kHevcCodec, 1);
    EXPECT_TRUE(run(s).raised(2025));
}

TEST(PrismaVariantCodecs, MergedListsCountOnlyWithoutAnOwnOne) {
    ManifestContext context;
    context.stream_index = 7;
    std::uint32_t index = 0;
    EXPECT_FALSE(hls_codec_all_stream_partial_contained(context, "hvc1", index));
    EXPECT_EQ(index, 7U);
    context.duplicate_codecs_2 = "x";
    EXPECT_TRUE(hls_codec_all_stream_partial_contained(context, "hvc1", index));
    context.variant_codecs = "mp4a,avc1.640028";
    EXPECT_FALSE(hls_codec_all_stream_partial_contained(context, "hvc1", index));
    EXPECT_TRUE(hls_codec_all_stream_partial_contained(context, "avc1.640028", index));
}

TEST(PrismaProfileNumbers, KnownOnes) {
    for (std::uint32_t profile = 0; profile < 128; ++profile) {
        const bool known = profile == 4 || profile == 5 || profile == 8 || profile == 9 ||
                           profile == 10 || profile == 20 || profile == 32 || profile == 34;
        EXPECT_EQ(prsm_profile_supported(profile), known) << profile;
        EXPECT_EQ(prsm_profile_dual_layer(profile), profile == 4) << profile;
    }
}

}  // namespace
}  // namespace mediasplit
