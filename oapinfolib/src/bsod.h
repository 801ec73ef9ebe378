#pragma once

#include <cstdint>

// Bit reader over a frame that is held as 16-bit words in host order. A bit is counted from the top
// of its word. The reader knows the number of words: what lies outside reads as zero, and rewinding
// stops at the first bit, so that no header can lead it out of the frame.

namespace mediasplit {

struct BsodReader {
    const std::uint16_t* words = nullptr;  // first word of the frame; not owned
    std::int16_t bit = 0;                  // next bit in `current`, 0 to 15
    std::uint16_t current = 0;             // word number `index`
    std::uint16_t index = 0;
    std::uint16_t count = 0;  // words that may be read
};

// Places the reader `bit_offset` bits (0 or more) behind the start of `words`, of which `count` may
// be read.
void bsod_init(const std::uint16_t* words, std::uint16_t count, std::int64_t bit_offset,
               BsodReader& reader);

// Takes the next n bits (0 to 16): the value stands in the low bits of the result.
std::uint16_t bsod_unprj(BsodReader& reader, int n);

// Takes the next n bits (0 to 16): the value stands in the high bits of the result, the rest is 0.
std::uint16_t bsod_unplj(BsodReader& reader, int n);

// Moves on by n bits; n below 0 moves back.
void bsod_skip(BsodReader& reader, std::int64_t n);

// Moves back by n bits.
void bsod_rewind(BsodReader& reader, std::int64_t n);

}  // namespace mediasplit
