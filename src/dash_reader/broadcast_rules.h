// What a broadcast profile asks of every reading of a manifest.
#pragma once

#include "src/dash_reader/dash_info.h"
#include "src/log/loglist.h"
#include "src/log/status.h"

namespace mediasplit {

// Rules on the attributes of the MPD itself (ISO/IEC 23009-1 8.11): 4094, 4095, 4096. For callers
// that found the broadcast family of rules active (has_checkpoint_set of 4). Returns the OR of the
// reports' results.
Status broadcast_mpd_validation(const DashInfo& info, Loglist* loglist);

}  // namespace mediasplit
