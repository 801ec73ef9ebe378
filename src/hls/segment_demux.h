// Handing a segment to the demultiplexer of its format.
#pragma once

#include "src/hls/stream_state.h"

namespace mediasplit {

// Takes the segment apart that is the stream's input and was found to be of `type`
// (get_file_type). `skip` leaves all but initialization sections alone. False if the stream can't
// go on.
bool demux_segment(StreamState& state, const SegmentSlot& slot, int type, bool skip);

}  // namespace mediasplit
