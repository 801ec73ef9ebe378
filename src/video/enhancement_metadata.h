// The header of the enhancement format's metadata (RPU) units, as far as the compression of the
// metadata is told there.
#pragma once

#include <cstdint>

#include "src/log/status.h"
#include "src/util/bit_reader.h"

namespace mediasplit {

struct Loglist;

/// A metadata unit and what its header tells. The bytes belong to the caller.
struct RpuNal {
    const std::uint8_t* data = nullptr;  ///< the unit from its first header byte on
    /// Bytes; after parsing: bytes looked at, without emulation prevention.
    std::uint32_t size = 0;
    std::uint32_t rpu_raw_value = 0;
    std::uint8_t rpu_high_bits = 0;  ///< `rpu_raw_value` >> 13
    std::uint8_t rpu_compression = 0;
};

/// Reads the header of a metadata unit. Of a unit of more than 512 bytes only the first 512 (after
/// removal of emulation prevention) are looked at. Fails on a null unit or one without data.
Status parse_rpu_nal(RpuNal* rpu, Loglist* loglist);

/// The part behind the 24 bit prefix, from unescaped `data` at bit `position`, which moves on.
/// Fails on null arguments.
Status parse_rpu_data_header(RpuNal* rpu, ByteSpan data, std::uint32_t& position, Loglist* loglist);

}  // namespace mediasplit
