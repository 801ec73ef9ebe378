// Sizes of the sample tables' rows and helpers that see a table as rows.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "src/mp4demuxer/records.h"

namespace mediasplit {

// A table beyond this many bytes is refused, apart from the sample sizes of a plain file.
inline constexpr std::uint64_t kMaxTableSize = 0x200000;

inline constexpr std::size_t kSttsRow = 8;
inline constexpr std::size_t kCttsRow = 8;
inline constexpr std::size_t kStssRow = 4;
inline constexpr std::size_t kStscRow = 12;
inline constexpr std::size_t kStszRow = 4;

// Rows that are really there: a count may be told without its rows.
inline std::uint32_t rows_of(const std::vector<std::uint8_t>& table, std::size_t row_size,
                             std::uint32_t told) {
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(told, table.size() / row_size));
}

inline std::size_t chunk_row(const Mp4Stream& stream) {
    return stream.stco_is_64bit != 0 ? 8 : 4;
}

// Forgets the tables and the counts of a track.
void reset_sample_tables(Mp4Stream& stream);

}  // namespace mediasplit
