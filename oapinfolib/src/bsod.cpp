#include "oapinfolib/src/bsod.h"

#include <algorithm>

namespace mediasplit {

namespace {

constexpr std::int64_t kLastIndex = 0xFFFF;

std::uint16_t word_at(const BsodReader& reader, std::int64_t index) {
    return index < reader.count ? reader.words[index] : 0;
}

void seek(BsodReader& reader, std::int64_t position) {
    position = std::clamp<std::int64_t>(position, 0, kLastIndex * 16);
    reader.index = static_cast<std::uint16_t>(position >> 4);
    reader.bit = static_cast<std::int16_t>(position & 15);
    reader.current = word_at(reader, reader.index);
}

std::int64_t tell(const BsodReader& reader) {
    return static_cast<std::int64_t>(reader.index) * 16 + reader.bit;
}

}  // namespace

void bsod_init(const std::uint16_t* words, std::uint16_t count, std::int64_t bit_offset,
               BsodReader& reader) {
    reader.words = words;
    reader.count = words == nullptr ? std::uint16_t{0} : count;
    seek(reader, bit_offset);
}

std::uint16_t bsod_unprj(BsodReader& reader, int n) {
    if (n <= 0) {
        return 0;
    }
    const std::uint16_t next = word_at(reader, std::int64_t{reader.index} + 1);
    const std::uint32_t window = std::uint32_t{reader.current} << 16U | next;
    const auto value = static_cast<std::uint16_t>((window << reader.bit) >> (32 - n));
    const int bit = reader.bit + n;
    if (bit < 16) {
        reader.bit = static_cast<std::int16_t>(bit);
    } else if (reader.index < kLastIndex) {
        ++reader.index;
        reader.bit = static_cast<std::int16_t>(bit - 16);
        reader.current = next;
    }
    return value;
}

std::uint16_t bsod_unplj(BsodReader& reader, int n) {
    return n <= 0 ? std::uint16_t{0}
                  : static_cast<std::uint16_t>(bsod_unprj(reader, n) << (16 - n));
}

void bsod_skip(BsodReader& reader, std::int64_t n) {
    seek(reader, tell(reader) + n);
}

void bsod_rewind(BsodReader& reader, std::int64_t n) {
    seek(reader, tell(reader) - n);
}

}  // namespace mediasplit
