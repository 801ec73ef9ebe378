#include "src/main/workers/timing_thread.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <thread>
#include <vector>

#include "src/main/workers/sync_table.h"
#include "src/records/run_options.h"
#include "src/records/segment_timing.h"
#include "src/util/segments.h"
#include "tests/support/recording_sink.h"
#include "tests/support/run_options_scope.h"

namespace mediasplit {
namespace {

using Ids = std::vector<int>;
using Durations = std::vector<double>;

const OsalContext kOsal{nullptr, cb_malloc, cb_free};

void send(List* list, double duration, std::uint32_t end = 0, float sample_duration = 0.02F) {
    auto record = std::make_unique<SegmentTiming>();
    record->duration = duration;
    record->end = end;
    record->sample_duration = sample_duration;
    bubbleSegment(list, record);
}

class Timing : public testing::Test {
protected:
    Timing() {
        g_checkpoint_list[0] = {"330000"};
        g_check_point_num = 1;
    }

    // One group whose streams have sent these durations and their end.
    void compare(const std::vector<Durations>& streams) {
        table_ = make_sync_table({static_cast<std::int32_t>(streams.size())});
        for (std::size_t i = 0; i < streams.size(); ++i) {
            List* const list = join_sync_group(table_, 1, "s" + std::to_string(i), kOsal);
            for (const double duration : streams[i]) {
                send(list, duration);
            }
            send(list, 7.0, 1);
        }
        EXPECT_EQ(IFrameThreadFunc(&table_), 0U);
    }

