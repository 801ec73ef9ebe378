// Audio and video timing from one transport stream file or segment to the next.
#pragma once

#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/records/ts_segment_summary.h"

namespace mediasplit {

// Holds the E-AC-3 streams of `current` against its video (4106, 4107) and against `previous`
// (4108). Nothing is compared if there was no previous video PTS, or `current` has no video PTS.
Status check_segment_timing(const TsSegmentSummary& previous, const TsSegmentSummary& current,
                            Loglist* loglist);

}  // namespace mediasplit
