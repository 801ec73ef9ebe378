#include "src/main/workers/thread_func.h"

#include <cstdio>

#include "src/dash_thread/dash_thread.h"
#include "src/log/logging.h"
#include "src/main/workers/manifest_file.h"
#include "src/main/workers/stream_job.h"
#include "src/records/run_options.h"

namespace mediasplit {

namespace {

constexpr std::int32_t kLastPlaylistFormat = 3;

int follow_representation(StreamJob& job, std::FILE* manifest, double& live_remaining) {
    DashJob dash;
    dash.url = job.url;
    dash.name = job.name;
    dash.output_dir = job.output_dir;
    dash.period_index = job.period_index;
    dash.representation_id = job.representation_id;
    dash.durations = job.sync_list;
    dash.keypairs = g_keypairs;
    dash.loglist = job.loglist;
    dash.live_remaining = &live_remaining;
    dash.reload_count = job.representation_flag.get();
    dash.previous_publish_time = &job.dash_scratch;
    dash.outputs = &job.outputs.registry;
    return dash_thread(manifest, nullptr, dash, job.status);
}

int follow_stream(StreamJob& job, std::FILE* playlist, double& live_remaining) {
    if (job.format > kLastPlaylistFormat) {
        return follow_representation(job, playlist, live_remaining);
    }
    return thread(playlist, job.url, job.name, job.output_dir, job.manifest_context.get(),
                  job.status, job.sync_list, g_keypairs, &live_remaining, job.loglist, job.outputs);
}

// One reading of the playlist; its result is that of `thread` and `dash_thread`.
int follow(StreamJob& job, double& live_remaining) {
    ManifestFile file;
    if (const Status opened = file.open(job.url, "playlist_manifest", job.loglist);
        opened != Status::kOk) {
        job.status |= opened | Status::kFailed;
        send_end_record(job.sync_list);
        return 0;
    }
    job.status |= Logging_err_type_check(job.loglist, 3, {}, job.url);
    const int result = follow_stream(job, file.stream(), live_remaining);
    job.status |= file.remove_copy(job.loglist);
    return result;
}

}  // namespace

const std::string& stream_label(const StreamJob& job) {
    const bool is_representation = job.format > kLastPlaylistFormat && job.representation_id;
    return is_representation ? *job.representation_id : job.url;
}

std::uint32_t ThreadFunc(void* argument) {
    auto& job = *static_cast<StreamJob*>(argument);
    const StreamLabel label(stream_label(job));
    double live_remaining = g_tested_duration_in_live;
    while (follow(job, live_remaining) == 1) {
    }
    return 0;
}

}  // namespace mediasplit
