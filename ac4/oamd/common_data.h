#pragma once

#include <array>
#include <cstdint>

#include "ac4/oamd/downmix_fields.h"
#include "ac4/oamd/oamdi.h"
#include "ac4/syntax/field_reader.h"

namespace mediasplit {

// What all objects of a program share (`oamd_common_data`, ETSI TS 103 190-2).
struct OamdCommonData {
    CodedField master_screen_size_ratio;  // not present: the default ratio
    bool b_bed_object_chan_distribute = false;
    std::uint32_t additional_bytes = 0;
    bool b_trim_present = false;
    std::uint8_t warp_mode = 0;
    std::uint8_t global_trim_mode = 0;
    std::array<OamdTrimConfig, kOamdTrimConfigs> trim_config{};
    bool b_bed_render_info = false;
    StereoDownmix bed_downmix;
    bool b_headphone = false;
    std::uint8_t hp_operation_mode = 0;
    bool b_head_track_disable_all = false;
};

// Reads the structure. Errors are the reader's; what an additional data block holds beyond its
// byte count is left out without an error, since the count rules.
void oamd_read_common_data(FieldReader& in, OamdCommonData& out);

}  // namespace mediasplit
