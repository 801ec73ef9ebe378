#include "src/dash_thread/calendar.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "base/ascii.h"
#include "src/util/text.h"

namespace mediasplit {
namespace {

constexpr std::int64_t kLargestNumber = 0x7FFFFFFF;

bool is_space(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// What a date form reads.
struct DateFields {
    BrokenDownTime time{0, 0, 0, 0, 0, 0};
    double seconds = 0;
    std::int64_t offset_hours = 0;
    std::int64_t offset_minutes = 0;
    std::string_view month_name;
};

// Reads a date piece by piece; once a piece doesn't fit, nothing fits any more.
class DateScanner {
public:
    explicit DateScanner(std::string_view text) : rest_(text) {}

    // A decimal number of at most `width` characters, blanks ahead of it passed over.
    std::int64_t number(std::size_t width = std::string_view::npos) {
        skip_blanks();
        const std::size_t sign = !rest_.empty() && (rest_[0] == '-' || rest_[0] == '+') ? 1 : 0;
        std::size_t end = sign;
        std::int64_t value = 0;
        while (end < std::min(rest_.size(), width) && is_digit(rest_[end])) {
            value = std::min(value * 10 + (rest_[end] - '0'), kLargestNumber);
            ++end;
        }
        fits_ = fits_ && end > sign;
        value = sign != 0 && rest_[0] == '-' ? -value : value;
        rest_.remove_prefix(fits_ ? end : 0);
        return value;
    }
    // A number with a fraction.
    double fraction() {
        skip_blanks();
        const std::size_t sign = !rest_.empty() && (rest_[0] == '-' || rest_[0] == '+') ? 1 : 0;
        std::size_t end = sign;
        bool has_point = false;
        std::size_t digits = 0;
        for (; end < rest_.size(); ++end) {
            if (is_digit(rest_[end])) {
                ++digits;
            } else if (rest_[end] == '.' && !has_point) {
                has_point = true;
            } else {
                break;
            }
        }
        fits_ = fits_ && digits > 0;
        if (!fits_) {
            return 0;
        }
        double value = 0;
        // The end of a text of digits and one point is always a number.
        (void)std::from_chars(rest_.data() + sign, rest_.data() + end, value);
        value = sign != 0 && rest_[0] == '-' ? -value : value;
        rest_.remove_prefix(end);
        return value;
    }
    // At most `width` characters other than blanks.
    std::string_view word(std::size_t width) {
        skip_blanks();
        std::size_t end = 0;
        while (end < std::min(rest_.size(), width) && !is_space(rest_[end])) {
            ++end;
        }
        fits_ = fits_ && end > 0;
        const std::string_view found = rest_.substr(0, end);
        rest_.remove_prefix(fits_ ? end : 0);
        return found;
    }
    DateScanner& literal(char c) {
        fits_ = fits_ && !rest_.empty() && rest_[0] == c;
        rest_.remove_prefix(fits_ ? 1 : 0);
        return *this;
    }

    [[nodiscard]] bool fits() const { return fits_; }
    [[nodiscard]] bool at_end() const { return rest_.empty(); }
    [[nodiscard]] bool next_is(char c) const { return !rest_.empty() && rest_[0] == c; }

private:
    void skip_blanks() {
        while (!rest_.empty() && is_space(rest_[0])) {
            rest_.remove_prefix(1);
        }
    }

    std::string_view rest_;
    bool fits_ = true;
};

void scan_clock(DateScanner& scanner, DateFields& date, std::size_t width) {
    date.time.hour = scanner.number(width);
    date.time.minute = scanner.literal(':').number(width);
    date.seconds = static_cast<double>(scanner.literal(':').number(width));
}

void scan_iso(DateScanner& scanner, DateFields& date) {
    date.time.year = scanner.number();
    date.time.month = scanner.literal('-').number();
    date.time.day = scanner.literal('-').number();
    date.time.hour = scanner.literal('T').number();
    date.time.minute = scanner.literal(':').number();
    date.seconds = scanner.literal(':').fraction();
}

bool scan_iso_utc(DateScanner scanner, DateFields& date) {
    scan_iso(scanner, date);
    return scanner.fits() && (scanner.at_end() || scanner.next_is('Z'));
}

bool scan_iso_offset(DateScanner scanner, DateFields& date, char sign) {
    scan_iso(scanner, date);
    const std::int64_t direction = sign == '+' ? 1 : -1;
    date.offset_hours = direction * scanner.literal(sign).number();
    date.offset_minutes = direction * scanner.literal(':').number();
    return scanner.fits();
}

bool scan_iso_behind(DateScanner scanner, DateFields& date) {
    return scan_iso_offset(scanner, date, '-');
}

bool scan_iso_ahead(DateScanner scanner, DateFields& date) {
    return scan_iso_offset(scanner, date, '+');
}

// "Sun, 06 Nov 1994 08:49:37"
bool scan_rfc1123(DateScanner scanner, DateFields& date) {
    (void)scanner.word(3);
    date.time.day = scanner.literal(',').number();
    date.month_name = scanner.word(3);
    date.time.year = scanner.number();
    scan_clock(scanner, date, std::string_view::npos);
    return scanner.fits();
}

// "Wednesday, 09-Nov-94 08:49:37 GMT"; the name takes nine characters, its comma among them if it
// is shorter.
bool scan_rfc850(DateScanner scanner, DateFields& date) {
    constexpr std::size_t kLongestDay = 9;
    (void)scanner.word(kLongestDay);
    date.time.day = scanner.literal(',').number();
    date.month_name = scanner.literal('-').word(3);
    date.time.year = scanner.literal('-').number();
    scan_clock(scanner, date, 2);
    return scanner.fits();
}

// "Sun Nov  6 08:49:37 1994"
bool scan_asctime(DateScanner scanner, DateFields& date) {
    (void)scanner.word(3);
    date.month_name = scanner.word(3);
    date.time.day = scanner.number();
    scan_clock(scanner, date, 2);
    date.time.year = scanner.number();
    return scanner.fits();
}

using DateForm = bool (*)(DateScanner scanner, DateFields& date);
constexpr std::array<DateForm, 6> kForms{scan_iso_utc, scan_iso_behind, scan_iso_ahead,
                                         scan_rfc1123, scan_rfc850,     scan_asctime};

std::optional<DateFields> scan_date(std::string_view text) {
    for (const DateForm form : kForms) {
        DateFields date;
        if (form(DateScanner(text), date)) {
            return date;
        }
    }
    return std::nullopt;
}

// An unknown name counts as January.
std::int64_t month_of(std::string_view name) {
    constexpr std::array<std::string_view, 12> kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const auto* const at = std::find(kMonths.begin(), kMonths.end(), name);
    return at == kMonths.end() ? 1 : at - kMonths.begin() + 1;
}

std::int64_t leap_years_before(std::int64_t year) {
    const std::int64_t last = year - 1;
    return last / 4 - last / 100 + last / 400;
}

}  // namespace

bool leap_year(std::int64_t year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

std::int64_t mktime_utc(const BrokenDownTime& time) {
    constexpr std::array<std::int64_t, 12> kDaysAhead{0,   31,  59,  90,  120, 151,
                                                      181, 212, 243, 273, 304, 334};
    constexpr std::int64_t kFirstYear = 1970;
    std::int64_t days = 0;
    if (time.year > kFirstYear) {
        days = (time.year - kFirstYear) * 365 + leap_years_before(time.year) -
               leap_years_before(kFirstYear);
    }
    const std::int64_t month = std::clamp<std::int64_t>(time.month, 1, 12);
    days += kDaysAhead[static_cast<std::size_t>(month - 1)];
    days += month > 2 && leap_year(time.year) ? 1 : 0;
    return (((days + time.day - 1) * 24 + time.hour) * 60 + time.minute) * 60 + time.second;
}

std::int64_t net_parse_date(OptText text) {
    constexpr std::int64_t kLargestShortYear = 1000;
    std::optional<DateFields> date = text ? scan_date(*text) : std::nullopt;
    if (!date) {
        return -1;
    }
    constexpr std::int64_t kLastYear = 1000000;  // keeps all sums far below 64 bits
    constexpr double kMostSeconds = 1e9;
    const double seconds = std::clamp(date->seconds, -kMostSeconds, kMostSeconds);
    BrokenDownTime& time = date->time;
    time.month = time.month == 0 ? month_of(date->month_name) : time.month;
    time.year = std::clamp(time.year, -kLastYear, kLastYear);
    time.year += time.year > kLargestShortYear ? 0 : 1900;
    time.second = static_cast<std::int64_t>(seconds);
    std::int64_t result = mktime_utc(time);
    if (result == 0 || result == -1) {
        return 1;
    }
    result += (date->offset_hours * 60 + date->offset_minutes) * 60;
    const auto milliseconds = static_cast<std::int64_t>(seconds * 1000) - time.second * 1000;
    return result * 1000 + milliseconds;
}

}  // namespace mediasplit
