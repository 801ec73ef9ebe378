// How long one segment lasted: goes from a stream's worker to the timing thread.
#pragma once

#include <cstdint>

namespace mediasplit {

struct SegmentTiming {
    double duration = 0;             // seconds; -1.0: no timing for this stream any more
    std::uint32_t is_last_kind = 0;  // 1: the first sample was a sync sample
    float sample_duration = 0;       // seconds, the default sample duration of the track
    std::uint32_t end = 0;           // 1: the stream's last record
};

}  // namespace mediasplit
