#include "src/hls/segment_demux.h"

#include <string_view>
#include <utility>

#include "src/file_util/path_names.h"
#include "src/fmp4demuxer/fmp4demux.h"
#include "src/fmp4demuxer/segment_index.h"
#include "src/fmp4demuxer/track_driver.h"
#include "src/hls/channels.h"
#include "src/id3demuxer/id3demux.h"
#include "src/log/logging.h"
#include "src/tsTableParse/segment_timing.h"
#include "src/tsTableParse/ts_demux.h"
#include "src/util/segments.h"

namespace mediasplit {

namespace {

constexpr std::int64_t kAllPids = -1;

// Whether this is the first segment of the job.
bool begin_segment(StreamState& state) {
    return !std::exchange(state.outputs->has_begun, true);
}

// Puts the input to its first byte, or to that of the slot's range. False, with 4065, if it can't
// be reached.
bool open_range(StreamState& state, const SegmentSlot& slot) {
    const auto range = byte_range_of(&slot);
    if (!range) {
        return true;
    }
    InputFile& input = *state.input;
    input.range_active = 1;
    input.range_start = static_cast<std::int64_t>(range->start);
    input.range_left = static_cast<std::int64_t>(range->length);
    const bool is_open = ReOpenFileEx(input) == Status::kOk;
    state.add(check(is_open, state.loglist, 4065, {}, range->start, range->length, slot.uri));
    return is_open;
}

void send_no_timing(StreamState& state) {
    auto record = std::make_unique<SegmentTiming>();
    record->duration = -1.0;
    record->end = 1;
    bubbleSegment(state.sync_list, record);
}

void handle_packed_audio(StreamState& state, const SegmentSlot& slot) {
    if (open_range(state, slot)) {
        state.add(id3demux(&*state.input, &slot, state.output_dir, state.name, begin_segment(state),
                           state.context, state.loglist, &state.outputs->registry));
    }
    send_no_timing(state);
}

void handle_ts(StreamState& state, const SegmentSlot& slot) {
    if (open_range(state, slot)) {
        TsSegmentSummary summary;
        state.add(tsdemux(*state.input, state.output_dir, state.name, begin_segment(state),
                          state.context, &summary, true, state.loglist, kAllPids,
                          &state.outputs->registry));
        if (check_segment_timing(state.previous, summary, state.loglist) != Status::kOk) {
            state.add(Status::kRuleBroken);
        }
        state.previous = summary;
    }
    send_no_timing(state);
}

// A demultiplexer for the initialization section `slot`, in place of an earlier one.
bool make_demuxer(StreamState& state, const SegmentSlot& slot) {
    state.add(fmp4demux_destroy(std::move(state.demuxer)));
    state.demuxer_context.reset();
    if (state.context != nullptr) {
        ManifestContext& copy = state.demuxer_context.emplace(*state.context);
        if (!copy.codecs && copy.audio_only != 0) {
            copy.codecs = copy.variant_codecs;
        }
    }
    std::optional<std::string> suffix;
    if (std::string base; splitfilename(slot.uri, base) == 0) {
        suffix = std::move(base);
    }
    state.demuxer =
        fmp4demux_create(state.output_dir, state.name, suffix,
                         state.demuxer_context ? &*state.demuxer_context : nullptr, nullptr,
                         state.key_text, state.keypairs, state.status, state.loglist, kAllTracks);
    if (state.demuxer == nullptr) {
        state.add(Status::kFailed);
        return false;
    }
    fmp4demux_share_outputs(*state.demuxer, state.outputs->registry);
    return true;
}

void demux_with_timing(StreamState& state, const SegmentSlot& slot) {
    state.outputs->has_begun = true;
    std::unique_ptr<SegmentTiming> timing;
    state.add(fmp4demux(&*state.input, &slot, state.demuxer.get(), &timing));
    pass_hls_check_channels_info(state.context,
                                 state.demuxer_context ? &*state.demuxer_context : nullptr);
    // A record goes out one segment late, so that the last one can be marked.
    bubbleSegment(state.sync_list, state.pending);
    state.pending = std::move(timing);
}

bool handle_mp4(StreamState& state, const SegmentSlot& slot, bool skip) {
    if (slot.kind == kSlotInitialization) {
        if (!make_demuxer(state, slot)) {
            return false;
        }
    } else if ((slot.kind != kSlotMedia && slot.kind != kSlotMediaRange) || skip) {
        return true;
    } else {
        const Status initialized = check(state.demuxer != nullptr, state.loglist, 4067, {});
        if (state.demuxer == nullptr) {
            state.add(initialized | Status::kFailed);
            return true;
        }
    }
    demux_with_timing(state, slot);
    return true;
}

// The text from the last "." on.
std::string_view extension_of(OptText uri) {
    const std::size_t dot = uri.view().rfind('.');
    return dot == std::string_view::npos ? uri.view() : uri.view().substr(dot);
}

}  // namespace

bool demux_segment(StreamState& state, const SegmentSlot& slot, int type, bool skip) {
    note_evaluated(2015);
    switch (type) {
        case kFileTypeMp4:
            return handle_mp4(state, slot, skip);
        case kFileTypePackedAudio:
            if (!skip) {
                handle_packed_audio(state, slot);
            }
            return true;
        case kFileTypeTs:
            if (!skip) {
                handle_ts(state, slot);
            }
            return true;
        default:
            state.add(Logging_err_type_check(state.loglist, 2015, {}, extension_of(slot.uri)));
            return true;
    }
}

}  // namespace mediasplit
