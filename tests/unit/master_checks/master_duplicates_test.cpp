#include "src/main/checks/master_duplicates.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/unit/master_checks/master_input.h"

namespace mediasplit {
namespace {

// --- Streams with other codecs ---

TEST(SameStreamTest, CodecsAreJoinedOnTheFirstAndBothAreFollowed) {
    const auto checked =
        check_master(stream("avc1", "v", "AUDIO=\"a\"") + stream("hvc1", "v", "AUDIO=\"a\""));
    const auto& streams = checked.playlist.streams;
    EXPECT_EQ(checked.ids, Ids{});
    EXPECT_EQ(streams[0].codecs, "avc1,hvc1");
    EXPECT_EQ(streams[0].variant_codecs, "avc1");
    EXPECT_EQ(streams[0].duplicate_codecs_1, "hvc1");
    EXPECT_EQ(streams[0].first_duplicate_index, 1U);
    EXPECT_EQ(streams[0].duplicate_index_text, "0, 1");
    EXPECT_FALSE(streams[0].duplicate_codecs_2);
    EXPECT_EQ(streams[1].codecs, "hvc1");
    EXPECT_EQ(streams[1].variant_codecs, "hvc1");
    EXPECT_EQ(streams[1].duplicate_index_text, "1");
    EXPECT_EQ(streams[1].merged, 0U);
    EXPECT_EQ(streams[0].enabled, 1U);
    EXPECT_EQ(streams[1].enabled, 1U);
}

TEST(SameStreamTest, ThreeFit) {
    const auto checked =
        check_master(stream("avc1", "v") + stream("hvc1", "v") + stream("pxh1", "v"));
    const auto& streams = checked.playlist.streams;
    EXPECT_EQ(checked.ids, Ids{});
    EXPECT_EQ(streams[0].codecs, "avc1,hvc1,pxh1");
    EXPECT_EQ(streams[0].duplicate_codecs_1, "hvc1");
    EXPECT_EQ(streams[0].duplicate_codecs_2, "pxh1");
    EXPECT_EQ(streams[0].first_duplicate_index, 1U);
    EXPECT_EQ(streams[0].second_duplicate_index, 2U);
    EXPECT_EQ(streams[0].duplicate_index_text, "0, 1, 2");
    EXPECT_EQ(streams[1].codecs, "hvc1,pxh1");
    EXPECT_EQ(streams[1].duplicate_index_text, "1, 2");
}

TEST(SameStreamTest, FourRaise4101Once) {
    const auto checked = check_master(stream("avc1", "v") + stream("hvc1", "v") +
                                      stream("pxh1", "v") + stream("pxa1", "v"));
    EXPECT_EQ(checked.ids, Ids{4101});
    EXPECT_EQ(checked.text(),
              "In HLS master-playlist, there are too many duplicated #EXT-X-STREAM-INFs describing "
              "the same stream [URL: v] and the same attribute.");
    EXPECT_EQ(checked.status, Status::kRuleBroken);
    EXPECT_EQ(checked.playlist.streams[0].codecs, "avc1,hvc1,pxh1,pxa1");
    EXPECT_EQ(checked.playlist.streams[0].duplicate_index_text, "0, 1, 2");
}

TEST(SameStreamTest, EachPairThatDoesNotFitRaises4101) {
    // The fifth fits neither with the first nor with the second, which has the two behind it.
    const auto checked =
        check_master(stream("avc1", "v") + stream("hvc1", "v") + stream("pxh1", "v") +
                     stream("pxa1", "v") + stream("hev1", "v"));
    EXPECT_EQ(std::count(checked.ids.begin(), checked.ids.end(), 4101), 3);
}

TEST(SameStreamTest, AnotherAddressOrGroupMakesAnotherStream) {
    for (const char* attribute : {"AUDIO", "VIDEO", "SUBTITLE", "CLOSED-CAPTIONS"}) {
        const std::string name(attribute);
        const std::string none = stream("avc1", "v");
        const std::string one = stream("hvc1", "v", name + "=\"one\"");
        const std::string two = stream("pxh1", "v", name + "=\"two\"");
        for (const std::string& text : {none + one, one + none, one + two}) {
            const auto checked = check_master(text);
            EXPECT_FALSE(checked.playlist.streams[0].duplicate_codecs_1) << text;
        }
        EXPECT_TRUE(check_master(one + stream("pxh1", "v", name + "=\"one\""))
                        .playlist.streams[0]
                        .duplicate_codecs_1);
    }
    EXPECT_FALSE(check_master(stream("avc1", "v") + stream("hvc1", "w"))
                     .playlist.streams[0]
                     .duplicate_codecs_1);
}

TEST(SameStreamTest, StreamsThatAreNotFollowedHaveNoPart) {
    const auto checked = check_master("#EXT-X-STREAM-INF:BANDWIDTH=1\nv\n" + stream("hvc1", "v"));
    EXPECT_FALSE(checked.playlist.streams[0].duplicate_codecs_1);
    EXPECT_EQ(checked.playlist.streams[1].codecs, "hvc1");
}

TEST(SameStreamTest, DuplicatesCountAsOneStreamOnlyInTheirRuleFamily) {
    const std::string text = stream("avc1", "v") + stream("hvc1", "v") + stream("pxh1", "v");
    const auto loglist = make_loglist({"420000"});
    const auto checked = check_master(text, loglist.get());
    const auto& streams = checked.playlist.streams;
    EXPECT_EQ(streams[0].codecs, "avc1,hvc1,pxh1");
    EXPECT_EQ(streams[1].merged, 1U);
    EXPECT_EQ(streams[2].merged, 1U);
    // What is merged gathers nothing.
    EXPECT_EQ(streams[1].codecs, "hvc1");
    EXPECT_EQ(streams[0].merged, 0U);
    EXPECT_EQ(check_master(text).playlist.streams[1].merged, 0U);
}

// --- Renditions of two bit rates ---

std::string surround(const char* uri, const char* more = "CHANNELS=\"6\",LANGUAGE=\"en\"") {
    return media("AUDIO", "aud", uri, more);
}

TEST(SingleBitRateTest, SameContentTwiceRaises4102) {
    const auto checked =
        check_master(media("AUDIO", "aud", "x", "CHANNELS=\"2\",LANGUAGE=\"en\"") + surround("a") +
                     surround("b") + stream("avc1,ec-3", "v", "AUDIO=\"aud\""));
    EXPECT_EQ(checked.ids, Ids{4102});
    EXPECT_EQ(checked.text(),
              "In HLS master-playlist, streams must be provided in single bitrate. The "
              "#EXT-X-MEDIA [index: 1] and the #EXT-X-MEDIA [index: 2] provide the same content in "
              "different bitrate.");
    EXPECT_EQ(checked.status, Status::kRuleBroken);
    EXPECT_EQ(checked.playlist.media[2].enabled, 1U);
}

TEST(SingleBitRateTest, EachPairIsReported) {
    const auto checked = check_master(surround("a") + surround("b") + surround("c") +
                                      stream("avc1,ec-3", "v", "AUDIO=\"aud\""));
    ASSERT_EQ(checked.ids, (Ids{4102, 4102, 4102}));
    EXPECT_NE(checked.text(0).find("[index: 0] and the #EXT-X-MEDIA [index: 1]"),
              std::string::npos);
    EXPECT_NE(checked.text(1).find("[index: 0] and the #EXT-X-MEDIA [index: 2]"),
              std::string::npos);
    EXPECT_NE(checked.text(2).find("[index: 1] and the #EXT-X-MEDIA [index: 2]"),
              std::string::npos);
}

TEST(SingleBitRateTest, AnyDifferenceMakesAnotherContent) {
    const std::string streams =
        stream("avc1,ec-3", "v", "AUDIO=\"aud\"") + stream("hvc1,ec-3", "w", "AUDIO=\"other\"");
    for (const std::string& second :
         {surround("b", "CHANNELS=\"8\",LANGUAGE=\"en\""),
          surround("b", "CHANNELS=\"6\",LANGUAGE=\"de\""), surround("b", "CHANNELS=\"6\""),
          surround("b", "LANGUAGE=\"en\""),
          media("AUDIO", "other", "b", "CHANNELS=\"6\",LANGUAGE=\"en\"")}) {
        EXPECT_EQ(check_master(surround("a") + second + streams).ids, Ids{}) << second;
    }
}

TEST(SingleBitRateTest, LanguageMayBeMissingOnBoth) {
    EXPECT_EQ(check_master(surround("a", "CHANNELS=\"6\"") + surround("b", "CHANNELS=\"6\"") +
                           stream("avc1,ec-3", "v", "AUDIO=\"aud\""))
                  .ids,
              Ids{4102});
}

TEST(SingleBitRateTest, StereoAndOtherCodecsAndObjectsPass) {
    const auto twice = [](const char* channels, const char* codecs) {
        const std::string more = "CHANNELS=\"" + std::string(channels) + "\"";
        return check_master(media("AUDIO", "aud", "a", more) + media("AUDIO", "aud", "b", more) +
                            stream(codecs, "v", "AUDIO=\"aud\""))
            .raised(4102);
    };
    EXPECT_TRUE(twice("3", "avc1,ec-3"));
    EXPECT_FALSE(twice("2", "avc1,ec-3"));
    EXPECT_FALSE(twice("16/JOC", "avc1,ec-3"));
    EXPECT_FALSE(twice("6", "avc1,ac-3"));
    EXPECT_FALSE(twice("6", "avc1,ec-3,mp4a"));
}

// --- Streams listed twice ---

TEST(RepeatedStreamTest, StreamOfAnotherResolutionIsFollowedOnce) {
    const auto checked = check_master(stream("avc1,mp4a", "v", "RESOLUTION=1x1") +
                                      stream("avc1,mp4a", "v", "RESOLUTION=2x2") +
                                      stream("avc1,mp4a", "v", "RESOLUTION=3x3"));
    EXPECT_EQ(checked.ids, Ids{});
    EXPECT_EQ(checked.playlist.streams[0].enabled, 1U);
    EXPECT_EQ(checked.playlist.streams[1].enabled, 0U);
    EXPECT_EQ(checked.playlist.streams[2].enabled, 0U);
}

TEST(RepeatedStreamTest, AnotherAddressIsFollowed) {
    const auto checked = check_master(stream("avc1", "v") + stream("avc1", "w"));
    EXPECT_EQ(checked.playlist.streams[1].enabled, 1U);
}

TEST(RepeatedStreamTest, WithRenditionsTheVideoCodecsDecide) {
    const std::string renditions = media("AUDIO", "a", "a.m3u8") + media("AUDIO", "b", "b.m3u8");
    const auto checked = check_master(renditions + stream("avc1,mp4a", "v", "AUDIO=\"a\"") +
                                      stream("avc1,ec-3", "v", "AUDIO=\"b\"") +
                                      stream("hvc1,ec-3", "w", "AUDIO=\"b\""));
    const auto& streams = checked.playlist.streams;
    EXPECT_EQ(streams[0].has_renditions, 1U);
    EXPECT_EQ(streams[1].has_renditions, 1U);
    EXPECT_EQ(streams[0].enabled, 1U);
    EXPECT_EQ(streams[1].enabled, 0U);
    EXPECT_EQ(streams[2].enabled, 1U);
}

TEST(RepeatedStreamTest, WithoutRenditionsAllCodecsDecide) {
    const auto checked = check_master(stream("avc1,mp4a", "v", "AUDIO=\"a\"") +
                                      stream("avc1,ec-3", "v", "AUDIO=\"b\"") +
                                      stream("mp4a,avc1", "v", "AUDIO=\"c\""));
    const auto& streams = checked.playlist.streams;
    EXPECT_EQ(streams[0].has_renditions, 0U);
    EXPECT_EQ(streams[1].enabled, 1U);
    // The order of the codecs doesn't count.
    EXPECT_EQ(streams[2].enabled, 0U);
}

TEST(RepeatedStreamTest, StreamsWithAndWithoutRenditionsDiffer) {
    const auto checked =
        check_master(media("AUDIO", "a", "a.m3u8") + stream("avc1,mp4a", "v", "AUDIO=\"a\"") +
                     stream("avc1,mp4a", "v", "AUDIO=\"b\""));
    EXPECT_EQ(checked.playlist.streams[0].has_renditions, 1U);
    EXPECT_EQ(checked.playlist.streams[1].has_renditions, 0U);
    EXPECT_EQ(checked.playlist.streams[1].enabled, 1U);
}

TEST(RepeatedStreamTest, AudioStreamsWithRenditionsAreAlikeWithoutVideoCodecs) {
    const auto checked =
        check_master(media("AUDIO", "a", "v") + media("AUDIO", "b", "w") +
                     stream("mp4a", "v", "AUDIO=\"a\"") + stream("ec-3", "v", "AUDIO=\"b\""));
    EXPECT_EQ(checked.playlist.streams[1].enabled, 0U);
}

TEST(RepeatedStreamTest, RenditionThatIsNotFollowedDoesNotCount) {
    const auto checked = check_master("#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"a\",NAME=\"n\"\n" +
                                      stream("avc1,mp4a", "v", "AUDIO=\"a\""));
    EXPECT_EQ(checked.playlist.streams[0].has_renditions, 0U);
}

TEST(RepeatedStreamTest, RenditionOfAnyTypeCounts) {
    const auto checked =
        check_master(media("SUBTITLES", "a", "s") + stream("avc1,mp4a", "v", "AUDIO=\"a\""));
    EXPECT_EQ(checked.playlist.streams[0].has_renditions, 1U);
}

// --- Very long playlists ---

TEST(LongMasterTest, ManyEqualRecordsTakeLinearTime) {
    std::string text;
    for (int i = 0; i < 50000; ++i) {
        text += "#EXT-X-STREAM-INF:BANDWIDTH=1,FRAME-RATE=1,CODECS=\"avc1,ac-4\",AUDIO=\"a\"\nv\n";
        text += "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"a\",NAME=\"n\",URI=\"u\",CHANNELS=\"6\"\n";
    }
    const auto checked = check_master(text);
    EXPECT_EQ(checked.group_count, 1U);
    EXPECT_EQ(checked.playlist.media.back().group, 1U);
    EXPECT_EQ(checked.playlist.streams.back().enabled, 0U);
}

TEST(LongMasterTest, ManySameStreamsWithOtherCodecsStaySmall) {
    std::string text;
    for (int i = 0; i < 20000; ++i) {
        text +=
            stream("avc1." + std::to_string(i) + ",mp4a." + std::to_string(i), "v", "AUDIO=\"a\"");
        text += "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"a\",NAME=\"n\",URI=\"u\"\n";
    }
    const auto loglist = make_loglist();
    const auto checked = check_master(text, loglist.get());
    EXPECT_TRUE(checked.raised(4101));
    for (const VariantStream& each : checked.playlist.streams) {
        EXPECT_LT(each.codecs->size(), 600U);
    }
    EXPECT_LT(checked.playlist.media.back().codecs->size(), 600U);
    // The lines are alike, one each.
    EXPECT_EQ(loglist->message_count, 2);
}

TEST(LongMasterTest, ManyEqualSurroundRenditionsReportABoundedNumberOfPairs) {
    std::string text = stream("avc1,ec-3", "v", "AUDIO=\"aud\"");
    for (int i = 0; i < 2000; ++i) {
        text += surround("a");
    }
    const auto checked = check_master(text);
    EXPECT_TRUE(checked.raised(4102));
    EXPECT_LE(checked.ids.size(), 2000U * 64U);
}

}  // namespace
}  // namespace mediasplit
