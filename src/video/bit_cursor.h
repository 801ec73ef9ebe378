// A short-hand for reading parameter sets element by element.
#pragma once

#include <algorithm>
#include <cstdint>

#include "src/util/bit_reader.h"

namespace mediasplit {

/// Reads from `data` at the caller's bit position. Behind the end everything is 0.
class BitCursor {
public:
    BitCursor(ByteSpan data, std::uint32_t& position) : data_(data), position_(position) {}

    std::uint8_t flag() { return read_uint8(position_, data_, 1); }
    std::uint8_t u8(std::uint32_t bits) { return read_uint8(position_, data_, bits); }
    std::uint16_t u16(std::uint32_t bits) { return read_uint16(position_, data_, bits); }
    std::uint32_t u32(std::uint32_t bits) { return read_uint32(position_, data_, bits); }
    std::uint32_t ue() { return read_ue_s(position_, data_); }
    std::int32_t se() { return read_se_s(position_, data_); }

    /// Whether nothing but the zeros behind the end is left: loops that the data's own counts drive
    /// end here.
    [[nodiscard]] bool at_end() const { return position_ >= end(); }

    /// Steps over `bits`, at most to the end.
    void skip(std::uint64_t bits) {
        const std::uint64_t target = std::min<std::uint64_t>(end(), position_ + bits);
        position_ = std::max(position_, static_cast<std::uint32_t>(target));
    }

    [[nodiscard]] ByteSpan data() const { return data_; }
    [[nodiscard]] std::uint32_t& position() { return position_; }

private:
    [[nodiscard]] std::uint64_t end() const {
        return std::min<std::uint64_t>(std::uint64_t{data_.size()} * 8, UINT32_MAX);
    }

    ByteSpan data_;
    std::uint32_t& position_;
};

/// Calls `entry(i)` for `count` entries, or until the data ends.
template <typename Entry>
void for_each_counted(BitCursor& bits, std::uint64_t count, Entry entry) {
    for (std::uint64_t i = 0; i < count && !bits.at_end(); ++i) {
        entry(static_cast<std::uint32_t>(i));
    }
}

}  // namespace mediasplit
