#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "src/log/logging.h"
#include "src/main/flows/flows.h"
#include "tests/support/recording_sink.h"
#include "tests/support/run_options_scope.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {
namespace {

namespace fs = std::filesystem;

using Ids = std::vector<int>;

TsSegmentSummary summary_of(std::int64_t first_video, std::int64_t video_end,
                            std::vector<TsAudioSummary> audio) {
    TsSegmentSummary summary;
    summary.first_video_pts = first_video;
    summary.video_end_pts = video_end;
    summary.count = static_cast<std::uint32_t>(audio.size());
    std::copy(audio.begin(), audio.end(), summary.audio.begin());
    return summary;
}

constexpr std::uint32_t kEac3 = 0x87;
const TsSegmentSummary kPrevious = summary_of(1000, 91000, {{kEac3, 1000, 91000}});

// A demultiplexer that notes its calls and answers from a script.
struct DemuxCall {
    std::string input;
    std::string output_dir;
    std::string name;
    bool first = false;
    bool has_summary = false;
    bool is_hls = false;
    std::int64_t pid = 0;
    bool operator==(const DemuxCall&) const = default;
};

std::vector<DemuxCall> g_calls;
std::vector<TsSegmentSummary> g_summaries;
std::vector<Status> g_results;

Status scripted_demux(InputFile& input, const std::string& output_dir, const std::string& name,
                      bool first, ManifestContext* context, TsSegmentSummary* summary, bool is_hls,
                      Loglist* /*loglist*/, std::int64_t pid, OutputRegistry* outputs) {
    EXPECT_NE(outputs, nullptr);
    EXPECT_EQ(context, nullptr);
    std::string content(16, '\0');
    content.resize(ReadBytes(content.data(), content.size(), input));
    g_calls.push_back({content, output_dir, name, first, summary != nullptr, is_hls, pid});
    const std::size_t index = g_calls.size() - 1;
    if (summary != nullptr) {
        EXPECT_EQ(summary->count, 0U);
        EXPECT_EQ(summary->first_video_pts, kNoVideoPts);
        if (index < g_summaries.size()) {
            *summary = g_summaries[index];
        }
    }
    return index < g_results.size() ? g_results[index] : Status::kOk;
}

class TsFlow : public testing::Test {
protected:
    TsFlow() {
        g_calls.clear();
        g_summaries.clear();
        g_results.clear();
        g_pid = 256;
    }

    void write(const std::string& name, const std::string& content) {
        (void)folder_.write(name, content);
    }

    Status run_series(const std::string& name_template, std::uint32_t start) {
        g_input = folder_.path(name_template);
        g_startIndex = start;
        testing::internal::CaptureStderr();
        const Status status = run_ts_series_with(scripted_demux, loglist_.get());
        err_ = testing::internal::GetCapturedStderr();
        return status;
    }

    [[nodiscard]] static std::vector<std::string> inputs() {
        std::vector<std::string> result;
        for (const DemuxCall& call : g_calls) {
            result.push_back(call.input);
        }
        return result;
    }

    using Texts = std::vector<std::string>;

