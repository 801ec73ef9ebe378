#pragma once

#include <cstdint>

#include "ac4/oamd/field_forms.h"
#include "ac4/syntax/field_reader.h"

namespace mediasplit {

// Loudness measurements of a substream or presentation, as coded (`further_loudness_info`, ETSI TS
// 103 190-1 clause 4.2.14, and TS 103 190-2).
struct FurtherLoudness {
    bool present = false;
    std::uint8_t loudness_version = 0;
    std::uint8_t loud_prac_type = 0;
    bool b_loudcorr_dialgate = false;
    CodedField dialgate_prac_type;  // of the correction
    bool b_loudcorr_type = false;
    CodedField loudrelgat;
    CodedField loudspchgat;
    std::uint8_t speech_dialgate_prac_type = 0;
    CodedField loudstrm3s;
    CodedField max_loudstrm3s;
    CodedField truepk;
    CodedField max_truepk;
    bool b_prgmbndy = false;
    std::uint32_t prgmbndy_zeros = 0;  // the boundary lies 2^zeros frames away
    bool b_end_or_start = false;
    CodedField prgmbndy_offset;
    CodedField lra;
    std::uint8_t lra_prac_type = 0;
    CodedField loudmntry;
    CodedField max_loudmntry;
    CodedField rtll_comp;

    bool operator==(const FurtherLoudness&) const = default;
};

// Reads `further_loudness_info`; `sus_ver` is the substream's syntax version, and
// `b_presentation_ldn` tells that a presentation substream holds it. 0, 8192 or 12288.
std::uint32_t parse_further_loudness_info(FieldReader& in, FurtherLoudness* out, int sus_ver,
                                          bool b_presentation_ldn);

}  // namespace mediasplit
