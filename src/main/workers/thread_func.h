// The body of a worker.
#pragma once

#include <cstdint>

namespace mediasplit {

// Follows the stream of `job` (a StreamJob) to its end, loading its playlist anew as often as it
// asks for it: 4021 or 4022 if that can't be had, 11 if its copy can't be removed. Every end leaves
// an end record on the job's list. The result is in the job's status; returns 0.
std::uint32_t ThreadFunc(void* job);

}  // namespace mediasplit
