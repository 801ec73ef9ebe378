#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

// Calls `use` with up to 16 frames, each of which stands behind a 16-bit length. A frame is an
// exactly sized copy, so that a read behind it is seen.
template <typename Use>
void for_each_frame(const std::uint8_t* data, std::size_t size, const Use& use) {
    constexpr int kMostFrames = 16;
    std::size_t at = 0;
    for (int i = 0; i < kMostFrames && at + 2 < size; ++i) {
        const std::size_t length = (static_cast<std::size_t>(data[at]) << 8) | data[at + 1];
        at += 2;
        const std::size_t n = std::min(length, size - at);
        use(std::vector<std::uint8_t>(data + at, data + at + n));
        at += n;
    }
}
