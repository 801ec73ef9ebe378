#include <gtest/gtest.h>

#include <string>

#include "tests/support/playlist_input.h"
#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

using Ids = std::vector<int>;

// --- #EXT-X-MEDIA ---

MediaRendition read_one_media(const std::string& attributes, const char* url = "dir/m.m3u8") {
    auto read = read_playlist("#EXT-X-MEDIA:" + attributes + "\n", url);
    EXPECT_EQ(read.status, Status::kOk);
    EXPECT_EQ(read.playlist.media.size(), 1U);
    return std::move(read.playlist.media.at(0));
}

TEST(MediaTagTest, AllAttributesAreRead) {
    const auto media = read_one_media(
        R"(TYPE=AUDIO,URI="a/1.m3u8",GROUP-ID="g,1",LANGUAGE="en",ASSOC-LANGUAGE="de",)"
        R"(NAME="Main",DEFAULT=YES,AUTOSELECT=NO,FORCED=NO,INSTREAM-ID="CC1",)"
        R"(CHARACTERISTICS="public.x,public.y",CHANNELS="6",STABLE-RENDITION-ID="s")");
    EXPECT_EQ(media.type, "AUDIO");
    EXPECT_EQ(media.uri, "dir/a/1.m3u8");
    EXPECT_EQ(media.uri_as_written, "a/1.m3u8");
    EXPECT_EQ(media.group_id, "g,1");
    EXPECT_EQ(media.language, "en");
    EXPECT_EQ(media.assoc_language, "de");
    EXPECT_EQ(media.name, "Main");
    EXPECT_EQ(media.default_, "YES");
    EXPECT_EQ(media.autoselect, "NO");
    EXPECT_EQ(media.forced, "NO");
    EXPECT_EQ(media.channels, "6");
    // These two keep their quotes.
    EXPECT_EQ(media.instream_id, "\"CC1\"");
    EXPECT_EQ(media.characteristics, "\"public.x,public.y\"");
    EXPECT_EQ(media.enabled, 0U);
    EXPECT_EQ(media.index, 0U);
    EXPECT_FALSE(media.codecs);
}

TEST(MediaTagTest, NamesAreComparedWholeAndBlanksAroundThemDropped) {
    const auto media = read_one_media(R"( TYPE = AUDIO , XNAME="x",NAMES="y",name="z",FORCED)");
    EXPECT_EQ(media.type, "AUDIO");
    EXPECT_FALSE(media.name);
    EXPECT_FALSE(media.forced);
    EXPECT_FALSE(media.uri);
}

TEST(MediaTagTest, UnquotedValueLosesItsFirstAndLastCharacter) {
    const auto media = read_one_media("NAME=Main,GROUP-ID=x,LANGUAGE=");
    EXPECT_EQ(media.name, "ai");
    EXPECT_EQ(media.group_id, "");
    EXPECT_EQ(media.language, "");
}

TEST(MediaTagTest, EmptyUriBecomesTheFolder) {
    EXPECT_EQ(read_one_media("URI=\"\"").uri, "dir/");
    EXPECT_EQ(read_one_media("URI=\"\"", "m.m3u8").uri, "");
}

TEST(MediaTagTest, IndexCountsTheLines) {
    const auto read = read_playlist("#EXT-X-MEDIA:\n#EXT-X-MEDIA:NAME=\"b\"\n");
    ASSERT_EQ(read.playlist.media.size(), 2U);
    EXPECT_EQ(read.playlist.media[0].index, 0U);
    EXPECT_FALSE(read.playlist.media[0].name);
    EXPECT_EQ(read.playlist.media[1].index, 1U);
    EXPECT_EQ(read.playlist.media[1].name, "b");
}

TEST(MediaTagTest, SecondValueRaises2018AndTheFirstStays) {
    const RecordingSink sink;
    const auto read =
        read_playlist("#EXT-X-MEDIA:NAME=\"z\"\n#EXT-X-MEDIA:NAME=\"a\",NAME=\"b\"\n");
    EXPECT_EQ(read.status, Status::kOk);
    EXPECT_EQ(sink.ids(), Ids{2018});
    EXPECT_EQ(sink.reports()[0].text,
              "In the HLS playlist, there are duplicated NAME attribute in the #EXT-X-MEDIA "
              "[index : 1].");
    EXPECT_EQ(read.playlist.media[1].name, "a");
}

