// Checks of E-AC-3 and AC-4 sample entries against the manifest.
#pragma once

#include <cstdint>

#include "src/log/status.h"
#include "src/mp4demuxer/records.h"

namespace mediasplit {

// The place of the checks on "ec-3" entries. `entry_due` tells that the track's entry is seen for
// the first time. No rule is applied here yet.
[[nodiscard]] inline Status oap_sample_entry_validation(Mp4Demuxer& /*demuxer*/,
                                                        std::uint32_t /*stream_index*/,
                                                        bool /*entry_due*/) {
    return Status::kOk;
}

// The same for "ac-4". No rule is applied here yet.
[[nodiscard]] inline Status ac4SampleEntry(Mp4Demuxer& /*demuxer*/, std::uint32_t /*stream_index*/,
                                           bool /*entry_due*/) {
    return Status::kOk;
}

}  // namespace mediasplit
