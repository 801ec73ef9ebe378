#include "ac4/bitrate/brcalc.h"

#include <algorithm>
#include <cstddef>

namespace mediasplit {
namespace {

constexpr std::int32_t kMostSequence = 1020;
constexpr int kFactorShift = 22;  // fraction bits of the frame rate factors
constexpr int kScaleShift = 28;   // fraction bits of the quantization scale
constexpr std::uint32_t kMostFrameBytes = 0xFFFFFF;
constexpr std::uint64_t kLowestRate = 1000;
constexpr std::uint32_t kStartCode = 3;

// Frames per second x 8, by frame_rate_index at 48 kHz.
constexpr std::array<std::uint64_t, 14> kRateFactors48 = {
    804501866,  805306368,  838860800,  1005627333, 1006632960, 1609003732, 1610612736,
    1677721600, 2011254665, 2013265920, 3355443200, 4022509331, 4026531840, 786432000};
constexpr std::uint64_t kRateFactor44 = 722534400;

// 2^(1/3^k): what one unit of the k-th base 3 digit multiplies the rate by.
constexpr std::array<std::uint64_t, kBrcalcCodes + 1> quantization_bases_uq04p28 = {
    0x20000000, 0x1428A2FA, 0x1147ECB9, 0x106A83AE, 0x1023338F,
    0x100BB34A, 0x1003E57B, 0x10014C63, 0x10006EC9};

enum class SequenceClass { kNext, kOneLost, kRepeat, kReset };

struct RateRange {
    bool valid = false;
    std::uint64_t lower = 0;
    std::uint64_t upper = 0;
};

SequenceClass classify(std::int32_t now, std::int32_t last) {
    if (now == 0) {
        return SequenceClass::kReset;
    }
    if (now == last) {
        return SequenceClass::kRepeat;
    }
    if (now > kMostSequence || last > kMostSequence) {
        return SequenceClass::kReset;
    }
    // 1020 is followed by 1.
    const std::int32_t step = now > last ? now - last : now - last + kMostSequence;
    if (step == 1) {
        return SequenceClass::kNext;
    }
    return step == 2 ? SequenceClass::kOneLost : SequenceClass::kReset;
}

// 0 for an index without a frame rate.
std::uint64_t rate_factor(const BrcalcInput& input) {
    if (input.fs_index == 0) {
        return kRateFactor44;
    }
    return input.frame_rate_index < kRateFactors48.size() ? kRateFactors48[input.frame_rate_index]
                                                          : 0;
}

void put_into_window(AC4_ANALYZE_ac4_brcalc_state& state, const BrcalcInput& input) {
    if (state.window_fill == kBrcalcWindow) {
        std::copy(state.window.begin() + 1, state.window.end(), state.window.begin());
        --state.window_fill;
    }
    state.window[static_cast<std::size_t>(state.window_fill)] = {
        std::min(input.frame_bytes, kMostFrameBytes), input.wait_frames_minus1 + 1};
    ++state.window_fill;
}

std::uint64_t sum_of_sizes(const AC4_ANALYZE_ac4_brcalc_state& state, std::int32_t count) {
    std::uint64_t sum = 0;
    for (std::int32_t i = 0; i < count; ++i) {
        sum += state.window[static_cast<std::size_t>(i)].bytes;
    }
    return sum;
}

std::uint64_t multiply_scale(std::uint64_t scale, std::uint64_t base) {
    return (scale * base + (1ULL << (kScaleShift - 1))) >> kScaleShift;
}

// 1000 x 2^octave x scale.
std::uint64_t rate_of(std::uint64_t scale, int octave) {
    const std::uint64_t rate = kLowestRate * scale;
    return octave <= kScaleShift ? rate >> (kScaleShift - octave) : rate << (octave - kScaleShift);
}

// The digits received tell the rate's mantissa down to a cell of the logarithmic scale; which
// octave it lies in, the measured range tells. Keeps the part of the range inside the cell of the
// range's octave or of the next one.
RateRange narrow_by_codes(const AC4_ANALYZE_ac4_brcalc_state& state, std::uint64_t lower,
                          std::uint64_t upper) {
    RateRange result;
    if (state.br_codes_count == 0) {
        return result;
    }
    int octave = 0;
    while ((kLowestRate << (octave + 1)) <= lower) {
        ++octave;
    }
    const std::uint64_t cell_start = state.br_factor;
    const std::uint64_t cell_end = multiply_scale(
        cell_start, quantization_bases_uq04p28[static_cast<std::size_t>(state.br_codes_count)]);
    for (int candidate = octave; candidate <= octave + 1; ++candidate) {
        const std::uint64_t from = std::max(lower, rate_of(cell_start, candidate));
        const std::uint64_t to = std::min(upper, rate_of(cell_end, candidate));
        if (from <= to) {
            result.lower = result.valid ? result.lower : from;
            result.upper = to;
            result.valid = true;
        }
    }
    return result;
}

// Between the oldest and the newest frame of the window lie all sizes but the newest, and the time
// of the frames plus the difference in waiting, which is known to one unit.
RateRange buffered_rate(AC4_ANALYZE_ac4_brcalc_state& state, const BrcalcInput& input) {
    store_br_codes(&state, input.br_code);
    put_into_window(state, input);
    const std::uint64_t factor = rate_factor(input);
    if (state.window_fill < 3 || factor == 0) {
        return {};
    }
    const bool high_rate = input.frame_rate_index >= 10 && input.frame_rate_index <= 12;
    const std::int64_t unit = high_rate ? 2 : 1;  // frames that one step of waiting stands for
    const std::size_t newest = static_cast<std::size_t>(state.window_fill) - 1;
    const std::int64_t waited =
        std::int64_t{state.window[0].wait_frames} - std::int64_t{state.window[newest].wait_frames};
    const std::int64_t frames = state.window_fill - 1 + unit * waited;
    if (frames <= 3 * unit) {
        return {};
    }
    const std::uint64_t rate = factor * sum_of_sizes(state, state.window_fill - 1) >> kFactorShift;
    const std::uint64_t upper = rate / static_cast<std::uint64_t>(frames - unit);
    const std::uint64_t lower =
        std::max(rate / static_cast<std::uint64_t>(frames + unit), kLowestRate);
    return narrow_by_codes(state, lower, upper);
}

// The average size over the window, give or take a byte.
RateRange constant_rate(AC4_ANALYZE_ac4_brcalc_state& state, const BrcalcInput& input) {
    const std::uint32_t size = input.frame_bytes;
    if (state.size_count == 2 && size != state.size_a && size != state.size_b) {
        AC4_ANALYZE_ac4_brcalc_state_reset(&state);
    }
    if (state.size_count == 0) {
        state.size_a = size;
        state.size_count = 1;
    } else if (state.size_count == 1 && size != state.size_a) {
        state.size_b = size;
        state.size_count = 2;
    }
    put_into_window(state, input);
    const std::uint64_t factor = rate_factor(input);
    if (factor == 0) {
        return {};
    }
    const auto count = static_cast<std::uint64_t>(state.window_fill);
    const std::uint64_t sum = sum_of_sizes(state, state.window_fill);
    const auto rate = [&](std::uint64_t bytes) {
        return ((bytes * 4 * factor / count >> kFactorShift) + 2) >> 2;
    };
    return {true, rate(sum > 0 ? sum - 1 : 0), rate(sum + 1)};
}

// The rate that a complete code spells out.
RateRange average_rate(AC4_ANALYZE_ac4_brcalc_state& state, const BrcalcInput& input) {
    store_br_codes(&state, input.br_code);
    if (state.needs_update) {
        return {};
    }
    std::uint16_t value = 0;
    for (std::int32_t i = 0; i < state.br_codes_count; ++i) {
        value = static_cast<std::uint16_t>(value * 3 + state.br_codes[static_cast<std::size_t>(i)]);
    }
    constexpr int kMostOctaves = 48;  // beyond it the rate does not fit 64 bits
    const int octave = value >> 2;
    if (octave > kMostOctaves) {
        return {};
    }
    const std::uint64_t rate = (16ULL + 4ULL * (value & 3U)) * 1000ULL << octave;
    return {true, rate, rate};
}

RateRange measure(AC4_ANALYZE_ac4_brcalc_state& state, const BrcalcInput& input) {
    switch (input.mode) {
        case BitRateMode::kAverage:
            return average_rate(state, input);
        case BitRateMode::kBuffered:
            return buffered_rate(state, input);
        case BitRateMode::kConstant:
            return constant_rate(state, input);
        case BitRateMode::kNone:
            break;
    }
    return {};
}

void give_last(const AC4_ANALYZE_ac4_brcalc_state& state, RateStatus status, BrcalcOutput& output) {
    if (!state.result_stale) {
        output = {status, state.last_lower, state.last_upper};
    }
}

void update_scale(AC4_ANALYZE_ac4_brcalc_state& state) {
    std::uint64_t scale = 1ULL << kScaleShift;
    for (std::size_t i = 0; i < static_cast<std::size_t>(state.br_codes_count); ++i) {
        for (int times = 0; times < state.br_codes[i]; ++times) {
            scale = multiply_scale(scale, quantization_bases_uq04p28[i + 1]);
        }
    }
    state.br_factor = static_cast<std::uint32_t>(scale);
}

void store_start_code(AC4_ANALYZE_ac4_brcalc_state& state) {
    if (state.br_phase == 1 && state.br_codes_count != std::min(state.br_position, kBrcalcCodes)) {
        AC4_ANALYZE_ac4_brcalc_state_reset(&state);
        return;
    }
    state.needs_update = state.br_phase == 0;
    state.br_phase = 1;
    state.br_position = 0;
}

void store_digit(AC4_ANALYZE_ac4_brcalc_state& state, std::uint8_t digit) {
    if (state.br_phase == 0) {
        return;
    }
    if (state.br_position < state.br_codes_count) {
        if (state.br_codes[static_cast<std::size_t>(state.br_position)] != digit) {
            AC4_ANALYZE_ac4_brcalc_state_reset(&state);
            return;
        }
    } else if (state.br_codes_count < kBrcalcCodes) {
        state.br_codes[static_cast<std::size_t>(state.br_codes_count)] = digit;
        ++state.br_codes_count;
        state.needs_update = true;
        update_scale(state);
    }
    state.br_position = std::min(state.br_position + 1, kBrcalcCodes);
}

}  // namespace

int AC4_ANALYZE_ac4_brcalc_state_reset(AC4_ANALYZE_ac4_brcalc_state* state) {
    if (state == nullptr) {
        return 1;
    }
    *state = {};
    return 0;
}

void store_br_codes(AC4_ANALYZE_ac4_brcalc_state* state, std::uint32_t br_code) {
    if (br_code == kStartCode) {
        store_start_code(*state);
    } else if (br_code < kStartCode) {
        store_digit(*state, static_cast<std::uint8_t>(br_code));
    }
}

int AC4_ANALYZE_ac4_brcalc_process(AC4_ANALYZE_ac4_brcalc_state* state, const BrcalcInput& input,
                                   BrcalcOutput* output) {
    *output = {};
    // Judged ahead of the mode: a repeated frame stays out even where the mode changes.
    const SequenceClass sequence = classify(input.sequence_counter, state->last_sequence_counter);
    if (!input.b_wait_frames) {
        if (state->last_mode != BitRateMode::kAverage) {
            return AC4_ANALYZE_ac4_brcalc_state_reset(state);
        }
        give_last(*state, RateStatus::kValue, *output);
        state->last_sequence_counter = input.sequence_counter;
        return 0;
    }
    if (input.mode != state->last_mode) {
        AC4_ANALYZE_ac4_brcalc_state_reset(state);
    }
    if (sequence == SequenceClass::kRepeat) {
        give_last(*state, RateStatus::kValue, *output);
        return 0;
    }
    if (sequence != SequenceClass::kNext) {
        if (sequence == SequenceClass::kOneLost) {
            give_last(*state, RateStatus::kBeforeBreak, *output);
        }
        AC4_ANALYZE_ac4_brcalc_state_reset(state);
    }
    const RateRange result = measure(*state, input);
    if (result.valid) {
        state->last_lower = result.lower;
        state->last_upper = result.upper;
        state->result_stale = false;
        // Behind a lost frame the former rate is given once more, though a new one may stand.
        if (output->status != RateStatus::kBeforeBreak) {
            give_last(*state, RateStatus::kValue, *output);
        }
    }
    state->last_sequence_counter = input.sequence_counter;
    state->last_mode = input.mode;
    return 0;
}

}  // namespace mediasplit
