#include "src/ac4analyze_impl/language_tag.h"

#include <gtest/gtest.h>

#include <string_view>

namespace mediasplit {
namespace {

TEST(LanguageTag, WellFormedTagsAreValid) {
    for (const std::string_view tag :
         {"en", "deu", "abcd", "en-GB", "zh-Hant-TW", "es-419", "sr-Latn-123", "a-b-c-d-e-f"}) {
        EXPECT_TRUE(language_tag_is_valid(tag)) << tag;
    }
}

TEST(LanguageTag, MalformedTagsAreNot) {
    for (const std::string_view tag : {"", "-", "EN", "En", "e1", "abcde", "en-", "-en", "en--GB",
                                       "en_GB", "en-G B", "zh-Hant-TW-x", "en-\xC3\xA9"}) {
        EXPECT_FALSE(language_tag_is_valid(tag)) << tag;
    }
}

}  // namespace
}  // namespace mediasplit
