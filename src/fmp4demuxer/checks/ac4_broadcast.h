// What a broadcast DASH manifest (ATSC A/331, ETSI TS 103 190-2 Annex G) must say of an AC-4 track:
// rules on the AdaptationSet, its Representations, and the Preselections that name it.
#pragma once

#include <vector>

#include "ac4/descriptor_generator/dsi_record.h"
#include "src/dash_reader/dash_info.h"
#include "src/fmp4demuxer/checks/dash_audio.h"
#include "src/log/status.h"

namespace mediasplit {

// A Preselection that names an AdaptationSet among its components. It refers to the manifest.
struct Ac4Preselection {
    const DashPreselectionInfo& info;
    bool is_first = false;     // the set is its first component
    bool has_several = false;  // components
};
using Ac4Preselections = std::vector<Ac4Preselection>;

// The Preselections of a Period that name a set, in their order; none for a set whose id isn't a
// number.
[[nodiscard]] Ac4Preselections ac4_preselections_of(const DashPeriodInfo& period,
                                                    const DashAdaptationSetInfo& set);

// Holds the Preselections, then the set, then its Representations against the rules for broadcast
// and against the "dac4" box, null if there is none, which leaves out what is told of the box: 4357
// to 4360, 4364 to 4379, 4381 to 4386, 2043 to 2047. For callers that found the broadcast rules
// active. The OR of the reports.
[[nodiscard]] Status check_ac4_broadcast_set(const DashAudio& audio, const DashPeriodInfo& period,
                                             const Ac4Preselections& preselections,
                                             const DsiRecord* record);

}  // namespace mediasplit
