#include "ac4/framer/framer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "tests/support/ac4_builder.h"

namespace mediasplit {
namespace {

using Bytes = Ac4Bytes;

// Head of a payload: bitstream_version 2, sequence_counter 1, no wait_frames, then fs_index and
// frame_rate_index: 10 0000000001 0 f rrrr ...
Bytes payload_with(unsigned fs_index, unsigned frame_rate_index, std::size_t size) {
    Bytes payload(size, 0);
    const unsigned head = (2U << 22) | (1U << 12) | (fs_index << 10) | (frame_rate_index << 6);
    for (std::size_t i = 0; i < 3 && i < size; ++i) {
        payload[i] = static_cast<std::uint8_t>(head >> (16 - 8 * i));
    }
    return payload;
}

Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

class FramerTest : public testing::Test {
protected:
    FramerTest() {
        memory_.resize(static_cast<std::size_t>(AC4_ANALYZE_ac4framer_query_mem()));
        framer_ = AC4_ANALYZE_ac4framer_open(memory_.data());
        AC4_ANALYZE_ac4framer_configure(framer_, {0x10000, 0});
    }
    ~FramerTest() override { AC4_ANALYZE_ac4framer_close(framer_); }

    int get(const Bytes& data) {
        // An exactly sized copy, so that a sanitizer sees any read behind the data.
        held_ = std::make_unique<Bytes>(data);
        held_->shrink_to_fit();
        frame_ = FramerFrame{};
        return AC4_ANALYZE_ac4framer_get_frame(framer_, {held_->data(), held_->size()}, &consumed_,
                                               &skipped_, &frame_);
    }

