#pragma once

#include <cstdint>

#include "ac4/syntax/field_reader.h"

namespace mediasplit {

// Dialogue enhancement (`dialog_enhancement`, ETSI TS 103 190-1 clause 4.2.14).

struct DeConfig {
    std::uint8_t de_method = 0;
    std::uint8_t de_max_gain = 0;  // maximum gain in steps of 3 dB, 1 to 4
    std::uint8_t de_channel_config = 0;
};

struct DialogueEnhancement {
    bool b_de_data_present = false;
    bool config_present = false;  // this frame brought the configuration
    DeConfig config{};            // in force, if data is present
    float max_gain_db = 0.0F;
    bool b_de_simulcast = false;
};

// The configuration that later frames of a substream refer to.
struct DeState {
    bool seen = false;
    DeConfig config{};
};

// Channels that `de_channel_config` (0 to 7) names.
int de_channel_count(std::uint32_t de_channel_config);

// Reads `dialog_enhancement`. 0, 8192, or 64 if the data depends on a configuration that wasn't
// seen: the reader then stands behind the flags.
std::uint32_t parse_dialog_enhancement(FieldReader& in, DialogueEnhancement* out, DeState* state,
                                       bool b_iframe, int ch_mode);

// Reads `de_data` for `channels` channels. `may_keep` tells that an earlier frame's values may be
// kept (not an I-frame), `first` that this is the first of two sets of data. 0 or 8192.
std::uint32_t parse_de_data(FieldReader& in, std::uint32_t de_method, int channels, bool may_keep,
                            bool first);

}  // namespace mediasplit
