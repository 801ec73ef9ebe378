// The body of a worker.
#pragma once

#include <cstdint>
#include <string>

namespace mediasplit {

struct StreamJob;

// What the job's reports carry as their stream: id of the Representation, address of the playlist.
const std::string& stream_label(const StreamJob& job);

// Follows the stream of `job` (a StreamJob) to its end, loading its playlist anew as often as it
// asks for it: 4021 or 4022 if that can't be had, 11 if its copy can't be removed. Every end leaves
// an end record on the job's list. The result is in the job's status; returns 0.
std::uint32_t ThreadFunc(void* job);

}  // namespace mediasplit