    RunOptionsScope scope_;
    RecordingSink sink_;
    SyncTable table_;
};

TEST_F(Timing, EqualDurationsPass) {
    compare({{2.0, 2.0}, {2.00009, 2.0}});
    EXPECT_EQ(sink_.ids(), Ids{});
    EXPECT_TRUE(sink_.was_evaluated(4109));
    EXPECT_TRUE(sink_.was_evaluated(2050));
    EXPECT_EQ(table_.status, Status::kOk);
}

TEST_F(Timing, DifferentDurationsOfAGroupAreReported) {
    compare({{2.0}, {2.0002}});
    ASSERT_EQ(sink_.ids(), Ids{4109});
    EXPECT_EQ(sink_.reports()[0].text,
              "The corresponding segment durations are different between [sub-playlist : s0] and "
              "[sub-playlist : s1].");
    EXPECT_EQ(table_.status, Status::kRuleBroken);
}

TEST_F(Timing, EachPairIsCompared) {
    compare({{2.0}, {3.0}, {4.0}});
    EXPECT_EQ(sink_.ids(), (Ids{4109, 4109, 4109}));
}

TEST_F(Timing, ChangingDurationOfAStreamIsReported) {
    compare({{2.0, 2.02, 1.9}});
    ASSERT_EQ(sink_.ids(), Ids{2050});
    EXPECT_NE(sink_.reports()[0].text.find("[sub-playlist : s0]"), std::string::npos);
    EXPECT_EQ(table_.status, Status::kOk);
}

TEST_F(Timing, DurationBehindAnEmptySegmentIsNotCompared) {
    compare({{0.0, 2.0, 2.0}});
    EXPECT_EQ(sink_.ids(), Ids{});
}

TEST_F(Timing, ManifestMessagesNameRepresentations) {
    g_file_format = FormatId::kDash;
    compare({{2.0, 3.0}, {2.5, 3.0}});
    EXPECT_EQ(sink_.ids(), (Ids{4110, 2051, 2051}));
    EXPECT_NE(sink_.reports()[0].text.find("Representation[id : s0]"), std::string::npos);
}

TEST_F(Timing, LastRecordIsComparedWithNothing) {
    compare({{2.0}, {2.0, 2.0}});  // the last record says 7.0
    EXPECT_EQ(sink_.ids(), Ids{});
}

TEST_F(Timing, RecordWithoutTimingEndsAStream) {
    table_ = make_sync_table({2});
    List* const first = join_sync_group(table_, 1, "a", kOsal);
    List* const second = join_sync_group(table_, 1, "b", kOsal);
    send(first, -1.0);
    send(first, 9.0);  // behind the end
    send(second, 2.0);
    send(second, -1.0, 1);
    (void)IFrameThreadFunc(&table_);
    EXPECT_EQ(sink_.ids(), Ids{});
}

TEST_F(Timing, StreamsThatNeverStartedAreFinished) {
    table_ = make_sync_table({3, 2});
    send(join_sync_group(table_, 1, "a", kOsal), 2.0, 1);
    (void)IFrameThreadFunc(&table_);
    EXPECT_EQ(table_.status, Status::kOk);
}

TEST_F(Timing, TableWithoutGroupsEndsAtOnce) {
    (void)IFrameThreadFunc(&table_);
    EXPECT_EQ(table_.status, Status::kOk);
}

TEST_F(Timing, GroupsAreComparedByThemselves) {
    table_ = make_sync_table({1, 1});
    List* const first = join_sync_group(table_, 1, "a", kOsal);
    List* const second = join_sync_group(table_, 2, "b", kOsal);
    for (const double duration : {2.0, 2.0}) {
        send(first, duration);
        send(second, duration + 1);
    }
    send(first, -1.0);
    send(second, -1.0);
    (void)IFrameThreadFunc(&table_);
    EXPECT_EQ(sink_.ids(), Ids{});
}

TEST_F(Timing, RecordsThatComeWhileTheThreadRunsAreAllCompared) {
    constexpr int kStreams = 8;
    constexpr int kSegments = 50;
    table_ = make_sync_table({kStreams});
    std::vector<List*> lists;
    for (int i = 0; i < kStreams; ++i) {
        lists.push_back(join_sync_group(table_, 1, "s" + std::to_string(i), kOsal));
    }
    std::vector<std::thread> workers;
    for (int i = 0; i < kStreams; ++i) {
        workers.emplace_back([list = lists[static_cast<std::size_t>(i)], i] {
            for (int n = 0; n < kSegments; ++n) {
                send(list, i == 3 && n == 20 ? 2.5 : 2.0);
            }
            send(list, -1.0);
        });
    }
    (void)IFrameThreadFunc(&table_);
    for (std::thread& worker : workers) {
        worker.join();
    }
    const Ids ids = sink_.ids();
    EXPECT_EQ(std::count(ids.begin(), ids.end(), 4109), kStreams - 1);
    EXPECT_EQ(std::count(ids.begin(), ids.end(), 2050), 2);
}

TEST(SyncTable, GroupTakesAsManyStreamsAsItHolds) {
    SyncTable table = make_sync_table({1, 2});
    EXPECT_EQ(table.group_count, 2);
    EXPECT_EQ(join_sync_group(table, 0, "a", kOsal), nullptr);
    EXPECT_EQ(join_sync_group(table, 3, "a", kOsal), nullptr);
    EXPECT_NE(join_sync_group(table, 1, "a", kOsal), nullptr);
    EXPECT_EQ(join_sync_group(table, 1, "b", kOsal), nullptr);
    EXPECT_EQ(table.groups[0].filled, 1);
    EXPECT_EQ(table.groups[0].urls[0], "a");
    EXPECT_EQ(join_sync_group(table, 2, "a", OsalContext{}), nullptr);
    EXPECT_EQ(table.groups[1].filled, 0);
}

TEST(SyncTable, RecordsLeftInAListGoWithIt) {
    SyncTable table = make_sync_table({1});
    List* const list = join_sync_group(table, 1, "a", kOsal);
    send(list, 1.0);
    send(list, 2.0);
    EXPECT_EQ(list->count, 2U);  // the leak check sees whether they are freed
}

}  // namespace
}  // namespace mediasplit
