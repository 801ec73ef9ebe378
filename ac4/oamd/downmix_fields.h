#pragma once

#include <cstdint>

#include "ac4/oamd/field_forms.h"
#include "ac4/syntax/field_reader.h"

namespace mediasplit {

// Downmix coefficients to stereo, as coded (`b_stereo_dmx_coeff` of ETSI TS 103 190-1
// clause 4.2.14).
struct StereoDownmix {
    bool present = false;
    std::uint8_t loro_centre_mixgain = 0;
    std::uint8_t loro_surround_mixgain = 0;
    CodedField loro_dmx_loud_corr;
    bool ltrt_present = false;
    std::uint8_t ltrt_centre_mixgain = 0;
    std::uint8_t ltrt_surround_mixgain = 0;
    CodedField ltrt_dmx_loud_corr;
    CodedField lfe_mixgain;
    std::uint8_t preferred_dmx_method = 0;
};

// The forms of the structure: the loudness corrections stand only in the basic metadata of
// channel-coded substreams, the LFE gain only where there is an LFE.
struct StereoDownmixForm {
    bool loudness_corrections = false;
    bool lfe = false;
};

// Reads `b_stereo_dmx_coeff` and what follows it.
void read_stereo_downmix(FieldReader& in, StereoDownmixForm form, StereoDownmix& out);

// Step over one downmix tool: two ways (front or back), or three (front, side or back).
void skip_two_way_tool(FieldReader& in);
void skip_three_way_tool(FieldReader& in);

}  // namespace mediasplit
