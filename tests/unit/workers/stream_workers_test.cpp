#include "src/main/workers/stream_workers.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "src/records/run_options.h"
#include "tests/support/recording_sink.h"
#include "tests/support/run_options_scope.h"
#include "tests/support/temp_folder.h"
#include "tests/support/ts_builder.h"

namespace mediasplit {
namespace {

using Ids = std::vector<int>;

class Workers : public testing::Test {
protected:
    Workers() {
        std::filesystem::create_directory("out");
        const Bytes stream = adts_stream(std::string(1000, 'a'));
        (void)folder_.write("0.ts", std::string(stream.begin(), stream.end()));
    }

    std::unique_ptr<StreamJob> job(int number, const std::string& text = "#EXTINF:1,\n0.ts\n") {
        auto result = std::make_unique<StreamJob>();
        result->name = "list" + std::to_string(number);
        result->url = folder_.write(result->name + ".m3u8", text);
        result->output_dir = "out";
        return result;
    }
    [[nodiscard]] static std::string output(int number) {
        return read_file("out/list" + std::to_string(number) + "_PID_257.out.adts");
    }

    RunOptionsScope scope_;
    TempFolder folder_;
    WorkingDirectory directory_{folder_.path()};
    RecordingSink sink_;
};

TEST_F(Workers, OneStreamRunsOnTheCallersThread) {
    WorkersSetup setup;
    setup.expected = 1;
    setup.group_capacities = {1};
    StreamWorkers workers(setup);
    auto only = job(0);
    workers.join_group(*only, 1, "a");
    EXPECT_EQ(only->sync_list, nullptr);
    workers.start(std::move(only));
    EXPECT_EQ(output(0).size(), 1000U);  // before the end is waited for
    EXPECT_EQ(workers.finish(), Status::kOk);
    EXPECT_FALSE(sink_.was_evaluated(4109));
}

TEST_F(Workers, ManyStreamsRunAtOnce) {
    constexpr int kStreams = 32;
    WorkersSetup setup;
    setup.expected = kStreams;
    setup.group_capacities = {kStreams};
    StreamWorkers workers(setup);
    for (int i = 0; i < kStreams; ++i) {
        auto next = job(i);
        workers.join_group(*next, 1, next->url);
        EXPECT_NE(next->sync_list, nullptr);
        workers.start(std::move(next));
    }
    EXPECT_EQ(workers.finish(), Status::kOk);
    for (int i = 0; i < kStreams; ++i) {
        EXPECT_EQ(output(i).size(), 1000U) << i;
    }
}

TEST_F(Workers, StreamThatFailsLeavesTheOthersAlone) {
    WorkersSetup setup;
    setup.expected = 3;
    StreamWorkers workers(setup);
    workers.start(job(0));
    workers.start(job(1, "#EXTINF:1,\nnone.ts\n"));
    workers.start(job(2));
    EXPECT_EQ(workers.finish(), Status::kFailed);
    EXPECT_EQ(output(0).size(), 1000U);
    EXPECT_EQ(output(2).size(), 1000U);
    EXPECT_EQ(sink_.count(4063), 1U);
}

TEST_F(Workers, ThreadThatCannotBeStartedFailsTheRunAndKeepsNobodyWaiting) {
    WorkersSetup setup;
    setup.expected = 2;
    setup.group_capacities = {2};
    setup.stack_size = 1;  // less than any thread can have
    setup.source_line = 1354;
    StreamWorkers workers(setup);
    for (int i = 0; i < 2; ++i) {
        auto next = job(i);
        workers.join_group(*next, 1, next->url);
        workers.start(std::move(next));
    }
    EXPECT_EQ(workers.finish(), Status::kFailed);
    ASSERT_EQ(sink_.ids(), (Ids{3005, 3005}));
    EXPECT_EQ(sink_.reports()[0].text,
              "OSAL ( third party library ) THREAD REGISTER FAIL ! [ File : "
              "../../../../mediacheck2/src/main, Line : 1354 ]");
}

TEST_F(Workers, FewerStreamsThanExpectedAreNoFailure) {
    WorkersSetup setup;
    setup.expected = 5;
    setup.group_capacities = {2};
    StreamWorkers workers(setup);
    workers.start(job(0));
    EXPECT_EQ(workers.finish(), Status::kOk);
    EXPECT_EQ(workers.finish(), Status::kOk);
}

TEST_F(Workers, EndWaitsForAllThreads) {
    {
        WorkersSetup setup;
        setup.expected = 2;
        StreamWorkers workers(setup);
        workers.start(job(0));
        workers.start(job(1));
    }
    EXPECT_EQ(output(0).size(), 1000U);
    EXPECT_EQ(output(1).size(), 1000U);
}

}  // namespace
}  // namespace mediasplit
