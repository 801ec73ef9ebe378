#pragma once

#include <array>
#include <cstdint>

#include "ac4/syntax/field_reader.h"

namespace mediasplit {

// Dynamic range control (`drc_frame`, ETSI TS 103 190-1 clause 4.2.14).

inline constexpr int kDrcMostModes = 8;

// One side, boost or cut, of a compression curve, as coded.
struct DrcCurveSide {
    std::uint8_t max_gain = 0;
    std::uint8_t max_level = 0;
    bool section = false;
    std::uint8_t section_gain = 0;
    std::uint8_t section_level = 0;
};

struct DrcCompressionCurve {
    std::uint8_t lev_nullband_low = 0;
    std::uint8_t lev_nullband_high = 0;
    DrcCurveSide boost;
    DrcCurveSide cut;
    bool tc_default = false;
    std::array<std::uint8_t, 4> time_constants{};  // attack, release, and both fast
    bool adaptive_smoothing = false;
    std::uint8_t attack_threshold = 0;
    std::uint8_t release_threshold = 0;
};

struct DrcModeConfig {
    std::uint8_t mode_id = 0;  // 0 home theatre, 1 flat panel, 2 speaker, 3 headphone, 4 to 7 free
    std::int8_t level_from = 0;  // dB, 0 or below, free modes only
    std::int8_t level_to = 0;
    bool repeats = false;  // takes after mode `repeat_id`
    std::uint8_t repeat_id = 0;
    bool default_profile = false;
    bool compression_curve = false;  // gains follow from a curve; otherwise they are sent
    std::uint8_t gains_config = 0;
    DrcCompressionCurve curve;
};

struct DrcConfig {
    std::uint8_t mode_count = 0;
    std::array<DrcModeConfig, kDrcMostModes> modes{};
    std::uint8_t eac3_profile = 0;
};

struct DrcFrame {
    bool present = false;         // b_drc_present
    bool config_present = false;  // this frame brought the configuration
    bool data_read = false;
    std::uint8_t mode_count = 0;  // of the configuration in force
    std::uint8_t eac3_profile = 0;
    std::uint8_t gain_sets = 0;  // modes whose gains are sent
    std::int8_t first_gain = 0;  // dB, of the first gain set that was read
    bool reset = false;          // drc_reset_flag
};

// The configuration that later frames of a substream refer to.
struct DrcState {
    bool seen = false;
    DrcConfig config{};
};

struct DrcFacts {
    bool b_iframe = false;  // the frame brings its configuration
    int ch_mode = -1;
    int frame_length = 0;  // samples
};

// Reads `drc_frame`. 0, 8192, 12288, or 256 if the frame depends on a configuration that wasn't
// seen: the reader then stands behind the presence flag and the enclosing size tells where to go
// on.
std::uint32_t parse_drc_frame(FieldReader& in, DrcFrame* out, DrcState* state,
                              const DrcFacts& facts);

// Reads `drc_data` for a configuration. 0, 8192 or 12288.
std::uint32_t parse_drc_data(FieldReader& in, DrcFrame* out, const DrcConfig& config,
                             const DrcFacts& facts);

}  // namespace mediasplit
