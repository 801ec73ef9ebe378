// What a DASH manifest must say of an AC-4 track (ETSI TS 103 190-1 Annex F, ETSI TS 103 190-2
// Annex G).
#pragma once

#include "ac4/descriptor_generator/dsi_record.h"
#include "src/fmp4demuxer/checks/dash_audio.h"
#include "src/log/status.h"

namespace mediasplit {

// Holds a Representation against a "dac4" box, null if there is none, which leaves out what is told
// of the box: 4339 to 4351, 2041, 2042, with broadcast rules active those of
// check_ac4_broadcast_set. The OR of the reports.
[[nodiscard]] Status check_ac4_representation(const DashAudio& audio, const DashPeriodInfo& period,
                                              const DsiRecord* record);

}  // namespace mediasplit
