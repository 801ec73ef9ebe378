#pragma once

#include <cstdint>

namespace mediasplit {

// Conversions between Q15 fractions (32768 = 1.0) and coded integers of n steps.

struct SignMagnitudeQ15 {
    std::int32_t magnitude = 0;  // 0 to 32767
    bool negative = false;
};

// Splits a value into sign and magnitude; the magnitude ends at 32767.
SignMagnitudeQ15 AC4_ANALYZE_oamdi_get_smag_Q15(std::int32_t value);

// n x v rounded down, v limited to 0 to 32767; 32767 stands for 1.0.
std::int32_t AC4_ANALYZE_oamdi_truncate_from_Q15(std::int32_t n, std::int32_t value);

// n x v rounded to nearest, halves up.
std::int32_t AC4_ANALYZE_oamdi_round_from_Q15_away_from_zero(std::int32_t n, std::int32_t value);

// n x v rounded so that values on both sides of one half move away from it.
std::int32_t AC4_ANALYZE_oamdi_round_from_Q15_away_from_half(std::int32_t n, std::int32_t value);

}  // namespace mediasplit
