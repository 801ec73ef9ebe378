#include "src/mp4demuxer/box_reader.h"
#include "tests/support/recording_sink.h"
#include "tests/unit/mp4demuxer/walk_support.h"

namespace mediasplit::mp4 {
namespace {

TEST(TrackExtends, GivesDefaultsToATrackThatIsThere) {
    const WalkResult result = walk_and_listen(
        box("moov", {box("trak", {tkhd(3)}), box("mvex", {trex(3, 2, 40, 50, 0x10000)})}));
    EXPECT_EQ(result.stream().curr_sample_descr_idx, 2U);
    EXPECT_EQ(result.stream().default_sample_duration, 40U);
    EXPECT_EQ(result.stream().default_sample_size, 50U);
    EXPECT_EQ(result.demuxer->trex_pending.valid, 0U);
}

TEST(TrackExtends, NeverKeepsTheDefaultFlags) {
    const WalkResult result = walk_and_listen(
        box("moov", {box("trak", {tkhd(3)}), box("mvex", {trex(3, 1, 1, 1, 0x10000)})}));
    EXPECT_EQ(result.stream().default_sample_flag, 0U);
}

TEST(TrackExtends, WaitsForATrackThatComesLater) {
    const WalkResult result =
        walk_and_listen(box("moov", {box("mvex", {trex(4, 2, 40, 50)}), box("trak", {tkhd(3)}),
                                     box("trak", {tkhd(4)}), box("trak", {tkhd(4)})}));
    EXPECT_EQ(result.stream(0).default_sample_size, 0U);
    EXPECT_EQ(result.stream(1).default_sample_size, 50U);
    EXPECT_EQ(result.stream(1).default_sample_duration, 40U);
    EXPECT_EQ(result.stream(1).curr_sample_descr_idx, 2U);
    EXPECT_EQ(result.stream(2).default_sample_size, 0U);
}

TEST(TrackExtends, HasRoomForOneThatWaits) {
    const WalkResult result =
        walk_and_listen(box("moov", {box("mvex", {trex(4, 1, 1, 50), trex(5, 1, 1, 60)}),
                                     box("trak", {tkhd(4)}), box("trak", {tkhd(5)})}));
    EXPECT_EQ(result.stream(0).default_sample_size, 0U);
    EXPECT_EQ(result.stream(1).default_sample_size, 60U);
}

TEST(TrackExtends, GoesToTheLastTrackOfAnId) {
    const WalkResult result = walk_and_listen(
        box("moov", {box("trak", {tkhd(3)}), box("trak", {tkhd(3)}), trex(3, 1, 1, 50)}));
    EXPECT_EQ(result.stream(0).default_sample_size, 0U);
    EXPECT_EQ(result.stream(1).default_sample_size, 50U);
}

TEST(FragmentHeader, ReadsItsDefaults) {
    const WalkResult result = walk_and_listen(
        fragment_movie({moof_of({tfhd(1, 0x3A, {u32(2), u32(30), u32(40), u32(0x10000)})})}));
    const Mp4Stream& stream = result.stream();
    EXPECT_EQ(stream.curr_sample_descr_idx, 2U);
    EXPECT_EQ(stream.default_sample_duration, 30U);
    EXPECT_EQ(stream.default_sample_size, 40U);
    EXPECT_EQ(stream.default_sample_flag, 0x10000U);
    EXPECT_EQ(stream.base_is_moof, 1U);
    EXPECT_EQ(stream.base_offset, result.demuxer->moof_offset);
    EXPECT_EQ(result.demuxer->current, nullptr);
}

TEST(FragmentHeader, KeepsTheLowHalfOfTheBaseDataOffset) {
    const WalkResult result =
        walk_and_listen(fragment_movie({moof_of({tfhd(1, 1, {u64(0x500000007)})})}));
    EXPECT_EQ(result.stream().base_is_moof, 0U);
    EXPECT_EQ(result.stream().base_offset, 7);
}

TEST(FragmentHeader, ReadsTheFieldsBehindAWideBaseDataOffset) {
    const WalkResult result =
        walk_and_listen(fragment_movie({moof_of({tfhd(1, 0x11, {u64(0x500000007), u32(9)})})}));
    EXPECT_EQ(result.stream().default_sample_size, 9U);
}

TEST(FragmentDecodeTime, CountsOnceAWalk) {
    const Bytes first = full_box("tfdt", 0, 0, {u32(100)});
    const Bytes second = full_box("tfdt", 1, 0, {u64(0x200000000)});
    WalkResult result =
        walk_and_listen(fragment_movie({moof_of({tfhd(1), first}), moof_of({tfhd(1), second})}));
    EXPECT_EQ(result.stream().baseMediaDecodeTime, 100U);
    walk_again(*result.demuxer, moof_of({tfhd(1), second}));
    EXPECT_EQ(result.stream().baseMediaDecodeTime, 0x200000000U);
}

TEST(TrackRun, BeginsBehindTheMediaDataHeaderWithoutADataOffset) {
    // 100 bytes of payload: traf header 8, tfhd 16 + 4, trun 16, a box that fills up.
    const Bytes traf = box("traf", {tfhd(1, 0x10, {u32(50)}), trun(0, 2)});
    const Bytes moof = box("moof", {traf, box("saiz", {zeros(100 - traf.size() - 8)})});
    ASSERT_EQ(moof.size(), 108U);
    const Bytes head = box("moov", {mvhd(), track_of("vide", {})});
    const WalkResult result = walk_and_listen(join({head, moof}));
    EXPECT_EQ(result.sample(0).offset, head.size() + 116);
    EXPECT_EQ(result.sample(1).offset, head.size() + 166);
}

TEST(TrackRun, AddsItsSignedDataOffsetToTheBase) {
    const WalkResult result = walk_and_listen(
        fragment_movie({moof_of({tfhd(1, 0x11, {u64(1000), u32(10)}), trun(1, 1, {u32(24)}),
                                 trun(1, 1, {u32(0xFFFFFFF6)}), trun(0, 1)})}));
    EXPECT_EQ(result.sample(0).offset, 1024U);
    EXPECT_EQ(result.sample(1).offset, 990U);
    EXPECT_EQ(result.sample(2).offset, 1000U);
}

TEST(TrackRun, TakesSizesDurationsAndOffsetsOfItsSamples) {
    const WalkResult result = walk_and_listen(fragment_movie(
        {moof_of({tfhd(1), trun(0xF01, 2,
                                {u32(500), u32(30), u32(7), u32(0x02000000), u32(3), u32(40),
                                 u32(8), u32(0x01010000), u32(0xFFFFFFFF)})})}));
    const std::uint64_t base = static_cast<std::uint64_t>(result.demuxer->moof_offset) + 500;
    const Mp4Sample first = result.sample(0);
    const Mp4Sample second = result.sample(1);
    EXPECT_EQ(first.offset, base);
    EXPECT_EQ(first.size, 7U);
    EXPECT_EQ(first.duration, 30U);
    EXPECT_EQ(first.pts, 3U);
    EXPECT_EQ(first.sync, 1U);
    EXPECT_EQ(second.offset, base + 7);
    EXPECT_EQ(second.size, 8U);
    EXPECT_EQ(second.dts, 30U);
    EXPECT_EQ(second.pts, 29U);
    EXPECT_EQ(second.duration, 40U);
    EXPECT_EQ(second.sync, 0U);
    EXPECT_EQ(result.stream().duration, 70U);
    EXPECT_EQ(result.stream().stts, hex("00000001 0000001e 00000001 00000028"));
    EXPECT_EQ(result.stream().stsc, hex("00000001 00000002 00000000"));
    EXPECT_EQ(result.stream().stco_is_64bit, 1U);
    EXPECT_NE(result.stream().marks & kMarkTrun, 0U);
}

TEST(TrackRun, FallsBackToDefaults) {
    const WalkResult result = walk_and_listen(fragment_movie(
        {moof_of({tfhd(1, 0x3A, {u32(3), u32(20), u32(6), u32(0x10000)}), trun(1, 3, {u32(0)})})}));
    EXPECT_EQ(result.stream().stts, hex("00000003 00000014"));
    EXPECT_EQ(result.stream().stsz, hex("00000006 00000006 00000006"));
    EXPECT_EQ(result.stream().stsc, hex("00000001 00000003 00000003"));
    EXPECT_EQ(result.stream().duration, 60U);
    EXPECT_EQ(result.sample(2).dts, 40U);
    EXPECT_EQ(result.sample(2).sync, 0U);
    EXPECT_EQ(result.stream().stss_count, 0U);
}

TEST(TrackRun, TakesTheFirstSamplesFlagsForTheFirstSample) {
    const WalkResult result = walk_and_listen(fragment_movie({moof_of(
        {tfhd(1, 0x30, {u32(6), u32(0x01010000)}), trun(5, 3, {u32(0), u32(0x02000000)})})}));
    EXPECT_EQ(result.sample(0).sync, 1U);
    EXPECT_EQ(result.sample(1).sync, 0U);
    EXPECT_EQ(result.sample(2).sync, 0U);
}

TEST(TrackRun, TellsSyncSamplesByTheirFlags) {
    const std::vector<std::pair<std::uint32_t, std::uint32_t>> cases = {
        {0x01010000, 0}, {0x02010000, 1}, {0x00010000, 0}, {0x03010000, 0},
        {0x00000000, 1}, {0x01000000, 1}, {0x02000000, 1}};
    for (const auto& [flags, sync] : cases) {
        const WalkResult result = walk_and_listen(
            fragment_movie({moof_of({tfhd(1, 0x10, {u32(6)}), trun(0x400, 1, {u32(flags)})})}));
        EXPECT_EQ(result.sample(0).sync, sync) << flags;
    }
}

TEST(TrackRun, FailsWithoutAnySampleSize) {
    const WalkResult result =
        walk_and_listen(fragment_movie({moof_of({tfhd(1), trun(0x100, 1, {u32(5)})})}));
    EXPECT_EQ(result.stream().num_samples, 0U);
    EXPECT_EQ(result.stream().stts_count, 0U);
    EXPECT_EQ(result.stream().num_chunks, 0U);
    EXPECT_NE(result.stream().marks & kMarkTrun, 0U);
}

TEST(TrackRun, GoesNowhereForAnUnknownTrack) {
    const WalkResult result = walk_and_listen(fragment_movie(
        {moof_of({tfhd(9), full_box("tfdt", 0, 0, {u32(1)}), trun(0x200, 1, {u32(5)})})}));
    EXPECT_EQ(result.lines, "");
    EXPECT_EQ(result.stream().num_samples, 0U);
    EXPECT_EQ(result.stream().baseMediaDecodeTime, ~std::uint64_t{0});
}

TEST(TrackRun, NumbersSamplesOverRunsAndFragments) {
    const Bytes run = trun(0x601, 2, {u32(0), u32(3), u32(0), u32(4), u32(0x10000)});
    const WalkResult result =
        walk_and_listen(fragment_movie({moof_of({tfhd(1), run, run}), moof_of({tfhd(1), run})}));
    EXPECT_EQ(result.stream().num_samples, 6U);
    EXPECT_EQ(result.stream().stss, hex("00000001 00000003 00000005"));
    EXPECT_EQ(result.stream().stsc_count, 3U);
    for (std::uint32_t i = 0; i < 6; ++i) {
        EXPECT_EQ(result.sample(i).size, 3 + i % 2);
        EXPECT_EQ(result.sample(i).sync, 1 - i % 2);
    }
}

TEST(TrackRun, LetsSamplesWithoutCompositionOffsetsFallUnderTheLastRow) {
    const WalkResult result = walk_and_listen(fragment_movie(
        {moof_of({tfhd(1, 0x18, {u32(10), u32(6)}), trun(0x800, 1, {u32(5)}), trun(0, 1)})}));
    EXPECT_EQ(result.sample(0).pts, 5U);
    EXPECT_EQ(result.sample(1).pts, 15U);
}

TEST(TrackRun, OfNoSamplesLeavesAnEmptyChunk) {
    const WalkResult result = walk_and_listen(
        fragment_movie({moof_of({tfhd(1, 0x10, {u32(6)}), trun(0, 0), trun(1, 1, {u32(70)})})}));
    EXPECT_EQ(result.stream().num_chunks, 2U);
    EXPECT_EQ(result.stream().num_samples, 1U);
    EXPECT_EQ(result.sample(0).offset,
              static_cast<std::uint64_t>(result.demuxer->moof_offset) + 70);
}

constexpr const char* kDroppedRun =
    "The samples of a movie fragment were dropped: its run, or the tables that runs add to, are "
    "larger than they may be.";

TEST(TrackRun, OfTooManySamplesFailsAfterTheTablesHaveGrown) {
    const RecordingSink sink;
    const WalkResult result = walk_and_listen(
        fragment_movie({moof_of({tfhd(1, 0x18, {u32(1), u32(6)}), trun(0, 65536)})}));
    EXPECT_EQ(result.stream().num_samples, 65536U);
    EXPECT_EQ(result.stream().num_chunks, 1U);
    EXPECT_EQ(result.stream().stts_count, 1U);
    EXPECT_EQ(result.stream().stss_count, 0U);
    EXPECT_EQ(sink.notes(), std::vector<std::string>{kDroppedRun});
}

TEST(TrackRun, OfAsManySamplesAsAllowedIsTaken) {
    const RecordingSink sink;
    const WalkResult result = walk_and_listen(
        fragment_movie({moof_of({tfhd(1, 0x18, {u32(1), u32(6)}), trun(0, 65535)})}));
    EXPECT_EQ(result.stream().num_samples, 65535U);
    EXPECT_EQ(result.sample(65534).size, 6U);
    EXPECT_EQ(result.sample(65534).sync, 1U);
    EXPECT_TRUE(sink.notes().empty());
}

TEST(TrackRun, StopsAtTwoMebibytesOfSizes) {
    const RecordingSink sink;
    std::vector<Bytes> boxes = {tfhd(1, 0x18, {u32(1), u32(6)})};
    for (int i = 0; i < 9; ++i) {
        boxes.push_back(trun(0, 65535));
    }
    const WalkResult result = walk_and_listen(
        join({box("moov", {track_of("vide", {})}), box("moof", {box("traf", boxes)})}));
    // Eight runs are 524,280 of 524,288 rows; the time row of the ninth is there all the same.
    EXPECT_EQ(result.stream().num_samples, 8U * 65535);
    EXPECT_EQ(result.stream().stts_count, 9U);
    EXPECT_EQ(result.stream().num_chunks, 8U);
    EXPECT_EQ(sink.notes(), std::vector<std::string>{kDroppedRun});
}

TEST(TrackRun, StopsAtTwoMebibytesOfDurations) {
    Bytes durations;
    for (int i = 0; i < 60000; ++i) {
        append_u32(durations, 2);
    }
    std::vector<Bytes> boxes = {tfhd(1, 0x10, {u32(6)})};
    for (int i = 0; i < 5; ++i) {
        boxes.push_back(trun(0x100, 60000, {durations}));
    }
    const WalkResult result = walk_and_listen(
        join({box("moov", {track_of("vide", {})}), box("moof", {box("traf", boxes)})}));
    EXPECT_EQ(result.stream().num_samples, 240000U);
    EXPECT_EQ(result.stream().duration, 480000U);
}

TEST(TrackRun, TakesOnlySamplesThatTheBoxHolds) {
    const WalkResult result = walk_and_listen(join(
        {fragment_movie({moof_of({tfhd(1), trun(0x301, 1000, {u32(0), u32(1), u32(2), u32(3)})})}),
         repeat(0x11, 500)}));
    EXPECT_EQ(result.stream().num_samples, 1U);
    EXPECT_EQ(result.sample(0).size, 2U);
}

TEST(TrackRun, CountsThirtyTwoBitChunksOfTheMovieToo) {
    const Bytes moov =
        movie_of({table_box("stts", {{2, 10}}), stsz({5, 6}), table_box("stsc", {{1, 1, 1}}),
                  table_box("stco", {{100}, {200}})});
    const WalkResult result = walk_and_listen(
        join({moov, moof_of({tfhd(1, 1, {u64(300)}), trun(0x301, 1, {u32(1), u32(10), u32(7)})})}));
    EXPECT_EQ(result.stream().num_samples, 3U);
    EXPECT_EQ(result.sample(0).offset, 100U);
    EXPECT_EQ(result.sample(1).offset, 200U);
    EXPECT_EQ(result.sample(2).offset, 301U);
    EXPECT_EQ(result.sample(2).size, 7U);
    EXPECT_EQ(result.sample(2).dts, 20U);
}

TEST(TrackRun, LetsAConstantSizeWinOverItsOwn) {
    const Bytes moov = movie_of({table_box("stts", {{2, 10}}), stsz_constant(5, 2),
                                 table_box("stsc", {{1, 2, 1}}), table_box("stco", {{100}})});
    const WalkResult result =
        walk_and_listen(join({moov, moof_of({tfhd(1), trun(0x201, 1, {u32(1), u32(7)})})}));
    EXPECT_EQ(result.sample(2).size, 5U);
}

TEST(TrackRun, WalksFiveThousandFragmentsOnce) {
    const Bytes moov = box("moov", {mvhd(), track_of("vide", {})});
    Bytes fields;
    for (int i = 0; i < 100; ++i) {
        fields = join({fields, u32(10), u32(0)});
    }
    const Bytes fragment =
        join({moof_of({tfhd(1, 8, {u32(3)}), trun(0x601, 100, {u32(8), fields})}),
              box("mdat", {zeros(1000)})});
    Bytes file = moov;
    for (int i = 0; i < 5000; ++i) {
        file.insert(file.end(), fragment.begin(), fragment.end());
    }
    const WalkResult result = walk_and_listen(file);
    ASSERT_EQ(result.stream().num_samples, 500000U);
    Mp4Sample out;
    std::uint64_t bytes = 0;
    for (std::uint32_t i = 0; i < 500000; ++i) {
        ASSERT_NE(mp4demuxer_get_sample(*result.demuxer, 0, i, out), nullptr);
        bytes += out.size;
    }
    EXPECT_EQ(bytes, 5000000U);
    EXPECT_EQ(out.dts, 1499997U);
}

TEST(FragmentedFile, GivesTheSamplesOfTheDescription) {
    MovieSpec movie;
    for (std::uint32_t id = 1; id <= 2; ++id) {
        TrackSpec track;
        track.track_id = id;
        track.entries = {video_entry("avc1", 16, 16)};
        for (int i = 0; i < 10; ++i) {
            track.samples.push_back(
                {repeat(static_cast<std::uint8_t>(16 * id + i), 5 + i), 3, i % 3, i % 4 == 0, {}});
        }
        movie.tracks.push_back(track);
    }
    for (const bool from_moof : {true, false}) {
        for (const bool shared : {true, false}) {
            for (const bool fragmented : {true, false}) {
                movie.default_base_is_moof = from_moof;
                movie.in_one_moof = shared;
                movie.moov_first = from_moof;
                movie.samples_per_chunk = shared ? 3 : 1;
                const Bytes file = fragmented ? fragmented_file(movie) : plain_file(movie);
                const WalkResult result = walk_and_listen(file);
                EXPECT_EQ(result.lines, "");
                for (std::uint32_t t = 0; t < 2; ++t) {
                    ASSERT_EQ(result.stream(t).num_samples, 10U);
                    for (std::uint32_t i = 0; i < 10; ++i) {
                        const Mp4Sample sample = result.sample(i, t);
                        const Bytes& expected = movie.tracks[t].samples[i].data;
                        ASSERT_EQ(sample.size, expected.size());
                        EXPECT_TRUE(std::equal(expected.begin(), expected.end(),
                                               file.begin() + static_cast<long>(sample.offset)));
                        EXPECT_EQ(sample.sync, i % 4 == 0 ? 1U : 0U);
                        EXPECT_EQ(sample.dts, 3 * i);
                        EXPECT_EQ(sample.pts, 3 * i + i % 3);
                    }
                }
            }
        }
    }
}

}  // namespace
}  // namespace mediasplit::mp4
