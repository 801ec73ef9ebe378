// Rules on the ids of a DASH manifest.
#pragma once

#include <cstdint>

#include "src/dash_reader/dash_info.h"
#include "src/log/loglist.h"
#include "src/log/status.h"

namespace mediasplit {

// Pairs of equal ids are all reported up to this many messages; beyond it each element is only held
// against the next one of its id.
inline constexpr std::uint64_t kMostPairReports = 100000;

// Uniqueness of Period ids (4086, twice for each pair) and of Representation ids (4091). Returns
// the OR of the reports' results; 3006 without a record.
Status dash_manifest_validation(const DashInfo* info, Loglist* loglist);

// Ids of one Period of a broadcast manifest: numbers (4352, 4353, 4354), different ones (4356), and
// preselection components that are there and name an AdaptationSet (4362, 4355, 4361). 3006 for an
// index that isn't below the count of Periods read.
Status broadcast_dash_manifest_validation(const DashInfo* info, std::int32_t period_index,
                                          Loglist* loglist);

}  // namespace mediasplit
