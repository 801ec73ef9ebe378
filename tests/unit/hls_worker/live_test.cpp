// Playlists of addresses: fetching, retries, reloads, the wanted duration.
#include <gtest/gtest.h>

#include "src/hls/segment_source.h"
#include "src/util/fetcher.h"
#include "tests/unit/hls_worker/stream_run.h"

namespace mediasplit {
namespace {

constexpr const char* kAdts = "list_PID_257.out.adts";

class FetchedStream : public StreamRun {
protected:
    FetchedStream() {
        for (int i = 0; i < 4; ++i) {
            server_.serve(path(i), ts_segment(sample_text(i)));
        }
    }

    static std::string path(int i) { return "/a/" + std::to_string(i) + ".ts"; }
    // A playlist of the first segments.
    static std::string playlist(int count, const std::string& duration) {
        std::string text = "#EXT-X-TARGETDURATION:1\n";
        for (int i = 0; i < count; ++i) {
            text += "#EXTINF:" + duration + ",\n" + std::to_string(i) + ".ts\n";
        }
        return text;
    }
    void follow_address(const std::string& text) { follow(text, server_.url("/a/list.m3u8")); }
};

TEST_F(FetchedStream, SegmentsAreFetchedAndTheirCopiesRemoved) {
    follow_address(playlist(3, "2") + "#EXT-X-ENDLIST\n");
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(output(kAdts), sample_text(0) + sample_text(1) + sample_text(2));
    EXPECT_EQ(files("tmp"), std::vector<std::string>{});
    EXPECT_EQ(server_.requests(path(0)), 1U);
}

TEST_F(FetchedStream, RangesOfOneFileAreFetchedOnce) {
    const std::string first = ts_segment(sample_text(0));
    const std::string second = ts_segment(sample_text(1));
    server_.serve("/a/all.ts", first + second);
    follow_address("#EXTINF:2,\n#EXT-X-BYTERANGE:" + std::to_string(first.size()) +
                   "@0\nall.ts\n#EXTINF:2,\n#EXT-X-BYTERANGE:" + std::to_string(second.size()) +
                   "\nall.ts\n#EXT-X-ENDLIST\n");
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(server_.requests("/a/all.ts"), 1U);
    EXPECT_EQ(output(kAdts), sample_text(0) + sample_text(1));
    EXPECT_EQ(files("tmp"), std::vector<std::string>{});
}

TEST_F(FetchedStream, SegmentIsTriedThreeTimes) {
    HttpReply missing;
    missing.status = 404;
    HttpReply there;
    there.body = ts_segment(sample_text(1));
    server_.serve(path(1), {missing, missing, there});
    follow_address(playlist(2, "1") + "#EXT-X-ENDLIST\n");
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(ids(), (Ids{2054, 2052, 2054, 2052}));
    EXPECT_EQ(texts(2052),
              (std::vector<std::string>{
                  "Try to download segment " + server_.url(path(1)) + " failed, times : 1",
                  "Try to download segment " + server_.url(path(1)) + " failed, times : 2"}));
    EXPECT_EQ(output(kAdts), sample_text(0) + sample_text(1));
}

TEST_F(FetchedStream, SegmentThatFailsThreeTimesEndsTheStream) {
    server_.serve(path(1), std::vector<HttpReply>{});
    follow_address(playlist(3, "1"));
    EXPECT_EQ(result_, 0);
    EXPECT_TRUE(has_failed(status_));
    EXPECT_EQ(ids(), (Ids{2054, 2052, 2054, 2052, 2054, 2052, 4063}));
    EXPECT_EQ(server_.requests(path(1)), 3U);
    EXPECT_EQ(server_.requests(path(2)), 0U);
    EXPECT_EQ(output(kAdts), sample_text(0));
    EXPECT_EQ(files("tmp"), std::vector<std::string>{});
    EXPECT_FALSE(take_timing().empty());
}

TEST_F(FetchedStream, EachFailedTryIsFollowedByHalfTheDuration) {
    server_.serve(path(0), std::vector<HttpReply>{});
    for (const char* duration : {"2.5", "1.9", "7", "1000000", "x"}) {
        follow_address(std::string("#EXTINF:") + duration + ",\n0.ts\n");
    }
    // Whole seconds, behind the last try too, and no longer than an answer may take.
    EXPECT_EQ(TestClock::sleeps,
              (std::vector<std::uint32_t>{1, 1, 1, 0, 0, 0, 3, 3, 3, 300, 300, 300, 0, 0, 0}));
    TestClock::sleeps.clear();
    server_.serve("/a/init.mp4", std::vector<HttpReply>{});
    follow_address("#EXT-X-MAP:URI=\"init.mp4\"\n");
    EXPECT_EQ(TestClock::sleeps, (std::vector<std::uint32_t>{1, 1, 1})) << "without a duration";
}

TEST_F(FetchedStream, SegmentThatNeverEndsIsAFailedTry) {
    HttpReply stalled;
    stalled.body = "begin";
    stalled.stall = true;
    HttpReply whole;
    whole.body = ts_segment(sample_text(0));
    server_.serve(path(0), {stalled, whole});
    fetch_limits().timeout_seconds = 1;
    follow_address(playlist(1, "1") + "#EXT-X-ENDLIST\n");
    fetch_limits() = FetchLimits{};
    EXPECT_EQ(ids(), (Ids{2054, 2052}));
    EXPECT_NE(texts(2054).at(0).find("CURL error code: 28"), std::string::npos);
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(output(kAdts), sample_text(0));
    EXPECT_TRUE(files("tmp").empty());
}

TEST_F(FetchedStream, InitializationSectionIsTriedThreeTimes) {
    server_.serve("/a/init.mp4", {{.status = 404}, {.status = 503}, {.body = mp4_init()}});
    server_.serve("/a/0.m4s", mp4_segment(0));
    const std::string text = "#EXT-X-MAP:URI=\"init.mp4\"\n#EXTINF:1,\n0.m4s\n#EXT-X-ENDLIST\n";
    follow_address(text);
    EXPECT_EQ(ids(), (Ids{2054, 2052, 2054, 2052}));
    EXPECT_EQ(output("list_init_track_id_1.out.data"), sample_text(0));
    sink_.clear();
    server_.serve("/a/init.mp4", std::vector<HttpReply>{});
    follow_address(text);
    EXPECT_EQ(ids(), (Ids{2054, 2052, 2054, 2052, 2054, 2052, 4063}));
    EXPECT_TRUE(has_failed(status_));
    EXPECT_TRUE(files("tmp").empty());
}

TEST_F(FetchedStream, CopyThatCannotBeRemovedIsReported) {
    HttpReply second;
    second.body = ts_segment(sample_text(1));
    second.on_request = [] { remove_files("tmp", "segment"); };
    server_.serve(path(1), {second});
    follow_address(playlist(3, "1") + "#EXT-X-ENDLIST\n");
    // The copies of the first segment and of the second are gone; so the second can't be opened.
    EXPECT_EQ(ids(), (Ids{4063, 11}));
    EXPECT_TRUE(has_failed(status_));
    EXPECT_TRUE(texts(11).at(0).ends_with(" (" + server_.url(path(0)) + ")"));
    EXPECT_EQ(output(kAdts), sample_text(0));
}

TEST_F(FetchedStream, RedirectedSegmentsAreFollowedUpToTwentyTimes) {
    for (int i = 0; i < 21; ++i) {
        server_.serve("/r" + std::to_string(i),
                      {{.status = 302, .location = "/r" + std::to_string(i + 1)}});
    }
    server_.serve("/r21", ts_segment(sample_text(0)));
    follow_address("#EXTINF:1,\n../r1\n#EXT-X-ENDLIST\n");
    EXPECT_EQ(output(kAdts), sample_text(0));
    EXPECT_EQ(ids(), Ids{});
    follow_address("#EXTINF:1,\n../r0\n#EXT-X-ENDLIST\n");
    EXPECT_EQ(ids(), (Ids{2054, 2052, 2054, 2052, 2054, 2052, 4063}));
    EXPECT_NE(texts(2054).at(0).find("CURL error code: 47"), std::string::npos);
}

TEST_F(FetchedStream, ConnectionThatClosesEarlyIsAFailedTry) {
    HttpReply cut;
    cut.body = ts_segment(sample_text(0));
    cut.close_after = 100;
    HttpReply whole;
    whole.body = cut.body;
    server_.serve(path(0), {cut, whole});
    follow_address(playlist(1, "1") + "#EXT-X-ENDLIST\n");
    EXPECT_EQ(ids(), (Ids{2054, 2052}));
    EXPECT_EQ(output(kAdts), sample_text(0));
}

TEST_F(FetchedStream, WithoutTheTemporaryFolderNothingIsFetched) {
    std::filesystem::remove("tmp");
    follow("#EXTINF:1,\n" + server_.url(path(0)) + "\n", "list.m3u8");
    EXPECT_EQ(ids(), (Ids{2052, 2052, 2052, 4063}));
    EXPECT_TRUE(has_failed(status_));
}

TEST_F(FetchedStream, AddressTooLongForAFetchEndsTheStream) {
    follow_address("#EXTINF:1,\n" + std::string(2000, 'a') + ".ts\n");
    EXPECT_EQ(sink_.count(2052), 3U);
    EXPECT_EQ(sink_.count(4063), 1U);
    EXPECT_TRUE(has_failed(status_));
}

TEST_F(FetchedStream, WantedDurationEndsAFinishedPlaylist) {
    live_remaining_ = 10;
    follow_address(playlist(4, "5") + "#EXT-X-ENDLIST\n");
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(output(kAdts), sample_text(0) + sample_text(1));
    EXPECT_EQ(server_.requests(path(2)), 0U);
}

TEST_F(FetchedStream, WantedDurationDoesNotHoldForLocalPlaylists) {
    std::string text;
    for (int i = 0; i < 4; ++i) {
        text += "#EXTINF:5,\n" + server_.url(path(i)) + "\n";
    }
    follow(text, "list.m3u8");
    EXPECT_EQ(server_.requests(path(3)), 1U);
}

TEST_F(FetchedStream, GrowingPlaylistAsksForAReload) {
    follow_address(playlist(2, "1"));
    EXPECT_EQ(result_, 1);
    EXPECT_EQ(status_, Status::kOk);
    ASSERT_EQ(ids(), Ids{1024});
    EXPECT_EQ(texts(1024)[0].rfind(
                  "===========SUBPLAYLIST [URI: " + server_.url("/a/list.m3u8") + "] UPDATE(", 0),
              0U);
    EXPECT_DOUBLE_EQ(live_remaining_, 8.0);
    // The same segments are handled again, and what the job wrote is added to.
    follow_address(playlist(2, "1"));
    EXPECT_EQ(output(kAdts), sample_text(0) + sample_text(1) + sample_text(0) + sample_text(1));
    EXPECT_EQ(files("tmp"), std::vector<std::string>{});
}

TEST_F(FetchedStream, WaitLastsAtLeastASecond) {
    follow_address("#EXT-X-TARGETDURATION:60\n#EXTINF:1,\n0.ts\n");
    EXPECT_EQ(TestClock::sleeps, std::vector<std::uint32_t>{1});
    ASSERT_EQ(sink_.count(1024), 1U);
    EXPECT_NE(texts(1024)[0].find("UPDATE(1001 ms)"), std::string::npos);
}

TEST_F(FetchedStream, WaitIsWhatIsAheadOfTheTarget) {
    follow_address("#EXT-X-TARGETDURATION:1\n#EXTINF:2,\n0.ts\n#EXTINF:2,\n1.ts\n");
    // 4 s of media less 1 s, and one second more.
    EXPECT_NE(texts(1024).at(0).find("UPDATE(4000 ms)"), std::string::npos);
    EXPECT_EQ(TestClock::sleeps, std::vector<std::uint32_t>{4});
    // What the fetches took is waited for no more.
    HttpReply slow;
    slow.body = ts_segment(sample_text(0));
    slow.on_request = [] { TestClock::time += 2; };
    server_.serve(path(0), {slow});
    follow_address("#EXT-X-TARGETDURATION:1\n#EXTINF:2,\n0.ts\n#EXTINF:2.5,\n1.ts\n");
    EXPECT_NE(texts(1024).at(1).find("UPDATE(2500 ms)"), std::string::npos);
    EXPECT_EQ(TestClock::sleeps, (std::vector<std::uint32_t>{4, 2}));
}

TEST_F(FetchedStream, SpentDurationEndsTheNextRoundBehindItsFirstSlot) {
    live_remaining_ = 1.5;
    follow_address(playlist(1, "1"));
    EXPECT_EQ(result_, 1);
    EXPECT_DOUBLE_EQ(live_remaining_, 0.5);
    follow_address(playlist(2, "0.3"));
    EXPECT_EQ(result_, 0);  // 0.6 s are past what is left
    live_remaining_ = 0;
    const std::size_t before = server_.requests(path(1));
    follow_address(playlist(2, "0.3"));
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(server_.requests(path(1)), before);
}

TEST_F(FetchedStream, PlaylistWithoutMediaIsNotFollowedForEver) {
    live_remaining_ = 0.15;
    int rounds = 0;
    do {
        follow_address("#EXT-X-DISCONTINUITY-SEQUENCE:1\n#EXTINF:0,\n0.ts\n");
        ++rounds;
    } while (result_ == 1 && rounds < 5);
    EXPECT_EQ(rounds, 3);
}

TEST(SegmentSeconds, AreReadAsFarAsTheyAreANumber) {
    EXPECT_FLOAT_EQ(segment_seconds("2.5"), 2.5F);
    EXPECT_FLOAT_EQ(segment_seconds("3x"), 3.0F);
    EXPECT_FLOAT_EQ(segment_seconds(nullptr), 0.0F);
    EXPECT_FLOAT_EQ(segment_seconds("x"), 0.0F);
    EXPECT_FLOAT_EQ(segment_seconds("-1"), 0.0F);
    EXPECT_FLOAT_EQ(segment_seconds("nan"), 0.0F);
    EXPECT_FLOAT_EQ(segment_seconds("inf"), 0.0F);
    EXPECT_FLOAT_EQ(segment_seconds("1e30"), 1e9F);
}

}  // namespace
}  // namespace mediasplit
