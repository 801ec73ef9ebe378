#include "base/osal.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <chrono>

namespace mediasplit {
namespace {

// Counts what is taken and not given back; fails from `budget` on.
struct Meter {
    std::atomic<int> open{0};
    std::atomic<int> taken{0};
    int budget = 1000;
};

void* metered_alloc(void* context, std::size_t size) {
    auto* const meter = static_cast<Meter*>(context);
    if (meter->taken++ >= meter->budget) {
        return nullptr;
    }
    ++meter->open;
    return cb_malloc(nullptr, size);
}

void metered_release(void* context, void* pointer) {
    --static_cast<Meter*>(context)->open;
    cb_free(nullptr, pointer);
}

class OsalTest : public testing::Test {
protected:
    OsalTest() {
        osal_init(&context_);
        const OsalContext callbacks{&meter_, metered_alloc, metered_release};
        osal_register_callbacks(&context_, &callbacks);
    }
    ~OsalTest() override { EXPECT_EQ(meter_.open, 0); }

    Meter meter_;
    OsalContext context_;
};

std::uint32_t count_up(void* argument) {
    return static_cast<std::uint32_t>(++*static_cast<std::atomic<int>*>(argument));
}

std::uint32_t count_once(void* argument) {
    count_up(argument);
    return 0;
}

TEST(Osal, TellsItsVersion) {
    EXPECT_STREQ(osal_get_version(), "OSAL_v12.8");
}

TEST(Osal, ContextNeedsBothCallbacks) {
    OsalContext context{&context, cb_malloc, cb_free};
    EXPECT_EQ(osal_init(&context), 0);
    EXPECT_EQ(context.alloc, nullptr);
    EXPECT_EQ(context.opaque, nullptr);
    OsalContext callbacks{nullptr, cb_malloc, nullptr};
    EXPECT_EQ(osal_register_callbacks(&context, &callbacks), -1);
    callbacks = {nullptr, nullptr, cb_free};
    EXPECT_EQ(osal_register_callbacks(&context, &callbacks), -1);
    callbacks = {nullptr, cb_malloc, cb_free};
    EXPECT_EQ(osal_register_callbacks(&context, &callbacks), 0);
    EXPECT_EQ(osal_close(&context), 0);
}

TEST(Osal, NoContextFails) {
    const OsalContext callbacks{nullptr, cb_malloc, cb_free};
    OsalContext empty;
    EXPECT_EQ(osal_init(nullptr), -1);
    EXPECT_EQ(osal_register_callbacks(nullptr, &callbacks), -1);
    EXPECT_EQ(osal_register_callbacks(&empty, nullptr), -1);
    EXPECT_EQ(osal_close(nullptr), -1);
    EXPECT_EQ(osal_mutex_create(nullptr), nullptr);
    EXPECT_EQ(osal_mutex_create(&empty), nullptr);
    EXPECT_EQ(osal_mutex_destroy(nullptr), -1);
    EXPECT_EQ(osal_mutex_lock(nullptr), -1);
    EXPECT_EQ(osal_mutex_unlock(nullptr), -1);
    EXPECT_EQ(osal_thread_create(&empty, nullptr), nullptr);
    EXPECT_EQ(osal_thread_wait(nullptr), -1);
    EXPECT_EQ(osal_thread_destroy(nullptr), -1);
}

TEST_F(OsalTest, MutexLocksAndIsFreed) {
    OsalMutex* const mutex = osal_mutex_create(&context_);
    ASSERT_NE(mutex, nullptr);
    EXPECT_EQ(osal_mutex_lock(mutex), 0);
    EXPECT_EQ(osal_mutex_unlock(mutex), 0);
    EXPECT_EQ(osal_mutex_destroy(mutex), 0);
}

TEST_F(OsalTest, ThreadRunsItsFunctionOnceIfItReturnsTheExitValue) {
    std::atomic<int> calls{0};
    ThreadCreateParams params;
    params.function = count_once;
    params.argument = &calls;
    params.priority = 1;
    OsalThread* const thread = osal_thread_create(&context_, &params);
    ASSERT_NE(thread, nullptr);
    EXPECT_EQ(osal_thread_wait(thread), 0);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(osal_thread_destroy(thread), 0);
}

TEST_F(OsalTest, ThreadCallsItsFunctionUntilItReturnsTheExitValue) {
    std::atomic<int> calls{0};
    ThreadCreateParams params;
    params.function = count_up;
    params.argument = &calls;
    params.priority = 1;
    params.exit_value = 5;
    OsalThread* const thread = osal_thread_create(&context_, &params);
    ASSERT_NE(thread, nullptr);
    EXPECT_EQ(osal_thread_destroy(thread), 0);
    EXPECT_EQ(calls, 5);
}

std::uint32_t tell_nice(void* argument) {
    *static_cast<int*>(argument) = getpriority(PRIO_PROCESS, 0);
    return 0;
}

TEST_F(OsalTest, PriorityOneBecomesTheNiceValueOfTheThreadOnly) {
    const int before = getpriority(PRIO_PROCESS, 0);
    int nice = -100;
    ThreadCreateParams params;
    params.function = tell_nice;
    params.argument = &nice;
    params.priority = 1;
    OsalThread* const thread = osal_thread_create(&context_, &params);
    ASSERT_NE(thread, nullptr);
    osal_thread_destroy(thread);
    // Only the super-user may take the value down.
    EXPECT_EQ(nice, geteuid() == 0 || before < 1 ? 1 : before);
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), before);
}

