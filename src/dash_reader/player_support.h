// What the files of the player share.
#pragma once

#include <cstdint>
#include <limits>

#include "src/dash_reader/dash_player.h"
#include "src/log/logging.h"

namespace mediasplit {

// Truncates to the range of the result; what isn't a number becomes 0.
inline std::uint64_t to_unsigned(double value) {
    constexpr double kTwoTo64 = 18446744073709551616.0;
    if (!(value > 0)) {
        return 0;
    }
    return value < kTwoTo64 ? static_cast<std::uint64_t>(value)
                            : std::numeric_limits<std::uint64_t>::max();
}

inline LogContext player_context(const DashPlayer& player, std::string_view attribute = {}) {
    const std::string_view id =
        player.representation_id ? std::string_view(*player.representation_id) : "";
    return LogContext{0, id, attribute};
}

inline Status report_no_address(const DashPlayer& player, Loglist* loglist) {
    return Logging_err_type_check(loglist, 4043, player_context(player));
}

}  // namespace mediasplit
