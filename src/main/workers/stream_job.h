// What a worker is told about its stream, and what it answers.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "base/list.h"
#include "src/hls/stream_worker.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/records/manifest_context.h"

namespace mediasplit {

// Belongs to the worker from its start to its end.
struct StreamJob {
    std::string url;   // playlist of the stream, or the manifest; local path or address
    std::string name;  // base name of the output files
    std::optional<std::string> output_dir;
    Status status = Status::kOk;                         // to be read after the end
    std::unique_ptr<ManifestContext> manifest_context;   // playlists only; none without a master
    std::unique_ptr<std::int32_t> representation_flag;  // manifests only, down to key_id
    std::string dash_scratch;
    std::int32_t format = 0;  // FormatId of the run
    std::int32_t period_index = 0;
    std::optional<std::string> representation_id;
    std::optional<std::string> manifest_text;
    std::optional<std::string> key_id;
    std::uint32_t worker_index = 0;
    List* sync_list = nullptr;  // shared with the timing thread; none: no comparison
    Loglist* loglist = nullptr;
    std::unique_ptr<Loglist> own_loglist;  // of a worker on a thread
    StreamOutputs outputs;
};

}  // namespace mediasplit
