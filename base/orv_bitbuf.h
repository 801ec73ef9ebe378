#pragma once

#include <cstdint>

namespace mediasplit {

// Big-endian bit reader over a caller-owned buffer; bit 0 is the top bit of the first byte.
//
// Every read comes in three strengths. `fast` does no test at all: the caller has made sure that
// the bits are there. The plain form fills the missing bits with zeros at the low end, moves on by
// the full count and lets `bits_left` go below zero, so that a parser may read straight down and
// look at `orv_bitbuf_get_bits_left` once. `safe` refuses with 1 and changes nothing. No form
// touches a byte that holds none of the bits asked for.
//
// The record is a plain value: copy it to remember a position, there is nothing to release.
struct orv_bitbuf {
    const std::uint8_t* base = nullptr;    // first byte of the buffer
    const std::uint8_t* cursor = nullptr;  // byte with the next bit; stays at the end when overrun
    std::int32_t bit_offset = 0;           // 0 to 7, bits of the byte at the position already used
    std::int64_t bits_left = 0;            // bits to the end of the data, negative after an overrun
};

// Starts reading `size_in_bits` bits at `data`. The buffer must outlive the record.
void orv_bitbuf_init(orv_bitbuf* buf, const std::uint8_t* data, std::int64_t size_in_bits);

// Moves by `count` bits, backward for a negative count. 0, or 1 if that passes an end of the
// buffer.
int orv_bitbuf_skip(orv_bitbuf* buf, std::int64_t count);

// Moves to `position` bits from the start. 0, or 1 for a position outside the data.
int orv_bitbuf_set_abs_pos(orv_bitbuf* buf, std::int64_t position);

// Moves to the next byte boundary, not at all at one. 0, or 1 if the data ends before it.
int orv_bitbuf_align(orv_bitbuf* buf);

// Bits to the next byte boundary, 0 to 7.
int orv_bitbuf_get_alignment_bits(const orv_bitbuf* buf);

// Position in bits from the start; beyond the size after an overrun.
std::int64_t orv_bitbuf_get_abs_pos(const orv_bitbuf* buf);

// Bits from the position to the end of the data, negative after an overrun.
inline std::int64_t orv_bitbuf_get_bits_left(const orv_bitbuf* buf) {
    return buf->bits_left;
}

// The next n bits, n at most 32 (64 in the `_long` forms), which must be there.
std::uint32_t orv_bitbuf_fast_read(orv_bitbuf* buf, int n);
std::uint64_t orv_bitbuf_fast_read_long(orv_bitbuf* buf, int n);
std::uint32_t orv_bitbuf_fast_peek(const orv_bitbuf* buf, int n);
std::uint64_t orv_bitbuf_fast_peek_long(const orv_bitbuf* buf, int n);

// The next n bits, n at most 32 (64 in the `_long` forms), zeros standing for bits past the end.
std::uint32_t orv_bitbuf_read(orv_bitbuf* buf, int n);
std::uint64_t orv_bitbuf_read_long(orv_bitbuf* buf, int n);
std::uint32_t orv_bitbuf_peek(const orv_bitbuf* buf, int n);
std::uint64_t orv_bitbuf_peek_long(const orv_bitbuf* buf, int n);

// The next n bits through `value`: 0, or 1 with everything left as it was if fewer are left.
[[nodiscard]] int orv_bitbuf_safe_read(orv_bitbuf* buf, int n, std::uint32_t* value);
[[nodiscard]] int orv_bitbuf_safe_read_long(orv_bitbuf* buf, int n, std::uint64_t* value);
[[nodiscard]] int orv_bitbuf_safe_peek(const orv_bitbuf* buf, int n, std::uint32_t* value);
[[nodiscard]] int orv_bitbuf_safe_peek_long(const orv_bitbuf* buf, int n, std::uint64_t* value);

}  // namespace mediasplit
