// The clock that followers of playlists and manifests wait by.
#pragma once

#include <cstdint>
#include <ctime>

namespace mediasplit {

struct PlayerClock {
    std::time_t (*now)() = nullptr;  // seconds
    void (*sleep)(std::uint32_t seconds) = nullptr;
};

// The clock in force: the machine's at first. Change it only while no other thread runs.
PlayerClock& player_clock();

}  // namespace mediasplit
