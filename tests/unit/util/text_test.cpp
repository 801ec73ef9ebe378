#include "src/util/text.h"

#include <gtest/gtest.h>

#include <array>

#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

constexpr double kDay = 24.0 * 3600 * 1000;

TEST(EraseSpace, RemovesBlanksAtBothEndsButLineEndsOnlyBehind) {
    EXPECT_EQ(erasespace(" \t a b \t\r\n"), "a b");
    EXPECT_EQ(erasespace("\r\na"), "\r\na");
    EXPECT_EQ(erasespace(" \t\r\n"), "");
    EXPECT_EQ(erasespace(""), "");
}

TEST(Unquoted, TakesQuotationMarksOffBothEndsOrNeither) {
    EXPECT_EQ(unquoted("\"a b\""), "a b");
    EXPECT_EQ(unquoted("\"\"a\"\""), "\"a\"");
    EXPECT_EQ(unquoted("\"\""), "");
    for (const std::string_view other : {"", "\"", "a", "\"a", "a\"", " \"a\""}) {
        EXPECT_EQ(unquoted(other), other);
    }
}

TEST(CheckText, TellsDigitsFromOtherTexts) {
    EXPECT_EQ(check_str_r10("0129"), 0);
    EXPECT_EQ(check_str_r10(""), 0);
    EXPECT_EQ(check_str_r10("12a"), 1);
    EXPECT_EQ(check_str_r10(nullptr), 1);
    EXPECT_EQ(check_str_hex("09afAF"), 0);
    EXPECT_EQ(check_str_hex(""), 0);
    EXPECT_EQ(check_str_hex("0x1"), 1);
    EXPECT_EQ(check_str_hex("g"), 1);
    EXPECT_EQ(check_str_hex(nullptr), 1);
}

TEST(StringDup, CopiesOrHasNothing) {
    EXPECT_EQ(string_dup("ab"), "ab");
    EXPECT_FALSE(string_dup(nullptr));
}

TEST(Numbers, ReadDecimalTexts) {
    EXPECT_EQ(str2uint_r10("0"), 0U);
    EXPECT_EQ(str2uint_r10("4294967295"), 4294967295U);
    EXPECT_EQ(str2ulonglong("18446744073709551615"), 18446744073709551615ULL);
    EXPECT_EQ(str2uint_hex("fFfFfFf0"), 0xFFFFFFF0U);
}

TEST(Numbers, AreZeroForAnythingElse) {
    EXPECT_EQ(str2uint_r10("12a"), 0U);
    EXPECT_EQ(str2uint_r10(""), 0U);
    EXPECT_EQ(str2uint_r10(nullptr), 0U);
    EXPECT_EQ(str2uint_r10("-1"), 0U);
    EXPECT_EQ(str2uint_r10(" 1"), 0U);
    EXPECT_EQ(str2uint_hex("1g"), 0U);
    EXPECT_EQ(str2ulonglong("1.5"), 0U);
    EXPECT_EQ(str2ulonglong(""), 0U);
}

TEST(Numbers, BeyondTheirWidthWrapAround) {
    EXPECT_EQ(str2uint_r10("4294967297"), 1U);
    EXPECT_EQ(str2uint_hex("100000002"), 2U);
    EXPECT_EQ(str2ulonglong("18446744073709551617"), 1U);
}

TEST(StringToDouble, PointAndCommaMarkTheFractionAnyNumberOfTimes) {
    EXPECT_DOUBLE_EQ(stringtodouble("1,5"), 1.5);
    EXPECT_DOUBLE_EQ(stringtodouble("1.2.3"), 1.23);
    EXPECT_DOUBLE_EQ(stringtodouble("12"), 12.0);
    EXPECT_DOUBLE_EQ(stringtodouble(".25"), 0.25);
    EXPECT_DOUBLE_EQ(stringtodouble("3."), 3.0);
    EXPECT_DOUBLE_EQ(stringtodouble("0.040"), 0.04);
}

TEST(StringToDouble, IsZeroForOtherCharactersAndForNothing) {
    EXPECT_EQ(stringtodouble("1x"), 0.0);
    EXPECT_EQ(stringtodouble("-1"), 0.0);
    EXPECT_EQ(stringtodouble("1e3"), 0.0);
    EXPECT_EQ(stringtodouble(""), 0.0);
}

TEST(StringToDouble, LongFractionsKeepTheirValue) {
    EXPECT_DOUBLE_EQ(stringtodouble("0." + std::string(500, '3')), 1.0 / 3);
    EXPECT_DOUBLE_EQ(stringtodouble("1." + std::string(500, '0')), 1.0);
}

TEST(DecimalTexts, AreWhatTheySay) {
    EXPECT_EQ(ultoa_(18446744073709551615ULL), "18446744073709551615");
    EXPECT_EQ(uitoa_(0), "0");
    std::string text = "abc";
    myReserve(text);
    EXPECT_EQ(text, "cba");
}

