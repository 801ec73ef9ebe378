#include "src/report/findings_collector.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "src/file_util/output_file.h"
#include "src/log/logging.h"
#include "tests/support/temp_folder.h"

namespace mediasplit::report {
namespace {

class CollectorTest : public testing::Test {
protected:
    CollectorTest() { set_findings_sink(&collector_); }
    ~CollectorTest() override { set_findings_sink(nullptr); }

    FindingsReport report() { return collector_.take_report("input", false); }

    FindingsCollector collector_;
};

std::unique_ptr<Loglist> make_loglist() {
    const CheckpointText entry = {'2', '1', '0', '0', '0', '0'};
    return init_loglist(1, &entry);
}

void raise(int id, std::string_view text, FindingsCollector& collector,
           std::string_view stream = "") {
    collector.report({id, text, {}, stream, Outcome::kCollected});
}

TEST_F(CollectorTest, GathersWhatWasReportedInItsOrder) {
    const auto loglist = make_loglist();
    static_cast<void>(check(false, loglist.get(), 4303, {3, "rep", "codecs"}, 1, 2));
    static_cast<void>(check(false, loglist.get(), 2039, {}));
    const FindingsReport report = this->report();
    ASSERT_EQ(report.findings.size(), 2U);
    EXPECT_EQ(report.findings[0].id, 4303);
    EXPECT_EQ(report.findings[0].element, "rep");
    EXPECT_EQ(report.findings[0].attribute, "codecs");
    EXPECT_EQ(report.findings[0].count, 1U);
    EXPECT_EQ(report.findings[1].id, 2039);
    EXPECT_EQ(report.findings[1].text,
              "For an [EC3] stream, in MP4, the timescale should be 48000. ");
    ASSERT_EQ(report.streams.size(), 1U);
    EXPECT_EQ(report.streams[0].name, "");
}

TEST_F(CollectorTest, RepetitionsAreCounted) {
    const auto loglist = make_loglist();
    for (int i = 0; i < 5; ++i) {
        static_cast<void>(check(false, loglist.get(), 2039, {}));
    }
    EXPECT_EQ(loglist->message_count, 1);
    const FindingsReport report = this->report();
    ASSERT_EQ(report.findings.size(), 1U);
    EXPECT_EQ(report.findings[0].count, 5U);
    EXPECT_EQ(report.streams[0].counts[static_cast<std::size_t>(Level::kWarning)], 1U);
}

TEST_F(CollectorTest, WhatDiffersInAnyPartIsAnEntryOfItsOwn) {
    collector_.report({4303, "text", {0, "a", "b"}, "x", Outcome::kCollected});
    collector_.report({4304, "text", {0, "a", "b"}, "x", Outcome::kCollected});
    collector_.report({4303, "other", {0, "a", "b"}, "x", Outcome::kCollected});
    collector_.report({4303, "text", {0, "c", "b"}, "x", Outcome::kCollected});
    collector_.report({4303, "text", {0, "a", "c"}, "x", Outcome::kCollected});
    collector_.report({4303, "text", {0, "a", "b"}, "y", Outcome::kCollected});
    collector_.report({4303, "text", {9, "a", "b"}, "x", Outcome::kRepeated});  // the first again
    const FindingsReport report = this->report();
    EXPECT_EQ(report.findings.size(), 6U);
    EXPECT_EQ(report.findings[0].count, 2U);
}

TEST_F(CollectorTest, PlainLinesAndInactiveRulesAreNoFindings) {
    const auto loglist = make_loglist();
    static_cast<void>(Logging_err_type_check(loglist.get(), 3, {}, "a.mp4"));
    static_cast<void>(Logging_err_type_check(loglist.get(), 4142, {}, "1"));  // family inactive
    EXPECT_TRUE(report().findings.empty());
}

TEST_F(CollectorTest, PrintedAndUncollectedMessagesAreFindings) {
    testing::internal::CaptureStderr();
    static_cast<void>(Logging_err_type_check(nullptr, 4022, {}, "a"));
    testing::internal::GetCapturedStderr();
    static_cast<void>(Logging_err_type_check(nullptr, 2039, {}));
    EXPECT_EQ(report().findings.size(), 2U);
}

TEST_F(CollectorTest, EvaluatedRulesAreThoseThatWereLookedAt) {
    const auto loglist = make_loglist();
    static_cast<void>(check(true, loglist.get(), 2039, {}));
    static_cast<void>(check(false, loglist.get(), 4303, {}, 1, 2));
    static_cast<void>(Logging_err_type_check(loglist.get(), 3, {}, "no rule"));
    EXPECT_EQ(report().evaluated, (std::vector<int>{2039, 4303}));
}

TEST_F(CollectorTest, NumbersOutsideTheCatalogueAreIgnored) {
    collector_.evaluated(17);
    raise(17, "text", collector_);
    EXPECT_TRUE(report().findings.empty());
    EXPECT_TRUE(report().evaluated.empty());
}

TEST_F(CollectorTest, StreamsStandInTheOrderInWhichTheyWereAnnounced) {
    announce_stream("b");
    announce_stream("a");
    announce_stream("b");
    raise(4303, "t", collector_, "a");
    raise(4303, "t", collector_, "c");
    const FindingsReport report = this->report();
    std::vector<std::string> names;
    for (const Stream& stream : report.streams) {
        names.push_back(stream.name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"", "b", "a", "c"}));
    EXPECT_EQ(report.streams[report.findings[0].stream].name, "a");
}

TEST_F(CollectorTest, OutputsBelongToTheStreamThatOpensThem) {
    const TempFolder folder;
    const std::string path = folder.path("film.out.264");
    {
        const StreamLabel label("video");
        for (const char* mode : {"wb", "ab"}) {
            const auto file = fileOpen_lstr(path, mode);
            ASSERT_NE(file, nullptr);
            const std::uint8_t bytes[3] = {};
            file->write(bytes);
        }
    }
    ASSERT_NE(fileOpen_lstr(folder.path("empty"), "wb"), nullptr);
    const FindingsReport report = this->report();
    ASSERT_EQ(report.streams.size(), 2U);
    ASSERT_EQ(report.streams[1].outputs.size(), 1U);
    EXPECT_EQ(report.streams[1].outputs[0].file, path);
    EXPECT_EQ(report.streams[1].outputs[0].kind, "264");
    EXPECT_EQ(report.streams[1].outputs[0].bytes, 6U);
    ASSERT_EQ(report.streams[0].outputs.size(), 1U);
    EXPECT_EQ(report.streams[0].outputs[0].kind, "");
    ASSERT_EQ(report.notes.size(), 1U);
    EXPECT_EQ(report.notes[0].stream, 0U);
    EXPECT_NE(report.notes[0].text.find("Nothing was written to"), std::string::npos);
}

TEST_F(CollectorTest, FileThatCantBeOpenedIsNoOutput) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(fileOpen_lstr("/no/such/folder/a.264", "wb"), nullptr);
    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(report().streams[0].outputs.empty());
}

