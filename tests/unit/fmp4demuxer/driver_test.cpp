#include <gtest/gtest.h>

#include "src/file_util/output_file.h"
#include "src/fmp4demuxer/checks/manifest_records.h"
#include "src/fmp4demuxer/track_driver.h"
#include "tests/support/mp4_input.h"
#include "tests/unit/fmp4demuxer/demux_run.h"

namespace mediasplit {
namespace {

using mp4::Bytes;

Bytes filled(std::uint8_t value, std::size_t count) {
    return Bytes(count, value);
}

mp4::TrackSpec raw_track(std::uint32_t track_id, std::vector<Bytes> samples) {
    mp4::TrackSpec track;
    track.track_id = track_id;
    track.handler = "soun";
    track.entries = {mp4::audio_entry("ac-3", 2, 16, 48000)};
    for (Bytes& bytes : samples) {
        track.samples.push_back(sample(std::move(bytes)));
    }
    return track;
}

mp4::MovieSpec movie_of(std::vector<mp4::TrackSpec> tracks) {
    mp4::MovieSpec movie;
    movie.tracks = std::move(tracks);
    return movie;
}

std::unique_ptr<ByteRangeText> range_text(std::optional<std::string> offset,
                                          std::optional<std::string> last,
                                          std::optional<std::string> length) {
    auto text = std::make_unique<ByteRangeText>();
    text->offset = std::move(offset);
    text->last_byte = std::move(last);
    text->length = std::move(length);
    return text;
}

// --- Creating ---------------------------------------------------------------------------------

TEST(Driver, CreateRefusesPlaylistAndRepresentationAtOnce) {
    DemuxRun run;
    ManifestContext manifest;
    DashContext dash;
    run.manifest = &manifest;
    run.dash = &dash;
    run.make();
    EXPECT_EQ(run.demuxer(), nullptr);
    EXPECT_TRUE(has_failed(run.create_status()));
    EXPECT_EQ(run.sink.ids(), std::vector<int>{3006});
}

TEST(Driver, CreateChoosesTheInputMode) {
    ManifestContext manifest;
    DashContext dash;
    DemuxRun file;
    file.make();
    EXPECT_EQ(file.demuxer()->input_mode, kInputFile);
    DemuxRun hls;
    hls.manifest = &manifest;
    hls.make();
    EXPECT_EQ(hls.demuxer()->input_mode, kInputHls);
    DemuxRun representation;
    representation.dash = &dash;
    representation.make();
    EXPECT_EQ(representation.demuxer()->input_mode, kInputDash);
    DemuxRun iframe;
    manifest.is_iframe_stream = 1;
    iframe.manifest = &manifest;
    iframe.make();
    EXPECT_EQ(iframe.demuxer()->input_mode, kInputHlsIframe);
    EXPECT_FALSE(iframe.demuxer()->output_dir.has_value());
}

TEST(Driver, CreateRefusesAKeyTextThatIsNoKey) {
    DemuxRun run;
    run.key_text = "00zz,more";
    run.make();
    EXPECT_EQ(run.demuxer(), nullptr);
    EXPECT_TRUE(has_failed(run.create_status()));
    EXPECT_EQ(run.sink.ids(), (std::vector<int>{4016, 4014}));
    EXPECT_EQ(run.sink.reports()[1].text, "The input decryption key is invalid : 00zz.");
}

TEST(Driver, CreateTakesAKeyTextUpToItsComma) {
    DemuxRun run;
    run.key_text = "0a0B000000000000000000000000000F,zz";
    run.make();
    ASSERT_NE(run.demuxer(), nullptr);
    EXPECT_EQ(run.demuxer()->key, (Bytes{0x0A, 0x0B, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x0F}));
    EXPECT_EQ(run.create_status(), Status::kOk);
}

TEST(Driver, CreateRefusesAKeyTextOfASizeThatAesDoesNotKnow) {
    DemuxRun run;
    run.key_text = "0a0B,zz";
    run.make();
    EXPECT_EQ(run.demuxer(), nullptr);
    EXPECT_TRUE(has_failed(run.create_status()));
    EXPECT_EQ(run.sink.ids(), std::vector<int>{4014});
}

TEST(Driver, MissingFileOrDemuxerIsRefused) {
    RecordingSink sink;
    InputFile file;
    EXPECT_TRUE(has_failed(fmp4demux(&file, nullptr, nullptr, nullptr)));
    Mp4Demuxer demuxer;
    EXPECT_TRUE(has_failed(fmp4demux(nullptr, nullptr, &demuxer, nullptr)));
    EXPECT_EQ(sink.ids(), (std::vector<int>{3006, 3006}));
}

TEST(Driver, DestroyAcceptsNull) {
    EXPECT_EQ(fmp4demux_destroy(nullptr), Status::kOk);
}

// --- Manifest records -------------------------------------------------------------------------

TEST(Driver, EachBrokenLinkOfARepresentationRaises3006AndEndsTheCall) {
    for (int broken = 0; broken < 4; ++broken) {
        DashContext context = resolved_dash();
        if (broken == 0) {
            context.mpd = nullptr;
        } else if (broken == 1) {
            context.period = nullptr;
        } else if (broken == 2) {
            context.adaptation_set = nullptr;
        } else {
            context.representation = nullptr;
        }
        DemuxRun run;
        run.dash = &context;
        EXPECT_TRUE(has_failed(run.walk(mp4::plain_file(movie_of({raw_track(1, {{1}})})))));
        EXPECT_EQ(run.sink.ids(), std::vector<int>{3006});
        EXPECT_TRUE(run.output_names().empty());
    }
}

TEST(Driver, ManifestInfoGivesTheRecordsOfTheMode) {
    DashContext context = resolved_dash();
    DemuxRun dash;
    dash.dash = &context;
    dash.make();
    const DashInfo* mpd = nullptr;
    const DashRepresentationInfo* representation = nullptr;
    ManifestContext* manifest = nullptr;
    EXPECT_EQ(get_input_manifest_info(dash.demuxer(), &mpd, nullptr, nullptr, &representation,
                                      &manifest, nullptr),
              Status::kOk);
    EXPECT_EQ(mpd, context.mpd);
    EXPECT_EQ(representation, context.representation);
    EXPECT_EQ(manifest, nullptr);

    ManifestContext stream;
    DemuxRun hls;
    hls.manifest = &stream;
    hls.make();
    EXPECT_EQ(get_input_manifest_info(hls.demuxer(), nullptr, nullptr, nullptr, nullptr, &manifest,
                                      nullptr),
              Status::kOk);
    EXPECT_EQ(manifest, &stream);
    EXPECT_TRUE(has_failed(
        get_input_manifest_info(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr)));
}

// --- Walks ------------------------------------------------------------------------------------

TEST(Driver, InterleavedTracksKeepTheirSampleOrder) {
    const auto movie = movie_of({raw_track(1, {filled(1, 10), filled(2, 20), filled(3, 5)}),
                                 raw_track(2, {filled(4, 7), filled(5, 8), filled(6, 9)})});
    for (const Bytes& file : {mp4::plain_file(movie), mp4::fragmented_file(movie)}) {
        DemuxRun run;
        EXPECT_EQ(run.walk(file), Status::kOk);
        EXPECT_EQ(run.finish(), Status::kOk);
        EXPECT_EQ(run.output("in_track_id_1.out.ac3"), mp4::all_sample_data(movie.tracks[0]));
        EXPECT_EQ(run.output("in_track_id_2.out.ac3"), mp4::all_sample_data(movie.tracks[1]));
    }
}

TEST(Driver, ManyTracksComeApart) {
    std::vector<mp4::TrackSpec> tracks;
    for (std::uint32_t id = 1; id <= 60; ++id) {
        std::vector<Bytes> samples;
        for (std::uint8_t i = 0; i < 9; ++i) {
            samples.push_back(filled(static_cast<std::uint8_t>(id), i + id % 5));
        }
        tracks.push_back(raw_track(id, std::move(samples)));
    }
    const auto movie = movie_of(std::move(tracks));
    DemuxRun run;
    EXPECT_EQ(run.walk(mp4::plain_file(movie)), Status::kOk);
    for (std::uint32_t id = 1; id <= 60; ++id) {
        EXPECT_EQ(run.output("in_track_id_" + std::to_string(id) + ".out.ac3"),
                  mp4::all_sample_data(movie.tracks[id - 1]))
            << id;
    }
}

TEST(Driver, SamplesOfAnySizeAroundTheInputBlockComeOutWhole) {
    constexpr std::size_t kBlock = 0x100000;
    for (const std::size_t size : {kBlock - 1, kBlock, kBlock + 1, 2 * kBlock, 2 * kBlock + 7}) {
        Bytes data(size);
        for (std::size_t i = 0; i < size; ++i) {
            data[i] = static_cast<std::uint8_t>(i ^ i >> 8 ^ i >> 16);
        }
        const auto movie = movie_of({raw_track(1, {data, {1, 2, 3}, data})});
        DemuxRun run;
        EXPECT_EQ(run.walk(mp4::plain_file(movie)), Status::kOk);
        EXPECT_EQ(run.output("in_track_id_1.out.ac3"), mp4::all_sample_data(movie.tracks[0]))
            << size;
    }
}

TEST(Driver, SampleOfOneBlockThatBeginsAtABlockComesOutWhole) {
    constexpr std::size_t kBlock = 0x100000;
    // The first sample reaches to the end of the first input block, so that the second meets a
    // used-up buffer.
    auto movie = movie_of({raw_track(1, {filled(1, 100), filled(2, kBlock), filled(3, 4)})});
    const std::size_t header = mp4::plain_file(movie).size() - 100 - kBlock - 4;
    movie.tracks[0].samples[0].data = filled(1, kBlock - header);
    DemuxRun run;
    EXPECT_EQ(run.walk(mp4::plain_file(movie)), Status::kOk);
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"), mp4::all_sample_data(movie.tracks[0]));
}

TEST(Driver, SampleThatTheFileCutsIsWrittenAsFarAsItGoes) {
    Bytes file = mp4::plain_file(movie_of({raw_track(1, {filled(1, 10), filled(2, 10)})}));
    file.resize(file.size() - 4);
    DemuxRun run;
    EXPECT_EQ(run.walk(file), Status::kOk);
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"), mp4::join({filled(1, 10), filled(2, 6)}));
}

TEST(Driver, SamplesBeyondTheFileEndTheirTrack) {
    Bytes file =
        mp4::plain_file(movie_of({raw_track(1, {filled(1, 10), filled(2, 10), filled(3, 10)})}));
    file.resize(file.size() - 20);
    DemuxRun run;
    EXPECT_EQ(run.walk(file), Status::kOk);
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"), filled(1, 10));
}

TEST(Driver, SamplesPlacedOverOneAnotherDoNotFillTheDisk) {
    // 200,000 samples of 2,000 bytes, all at the same place.
    mp4::TrackSpec track = raw_track(1, {});
    const Bytes stbl =
        mp4::box("stbl", {mp4::stsd(track.entries), mp4::table_box("stts", {{200000, 1}}),
                          mp4::table_box("stsc", {{1, 1, 1}}), mp4::stsz_constant(2000, 200000),
                          mp4::table_box("stco", mp4::Rows(200000, {0}))});
    const Bytes moov = mp4::box(
        "moov",
        {mp4::mvhd(),
         mp4::box("trak", {mp4::tkhd(1), mp4::box("mdia", {mp4::mdhd(1000), mp4::hdlr("soun"),
                                                           mp4::box("minf", {stbl})})})});
    DemuxRun run;
    EXPECT_EQ(run.walk(mp4::join({mp4::ftyp(), moov})), Status::kOk);
    EXPECT_EQ(run.finish(), Status::kOk);
    const auto bytes = run.output("in_track_id_1.out.ac3");
    ASSERT_TRUE(bytes.has_value());
    EXPECT_GT(bytes->size(), 50'000'000U);
    EXPECT_LT(bytes->size(), 60'000'000U);
    EXPECT_EQ(run.sink.notes().size(), 1U);
}

TEST(Driver, InputWithoutTracksIsNoFailure) {
    DemuxRun run;
    EXPECT_EQ(run.walk(mp4::ftyp()), Status::kOk);
    EXPECT_TRUE(run.output_names().empty());
}

TEST(Driver, NothingIsWrittenWithoutAnOutputFolder) {
    DemuxRun run;
    run.writes = false;
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of({raw_track(1, {{1}})}))), Status::kOk);
    EXPECT_TRUE(run.output_names().empty());
}