TEST(CountChar, IsZeroForNoneAndForTextsOver4096Characters) {
    EXPECT_EQ(str_count_char("a,b,c", ','), 2U);
    EXPECT_EQ(str_count_char("", ','), 0U);
    EXPECT_EQ(str_count_char(nullptr, ','), 0U);
    EXPECT_EQ(str_count_char(std::string(4096, ','), ','), 4096U);
    EXPECT_EQ(str_count_char(std::string(4097, ','), ','), 0U);
}

TEST(StrMatch, EqualOrBothMissing) {
    EXPECT_TRUE(str_match("a", std::string("a")));
    EXPECT_TRUE(str_match(nullptr, nullptr));
    EXPECT_FALSE(str_match("a", nullptr));
    EXPECT_FALSE(str_match(nullptr, ""));
    EXPECT_FALSE(str_match("a", "A"));
}

TEST(CaseSensitiveSame, IgnoresTheCaseNotwithstandingItsName) {
    EXPECT_TRUE(case_sensitive_same("64001F", "64001f"));
    EXPECT_TRUE(case_sensitive_same("", ""));
    EXPECT_FALSE(case_sensitive_same("64001F", "64001"));
    EXPECT_FALSE(case_sensitive_same("[", "{"));
    EXPECT_FALSE(case_sensitive_same(nullptr, nullptr));
    EXPECT_TRUE(case_sensitive_same(std::string(100, 'a'), std::string(100, 'A')));
    EXPECT_FALSE(case_sensitive_same(std::string(101, 'a'), std::string(101, 'a')));
}

TEST(BoxType, HasFourPrintableCharacters) {
    EXPECT_EQ(valid_mp4_box_type("moov"), 0);
    EXPECT_EQ(valid_mp4_box_type(" ~A0"), 0);
    EXPECT_EQ(valid_mp4_box_type("moo"), 1);
    EXPECT_EQ(valid_mp4_box_type("moovs"), 1);
    EXPECT_EQ(valid_mp4_box_type("mo\x1Fv"), 1);
    EXPECT_EQ(valid_mp4_box_type("mo\x7Fv"), 1);
    EXPECT_EQ(valid_mp4_box_type("mo\xA9v"), 1);
    EXPECT_EQ(valid_mp4_box_type(nullptr), 1);
}

TEST(StrReplace, ReplacesEveryOccurrenceWithinTheLimit) {
    EXPECT_EQ(str_replace("a/./b/./c", "/./", "/", 1024), "a/b/c");
    EXPECT_EQ(str_replace("$id$-$id$", "$id$", "long text", 1024), "long text-long text");
    EXPECT_EQ(str_replace("aaa", "aa", "b", 1024), "ba");
    EXPECT_EQ(str_replace("abc", "x", "y", 1024), "abc");
    EXPECT_EQ(str_replace("abc", "", "y", 1024), "abc");
    EXPECT_EQ(str_replace("", "x", "y", 1024), "");
}

TEST(StrReplace, NeverPassesTheLimit) {
    EXPECT_EQ(str_replace("abcdef", "x", "y", 4), "abcd");
    EXPECT_EQ(str_replace("xxxx", "x", "yyy", 5), "yyyyy");
    EXPECT_EQ(str_replace("xxxx", "x", "yyy", 0), "");
}

TEST(StringToChars, ReadsDigitsOfEitherCase) {
    std::vector<std::uint8_t> bytes{9, 9, 9};
    EXPECT_EQ(StringtoChars("0a0B", bytes), Status::kOk);
    EXPECT_EQ(bytes, (std::vector<std::uint8_t>{0x0A, 0x0B}));
    EXPECT_EQ(StringtoChars("", bytes), Status::kOk);
    EXPECT_TRUE(bytes.empty());
}

TEST(StringToChars, TextEndsAtTheFirstComma) {
    std::vector<std::uint8_t> bytes;
    EXPECT_EQ(StringtoChars("ff00,xyz", bytes), Status::kOk);
    EXPECT_EQ(bytes, (std::vector<std::uint8_t>{0xFF, 0x00}));
}

TEST(StringToChars, OddLengthIsReported) {
    const RecordingSink sink;
    std::vector<std::uint8_t> bytes{1};
    EXPECT_EQ(StringtoChars("abc", bytes), Status::kFailed);
    EXPECT_TRUE(bytes.empty());
    ASSERT_EQ(sink.count(4015), 1U);
    EXPECT_EQ(sink.reports()[0].text,
              "The length of the input hex string must be even, the invalid string: abc");
}

TEST(StringToChars, IllegalCharacterIsReported) {
    const RecordingSink sink;
    std::vector<std::uint8_t> bytes;
    EXPECT_EQ(StringtoChars("aabg", bytes), Status::kFailed);
    EXPECT_TRUE(bytes.empty());
    EXPECT_EQ(StringtoChars("x0", bytes), Status::kFailed);
    ASSERT_EQ(sink.count(4016), 2U);
    EXPECT_EQ(sink.reports()[0].text,
              "Illegal character has been found when parse hex digit value, the invalid "
              "character: g");
    EXPECT_EQ(StringtoChars(nullptr, bytes), Status::kFailed);
}

