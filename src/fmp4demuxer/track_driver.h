// Choosing tracks and their outputs, before samples are walked.
#pragma once

#include <cstdint>
#include <optional>

#include "src/log/status.h"
#include "src/mp4demuxer/records.h"
#include "src/records/segment_slot.h"

namespace mediasplit {

// A further stream_id that stands for AV1.
inline constexpr std::uint32_t kStreamIdAv01Other = 16;

// A byte range of a file.
struct ByteRange {
    std::uint64_t start = 0;
    std::uint64_t length = 0;
};

// The range a slot tells, none without one. A last byte goes before a length.
[[nodiscard]] std::optional<ByteRange> byte_range_of(const SegmentSlot* slot);

// True if sample entries are to be checked: on plain files and initialization segments.
[[nodiscard]] bool entry_checks_due(const SegmentSlot* slot);

// True if the command line's track selection takes the track.
[[nodiscard]] bool is_selected(const Mp4Demuxer& demuxer, const Mp4Stream& stream);

// True if some track has the selected id, or all tracks are selected.
[[nodiscard]] bool selection_exists(const Mp4Demuxer& demuxer);

// Holds each track's language against the AdaptationSet's (4104, 4093).
[[nodiscard]] Status check_languages(const Mp4Demuxer& demuxer);

// Checks the sample entries of the selected tracks and opens their output files.
[[nodiscard]] Status open_tracks(Mp4Demuxer& demuxer, bool entry_due);

}  // namespace mediasplit