TEST(Driver, IframeStreamWritesNothing) {
    DemuxRun run;
    ManifestContext context;
    context.is_iframe_stream = 1;
    context.codecs = "ac-3";
    run.manifest = &context;
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of({raw_track(1, {{1}})}))), Status::kOk);
    EXPECT_TRUE(run.output_names().empty());
}

// --- Segments ---------------------------------------------------------------------------------

TEST(Driver, SamplesOfAllSegmentsLandInOneFile) {
    auto movie = movie_of({raw_track(1, {{1, 1}, {2, 2}, {3, 3}, {4, 4}})});
    DemuxRun run;
    SegmentSlot initialization;
    initialization.kind = kSlotInitialization;
    SegmentSlot media;
    media.kind = kSlotMedia;
    EXPECT_EQ(run.walk(mp4::initialization_segment(movie), &initialization), Status::kOk);
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"), Bytes{});
    EXPECT_EQ(run.walk(mp4::media_segment(movie, 0, 2, 0, 1), &media), Status::kOk);
    // What a segment gave is in the file before the next one is looked at.
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"), (Bytes{1, 1, 2, 2}));
    EXPECT_EQ(run.walk(mp4::media_segment(movie, 2, 2, 0, 2), &media), Status::kOk);
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"), (Bytes{1, 1, 2, 2, 3, 3, 4, 4}));
}

