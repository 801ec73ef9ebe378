// The units of decoder configurations, as bytes.
#pragma once

#include <cstdint>
#include <vector>

#include "src/util/bit_reader.h"
#include "src/video/decoder_configs.h"

namespace mediasplit {

template <typename Record>
[[nodiscard]] ByteSpan unit_bytes(const ParameterSet<Record>& set) {
    return set.unit;
}

[[nodiscard]] inline ByteSpan unit_bytes(const std::vector<std::uint8_t>& unit) {
    return unit;
}

}  // namespace mediasplit
