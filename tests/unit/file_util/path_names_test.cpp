#include "src/file_util/path_names.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <set>
#include <thread>

#include "tests/support/recording_sink.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {
namespace {

std::string cleaned(std::string text, int expected) {
    EXPECT_EQ(fileStrValid(&text), expected) << text;
    return text;
}

// True for 225 characters, "%_" and a decimal number.
bool is_cut_name(const std::string& text) {
    return text.size() > 227 && text.substr(225, 2) == "%_" &&
           text.find_first_not_of("0123456789", 227) == std::string::npos;
}

class LineTest : public testing::Test {
protected:
    std::vector<std::string> lines(const std::string& text, std::size_t size) {
        std::FILE* const file = std::fopen(folder_.write("lines", text).c_str(), "r");
        std::vector<std::string> result;
        for (auto line = fgetline(size, file); line; line = fgetline(size, file)) {
            result.push_back(*line);
        }
        std::fclose(file);
        return result;
    }
    TempFolder folder_;
};

TEST_F(LineTest, LinesComeWithoutTheirEnds) {
    EXPECT_EQ(lines("one\r\n\n  two \nthree", 100),
              (std::vector<std::string>{"one", "", "two", "three"}));
}

TEST_F(LineTest, LongLineComesInPieces) {
    EXPECT_EQ(lines("abcdefg\nh\n", 5), (std::vector<std::string>{"abcd", "efg", "h"}));
}

TEST_F(LineTest, ZeroByteEndsTheText) {
    EXPECT_EQ(lines(std::string("ab\0cd\nef", 8), 100), (std::vector<std::string>{"ab", "ef"}));
}

TEST_F(LineTest, NoFileHasNoLine) {
    EXPECT_FALSE(fgetline(100, nullptr));
    EXPECT_TRUE(lines("", 100).empty());
}

TEST(Findrstr, IsTheLastIndexOrMinusOne) {
    EXPECT_EQ(findrstr("a.b.c", '.'), 3);
    EXPECT_EQ(findrstr("abc", '.'), -1);
}

TEST(SplitPath, KeepsTheFinalSeparator) {
    EXPECT_EQ(splitpath("a/x.ts"), "a/");
    EXPECT_EQ(splitpath("a\\b/x.ts"), "a\\b/");
    EXPECT_EQ(splitpath("a/b\\x.ts"), "a/b\\");
    EXPECT_EQ(splitpath("a/b/"), "a/b/");
    EXPECT_EQ(splitpath("/"), "/");
    EXPECT_EQ(splitpath("x.ts"), "");
    EXPECT_EQ(splitpath("http://h/a/b.m3u8"), "http://h/a/");
}

TEST(SplitPath, SeparatorAtTheStartDoesNotCount) {
    EXPECT_EQ(splitpath("/x.ts"), "");
}

TEST(SplitFileName, CutsTheLastExtensionOnly) {
    std::string name;
    EXPECT_EQ(splitfilename("dir/name.tar.gz", name), 0);
    EXPECT_EQ(name, "name.tar");
    EXPECT_EQ(splitfilename("C:\\x\\y.ts", name), 0);
    EXPECT_EQ(name, "y");
    EXPECT_EQ(splitfilename(".ts", name), 0);
    EXPECT_EQ(name, "");
}

TEST(SplitFileName, FailsWithoutAnExtension) {
    std::string name = "as before";
    EXPECT_EQ(splitfilename("dir.d/name", name), -1);
    EXPECT_EQ(splitfilename("dir.d/", name), -1);
    EXPECT_EQ(splitfilename("", name), -1);
    EXPECT_EQ(splitfilename(nullptr, name), -1);
    EXPECT_EQ(name, "as before");
}

TEST(SplitFileNameWithExt, AppendsTheNamePart) {
    std::string out = "tmp/";
    splitfilenamewithext("a/b\\c.mp4", out);
    EXPECT_EQ(out, "tmp/c.mp4");
    out.clear();
    splitfilenamewithext("c.mp4", out);
    EXPECT_EQ(out, "c.mp4");
}

TEST(SplitFileNameWithExt, AppendsTheWholePathIfItsOnlySeparatorIsAtTheStart) {
    std::string out;
    splitfilenamewithext("/c.mp4", out);
    EXPECT_EQ(out, "/c.mp4");
}

TEST(UniqueFileName, NamesTheThreadAndCounts) {
    const std::string first = createUniqueFileName("segment");
    const std::string second = createUniqueFileName("segment");
    const std::string start =
        "tmp/segment_" + std::to_string(static_cast<unsigned long>(pthread_self())) + "_";
    ASSERT_EQ(first.rfind(start, 0), 0U);
    EXPECT_EQ(std::stol(first.substr(start.size())) + 1, std::stol(second.substr(start.size())));
    std::optional<std::string> third;
    mallocAndCreateUniqueFileName("segment", third);
    ASSERT_TRUE(third);
    EXPECT_NE(*third, second);
}

TEST(UniqueFileName, StaysUniqueAcrossThreads) {
    std::vector<std::vector<std::string>> names(4);
    std::vector<std::thread> threads;
    for (auto& mine : names) {
        threads.emplace_back([&mine] {
            for (int i = 0; i < 500; ++i) {
                mine.push_back(createUniqueFileName("x"));
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    std::set<std::string> numbers;
    for (const auto& mine : names) {
        for (const std::string& name : mine) {
            numbers.insert(name.substr(name.rfind('_')));
        }
    }
    EXPECT_EQ(numbers.size(), 2000U);
}

TEST(FileChrValid, IsTrueForTheEightForbiddenCharacters) {
    for (int c = 1; c < 256; ++c) {
        EXPECT_EQ(fileChrValid(static_cast<char>(c)), std::strchr("<>/\\:*?|", c) != nullptr) << c;
        EXPECT_EQ(fileFirstChrValid(static_cast<char>(c)), std::strchr("+-.", c) != nullptr) << c;
    }
    EXPECT_FALSE(fileChrValid('\0'));
}

TEST(EraseInvalidChr, DropsForbiddenCharacters) {
    EXPECT_EQ(eraseInvalidChr("1<6>/\\:*?|J,OC", 32), "16J,OC");
    EXPECT_EQ(eraseInvalidChr("", 32), "");
}

TEST(EraseInvalidChr, RefusesATextLongerThanTheLimit) {
    const RecordingSink sink;
    EXPECT_TRUE(eraseInvalidChr(std::string(32, 'a'), 32));
    EXPECT_FALSE(eraseInvalidChr(nullptr, 32));
    EXPECT_EQ(sink.count(3006), 0U);
    EXPECT_FALSE(eraseInvalidChr(std::string(33, 'a'), 32));
    ASSERT_EQ(sink.count(3006), 1U);
    EXPECT_EQ(sink.reports()[0].text,
              "INVALID INPUT PARAMETER ! [ File : ../../../../mediacheck2/src/file_util, Line : "
              "49 ]");
}

TEST(FileStrValid, EscapesOrReplacesForbiddenCharacters) {
    EXPECT_EQ(cleaned("a:b", 1), "a%058_b");
    EXPECT_EQ(cleaned("a/b", 1), "a_b");
    EXPECT_EQ(cleaned("a\\b", 1), "a_b");
    EXPECT_EQ(cleaned("*:<>?|", 1), "%042_%058_%060_%062_%063_%124_");
    EXPECT_EQ(cleaned("plain name.1", 0), "plain name.1");
    EXPECT_EQ(cleaned("", 0), "");
}

TEST(FileStrValid, CommaIsReplacedWithoutCountingAsAChange) {
    EXPECT_EQ(cleaned("a,b", 0), "a_b");
    EXPECT_EQ(cleaned("a,b:", 1), "a_b%058_");
}

TEST(FileStrValid, FirstCharacterMustNotBePlusMinusOrPoint) {
    EXPECT_EQ(cleaned(".a.", 1), "_a.");
    EXPECT_EQ(cleaned("+a+", 1), "_a+");
    EXPECT_EQ(cleaned("-a-", 1), "_a-");
}

TEST(FileStrValid, NoTextIsReported) {
    const RecordingSink sink;
    EXPECT_EQ(fileStrValid(nullptr), -1);
    ASSERT_EQ(sink.count(3006), 1U);
    EXPECT_EQ(sink.reports()[0].text,
              "INVALID INPUT PARAMETER ! [ File : ../../../../mediacheck2/src/file_util, Line : "
              "233 ]");
}

TEST(FileStrValid, TextOf300CharactersIsReportedCutAndNumbered) {
    const RecordingSink sink;
    const std::string text(300, 'a');
    const std::string result = cleaned(text, 1);
    EXPECT_EQ(result.substr(0, 225), std::string(225, 'a'));
    EXPECT_TRUE(is_cut_name(result)) << result;
    ASSERT_EQ(sink.count(4079), 1U);
    EXPECT_EQ(sink.reports()[0].text,
              "The output filename is too long! It has more than 1024 characters : " + text);
}

TEST(FileStrValid, TextOf248CharactersIsCutWithoutAMessageAndWithoutCountingAsAChange) {
    const RecordingSink sink;
    EXPECT_TRUE(is_cut_name(cleaned(std::string(248, 'a'), 0)));
    EXPECT_TRUE(sink.reports().empty());
}

TEST(FileStrValid, TextOf247CharactersStays) {
    EXPECT_EQ(cleaned(std::string(247, 'a'), 0), std::string(247, 'a'));
}

TEST(FileStrValid, EscapesCountAsFiveCharactersAgainstTheLimit) {
    // One escape leaves room for 243 characters; the check stops ahead of the last one.
    EXPECT_EQ(cleaned(":" + std::string(242, 'a'), 1), "%058_" + std::string(242, 'a'));
    const std::string cut = cleaned(":" + std::string(243, 'a'), 1);
    EXPECT_EQ(cut.substr(0, 225), "%058_" + std::string(220, 'a'));
    EXPECT_TRUE(is_cut_name(cut));
}

TEST(FileStrValid, EscapeThatDoesNotFitCutsTheTextThere) {
    // 49 escapes come to 245 characters; a fiftieth would pass the limit.
    std::string expected;
    for (int i = 0; i < 45; ++i) {
        expected += "%042_";
    }
    const std::string cut = cleaned(std::string(60, '*'), 1);
    EXPECT_EQ(cut.substr(0, 225), expected);
    EXPECT_TRUE(is_cut_name(cut));
    std::string whole;
    for (int i = 0; i < 49; ++i) {
        whole += "%042_";
    }
    EXPECT_EQ(cleaned(std::string(49, '*'), 1), whole);
}

// No name is ever longer than 247 characters, or 225 with its clock value.
TEST(FileStrValid, ResultIsBoundedForAnyMix) {
    std::uint32_t state = 1;
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        state = state * 1664525 + 1013904223;
        const std::size_t size = state >> 16 & 0x1FF;
        for (std::size_t i = 0; i < size; ++i) {
            state = state * 1664525 + 1013904223;
            text += "ab:*/\\?|<>,.-+"[(state >> 16) % 14];
        }
        fileStrValid(&text);
        ASSERT_LE(text.size(), 248U);
        ASSERT_EQ(text.find_first_of("<>/\\:*?|,"), std::string::npos);
    }
}

TEST(AllNumber, IsTrueForDigitsOnly) {
    EXPECT_TRUE(allNumber("16"));
    EXPECT_TRUE(allNumber(std::string(32, '9')));
    EXPECT_FALSE(allNumber("16/JOC"));
    EXPECT_FALSE(allNumber(nullptr));
}

TEST(AllNumber, LengthOutOfBoundsIsReported) {
    const RecordingSink sink;
    EXPECT_FALSE(allNumber("1a"));
    EXPECT_EQ(sink.count(4025), 0U);
    EXPECT_FALSE(allNumber(""));
    EXPECT_FALSE(allNumber(std::string(33, '1')));
    ASSERT_EQ(sink.count(4025), 2U);
    EXPECT_EQ(sink.reports()[1].text,
              "The length of the number value is invalid: " + std::string(33, '1'));
}

}  // namespace
}  // namespace mediasplit
