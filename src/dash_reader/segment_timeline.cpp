#include "src/dash_reader/segment_timeline.h"

#include <algorithm>

#include "src/util/text.h"

namespace mediasplit {

void SegmentTimeline::append(std::uint64_t start, std::uint64_t duration, std::uint64_t repeat) {
    const std::uint64_t room = kMostTimelineEntries - size_;
    if (room == 0) {
        return;
    }
    const std::uint64_t count = std::min(repeat, room - 1) + 1;
    runs_.push_back({size_, count, start, duration});
    size_ += count;
}

std::size_t SegmentTimeline::run_of(std::uint64_t index) const {
    const auto above = std::upper_bound(
        runs_.begin(), runs_.end(), index,
        [](std::uint64_t wanted, const Run& run) { return wanted < run.first_index; });
    return static_cast<std::size_t>(above - runs_.begin()) - 1;
}

std::uint64_t SegmentTimeline::at(std::uint64_t index) const {
    const Run& run = runs_[run_of(index)];
    return run.start + (index - run.first_index) * run.duration;
}

std::uint64_t SegmentTimeline::find_from(std::uint64_t index, std::uint64_t time) const {
    if (index >= size_) {
        return size_;
    }
    for (std::size_t i = run_of(index); i < runs_.size(); ++i) {
        const Run& run = runs_[i];
        const std::uint64_t first = std::max(index, run.first_index);
        const std::uint64_t first_time = at(first);
        if (first_time >= time) {
            return first;
        }
        if (run.duration == 0) {
            continue;
        }
        const std::uint64_t steps = (time - first_time - 1) / run.duration + 1;
        if (steps < run.first_index + run.count - first) {
            return first + steps;
        }
    }
    return size_;
}

void read_segment_timeline(const Ezxml* node, SegmentTimeline& timeline, std::uint64_t& next_t) {
    for (const Ezxml* entry = ezxml_child(node, "S"); entry != nullptr; entry = entry->next) {
        const std::uint64_t repeat = str2ulonglong(ezxml_attr(entry, "r"));
        const std::uint64_t duration = str2ulonglong(ezxml_attr(entry, "d"));
        const char* const start_text = ezxml_attr(entry, "t");
        const std::uint64_t start = start_text == nullptr ? next_t : str2ulonglong(start_text);
        timeline.append(start, duration, repeat);
        next_t = (repeat + 1) * duration + start;
    }
}

}  // namespace mediasplit
