#include "src/util/segments.h"

#include <gtest/gtest.h>

#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

class TimingListTest : public testing::Test {
protected:
    TimingListTest() {
        osal_init(&osal_);
        const OsalContext callbacks{nullptr, cb_malloc, cb_free};
        osal_register_callbacks(&osal_, &callbacks);
    }
    void create(std::uint32_t max_size) {
        const ListParams params{&osal_, max_size};
        ASSERT_EQ(list_create(&list_, &params), kListOk);
        const ListCallbacks callbacks{cb_malloc, cb_free, nullptr, nullptr};
        ASSERT_EQ(list_register_callbacks(&list_, &callbacks), kListOk);
    }
    static std::unique_ptr<SegmentTiming> timing(double duration) {
        auto record = std::make_unique<SegmentTiming>();
        record->duration = duration;
        return record;
    }

    OsalContext osal_;
    List list_;
};

TEST_F(TimingListTest, RecordsGoToTheTailAndComeFromTheHead) {
    create(0);
    auto first = timing(1);
    auto second = timing(2);
    bubbleSegment(&list_, first);
    bubbleSegment(&list_, second);
    EXPECT_FALSE(first);
    EXPECT_EQ(take_segment_timing(&list_)->duration, 1);
    EXPECT_EQ(take_segment_timing(&list_)->duration, 2);
    EXPECT_FALSE(take_segment_timing(&list_));
    EXPECT_EQ(list_destroy(&list_), kListOk);
}

TEST_F(TimingListTest, WithoutAListTheRecordIsFreed) {
    auto record = timing(1);
    bubbleSegment(nullptr, record);
    EXPECT_FALSE(record);
    bubbleSegment(nullptr, record);
    EXPECT_FALSE(take_segment_timing(nullptr));
}

TEST_F(TimingListTest, FullListFreesTheRecord) {
    create(1);
    auto first = timing(1);
    auto second = timing(2);
    bubbleSegment(&list_, first);
    bubbleSegment(&list_, second);
    EXPECT_FALSE(second);
    EXPECT_EQ(list_.count, 1U);
    EXPECT_EQ(take_segment_timing(&list_)->duration, 1);
    EXPECT_EQ(list_destroy(&list_), kListOk);
}

TEST(SegmentUrl, IsRaisedAsMessage3IfThereIsOne) {
    const RecordingSink sink;
    SegmentSlot slot;
    EXPECT_EQ(safe_output_segment_url(&slot, nullptr), Status::kOk);
    EXPECT_EQ(safe_output_segment_url(nullptr, nullptr), Status::kOk);
    EXPECT_EQ(sink.count(3), 0U);
    slot.uri = "http://h/s.mp4";
    EXPECT_EQ(safe_output_segment_url(&slot, nullptr), Status::kOk);
    ASSERT_EQ(sink.count(3), 1U);
    EXPECT_EQ(sink.reports()[0].text, "http://h/s.mp4:");
}

}  // namespace
}  // namespace mediasplit
