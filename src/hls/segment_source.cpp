#include "src/hls/segment_source.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "src/file_util/path_names.h"
#include "src/log/logging.h"
#include "src/util/address.h"
#include "src/util/fetcher.h"
#include "src/util/player_clock.h"
#include "src/util/segments.h"

namespace mediasplit {

namespace {

constexpr int kTries = 3;
constexpr std::size_t kLongestCopyName = 4096;
constexpr float kMillisecondsPerSecond = 1000.0F;
constexpr float kLongestSegment = 1e9F;  // seconds
// No server is waited for longer than for an answer.
constexpr std::uint32_t kLongestPause = 300;  // seconds

// Whole seconds between two tries.
std::uint32_t retry_pause(const SegmentSlot& slot) {
    const float milliseconds = slot.duration
                                   ? kMillisecondsPerSecond * segment_seconds(slot.duration) * 0.5F
                                   : kMillisecondsPerSecond;
    const float seconds =
        std::min(milliseconds / kMillisecondsPerSecond, static_cast<float>(kLongestPause));
    return static_cast<std::uint32_t>(seconds);
}

// Deliberate: the pause follows the last try, too.
bool fetch_with_retries(const SegmentSlot& slot, const std::string& path, Loglist* loglist) {
    for (int number = 1; number <= kTries; ++number) {
        if (url2file(slot.uri, path) == 0) {
            return true;
        }
        // A warning; it has no result.
        (void)Logging_err_type_check(loglist, 2052, {}, *slot.uri, number);
        player_clock().sleep(retry_pause(slot));
    }
    return false;
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
        if (fetch_with_retries(slot, *segment.copy, state.loglist)) {
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
