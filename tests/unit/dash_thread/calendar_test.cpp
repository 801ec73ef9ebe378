#include "src/dash_thread/calendar.h"

#include <gtest/gtest.h>

namespace mediasplit {
namespace {

// 1994-11-06T08:49:37Z by the example of RFC 9110 5.6.7, as "date -d" tells it.
constexpr std::int64_t kExample = 784111777000;

TEST(ParseDate, EachFormIsRead) {
    EXPECT_EQ(net_parse_date("1994-11-06T08:49:37Z"), kExample);
    EXPECT_EQ(net_parse_date("Sun, 06 Nov 1994 08:49:37 GMT"), kExample);
    EXPECT_EQ(net_parse_date("Wednesday, 09-Nov-94 08:49:37 GMT"), kExample + 3 * 86400000);
    EXPECT_EQ(net_parse_date("Sun Nov  6 08:49:37 1994"), kExample);
}

TEST(ParseDate, ShorterDayNameTakesItsCommaAlong) {
    EXPECT_EQ(net_parse_date("Sunday, 06-Nov-94 08:49:37 GMT"), -1);
}

TEST(ParseDate, FractionGivesMilliseconds) {
    EXPECT_EQ(net_parse_date("1994-11-06T08:49:37.25Z"), kExample + 250);
    EXPECT_EQ(net_parse_date("1994-11-06T08:49:37.9999Z"), kExample + 999);
}

TEST(ParseDate, OffsetsAreAppliedInReverse) {
    EXPECT_EQ(net_parse_date("1994-11-06T08:49:37+01:30"), kExample + 5400000);
    EXPECT_EQ(net_parse_date("1994-11-06T08:49:37-01:30"), kExample - 5400000);
}

TEST(ParseDate, UtcFormEndsWithItsLetterOrTheText) {
    EXPECT_EQ(net_parse_date("1994-11-06T08:49:37"), kExample);
    EXPECT_EQ(net_parse_date("1994-11-06T08:49:37X"), -1);
    EXPECT_EQ(net_parse_date("1994-11-06T08:49:37+01"), -1);
}

TEST(ParseDate, OtherTextsAreNoDates) {
    for (const char* text : {"", "1994", "1994-11-06", "1994-11-06T08:49", "yesterday", "Sun, ",
                             "T::Z", "--T::Z", "1994-11-06 08:49:37Z"}) {
        EXPECT_EQ(net_parse_date(text), -1) << text;
    }
    EXPECT_EQ(net_parse_date(nullptr), -1);
}

TEST(ParseDate, UnknownMonthNameIsJanuary) {
    EXPECT_EQ(net_parse_date("Sun, 06 Xyz 1994 00:00:00"), 757814400000);
    EXPECT_EQ(net_parse_date("1994-00-06T00:00:00Z"), 757814400000);
}

TEST(ParseDate, YearsUpTo1000CountFrom1900) {
    EXPECT_EQ(net_parse_date("94-11-06T08:49:37Z"), kExample);
    EXPECT_EQ(net_parse_date("Sun Nov  6 08:49:37 94"), kExample);
}

TEST(ParseDate, StartOfTheEpochGivesOneMillisecond) {
    EXPECT_EQ(net_parse_date("1970-01-01T00:00:00Z"), 1);
    EXPECT_EQ(net_parse_date("1970-01-01T00:00:00+05:00"), 1);
    EXPECT_EQ(net_parse_date("1970-01-01T00:00:01Z"), 1000);
}

TEST(ParseDate, HugeNumbersStayNumbers) {
    const std::string nines(400, '9');
    const std::string date = nines + "-" + nines + "-" + nines + "T" + nines + ":" + nines + ":";
    EXPECT_GT(net_parse_date(date + nines + "Z"), 0);
    EXPECT_GT(net_parse_date(date + nines + "+" + nines + ":" + nines), 0);
    (void)net_parse_date("-" + date + "-" + nines + "Z");
}

TEST(ParseDate, CutDatesAreHarmless) {
    const std::string date = "1994-11-06T08:49:37.5+01:30";
    for (std::size_t size = 0; size < date.size(); ++size) {
        (void)net_parse_date(date.substr(0, size));
    }
}

TEST(Calendar, LeapYearsAreGregorian) {
    EXPECT_TRUE(leap_year(1996));
    EXPECT_TRUE(leap_year(2000));
    EXPECT_FALSE(leap_year(1900));
    EXPECT_FALSE(leap_year(2023));
    EXPECT_EQ(mktime_utc({2000, 3, 1, 0, 0, 0}) - mktime_utc({2000, 2, 28, 0, 0, 0}), 2 * 86400);
    EXPECT_EQ(mktime_utc({2100, 3, 1, 0, 0, 0}) - mktime_utc({2100, 2, 28, 0, 0, 0}), 86400);
    EXPECT_EQ(mktime_utc({2026, 1, 1, 0, 0, 0}), 1767225600);
}

TEST(Calendar, YearsUpTo1970CountNoDays) {
    EXPECT_EQ(mktime_utc({1960, 1, 2, 0, 0, 0}), 86400);
    EXPECT_EQ(mktime_utc({1970, 1, 2, 0, 0, 0}), 86400);
}

}  // namespace
}  // namespace mediasplit
