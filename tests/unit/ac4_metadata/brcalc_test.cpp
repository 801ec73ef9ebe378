#include "ac4/bitrate/brcalc.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace mediasplit {
namespace {

// 48 kHz, 25 frames a second: a byte a frame is 200 bits a second.
struct Stream {
    AC4_ANALYZE_ac4_brcalc_state state;
    BrcalcInput next;

    explicit Stream(BitRateMode mode, std::uint32_t bytes = 320, std::int32_t wait_frames = 3) {
        next.frame_rate_index = 2;
        next.fs_index = 1;
        next.frame_bytes = bytes;
        next.wait_frames_minus1 = wait_frames - 1;
        next.b_wait_frames = true;
        next.sequence_counter = 1;
        next.mode = mode;
    }

    BrcalcOutput frame(std::uint32_t br_code = 0) {
        next.br_code = br_code;
        BrcalcOutput out;
        EXPECT_EQ(AC4_ANALYZE_ac4_brcalc_process(&state, next, &out), 0);
        next.sequence_counter = next.sequence_counter == 1020 ? 1 : next.sequence_counter + 1;
        return out;
    }

    BrcalcOutput codes(std::initializer_list<std::uint32_t> values) {
        BrcalcOutput out;
        for (const std::uint32_t value : values) {
            out = frame(value);
        }
        return out;
    }
};

void expect_value(const BrcalcOutput& out, std::uint64_t lower, std::uint64_t upper) {
    EXPECT_EQ(out.status, RateStatus::kValue);
    EXPECT_EQ(out.lower, lower);
    EXPECT_EQ(out.upper, upper);
}

void expect_none(const BrcalcOutput& out) {
    EXPECT_EQ(out.status, RateStatus::kNoValue);
    EXPECT_EQ(out.lower, 0U);
    EXPECT_EQ(out.upper, 0U);
}

TEST(BitRateState, ResetGivesTheStartValues) {
    Stream stream(BitRateMode::kConstant);
    stream.frame();
    EXPECT_EQ(AC4_ANALYZE_ac4_brcalc_state_reset(&stream.state), 0);
    EXPECT_EQ(stream.state.last_sequence_counter, 2000);
    EXPECT_EQ(stream.state.br_factor, 0x10000000U);
    EXPECT_EQ(stream.state.br_factor_shift, 28);
    EXPECT_EQ(stream.state.window_fill, 0);
    EXPECT_TRUE(stream.state.result_stale);
    EXPECT_TRUE(stream.state.needs_update);
    EXPECT_EQ(AC4_ANALYZE_ac4_brcalc_state_reset(nullptr), 1);
}

TEST(ConstantRate, IsTheAverageSizeWithAByteOnEachSide) {
    Stream stream(BitRateMode::kConstant, 1000);
    expect_value(stream.frame(), 999 * 200, 1001 * 200);
    stream.next.frame_bytes = 1001;
    // (2001 -/+ 1) x 200 / 2
    expect_value(stream.frame(), 200000, 200200);
    stream.next.frame_bytes = 1000;
    // (3001 -/+ 1) x 200 / 3 = 200000 and 200133.3
    expect_value(stream.frame(), 200000, 200133);
}

TEST(ConstantRate, RoundsToTheNearestBit) {
    Stream stream(BitRateMode::kConstant, 1000);
    stream.next.frame_rate_index = 13;             // 187.5 bits a second
    expect_value(stream.frame(), 187313, 187688);  // 187312.5, 187687.5
}

TEST(ConstantRate, At44100HertzTheFrameRateIs2048Samples) {
    Stream stream(BitRateMode::kConstant, 1001);
    stream.next.fs_index = 0;
    stream.next.frame_rate_index = 13;
    expect_value(stream.frame(), 172266, 172610);  // 172265.6, 172610.2
}

TEST(ConstantRate, ThirdSizeStartsAgain) {
    Stream stream(BitRateMode::kConstant, 1000);
    stream.frame();
    stream.next.frame_bytes = 1001;
    stream.frame();
    stream.next.frame_bytes = 1002;
    expect_value(stream.frame(), 1001 * 200, 1003 * 200);  // of this frame alone
    EXPECT_EQ(stream.state.window_fill, 1);
}

TEST(ConstantRate, WindowHolds18Frames) {
    Stream stream(BitRateMode::kConstant, 1000);
    stream.frame();
    stream.next.frame_bytes = 1100;
    for (int i = 0; i < 17; ++i) {
        stream.frame();
    }
    EXPECT_EQ(stream.state.window_fill, 18);
    EXPECT_EQ(stream.state.window[0].bytes, 1000U);
    const BrcalcOutput out = stream.frame();  // the nineteenth drops the oldest
    EXPECT_EQ(stream.state.window_fill, 18);
    EXPECT_EQ(stream.state.window[0].bytes, 1100U);
    expect_value(out, 219989, 220011);  // (19800 -/+ 1) x 200 / 18
}

TEST(ConstantRate, IndexWithoutAFrameRateGivesNoValue) {
    for (const std::uint32_t index : {14U, 15U, 4000000000U}) {
        Stream stream(BitRateMode::kConstant);
        stream.next.frame_rate_index = index;
        expect_none(stream.frame());
    }
}

TEST(ConstantRate, EmptyFramesDoNotWrap) {
    Stream stream(BitRateMode::kConstant, 0);
    expect_value(stream.frame(), 0, 200);
}

TEST(AverageRate, DigitsSpellTheRate) {
    Stream stream(BitRateMode::kAverage);
    expect_none(stream.codes({3, 1, 2, 0}));
    // 120 in base 3 is 15: (16 + 4 x 3) x 2^3 kbit/s.
    expect_value(stream.frame(3), 224000, 224000);
    // It stands while it is repeated.
    expect_value(stream.codes({1, 2, 0}), 224000, 224000);
    expect_value(stream.frame(3), 224000, 224000);
}

TEST(AverageRate, StartCodeAloneIs16000) {
    Stream stream(BitRateMode::kAverage);
    expect_none(stream.frame(3));  // digits may still follow
    expect_value(stream.frame(3), 16000, 16000);
}

TEST(AverageRate, DigitsBeforeTheFirstStartCodeAreIgnored) {
    Stream stream(BitRateMode::kAverage);
    expect_none(stream.codes({2, 2, 3, 0, 1}));
    expect_value(stream.frame(3), 20000, 20000);
}

TEST(AverageRate, ADigitThatDiffersStartsAgain) {
    Stream stream(BitRateMode::kAverage);
    expect_value(stream.codes({3, 1, 0, 3}), 28000, 28000);
    expect_none(stream.frame(2));
    EXPECT_EQ(stream.state.br_phase, 0);
    EXPECT_EQ(stream.state.br_codes_count, 0);
    expect_value(stream.codes({3, 0, 3}), 16000, 16000);
}

TEST(AverageRate, ACodeOfAnotherLengthStartsAgain) {
    Stream stream(BitRateMode::kAverage);
    stream.codes({3, 1, 0, 3});
    expect_none(stream.codes({1, 3}));
    EXPECT_EQ(stream.state.br_phase, 0);
}

TEST(AverageRate, EightDigitsAreKept) {
    Stream stream(BitRateMode::kAverage);
    stream.codes({3, 0, 0, 0, 0, 0, 0, 1, 1});
    EXPECT_EQ(stream.state.br_codes_count, 8);
    stream.codes({2, 2});
    EXPECT_EQ(stream.state.br_codes_count, 8);
    expect_value(stream.frame(3), 32000, 32000);  // 4
}

TEST(AverageRate, ARateBeyondAllMeasureIsNoValue) {
    Stream stream(BitRateMode::kAverage);
    expect_none(stream.codes({3, 2, 2, 2, 2, 2, 2, 2, 2, 3}));
}

TEST(StoredCodes, ScaleIsTheProductOfTheBases) {
    Stream stream(BitRateMode::kAverage);
    store_br_codes(&stream.state, 3);
    store_br_codes(&stream.state, 2);
    store_br_codes(&stream.state, 1);
    // 2^(2/3 + 1/9)
    EXPECT_NEAR(stream.state.br_factor, std::exp2(2.0 / 3 + 1.0 / 9) * (1 << 28), 4);
    EXPECT_EQ(stream.state.br_position, 2);
}

// 320 bytes in each 25th of a second: 64 kbit/s, whose digits are all 0.
TEST(BufferedRate, IsNarrowedByTheDigits) {
    Stream stream(BitRateMode::kBuffered);
    expect_none(stream.codes({3, 0, 0, 0}));  // not yet more than 3 frames of time
    // 5 frames: 4 x 64000 / (4 + 1) = 51200 to 4 x 64000 / (4 - 1) = 85333; of that, with 3 digits,
    // 64000 to 64000 x 2^(1/27).
    const BrcalcOutput out = stream.frame(3);
    EXPECT_EQ(out.status, RateStatus::kValue);
    EXPECT_NEAR(static_cast<double>(out.lower), 64000, 1);
    EXPECT_NEAR(static_cast<double>(out.upper), 64000 * std::exp2(1.0 / 27), 1);
}

TEST(BufferedRate, MeasureLimitsTheCellWhereItIsNarrower) {
    Stream stream(BitRateMode::kBuffered);
    stream.frame(3);
    stream.frame(0);
    for (int i = 0; i < 20; ++i) {
        stream.frame(i % 2 == 0 ? 3 : 0);
    }
    const BrcalcOutput out = stream.frame(3);
    // One digit: 64000 to 80635; 17 frames: 17/18 to 17/16.
    EXPECT_NEAR(static_cast<double>(out.lower), 64000, 1);
    EXPECT_EQ(out.upper, 68000U);
}

TEST(BufferedRate, StartCodeAloneGivesNoValue) {
    Stream stream(BitRateMode::kBuffered);
    for (int i = 0; i < 30; ++i) {
        expect_none(stream.frame(3));
    }
}

TEST(BufferedRate, DigitsOfAnotherRateGiveNoValue) {
    Stream stream(BitRateMode::kBuffered);
    for (int i = 0; i < 18; ++i) {
        // 1, 1: between 2^(4/9) and 2^(5/9) of an octave, far from 64000.
        expect_none(stream.frame(i % 3 == 0 ? 3 : 1));
    }
}

TEST(BufferedRate, LowestRateIs1000) {
    Stream stream(BitRateMode::kBuffered, 5);
    BrcalcOutput out;
    for (int i = 0; i < 10; ++i) {
        out = stream.frame(i % 2 == 0 ? 3 : 0);
    }
    EXPECT_EQ(out.status, RateStatus::kValue);
    EXPECT_EQ(out.lower, 1000U);
}

// A sender with a constant channel: the rate must lie within what is estimated, at every frame.
TEST(BufferedRate, HoldsTheTrueRateOfSimulatedStreams) {
    std::mt19937 random(3);
    struct Rate {
        std::uint32_t index;
        double frames_per_second;
        int unit;
    };
    for (const Rate& rate : {Rate{2, 25, 1}, Rate{4, 30, 1}, Rate{13, 23.4375, 1}, Rate{10, 100, 2},
                             Rate{12, 120, 2}}) {
        for (const double bits_per_second : {48000.0, 64000.0, 96123.0, 191000.0, 1000000.0}) {
            Stream stream(BitRateMode::kBuffered);
            stream.next.frame_rate_index = rate.index;
            std::vector<std::uint32_t> digits{3};
            double fraction = std::log2(bits_per_second / 1000);
            fraction -= std::floor(fraction);
            for (int i = 0; i < 5; ++i) {
                fraction *= 3;
                digits.push_back(static_cast<std::uint32_t>(fraction));
                fraction -= std::floor(fraction);
            }
            const double bytes_per_frame = bits_per_second / 8 / rate.frames_per_second;
            double sent = 0;  // when this frame's sending starts, in frames
            int values = 0;
            for (int i = 0; i < 200; ++i) {
                const double decoded = i + 3.5 * rate.unit;
                stream.next.wait_frames_minus1 =
                    static_cast<std::int32_t>(std::floor((decoded - sent) / rate.unit)) - 1;
                const double drift = sent - i;  // keep the buffer near its middle
                const double size = bytes_per_frame * (1 - drift / 8) *
                                    (0.7 + 0.6 * static_cast<double>(random() % 1000) / 1000);
                stream.next.frame_bytes = static_cast<std::uint32_t>(size);
                sent += stream.next.frame_bytes / bytes_per_frame;
                const BrcalcOutput out =
                    stream.frame(digits[static_cast<std::size_t>(i) % digits.size()]);
                if (out.status == RateStatus::kValue) {
                    ++values;
                    EXPECT_LE(static_cast<double>(out.lower), bits_per_second + 1);
                    EXPECT_GE(static_cast<double>(out.upper), bits_per_second - 1);
                }
            }
            EXPECT_GT(values, 150) << bits_per_second;
        }
    }
}

TEST(Sequence, NextFrameFollows1020With1) {
    Stream stream(BitRateMode::kConstant);
    stream.next.sequence_counter = 1020;
    stream.frame();
    EXPECT_EQ(stream.next.sequence_counter, 1);
    stream.frame();
    EXPECT_EQ(stream.state.window_fill, 2);
}

TEST(Sequence, RepeatedFrameDoesNotEnterTheWindow) {
    Stream stream(BitRateMode::kConstant);
    const BrcalcOutput first = stream.frame();
    stream.next.sequence_counter = 1;
    stream.next.frame_bytes = 99999;
    const BrcalcOutput again = stream.frame();
    expect_value(again, first.lower, first.upper);
    EXPECT_EQ(stream.state.window_fill, 1);
    EXPECT_EQ(stream.state.window[0].bytes, 320U);
}

TEST(Sequence, RepeatBeforeAnyValueHasNone) {
    Stream stream(BitRateMode::kAverage);
    stream.frame(3);
    stream.next.sequence_counter = 1;
    expect_none(stream.frame(3));
    EXPECT_EQ(stream.state.br_position, 0);
}

TEST(Sequence, OneLostFrameGivesTheFormerValueOnceMore) {
    for (const auto& [last, now] : {std::pair{5, 7}, std::pair{1020, 2}, std::pair{1019, 1}}) {
        Stream stream(BitRateMode::kConstant);
        stream.next.sequence_counter = last;
        const BrcalcOutput first = stream.frame();
        stream.next.sequence_counter = now;
        stream.next.frame_bytes = 640;
        const BrcalcOutput second = stream.frame();
        EXPECT_EQ(second.status, RateStatus::kBeforeBreak);
        EXPECT_EQ(second.lower, first.lower);
        EXPECT_EQ(second.upper, first.upper);
        EXPECT_EQ(stream.state.window_fill, 1);
        expect_value(stream.frame(), 639 * 200 + 100, 641 * 200 - 100);
    }
}

TEST(Sequence, OneLostFrameBeforeAnyValueHasNone) {
    Stream stream(BitRateMode::kAverage);
    stream.frame(3);
    stream.next.sequence_counter = 3;
    expect_none(stream.frame(3));
}

TEST(Sequence, OtherJumpsStartAgain) {
    for (const int now : {0, 8, 4, 1021, 1023}) {
        Stream stream(BitRateMode::kConstant);
        stream.next.sequence_counter = 5;
        stream.frame();
        stream.next.sequence_counter = now;
        stream.next.frame_bytes = 640;
        expect_value(stream.frame(), 639 * 200, 641 * 200);
        EXPECT_EQ(stream.state.window_fill, 1) << now;
    }
}

TEST(Sequence, ZeroAfterZeroStartsAgain) {
    Stream stream(BitRateMode::kConstant);
    stream.next.sequence_counter = 0;
    stream.frame();
    stream.next.sequence_counter = 0;
    stream.frame();
    EXPECT_EQ(stream.state.window_fill, 1);
}

TEST(Modes, AChangeStartsAgain) {
    Stream stream(BitRateMode::kConstant);
    stream.frame();
    stream.frame();
    stream.next.mode = BitRateMode::kBuffered;
    expect_none(stream.frame(3));
    EXPECT_EQ(stream.state.window_fill, 1);
    EXPECT_EQ(stream.state.last_mode, BitRateMode::kBuffered);
}

TEST(Modes, RepeatedFrameOfAnotherModeStaysOut) {
    Stream stream(BitRateMode::kConstant);
    stream.frame();
    stream.next.sequence_counter = 1;
    stream.next.mode = BitRateMode::kBuffered;
    expect_none(stream.frame());
    EXPECT_EQ(stream.state.window_fill, 0);
    stream.next.mode = BitRateMode::kConstant;
    expect_value(stream.frame(), 319 * 200, 321 * 200);
    EXPECT_EQ(stream.state.window_fill, 1);
}

TEST(Modes, WithoutWaitFramesOnlyTheAverageModeKeepsItsValue) {
    Stream average(BitRateMode::kAverage);
    average.codes({3, 0, 0, 1, 3});
    average.next.b_wait_frames = false;
    expect_value(average.frame(), 20000, 20000);
    EXPECT_EQ(average.state.last_sequence_counter, 6);
    average.next.b_wait_frames = true;
    average.next.mode = BitRateMode::kAverage;
    expect_value(average.codes({0, 0, 1, 3}), 20000, 20000);

    Stream constant(BitRateMode::kConstant);
    constant.frame();
    constant.next.b_wait_frames = false;
    expect_none(constant.frame());
    EXPECT_EQ(constant.state.window_fill, 0);
    EXPECT_EQ(constant.state.last_sequence_counter, 2000);
}

TEST(Modes, RandomInputKeepsTheStateInBounds) {
    std::mt19937 random(11);
    AC4_ANALYZE_ac4_brcalc_state state;
    for (int i = 0; i < 200000; ++i) {
        BrcalcInput input;
        input.frame_rate_index = random() % 17;
        input.fs_index = random() % 2;
        input.frame_bytes = random() % 3 == 0 ? random() : random() % 2000;
        input.br_code = random() % 4;
        input.wait_frames_minus1 = static_cast<std::int32_t>(random() % 8) - 1;
        input.b_wait_frames = random() % 50 != 0;
        input.sequence_counter = random() % 20 == 0 ? static_cast<std::int32_t>(random() % 1024)
                                                    : state.last_sequence_counter % 1020 + 1;
        constexpr BitRateMode kModes[] = {BitRateMode::kAverage, BitRateMode::kBuffered,
                                          BitRateMode::kConstant, BitRateMode::kNone};
        input.mode =
            kModes[random() % 100 == 0 ? random() % 4 : 1 + static_cast<unsigned>(i / 70000) % 2];
        BrcalcOutput out;
        AC4_ANALYZE_ac4_brcalc_process(&state, input, &out);
        ASSERT_LE(state.window_fill, kBrcalcWindow);
        ASSERT_LE(state.br_codes_count, kBrcalcCodes);
        ASSERT_LE(out.lower, out.upper);
    }
}

}  // namespace
}  // namespace mediasplit
