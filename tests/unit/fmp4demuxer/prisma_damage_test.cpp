// Damaged bitstreams of enhancement tracks: nothing outside is read, and the rest is still told.
#include <gtest/gtest.h>

#include "src/fmp4demuxer/writers/av1_headers.h"
#include "src/video/leb128.h"
#include "tests/support/nal_builder.h"
#include "tests/unit/fmp4demuxer/demux_run.h"

namespace mediasplit {
namespace {

using mp4::Bytes;

// A sequence header of `points` operating points; the first has level 13 and tier 1.
Bytes sequence_header(std::uint32_t points) {
    testing::BitWriter out;
    out.u(0, 3).u(0, 1).u(0, 1).flag(false).flag(false).u(points - 1, 5);
    for (std::uint32_t i = 0; i < points; ++i) {
        out.u(i, 12).u(i == 0 ? 13 : i % 8, 5);
        if (i == 0) {
            out.u(1, 1);
        }
    }
    out.u(10, 4).u(9, 4).u(1279, 11).u(719, 10).u(0, 1).u(0, 3);
    out.u(0, 4).flag(true).u(0, 2).flag(true).flag(true).u(6, 3).u(0, 3);
    out.flag(true).flag(false).flag(true).u(9, 8).u(16, 8).u(9, 8).flag(false).u(2, 2);
    out.flag(false).trailing();
    return out.bytes();
}

TEST(Av1SequenceHeader, HasUpTo32OperatingPoints) {
    for (const std::uint32_t points : {1U, 2U, 31U, 32U}) {
        const Av1SequenceHeader header = read_sequence_header(sequence_header(points));
        EXPECT_EQ(header.seq_level_idx_0, 13U);
        EXPECT_EQ(header.seq_tier_0, 1U);
        EXPECT_EQ(header.high_bitdepth, 1U);
        EXPECT_EQ(header.color_primaries, 9U);
        EXPECT_EQ(header.transfer_characteristics, 16U);
        EXPECT_EQ(header.matrix_coefficients, 9U);
        EXPECT_EQ(header.chroma_sample_position, 2U);
    }
}

TEST(Av1SequenceHeader, CutAnywhereReadsAsZerosBehindTheCut) {
    for (const std::uint32_t points : {1U, 32U}) {
        const Bytes whole = sequence_header(points);
        for (std::size_t size = 0; size < whole.size(); ++size) {
            const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            const Av1SequenceHeader header = read_sequence_header(cut);
            // What stands ahead of the cut is read; what the cut is in or ahead of is zeros.
            EXPECT_EQ(header.seq_level_idx_0, size > 3 ? 13U : header.seq_level_idx_0);
            EXPECT_EQ(header.seq_profile, 0U);
            if (size + 6 < whole.size()) {
                EXPECT_EQ(header.matrix_coefficients, 2U) << size;
            }
        }
        EXPECT_EQ(read_sequence_header({}).color_primaries, 2U);
    }
}

TEST(Leb128, TakesEightBytesAtMost) {
    const Bytes nine{0x81, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x01, 0xFF};
    std::uint32_t at = 0;
    EXPECT_EQ(read_leb128(at, nine), 1U);
    EXPECT_EQ(at, 64U);
    const Bytes largest(9, 0xFF);
    at = 0;
    EXPECT_EQ(read_leb128(at, largest), (std::uint64_t{1} << 56) - 1);
    EXPECT_EQ(at, 64U);
    const Bytes cut{0x80, 0x80};
    at = 0;
    EXPECT_EQ(read_leb128(at, cut), 0U);
}

TEST(Obu, SizesOfNineBytesAndOfNothingEnd) {
    for (const Bytes& sample :
         {Bytes{0x0A, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x01, 0xFF}, Bytes{0x0A},
          Bytes{0x0A, 0x00}, Bytes{0x0E}, Bytes{0x0C}, Bytes(11, 0xFF), Bytes(3, 0x00)}) {
        ByteSpan rest(sample);
        std::size_t units = 0;
        while (!rest.empty()) {
            const std::size_t before = rest.size();
            static_cast<void>(take_obu(rest));
            ASSERT_LT(rest.size(), before);
            ++units;
        }
        EXPECT_LE(units, sample.size());
    }
}

mp4::MovieSpec hevc_movie(const Bytes& sample, std::uint32_t profile) {
    mp4::MovieSpec movie;
    mp4::TrackSpec track;
    track.entries = {mp4::video_entry(
        "pxhe", 1280, 720,
        {mp4::hvcC({{32, {testing::build_hevc_vps({})}}, {33, {testing::build_hevc_sps({})}}}),
         mp4::prsm_config(profile == 8 ? "pxvC" : "pxcC", profile, 2, 1)})};
    mp4::SampleSpec spec;
    spec.data = sample;
    track.samples = {spec};
    movie.tracks = {track};
    return movie;
}

TEST(HevcMetadataUnit, OfAnySizeIsWrittenAsItIs) {
    for (const std::size_t size : {2U, 3U, 511U, 512U, 513U, 700U, 70000U}) {
        Bytes unit(size, 0xA5);
        unit[0] = 0x7C;
        unit[1] = 0x01;
        for (const std::uint32_t profile : {4U, 8U}) {
            DemuxRun run;
            static_cast<void>(
                run.walk(mp4::plain_file(hevc_movie(length_prefixed({unit}), profile))));
            EXPECT_EQ(run.output("in_track_id_1.out.265"), start_coded({unit})) << size;
        }
    }
}

TEST(HevcMetadataUnit, EmptyUnitsAndHalvesOfHeadersArePassed) {
    for (const Bytes& sample :
         {Bytes{0, 0, 0, 0}, Bytes{0, 0, 0, 0, 0, 0, 0, 0}, Bytes{0, 0, 0, 1, 0x7C},
          Bytes{0, 0, 0, 1, 0x7E}, Bytes{0, 0, 0, 2, 0x7E, 0x01}, Bytes{0, 0, 0, 3, 0x7E, 1, 0x42},
          Bytes{0, 0, 0, 1, 0x42}, Bytes{0, 0, 0, 2, 0x42, 0x01}, Bytes{0, 0, 0, 1, 0x40},
          Bytes{0, 0, 2, 0, 0x7C, 1}, Bytes{0, 0, 0}, Bytes{0xFF, 0xFF, 0xFF, 0xFF}}) {
        for (const std::uint32_t profile : {4U, 5U, 8U}) {
            DemuxRun run;
            static_cast<void>(run.walk(mp4::plain_file(hevc_movie(sample, profile))));
            EXPECT_FALSE(run.sink.ids().empty());
        }
    }
}

}  // namespace
}  // namespace mediasplit
