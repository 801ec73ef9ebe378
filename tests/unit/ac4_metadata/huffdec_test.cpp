#include "ac4/metadata/huffdec.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ac4/metadata/huffman_code_books.h"
#include "ac4/metadata/huffman_trees.h"
#include "tests/unit/ac4_metadata/metadata_test_reader.h"

namespace mediasplit {
namespace {

struct Book {
    const char* name;
    std::span<const std::string_view> codes;
    HuffmanTree tree;
    std::size_t table_bytes;
};

std::vector<Book> books() {
    return {{"DE_HCB_ABS_0", huffman_code_books::kDeAbs0, tree_huff_code_de[0][1],
             sizeof(tree_huff_code_de_abs_0)},
            {"DE_HCB_DIFF_0", huffman_code_books::kDeDiff0, tree_huff_code_de[0][0],
             sizeof(tree_huff_code_de_diff_0)},
            {"DE_HCB_ABS_1", huffman_code_books::kDeAbs1, tree_huff_code_de[1][1],
             sizeof(tree_huff_code_de_abs_1)},
            {"DE_HCB_DIFF_1", huffman_code_books::kDeDiff1, tree_huff_code_de[1][0],
             sizeof(tree_huff_code_de_diff_1)},
            {"DRC_HCB", huffman_code_books::kDrc, tree_huff_code_drc[0],
             sizeof(tree_huff_code_drc_book)}};
}

struct Decoded {
    std::uint32_t symbol;
    bool error;
    std::int64_t position;
};

Decoded decode(const MetadataBits& text, HuffmanTree tree) {
    TestReader reader(text);
    huffdec decoder;
    huffdec_init(&decoder);
    huffdec_set_tree(&decoder, tree);
    huffdec_set_bitbuf(&decoder, &reader.bits);
    const std::uint32_t symbol = huffdec_read(&decoder);
    return {symbol, huffdec_get_read_status(&decoder), orv_bitbuf_get_abs_pos(&reader.bits)};
}

TEST(HuffmanBooks, HaveTheSizesOfTheStandard) {
    const std::map<std::string, std::pair<std::size_t, std::size_t>> expected = {
        {"DE_HCB_ABS_0", {32, 128}},
        {"DE_HCB_DIFF_0", {63, 224}},
        {"DE_HCB_ABS_1", {61, 256}},
        {"DE_HCB_DIFF_1", {121, 544}},
        {"DRC_HCB", {255, 736}}};
    for (const Book& book : books()) {
        EXPECT_EQ(book.codes.size(), expected.at(book.name).first) << book.name;
        EXPECT_EQ(book.table_bytes, expected.at(book.name).second) << book.name;
    }
}

TEST(HuffmanBooks, ArePrefixFreeAndComplete) {
    for (const Book& book : books()) {
        std::uint64_t kraft = 0;  // in units of 2^-16
        for (const std::string_view code : book.codes) {
            kraft += std::uint64_t{1} << (16 - code.size());
            for (const std::string_view other : book.codes) {
                EXPECT_TRUE(code.data() == other.data() || !other.starts_with(code))
                    << book.name << " " << code << " " << other;
            }
        }
        EXPECT_EQ(kraft, 65536U) << book.name;
    }
}

// The gain book in its other form: runs of 12-bit codes, and a list between them.
TEST(HuffmanBooks, GainBookAgreesWithItsRuns) {
    const std::vector<std::string> list = {
        "00010111010", "00010111011", "0001011100", "1110000101", "00010110", "111000011",
        "000101111",   "001010100",   "001010101",  "001010110",  "00100010", "00100011",
        "0001101",     "0001001",     "001011",     "111001",     "11101",    "1111",
        "011",         "10",          "110",        "0011",       "0000",     "01011",
        "01000",       "010101",      "000111",     "1110001",    "0010100",  "0010010",
        "0010011",     "0001100",     "0001010",    "0010000",    "0001000"};
    std::vector<std::string> codes;
    const auto run = [&codes](std::uint32_t from, std::uint32_t to) {
        for (std::uint32_t code = from; code + 1 > to; --code) {
            codes.push_back(MetadataBits().put(code, 12).text());
        }
    };
    run(0xE12, 0xE00);
    run(0x53F, 0x4E8);
    run(0xE13, 0xE13);
    codes.insert(codes.end(), list.begin(), list.end());
    run(0x4E7, 0x480);
    run(0x2BF, 0x2B8);
    ASSERT_EQ(codes.size(), huffman_code_books::kDrc.size());
    for (std::size_t symbol = 0; symbol < codes.size(); ++symbol) {
        EXPECT_EQ(codes[symbol], huffman_code_books::kDrc[symbol]) << symbol;
    }
}

TEST(HuffmanBooks, DialogueBooksHaveTheCodesOfTheStandard) {
    struct Row {
        std::size_t book;
        std::size_t symbol;
        const char* code;
    };
    // First, last, shortest, longest and some codes between them.
    const std::vector<Row> rows = {{0, 0, "110"},
                                   {0, 10, "010"},
                                   {0, 14, "00101001"},
                                   {0, 31, "00101000"},
                                   {0, 17, "100000"},
                                   {0, 29, "1011011"},
                                   {1, 0, "00001010110000"},
                                   {1, 31, "1"},
                                   {1, 62, "0000101001101"},
                                   {1, 30, "011"},
                                   {1, 33, "01011"},
                                   {1, 49, "010100100010"},
                                   {2, 0, "101011100"},
                                   {2, 30, "0"},
                                   {2, 60, "1100011111"},
                                   {2, 31, "1101"},
                                   {2, 58, "111001010000"},
                                   {2, 45, "11000100"},
                                   {3, 0, "1110011110000"},
                                   {3, 60, "0"},
                                   {3, 120, "1110011101011"},
                                   {3, 59, "100"},
                                   {3, 61, "1111"},
                                   {3, 72, "110000111"}};
    for (const Row& row : rows) {
        EXPECT_EQ(books()[row.book].codes[row.symbol], row.code) << row.book << " " << row.symbol;
    }
}

TEST(HuffmanDecoder, DecodesEveryCodeThatEndsWithTheData) {
    for (const Book& book : books()) {
        for (std::size_t symbol = 0; symbol < book.codes.size(); ++symbol) {
            const std::string_view code = book.codes[symbol];
            const Decoded out = decode(MetadataBits().code(code), book.tree);
            EXPECT_EQ(out.symbol, symbol) << book.name;
            EXPECT_FALSE(out.error) << book.name << " " << symbol;
            EXPECT_EQ(out.position, static_cast<std::int64_t>(code.size())) << book.name;
        }
    }
}

TEST(HuffmanDecoder, FailsOnEveryCodeThatIsCut) {
    for (const Book& book : books()) {
        for (const std::string_view code : book.codes) {
            for (std::size_t kept = 0; kept < code.size(); ++kept) {
                const Decoded out = decode(MetadataBits().code(code.substr(0, kept)), book.tree);
                EXPECT_TRUE(out.error) << book.name << " " << code << " " << kept;
                EXPECT_EQ(out.symbol, 0U);
            }
        }
    }
}

TEST(HuffmanDecoder, DecodesALongRunOfCodes) {
    std::mt19937 random(7);
    for (const Book& book : books()) {
        std::vector<std::size_t> symbols(4000);
        MetadataBits text;
        for (std::size_t& symbol : symbols) {
            symbol = random() % book.codes.size();
            text.code(book.codes[symbol]);
        }
        TestReader reader(text);
        huffdec decoder;
        huffdec_init(&decoder);
        huffdec_set_tree(&decoder, book.tree);
        huffdec_set_bitbuf(&decoder, &reader.bits);
        for (const std::size_t symbol : symbols) {
            ASSERT_EQ(huffdec_read(&decoder), symbol) << book.name;
        }
        EXPECT_FALSE(huffdec_get_read_status(&decoder));
        EXPECT_EQ(orv_bitbuf_get_bits_left(&reader.bits), 0);
    }
}

TEST(HuffmanDecoder, KeepsItsErrorUntilInit) {
    TestReader reader(MetadataBits().code("1"));
    huffdec decoder;
    huffdec_init(&decoder);
    huffdec_set_tree(&decoder, tree_huff_code_drc[0]);
    huffdec_set_bitbuf(&decoder, &reader.bits);
    huffdec_read(&decoder);
    EXPECT_TRUE(huffdec_get_read_status(&decoder));
    huffdec_init(&decoder);
    EXPECT_FALSE(huffdec_get_read_status(&decoder));
    EXPECT_EQ(decoder.tree, nullptr);
}

}  // namespace
}  // namespace mediasplit