    std::vector<std::byte> memory_;
    Ac4Framer* framer_ = nullptr;
    std::unique_ptr<Bytes> held_;
    FramerFrame frame_;
    std::uint64_t consumed_ = 0;
    std::uint64_t skipped_ = 0;
};

TEST_F(FramerTest, OpenSetsTheStartValues) {
    EXPECT_EQ(framer_->timing.fs_index, 1);
    EXPECT_EQ(framer_->timing.frame_rate_index, 13);
    EXPECT_EQ(framer_->timescale, 90000U);
    EXPECT_EQ(framer_->timing.recalculate, 1);
    EXPECT_EQ(framer_->discontinuity, 0);
    EXPECT_EQ(AC4_ANALYZE_ac4framer_open(nullptr), nullptr);
}

TEST_F(FramerTest, EmptyBufferNeedsMoreData) {
    EXPECT_EQ(get({}), 1);
    EXPECT_EQ(consumed_, 0U);
}

TEST_F(FramerTest, BytesWithoutSyncAreAllSkipped) {
    skipped_ = 10;
    EXPECT_EQ(get({1, 2, 3, 0x40, 0x41}), 1);
    EXPECT_EQ(consumed_, 5U);
    EXPECT_EQ(skipped_, 15U);
}

TEST_F(FramerTest, LoneFirstSyncByteAtTheEndIsKeptForTheNextCall) {
    EXPECT_EQ(get({1, 2, 0xAC}), 1);
    EXPECT_EQ(consumed_, 2U);
    EXPECT_EQ(skipped_, 2U);
}

TEST_F(FramerTest, SyncScanTellsItsState) {
    struct Case {
        Bytes data;
        std::uint64_t scanned;
        std::int32_t state;
    };
    const std::vector<Case> cases = {
        {{}, 0, kFramerNoSync},
        {{0x40, 0xAC, 0x42}, 3, kFramerNoSync},
        {{0x00, 0xAC}, 2, kFramerHalfSync},
        {{0xAC, 0xAC}, 2, kFramerHalfSync},
        {{0xAC, 0xAC, 0x40, 0x00}, 3, kFramerSyncPlain},
        {{0xAC, 0x41}, 2, kFramerSyncCrc},
        {{0xAC, 0x00, 0x41, 0xAC, 0x41}, 5, kFramerSyncCrc},
    };
    for (const Case& c : cases) {
        std::int32_t state = -1;
        EXPECT_EQ(AC4_ANALYZE_framer_find_sync_word({c.data.data(), c.data.size()}, &state),
                  c.scanned);
        EXPECT_EQ(state, c.state);
    }
}

TEST_F(FramerTest, SizeFieldHasAShortAndALongForm) {
    struct Case {
        Bytes data;
        std::int32_t state;
        std::uint64_t size;
    };
    const std::vector<Case> cases = {
        {{0x12, 0x34}, 2, 0x1234},
        {{0xFF, 0x00}, 2, 0xFF00},
        {{0xFF, 0xFE}, 2, 0xFFFE},
        {{0xFF, 0xFF, 0x00, 0x01, 0x00}, 7, 256},
        {{0xFF, 0xFF, 0x12, 0x34, 0x56}, 7, 0x123456},
    };
    for (const Case& c : cases) {
        std::int32_t state = -1;
        std::uint64_t size = 99;
        AC4_ANALYZE_framer_parse_size_info({c.data.data(), c.data.size()}, &state, &size);
        EXPECT_EQ(state, c.state);
        EXPECT_EQ(size, c.size);
        for (std::size_t cut = 0; cut < c.data.size(); ++cut) {
            AC4_ANALYZE_framer_parse_size_info({c.data.data(), cut}, &state, &size);
            EXPECT_NE(state, 2);
            EXPECT_NE(state, 7);
        }
    }
}

TEST_F(FramerTest, DeliversThePayloadAndItsTime) {
    const Bytes payload = payload_with(1, 13, 20);
    AC4_ANALYZE_ac4framer_set_timestamp(framer_, 90000, 1000);
    const Bytes frame = write_syncframe(payload);
    ASSERT_EQ(get(frame + frame), 0);
    EXPECT_EQ(Bytes(frame_.data, frame_.data + frame_.size), payload);
    EXPECT_EQ(frame_.sync_type, kFramerSyncPlain);
    EXPECT_EQ(frame_.damaged, 0);
    EXPECT_EQ(frame_.discontinuity, 0);
    EXPECT_EQ(frame_.timescale, 90000U);
    EXPECT_EQ(frame_.duration, 3840U);
    EXPECT_EQ(frame_.timestamp, 1000U);
    EXPECT_EQ(consumed_, frame.size());
    EXPECT_EQ(skipped_, 0U);
    ASSERT_EQ(get(frame), 0);
    EXPECT_EQ(frame_.timestamp, 4840U);
}

TEST_F(FramerTest, KeepSyncDeliversTheWholeFrame) {
    AC4_ANALYZE_ac4framer_configure(framer_, {0x10000, 1});
    const Bytes frame = write_syncframe(payload_with(1, 2, 9), true, true);
    ASSERT_EQ(get(Bytes{5, 6} + frame), 0);
    EXPECT_EQ(Bytes(frame_.data, frame_.data + frame_.size), frame);
    EXPECT_EQ(frame_.sync_type, kFramerSyncCrc);
    EXPECT_EQ(frame_.damaged, 0);
    EXPECT_EQ(skipped_, 2U);
    EXPECT_EQ(consumed_, frame.size() + 2);
}

TEST_F(FramerTest, FrameOfSizeFF00TakesTheShortHeader) {
    AC4_ANALYZE_ac4framer_configure(framer_, {0x20000, 0});
    const Bytes frame = write_syncframe(payload_with(1, 13, 0xFF00));
    EXPECT_EQ(frame[2], 0xFF);
    EXPECT_EQ(frame[3], 0x00);
    ASSERT_EQ(get(frame), 0);
    EXPECT_EQ(frame_.size, 0xFF00U);
    EXPECT_EQ(consumed_, 0xFF04U);
}

TEST_F(FramerTest, EveryCutOfAFrameNeedsMoreDataAndConsumesNothing) {
    const Bytes frame = write_syncframe(payload_with(1, 13, 12), true, true);
    for (std::size_t cut = 1; cut < frame.size(); ++cut) {
        EXPECT_EQ(get(Bytes(frame.begin(), frame.begin() + static_cast<std::ptrdiff_t>(cut))), 1);
        EXPECT_EQ(consumed_, 0U) << cut;
    }
    EXPECT_EQ(get(frame), 0);
}

TEST_F(FramerTest, FrameWithBadCrcIsDeliveredDamagedAndConsumesTwoBytes) {
    const Bytes inner = write_syncframe(payload_with(1, 13, 4));
    Bytes frame = write_syncframe(payload_with(1, 13, 5) + inner, true);
    frame.back() ^= 1;
    ASSERT_EQ(get(frame), 0);
    EXPECT_EQ(frame_.damaged, 1);
    EXPECT_EQ(frame_.discontinuity, 1);
    EXPECT_EQ(consumed_, 2U);
    // The rescan then meets the sync word inside the payload.
    ASSERT_EQ(get(Bytes(frame.begin() + 2, frame.end())), 0);
    EXPECT_EQ(frame_.damaged, 0);
    EXPECT_EQ(frame_.size, 4U);
    EXPECT_EQ(frame_.discontinuity, 1) << "sticky until the next set_timestamp";
    AC4_ANALYZE_ac4framer_set_timestamp(framer_, 90000, 0);
    ASSERT_EQ(get(inner), 0);
    EXPECT_EQ(frame_.discontinuity, 0);
}

TEST_F(FramerTest, ReservedFrameRateOrCutHeadDamagesTheFrameAndStopsTheClock) {
    ASSERT_EQ(get(write_syncframe(payload_with(1, 13, 8))), 0);
    ASSERT_EQ(get(write_syncframe(payload_with(1, 14, 8))), 0);
    EXPECT_EQ(frame_.damaged, 1);
    EXPECT_EQ(consumed_, 2U);
    EXPECT_EQ(frame_.timestamp, 0U);
    EXPECT_EQ(framer_->timing.frame_rate_index, 13);
    ASSERT_EQ(get(write_syncframe(payload_with(1, 13, 2))), 0);
    EXPECT_EQ(frame_.damaged, 1);
    ASSERT_EQ(get(write_syncframe(payload_with(1, 13, 8))), 0);
    EXPECT_EQ(frame_.damaged, 0);
    EXPECT_EQ(frame_.timestamp, 3840U);
}

TEST_F(FramerTest, WhateverStandsBehindAFrameMustBeASyncWord) {
    const Bytes frame = write_syncframe(payload_with(1, 13, 8));
    struct Case {
        Bytes behind;
        std::int32_t discontinuity;
    };
    const std::vector<Case> cases = {
        {{}, 0},           {{0xAC}, 0}, {{0xAC, 0x40}, 0},      {{0xAC, 0x41}, 0},
        {{0xAC, 0xAC}, 1}, {{0x00}, 1}, {{0x00, 0xAC, 0x40}, 1}};
    for (const Case& c : cases) {
        AC4_ANALYZE_ac4framer_set_timestamp(framer_, 90000, 0);
        ASSERT_EQ(get(frame + c.behind), 0);
        EXPECT_EQ(frame_.discontinuity, c.discontinuity);
        EXPECT_EQ(consumed_, frame.size());
    }
}

TEST_F(FramerTest, OversizedFrameIsRefusedAndTheScanGoesOnInsideIt) {
    AC4_ANALYZE_ac4framer_configure(framer_, {32, 0});
    const Bytes inner = write_syncframe(payload_with(1, 13, 8));
    const Bytes outer = write_syncframe(payload_with(1, 13, 40) + inner);
    ASSERT_EQ(get(write_syncframe(payload_with(1, 13, 8))), 0);
    ASSERT_EQ(get(outer), 0);
    EXPECT_EQ(frame_.size, 8U);
    EXPECT_EQ(frame_.discontinuity, 1);
    EXPECT_EQ(frame_.timestamp, 2 * 3840U) << "the refused frame moved the clock too";
    EXPECT_EQ(consumed_, outer.size());
    EXPECT_EQ(skipped_, outer.size() - inner.size());
}

TEST_F(FramerTest, ClockKeepsTheFractionOfATick) {
    // 30000/1001 frames per second at 90 kHz: 3003 ticks; at 1 kHz: 33.3666...
    const Bytes frame = write_syncframe(payload_with(1, 3, 8));
    AC4_ANALYZE_ac4framer_set_timestamp(framer_, 1000, 0);
    std::uint64_t last = 0;
    for (int i = 0; i < 3001; ++i) {
        ASSERT_EQ(get(frame), 0);
        last = frame_.timestamp;
    }
    EXPECT_EQ(last, 100100U);
    EXPECT_EQ(frame_.duration, 33U);
}

TEST_F(FramerTest, ChangedFrameRateOrTimescaleChangesTheDuration) {
    ASSERT_EQ(get(write_syncframe(payload_with(1, 2, 8))), 0);
    EXPECT_EQ(frame_.duration, 3600U);
    ASSERT_EQ(get(write_syncframe(payload_with(0, 13, 8))), 0);
    EXPECT_EQ(frame_.duration, 4180U);  // 10240 * 90000 / 220500 = 4179.59
    AC4_ANALYZE_ac4framer_set_timestamp(framer_, 44100, 0);
    ASSERT_EQ(get(write_syncframe(payload_with(0, 13, 8))), 0);
    EXPECT_EQ(frame_.duration, 2048U);
}

TEST(FramerTime, ReadsPastWaitFramesAndVersionExtension) {
    FramerTiming timing;
    // 10 0000000001 1 000 1 0010 ...: wait_frames 0 has no br_code
    const Bytes constant = {0x80, 0x18, 0x90, 0};
    EXPECT_EQ(AC4_ANALYZE_framer_get_time({constant.data(), constant.size()}, 90000, &timing), 0);
    EXPECT_EQ(timing.frame_rate_index, 2);
    // 10 0000000001 1 111 01 1 0100 ...: br_code follows
    const Bytes variable = {0x80, 0x1F, 0x68, 0};
    EXPECT_EQ(AC4_ANALYZE_framer_get_time({variable.data(), variable.size()}, 90000, &timing), 0);
    EXPECT_EQ(timing.frame_rate_index, 4);
    // 11 001 000 0000000001 0 1 0101 ...: version escape of two groups
    const Bytes escaped = {0xC8, 0x00, 0x55};
    EXPECT_EQ(AC4_ANALYZE_framer_get_time({escaped.data(), escaped.size()}, 90000, &timing), 0);
    EXPECT_EQ(timing.frame_rate_index, 5);
    // a version escape that never ends
    const Bytes endless(64, 0xFF);
    EXPECT_EQ(AC4_ANALYZE_framer_get_time({endless.data(), endless.size()}, 90000, &timing), 1);
    EXPECT_EQ(AC4_ANALYZE_framer_get_time({nullptr, 0}, 90000, &timing), 1);
    EXPECT_EQ(timing.frame_rate_index, 5);
}

TEST(FramerCrc, ResidueIsZeroForTheCataloguedCheckValue) {
    // "123456789" has the CRC 0xFEE8 under this generator.
    constexpr std::string_view text = "123456789";
    Bytes data(text.begin(), text.end());
    data.push_back(0xFE);
    data.push_back(0xE8);
    EXPECT_EQ(AC4_ANALYZE_calculate_crc(data.data(), data.size()), 0U);
    data[3] ^= 4;
    EXPECT_NE(AC4_ANALYZE_calculate_crc(data.data(), data.size()), 0U);
}

TEST(FramerRound, RoundsHalfUp) {
    EXPECT_EQ(AC4_ANALYZE_framer_round(7, 0x7FFFFFFF), 7U);
    EXPECT_EQ(AC4_ANALYZE_framer_round(7, 0x80000000), 8U);
}

}  // namespace
}  // namespace mediasplit
