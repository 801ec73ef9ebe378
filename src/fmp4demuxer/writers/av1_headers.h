// The headers of AV1 open bitstream units (AV1 bitstream specification, clause 5).
#pragma once

#include <cstdint>

#include "src/util/bit_reader.h"

namespace mediasplit {

// obu_type values that are looked at.
inline constexpr std::uint32_t kObuSequenceHeader = 1;
inline constexpr std::uint32_t kObuTileGroup = 4;
inline constexpr std::uint32_t kObuMetadata = 5;
inline constexpr std::uint32_t kObuPadding = 15;

// One unit of a sample; `payload` is what stands behind header and size, cut at the sample's end.
struct Obu {
    std::uint32_t type = 0;
    ByteSpan payload;
};

// Takes the unit that `rest` begins with off it. A unit without a size reaches to the end.
[[nodiscard]] Obu take_obu(ByteSpan& rest);

// What a sequence header says up to its colour configuration (5.5).
struct Av1SequenceHeader {
    std::uint32_t seq_profile = 0;
    std::uint32_t seq_level_idx_0 = 0;  // of the first operating point
    std::uint32_t seq_tier_0 = 0;
    std::uint32_t high_bitdepth = 0;
    std::uint32_t twelve_bit = 0;
    std::uint32_t monochrome = 0;
    std::uint32_t color_primaries = 0;
    std::uint32_t transfer_characteristics = 0;
    std::uint32_t matrix_coefficients = 0;
    std::uint32_t chroma_subsampling_x = 0;
    std::uint32_t chroma_subsampling_y = 0;
    std::uint32_t chroma_sample_position = 0;
};

[[nodiscard]] Av1SequenceHeader read_sequence_header(ByteSpan payload);

}  // namespace mediasplit
