// Dates of manifests and of HTTP headers as points in time.
#pragma once

#include <cstdint>

#include "src/util/opt_text.h"

namespace mediasplit {

// A date by its parts, as written in UTC.
struct BrokenDownTime {
    std::int64_t year = 1970;
    std::int64_t month = 1;  // from 1
    std::int64_t day = 1;    // from 1
    std::int64_t hour = 0;
    std::int64_t minute = 0;
    std::int64_t second = 0;
};

// Whether the year has a 29 February in the Gregorian calendar.
bool leap_year(std::int64_t year);

// Seconds since 1970-01-01. Years up to 1970 count no days.
std::int64_t mktime_utc(const BrokenDownTime& time);

// Milliseconds since 1970-01-01 of a date in one of six forms (ISO 8601 with "Z", "-hh:mm" or
// "+hh:mm"; RFC 1123, RFC 850 and asctime() dates). -1 for any other text, 1 for the start of
// 1970-01-01 and for the second ahead of it.
// Deliberate: an offset of "+hh:mm" is added and one of "-hh:mm" is taken away.
std::int64_t net_parse_date(OptText text);

}  // namespace mediasplit
