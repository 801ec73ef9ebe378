// One flow for each kind of input. A flow reads the options of the run, takes its input apart, and
// returns the OR of all reports; it never ends the run by itself.
#pragma once

#include <cstdint>
#include <string>

#include "src/commonfileio/input_file.h"
#include "src/file_util/output_file.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/records/manifest_context.h"
#include "src/records/ts_segment_summary.h"

namespace mediasplit {

// The demultiplexer of one transport stream file.
using TsDemux = Status (*)(InputFile& input, const std::string& output_dir, const std::string& name,
                           bool first, ManifestContext* context, TsSegmentSummary* summary,
                           bool is_hls, Loglist* loglist, std::int64_t pid_filter,
                           OutputRegistry* outputs);

[[nodiscard]] Status run_hls(Loglist* loglist);
[[nodiscard]] Status run_dash(Loglist* loglist);
[[nodiscard]] Status run_mp4(Loglist* loglist);
[[nodiscard]] Status run_ts_series(Loglist* loglist);
[[nodiscard]] Status run_ts_file(Loglist* loglist);
[[nodiscard]] Status run_eac3(Loglist* loglist);
[[nodiscard]] Status run_ac4(Loglist* loglist);

// The TS flows with a demultiplexer of the caller's choice.
[[nodiscard]] Status run_ts_series_with(TsDemux demux, Loglist* loglist);
[[nodiscard]] Status run_ts_file_with(TsDemux demux, Loglist* loglist);

}  // namespace mediasplit
