#include <gtest/gtest.h>

#include "tests/support/eac3_builder.h"
#include "tests/unit/id3demuxer/packed_run.h"

namespace mediasplit {
namespace {

using test_support::build_eac3_frame;
using test_support::Eac3Spec;

Bytes frame(unsigned acmod = 7, unsigned lfeon = 1, unsigned substreamid = 0) {
    Eac3Spec spec;
    spec.acmod = acmod;
    spec.lfeon = lfeon;
    spec.substreamid = substreamid;
    return build_eac3_frame(spec);
}

Bytes joc_frame(std::uint8_t complexity) {
    Eac3Spec spec;
    spec.addbsi = Bytes{1, complexity};
    return build_eac3_frame(spec);
}

Bytes dependent_frame(unsigned chanmap) {
    Eac3Spec spec;
    spec.strmtyp = 1;
    spec.acmod = 6;
    spec.lfeon = 0;
    spec.chanmap = chanmap;
    return build_eac3_frame(spec);
}

// A run over two time slices, the first of which is held against the playlist.
Status read_twice(PackedRun& run, const Bytes& slice) {
    return run.stream(parse_es_stream_oap, repeated(slice, 2));
}

// --- Framing ----------------------------------------------------------------------------------

TEST(Ec3Stream, GoodStreamIsWrittenWithoutAWord) {
    PackedRun run;
    EXPECT_EQ(run.stream(parse_es_stream_oap, repeated(frame(), 50)), Status::kOk);
    EXPECT_TRUE(run.sink.ids().empty());
    EXPECT_EQ(run.output("stream.out"), repeated(frame(), 50));
    EXPECT_TRUE(run.sink.was_evaluated(4332));
    EXPECT_TRUE(run.sink.was_evaluated(4333));
}

TEST(Ec3Stream, EmptyStreamIsGood) {
    PackedRun run;
    EXPECT_EQ(run.stream(parse_es_stream_oap, {}), Status::kOk);
    EXPECT_TRUE(run.sink.ids().empty());
    EXPECT_EQ(run.output("stream.out"), Bytes{});
}

TEST(Ec3Stream, LostSyncRaises4332AndTheFramesBeforeItAreWritten) {
    for (const Bytes& rest : {Bytes(10, 0), Bytes{0x0B}, Bytes{0x0B, 0x78, 1, 2}, Bytes{0x77, 0x0B},
                              Bytes{0x0B, 0x77}, Bytes{0x0B, 0x77, 0x07}}) {
        PackedRun run;
        EXPECT_EQ(run.stream(parse_es_stream_oap, joined({repeated(frame(), 2), rest})),
                  Status::kRuleBroken);
        EXPECT_EQ(run.sink.ids(), std::vector<int>{4332});
        EXPECT_EQ(run.output("stream.out"), repeated(frame(), 2));
    }
}

TEST(Ec3Stream, FrameOfTwoBytesIsLostSync) {
    PackedRun run;
    EXPECT_EQ(run.stream(parse_es_stream_oap, joined({frame(), {0x0B, 0x77, 0, 0, 0, 0}, frame()})),
              Status::kRuleBroken);
    EXPECT_EQ(run.sink.ids(), std::vector<int>{4332});
    EXPECT_EQ(run.output("stream.out"), frame());
}

TEST(Ec3Stream, FrameOfFourBytesIsTakenIn) {
    const Bytes tiny = {0x0B, 0x77, 0, 1};
    PackedRun run;
    EXPECT_EQ(run.stream(parse_es_stream_oap, joined({frame(), tiny, frame()})),
              Status::kRuleBroken);
    EXPECT_EQ(run.sink.count(4332), 0U);
    EXPECT_EQ(run.output("stream.out"), joined({frame(), tiny, frame()}));
}

TEST(Ec3Stream, CutLastFrameIsHandedOn) {
    Bytes bytes = repeated(frame(), 2);
    bytes.resize(bytes.size() - 100);
    PackedRun run;
    EXPECT_EQ(run.stream(parse_es_stream_oap, bytes), Status::kRuleBroken);
    EXPECT_EQ(run.sink.ids(), std::vector<int>{4333});
    EXPECT_EQ(run.output("stream.out"), bytes);
}

TEST(Ec3Stream, FramesThatCannotBeAnalysedRaise4333AndAreWritten) {
    Bytes broken = frame();
    broken[100] ^= 0xFF;
    PackedRun run;
    EXPECT_EQ(run.stream(parse_es_stream_oap, joined({broken, frame()})), Status::kRuleBroken);
    EXPECT_EQ(run.sink.ids().at(0), 4333);
    EXPECT_EQ(run.text_of(4333),
              "For an [EC3] stream, the bitstream fails the validation in \"OAPInfoLib\".");
    EXPECT_EQ(run.sink.count(4332), 0U);
    EXPECT_EQ(run.output("stream.out"), joined({broken, frame()}));
}

TEST(Ec3Stream, SliceCoversAllSubstreams) {
    // Were each frame a slice, the second independent one alone would be no programme 0.
    const Bytes slice = joined({frame(2, 0, 0), frame(2, 0, 1)});
    PackedRun run;
    run.context.channels_text = "2";
    EXPECT_EQ(run.stream(parse_es_stream_oap, repeated(slice, 3)), Status::kOk);
    EXPECT_TRUE(run.sink.ids().empty());
    EXPECT_EQ(run.output("stream.out"), repeated(slice, 3));
}

TEST(Ec3Stream, LongRowsOfFramesThatBeginNoSliceAreWrittenInFull) {
    Eac3Spec spec;
    spec.strmtyp = 1;
    spec.words = 2048;
    const Bytes all = joined({frame(), repeated(build_eac3_frame(spec), 1200)});
    PackedRun run;
    (void)run.stream(parse_es_stream_oap, all);
    EXPECT_EQ(run.sink.count(4332), 0U);
    EXPECT_TRUE(run.output("stream.out") == all);
}

// Deliberate: AC-3 tells its size in another way.
TEST(Ec3Stream, Ac3FramesAreMisread) {
    PackedRun run;
    const Bytes bytes = repeated(test_support::build_ac3_frame({}), 3);
    EXPECT_NE(run.stream(parse_es_stream_oap, bytes), Status::kOk);
    EXPECT_NE(run.output("stream.out"), bytes);
}

TEST(Ec3Stream, WithoutAPlaylistThereAreNoChannelRules) {
    PackedRun run;
    run.has_context = false;
    EXPECT_EQ(read_twice(run, joc_frame(16)), Status::kOk);
    EXPECT_TRUE(run.sink.ids().empty());
}

// --- Against the playlist ---------------------------------------------------------------------

TEST(Ec3StreamPlaylist, SingleSliceIsNotHeldAgainstItDeliberately) {
    PackedRun run;
    run.context.codecs = "mp4a.40.2";
    EXPECT_EQ(run.stream(parse_es_stream_oap, frame()), Status::kOk);
    EXPECT_TRUE(run.sink.ids().empty());
    EXPECT_TRUE(run.sink.was_evaluated(4333));
    EXPECT_FALSE(run.sink.was_evaluated(4283));
}

TEST(Ec3StreamPlaylist, OnlyTheFirstSliceIsHeldAgainstIt) {
    PackedRun run;
    run.context.channels_text = "6";
    // That the channels change is the analysis's own finding.
    (void)run.stream(parse_es_stream_oap, joined({frame(), repeated(frame(2, 0), 5)}));
    EXPECT_TRUE(run.sink.was_evaluated(4288));
    EXPECT_EQ(run.sink.count(4288), 0U);
}

TEST(Ec3StreamPlaylist, CodecsMustHaveEc3) {
    for (const auto& codecs : {std::optional<std::string>(), std::optional<std::string>("ac-3"),
                               std::optional<std::string>("avc1.640028,mp4a.40.2")}) {
        PackedRun run;
        run.context.codecs = codecs;
        EXPECT_EQ(read_twice(run, frame()), Status::kRuleBroken);
        EXPECT_EQ(run.sink.ids(), std::vector<int>{4283});
        EXPECT_EQ(run.sink.reports()[0].position, 3U);
        EXPECT_EQ(run.sink.reports()[0].attribute, "CODECS");
        EXPECT_NE(run.text_of(4283).find("[index : 3] must include \"ec-3\""), std::string::npos);
    }
    PackedRun run;
    run.context.codecs = "avc1.640028,ec-3";
    EXPECT_EQ(read_twice(run, frame()), Status::kOk);
}

TEST(Ec3StreamPlaylist, ChannelsMustBeTheCount) {
    // Channels of each mode without LFE; modes 4 and 5 have none.
    const std::vector<const char*> counts = {nullptr, "1", "2", "3", "0", "0", "4", "5"};
    for (unsigned acmod = 1; acmod < 8; ++acmod) {
        PackedRun run;
        run.context.channels_text = counts[acmod];
        EXPECT_EQ(read_twice(run, frame(acmod, 0)), Status::kOk) << acmod;
        EXPECT_EQ(run.sink.count(4288), 0U) << acmod;
    }
    PackedRun run;
    run.context.channels_text = "2";
    EXPECT_EQ(read_twice(run, frame()), Status::kRuleBroken);
    EXPECT_EQ(run.sink.ids(), std::vector<int>{4288});
    EXPECT_EQ(run.text_of(4288),
              "For an [EC3] stream, in HLS master-playlist, the attribute \"CHANNELS\" in the "
              "#EXT-X-MEDIA [index : 5] mismatches the corresponding description in the Packed "
              "audio. (expected CHANNELS value: 6; actual value: 2)");
    EXPECT_EQ(run.context.found_channels_max, 0U);
}

TEST(Ec3StreamPlaylist, DependentSubstreamsAddTheirChannels) {
    // Lrs/Rrs; L, R, Ls, Rs and LFE of a dependent substream add nothing.
    const Bytes slice = joined({frame(), dependent_frame(0xB800 | 0x0200 | 1)});
    PackedRun run;
    run.context.channels_text = "8";
    (void)read_twice(run, slice);
    EXPECT_EQ(run.sink.count(4288), 0U);
    PackedRun low;
    low.context.channels_text = "6";
    (void)read_twice(low, slice);
    EXPECT_EQ(low.sink.count(4288), 1U);
}

TEST(Ec3StreamPlaylist, MissingChannelsAreNoFindingWithoutObjects) {
    PackedRun run;
    EXPECT_EQ(read_twice(run, frame()), Status::kOk);
    EXPECT_TRUE(run.sink.ids().empty());
    run.context.channels_parsed = 1;
    EXPECT_EQ(read_twice(run, frame()), Status::kOk);
    EXPECT_TRUE(run.sink.ids().empty());
}

PackedRun& parse_channels(PackedRun& run, const char* text, std::uint32_t count) {
    run.context.channels_text = text;
    run.context.channels_parsed = 1;
    run.context.channel_count = count;
    return run;
}

TEST(Ec3StreamPlaylist, ParsedChannelsMustBeEnough) {
    PackedRun enough;
    EXPECT_EQ(read_twice(parse_channels(enough, "6", 6), frame()), Status::kOk);
    EXPECT_EQ(enough.context.found_channels_max, 6U);
    EXPECT_EQ(enough.context.found_channels_valid, 1U);
    EXPECT_EQ(enough.context.found_joc, 0U);
    PackedRun more;
    EXPECT_EQ(read_twice(parse_channels(more, "8", 8), frame()), Status::kOk);
    EXPECT_EQ(more.context.found_channels_max, 6U);
    EXPECT_EQ(more.context.found_channels_valid, 0U);
    PackedRun few;
    EXPECT_EQ(read_twice(parse_channels(few, "2", 2), frame()), Status::kRuleBroken);
    EXPECT_EQ(few.sink.ids(), std::vector<int>{4289});
    EXPECT_NE(few.text_of(4289).find("(value: 2) in the #EXT-X-MEDIA [index : 5] is too small, "
                                     "the EC3 stream requires 6 channels."),
              std::string::npos);
    EXPECT_EQ(few.context.found_channels_valid, 1U);
}

TEST(Ec3StreamPlaylist, HighestCountStays) {
    PackedRun run;
    run.context.found_channels_max = 12;
    EXPECT_EQ(read_twice(parse_channels(run, "6", 6), frame()), Status::kOk);
    EXPECT_EQ(run.context.found_channels_max, 12U);
}

TEST(Ec3StreamPlaylist, ObjectsNeedChannels) {
    PackedRun run;
    EXPECT_EQ(read_twice(run, joc_frame(16)), Status::kRuleBroken);
    EXPECT_EQ(run.sink.ids(), std::vector<int>{4284});
    EXPECT_EQ(run.sink.reports()[0].position, 5U);
    EXPECT_EQ(run.context.found_joc, 0U);
}

TEST(Ec3StreamPlaylist, ObjectsMustBeNamedInChannels) {
    PackedRun good;
    good.context.channels_text = "16/JOC";
    EXPECT_EQ(read_twice(good, joc_frame(16)), Status::kOk);
    EXPECT_TRUE(good.sink.ids().empty());
    EXPECT_EQ(good.context.found_joc, 0U);
    for (const char* text : {"16", "6", "12/JOC", "16/joc", ""}) {
        PackedRun run;
        run.context.channels_text = text;
        EXPECT_EQ(read_twice(run, joc_frame(16)), Status::kRuleBroken) << text;
        EXPECT_EQ(run.sink.ids(), std::vector<int>{4291}) << text;
    }
}

TEST(Ec3StreamPlaylist, ParsedChannelsMustBeEnoughForObjectsAndNameThem) {
    PackedRun good;
    parse_channels(good, "16/JOC", 16);
    good.context.channels_have_identifier = 1;
    good.context.channels_joc = 1;
    EXPECT_EQ(read_twice(good, joc_frame(16)), Status::kOk);
    EXPECT_TRUE(good.sink.ids().empty());
    EXPECT_EQ(good.context.found_joc, 1U);
    EXPECT_EQ(good.context.found_channels_max, 16U);
    EXPECT_EQ(good.context.found_channels_valid, 1U);
    PackedRun other;
    parse_channels(other, "12/IMSA", 12);
    other.context.channels_have_identifier = 1;
    EXPECT_EQ(read_twice(other, joc_frame(16)), Status::kRuleBroken);
    EXPECT_EQ(other.sink.ids(), (std::vector<int>{4289, 4290}));
    EXPECT_NE(other.text_of(4290).find("(value: 12/IMSA) in the #EXT-X-MEDIA [index : 5]"),
              std::string::npos);
    EXPECT_EQ(other.context.found_joc, 1U);
    // Without any identifier none is asked for.
    PackedRun plain;
    EXPECT_EQ(read_twice(parse_channels(plain, "16", 16), joc_frame(16)), Status::kOk);
    EXPECT_EQ(plain.context.found_joc, 1U);
}

}  // namespace
}  // namespace mediasplit
