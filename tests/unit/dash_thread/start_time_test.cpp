#include "src/dash_thread/start_time.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

using Ids = std::vector<int>;

class StartTime : public testing::Test {
protected:
    StartTime() {
        player_.url = "http://127.0.0.1/stream.mpd";
        player_.type = "dynamic";
        player_.availabilityStartTime = "2026-01-01T00:00:00Z";
        player_.reload_count = &reloads_;
    }
    std::uint64_t offset() { return get_timeoffset(player_, nullptr); }

    RecordingSink sink_;
    DashPlayer player_;
    std::int32_t reloads_ = 0;
};

TEST_F(StartTime, LocalManifestStartsAtItsStart) {
    player_.url = "stream.mpd";
    player_.publishTime = "2026-01-01T00:01:00Z";
    EXPECT_EQ(offset(), 0U);
    EXPECT_EQ(sink_.ids(), Ids{});
}

TEST_F(StartTime, WallClockOfTheManifestGoesFirst) {
    player_.utc_timing_value = "2026-01-01T00:00:42.9Z";
    player_.publishTime = "2026-01-01T00:01:00Z";
    EXPECT_EQ(offset(), 42U);
    ASSERT_EQ(sink_.ids(), Ids{1026});
    EXPECT_EQ(sink_.reports()[0].text,
              "For the live streaming, the validation starts at : 2026-01-01T00:00:42.9Z.");
}

TEST_F(StartTime, PublishTimeIsTheClockWithoutOne) {
    player_.utc_timing_value = "";
    player_.publishTime = "2026-01-01T00:01:00Z";
    EXPECT_EQ(offset(), 60U);
    EXPECT_EQ(sink_.ids(), Ids{1026});
}

TEST_F(StartTime, StaticManifestTellsNothing) {
    player_.type = "static";
    player_.publishTime = "2026-01-01T00:01:00Z";
    EXPECT_EQ(offset(), 60U);
    player_.utc_timing_value = "2026-01-01T00:00:42Z";
    EXPECT_EQ(offset(), 42U);
    player_.availabilityStartTime.reset();
    EXPECT_EQ(offset(), 0U);
    EXPECT_EQ(sink_.ids(), Ids{});
}

TEST_F(StartTime, ReloadsMoveTheStartOnByTheUpdatePeriod) {
    player_.publishTime = "2026-01-01T00:01:00Z";
    player_.minimum_update_period_ms = 2500;
    EXPECT_EQ(offset(), 60U);
    reloads_ = 3;
    EXPECT_EQ(offset(), 67U);
    EXPECT_EQ(sink_.ids(), Ids{1026});
    player_.publishTime = "soon";
    EXPECT_EQ(offset(), 7U);
    player_.minimum_update_period_ms = kNoTime;
    player_.publishTime = "2026-01-01T00:01:00Z";
    EXPECT_EQ(offset(), 60U);
}

TEST_F(StartTime, UnparsableDateGivesTheStart) {
    player_.publishTime = "soon";
    EXPECT_EQ(offset(), 0U);
    player_.utc_timing_value = "now";
    EXPECT_EQ(offset(), 0U);
    EXPECT_EQ(sink_.ids(), (Ids{1026, 1026}));
}

TEST_F(StartTime, PublishTimeAheadOfTheStartGivesTheStart) {
    player_.publishTime = "2025-12-31T00:00:00Z";
    EXPECT_EQ(offset(), 0U);
    player_.minimum_update_period_ms = 1000;
    reloads_ = 1;
    EXPECT_EQ(offset(), 0U);
}

TEST_F(StartTime, DynamicManifestWithoutTimesIsTold) {
    EXPECT_EQ(offset(), 0U);
    ASSERT_EQ(sink_.ids(), Ids{1027});
    EXPECT_EQ(sink_.reports()[0].text,
              "For the live streaming, there is neither wall-clock nor start time.");
    player_.publishTime = "2026-01-01T00:01:00Z";
    player_.availabilityStartTime.reset();
    EXPECT_EQ(offset(), 0U);
    EXPECT_EQ(sink_.ids(), (Ids{1027, 1027}));
}

}  // namespace
}  // namespace mediasplit
