#include "src/main/workers/stream_workers.h"

#include <utility>

#include "src/log/logging.h"
#include "src/main/workers/thread_func.h"
#include "src/main/workers/timing_thread.h"
#include "src/records/run_options.h"

namespace mediasplit {

namespace {

constexpr const char* kSourceName = "../../../../mediacheck2/src/main";
constexpr std::uint32_t kPriority = 1;

}  // namespace

StreamWorkers::StreamWorkers(const WorkersSetup& setup)
    : setup_(setup), table_(make_sync_table(setup.group_capacities)) {
    const OsalContext callbacks{nullptr, cb_malloc, cb_free};
    (void)osal_init(&osal_);
    const bool is_registered = osal_register_callbacks(&osal_, &callbacks) == 0;
    status_ |= check(is_registered, setup_.loglist, 3005, {}, kSourceName, setup_.source_line);
}

StreamWorkers::~StreamWorkers() {
    (void)finish();
}

void StreamWorkers::join_group(StreamJob& job, std::uint32_t group, const std::string& label) {
    if (is_threaded()) {
        job.sync_list = join_sync_group(table_, group, label, osal_);
    }
}

OsalThread* StreamWorkers::start_thread(ThreadFunction function, void* argument,
                                        std::uint32_t stack_size) {
    ThreadCreateParams params;
    params.function = function;
    params.argument = argument;
    params.stack_size = stack_size;
    params.priority = kPriority;
    OsalThread* const started = osal_thread_create(&osal_, &params);
    if (started == nullptr) {
        status_ |= Status::kFailed | Logging_err_type_check(setup_.loglist, 3005, {}, kSourceName,
                                                            setup_.source_line);
    }
    return started;
}

void StreamWorkers::start(std::unique_ptr<StreamJob> job) {
    job->worker_index = static_cast<std::uint32_t>(jobs_.size());
    announce_stream(stream_label(*job));
    if (!is_threaded()) {
        job->loglist = setup_.loglist;
        (void)ThreadFunc(job.get());
        status_ |= job->status;
        return;
    }
    job->own_loglist =
        init_loglist(static_cast<std::uint32_t>(g_check_point_num), g_checkpoint_list.data());
    job->loglist = job->own_loglist.get();
    OsalThread* const started = start_thread(ThreadFunc, job.get(), setup_.stack_size);
    if (started == nullptr) {
        send_end_record(job->sync_list);
    }
    jobs_.push_back(std::move(job));
    threads_.push_back(started);
}

Status StreamWorkers::finish() {
    if (std::exchange(finished_, true)) {
        return status_;
    }
    OsalThread* const timing = is_threaded() ? start_thread(IFrameThreadFunc, &table_, 0) : nullptr;
    for (std::size_t i = 0; i < jobs_.size(); ++i) {
        if (threads_[i] != nullptr) {
            (void)osal_thread_wait(threads_[i]);
            status_ |= jobs_[i]->status;
            (void)osal_thread_destroy(threads_[i]);
        }
    }
    if (timing != nullptr) {
        (void)osal_thread_wait(timing);
        (void)osal_thread_destroy(timing);
        status_ |= table_.status;
    }
    jobs_.clear();
    threads_.clear();
    if (osal_close(&osal_) != 0) {
        status_ |= Status::kFailed;
    }
    return status_;
}

}  // namespace mediasplit
