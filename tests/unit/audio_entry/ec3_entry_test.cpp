// E-AC-3 sample entries of whole files, with their samples.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/eac3_builder.h"
#include "tests/support/mp4_builder.h"
#include "tests/unit/fmp4demuxer/demux_run.h"

namespace mediasplit {
namespace {

using mp4::Bytes;
using test_support::build_eac3_frame;
using test_support::Eac3Spec;

// Everything about the track that a rule looks at; as it stands no rule is broken.
struct Ec3Track {
    std::uint32_t channels = 2;
    std::uint32_t sample_size = 16;
    std::uint32_t sample_rate = 48000;
    std::uint32_t time_scale = 48000;
    std::string handler = "soun";
    bool has_smhd = true;
    std::optional<Bytes> dec3 = mp4::hex("0600 20 0f 00");  // 192 kbit/s, 3/2 with LFE
    std::optional<std::size_t> reserved_at{};               // byte of the entry that isn't zero
    std::vector<Eac3Spec> frames = {Eac3Spec{}, Eac3Spec{}};
};

Bytes file_of(const Ec3Track& spec) {
    Bytes entry = spec.dec3
                      ? mp4::audio_entry("ec-3", spec.channels, spec.sample_size, spec.sample_rate,
                                         {mp4::box("dec3", {*spec.dec3})})
                      : mp4::audio_entry("ec-3", spec.channels, spec.sample_size, spec.sample_rate);
    if (spec.reserved_at) {
        entry[*spec.reserved_at] = 1;
    }
    mp4::TrackSpec track;
    track.handler = spec.handler;
    track.time_scale = spec.time_scale;
    track.entries = {entry};
    for (const Eac3Spec& frame : spec.frames) {
        mp4::SampleSpec& added = track.samples.emplace_back(sample(build_eac3_frame(frame)));
        added.duration = 1536;
    }
    mp4::MovieSpec movie;
    movie.tracks = {track};
    Bytes file = mp4::plain_file(movie);
    if (!spec.has_smhd) {
        constexpr std::string_view kSmhd = "smhd";
        const auto at = std::search(file.begin(), file.end(), kSmhd.begin(), kSmhd.end());
        if (at != file.end()) {
            std::copy_n("free", 4, at);
        }
    }
    return file;
}

std::vector<int> ids_of(const Ec3Track& spec, ManifestContext* playlist = nullptr) {
    DemuxRun run;
    run.manifest = playlist;
    const Status status = run.walk(file_of(spec));
    EXPECT_FALSE(has_failed(status));
    return run.sink.ids();
}

TEST(Ec3Entry, GoodEntryHasNoFinding) {
    DemuxRun run;
    EXPECT_EQ(run.walk(file_of({})), Status::kOk);
    EXPECT_EQ(run.sink.ids(), std::vector<int>{});
    for (int id = 4293; id <= 4310; ++id) {
        EXPECT_TRUE(run.sink.was_evaluated(id)) << id;
    }
    for (const int id : {2039, 2040, 4316, 4333}) {
        EXPECT_TRUE(run.sink.was_evaluated(id)) << id;
    }
}

TEST(Ec3Entry, EachFieldOfTheEntryHasItsRow) {
    Ec3Track track;
    track.channels = 6;
    EXPECT_EQ(ids_of(track), std::vector<int>{4294});
    track = {};
    track.sample_size = 24;
    EXPECT_EQ(ids_of(track), std::vector<int>{4295});
    track = {};
    track.sample_rate = 44100;
    EXPECT_EQ(ids_of(track), std::vector<int>{4296});
    track = {};
    track.has_smhd = false;
    EXPECT_EQ(ids_of(track), std::vector<int>{4298});
    track = {};
    track.reserved_at = 8;  // data_reference_index is behind six reserved bytes
    EXPECT_EQ(ids_of(track), std::vector<int>{4302});
}

TEST(Ec3Entry, HandlerIsSound) {
    Ec3Track track;
    track.handler = "text";
    // A track of another handler has no sound header in these files.
    EXPECT_EQ(ids_of(track), (std::vector<int>{4297, 4298}));
}

TEST(Ec3Entry, SamplingRateIs48000EvenForOtherStreams) {
    Ec3Track track;
    track.sample_rate = 44100;
    for (Eac3Spec& frame : track.frames) {
        frame.fscod = 1;
    }
    const std::vector<int> ids = ids_of(track);
    EXPECT_EQ(std::count(ids.begin(), ids.end(), 4296), 1);
}

TEST(Ec3Entry, TimescaleIsAWarning) {
    Ec3Track track;
    track.time_scale = 90000;
    DemuxRun run;
    EXPECT_EQ(run.walk(file_of(track)), Status::kOk);
    EXPECT_EQ(run.sink.ids(), std::vector<int>{2039});
}

TEST(Ec3Entry, MissingBoxSkipsTheRowsThatNeedIt) {
    Ec3Track track;
    track.dec3.reset();
    ManifestContext playlist;
    playlist.codecs = "mp4a";
    EXPECT_EQ(ids_of(track, &playlist), std::vector<int>{4299});
}

TEST(Ec3Entry, ReservedBitsOfTheBoxAreZero) {
    Ec3Track track;
    track.dec3 = mp4::hex("0600 21 0f 00");
    EXPECT_EQ(ids_of(track), std::vector<int>{4300});
}

TEST(Ec3Entry, ShortBoxHasAnInvalidSize) {
    Ec3Track track;
    track.dec3 = mp4::hex("0600 20 0f");
    EXPECT_EQ(ids_of(track), std::vector<int>{4301});
}

TEST(Ec3Entry, MediaSegmentsDoNotJudgeTheEntryAgain) {
    Ec3Track track;
    track.channels = 6;
    DemuxRun run;
    SegmentSlot slot;
    slot.kind = kSlotMedia;
    (void)run.walk(file_of(track), &slot);
    EXPECT_EQ(run.sink.count(4294), 0U);
}

// --- Samples ----------------------------------------------------------------------------------

TEST(Ec3Samples, BrokenSampleRaises4333AndIsWritten) {
    Ec3Track track;
    track.frames[1].good_crc = false;
    DemuxRun run;
    EXPECT_EQ(run.walk(file_of(track)), Status::kRuleBroken);
    EXPECT_EQ(run.sink.ids(), std::vector<int>{4333});
    EXPECT_EQ(run.finish(), Status::kOk);
    ASSERT_EQ(run.output_names().size(), 1U);
    EXPECT_EQ(run.output(run.output_names()[0]),
              mp4::join({build_eac3_frame(track.frames[0]), build_eac3_frame(track.frames[1])}));
}

TEST(Ec3Samples, ShortFramesAreNoAccessUnit) {
    Ec3Track track;
    for (Eac3Spec& frame : track.frames) {
        frame.numblkscod = 2;
        frame.words = 192;
    }
    const std::vector<int> ids = ids_of(track);
    EXPECT_NE(std::count(ids.begin(), ids.end(), 4293), 0);
}

TEST(Ec3Samples, WalksStartTheAnalysisAfresh) {
    DemuxRun run;
    EXPECT_EQ(run.walk(file_of({})), Status::kOk);
    EXPECT_EQ(run.demuxer()->streams[0]->oap_parser, nullptr);
}

// --- Against the playlist ---------------------------------------------------------------------

ManifestContext playlist_with(const char* channels) {
    ManifestContext playlist;
    playlist.codecs = "avc1.640028,ec-3";
    playlist.rendition_index = 5;
    playlist.stream_index = 3;
    if (channels != nullptr) {
        playlist.channels_text = channels;
    }
    return playlist;
}

Ec3Track joc_track() {
    Ec3Track track;
    track.dec3 = mp4::hex("0600 20 0f 00 01 10");
    for (Eac3Spec& frame : track.frames) {
        frame.addbsi = Bytes{1, 16};
    }
    return track;
}

TEST(Ec3EntryPlaylist, CodecsMustHaveEc3) {
    ManifestContext playlist = playlist_with("6");
    EXPECT_EQ(ids_of({}, &playlist), std::vector<int>{});
    playlist.codecs = "ac-3";
    EXPECT_EQ(ids_of({}, &playlist), std::vector<int>{4283});
    playlist.codecs.reset();
    EXPECT_EQ(ids_of({}, &playlist), std::vector<int>{4283});
}

TEST(Ec3EntryPlaylist, ChannelsMustBeTheCountOfTheBox) {
    ManifestContext playlist = playlist_with("8");
    DemuxRun run;
    run.manifest = &playlist;
    EXPECT_EQ(run.walk(file_of({})), Status::kRuleBroken);
    ASSERT_EQ(run.sink.ids(), std::vector<int>{4287});
    EXPECT_NE(run.sink.reports()[0].text.find(
                  "[index : 5] mismatches the corresponding description in the MP4 "
                  "EC3SampleEntryBox. (expected CHANNELS value: 6; actual value: 8)"),
              std::string::npos);
    ManifestContext missing = playlist_with(nullptr);
    EXPECT_EQ(ids_of({}, &missing), std::vector<int>{});
}

TEST(Ec3EntryPlaylist, ParsedChannelsMustBeEnough) {
    ManifestContext playlist = playlist_with("6");
    playlist.channels_parsed = 1;
    playlist.channel_count = 6;
    EXPECT_EQ(ids_of({}, &playlist), std::vector<int>{});
    EXPECT_EQ(playlist.found_channels_max, 6U);
    EXPECT_EQ(playlist.found_channels_valid, 1U);
    EXPECT_EQ(playlist.found_joc, 0U);
    playlist.channel_count = 5;
    EXPECT_EQ(ids_of({}, &playlist), std::vector<int>{4289});
}

TEST(Ec3EntryPlaylist, ObjectsNeedChannels) {
    ManifestContext playlist = playlist_with(nullptr);
    EXPECT_EQ(ids_of(joc_track(), &playlist), std::vector<int>{4284});
}

TEST(Ec3EntryPlaylist, ObjectsMustBeNamedInChannels) {
    ManifestContext good = playlist_with("16/JOC");
    EXPECT_EQ(ids_of(joc_track(), &good), std::vector<int>{});
    ManifestContext bad = playlist_with("16");
    EXPECT_EQ(ids_of(joc_track(), &bad), std::vector<int>{4285});
}

TEST(Ec3EntryPlaylist, ParsedChannelsMustBeEnoughForObjectsAndNameThem) {
    ManifestContext playlist = playlist_with("16/JOC");
    playlist.channels_parsed = 1;
    playlist.channel_count = 16;
    playlist.channels_have_identifier = 1;
    playlist.channels_joc = 1;
    EXPECT_EQ(ids_of(joc_track(), &playlist), std::vector<int>{});
    EXPECT_EQ(playlist.found_joc, 1U);
    playlist.channel_count = 15;
    playlist.channels_joc = 0;
    EXPECT_EQ(ids_of(joc_track(), &playlist), (std::vector<int>{4289, 4290}));
}

}  // namespace
}  // namespace mediasplit
