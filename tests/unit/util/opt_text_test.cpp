#include "src/util/opt_text.h"

#include <gtest/gtest.h>

namespace mediasplit {
namespace {

std::string shown(OptText text) {
    return text ? "[" + text.str() + "]" : "none";
}

TEST(OptText, TakesEveryFormOfAText) {
    const char* const missing = nullptr;
    EXPECT_EQ(shown("abc"), "[abc]");
    EXPECT_EQ(shown(std::string("abc")), "[abc]");
    EXPECT_EQ(shown(std::string_view("abc")), "[abc]");
    EXPECT_EQ(shown(std::optional<std::string>("abc")), "[abc]");
    EXPECT_EQ(shown(std::optional<std::string_view>("abc")), "[abc]");
    EXPECT_EQ(shown(""), "[]");
    EXPECT_EQ(shown(missing), "none");
    EXPECT_EQ(shown(nullptr), "none");
    EXPECT_EQ(shown(std::nullopt), "none");
    EXPECT_EQ(shown(std::optional<std::string>()), "none");
    EXPECT_EQ(shown({}), "none");
}

}  // namespace
}  // namespace mediasplit
