#pragma once

#include <cstdint>

#include "base/orv_bitbuf.h"

namespace mediasplit {

// The one way in which AC-4 syntax elements are read: n bits or fail, with a failure that sticks.
// After the first failure every read gives 0 and the position stays, so that a parser reads
// straight down and asks `error` once. Loops whose count comes from the stream ask it in their
// condition.

enum class FieldError : int {
    kNone = 0,
    kRanOut = 1,   // the data ended before the element
    kTooLong = 2,  // variable_bits went on beyond 32 bits
    kHook = 3,     // the hash hook asked to stop
    kRefused = 4   // the parser refused a value
};

// Optional listener that sees every element read, to fingerprint a part of the syntax. A non-zero
// return stops the reading.
struct HashRecord {
    int (*callback)(void* user, std::uint64_t value, int bits) = nullptr;
    void* user = nullptr;
    int error = 0;
};

struct FieldReader {
    orv_bitbuf* bits = nullptr;  // not owned
    HashRecord* hash = nullptr;  // not owned, usually none
    FieldError error = FieldError::kNone;
};

inline bool field_ok(const FieldReader& in) {
    return in.error == FieldError::kNone;
}

// Reads n bits, n at most 32, and shows them to the hook if there is one: 0, or 1 if the data ran
// out or the hook asked to stop (its `error` is then set).
[[nodiscard]] int read_and_fill_hash_chunk(orv_bitbuf* bits, int n, HashRecord* hash,
                                           std::uint32_t* value);

// n bits, n at most 32; 0 after a failure.
std::uint32_t read_field(FieldReader& in, int n);

inline bool read_flag(FieldReader& in) {
    return read_field(in, 1) != 0;
}

// variable_bits(n) (ETSI TS 103 190-1 clause 4.2.2), n at most 8. A value whose next group would
// pass 32 bits in all fails with kTooLong. `used` takes the bits read.
std::uint32_t read_variable_bits(FieldReader& in, int n, int* used = nullptr);

// n bits, and for the value `escape` a variable_bits(more) added to it.
std::uint32_t read_extended(FieldReader& in, int n, std::uint32_t escape, int more);

// Steps over `count` bits without showing them to the hook.
void skip_field(FieldReader& in, std::int64_t count);

// Steps to the next byte boundary, counted from the start of the buffer.
void align_field(FieldReader& in);

// Position in bits from the start of the buffer.
inline std::int64_t field_position(const FieldReader& in) {
    return orv_bitbuf_get_abs_pos(in.bits);
}

}  // namespace mediasplit
