#include "src/main/process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/recording_sink.h"
#include "tests/unit/main/run_options_scope.h"

namespace mediasplit {
namespace {

struct ProcessResult {
    int exit_status = -1;
    std::string out{};
    std::string err{};
};

ProcessResult run_process(FormatId format, const std::string& input) {
    g_file_format = format;
    g_input = input;
    ProcessResult result;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    result.exit_status = process(nullptr, 0, nullptr);
    result.out = testing::internal::GetCapturedStdout();
    result.err = testing::internal::GetCapturedStderr();
    return result;
}

TEST(Process, UnknownFormatIsReportedAndTheRunClosed) {
    const RunOptionsScope scope;
    const ProcessResult result = run_process(FormatId::kUnknown, "a.xyz");
    EXPECT_EQ(result.exit_status, 1);
    EXPECT_EQ(result.err, "ERROR: The input file format is unsupported.\n");
    EXPECT_EQ(result.out, "Failed to demultiplex a.xyz\n");
}

TEST(Process, InputThatIsMissingIsReportedAndTheRunClosed) {
    const RunOptionsScope scope;
    for (const FormatId format :
         {FormatId::kMp4, FormatId::kTsFile, FormatId::kEac3, FormatId::kAc4}) {
        const ProcessResult result = run_process(format, "no/such.file");
        EXPECT_EQ(result.exit_status, 1);
        EXPECT_EQ(result.err, "ERROR: Fail to open the file : no/such.file\n");
        EXPECT_EQ(result.out, "Failed to demultiplex no/such.file\n");
    }
}

TEST(Process, InputWithoutNameFailsBeforeItIsOpened) {
    const RunOptionsScope scope;
    const RecordingSink sink;
    EXPECT_EQ(run_process(FormatId::kMp4, "no_extension").exit_status, 1);
    EXPECT_EQ(sink.ids(), (std::vector<int>{15}));
}

std::vector<std::filesystem::path> files_of(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> result;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        result.push_back(entry.path().extension());
    }
    std::sort(result.begin(), result.end());
    return result;
}

TEST(Process, SinkSeesAWholeRunOfAnMp4File) {
    const RunOptionsScope scope;
    const RecordingSink sink;
    const std::filesystem::path folder =
        std::filesystem::path(testing::TempDir()) / "process_test_streams";
    std::filesystem::create_directories(folder);
    g_output_dir = folder.string();
    const ProcessResult result = run_process(FormatId::kMp4, MEDIASPLIT_CLIP);
    EXPECT_EQ(result.exit_status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_TRUE(result.out.ends_with("Succeed to demultiplex " MEDIASPLIT_CLIP "\n"));
    ASSERT_GE(sink.reports().size(), 2U);
    EXPECT_EQ(sink.reports().front().id, 3);
    EXPECT_EQ(sink.reports().front().outcome, Outcome::kUncollected);
    EXPECT_EQ(sink.reports().back().id, 15);
    EXPECT_EQ(sink.reports().back().text, "Succeed to demultiplex " MEDIASPLIT_CLIP);
    EXPECT_EQ(files_of(folder), (std::vector<std::filesystem::path>{".264", ".aac"}));
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace mediasplit
