#include "src/dash_reader/segment_template.h"

#include <gtest/gtest.h>

#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

std::string filled(OptText text, OptText number = "7", OptText time = "90") {
    const RecordingSink sink;
    std::string out = "unset";
    EXPECT_EQ(substitute_url(text, "id", "64000", number, time, &out, nullptr), Status::kOk);
    EXPECT_TRUE(sink.ids().empty());
    return out;
}

TEST(SegmentTemplate, FillsEveryIdentifierEverywhere) {
    EXPECT_EQ(filled("$RepresentationID$/$Bandwidth$/$Number$-$Time$-$Number$"), "id/64000/7-90-7");
    EXPECT_EQ(filled("plain.m4s"), "plain.m4s");
    EXPECT_EQ(filled(""), "");
}

TEST(SegmentTemplate, PadsToTheWidth) {
    EXPECT_EQ(filled("$Number%05d$"), "00007");
    EXPECT_EQ(filled("$Number%02d$", "12345"), "12345");
    EXPECT_EQ(filled("$Time%020d$"), "00000000000000000090");
    EXPECT_EQ(filled("$Bandwidth%08d$"), "00064000");
    EXPECT_EQ(filled("$Number%0005d$"), "00007");
    EXPECT_EQ(filled("$Number$_$Number%03d$_$Number%03d$"), "7_007_007");
}

TEST(SegmentTemplate, FillsOnlyTheFirstWidthOfAnIdentifier) {
    EXPECT_EQ(filled("$Number%03d$_$Number%04d$_$Number%03d$"), "007_$Number%04d$_007");
}

TEST(SegmentTemplate, KeepsWhatIsNoIdentifier) {
    EXPECT_EQ(filled("$Number%d$"), "$Number%d$");
    EXPECT_EQ(filled("$Number%0d$"), "$Number%0d$");
    EXPECT_EQ(filled("$Number%0xd$"), "$Number%0xd$");
    EXPECT_EQ(filled("$Number%05"), "$Number%05");
    EXPECT_EQ(filled("$Numbers$"), "$Numbers$");
    EXPECT_EQ(filled("$SubNumber$"), "$SubNumber$");
    EXPECT_EQ(filled("a$b"), "a$b");
}

TEST(SegmentTemplate, MakesOneDollarOfTwo) {
    EXPECT_EQ(filled("a$$b$$$$c"), "a$b$$c");
    EXPECT_EQ(filled("$$Number$$"), "$7$");
}

TEST(SegmentTemplate, NeedsTheValuesOfItsIdentifiers) {
    struct Row {
        const char* text;
        int id;
    };
    const Row rows[] = {{"$RepresentationID$", 4036}, {"$Bandwidth$", 4037},
                        {"$Bandwidth%05d$", 4037},    {"$Number$", 4038},
                        {"$Number%05d$", 4038},       {"$Time$", 4039},
                        {"$Time%05d$", 4039}};
    for (const Row& row : rows) {
        const RecordingSink sink;
        std::string out = "kept";
        EXPECT_EQ(substitute_url(row.text, {}, {}, {}, {}, &out, nullptr), Status::kFailed);
        EXPECT_EQ(sink.ids(), std::vector<int>{row.id}) << row.text;
        EXPECT_EQ(out, "kept");
    }
}

TEST(SegmentTemplate, RefusesWidthsAbove20) {
    struct Row {
        const char* text;
        int id;
    };
    // The last one is 5 modulo 2^32.
    const Row rows[] = {{"$Bandwidth%021d$", 4040},
                        {"$Number%021d$", 4041},
                        {"$Time%021d$", 4042},
                        {"$Number%0999d$", 4041},
                        {"$Number%04294967301d$", 4041}};
    for (const Row& row : rows) {
        const RecordingSink sink;
        std::string out = "kept";
        EXPECT_EQ(substitute_url(row.text, "i", "1", "2", "3", &out, nullptr), Status::kFailed);
        EXPECT_EQ(sink.ids(), std::vector<int>{row.id}) << row.text;
        EXPECT_EQ(out, "kept");
    }
}

TEST(SegmentTemplate, TakesAtMost1024Characters) {
    const RecordingSink sink;
    EXPECT_EQ(filled(std::string(1024, 'x')), std::string(1024, 'x'));
    std::string out = "kept";
    EXPECT_EQ(substitute_url(std::string(1025, 'x'), "i", "1", "2", "3", &out, nullptr),
              Status::kFailed);
    EXPECT_EQ(substitute_url({}, "i", "1", "2", "3", &out, nullptr), Status::kFailed);
    EXPECT_EQ(out, "kept");
    EXPECT_TRUE(sink.ids().empty());
    EXPECT_EQ(substitute_url("$Number$", "i", "1", "2", "3", nullptr, nullptr), Status::kOk);
}

TEST(SegmentTemplate, StaysBoundedWhateverTheIdHolds) {
    std::string text;
    while (text.size() + 18 <= 1024) {
        text += "$RepresentationID$";
    }
    std::string out;
    EXPECT_EQ(substitute_url(text, std::string(1 << 20, 'y'), "1", "2", "3", &out, nullptr),
              Status::kOk);
    EXPECT_LE(out.size(), 4096U);
}

}  // namespace
}  // namespace mediasplit
