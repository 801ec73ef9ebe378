#include "src/log/logging.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace mediasplit {
namespace {

CheckpointText checkpoint(std::string_view text) {
    CheckpointText result{};
    text.copy(result.data(), result.size());
    return result;
}

std::unique_ptr<Loglist> make_loglist(std::vector<std::string_view> texts = {"210000", "430000"}) {
    std::vector<CheckpointText> list;
    for (const std::string_view text : texts) {
        list.push_back(checkpoint(text));
    }
    list.emplace_back();
    return init_loglist(static_cast<std::uint32_t>(texts.size()), list.data());
}

// What a call wrote to the two streams.
struct Output {
    std::string out{};
    std::string err{};
};

template <typename Call>
Output output_of(Call call) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    call();
    Output output;
    output.out = testing::internal::GetCapturedStdout();
    output.err = testing::internal::GetCapturedStderr();
    return output;
}

TEST(Logging, DirectErrorGoesToStandardErrorAndReturnsItsCode) {
    Status status = Status::kOk;
    const Output output =
        output_of([&] { status = Logging_err_type_check(nullptr, 4001, {}, "foo"); });
    EXPECT_EQ(status, Status::kFailed);
    EXPECT_EQ(output.err, "ERROR: The command \"foo\" is unsupported.\n");
    EXPECT_EQ(output.out, "");
}

TEST(Logging, FatalErrorGoesToStandardErrorAndFailsTheRun) {
    Status status = Status::kOk;
    const Output output =
        output_of([&] { status = Logging_err_type_check(nullptr, 3001, {}, "main", 12); });
    EXPECT_TRUE(has_failed(status));
    EXPECT_EQ(output.err, "FATAL ERROR: NULL POINTER ! [ File : main, Line : 12 ]\n");
}

TEST(Logging, DirectWarningGoesToStandardOutputAndReturnsZero) {
    Status status = Status::kFailed;
    const Output output = output_of([&] { status = Logging_err_type_check(nullptr, 2003, {}); });
    EXPECT_EQ(status, Status::kOk);
    EXPECT_EQ(output.out,
              "WARNING: The command \"--pid id\" is only used when the input is a TS file.\n");
    EXPECT_EQ(output.err, "");
}

TEST(Logging, PlainOutputHasNoPrefix) {
    const Output output = output_of(
        [] { static_cast<void>(Logging_err_type_check(nullptr, 15, {}, "Succeed", "a")); });
    EXPECT_EQ(output.out, "Succeed to demultiplex a\n");
}

TEST(Logging, DirectRowsArePrintedWithALoglistToo) {
    const auto loglist = make_loglist();
    const Output output =
        output_of([&] { static_cast<void>(Logging_err_type_check(loglist.get(), 4004, {})); });
    EXPECT_EQ(output.err, "ERROR: The input file format is unsupported.\n");
    EXPECT_EQ(loglist->message_count, 0);
}

TEST(Logging, TrailingBlanksArePrinted) {
    const Output output =
        output_of([] { static_cast<void>(Logging_err_type_check(nullptr, 2001, {})); });
    EXPECT_EQ(output.out,
              "WARNING: The command \"-s start number\" is only used when the input is a series of "
              "TS files. \n");
}

TEST(Logging, DoublePercentInAPrintedLineIsReadAsAConversionAndNothingElseIs) {
    const Output output = output_of([] {
        static_cast<void>(Logging_err_type_check(nullptr, 4001, {}, "100%%"));
        static_cast<void>(Logging_err_type_check(nullptr, 4001, {}, "%s%n%d%"));
    });
    EXPECT_EQ(output.err,
              "ERROR: The command \"100%\" is unsupported.\n"
              "ERROR: The command \"%s%n%d%\" is unsupported.\n");
}

