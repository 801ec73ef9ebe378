#include "base/ascii.h"

#include <gtest/gtest.h>

namespace mediasplit {
namespace {

TEST(Ascii, DigitsHaveTheirValuesUpToTheBase) {
    EXPECT_EQ(digit_value('0', 10), 0);
    EXPECT_EQ(digit_value('9', 10), 9);
    EXPECT_EQ(digit_value('a', 10), -1);
    EXPECT_EQ(digit_value('8', 8), -1);
    EXPECT_EQ(digit_value('a', 16), 10);
    EXPECT_EQ(digit_value('F', 16), 15);
}

TEST(Ascii, NeighboursOfDigitsAndLettersAreNone) {
    for (const char c : {'/', ':', '@', 'G', '[', '`', 'g', '{', '\0', '\xE4'}) {
        EXPECT_EQ(digit_value(c, 16), -1) << c;
    }
    EXPECT_FALSE(is_digit('/'));
    EXPECT_FALSE(is_digit(':'));
    EXPECT_EQ(to_lower('@'), '@');
    EXPECT_EQ(to_lower('['), '[');
    EXPECT_EQ(to_lower('\xC4'), '\xC4');
}

TEST(Ascii, TextsAreComparedWithoutTheCaseOfTheirLetters) {
    EXPECT_TRUE(equal_ignoring_case("aBz-1", "AbZ-1"));
    EXPECT_TRUE(equal_ignoring_case("", ""));
    EXPECT_FALSE(equal_ignoring_case("ab", "a"));
    EXPECT_FALSE(equal_ignoring_case("a@", "a`"));
}

}  // namespace
}  // namespace mediasplit
