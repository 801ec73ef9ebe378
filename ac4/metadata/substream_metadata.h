#pragma once

#include <cstddef>
#include <cstdint>

#include "ac4/metadata/channel_modes.h"
#include "ac4/metadata/emdf_payloads.h"
#include "ac4/metadata/metadata_codes.h"
#include "ac4/metadata/metadata_state.h"
#include "ac4/oamd/downmix_fields.h"
#include "ac4/oamd/object_data.h"

namespace mediasplit {

// What the reader must know of a substream from the table of contents.
struct SubstreamFacts {
    int ch_mode = kNoChannelMode;  // kNoChannelMode for object and A-JOC substreams
    int sus_ver = 1;               // 0 in bitstream versions 0 and 1, unless a group says otherwise
    bool b_iframe = false;         // b_iframe or b_audio_ndot
    bool b_associated = false;     // asked for sus_ver 0 only: an associated audio service
    bool b_dialog = false;         // asked for sus_ver 0 only: a dialogue service
    bool b_object_coded = false;
    bool b_ajoc = false;
    int frame_length = 0;     // samples
    OamdObjectFacts objects;  // asked for objects in alternative presentations only
};

struct BasicMetadata {
    bool more = false;  // b_more_basic_metadata
    CodedField substream_loudness;
    CodedField pre_dmixtyp_2ch;
    std::uint8_t phase90_info_2ch = 0;
    StereoDownmix stereo_dmx;
    CodedField pre_dmixtyp_5ch;
    CodedField pre_upmixtyp_5ch;
    CodedField pre_upmixtyp_7ch;
    std::uint8_t phase90_info_mc = 0;
    bool b_surround_attenuation_known = false;
    bool b_lfe_attenuation_known = false;
    CodedField dc_block_on;
};

struct ExtendedMetadata {
    CodedField scale_main;
    CodedField scale_main_centre;
    CodedField scale_main_front;
    bool pan_associated_present = false;
    float pan_associated = 0.0F;  // degrees
    bool b_dialog = false;
    bool dialog_max_gain_present = false;
    float dialog_max_gain = 0.0F;  // dB
    std::uint8_t pan_dialog_count = 0;
    float pan_dialog[2] = {0.0F, 0.0F};  // degrees
    std::uint8_t pan_signal_selector = 0;
    bool b_channels_classifier = false;
    std::uint16_t active_channels = 0;  // bit i for the i-th of C, L, R, Ls, Rs, Lb, Rb, Lw, Rw,
                                        // Tfl, Tfr, LFE
    std::uint16_t dialog_channels = 0;  // C, L and R of the same
    CodedField event_probability;
};

struct SubstreamMetadata {
    std::uint64_t audio_size = 0;  // bytes
    bool dialnorm_present = false;
    float dialnorm = 0.0F;  // dB; the last frame's if this one has none
    FurtherLoudness loudness{};
    bool loudness_changed = false;  // differs from the last frame's
    BasicMetadata basic{};
    ExtendedMetadata extended{};
    std::uint64_t tools_metadata_size = 0;  // bits
    DrcFrame drc{};
    DialogueEnhancement de{};
    EmdfContext emdf{};
    ImsInfo ims{};
};

// Reads an `ac4_substream`: steps over the coded audio and reads `metadata` (ETSI TS 103 190-1
// clause 4.2.14, and TS 103 190-2). `size` 0 is simply done. `substream` is the number of the slot
// of `state` that holds what frames carry over; a number outside the slots carries nothing. 0 or
// codes of metadata_codes.h: soft ones are ORed together, a fatal one stands alone.
std::uint32_t ac4analyze_get_substream_metadata(Ac4MetadataState* state, int substream,
                                                const std::uint8_t* data, std::size_t size,
                                                const SubstreamFacts& facts,
                                                SubstreamMetadata* out);

}  // namespace mediasplit
