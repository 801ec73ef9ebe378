// Whole manifests, as a run takes them.
#include <algorithm>

#include "src/file_util/output_file.h"
#include "src/main/flows/flows.h"
#include "src/records/run_options.h"
#include "tests/support/run_options_scope.h"
#include "tests/unit/dash_thread/dash_run.h"

namespace mediasplit {
namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;

class DashFlow : public DashRun {
protected:
    DashFlow() {
        loglist_ = begin_run(FormatId::kDash);
        add_segments(4);
        for (const char* name : {"a", "b"}) {
            add(std::string(name) + "_init.mp4", init_segment());
            add(std::string(name) + "_1.mp4", mp4_segment(1));
            add(std::string(name) + "_2.mp4", mp4_segment(2));
        }
    }
    Status run(const std::string& input, const std::string& mpd) {
        add("stream.mpd", mpd);
        g_input = input;
        begin_outputs();
        return run_dash(loglist_.get());
    }
    Status run_local(const std::string& mpd) { return run("stream.mpd", mpd); }
    Status run_address(const std::string& mpd) { return run(server_.url("/stream.mpd"), mpd); }
    static std::string representation(const std::string& id, const std::string& attributes = "") {
        return R"(<Representation bandwidth="1" id=")" + id + R"(" )" + attributes +
               R"(><SegmentTemplate initialization="$RepresentationID$_init.mp4" )"
               R"(media="$RepresentationID$_$Number$.mp4" duration="2"/></Representation>)";
    }
    static std::string period(const std::string& representations) {
        return R"(<MPD><Period duration="PT4S"><AdaptationSet>)" + representations +
               "</AdaptationSet></Period></MPD>";
    }
    [[nodiscard]] static Names outputs() { return file_names("out"); }

    RunOptionsScope scope_;
};

const Names kBoth{"stream_a_init_track_id_1.out.data", "stream_b_init_track_id_1.out.data"};

TEST_F(DashFlow, RepresentationsAreSplitSideBySide) {
    EXPECT_EQ(run_local(period(representation("a") + representation("b"))), Status::kOk);
    EXPECT_EQ(outputs(), kBoth);
    for (const std::string& name : kBoth) {
        EXPECT_EQ(read_file("out/" + name), samples(1, 2));
    }
}

TEST_F(DashFlow, AddressGivesWhatTheFolderGives) {
    EXPECT_EQ(run_address(period(representation("a") + representation("b"))), Status::kOk);
    EXPECT_EQ(outputs(), kBoth);
    EXPECT_EQ(read_file("out/" + kBoth[1]), samples(1, 2));
    EXPECT_TRUE(fs::is_empty("tmp"));
    EXPECT_EQ(server_.requests("/stream.mpd"), 3U) << "once for the run and once for each worker";
}

TEST_F(DashFlow, OnlyRepresentationRunsWithoutThreads) {
    EXPECT_EQ(run_local(manifest("", R"(duration="PT6S")", kNumbers)), Status::kOk);
    EXPECT_EQ(output(), samples(1, 3));
}

TEST_F(DashFlow, RepresentationOfAUsedIdIsNotPlayed) {
    EXPECT_FALSE(has_failed(run_local(
        period(representation("a") +
               R"(<Representation bandwidth="2" id="a"><SegmentTemplate duration="2" )"
               R"(initialization="b_init.mp4" media="b_$Number$.mp4"/></Representation>)"))));
    EXPECT_EQ(outputs(), Names{kBoth[0]});
    EXPECT_EQ(read_file("out/" + kBoth[0]), samples(1, 2));
}

TEST_F(DashFlow, PeriodsArePlayedOneAfterTheOther) {
    const auto one = [](const std::string& id) {
        return R"(<Period duration="PT4S"><AdaptationSet>)" + representation(id) +
               "</AdaptationSet></Period>";
    };
    EXPECT_EQ(
        run_local("<MPD>" + one("a") + R"(<Period start="PT0S" duration="PT4S"><AdaptationSet>)" +
                  representation("b") + "</AdaptationSet></Period></MPD>"),
        Status::kOk);
    EXPECT_EQ(outputs(), kBoth);
    const auto reports = sink_.reports();
    const auto first_of = [&](const std::string& text) {
        return std::find_if(reports.begin(), reports.end(), [&](const RecordedReport& report) {
            return report.id == 3 && report.text.find(text) != std::string::npos;
        });
    };
    EXPECT_LT(first_of("a_2.mp4"), first_of("b_init.mp4"));
}

TEST_F(DashFlow, LaterPeriodAddsToTheFilesOfAnEarlierOne) {
    const std::string one = R"(<Period start="PT0S" duration="PT4S"><AdaptationSet>)" +
                            representation("a") + "</AdaptationSet></Period>";
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(run_local("<MPD>" + one + one + "</MPD>"), Status::kOk);
        EXPECT_EQ(outputs(), Names{kBoth[0]});
        EXPECT_EQ(read_file("out/" + kBoth[0]), samples(1, 2) + samples(1, 2)) << i;
    }
}

TEST_F(DashFlow, MissingInputIsReported) {
    g_input = "none.mpd";
    EXPECT_EQ(run_dash(loglist_.get()), Status::kFailed);
    EXPECT_EQ(sink_.ids(), Ids{4022});
    g_input = server_.url("/none.mpd");
    EXPECT_EQ(run_dash(loglist_.get()), Status::kFailed);
    EXPECT_EQ(sink_.ids(), (Ids{4022, 2054, 4021}));
    EXPECT_TRUE(fs::is_empty("tmp"));
}