TEST(Driver, RepeatedInitializationSegmentThrowsNothingAway) {
    auto movie = movie_of({raw_track(1, {{1, 1}, {2, 2}})});
    DemuxRun run;
    OutputRegistry registry;
    const Bytes file = mp4::fragmented_file(movie);
    run.make();
    fmp4demux_share_outputs(*run.demuxer(), registry);
    EXPECT_EQ(run.walk(file), Status::kOk);
    EXPECT_EQ(run.finish(), Status::kOk);
    // The job's next demultiplexer adds to the file.
    run.make();
    fmp4demux_share_outputs(*run.demuxer(), registry);
    EXPECT_EQ(run.walk(file), Status::kOk);
    EXPECT_EQ(run.finish(), Status::kOk);
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"), (Bytes{1, 1, 2, 2, 1, 1, 2, 2}));
}

TEST(Driver, NewRunCreatesTheFileAnew) {
    auto movie = movie_of({raw_track(1, {{1, 1}, {2, 2}})});
    DemuxRun run;
    for (int i = 0; i < 2; ++i) {
        begin_outputs();
        EXPECT_EQ(run.walk(mp4::plain_file(movie)), Status::kOk);
        EXPECT_EQ(run.finish(), Status::kOk);
        EXPECT_EQ(run.output("in_track_id_1.out.ac3"), (Bytes{1, 1, 2, 2}));
    }
}

