#include "src/mp4demuxer/sample_tables.h"

#include "src/mp4demuxer/box_reader.h"
#include "tests/unit/mp4demuxer/walk_support.h"

namespace mediasplit::mp4 {
namespace {

Bytes edit_movie(const Bytes& edit_box, std::uint32_t timescale = 1000,
                 std::uint32_t time_scale = 48000) {
    return box("moov", {mvhd(timescale),
                        box("trak", {tkhd(1), edit_box, box("mdia", {mdhd(time_scale)})})});
}

TEST(HeaderBoxes, ReadTheMovieTimeScale) {
    EXPECT_EQ(walk(mvhd(600))->timescale, 600U);
    EXPECT_EQ(walk(full_box("mvhd", 1, 0, {zeros(16), u32(700), zeros(8)}))->timescale, 700U);
}

TEST(HeaderBoxes, ReadTheTrackIdOfBothVersions) {
    EXPECT_EQ(walk(box("trak", {tkhd(7)}))->streams.at(0)->track_id, 7U);
    EXPECT_EQ(walk(box("trak", {tkhd(8, 1)}))->streams.at(0)->track_id, 8U);
    EXPECT_EQ(walk(box("trak", {tkhd(9, 2)}))->streams.at(0)->track_id, 0U);
}

TEST(HeaderBoxes, ReadTheMediaHeaderOfBothVersions) {
    for (const std::uint32_t version : {0U, 1U}) {
        const WalkResult result =
            walk_and_listen(box("trak", {mdhd(48000, 96000, "eng", version)}));
        EXPECT_EQ(result.stream().time_scale, 48000U);
        EXPECT_EQ(result.stream().duration, 96000U);
        EXPECT_STREQ(result.stream().lang.data(), "eng");
    }
    EXPECT_EQ(walk(box("trak", {mdhd(48000, 1, "eng", 2)}))->streams.at(0)->time_scale, 0U);
}

TEST(HeaderBoxes, KeepTheLowHalfOfALongDuration) {
    const Bytes header =
        full_box("mdhd", 1, 0, {zeros(16), u32(1), u64(0x500000007), u16(0), u16(0)});
    EXPECT_EQ(walk(box("trak", {header}))->streams.at(0)->duration, 7U);
}

TEST(HeaderBoxes, GiveUndForALanguageWordOfZero) {
    const Bytes header = full_box("mdhd", 0, 0, {zeros(8), u32(1), u32(1), u16(0), u16(0)});
    EXPECT_STREQ(walk(box("trak", {header}))->streams.at(0)->lang.data(), "und");
}

TEST(HeaderBoxes, MarkVideoAndSoundHeaders) {
    EXPECT_EQ(walk(box("trak", {box("vmhd")}))->streams.at(0)->marks, kMarkVmhd);
    EXPECT_EQ(walk(box("trak", {box("smhd", {zeros(8)})}))->streams.at(0)->marks, kMarkSmhd);
}

TEST(HeaderBoxes, TellTheKindOfTrackByItsHandler) {
    const std::vector<std::pair<std::string, std::uint32_t>> kinds = {
        {"vide", 2}, {"soun", 1}, {"text", 3}, {"sbtl", 3}, {"meta", 4}, {"hint", 5}, {"subt", 0}};
    for (const auto& [handler, kind] : kinds) {
        EXPECT_EQ(walk(box("trak", {hdlr(handler)}))->streams.at(0)->stream_type, kind) << handler;
    }
}

TEST(EditList, ShiftsByMinusTheMediaTimeOfASingleEntry) {
    for (const std::uint32_t version : {0U, 1U}) {
        EXPECT_EQ(walk(edit_movie(edts({{5000, 1024}}, version)))->streams.at(0)->elst_offset,
                  -1024);
    }
}

TEST(EditList, TakesTheLowHalfOfALongMediaTimeAlone) {
    EXPECT_EQ(walk(edit_movie(edts({{0, 0x700000005}}, 1)))->streams.at(0)->elst_offset, -5);
}

TEST(EditList, DelaysByALeadingEmptyEdit) {
    for (const std::uint32_t version : {0U, 1U}) {
        const auto demuxer = walk(edit_movie(edts({{3000, -1}, {9000, 0}}, version)));
        EXPECT_EQ(demuxer->streams.at(0)->elst_segment_duration, 3000U);
        EXPECT_EQ(demuxer->streams.at(0)->elst_offset, 144000);
    }
}

TEST(EditList, DividesBeforeItMultiplies) {
    // 1500 of 1000 a second are one whole second.
    EXPECT_EQ(walk(edit_movie(edts({{1500, -1}, {9000, 0}})))->streams.at(0)->elst_offset, 48000);
}

TEST(EditList, KeepsNoDelayWithoutAMovieTimeScale) {
    const auto demuxer = walk(edit_movie(edts({{3000, -1}, {9000, 0}}), 0));
    EXPECT_EQ(demuxer->streams.at(0)->elst_offset, 0);
    EXPECT_EQ(demuxer->streams.at(0)->time_scale, 48000U);
}

TEST(EditList, RefusesThreeEntriesAndNone) {
    EXPECT_EQ(walk(edit_movie(edts({{1, 10}, {1, 20}, {1, 30}})))->streams.at(0)->elst_offset, 0);
    EXPECT_EQ(walk(edit_movie(edts({})))->streams.at(0)->elst_offset, 0);
}

TEST(EditList, RefusesTwoEntriesOfAnotherKind) {
    for (const auto& edits : std::vector<std::vector<EditSpec>>{
             {{3000, 0}, {9000, 0}}, {{3000, -1}, {9000, 5}}, {{1, 5}, {1, -1}}}) {
        const auto demuxer = walk(edit_movie(edts(edits)));
        EXPECT_EQ(demuxer->streams.at(0)->elst_offset, 0);
        EXPECT_EQ(demuxer->streams.at(0)->elst_segment_duration, 0U);
    }
}

TEST(EditList, RefusesAnotherVersion) {
    EXPECT_EQ(walk(edit_movie(edts({{0, 1024}}, 2)))->streams.at(0)->elst_offset, 0);
}

TEST(EditList, MovesPresentationTimesDown) {
    const WalkResult result = walk_and_listen(
        box("moov",
            {mvhd(),
             box("trak",
                 {edts({{0, 1024}}),
                  box("mdia",
                      {box("minf", {box("stbl", {table_box("stts", {{3, 2000}}),
                                                 table_box("ctts", {{1, 1024}, {2, 500}}),
                                                 table_box("stsc", {{1, 3, 1}}), stsz({1, 1, 1}),
                                                 table_box("stco", {{100}})})})})})}));
    EXPECT_EQ(result.sample(0).pts, 0U);
    EXPECT_EQ(result.sample(1).pts, 2000U + 500 - 1024);
    EXPECT_EQ(result.sample(1).dts, 2000U);
    EXPECT_EQ(result.sample(1).cts, 524);
    EXPECT_EQ(result.sample(2).pts, 4000U + 500 - 1024);
}

TEST(SegmentIndex, KeepsTheReferencedSizes) {
    const Bytes references = join({u32(0x80000005), zeros(8), u32(6), zeros(8), u32(7), zeros(8)});
    const auto demuxer = walk(
        full_box("sidx", 0, 0, {u32(1), u32(1000), u32(0), u32(44), u16(0), u16(3), references}));
    EXPECT_EQ(demuxer->sidx_first_offset, 44);
    EXPECT_EQ(demuxer->sidx_count, 3U);
    EXPECT_EQ(demuxer->sidx_sizes, (std::vector<std::uint32_t>{5, 6, 7}));
    const auto wide = walk(
        full_box("sidx", 1, 0,
                 {u32(1), u32(1000), u64(0), u64(0x100000000), u16(0), u16(1), u32(9), zeros(8)}));
    EXPECT_EQ(wide->sidx_first_offset, 0x100000000);
    EXPECT_EQ(wide->sidx_sizes, (std::vector<std::uint32_t>{9}));
}

TEST(SegmentIndex, EndsWithTheBoxWhateverItsCountSays) {
    const auto demuxer =
        walk(full_box("sidx", 0, 0, {zeros(16), u16(0), u16(16383), u32(5), zeros(8)}));
    EXPECT_EQ(demuxer->sidx_sizes, std::vector<std::uint32_t>{5});
}

TEST(SegmentIndex, RefusesTooManyReferences) {
    const auto index = [](std::uint32_t count) {
        return full_box("sidx", 0, 0, {zeros(16), u16(0), u16(count), zeros(count * 12)});
    };
    EXPECT_EQ(walk(index(16383))->sidx_count, 16383U);
    EXPECT_EQ(walk(index(16384))->sidx_count, 0U);
}

TEST(SampleTables, KeepRowsAsTheyStandInTheFile) {
    const WalkResult result = walk_and_listen(movie_of(
        {table_box("stts", {{2, 10}, {1, 20}}), table_box("ctts", {{1, 5}}),
         table_box("stss", {{1}, {3}}), table_box("stsc", {{1, 3, 1}}), co64({0x100000002})}));
    EXPECT_EQ(result.stream().stts, hex("00000002 0000000a 00000001 00000014"));
    EXPECT_EQ(result.stream().stts_count, 2U);
    EXPECT_EQ(result.stream().ctts, hex("00000001 00000005"));
    EXPECT_EQ(result.stream().stss, hex("00000001 00000003"));
    EXPECT_EQ(result.stream().stsc, hex("00000001 00000003 00000001"));
    EXPECT_EQ(result.stream().chunks, hex("0000000100000002"));
    EXPECT_EQ(result.stream().stco_is_64bit, 1U);
    EXPECT_EQ(result.stream().num_chunks, 1U);
}

TEST(SampleTables, RefuseMoreThanTwoMebibytesAndKeepSomeCounts) {
    struct Case {
        const char* type;
        std::uint32_t limit;
        std::size_t row;
    };
    for (const Case& each :
         {Case{"stts", 262144, 8}, Case{"ctts", 262144, 8}, Case{"stss", 524288, 4},
          Case{"stsc", 174762, 12}, Case{"stco", 524288, 4}, Case{"co64", 262144, 8}}) {
        for (const std::uint32_t extra : {0U, 1U}) {
            const std::uint32_t count = each.limit + extra;
            const WalkResult result = walk_and_listen(
                movie_of({box(each.type, {u32(0), u32(count), zeros(count * each.row)})}));
            const Mp4Stream& stream = result.stream();
            const std::string type = each.type;
            const std::vector<std::uint8_t>& table = type == "stts"   ? stream.stts
                                                     : type == "ctts" ? stream.ctts
                                                     : type == "stss" ? stream.stss
                                                     : type == "stsc" ? stream.stsc
                                                                      : stream.chunks;
            const std::uint32_t kept = type == "stts"   ? stream.stts_count
                                       : type == "ctts" ? stream.ctts_count
                                       : type == "stss" ? stream.stss_count
                                       : type == "stsc" ? stream.stsc_count
                                                        : stream.num_chunks;
            const bool keeps_count = type == "stts" || type == "ctts" || type == "stss";
            EXPECT_EQ(table.size(), extra == 0 ? count * each.row : 0) << type;
            EXPECT_EQ(kept, extra == 0 || keeps_count ? count : 0) << type;
            EXPECT_EQ((stream.marks & kMarkStss) != 0, type == "stss") << type;
        }
    }
}

TEST(SampleTables, HaveNoLimitForSampleSizes) {
    const WalkResult result =
        walk_and_listen(movie_of({stsz(std::vector<std::uint32_t>(600000, 3))}));
    EXPECT_EQ(result.stream().num_samples, 600000U);
    EXPECT_EQ(get_sample_size(result.stream(), 599999), 3U);
}

TEST(SampleTables, TakeOnlyTheRowsThatTheBoxHolds) {
    const WalkResult result = walk_and_listen(
        join({movie_of({box("stsz", {u32(0), u32(0), u32(0x40000000), u32(11), u32(12), u16(9)}),
                        box("stts", {u32(0), u32(1000), u32(1), u32(5), u32(3)}),
                        table_box("stsc", {{1, 100, 1}}), table_box("stco", {{50}})}),
              repeat(0x55, 1000)}));
    EXPECT_EQ(result.stream().num_samples, 2U);
    EXPECT_LT(result.stream().stsz.capacity(), 1000U);
    EXPECT_EQ(result.sample(1).size, 12U);
    EXPECT_EQ(result.sample(1).offset, 61U);
    EXPECT_EQ(result.sample(1).duration, 5U);
    Mp4Sample out;
    EXPECT_EQ(mp4demuxer_get_sample(*result.demuxer, 0, 2, out), nullptr);
}

TEST(SampleTables, ForgetEverythingButWhatLastsAtAnUpdate) {
    WalkResult result = walk_and_listen(
        box("moov",
            {mvhd(),
             box("trak",
                 {tkhd(1), edts({{0, 7}}),
                  box("mdia", {mdhd(1000, 50),
                               box("stbl", {table_box("stts", {{2, 10}}), stsz({4, 5}),
                                            table_box("stss", {{1}}), table_box("ctts", {{2, 1}}),
                                            table_box("stsc", {{1, 2, 1}}), co64({9})})})})}));
    Mp4Stream& stream = result.stream();
    stream.next_sample = 2;
    stream.default_sample_size = 12;
    stream.baseMediaDecodeTime = 5;
    EXPECT_EQ(mp4demuxer_update(result.demuxer.get(), 5, 6), 0U);
    EXPECT_EQ(result.demuxer->range_start, 5U);
    EXPECT_EQ(result.demuxer->range_length, 6U);
    EXPECT_TRUE(stream.stsz.empty() && stream.chunks.empty() && stream.stsc.empty() &&
                stream.stts.empty() && stream.ctts.empty() && stream.stss.empty());
    EXPECT_EQ(stream.num_samples + stream.next_sample + stream.num_chunks + stream.stco_is_64bit +
                  stream.stsc_count + stream.stts_count + stream.ctts_count + stream.stss_count +
                  stream.duration + stream.sample_size,
              0U);
    EXPECT_EQ(stream.baseMediaDecodeTime, ~std::uint64_t{0});
    EXPECT_EQ(stream.default_sample_size, 12U);
    EXPECT_EQ(stream.time_scale, 1000U);
    EXPECT_EQ(stream.elst_offset, -7);
    EXPECT_EQ(stream.track_id, 1U);
}

TEST(SampleLookup, FindsTheChunkAndThePlaceInIt) {
    const WalkResult result =
        walk_and_listen(movie_of({stsz_constant(100, 6), table_box("stsc", {{1, 3, 1}}),
                                  table_box("stco", {{1000}, {5000}})}));
    EXPECT_EQ(result.sample(0).offset, 1000U);
    EXPECT_EQ(result.sample(2).offset, 1200U);
    EXPECT_EQ(result.sample(4).offset, 5100U);
    EXPECT_EQ(result.sample(4).size, 100U);
}

TEST(SampleLookup, FollowsChunkRowsAndSumsSizes) {
    const WalkResult result = walk_and_listen(movie_of(
        {stsz({1, 2, 3, 4, 5, 6, 7, 8}), table_box("stsc", {{1, 2, 1}, {3, 1, 1}, {4, 3, 1}}),
         co64({100, 200, 300, 0x100000000})}));
    const std::vector<std::uint64_t> offsets = {100, 101,         200,         203,
                                                300, 0x100000000, 0x100000006, 0x10000000D};
    for (std::uint32_t i = 0; i < 8; ++i) {
        EXPECT_EQ(result.sample(i).offset, offsets[i]) << i;
        EXPECT_EQ(result.sample(i).size, i + 1);
    }
    for (const std::uint32_t i : {7U, 2U, 6U, 0U, 5U, 5U, 4U, 1U, 3U}) {
        EXPECT_EQ(get_sample_offset(result.stream(), i), offsets[i]) << i;
    }
}

TEST(SampleLookup, BeginsWithTheFirstRowsChunk) {
    const WalkResult result = walk_and_listen(movie_of(
        {stsz({1, 1}), table_box("stsc", {{2, 1, 1}}), table_box("stco", {{10}, {20}, {30}})}));
    EXPECT_EQ(result.sample(0).offset, 20U);
    EXPECT_EQ(result.sample(1).offset, 30U);
}

TEST(SampleLookup, TakesTheLastSampleForAnIndexPastTheEnd) {
    const WalkResult result = walk_and_listen(
        movie_of({stsz({4, 6}), table_box("stsc", {{1, 2, 1}}), table_box("stco", {{10}})}));
    EXPECT_EQ(get_sample_offset(result.stream(), 99), 14U);
    EXPECT_EQ(get_sample_size(result.stream(), 99), 6U);
}

TEST(SampleLookup, HasNoSampleWithoutAPlaceForIt) {
    Mp4Sample out;
    // No chunk rows, no chunks, chunk number 0, chunks of no samples, more samples than chunks.
    for (const Bytes& tables :
         {join({stsz({1, 1}), table_box("stco", {{10}})}),
          join({stsz({1, 1}), table_box("stsc", {{1, 1, 1}})}),
          join({stsz({1, 1}), table_box("stsc", {{0, 1, 1}}), table_box("stco", {{10}})}),
          join({stsz({1, 1}), table_box("stsc", {{1, 0, 1}}), table_box("stco", {{10}})}),
          join({stsz({1, 1}), table_box("stsc", {{1, 0, 1}, {1, 5, 1}}),
                table_box("stco", {{10}})})}) {
        const WalkResult result = walk_and_listen(movie_of({tables}));
        EXPECT_EQ(mp4demuxer_get_sample(*result.demuxer, 0, 0, out), nullptr);
        EXPECT_EQ(get_sample_offset(result.stream(), 0), std::nullopt);
    }
    const WalkResult result = walk_and_listen(
        movie_of({stsz({1, 1}), table_box("stsc", {{1, 1, 1}}), table_box("stco", {{10}})}));
    EXPECT_EQ(result.sample(0).offset, 10U);
    EXPECT_EQ(mp4demuxer_get_sample(*result.demuxer, 0, 1, out), nullptr);
    EXPECT_EQ(mp4demuxer_get_sample(*result.demuxer, 1, 0, out), nullptr);
}

TEST(SampleLookup, PassesChunkRowsOfNoSamples) {
    const WalkResult result =
        walk_and_listen(movie_of({stsz({1, 1}), table_box("stsc", {{1, 0, 1}, {3, 2, 1}}),
                                  table_box("stco", {{10}, {20}, {30}})}));
    EXPECT_EQ(result.sample(0).offset, 30U);
    EXPECT_EQ(result.sample(1).offset, 31U);
}

TEST(SampleLookup, SumsDurations) {
    const WalkResult result = walk_and_listen(movie_of({table_box("stts", {{2, 10}, {1, 20}})}));
    const Mp4Stream& stream = result.stream();
    EXPECT_EQ(get_sample_dts(stream, 0), 0U);
    EXPECT_EQ(get_sample_dts(stream, 1), 10U);
    EXPECT_EQ(get_sample_dts(stream, 2), 20U);
    EXPECT_EQ(get_sample_dts(stream, 3), 40U);
    EXPECT_EQ(get_sample_dts(stream, 100), 40U);
    EXPECT_EQ(get_sample_dts(stream, 1), 10U);
    EXPECT_EQ(get_sample_duration(stream, 0), 10U);
    EXPECT_EQ(get_sample_duration(stream, 2), 20U);
    EXPECT_EQ(get_sample_duration(stream, 7), 20U);
    EXPECT_EQ(get_sample_duration(stream, 0), 10U);
}

TEST(SampleLookup, SumsDecodingTimesInThirtyTwoBitsAndPresentationTimesInSixtyFour) {
    const WalkResult result =
        walk_and_listen(movie_of({table_box("stts", {{2, 0x80000000}, {1, 0x10}})}));
    EXPECT_EQ(get_sample_dts(result.stream(), 1), 0x80000000U);
    EXPECT_EQ(get_sample_dts(result.stream(), 2), 0U);
    EXPECT_EQ(get_sample_dts(result.stream(), 3), 0x10U);
    EXPECT_EQ(get_sample_pts(result.stream(), 2), 0x100000000U);
    EXPECT_EQ(get_sample_pts(result.stream(), 3), 0x100000010U);
}

TEST(SampleLookup, HasNoPresentationTimeWithoutDurations) {
    const WalkResult none = walk_and_listen(movie_of({}));
    EXPECT_EQ(get_sample_pts(none.stream(), 0), ~std::uint64_t{0});
    EXPECT_EQ(get_sample_dts(none.stream(), 5), 0U);
    EXPECT_EQ(get_sample_duration(none.stream(), 0), 0U);
    const WalkResult empty = walk_and_listen(movie_of({table_box("stts", {})}));
    EXPECT_EQ(get_sample_pts(empty.stream(), 3), 0U);
}

TEST(SampleLookup, TakesTheLastCompositionOffsetPastTheTable) {
    const WalkResult result = walk_and_listen(
        movie_of({table_box("stts", {{9, 10}}), table_box("ctts", {{1, 7}, {2, 0xFFFFFFFD}})}));
    EXPECT_EQ(get_sample_pts(result.stream(), 0), 7U);
    EXPECT_EQ(get_sample_pts(result.stream(), 1), 7U);
    EXPECT_EQ(get_sample_pts(result.stream(), 2), 17U);
    EXPECT_EQ(get_sample_pts(result.stream(), 8), 77U);
    EXPECT_EQ(get_sample_pts(result.stream(), 0), 7U);
}

TEST(SampleLookup, FindsSyncSamplesInTheList) {
    const WalkResult result = walk_and_listen(movie_of({table_box("stss", {{1}, {4}, {5}})}));
    const std::vector<std::uint32_t> flags = {1, 0, 0, 1, 1, 0};
    for (std::uint32_t i = 0; i < 6; ++i) {
        EXPECT_EQ(get_sample_flags(result.stream(), i), flags[i]);
    }
    for (const std::uint32_t i : {4U, 1U, 3U, 0U, 5U}) {
        EXPECT_EQ(get_sample_flags(result.stream(), i), flags[i]);
    }
}

TEST(SampleLookup, StopsTheSearchAtAHigherNumber) {
    const WalkResult result = walk_and_listen(movie_of({table_box("stss", {{5}, {3}})}));
    EXPECT_EQ(get_sample_flags(result.stream(), 2), 0U);
    EXPECT_EQ(get_sample_flags(result.stream(), 4), 1U);
}

TEST(SampleLookup, TakesAllSamplesForSyncWithoutAList) {
    EXPECT_EQ(get_sample_flags(walk_and_listen(movie_of({})).stream(), 3), 1U);
}

TEST(SampleLookup, TakesNoSampleForSyncWithAnEmptyList) {
    EXPECT_EQ(get_sample_flags(walk_and_listen(movie_of({table_box("stss", {})})).stream(), 0), 0U);
}

TEST(SampleLookup, FillsTheWholeRecord) {
    const WalkResult result = walk_and_listen(box(
        "moov",
        {mvhd(), track_of("vide", {stsd({video_entry("avc1", 2, 2)}), table_box("stts", {{2, 40}}),
                                   stsz({9, 8}), table_box("stss", {{1}}),
                                   table_box("stsc", {{1, 2, 1}}), table_box("stco", {{70}})})}));
    const Mp4Sample sample = result.sample(1);
    EXPECT_EQ(sample.offset, 79U);
    EXPECT_EQ(sample.size, 8U);
    EXPECT_EQ(sample.pts, 40U);
    EXPECT_EQ(sample.dts, 40U);
    EXPECT_EQ(sample.duration, 40U);
    EXPECT_EQ(sample.sync, 0U);
    EXPECT_EQ(sample.stream_index, 0U);
    EXPECT_EQ(sample.stream_id, kStreamIdAvc1);
    EXPECT_EQ(sample.senc, nullptr);
    EXPECT_EQ(sample.cts, 0);
    EXPECT_EQ(sample.time_scale, 1000U);
}

// A walk that rescans its tables would not come to an end here.
TEST(SampleLookup, LookBackAtADurationLeavesTheWalkWhereItIs) {
    const WalkResult result = walk_and_listen(
        movie_of({table_box("stts", Rows(1000, std::vector<std::uint32_t>{1, 1}))}));
    EXPECT_EQ(get_sample_dts(result.stream(), 900), 900U);
    EXPECT_EQ(get_sample_duration(result.stream(), 0), 1U);
    EXPECT_EQ(result.stream().cursors.time.row, 900U);
}

// Empty rows ahead of the walk are passed once for all looks back, and not for each.
TEST(SampleLookup, LooksBackPassEmptyRowsOnce) {
    Rows rows(262'140, std::vector<std::uint32_t>{0, 1});
    rows.push_back({1, 40});
    rows.push_back({1, 50});
    const WalkResult result = walk_and_listen(movie_of({table_box("stts", rows)}));
    EXPECT_EQ(get_sample_dts(result.stream(), 1), 40U);
    for (int i = 0; i < 200'000; ++i) {
        ASSERT_EQ(get_sample_duration(result.stream(), 0), 40U);
    }
}

TEST(SampleLookup, WalksTwoMillionSamplesOnce) {
    constexpr std::uint32_t kSamples = 2000000;
    Bytes sizes = join({u32(0), u32(0), u32(kSamples)});
    for (std::uint32_t i = 0; i < kSamples; ++i) {
        append_u32(sizes, i % 7 + 1);
    }
    Rows durations;
    Rows syncs;
    Rows offsets;
    for (std::uint32_t i = 0; i < 200000; ++i) {
        durations.push_back({10, 1 + i % 2});
        syncs.push_back({i * 10 + 1});
        offsets.push_back({i * 100});
    }
    const WalkResult result = walk_and_listen(movie_of(
        {box("stsz", {sizes}), table_box("stts", durations), table_box("ctts", durations),
         table_box("stss", syncs), table_box("stsc", {{1, 10, 1}}), table_box("stco", offsets)}));
    std::uint64_t bytes = 0;
    std::uint64_t sync_samples = 0;
    Mp4Sample out;
    for (std::uint32_t i = 0; i < kSamples; ++i) {
        ASSERT_NE(mp4demuxer_get_sample(*result.demuxer, 0, i, out), nullptr);
        bytes += out.size;
        sync_samples += out.sync;
    }
    EXPECT_EQ(sync_samples, 200000U);
    EXPECT_EQ(out.dts, 100000U * 10 + 100000U * 20 - 2);
    // 2,000,000 = 7 * 285,714 + 2
    EXPECT_EQ(bytes, 285714U * 28 + 1 + 2);
}

TEST(SampleLookup, WalksOneChunkOfManySamplesOnce) {
    constexpr std::uint32_t kSamples = 500000;
    const WalkResult result = walk_and_listen(
        movie_of({stsz(std::vector<std::uint32_t>(kSamples, 2)),
                  table_box("stsc", {{1, kSamples, 1}}), table_box("stco", {{1}})}));
    Mp4Sample out;
    for (std::uint32_t i = 0; i < kSamples; ++i) {
        ASSERT_NE(mp4demuxer_get_sample(*result.demuxer, 0, i, out), nullptr);
    }
    EXPECT_EQ(out.offset, 1U + 2 * (kSamples - 1));
}

}  // namespace
}  // namespace mediasplit::mp4
