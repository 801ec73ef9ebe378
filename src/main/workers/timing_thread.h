// The thread that compares the segment durations of streams.
#pragma once

#include <cstdint>

namespace mediasplit {

// Reads the lists of `table` (a SyncTable) until each has given its last record. Raises 4109 (4110
// for a manifest) for streams of a group whose segments differ in length, 2050 (2051) for a stream
// whose own segments do. The result is in the table's status; returns 0. The name is historical: it
// has nothing to do with I-frame streams.
std::uint32_t IFrameThreadFunc(void* table);

}  // namespace mediasplit
