#pragma once

#include <cstdint>

#include "ac4/toc_reader/toc_parser.h"

namespace mediasplit {

// True if bits `from` to `to` of two buffers are equal outside the masked ranges, which must be in
// rising order. Both buffers must hold all of these bits.
bool orv_compare_fast(const std::uint8_t* a, const std::uint8_t* b, std::int64_t from,
                      std::int64_t to, const MaskedRanges& masked);

}  // namespace mediasplit
