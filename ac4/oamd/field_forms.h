#pragma once

#include <cstddef>
#include <cstdint>

#include "ac4/syntax/field_reader.h"

namespace mediasplit {

// Forms in which AC-4 metadata puts its fields together.

// A field of at most 8 bits.
inline std::uint8_t read_byte(FieldReader& in, int n) {
    return static_cast<std::uint8_t>(read_field(in, n));
}

// A coded value behind a presence flag. `present` is false and `value` 0 when it was not sent.
struct CodedField {
    bool present = false;
    std::uint16_t value = 0;

    bool operator==(const CodedField&) const = default;
};

// A flag and, if it is set, n bits.
inline CodedField read_optional_field(FieldReader& in, int n) {
    CodedField field;
    field.present = read_flag(in);
    field.value = field.present ? static_cast<std::uint16_t>(read_field(in, n)) : std::uint16_t{0};
    return field;
}

// A size of n bits, then a flag, and behind a set flag variable_bits(more) for the bits above them.
inline std::uint64_t read_extensible_size(FieldReader& in, int n, int more) {
    const std::uint64_t low = read_field(in, n);
    const std::uint64_t high = read_flag(in) ? read_variable_bits(in, more) : 0;
    return low + (high << n);
}

// Reader over a whole substream. Stays where it is, since the reader points into it.
struct SubstreamReader {
    SubstreamReader(const std::uint8_t* data, std::size_t bytes) {
        orv_bitbuf_init(&bits, data, static_cast<std::int64_t>(bytes) * 8);
    }
    SubstreamReader(const SubstreamReader&) = delete;
    SubstreamReader& operator=(const SubstreamReader&) = delete;

    orv_bitbuf bits;
    FieldReader in{&bits, nullptr, FieldError::kNone};
};

// Lets `parse` read a structure of `size` bits that stands inside `in`, and resumes behind it
// whatever was read: the size rules, the structure may have grown or be cut. The return is what
// stopped the structure's own reading. A size beyond the data stops `in` itself, nothing parsed.
template <typename Parse>
FieldError read_enclosed(FieldReader& in, std::uint64_t size, const Parse& parse) {
    if (!field_ok(in) || size > static_cast<std::uint64_t>(orv_bitbuf_get_bits_left(in.bits))) {
        in.error = field_ok(in) ? FieldError::kRanOut : in.error;
        return in.error;
    }
    const auto bits = static_cast<std::int64_t>(size);
    orv_bitbuf window = *in.bits;
    window.bits_left = bits;
    FieldReader inner{&window, in.hash, FieldError::kNone};
    parse(inner);
    skip_field(in, bits);
    return inner.error;
}

}  // namespace mediasplit
