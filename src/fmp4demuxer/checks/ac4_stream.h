// Analysis of AC-4 samples.
#pragma once

#include <cstdint>

#include "src/log/status.h"
#include "src/mp4demuxer/records.h"
#include "src/util/bit_reader.h"

namespace mediasplit {

// Analyzes a sample of a track with an AC-4 record and holds it against that record (4414 and the
// messages of its fields) and against the sync sample table (4397, 4398). `number` counts samples
// from 1, `sync` is the container's flag. kRuleBroken for a sample that can't be analyzed.
[[nodiscard]] Status check_ac4_sample(Mp4Demuxer& demuxer, std::uint32_t stream_index,
                                      ByteSpan sample, std::uint32_t number, std::uint32_t sync);

// Ends the analysis of one walk (4473): the next one starts afresh.
[[nodiscard]] Status end_ac4_stream(Mp4Demuxer& demuxer, std::uint32_t stream_index);

}  // namespace mediasplit
