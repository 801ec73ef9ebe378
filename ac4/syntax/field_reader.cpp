#include "ac4/syntax/field_reader.h"

namespace mediasplit {

std::uint32_t read_field(FieldReader& in, int n) {
    if (!field_ok(in)) {
        return 0;
    }
    std::uint32_t value = 0;
    if (orv_bitbuf_safe_read(in.bits, n, &value) != 0) {
        in.error = FieldError::kRanOut;
        return 0;
    }
    if (in.hash != nullptr && in.hash->callback != nullptr &&
        in.hash->callback(in.hash->user, value, n) != 0) {
        in.hash->error = 1;
        in.error = FieldError::kHook;
        return 0;
    }
    return value;
}

std::uint32_t read_variable_bits(FieldReader& in, int n, int* used) {
    constexpr int kMostBits = 32;
    std::uint32_t value = 0;
    int bits_read = 0;
    bool more = true;
    while (more) {
        if (bits_read + n + 1 > kMostBits) {
            in.error = field_ok(in) ? FieldError::kTooLong : in.error;
        }
        value += read_field(in, n);
        more = read_flag(in);
        bits_read += n + 1;
        if (more) {
            value = (value + 1) << n;
        }
    }
    if (used != nullptr) {
        *used = field_ok(in) ? bits_read : 0;
    }
    return field_ok(in) ? value : 0;
}

std::uint32_t read_extended(FieldReader& in, int n, std::uint32_t escape, int more) {
    const std::uint32_t value = read_field(in, n);
    return value == escape && field_ok(in) ? value + read_variable_bits(in, more) : value;
}

void skip_field(FieldReader& in, std::int64_t count) {
    if (field_ok(in) && orv_bitbuf_skip(in.bits, count) != 0) {
        in.error = FieldError::kRanOut;
    }
}

void align_field(FieldReader& in) {
    if (field_ok(in) && orv_bitbuf_align(in.bits) != 0) {
        in.error = FieldError::kRanOut;
    }
}

}  // namespace mediasplit
