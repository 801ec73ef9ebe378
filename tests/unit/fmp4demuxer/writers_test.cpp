#include <gtest/gtest.h>

#include <numeric>

#include "tests/unit/fmp4demuxer/demux_run.h"

namespace mediasplit {
namespace {

using mp4::Bytes;

const Bytes kIdr{0x65, 0x88, 0x84, 0x00};
const Bytes kSlice{0x41, 0x9A, 0x02};
const Bytes kDelimiter{0x09, 0x10};
const Bytes kAvcSei{0x06, 0x05, 0x01};

Bytes numbered(std::size_t count) {
    Bytes bytes(count);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    return bytes;
}

struct Written {
    Bytes bytes;
    Status status = Status::kOk;
    std::vector<int> ids;
};

Written split(mp4::TrackSpec track, const std::string& extension) {
    DemuxRun run;
    mp4::MovieSpec movie;
    movie.tracks = {std::move(track)};
    Written written;
    written.status = run.walk(mp4::plain_file(movie));
    EXPECT_EQ(run.finish(), Status::kOk);
    const auto bytes = run.output("in_track_id_1.out." + extension);
    EXPECT_TRUE(bytes.has_value());
    written.bytes = bytes.value_or(Bytes{});
    written.ids = run.sink.ids();
    return written;
}

Written split_avc(std::vector<Bytes> samples) {
    std::vector<mp4::SampleSpec> specs;
    for (Bytes& bytes : samples) {
        specs.push_back(sample(std::move(bytes)));
    }
    return split(avc_track(1, std::move(specs)), "264");
}

// --- AAC --------------------------------------------------------------------------------------

TEST(AacWriter, PutsAnAdtsHeaderAheadOfEachSample) {
    const Bytes data = numbered(200);
    const Written written = split(aac_track(1, {sample(data), sample(data)}), "aac");
    const Bytes header{0xFF, 0xF9, 0x50, 0x80, 0x19, 0xFF, 0xFC};
    EXPECT_EQ(written.bytes, mp4::join({header, data, header, data}));
    EXPECT_EQ(written.status, Status::kOk);
}

TEST(AacWriter, TakesObjectTypeFrequencyAndChannelsFromTheConfiguration) {
    mp4::TrackSpec track = aac_track(1, {sample(numbered(1))});
    // Object type 1 (Main), 48 kHz (3), 6 channels: 00001 0011 0110 000.
    track.entries = {mp4::audio_entry("mp4a", 6, 16, 48000, {mp4::esds({0x09, 0xB0})})};
    // profile 0, index 3, private 0, channels 110, four zeros, length 8.
    EXPECT_EQ(split(track, "aac").bytes, (Bytes{0xFF, 0xF9, 0x0D, 0x80, 0x01, 0x1F, 0xFC, 0x01}));
}

TEST(AacWriter, EscapedObjectTypeAndFrequencyAreNotExpanded) {
    mp4::TrackSpec track = aac_track(1, {sample(numbered(1))});
    track.entries = {mp4::audio_entry("mp4a", 2, 16, 48000, {mp4::esds({0xFF, 0xFF})})};
    // profile (31 - 1) & 3 = 2, index 15, private 0, channels 7.
    EXPECT_EQ(split(track, "aac").bytes, (Bytes{0xFF, 0xF9, 0xBD, 0xC0, 0x01, 0x1F, 0xFC, 0x01}));
}

TEST(AacWriter, TrackWithoutConfigurationReadsAsZeros) {
    mp4::TrackSpec track = aac_track(1, {sample(numbered(1))});
    track.entries = {mp4::audio_entry("mp4a", 2, 16, 48000, {mp4::esds({})})};
    // profile (0 - 1) & 3 = 3.
    EXPECT_EQ(split(track, "aac").bytes, (Bytes{0xFF, 0xF9, 0xC0, 0x00, 0x01, 0x1F, 0xFC, 0x01}));
}

TEST(AacWriter, FrameLengthKeepsItsLow13Bits) {
    const Written written = split(aac_track(1, {sample(Bytes(8192, 0))}), "aac");
    ASSERT_EQ(written.bytes.size(), 8199U);
    EXPECT_EQ(Bytes(written.bytes.begin() + 3, written.bytes.begin() + 6),
              (Bytes{0x80, 0x00, 0xFF}));
}

// --- AC-4, E-AC-3, AC-3, others ----------------------------------------------------------------

mp4::TrackSpec audio_track(std::string_view type, std::vector<mp4::SampleSpec> samples) {
    mp4::TrackSpec track;
    track.handler = "soun";
    track.entries = {mp4::audio_entry(type, 2, 16, 48000)};
    track.samples = std::move(samples);
    return track;
}

TEST(Ac4Writer, PutsASyncFrameHeaderWithALongSizeAheadOfEachSample) {
    const Bytes data = numbered(1000);
    EXPECT_EQ(split(audio_track("ac-4", {sample(data)}), "ac4").bytes,
              mp4::join({{0xAC, 0x40, 0xFF, 0xFF, 0x00, 0x03, 0xE8}, data}));
}

TEST(Ac4Writer, SizeTakesThreeBytes) {
    const Bytes data(0x12345, 0x5A);
    EXPECT_EQ(split(audio_track("ac-4", {sample(data)}), "ac4").bytes,
              mp4::join({{0xAC, 0x40, 0xFF, 0xFF, 0x01, 0x23, 0x45}, data}));
}

TEST(Ac4Writer, FirstSampleOfAWalkMustBeASyncSample) {
    DemuxRun run;
    mp4::MovieSpec movie;
    movie.tracks = {audio_track(
        "ac-4", {sample(numbered(5), false), sample(numbered(5), false), sample(numbered(5))})};
    EXPECT_EQ(run.walk(mp4::plain_file(movie)), Status::kRuleBroken);
    EXPECT_EQ(run.sink.count(4485), 1U);
    EXPECT_EQ(run.walk(mp4::plain_file(movie)), Status::kRuleBroken);
    EXPECT_EQ(run.sink.count(4485), 2U);
}

TEST(Ac4Writer, SyncFirstSampleRaisesNothing) {
    const Written written =
        split(audio_track("ac-4", {sample(numbered(5)), sample(numbered(5), false)}), "ac4");
    EXPECT_EQ(written.status, Status::kRuleBroken);  // these bytes are no frames
    EXPECT_EQ(written.ids, std::vector<int>{4402});  // and there is no box
}

TEST(RawWriter, Ec3AndAc3SamplesStandOneAfterAnother) {
    const Bytes first = numbered(7);
    const Bytes second = numbered(9);
    EXPECT_EQ(split(audio_track("ec-3", {sample(first), sample(second)}), "ec3").bytes,
              mp4::join({first, second}));
    EXPECT_EQ(split(audio_track("ac-3", {sample(first), sample(second)}), "ac3").bytes,
              mp4::join({first, second}));
}

TEST(RawWriter, UnknownCodecGoesToADataFile) {
    mp4::TrackSpec track;
    track.handler = "text";
    track.entries = {mp4::box("tx3g", {mp4::zeros(38)})};
    track.samples = {sample(numbered(3)), sample(numbered(4))};
    EXPECT_EQ(split(track, "data").bytes, mp4::join({numbered(3), numbered(4)}));
}

TEST(RawWriter, TrackWithoutSamplesLeavesAnEmptyFile) {
    EXPECT_EQ(split(audio_track("ec-3", {}), "ec3").bytes, Bytes{});
}

// --- H.264 ------------------------------------------------------------------------------------

TEST(AvcWriter, ReplacesLengthsByStartCodes) {
    const Written written = split_avc({length_prefixed({kSlice, kAvcSei})});
    EXPECT_EQ(written.bytes, start_coded({kSlice, kAvcSei}));
    EXPECT_EQ(written.status, Status::kOk);
}

TEST(AvcWriter, PutsParameterSetsAheadOfASampleWithAnIdrUnit) {
    EXPECT_EQ(split_avc({length_prefixed({kAvcSei, kIdr, kIdr})}).bytes,
              start_coded({kAvcSps, kAvcPps, kAvcSei, kIdr, kIdr}));
}

TEST(AvcWriter, DelimiterStaysFirst) {
    EXPECT_EQ(split_avc({length_prefixed({kDelimiter, kIdr})}).bytes,
              start_coded({kDelimiter, kAvcSps, kAvcPps, kIdr}));
}

TEST(AvcWriter, SampleWithoutIdrGetsNoParameterSets) {
    EXPECT_EQ(split_avc({length_prefixed({kIdr}), length_prefixed({kDelimiter, kSlice})}).bytes,
              start_coded({kAvcSps, kAvcPps, kIdr, kDelimiter, kSlice}));
}

TEST(AvcWriter, ParameterSetsGoInAtEachIdrSample) {
    EXPECT_EQ(split_avc({length_prefixed({kIdr}), length_prefixed({kIdr})}).bytes,
              start_coded({kAvcSps, kAvcPps, kIdr, kAvcSps, kAvcPps, kIdr}));
}

TEST(AvcWriter, InBandParameterSetsStayBesideTheInsertedOnes) {
    EXPECT_EQ(split_avc({length_prefixed({kAvcSps, kAvcPps, kIdr})}).bytes,
              start_coded({kAvcSps, kAvcPps, kAvcSps, kAvcPps, kIdr}));
}

TEST(AvcWriter, AllLengthSizesGiveFourByteStartCodes) {
    for (const unsigned size : {1U, 2U, 3U, 4U}) {
        mp4::TrackSpec track = avc_track(1, {sample(length_prefixed({kSlice, kIdr}, size))});
        track.entries = {
            mp4::video_entry("avc1", 640, 360, {mp4::avcC({kAvcSps}, {kAvcPps}, size - 1)})};
        EXPECT_EQ(split(track, "264").bytes, start_coded({kAvcSps, kAvcPps, kSlice, kIdr})) << size;
    }
}

TEST(AvcWriter, UnitThatPassesTheSampleIsCutAndToldInBothPasses) {
    Bytes data = length_prefixed({kSlice});
    data.insert(data.end(), {0, 0, 0, 9, 0x41, 0x01});
    const Written written = split_avc({data});
    EXPECT_EQ(written.bytes, start_coded({kSlice, {0x41, 0x01}}));
    EXPECT_EQ(written.ids, (std::vector<int>{4073, 4073}));
    EXPECT_EQ(written.status, Status::kFailed);
}

TEST(AvcWriter, UnitThatEndsWithTheSampleIsWhole) {
    EXPECT_TRUE(split_avc({length_prefixed({kSlice})}).ids.empty());
}

TEST(AvcWriter, OverrunTellsClaimedAndRemainingBytes) {
    DemuxRun run;
    mp4::MovieSpec movie;
    movie.tracks = {avc_track(1, {sample({0, 0, 1, 0, 0x41, 0x01, 0x02})})};
    EXPECT_EQ(run.walk(mp4::plain_file(movie)), Status::kFailed);
    ASSERT_FALSE(run.sink.reports().empty());
    EXPECT_EQ(run.sink.reports()[0].text,
              "In MP4 bitstream, one NAL size (256 bytes) exceeds the remaining data (3 bytes)");
}

TEST(AvcWriter, LengthCutShortGivesAStartCodeAlone) {
    Bytes data = length_prefixed({kSlice});
    data.insert(data.end(), {0, 0});
    const Written written = split_avc({data});
    EXPECT_EQ(written.bytes, start_coded({kSlice, {}}));
    EXPECT_EQ(written.ids, (std::vector<int>{4073, 4073}));
}

TEST(AvcWriter, EmptyUnitWritesItsStartCode) {
    const Written written = split_avc({length_prefixed({{}, kSlice})});
    EXPECT_EQ(written.bytes, start_coded({{}, kSlice}));
    EXPECT_TRUE(written.ids.empty());
}

TEST(AvcWriter, TrackWithoutConfigurationWritesNothing) {
    mp4::TrackSpec track = avc_track(1, {sample(length_prefixed({kIdr}))});
    track.entries = {mp4::video_entry("avc1", 640, 360)};
    EXPECT_EQ(split(track, "264").bytes, Bytes{});
}

TEST(AvcWriter, PayloadBytesStayWhateverTheyAre) {
    Bytes unit(300000);
    for (std::size_t i = 0; i < unit.size(); ++i) {
        unit[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
    }
    unit[0] = 0x41;
    EXPECT_EQ(split_avc({length_prefixed({unit, unit})}).bytes, start_coded({unit, unit}));
}

// --- H.265 ------------------------------------------------------------------------------------

const Bytes kVps{0x40, 0x01, 0x0C};
const Bytes kSps{0x42, 0x01, 0x01};
const Bytes kPps{0x44, 0x01, 0xC1};
const Bytes kSei{0x4E, 0x01, 0x05};
const Bytes kIdrW{0x26, 0x01, 0xAF};   // type 19
const Bytes kIdrN{0x28, 0x01, 0xAF};   // type 20
const Bytes kCra{0x2A, 0x01, 0xAF};    // type 21
const Bytes kTrail{0x02, 0x01, 0xD0};  // type 1

mp4::TrackSpec hevc_track(std::vector<Bytes> samples) {
    mp4::TrackSpec track;
    track.entries = {mp4::video_entry(
        "hvc1", 640, 360, {mp4::hvcC({{32, {kVps}}, {33, {kSps}}, {34, {kPps}}, {39, {kSei}}})})};
    for (Bytes& bytes : samples) {
        track.samples.push_back(sample(std::move(bytes)));
    }
    return track;
}

Bytes split_hevc(std::vector<Bytes> samples) {
    const Written written = split(hevc_track(std::move(samples)), "265");
    EXPECT_EQ(written.status, Status::kOk);
    return written.bytes;
}

TEST(HevcWriter, PutsConfigurationUnitsAheadOfTheFirstIdrUnit) {
    for (const Bytes& idr : {kIdrW, kIdrN}) {
        EXPECT_EQ(split_hevc({length_prefixed({kSei, idr, idr})}),
                  start_coded({kSei, kVps, kSps, kPps, kSei, idr, idr}));
    }
}

TEST(HevcWriter, OtherRandomAccessTypesGetNoConfigurationUnits) {
    EXPECT_EQ(split_hevc({length_prefixed({kCra}), length_prefixed({kTrail})}),
              start_coded({kCra, kTrail}));
}

TEST(HevcWriter, InBandVpsOrSpsCountAsWritten) {
    EXPECT_EQ(split_hevc({length_prefixed({kVps, kSps, kIdrW})}), start_coded({kVps, kSps, kIdrW}));
    EXPECT_EQ(split_hevc({length_prefixed({kVps, kIdrW})}), start_coded({kVps, kIdrW}));
    EXPECT_EQ(split_hevc({length_prefixed({kSps, kIdrW})}), start_coded({kSps, kIdrW}));
}

TEST(HevcWriter, InBandPpsAloneDoesNotCountAsWritten) {
    EXPECT_EQ(split_hevc({length_prefixed({kPps, kIdrW})}),
              start_coded({kPps, kVps, kSps, kPps, kSei, kIdrW}));
}

TEST(HevcWriter, EachSampleStartsAfresh) {
    EXPECT_EQ(split_hevc({length_prefixed({kVps, kIdrW}), length_prefixed({kIdrW})}),
              start_coded({kVps, kIdrW, kVps, kSps, kPps, kSei, kIdrW}));
}

TEST(HevcWriter, TwoLengthBytesGiveFourByteStartCodes) {
    mp4::TrackSpec track = hevc_track({length_prefixed({kTrail, kTrail}, 2)});
    track.entries = {mp4::video_entry("hev1", 640, 360, {mp4::hvcC({{32, {kVps}}}, 1)})};
    EXPECT_EQ(split(track, "265").bytes, start_coded({kTrail, kTrail}));
}

TEST(HevcWriter, UnitThatPassesTheSampleIsCutAndTold) {
    Bytes data = length_prefixed({kTrail});
    data.insert(data.end(), {0, 0, 0, 9, 0x02, 0x01});
    const Written written = split(hevc_track({data}), "265");
    EXPECT_EQ(written.bytes, start_coded({kTrail, {0x02, 0x01}}));
    EXPECT_EQ(written.ids, (std::vector<int>{4073}));
}

TEST(HevcWriter, LargeUnitComesOutWhole) {
    Bytes unit(5000, 0xAB);
    unit[0] = 0x02;
    EXPECT_EQ(split_hevc({length_prefixed({unit})}), start_coded({unit}));
}

TEST(HevcWriter, TrackWithoutConfigurationWritesNothing) {
    mp4::TrackSpec track = hevc_track({length_prefixed({kIdrW})});
    track.entries = {mp4::video_entry("hvc1", 640, 360)};
    EXPECT_EQ(split(track, "265").bytes, Bytes{});
}

// --- AV1 --------------------------------------------------------------------------------------

TEST(Av1Writer, PlainTrackLeavesAnEmptyFile) {
    mp4::TrackSpec track;
    track.entries = {
        mp4::video_entry("av01", 640, 360, {mp4::box("av1C", {mp4::hex("81000c00")})})};
    track.samples = {sample({0x12, 0x00, 0x0A, 0x01, 0x00})};
    EXPECT_EQ(split(track, "obu").bytes, Bytes{});
}

TEST(Av1Writer, TrackWithEnhancementConfigurationIsWrittenAsStored) {
    mp4::TrackSpec track;
    track.entries = {mp4::video_entry(
        "av01", 640, 360,
        {mp4::box("av1C", {mp4::hex("81000c00")}), mp4::prsm_config("pxvC", 10, 5, 1)})};
    track.samples = {sample({0x12, 0x00, 0x32, 0x02, 0xAA, 0xBB}), sample({0x12, 0x00})};
    EXPECT_EQ(split(track, "obu").bytes, (Bytes{0x12, 0x00, 0x32, 0x02, 0xAA, 0xBB, 0x12, 0x00}));
}

}  // namespace
}  // namespace mediasplit
