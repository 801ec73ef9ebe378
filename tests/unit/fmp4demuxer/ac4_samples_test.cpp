// AC-4 tracks from file to elementary stream and findings.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "src/ac4analyze_impl/es_parser.h"
#include "tests/support/ac4_builder.h"
#include "tests/support/dsi_builder.h"
#include "tests/unit/fmp4demuxer/demux_run.h"

namespace mediasplit {
namespace {

using mp4::Bytes;
using Ids = std::vector<int>;

Bytes frame_bytes(std::uint32_t counter, bool iframe = true) {
    BuildFrame frame = simple_stereo_frame();
    frame.sequence_counter = counter;
    frame.iframe = iframe;
    frame.substreams = {{}, {}};
    return write_ac4_frame(frame);
}

// What the box of these frames should say.
DsiRecord right_record(const Bytes& frame) {
    const auto parser = ac4_es_parser_new(nullptr);
    const auto reference = ac4_es_parser_ref_dsi_init();
    const auto analysis = ac4_es_parser_init();
    EXPECT_EQ(ac4_es_parser_ref_dsi(*parser, frame, *reference, *analysis, 1, nullptr),
              Status::kOk);
    return record_of(*reference);
}

mp4::TrackSpec ac4_track(const DsiRecord& record, std::vector<mp4::SampleSpec> samples) {
    mp4::TrackSpec track;
    track.handler = "soun";
    track.time_scale = 48000;
    track.entries = {
        mp4::audio_entry("ac-4", 2, 16, 48000, {mp4::box("dac4", {write_dac4(record)})})};
    track.samples = std::move(samples);
    return track;
}

struct Walked {
    Ids ids;
    Status status = Status::kOk;
    std::string lines;
    Bytes output;
    std::vector<std::string> texts;
};

Walked walk_file(const mp4::TrackSpec& track, bool fragmented = false, bool writes = true) {
    DemuxRun run;
    run.writes = writes;
    mp4::MovieSpec movie;
    movie.tracks = {track};
    Walked out;
    testing::internal::CaptureStdout();
    out.status = run.walk(fragmented ? mp4::fragmented_file(movie) : mp4::plain_file(movie));
    out.lines = testing::internal::GetCapturedStdout();
    EXPECT_EQ(run.finish(), Status::kOk);
    out.output = run.output("in_track_id_1.out.ac4").value_or(Bytes{});
    out.ids = run.sink.ids();
    for (const RecordedReport& report : run.sink.reports()) {
        out.texts.push_back(report.text);
    }
    return out;
}

Bytes sync_frame(const Bytes& frame) {
    return mp4::join({mp4::hex("ac40ffff"), mp4::u24(frame.size()), frame});
}

TEST(Ac4Samples, TrackWithARightBoxRaisesNothing) {
    const Bytes first = frame_bytes(1);
    const Bytes second = frame_bytes(2, false);
    const Bytes third = frame_bytes(3);
    const mp4::TrackSpec track =
        ac4_track(right_record(first), {sample(first), sample(second, false), sample(third)});
    for (const bool fragmented : {false, true}) {
        const Walked walked = walk_file(track, fragmented);
        EXPECT_EQ(walked.ids, Ids{});
        EXPECT_EQ(walked.status, Status::kOk);
        EXPECT_EQ(walked.lines, "");
        EXPECT_EQ(walked.output,
                  mp4::join({sync_frame(first), sync_frame(second), sync_frame(third)}));
    }
}

TEST(Ac4Samples, WrongBoxIsToldForEachSample) {
    DsiRecord record = right_record(frame_bytes(1));
    record.presentations[0].mdcompat = 6;
    const mp4::TrackSpec track =
        ac4_track(record, {sample(frame_bytes(1)), sample(frame_bytes(2))});
    const Walked walked = walk_file(track);
    EXPECT_EQ(walked.ids, (Ids{4430, 4414, 4430, 4414}));
    EXPECT_EQ(walked.status, Status::kRuleBroken);
    EXPECT_EQ(walked.output.size(), frame_bytes(1).size() * 2 + 14);
}

TEST(Ac4Samples, AnalysisRunsWithoutAnOutput) {
    DsiRecord record = right_record(frame_bytes(1));
    record.fs_index = 0;
    const Walked walked = walk_file(ac4_track(record, {sample(frame_bytes(1))}), false, false);
    EXPECT_EQ(walked.ids, (Ids{4410, 4420, 4414}));
}

TEST(Ac4Samples, BoxlessEntryIsComparedAsAnEmptyRecord) {
    mp4::TrackSpec track = ac4_track(right_record(frame_bytes(1)), {sample(frame_bytes(1))});
    track.entries = {mp4::audio_entry("ac-4", 2, 16, 48000)};
    const Walked walked = walk_file(track);
    EXPECT_EQ(walked.ids, (Ids{4402, 4415, 4419, 4414}));
    EXPECT_EQ(walked.output, sync_frame(frame_bytes(1)));
}

TEST(Ac4Samples, SampleThatCannotBeAnalyzedIsWrittenAndNotCompared) {
    const Bytes broken{0xFF, 0xFF};
    const mp4::TrackSpec track =
        ac4_track(right_record(frame_bytes(1)), {sample(frame_bytes(1)), sample(broken)});
    const Walked walked = walk_file(track);
    EXPECT_EQ(walked.ids, Ids{});
    EXPECT_EQ(walked.status, Status::kRuleBroken);
    EXPECT_EQ(walked.lines, "Internal error of orv_ac4analyze_analyze_frame: 33\n");
    EXPECT_EQ(walked.output, mp4::join({sync_frame(frame_bytes(1)), sync_frame(broken)}));
}

TEST(Ac4Samples, DeprecatedVersionEndsTheFirstSamplesComparison) {
    BuildFrame frame = simple_stereo_frame();
    frame.bitstream_version = 0;
    frame.presentations[0].version = 0;
    BuildSubstream substream;
    substream.index = 1;
    frame.presentations[0].substreams = {substream};
    frame.substreams = {{}, {}};
    const mp4::TrackSpec track =
        ac4_track(right_record(frame_bytes(1)), {sample(write_ac4_frame(frame))});
    const Walked walked = walk_file(track);
    EXPECT_EQ(walked.ids, Ids{4488});
    EXPECT_EQ(walked.status, Status::kRuleBroken);
}

TEST(Ac4Samples, SyncSampleTableMustNameTheIFrames) {
    const DsiRecord record = right_record(frame_bytes(1));
    const mp4::TrackSpec track =
        ac4_track(record, {sample(frame_bytes(1)), sample(frame_bytes(2, false)),
                           sample(frame_bytes(3), false), sample(frame_bytes(4, false), false)});
    const Walked walked = walk_file(track);
    EXPECT_EQ(walked.ids, (Ids{4398, 4397}));
    ASSERT_EQ(walked.texts.size(), 2U);
    EXPECT_NE(walked.texts[0].find("[index : 2]"), std::string::npos);
    EXPECT_NE(walked.texts[1].find("[index : 3]"), std::string::npos);
    // Fragments have no such table.
    EXPECT_EQ(walk_file(track, true).ids, Ids{});
}

TEST(Ac4Samples, WithoutASyncSampleTableFlagsAreNotCompared) {
    const mp4::TrackSpec track = ac4_track(right_record(frame_bytes(1)),
                                           {sample(frame_bytes(1)), sample(frame_bytes(2, false))});
    EXPECT_EQ(walk_file(track).ids, Ids{});
}

// A layout that may be immersive, with the mark in the frames told.
Bytes immersive_frame(std::uint32_t counter, bool mark) {
    BuildFrame frame = simple_stereo_frame();
    frame.sequence_counter = counter;
    frame.groups[0].substreams[0].mode = ac4_mode::k714;
    frame.groups[0].substreams[0].immersive = "1 1 11";
    PresentationText text;
    text.dialnorm = 96;
    text.additional = mark ? "1" : "0";
    text.tail.put(0, 64);
    frame.substreams = {write_presentation(text).to_bytes(), {}};
    return write_ac4_frame(frame);
}

TEST(Ac4Samples, AnnouncedSphereIndicatorMustComeInSomeFrame) {
    const DsiRecord record = right_record(immersive_frame(1, true));
    ASSERT_EQ(record.presentations.at(0).orvel_sphere_indicator, 1U);
    const Walked never = walk_file(
        ac4_track(record, {sample(immersive_frame(1, false)), sample(immersive_frame(2, false))}));
    EXPECT_EQ(never.ids, Ids{4473});
    EXPECT_EQ(never.status, Status::kRuleBroken);
    const Walked later = walk_file(
        ac4_track(record, {sample(immersive_frame(1, false)), sample(immersive_frame(2, true))}));
    EXPECT_EQ(later.ids, Ids{});
    EXPECT_EQ(later.status, Status::kOk);
}

TEST(Ac4Samples, SphereIndicatorThatTheBoxDoesNotAnnounce) {
    const DsiRecord record = right_record(immersive_frame(1, false));
    const Walked walked = walk_file(ac4_track(record, {sample(immersive_frame(1, true))}));
    EXPECT_EQ(walked.ids, (Ids{4473, 4414}));
}

// Each segment starts afresh: its first sample is looked at as a first one.
TEST(Ac4Samples, WalksStartWithAFreshAnalysis) {
    DemuxRun run;
    mp4::MovieSpec movie;
    // The second and third would be a break of the sequence for an analysis that goes on.
    movie.tracks = {
        ac4_track(right_record(frame_bytes(1)),
                  {sample(frame_bytes(1)), sample(frame_bytes(7)), sample(frame_bytes(3))})};
    EXPECT_EQ(run.walk(mp4::initialization_segment(movie)), Status::kOk);
    SegmentSlot slot;
    slot.kind = 4;
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(run.walk(mp4::media_segment(movie, i, 1, 0), &slot), Status::kOk);
        EXPECT_EQ(run.demuxer()->streams.at(0)->ac4_parser, nullptr);
        EXPECT_TRUE(run.demuxer()->streams[0]->ac4_config->presentations.at(0).compared);
    }
    EXPECT_EQ(run.sink.ids(), Ids{});
}

TEST(Ac4Samples, DamagedBoxesAndSamplesAreReadSafely) {
    const Bytes frame = frame_bytes(1);
    const Bytes payload = write_dac4(right_record(frame));
    for (std::size_t i = 0; i < payload.size(); ++i) {
        for (const bool cut : {false, true}) {
            Bytes damaged = payload;
            cut ? damaged.resize(i)
                : static_cast<void>(damaged[i] = static_cast<std::uint8_t>(~damaged[i]));
            mp4::TrackSpec track =
                ac4_track({}, {sample(frame),
                               sample(Bytes(frame.begin(),
                                            frame.begin() + static_cast<long>(i % frame.size())))});
            track.entries = {mp4::audio_entry("ac-4", 2, 16, 48000, {mp4::box("dac4", {damaged})})};
            EXPECT_FALSE(has_failed(walk_file(track).status)) << i;
        }
    }
}

}  // namespace
}  // namespace mediasplit
