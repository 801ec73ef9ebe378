#include "src/main/input_format.h"

#include <gtest/gtest.h>

#include <string>

namespace mediasplit {
namespace {

TEST(InputIsTemplate, NeedsAPercentAndADWithNothingButDigitsBetween) {
    for (const char* name : {"%d", "a_%d.ts", "a_%04d.ts", "%0000000000000000000000000000000000d",
                             "100%_%d.ts", "%%d", "%x%5d", "%5%5d", "%%%d.ts"}) {
        EXPECT_TRUE(input_is_template(name)) << name;
    }
    for (const char* name :
         {"", "d", "%", "%5", "a.ts", "%u.ts", "% d.ts", "%-4d", "%4x4d", "%5D", "d%", "%l5d"}) {
        EXPECT_FALSE(input_is_template(name)) << name;
    }
}

TEST(InputIsTemplate, LooksAtEachCharacterOnce) {
    std::string name;
    for (int i = 0; i < 200000; ++i) {
        name += "%1";
    }
    EXPECT_FALSE(input_is_template(name));
    EXPECT_TRUE(input_is_template(name + "d"));
}

TEST(FormatOfInput, FollowsTheExtension) {
    const auto expect = [](FormatId format, std::initializer_list<const char*> names) {
        for (const char* name : names) {
            EXPECT_EQ(format_of_input(name), format) << name;
        }
    };
    expect(FormatId::kHls, {"a.m3u8", "a.m3u", "http://h/a.m3u8", ".m3u8"});
    expect(FormatId::kTsSeries, {"a_%d.ts", "a_%04d.trp", "100%_%d.ts", "d%d/a.ts"});
    expect(FormatId::kTsFile, {"a.ts", "a.trp", "a_%u.ts"});
    expect(FormatId::kDash, {"a.mpd"});
    expect(FormatId::kMp4, {"a.mp4", "a.m4i", "a.m4s", "a.m4v", "a.m4a", "a.m4p", "a.m4r", "a.cmfa",
                            "a.cmfv", "a.mov", "a.MOV", "a_%d.mp4"});
    expect(FormatId::kEac3, {"a.ec3"});
    expect(FormatId::kAc4, {"a.ac4"});
}

TEST(FormatOfInput, LettersCountAsWrittenAndOnlyTheLastPointCounts) {
    for (const char* name : {"a.MP4", "a.Mov", "a.TS", "a.M3U8", "a", "", ".", "a.", "a.mp4 ",
                             "a.mp4x", "a.m3u8?a=b", "a.mp4/b", "dir.ts/name", "a.mp4.gz"}) {
        EXPECT_EQ(format_of_input(name), FormatId::kUnknown) << name;
    }
}

}  // namespace
}  // namespace mediasplit
