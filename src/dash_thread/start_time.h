// Where a live presentation is joined.
#pragma once

#include <cstdint>

#include "src/dash_reader/dash_player.h"
#include "src/log/loglist.h"

namespace mediasplit {

// Seconds from the start of the presentation (its availabilityStartTime) to the time at which the
// manifest says it was made, which moves on by the update period with each reload that brought no
// newer manifest; 0 for a local manifest. The machine's clock isn't asked. Raises 1026 or 1027 for
// a dynamic manifest.
std::uint64_t get_timeoffset(const DashPlayer& player, Loglist* loglist);

}  // namespace mediasplit