TEST(MediaTagTest, EveryAttributeOfAMediaTagRaises2018WhenItIsThereTwice) {
    for (const char* name :
         {"TYPE", "GROUP-ID", "NAME", "DEFAULT", "AUTOSELECT", "LANGUAGE", "ASSOC-LANGUAGE",
          "CHANNELS", "URI", "FORCED", "INSTREAM-ID", "CHARACTERISTICS"}) {
        const RecordingSink sink;
        const std::string once = std::string(name) + "=\"a\"";
        static_cast<void>(read_playlist("#EXT-X-MEDIA:" + once + "\n"));
        EXPECT_EQ(sink.ids(), Ids{}) << name;
        static_cast<void>(read_playlist("#EXT-X-MEDIA:" + once + "," + once + "\n"));
        ASSERT_EQ(sink.ids(), Ids{2018}) << name;
        EXPECT_EQ(sink.reports()[0].text, "In the HLS playlist, there are duplicated " +
                                              std::string(name) +
                                              " attribute in the #EXT-X-MEDIA [index : 0].");
    }
}

TEST(MediaTagTest, UriOf2000CharactersEndsTheLine) {
    const auto media =
        read_one_media("TYPE=AUDIO,URI=\"" + std::string(2000, 'u') + "\",NAME=\"n\"");
    EXPECT_EQ(media.type, "AUDIO");
    EXPECT_FALSE(media.uri);
    EXPECT_FALSE(media.name);
}

TEST(MediaTagTest, ChannelsIsNoFaultHere) {
    const RecordingSink sink;
    static_cast<void>(read_one_media("CHANNELS=\"2\""));
    EXPECT_EQ(sink.count(2017), 0U);
}

// --- #EXT-X-STREAM-INF ---

VariantStream read_one_stream(const std::string& attributes, const std::string& line = "v.m3u8") {
    auto read = read_playlist("#EXT-X-STREAM-INF:" + attributes + "\n" + line + "\n", "dir/m.m3u8");
    EXPECT_EQ(read.status, Status::kOk);
    EXPECT_EQ(read.playlist.streams.size(), 1U);
    return std::move(read.playlist.streams.at(0));
}

TEST(StreamTagTest, AllAttributesAreRead) {
    const auto stream = read_one_stream(
        R"(BANDWIDTH=1280000,AVERAGE-BANDWIDTH=1000000,CODECS="avc1.64001f,ec-3",)"
        R"(SUPPLEMENTAL-CODECS="pxh1.08.07/px4h",RESOLUTION=1280x720,FRAME-RATE=29.970,)"
        R"(HDCP-LEVEL=TYPE-0,ALLOWED-CPC="x:y",VIDEO-RANGE=PQ,REQ-VIDEO-LAYOUT="CH-STEREO",)"
        R"(AUDIO="aud",VIDEO="vid",SUBTITLE="sub",CLOSED-CAPTIONS=NONE,SUBTITLES="other")");
    EXPECT_EQ(stream.bandwidth, "1280000");
    EXPECT_EQ(stream.average_bandwidth, "1000000");
    EXPECT_EQ(stream.codecs, "avc1.64001f,ec-3");
    EXPECT_EQ(stream.supplemental_codecs, "pxh1.08.07/px4h");
    EXPECT_EQ(stream.resolution, "1280x720");
    EXPECT_EQ(stream.frame_rate, "29.970");
    EXPECT_EQ(stream.hdcp_level, "TYPE-0");
    EXPECT_EQ(stream.allowed_cpc, "\"x:y\"");
    EXPECT_EQ(stream.video_range, "PQ");
    EXPECT_EQ(stream.req_video_layout, "\"CH-STEREO\"");
    EXPECT_EQ(stream.audio, "aud");
    EXPECT_EQ(stream.video, "vid");
    EXPECT_EQ(stream.subtitle, "sub");
    EXPECT_EQ(stream.closed_captions, "NONE");
    EXPECT_EQ(stream.uri, "dir/v.m3u8");
    EXPECT_EQ(stream.uri_as_written, "v.m3u8");
    EXPECT_EQ(stream.duplicate_index_text, "0");
    EXPECT_EQ(stream.enabled, 0U);
}

TEST(StreamTagTest, BlanksBelongToNamesAndValues) {
    const auto stream = read_one_stream("BANDWIDTH=1 , FRAME-RATE=25");
    EXPECT_EQ(stream.bandwidth, "1 ");
    EXPECT_FALSE(stream.frame_rate);
}

