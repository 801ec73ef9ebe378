// The driver of ISO media input: one MP4 file, initialization segment or media segment in,
// elementary stream files and findings out.
#pragma once

#include <cstdint>
#include <memory>

#include "src/commonfileio/input_file.h"
#include "src/fmp4demuxer/dash_context.h"
#include "src/log/logging.h"
#include "src/log/status.h"
#include "src/mp4demuxer/records.h"
#include "src/records/manifest_context.h"
#include "src/records/segment_slot.h"
#include "src/records/segment_timing.h"
#include "src/util/opt_text.h"

namespace mediasplit {

class OutputRegistry;

// Makes the demultiplexer of one presentation (a plain file, a playlist's stream, a
// Representation). All texts and pointers may be null. Without `output_dir` nothing is written;
// `manifest_context` makes it a playlist stream (an I-frame stream writes nothing), `dash_context`
// a Representation, and both at once are refused with 3006. `key_text` is a content key in
// hexadecimal (4014 when it is none), `key_list` the "keyID:key,..." pairs. The contexts and
// `loglist` stay the caller's and must outlive the result; texts are copied. Returns null on a
// refusal, with the failure ORed into `status`.
[[nodiscard]] std::unique_ptr<Mp4Demuxer> fmp4demux_create(
    OptText output_dir, OptText output_base, OptText output_suffix,
    ManifestContext* manifest_context, DashContext* dash_context, OptText key_text,
    OptText key_list, Status* status, Loglist* loglist, std::uint32_t track_filter);

// Walks one file or segment, which stands at its first byte, and writes its samples in file byte
// order, each to its track's file. `slot` tells the byte range and kind, null means a whole plain
// file. `timing`, when given, gets the record of the track whose first sample was met last
// (seconds); the caller owns it. Returns the OR of all reports, kOk when nothing was reported.
[[nodiscard]] Status fmp4demux(InputFile* file, const SegmentSlot* slot, Mp4Demuxer* demuxer,
                               std::unique_ptr<SegmentTiming>* timing);

// Closes every output file and releases the demultiplexer. Returns kFailed when a file's last bytes
// couldn't be written. Null is accepted.
Status fmp4demux_destroy(std::unique_ptr<Mp4Demuxer> demuxer);

// Lets the demultiplexers of one stream's job know which output paths the job has opened in this
// run, so that a later one adds to the files of an earlier one. Without this call a demultiplexer
// counts as a job of its own. `registry` must outlive the demultiplexer.
void fmp4demux_share_outputs(Mp4Demuxer& demuxer, OutputRegistry& registry);

}  // namespace mediasplit
