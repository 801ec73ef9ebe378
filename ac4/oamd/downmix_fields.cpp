#include "ac4/oamd/downmix_fields.h"

namespace mediasplit {
namespace {

constexpr int kMixGainBits = 3;
constexpr int kFineGainBits = 5;  // loudness corrections and the LFE gain

std::uint8_t read_mix_gain(FieldReader& in) {
    return read_byte(in, kMixGainBits);
}

CodedField read_fine_gain_if(FieldReader& in, bool wanted) {
    return wanted ? read_optional_field(in, kFineGainBits) : CodedField{};
}

}  // namespace

void read_stereo_downmix(FieldReader& in, StereoDownmixForm form, StereoDownmix& out) {
    out = {};
    out.present = read_flag(in);
    if (!out.present) {
        return;
    }
    out.loro_centre_mixgain = read_mix_gain(in);
    out.loro_surround_mixgain = read_mix_gain(in);
    out.loro_dmx_loud_corr = read_fine_gain_if(in, form.loudness_corrections);
    out.ltrt_present = read_flag(in);
    if (out.ltrt_present) {
        out.ltrt_centre_mixgain = read_mix_gain(in);
        out.ltrt_surround_mixgain = read_mix_gain(in);
    }
    out.ltrt_dmx_loud_corr = read_fine_gain_if(in, form.loudness_corrections);
    out.lfe_mixgain = read_fine_gain_if(in, form.lfe);
    out.preferred_dmx_method = read_byte(in, 2);
}

void skip_two_way_tool(FieldReader& in) {
    skip_field(in, 1 + kMixGainBits);
}

void skip_three_way_tool(FieldReader& in) {
    const bool to_front = read_flag(in);
    skip_field(in, (to_front ? 0 : 1) + kMixGainBits);
}

}  // namespace mediasplit
