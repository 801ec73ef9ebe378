#include "src/dash_thread/start_time.h"

#include <limits>
#include <optional>
#include <string>

#include "src/dash_thread/calendar.h"
#include "src/log/logging.h"
#include "src/util/address.h"

namespace mediasplit {
namespace {

constexpr std::int64_t kMillisecondsPerSecond = 1000;

// Whole seconds from `begin` to `end`; none if one of them is no date.
std::optional<std::int64_t> seconds_between(const std::string& begin, const std::string& end) {
    const std::int64_t from = net_parse_date(begin);
    const std::int64_t to = net_parse_date(end);
    if (from == -1 || to == -1) {
        return std::nullopt;
    }
    return to / kMillisecondsPerSecond - from / kMillisecondsPerSecond;
}

std::uint64_t to_offset(double seconds) {
    constexpr double kTwoTo64 = 18446744073709551616.0;
    if (!(seconds > 0)) {
        return 0;
    }
    return seconds < kTwoTo64 ? static_cast<std::uint64_t>(seconds)
                              : std::numeric_limits<std::uint64_t>::max();
}

std::uint64_t offset_between(const std::string& begin, const std::string& end) {
    const std::int64_t seconds = seconds_between(begin, end).value_or(0);
    return seconds > 0 ? static_cast<std::uint64_t>(seconds) : 0;
}

void tell_start(const DashPlayer& player, const std::string& date, Loglist* loglist) {
    if (player.type == "dynamic") {
        // An info message; it has no result.
        (void)Logging_err_type_check(loglist, 1026, {}, date);
    }
}

}  // namespace

std::uint64_t get_timeoffset(const DashPlayer& player, Loglist* loglist) {
    if (!player.url || !is_url(*player.url)) {
        return 0;
    }
    const auto& begin = player.availabilityStartTime;
    if (player.utc_timing_value && !player.utc_timing_value->empty() && begin) {
        tell_start(player, *player.utc_timing_value, loglist);
        return offset_between(*begin, *player.utc_timing_value);
    }
    if (player.publishTime && begin) {
        const std::int32_t reloads = player.reload_count == nullptr ? 0 : *player.reload_count;
        if (player.minimum_update_period_ms != kNoTime && reloads > 0) {
            const double extra = reloads * player.minimum_update_period_ms / 1000.0;
            return to_offset(extra + static_cast<double>(
                                         seconds_between(*begin, *player.publishTime).value_or(0)));
        }
        tell_start(player, *player.publishTime, loglist);
        return offset_between(*begin, *player.publishTime);
    }
    if (player.type == "dynamic") {
        (void)Logging_err_type_check(loglist, 1027, {});
    }
    return 0;
}

}  // namespace mediasplit
