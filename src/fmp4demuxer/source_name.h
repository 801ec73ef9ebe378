// The name that messages about this module's own failures give as their place.
#pragma once

namespace mediasplit {

inline constexpr const char* kDriverSourceName = "../../../../mediacheck2/src/fmp4demuxer";

}  // namespace mediasplit
