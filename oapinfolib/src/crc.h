#pragma once

#include <cstdint>

// CRC-16 of AC-3 and E-AC-3 frames (ETSI TS 102 366 6.1.7): generator 0x8005, register starting at
// 0, the high byte of each host-order word first. A good range, its check word included, leaves 0.

namespace mediasplit {

// Results of crc_chkoafrm.
inline constexpr int kCrcGood = 0;
inline constexpr int kCrcErrorFirstPart = 4353;
inline constexpr int kCrcErrorSecondPart = 4354;

// Residue of `count` words.
std::uint16_t crc_calcfwd(const std::uint16_t* words, std::uint32_t count);

// Checks an AC-3 frame of `frame_words` words at `frame`: kCrcErrorFirstPart if the words behind
// the sync word up to 5/8 of the frame fail (the second part isn't looked at then),
// kCrcErrorSecondPart if the rest does.
int crc_chkoafrm(std::uint32_t frame_words, const std::uint16_t* frame);

}  // namespace mediasplit