TEST_F(CollectorTest, NotesAreMerged) {
    note_remark("something");
    {
        const StreamLabel label("x");
        note_remark("something");
        note_remark("something");
    }
    const FindingsReport report = this->report();
    ASSERT_EQ(report.notes.size(), 2U);
    EXPECT_EQ(report.notes[0].count, 1U);
    EXPECT_EQ(report.notes[1].count, 2U);
    EXPECT_EQ(report.streams[report.notes[1].stream].name, "x");
}

TEST_F(CollectorTest, ProgressTellsHowFarStreamsAre) {
    announce_stream("v");
    const StreamLabel label("v");
    note_segment();
    note_segment();
    raise(4303, "t", collector_, "v");
    raise(4303, "t", collector_, "v");
    const auto progress = collector_.progress();
    ASSERT_EQ(progress.size(), 2U);
    EXPECT_EQ(progress[1].name, "v");
    EXPECT_EQ(progress[1].segments, 2U);
    EXPECT_EQ(progress[1].findings, 2U);
}

TEST(FindingsCollector, FurtherTextsOfAMessageAreOneEntry) {
    CollectorLimits limits;
    limits.texts_of_a_message = 3;
    FindingsCollector collector(limits);
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 10; ++i) {
            raise(4303, "text " + std::to_string(i), collector);
        }
    }
    raise(4304, "other message", collector);
    raise(4303, "text 0", collector, "other stream");
    const FindingsReport report = collector.take_report("", false);
    ASSERT_EQ(report.findings.size(), 6U);
    EXPECT_EQ(report.findings[2].text, "text 2");
    EXPECT_EQ(report.findings[2].count, 2U);
    EXPECT_TRUE(report.findings[3].stands_for_more);
    EXPECT_EQ(report.findings[3].count, 14U);
    EXPECT_EQ(report.findings[3].text, find_catalogue_row(4303)->message);
    EXPECT_FALSE(report.findings[4].stands_for_more);
    EXPECT_EQ(count_from(report, Level::kError), 6U);
}

