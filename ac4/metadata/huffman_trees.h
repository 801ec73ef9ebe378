#pragma once

#include <array>

#include "ac4/metadata/huffdec.h"

namespace mediasplit {

// Trees of the code books of ETSI TS 103 190-1 Annex A (tables A.58 to A.62). A symbol is the index
// of its code in the book.
extern const std::array<HuffmanRow, 68> tree_huff_code_de_diff_1;
extern const std::array<HuffmanRow, 32> tree_huff_code_de_abs_1;
extern const std::array<HuffmanRow, 28> tree_huff_code_de_diff_0;
extern const std::array<HuffmanRow, 16> tree_huff_code_de_abs_0;
extern const std::array<HuffmanRow, 92> tree_huff_code_drc_book;

// Dialogue enhancement, by variant (`de_method` & 1), then 0 differential, 1 absolute.
extern const std::array<std::array<HuffmanTree, 2>, 2> tree_huff_code_de;

// DRC gains: one book.
extern const std::array<HuffmanTree, 1> tree_huff_code_drc;

}  // namespace mediasplit
