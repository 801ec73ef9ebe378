#pragma once

#include "ac4/toc_reader/toc_parser.h"

namespace mediasplit {

// Reads the head of ac4_toc (ETSI TS 103 190-1 clause 4.2.3.1, TS 103 190-2 clause 6.2.1.1) into
// `parser.head`. `last_bit_rate_mode` stands while no `wait_frames` is coded.
void AC4_ANALYZE_ac4toc_parse_num_presentations(TocParser& parser, BitRateMode last_bit_rate_mode);

// Copies the head's fields of a result; those of the rate are left alone.
void copy_head(const TocHead& head, TocInfo* info);

}  // namespace mediasplit
