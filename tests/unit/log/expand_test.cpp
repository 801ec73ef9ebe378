#include "src/log/expand.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace mediasplit {
namespace {

template <typename... Values>
std::optional<ExpandedMessage> expand(const CatalogueRow& row, const Values&... values) {
    const MessageValue erased[] = {make_message_value(values)..., MessageValue{}};
    return expand_message(row, erased, sizeof...(Values));
}

CatalogueRow row_of(const char* message, const char* reference = "") {
    return {1, 0, 0, MessageType::kPlain, 0, reference, message};
}

TEST(Expand, PutsEachKindOfValueIn) {
    const auto result = expand(row_of("%d|%u|%lu|%llu|%x|%lx|%c|%s|%f|%lf"), -7, 7U,
                               std::uint64_t{18446744073709551615U}, 12LL, 0xBEEF,
                               std::uint64_t{0x123456789ABCDEF0U}, 'q', "text", 1.5, 2.25F);
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->text(),
              "-7|7|18446744073709551615|12|beef|123456789abcdef0|q|text|1.500000|2.250000");
    EXPECT_EQ(result->line, std::string(result->text()) + "\n");
}

TEST(Expand, IntegersTakeTheWidthOfTheirPlaceholder) {
    EXPECT_EQ(expand(row_of("%d"), 0xFFFFFFFFU)->text(), "-1");
    EXPECT_EQ(expand(row_of("%d"), std::uint64_t{0x100000002U})->text(), "2");
    EXPECT_EQ(expand(row_of("%u"), -1)->text(), "4294967295");
    EXPECT_EQ(expand(row_of("%x"), -1)->text(), "ffffffff");
    EXPECT_EQ(expand(row_of("%llu"), 5)->text(), "5");
}

TEST(Expand, LargestNumbersAreWhole) {
    const double largest = std::numeric_limits<double>::max();
    EXPECT_EQ(expand(row_of("%f"), -largest)->text().size(), 1U + 309U + 7U);
    EXPECT_EQ(expand(row_of("%d"), std::numeric_limits<int>::min())->text(), "-2147483648");
    EXPECT_EQ(expand(row_of("%lu"), ~std::uint64_t{0})->text(), "18446744073709551615");
}

TEST(Expand, TextsComeFromAllTextTypesAndMissingOnesAreTold) {
    const char* none = nullptr;
    EXPECT_EQ(expand(row_of("%s%s"), std::string("a"), std::string_view("b"))->text(), "ab");
    EXPECT_EQ(expand(row_of("%s"), none)->text(), "(null)");
    EXPECT_EQ(expand(row_of("%s"), std::optional<std::string>())->text(), "(null)");
    EXPECT_EQ(expand(row_of("%s"), std::optional<std::string>("x"))->text(), "x");
}

TEST(Expand, TextsEndAtTheirFirstZeroByte) {
    EXPECT_EQ(expand(row_of("<%s>"), std::string("ab\0cd", 5))->text(), "<ab>");
    EXPECT_EQ(expand(row_of("<%c>"), '\0')->text(), "<>");
}

TEST(Expand, PercentSignsOfValuesAreNoPlaceholders) {
    EXPECT_EQ(expand(row_of("%s %s"), "%s%n%d", "100%")->text(), "%s%n%d 100%");
}

TEST(Expand, PrefixAndReferenceSurroundTheText) {
    const auto line = [](MessageType type, const char* reference) {
        CatalogueRow row = row_of("m", reference);
        row.type = type;
        return expand(row)->line;
    };
    EXPECT_EQ(line(MessageType::kPlain, ""), "m\n");
    EXPECT_EQ(line(MessageType::kInfo, ""), "INFO: m\n");
    EXPECT_EQ(line(MessageType::kWarning, ""), "WARNING: m\n");
    EXPECT_EQ(line(MessageType::kFatalError, ""), "FATAL ERROR: m\n");
    EXPECT_EQ(line(MessageType::kError, "ISO 1 2.3"), "ERROR: m (ISO 1 2.3)\n");
    EXPECT_EQ(line(MessageType::kDebug, ""), "DEBUG: m\n");
    EXPECT_EQ(line(static_cast<MessageType>(6), ""), "m\n");
}

TEST(Expand, ValuesAreCutSoThatTheLineStaysBelow2048Bytes) {
    CatalogueRow row = row_of("a %s b %s c %d", "ref");
    row.type = MessageType::kError;
    const std::string large(5000, 'x');
    const auto result = expand(row, large, "gone", 12);
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->line.size(), 2047U);
    EXPECT_TRUE(result->line.starts_with("ERROR: a xxxx"));
    EXPECT_TRUE(result->line.ends_with("x b  c  (ref)\n"));
}

TEST(Expand, ValueThatJustFitsIsWhole) {
    const CatalogueRow row = row_of("%s");
    EXPECT_EQ(expand(row, std::string(2046, 'x'))->text().size(), 2046U);
    EXPECT_EQ(expand(row, std::string(2047, 'x'))->text().size(), 2046U);
}

TEST(Expand, RowWithoutRoomForItsOwnTextIsRefused) {
    const std::string message(2047, 'm');
    EXPECT_FALSE(expand(row_of(message.c_str())).has_value());
    EXPECT_TRUE(expand(row_of(message.c_str() + 1)).has_value());
}

TEST(Expand, WrongNumberOrKindOfValuesIsRefused) {
    EXPECT_FALSE(expand(row_of("%d")).has_value());
    EXPECT_FALSE(expand(row_of("%d"), 1, 2).has_value());
    EXPECT_FALSE(expand(row_of("%d"), "1").has_value());
    EXPECT_FALSE(expand(row_of("%s"), 1).has_value());
    EXPECT_FALSE(expand(row_of("none"), 1).has_value());
}

TEST(Expand, UnknownPlaceholdersAreRefused) {
    for (const char* message : {"%n", "%", "%l", "%ld%q", "%lls", "%ls", "%lc", "%llf", "%llld"}) {
        EXPECT_FALSE(expand(row_of(message), 1).has_value()) << message;
    }
}

TEST(WrittenForm, OnlyDoublePercentIsAConversion) {
    EXPECT_EQ(written_form("50%% done\n"), "50% done\n");
    EXPECT_EQ(written_form("%%%%|%%%|%%d"), "%%|%%|%d");
    EXPECT_EQ(written_form("%s %n %d 5% %\n"), "%s %n %d 5% %\n");
    EXPECT_EQ(written_form(""), "");
    EXPECT_EQ(written_form("%"), "%");
    EXPECT_EQ(written_form("%%"), "%");
}

}  // namespace
}  // namespace mediasplit