TEST(FindingsCollector, TextsAreKeptWithinTheirBytes) {
    CollectorLimits limits;
    limits.bytes = 100;
    FindingsCollector collector(limits);
    raise(4303, std::string(60, 'a'), collector);
    raise(4303, std::string(60, 'b'), collector);
    raise(4303, std::string(60, 'a'), collector);
    raise(4303, std::string(60, 'c'), collector);
    const FindingsReport report = collector.take_report("", false);
    ASSERT_EQ(report.findings.size(), 2U);
    EXPECT_EQ(report.findings[0].count, 2U);
    EXPECT_TRUE(report.findings[1].stands_for_more);
    EXPECT_EQ(report.findings[1].count, 2U);
}

// Reports name the stream beside each finding, so a long name counts as often.
TEST(FindingsCollector, NameOfTheStreamCountsForEachOfItsTexts) {
    CollectorLimits limits;
    limits.bytes = 10'000;
    FindingsCollector collector(limits);
    const std::string name(1000, 'n');
    for (int i = 10; i < 60; ++i) {
        raise(4303, "text no " + std::to_string(i), collector, name);
    }
    const FindingsReport report = collector.take_report("", false);
    // Nine times 1,010 bytes, and the tenth would pass 10,000.
    ASSERT_EQ(report.findings.size(), 10U);
    EXPECT_TRUE(report.findings[9].stands_for_more);
    EXPECT_EQ(report.findings[9].count, 41U);
}

TEST(FindingsCollector, FurtherNotesAreDropped) {
    CollectorLimits limits;
    limits.notes = 2;
    FindingsCollector collector(limits);
    for (int i = 0; i < 5; ++i) {
        collector.note("", std::to_string(i));
    }
    EXPECT_EQ(collector.take_report("", false).notes.size(), 2U);
}

TEST(FindingsCollector, TwoMillionEqualFindingsAreOneEntry) {
    FindingsCollector collector;
    constexpr std::uint64_t kMany = 2'000'000;
    for (std::uint64_t i = 0; i < kMany; ++i) {
        raise(4303, "For an [EC3] stream, in MP4, the data rate is wrong.", collector);
    }
    const FindingsReport report = collector.take_report("", false);
    ASSERT_EQ(report.findings.size(), 1U);
    EXPECT_EQ(report.findings[0].count, kMany);
}

TEST(FindingsCollector, LevelsLeaveEntriesOutAndCountsAlone) {
    FindingsCollector collector;
    raise(1001, "info", collector);
    raise(2039, "warning", collector);
    raise(4303, "error", collector);
    raise(3004, "fatal", collector);
    const FindingsReport report = collector.take_report("", true);
    EXPECT_TRUE(report.failed);
    EXPECT_EQ(count_from(report, Level::kInfo), 4U);
    EXPECT_EQ(count_from(report, Level::kWarning), 3U);
    EXPECT_EQ(count_from(report, Level::kError), 2U);
    const FindingsReport errors = with_level(report, Level::kError);
    ASSERT_EQ(errors.findings.size(), 2U);
    EXPECT_EQ(errors.findings[0].id, 4303);
    EXPECT_EQ(errors.streams[0].counts, report.streams[0].counts);
}

// Workers report, open files and end segments while another thread asks how far they are.
TEST_F(CollectorTest, ThreadsTellAtTheSameTime) {
    constexpr std::uint64_t kThreads = 6;
    constexpr std::uint64_t kRounds = 500;
    const TempFolder folder;
    std::vector<std::thread> threads;
    for (std::uint64_t t = 0; t < kThreads; ++t) {
        threads.emplace_back([t, &folder] {
            const std::string name = "stream " + std::to_string(t % 3);
            const StreamLabel label(name);
            announce_stream(name);
            const auto loglist = make_loglist();
            const auto file = fileOpen_lstr(folder.path("file" + std::to_string(t)), "wb");
            for (std::uint64_t i = 0; i < kRounds; ++i) {
                static_cast<void>(check(false, loglist.get(), 4303, {}, t, i % 10));
                static_cast<void>(check(true, loglist.get(), 2039, {}));
                note_segment();
                note_remark("note");
            }
        });
    }
    std::uint64_t seen = 0;
    while (seen < kThreads * kRounds) {
        seen = 0;
        for (const StreamProgress& stream : collector_.progress()) {
            seen += stream.findings;
        }
        std::this_thread::yield();
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const FindingsReport report = this->report();
    std::uint64_t counted = 0;
    for (const Finding& finding : report.findings) {
        counted += finding.count;
    }
    EXPECT_EQ(counted, kThreads * kRounds);
    EXPECT_EQ(report.findings.size(), kThreads * 10);
    EXPECT_EQ(report.streams.size(), 4U);
    EXPECT_EQ(report.evaluated, (std::vector<int>{2039, 4303}));
}

}  // namespace
}  // namespace mediasplit::report
