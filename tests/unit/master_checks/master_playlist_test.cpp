#include "src/main/checks/master_playlist.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/unit/master_checks/master_input.h"

namespace mediasplit {
namespace {

TEST(MasterPlaylistTest, MediaPlaylistStaysAsItIs) {
    const auto checked = check_master("#EXT-X-MEDIA:TYPE=AUDIO\n#EXTINF:1,\na.ts\n");
    EXPECT_EQ(checked.status, Status::kOk);
    EXPECT_EQ(checked.group_count, 99U);
    EXPECT_EQ(checked.playlist.media.at(0).enabled, 0U);
    EXPECT_EQ(checked.ids, Ids{});
}

TEST(MasterPlaylistTest, SoundPlaylistRaisesNothing) {
    const auto checked = check_master(
        media("AUDIO", "aud", "a.m3u8") +
        stream("avc1.64001f,mp4a.40.2", "v.m3u8", "AUDIO=\"aud\"") +
        stream("hvc1.2.4.L93.B0,mp4a.40.2", "w.m3u8", "AUDIO=\"aud\"") + iframe("i.m3u8"));
    EXPECT_EQ(checked.status, Status::kOk);
    EXPECT_EQ(checked.ids, Ids{});
    EXPECT_EQ(checked.group_count, 0U);
    EXPECT_EQ(checked.playlist.media[0].enabled, 1U);
    EXPECT_EQ(checked.playlist.streams[0].enabled, 1U);
    EXPECT_EQ(checked.playlist.streams[1].enabled, 1U);
    EXPECT_EQ(checked.playlist.iframes[0].enabled, 1U);
}

TEST(MasterPlaylistTest, WorksWithoutACollector) {
    auto read = read_playlist(media("AUDIO", "none", "a.m3u8") + stream("hev1", "v.m3u8"));
    std::uint32_t groups = 0;
    EXPECT_EQ(master_manifest_validation(read.playlist, nullptr, groups), Status::kOk);
    EXPECT_EQ(read.playlist.media[0].enabled, 0U);
}

// --- Renditions ---

TEST(MasterRenditionTest, RenditionWithoutUriRaises2011AndIsNotFollowed) {
    const std::string streams = stream("avc1,mp4a", "v.m3u8", "AUDIO=\"aud\"");
    for (const std::string uri : {"", ",URI=\"\""}) {
        const auto checked = check_master("#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"aud\",NAME=\"n\"" +
                                          uri + "\n" + streams);
        EXPECT_EQ(checked.ids, Ids{2011}) << uri;
        EXPECT_EQ(checked.text(),
                  "In the HLS master-playlist, the #EXT-X-MEDIA [index : 0] has no URI.");
        EXPECT_EQ(checked.status, Status::kOk);
        EXPECT_EQ(checked.playlist.media[0].enabled, 0U);
        EXPECT_EQ(checked.playlist.media[0].codecs, "mp4a");
    }
}

TEST(MasterRenditionTest, RenditionWithoutNameRaises4047AndIsFollowed) {
    const auto checked = check_master("#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"aud\",URI=\"a.m3u8\"\n" +
                                      stream("avc1,mp4a", "v.m3u8", "AUDIO=\"aud\""));
    EXPECT_EQ(checked.ids, Ids{4047});
    EXPECT_EQ(checked.text(),
              "In HLS master-playlist, the #EXT-X-MEDIA parameter [index : 0] must include "
              "\"NAME\" attribute.");
    EXPECT_EQ(checked.status, Status::kRuleBroken);
    EXPECT_EQ(checked.playlist.media[0].enabled, 1U);
}

TEST(MasterRenditionTest, AudioCodecsOfTheStreamsAreGathered) {
    const auto checked = check_master(
        media("AUDIO", "aud", "a.m3u8") + stream("avc1,mp4a.40.2", "v.m3u8", "AUDIO=\"aud\"") +
        stream("hvc1", "w.m3u8") + stream("hvc1,mp4a.40.2", "x.m3u8", "AUDIO=\"aud\""));
    EXPECT_EQ(checked.ids, Ids{});
    EXPECT_EQ(checked.playlist.media[0].codecs, "mp4a.40.2");
    EXPECT_EQ(checked.playlist.media[0].stream_index, 2U);
    EXPECT_EQ(checked.playlist.has_ac4, 0U);
}

TEST(MasterRenditionTest, OtherAudioCodecsInAGroupRaise4050) {
    const auto checked = check_master(media("AUDIO", "aud", "a.m3u8") +
                                      stream("avc1,mp4a", "v.m3u8", "AUDIO=\"aud\"") +
                                      stream("avc1,ec-3", "w.m3u8", "AUDIO=\"aud\""));
    EXPECT_EQ(checked.ids, Ids{4050});
    EXPECT_EQ(checked.text(),
              "In HLS master-playlist, two different #EXT-X-STREAM-INFs have two different audio "
              "codecs, but they refer to the same \"AUDIO\" [value: aud] group.");
    EXPECT_EQ(checked.status, Status::kRuleBroken);
    EXPECT_EQ(checked.playlist.media[0].codecs, "mp4a,ec-3");
}

TEST(MasterRenditionTest, EachRenditionOfAGroupRaises4050) {
    const auto checked = check_master(media("AUDIO", "aud", "a.m3u8") +
                                      media("AUDIO", "aud", "b.m3u8", "LANGUAGE=\"de\"") +
                                      stream("avc1,mp4a", "v.m3u8", "AUDIO=\"aud\"") +
                                      stream("avc1,ec-3", "w.m3u8", "AUDIO=\"aud\"") +
                                      stream("avc1,ac-3", "x.m3u8", "AUDIO=\"aud\""));
    EXPECT_EQ(checked.ids, (Ids{4050, 4050, 4050, 4050}));
    EXPECT_EQ(checked.playlist.media[1].codecs, "mp4a,ec-3,ac-3");
}

TEST(MasterRenditionTest, StreamWithoutAudioCodecsDoesNotRaise4050) {
    const auto checked = check_master(media("AUDIO", "aud", "a.m3u8") +
                                      stream("avc1,mp4a", "v.m3u8", "AUDIO=\"aud\"") +
                                      stream("avc1", "w.m3u8", "AUDIO=\"aud\""));
    EXPECT_EQ(checked.ids, Ids{});
    EXPECT_EQ(checked.playlist.media[0].codecs, "mp4a");
    EXPECT_EQ(checked.playlist.media[0].stream_index, 1U);
}

TEST(MasterRenditionTest, RenditionsOfOneGroupAreAlike) {
    const auto checked = check_master(media("AUDIO", "aud", "a.m3u8") +
                                      media("AUDIO", "aud", "b.m3u8", "LANGUAGE=\"de\"") +
                                      stream("avc1,ac-4.02.01.00", "v.m3u8", "AUDIO=\"aud\""));
    EXPECT_EQ(checked.ids, Ids{});
    for (const MediaRendition& rendition : checked.playlist.media) {
        EXPECT_EQ(rendition.codecs, "ac-4.02.01.00");
        EXPECT_EQ(rendition.stream_index, 0U);
    }
    EXPECT_EQ(checked.playlist.has_ac4, 1U);
}

TEST(MasterRenditionTest, HasAc4WantsTheCodecsToBeginWithIt) {
    const auto checked = check_master(media("AUDIO", "aud", "a.m3u8") +
                                      stream("avc1,ec-3,ac-4.02.01.00", "v.m3u8", "AUDIO=\"aud\""));
    EXPECT_EQ(checked.playlist.media[0].codecs, "ec-3,ac-4.02.01.00");
    EXPECT_EQ(checked.playlist.has_ac4, 0U);
}

TEST(MasterRenditionTest, UnknownCodecRaises2021) {
    const auto checked = check_master(stream("avc1,opus", "v.m3u8"));
    ASSERT_TRUE(checked.raised(2021));
    EXPECT_EQ(checked.text(), "In HLS master-playlist, the codec is unsupported : opus");
    EXPECT_EQ(checked.status, Status::kOk);
    EXPECT_EQ(checked.playlist.streams[0].enabled, 1U);
    EXPECT_FALSE(check_master(stream("avc1,ec-3", "v.m3u8")).raised(2021));
    // By each split that meets it: for the rendition, then for the audio and the video of the
    // stream, whose video is compared with no other.
    EXPECT_EQ(check_master(media("AUDIO", "aud", "a.m3u8") +
                           stream("avc1,opus", "v.m3u8", "AUDIO=\"aud\""))
                  .ids,
              (Ids{2021, 2021, 2021}));
}

TEST(MasterRenditionTest, AudioGroupOfNoStreamRaises2012AndIsNotFollowed) {
    const auto checked =
        check_master(media("AUDIO", "aud", "a.m3u8") +
                     stream("avc1,mp4a", "v.m3u8", "AUDIO=\"other\",VIDEO=\"aud\""));
    EXPECT_EQ(checked.ids, Ids{2012});
    EXPECT_EQ(checked.text(),
              "In the HLS master-playlist, the #EXT-X-MEDIA [index : 0] has no matched \"AUDIO\" "
              "[value: aud] stream group.");
    EXPECT_EQ(checked.status, Status::kOk);
    EXPECT_EQ(checked.playlist.media[0].enabled, 0U);
    EXPECT_FALSE(checked.playlist.media[0].codecs);
}

TEST(MasterRenditionTest, VideoGroupOfNoStreamRaises2013AndIsNotFollowed) {
    const auto checked =
        check_master(media("VIDEO", "vid", "a.m3u8") +
                     stream("avc1,mp4a", "v.m3u8", "VIDEO=\"other\",AUDIO=\"vid\""));
    EXPECT_EQ(checked.ids, Ids{2013});
    EXPECT_EQ(checked.text(),
              "In the HLS master-playlist, the #EXT-X-MEDIA [index : 0] has no matched \"VIDEO\" "
              "[value: vid] stream group.");
    EXPECT_EQ(checked.playlist.media[0].enabled, 0U);
}

TEST(MasterRenditionTest, VideoRenditionKnowsItsLastStream) {
    const auto checked = check_master(media("VIDEO", "vid", "a.m3u8") +
                                      stream("avc1,mp4a", "v.m3u8", "VIDEO=\"vid\"") +
                                      stream("hvc1,mp4a", "w.m3u8", "VIDEO=\"vid\""));
    EXPECT_EQ(checked.ids, Ids{});
    EXPECT_EQ(checked.playlist.media[0].stream_index, 1U);
    EXPECT_EQ(checked.playlist.media[0].enabled, 1U);
    EXPECT_FALSE(checked.playlist.media[0].codecs);
}

TEST(MasterRenditionTest, OtherTypesAndMissingGroupsAreFollowedWithoutAStream) {
    const auto checked = check_master(media("SUBTITLES", "sub", "s.m3u8") +
                                      "#EXT-X-MEDIA:TYPE=AUDIO,NAME=\"n\",URI=\"a.m3u8\"\n" +
                                      stream("avc1", "v.m3u8"));
    EXPECT_EQ(checked.ids, Ids{});
    EXPECT_EQ(checked.playlist.media[0].enabled, 1U);
    EXPECT_EQ(checked.playlist.media[1].enabled, 1U);
}

// --- Streams ---

TEST(MasterStreamTest, StreamWithoutCodecsRaises4048AndNothingElse) {
    for (const std::string codecs : {"", ",CODECS=\"\""}) {
        const auto checked = check_master("#EXT-X-STREAM-INF:RESOLUTION=1x1" + codecs + "\n");
        EXPECT_EQ(checked.ids, Ids{4048}) << codecs;
        EXPECT_EQ(checked.text(),
                  "In HLS master-playlist, the #EXT-X-STREAM-INF parameter [index : 0] must "
                  "include \"CODECS\" attribute.");
        EXPECT_EQ(checked.status, Status::kRuleBroken);
        EXPECT_EQ(checked.playlist.streams[0].enabled, 0U);
        EXPECT_FALSE(checked.playlist.streams[0].variant_codecs);
    }
}

TEST(MasterStreamTest, AudioOnlyWantsAllCodecsToBeAudioAndAGroup) {
    const auto audio_only = [](const char* codecs, const char* more) {
        return check_master(media("AUDIO", "aud", "a.m3u8") + stream(codecs, "v.m3u8", more))
            .playlist.streams.at(0)
            .audio_only;
    };
    EXPECT_EQ(audio_only("mp4a.40.2", "AUDIO=\"aud\""), 1U);
    EXPECT_EQ(audio_only("mp4a.40.2,ec-3", "AUDIO=\"aud\""), 1U);
    EXPECT_EQ(audio_only("mp4a.40.2", ""), 0U);
    EXPECT_EQ(audio_only("avc1,mp4a.40.2", "AUDIO=\"aud\""), 0U);
    EXPECT_EQ(audio_only("avc1", "AUDIO=\"aud\""), 0U);
    // AV1 enhancement codecs count as audio too.
    EXPECT_EQ(audio_only("pav1.10.01", "AUDIO=\"aud\""), 1U);
}

TEST(MasterStreamTest, VideoWithoutFrameRateRaises4098) {
    const auto checked = check_master("#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS=\"avc1\"\nv.m3u8\n");
    EXPECT_EQ(checked.ids, Ids{4098});
    EXPECT_EQ(checked.text(),
              "In HLS master-playlist, each EXT-X-STREAM-INF parameter that includes video content "
              "MUST have a FRAME-RATE attribute.");
    EXPECT_EQ(checked.status, Status::kRuleBroken);
    EXPECT_EQ(check_master("#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS=\"mp4a\"\nv.m3u8\n").ids, Ids{});
}

TEST(MasterStreamTest, FrameRateAbove60Raises4099) {
    const auto with_rate = [](const std::string& rate) {
        return check_master("#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS=\"avc1\",FRAME-RATE=" + rate +
                            "\nv.m3u8\n");
    };
    const auto checked = with_rate("60.001");
    EXPECT_EQ(checked.ids, Ids{4099});
    EXPECT_EQ(checked.text(),
              "In HLS master-playlist, frame rates above 60 fps SHALL NOT be used.");
    EXPECT_EQ(checked.status, Status::kRuleBroken);
    EXPECT_EQ(with_rate("60.000").ids, Ids{});
    EXPECT_EQ(with_rate("59.94").ids, Ids{});
    EXPECT_EQ(with_rate("\"60.001\"").ids, Ids{4099});
    EXPECT_EQ(with_rate("\"60.000\"").ids, Ids{});
    // No number counts as 0.
    EXPECT_EQ(with_rate("120fps").ids, Ids{});
    EXPECT_EQ(check_master("#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS=\"mp4a\",FRAME-RATE=100\nv\n").ids,
              Ids{});
}

TEST(MasterStreamTest, StreamWithoutUriRaises4051FailsTheRunAndIsNotFollowed) {
    const auto checked = check_master("#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS=\"mp4a\"\n");
    EXPECT_EQ(checked.ids, Ids{4051});
    EXPECT_EQ(
        checked.text(),
        "In HLS master-playlist, the URL line which follows the #EXT-X-STREAM-INF [index : 0] "
        "is required.");
    EXPECT_EQ(checked.status, Status::kFailed);
    EXPECT_EQ(checked.playlist.streams[0].enabled, 0U);
}

TEST(MasterStreamTest, StreamWithoutBandwidthRaises4049AndIsFollowed) {
    for (const std::string bandwidth : {"", ",BANDWIDTH="}) {
        const auto checked =
            check_master("#EXT-X-STREAM-INF:CODECS=\"mp4a\"" + bandwidth + "\na.m3u8\n");
        EXPECT_EQ(checked.ids, Ids{4049}) << bandwidth;
        EXPECT_EQ(checked.text(),
                  "In HLS master-playlist, the #EXT-X-STREAM-INF parameter [index : 0] must "
                  "include \"BANDWIDTH\" attribute.");
        EXPECT_EQ(checked.status, Status::kRuleBroken);
        EXPECT_EQ(checked.playlist.streams[0].enabled, 1U);
    }
}

TEST(MasterStreamTest, ParameterSetsInSamplesRaise2016ForTwoNamesOnly) {
    for (const char* codecs : {"hev1.2.4.L93.B0", "pxhe.08.09", "mp4a,hev1"}) {
        const auto checked = check_master(stream(codecs, "v.m3u8"));
        EXPECT_EQ(checked.ids, Ids{2016}) << codecs;
        EXPECT_EQ(checked.status, Status::kOk);
    }
    for (const char* codecs : {"hvc1.2.4.L93.B0", "pxh1.08.09", "avc3.64001f", "pxa1"}) {
        EXPECT_EQ(check_master(stream(codecs, "v.m3u8")).ids, Ids{}) << codecs;
    }
}

TEST(MasterStreamTest, CodecsOver100CharactersAreNotLookedInto) {
    // Neither video, so no FRAME-RATE is wanted, nor unknown.
    const std::string codecs = "avc1." + std::string(96, 'x') + ",opus";
    EXPECT_EQ(check_master("#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS=\"" + codecs + "\"\nv.m3u8\n").ids,
              Ids{});
}

TEST(MasterStreamTest, StreamsThatTheReaderDidNotReachRaise4048) {
    const auto checked = check_master(stream("mp4a", std::string(501, 'u')) + stream("mp4a", "b"));
    EXPECT_EQ(checked.ids, (Ids{4051, 4048}));
    EXPECT_EQ(checked.playlist.streams[1].enabled, 0U);
}

// --- I-frame streams ---

TEST(MasterIframeTest, IframeStreamWithoutUriRaises4052AndFailsTheRun) {
    for (const std::string uri : {"", ",URI=\"\""}) {
        const auto checked = check_master(stream("avc1", "v.m3u8") +
                                          "#EXT-X-I-FRAME-STREAM-INF:BANDWIDTH=1" + uri + "\n");
        EXPECT_EQ(checked.ids, Ids{4052}) << uri;
        EXPECT_EQ(
            checked.text(),
            "In HLS master-playlist, the #EXT-X-I-FRAME-STREAM-INF parameter [index : 0] must "
            "include \"URL\" attribute.");
        EXPECT_EQ(checked.status, Status::kFailed);
        EXPECT_EQ(checked.playlist.iframes[0].enabled, 0U);
    }
}

TEST(MasterIframeTest, IframeStreamWithoutBandwidthRaises4053AndIsFollowed) {
    const auto checked = check_master(stream("avc1", "v.m3u8") +
                                      "#EXT-X-I-FRAME-STREAM-INF:CODECS=\"avc1,hvc1\",URI=\"i\"\n");
    EXPECT_EQ(checked.ids, Ids{4053});
    EXPECT_EQ(checked.text(),
              "In HLS master-playlist, the #EXT-X-I-FRAME-STREAM-INF parameter [index : 0] must "
              "include \"BANDWIDTH\" attribute.");
    EXPECT_EQ(checked.status, Status::kRuleBroken);
    EXPECT_EQ(checked.playlist.iframes[0].enabled, 1U);
    EXPECT_EQ(checked.playlist.iframes[0].variant_codecs, "avc1,hvc1");
}

TEST(MasterIframeTest, IframeStreamWithoutCodecsHasNoCopyOfThem) {
    const auto checked = check_master(stream("avc1", "v.m3u8") +
                                      "#EXT-X-I-FRAME-STREAM-INF:BANDWIDTH=1,URI=\"i\"\n");
    EXPECT_EQ(checked.ids, Ids{});
    EXPECT_FALSE(checked.playlist.iframes[0].variant_codecs);
}

TEST(MasterPlaylistTest, StepsFollowEachOther) {
    // One message of each step, in the order of the steps whatever that of the lines.
    const auto checked = check_master(
        "#EXT-X-I-FRAME-STREAM-INF:URI=\"i\"\n" + stream("ec-3", "a", "AUDIO=\"x\"") +
        stream("mp4a", "a", "AUDIO=\"x\"") + stream("ac-3", "a", "AUDIO=\"x\"") +
        stream("mp4a.40.2", "a", "AUDIO=\"x\"") + stream("hev1", "b") +
        stream("ec-3", "z", "AUDIO=\"g\"") + media("AUDIO", "g", "m", "CHANNELS=\"6\"") +
        media("AUDIO", "g", "n", "CHANNELS=\"6\"") + media("VIDEO", "none", "o"));
    EXPECT_EQ(checked.ids, (Ids{2013, 2016, 4053, 4101, 4102}));
}

}  // namespace
}  // namespace mediasplit
