// Numbers of AV1 in pieces of seven bits.
#pragma once

#include <cstdint>

#include "src/util/bit_reader.h"

namespace mediasplit {

// leb128() of up to 8 bytes at bit `position`, which moves behind it (AV1 bitstream specification
// 4.10.5).
inline std::uint64_t read_leb128(std::uint32_t& position, ByteSpan data) {
    std::uint64_t value = 0;
    for (unsigned i = 0; i < 8; ++i) {
        const std::uint64_t byte = read_uint8(position, data, 8);
        value |= (byte & 0x7F) << (7 * i);
        if ((byte & 0x80) == 0) {
            break;
        }
    }
    return value;
}

}  // namespace mediasplit
