#include <gtest/gtest.h>

#include "tests/support/eac3_builder.h"
#include "tests/unit/fmp4demuxer/demux_run.h"

namespace mediasplit {
namespace {

using mp4::Bytes;
using test_support::build_eac3_frame;
using test_support::Eac3Spec;

Bytes frame(bool good_crc = true) {
    Eac3Spec spec;
    spec.good_crc = good_crc;
    return build_eac3_frame(spec);
}

mp4::Bytes movie(const std::vector<Bytes>& samples) {
    mp4::TrackSpec track;
    track.handler = "soun";
    track.entries = {mp4::audio_entry("ec-3", 2, 16, 48000, {})};
    for (const Bytes& bytes : samples) {
        track.samples.push_back(sample(bytes));
    }
    mp4::MovieSpec spec;
    spec.tracks = {std::move(track)};
    return mp4::plain_file(spec);
}

struct Outcome {
    Status status = Status::kOk;
    std::size_t failures = 0;  // 4333
    std::string printed;
    Bytes bytes;
};

Outcome split(const std::vector<Bytes>& samples) {
    DemuxRun run;
    testing::internal::CaptureStdout();
    Outcome outcome;
    outcome.status = run.walk(movie(samples));
    outcome.printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(run.finish(), Status::kOk);
    outcome.failures = run.sink.count(4333);
    outcome.bytes = run.output("in_track_id_1.out.ec3").value_or(Bytes{});
    return outcome;
}

TEST(Ec3Sample, GoodFramesRaiseNothing) {
    const Outcome outcome = split({frame(), frame(), frame()});
    EXPECT_EQ(outcome.failures, 0U);
    EXPECT_EQ(outcome.bytes, mp4::join({frame(), frame(), frame()}));
}

TEST(Ec3Sample, FrameWithAWrongCrcIsReportedAndWritten) {
    const Outcome outcome = split({frame(), frame(false), frame()});
    EXPECT_EQ(outcome.status, Status::kRuleBroken);
    EXPECT_EQ(outcome.failures, 1U);
    EXPECT_EQ(outcome.bytes, mp4::join({frame(), frame(false), frame()}));
}

TEST(Ec3Sample, CutFrameIsReportedAndWritten) {
    Bytes cut = frame();
    cut.resize(100);
    const Outcome outcome = split({cut});
    EXPECT_EQ(outcome.failures, 1U);
    EXPECT_EQ(outcome.bytes, cut);
}

TEST(Ec3Sample, SecondFrameOfTheSamplesBelongsToTheSameAnalysis) {
    // A failure that stands is told for every later sample of the walk.
    Eac3Spec low;
    low.fscod = 2;
    const Outcome outcome = split({build_eac3_frame(low), frame(), frame()});
    EXPECT_EQ(outcome.failures, 3U);
}

// Each of these samples names its dependent substream again, which refuses it; the count of them
// must not lead behind the eight that are kept.
TEST(Ec3Sample, DependentsThatComeAgainStayWithinTheirList) {
    Eac3Spec spec;
    spec.strmtyp = 1;
    spec.chanmap = 0x1A00;
    const Bytes dependent = build_eac3_frame(spec);
    std::vector<Bytes> samples(82, dependent);
    samples.front() = mp4::join({frame(), dependent});
    samples.back().clear();
    testing::internal::CaptureStderr();
    const Outcome outcome = split(samples);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(outcome.bytes, mp4::join(samples));
}

TEST(Ec3Sample, NextWalkBeginsItsAnalysisAnew) {
    Eac3Spec low;
    low.fscod = 2;
    DemuxRun run;
    testing::internal::CaptureStdout();
    EXPECT_EQ(run.walk(movie({build_eac3_frame(low)})), Status::kRuleBroken);
    EXPECT_EQ(run.sink.count(4333), 1U);
    (void)run.walk(movie({frame()}));
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(run.sink.count(4333), 1U);
    EXPECT_EQ(run.demuxer()->streams[0]->oap_parser, nullptr);
}

}  // namespace
}  // namespace mediasplit
