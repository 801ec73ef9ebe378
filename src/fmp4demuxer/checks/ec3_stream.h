// Analysis of E-AC-3 samples.
#pragma once

#include <cstdint>

#include "src/log/status.h"
#include "src/mp4demuxer/records.h"
#include "src/util/bit_reader.h"

namespace mediasplit {

// The place where a sample goes through the E-AC-3 analysis and is held against the sample entry
// (4333 and the rules of the entry). No analysis is made here yet.
[[nodiscard]] inline Status check_ec3_sample(Mp4Demuxer& /*demuxer*/,
                                             std::uint32_t /*stream_index*/, ByteSpan /*sample*/) {
    return Status::kOk;
}

// Ends the analysis of one walk: the next one starts afresh.
inline void end_ec3_stream(Mp4Stream& stream) {
    stream.oap_parser.reset();
}

}  // namespace mediasplit
