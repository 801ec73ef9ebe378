#pragma once

#include <cstdint>

namespace mediasplit {

/// Status word of an operation: 0, or the OR of the results of all reports raised on the way. It
/// travels upward by return or by pointer and is folded with `|`.
enum class Status : std::uint32_t {
    kOk = 0,
    kFailed = 1,                ///< bit 0: the run failed
    kCantOpen = 3,              ///< an input can't be opened or sought in
    kRuleBroken = 0x40000000U,  ///< a conformance rule is broken; the run is still a success
};

constexpr Status operator|(Status left, Status right) {
    return static_cast<Status>(static_cast<std::uint32_t>(left) |
                               static_cast<std::uint32_t>(right));
}

constexpr Status& operator|=(Status& left, Status right) {
    return left = left | right;
}

/// Whether the word says that the run failed (bit 0).
constexpr bool has_failed(Status status) {
    return (static_cast<std::uint32_t>(status) & static_cast<std::uint32_t>(Status::kFailed)) != 0;
}

}  // namespace mediasplit
