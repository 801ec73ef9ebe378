// The readers of an MPD's elements, from the root down. Each puts the element's identity into the
// tree and into the record, and returns the OR of what was raised.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/xml_tree.h"
#include "src/dash_reader/dash_info.h"
#include "src/dash_reader/segment_elements.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// Scheme of a UTCTiming whose value is the time itself (ISO/IEC 23009-1 5.8.4.11).
inline constexpr const char* kUtcDirectScheme = "urn:mpeg:dash:utc:direct:2014";

// Where a Representation stands. The indices count all elements of a kind, dropped ones too, except
// for `kept_index`.
struct RepresentationPlace {
    std::int32_t period_index = 0;
    std::int32_t adaptation_set_index = 0;
    std::uint32_t kept_index = 0;  // of the AdaptationSet, among those kept
    std::int32_t own_index = 0;
};

// Reads the MPD element and its Periods, or one of them; ends at the first Period that raises
// something other than warnings.
Status get_mpd_attribute(Ezxml* root, std::int32_t period_index, OptText representation_id,
                         DashInfo& info, Loglist* loglist);

// Reads a Period. What is refused below is left out.
Status get_period_info(Ezxml* node, std::int32_t index, OptText representation_id,
                       DashPeriodInfo& period, const DashInfo& info, Loglist* loglist);

// Reads an AdaptationSet without its Representations. The record is unusable unless 0 comes back;
// so for the next one.
Status get_adaptation_set_info(Ezxml* node, std::int32_t period_index, std::int32_t own_index,
                               DashAdaptationSetInfo& adaptation_set, const DashPeriodInfo& period,
                               Loglist* loglist);
Status get_representation_info(Ezxml* node, const RepresentationPlace& place,
                               DashRepresentationInfo& representation,
                               const DashAdaptationSetInfo& adaptation_set,
                               const DashPeriodInfo& period, const SegmentLevels& levels,
                               Loglist* loglist);

// Without preselectionComponents there is no identity.
void get_preselection_info(Ezxml* node, std::int32_t period_index,
                           DashPreselectionInfo& preselection);

// The value of a UTCTiming, if its time stands in it.
std::optional<std::string> direct_utc_time(const Ezxml* utc_timing);

}  // namespace mediasplit
