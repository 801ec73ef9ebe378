#include <gtest/gtest.h>

#include "src/tsTableParse/ts_demux.h"
#include "tests/unit/tsTableParse/ts_run.h"

namespace mediasplit {
namespace {

constexpr std::uint16_t kVideo = 0x101;
constexpr std::uint16_t kAudio = 0x102;

TsBuilder video_program() {
    return one_program({{0x1B, kVideo, {}}});
}

TEST(PacketLayer, EmptyFileEndsWithLostSync) {
    const TsRun run = demux({});
    EXPECT_EQ(run.count(4074), 1U);
    EXPECT_TRUE(has_failed(run.status));
    EXPECT_TRUE(run.files.empty());
}

TEST(PacketLayer, SinglePatPacketGivesNothing) {
    const TsRun run = demux(TsBuilder().pat({{1, 0x100}}).bytes());
    EXPECT_EQ(run.status, Status::kOk);
    EXPECT_TRUE(run.files.empty());
    EXPECT_TRUE(run.reports.empty());
}

TEST(PacketLayer, FirstPacketWithoutSyncFails) {
    Bytes bytes = TsBuilder().pat({{1, 0x100}}).bytes();
    bytes[0] = 0x46;
    EXPECT_EQ(demux(bytes).count(4074), 1U);
}

TEST(PacketLayer, OneDamagedSyncByteIsReadAsItStands) {
    TsBuilder builder = video_program();
    builder.pes(kVideo, {.payload = pattern(300, 1)});
    builder.pes(kVideo, {.payload = pattern(300, 2)});
    Bytes bytes = builder.bytes();
    bytes[3 * 188] = 0;
    const TsRun run = demux(bytes);
    EXPECT_EQ(run.status, Status::kOk);
    Bytes expected = pattern(300, 1);
    const Bytes second = pattern(300, 2);
    expected.insert(expected.end(), second.begin(), second.end());
    EXPECT_EQ(run.files.at("main_PID_257.out.h264"), expected);
}

TEST(PacketLayer, TwoDamagedSyncBytesEndTheRunWithoutFlushing) {
    TsBuilder builder = video_program();
    builder.pes(kVideo, {.payload = pattern(100, 1)});
    builder.pes(kVideo, {.payload = pattern(1000, 2), .bounded = false});
    Bytes bytes = builder.bytes();
    bytes[5 * 188] = 0;
    bytes[6 * 188] = 0;
    const TsRun run = demux(bytes);
    EXPECT_EQ(run.count(4074), 1U);
    EXPECT_TRUE(has_failed(run.status));
    EXPECT_EQ(run.files.at("main_PID_257.out.h264"), pattern(100, 1));
}

TEST(PacketLayer, PacketsOf192BytesLoseSync) {
    Bytes bytes;
    const Bytes packets = video_program().pes(kVideo, {.payload = pattern(900, 1)}).bytes();
    for (std::size_t at = 0; at < packets.size(); at += 188) {
        bytes.insert(bytes.end(), packets.begin() + static_cast<std::ptrdiff_t>(at),
                     packets.begin() + static_cast<std::ptrdiff_t>(at + 188));
        bytes.insert(bytes.end(), {1, 2, 3, 4});
    }
    EXPECT_EQ(demux(bytes).count(4074), 1U);
}

TEST(PacketLayer, TrailingPartOfAPacketIsIgnored) {
    TsBuilder builder = video_program();
    builder.pes(kVideo, {.payload = pattern(100, 1)});
    Bytes bytes = builder.bytes();
    bytes.insert(bytes.end(), {0x47, 0x41, 0x01});
    const TsRun run = demux(bytes);
    EXPECT_EQ(run.status, Status::kOk);
    EXPECT_EQ(run.files.at("main_PID_257.out.h264"), pattern(100, 1));
}

TEST(PacketLayer, PacketWithoutPayloadReachesNothing) {
    TsBuilder builder = video_program();
    builder.pes(kVideo, {.payload = pattern(100, 1), .bounded = false});
    // A start indicator in a packet of nothing but an adaptation field begins no PES packet.
    builder.raw({0x47, 0x41, 0x01, 0x20, 183, 0});
    builder.packet(kVideo, false, pattern(50, 9));
    Bytes expected = pattern(100, 1);
    const Bytes more = pattern(50, 9);
    expected.insert(expected.end(), more.begin(), more.end());
    EXPECT_EQ(demux(builder.bytes()).files.at("main_PID_257.out.h264"), expected);
}

TEST(PacketLayer, AdaptationFieldOfAllThePacketLeavesNoPayload) {
    TsBuilder builder = video_program();
    builder.pes(kVideo, {.payload = pattern(100, 1), .bounded = false});
    builder.raw({0x47, 0x01, 0x01, 0x30, 183, 0});
    EXPECT_EQ(demux(builder.bytes()).files.at("main_PID_257.out.h264"), pattern(100, 1));
}

TEST(PacketLayer, EveryAdaptationFieldLengthEnds) {
    for (int length = 0; length < 256; ++length) {
        for (const int start : {0x00, 0x40}) {
            for (const int pid : {0x000, 0x100, 0x101}) {
                TsBuilder builder = video_program();
                builder.raw(
                    {0x47, static_cast<std::uint8_t>(start | pid >> 8),
                     static_cast<std::uint8_t>(pid), 0x30, static_cast<std::uint8_t>(length)},
                    0xFF);
                demux(builder.bytes());
            }
        }
    }
}

TEST(PacketLayer, NullPacketsAndUnknownPidsAreIgnored) {
    TsBuilder builder = video_program();
    builder.packet(0x1FFF, true, pattern(184, 3)).packet(0x0333, true, pattern(184, 4));
    builder.pes(kVideo, {.payload = pattern(10, 1)});
    const TsRun run = demux(builder.bytes());
    EXPECT_EQ(run.status, Status::kOk);
    EXPECT_EQ(run.files.size(), 1U);
}

TEST(PacketLayer, PayloadAheadOfTheTablesIsDropped) {
    TsBuilder builder;
    builder.pes(kVideo, {.payload = pattern(100, 5)});
    builder.pat({{1, 0x100}}).pmt(0x100, 1, {{0x1B, kVideo, {}}});
    builder.pes(kVideo, {.payload = pattern(100, 1)});
    EXPECT_EQ(demux(builder.bytes()).files.at("main_PID_257.out.h264"), pattern(100, 1));
}

TEST(PacketLayer, ClockReferenceLosesItsTopBit) {
    const auto context = tsOpen(1, nullptr, false, nullptr);
    // base 0x1_2345_6789, extension 0x155
    constexpr std::uint64_t kBase = 0x123456789;
    context->packet.storage = {0x47,
                               0,
                               0,
                               0x20,
                               7,
                               0x10,
                               static_cast<std::uint8_t>(kBase >> 25),
                               static_cast<std::uint8_t>(kBase >> 17),
                               static_cast<std::uint8_t>(kBase >> 9),
                               static_cast<std::uint8_t>(kBase >> 1),
                               static_cast<std::uint8_t>((kBase & 1) << 7 | 1),
                               0x55};
    tsPacketParseHeader(*context);
    tsPacketParseAdaptationField(*context);
    EXPECT_EQ(context->pcr_base, 0x23456789);
    EXPECT_EQ(context->pcr_extension, 0x155);
    context->packet.storage[4] = 0;
    tsPacketParseAdaptationField(*context);
    EXPECT_EQ(context->pcr_base, 0);
}

TEST(PacketLayer, HeaderFieldsAreTold) {
    const auto context = tsOpen(1, nullptr, false, nullptr);
    context->packet.storage = {0x47, 0xF2, 0x34, 0x1B};
    tsPacketParseHeader(*context);
    EXPECT_TRUE(context->transport_error_indicator);
    EXPECT_TRUE(context->payload_unit_start_indicator);
    EXPECT_TRUE(context->transport_priority);
    EXPECT_EQ(context->pid, 0x1234);
    EXPECT_EQ(context->adaptation_field_control, 1U);
    EXPECT_EQ(context->continuity_counter, 0x0BU);
}

TEST(PacketLayer, SummaryTellsPtsRanges) {
    TsBuilder builder = one_program({{0x1B, kVideo, {}}, {0x0F, kAudio, {}}});
    builder.pes(kVideo, {.pts = 9000, .payload = pattern(10, 1)});
    builder.pes(kAudio, {.stream_id = 0xC0, .pts = 9100, .payload = pattern(10, 2)});
    builder.pes(kVideo, {.pts = 16200, .payload = pattern(10, 3)});
    builder.pes(kVideo, {.pts = 12600, .payload = pattern(10, 4)});
    builder.pes(kAudio, {.stream_id = 0xC0, .pts = 11020, .payload = pattern(10, 5)});
    const TsRun run = demux(builder.bytes());
    EXPECT_EQ(run.summary.count, 1U);
    EXPECT_EQ(run.summary.audio[0].stream_type, 0x0FU);
    EXPECT_EQ(run.summary.audio[0].first_pts, 9100);
    EXPECT_EQ(run.summary.audio[0].end_pts, 11020);
    EXPECT_EQ(run.summary.first_video_pts, 9000);
    EXPECT_EQ(run.summary.video_end_pts, 16200 + 7200 / 2);
}

TEST(PacketLayer, SummaryHasNoVideoTimesForOnePicture) {
    TsBuilder builder = video_program();
    builder.pes(kVideo, {.pts = 9000, .payload = pattern(10, 1)});
    EXPECT_EQ(demux(builder.bytes()).summary.first_video_pts, -1);
}

TEST(PacketLayer, SeriesAddsToTheFiles) {
    const Bytes one = video_program().pes(kVideo, {.payload = pattern(300, 1)}).bytes();
    const Bytes two = video_program().pes(kVideo, {.payload = pattern(200, 2)}).bytes();
    Bytes expected = pattern(300, 1);
    const Bytes second = pattern(200, 2);
    expected.insert(expected.end(), second.begin(), second.end());
    EXPECT_EQ(demux_series({one, two}).files.at("main_PID_257.out.h264"), expected);
}

TEST(PacketLayer, EveryTruncationAndEveryChangedByteEnds) {
    TsBuilder builder =
        one_program({{0x1B, kVideo, descriptor(0xB0, {1, 0, 8, 0x15, 0x10})},
                     {0x06, kAudio, descriptor(0x7A, {0x7F, 0xFF, 0xFF, 1, 2, 3})}});
    builder.pes(kVideo, {.pts = 1, .dts = 1, .payload = pattern(200, 1)});
    builder.pes(kAudio, {.stream_id = 0xBD, .pts = 1, .payload = pattern(100, 1)});
    const Bytes bytes = builder.bytes();
    for (std::size_t size = 0; size < bytes.size(); size += 3) {
        demux(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)));
    }
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        Bytes changed = bytes;
        changed[at] ^= 0xFF;
        demux(changed);
    }
}

}  // namespace
}  // namespace mediasplit
