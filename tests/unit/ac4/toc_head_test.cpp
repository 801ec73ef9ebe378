#include <gtest/gtest.h>

#include <array>
#include <cstdint>

#include "tests/unit/ac4/toc_fixture.h"

namespace mediasplit {
namespace {

class TocHeadTest : public TocFixture {};

TEST_F(TocHeadTest, OpenAndQueryRefuseNulls) {
    Ac4TocReader* reader = nullptr;
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_query_mem(nullptr, {0}), 1);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_open(&reader, nullptr, {0}), 1);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_open(nullptr, memory_.data(), {0}), 1);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_version().major_number, 4U);
}

TEST_F(TocHeadTest, FeedRefusesShortFramesAndOtherKinds) {
    const Ac4Bytes frame(4, 0);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_feed(reader_, nullptr, 4, 1), 1);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_feed(reader_, nullptr, 4, 2), 1);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_feed(reader_, frame.data(), 3, 1), 1);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_feed(reader_, frame.data(), 4, 1), 0);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_feed(reader_, frame.data(), 4, 0), 3);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_feed(reader_, frame.data(), 4, 2), 3);
}

TEST_F(TocHeadTest, HandWrittenHeadIsRead) {
    // 10 1000000001 1 010 10 | 1 0010 1 | 0 0 | 1 00111 | 1 1010101111001101 0 | table: 01 0, align
    // bits: 10100000 00011010 10100101 00100111 11010101 11100110 10010000
    const Ac4Bytes frame = {0xA0, 0x1A, 0xA5, 0x27, 0xD5, 0xE6, 0x90, 0, 0, 0, 0, 0, 0, 0, 0};
    ASSERT_EQ(open_bytes(frame), 0);
    EXPECT_EQ(toc_.bitstream_version, 2);
    EXPECT_EQ(toc_.sequence_counter, 513);
    EXPECT_EQ(toc_.wait_frames_plus1, 3);
    EXPECT_EQ(toc_.br_code, 16 | 2);
    EXPECT_EQ(toc_.bit_rate_mode, 3);
    EXPECT_EQ(toc_.fs_index, 1);
    EXPECT_EQ(toc_.frame_rate_index, 2);
    EXPECT_TRUE(toc_.b_iframe_global);
    EXPECT_EQ(toc_.n_presentations, 0);
    EXPECT_EQ(toc_.program_id_kind, ProgramIdKind::kShort);
    EXPECT_EQ(toc_.short_program_id, 0xABCDU);
}

TEST_F(TocHeadTest, BitstreamVersionThreeIsUnsupported) {
    BuildFrame frame = simple_stereo_frame();
    frame.bitstream_version = 3;
    EXPECT_EQ(open_frame(frame), 3);
    AC4_ANALYZE_ac4toc_reader_set_mode(reader_, TocMode::kTolerant);
    EXPECT_EQ(open_frame(frame), 3);
}

TEST_F(TocHeadTest, WaitFramesDecideTheBitRateMode) {
    struct Case {
        std::optional<std::uint32_t> wait_frames;
        std::uint32_t br_code;
        std::int32_t plus1;
        std::int32_t code;
        std::int32_t mode;
    };
    const std::array<Case, 5> cases = {{{0U, 0, 1, 0, 4},
                                        {7U, 3, 8, 19, 2},
                                        {1U, 0, 2, 16, 3},
                                        {6U, 1, 7, 17, 3},
                                        {{}, 0, 0, 0, 3}}};  // the last mode stands
    for (const Case& c : cases) {
        BuildFrame frame = simple_stereo_frame();
        frame.wait_frames = c.wait_frames;
        frame.br_code = c.br_code;
        ASSERT_EQ(open_frame(frame), 0);
        EXPECT_EQ(toc_.wait_frames_plus1, c.plus1);
        EXPECT_EQ(toc_.br_code, c.code);
        EXPECT_EQ(toc_.bit_rate_mode, c.mode);
    }
}

TEST_F(TocHeadTest, FrameRateMustFitTheSamplingFrequency) {
    struct Case {
        std::uint32_t fs_index;
        std::uint32_t rate_index;
        int result;
    };
    const std::array<Case, 6> cases = {
        {{1, 0, 0}, {1, 13, 0}, {1, 14, 2}, {1, 15, 2}, {0, 13, 0}, {0, 12, 2}}};
    for (const Case& c : cases) {
        BuildFrame frame = simple_stereo_frame();
        frame.fs_index = c.fs_index;
        frame.frame_rate_index = c.rate_index;
        if (c.rate_index == 0) {
            frame.presentations[0].rate_bits = "0";
        } else if (c.rate_index == 12) {
            frame.presentations[0].rate_bits = "0";
        }
        AC4_ANALYZE_ac4toc_reader_set_mode(reader_, TocMode::kStrict);
        EXPECT_EQ(open_frame(frame), c.result) << c.fs_index << " " << c.rate_index;
        AC4_ANALYZE_ac4toc_reader_set_mode(reader_, TocMode::kTolerant);
        toc_ = TocInfo{};
        EXPECT_EQ(open_frame(frame), c.result);
        EXPECT_EQ(reader_->deferred_error, c.result);
        // Tolerant mode fills the record all the same.
        EXPECT_EQ(toc_.frame_rate_index, static_cast<std::int32_t>(c.rate_index));
        EXPECT_EQ(toc_.n_presentations, 1);
        EXPECT_EQ(presentation(0).channel_mode, 4);
    }
}

