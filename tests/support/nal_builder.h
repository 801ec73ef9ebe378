// Writes H.264 and H.265 parameter sets bit by bit.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "tests/support/bit_writer.h"

namespace mediasplit::testing {

/// Puts in the emulation prevention bytes that a payload needs (ITU-T H.264 7.4.1.1).
std::vector<std::uint8_t> escape_nal(const std::vector<std::uint8_t>& payload);

struct Fraction {
    std::uint32_t units_in_tick = 1;
    std::uint32_t time_scale = 50;
};

struct CropOffsets {
    std::uint32_t left = 0;
    std::uint32_t right = 0;
    std::uint32_t top = 0;
    std::uint32_t bottom = 0;
};

struct AvcSpsOptions {
    std::uint8_t profile_idc = 66;
    std::uint8_t constraint_flags = 0;
    std::uint8_t level_idc = 30;
    std::uint32_t chroma_format_idc = 1;  ///< written for profile 100 and its like
    bool separate_colour_plane = false;
    std::uint32_t bit_depth = 8;
    std::uint32_t width_in_mbs = 20;
    std::uint32_t height_in_map_units = 15;
    bool frame_mbs_only = true;
    std::optional<CropOffsets> crop;
    std::optional<Fraction> timing;
    std::optional<std::uint8_t> aspect_ratio_idc;
    std::uint16_t sar_width = 0;  ///< written for an idc of 255
    std::uint16_t sar_height = 0;
};

/// A whole unit of type 7, escaped.
std::vector<std::uint8_t> build_avc_sps(const AvcSpsOptions& options);

struct HevcProfileOptions {
    std::uint8_t space = 0;
    std::uint8_t tier = 0;
    std::uint8_t idc = 1;
    std::uint32_t compatibility_flags = 0x60000000;
    bool progressive = true;
    bool interlaced = false;
    bool non_packed = false;
    bool frame_only = true;
    std::uint64_t reserved_44bits = 0;
    std::uint8_t level = 93;
};

/// The 88 bits of a profile, without its level.
void write_hevc_profile(BitWriter& out, const HevcProfileOptions& profile);

struct HevcVpsOptions {
    HevcProfileOptions profile;
    std::uint8_t max_layers_minus1 = 0;
    std::optional<Fraction> timing;
};

struct HevcColour {
    std::uint8_t primaries = 2;
    std::uint8_t transfer = 2;
    std::uint8_t matrix = 2;
};

struct HevcSpsOptions {
    HevcProfileOptions profile;
    std::uint32_t chroma_format_idc = 1;
    std::uint32_t width = 416;
    std::uint32_t height = 240;
    std::optional<CropOffsets> conformance_window;
    std::uint32_t bit_depth = 8;
    std::optional<HevcColour> colour;
    std::optional<Fraction> timing;
    std::optional<std::uint8_t> aspect_ratio_idc;
};

/// Whole units of types 32, 33 and 34, escaped.
std::vector<std::uint8_t> build_hevc_vps(const HevcVpsOptions& options);
std::vector<std::uint8_t> build_hevc_sps(const HevcSpsOptions& options);
std::vector<std::uint8_t> build_hevc_pps();

}  // namespace mediasplit::testing
