// What the profiles find in sound streams, and where several rules meet.
#include <gtest/gtest.h>

#include <algorithm>

#include "src/fmp4demuxer/checks/prisma_profiles.h"
#include "src/fmp4demuxer/checks/video_entry.h"
#include "tests/support/mp4_input.h"
#include "tests/unit/prisma_checks/prisma_cases.h"

namespace mediasplit {
namespace {

std::vector<int> findings(const Scenario& scenario) {
    std::vector<int> ids = run(scenario).ids;
    ids.erase(std::remove_if(ids.begin(), ids.end(), [](int id) { return id < 2000; }), ids.end());
    return ids;
}

using Ids = std::vector<int>;

std::vector<int> program_findings(const Scenario& scenario) {
    std::vector<int> ids = run_program_on(scenario).ids;
    // Reports on the run itself, the advice to keep parameter sets out of the samples, and codecs
    // that master playlists don't know (AV1 among them).
    constexpr int kAdvice = 2016;
    constexpr int kUnknownCodec = 2021;
    ids.erase(
        std::remove_if(ids.begin(), ids.end(),
                       [](int id) { return id < 2000 || id == kAdvice || id == kUnknownCodec; }),
        ids.end());
    return ids;
}

TEST(PrismaProfiles, SoundStreamsRaiseNothing) {
    for (const std::uint32_t mode : {kFile, kDash, kVariant, kIframe}) {
        for (const auto& make : {profile_4, profile_5, profile_8, profile_9, profile_10,
                                 profile_10_alone, profile_20, profile_32, profile_34}) {
            const Scenario s = make(mode);
            EXPECT_EQ(findings(s), Ids{}) << s.profile << " in mode " << mode;
            EXPECT_EQ(program_findings(s), Ids{}) << s.profile << " in mode " << mode;
        }
    }
}

TEST(PrismaProfiles, SoundStreamsOfTwoListsRaiseNothing) {
    for (const auto& make : {profile_8_in_two, profile_9_in_two}) {
        for (const std::uint32_t mode : {kDash, kVariant}) {
            EXPECT_EQ(findings(make(mode)), Ids{}) << mode;
        }
        EXPECT_EQ(program_findings(make(kDash)), Ids{});
        EXPECT_EQ(program_findings(make(kVariant)), Ids{});
    }
}

TEST(PrismaProfiles, BothCodecsInOneListAreWrongWithOrWithoutASupplement) {
    for (const std::uint32_t mode : {kDash, kVariant, kIframe}) {
        Scenario s = profile_8(mode);
        s.set_codecs(std::string("pxhe.08.02,") + kHevcCodec);
        EXPECT_EQ(findings(s), (Ids{4113, 4115})) << mode;
    }
}

TEST(PrismaProfiles, SupplementOfAnotherLevelLeavesTheStreamUntold) {
    Scenario s = profile_8(kVariant);
    s.set_supplement("pxhe.08.03", "pb1p");
    EXPECT_EQ(findings(s), (Ids{4145, 4166}));
    s = profile_8(kDash);
    s.set_supplement("pxhe.08.03", "pb1p");
    EXPECT_EQ(findings(s), (Ids{4121, 4136}));
}

TEST(PrismaProfiles, MissingSupplementIsTold) {
    Scenario s = profile_8(kVariant);
    s.drop_supplement();
    EXPECT_EQ(findings(s), (Ids{4145, 4164}));
    s = profile_8(kDash);
    s.drop_supplement();
    EXPECT_EQ(findings(s), (Ids{4121, 4135, 4137}));
}

TEST(PrismaProfiles, BrandOfProfile9IsThatOfItsOnlyBaseLayer) {
    Scenario s = profile_9(kFile);
    s.compatible_id = 1;
    s.brands = {"orv1", "pb2g"};
    EXPECT_EQ(findings(s), Ids{4213});
}

TEST(PrismaProfiles, TextsOfTheThreeFormsOfARule) {
    Scenario s = profile_5(kVariant);
    s.set_codecs("pxhe.05.03");
    EXPECT_EQ(run(s).text(4146),
              "For a [Orvel Prisma] stream, in HLS master-manifest, the attribute \"CODECS\" in "
              "the #EXT-X-STREAM-INF [index : 3, 4] mismatches the corresponding description in "
              "the MP4 SampleEntryBox, expect: pxhe.05.02; actual value: pxhe.05.03");
    s.mode = kIframe;
    EXPECT_EQ(run(s).text(4152),
              "For a [Orvel Prisma] stream, in HLS master-manifest, the attribute \"CODECS\" in "
              "the #EXT-X-I-FRAME-STREAM-INF [index : 3] mismatches the corresponding description "
              "in the MP4 SampleEntryBox, expect: pxhe.05.02; actual value: pxhe.05.03");
    s.mode = kDash;
    EXPECT_EQ(run(s).text(4122),
              "For a [Orvel Prisma] stream, in DASH manifest, the attribute \"codecs\" in the "
              "Representation or in the parent AdaptationSet mismatches the corresponding "
              "description in the MP4 SampleEntryBox, expect: pxhe.05.02; actual value: "
              "pxhe.05.03");
}

TEST(PrismaProfiles, LayeredStereoStreamWithItsBox) {
    Scenario layered = profile_20(kFile);
    layered.vps_layers_minus1 = 1;
    layered.has_lhvC = true;
    EXPECT_EQ(findings(layered), Ids{});
}

TEST(PrismaProfiles, UnknownCompatibleIdSkipsBrandAndColour) {
    Scenario s = profile_8(kFile);
    s.compatible_id = 3;
    s.matrix = 1;
    s.brands = {"orv1"};
    EXPECT_EQ(findings(s), Ids{4211});
}

TEST(PrismaProfiles, Profile10AsksForTheColourOfItsBoxOnly) {
    Scenario s = profile_10(kFile);
    s.entry = "hvc1";
    s.matrix = 1;
    s.primaries = 1;
    EXPECT_EQ(findings(s), Ids{4219});
    s.colr->matrix = 1;
    EXPECT_EQ(findings(s), (Ids{4207, 4219}));
}

TEST(PrismaProfiles, CompatibleId4TakesItsBrandAndTransferFromTheParameterSet) {
    Scenario s = profile_8(kFile);
    s.compatible_id = 4;
    const ScenarioResult wrong = run(s);
    EXPECT_EQ(wrong.text(4205),
              "For a [Orvel Prisma] profile 8.4 stream, the transfer_characteristics 16 in SPS NAL "
              "in the SampleEntry box is not supported. The supported value: 14, 18.");
    EXPECT_FALSE(wrong.raised(2030));
    for (const auto& [transfer, brand] : {std::pair{14, "pb4g"}, std::pair{18, "pb4h"}}) {
        s.transfer = static_cast<std::uint8_t>(transfer);
        s.brands = {"orv1"};
        const ScenarioResult missing = run(s);
        EXPECT_FALSE(missing.raised(4205));
        EXPECT_NE(missing.text(2030).find(brand), std::string::npos);
        s.brands = {"orv1", brand};
        EXPECT_EQ(findings(s), Ids{});
    }
}

TEST(PrismaProfiles, SegmentProfileFollowsTheFrameRateAndAsksForCmaf) {
    Scenario fast = profile_8(kDash);
    fast.rate = 100;
    EXPECT_NE(run(fast).text(2027).find("should be chd2"), std::string::npos);
    Scenario plain = profile_8(kDash);
    plain.representation().segmentProfiles.reset();
    plain.brands = {"orv1", "pb1p"};
    EXPECT_FALSE(run(plain).raised(2026));
}

TEST(PrismaProfiles, HlgContentIsNamedWithItsTransferCharacteristics) {
    Scenario s = profile_8(kDash);
    s.compatible_id = 4;
    s.transfer = 18;
    EXPECT_FALSE(run(s).raised(4134));
    EXPECT_EQ(
        run(s).text(4140),
        "For a [Orvel Prisma] profile 8.4 (with -18 transfer characteristic: ARIB STD B67; "
        "also ITU-R BT.2100-1 HLG system) stream, in the DASH manifest, in the AdaptationSet, "
        "the value of the the EssentialProperty or SupplementalProperty descriptor with the "
        "schemeIdUri \"urn:mpeg:mpegB:cicp:TransferCharacteristics\" must be 18.");
    s.transfer = 14;
    EXPECT_TRUE(run(s).raised(4134));
}

TEST(PrismaProfiles, VideoRangeFollowsTheBaseLayer) {
    struct Row {
        std::uint32_t compatible_id;
        const char* range;
    };
    for (const Row& row : {Row{1, "PQ"}, Row{2, "SDR"}, Row{4, "HLG"}}) {
        Scenario s = profile_8(kVariant);
        s.compatible_id = row.compatible_id;
        s.context.video_range = row.range;
        EXPECT_FALSE(run(s).raised(4162)) << row.compatible_id;
        s.context.video_range = "other";
        EXPECT_TRUE(run(s).raised(4162)) << row.compatible_id;
    }
    Scenario hlg = profile_10(kVariant);
    hlg.compatible_id = 4;
    hlg.colr->transfer = 18;
    EXPECT_TRUE(run(hlg).raised(4162));
    hlg.context.video_range = "HLG";
    EXPECT_FALSE(run(hlg).raised(4162));
}

TEST(PrismaProfiles, LayoutOfAVariantStreamMayKeepItsQuotationMarks) {
    Scenario s = profile_20(kVariant);
    s.context.req_video_layout = "\"CH-STEREO\"";
    EXPECT_EQ(findings(s), Ids{});
    for (const char* other : {"\"CH-MONO\"", "\"", "", "\"\""}) {
        s.context.req_video_layout = other;
        EXPECT_EQ(findings(s), Ids{4250}) << other;
    }
}

TEST(PrismaProfiles, VideoRangeMayKeepItsQuotationMarks) {
    for (const auto& [mode, wrong] : {std::pair{kVariant, 4162}, std::pair{kIframe, 4163}}) {
        Scenario s = profile_8(mode);
        s.context.video_range = "\"PQ\"";
        EXPECT_EQ(findings(s), Ids{}) << mode;
        for (const char* other : {"\"SDR\"", "\"", "", "\"\""}) {
            s.context.video_range = other;
            EXPECT_EQ(findings(s), Ids{wrong}) << other << " in mode " << mode;
        }
    }
}

TEST(PrismaProfiles, TracksWithoutConfigurationFail) {
    Scenario s;
    s.config_box.clear();
    const auto demuxer = mp4::walk(s.bytes());
    for (const auto& rules :
         {prsm_profile_4_sampleentry_validation, prsm_profile_5_sampleentry_validation,
          prsm_profile_8_sampleentry_validation, prsm_profile_9_sampleentry_validation,
          prsm_profile_10_sampleentry_validation, prsm_profile_20_sampleentry_validation,
          prsm_profile_32_sampleentry_validation, prsm_profile_34_sampleentry_validation}) {
        for (const std::uint32_t index : {0U, 1U, 0xFFFFFFFFU}) {
            EXPECT_EQ(rules(*demuxer, index), Status::kFailed);
        }
    }
}

TEST(PrismaProfiles, MissingRecordsOfTheManifestAreTold) {
    const auto demuxer = mp4::walk(profile_8(kFile).bytes());
    for (const std::uint32_t mode : {kDash, kVariant, kIframe}) {
        demuxer->input_mode = mode;
        const RecordingSink sink;
        EXPECT_TRUE(has_failed(prsm_profile_8_sampleentry_validation(*demuxer, 0)));
        EXPECT_TRUE(has_failed(prsm_profile_20_sampleentry_validation(*demuxer, 0)));
        EXPECT_TRUE(has_failed(prsm_profile_32_sampleentry_validation(*demuxer, 0)));
        EXPECT_TRUE(has_failed(hevcSampleEntry(*demuxer, 0, true)));
        EXPECT_EQ(sink.ids(), (Ids{3006, 3006, 3006, 3006}));
    }
}

TEST(PrismaProfiles, ManifestsWithoutAnyTextAreTold) {
    for (const std::uint32_t mode : {kDash, kVariant, kIframe}) {
        for (const auto& make : {profile_4, profile_5, profile_8, profile_9, profile_10, profile_20,
                                 profile_32, profile_34}) {
            Scenario s = make(mode);
            s.mpd.xmlns_scte214.reset();
            s.representation() = {};
            s.set() = {};
            s.context = {};
            EXPECT_NE(findings(s), Ids{}) << s.profile << " in mode " << mode;
        }
    }
}

TEST(PrismaProfiles, ListsOfAnyLengthAreRead) {
    for (const std::size_t size : {99U, 100U, 101U, 126U, 127U, 128U, 511U, 512U, 513U, 5000U}) {
        for (const std::uint32_t mode : {kDash, kVariant, kIframe}) {
            Scenario s = profile_8(mode);
            std::string list = std::string(kHevcCodec) + ",";
            list += std::string(size - list.size(), 'x');
            s.set_codecs(list);
            // Playlists are searched as far as lists of 127 characters go.
            const Ids expected = mode == kDash || size <= 127 ? Ids{}
                                 : mode == kVariant           ? Ids{4157}
                                                              : Ids{4159};
            EXPECT_EQ(findings(s), expected) << size << " in mode " << mode;
        }
    }
}

TEST(PrismaProfiles, WithoutTheirCheckpointOnlyManifestRulesAreSilent) {
    Scenario s = profile_8(kDash);
    s.checkpoints = {"410000"};
    s.set_codecs("hev1,");
    s.mpd.xmlns_scte214.reset();
    s.major = 2;
    const ScenarioResult result = run(s);
    EXPECT_TRUE(result.raised(4194));
    for (const int id : {4118, 4133, 4115, 4129}) {
        EXPECT_EQ(result.evaluated.count(id), 0U) << id;
    }
}

}  // namespace
}  // namespace mediasplit
