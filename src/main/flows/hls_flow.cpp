#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "src/file_util/path_names.h"
#include "src/hls/playlist_reader.h"
#include "src/log/logging.h"
#include "src/log/rule_families.h"
#include "src/main/checks/master_playlist.h"
#include "src/main/flows/flows.h"
#include "src/main/workers/manifest_file.h"
#include "src/main/workers/stream_workers.h"
#include "src/records/run_options.h"
#include "src/video/codec_text.h"

namespace mediasplit {

namespace {

constexpr std::size_t kLongestInput = 1024;
constexpr std::int32_t kThreadsLine = 1354;  // told by 3005

// --- Reading the input ---

struct ReadResult {
    Status status = Status::kOk;
    bool goes_on = false;
};

ReadResult read_input(PlaylistRecord& playlist, Loglist* loglist) {
    ManifestFile file;
    if (const Status opened = file.open(*g_input, "master_manifest", loglist);
        opened != Status::kOk) {
        return {opened, false};
    }
    const Status parsed = parse_file(file.stream(), g_input, playlist, nullptr);
    return {parsed | file.remove_copy(loglist), parsed != Status::kFailed};
}

// --- Jobs ---

// A job for the playlist at `uri`; none if the address gives no name for its files.
std::unique_ptr<StreamJob> make_job(const std::optional<std::string>& uri) {
    auto job = std::make_unique<StreamJob>();
    if (splitfilename(uri, job->name) != 0) {
        return nullptr;
    }
    job->url = *uri;
    job->output_dir = g_output_dir;
    return job;
}

std::unique_ptr<StreamJob> make_stream_job(const std::optional<std::string>& uri,
                                           const PlaylistRecord& playlist) {
    std::unique_ptr<StreamJob> job = make_job(uri);
    if (job != nullptr) {
        job->manifest_context = std::make_unique<ManifestContext>();
        const char* const version = playlist.master_version ? playlist.master_version->c_str() : "";
        constexpr long kMostVersion = 0x7FFFFFFF;
        job->manifest_context->hls_version = static_cast<std::int32_t>(
            std::clamp(std::strtol(version, nullptr, 10), -kMostVersion, kMostVersion));
    }
    return job;
}

void start_rendition(const MediaRendition& rendition, const PlaylistRecord& playlist,
                     StreamWorkers& workers) {
    std::unique_ptr<StreamJob> job = make_stream_job(rendition.uri, playlist);
    if (job == nullptr) {
        return;
    }
    ManifestContext& context = *job->manifest_context;
    context.codecs = rendition.codecs;
    context.channels_text = rendition.channels;
    context.group_id = rendition.group_id;
    context.language = rendition.language;
    context.rendition_index = rendition.index;
    context.stream_index = rendition.stream_index;
    if (rendition.codecs && rendition.codecs->find("ac-4") != std::string::npos) {
        workers.join_group(*job, rendition.group, *rendition.uri);
    }
    workers.start(std::move(job));
}

// What streams and I-frame streams share.
void copy_stream_fields(const VariantStream& stream, ManifestContext& context) {
    context.supplemental_codecs = stream.supplemental_codecs;
    context.video_range = stream.video_range;
    context.req_video_layout = stream.req_video_layout;
    context.audio_only = stream.audio_only;
    context.variant_codecs = stream.variant_codecs;
    context.duplicate_codecs_1 = stream.duplicate_codecs_1;
    context.duplicate_codecs_2 = stream.duplicate_codecs_2;
    context.bandwidth = stream.bandwidth;
    context.stream_index = stream.index;
    context.first_duplicate_index = stream.first_duplicate_index;
    context.second_duplicate_index = stream.second_duplicate_index;
    context.duplicate_index_text = stream.duplicate_index_text;
}

Status start_variant(const VariantStream& stream, const PlaylistRecord& playlist,
                     StreamWorkers& workers, Loglist* loglist) {
    std::unique_ptr<StreamJob> job = make_stream_job(stream.uri, playlist);
    Status status = Status::kOk;
    if (job == nullptr) {
        return status;
    }
    ManifestContext& context = *job->manifest_context;
    copy_stream_fields(stream, context);
    job->format = static_cast<std::int32_t>(g_file_format);
    if (stream.has_renditions == 0) {
        context.codecs = stream.codecs;
    } else {
        // The renditions bring the audio of the stream.
        context.has_renditions = 1;
        const bool has_video = splitcodec_video(stream.codecs, context.codecs, status, loglist);
        if (has_video && (playlist.has_ac4 & 1) != 0) {
            workers.join_group(*job, stream.group, *stream.uri);
        }
    }
    workers.start(std::move(job));
    return status;
}

void start_iframes(const VariantStream& stream, const PlaylistRecord& playlist,
                   StreamWorkers& workers) {
    std::unique_ptr<StreamJob> job = make_stream_job(stream.uri, playlist);
    if (job == nullptr) {
        return;
    }
    ManifestContext& context = *job->manifest_context;
    copy_stream_fields(stream, context);
    job->format = static_cast<std::int32_t>(g_file_format);
    context.codecs = stream.codecs;
    context.has_renditions = 1;
    context.is_iframe_stream = 1;
    workers.start(std::move(job));
}

// --- The kinds of playlists ---

bool is_followed(const VariantStream& stream) {
    return stream.enabled != 0 && stream.merged == 0;
}

std::vector<std::int32_t> group_capacities(const PlaylistRecord& playlist,
                                           std::uint32_t group_count) {
    std::vector<std::int32_t> capacities(group_count);
    const auto count = [&capacities](std::uint32_t group) {
        if (group > 0 && group <= capacities.size()) {
            ++capacities[group - 1];
        }
    };
    for (const MediaRendition& rendition : playlist.media) {
        count(rendition.group);
    }
    for (const VariantStream& stream : playlist.streams) {
        count(stream.group);
    }
    return capacities;
}

Status follow_master(PlaylistRecord& playlist, Loglist* loglist) {
    std::uint32_t group_count = 0;
    Status status = master_manifest_validation(playlist, loglist, group_count);
    const bool with_iframes = has_checkpoint_set(loglist, kPrismaOverTheTopRules);
    const auto is_enabled = [](const auto& record) { return record.enabled != 0; };

    WorkersSetup setup;
    setup.expected = static_cast<std::size_t>(
        std::count_if(playlist.media.begin(), playlist.media.end(), is_enabled) +
        std::count_if(playlist.streams.begin(), playlist.streams.end(), is_followed) +
        (with_iframes ? std::count_if(playlist.iframes.begin(), playlist.iframes.end(), is_enabled)
                      : 0));
    setup.group_capacities = group_capacities(playlist, group_count);
    setup.source_line = kThreadsLine;
    setup.loglist = loglist;
    StreamWorkers workers(setup);
    for (const MediaRendition& rendition : playlist.media) {
        if (is_enabled(rendition)) {
            start_rendition(rendition, playlist, workers);
        }
    }
    for (const VariantStream& stream : playlist.streams) {
        if (is_followed(stream)) {
            status |= start_variant(stream, playlist, workers, loglist);
        }
    }
    for (const VariantStream& stream : playlist.iframes) {
        if (with_iframes && is_enabled(stream)) {
            start_iframes(stream, playlist, workers);
        }
    }
    return status | workers.finish();
}

// A media playlist; its worker reads it once more.
Status follow_media(Loglist* loglist) {
    if (g_input->size() > kLongestInput) {
        return Status::kFailed;
    }
    std::unique_ptr<StreamJob> job = make_job(g_input);
    if (job == nullptr) {
        return Status::kFailed;
    }
    WorkersSetup setup;
    setup.expected = 1;
    setup.source_line = kThreadsLine;
    setup.loglist = loglist;
    StreamWorkers workers(setup);
    workers.start(std::move(job));
    return workers.finish();
}

}  // namespace

Status run_hls(Loglist* loglist) {
    PlaylistRecord playlist;
    const ReadResult read = read_input(playlist, loglist);
    if (!read.goes_on) {
        return read.status;
    }
    if (playlist.is_master == 0) {
        destroy(playlist);
        return follow_media(loglist);
    }
    const Status status = follow_master(playlist, loglist);
    destroy(playlist);
    return status;
}

}  // namespace mediasplit
