#include "oapinfolib/src/crc.h"

#include <array>
#include <cstddef>

namespace mediasplit {

namespace {

constexpr std::uint16_t kGenerator = 0x8005;
constexpr std::size_t kSlices = 16;

using CrcTable = std::array<std::uint16_t, 256>;

// Table 0 is the usual byte table. Table k holds the same bytes with k more zero bytes behind them,
// so that 16 bytes can be looked up independently and combined.
constexpr std::array<CrcTable, kSlices> make_tables() {
    std::array<CrcTable, kSlices> tables{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        unsigned value = byte << 8U;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value & 0x8000U) != 0 ? (value << 1U) ^ kGenerator : value << 1U;
        }
        tables[0][byte] = static_cast<std::uint16_t>(value);
    }
    for (std::size_t slice = 1; slice < kSlices; ++slice) {
        for (unsigned byte = 0; byte < 256; ++byte) {
            const unsigned before = tables[slice - 1][byte];
            tables[slice][byte] =
                static_cast<std::uint16_t>((before << 8U) ^ tables[0][(before >> 8U) & 0xFFU]);
        }
    }
    return tables;
}

constexpr std::array<CrcTable, kSlices> kTables = make_tables();
static_assert(kTables[0][1] == 0x8005 && kTables[0][2] == 0x800F && kTables[0][3] == 0x000A);

// What `word` adds to the register when `slice` bytes follow its low byte.
unsigned look_up(unsigned word, std::size_t slice) {
    return unsigned{kTables[slice + 1][word >> 8U]} ^ kTables[slice][word & 0xFFU];
}

}  // namespace

std::uint16_t crc_calcfwd(const std::uint16_t* words, std::uint32_t count) {
    unsigned crc = 0;
    for (; count >= kSlices / 2; count -= kSlices / 2, words += kSlices / 2) {
        const unsigned rest = look_up(words[1], 12) ^ look_up(words[2], 10) ^ look_up(words[3], 8) ^
                              look_up(words[4], 6) ^ look_up(words[5], 4) ^ look_up(words[6], 2) ^
                              look_up(words[7], 0);
        crc = look_up(crc ^ words[0], 14) ^ rest;
    }
    for (; count > 0; --count, ++words) {
        crc = look_up(crc ^ *words, 0);
    }
    return static_cast<std::uint16_t>(crc);
}

int crc_chkoafrm(std::uint32_t frame_words, const std::uint16_t* frame) {
    const std::uint32_t part = (frame_words >> 3U) + (frame_words >> 1U);
    if (part == 0) {
        return kCrcGood;
    }
    if (crc_calcfwd(frame + 1, part - 1) != 0) {
        return kCrcErrorFirstPart;
    }
    return crc_calcfwd(frame + part, frame_words - part) != 0 ? kCrcErrorSecondPart : kCrcGood;
}

}  // namespace mediasplit
