#pragma once

#include <cstdint>

#include "src/ac4analyze_impl/frame_analyzer.h"

namespace mediasplit {

// Fills the records of the presentations, their groups and substreams from the frame that the
// analyzer's reader holds. 0, 32 or 33.
int analyze_presentations(Ac4Analyzer* analyzer, const std::uint8_t* frame, AnalysisRecord* result);

// The status bits for a code of the table of contents reader.
std::uint32_t toc_status(int code);

}  // namespace mediasplit
