// Decoder configuration records of a video track, as its sample entry gives them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "src/video/parameter_sets.h"

namespace mediasplit {

/// Units of one type that a configuration keeps; later ones are dropped.
inline constexpr std::size_t kMaxConfigUnits = 32;

/// A parameter set: its unit, owned, and what the unit says.
template <typename Record>
struct ParameterSet {
    std::vector<std::uint8_t> unit;
    Record record;

    /// A view of the unit, valid as long as `unit` is unchanged.
    [[nodiscard]] NalBuffer nal() const {
        return NalBuffer{unit.data(), static_cast<std::uint32_t>(unit.size())};
    }
};

/// AVCDecoderConfigurationRecord, ISO/IEC 14496-15 5.3.3.1.
struct AvcConfig {
    std::uint8_t configuration_version = 0;
    std::uint8_t profile_idc = 0;
    std::uint8_t profile_compatibility = 0;
    std::uint8_t level_idc = 0;
    std::uint8_t length_size_minus_one = 0;
    std::vector<ParameterSet<AvcSps>> sps;       ///< at most kMaxConfigUnits
    std::vector<std::vector<std::uint8_t>> pps;  ///< likewise
};

/// HEVCDecoderConfigurationRecord, ISO/IEC 14496-15 8.3.3.1.
struct HevcConfig {
    std::uint8_t configuration_version = 0;
    std::uint8_t general_profile_space = 0;
    std::uint8_t general_tier_flag = 0;
    std::uint8_t general_profile_idc = 0;
    std::uint32_t general_profile_compatibility_flags = 0;
    std::uint8_t general_progressive_source_flag = 0;
    std::uint8_t general_interlaced_source_flag = 0;
    std::uint8_t general_non_packed_constraint_flag = 0;
    std::uint8_t general_frame_only_constraint_flag = 0;
    std::uint32_t general_reserved_zero_44bits_43_12 = 0;
    std::uint16_t general_reserved_zero_44bits_11_0 = 0;
    std::uint8_t general_level_idc = 0;
    std::uint16_t min_spatial_segmentation_idc = 0;
    std::uint8_t parallelism_type = 0;
    std::uint8_t chroma_format_idc = 0;
    std::uint8_t bit_depth_luma_minus8 = 0;
    std::uint8_t bit_depth_chroma_minus8 = 0;
    std::uint16_t avg_frame_rate = 0;
    std::uint8_t constant_frame_rate = 0;
    std::uint8_t num_temporal_layers = 0;
    std::uint8_t temporal_id_nested = 0;
    std::uint8_t length_size_minus_one = 0;
    std::uint8_t num_arrays = 0;
    std::vector<ParameterSet<HevcVps>> vps;  ///< at most kMaxConfigUnits, as are the others
    std::vector<ParameterSet<HevcSps>> sps;
    std::vector<ParameterSet<HevcPps>> pps;
    std::vector<std::vector<std::uint8_t>> sei;
};

/// AV1CodecConfigurationRecord of the AV1 ISO media binding, with the first metadata unit of its
/// configOBUs.
struct Av1Config {
    std::uint8_t marker = 0;
    std::uint8_t version = 0;
    std::uint8_t seq_profile = 0;
    std::uint8_t seq_level_idx_0 = 0;
    std::uint8_t seq_tier_0 = 0;
    std::uint8_t high_bitdepth = 0;
    std::uint8_t twelve_bit = 0;
    std::uint8_t monochrome = 0;
    std::uint8_t chroma_subsampling_x = 0;
    std::uint8_t chroma_subsampling_y = 0;
    std::uint8_t chroma_sample_position = 0;
    std::uint8_t initial_presentation_delay_present = 0;
    std::uint8_t initial_presentation_delay_minus_one = 0;
    std::uint8_t obu_forbidden_bit = 0;
    std::uint8_t obu_type = 0;
    std::uint8_t obu_extension_flag = 0;
    std::uint8_t obu_has_size_field = 0;
    std::uint32_t obu_size = 0;
    std::uint32_t metadata_type = 0;
    std::uint8_t itu_t_t35_country_code = 0;
    std::uint16_t itu_t_t35_terminal_provider_code = 0;
    std::uint32_t itu_t_t35_terminal_provider_oriented_code = 0;
};

/// Configuration of the enhancement format (boxes pxcC, pxvC, pxwC).
struct PxConfig {
    std::uint32_t version_major = 0;
    std::uint32_t version_minor = 0;
    std::uint32_t profile = 0;
    std::uint32_t level = 0;
    std::uint32_t rpu_flag = 0;
    std::uint32_t el_flag = 0;
    std::uint32_t bl_flag = 0;
    std::uint32_t bl_compatible_id = 0;
    std::uint32_t md_compression = 0;
};

}  // namespace mediasplit
