#include "src/dash_thread/dash_thread.h"

#include <array>

#include "tests/unit/dash_thread/dash_run.h"

#include "tests/support/mp4_builder.h"
#include "tests/support/nal_builder.h"

namespace mediasplit {
namespace {

using DashThread = DashRun;

// An H.264 stream in an entry of the enhancement format, with its SPS in the sample.
mp4::MovieSpec enhanced_movie() {
    testing::AvcSpsOptions options;
    options.profile_idc = 100;
    options.level_idc = 31;
    options.width_in_mbs = 80;
    options.height_in_map_units = 45;
    options.timing = testing::Fraction{1, 50};
    const mp4::Bytes sps = testing::build_avc_sps(options);
    mp4::TrackSpec track;
    track.entries = {mp4::video_entry(
        "pxav", 1280, 720, {mp4::avcC({sps}, {{0x68, 0xEE}}), mp4::prsm_config("pxvC", 9, 2)})};
    mp4::SampleSpec sample;
    sample.data = mp4::join({mp4::u32(sps.size()), sps});
    sample.duration = 2000;
    track.samples = {sample};
    mp4::MovieSpec movie;
    movie.tracks = {track};
    return movie;
}

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

TEST_F(DashThread, RepresentationWithoutSegmentsGetsANote) {
    play(manifest("", R"(duration="PT2S")", "<BaseURL>whole.mp4</BaseURL>"));
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(sink_.notes(),
              std::vector<std::string>{
                  "Nothing was taken apart: the manifest tells no segments (SegmentTemplate, "
                  "SegmentBase or SegmentList)."});
    EXPECT_EQ(take_timing().size(), 1U);
    add_segments(1);
    play(manifest("", R"(duration="PT2S")", kNumbers));
    EXPECT_EQ(sink_.notes().size(), 1U);
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
    constexpr std::array<CheckpointText, 1> kBroadcast{{{"320000"}}};
    loglist_ = init_loglist(kBroadcast.size(), kBroadcast.data());
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

TEST_F(DashThread, KeyIdOfTheAdaptationSetCountsForItsRepresentations) {
    add_segments(1);
    const std::string id = "00112233445566778899aabbccddeeff";
    const std::string other = "ff112233445566778899aabbccddeeff";
    keypairs_ = id + ":" + std::string(32, 'x');
    const auto protection = [](const std::string& key_id) {
        return R"(<ContentProtection value="cenc" cenc:default_KID=")" + key_id + R"("/>)";
    };
    const auto with_key_ids = [](const std::string& of_set, const std::string& own) {
        return R"(<MPD><Period duration="PT2S"><AdaptationSet>)" + of_set +
               R"(<Representation id="r" bandwidth="1">)" + own + kNumbers +
               "</Representation></AdaptationSet></Period></MPD>";
    };
    play(with_key_ids(protection(other), ""));
    play(with_key_ids(protection(id), protection(other)));
    EXPECT_EQ(sink_.count(4014), 0U);
    play(with_key_ids(protection(id), ""));
    EXPECT_EQ(sink_.count(4014), 1U);
}

TEST_F(DashThread, CodecsOfThoseWithTheSameInitializationSegmentAreHeldAgainstTheStream) {
    const mp4::MovieSpec movie = enhanced_movie();
    add("init.mp4", as_text(mp4::initialization_segment(movie)));
    add("s1.mp4", as_text(mp4::media_segment(movie, 0, 1, 0)));
    constexpr std::array<CheckpointText, 1> kEnhancement{{{"410000"}}};
    loglist_ = init_loglist(kEnhancement.size(), kEnhancement.data());
    const auto play_beside = [this](const std::string& attributes, const std::string& other) {
        sink_.clear();
        play(R"(<MPD><Period duration="PT2S"><AdaptationSet codecs="set">)"
             R"(<Representation id="r" bandwidth="1" )" +
             attributes + ">" + kNumbers + "</Representation>" + other +
             "</AdaptationSet></Period></MPD>");
        return texts(4130);
    };
    using Texts = std::vector<std::string>;
    const std::string own = R"(codecs="avc3.64001F")";
    EXPECT_EQ(play_beside(own, ""), Texts{});
    EXPECT_TRUE(sink_.was_evaluated(4130));
    const Texts shared = play_beside(
        own, R"(<Representation id="o" bandwidth="1">)" + kNumbers + "</Representation>");
    ASSERT_EQ(shared.size(), 1U);
    EXPECT_NE(shared[0].find("[id : r] is avc3.64001F,set."), std::string::npos) << shared[0];
    // A dependency with its own initialization segment isn't in this reading.
    EXPECT_EQ(play_beside(own + R"( dependencyId="o")",
                          R"(<Representation id="o" bandwidth="1" codecs="x"/>)"),
              Texts{});
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
