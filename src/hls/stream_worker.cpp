#include "src/hls/stream_worker.h"

#include <mbedtls/base64.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <utility>

#include "src/fmp4demuxer/fmp4demux.h"
#include "src/fmp4demuxer/segment_index.h"
#include "src/hls/channels.h"
#include "src/hls/playlist_reader.h"
#include "src/hls/segment_demux.h"
#include "src/hls/segment_source.h"
#include "src/hls/stream_state.h"
#include "src/log/logging.h"
#include "src/util/address.h"
#include "src/util/player_clock.h"
#include "src/util/segments.h"
#include "src/util/text.h"

namespace mediasplit {

namespace {

constexpr int kLoadAgain = 1;
constexpr int kDone = 0;
constexpr double kMillisecondsPerSecond = 1000.0;
constexpr std::int64_t kShortestWait = 1000;  // milliseconds
// Media that a round counts for at least, or a playlist without any would be followed for ever.
constexpr double kLeastRound = 100.0;               // milliseconds
constexpr std::int64_t kLongestTarget = 2'000'000;  // seconds
constexpr double kNothingLeft = -0.00000001;        // seconds
constexpr std::size_t kKeyIdSize = 16;
constexpr std::size_t kKeyBits = 16;  // deliberate: any four characters will do for a key here

bool has_address(const PlaylistRecord& playlist) {
    return playlist.url && is_url(*playlist.url);
}

// The negative result of threadUnit behind the last slot of a playlist that grows.
std::int64_t wait_value(const PlaylistRecord& playlist) {
    const double elapsed =
        kMillisecondsPerSecond * std::difftime(player_clock().now(), playlist.load_time);
    constexpr double kMost = 1e15;
    const auto ahead = static_cast<std::int64_t>(std::min(playlist.total_ms - elapsed, kMost));
    std::int64_t target = 0;
    if (playlist.target_duration) {
        target = std::clamp<std::int64_t>(
            std::strtoll(playlist.target_duration->c_str(), nullptr, 10), 0, kLongestTarget);
    }
    const std::int64_t value = kShortestWait * target - ahead;
    constexpr std::int64_t kLeast = std::numeric_limits<std::int32_t>::min() + 2 * kShortestWait;
    return value < -kShortestWait ? std::max(value, kLeast) : -1;
}

// Behind a slot that is no segment.
std::int64_t pass_over(const StreamState& state, std::size_t index) {
    const bool is_last = index + 1 >= state.playlist.slots.size();
    return is_last ? next_index(state, index) : static_cast<std::int64_t>(index) + 1;
}

std::int64_t handle_slot(StreamState& state, std::size_t index) {
    const SegmentSlot& slot = state.playlist.slots[index];
    if (slot.kind == kSlotEndOfList) {
        return kEndOfStream;
    }
    if (slot.kind == kSlotDiscontinuity) {
        return pass_over(state, index);
    }
    auto segment = bring_segment(state, slot);
    return segment ? threadUnit(state, index, std::move(*segment)) : kEndOfStream;
}

void finish_stream(StreamState& state) {
    if (state.playlist.has_discontinuity != 0) {
        state.add(check_channels_info(state.context, state.loglist));
    }
    if (state.pending == nullptr) {
        state.pending = std::make_unique<SegmentTiming>();
        state.pending->duration = -1.0;
    }
    state.pending->end = 1;
    bubbleSegment(state.sync_list, state.pending);
}

void wait_for_more(StreamState& state, std::int64_t next) {
    const std::int64_t wait = kShortestWait - next;
    state.add(Logging_err_type_check(state.loglist, 1024, {}, state.playlist.url,
                                     static_cast<std::int32_t>(wait)));
    player_clock().sleep(static_cast<std::uint32_t>(wait / kShortestWait));
    bool is_spent = false;
    if (state.live_remaining != nullptr) {
        *state.live_remaining -=
            std::max(state.playlist.total_ms, kLeastRound) / kMillisecondsPerSecond;
        if (*state.live_remaining < kNothingLeft) {
            *state.live_remaining = 0;
            is_spent = true;
        }
    }
    if (state.pending != nullptr) {
        state.pending->end = is_spent ? 1 : 0;
    }
    bubbleSegment(state.sync_list, state.pending);
}

}  // namespace

void send_end_record(List* sync_list) {
    auto record = std::make_unique<SegmentTiming>();
    record->duration = -1.0;
    record->is_last_kind = 1;
    bubbleSegment(sync_list, record);
}

bool find_key(StreamState& state, const SegmentSlot& slot) {
    if (slot.key == nullptr || !slot.key->uri || !slot.key->uri->starts_with(kDataKey)) {
        return false;
    }
    const std::vector<std::uint8_t> coded(slot.key->uri->begin() + kDataKey.size(),
                                          slot.key->uri->end());
    std::array<std::uint8_t, kKeyIdSize> key_id{};
    std::size_t size = 0;
    state.key_text.reset();
    if (mbedtls_base64_decode(key_id.data(), key_id.size(), &size, coded.data(), coded.size()) ==
        0) {
        state.key_text = get_decryption_key(state.keypairs, key_id, kKeyBits);
    }
    return true;
}

std::int64_t next_index(const StreamState& state, std::size_t index) {
    const PlaylistRecord& playlist = state.playlist;
    const bool has_more = index + 1 < playlist.slots.size();
    const auto following = static_cast<std::int64_t>(index) + 1;
    if (!has_address(playlist)) {
        return has_more ? following : kEndOfStream;
    }
    if (state.live_remaining != nullptr &&
        playlist.total_ms >= kMillisecondsPerSecond * *state.live_remaining) {
        return kEndOfStream;
    }
    return has_more ? following : wait_value(playlist);
}

std::int64_t threadUnit(StreamState& state, std::size_t index, LocalSegment segment) {
    PlaylistRecord& playlist = state.playlist;
    const SegmentSlot& slot = playlist.slots[index];
    const int type = get_file_type(slot.uri, segment.copy);
    const bool skip =
        (state.context != nullptr ? state.context->is_iframe_stream : playlist.iframes_only) != 0;
    if (slot.duration) {
        playlist.total_ms += 1000 * segment_seconds(slot.duration);
        while (skip && index + 1 < playlist.slots.size() &&
               playlist.slots[index + 1].uri == slot.uri) {
            ++index;
            playlist.total_ms += 1000 * segment_seconds(playlist.slots[index].duration);
        }
    }
    adopt_segment(state, slot, std::move(segment));
    const bool goes_on = demux_segment(state, slot, type, skip);
    note_segment();
    return goes_on ? next_index(state, index) : kEndOfStream;
}

std::int64_t threadRecursion(StreamState& state, std::size_t index) {
    if (!find_key(state, state.playlist.slots[index])) {
        state.key_text.reset();
    }
    return handle_slot(state, index);
}

void close_stream(StreamState& state) {
    state.add(fmp4demux_destroy(std::move(state.demuxer)));
    if (state.input) {
        state.add(close_whole_input(*state.input, state.loglist));
        state.input.reset();
    }
    destroy(state.playlist);
}

int thread(std::FILE* file, OptText url, OptText name, OptText output_dir, ManifestContext* context,
           Status& status, List* sync_list, OptText keypairs, double* live_remaining,
           Loglist* loglist, StreamOutputs& outputs) {
    StreamState state;
    state.name = name.view();
    state.output_dir = output_dir.view();
    state.keypairs = string_dup(keypairs);
    state.context = context;
    state.status = &status;
    state.sync_list = sync_list;
    state.live_remaining = live_remaining;
    state.loglist = loglist;
    state.outputs = &outputs;

    PlaylistRecord& playlist = state.playlist;
    const Status parsed = parse_file(file, url, playlist, nullptr);
    const Status filled = check(!playlist.slots.empty(), loglist, 2014, {}, url.view());
    if (parsed != Status::kOk || playlist.slots.empty()) {
        status |= filled | Status::kFailed;
        send_end_record(sync_list);
        return kDone;
    }
    playlist.load_time = player_clock().now();
    if (playlist.has_discontinuity != 0) {
        status |= parse_channels_info(context, loglist);
    }
    if (context != nullptr && context->is_iframe_stream != 0) {
        status |= check(playlist.iframes_only != 0, loglist, 4054, {});
    }
    std::int64_t next = threadRecursion(state, 0);
    while (next > 0) {
        const auto index = static_cast<std::size_t>(next);
        find_key(state, playlist.slots[index]);
        next = handle_slot(state, index);
    }
    if (next < 0) {
        wait_for_more(state, next);
    } else {
        finish_stream(state);
    }
    close_stream(state);
    return next < 0 ? kLoadAgain : kDone;
}

}  // namespace mediasplit
