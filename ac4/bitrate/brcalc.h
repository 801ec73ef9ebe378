#pragma once

#include <array>
#include <cstdint>

namespace mediasplit {

// Estimates the bit rate of an AC-4 stream from its frame sizes and the `wait_frames` and `br_code`
// fields of each table of contents (ETSI TS 103 190-1, `ac4_toc`).

inline constexpr int kBrcalcWindow = 18;  // frames looked back on
inline constexpr int kBrcalcCodes = 8;    // base 3 digits of one rate code

enum class BitRateMode : std::int32_t {
    kNone = 0,
    kAverage = 2,   // wait_frames 7: the rate is spelled out by br_code
    kBuffered = 3,  // wait_frames 1 to 6: sizes, waiting and br_code narrow the rate down
    kConstant = 4   // wait_frames 0: every frame takes one frame's time
};

enum class RateStatus : std::uint32_t {
    kValue = 0,
    kNoValue = 1,
    kBeforeBreak = 2  // the value stems from before a discontinuity
};

struct BrcalcFrame {
    std::uint32_t bytes = 0;
    std::int32_t wait_frames = 0;
};

// Running estimate of one stream. A default record is at its start values.
struct AC4_ANALYZE_ac4_brcalc_state {
    std::array<BrcalcFrame, kBrcalcWindow> window{};  // oldest first
    std::int32_t window_fill = 0;
    std::array<std::uint8_t, kBrcalcCodes> br_codes{};
    std::int32_t br_codes_count = 0;
    std::int32_t br_phase = 0;     // 0 before the first start code, 1 collecting
    std::int32_t br_position = 0;  // frames since the last start code
    std::uint32_t br_factor = 0x10000000;
    std::int32_t br_factor_shift = 28;
    std::int32_t last_sequence_counter = 2000;  // no real counter reaches it
    BitRateMode last_mode = BitRateMode::kNone;
    std::uint32_t size_a = 0;  // the two frame sizes that alternate at a constant rate
    std::uint32_t size_b = 0;
    std::int32_t size_count = 0;
    bool result_stale = true;
    bool needs_update = true;  // no complete rate code stands
    std::uint64_t last_lower = 0;
    std::uint64_t last_upper = 0;
};

struct BrcalcInput {
    std::uint32_t frame_rate_index = 0;
    std::uint32_t fs_index = 0;
    std::uint32_t frame_bytes = 0;
    std::uint32_t br_code = 0;  // 0 to 3
    std::int32_t wait_frames_minus1 = 0;
    bool b_wait_frames = false;
    std::int32_t sequence_counter = 0;
    BitRateMode mode = BitRateMode::kNone;
};

struct BrcalcOutput {
    RateStatus status = RateStatus::kNoValue;
    std::uint64_t lower = 0;  // bits per second
    std::uint64_t upper = 0;
};

// Puts the state back to its start values. 0; 1 without a state.
int AC4_ANALYZE_ac4_brcalc_state_reset(AC4_ANALYZE_ac4_brcalc_state* state);

// Takes the next frame in and gives the estimate behind it. Every frame of the stream must be
// passed, in order. 0 in all cases: no estimate shows as status kNoValue.
int AC4_ANALYZE_ac4_brcalc_process(AC4_ANALYZE_ac4_brcalc_state* state, const BrcalcInput& input,
                                   BrcalcOutput* output);

// Takes one `br_code`: 3 starts a code, 0 to 2 are its digits, most significant first. A code that
// contradicts what stands resets the state.
void store_br_codes(AC4_ANALYZE_ac4_brcalc_state* state, std::uint32_t br_code);

}  // namespace mediasplit
