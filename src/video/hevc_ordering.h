// The sub-layer ordering rows that video and sequence parameter sets have in common.
#pragma once

#include <array>
#include <cstdint>

#include "src/video/bit_cursor.h"
#include "src/video/hevc_parameter_sets.h"

namespace mediasplit {

/// Reads a row for each sub-layer, or only that of the highest, which then holds for all.
inline void read_sub_layer_ordering(std::array<HevcSubLayerOrdering, kMaxHevcSubLayers>& rows,
                                    BitCursor& bits, bool all_present,
                                    std::uint32_t max_sub_layers_minus1) {
    const std::uint32_t highest = max_sub_layers_minus1 % kMaxHevcSubLayers;
    for (std::uint32_t i = all_present ? 0 : highest; i <= highest; ++i) {
        rows[i].max_dec_pic_buffering_minus1 = bits.ue();
        rows[i].max_num_reorder_pics = bits.ue();
        rows[i].max_latency_increase_plus1 = bits.ue();
    }
    for (std::uint32_t i = 0; !all_present && i < highest; ++i) {
        rows[i] = rows[highest];
    }
}

}  // namespace mediasplit
