#include "src/hls/attribute_list.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "src/hls/playlist_reader.h"

namespace mediasplit {
namespace {

std::vector<std::string> pieces_of(std::string_view list) {
    std::vector<std::string> result;
    PieceReader pieces(list);
    while (const auto piece = pieces.next()) {
        result.emplace_back(*piece);
    }
    return result;
}

std::vector<std::string> quoted_pieces_of(std::string_view list) {
    std::vector<std::string> result;
    PieceReader pieces(list);
    while (const auto piece = pieces.next_quoted()) {
        result.emplace_back(*piece);
    }
    return result;
}

using Texts = std::vector<std::string>;

TEST(DoubleQuotationTest, PairsAreTold) {
    EXPECT_TRUE(hasPairsDoubleQuotation(""));
    EXPECT_TRUE(hasPairsDoubleQuotation("a"));
    EXPECT_FALSE(hasPairsDoubleQuotation("\"a"));
    EXPECT_TRUE(hasPairsDoubleQuotation("\"a\""));
    EXPECT_FALSE(hasPairsDoubleQuotation("\"a\"\""));
}

TEST(PieceReaderTest, RunsOfCommasCountAsOne) {
    EXPECT_EQ(pieces_of(",,a,,,b,"), (Texts{"a", "b"}));
    EXPECT_EQ(pieces_of(""), Texts{});
    EXPECT_EQ(pieces_of(",,,"), Texts{});
}

TEST(PieceReaderTest, PlainReadingSplitsBetweenQuotes) {
    EXPECT_EQ(pieces_of("A=\"x,y\",B=1"), (Texts{"A=\"x", "y\"", "B=1"}));
}

TEST(PieceReaderTest, QuotedReadingKeepsAllCommasBetweenQuotes) {
    EXPECT_EQ(quoted_pieces_of("A=\"x,,y,z\",,B=1"), (Texts{"A=\"x,,y,z\"", "B=1"}));
}

TEST(PieceReaderTest, OpenQuoteReachesToTheEnd) {
    EXPECT_EQ(quoted_pieces_of("A=\"x,B=1,C=2"), (Texts{"A=\"x,B=1,C=2"}));
    EXPECT_EQ(quoted_pieces_of("A=\"x,"), (Texts{"A=\"x"}));
}

TEST(PieceReaderTest, PieceOf500CharactersIsTheLongest) {
    const std::string longest(500, 'x');
    EXPECT_EQ(pieces_of("a," + longest + ",b"), (Texts{"a", longest, "b"}));
    EXPECT_EQ(pieces_of("a,x" + longest + ",b"), (Texts{"a"}));
    EXPECT_EQ(quoted_pieces_of("a," + longest + ",b"), (Texts{"a", longest, "b"}));
    EXPECT_EQ(quoted_pieces_of("a,x" + longest + ",b"), (Texts{"a"}));
}

TEST(PieceReaderTest, JoinedPieceOf499CharactersIsTheLongest) {
    const std::string fits = "\"" + std::string(248, 'x') + "," + std::string(248, 'y') + "\"";
    ASSERT_EQ(fits.size(), 499U);
    EXPECT_EQ(quoted_pieces_of(fits + ",b"), (Texts{fits, "b"}));
    const std::string too_long = "\"" + std::string(248, 'x') + "," + std::string(249, 'y') + "\"";
    EXPECT_EQ(quoted_pieces_of("a," + too_long + ",b"), (Texts{"a"}));
}

TEST(AttributeTest, FirstEqualsSignSeparates) {
    const auto attribute = split_attribute(" URI = a=b ");
    ASSERT_TRUE(attribute);
    EXPECT_EQ(attribute->name, " URI ");
    EXPECT_EQ(attribute->value, " a=b ");
    const auto trimmed = split_trimmed_attribute(" URI = a=b ");
    ASSERT_TRUE(trimmed);
    EXPECT_EQ(trimmed->name, "URI");
    EXPECT_EQ(trimmed->value, "a=b");
    EXPECT_FALSE(split_attribute("URI"));
    EXPECT_FALSE(split_trimmed_attribute("URI"));
}

TEST(AttributeTest, QuotesAreTheFirstAndTheLastCharacterWhateverTheyAre) {
    EXPECT_EQ(without_quotes("\"abc\""), "abc");
    EXPECT_EQ(without_quotes("abc"), "b");
    EXPECT_EQ(without_quotes("\"\""), "");
    EXPECT_EQ(without_quotes("x"), "");
    EXPECT_EQ(without_quotes(""), "");
}

TEST(ByteRangeTextTest, RunsOfTheSeparatorCountAsOne) {
    const auto both = split_byte_range("100@@20@3");
    EXPECT_EQ(both->length, "100");
    EXPECT_EQ(both->offset, "20");
    EXPECT_FALSE(both->last_byte);
    const auto length = split_byte_range("100");
    EXPECT_EQ(length->length, "100");
    EXPECT_FALSE(length->offset);
    const auto open = split_byte_range("100@");
    EXPECT_EQ(open->length, "100");
    EXPECT_FALSE(open->offset);
}

TEST(ByteRangeTextTest, EmptyTextGivesAnEmptyLength) {
    for (const char* text : {"", "@", "@@"}) {
        const auto range = split_byte_range(text);
        EXPECT_EQ(range->length, "") << text;
        EXPECT_FALSE(range->offset) << text;
    }
}

}  // namespace
}  // namespace mediasplit
