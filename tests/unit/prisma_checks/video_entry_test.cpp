// Video sample entries against the manifest and the configuration box.
#include <gtest/gtest.h>

#include "tests/unit/prisma_checks/prisma_scenario.h"

namespace mediasplit {
namespace {

using Ids = std::vector<int>;

Scenario plain(const std::string& entry, std::uint32_t mode, const std::string& codecs) {
    Scenario s;
    s.entry = entry;
    s.mode = mode;
    s.config_box.clear();
    s.set_codecs(codecs);
    return s;
}

constexpr std::uint32_t kManifestModes[] = {kInputDash, kInputHls, kInputHlsIframe};

TEST(VideoEntry, PlainFilesRaiseNothing) {
    for (const char* entry : {"avc1", "avc3", "hvc1", "hev1", "av01"}) {
        EXPECT_EQ(run(plain(entry, kInputFile, "")).ids, Ids{}) << entry;
    }
}

TEST(VideoEntry, ManifestNamesTheCodecFamily) {
    for (const std::uint32_t mode : kManifestModes) {
        for (const char* codecs : {"avc1.640028", "mp4a,pxa1", "pavc"}) {
            EXPECT_FALSE(run(plain("avc1", mode, codecs)).raised(4111)) << codecs;
        }
        for (const char* codecs : {"", "hvc1", "mp4a"}) {
            EXPECT_TRUE(run(plain("avc1", mode, codecs)).raised(4111)) << codecs;
        }
        for (const char* codecs : {"hvc1", "hev1.2", "pxh1.05.01,mp4a"}) {
            EXPECT_FALSE(run(plain("hvc1", mode, codecs)).raised(4112)) << codecs;
        }
        for (const char* codecs : {"", "avc1", "mp4a"}) {
            EXPECT_TRUE(run(plain("hvc1", mode, codecs)).raised(4112)) << codecs;
        }
    }
}

TEST(VideoEntry, PlainEntryMustNotBeClaimedByTheManifest) {
    for (const char* entry : {"avc1", "hvc1"}) {
        const std::string codecs = "avc1.640028,hvc1,pxav.09.05";
        const ScenarioResult dash = run(plain(entry, kInputDash, codecs));
        EXPECT_EQ(dash.ids, Ids{4127});
        EXPECT_NE(dash.text(4127).find("[id : v1] includes a Orvel Prisma codec \"pxav.09.05\""),
                  std::string::npos);
        const ScenarioResult hls = run(plain(entry, kInputHls, codecs));
        EXPECT_EQ(hls.ids, Ids{4155});
        EXPECT_NE(hls.text(4155).find("[index : 3, 4]"), std::string::npos);
        EXPECT_EQ(run(plain(entry, kInputHlsIframe, codecs)).ids, Ids{});
        EXPECT_EQ(run(plain(entry, kInputDash, "avc1.640028,hvc1")).ids, Ids{});
        EXPECT_EQ(run(plain(entry, kInputHls, "avc1.640028,hvc1")).ids, Ids{});
    }
}

TEST(VideoEntry, EnhancementEntryNeedsItsConfiguration) {
    for (const char* entry : {"pxav", "pxhe", "pav1"}) {
        EXPECT_EQ(run(plain(entry, kInputFile, "")).ids, Ids{4171}) << entry;
    }
    EXPECT_FALSE(run(profile_8(kInputFile)).raised(4171));
}

TEST(VideoEntry, ConfigurationIsToldFieldByField) {
    Scenario s = profile_5(kInputFile);
    s.profile = 7;
    s.level = 6;
    s.major = 2;
    s.minor = 3;
    s.compatible_id = 5;
    s.md_compression = 2;
    s.rpu = 0;
    s.entry = "pxh1";
    const ScenarioResult result = run(s);
    EXPECT_EQ(result.ids, (Ids{1010, 1011, 1012, 1013, 1014, 1015, 1016, 1017, 1018, 2029}));
    const char* values[] = {": 2.", ": 3.", ": 7.", ": 6.", ": 0.", ": 0.", ": 1.", ": 5.", ": 2."};
    for (std::size_t i = 0; i < std::size(values); ++i) {
        EXPECT_NE(result.texts[i].find(values[i]), std::string::npos) << result.texts[i];
    }
    EXPECT_FALSE(run(profile_5(kInputFile)).raised(2029));
    EXPECT_FALSE(run(plain("hvc1", kInputFile, "")).raised(1010));
}

TEST(VideoEntry, CodecConfigurationMustBeThere) {
    Scenario avc = profile_9(kInputFile);
    EXPECT_FALSE(run(avc).raised(4174));
    avc.has_codec_box = false;
    EXPECT_TRUE(run(avc).raised(4174));
    Scenario hevc = profile_8(kInputFile);
    EXPECT_FALSE(run(hevc).raised(4175));
    hevc.has_codec_box = false;
    EXPECT_TRUE(run(hevc).raised(4175));
    for (Scenario av1 : {profile_10(kInputFile), plain("av01", kInputFile, "")}) {
        EXPECT_FALSE(run(av1).raised(4176));
        av1.has_codec_box = false;
        EXPECT_EQ(run(av1).ids, Ids{4176});
    }
}

TEST(VideoEntry, ProfileFitsTheCodec) {
    struct Row {
        int id;
        Scenario base;
        std::uint32_t profile;
    };
    for (const Row& row :
         {Row{4188, profile_10(kInputFile), 8}, Row{4189, profile_9(kInputFile), 8},
          Row{4190, profile_8(kInputFile), 9}}) {
        EXPECT_FALSE(run(row.base).raised(row.id));
        Scenario changed = row.base;
        changed.profile = row.profile;
        EXPECT_TRUE(run(changed).raised(row.id));
    }
}

TEST(VideoEntry, ProfileRulesNeedTheirRuleFamily) {
    Scenario s = profile_8(kInputFile);
    s.entry = "hvc1";
    s.config_box = "pxcC";
    s.checkpoints = {"430000"};
    EXPECT_EQ(run(s).ids.size(), 9U);
    s.checkpoints = {"420000"};
    EXPECT_EQ(run(s).evaluated.count(4192), 1U);
    Scenario five = profile_5(kInputFile);
    five.checkpoints = {"410000"};
    EXPECT_EQ(run(five).evaluated.count(4228), 0U);
    Scenario newer = newer_profile(32);
    newer.checkpoints = {"430000"};
    EXPECT_EQ(run(newer).evaluated.count(4232), 0U);
    Scenario stereo = profile_20(kInputFile);
    stereo.checkpoints = {"210000"};
    EXPECT_EQ(run(stereo).evaluated.count(4243), 1U);
}

TEST(VideoEntry, MediaSegmentsAreNotLookedAt) {
    for (Scenario s : {profile_8(kInputDash), profile_9(kInputDash), profile_10(kInputDash),
                       plain("hvc1", kInputDash, ""), plain("avc1", kInputDash, "")}) {
        s.slot_kind = 4;
        s.has_codec_box = false;
        EXPECT_EQ(run(s).ids, Ids{});
    }
}

}  // namespace
}  // namespace mediasplit
