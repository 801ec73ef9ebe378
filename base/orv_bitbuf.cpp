#include "base/orv_bitbuf.h"

#include <cstddef>

namespace mediasplit {
namespace {

// Gathers n (1 to 64) bits from `bit_offset` of the byte at `cursor` on. Only bytes that hold one
// of the bits are touched.
std::uint64_t gather(const std::uint8_t* cursor, int bit_offset, int n) {
    const int in_first_byte = 8 - bit_offset;
    const std::uint64_t first = *cursor & (0xFFU >> bit_offset);
    if (n <= in_first_byte) {
        return first >> (in_first_byte - n);
    }
    std::uint64_t value = first;
    int missing = n - in_first_byte;
    for (; missing >= 8; missing -= 8) {
        value = (value << 8) | *++cursor;
    }
    if (missing > 0) {
        value = (value << missing) | (static_cast<std::uint64_t>(*++cursor) >> (8 - missing));
    }
    return value;
}

// Moves forward inside the data.
void skip_bits_forward(orv_bitbuf* buf, std::int64_t count) {
    if (count == 0) {
        return;
    }
    const std::int64_t offset = buf->bit_offset + count;
    buf->cursor += static_cast<std::ptrdiff_t>(offset >> 3);
    buf->bit_offset = static_cast<std::int32_t>(offset & 7);
    buf->bits_left -= count;
}

// Size of the buffer in bits. After an overrun the cursor stands at the end, and the offset and the
// overrun together tell how many bits of its byte still belong to the data.
std::int64_t size_in_bits(const orv_bitbuf* buf) {
    const std::int64_t at_cursor = static_cast<std::int64_t>(buf->cursor - buf->base) * 8;
    if (buf->bits_left >= 0) {
        return at_cursor + buf->bit_offset + buf->bits_left;
    }
    return at_cursor + ((buf->bit_offset + buf->bits_left) & 7);
}

// Places the record at `position` of a buffer of `size` bits; the cursor never leaves the buffer.
void place(orv_bitbuf* buf, std::int64_t position, std::int64_t size) {
    const std::int64_t inside = position <= size ? position : size;
    buf->cursor = buf->base + static_cast<std::ptrdiff_t>(inside >> 3);
    buf->bit_offset = static_cast<std::int32_t>(position & 7);
    buf->bits_left = size - position;
}

std::uint64_t peek_bits(const orv_bitbuf* buf, int n) {
    if (n <= 0 || buf->bits_left <= 0) {
        return 0;
    }
    if (n <= buf->bits_left) {
        return gather(buf->cursor, buf->bit_offset, n);
    }
    const int present = static_cast<int>(buf->bits_left);
    return gather(buf->cursor, buf->bit_offset, present) << (n - present);
}

std::uint64_t read_bits(orv_bitbuf* buf, int n) {
    if (n <= 0) {
        return 0;
    }
    const std::uint64_t value = peek_bits(buf, n);
    if (n <= buf->bits_left) {
        skip_bits_forward(buf, n);
    } else {
        place(buf, orv_bitbuf_get_abs_pos(buf) + n, size_in_bits(buf));
    }
    return value;
}

template <typename Value>
int checked_peek(const orv_bitbuf* buf, int n, Value* value) {
    if (n > buf->bits_left) {
        return 1;
    }
    *value = n > 0 ? static_cast<Value>(gather(buf->cursor, buf->bit_offset, n)) : 0;
    return 0;
}

template <typename Value>
int checked_read(orv_bitbuf* buf, int n, Value* value) {
    if (checked_peek(buf, n, value) != 0) {
        return 1;
    }
    skip_bits_forward(buf, n > 0 ? n : 0);
    return 0;
}

}  // namespace

void orv_bitbuf_init(orv_bitbuf* buf, const std::uint8_t* data, std::int64_t size_in_bits) {
    buf->base = data;
    buf->cursor = data;
    buf->bit_offset = 0;
    buf->bits_left = data != nullptr && size_in_bits > 0 ? size_in_bits : 0;
}

int orv_bitbuf_skip(orv_bitbuf* buf, std::int64_t count) {
    if (count >= 0) {
        if (count > buf->bits_left) {
            return 1;
        }
        skip_bits_forward(buf, count);
        return 0;
    }
    const std::int64_t position = orv_bitbuf_get_abs_pos(buf);
    if (count < -position) {
        return 1;
    }
    place(buf, position + count, size_in_bits(buf));
    return 0;
}

int orv_bitbuf_set_abs_pos(orv_bitbuf* buf, std::int64_t position) {
    const std::int64_t size = size_in_bits(buf);
    if (position < 0 || position > size) {
        return 1;
    }
    place(buf, position, size);
    return 0;
}

int orv_bitbuf_align(orv_bitbuf* buf) {
    const int count = orv_bitbuf_get_alignment_bits(buf);
    return count == 0 ? 0 : orv_bitbuf_skip(buf, count);
}

int orv_bitbuf_get_alignment_bits(const orv_bitbuf* buf) {
    return (8 - buf->bit_offset) & 7;
}

std::int64_t orv_bitbuf_get_abs_pos(const orv_bitbuf* buf) {
    return size_in_bits(buf) - buf->bits_left;
}

std::uint32_t orv_bitbuf_fast_read(orv_bitbuf* buf, int n) {
    return static_cast<std::uint32_t>(orv_bitbuf_fast_read_long(buf, n));
}

std::uint64_t orv_bitbuf_fast_read_long(orv_bitbuf* buf, int n) {
    if (n == 0) {
        return 0;
    }
    const std::uint64_t value = gather(buf->cursor, buf->bit_offset, n);
    skip_bits_forward(buf, n);
    return value;
}

std::uint32_t orv_bitbuf_fast_peek(const orv_bitbuf* buf, int n) {
    return static_cast<std::uint32_t>(orv_bitbuf_fast_peek_long(buf, n));
}

std::uint64_t orv_bitbuf_fast_peek_long(const orv_bitbuf* buf, int n) {
    return n == 0 ? 0 : gather(buf->cursor, buf->bit_offset, n);
}

std::uint32_t orv_bitbuf_read(orv_bitbuf* buf, int n) {
    return static_cast<std::uint32_t>(read_bits(buf, n));
}

std::uint64_t orv_bitbuf_read_long(orv_bitbuf* buf, int n) {
    return read_bits(buf, n);
}

std::uint32_t orv_bitbuf_peek(const orv_bitbuf* buf, int n) {
    return static_cast<std::uint32_t>(peek_bits(buf, n));
}

std::uint64_t orv_bitbuf_peek_long(const orv_bitbuf* buf, int n) {
    return peek_bits(buf, n);
}

int orv_bitbuf_safe_read(orv_bitbuf* buf, int n, std::uint32_t* value) {
    return checked_read(buf, n, value);
}

int orv_bitbuf_safe_read_long(orv_bitbuf* buf, int n, std::uint64_t* value) {
    return checked_read(buf, n, value);
}

int orv_bitbuf_safe_peek(const orv_bitbuf* buf, int n, std::uint32_t* value) {
    return checked_peek(buf, n, value);
}

int orv_bitbuf_safe_peek_long(const orv_bitbuf* buf, int n, std::uint64_t* value) {
    return checked_peek(buf, n, value);
}

}  // namespace mediasplit