TEST(Driver, TracksThatALaterSegmentBringsAreWrittenToo) {
    DemuxRun run;
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of({raw_track(1, {{1}})}))), Status::kOk);
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of({raw_track(2, {{2, 2}})}))), Status::kOk);
    EXPECT_EQ(run.demuxer()->out_file_count, 2U);
    EXPECT_EQ(run.finish(), Status::kOk);
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"), Bytes{1});
    EXPECT_EQ(run.output("in_track_id_2.out.ac3"), (Bytes{2, 2}));
}

TEST(Driver, TracksOfOneNameShareTheirFileInFileOrder) {
    DemuxRun run;
    EXPECT_EQ(run.walk(mp4::plain_file(
                  movie_of({raw_track(5, {{1, 1}, {2, 2}}), raw_track(5, {{3}, {4}})}))),
              Status::kOk);
    EXPECT_EQ(run.finish(), Status::kOk);
    EXPECT_EQ(run.output("in_track_id_5.out.ac3"), (Bytes{1, 1, 3, 2, 2, 4}));
}

TEST(Driver, ByteRangeOfASlotIsWalkedAlone) {
    auto movie = movie_of({raw_track(1, {{1, 1}, {2, 2}, {3, 3}})});
    const Bytes init = mp4::initialization_segment(movie);
    const Bytes first = mp4::media_segment(movie, 0, 1, init.size(), 1);
    const Bytes second = mp4::media_segment(movie, 1, 2, init.size() + first.size(), 2);
    const Bytes file = mp4::join({init, first, second});
    DemuxRun run;
    SegmentSlot slot;
    slot.kind = kSlotInitialization;
    slot.byte_range = range_text("0", std::to_string(init.size() - 1), "999999");
    EXPECT_EQ(run.walk(file, &slot), Status::kOk);
    EXPECT_EQ(run.demuxer()->streams.size(), 1U);
    slot.kind = kSlotMediaRange;
    slot.byte_range = range_text(std::to_string(init.size() + first.size()), std::nullopt,
                                 std::to_string(second.size()));
    EXPECT_EQ(run.walk(file, &slot), Status::kOk);
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"), (Bytes{2, 2, 3, 3}));
    slot.byte_range = range_text(std::to_string(init.size()),
                                 std::to_string(init.size() + first.size() - 1), std::nullopt);
    EXPECT_EQ(run.walk(file, &slot), Status::kOk);
    EXPECT_EQ(run.output("in_track_id_1.out.ac3"), (Bytes{2, 2, 3, 3, 1, 1}));
}

