#pragma once

#include <cstdint>
#include <vector>

#include "ac4/syntax/field_reader.h"
#include "tests/support/ac4_metadata_builder.h"

namespace mediasplit {

// A field reader over exactly the bits of a description, in a buffer without a spare byte.
struct TestReader {
    explicit TestReader(const MetadataBits& text) : bytes(text.to_bytes()) {
        orv_bitbuf_init(&bits, bytes.data(), static_cast<std::int64_t>(text.size()));
    }
    TestReader(const TestReader&) = delete;
    TestReader& operator=(const TestReader&) = delete;

    std::size_t position() const { return static_cast<std::size_t>(field_position(in)); }

    std::vector<std::uint8_t> bytes;
    orv_bitbuf bits;
    FieldReader in{&bits, nullptr, FieldError::kNone};
};

}  // namespace mediasplit