TEST(Logging, CollectedLineIsStoredWithPrefixReferenceAndLineEnd) {
    const auto loglist = make_loglist();
    Status status = Status::kOk;
    const Output output =
        output_of([&] { status = Logging_err_type_check(loglist.get(), 4142, {}, "3"); });
    EXPECT_EQ(status, Status::kRuleBroken);
    EXPECT_EQ(output.out + output.err, "");
    ASSERT_EQ(loglist->messages.size(), 1U);
    EXPECT_EQ(loglist->messages[0],
              "ERROR: For a [Orvel Prisma] stream, in HLS master-manifest, the attribute "
              "\"CODECS\" in the #EXT-X-STREAM-INF [index : 3] must include Orvel Prisma codec. "
              "(OrvelPrismaInHLSSpecification_v2_0 4.2)\n");
}

TEST(Logging, CollectedLineKeepsDoublePercent) {
    const auto loglist = make_loglist();
    static_cast<void>(Logging_err_type_check(loglist.get(), 2021, {}, "a%%b"));
    EXPECT_EQ(loglist->messages.at(0),
              "WARNING: In HLS master-playlist, the codec is unsupported : a%%b\n");
}

TEST(Logging, CollectedRowWithoutLoglistReturnsItsCodeAndStoresNothing) {
    Status status = Status::kOk;
    const Output output =
        output_of([&] { status = Logging_err_type_check(nullptr, 4142, {}, "3"); });
    EXPECT_EQ(status, Status::kRuleBroken);
    EXPECT_EQ(output.out + output.err, "");
}

TEST(Logging, RepeatedWarningIsStoredOnceAndRepeatedInfoEachTime) {
    const auto loglist = make_loglist();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(Logging_err_type_check(loglist.get(), 2021, {}, "x"), Status::kOk);
        EXPECT_EQ(Logging_err_type_check(loglist.get(), 1012, {}, 5), Status::kOk);
    }
    EXPECT_EQ(loglist->message_count, 3);
    EXPECT_EQ(loglist->messages.size(), 3U);
}

TEST(Logging, CollectedRowWithoutCheckpointNeedsEntriesInTheList) {
    const auto empty = make_loglist({});
    EXPECT_EQ(Logging_err_type_check(empty.get(), 4047, {}, 1), Status::kOk);
    EXPECT_EQ(empty->message_count, 0);
    const auto some = make_loglist({"210000"});
    EXPECT_EQ(Logging_err_type_check(some.get(), 4047, {}, 1), Status::kRuleBroken);
    EXPECT_EQ(some->message_count, 1);
}

TEST(Logging, CollectedRowOfAnInactiveFamilyIsDroppedAndReturnsZero) {
    const auto loglist = make_loglist({"210000"});
    EXPECT_EQ(Logging_err_type_check(loglist.get(), 4142, {}, "3"), Status::kOk);
    EXPECT_EQ(loglist->message_count, 0);
}

TEST(Logging, WarningAmongTheErrorsReturnsZeroThoughItsCodeIsSet) {
    const auto loglist = make_loglist();
    ASSERT_EQ(find_catalogue_row(4220)->code, kBrokenRule);
    EXPECT_EQ(Logging_err_type_check(loglist.get(), 4220, {}), Status::kOk);
    EXPECT_TRUE(loglist->messages.at(0).starts_with("WARNING: "));
}

TEST(Logging, UnknownNumberFailsAndWritesNothing) {
    for (const int id : {17, 0, -5, 999, 5000}) {
        Status status = Status::kOk;
        const Output output =
            output_of([&] { status = report_message(nullptr, id, {}, nullptr, 0); });
        EXPECT_EQ(status, Status::kFailed);
        EXPECT_EQ(output.out + output.err, "");
    }
}

TEST(Logging, ValuesThatDontFitGiveADebugTextWithoutLineEnd) {
    Status status = Status::kOk;
    const Output output =
        output_of([&] { status = report_message(nullptr, 4001, {}, nullptr, 0); });
    EXPECT_EQ(status, Status::kFailed);
    EXPECT_EQ(output.out, "DEBUG: log type is invalid : 4001");
    EXPECT_EQ(output.err, "");
}

