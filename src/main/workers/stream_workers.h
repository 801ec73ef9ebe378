// The workers of a playlist or of a period of a manifest: a thread for each stream, or the main
// thread for the only one.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/osal.h"
#include "src/main/workers/stream_job.h"
#include "src/main/workers/sync_table.h"

namespace mediasplit {

struct WorkersSetup {
    std::size_t expected = 0;                    // streams; two or more run on threads
    std::vector<std::int32_t> group_capacities;  // of the timing groups, from 1
    std::uint32_t stack_size = 0;                // bytes of each worker's stack, 0 for the default
    std::int32_t source_line = 0;                // told by 3005
    Loglist* loglist = nullptr;                  // of the run
};

// Raises 3005 for a thread that can't be started.
class StreamWorkers {
public:
    explicit StreamWorkers(const WorkersSetup& setup);
    StreamWorkers(const StreamWorkers&) = delete;
    StreamWorkers& operator=(const StreamWorkers&) = delete;
    // Waits as finish().
    ~StreamWorkers();

    // Lets the stream of `job` take part in the comparison of its timing group under the name
    // `label`. Without threads, or for a number that is no group, nothing happens.
    void join_group(StreamJob& job, std::uint32_t group, const std::string& label);
    // Runs the job to its end, or starts its thread.
    void start(std::unique_ptr<StreamJob> job);
    // Waits for all threads. Returns the OR of what all jobs report.
    [[nodiscard]] Status finish();

private:
    [[nodiscard]] bool is_threaded() const { return setup_.expected > 1; }
    OsalThread* start_thread(ThreadFunction function, void* argument, std::uint32_t stack_size);

    WorkersSetup setup_;
    OsalContext osal_;
    SyncTable table_;  // outlives the jobs, whose lists it owns
    std::vector<std::unique_ptr<StreamJob>> jobs_;
    std::vector<OsalThread*> threads_;  // one for each job, none if it couldn't be started
    Status status_ = Status::kOk;
    bool finished_ = false;
};

}  // namespace mediasplit
