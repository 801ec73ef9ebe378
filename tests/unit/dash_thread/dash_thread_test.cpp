#include "src/dash_thread/dash_thread.h"

#include <array>

#include "tests/unit/dash_thread/dash_run.h"

namespace mediasplit {
namespace {

using DashThread = DashRun;

TEST_F(DashThread, TextThatIsNoManifestFails) {
    play("");
    EXPECT_EQ(ids(), Ids{4026});
    EXPECT_TRUE(has_failed(status_));
    EXPECT_EQ(take_timing().size(), 1U);
    play("<PMD/>");
    EXPECT_EQ(ids(), (Ids{4026, 4026}));
    EXPECT_EQ(take_timing().size(), 1U);
    EXPECT_EQ(result_, 0);
}

TEST_F(DashThread, RepresentationThatIsNotThereFails) {
    representation_ = "other";
    play(manifest("", R"(duration="PT2S")", kNumbers));
    EXPECT_EQ(ids(), Ids{3006});
    EXPECT_TRUE(has_failed(status_));
    const auto timing = take_timing();
    ASSERT_EQ(timing.size(), 1U);
    EXPECT_DOUBLE_EQ(timing[0].duration, -1.0);
    EXPECT_EQ(timing[0].end, 1U);
}

TEST_F(DashThread, PeriodThatIsNotThereFails) {
    period_index_ = 1;
    play(manifest("", R"(duration="PT2S")", kNumbers));
    EXPECT_EQ(ids(), Ids{3006});
    EXPECT_TRUE(has_failed(status_));
}

TEST_F(DashThread, RefusedRepresentationFails) {
    const std::string mpd =
        R"(<MPD><Period duration="PT2S"><AdaptationSet><Representation id="r">)" + kNumbers +
        "</Representation></AdaptationSet></Period></MPD>";
    play(mpd);
    EXPECT_EQ(ids(), Ids{4090});
    EXPECT_TRUE(has_failed(status_));
    EXPECT_EQ(take_timing().size(), 1U);
}

TEST_F(DashThread, LanguageIsHeldAgainstTheManifest) {
    add_segments(1);
    const auto with_language = [](const std::string& language) {
        return R"(<MPD><Period duration="PT2S"><AdaptationSet lang=")" + language +
               R"("><Representation id="r" bandwidth="1">)" + kNumbers +
               "</Representation></AdaptationSet></Period></MPD>";
    };
    play(with_language("und"));
    EXPECT_EQ(sink_.count(4093), 0U);
    EXPECT_EQ(sink_.count(4104), 0U);
    play(with_language("en"));
    EXPECT_EQ(sink_.count(4093), 2U) << "on the initialization and on the media segment";
    EXPECT_EQ(sink_.count(4104), 0U);
    add("init.mp4", [] {
        std::string init = init_segment();
        // "und" as packed into mdhd becomes "xxx".
        const std::size_t at = init.find("mdhd") + 24;
        return init.replace(at, 2, "\x63\x18");
    }());
    play(with_language("en"));
    EXPECT_EQ(sink_.count(4104), 2U);
}

TEST_F(DashThread, BroadcastRulesAreHeldOnEachReading) {
    add_segments(1);
    play(manifest("", R"(duration="PT2S")", kNumbers));
    EXPECT_FALSE(sink_.was_evaluated(4094));
    constexpr std::array<CheckpointText, 1> kBroadcast{{{"001000"}}};
    loglist_ = init_loglist(kBroadcast.size(), kBroadcast.data());
    if (!has_checkpoint_set(loglist_.get(), 4)) {
        GTEST_SKIP() << "the family can't be chosen";
    }
    play(manifest("", R"(duration="PT2S")", kNumbers));
    EXPECT_EQ(sink_.count(4094), 1U);
}

TEST_F(DashThread, KeyOfTheManifestsKeyIdMustBeAKey) {
    add_segments(1);
    const auto with_key_id = [](const std::string& key_id) {
        return manifest(
            "", R"(duration="PT2S")",
            R"(<ContentProtection value="cenc" cenc:default_KID=")" + key_id + R"("/>)" + kNumbers);
    };
    const std::string id = "00112233445566778899aabbccddeeff";
    keypairs_ = id + ":" + std::string(32, 'x');
    // Other ids, and texts that are no ids, find nothing.
    for (const char* other : {"", "-", "0011", "10112233445566778899aabbccddeeff",
                              "zz112233-4455-6677-8899-aabbccddeeff"}) {
        play(with_key_id(other));
        EXPECT_EQ(ids(), Ids{}) << other;
    }
    EXPECT_EQ(status_, Status::kOk);
    play(with_key_id("00112233-4455-6677-8899-AABBCCDDEEFF"));
    EXPECT_EQ(sink_.count(4014), 1U);
    EXPECT_TRUE(has_failed(status_));
    EXPECT_FALSE(take_timing().empty());
}

TEST_F(DashThread, ManifestCutAnywhereIsHarmless) {
    add_segments(3);
    const std::string mpd = manifest(R"(type="static")", R"(duration="PT4S")", kNumbers);
    for (std::size_t size = 0; size < mpd.size(); ++size) {
        play(mpd.substr(0, size));
        EXPECT_EQ(result_, 0);
    }
}

}  // namespace
}  // namespace mediasplit
