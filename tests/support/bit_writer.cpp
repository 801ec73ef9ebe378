#include "tests/support/bit_writer.h"

#include <bit>

namespace mediasplit::testing {

BitWriter& BitWriter::u(std::uint64_t value, unsigned bits) {
    for (unsigned i = bits; i > 0; --i) {
        if (bit_count_ % 8 == 0) {
            bytes_.push_back(0);
        }
        const auto bit = static_cast<std::uint8_t>(i > 64 ? 0 : (value >> (i - 1)) & 1U);
        bytes_.back() = static_cast<std::uint8_t>(bytes_.back() | (bit << (7 - bit_count_ % 8)));
        ++bit_count_;
    }
    return *this;
}

BitWriter& BitWriter::ue(std::uint32_t value) {
    const std::uint64_t code = std::uint64_t{value} + 1;
    const auto length = static_cast<unsigned>(std::bit_width(code));
    return u(0, length - 1).u(code, length);
}

BitWriter& BitWriter::se(std::int32_t value) {
    const std::int64_t wide = value;
    return ue(static_cast<std::uint32_t>(wide > 0 ? 2 * wide - 1 : -2 * wide));
}

BitWriter& BitWriter::raw_ue(unsigned zeros, std::uint64_t suffix) {
    return u(0, zeros).u(1, 1).u(suffix, zeros);
}

BitWriter& BitWriter::trailing() {
    u(1, 1);
    while (bit_count_ % 8 != 0) {
        u(0, 1);
    }
    return *this;
}

}  // namespace mediasplit::testing
