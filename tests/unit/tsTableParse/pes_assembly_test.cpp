#include <gtest/gtest.h>

#include "tests/unit/tsTableParse/ts_run.h"

namespace mediasplit {
namespace {

constexpr std::uint16_t kVideo = 0x101;
constexpr std::uint16_t kAudio = 0x102;
constexpr const char* kVideoFile = "main_PID_257.out.h264";
constexpr const char* kAudioFile = "main_PID_258.out.adts";

TsBuilder two_streams() {
    return one_program({{0x1B, kVideo, {}}, {0x0F, kAudio, {}}});
}

Bytes joined(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

TEST(PesAssembly, PacketThatEndsWithItsTransportPacketIsWrittenAtOnce) {
    TsBuilder builder = two_streams();
    builder.pes(kVideo, {.payload = pattern(2 * 184 - 9, 1)});
    builder.packet(kVideo, false, pattern(184, 7));  // belongs to no PES packet
    EXPECT_EQ(demux(builder.bytes()).files.at(kVideoFile), pattern(2 * 184 - 9, 1));
}

TEST(PesAssembly, EarlyStartWritesWhatIsThere) {
    TsBuilder builder = two_streams();
    Bytes pes = pes_bytes({.payload = pattern(500, 1)});
    builder.packet(kVideo, true, Bytes(pes.begin(), pes.begin() + 184));
    builder.pes(kVideo, {.payload = pattern(20, 2)});
    EXPECT_EQ(demux(builder.bytes()).files.at(kVideoFile),
              joined(pattern(184 - 9, 1), pattern(20, 2)));
}

TEST(PesAssembly, LengthBelowTheHeaderNeverCompletes) {
    TsBuilder builder = two_streams();
    Bytes pes = pes_bytes({.pts = 5, .payload = pattern(20, 1)});
    pes[4] = 0;
    pes[5] = 3;
    builder.packet(kVideo, true, pes);
    builder.packet(kVideo, false, pattern(100, 3));
    EXPECT_TRUE(demux(builder.bytes()).files.at(kVideoFile).empty());
}

TEST(PesAssembly, EndOfFileWritesThePartialPacket) {
    TsBuilder builder = two_streams();
    Bytes pes = pes_bytes({.stream_id = 0xC0, .payload = pattern(500, 1)});
    builder.packet(kAudio, true, Bytes(pes.begin(), pes.begin() + 184));
    EXPECT_EQ(demux(builder.bytes()).files.at(kAudioFile), pattern(175, 1));
}

TEST(PesAssembly, UnboundedPacketRunsToTheNextStart) {
    TsBuilder builder = two_streams();
    builder.pes(kVideo, {.payload = pattern(70000, 1), .bounded = false});
    builder.pes(kVideo, {.payload = pattern(70000, 2), .bounded = false});
    EXPECT_EQ(demux(builder.bytes()).files.at(kVideoFile),
              joined(pattern(70000, 1), pattern(70000, 2)));
}

TEST(PesAssembly, UnboundedPacketBeyondTheBufferGoesOn) {
    TsBuilder builder = two_streams();
    const Bytes payload = pattern(2500000, 1);
    builder.pes(kVideo, {.payload = payload, .bounded = false});
    EXPECT_EQ(demux(builder.bytes()).files.at(kVideoFile), payload);
}

TEST(PesAssembly, UnboundedPacketThatFillsTheBufferWithAPacketDropsTheRest) {
    // The 1,000,000th byte is the last one of a transport packet when the first packet holds 134:
    // 1,000,000 = 134 + 5434 x 184 + 10, so a packet of 10 bytes is put in.
    TsBuilder builder = two_streams();
    const Bytes payload = pattern(1000000, 1);
    const Bytes pes = pes_bytes({.payload = payload, .bounded = false});
    builder.packet(kVideo, true, Bytes(pes.begin(), pes.begin() + 9 + 134));
    std::size_t at = 9 + 134;
    builder.packet(kVideo, false, Bytes(pes.begin() + 143, pes.begin() + 153));
    at += 10;
    for (; at < pes.size(); at += 184) {
        builder.packet(
            kVideo, false,
            Bytes(pes.begin() + static_cast<std::ptrdiff_t>(at),
                  pes.begin() + static_cast<std::ptrdiff_t>(std::min(at + 184, pes.size()))));
    }
    builder.packet(kVideo, false, pattern(184, 9));
    EXPECT_EQ(demux(builder.bytes()).files.at(kVideoFile), payload);
}

TEST(PesAssembly, BytesBehindACompletePacketBeginANewOne) {
    TsBuilder builder = two_streams();
    Bytes pes = pes_bytes({.payload = pattern(100, 1)});
    const Bytes behind = pattern(40, 8);
    builder.packet(kVideo, true, joined(pes, behind));
    builder.pes(kVideo, {.payload = pattern(30, 2)});
    EXPECT_EQ(demux(builder.bytes()).files.at(kVideoFile),
              joined(joined(pattern(100, 1), behind), pattern(30, 2)));
}

TEST(PesAssembly, BytesBehindAShortPacketAreAllKept) {
    TsBuilder builder = two_streams();
    Bytes pes = pes_bytes({.payload = pattern(10, 1)});
    const Bytes behind = pattern(150, 8);
    builder.packet(kVideo, true, joined(pes, behind));
    builder.packet(kVideo, false, pattern(100, 4));
    EXPECT_EQ(demux(builder.bytes()).files.at(kVideoFile),
              joined(joined(pattern(10, 1), behind), pattern(100, 4)));
}

TEST(PesAssembly, HeaderBeyondTheTransportPacketTakesNoPayload) {
    TsBuilder builder = two_streams();
    Bytes pes = pes_bytes({.payload = pattern(170, 1), .bounded = false});
    pes[8] = 255;
    builder.packet(kVideo, true, pes);
    builder.packet(kVideo, false, pattern(50, 2));
    EXPECT_EQ(demux(builder.bytes()).files.at(kVideoFile), pattern(50, 2));
}

TEST(PesAssembly, TimestampFlagsOfOneAreNoPts) {
    TsBuilder builder = two_streams();
    Bytes pes = pes_bytes({.stream_id = 0xC0, .pts = 77, .payload = pattern(20, 1)});
    pes[7] = 0x40;
    builder.packet(kAudio, true, pes);
    EXPECT_EQ(demux(builder.bytes()).summary.audio[0].first_pts, -1);
}

TEST(PesAssembly, PtsOfThirtyThreeBitsIsRead) {
    TsBuilder builder = two_streams();
    builder.pes(kAudio, {.stream_id = 0xC0, .pts = 0x1ABCDEF01, .payload = pattern(20, 1)});
    EXPECT_EQ(demux(builder.bytes()).summary.audio[0].first_pts, 0x1ABCDEF01);
}

TEST(PesAssembly, PtsBelowDtsIsReportedInTheUpperHalfOnly) {
    const auto run = [](std::uint64_t pts, std::uint64_t dts) {
        TsBuilder builder = two_streams();
        builder.pes(kVideo, {.pts = pts, .dts = dts, .payload = pattern(20, 1)});
        return demux(builder.bytes());
    };
    EXPECT_EQ(
        run(0x100000000, 0x100000001).text(4105),
        "In TS PES packet, the PTS is smaller than the DTS. PTS : 4294967296, DTS : 4294967297.");
    EXPECT_EQ(run(0x100000001, 0x100000001).count(4105), 0U);
    EXPECT_EQ(run(10, 11).count(4105), 0U);
}

TEST(PesAssembly, Eac3OutsidePrivateStreamIsRefusedAndDropped) {
    TsBuilder builder = one_program({{0x87, kAudio, {}}});
    builder.pes(kAudio, {.stream_id = 0xC0, .payload = pattern(300, 1)});
    const TsRun run = demux(builder.bytes());
    EXPECT_EQ(run.count(4330), 1U);
    EXPECT_EQ(run.status, Status::kRuleBroken);
    EXPECT_TRUE(run.files.at("main_PID_258.out.ec3").empty());
}

TEST(PesAssembly, Ac4OutsidePrivateStreamIsRefusedAndDropped) {
    const auto run = [](std::uint8_t stream_id) {
        TsBuilder builder = one_program({{0x06, kAudio, descriptor(0x7F, {0})}});
        builder.pes(kAudio, {.stream_id = stream_id, .payload = pattern(300, 1)});
        return demux(builder.bytes());
    };
    EXPECT_EQ(run(0xC0).count(4483), 1U);
    EXPECT_TRUE(run(0xC0).files.at("main_PID_258.out.ac4").empty());
    EXPECT_EQ(run(0xBD).count(4483), 0U);
    EXPECT_EQ(run(0xBD).files.at("main_PID_258.out.ac4"), pattern(300, 1));
}

TEST(PesAssembly, StreamNamedTwiceInATableCountsOnce) {
    const auto run = [](std::uint8_t stream_id) {
        TsBuilder builder = one_program({{0x87, kAudio, {}}, {0x87, kAudio, {}}});
        builder.pes(kAudio, {.stream_id = stream_id, .payload = pattern(300, 1)});
        return demux(builder.bytes());
    };
    EXPECT_EQ(run(0xBD).count(4317), 1U);
    EXPECT_EQ(run(0xC0).count(4330), 1U);
}

TEST(PesAssembly, StreamOfTwoProgramsCountsForEach) {
    TsBuilder builder;
    builder.pat({{1, 0x100}, {2, 0x110}});
    builder.pmt(0x100, 1, {{0x87, kAudio, {}}}).pmt(0x110, 2, {{0x87, kAudio, {}}});
    builder.pes(kAudio, {.stream_id = 0xBD, .payload = pattern(300, 1)});
    EXPECT_EQ(demux(builder.bytes()).count(4317), 2U);
}

TEST(PesAssembly, Eac3WithoutItsDescriptorIsReportedOnCompletionOnly) {
    TsBuilder builder = one_program({{0x87, kAudio, {}}});
    builder.pes(kAudio, {.stream_id = 0xBD, .payload = pattern(300, 1)});
    EXPECT_EQ(demux(builder.bytes()).count(4317), 1U);
    TsBuilder open = one_program({{0x87, kAudio, {}}});
    open.pes(kAudio, {.stream_id = 0xBD, .payload = pattern(300, 1), .bounded = false});
    const TsRun run = demux(open.bytes());
    EXPECT_EQ(run.count(4317), 0U);
    EXPECT_EQ(run.files.at("main_PID_258.out.ec3"), pattern(300, 1));
}

TEST(PesAssembly, TwoAudioStreamsAreKeptApart) {
    TsBuilder builder = one_program({{0x0F, 0x110, {}}, {0x0F, 0x111, {}}});
    builder.pes(0x111, {.stream_id = 0xC1, .pts = 200, .payload = pattern(30, 2)});
    builder.pes(0x110, {.stream_id = 0xC0, .pts = 100, .payload = pattern(20, 1)});
    const TsRun run = demux(builder.bytes());
    EXPECT_EQ(run.files.at("main_PID_272.out.adts"), pattern(20, 1));
    EXPECT_EQ(run.files.at("main_PID_273.out.adts"), pattern(30, 2));
    EXPECT_EQ(run.summary.count, 2U);
    EXPECT_EQ(run.summary.audio[0].first_pts, 100);
    EXPECT_EQ(run.summary.audio[1].first_pts, 200);
}

}  // namespace
}  // namespace mediasplit
