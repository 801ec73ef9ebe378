// The start times of a SegmentTimeline (ISO/IEC 23009-1 5.3.9.6).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/xml_tree.h"

namespace mediasplit {

// What a timeline holds at most; repeat counts beyond it are cut.
inline constexpr std::uint64_t kMostTimelineEntries = std::uint64_t{1} << 24;

// Start time of each segment in timescale units, modulo 2^64. Repeats aren't spelled out, so the
// size follows the manifest's and not its repeat counts.
class SegmentTimeline {
public:
    // Appends `repeat` + 1 entries from `start` in steps of `duration`.
    void append(std::uint64_t start, std::uint64_t duration, std::uint64_t repeat);

    [[nodiscard]] std::uint64_t size() const { return size_; }
    // The entry of an index below size().
    [[nodiscard]] std::uint64_t at(std::uint64_t index) const;
    // Index of the first entry from `index` on whose time is at least `time`; size() if none is.
    [[nodiscard]] std::uint64_t find_from(std::uint64_t index, std::uint64_t time) const;

private:
    struct Run {
        std::uint64_t first_index = 0;
        std::uint64_t count = 0;
        std::uint64_t start = 0;
        std::uint64_t duration = 0;
    };
    [[nodiscard]] std::size_t run_of(std::uint64_t index) const;

    std::vector<Run> runs_{};
    std::uint64_t size_ = 0;
};

// Appends the S children of a SegmentTimeline. `next_t` is the start of an S without "t", and
// becomes that of the next one. A negative "r" counts as 0.
void read_segment_timeline(const Ezxml* node, SegmentTimeline& timeline, std::uint64_t& next_t);

}  // namespace mediasplit
