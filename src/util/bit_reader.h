// Big-endian bit fields by position: the caller keeps an unsigned 32-bit bit position, bit 0 being
// the top bit of the first byte. A buffer may have up to 2^29 bytes.
#pragma once

#include <cstdint>
#include <span>

#include "src/log/status.h"

namespace mediasplit {

using ByteSpan = std::span<const std::uint8_t>;

// The next `count` bits as an unsigned number; `position` advances by `count`. A count above the
// type's width keeps the low bits of the field; bits behind the end of `buffer` read as 0.
std::uint8_t read_uint8(std::uint32_t& position, ByteSpan buffer, std::uint32_t count);
std::uint16_t read_uint16(std::uint32_t& position, ByteSpan buffer, std::uint32_t count);
std::uint32_t read_uint32(std::uint32_t& position, ByteSpan buffer, std::uint32_t count);
std::uint64_t read_uint64(std::uint32_t& position, ByteSpan buffer, std::uint32_t count);

// As above, refusing to run past the end: raises 3004 then and returns its result, with `position`
// and `*out` untouched. `out` may be null.
Status read_uint8_s(std::uint32_t& position, ByteSpan buffer, std::uint32_t count,
                    std::uint8_t* out);
Status read_uint16_s(std::uint32_t& position, ByteSpan buffer, std::uint32_t count,
                     std::uint16_t* out);
Status read_uint32_s(std::uint32_t& position, ByteSpan buffer, std::uint32_t count,
                     std::uint32_t* out);

// An Exp-Golomb code number, ue(v) of ISO/IEC 14496-10 9.1. A suffix that would cross the end of
// `buffer` gives 0 with `position` just behind the prefix; a prefix without a stopping bit gives 0
// with `position` at the end. Over-long codes give a meaningless number, never a failure.
std::uint32_t read_ue_s(std::uint32_t& position, ByteSpan buffer);

// A signed Exp-Golomb value, se(v) of ISO/IEC 14496-10 9.1.1: code numbers 1, 2, 3, 4 give 1, -1,
// 2, -2.
std::int32_t read_se_s(std::uint32_t& position, ByteSpan buffer);

// The value with its 32 bits in reverse order.
std::uint32_t reverse_bits(std::uint32_t value);

// Writes the low `count` bits of `value`, of which only the low 16 can be other than 0, most
// significant first, at bit `position` of `buffer`; no other bit changes. Bits behind the end are
// dropped. Returns `position` + `count`.
std::uint32_t write_bits(std::uint32_t position, std::span<std::uint8_t> buffer,
                         std::uint32_t count, std::uint32_t value);

}  // namespace mediasplit