TEST(StreamTagTest, CommaBetweenQuotesSplitsOtherValues) {
    const auto stream = read_one_stream(R"(AUDIO="a,b",BANDWIDTH=1)");
    EXPECT_EQ(stream.audio, "");
    EXPECT_EQ(stream.bandwidth, "1");
}

TEST(StreamTagTest, CodecsMayBeginWithTwoQuotes) {
    EXPECT_EQ(read_one_stream(R"(CODECS=""avc1,ec-3",BANDWIDTH=1)").codecs, "avc1,ec-3");
    EXPECT_EQ(read_one_stream(R"(CODECS=""avc1"",BANDWIDTH=1)").codecs, "avc1");
}

TEST(StreamTagTest, CodecsEndAtTheClosingQuote) {
    const auto stream = read_one_stream(R"(CODECS="avc1"x,BANDWIDTH=1)");
    EXPECT_EQ(stream.codecs, "avc1");
    EXPECT_EQ(stream.bandwidth, "1");
}

TEST(StreamTagTest, RunsOfCommasInCodecsBecomeOne) {
    EXPECT_EQ(read_one_stream(R"(CODECS="avc1,,,ec-3",BANDWIDTH=1)").codecs, "avc1,ec-3");
}

TEST(StreamTagTest, CodecsOverThreePiecesAreJoined) {
    const auto stream = read_one_stream(R"(CODECS="avc1,ec-3,ac-3",BANDWIDTH=1)");
    EXPECT_EQ(stream.codecs, "avc1,ec-3,ac-3");
    EXPECT_EQ(stream.bandwidth, "1");
}

TEST(StreamTagTest, EmptyCodecsStayEmpty) {
    const auto stream = read_one_stream(R"(CODECS="",BANDWIDTH=1)");
    EXPECT_EQ(stream.codecs, "");
    EXPECT_EQ(stream.bandwidth, "1");
}

TEST(StreamTagTest, UnquotedCodecsEndAtTheirComma) {
    const auto stream = read_one_stream("CODECS=avc1,BANDWIDTH=1");
    EXPECT_EQ(stream.codecs, "avc1");
    EXPECT_EQ(stream.bandwidth, "1");
}

TEST(StreamTagTest, CodecsWithoutAClosingQuoteReachToTheEndOfTheLine) {
    const auto stream = read_one_stream("CODECS=\"avc1,BANDWIDTH=1,AUDIO=x");
    EXPECT_EQ(stream.codecs, "avc1,BANDWIDTH=1,AUDIO=x");
    EXPECT_FALSE(stream.bandwidth);
    EXPECT_EQ(stream.uri, "dir/v.m3u8");
}

TEST(StreamTagTest, EveryAttributeOfAStreamTagRaises2018WhenItIsThereTwice) {
    for (const char* name : {"BANDWIDTH", "AVERAGE-BANDWIDTH", "CODECS", "SUPPLEMENTAL-CODECS",
                             "RESOLUTION", "FRAME-RATE", "HDCP-LEVEL", "ALLOWED-CPC", "VIDEO-RANGE",
                             "REQ-VIDEO-LAYOUT", "AUDIO", "VIDEO", "SUBTITLE", "CLOSED-CAPTIONS"}) {
        const RecordingSink sink;
        const std::string once = std::string(name) + "=\"a\"";
        static_cast<void>(read_one_stream(once));
        EXPECT_EQ(sink.ids(), Ids{}) << name;
        static_cast<void>(read_one_stream(once + "," + once));
        ASSERT_EQ(sink.ids(), Ids{2018}) << name;
        EXPECT_EQ(sink.reports()[0].text, "In the HLS playlist, there are duplicated " +
                                              std::string(name) +
                                              " attribute in the #EXT-X-STREAM-INF [index : 0].");
    }
}

TEST(StreamTagTest, SecondCodecsAreTakenOffTheLineAsAWhole) {
    const auto stream = read_one_stream(R"(CODECS="a,b",CODECS="c,BANDWIDTH=1",AUDIO="d")");
    EXPECT_EQ(stream.codecs, "a,b");
    EXPECT_FALSE(stream.bandwidth);
    EXPECT_EQ(stream.audio, "d");
}

TEST(StreamTagTest, ChannelsRaises2017) {
    const RecordingSink sink;
    const auto read = read_playlist(
        "#EXT-X-STREAM-INF:BANDWIDTH=1\nv\n#EXT-X-STREAM-INF:CHANNELS=\"2\"\nw\n", "m.m3u8");
    EXPECT_EQ(read.status, Status::kOk);
    EXPECT_EQ(sink.ids(), Ids{2017});
    EXPECT_EQ(sink.reports()[0].text,
              "In the HLS playlist, The CHANNELS attribute should not exist in the "
              "#EXT-X-STREAM-INF [index : 1].");
}

TEST(StreamTagTest, OtherUnknownAttributesRaiseNothing) {
    const RecordingSink sink;
    static_cast<void>(read_one_stream("CHANNEL=1,PROGRAM-ID=1,URI=\"x\",SCORE=2"));
    EXPECT_EQ(sink.ids(), Ids{});
    EXPECT_TRUE(sink.was_evaluated(2017));
}

TEST(StreamTagTest, OverlongPieceEndsTheLineButNotTheStream) {
    const auto stream =
        read_one_stream("BANDWIDTH=1,X=" + std::string(500, 'x') + ",FRAME-RATE=25");
    EXPECT_EQ(stream.bandwidth, "1");
    EXPECT_FALSE(stream.frame_rate);
    EXPECT_EQ(stream.uri, "dir/v.m3u8");
}

TEST(StreamTagTest, BlankLineIsTheUri) {
    const auto stream = read_one_stream("BANDWIDTH=1", "");
    EXPECT_EQ(stream.uri, "dir/");
    EXPECT_EQ(stream.uri_as_written, "");
}

TEST(StreamTagTest, EndOfFileLeavesTheStreamWithoutUri) {
    const auto read = read_playlist("#EXT-X-STREAM-INF:BANDWIDTH=1");
    ASSERT_EQ(read.playlist.streams.size(), 1U);
    EXPECT_EQ(read.playlist.streams[0].bandwidth, "1");
    EXPECT_FALSE(read.playlist.streams[0].uri);
    EXPECT_FALSE(read.playlist.streams[0].uri_as_written);
}

TEST(StreamTagTest, LineWithANumberSignIsTheNextTag) {
    const auto read = read_playlist(
        "#EXT-X-STREAM-INF:BANDWIDTH=1\n#EXT-X-STREAM-INF:BANDWIDTH=2\nb.m3u8\n"
        "#EXT-X-STREAM-INF:BANDWIDTH=3\nc.m3u8#t=1\n#EXT-X-VERSION:4\n",
        "m.m3u8");
    ASSERT_EQ(read.playlist.streams.size(), 3U);
    EXPECT_FALSE(read.playlist.streams[0].uri);
    EXPECT_EQ(read.playlist.streams[1].uri, "b.m3u8");
    EXPECT_EQ(read.playlist.streams[1].index, 1U);
    EXPECT_EQ(read.playlist.streams[1].duplicate_index_text, "1");
    EXPECT_FALSE(read.playlist.streams[2].uri);
    EXPECT_EQ(read.playlist.master_version, "4");
}

TEST(StreamTagTest, UriLineOf500CharactersIsTheLongest) {
    const std::string longest(500, 'u');
    EXPECT_EQ(read_one_stream("", longest).uri_as_written, longest);
}

TEST(StreamTagTest, LongerUriLineEndsTheReading) {
    const auto read = read_playlist(
        "#EXT-X-STREAM-INF:BANDWIDTH=1\na\n#EXT-X-STREAM-INF:BANDWIDTH=2\n" +
        std::string(2000, 'u') + "\n#EXT-X-STREAM-INF:BANDWIDTH=3\nc\n#EXT-X-VERSION:4\n");
    EXPECT_EQ(read.status, Status::kOk);
    ASSERT_EQ(read.playlist.streams.size(), 3U);
    EXPECT_EQ(read.playlist.streams[0].uri_as_written, "a");
    EXPECT_EQ(read.playlist.streams[1].bandwidth, "2");
    EXPECT_FALSE(read.playlist.streams[1].uri);
    // Counted, but not reached.
    EXPECT_FALSE(read.playlist.streams[2].bandwidth);
    EXPECT_FALSE(read.playlist.streams[2].uri);
    EXPECT_FALSE(read.playlist.master_version);
}

// --- #EXT-X-I-FRAME-STREAM-INF ---

VariantStream read_one_iframe_stream(const std::string& attributes) {
    auto read =
        read_playlist("#EXT-X-I-FRAME-STREAM-INF:" + attributes + "\nnot-a-uri\n", "dir/m.m3u8");
    EXPECT_EQ(read.status, Status::kOk);
    EXPECT_EQ(read.playlist.iframes.size(), 1U);
    return std::move(read.playlist.iframes.at(0));
}

TEST(IframeTagTest, AllAttributesAreRead) {
    const auto stream = read_one_iframe_stream(
        R"(BANDWIDTH=1,AVERAGE-BANDWIDTH=2,CODECS="avc1,hvc1",SUPPLEMENTAL-CODECS="pxh1",)"
        R"(RESOLUTION=1x2,HDCP-LEVEL=NONE,ALLOWED-CPC="c",VIDEO-RANGE=SDR,REQ-VIDEO-LAYOUT="l",)"
        R"(VIDEO="vid",URI="i.m3u8")");
    EXPECT_EQ(stream.bandwidth, "1");
    EXPECT_EQ(stream.average_bandwidth, "2");
    EXPECT_EQ(stream.codecs, "avc1,hvc1");
    EXPECT_EQ(stream.supplemental_codecs, "pxh1");
    EXPECT_EQ(stream.resolution, "1x2");
    EXPECT_EQ(stream.hdcp_level, "NONE");
    EXPECT_EQ(stream.allowed_cpc, "\"c\"");
    EXPECT_EQ(stream.video_range, "SDR");
    EXPECT_EQ(stream.req_video_layout, "\"l\"");
    EXPECT_EQ(stream.video, "vid");
    EXPECT_EQ(stream.uri, "dir/i.m3u8");
    EXPECT_FALSE(stream.uri_as_written);
    EXPECT_EQ(stream.duplicate_index_text, "0");
}

TEST(IframeTagTest, SomeAttributesOfStreamsAreNotRead) {
    const auto stream =
        read_one_iframe_stream(R"(FRAME-RATE=25,AUDIO="a",SUBTITLE="s",CLOSED-CAPTIONS=NONE)");
    EXPECT_FALSE(stream.frame_rate);
    EXPECT_FALSE(stream.audio);
    EXPECT_FALSE(stream.subtitle);
    EXPECT_FALSE(stream.closed_captions);
    EXPECT_FALSE(stream.uri);
}

TEST(IframeTagTest, IndexCountsTheLinesOfItsKind) {
    const auto read = read_playlist(
        "#EXT-X-STREAM-INF:\na\n#EXT-X-I-FRAME-STREAM-INF:\n#EXT-X-I-FRAME-STREAM-INF:\n");
    ASSERT_EQ(read.playlist.iframes.size(), 2U);
    EXPECT_EQ(read.playlist.iframes[1].index, 1U);
    EXPECT_EQ(read.playlist.iframes[1].duplicate_index_text, "1");
}

TEST(IframeTagTest, EveryAttributeOfAnIframeTagRaises2018WhenItIsThereTwice) {
    for (const char* name :
         {"BANDWIDTH", "AVERAGE-BANDWIDTH", "CODECS", "SUPPLEMENTAL-CODECS", "RESOLUTION",
          "HDCP-LEVEL", "ALLOWED-CPC", "REQ-VIDEO-LAYOUT", "VIDEO", "URI"}) {
        const RecordingSink sink;
        const std::string once = std::string(name) + "=\"a\"";
        static_cast<void>(read_one_iframe_stream(once));
        EXPECT_EQ(sink.ids(), Ids{}) << name;
        static_cast<void>(read_one_iframe_stream(once + "," + once));
        ASSERT_EQ(sink.ids(), Ids{2018}) << name;
        EXPECT_EQ(sink.reports()[0].text,
                  "In the HLS playlist, there are duplicated " + std::string(name) +
                      " attribute in the #EXT-X-I-FRAME-STREAM-INF [index : 0].");
    }
}

TEST(IframeTagTest, DuplicatedVideoRangeIsNamedWithAnExtraLetter) {
    const RecordingSink sink;
    const auto stream = read_one_iframe_stream("VIDEO-RANGE=PQ,VIDEO-RANGE=SDR");
    EXPECT_EQ(stream.video_range, "PQ");
    ASSERT_EQ(sink.ids(), Ids{2018});
    EXPECT_EQ(sink.reports()[0].text,
              "In the HLS playlist, there are duplicated CVIDEO-RANGE attribute in the "
              "#EXT-X-I-FRAME-STREAM-INF [index : 0].");
}

}  // namespace
}  // namespace mediasplit