class KeyTest : public testing::Test {
protected:
    // 00112233445566778899aabbccddeeff
    std::array<std::uint8_t, 16> id_{0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,
                                     0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
    const std::string key_ = "0123456789abcdef0123456789abcdef";
};

TEST_F(KeyTest, BeginsBehindTheColonAndRunsToTheEndOfTheList) {
    const std::string pairs = "ffffffffffffffffffffffffffffffff:" + key_ +
                              ",00112233445566778899aabbccddeeff:" + key_ + ",more";
    EXPECT_EQ(get_decryption_key(pairs, id_, 128), key_ + ",more");
}

TEST_F(KeyTest, IsFoundOnlyIfTheIdStandsInLowerCase) {
    EXPECT_TRUE(get_decryption_key("00112233445566778899aabbccddeeff:" + key_, id_, 128));
    EXPECT_FALSE(get_decryption_key("00112233445566778899AABBCCDDEEFF:" + key_, id_, 128));
    EXPECT_FALSE(get_decryption_key("", id_, 128));
    EXPECT_FALSE(get_decryption_key(nullptr, id_, 128));
}

TEST_F(KeyTest, NeedsEnoughCharactersBehindTheId) {
    const std::string id = "00112233445566778899aabbccddeeff";
    EXPECT_FALSE(get_decryption_key(id, id_, 128));
    EXPECT_FALSE(get_decryption_key(id, id_, 0));
    EXPECT_EQ(get_decryption_key(id + ":", id_, 0), "");
    EXPECT_FALSE(get_decryption_key(id + ":" + key_.substr(1), id_, 128));
    EXPECT_FALSE(get_decryption_key(id + ":" + key_, std::span(id_).first(15), 128));
}

TEST(Duration, ReadsTimeParts) {
    EXPECT_DOUBLE_EQ(GetDuration("PT1.5S"), 1500.0);
    EXPECT_DOUBLE_EQ(GetDuration("PT1H2M3S"), 3723000.0);
    EXPECT_DOUBLE_EQ(GetDuration("PT0,25S"), 250.0);
    EXPECT_DOUBLE_EQ(GetDuration("PT2M"), 120000.0);
    EXPECT_DOUBLE_EQ(GetDuration("P"), 0.0);
    EXPECT_DOUBLE_EQ(GetDuration("PT"), 0.0);
}

TEST(Duration, ReadsDateParts) {
    EXPECT_DOUBLE_EQ(GetDuration("P3D"), 3 * kDay);
    EXPECT_DOUBLE_EQ(GetDuration("P2W"), 14 * kDay);
    EXPECT_DOUBLE_EQ(GetDuration("P1DT1S"), kDay + 1000);
}

TEST(Duration, YearHas360DaysAndMonth30) {
    EXPECT_DOUBLE_EQ(GetDuration("P1Y"), 360 * kDay);
    EXPECT_DOUBLE_EQ(GetDuration("P1Y2M"), 420 * kDay);
    EXPECT_DOUBLE_EQ(GetDuration("P0Y1M"), 30 * kDay);
}

TEST(Duration, MonthWithoutAYearCountsAsDays) {
    EXPECT_DOUBLE_EQ(GetDuration("P2M"), 2 * kDay);
    EXPECT_DOUBLE_EQ(GetDuration("P2M1D"), 3 * kDay);
}

TEST(Duration, BrokenFieldCountsAsZero) {
    EXPECT_DOUBLE_EQ(GetDuration("PTxS"), 0.0);
    EXPECT_DOUBLE_EQ(GetDuration("PT1xM2S"), 2000.0);
    EXPECT_DOUBLE_EQ(GetDuration("PT-5S"), 0.0);
}

TEST(Duration, IsMinusOneForOtherTexts) {
    EXPECT_DOUBLE_EQ(GetDuration("1S"), -1.0);
    EXPECT_DOUBLE_EQ(GetDuration(""), -1.0);
    EXPECT_DOUBLE_EQ(GetDuration(nullptr), -1.0);
    EXPECT_DOUBLE_EQ(GetDuration("-PT1S"), -1.0);
}

TEST(Duration, PartsOfMoreThan100CharactersAreRefused) {
    EXPECT_DOUBLE_EQ(GetDuration("PT" + std::string(98, '0') + "1S"), 1000.0);
    EXPECT_DOUBLE_EQ(GetDuration("PT" + std::string(99, '0') + "1S"), -1.0);
    EXPECT_DOUBLE_EQ(GetDuration("P" + std::string(99, '0') + "1D"), -1.0);
}

}  // namespace
}  // namespace mediasplit
