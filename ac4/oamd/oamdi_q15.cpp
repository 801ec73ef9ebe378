#include "ac4/oamd/oamdi_q15.h"

#include <algorithm>

namespace mediasplit {
namespace {

constexpr std::int32_t kMostQ15 = 32767;
constexpr std::int64_t kHalfQ15 = 16384;
constexpr int kQ15 = 15;

}  // namespace

SignMagnitudeQ15 AC4_ANALYZE_oamdi_get_smag_Q15(std::int32_t value) {
    const std::int64_t wide = value;
    const std::int64_t magnitude = std::min<std::int64_t>(wide < 0 ? -wide : wide, kMostQ15);
    return {static_cast<std::int32_t>(magnitude), wide < 0};
}

std::int32_t AC4_ANALYZE_oamdi_truncate_from_Q15(std::int32_t n, std::int32_t value) {
    const std::int64_t fraction = std::clamp(value, 0, kMostQ15) + std::int64_t{1};
    return static_cast<std::int32_t>((n * fraction) >> kQ15);
}

std::int32_t AC4_ANALYZE_oamdi_round_from_Q15_away_from_zero(std::int32_t n, std::int32_t value) {
    return static_cast<std::int32_t>((std::int64_t{n} * value + kHalfQ15) >> kQ15);
}

std::int32_t AC4_ANALYZE_oamdi_round_from_Q15_away_from_half(std::int32_t n, std::int32_t value) {
    const std::int64_t distance = value >= kHalfQ15 ? value - kHalfQ15 : kHalfQ15 - value;
    const std::int64_t steps = (n * distance + kHalfQ15) >> kQ15;
    const std::int64_t middle = n >> 1;
    return static_cast<std::int32_t>(value >= kHalfQ15 ? middle + steps : middle - steps);
}

}  // namespace mediasplit
