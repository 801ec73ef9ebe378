// Analysis of E-AC-3 samples.
#pragma once

#include <cstdint>

#include "src/log/status.h"
#include "src/mp4demuxer/records.h"
#include "src/util/bit_reader.h"

namespace mediasplit {

// Has a sample analysed (4333) and holds it against the "dec3" box of its track, if there is one
// (oap_es_info_validate). The track's parser is made at its first sample. The OR of the reports.
[[nodiscard]] Status check_ec3_sample(Mp4Demuxer& demuxer, std::uint32_t stream_index,
                                      ByteSpan sample);

// Ends the analysis of one walk: the next one starts afresh.
inline void end_ec3_stream(Mp4Stream& stream) {
    stream.oap_parser.reset();
}

}  // namespace mediasplit