TEST(Logging, CheckReportsOnlyABrokenRule) {
    const auto loglist = make_loglist();
    EXPECT_EQ(check(true, loglist.get(), 4142, {}, "3"), Status::kOk);
    EXPECT_EQ(loglist->message_count, 0);
    EXPECT_EQ(check(false, loglist.get(), 4142, {}, "3"), Status::kRuleBroken);
    EXPECT_EQ(loglist->message_count, 1);
}

TEST(Logging, LinesOfThreadsStayWhole) {
    constexpr int kThreads = 4;
    constexpr int kLines = 200;
    const Output output = output_of([] {
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([] {
                for (int i = 0; i < kLines; ++i) {
                    static_cast<void>(Logging_err_type_check(nullptr, 2053, {}, "segment"));
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    });
    std::string expected;
    for (int i = 0; i < kThreads * kLines; ++i) {
        expected += "WARNING: Failed to download the segment segment, TIME OUT!\n";
    }
    EXPECT_EQ(output.out, expected);
}

TEST(ValueCheck, EmptyRecordNeverHolds) {
    EXPECT_FALSE(value_check_match({}));
}

TEST(ValueCheck, KindOneAsksForNonZero) {
    EXPECT_TRUE(value_check_match({.kind = 1, .a = 1, .b = 2}));
    EXPECT_TRUE(value_check_match({.kind = 1, .b = 0x100000000U}));
    EXPECT_FALSE(value_check_match({.kind = 1, .a = 1}));
}

TEST(ValueCheck, KindTwoComparesTheLow32Bits) {
    EXPECT_TRUE(value_check_match({.kind = 2, .a = 0x100000005U, .b = 5}));
    EXPECT_FALSE(value_check_match({.kind = 2, .a = 6, .b = 5}));
}

TEST(ValueCheck, KindsThreeAndFourCompareTexts) {
    const auto texts = [](std::uint32_t kind, const char* a, const char* b) {
        return value_check_match({.kind = kind, .text_a = a, .text_b = b});
    };
    EXPECT_TRUE(texts(3, "abc", "abc"));
    EXPECT_FALSE(texts(3, "abc", "ABC"));
    EXPECT_FALSE(texts(3, "abc", "abcd"));
    EXPECT_FALSE(texts(3, nullptr, "abc"));
    EXPECT_FALSE(texts(3, "abc", nullptr));
    EXPECT_FALSE(texts(3, nullptr, nullptr));
    EXPECT_TRUE(texts(3, "", ""));
    EXPECT_TRUE(texts(4, "aBc", "AbC"));
    EXPECT_FALSE(texts(4, "abc", "abd"));
    EXPECT_FALSE(texts(4, "abc", "ab"));
    EXPECT_FALSE(texts(4, nullptr, nullptr));
}

TEST(ValueCheck, KindFiveComparesTheFirstBytes) {
    EXPECT_TRUE(value_check_match({.kind = 5, .text_a = "ab1", .text_b = "ab2", .length = 2}));
    EXPECT_FALSE(value_check_match({.kind = 5, .text_a = "ab1", .text_b = "ab2", .length = 3}));
}

TEST(ValueCheck, OtherKindsNeverHold) {
    EXPECT_FALSE(value_check_match({.kind = 6, .a = 1, .b = 1}));
    EXPECT_FALSE(value_check_match({.kind = 0xFFFFFFFFU, .a = 1, .b = 1}));
}

TEST(Status, BitZeroAloneTellsAFailedRun) {
    EXPECT_FALSE(has_failed(Status::kOk));
    EXPECT_FALSE(has_failed(Status::kRuleBroken));
    EXPECT_TRUE(has_failed(Status::kFailed));
    EXPECT_TRUE(has_failed(Status::kCantOpen));
    EXPECT_TRUE(has_failed(Status::kRuleBroken | Status::kFailed));
}

}  // namespace
}  // namespace mediasplit
