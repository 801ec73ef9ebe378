#include "src/log/catalogue.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <string_view>

#include "src/log/logging.h"

namespace mediasplit {
namespace {

template <typename Visit>
void for_each_row(Visit visit) {
    for (const CatalogueTable& table : kCatalogueTables) {
        for (int i = 0; i < table.row_count; ++i) {
            visit(table.rows[i]);
        }
    }
}

void expect_row(int id, int checkpoint, int collect, MessageType type, std::uint32_t code,
                std::string_view message, std::string_view reference) {
    const CatalogueRow* row = find_catalogue_row(id);
    ASSERT_NE(row, nullptr) << id;
    EXPECT_EQ(row->id, id);
    EXPECT_EQ(row->checkpoint, checkpoint) << id;
    EXPECT_EQ(row->collect, collect) << id;
    EXPECT_EQ(row->type, type) << id;
    EXPECT_EQ(row->code, code) << id;
    EXPECT_EQ(row->message, message) << id;
    EXPECT_EQ(row->reference, reference) << id;
}

TEST(Catalogue, TablesHaveTheirCountsOfRows) {
    EXPECT_EQ(std::size(output_log_list), 16U);
    EXPECT_EQ(std::size(info_log_list), 28U);
    EXPECT_EQ(std::size(warning_log_list), 55U);
    EXPECT_EQ(std::size(system_error_log_list), 11U);
    EXPECT_EQ(std::size(error_log_list), 498U);
    EXPECT_EQ(kCatalogueRowCount, 608);
}

TEST(Catalogue, NumberIsPlaceInTablePlusFirstNumber) {
    std::set<int> indices;
    for (const CatalogueTable& table : kCatalogueTables) {
        for (int i = 0; i < table.row_count; ++i) {
            EXPECT_EQ(table.rows[i].id, table.first_id + i);
            EXPECT_EQ(find_catalogue_row(table.first_id + i), &table.rows[i]);
            indices.insert(catalogue_index(table.first_id + i));
        }
    }
    EXPECT_EQ(indices.size(), 608U);
    EXPECT_EQ(*indices.begin(), 0);
    EXPECT_EQ(*indices.rbegin(), 607);
}

TEST(Catalogue, NumbersOutsideTheTablesHaveNoRow) {
    for (const int id : {-1, 0, 17, 1000, 1029, 2000, 2056, 3000, 3012, 4000, 4499, 2147483647}) {
        EXPECT_EQ(find_catalogue_row(id), nullptr) << id;
        EXPECT_EQ(catalogue_index(id), -1) << id;
    }
}

TEST(Catalogue, CountsOfRowsWithAndWithoutCheckpoint) {
    int with = 0;
    int without = 0;
    for_each_row([&](const CatalogueRow& row) { ++(row.checkpoint == 0 ? without : with); });
    EXPECT_EQ(with, 404);
    EXPECT_EQ(without, 204);
}

TEST(Catalogue, CountsOfRowsByFirstTwoCheckpointDigits) {
    std::map<int, int> counts;
    for_each_row([&](const CatalogueRow& row) {
        if (row.checkpoint != 0) {
            EXPECT_GE(row.checkpoint, 100000) << row.id;
            EXPECT_LE(row.checkpoint, 999999) << row.id;
            ++counts[row.checkpoint / 10000];
        }
    });
    const std::map<int, int> expected = {{20, 9},  {21, 66}, {30, 124}, {31, 1},
                                         {32, 36}, {33, 4},  {40, 117}, {41, 17},
                                         {42, 2},  {43, 7},  {44, 3},   {45, 18}};
    EXPECT_EQ(counts, expected);
}

TEST(Catalogue, TypesFollowTheTables) {
    int warnings_among_errors = 0;
    for_each_row([&](const CatalogueRow& row) {
        if (row.id < 1000) {
            EXPECT_EQ(row.type, MessageType::kPlain) << row.id;
        } else if (row.id < 2000) {
            EXPECT_EQ(row.type, MessageType::kInfo) << row.id;
        } else if (row.id < 3000) {
            EXPECT_EQ(row.type, MessageType::kWarning) << row.id;
        } else if (row.id < 4000) {
            EXPECT_EQ(row.type, MessageType::kFatalError) << row.id;
        } else if (row.type == MessageType::kWarning) {
            ++warnings_among_errors;
        } else {
            EXPECT_EQ(row.type, MessageType::kError) << row.id;
        }
    });
    EXPECT_EQ(warnings_among_errors, 8);
}

TEST(Catalogue, CodesFollowTypeAndCollection) {
    for_each_row([](const CatalogueRow& row) {
        const bool error = row.type == MessageType::kError || row.type == MessageType::kFatalError;
        if (row.collect != 0) {
            EXPECT_NE(row.code, kFailure) << row.id;
        }
        if (error && row.id != 4498 && row.id != 3011) {
            EXPECT_EQ(row.code, row.collect == 0 ? kFailure : kBrokenRule) << row.id;
        }
    });
    EXPECT_EQ(find_catalogue_row(4498)->code, 0U);
    EXPECT_EQ(find_catalogue_row(3011)->code, 0U);
}

TEST(Catalogue, UnusedRowsStandAtTheEndsOfTheTables) {
    for (const CatalogueTable& table : kCatalogueTables) {
        EXPECT_STREQ(table.rows[table.row_count - 1].message, "Currently unused.");
    }
    EXPECT_STREQ(output_log_list[0].message, "Currently unused.");
}

TEST(Catalogue, EachPlaceholderIsOneThatTheExpansionKnows) {
    std::map<std::string, int> seen;
    for_each_row([&](const CatalogueRow& row) {
        for (const char* at = row.message; *at != 0;) {
            if (*at != '%') {
                ++at;
                continue;
            }
            const Placeholder placeholder = read_placeholder(at);
            ASSERT_NE(placeholder.kind, ValueKind::kNone) << row.id << ": " << at;
            ++seen[std::string(at, placeholder.length)];
            at += placeholder.length;
        }
    });
    std::set<std::string> forms;
    for (const auto& [form, count] : seen) {
        forms.insert(form);
    }
    const std::set<std::string> expected = {"%d", "%s",  "%c",  "%x",  "%lx",
                                            "%f", "%lf", "%lu", "%llu"};
    EXPECT_EQ(forms, expected);
}

TEST(Catalogue, BlanksAtTheEndsOfMessagesAreKept) {
    int trailing = 0;
    std::set<int> leading;
    for_each_row([&](const CatalogueRow& row) {
        const std::string_view message = row.message;
        trailing += message.ends_with(' ') ? 1 : 0;
        if (message.starts_with(' ')) {
            leading.insert(row.id);
        }
    });
    EXPECT_EQ(trailing, 65);
    EXPECT_EQ(leading, (std::set<int>{4223, 4224}));
}

TEST(Catalogue, TextsStayBelowTheirCapacity) {
    for_each_row([](const CatalogueRow& row) {
        EXPECT_LE(std::string_view(row.message).size(), 2047U) << row.id;
        EXPECT_LE(std::string_view(row.reference).size(), 2047U) << row.id;
        EXPECT_EQ(std::string_view(row.message).find(" // ["), std::string_view::npos) << row.id;
        EXPECT_EQ(std::string_view(row.message).find("vendor tag"), std::string_view::npos)
            << row.id;
    });
}

TEST(Catalogue, OutputRowsAsTheyArePrinted) {
    expect_row(2, 0, 0, MessageType::kPlain, 0, "*** %s ***", "");
    expect_row(3, 0, 1, MessageType::kPlain, 0, "%s:", "");
    expect_row(11, 0, 0, MessageType::kPlain, 0, "Fail to remove %s (%s)", "");
    expect_row(12, 0, 1, MessageType::kPlain, 0, "%s (pts:%llu)", "");
    expect_row(15, 0, 0, MessageType::kPlain, 0, "%s to demultiplex %s", "");
}

TEST(Catalogue, RowsOfEachKindAsWritten) {
    expect_row(1001, 0, 1, MessageType::kInfo, 0,
               "In the TS PMT descriptor, the [Orvel Prisma] stream version_major     : %d.", "");
    expect_row(2001, 0, 0, MessageType::kWarning, 0,
               "The command \"-s start number\" is only used when the input is a series of TS "
               "files. ",
               "");
    expect_row(2027, 411002, 1, MessageType::kWarning, 0,
               "For a [Orvel Prisma] profile %s stream, in the DASH manifest, if the segments are "
               "CMAF segments, the value of the segmentProfiles attribute in the corresponding "
               "Representation [id:%s] or its parent AdaptationSet should be %s. ",
               "OrvelPrismaInMPEGDASHSpecification_v2_3 4.2.4 4.3");
    expect_row(3008, 0, 0, MessageType::kFatalError, 1,
               "SEEK BYTES ERR ! (In file : %s, at position : %d, seek_bytes : %d) [ File : %s, "
               "Line : %d ]",
               "");
    expect_row(4013, 0, 0, MessageType::kError, 1,
               "The decryption key is needed. Use the Decryption check box to input the "
               "decryption keypairs.",
               "");
    expect_row(4142, 402001, 1, MessageType::kError, kBrokenRule,
               "For a [Orvel Prisma] stream, in HLS master-manifest, the attribute \"CODECS\" in "
               "the #EXT-X-STREAM-INF [index : %s] must include Orvel Prisma codec.",
               "OrvelPrismaInHLSSpecification_v2_0 4.2");
    expect_row(4187, 403106, 1, MessageType::kWarning, 0,
               "For an AV1 [Orvel Prisma] stream, in MP4, the md_compression value in the Orvel "
               "Prisma configuration box mismatches the corresponding description in the "
               "elementary stream.",
               "");
    expect_row(4220, 403104, 1, MessageType::kWarning, kBrokenRule,
               "For a [Orvel Prisma] profile 10 stream, If the AV1 VES includes Metadata OBUs of "
               "type METADATA_TYPE_HDR_MDCV, 'mdcv' box must be included in the VisualSampleEntry "
               "box.",
               "");
    expect_row(4442, 303130, 1, MessageType::kError, kBrokenRule,
               "For an [AC4] stream, in MP4, b_presentation_core_differs of presentation [index : "
               "%d] info in AC4SpecificBox does not match the result of \"pres_ch_mode_core != "
               "-1\" in the TOC of the elementary stream. (expected b_presentation_core_differs "
               "value: %d; actual value: %d)",
               "ETSI TS 103 270 190-2 V1.2.1 (2017-10), E.10.1");
    expect_row(4498, 0, 0, MessageType::kError, 0, "Currently unused.",
               "[Log only in WebAssembly]");
}

TEST(Catalogue, TagUrisNameTheAuthorityOfTheBuild) {
    const std::string uri = std::string("\"tag:") + MEDIASPLIT_TAG_AUTHORITY +
                            ",2014:dash:audio_channel_configuration:2011\"";
    EXPECT_NE(std::string_view(find_catalogue_row(2036)->message).find(uri),
              std::string_view::npos);
}

TEST(Catalogue, AttributesAreCopiedForKnownNumbersOnly) {
    CatalogueRow row;
    EXPECT_EQ(get_log_attrs(4022, row), Status::kOk);
    EXPECT_EQ(row.id, 4022);
    EXPECT_EQ(row.code, 1U);
    EXPECT_STREQ(row.message, "Fail to open the file : %s");
    EXPECT_EQ(get_log_attrs(17, row), Status::kFailed);
    EXPECT_EQ(row.id, 4022);
}

}  // namespace
}  // namespace mediasplit
