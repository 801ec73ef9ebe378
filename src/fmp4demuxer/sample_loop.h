// The walk over a segment's samples in file byte order.
#pragma once

#include <memory>

#include "src/commonfileio/input_file.h"
#include "src/log/status.h"
#include "src/mp4demuxer/records.h"
#include "src/records/segment_timing.h"

namespace mediasplit {

// Reads the samples of all selected tracks, lowest file offset first, the earlier track first on
// equal offsets, decrypts them and hands each to its writer. `file` stands at the start of the
// segment's range. A track ends at its first sample that lies beyond the file.
[[nodiscard]] Status walk_samples(Mp4Demuxer& demuxer, InputFile& file,
                                  std::unique_ptr<SegmentTiming>* timing);

}  // namespace mediasplit
