#include "ac4/metadata/dialogue_enhancement.h"

#include <bit>

#include "ac4/metadata/channel_modes.h"
#include "ac4/metadata/huffdec.h"
#include "ac4/metadata/huffman_trees.h"
#include "ac4/metadata/metadata_codes.h"
#include "ac4/oamd/field_forms.h"

namespace mediasplit {
namespace {

constexpr int kBands = 8;
constexpr float kGainStep = 3.0F;  // dB

// The parameters of all channels. Their differences run on from band to band and from frame to
// frame, so that only an I-frame's very first one is absolute.
void read_parameters(FieldReader& in, std::uint32_t de_method, int channels, bool absolute_first) {
    const auto& trees = tree_huff_code_de[de_method & 1U];
    huffdec decoder;
    huffdec_init(&decoder);
    huffdec_set_bitbuf(&decoder, in.bits);
    for (int i = 0; i < channels * kBands && field_ok(in); ++i) {
        huffdec_set_tree(&decoder, trees[absolute_first && i == 0 ? 1 : 0]);
        huffdec_read(&decoder);
        if (huffdec_get_read_status(&decoder)) {
            in.error = FieldError::kRanOut;
        }
    }
}

DeConfig read_config(FieldReader& in) {
    DeConfig config;
    config.de_method = read_byte(in, 2);
    config.de_max_gain = static_cast<std::uint8_t>(read_field(in, 2) + 1);
    config.de_channel_config = read_byte(in, 3);
    return config;
}

}  // namespace

int de_channel_count(std::uint32_t de_channel_config) {
    return std::popcount(de_channel_config & 7U);
}

std::uint32_t parse_de_data(FieldReader& in, std::uint32_t de_method, int channels, bool may_keep,
                            bool first) {
    if (channels == 0) {
        return metadata_code(in);
    }
    const bool cross_channel = (de_method & 1U) != 0;
    if (cross_channel && channels > 1 && first) {
        const bool de_keep_pos_flag = may_keep && read_flag(in);
        if (!de_keep_pos_flag) {
            skip_field(in, channels == 3 ? 10 : 5);
        }
    }
    const bool de_keep_data_flag = may_keep && read_flag(in);
    if (de_keep_data_flag) {
        return metadata_code(in);
    }
    const bool de_ms_proc_flag = !cross_channel && channels == 2 && read_flag(in);
    read_parameters(in, de_method, channels - (de_ms_proc_flag ? 1 : 0), !may_keep);
    if (de_method > 1) {
        skip_field(in, 5);  // de_signal_contribution
    }
    return metadata_code(in);
}

std::uint32_t parse_dialog_enhancement(FieldReader& in, DialogueEnhancement* out, DeState* state,
                                       bool b_iframe, int ch_mode) {
    *out = {};
    out->b_de_data_present = read_flag(in);
    if (!out->b_de_data_present) {
        return metadata_code(in);
    }
    out->config_present = b_iframe || read_flag(in);
    if (out->config_present) {
        state->config = read_config(in);
        state->seen = field_ok(in);
    }
    if (!state->seen) {
        return field_ok(in) ? kMetadataDeConfigUnseen : metadata_code(in);
    }
    out->config = state->config;
    out->max_gain_db = kGainStep * static_cast<float>(out->config.de_max_gain);
    const int channels = de_channel_count(out->config.de_channel_config);
    const std::uint32_t code = parse_de_data(in, out->config.de_method, channels, !b_iframe, true);
    if (code != kMetadataOk || (ch_mode != 13 && ch_mode != 14)) {
        return code;
    }
    out->b_de_simulcast = read_flag(in);
    if (!out->b_de_simulcast) {
        return metadata_code(in);
    }
    return parse_de_data(in, out->config.de_method, channels, !b_iframe, false);
}

}  // namespace mediasplit
