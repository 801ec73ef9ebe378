#include "ac4/syntax/field_reader.h"

namespace mediasplit {

int read_and_fill_hash_chunk(orv_bitbuf* bits, int n, HashRecord* hash, std::uint32_t* value) {
    if (orv_bitbuf_safe_read(bits, n, value) != 0) {
        return 1;
    }
    if (hash != nullptr && hash->callback != nullptr &&
        hash->callback(hash->user, *value, n) != 0) {
        hash->error = 1;
        return 1;
    }
    return 0;
}

std::uint32_t read_field(FieldReader& in, int n) {
    if (!field_ok(in)) {
        return 0;
    }
    std::uint32_t value = 0;
    if (read_and_fill_hash_chunk(in.bits, n, in.hash, &value) != 0) {
        const bool stopped = in.hash != nullptr && in.hash->error != 0;
        in.error = stopped ? FieldError::kHook : FieldError::kRanOut;
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
