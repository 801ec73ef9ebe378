#include "src/log/findings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <vector>

#include "src/log/logging.h"
#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

std::unique_ptr<Loglist> make_loglist() {
    const CheckpointText entry = {'2', '1', '0', '0', '0', '0'};
    return init_loglist(1, &entry);
}

TEST(Findings, SinkIsToldTextContextStreamAndOutcome) {
    RecordingSink sink;
    const StreamLabel label("video/1.m3u8");
    testing::internal::CaptureStderr();
    static_cast<void>(Logging_err_type_check(nullptr, 4022, {7, "rep", "codecs"}, "x%%.mp4"));
    testing::internal::GetCapturedStderr();
    ASSERT_EQ(sink.reports().size(), 1U);
    const RecordedReport report = sink.reports()[0];
    EXPECT_EQ(report.id, 4022);
    EXPECT_EQ(report.text, "Fail to open the file : x%%.mp4");
    EXPECT_EQ(report.position, 7U);
    EXPECT_EQ(report.element, "rep");
    EXPECT_EQ(report.attribute, "codecs");
    EXPECT_EQ(report.stream, "video/1.m3u8");
    EXPECT_EQ(report.outcome, Outcome::kPrinted);
}

TEST(Findings, OutcomesTellWhatBecameOfTheLine) {
    RecordingSink sink;
    const auto loglist = make_loglist();
    static_cast<void>(Logging_err_type_check(loglist.get(), 2039, {}));       // stored
    static_cast<void>(Logging_err_type_check(loglist.get(), 2039, {}));       // stored already
    static_cast<void>(Logging_err_type_check(loglist.get(), 4142, {}, "1"));  // family inactive
    static_cast<void>(Logging_err_type_check(nullptr, 2039, {}));             // no Loglist
    std::vector<Outcome> outcomes;
    for (const RecordedReport& report : sink.reports()) {
        outcomes.push_back(report.outcome);
    }
    EXPECT_EQ(outcomes, (std::vector<Outcome>{Outcome::kCollected, Outcome::kRepeated,
                                              Outcome::kGated, Outcome::kUncollected}));
}

TEST(Findings, TextLeavesPrefixAndReferenceOut) {
    RecordingSink sink;
    const auto loglist = make_loglist();
    static_cast<void>(Logging_err_type_check(loglist.get(), 2039, {}));
    EXPECT_EQ(sink.reports().at(0).text,
              "For an [EC3] stream, in MP4, the timescale should be 48000. ");
    EXPECT_NE(loglist->messages.at(0), sink.reports().at(0).text);
}

TEST(Findings, RulesAreEvaluatedWhetherTheyHoldOrNot) {
    RecordingSink sink;
    const auto loglist = make_loglist();
    EXPECT_EQ(check(true, loglist.get(), 2039, {}), Status::kOk);
    EXPECT_EQ(check(false, loglist.get(), 2040, {}), Status::kOk);
    EXPECT_TRUE(sink.was_evaluated(2039));
    EXPECT_TRUE(sink.was_evaluated(2040));
    EXPECT_FALSE(sink.was_evaluated(2041));
    EXPECT_EQ(sink.ids(), (std::vector<int>{2040}));
}

TEST(Findings, LabelsNestAndBelongToTheirThread) {
    EXPECT_EQ(current_stream_label(), "");
    const StreamLabel outer("outer");
    {
        const StreamLabel inner("inner");
        EXPECT_EQ(current_stream_label(), "inner");
        std::thread([] { EXPECT_EQ(current_stream_label(), ""); }).join();
    }
    EXPECT_EQ(current_stream_label(), "outer");
}

TEST(Findings, WithoutSinkNothingIsTold) {
    { const RecordingSink sink; }
    EXPECT_EQ(findings_sink(), nullptr);
    const auto loglist = make_loglist();
    EXPECT_EQ(check(true, loglist.get(), 2039, {}), Status::kOk);
    EXPECT_EQ(check(false, loglist.get(), 2039, {}), Status::kOk);
    EXPECT_EQ(loglist->message_count, 1);
}

TEST(Findings, SinkDoesNotChangeResults) {
    const auto run = [] {
        const auto loglist = make_loglist();
        Status status = check(false, loglist.get(), 4047, {}, 1);
        status |= check(false, loglist.get(), 2039, {});
        return std::pair(status, loglist->message_count);
    };
    const auto without = run();
    const RecordingSink sink;
    EXPECT_EQ(run(), without);
}

TEST(Findings, ReportsOfThreadsCarryTheirStream) {
    RecordingSink sink;
    constexpr int kThreads = 4;
    constexpr int kReports = 100;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t] {
            const StreamLabel label("stream " + std::to_string(t));
            const auto loglist = make_loglist();
            for (int i = 0; i < kReports; ++i) {
                static_cast<void>(Logging_err_type_check(loglist.get(), 4047, {}, t));
            }
            EXPECT_EQ(loglist->message_count, 1);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    ASSERT_EQ(sink.count(4047), static_cast<std::size_t>(kThreads * kReports));
    for (const RecordedReport& report : sink.reports()) {
        const std::string number = report.stream.substr(report.stream.size() - 1);
        EXPECT_NE(report.text.find("[index : " + number + "]"), std::string::npos);
    }
}

}  // namespace
}  // namespace mediasplit