TEST(Driver, LastByteGoesBeforeLength) {
    SegmentSlot slot;
    EXPECT_FALSE(byte_range_of(nullptr).has_value());
    EXPECT_FALSE(byte_range_of(&slot).has_value());
    slot.byte_range = range_text("10", "19", "3");
    EXPECT_EQ(byte_range_of(&slot)->start, 10U);
    EXPECT_EQ(byte_range_of(&slot)->length, 10U);
    slot.byte_range = range_text("10", std::nullopt, "3");
    EXPECT_EQ(byte_range_of(&slot)->length, 3U);
    slot.byte_range = range_text(std::nullopt, std::nullopt, "3");
    EXPECT_EQ(byte_range_of(&slot)->start, 0U);
}

TEST(Driver, RangeThatCannotBeReachedRaises4065AndEndsTheCall) {
    DemuxRun run;
    SegmentSlot slot;
    slot.kind = kSlotMediaRange;
    slot.byte_range = range_text("18446744073709551615", std::nullopt, "10");
    const Status status = run.walk(mp4::plain_file(movie_of({raw_track(1, {{1}})})), &slot);
    EXPECT_TRUE(has_failed(status));
    ASSERT_EQ(run.sink.count(4065), 1U);
    EXPECT_EQ(run.sink.reports().back().text,
              "Fail to read the data specified by the byte range [start : 18446744073709551615, "
              "length : 10] in the segment file [in.mp4] .");
}

TEST(Driver, RangeBehindTheEndOfTheFileRaises4065AndEndsTheCall) {
    const Bytes file = mp4::plain_file(movie_of({raw_track(1, {{1}})}));
    const auto walk = [&file](std::uint64_t start, const char* length) {
        DemuxRun run;
        SegmentSlot slot;
        slot.kind = kSlotMediaRange;
        slot.byte_range = range_text(std::to_string(start), std::nullopt, length);
        const Status status = run.walk(file, &slot);
        EXPECT_EQ(has_failed(status), run.sink.count(4065) == 1);
        return run.sink.count(4065);
    };
    EXPECT_EQ(walk(file.size(), "1"), 1U);
    EXPECT_EQ(walk(file.size() + 1000, "10"), 1U);
    EXPECT_EQ(walk(file.size() - 1, "10"), 0U);
    EXPECT_EQ(walk(file.size(), "0"), 0U) << "nothing is asked for";
}

TEST(Driver, SampleBehindTheEndOfItsRangeGetsNoHeader) {
    mp4::MovieSpec movie = movie_of({aac_track(1, {sample(filled(1, 20)), sample(filled(2, 20))})});
    const Bytes file = mp4::fragmented_file(movie);
    const Bytes second = filled(2, 20);
    const auto at = std::search(file.begin(), file.end(), second.begin(), second.end());
    DemuxRun run;
    SegmentSlot slot;
    slot.kind = kSlotMediaRange;
    slot.byte_range = range_text("0", std::nullopt, std::to_string(at - file.begin()));
    static_cast<void>(run.walk(file, &slot));
    constexpr std::size_t kAdtsHeader = 7;
    EXPECT_EQ(run.output("in_track_id_1.out.aac")->size(), kAdtsHeader + 20);
}

TEST(Driver, EntryChecksAreDueOnFilesAndInitializationSegmentsOnly) {
    EXPECT_TRUE(entry_checks_due(nullptr));
    for (std::uint32_t kind = 0; kind <= 7; ++kind) {
        SegmentSlot slot;
        slot.kind = kind;
        EXPECT_EQ(entry_checks_due(&slot), kind < 3 || kind > 5) << kind;
    }
}

// --- Timing -----------------------------------------------------------------------------------

