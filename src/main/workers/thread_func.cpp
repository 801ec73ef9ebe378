#include "src/main/workers/thread_func.h"

#include <cstdio>
#include <memory>

#include "src/dash_thread/dash_thread.h"
#include "src/file_util/path_names.h"
#include "src/log/logging.h"
#include "src/main/workers/stream_job.h"
#include "src/records/run_options.h"
#include "src/util/address.h"
#include "src/util/fetched_files.h"
#include "src/util/fetcher.h"

namespace mediasplit {

namespace {

constexpr std::int32_t kLastPlaylistFormat = 3;

struct CloseStream {
    void operator()(std::FILE* stream) const { static_cast<void>(std::fclose(stream)); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

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

void end_without_playlist(StreamJob& job, Status reported) {
    job.status |= reported | Status::kFailed;
    send_end_record(job.sync_list);
}

int follow_local(StreamJob& job, double& live_remaining) {
    const Stream playlist(std::fopen(job.url.c_str(), "r"));
    if (playlist == nullptr) {
        end_without_playlist(job, Logging_err_type_check(job.loglist, 4022, {}, job.url));
        return 0;
    }
    job.status |= Logging_err_type_check(job.loglist, 3, {}, job.url);
    return follow_stream(job, playlist.get(), live_remaining);
}

int follow_address(StreamJob& job, double& live_remaining) {
    const std::string copy = createUniqueFileName("playlist_manifest");
    if (url2file(job.url, copy, fetch_limits().manifest_bytes) != 0) {
        end_without_playlist(job, Logging_err_type_check(job.loglist, 4021, {}, job.url));
        return 0;
    }
    Stream playlist(std::fopen(copy.c_str(), "r"));
    job.status |= Logging_err_type_check(job.loglist, 3, {}, job.url);
    const int result = follow_stream(job, playlist.get(), live_remaining);
    playlist.reset();
    if (remove_fetched_file(copy) != 0) {
        job.status |= Logging_err_type_check(job.loglist, 11, {}, copy, job.url);
    }
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
    const auto follow = is_url(job.url) ? follow_address : follow_local;
    while (follow(job, live_remaining) == 1) {
    }
    return 0;
}

}  // namespace mediasplit
