#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace mediasplit::testing {

/// Big-endian bit fields, appended one after the other.
class BitWriter {
public:
    BitWriter& u(std::uint64_t value, unsigned bits);
    BitWriter& flag(bool value) { return u(value ? 1 : 0, 1); }
    /// Exp-Golomb codes, ITU-T H.264 9.1.
    BitWriter& ue(std::uint32_t value);
    BitWriter& se(std::int32_t value);
    /// The code of `zeros` zero bits, a one and a suffix; also lengths that no number needs.
    BitWriter& raw_ue(unsigned zeros, std::uint64_t suffix);
    /// rbsp_trailing_bits().
    BitWriter& trailing();

    [[nodiscard]] std::size_t bit_count() const { return bit_count_; }
    /// Everything written, zero bits up to the byte boundary included.
    [[nodiscard]] const std::vector<std::uint8_t>& bytes() const { return bytes_; }

private:
    std::vector<std::uint8_t> bytes_;
    std::size_t bit_count_ = 0;
};

}  // namespace mediasplit::testing