TEST_F(OsalTest, LevelZeroLeavesTheDefaultPriority) {
    int nice = -100;
    ThreadCreateParams params;
    params.function = tell_nice;
    params.argument = &nice;
    params.priority_mode = 1;
    params.priority = 0;
    OsalThread* const thread = osal_thread_create(&context_, &params);
    ASSERT_NE(thread, nullptr);
    osal_thread_destroy(thread);
    EXPECT_EQ(nice, getpriority(PRIO_PROCESS, 0));
}

TEST_F(OsalTest, StackSizeAndAffinityAreTaken) {
    std::atomic<int> calls{0};
    ThreadCreateParams params;
    params.function = count_once;
    params.argument = &calls;
    params.priority = 1;
    params.stack_size = 0x40000;
    cpu_set_t allowed;
    ASSERT_EQ(sched_getaffinity(0, sizeof(allowed), &allowed), 0);
    for (int i = 31; i >= 0; --i) {
        params.affinity = CPU_ISSET(i, &allowed) ? std::uint64_t{1} << i : params.affinity;
    }
    OsalThread* const thread = osal_thread_create(&context_, &params);
    ASSERT_NE(thread, nullptr);
    osal_thread_destroy(thread);
    EXPECT_EQ(calls, 1);
}

TEST_F(OsalTest, ThreadWhoseAttributesFailIsNoneAndLeavesNothing) {
    std::atomic<int> calls{0};
    ThreadCreateParams params;
    params.function = count_once;
    params.argument = &calls;
    params.priority = 1;
    params.stack_size = 1;
    EXPECT_EQ(osal_thread_create(&context_, &params), nullptr);
    params.stack_size = 0;
    params.priority = 1000;
    EXPECT_EQ(osal_thread_create(&context_, &params), nullptr);
    EXPECT_EQ(meter_.open, 0);
    EXPECT_EQ(calls, 0);
}

TEST_F(OsalTest, ThreadIsRefusedForAnUnknownModeOrLevelOrWithoutMemory) {
    ThreadCreateParams params;
    params.function = count_once;
    params.priority_mode = 2;
    EXPECT_EQ(osal_thread_create(&context_, &params), nullptr);
    params.priority_mode = 1;
    params.priority = 11;
    EXPECT_EQ(osal_thread_create(&context_, &params), nullptr);
    params.priority = 1;
    params.function = nullptr;
    EXPECT_EQ(osal_thread_create(&context_, &params), nullptr);
    params.function = count_once;
    meter_.budget = 0;
    EXPECT_EQ(osal_thread_create(&context_, &params), nullptr);
    EXPECT_EQ(osal_mutex_create(&context_), nullptr);
}

TEST(PriorityMapping, SpreadsTenLevelsOverTheRange) {
    // The range of Linux is 1 to 99, a ninth of it 10.
    const int expected[] = {-1001, 1, 11, 21, 31, 41, 59, 69, 79, 89, 99, -1000, -1000};
    for (std::uint32_t level = 0; level < std::size(expected); ++level) {
        EXPECT_EQ(get_priority_mapping(level), expected[level]) << level;
    }
}

TEST(Clock, RunsForwardInMilliseconds) {
    const auto real = std::chrono::steady_clock::now();
    const std::uint32_t start = osal_get_time();
    osal_thread_sleep(30);
    const std::uint32_t passed = osal_get_time() - start;
    EXPECT_GE(passed, 29U);
    EXPECT_GE(std::chrono::steady_clock::now() - real, std::chrono::milliseconds(30));
    osal_thread_sleep(0);
}

}  // namespace
}  // namespace mediasplit
