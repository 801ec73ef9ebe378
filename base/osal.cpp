#include "base/osal.h"

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <new>

namespace mediasplit {

struct OsalMutex {
    pthread_mutex_t mutex{};
    OsalContext memory;
};

struct OsalThread {
    pthread_t thread{};
    int creation_result = 0;
    bool joined = false;
    OsalContext memory;
    int priority = 0;
    std::uint32_t policy = kPolicyRoundRobin;
    std::uint32_t exit_value = 0;
    ThreadFunction function = nullptr;
    void* argument = nullptr;
};

namespace {

constexpr std::uint32_t kHighestPriorityMode = 1;
constexpr std::uint32_t kHighestLevel = 10;
constexpr int kLevelSteps = 9;
constexpr std::uint32_t kProcessors = 32;

template <typename Record>
Record* make_in(const OsalContext& memory) {
    void* const place = memory.alloc(memory.opaque, sizeof(Record));
    if (place == nullptr) {
        return nullptr;
    }
    auto* const record = ::new (place) Record();
    record->memory = memory;
    return record;
}

template <typename Record>
void free_in(Record* record) {
    const OsalContext memory = record->memory;
    record->~Record();
    memory.release(memory.opaque, record);
}

bool is_usable(const OsalContext* context) {
    return context != nullptr && context->alloc != nullptr && context->release != nullptr;
}

int system_policy(std::uint32_t policy) {
    switch (policy) {
        case kPolicyRoundRobin:
            return SCHED_RR;
        case kPolicyFirstInFirstOut:
            return SCHED_FIFO;
        default:
            return SCHED_OTHER;
    }
}

// Gives the running thread what was asked for it. All of it needs rights that a plain process
// doesn't have, so failures are ignored.
void apply_priority(const OsalThread& thread) {
    if (thread.priority == kPriorityDefault) {
        return;
    }
    sched_param parameter{};
    parameter.sched_priority = thread.priority;
    (void)pthread_setschedparam(pthread_self(), system_policy(thread.policy), &parameter);
    (void)setpriority(PRIO_PROCESS, 0, thread.priority);
}

// Body of every thread.
void* osal_func(void* handle) {
    auto* const thread = static_cast<OsalThread*>(handle);
    apply_priority(*thread);
    while (thread->function(thread->argument) != thread->exit_value) {
    }
    return nullptr;
}

// Attributes of a new thread. How it is scheduled isn't among what the system enforces at the
// start: an explicit policy would make the start fail without real-time rights.
class ThreadAttributes {
public:
    ThreadAttributes() : made_(pthread_attr_init(&attributes_) == 0) {}
    ThreadAttributes(const ThreadAttributes&) = delete;
    ThreadAttributes& operator=(const ThreadAttributes&) = delete;
    ~ThreadAttributes() {
        if (made_) {
            pthread_attr_destroy(&attributes_);
        }
    }

    bool set(const ThreadCreateParams& params, int priority) {
        return made_ && pthread_attr_setdetachstate(&attributes_, PTHREAD_CREATE_JOINABLE) == 0 &&
               pthread_attr_setschedpolicy(&attributes_, SCHED_RR) == 0 && set_stack(params) &&
               set_priority(priority) && set_affinity(params.affinity);
    }
    [[nodiscard]] const pthread_attr_t* get() const { return &attributes_; }

private:
    bool set_stack(const ThreadCreateParams& params) {
        if (params.stack_address != nullptr) {
            return pthread_attr_setstack(&attributes_, params.stack_address, params.stack_size) ==
                   0;
        }
        return params.stack_size == 0 ||
               pthread_attr_setstacksize(&attributes_, params.stack_size) == 0;
    }

    bool set_priority(int priority) {
        if (priority == kPriorityDefault) {
            return true;
        }
        sched_param parameter{};
        parameter.sched_priority = priority;
        return pthread_attr_setschedparam(&attributes_, &parameter) == 0;
    }

    bool set_affinity(std::uint64_t mask) {
        if (mask == 0) {
            return true;
        }
        cpu_set_t processors;
        CPU_ZERO(&processors);
        for (std::uint32_t i = 0; i < kProcessors; ++i) {
            if ((mask >> i & 1) != 0) {
                CPU_SET(i, &processors);
            }
        }
        return pthread_attr_setaffinity_np(&attributes_, sizeof(processors), &processors) == 0;
    }

