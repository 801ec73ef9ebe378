#include "src/main/process.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/recording_sink.h"
#include "tests/support/run_options_scope.h"
#include "tests/support/temp_folder.h"

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

TEST(Process, SinkSeesAWholeRunOfAnMp4File) {
    const RunOptionsScope scope;
    const RecordingSink sink;
    const TempFolder folder;
    g_output_dir = folder.path();
    const ProcessResult result = run_process(FormatId::kMp4, MEDIASPLIT_CLIP);
    EXPECT_EQ(result.exit_status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_TRUE(result.out.ends_with("Succeed to demultiplex " MEDIASPLIT_CLIP "\n"));
    ASSERT_GE(sink.reports().size(), 2U);
    EXPECT_EQ(sink.reports().front().id, 3);
    EXPECT_EQ(sink.reports().front().outcome, Outcome::kUncollected);
    EXPECT_EQ(sink.reports().back().id, 15);
    EXPECT_EQ(sink.reports().back().text, "Succeed to demultiplex " MEDIASPLIT_CLIP);
    EXPECT_EQ(file_names(folder.path()),
              (std::vector<std::string>{"clip_track_id_1.out.264", "clip_track_id_2.out.aac"}));
}

}  // namespace
}  // namespace mediasplit
