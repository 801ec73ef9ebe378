#pragma once

#include <cstdint>

namespace mediasplit {

// A frame may name one of its parts in 64 presentations and 128 substreams, and it is read anew for
// each, since what it means depends on who names it. Sound frames share short parts. One whose
// parts come to this many times its size was made to be slow.

inline constexpr std::int64_t kMostReadings = 4;
inline constexpr std::int64_t kBitsReadAnyway = 32 * 1024 * 8;  // of a frame of any size

constexpr bool passes_reading_limit(std::int64_t bits_read, std::uint64_t frame_bytes) {
    return bits_read > kBitsReadAnyway + kMostReadings * 8 * static_cast<std::int64_t>(frame_bytes);
}

}  // namespace mediasplit
