// The state of one reading of a media playlist.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "src/commonfileio/input_file.h"
#include "src/hls/playlist_record.h"
#include "src/hls/stream_worker.h"
#include "src/mp4demuxer/records.h"
#include "src/records/segment_timing.h"
#include "src/records/ts_segment_summary.h"

namespace mediasplit {

struct StreamState {
    // What the caller gave.
    std::string name;
    std::string output_dir;
    std::optional<std::string> keypairs;
    ManifestContext* context = nullptr;
    Status* status = nullptr;
    List* sync_list = nullptr;
    double* live_remaining = nullptr;
    Loglist* loglist = nullptr;
    StreamOutputs* outputs = nullptr;

    PlaylistRecord playlist;
    std::optional<InputFile> input;                  // kept from segment to segment
    std::optional<ManifestContext> demuxer_context;  // the demultiplexer's copy
    std::unique_ptr<Mp4Demuxer> demuxer;             // none until an initialization section
    std::unique_ptr<SegmentTiming> pending;          // the latest record, not sent yet
    TsSegmentSummary previous;                       // of the TS segment before
    std::optional<std::string> key_text;             // from the pairs, for the key id in force

    void add(Status more) const { *status |= more; }
};

// The index that ends the walk over the slots.
inline constexpr std::int64_t kEndOfStream = 0;

// Passes over a first slot that is no segment, or handles it. Returns the next index as
// threadUnit.
std::int64_t threadRecursion(StreamState& state, std::size_t index);

struct LocalSegment;

// Handles the slot at `index`, whose file has been opened, and returns the index of the next slot,
// kEndOfStream, or a negative value: the playlist is to be loaded again, after 1000 minus that many
// milliseconds.
std::int64_t threadUnit(StreamState& state, std::size_t index, LocalSegment segment);

// The slot behind `index`, with the results of threadUnit.
std::int64_t next_index(const StreamState& state, std::size_t index);

// Looks up the key of the id that the slot tells in a "data:" address. False if it tells none.
bool find_key(StreamState& state, const SegmentSlot& slot);

// Closes everything but the files of the run.
void close_stream(StreamState& state);

}  // namespace mediasplit