TEST(Driver, TimingDescribesTheTrackWhoseFirstSampleWasMetLast) {
    auto first = raw_track(1, {filled(1, 4), filled(1, 4)});
    first.time_scale = 1000;
    auto second = raw_track(2, {filled(2, 4), filled(2, 4), filled(2, 4)});
    second.time_scale = 2000;
    for (auto& spec : second.samples) {
        spec.duration = 100;
        spec.is_sync = false;
    }
    auto movie = movie_of({first, second});
    DemuxRun run;
    EXPECT_EQ(run.walk(mp4::fragmented_file(movie)), Status::kOk);
    ASSERT_NE(run.timing(), nullptr);
    EXPECT_DOUBLE_EQ(run.timing()->duration, 300.0 / 2000.0);
    EXPECT_EQ(run.timing()->is_last_kind, 0U);
    EXPECT_EQ(run.timing()->end, 0U);
    const auto& stream = *run.demuxer()->streams[1];
    EXPECT_FLOAT_EQ(run.timing()->sample_duration,
                    static_cast<float>(stream.default_sample_duration) / 2000.0F);
}

TEST(Driver, TimingTellsASyncFirstSample) {
    DemuxRun run;
    EXPECT_EQ(run.walk(mp4::fragmented_file(movie_of({raw_track(1, {{1}})}))), Status::kOk);
    ASSERT_NE(run.timing(), nullptr);
    EXPECT_EQ(run.timing()->is_last_kind, 1U);
}

TEST(Driver, NoSamplesGiveNoTiming) {
    DemuxRun run;
    EXPECT_EQ(run.walk(mp4::initialization_segment(movie_of({raw_track(1, {})}))), Status::kOk);
    EXPECT_EQ(run.timing(), nullptr);
}

TEST(Driver, ZeroTimeScaleGivesNoDuration) {
    auto track = raw_track(1, {{1}});
    track.time_scale = 0;
    DemuxRun run;
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of({track}))), Status::kOk);
    ASSERT_NE(run.timing(), nullptr);
    EXPECT_EQ(run.timing()->duration, 0.0);
}

// --- Track choice -----------------------------------------------------------------------------

TEST(Driver, TrackFilterTakesOneTrack) {
    DemuxRun run;
    run.track_filter = 2;
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of({raw_track(1, {{1}}), raw_track(2, {{2}})}))),
              Status::kOk);
    EXPECT_EQ(run.output_names(), std::vector<std::string>{"in_track_id_2.out.ac3"});
    EXPECT_EQ(run.output("in_track_id_2.out.ac3"), Bytes{2});
}

TEST(Driver, UnknownTrackIdEndsWith4011AndNoOutput) {
    DemuxRun run;
    run.track_filter = 7;
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of({raw_track(1, {{1}})}))), Status::kFailed);
    ASSERT_EQ(run.sink.ids(), std::vector<int>{4011});
    EXPECT_EQ(run.sink.reports()[0].text,
              "The track_id (7) specified by \"--track-id\" does not exist.");
    EXPECT_TRUE(run.output_names().empty());
}

TEST(Driver, BaseLayerOfADependentTrackIsNotWritten) {
    auto base = raw_track(1, {{1}});
    auto dependent = raw_track(2, {{2, 2}});
    dependent.extra = mp4::box("tref", {mp4::box("vdep", {mp4::u32(1)})});
    DemuxRun run;
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of({base, dependent}))), Status::kOk);
    EXPECT_EQ(run.output_names(), std::vector<std::string>{"in_track_id_2.out.ac3"});
    EXPECT_EQ(run.output("in_track_id_2.out.ac3"), (Bytes{2, 2}));
}

TEST(Driver, DependentTrackThatIsABaseLayerItselfIsWritten) {
    auto base = raw_track(1, {{1}});
    base.extra = mp4::box("tref", {mp4::box("vdep", {mp4::u32(2)})});
    auto dependent = raw_track(2, {{2, 2}});
    dependent.extra = mp4::box("tref", {mp4::box("vdep", {mp4::u32(1)})});
    DemuxRun run;
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of({base, dependent}))), Status::kOk);
    EXPECT_EQ(run.output_names().size(), 2U);
}

