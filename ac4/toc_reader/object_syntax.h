#pragma once

#include <cstdint>

#include "ac4/syntax/field_reader.h"
#include "ac4/toc_reader/toc_parser.h"

namespace mediasplit {

// Which of the signals of an object substream are bed channels, ISF or dynamic objects.
struct ObjectAssignment {
    std::int32_t bed_channels = 0;
    std::int32_t isf_objects = 0;
    std::int32_t isf_config = 0;
    bool dynamic_only = false;
    std::uint32_t std_mask = 0;     // 10 bits, if that mask was coded
    std::uint32_t nonstd_mask = 0;  // the bed's channels, 17 bits
};

// bed_dyn_obj_assignment (ETSI TS 103 190-2 clause 6.2.1.11) over `n_signals` signals.
ObjectAssignment get_ac4toc_bed_dyn_obj_assignment(TocParser& parser, std::uint32_t n_signals);

// The object part of ac4_substream_info_obj (clause 6.2.1.12), up to its sample rate fields.
void ac4toc_substream_info_obj_common_data_parse(TocParser& parser, SubstreamInfo* info,
                                                 SubstreamInfoExt* ext);

// oamd_common_data (clause 6.2.8.2), read and dropped.
void AC4_ANALYZE_ac4toc_oamd_reader_parse_common_data(FieldReader& in);

}  // namespace mediasplit
