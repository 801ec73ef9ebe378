#include "src/tsTableParse/segment_timing.h"

#include <gtest/gtest.h>

#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

TsSegmentSummary summary(std::int64_t audio_first, std::int64_t audio_end, std::int64_t video_first,
                         std::int64_t video_end, std::uint32_t type = 0x87) {
    TsSegmentSummary result;
    result.count = 1;
    result.audio[0] = {type, audio_first, audio_end};
    result.first_video_pts = video_first;
    result.video_end_pts = video_end;
    return result;
}

std::vector<int> compare(const TsSegmentSummary& previous, const TsSegmentSummary& current) {
    RecordingSink sink;
    (void)check_segment_timing(previous, current, nullptr);
    return sink.ids();
}

using Ids = std::vector<int>;

const TsSegmentSummary kPrevious = summary(1000, 181000, 1000, 181000);

TEST(SegmentTiming, EqualOffsetsPass) {
    EXPECT_EQ(compare(kPrevious, summary(181000, 361000, 181000, 361000)), Ids{});
}

TEST(SegmentTiming, AudioAheadOfVideoEndsTheComparison) {
    EXPECT_EQ(compare(kPrevious, summary(180999, 361000, 181000, 361000)), Ids{4106});
}

TEST(SegmentTiming, OffsetAboveTheLimitIsReported) {
    const TsSegmentSummary before = summary(0, 183879, 0, 181000);
    EXPECT_EQ(compare(before, summary(183879, 0, 181000, 0)), Ids{});
    const TsSegmentSummary far = summary(0, 183880, 0, 181000);
    EXPECT_EQ(compare(far, summary(183880, 0, 181000, 0)), Ids{4107});
}

TEST(SegmentTiming, GrowingOffsetIsReportedAndShrinkingOneIsNot) {
    EXPECT_EQ(compare(kPrevious, summary(181001, 0, 181000, 0)), Ids{});
    EXPECT_EQ(compare(kPrevious, summary(181002, 0, 181000, 0)), Ids{4108});
    const TsSegmentSummary before = summary(0, 181500, 0, 181000);
    EXPECT_EQ(compare(before, summary(181000, 0, 181000, 0)), Ids{});
}

TEST(SegmentTiming, OnlyEac3IsCompared) {
    EXPECT_EQ(compare(kPrevious, summary(0, 0, 181000, 0, 0x0F)), Ids{});
    TsSegmentSummary other = kPrevious;
    other.audio[0].stream_type = 0x81;
    EXPECT_EQ(compare(other, summary(181900, 0, 181000, 0)), Ids{});
}

TEST(SegmentTiming, NothingIsComparedWithoutVideoTimes) {
    EXPECT_EQ(compare(summary(0, 0, -1, 0), summary(0, 0, 181000, 0)), Ids{});
    EXPECT_EQ(compare(kPrevious, summary(-5, 0, -1, 0)), Ids{});
}

}  // namespace
}  // namespace mediasplit
