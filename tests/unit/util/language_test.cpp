#include "src/util/language.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

namespace mediasplit {
namespace {

TEST(LanguageTable, Has486RowsWithCodesOfTheRightLength) {
    const auto table = iso_639_code_table();
    ASSERT_EQ(table.size(), 486U);
    std::set<std::string> codes;
    std::size_t two_letters = 0;
    std::size_t bibliographic = 0;
    for (const LanguageRow& row : table) {
        EXPECT_EQ(std::strlen(row.terminology), 3U);
        EXPECT_EQ(std::strlen(row.bibliographic), 3U);
        EXPECT_TRUE(codes.insert(row.terminology).second) << row.terminology;
        two_letters += std::strlen(row.alpha_2) == 2 ? 1 : 0;
        bibliographic += std::strcmp(row.terminology, row.bibliographic) == 0 ? 0 : 1;
        EXPECT_NE(std::strlen(row.english), 0U);
        EXPECT_NE(std::strlen(row.french), 0U);
    }
    // ISO 639-2 has 20 languages with two three-letter codes, ISO 639-1 names 183 or 184.
    EXPECT_EQ(bibliographic, 20U);
    EXPECT_GE(two_letters, 183U);
    EXPECT_LE(two_letters, 184U);
}

TEST(LanguageMatch, CodesOfOneLanguageMatchInAnyPair) {
    EXPECT_EQ(language_match("en", "eng"), 0);
    EXPECT_EQ(language_match("eng", "en"), 0);
    EXPECT_EQ(language_match("fre", "fra"), 0);
    EXPECT_EQ(language_match("fr", "fre"), 0);
    EXPECT_EQ(language_match("ger", "deu"), 0);
    EXPECT_EQ(language_match("zho", "chi"), 0);
    EXPECT_EQ(language_match("und", "und"), 0);
}

TEST(LanguageMatch, EveryRowsCodesMatchEachOther) {
    for (const LanguageRow& row : iso_639_code_table()) {
        EXPECT_EQ(language_match(row.bibliographic, row.terminology), 0) << row.english;
        if (*row.alpha_2 != '\0') {
            EXPECT_EQ(language_match(row.alpha_2, row.terminology), 0) << row.english;
            EXPECT_EQ(language_match(row.bibliographic, row.alpha_2), 0) << row.english;
        }
    }
}

TEST(TerminologicalCode, IsAnyOfIso6392TOrOfItsPrivateUse) {
    for (const LanguageRow& row : iso_639_code_table()) {
        EXPECT_TRUE(is_terminological_code(row.terminology)) << row.english;
        EXPECT_FALSE(is_terminological_code(row.alpha_2)) << row.english;
    }
    for (const char* code : {"qaa", "qgz", "qtz"}) {
        EXPECT_TRUE(is_terminological_code(code)) << code;
    }
    for (const char* code : {"fre", "ger", "chi", "qua", "xxx", "", "de", "engl", "ENG"}) {
        EXPECT_FALSE(is_terminological_code(code)) << code;
    }
}

TEST(LanguageMatch, DifferentLanguagesHaveTheOrderOfTheTexts) {
    EXPECT_LT(language_match("de", "en"), 0);
    EXPECT_GT(language_match("eng", "deu"), 0);
}

TEST(LanguageMatch, UnknownCodesAreComparedAsTexts) {
    EXPECT_EQ(language_match("xx", "xx"), 0);
    EXPECT_NE(language_match("xx", "yy"), 0);
    EXPECT_NE(language_match("en", "xx"), 0);
}

TEST(LanguageMatch, PrivateUseCodesAreComparedAsTexts) {
    EXPECT_EQ(language_match("qaa", "qaa"), 0);
    EXPECT_LT(language_match("qaa", "qtz"), 0);
    EXPECT_NE(language_match("qaa", "en"), 0);
}

TEST(LanguageMatch, LongerTagsAreComparedAsTexts) {
    EXPECT_EQ(language_match("en-US", "en-US"), 0);
    EXPECT_NE(language_match("en-US", "en"), 0);
    EXPECT_NE(language_match("en", "en-US"), 0);
    EXPECT_EQ(language_match("", ""), 0);
}

TEST(LanguageMatch, MissingTextIsMinusOne) {
    EXPECT_EQ(language_match(nullptr, "en"), -1);
    EXPECT_EQ(language_match("en", nullptr), -1);
    EXPECT_EQ(language_match(nullptr, nullptr), -1);
}

}  // namespace
}  // namespace mediasplit
