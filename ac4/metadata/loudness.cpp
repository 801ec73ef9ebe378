#include "ac4/metadata/loudness.h"

#include "ac4/metadata/metadata_codes.h"

namespace mediasplit {
namespace {

constexpr int kLevelBits = 11;

// Version and practice, which only the full form has.
void read_practice(FieldReader& in, FurtherLoudness& out) {
    out.loudness_version = read_byte(in, 2);
    if (out.loudness_version == 3) {
        out.loudness_version = static_cast<std::uint8_t>(3 + read_field(in, 4));
    }
    out.loud_prac_type = read_byte(in, 4);
    if (out.loud_prac_type != 0) {
        out.dialgate_prac_type = read_optional_field(in, 3);
        out.b_loudcorr_dialgate = out.dialgate_prac_type.present;
        out.b_loudcorr_type = read_flag(in);
    }
}

void read_program_boundary(FieldReader& in, FurtherLoudness& out) {
    out.b_prgmbndy = read_flag(in);
    if (!out.b_prgmbndy) {
        return;
    }
    while (!read_flag(in) && field_ok(in)) {
        ++out.prgmbndy_zeros;
    }
    out.b_end_or_start = read_flag(in);
    out.prgmbndy_offset = read_optional_field(in, kLevelBits);
}

}  // namespace

std::uint32_t parse_further_loudness_info(FieldReader& in, FurtherLoudness* out, int sus_ver,
                                          bool b_presentation_ldn) {
    *out = {};
    out->present = true;
    const bool full = b_presentation_ldn || sus_ver == 0;
    if (full) {
        read_practice(in, *out);
    } else {
        out->b_loudcorr_dialgate = read_flag(in);
    }
    out->loudrelgat = read_optional_field(in, kLevelBits);
    out->loudspchgat = read_optional_field(in, kLevelBits);
    if (out->loudspchgat.present) {
        out->speech_dialgate_prac_type = read_byte(in, 3);
    }
    out->loudstrm3s = read_optional_field(in, kLevelBits);
    out->max_loudstrm3s = read_optional_field(in, kLevelBits);
    out->truepk = read_optional_field(in, kLevelBits);
    out->max_truepk = read_optional_field(in, kLevelBits);
    if (full) {
        read_program_boundary(in, *out);
    }
    out->lra = read_optional_field(in, 10);
    if (out->lra.present) {
        out->lra_prac_type = read_byte(in, 3);
    }
    out->loudmntry = read_optional_field(in, kLevelBits);
    out->max_loudmntry = read_optional_field(in, kLevelBits);
    if (sus_ver >= 1) {
        out->rtll_comp = read_optional_field(in, 8);
    }
    const bool b_extension = read_flag(in);
    if (b_extension) {
        skip_field(in, read_extended(in, 5, 31, 4));
    }
    return metadata_code(in);
}

}  // namespace mediasplit