    pthread_attr_t attributes_{};
    bool made_;
};

bool join_once(OsalThread& thread) {
    if (thread.joined) {
        return true;
    }
    thread.joined = pthread_join(thread.thread, nullptr) == 0;
    return thread.joined;
}

}  // namespace

const char* osal_get_version() {
    return "OSAL_v12.8";
}

int osal_init(OsalContext* context) {
    if (context == nullptr) {
        return -1;
    }
    *context = OsalContext{};
    return 0;
}

int osal_register_callbacks(OsalContext* context, const OsalContext* callbacks) {
    if (context == nullptr || !is_usable(callbacks)) {
        return -1;
    }
    *context = *callbacks;
    return 0;
}

int osal_close(OsalContext* context) {
    return context == nullptr ? -1 : 0;
}

OsalMutex* osal_mutex_create(const OsalContext* context) {
    if (!is_usable(context)) {
        return nullptr;
    }
    auto* const mutex = make_in<OsalMutex>(*context);
    if (mutex != nullptr && pthread_mutex_init(&mutex->mutex, nullptr) != 0) {
        free_in(mutex);
        return nullptr;
    }
    return mutex;
}

int osal_mutex_destroy(OsalMutex* mutex) {
    if (mutex == nullptr || pthread_mutex_destroy(&mutex->mutex) != 0) {
        return -1;
    }
    free_in(mutex);
    return 0;
}

int osal_mutex_lock(OsalMutex* mutex) {
    return mutex == nullptr ? -1 : pthread_mutex_lock(&mutex->mutex);
}

int osal_mutex_unlock(OsalMutex* mutex) {
    return mutex != nullptr && pthread_mutex_unlock(&mutex->mutex) == 0 ? 0 : -1;
}

OsalThread* osal_thread_create(const OsalContext* context, const ThreadCreateParams* params) {
    if (!is_usable(context) || params == nullptr || params->function == nullptr ||
        params->priority_mode > kHighestPriorityMode) {
        return nullptr;
    }
    const int priority = params->priority_mode == 0 ? static_cast<int>(params->priority)
                                                    : get_priority_mapping(params->priority);
    if (priority == kPriorityRefused) {
        return nullptr;
    }
    auto* const thread = make_in<OsalThread>(*context);
    if (thread == nullptr) {
        return nullptr;
    }
    thread->priority = priority;
    thread->policy = kPolicyRoundRobin;
    thread->exit_value = params->exit_value;
    thread->function = params->function;
    thread->argument = params->argument;
    ThreadAttributes attributes;
    if (!attributes.set(*params, priority)) {
        free_in(thread);
        return nullptr;
    }
    // The identifier is for this side only: the new thread may run before it is stored.
    pthread_t started{};
    const int result = pthread_create(&started, attributes.get(), osal_func, thread);
    if (result != 0) {
        free_in(thread);
        return nullptr;
    }
    thread->creation_result = result;
    thread->thread = started;
    return thread;
}

int osal_thread_wait(OsalThread* thread) {
    return thread != nullptr && join_once(*thread) ? 0 : -1;
}

int osal_thread_destroy(OsalThread* thread) {
    if (thread == nullptr) {
        return -1;
    }
    (void)join_once(*thread);
    free_in(thread);
    return 0;
}

int get_priority_mapping(std::uint32_t level) {
    if (level == 0) {
        return kPriorityDefault;
    }
    if (level > kHighestLevel) {
        return kPriorityRefused;
    }
    const int lowest = sched_get_priority_min(SCHED_RR);
    const int highest = sched_get_priority_max(SCHED_RR);
    const int step = (highest - lowest) / kLevelSteps;
    const int at = static_cast<int>(level);
    constexpr int kLastFromBelow = 5;
    return at <= kLastFromBelow ? lowest + (at - 1) * step
                                : highest - (static_cast<int>(kHighestLevel) - at) * step;
}

void osal_thread_sleep(std::uint32_t milliseconds) {
    constexpr std::int64_t kNanosecondsPerSecond = 1000000000;
    timespec until{};
    (void)clock_gettime(CLOCK_MONOTONIC, &until);
    const std::int64_t nanoseconds = until.tv_nsec + std::int64_t{milliseconds % 1000} * 1000000;
    until.tv_sec += milliseconds / 1000 + nanoseconds / kNanosecondsPerSecond;
    until.tv_nsec = nanoseconds % kNanosecondsPerSecond;
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
    }
}

std::uint32_t osal_get_time() {
    timespec now{};
    (void)clock_gettime(CLOCK_MONOTONIC, &now);
    const auto milliseconds = static_cast<std::uint64_t>(now.tv_sec) * 1000 +
                              static_cast<std::uint64_t>(now.tv_nsec) / 1000000;
    return static_cast<std::uint32_t>(milliseconds);
}

void* cb_malloc(void* /*context*/, std::size_t size) {
    return std::malloc(size);
}

void cb_free(void* /*context*/, void* pointer) {
    std::free(pointer);
}

}  // namespace mediasplit
