// Presentations that are loaded anew.
#include "tests/unit/dash_thread/dash_run.h"

namespace mediasplit {
namespace {

using Sleeps = std::vector<std::uint32_t>;

const std::string kLive =
    R"(type="dynamic" minimumUpdatePeriod="PT4S" availabilityStartTime="2026-01-01T00:00:00Z" )";

class Live : public DashRun {
protected:
    static std::string live(const std::string& second) {
        return manifest(kLive + "publishTime=\"2026-01-01T00:00:" + second + "Z\"", "", kNumbers);
    }
};

TEST_F(Live, UpdatePeriodPlayedAsksForAReload) {
    add_segments(9);
    play_address(live("00"));
    EXPECT_EQ(result_, 1);
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(output(), samples(1, 2));
    EXPECT_EQ(ids(), (Ids{1026, 1023}));
    EXPECT_EQ(texts(1023)[0],
              "===========MANIFEST REPRESENTATION [id: r] UPDATE(4000 ms)===========");
    EXPECT_EQ(TestClock::sleeps, Sleeps{4});
    EXPECT_DOUBLE_EQ(live_remaining_, 6.0);
    EXPECT_EQ(reload_count_, 1);
    EXPECT_EQ(previous_publish_time_, "2026-01-01T00:00:00Z");
    const auto timing = take_timing();
    ASSERT_EQ(timing.size(), 2U);
    EXPECT_EQ(timing[1].end, 0U);
}

TEST_F(Live, ReloadWithoutNewsMovesTheStartByTheUpdatePeriod) {
    add_segments(9);
    play_address(live("00"));
    play_address(live("00"));
    EXPECT_EQ(reload_count_, 2);
    EXPECT_EQ(output(), samples(1, 4));
    EXPECT_EQ(server_.requests("/init.mp4"), 2U);
    EXPECT_EQ(server_.requests("/s2.mp4"), 1U);
}

TEST_F(Live, NewPublishTimeRestartsTheClock) {
    add_segments(9);
    play_address(live("00"));
    play_address(live("10"));
    EXPECT_EQ(reload_count_, 1);
    EXPECT_EQ(output(), samples(1, 2) + samples(6, 7));
    EXPECT_EQ(previous_publish_time_, "2026-01-01T00:00:10Z");
}

TEST_F(Live, WantedDurationIsUsedUpByReloads) {
    add_segments(11);
    // 4 s are taken off twice; of the last 2 s the first segment fills all.
    EXPECT_EQ(play_to_the_end(live("00")), 3);
    EXPECT_EQ(output(), samples(1, 5));
    EXPECT_EQ(sink_.count(1023), 2U);
    EXPECT_EQ(sink_.count(1026), 1U);
    EXPECT_EQ(result_, 0);
    const auto timing = take_timing();
    ASSERT_EQ(timing.size(), 5U);
    for (std::size_t i = 0; i < timing.size(); ++i) {
        EXPECT_EQ(timing[i].end, i == 4 ? 1U : 0U);
    }
}

TEST_F(Live, NoWantedDurationEndsBehindOneSegment) {
    add_segments(5);
    live_remaining_ = 0;
    EXPECT_EQ(play_to_the_end(live("00")), 1);
    EXPECT_EQ(output(), samples(1, 1));
    EXPECT_EQ(sink_.count(1023), 0U);
}

TEST_F(Live, StepPastTheWantedDurationEndsBehindTheWait) {
    add_segments(5);
    // The segment of 2 s leaves the test of 2.9 s open, and the period of 2 s is played.
    live_remaining_ = 2.9;
    const std::string mpd = manifest(
        R"(type="dynamic" minimumUpdatePeriod="PT2S" availabilityStartTime="2026-01-01T00:00:00Z")",
        "", kNumbers);
    EXPECT_EQ(play_to_the_end(mpd), 2);
    EXPECT_EQ(output(), samples(1, 1) + samples(1, 1));
    EXPECT_EQ(sink_.count(1027), 2U);
    EXPECT_NEAR(live_remaining_, 0.9, 1e-9);
    EXPECT_EQ(take_timing().back().end, 1U);
}

TEST_F(Live, AbsentUpdatePeriodPlaysTheWantedDurationInOneReading) {
    add_segments(9);
    EXPECT_EQ(
        play_to_the_end(manifest(R"(type="dynamic" minimumUpdatePeriod="PT0S")", "", kNumbers)), 1);
    EXPECT_EQ(output(), samples(1, 5));
    EXPECT_EQ(ids(), Ids{1027});
}

TEST_F(Live, StaticManifestBehindAnAddressIsPlayedAsAWhole) {
    add_segments(9);
    EXPECT_EQ(play_to_the_end(manifest("", R"(duration="PT16S")", kNumbers)), 1);
    EXPECT_EQ(output(), samples(1, 8));
    EXPECT_EQ(ids(), Ids{});
}

TEST_F(Live, TimePassedIsTakenOffTheWait) {
    add_segments(3);
    server_.serve("/s2.mp4", {{.status = 404}, {.body = mp4_segment(2)}});
    play_address(live("00"));
    EXPECT_EQ(ids(), (Ids{1026, 2052, 1023}));
    EXPECT_NE(texts(1023)[0].find("UPDATE(2000 ms)"), std::string::npos);
    EXPECT_EQ(TestClock::sleeps, (Sleeps{2, 2}));
}

TEST_F(Live, WaitThatIsOverIsToldAsOneMillisecond) {
    add_segments(3);
    server_.serve("/s1.mp4", {{.status = 404}, {.status = 404}, {.body = mp4_segment(1)}});
    play_address(live("00"));
    EXPECT_NE(texts(1023)[0].find("UPDATE(1 ms)"), std::string::npos);
    EXPECT_EQ(TestClock::sleeps, (Sleeps{2, 2, 0}));
    EXPECT_EQ(result_, 1);
}

TEST_F(Live, TimelineThatRunsDryIsLoadedAgain) {
    add_segments(4);
    const auto timeline = [](const std::string& more) {
        return manifest(kLive + R"(publishTime="2026-01-01T00:00:00Z")", "",
                        R"(<SegmentTemplate initialization="init.mp4" media="s$Number$.mp4">
            <SegmentTimeline><S t="0" d="2"/>)" +
                            more + "</SegmentTimeline></SegmentTemplate>");
    };
    play_address(timeline(""));
    EXPECT_EQ(result_, 1);
    EXPECT_EQ(output(), samples(1, 1));
    EXPECT_DOUBLE_EQ(live_remaining_, 8.0);
    EXPECT_EQ(ids(), (Ids{1026, 1023}));
    // 4 s behind the start: the third entry.
    play_address(timeline(R"(<S d="2" r="2"/>)"));
    EXPECT_EQ(output(), samples(1, 1) + samples(3, 4));
    EXPECT_EQ(result_, 1);
}

TEST_F(Live, PresentationThatStandsStillEnds) {
    add("init.mp4", init_segment());
    live_remaining_ = 0.5;
    const std::string mpd = manifest(
        R"(type="dynamic")", "",
        R"(<SegmentTemplate initialization="init.mp4" media="s$Number$.mp4"><SegmentTimeline/></SegmentTemplate>)");
    EXPECT_EQ(play_to_the_end(mpd), 6);
    EXPECT_DOUBLE_EQ(take_timing().back().duration, -1.0);
}

TEST_F(Live, SegmentThatIsNotThereYetEndsTheWalk) {
    add_segments(1);
    play_address(live("00"));
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(ids(), (Ids{1026, 2052, 2052, 2052, 2009}));
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(take_timing().back().end, 1U);
}

TEST_F(Live, ManifestThatCannotBeParsedOnReloadFails) {
    add_segments(9);
    play_address(live("00"));
    EXPECT_EQ(status_, Status::kOk);
    (void)take_timing();
    play_address("");
    EXPECT_EQ(result_, 0);
    EXPECT_TRUE(has_failed(status_));
    EXPECT_EQ(ids().back(), 4026);
    const auto timing = take_timing();
    ASSERT_EQ(timing.size(), 1U);
    EXPECT_DOUBLE_EQ(timing[0].duration, -1.0);
    EXPECT_EQ(timing[0].end, 1U);
}

TEST_F(Live, StartOfAPeriodInMillisecondsIsAddedToTheSecondsOfTheClock) {
    add_segments(7);
    // 6 and 4 make 10, the start of the sixth segment.
    play_address(
        manifest(kLive + R"(publishTime="2026-01-01T00:00:06Z")", R"(start="PT0.004S")", kNumbers));
    EXPECT_EQ(output(), samples(6, 7));
}

TEST_F(Live, ClockOfTheManifestGoesAheadOfItsPublishTime) {
    add_segments(5);
    const auto with_clock = [](const std::string& scheme) {
        return "<MPD " + kLive + R"(publishTime="2026-01-01T00:00:00Z"><UTCTiming schemeIdUri=")" +
               scheme + R"(" value="2026-01-01T00:00:06Z"/><Period><AdaptationSet>)" +
               R"(<Representation id="r" bandwidth="1">)" + kNumbers +
               "</Representation></AdaptationSet></Period></MPD>";
    };
    play_address(with_clock("urn:mpeg:dash:utc:direct:2014"));
    EXPECT_EQ(output(), samples(4, 5));
    EXPECT_NE(texts(1026)[0].find("starts at : 2026-01-01T00:00:06Z."), std::string::npos);
    // It stands still whatever the count of reloads.
    play_address(with_clock("urn:mpeg:dash:utc:direct:2014"));
    EXPECT_EQ(output(), samples(4, 5) + samples(4, 5));
    reload_count_ = 0;
    live_remaining_ = 10;
    play_address(with_clock("urn:mpeg:dash:utc:http-iso:2014"));
    EXPECT_EQ(output(), samples(4, 5) + samples(4, 5) + samples(1, 2));
    EXPECT_EQ(sink_.count(2010), 0U);
}

