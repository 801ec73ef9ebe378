#include <string>

#include "src/commonfileio/file_descriptor.h"
#include "src/file_util/path_names.h"
#include "src/log/logging.h"
#include "src/main/flows/flows.h"
#include "src/main/series_name.h"
#include "src/records/run_options.h"
#include "src/tsTableParse/segment_timing.h"
#include "src/tsTableParse/ts_demux.h"

namespace mediasplit {

namespace {

Status run_demux(TsDemux demux, InputFile& input, const std::string& name, bool first,
                 TsSegmentSummary* summary, OutputRegistry& outputs, Loglist* loglist) {
    return demux(input, g_output_dir.value_or(""), name, first, nullptr, summary, false, loglist,
                 g_pid, &outputs);
}

}  // namespace

Status run_ts_series_with(TsDemux demux, Loglist* loglist) {
    std::string name;
    const bool has_name = splitfilename(g_input, name) == 0;
    Status status = Status::kOk;
    TsSegmentSummary previous;
    OutputRegistry outputs;
    std::uint32_t n = 0;
    for (;; ++n) {
        const SeriesName file = series_file_name(*g_input, g_startIndex + n);
        // A template without a number names one file, not an endless row of it.
        if ((n > 0 && !file.is_numbered) || !open_for_reading(file.name)) {
            break;
        }
        if (!has_name) {
            return status | Status::kFailed;
        }
        InputFile input;
        TsSegmentSummary summary;
        if (OpenFileEx(file.name, nullptr, 0, input) == Status::kOk) {
            status |= Logging_err_type_check(loglist, 3, {}, file.name);
            const Status result = run_demux(demux, input, name, n == 0, &summary, outputs, loglist);
            status |= result;
            if (result == Status::kOk) {
                status |= check_segment_timing(previous, summary, loglist);
            }
        }
        status |= close_whole_input(input, loglist);
        note_segment();
        previous = summary;
    }
    if (n == 0) {
        status |= Logging_err_type_check(loglist, 4064, {}, *g_input);
    }
    return status;
}

Status run_ts_file_with(TsDemux demux, Loglist* loglist) {
    std::string name;
    if (splitfilename(g_input, name) != 0) {
        return Status::kFailed;
    }
    InputFile input;
    OutputRegistry outputs;
    Status status = Status::kOk;
    if (OpenFileEx(g_input, nullptr, 0, input) == Status::kOk) {
        status |= Logging_err_type_check(loglist, 3, {}, *g_input);
        status |= run_demux(demux, input, name, true, nullptr, outputs, loglist);
    } else {
        status |= Logging_err_type_check(loglist, 4022, {}, *g_input);
    }
    return status | close_whole_input(input, loglist);
}

Status run_ts_series(Loglist* loglist) {
    return run_ts_series_with(tsdemux, loglist);
}

Status run_ts_file(Loglist* loglist) {
    return run_ts_file_with(tsdemux, loglist);
}

}  // namespace mediasplit
