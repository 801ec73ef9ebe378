#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "ac4/metadata/channel_modes.h"
#include "ac4/metadata/metadata_codes.h"
#include "ac4/metadata/metadata_state.h"
#include "ac4/oamd/downmix_fields.h"

namespace mediasplit {

inline constexpr int kPresentationNameBytes = 32;
inline constexpr int kPresentationTargets = 31;

// What the reader must know of a presentation from the table of contents.
struct PresentationFacts {
    bool b_alternative = false;
    bool b_pres_ndot = false;
    int n_substreams = 0;        // substreams of all groups of the presentation
    int n_substream_groups = 0;  // groups whose gains are sent
    int ch_mode = kNoChannelMode;
    int core_ch_mode = kNoChannelMode;
    bool b_4_back_channels_present = false;
    int top_channel_pairs = 0;
    bool b_objects = false;  // no channel mode because of object substreams
    int frame_length = 0;    // samples
};

struct PresentationTarget {
    std::uint8_t target_level = 0;
    std::uint8_t target_device_category = 0;
    CodedField max_ducking_depth;
    CodedField loud_corr_target;
    std::uint16_t active_substreams = 0;
};

struct PresentationMetadata {
    bool b_name_present = false;
    std::uint8_t name_length = 0;
    std::array<char, kPresentationNameBytes> name{};
    std::uint32_t n_targets = 0;  // as sent; kPresentationTargets are kept
    std::array<PresentationTarget, kPresentationTargets> targets{};
    bool b_additional_data = false;
    bool immersive_audio_indicator = false;
    bool dialnorm_present = false;
    float dialnorm = 0.0F;  // dB
    FurtherLoudness loudness{};
    bool loudness_changed = false;        // differs from the last frame's
    std::uint64_t drc_metadata_size = 0;  // bits
    DrcFrame drc{};
    bool b_associated = false;
    CodedField scale_main;
    CodedField scale_main_centre;
    CodedField scale_main_front;
    CodedField pan_associated;
    bool b_cdmx_data_present = false;
    std::uint8_t n_cdmx_configs = 0;
    StereoDownmix stereo_dmx;
    bool b_obj_loud_corr = false;
    bool b_corr_for_immersive_out = false;
};

// Reads an `ac4_presentation_substream` (ETSI TS 103 190-2) up to its last element;
// `slot` holds what frames carry over. 0 or codes of metadata_codes.h.
std::uint32_t parse_presentation_substream(FieldReader& in, MetadataSlot& slot,
                                           const PresentationFacts& facts,
                                           PresentationMetadata* out);

// The same over a substream's bytes. `size` 0 is simply done.
// `presentation` is the number of the slot of `state` that holds what frames carry over; a number
// outside the slots carries nothing. Bits behind the last element are tolerated. 0 or codes of
// metadata_codes.h.
std::uint32_t ac4analyze_parse_ac4_presentation_substream(Ac4MetadataState* state, int presentation,
                                                          const std::uint8_t* data,
                                                          std::size_t size,
                                                          const PresentationFacts& facts,
                                                          PresentationMetadata* out);

}  // namespace mediasplit
