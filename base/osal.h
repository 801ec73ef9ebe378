// A thin layer over POSIX threads and the monotonic clock. Memory comes through callbacks.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mediasplit {

using AllocCallback = void* (*)(void* context, std::size_t size);
using ReleaseCallback = void (*)(void* context, void* pointer);

// Where the layer's memory comes from; owned by the caller.
struct OsalContext {
    void* opaque = nullptr;  // first argument of the callbacks
    AllocCallback alloc = nullptr;
    ReleaseCallback release = nullptr;
};

// "OSAL_v12.8".
const char* osal_get_version();

// Clears the context. 0, or -1 for none.
int osal_init(OsalContext* context);
// Takes over the callbacks. 0, or -1 if anything but `opaque` is missing.
int osal_register_callbacks(OsalContext* context, const OsalContext* callbacks);
// 0, or -1 for none.
int osal_close(OsalContext* context);

struct OsalMutex;

// A plain mutex in memory of the context; none if that fails.
OsalMutex* osal_mutex_create(const OsalContext* context);
// 0, or -1 for none or a mutex in use.
int osal_mutex_destroy(OsalMutex* mutex);
// 0, -1 for none, else the system's error number.
int osal_mutex_lock(OsalMutex* mutex);
// 0 or -1.
int osal_mutex_unlock(OsalMutex* mutex);

using ThreadFunction = std::uint32_t (*)(void* argument);

// Values of ThreadCreateParams::policy.
inline constexpr std::uint32_t kPolicyRoundRobin = 0;
inline constexpr std::uint32_t kPolicyFirstInFirstOut = 1;
inline constexpr std::uint32_t kPolicyNormal = 2;

struct ThreadCreateParams {
    ThreadFunction function = nullptr;
    void* argument = nullptr;
    std::uint32_t stack_size = 0;     // bytes, 0 for the default
    void* stack_address = nullptr;    // none for the default
    std::uint32_t priority_mode = 0;  // 0: `priority` as it is, 1: a level, see below
    std::uint32_t priority = 0;
    std::uint32_t exit_value = 0;  // the function is called until it returns this
    std::uint32_t policy = 0;      // not used: round-robin is always asked for
    std::uint64_t affinity = 0;    // mask of the first 32 processors, 0 for all
};

struct OsalThread;

// Starts a thread. It asks for its policy, priority and nice value itself and goes on without them
// where the system refuses. None, with nothing left behind, if the thread can't be started.
OsalThread* osal_thread_create(const OsalContext* context, const ThreadCreateParams* params);
// Waits for the thread's end. 0 or -1.
int osal_thread_wait(OsalThread* thread);
// Waits if that hasn't been done, and frees the handle. 0, or -1 for none.
int osal_thread_destroy(OsalThread* thread);

// Results of get_priority_mapping that are no priority.
inline constexpr int kPriorityRefused = -1000;
inline constexpr int kPriorityDefault = -1001;

// The round-robin priority of a level: 0 leaves the default, 1 to 10 run from the lowest to the
// highest, higher levels are refused.
int get_priority_mapping(std::uint32_t level);

// Sleeps on the monotonic clock.
void osal_thread_sleep(std::uint32_t milliseconds);
// The monotonic clock in milliseconds, cut to 32 bits.
std::uint32_t osal_get_time();

// The heap as callbacks; the context is ignored.
void* cb_malloc(void* context, std::size_t size);
void cb_free(void* context, void* pointer);

}  // namespace mediasplit
