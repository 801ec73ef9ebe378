// Each rule of the profiles: a stream that it accepts, and the same stream changed in one place.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "tests/unit/prisma_checks/prisma_scenario.h"

namespace mediasplit {
namespace {

constexpr std::uint32_t kFile = kInputFile;
constexpr std::uint32_t kDash = kInputDash;
constexpr std::uint32_t kVariant = kInputHls;
constexpr std::uint32_t kIframe = kInputHlsIframe;

struct RuleCase {
    int id;
    Scenario accepted;
    std::function<void(Scenario&)> change;
};

void expect_rules(const std::vector<RuleCase>& cases) {
    for (const RuleCase& row : cases) {
        const ScenarioResult accepted = run(row.accepted);
        EXPECT_FALSE(accepted.raised(row.id)) << row.id << ": " << accepted.text(row.id);
        Scenario changed = row.accepted;
        row.change(changed);
        const ScenarioResult rejected = run(changed);
        EXPECT_TRUE(rejected.raised(row.id)) << row.id;
    }
}

std::vector<int> findings(const Scenario& scenario) {
    std::vector<int> ids = run(scenario).ids;
    ids.erase(std::remove_if(ids.begin(), ids.end(), [](int id) { return id < 2000; }), ids.end());
    return ids;
}

using Ids = std::vector<int>;

TEST(PrismaProfiles, SoundStreamsRaiseNothing) {
    for (const std::uint32_t mode : {kFile, kDash}) {
        EXPECT_EQ(findings(profile_4(mode)), Ids{}) << mode;
        EXPECT_EQ(findings(profile_5(mode)), Ids{}) << mode;
        EXPECT_EQ(findings(profile_8(mode)), Ids{}) << mode;
        EXPECT_EQ(findings(profile_9(mode)), Ids{}) << mode;
        EXPECT_EQ(findings(profile_10(mode)), Ids{}) << mode;
        EXPECT_EQ(findings(profile_20(mode)), Ids{}) << mode;
    }
    for (const std::uint32_t mode : {kVariant, kIframe}) {
        EXPECT_EQ(findings(profile_4(mode)), Ids{}) << mode;
        EXPECT_EQ(findings(profile_5(mode)), Ids{}) << mode;
        EXPECT_EQ(findings(profile_10(mode)), Ids{}) << mode;
        EXPECT_EQ(findings(profile_20(mode)), Ids{}) << mode;
    }
    EXPECT_EQ(findings(newer_profile(32)), Ids{});
    EXPECT_EQ(findings(newer_profile(34)), Ids{});
}

// The variant's own list has to name both codecs for one rule and mustn't for another.
TEST(PrismaProfiles, PlaylistsOfCompatibleStreamsKeepOneOfTwoContraryRules) {
    EXPECT_EQ(findings(profile_8(kVariant)), Ids{4157});
    EXPECT_EQ(findings(profile_9(kVariant)), Ids{4157});
    EXPECT_EQ(findings(profile_8(kIframe)), Ids{4159});
    Scenario both = profile_8(kVariant);
    both.set_codecs(std::string("pxhe.08.02,") + kHevcCodec);
    EXPECT_FALSE(run(both).raised(4157));
    EXPECT_TRUE(run(both).raised(4113));
}

TEST(PrismaProfiles, RulesOfTheContainer) {
    expect_rules({
        {4170, profile_8(kFile), [](Scenario& s) { s.brands = {"pb1p"}; }},
        {4172, profile_8(kFile), [](Scenario& s) { s.handler = "meta"; }},
        {4173, profile_8(kFile), [](Scenario& s) { s.has_vmhd = false; }},
        {4191, profile_5(kFile), [](Scenario& s) { s.config_box = "pxvC"; }},
        {4192, profile_8(kFile), [](Scenario& s) { s.config_box = "pxcC"; }},
        {4193, newer_profile(32), [](Scenario& s) { s.config_box = "pxvC"; }},
        {4194, profile_8(kFile), [](Scenario& s) { s.major = 2; }},
        {4195, profile_8(kFile), [](Scenario& s) { s.minor = 1; }},
        {4253, profile_8(kFile), [](Scenario& s) { s.level = 5; }},
        {4253, profile_9(kFile), [](Scenario& s) { s.level = 5; }},
        {4117, profile_8(kDash), [](Scenario& s) { s.set().mimeType.reset(); }},
        {4117, profile_8(kDash), [](Scenario& s) { s.set().mimeType = "video/MP4"; }},
        {4210, profile_8(kFile), [](Scenario& s) { s.vps_profile = 2; }},
    });
}

TEST(PrismaProfiles, RulesOfTheConfiguration) {
    std::vector<RuleCase> cases;
    for (const Scenario& base : {profile_8(kFile), profile_9(kFile), profile_10(kFile),
                                 newer_profile(32), newer_profile(34)}) {
        cases.push_back({4196, base, [](Scenario& s) { s.rpu = 0; }});
        cases.push_back({4197, base, [](Scenario& s) { s.base_layer = 0; }});
        cases.push_back({4198, base, [](Scenario& s) { s.enhancement_layer = 1; }});
    }
    expect_rules(cases);
    expect_rules({
        {4199, profile_5(kFile), [](Scenario& s) { s.rpu = 0; }},
        {4200, profile_5(kFile), [](Scenario& s) { s.base_layer = 0; }},
        {4201, profile_5(kFile), [](Scenario& s) { s.enhancement_layer = 1; }},
        {4228, profile_5(kFile), [](Scenario& s) { s.compatible_id = 1; }},
        {4229, profile_5(kFile), [](Scenario& s) { s.md_compression = 1; }},
        {4211, profile_8(kFile), [](Scenario& s) { s.compatible_id = 3; }},
        {4213, profile_9(kFile), [](Scenario& s) { s.compatible_id = 1; }},
        {4216, profile_10(kFile), [](Scenario& s) { s.compatible_id = 2; }},
        {4217, profile_10(kFile),
         [](Scenario& s) {
             s.entry = "pav1";
             s.compatible_id = 3;
         }},
        {4231, newer_profile(32), [](Scenario& s) { s.compatible_id = 1; }},
        {4231, newer_profile(34), [](Scenario& s) { s.compatible_id = 1; }},
        {2031, newer_profile(32), [](Scenario& s) { s.compatible_id = 2; }},
        {2031, newer_profile(34), [](Scenario& s) { s.compatible_id = 2; }},
        {2032, newer_profile(32), [](Scenario& s) { s.level = 10; }},
        {2032, newer_profile(34), [](Scenario& s) { s.level = 10; }},
    });
}

TEST(PrismaProfiles, RulesOfTheSampleEntry) {
    expect_rules({
        // A plain entry with a configuration box counts by its own type.
        {4230, profile_5(kFile), [](Scenario& s) { s.entry = "hev1"; }},
        {4212, profile_8(kFile), [](Scenario& s) { s.entry = "pxhe"; }},
        {4214, profile_9(kFile), [](Scenario& s) { s.entry = "pxav"; }},
        {4219, profile_10(kFile), [](Scenario& s) { s.entry = "hvc1"; }},
        {4232, newer_profile(32), [](Scenario& s) { s.entry = "avc1"; }},
        {4233, newer_profile(34), [](Scenario& s) { s.entry = "hvc1"; }},
    });
}

TEST(PrismaProfiles, RulesOfBrandAndColour) {
    expect_rules({
        {2030, profile_8(kFile),
         [](Scenario& s) {
             s.brands = {"orv1", "pb2g"};
         }},
        {2030, profile_9(kFile),
         [](Scenario& s) {
             s.brands = {"orv1", "pb1p"};
         }},
        {4203, profile_8(kFile), [](Scenario& s) { s.matrix = 1; }},
        {4204, profile_8(kFile), [](Scenario& s) { s.primaries = 1; }},
        {4205, profile_8(kFile), [](Scenario& s) { s.transfer = 18; }},
        {4206, profile_10(kFile), [](Scenario& s) { s.colr->type = "prof"; }},
        {4207, profile_10(kFile), [](Scenario& s) { s.colr->matrix = 1; }},
        {4208, profile_10(kFile), [](Scenario& s) { s.colr->primaries = 1; }},
        {4209, profile_10(kFile), [](Scenario& s) { s.colr->transfer = 18; }},
        {4206, profile_8(kFile), [](Scenario& s) { s.colr = ColourBox{"prof"}; }},
        {4207, profile_8(kFile),
         [](Scenario& s) {
             s.colr = ColourBox{"nclx", 9, 16, 1};
         }},
        {4208, profile_8(kFile),
         [](Scenario& s) {
             s.colr = ColourBox{"nclx", 1, 16, 9};
         }},
        {4209, profile_8(kFile),
         [](Scenario& s) {
             s.colr = ColourBox{"nclx", 9, 14, 9};
         }},
    });
}

TEST(PrismaProfiles, UnknownCompatibleIdSkipsBrandAndColour) {
    Scenario s = profile_8(kFile);
    s.compatible_id = 3;
    s.matrix = 1;
    s.brands = {"orv1"};
    EXPECT_EQ(findings(s), Ids{4211});
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

TEST(PrismaProfiles, RulesOfTheCodecListOfARepresentation) {
    expect_rules({
        {4118, profile_5(kDash), [](Scenario& s) { s.representation().codecs.reset(); }},
        {4118, profile_5(kDash), [](Scenario& s) { s.set_codecs("pxhe.05.02,"); }},
        {4119, profile_5(kDash), [](Scenario& s) { s.entry = "pxh8"; }},
        {4120, profile_5(kDash), [](Scenario& s) { s.set_codecs("hvc1.2"); }},
        {4121, profile_8(kDash),
         [](Scenario& s) {
             s.set_codecs("hev1");
             s.representation().shared_init_representations.clear();
         }},
        {4122, profile_5(kDash), [](Scenario& s) { s.set_codecs("pxhe.05.03"); }},
        {4125, profile_4(kDash), [](Scenario& s) { s.set_codecs("pxhe.04.02,hev1,mp4a"); }},
        {4126, profile_5(kDash), [](Scenario& s) { s.set_codecs("pxhe.05.02,mp4a"); }},
    });
}

TEST(PrismaProfiles, RulesOfTheCodecListOfAPlaylist) {
    const auto none = [](Scenario& s) { s.context.variant_codecs.reset(); };
    const auto no_kind = [](Scenario& s) { s.entry = "pxh8"; };
    const auto missing = [](Scenario& s) { s.set_codecs("hvc1.2"); };
    const auto companion = [](Scenario& s) {
        s.set_codecs(kHevcCodec);
        s.context.duplicate_codecs_1.reset();
    };
    const auto other = [](Scenario& s) { s.set_codecs("pxhe.05.03"); };
    const auto three = [](Scenario& s) { s.set_codecs("pxhe.04.02,hev1,mp4a"); };
    const auto two = [](Scenario& s) { s.set_codecs("pxhe.05.02,mp4a"); };
    expect_rules({
        {4142, profile_5(kVariant), none},
        {4149, profile_5(kIframe), none},
        {4143, profile_5(kVariant), no_kind},
        {4143, profile_5(kIframe), no_kind},
        {4144, profile_5(kVariant), missing},
        {4150, profile_5(kIframe), missing},
        {4145, profile_8(kVariant), companion},
        {4151, profile_8(kIframe), companion},
        {4146, profile_5(kVariant), other},
        {4152, profile_5(kIframe), other},
        {4147, profile_4(kVariant), three},
        {4153, profile_4(kIframe), three},
        {4148, profile_5(kVariant), two},
        {4154, profile_5(kIframe), two},
    });
    Scenario s = profile_5(kVariant);
    other(s);
    EXPECT_EQ(
        run(s).text(4146),
        "For a [Orvel Prisma] stream, in HLS master-manifest, the attribute \"CODECS\" in the "
        "#EXT-X-STREAM-INF [index : 3, 4] mismatches the corresponding description in the MP4 "
        "SampleEntryBox, expect: pxhe.05.02; actual value: pxhe.05.03");
}

TEST(PrismaProfiles, RulesOfTheBaseLayerInAManifest) {
    const auto drop_shared = [](Scenario& s) {
        s.representation().shared_init_representations.clear();
        s.share("hev1.2.4.L120.90", 1);
    };
    Scenario iframe = profile_8(kIframe);
    iframe.set_codecs(std::string("pxhe.08.02,") + kHevcCodec);
    Scenario variant = profile_8(kVariant);
    variant.set_codecs(std::string("pxhe.08.02,") + kHevcCodec);
    const auto only_ours = [](Scenario& s) { s.set_codecs("pxhe.08.02"); };
    const auto only_av1 = [](Scenario& s) { s.set_codecs("pav1.10.02"); };
    expect_rules({
        {4128, profile_9(kDash), drop_shared},
        {4129, profile_8(kDash), drop_shared},
        {4131, profile_10(kDash), only_av1},
        {4157, variant, only_ours},
        {4158, profile_10(kVariant), only_av1},
        {4159, iframe, only_ours},
        {4159, profile_10(kIframe), only_av1},
    });
}

TEST(PrismaProfiles, RulesOfTheDashAttributes) {
    std::vector<RuleCase> cases;
    for (const Scenario& base : {profile_8(kDash), profile_9(kDash), profile_10(kDash)}) {
        cases.push_back({4133, base, [](Scenario& s) { s.mpd.xmlns_scte214 = "urn:scte"; }});
        cases.push_back({4133, base, [](Scenario& s) { s.mpd.xmlns_scte214.reset(); }});
        cases.push_back(
            {4136, base, [](Scenario& s) { s.representation().supplementalCodecs = "x"; }});
        cases.push_back(
            {4138, base, [](Scenario& s) { s.representation().supplementalProfiles = "x"; }});
    }
    for (const Scenario& base : {profile_8(kDash), profile_9(kDash)}) {
        cases.push_back(
            {4135, base, [](Scenario& s) { s.representation().supplementalCodecs.reset(); }});
        cases.push_back(
            {4137, base, [](Scenario& s) { s.representation().supplementalProfiles.reset(); }});
    }
    for (const Scenario& base : {profile_8(kDash), profile_10(kDash)}) {
        cases.push_back({4139, base, [](Scenario& s) { s.set().colour_primaries = {}; }});
        cases.push_back({4139, base, [](Scenario& s) { s.set().matrix_coefficients = {}; }});
        cases.push_back({4139, base, [](Scenario& s) { s.set().transfer_characteristics = {}; }});
        cases.push_back({4140, base, [](Scenario& s) { s.set().colour_primaries.value = "1"; }});
        cases.push_back({4141, base, [](Scenario& s) {
                             s.representation().matrix_coefficients = {"x", "9"};
                         }});
    }
    cases.push_back({4134, profile_8(kDash), [](Scenario& s) { s.compatible_id = 2; }});
    cases.push_back(
        {2026, profile_8(kDash), [](Scenario& s) { s.representation().segmentProfiles.reset(); }});
    cases.push_back(
        {2027, profile_8(kDash), [](Scenario& s) { s.representation().segmentProfiles = "chd2"; }});
    expect_rules(cases);
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

TEST(PrismaProfiles, RulesOfThePlaylistAttributes) {
    std::vector<RuleCase> cases;
    for (const auto& make : {profile_5, profile_8, profile_9, profile_10}) {
        const auto none = [](Scenario& s) { s.context.video_range.reset(); };
        const auto wrong = [](Scenario& s) { s.context.video_range = "pq"; };
        cases.push_back({4160, make(kVariant), none});
        cases.push_back({4161, make(kIframe), none});
        cases.push_back({4162, make(kVariant), wrong});
        cases.push_back({4163, make(kIframe), wrong});
    }
    for (const auto& make : {profile_8, profile_9, profile_10}) {
        const auto none = [](Scenario& s) { s.context.supplemental_codecs.reset(); };
        const auto bare = [](Scenario& s) { s.context.supplemental_codecs = "pxhe.08.02"; };
        cases.push_back({4164, make(kVariant), none});
        cases.push_back({4165, make(kIframe), none});
        cases.push_back({4166, make(kVariant), bare});
        cases.push_back({4167, make(kIframe), bare});
    }
    expect_rules(cases);
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

TEST(PrismaProfiles, RulesOfProfile20) {
    expect_rules({
        {4170, profile_20(kFile), [](Scenario& s) { s.brands = {"isom"}; }},
        {4172, profile_20(kFile), [](Scenario& s) { s.handler = "meta"; }},
        {4173, profile_20(kFile), [](Scenario& s) { s.has_vmhd = false; }},
        {4234, profile_20(kFile), [](Scenario& s) { s.config_box = "pxvC"; }},
        {4235, profile_20(kFile), [](Scenario& s) { s.level = 13; }},
        {4236, profile_20(kFile), [](Scenario& s) { s.major = 1; }},
        {4237, profile_20(kFile), [](Scenario& s) { s.minor = 1; }},
        {4238, profile_20(kFile), [](Scenario& s) { s.rpu = 0; }},
        {4239, profile_20(kFile), [](Scenario& s) { s.base_layer = 0; }},
        {4240, profile_20(kFile), [](Scenario& s) { s.enhancement_layer = 1; }},
        {4241, profile_20(kFile), [](Scenario& s) { s.compatible_id = 1; }},
        {4242, profile_20(kFile), [](Scenario& s) { s.md_compression = 1; }},
        {4243, profile_20(kFile), [](Scenario& s) { s.entry = "hvc1"; }},
        {4244, profile_20(kFile), [](Scenario& s) { s.hevc_profile = 1; }},
        {4245, profile_20(kFile), [](Scenario& s) { s.hevc_level = 184; }},
        {4246, profile_20(kFile), [](Scenario& s) { s.vps_layers_minus1 = 1; }},
        {4117, profile_20(kDash), [](Scenario& s) { s.set().mimeType.reset(); }},
        {4247, profile_20(kVariant), [](Scenario& s) { s.context.hls_version = 11; }},
        {4248, profile_20(kVariant), [](Scenario& s) { s.context.req_video_layout.reset(); }},
        {4249, profile_20(kIframe), [](Scenario& s) { s.context.req_video_layout.reset(); }},
        {4250, profile_20(kVariant), [](Scenario& s) { s.context.req_video_layout = "CH-MONO"; }},
        {4251, profile_20(kIframe), [](Scenario& s) { s.context.req_video_layout = "CH-MONO"; }},
    });
    Scenario layered = profile_20(kFile);
    layered.vps_layers_minus1 = 1;
    layered.has_lhvC = true;
    EXPECT_FALSE(run(layered).raised(4246));
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
