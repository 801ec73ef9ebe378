#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "src/dash_reader/dash_reader.h"
#include "src/dash_reader/inherited.h"
#include "src/file_util/path_names.h"
#include "src/log/logging.h"
#include "src/log/rule_families.h"
#include "src/main/checks/dash_manifest.h"
#include "src/main/flows/flows.h"
#include "src/main/workers/manifest_file.h"
#include "src/main/workers/stream_workers.h"
#include "src/records/run_options.h"

namespace mediasplit {

namespace {

constexpr std::int32_t kThreadsLine = 2217;      // told by 3005
constexpr std::uint32_t kWorkerStack = 0x40000;  // bytes
constexpr std::uint32_t kTimingGroup = 1;

// --- Reading the input ---

struct ReadResult {
    Status status = Status::kOk;
    std::unique_ptr<DashInfo> info;  // none if the run ends here
};

ReadResult read_manifest(std::FILE* file, Loglist* loglist) {
    ReadResult result;
    EzxmlPtr root;
    result.status = parse_dash_data(nullptr, file, g_input, &root, loglist);
    if (result.status == Status::kOk) {
        result.status =
            get_dash_info(&result.info, root.get(), g_input, kAllPeriods, nullptr, loglist);
    }
    if (result.status != Status::kOk) {
        result.status |= Status::kFailed;
        desctroy_dash_info(result.info);
    }
    return result;
}

ReadResult read_input(Loglist* loglist) {
    ManifestFile file;
    if (const Status opened = file.open(*g_input, "master_manifest", loglist);
        opened != Status::kOk) {
        return {opened, nullptr};
    }
    ReadResult result = read_manifest(file.stream(), loglist);
    // The copy of a manifest that can't be used stays behind.
    if (result.info != nullptr) {
        result.status |= file.remove_copy(loglist);
    }
    return result;
}

// --- Representations ---

bool holds(const DashPeriodInfo& period, const DashRepresentationInfo& representation,
           std::string_view attribute, std::string_view text) {
    const auto value = get_dash_rep_attr_str(&representation,
                                             adaptation_set_of(period, representation), attribute);
    return value && value->find(text) != std::string_view::npos;
}

bool is_ac4(const DashPeriodInfo& period, const DashRepresentationInfo& representation) {
    return holds(period, representation, "codecs", "ac-4");
}

bool is_video(const DashPeriodInfo& period, const DashRepresentationInfo& representation) {
    return holds(period, representation, "mimeType", "video/mp4") ||
           holds(period, representation, "contentType", "video");
}

struct PeriodSummary {
    std::size_t played = 0;
    std::int32_t timed = 0;  // Representations of AC-4 or video
    bool has_ac4 = false;
    bool has_video = false;
};

PeriodSummary summarize(const DashPeriodInfo& period) {
    PeriodSummary summary;
    for (const DashRepresentationInfo& representation : period.representations) {
        const bool ac4 = is_ac4(period, representation);
        const bool video = is_video(period, representation);
        summary.played += representation.duplicate_id == 0 ? 1 : 0;
        summary.timed += ac4 || video ? 1 : 0;
        summary.has_ac4 = summary.has_ac4 || ac4;
        summary.has_video = summary.has_video || video;
    }
    return summary;
}

// A job for the Representation; none if the input gives no name for its files.
std::unique_ptr<StreamJob> make_job(const DashInfo& info, const DashPeriodInfo& period,
                                    const DashRepresentationInfo& representation) {
    auto job = std::make_unique<StreamJob>();
    if (splitfilename(g_input, job->name) != 0) {
        return nullptr;
    }
    job->url = *g_input;
    job->output_dir = g_output_dir;
    job->format = static_cast<std::int32_t>(g_file_format);
    job->period_index = period.index;
    job->representation_id = representation.id;
    job->manifest_text = info.url;
    const auto key_id =
        get_dash_rep_attr_str(&representation, adaptation_set_of(period, representation), "kid");
    if (key_id) {
        job->key_id.emplace(*key_id);
    }
    job->representation_flag = std::make_unique<std::int32_t>(0);
    return job;
}

Status play_period(const DashInfo& info, const DashPeriodInfo& period, Loglist* loglist) {
    const PeriodSummary summary = summarize(period);
    WorkersSetup setup;
    setup.expected = summary.played;
    setup.group_capacities = {summary.timed};
    setup.stack_size = kWorkerStack;
    setup.source_line = kThreadsLine;
    setup.loglist = loglist;
    StreamWorkers workers(setup);
    Status status = Status::kOk;
    for (const DashRepresentationInfo& representation : period.representations) {
        if (representation.duplicate_id != 0) {
            continue;
        }
        std::unique_ptr<StreamJob> job = make_job(info, period, representation);
        if (job == nullptr) {
            status |= Status::kFailed;
            continue;
        }
        if (summary.has_ac4 && summary.has_video &&
            (is_ac4(period, representation) || is_video(period, representation))) {
            workers.join_group(*job, kTimingGroup, representation.id.value_or(""));
        }
        workers.start(std::move(job));
    }
    return status | workers.finish();
}

}  // namespace

Status run_dash(Loglist* loglist) {
    const ReadResult read = read_input(loglist);
    if (read.info == nullptr) {
        return read.status;
    }
    const DashInfo& info = *read.info;
    Status status = read.status | dash_manifest_validation(&info, loglist);
    for (std::size_t i = 0; i < info.periods.size(); ++i) {
        if (has_checkpoint_set(loglist, kAc4BroadcastRules)) {
            status |=
                broadcast_dash_manifest_validation(&info, static_cast<std::int32_t>(i), loglist);
        }
        status |= play_period(info, info.periods[i], loglist);
    }
    return status;
}

}  // namespace mediasplit