// Takes the copies of manifests away while they are being read.
class RemovingSink : public RecordingSink {
public:
    void report(const Report& report) override {
        RecordingSink::report(report);
        if (report.id != 2010 && report.id != 3) {
            return;
        }
        for (const auto& entry : fs::directory_iterator("tmp")) {
            if (entry.path().filename().string().find("manifest") != std::string::npos) {
                fs::remove(entry.path());
            }
        }
    }
};

TEST_F(DashFlow, CopyThatCannotBeRemovedIsReported) {
    const std::string mpd = R"(<MPD><UTCTiming schemeIdUri="other"/><Period duration="PT4S">)"
                            R"(<AdaptationSet>)" +
                            representation("a") + "</AdaptationSet></Period></MPD>";
    EXPECT_EQ(run_address(mpd), Status::kOk);
    EXPECT_EQ(sink_.count(2010), 1U);
    EXPECT_EQ(sink_.count(11), 0U);
    const RemovingSink sink;
    (void)run_address(mpd);
    EXPECT_EQ(sink.count(11), 2U) << "the run's copy and the worker's";
    for (const RecordedReport& report : sink.reports()) {
        if (report.id == 11) {
            EXPECT_NE(report.text.find("(" + server_.url("/stream.mpd") + ")"), std::string::npos);
        }
    }
    EXPECT_EQ(read_file("out/" + kBoth[0]), samples(1, 2));
}

TEST_F(DashFlow, ManifestThatIsGoneForTheWorkersFails) {
    server_.serve("/stream.mpd", {{.body = period(representation("a"))}, {.status = 404}});
    g_input = server_.url("/stream.mpd");
    EXPECT_TRUE(has_failed(run_dash(loglist_.get())));
    EXPECT_EQ(sink_.ids(), (Ids{2054, 4021}));
    EXPECT_EQ(outputs(), Names{});
}

TEST_F(DashFlow, UnusableManifestFailsAndItsCopyStays) {
    EXPECT_TRUE(has_failed(run_local("<x/>")));
    EXPECT_EQ(sink_.ids(), Ids{4026});
    EXPECT_TRUE(has_failed(run_address("<x/>")));
    EXPECT_FALSE(fs::is_empty("tmp"));
}

TEST_F(DashFlow, RefusedRepresentationFailsTheRun) {
    EXPECT_TRUE(has_failed(run_local(period(representation("a") + "<Representation id=\"b\"/>"))));
    EXPECT_EQ(sink_.ids(), Ids{4090});
    EXPECT_EQ(outputs(), Names{});
}

TEST_F(DashFlow, FailedRepresentationDoesNotStopTheOthers) {
    fs::remove("b_init.mp4");
    fs::remove("b_1.mp4");
    const Status status = run_local(period(
        representation("a") + R"(<Representation bandwidth="1" id="b"><SegmentList duration="2">
        <Initialization sourceURL="b_init.mp4"/></SegmentList></Representation>)"));
    EXPECT_TRUE(has_failed(status));
    EXPECT_EQ(sink_.count(4063), 1U);
    EXPECT_EQ(outputs(), Names{kBoth[0]});
    EXPECT_EQ(read_file("out/" + kBoth[0]), samples(1, 2));
}

TEST_F(DashFlow, FindingsAreLabelledWithTheRepresentation) {
    fs::remove("b_2.mp4");
    (void)run_local(period(representation("a") + representation("b")));
    bool found = false;
    for (const RecordedReport& report : sink_.reports()) {
        if (report.id == 2009) {
            EXPECT_EQ(report.stream, "b");
            found = true;
        }
    }
    EXPECT_TRUE(found);
}

TEST_F(DashFlow, Ac4AndVideoAreTimedAgainstEachOther) {
    const auto codecs = [](const std::string& first, const std::string& second) {
        return period(representation("a", first) + representation("b", second));
    };
    add("b_1.mp4", [] {
        std::string bytes = mp4_segment(1);
        // The duration of the sample, 2000 ms, becomes 3000 ms.
        const std::string told("\0\0\x07\xD0", 4);
        return bytes.replace(bytes.rfind(told), 4, std::string("\0\0\x0B\xB8", 4));
    }());
    (void)run_local(codecs(R"(codecs="ac-4.02.01.00")", R"(mimeType="video/mp4")"));
    ASSERT_EQ(sink_.count(4110), 1U);
    EXPECT_NE(texts(4110)[0].find("Representation[id : a] and Representation[id : b]"),
              std::string::npos);
    sink_.clear();
    (void)run_local(codecs(R"(codecs="mp4a.40.2")", R"(mimeType="video/mp4")"));
    EXPECT_EQ(sink_.count(4110), 0U);
    add("b_1.mp4", mp4_segment(1));
    (void)run_local(codecs(R"(codecs="ac-4.02.01.00")", R"(mimeType="video/mp4")"));
    EXPECT_EQ(sink_.count(4110), 0U);
}

TEST_F(DashFlow, LiveManifestIsLoadedUntilTheWantedDurationIsPlayed) {
    g_tested_duration_in_live = 4;
    (void)run_address(
        manifest(R"(type="dynamic" minimumUpdatePeriod="PT2S" publishTime="2026-01-01T00:00:00Z"
                    availabilityStartTime="2026-01-01T00:00:00Z")",
                 "", kNumbers));
    EXPECT_EQ(server_.requests("/stream.mpd"), 3U);
    EXPECT_EQ(output(), samples(1, 2));
    EXPECT_TRUE(fs::is_empty("tmp"));
}

}  // namespace
}  // namespace mediasplit
