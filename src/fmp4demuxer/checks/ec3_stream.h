// Analysis of E-AC-3 samples.
#pragma once

#include <cstdint>

#include "src/log/status.h"
#include "src/mp4demuxer/records.h"
#include "src/util/bit_reader.h"

namespace mediasplit {

// Puts a sample of a track through its E-AC-3 analysis, which begins with the first sample of a
// walk. 4333 for a sample that can't be read, or once a failure stands (ETSI TS 102 366 Annex E).
[[nodiscard]] Status check_ec3_sample(Mp4Demuxer& demuxer, std::uint32_t stream_index,
                                      ByteSpan sample);

// Ends the analysis of one walk: the next one starts afresh.
void end_ec3_stream(Mp4Stream& stream);

}  // namespace mediasplit
