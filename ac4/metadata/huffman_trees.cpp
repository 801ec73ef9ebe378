#include "ac4/metadata/huffman_trees.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "ac4/metadata/huffman_code_books.h"

namespace mediasplit {
namespace {

constexpr std::uint16_t kLeaf = 1;
constexpr std::uint16_t kOneBitShorter = 2;
constexpr int kValueShift = 2;

template <std::size_t Rows>
struct TreeBuild {
    std::array<HuffmanRow, Rows> rows{};
    std::size_t used = 1;

    // Row that the branch `column` of `row` leads to, made at the first visit. Row 0 is the root
    // and no branch leads there, so 0 marks a branch without a row.
    constexpr std::size_t branch(std::size_t row, std::size_t column) {
        std::uint16_t& entry = rows[row].entry[column];
        if (entry == 0) {
            entry = static_cast<std::uint16_t>(used++ << kValueShift);
        }
        return entry >> kValueShift;
    }

    constexpr void insert(std::string_view code, std::size_t symbol) {
        const auto bit = [code](std::size_t at) -> std::size_t { return code[at] == '1' ? 1 : 0; };
        const auto leaf = static_cast<std::uint16_t>(symbol << kValueShift | kLeaf);
        std::size_t row = 0;
        std::size_t at = 0;
        for (; code.size() - at > 2; at += 2) {
            row = branch(row, bit(at) * 2 + bit(at + 1));
        }
        if (code.size() - at == 2) {
            rows[row].entry[bit(at) * 2 + bit(at + 1)] = leaf;
        } else {
            rows[row].entry[bit(at) * 2] = leaf | kOneBitShorter;
            rows[row].entry[bit(at) * 2 + 1] = leaf | kOneBitShorter;
        }
    }

    // Every branch of every row in use leads somewhere: any bits decode.
    constexpr bool complete() const {
        for (std::size_t row = 0; row < used; ++row) {
            for (const std::uint16_t entry : rows[row].entry) {
                if (entry == 0) {
                    return false;
                }
            }
        }
        return true;
    }
};

template <std::size_t Rows, std::size_t Codes>
consteval TreeBuild<Rows> build(const std::array<std::string_view, Codes>& book) {
    TreeBuild<Rows> tree;
    for (std::size_t symbol = 0; symbol < Codes; ++symbol) {
        tree.insert(book[symbol], symbol);
    }
    return tree;
}

// Rows that a book needs stand in front; tables are filled up to 32 bytes.
constexpr auto kDeDiff1 = build<68>(huffman_code_books::kDeDiff1);
constexpr auto kDeAbs1 = build<32>(huffman_code_books::kDeAbs1);
constexpr auto kDeDiff0 = build<28>(huffman_code_books::kDeDiff0);
constexpr auto kDeAbs0 = build<16>(huffman_code_books::kDeAbs0);
constexpr auto kDrc = build<92>(huffman_code_books::kDrc);

static_assert(kDeDiff1.complete() && kDeDiff1.used == 68 && sizeof(kDeDiff1.rows) == 544);
static_assert(kDeAbs1.complete() && kDeAbs1.used == 29 && sizeof(kDeAbs1.rows) == 256);
static_assert(kDeDiff0.complete() && kDeDiff0.used == 28 && sizeof(kDeDiff0.rows) == 224);
static_assert(kDeAbs0.complete() && kDeAbs0.used == 15 && sizeof(kDeAbs0.rows) == 128);
static_assert(kDrc.complete() && kDrc.used == 92 && sizeof(kDrc.rows) == 736);

}  // namespace

constinit const std::array<HuffmanRow, 68> tree_huff_code_de_diff_1 = kDeDiff1.rows;
constinit const std::array<HuffmanRow, 32> tree_huff_code_de_abs_1 = kDeAbs1.rows;
constinit const std::array<HuffmanRow, 28> tree_huff_code_de_diff_0 = kDeDiff0.rows;
constinit const std::array<HuffmanRow, 16> tree_huff_code_de_abs_0 = kDeAbs0.rows;
constinit const std::array<HuffmanRow, 92> tree_huff_code_drc_book = kDrc.rows;

constinit const std::array<std::array<HuffmanTree, 2>, 2> tree_huff_code_de = {
    {{tree_huff_code_de_diff_0.data(), tree_huff_code_de_abs_0.data()},
     {tree_huff_code_de_diff_1.data(), tree_huff_code_de_abs_1.data()}}};

constinit const std::array<HuffmanTree, 1> tree_huff_code_drc = {tree_huff_code_drc_book.data()};

}  // namespace mediasplit
