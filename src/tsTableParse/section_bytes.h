// Bounded view of the bytes of a section or descriptor.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace mediasplit {

// Reads as zeros behind its end.
struct SectionBytes {
    std::span<const std::uint8_t> bytes;

    std::uint8_t operator[](std::size_t index) const {
        return index < bytes.size() ? bytes[index] : std::uint8_t{0};
    }
    // 16 bits at `index`, cut to the low `width` ones.
    [[nodiscard]] std::int64_t field(std::size_t index, unsigned width) const {
        return ((*this)[index] << 8 | (*this)[index + 1]) & ((1 << width) - 1);
    }
    [[nodiscard]] SectionBytes from(std::size_t index) const {
        return {bytes.subspan(index < bytes.size() ? index : bytes.size())};
    }
};

}  // namespace mediasplit