TEST_F(TocHeadTest, PresentationCountRunsFromZeroToFiveHundredAndTwelve) {
    for (const std::uint32_t count : {0U, 1U, 2U, 3U, 64U, 65U, 511U, 512U}) {
        BuildFrame frame = many_presentations_frame(count, 4);
        if (count == 0) {
            frame.groups.clear();
        } else if (count < 4) {
            frame.groups.resize(count == 1 ? 2 : count == 2 ? 3 : 4);
        }
        ASSERT_EQ(open_frame(frame), 0) << count;
        EXPECT_EQ(toc_.n_presentations, static_cast<std::int32_t>(count));
        EXPECT_EQ(selection_.n_presentations, static_cast<std::int32_t>(count < 64 ? count : 64));
        if (count > 0) {
            const auto last = static_cast<std::int32_t>(count) - 1;
            EXPECT_EQ(presentation(last).presentation_group_plus1, last % 500 + 1);
        }
        PresentationInfo info;
        EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_presentation_info(
                      reader_, toc_, static_cast<std::int32_t>(count), &info),
                  4);
        EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_presentation_info(reader_, toc_, -1, &info), 4);
    }
    EXPECT_EQ(open_frame(many_presentations_frame(513, 4)), 2);
    EXPECT_EQ(open_frame(many_presentations_frame(2000, 4)), 2);
}

TEST_F(TocHeadTest, PayloadBaseMovesEverySubstream) {
    for (const std::uint32_t base : {0U, 1U, 31U, 32U, 39U, 40U, 200U}) {
        BuildFrame frame = simple_stereo_frame();
        frame.payload_base = base;
        ASSERT_EQ(open_frame(frame), 0);
        const SubstreamInfoExt ext = substream_ext(0, 0);
        EXPECT_EQ(ext.segment.offset + ext.segment.size, bytes_.size()) << base;
        EXPECT_EQ(ext.segment.size, frame.substreams[1].size());
    }
}

TEST_F(TocHeadTest, ProgramIdsExistFromVersionTwoOn) {
    BuildFrame frame = simple_stereo_frame();
    frame.short_program_id = 0x1234;
    std::array<std::uint8_t, 16> uuid{};
    for (std::size_t i = 0; i < uuid.size(); ++i) {
        uuid[i] = static_cast<std::uint8_t>(0xF0 + i);
    }
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(toc_.program_id_kind, ProgramIdKind::kShort);
    frame.program_uuid = uuid;
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(toc_.program_id_kind, ProgramIdKind::kShortAndUuid);
    EXPECT_EQ(toc_.short_program_id, 0x1234U);
    EXPECT_EQ(toc_.program_uuid, uuid);
    ASSERT_EQ(open_frame(old_frame(1, old_presentation(1))), 0);
    EXPECT_EQ(toc_.program_id_kind, ProgramIdKind::kNone);
}

TEST_F(TocHeadTest, FailedParseCountsTheSequenceUpAndKeepsTheRecord) {
    BuildFrame frame = simple_stereo_frame();
    frame.sequence_counter = 700;
    ASSERT_EQ(open_frame(frame), 0);
    const TocInfo before = toc_;
    ASSERT_EQ(feed(Ac4Bytes{0xC0, 0, 0, 0}), 0);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_toc_info(reader_, &toc_), 3);
    EXPECT_EQ(reader_->sequence_counter, 701U);
    EXPECT_EQ(reader_->head.bitstream_version, 2);
    EXPECT_EQ(toc_.sequence_counter, before.sequence_counter);
}

TEST_F(TocHeadTest, RateIsWorkedOutOncePerFrame) {
    // Constant rate, 2048 samples per frame at 48 kHz: 100 bytes are 18750 bit/s.
    BuildFrame frame = simple_stereo_frame();
    frame.wait_frames = 0;
    Ac4Bytes bytes;
    for (std::uint32_t i = 1; i <= 4; ++i) {
        frame.sequence_counter = i;
        bytes = write_ac4_frame(frame);
        bytes.resize(100, 0);
        ASSERT_EQ(open_bytes(bytes), 0);
        TocInfo again;
        EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_toc_info(reader_, &again), 0);
        EXPECT_EQ(again.rate_status, toc_.rate_status);
        EXPECT_EQ(again.rate_mean, toc_.rate_mean);
    }
    EXPECT_EQ(toc_.rate_status, 0);
    EXPECT_LE(toc_.rate_mean, 18750U);
    EXPECT_GE(toc_.rate_peak, 18750U);
    EXPECT_LT(toc_.rate_peak - toc_.rate_mean, 18750U / 20);
}

}  // namespace
}  // namespace mediasplit
