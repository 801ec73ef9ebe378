#pragma once

#include <array>
#include <cstdint>

#include "base/orv_bitbuf.h"

namespace mediasplit {

// Huffman decoder over trees whose nodes have four branches: each step takes two bits at once. The
// entry chosen by them either names the next row (bit 0 clear, row = entry >> 2) or ends the walk
// (bit 0 set, symbol = entry >> 2); bit 1 then tells that the code was one bit shorter.
struct HuffmanRow {
    std::array<std::uint16_t, 4> entry{};
};

using HuffmanTree = const HuffmanRow*;  // row 0 is the root

struct huffdec {
    HuffmanTree tree = nullptr;
    orv_bitbuf* bitbuf = nullptr;  // not owned
    bool read_error = false;
};

// Clears the record.
void huffdec_init(huffdec* decoder);

void huffdec_set_tree(huffdec* decoder, HuffmanTree tree);

void huffdec_set_bitbuf(huffdec* decoder, orv_bitbuf* bitbuf);

// The next symbol. A code that goes beyond the end of the data gives 0 and sets `read_error`, which
// stays set.
std::uint32_t huffdec_read(huffdec* decoder);

bool huffdec_get_read_status(const huffdec* decoder);

}  // namespace mediasplit
