#pragma once

#include <cstdint>
#include <span>

#include "ac4/oamd/oamdi.h"
#include "ac4/syntax/field_reader.h"

namespace mediasplit {

// Object metadata that changes from frame to frame (`oamd_dyndata_single`, `oamd_dyndata_multi` and
// `oamd_timing_data` of ETSI TS 103 190-2).

// `oamd_timing_data`.
struct OamdTiming {
    std::uint8_t sample_offset = 0;
    std::uint8_t num_obj_info_blocks = 0;
    OamdMdUpdateInfo update{};
};

void oamd_read_timing(FieldReader& in, OamdTiming& out);

// What the reader of the object blocks must know from the table of contents and the timing data.
struct OamdObjectFacts {
    std::span<const OamdObjectKind> objects;  // objects that are not A-JOC coded, in order
    int num_obj_info_blocks = 0;              // of the timing data
    bool b_ndot = false;                      // nothing refers to an earlier frame
    bool b_alternative = false;               // of the presentation
};

// Reads `oamd_dyndata_multi`, or with `single` `oamd_dyndata_single`, and stores objects into
// `info` as far as it has room; null drops them.
void oamd_read_dyndata(FieldReader& in, const OamdObjectFacts& facts, bool single, oamdi* info);

}  // namespace mediasplit
