#include "src/dash_reader/segment_timeline.h"

#include <gtest/gtest.h>

#include "tests/support/mpd_reading.h"

namespace mediasplit {
namespace {

constexpr std::uint64_t kAllOnes = ~std::uint64_t{0};

std::vector<std::uint64_t> entries(const std::string& text) {
    const EzxmlPtr root = ezxml_parse_str("<SegmentTimeline>" + text + "</SegmentTimeline>");
    SegmentTimeline timeline;
    std::uint64_t next_t = 0;
    read_segment_timeline(root.get(), timeline, next_t);
    std::vector<std::uint64_t> result;
    for (std::uint64_t i = 0; i < timeline.size(); ++i) {
        result.push_back(timeline.at(i));
    }
    return result;
}

using Times = std::vector<std::uint64_t>;

TEST(SegmentTimeline, ContinuesWhereTheLastEntryEnds) {
    EXPECT_EQ(entries("<S d='10' r='2'/><S d='5'/>"), (Times{0, 10, 20, 30}));
    EXPECT_EQ(entries("<S t='100' d='10'/><S d='10'/>"), (Times{100, 110}));
    EXPECT_EQ(entries("<S t='5' d='1'/><S t='3' d='1'/><S/>"), (Times{5, 3, 4}));
    EXPECT_EQ(entries(""), Times{});
}

TEST(SegmentTimeline, TakesANegativeRepeatAsNone) {
    EXPECT_EQ(entries("<S d='10' r='-1'/><S d='5'/>"), (Times{0, 10}));
}

TEST(SegmentTimeline, TakesNumbersModulo64Bits) {
    EXPECT_EQ(entries("<S t='18446744073709551615' d='2'/><S/>"), (Times{kAllOnes, 1}));
    EXPECT_EQ(entries("<S t='18446744073709551617' d='1'/>"), Times{1});
}

TEST(SegmentTimeline, CutsRepeatsOf64Bits) {
    SegmentTimeline timeline;
    timeline.append(7, 2, kAllOnes);
    EXPECT_EQ(timeline.size(), kMostTimelineEntries);
    EXPECT_EQ(timeline.at(kMostTimelineEntries - 1), 7 + 2 * (kMostTimelineEntries - 1));
    timeline.append(7, 2, 5);
    EXPECT_EQ(timeline.size(), kMostTimelineEntries);
}

TEST(SegmentTimeline, FindsTheFirstEntryNotBeforeATime) {
    SegmentTimeline timeline;
    timeline.append(0, 10, 2);   // 0 10 20
    timeline.append(100, 0, 1);  // 100 100
    timeline.append(50, 5, 3);   // 50 55 60 65
    const auto plain_scan = [&timeline](std::uint64_t from, std::uint64_t time) {
        while (from < timeline.size() && timeline.at(from) < time) {
            ++from;
        }
        return from;
    };
    for (std::uint64_t from = 0; from <= timeline.size(); ++from) {
        for (std::uint64_t time = 0; time < 120; ++time) {
            EXPECT_EQ(timeline.find_from(from, time), plain_scan(from, time))
                << from << " " << time;
        }
    }
    EXPECT_EQ(timeline.find_from(100, 0), timeline.size());
    EXPECT_EQ(SegmentTimeline{}.find_from(0, 0), 0U);
}

}  // namespace
}  // namespace mediasplit
