// Checks of video sample entries against the manifest and the parameter sets they carry.
#pragma once

#include <cstdint>

#include "src/log/status.h"
#include "src/mp4demuxer/records.h"

namespace mediasplit {

// The place of the checks on "avc1" and "avc3" entries and their enhancement forms. `entry_due`
// tells that the track's entry is seen for the first time. No rule is applied here yet.
[[nodiscard]] inline Status avcSampleEntry(Mp4Demuxer& /*demuxer*/, std::uint32_t /*stream_index*/,
                                           bool /*entry_due*/) {
    return Status::kOk;
}

// The same for "hvc1" and "hev1". No rule is applied here yet.
[[nodiscard]] inline Status hevcSampleEntry(Mp4Demuxer& /*demuxer*/, std::uint32_t /*stream_index*/,
                                            bool /*entry_due*/) {
    return Status::kOk;
}

// The same for "av01". No rule is applied here yet.
[[nodiscard]] inline Status av1SampleEntry(Mp4Demuxer& /*demuxer*/, std::uint32_t /*stream_index*/,
                                           bool /*entry_due*/) {
    return Status::kOk;
}

}  // namespace mediasplit