TEST(Driver, UnknownCodecKeepsItsNameInAllModes) {
    mp4::TrackSpec track;
    track.track_id = 4;
    track.handler = "text";
    track.entries = {mp4::box("tx3g", {mp4::zeros(38)})};
    track.samples = {sample({1})};
    const Bytes file = mp4::plain_file(movie_of({track}));
    ManifestContext manifest;
    DashContext dash = resolved_dash();
    DemuxRun hls;
    hls.manifest = &manifest;
    hls.suffix = "init";
    EXPECT_EQ(hls.walk(file), Status::kOk);
    EXPECT_EQ(hls.output_names(), std::vector<std::string>{"in_init_track_id_4.out.data"});
    DemuxRun representation;
    representation.dash = &dash;
    EXPECT_EQ(representation.walk(file), Status::kOk);
    EXPECT_EQ(representation.output_names(), std::vector<std::string>{"in_track_id_4.out.data"});
}

// --- Entry checks of the driver ---------------------------------------------------------------

TEST(Driver, AacAndAc3WantTheirCodecInTheManifest) {
    const Bytes aac = mp4::plain_file(movie_of({aac_track(1, {sample({1})})}));
    const Bytes ac3 = mp4::plain_file(movie_of({raw_track(1, {{1}})}));
    struct Case {
        const Bytes* file;
        const char* codecs;
        std::vector<int> ids;
    };
    const std::vector<Case> cases{
        {&aac, "avc1.64001f,mp4a.40.2", {}},
        {&aac, "avc1.64001f", {4492}},
        {&aac, nullptr, {4492}},
        {&ac3, "ac-3", {}},
        {&ac3, "mp4a.40.2", {4493}},
    };
    for (const Case& row : cases) {
        ManifestContext manifest;
        DashContext dash = resolved_dash();
        if (row.codecs != nullptr) {
            manifest.codecs = row.codecs;
            dash.codecs = row.codecs;
        }
        DemuxRun hls;
        hls.manifest = &manifest;
        EXPECT_EQ(hls.walk(*row.file), row.ids.empty() ? Status::kOk : Status::kRuleBroken);
        EXPECT_EQ(hls.sink.ids(), row.ids);
        DemuxRun representation;
        representation.dash = &dash;
        EXPECT_EQ(representation.walk(*row.file),
                  row.ids.empty() ? Status::kOk : Status::kRuleBroken);
        EXPECT_EQ(representation.sink.ids(), row.ids);
    }
}

TEST(Driver, PlainFilesHaveNoManifestToCompare) {
    DemuxRun run;
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of({aac_track(1, {sample({1})})}))), Status::kOk);
    EXPECT_TRUE(run.sink.ids().empty());
}

TEST(Driver, MediaSegmentsAreNotCheckedAgain) {
    ManifestContext manifest;
    manifest.codecs = "avc1.64001f";
    DemuxRun run;
    run.manifest = &manifest;
    SegmentSlot slot;
    slot.kind = kSlotMedia;
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of({aac_track(1, {sample({1})})})), &slot),
              Status::kOk);
    EXPECT_TRUE(run.sink.ids().empty());
}

TEST(Driver, UnknownEntryUnderAKnownCodecRaises4494) {
    mp4::TrackSpec track;
    track.handler = "text";
    track.entries = {mp4::box("tx3g", {mp4::zeros(38)})};
    const Bytes file = mp4::plain_file(movie_of({track}));
    for (const char* codecs : {"ec-3", "mp4a.40.2,ac-4.02.01.00", "pxav.09.01", "pxh1.08.01"}) {
        ManifestContext manifest;
        manifest.codecs = codecs;
        DemuxRun run;
        run.manifest = &manifest;
        EXPECT_EQ(run.walk(file), Status::kRuleBroken);
        EXPECT_EQ(run.sink.ids(), std::vector<int>{4494});
    }
    ManifestContext manifest;
    manifest.codecs = "stpp,avc1.64001f";
    DemuxRun run;
    run.manifest = &manifest;
    EXPECT_EQ(run.walk(file), Status::kOk);
    EXPECT_TRUE(run.sink.ids().empty());
}

TEST(Driver, UnknownEntryWithAnEnhancementConfigurationRaises2033) {
    mp4::TrackSpec track;
    track.entries = {mp4::video_entry("s263", 64, 64, {mp4::prsm_config("pxcC", 5, 1)})};
    DemuxRun run;
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of({track}))), Status::kOk);
    EXPECT_EQ(run.sink.ids(), std::vector<int>{2033});
    mp4::TrackSpec plain;
    plain.entries = {mp4::video_entry("s263", 64, 64)};
    DemuxRun quiet;
    EXPECT_EQ(quiet.walk(mp4::plain_file(movie_of({plain}))), Status::kOk);
    EXPECT_TRUE(quiet.sink.ids().empty());
}