TEST_F(Live, ListsAreNotLoadedAnew) {
    add_segments(2);
    const std::string list =
        R"(<SegmentList><Initialization sourceURL="init.mp4"/><SegmentURL media="s1.mp4"/>)"
        R"(<SegmentURL media="s2.mp4"/></SegmentList>)";
    EXPECT_EQ(play_to_the_end(manifest(kLive, R"(duration="PT60S")", list)), 1);
    EXPECT_EQ(output(), samples(1, 2));
    EXPECT_EQ(sink_.count(1023), 0U);
}

TEST_F(Live, RepresentationThatIsGoneFromTheNextReadingFails) {
    add_segments(9);
    play_address(live("00"));
    (void)take_timing();
    representation_ = "gone";
    play_address(live("00"));
    EXPECT_EQ(result_, 0);
    EXPECT_TRUE(has_failed(status_));
    EXPECT_EQ(ids().back(), 3006);
    const auto timing = take_timing();
    ASSERT_EQ(timing.size(), 1U);
    EXPECT_DOUBLE_EQ(timing[0].duration, -1.0);
    EXPECT_EQ(timing[0].end, 1U);
}

TEST_F(Live, UpdatePeriodsCountTowardsTheDurationOfThePeriod) {
    add_segments(9);
    live_remaining_ = 100;
    const std::string mpd =
        manifest(kLive + R"(publishTime="2026-01-01T00:00:00Z")", R"(duration="PT10S")", kNumbers);
    EXPECT_EQ(play_to_the_end(mpd), 3);
    EXPECT_EQ(output(), samples(1, 5));
}

}  // namespace
}  // namespace mediasplit
