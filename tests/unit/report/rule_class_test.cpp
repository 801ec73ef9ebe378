#include "src/report/rule_class.h"

#include <gtest/gtest.h>

#include "src/log/catalogue.h"

namespace mediasplit::report {
namespace {

struct Expected {
    int id;
    const char* level;
    const char* family;
    const char* layer;
};

// Read off the messages by hand.
constexpr Expected kExpected[] = {
    {1001, "info", "Orvel Prisma", "TS"},     // In the TS PMT descriptor, the [Orvel Prisma] ...
    {1018, "info", "Orvel Prisma", "MP4"},    // In the MP4 Orvel Prisma configuration box ...
    {1019, "info", "general", "HLS"},         // #EXT-X-ENDLIST
    {1025, "info", "general", "general"},     // Cancel Thread
    {2001, "warning", "general", "general"},  // the command "-s start number"
    {2010, "warning", "general", "DASH"},     // In DASH manifest, in the <UTCTiming>
    {2015, "warning", "general", "HLS"},      // In the HLS variant-playlist
    {2022, "warning", "general", "TS"},       // In TS, the stream type in PMT
    {2039, "warning", "E-AC-3", "MP4"},       // For an [EC3] stream, in MP4
    {2052, "warning", "general", "general"},  // Try to download segment
    {3004, "fatal", "general", "general"},    // MEMORY OUT OF BOUNDS
    {4022, "error", "general", "general"},    // Fail to open the file
    {4045, "error", "general", "DASH"},       // In DASH manifest, the <segmentBase>
    {4051, "error", "general", "HLS"},        // In HLS master-playlist, the URL line
    {4073, "error", "general", "MP4"},        // In MP4 bitstream, one NAL size
    {4074, "error", "general", "TS"},         // In TS, the sync word
    {4086, "error", "general", "DASH"},       // In DASH manifest, the id of the Periods
    {4105, "error", "general", "TS"},         // In TS PES packet
    {4303, "error", "E-AC-3", "MP4"},         // For an [EC3] stream, in MP4
    {4414, "error", "AC-4", "MP4"},           // For an [AC4] stream, in MP4 ... AC4SpecificBox
};

TEST(RuleClass, FollowsWhatTheMessageSpeaksOf) {
    for (const Expected& expected : kExpected) {
        SCOPED_TRACE(expected.id);
        const CatalogueRow& row = *find_catalogue_row(expected.id);
        ASSERT_TRUE(is_finding(row));
        EXPECT_EQ(name_of(level_of(row)), expected.level);
        EXPECT_EQ(name_of(family_of(row)), expected.family);
        EXPECT_EQ(name_of(layer_of(row)), expected.layer);
    }
}

// Every numbered row says in its message what its number says.
TEST(RuleClass, NumbersAgreeWithMessages) {
    int numbered = 0;
    for (const CatalogueTable& table : kCatalogueTables) {
        for (int i = 0; i < table.row_count; ++i) {
            const CatalogueRow& row = table.rows[i];
            if (row.checkpoint == 0) {
                continue;
            }
            ++numbered;
            SCOPED_TRACE(row.id);
            EXPECT_NE(family_of(row), Family::kGeneral);
            EXPECT_NE(layer_of(row), Layer::kGeneral);
        }
    }
    EXPECT_EQ(numbered, 404);
}

TEST(RuleClass, PlainLinesAreNoFindings) {
    for (int id = 1; id <= 16; ++id) {
        EXPECT_FALSE(is_finding(*find_catalogue_row(id)));
    }
}

TEST(RuleClass, RulesAreWarningsAndErrors) {
    EXPECT_FALSE(is_rule(*find_catalogue_row(15)));
    EXPECT_FALSE(is_rule(*find_catalogue_row(1001)));
    EXPECT_FALSE(is_rule(*find_catalogue_row(3004)));
    EXPECT_TRUE(is_rule(*find_catalogue_row(2039)));
    EXPECT_TRUE(is_rule(*find_catalogue_row(4303)));
}

// Warnings that stand among the errors are warnings.
TEST(RuleClass, TypeDecidesTheLevelNotTheNumber) {
    int warnings = 0;
    for (const CatalogueRow& row : error_log_list) {
        warnings += level_of(row) == Level::kWarning ? 1 : 0;
    }
    EXPECT_EQ(warnings, 8);
}

}  // namespace
}  // namespace mediasplit::report