TEST(Driver, MoreThanOneAc4TrackRaises4396) {
    mp4::TrackSpec track;
    track.handler = "soun";
    track.entries = {mp4::audio_entry("ac-4", 2, 16, 48000)};
    auto second = track;
    second.track_id = 2;
    DemuxRun one;
    // The entries break other rules: they have no box.
    EXPECT_EQ(one.walk(mp4::plain_file(movie_of({track}))), Status::kRuleBroken);
    EXPECT_EQ(one.sink.count(4396), 0U);
    DemuxRun two;
    EXPECT_EQ(two.walk(mp4::plain_file(movie_of({track, second}))), Status::kRuleBroken);
    EXPECT_EQ(two.sink.count(4396), 1U);
    DemuxRun filtered;
    filtered.track_filter = 2;
    EXPECT_EQ(filtered.walk(mp4::plain_file(movie_of({track, second}))), Status::kRuleBroken);
    EXPECT_EQ(filtered.sink.count(4396), 0U);
}

// --- Languages --------------------------------------------------------------------------------

std::vector<int> language_ids(const char* mdhd, std::optional<std::string> manifest) {
    auto track = raw_track(1, {});
    track.language = mdhd;
    DashContext dash = resolved_dash();
    dash.codecs = "ac-3";
    dash.language = std::move(manifest);
    DemuxRun run;
    run.dash = &dash;
    SegmentSlot slot;
    slot.kind = kSlotMedia;
    EXPECT_NE(run.walk(mp4::plain_file(movie_of({track})), &slot), Status::kFailed);
    return run.sink.ids();
}

TEST(Driver, LanguagesOfOneTableRowMatch) {
    EXPECT_EQ(language_ids("eng", "en"), std::vector<int>{});
    EXPECT_EQ(language_ids("eng", "eng"), std::vector<int>{});
    EXPECT_EQ(language_ids("fra", "fre"), std::vector<int>{});
    EXPECT_EQ(language_ids("qaa", "qaa"), std::vector<int>{});
    EXPECT_EQ(language_ids("und", "und"), std::vector<int>{});
}

TEST(Driver, DifferentLanguagesRaise4093) {
    EXPECT_EQ(language_ids("eng", "de"), std::vector<int>{4093});
    EXPECT_EQ(language_ids("qaa", "qab"), std::vector<int>{4093});
}

TEST(Driver, CodeOutsideTheTerminologyColumnRaises4104) {
    EXPECT_EQ(language_ids("fre", "fr"), std::vector<int>{4104});
    EXPECT_EQ(language_ids("zzz", "zzz"), std::vector<int>{4104});
    EXPECT_EQ(language_ids("qua", "qua"), std::vector<int>{4104});
}

TEST(Driver, WithoutALanguageInTheManifestNothingIsCompared) {
    EXPECT_EQ(language_ids("zzz", std::nullopt), std::vector<int>{});
}

// --- Outputs that fail ------------------------------------------------------------------------

TEST(Driver, OutputThatCannotBeOpenedFailsTheRunAndTheOthersGoOn) {
    DemuxRun run;
    std::filesystem::create_directory(run.folder.path("in_track_id_1.out.ac3"));
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of({raw_track(1, {{1}}), raw_track(2, {{2}})}))),
              Status::kFailed);
    EXPECT_EQ(run.sink.ids(), std::vector<int>{4082});
    EXPECT_EQ(run.output("in_track_id_2.out.ac3"), Bytes{2});
}

TEST(Driver, FullDiskFailsTheRunWithOneLine) {
    for (const std::size_t size : {1U, 300000U}) {
        DemuxRun run;
        std::filesystem::create_symlink("/dev/full", run.folder.path("in_track_id_1.out.ac3"));
        const auto movie =
            movie_of({raw_track(1, {filled(1, size), filled(1, size), filled(1, size)})});
        EXPECT_EQ(run.walk(mp4::plain_file(movie)), Status::kFailed);
        EXPECT_EQ(run.sink.ids(), std::vector<int>{4085});
    }
}

}  // namespace
}  // namespace mediasplit
