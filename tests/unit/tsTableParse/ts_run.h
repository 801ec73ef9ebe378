// One run of the transport stream demultiplexer over bytes, with all that it left.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "src/log/loglist.h"
#include "src/records/manifest_context.h"
#include "src/records/ts_segment_summary.h"
#include "tests/support/recording_sink.h"
#include "tests/support/ts_builder.h"

namespace mediasplit {

struct TsRun {
    Status status = Status::kOk;
    std::map<std::string, Bytes> files{};  // outputs by name
    std::vector<RecordedReport> reports{};
    std::vector<std::string> notes{};
    TsSegmentSummary summary{};

    [[nodiscard]] std::size_t count(int id) const;
    [[nodiscard]] std::string text(int id) const;  // of the first report, "" if there is none
};

struct TsRunOptions {
    ManifestContext* manifest = nullptr;
    bool is_hls = false;
    std::int64_t pid_filter = -1;
    std::string name_prefix = "main";
    bool has_folder = true;  // false: the output folder isn't there
};

TsRun demux(const Bytes& bytes, const TsRunOptions& options = {});
// Several inputs into one folder, the first one creating the files.
TsRun demux_series(const std::vector<Bytes>& inputs, const TsRunOptions& options = {});

}  // namespace mediasplit
