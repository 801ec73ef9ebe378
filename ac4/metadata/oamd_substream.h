#pragma once

#include <cstddef>
#include <cstdint>

#include "ac4/oamd/common_data.h"
#include "ac4/oamd/object_data.h"

namespace mediasplit {

struct OamdSubstream {
    bool b_oamd_common_data_present = false;
    OamdCommonData common{};
    bool b_oamd_timing_present = false;
    OamdTiming timing{};
};

// Reads an `oamd_substream` (ETSI TS 103 190-2). What it finds also goes into `info`
// as far as that has room; null is allowed. `facts.num_obj_info_blocks` stands in when the frame
// brings no timing data. `size` 0 is simply done. 0, 8192 or 12288.
std::uint32_t ac4analyze_parse_oamd_substream(const std::uint8_t* data, std::size_t size,
                                              const OamdObjectFacts& facts, OamdSubstream* out,
                                              oamdi* info);

}  // namespace mediasplit
