// The name that messages about this module's own failures give as their place.
#pragma once

namespace mediasplit {

inline constexpr const char* kDashThreadSourceName = "../../../../mediacheck2/src/dash_thread";

}  // namespace mediasplit
