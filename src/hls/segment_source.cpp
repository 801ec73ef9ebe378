#include "src/hls/segment_source.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "src/file_util/path_names.h"
#include "src/log/logging.h"
#include "src/util/address.h"
#include "src/util/fetcher.h"
#include "src/util/segments.h"

namespace mediasplit {

namespace {

constexpr std::size_t kLongestCopyName = 4096;
constexpr float kLongestSegment = 1e9F;  // seconds

// Seconds between two tries.
double retry_pause(const SegmentSlot& slot) {
    constexpr float kMillisecondsPerSecond = 1000.0F;
    const float milliseconds = slot.duration
                                   ? kMillisecondsPerSecond * segment_seconds(slot.duration) * 0.5F
                                   : kMillisecondsPerSecond;
    return milliseconds / kMillisecondsPerSecond;
}

bool is_at_hand(const StreamState& state, const SegmentSlot& slot) {
    return state.input && slot.uri && state.input->name == slot.uri;
}

LocalSegment open_segment(StreamState& state, const SegmentSlot& slot) {
    LocalSegment segment;
    if (!slot.uri) {
        return segment;
    }
    if (!is_url(*slot.uri)) {
        segment.file = open_for_reading(*slot.uri);
    } else if (is_at_hand(state, slot)) {
        segment.copy = state.input->temp_name;
        if (segment.copy && segment.copy->size() <= kLongestCopyName) {
            segment.file = open_for_reading(*segment.copy);
        }
    } else {
        segment.copy = createUniqueFileName("segment");
        if (fetch_segment(*slot.uri, *segment.copy, retry_pause(slot), state.loglist)) {
            segment.file = open_for_reading(*segment.copy);
        }
    }
    return segment;
}

}  // namespace

float segment_seconds(OptText text) {
    const float seconds = std::strtof(text.str().c_str(), nullptr);
    return std::isfinite(seconds) ? std::clamp(seconds, 0.0F, kLongestSegment) : 0.0F;
}

std::optional<LocalSegment> bring_segment(StreamState& state, const SegmentSlot& slot) {
    LocalSegment segment = open_segment(state, slot);
    if (!segment.file) {
        state.add(Status::kFailed);
        state.add(Logging_err_type_check(state.loglist, 4063, {}, slot.uri));
        return std::nullopt;
    }
    return segment;
}

void adopt_segment(StreamState& state, const SegmentSlot& slot, LocalSegment segment) {
    if (is_at_hand(state, slot)) {
        state.add(Rewind(*state.input));
        return;
    }
    if (state.input) {
        state.add(close_whole_input(*state.input, state.loglist));
    }
    state.input.emplace();
    state.add(
        ReadFileExt(std::move(segment.file), segment.copy, nullptr, 0, slot.uri, *state.input));
    state.add(safe_output_segment_url(&slot, state.loglist));
}

}  // namespace mediasplit