    TempFolder folder_;
    RunOptionsScope scope_;
    RecordingSink sink_;
    std::unique_ptr<Loglist> loglist_ = begin_run(FormatId::kTsSeries);
    std::string err_;
};

TEST_F(TsFlow, SeriesEndsAtItsFirstMissingFile) {
    write("a_0.ts", "zero");
    write("a_1.ts", "one");
    write("a_3.ts", "three");
    EXPECT_EQ(run_series("a_%d.ts", 0), Status::kOk);
    EXPECT_EQ(g_calls, (std::vector<DemuxCall>{{"zero", "out", "a_%d", true, true, false, 256},
                                               {"one", "out", "a_%d", false, true, false, 256}}));
    EXPECT_EQ(sink_.ids(), (Ids{3, 3}));
    EXPECT_EQ(sink_.reports()[1].text, folder_.path("a_1.ts:"));
    EXPECT_EQ(sink_.reports()[1].outcome, Outcome::kCollected);
}

TEST_F(TsFlow, SeriesStartsAtTheStartIndex) {
    write("a_0002.ts", "two");
    write("a_0003.ts", "three");
    EXPECT_EQ(run_series("a_%04d.ts", 2), Status::kOk);
    EXPECT_EQ(inputs(), (Texts{"two", "three"}));
    EXPECT_TRUE(g_calls[0].first);
}

TEST_F(TsFlow, SeriesWithoutItsFirstFileFails) {
    write("a_1.ts", "one");
    EXPECT_EQ(run_series("a_%d.ts", 0), Status::kFailed);
    EXPECT_EQ(sink_.ids(), Ids{4064});
    EXPECT_EQ(err_, "ERROR: Fail to fetch the TS file based on the TS file template : " +
                        folder_.path("a_%d.ts") + "\n");
}

TEST_F(TsFlow, FolderInPlaceOfAFileEndsTheSeries) {
    fs::create_directory(folder_.path("a_0.ts"));
    EXPECT_EQ(run_series("a_%d.ts", 0), Status::kFailed);
    EXPECT_EQ(sink_.ids(), Ids{4064});
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(TsFlow, AddressAsTemplateFailsAtOnce) {
    g_input = "http://127.0.0.1:9/a_%d.ts";
    testing::internal::CaptureStderr();
    EXPECT_EQ(run_ts_series_with(scripted_demux, loglist_.get()), Status::kFailed);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(sink_.ids(), Ids{4064});
}

TEST_F(TsFlow, FailureInsideOneFileDoesNotStopTheSeries) {
    write("a_0.ts", "zero");
    write("a_1.ts", "one");
    g_results = {Status::kFailed};
    EXPECT_EQ(run_series("a_%d.ts", 0), Status::kFailed);
    EXPECT_EQ(inputs(), (Texts{"zero", "one"}));
}

TEST_F(TsFlow, TemplateThatTakesNoNumberNamesOneFile) {
    write("a%d.ts", "only");
    EXPECT_EQ(run_series("a%%d.ts", 0), Status::kOk);
    EXPECT_EQ(inputs(), Texts{"only"});
}

TEST_F(TsFlow, PercentThatStartsNoConversionIsPartOfTheName) {
    write("100%_0.ts", "zero");
    EXPECT_EQ(run_series("100%_%d.ts", 0), Status::kOk);
    EXPECT_EQ(inputs(), Texts{"zero"});
}

TEST_F(TsFlow, SeriesComparesTheTimingOfNeighbours) {
    write("a_0.ts", "zero");
    write("a_1.ts", "one");
    write("a_2.ts", "two");
    g_summaries = {kPrevious, summary_of(91000, 181000, {{kEac3, 91500, 181500}}),
                   summary_of(181000, 271000, {{kEac3, 180000, 271000}})};
    EXPECT_EQ(run_series("a_%d.ts", 0), Status::kRuleBroken);
    EXPECT_EQ(sink_.ids(), (Ids{3, 3, 4108, 3, 4106}));
}

TEST_F(TsFlow, FileWithReportsOfItsOwnIsNotCompared) {
    write("a_0.ts", "zero");
    write("a_1.ts", "one");
    g_summaries = {kPrevious, summary_of(91000, 181000, {{kEac3, 91500, 181500}})};
    g_results = {Status::kOk, Status::kRuleBroken};
    EXPECT_EQ(run_series("a_%d.ts", 0), Status::kRuleBroken);
    EXPECT_EQ(sink_.ids(), (Ids{3, 3}));
}

TEST_F(TsFlow, FirstFileOfASeriesIsComparedWithNothing) {
    write("a_0.ts", "zero");
    g_summaries = {summary_of(91000, 181000, {{kEac3, 0, 0}})};
    EXPECT_EQ(run_series("a_%d.ts", 0), Status::kOk);
    EXPECT_EQ(sink_.ids(), Ids{3});
}

TEST_F(TsFlow, SingleFileIsDemultiplexedOnceWithoutSummary) {
    write("a.ts", "single");
    g_input = folder_.path("a.ts");
    EXPECT_EQ(run_ts_file_with(scripted_demux, loglist_.get()), Status::kOk);
    EXPECT_EQ(g_calls, (std::vector<DemuxCall>{{"single", "out", "a", true, false, false, 256}}));
    EXPECT_EQ(sink_.ids(), Ids{3});
}

TEST_F(TsFlow, SingleFileThatIsMissingIsReported) {
    g_input = folder_.path("a.ts");
    testing::internal::CaptureStderr();
    EXPECT_EQ(run_ts_file_with(scripted_demux, loglist_.get()), Status::kFailed);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "ERROR: Fail to open the file : " + *g_input + "\n");
    EXPECT_TRUE(g_calls.empty());
}

}  // namespace
}  // namespace mediasplit
