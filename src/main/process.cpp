#include "src/main/process.h"

#include <algorithm>
#include <iterator>

#include "src/file_util/output_file.h"
#include "src/log/logging.h"
#include "src/main/flows/flows.h"
#include "src/records/run_options.h"

namespace mediasplit {

namespace {

struct FlowRow {
    FormatId format = FormatId::kUnknown;
    Status (*run)(Loglist*) = nullptr;
};

constexpr FlowRow kFlows[] = {
    {FormatId::kHls, run_hls},        {FormatId::kTsSeries, run_ts_series},
    {FormatId::kTsFile, run_ts_file}, {FormatId::kDash, run_dash},
    {FormatId::kMp4, run_mp4},        {FormatId::kEac3, run_eac3},
    {FormatId::kAc4, run_ac4},
};

Status run_unknown(Loglist* loglist) {
    return Logging_err_type_check(loglist, 4004, {});
}

int close_run(Status status, Loglist* loglist) {
    const bool failed = has_failed(status);
    // Plain output can't fail the run.
    static_cast<void>(
        Logging_err_type_check(loglist, 15, {}, failed ? "Failed" : "Succeed", g_input));
    return failed ? 1 : 0;
}

}  // namespace

int process(const std::uint8_t* /*data*/, std::uint32_t /*size*/, Loglist* loglist) {
    const auto* row = std::find_if(std::begin(kFlows), std::end(kFlows), [](const FlowRow& flow) {
        return flow.format == g_file_format;
    });
    begin_outputs();
    const auto run = row == std::end(kFlows) ? run_unknown : row->run;
    return close_run(run(loglist), loglist);
}

}  // namespace mediasplit
