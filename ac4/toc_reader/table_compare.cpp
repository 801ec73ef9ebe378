#include "ac4/toc_reader/table_compare.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace mediasplit {
namespace {

// Bits `from` up to `to` of one byte, counted from its top bit.
unsigned bits_between(std::int64_t from, std::int64_t to) {
    return (0xFFU >> from) & (0xFFU << (8 - to));
}

bool same_bits(const std::uint8_t* a, const std::uint8_t* b, std::int64_t from, std::int64_t to) {
    if (from >= to) {
        return true;
    }
    const std::int64_t first = from / 8;
    const std::int64_t last = to / 8;
    const auto differs = [&](std::int64_t byte, unsigned mask) {
        return ((static_cast<unsigned>(a[byte]) ^ b[byte]) & mask) != 0;
    };
    if (first == last) {
        return !differs(first, bits_between(from % 8, to % 8));
    }
    if (differs(first, bits_between(from % 8, 8)) ||
        (to % 8 != 0 && differs(last, bits_between(0, to % 8)))) {
        return false;
    }
    return std::memcmp(a + first + 1, b + first + 1, static_cast<std::size_t>(last - first - 1)) ==
           0;
}

}  // namespace

bool orv_compare_fast(const std::uint8_t* a, const std::uint8_t* b, std::int64_t from,
                      std::int64_t to, const MaskedRanges& masked) {
    std::int64_t position = from;
    for (std::size_t i = 0; i < masked.count; ++i) {
        const MaskedRange& range = masked.ranges[i];
        if (!same_bits(a, b, position, std::min(range.start, to))) {
            return false;
        }
        position = range.start + range.length;
    }
    return same_bits(a, b, position, to);
}

}  // namespace mediasplit
