// Analysis of AC-4 samples.
#pragma once

#include <cstdint>

#include "src/log/status.h"
#include "src/mp4demuxer/records.h"
#include "src/util/bit_reader.h"

namespace mediasplit {

// The place where a sample goes through the AC-4 analysis and is held against the "dac4" record and
// the sync sample table (4397, 4398, 4414). `number` counts samples from 1, `sync` is the
// container's flag. No analysis is made here yet.
[[nodiscard]] inline Status check_ac4_sample(Mp4Demuxer& /*demuxer*/,
                                             std::uint32_t /*stream_index*/, ByteSpan /*sample*/,
                                             std::uint32_t /*number*/, std::uint32_t /*sync*/) {
    return Status::kOk;
}

// Ends the analysis of one walk (4473): the next one starts afresh. Without an analysis there is
// nothing to compare.
[[nodiscard]] inline Status end_ac4_stream(Mp4Demuxer& demuxer, std::uint32_t stream_index) {
    Mp4Stream& stream = *demuxer.streams[stream_index];
    stream.ac4_parser.reset();
    stream.ac4_ref_dsi.reset();
    stream.ac4_es.reset();
    return Status::kOk;
}

}  // namespace mediasplit
