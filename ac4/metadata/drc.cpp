#include "ac4/metadata/drc.h"

#include <algorithm>
#include <cstddef>

#include "ac4/metadata/huffdec.h"
#include "ac4/metadata/huffman_trees.h"
#include "ac4/metadata/metadata_codes.h"
#include "ac4/oamd/field_forms.h"

namespace mediasplit {
namespace {

constexpr std::uint8_t kFirstFreeMode = 4;
constexpr int kGainOffset = 64;  // drc_gain_val for 0 dB
constexpr int kVersionBits = 2;

struct CurveWidths {
    int max_gain;
    int max_level;
    int section_gain;
    int section_level;
};
constexpr CurveWidths kBoostWidths{4, 5, 4, 5};
constexpr CurveWidths kCutWidths{5, 6, 5, 5};

DrcCurveSide read_curve_side(FieldReader& in, const CurveWidths& widths) {
    DrcCurveSide side;
    side.max_gain = read_byte(in, widths.max_gain);
    if (side.max_gain != 0) {
        side.max_level = read_byte(in, widths.max_level);
        side.section = read_flag(in);
        if (side.section) {
            side.section_gain = read_byte(in, widths.section_gain);
            side.section_level = read_byte(in, widths.section_level);
        }
    }
    return side;
}

DrcCompressionCurve read_compression_curve(FieldReader& in) {
    DrcCompressionCurve curve;
    curve.lev_nullband_low = read_byte(in, 4);
    curve.lev_nullband_high = read_byte(in, 4);
    curve.boost = read_curve_side(in, kBoostWidths);
    curve.cut = read_curve_side(in, kCutWidths);
    curve.tc_default = read_flag(in);
    if (!curve.tc_default) {
        for (std::uint8_t& constant : curve.time_constants) {
            constant = read_byte(in, 8);
        }
        curve.adaptive_smoothing = read_flag(in);
        if (curve.adaptive_smoothing) {
            curve.attack_threshold = read_byte(in, 5);
            curve.release_threshold = read_byte(in, 5);
        }
    }
    return curve;
}

// Takes the profile of the mode named by `repeat_id`; one that did not come before leaves the
// default profile.
void repeat_profile(const DrcConfig& config, DrcModeConfig& mode) {
    const auto* end = config.modes.data() + config.mode_count;
    const auto* source = std::find_if(
        config.modes.data(), end,
        [&mode](const DrcModeConfig& other) { return other.mode_id == mode.repeat_id; });
    mode.default_profile = source == end || source->default_profile;
    mode.compression_curve = source == end || source->compression_curve;
    mode.gains_config = source == end ? std::uint8_t{0} : source->gains_config;
    mode.curve = source == end ? DrcCompressionCurve{} : source->curve;
}

void read_profile(FieldReader& in, DrcModeConfig& mode) {
    mode.default_profile = read_flag(in);
    mode.compression_curve = mode.default_profile || read_flag(in);
    if (mode.default_profile) {
        return;
    }
    if (mode.compression_curve) {
        mode.curve = read_compression_curve(in);
    } else {
        mode.gains_config = read_byte(in, 2);
    }
}

DrcModeConfig read_mode_config(FieldReader& in, const DrcConfig& config) {
    DrcModeConfig mode;
    mode.mode_id = read_byte(in, 3);
    if (mode.mode_id >= kFirstFreeMode) {
        mode.level_from = static_cast<std::int8_t>(-static_cast<int>(read_field(in, 5)));
        mode.level_to = static_cast<std::int8_t>(-static_cast<int>(read_field(in, 5)));
    }
    mode.repeats = read_flag(in);
    if (mode.repeats) {
        mode.repeat_id = read_byte(in, 3);
        repeat_profile(config, mode);
    } else {
        read_profile(in, mode);
    }
    return mode;
}

DrcConfig read_config(FieldReader& in) {
    DrcConfig config;
    const std::uint32_t modes = read_field(in, 3) + 1;
    while (config.mode_count < modes) {
        config.modes[config.mode_count] = read_mode_config(in, config);
        ++config.mode_count;
    }
    config.eac3_profile = read_byte(in, 3);
    return config;
}

// Channel groups that have gains of their own; 0 where none are defined.
int drc_channel_count(int ch_mode) {
    if (ch_mode == 0 || ch_mode == 1) {
        return 1;
    }
    if (ch_mode >= 3 && ch_mode <= 15) {
        return ch_mode <= 10 ? 3 : 4;
    }
    return 0;
}

int drc_subframe_count(int frame_length) {
    struct Row {
        int samples;
        int subframes;
    };
    constexpr std::array<Row, 8> kRows = {
        {{384, 1}, {512, 2}, {768, 3}, {960, 3}, {1024, 4}, {1536, 6}, {1920, 6}, {2048, 8}}};
    for (const Row& row : kRows) {
        if (row.samples == frame_length) {
            return row.subframes;
        }
    }
    return 0;
}

// Gains of a set, the first included; 0 where the set cannot be stepped over by its syntax.
int gain_count(std::uint8_t gains_config, const DrcFacts& facts) {
    constexpr std::array<int, 4> kBands = {1, 1, 2, 4};
    if (gains_config == 0) {
        return 1;
    }
    return drc_channel_count(facts.ch_mode) * kBands[gains_config & 3U] *
           drc_subframe_count(facts.frame_length);
}

// The first gain as it is, the others as differences whose values nobody needs.
void read_gains(FieldReader& in, int count, DrcFrame& out) {
    const int first = static_cast<int>(read_field(in, 7)) - kGainOffset;
    if (out.gain_sets == 1) {
        out.first_gain = static_cast<std::int8_t>(first);
    }
    huffdec decoder;
    huffdec_init(&decoder);
    huffdec_set_tree(&decoder, tree_huff_code_drc[0]);
    huffdec_set_bitbuf(&decoder, in.bits);
    for (int i = 1; i < count && field_ok(in); ++i) {
        huffdec_read(&decoder);
        if (huffdec_get_read_status(&decoder)) {
            in.error = FieldError::kRanOut;
        }
    }
}

void read_gain_set(FieldReader& in, const DrcModeConfig& mode, const DrcFacts& facts,
                   DrcFrame& out) {
    ++out.gain_sets;
    const auto size = static_cast<std::int64_t>(read_extensible_size(in, 6, 2));
    const std::int64_t start = field_position(in);
    const std::uint32_t drc_version = read_field(in, kVersionBits);
    const int count = gain_count(mode.gains_config, facts);
    const bool gains_known = drc_version <= 1 && count > 0;
    if (gains_known) {
        read_gains(in, count, out);
    }
    // Only the first version stands without its size.
    if (drc_version != 0 || !gains_known) {
        skip_field(in, std::max<std::int64_t>(start + size - field_position(in), 0));
    }
}

}  // namespace

std::uint32_t parse_drc_data(FieldReader& in, DrcFrame* out, const DrcConfig& config,
                             const DrcFacts& facts) {
    bool any_curve = false;
    for (std::size_t i = 0; i < config.mode_count && field_ok(in); ++i) {
        const DrcModeConfig& mode = config.modes[i];
        any_curve = any_curve || mode.compression_curve;
        if (!mode.compression_curve) {
            read_gain_set(in, mode, facts, *out);
        }
    }
    if (any_curve) {
        out->reset = read_flag(in);
        skip_field(in, 2);
    }
    out->data_read = field_ok(in);
    return metadata_code(in);
}

std::uint32_t parse_drc_frame(FieldReader& in, DrcFrame* out, DrcState* state,
                              const DrcFacts& facts) {
    *out = {};
    out->present = read_flag(in);
    if (!out->present) {
        return metadata_code(in);
    }
    if (facts.b_iframe) {
        const DrcConfig config = read_config(in);
        if (!field_ok(in)) {
            return metadata_code(in);
        }
        out->config_present = true;
        state->seen = true;
        state->config = config;
    }
    if (!state->seen) {
        return kMetadataDrcConfigUnseen;
    }
    out->mode_count = state->config.mode_count;
    out->eac3_profile = state->config.eac3_profile;
    return parse_drc_data(in, out, state->config, facts);
}

}  // namespace mediasplit
