// Checks of video sample entries against the manifest and the rules of the enhancement format. They
// report only.
#pragma once

#include <cstdint>

#include "src/log/status.h"
#include "src/mp4demuxer/records.h"

namespace mediasplit {

// "avc1" and "avc3" entries and their enhancement forms. `entry_due` tells that the track's entry
// is seen for the first time; nothing is checked otherwise. Returns the OR of all reports.
[[nodiscard]] Status avcSampleEntry(Mp4Demuxer& demuxer, std::uint32_t stream_index,
                                    bool entry_due);

// The same for "hvc1" and "hev1".
[[nodiscard]] Status hevcSampleEntry(Mp4Demuxer& demuxer, std::uint32_t stream_index,
                                     bool entry_due);

// The same for "av01", which isn't held against the manifest's codecs.
[[nodiscard]] Status av1SampleEntry(Mp4Demuxer& demuxer, std::uint32_t stream_index,
                                    bool entry_due);

}  // namespace mediasplit
