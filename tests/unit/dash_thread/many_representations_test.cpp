// Many Representations side by side, with findings on all of them and the timing thread at work.
#include <array>

#include "src/main/flows/flows.h"
#include "src/records/run_options.h"
#include "tests/support/run_options_scope.h"
#include "tests/unit/dash_thread/dash_run.h"

namespace mediasplit {
namespace {

constexpr int kRepresentations = 32;
constexpr int kSegments = 6;

class ManyRepresentations : public DashRun {
protected:
    ManyRepresentations() {
        loglist_ = begin_run(FormatId::kDash);
        for (int i = 0; i < kRepresentations; ++i) {
            const std::string stem = "r" + std::to_string(i) + "_";
            add(stem + "init.mp4", init_segment());
            for (int j = 1; j <= kSegments; ++j) {
                add(stem + std::to_string(j) + ".mp4", lasting(j, 2000 + 1000 * (i % 2)));
            }
        }
    }

    // A segment whose sample lasts other than the 2 s of the builder's.
    static std::string lasting(int number, std::uint32_t milliseconds) {
        std::string bytes = mp4_segment(number);
        const std::string told("\0\0\x07\xD0", 4);
        std::string wanted(4, '\0');
        for (int i = 3; i >= 0; --i, milliseconds >>= 8) {
            wanted[static_cast<std::size_t>(i)] = static_cast<char>(milliseconds & 0xFF);
        }
        return bytes.replace(bytes.rfind(told), 4, wanted);
    }

    // Every other one is AC-4. The language is one that no stream has, and the last segment is one
    // that isn't there.
    static std::string mpd(const std::string& attributes) {
        std::string text = "<MPD " + attributes + R"(><Period duration="PT60S">)";
        for (int i = 0; i < kRepresentations; ++i) {
            const std::string codecs =
                i % 2 == 0 ? R"(codecs="ac-4.02.01.00")" : R"(mimeType="video/mp4")";
            text += R"(<AdaptationSet lang="en" )" + codecs +
                    R"(><Representation bandwidth="1" id="r)" + std::to_string(i) +
                    R"("><SegmentTemplate initialization="$RepresentationID$_init.mp4" )"
                    R"(media="$RepresentationID$_$Number$.mp4" duration="2"/></Representation>)"
                    "</AdaptationSet>";
        }
        return text + "</Period></MPD>";
    }

    void check_outputs(const std::string& expected) {
        for (int i = 0; i < kRepresentations; ++i) {
            EXPECT_EQ(read_file("out/stream_r" + std::to_string(i) + "_init_track_id_1.out.data"),
                      expected)
                << i;
        }
    }

    RunOptionsScope scope_;
};

TEST_F(ManyRepresentations, ReportOnTheirOwnAndAreTimedAgainstEachOther) {
    add("stream.mpd", mpd(""));
    g_input = "stream.mpd";
    EXPECT_FALSE(has_failed(run_dash(loglist_.get())));
    check_outputs(samples(1, kSegments));
    std::array<int, kRepresentations> warnings{};
    for (const RecordedReport& report : sink_.reports()) {
        if (report.id == 2009) {
            ++warnings.at(static_cast<std::size_t>(std::stoi(report.stream.substr(1))));
        }
    }
    for (const int count : warnings) {
        EXPECT_EQ(count, 1);
    }
    // On the initialization and on each media segment.
    EXPECT_EQ(sink_.count(4093), std::size_t{kRepresentations * (1 + kSegments)});
    // The last record of each is compared with nothing.
    constexpr std::size_t kDifferingPairs = (kRepresentations / 2) * (kRepresentations / 2);
    EXPECT_EQ(sink_.count(4110), kDifferingPairs * (kSegments - 1));
    EXPECT_EQ(sink_.count(2051), 0U);
}

TEST_F(ManyRepresentations, AreLoadedAnewEachByItself) {
    g_tested_duration_in_live = 8;
    add("stream.mpd", mpd(R"(type="dynamic" minimumUpdatePeriod="PT6S" )"
                          R"(publishTime="2026-01-01T00:00:00Z" )"
                          R"(availabilityStartTime="2026-01-01T00:00:00Z")"));
    g_input = server_.url("/stream.mpd");
    EXPECT_FALSE(has_failed(run_dash(loglist_.get())));
    EXPECT_EQ(sink_.count(1023), std::size_t{kRepresentations});
    EXPECT_EQ(server_.requests("/stream.mpd"), std::size_t{1 + 2 * kRepresentations});
    EXPECT_TRUE(std::filesystem::is_empty("tmp"));
}

}  // namespace
}  // namespace mediasplit
