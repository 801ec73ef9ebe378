#include <gtest/gtest.h>

#include "tests/support/ac4_builder.h"
#include "tests/unit/id3demuxer/packed_run.h"

namespace mediasplit {
namespace {

// A run whose playlist has CHANNELS of stereo.
class Ac4Run : public PackedRun {
public:
    Ac4Run() { context.channels_text = "2"; }
};

Bytes sync_frame(const BuildFrame& frame, bool with_crc = false, bool long_size = false) {
    return write_syncframe(write_ac4_frame(frame), with_crc, long_size);
}

Bytes stereo(bool with_crc = false, bool long_size = false) {
    return sync_frame(simple_stereo_frame(), with_crc, long_size);
}

// A frame whose only presentation has this channel mode.
BuildFrame frame_of_mode(const std::string& mode, const std::string& immersive = "") {
    BuildFrame frame = simple_stereo_frame();
    frame.groups[0].substreams[0].mode = mode;
    frame.groups[0].substreams[0].immersive = immersive;
    // add_ch_base is there for the modes 7.X with wide or top channels alone.
    if (mode.size() == 7 && mode >= ac4_mode::k70Wide) {
        frame.groups[0].substreams[0].add_ch_base = false;
    }
    return frame;
}

BuildFrame frame_of_version(std::uint32_t version) {
    BuildFrame frame = simple_stereo_frame();
    frame.presentations[0].version = version;
    return frame;
}

Status read(Ac4Run& run, const BuildFrame& frame) {
    return run.stream(parse_es_stream_ac4, sync_frame(frame));
}

// --- Framing ----------------------------------------------------------------------------------

TEST(Ac4Stream, GoodStreamIsWrittenWithoutAWord) {
    Ac4Run run;
    EXPECT_EQ(run.stream(parse_es_stream_ac4, repeated(stereo(), 20)), Status::kOk);
    EXPECT_TRUE(run.sink.ids().empty());
    EXPECT_EQ(run.output("stream.out"), repeated(stereo(), 20));
    for (const int id : {4485, 4490, 4491, 4393}) {
        EXPECT_TRUE(run.sink.was_evaluated(id)) << id;
    }
}

TEST(Ac4Stream, EmptyStreamIsGood) {
    Ac4Run run;
    EXPECT_EQ(run.stream(parse_es_stream_ac4, {}), Status::kOk);
    EXPECT_TRUE(run.sink.ids().empty());
}

TEST(Ac4Stream, LongSizeIsReadAndWritten) {
    const Bytes frame = stereo(false, true);
    ASSERT_EQ(frame[2], 0xFF);
    ASSERT_EQ(frame[3], 0xFF);
    Ac4Run run;
    EXPECT_EQ(run.stream(parse_es_stream_ac4, repeated(frame, 3)), Status::kOk);
    EXPECT_EQ(run.output("stream.out"), repeated(frame, 3));
}

TEST(Ac4Stream, CheckWordIsDroppedAndItsSyncWordStaysDeliberately) {
    for (const bool long_size : {false, true}) {
        const Bytes frame = stereo(true, long_size);
        ASSERT_EQ(frame[1], 0x41);
        const Bytes without(frame.begin(), frame.end() - 2);
        Ac4Run run;
        EXPECT_EQ(run.stream(parse_es_stream_ac4, repeated(frame, 3)), Status::kOk);
        EXPECT_EQ(run.output("stream.out"), repeated(without, 3));
    }
}

TEST(Ac4Stream, LostSyncRaises4490AndTheFramesBeforeItAreWritten) {
    Bytes cut = stereo();
    cut.pop_back();
    for (const Bytes& rest :
         {Bytes(10, 0), Bytes{0xAC}, Bytes{0xAC, 0x42, 0, 1, 0}, Bytes{0xAC, 0x40},
          Bytes{0xAC, 0x40, 0}, Bytes{0xAC, 0x40, 0xFF, 0xFF, 0, 0},
          Bytes{0xAC, 0x40, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 3}, cut}) {
        Ac4Run run;
        EXPECT_EQ(run.stream(parse_es_stream_ac4, joined({stereo(), rest})), Status::kRuleBroken);
        EXPECT_EQ(run.sink.ids(), std::vector<int>{4490});
        EXPECT_EQ(run.output("stream.out"), stereo());
    }
}

TEST(Ac4Stream, FramesThatCannotBeAnalysedRaise4491AndAreWritten) {
    const Bytes empty = {0xAC, 0x40, 0, 0};
    Ac4Run run;
    EXPECT_EQ(run.stream(parse_es_stream_ac4, joined({stereo(), empty, stereo()})),
              Status::kRuleBroken);
    EXPECT_EQ(run.sink.count(4491), 1U);
    EXPECT_EQ(run.text_of(4491),
              "For an [AC4] stream, the bitstream fails the validation in \"AC4Analyzer\".");
    // All of it counts as zero then.
    EXPECT_NE(run.text_of(4393).find("\"ac-4.00.00.00\""), std::string::npos);
    EXPECT_EQ(run.output("stream.out"), joined({stereo(), empty, stereo()}));
}

TEST(Ac4Stream, FirstFrameMustBeAnIFrame) {
    BuildFrame predicted = simple_stereo_frame();
    predicted.iframe = false;
    predicted.groups[0].substreams[0].iframes = {false};
    Ac4Run run;
    EXPECT_EQ(run.stream(parse_es_stream_ac4, joined({sync_frame(predicted), stereo()})),
              Status::kRuleBroken);
    EXPECT_EQ(run.sink.count(4485), 1U);
    Ac4Run later;
    (void)later.stream(parse_es_stream_ac4, joined({stereo(), sync_frame(predicted)}));
    EXPECT_EQ(later.sink.count(4485), 0U);
}

TEST(Ac4Stream, FramesAbove2MebibytesAreNotWritten) {
    // 7 + payload bytes: the largest that is written, and one more.
    for (const std::size_t size : {0x200000 - 7U, 0x200000 - 6U}) {
        Bytes frame = stereo(false, true);
        frame.resize(7 + size);
        frame[4] = static_cast<std::uint8_t>(size >> 16);
        frame[5] = static_cast<std::uint8_t>(size >> 8);
        frame[6] = static_cast<std::uint8_t>(size);
        Ac4Run run;
        run.has_context = false;
        (void)run.stream(parse_es_stream_ac4, joined({frame, stereo()}));
        EXPECT_EQ(run.sink.count(4490), 0U);
        const Bytes expected = size == 0x200000 - 7U ? joined({frame, stereo()}) : stereo();
        EXPECT_TRUE(run.output("stream.out") == expected) << size;
    }
}

TEST(Ac4Stream, LargestFrameOf24BitsIsPassedOver) {
    Bytes frame = {0xAC, 0x40, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    frame.resize(7 + 0xFFFFFF);
    Ac4Run run;
    run.has_context = false;
    (void)run.stream(parse_es_stream_ac4, joined({stereo(), frame, stereo()}));
    EXPECT_EQ(run.sink.count(4490), 0U);
    EXPECT_EQ(run.output("stream.out"), repeated(stereo(), 2));
    EXPECT_EQ(run.sink.notes(),
              std::vector<std::string>{"An AC-4 frame was not written: it is larger than 2 MiB."});
}

TEST(Ac4Stream, FramesOfOneMebibyteAreReadInFull) {
    for (const std::size_t size : {0xFFFFFU, 0x100000U, 0x100001U}) {
        Bytes frame = {0xAC,
                       0x40,
                       0xFF,
                       0xFF,
                       static_cast<std::uint8_t>(size >> 16),
                       static_cast<std::uint8_t>(size >> 8),
                       static_cast<std::uint8_t>(size)};
        frame.resize(7 + size, 0x55);
        Ac4Run run;
        run.has_context = false;
        (void)run.stream(parse_es_stream_ac4, joined({frame, frame, stereo()}));
        EXPECT_EQ(run.sink.count(4490), 0U) << size;
        EXPECT_TRUE(run.output("stream.out") == joined({frame, frame, stereo()})) << size;
    }
}

// --- CODECS -----------------------------------------------------------------------------------

TEST(Ac4StreamPlaylist, CodecsMustHaveTheVersionsOfEachFrame) {
    Ac4Run run;
    run.context.codecs = "avc1.640028,ac-4.02.01.01";
    EXPECT_EQ(run.stream(parse_es_stream_ac4, repeated(stereo(), 2)), Status::kRuleBroken);
    EXPECT_EQ(run.sink.ids(), (std::vector<int>{4393, 4393}));
    EXPECT_EQ(run.text_of(4393),
              "For an [AC4] stream, in HLS master-playlist, the attribute \"CODECS\" in the "
              "#EXT-X-STREAM-INF [index : 3] must include \"ac-4.02.01.00\".");
    EXPECT_EQ(run.sink.reports()[0].attribute, "CODECS");
    Ac4Run missing;
    missing.context.codecs.reset();
    EXPECT_EQ(read(missing, simple_stereo_frame()), Status::kRuleBroken);
    EXPECT_EQ(missing.sink.ids(), std::vector<int>{4393});
}

TEST(Ac4StreamPlaylist, MdcompatIsPartOfTheCodec) {
    BuildFrame frame = simple_stereo_frame();
    frame.presentations[0].mdcompat = 3;
    Ac4Run run;
    run.context.codecs = "ac-4.02.01.03";
    EXPECT_EQ(read(run, frame), Status::kOk);
    EXPECT_TRUE(run.sink.ids().empty());
}

// --- CHANNELS ---------------------------------------------------------------------------------

TEST(Ac4StreamPlaylist, ChannelsMustBeThere) {
    Ac4Run run;
    run.context.channels_text.reset();
    EXPECT_EQ(read(run, simple_stereo_frame()), Status::kRuleBroken);
    EXPECT_EQ(run.sink.ids(), std::vector<int>{4388});
    EXPECT_EQ(run.sink.reports()[0].position, 5U);
    EXPECT_NE(run.text_of(4388).find("[index : 5] must be included"), std::string::npos);
}

struct ModeRow {
    const char* mode;
    const char* immersive;
    const char* channels;
    std::uint32_t count;
    bool is_immersive;
};

// The counts of the modes, and of the flagged modes what their flags leave.
constexpr ModeRow kModes[] = {
    {ac4_mode::kMono, "", "1", 1, false},
    {ac4_mode::kStereo, "", "2", 2, false},
    {ac4_mode::k30, "", "3", 3, false},
    {ac4_mode::k50, "", "5", 5, false},
    {ac4_mode::k51, "", "6", 6, false},
    {ac4_mode::k70Back, "", "7", 7, false},
    {ac4_mode::k71Back, "", "8", 8, false},
    {ac4_mode::k71Wide, "", "8", 8, false},
    {ac4_mode::k71Top, "", "8", 8, false},
    {ac4_mode::k704, "1111", "11/IMSA", 11, true},
    {ac4_mode::k714, "1111", "12/IMSA", 12, true},
    {ac4_mode::k714, "1101", "10/IMSA", 10, true},
    {ac4_mode::k714, "1100", "8", 8, false},
    {ac4_mode::k904, "1111", "13/IMSA", 13, true},
    {ac4_mode::k914, "0100", "8", 8, false},
    {ac4_mode::k914, "1011", "13/IMSA", 13, true},
    {ac4_mode::k222, "", "24", 24, false},
};

TEST(Ac4StreamPlaylist, ChannelsMustBeThoseOfTheMode) {
    for (const ModeRow& row : kModes) {
        const BuildFrame frame = frame_of_mode(row.mode, row.immersive);
        Ac4Run good;
        good.context.channels_text = row.channels;
        (void)read(good, frame);
        EXPECT_EQ(good.sink.count(4394), 0U) << row.mode << good.text_of(4394);
        EXPECT_TRUE(good.sink.was_evaluated(4394));
        Ac4Run bad;
        bad.context.channels_text = "99";
        (void)read(bad, frame);
        EXPECT_EQ(bad.text_of(4394),
                  std::string("For an [AC4] stream, in HLS master-playlist, the attribute "
                              "\"CHANNELS\" in the #EXT-X-MEDIA [index : 5] mismatches the "
                              "correspond description in the Packed audio elementary stream. "
                              "(expected CHANNELS value: ") +
                      row.channels + "; actual value: 99)");
        EXPECT_EQ(bad.context.found_channels_max, 0U);
    }
}

TEST(Ac4StreamPlaylist, ParsedChannelsMustBeEnough) {
    for (const ModeRow& row : kModes) {
        const BuildFrame frame = frame_of_mode(row.mode, row.immersive);
        Ac4Run good;
        good.context.channels_text = row.channels;
        good.context.channels_parsed = 1;
        good.context.channel_count = row.count;
        (void)read(good, frame);
        EXPECT_EQ(good.sink.count(4390), 0U) << row.mode;
        EXPECT_EQ(good.context.found_channels_max, row.count) << row.mode;
        EXPECT_EQ(good.context.found_channels_valid, 1U) << row.mode;
        EXPECT_EQ(good.context.found_imsa, row.is_immersive ? 1U : 0U) << row.mode;
        Ac4Run bad;
        bad.context.channels_text = "0";
        bad.context.channels_parsed = 1;
        (void)read(bad, frame);
        EXPECT_EQ(bad.sink.count(4390), 1U) << row.mode;
        EXPECT_NE(bad.text_of(4390).find("(value: 0) in the #EXT-X-MEDIA [index : 5] is too "
                                         "small, the AC4 stream requires " +
                                         std::to_string(row.count) + " channels."),
                  std::string::npos);
        EXPECT_EQ(bad.sink.count(4394), 0U);
    }
}

TEST(Ac4StreamPlaylist, ImmersiveAudioMustBeNamed) {
    const BuildFrame frame = frame_of_mode(ac4_mode::k714, "1111");
    for (const std::uint32_t named : {0U, 1U}) {
        Ac4Run run;
        run.context.channels_text = "12/X";
        run.context.channels_parsed = 1;
        run.context.channel_count = 12;
        run.context.channels_have_identifier = 1;
        run.context.channels_imsa = named;
        (void)read(run, frame);
        EXPECT_EQ(run.sink.count(4391), 1 - named);
        EXPECT_EQ(run.context.found_imsa, 1U);
    }
    Ac4Run plain;
    plain.context.channels_text = "12";
    plain.context.channels_parsed = 1;
    plain.context.channel_count = 12;
    (void)read(plain, frame);
    EXPECT_EQ(plain.sink.count(4391), 0U);
    EXPECT_EQ(plain.context.found_imsa, 1U);
}

TEST(Ac4StreamPlaylist, ImmersiveStereoHasItsOwnText) {
    Ac4Run run;
    run.context.codecs = "ac-4.02.02.00";
    run.context.channels_text = "2/IMSA";
    EXPECT_EQ(read(run, frame_of_version(2)), Status::kOk);
    EXPECT_TRUE(run.sink.ids().empty());
    run.context.channels_text = "2";
    EXPECT_EQ(read(run, frame_of_version(2)), Status::kRuleBroken);
    EXPECT_EQ(run.sink.ids(), std::vector<int>{4394});
    run.context.channels_parsed = 1;
    run.context.channel_count = 2;
    EXPECT_EQ(read(run, frame_of_version(2)), Status::kOk);
    EXPECT_EQ(run.context.found_imsa, 1U);
    EXPECT_EQ(run.context.found_channels_valid, 1U);
}

TEST(Ac4StreamPlaylist, ObjectsHaveNoChannelRule) {
    BuildFrame frame = simple_stereo_frame();
    frame.groups[0].channel_coded = false;
    frame.groups[0].substreams[0].ajoc = "1";
    Ac4Run missing;
    missing.context.channels_text.reset();
    (void)read(missing, frame);
    EXPECT_EQ(missing.sink.count(4388), 0U);
    Ac4Run other;
    other.context.channels_text = "7";
    (void)read(other, frame);
    EXPECT_EQ(other.sink.count(4394), 0U);
}

}  // namespace
}  // namespace mediasplit
