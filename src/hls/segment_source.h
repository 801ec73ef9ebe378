// Bringing the segments of a playlist to local files.
#pragma once

#include <optional>
#include <string>

#include "src/commonfileio/file_descriptor.h"
#include "src/hls/stream_state.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// An open segment.
struct LocalSegment {
    FileDescriptor file;
    std::optional<std::string> copy;  // path of the downloaded copy; none for a local segment
};

// Opens the file of a slot, fetching it first if it is an address: three tries with half the
// segment's duration between them (2052 for each that fails). The file of the slot before is used
// again. Nothing, with 4063 and the failure ORed into the stream's status, if that can't be done.
std::optional<LocalSegment> bring_segment(StreamState& state, const SegmentSlot& slot);

// The number of seconds at the start of the text; 0 for none, a negative one or one that isn't
// finite.
float segment_seconds(OptText text);

// Makes the segment the stream's input: one of the same name is rewound, another one replaces it,
// and its copy is removed.
void adopt_segment(StreamState& state, const SegmentSlot& slot, LocalSegment segment);

}  // namespace mediasplit
