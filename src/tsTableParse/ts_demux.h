// Takes an MPEG-2 transport stream apart into one file for each elementary stream (ISO/IEC
// 13818-1).
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "src/file_util/output_file.h"
#include "src/tsTableParse/ts_context.h"
#include "src/tsTableParse/ts_tables.h"

namespace mediasplit {

// Demultiplexes the open `input` to its end. Files are named after `name_prefix` in
// `output_folder`, created anew if `first`, otherwise added to; `outputs`, if given, decides that
// for each file by whether it was opened before. With `pid_filter` other than -1 only that PID is
// written. `manifest` (may be nullptr) is what the manifest says of the stream,
// and gets what was found of its channels. `summary` (may be nullptr) is filled if the result is 0.
// `is_hls` turns on the rules that forbid this container. The result is the OR of everything
// reported; kFailed is in it if a file couldn't be opened or written.
Status tsdemux(InputFile& input, const std::string& output_folder, const std::string& name_prefix,
               bool first, ManifestContext* manifest, TsSegmentSummary* summary, bool is_hls,
               Loglist* loglist, std::int64_t pid_filter, OutputRegistry* outputs = nullptr);

// A context in its initial state, with nothing selected and the packet not synchronised.
std::unique_ptr<TsContext> tsOpen(std::int64_t selected_program, ManifestContext* manifest,
                                  bool is_hls, Loglist* loglist);

// The packet loop, and what is left of all PES packets at the end of the input.
Status processTransporStream(TsContext& context, TsOutputFiles& files);

// Handles the current packet.
Status tsProcess(TsOutputFiles& files, TsContext& context, TsTables& tables);

// Header of the current packet (2.4.3.2).
void tsPacketParseHeader(TsContext& context);

// Adaptation field of the current packet: its length and the clock reference (2.4.3.4).
void tsPacketParseAdaptationField(TsContext& context);

// Sends the payload of the current packet where its PID belongs.
Status tsPacketParseDataByte(TsOutputFiles& files, TsContext& context, TsTables& tables);

}  // namespace mediasplit
