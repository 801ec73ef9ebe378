#include "src/util/player_clock.h"

#include "base/osal.h"

namespace mediasplit {
namespace {

std::time_t machine_time() {
    return std::time(nullptr);
}

// In portions, so that no number of seconds is too large for the milliseconds of a sleep.
void machine_sleep(std::uint32_t seconds) {
    constexpr std::uint32_t kPortion = 1000000;
    for (; seconds > kPortion; seconds -= kPortion) {
        osal_thread_sleep(kPortion * 1000);
    }
    osal_thread_sleep(seconds * 1000);
}

}  // namespace

PlayerClock& player_clock() {
    static PlayerClock clock{machine_time, machine_sleep};
    return clock;
}

}  // namespace mediasplit
