#include "src/main/workers/timing_thread.h"

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "src/log/logging.h"
#include "src/main/workers/sync_table.h"
#include "src/records/run_options.h"
#include "src/records/segment_timing.h"
#include "src/util/segments.h"

namespace mediasplit {

namespace {

constexpr double kTolerance = 0.0001;  // seconds
constexpr double kNoTiming = -1.0;
constexpr std::uint32_t kPause = 100;  // milliseconds

struct TimedStream {
    std::string url;
    List* list = nullptr;
    bool finished = false;
    bool has_current = false;
    SegmentTiming current;
    SegmentTiming previous;
};
using TimedGroup = std::vector<TimedStream>;

std::vector<TimedGroup> timed_groups(const SyncTable& table) {
    std::vector<TimedGroup> groups(table.groups.size());
    for (std::size_t g = 0; g < groups.size(); ++g) {
        const SyncGroup& source = table.groups[g];
        groups[g].resize(source.lists.size());
        for (std::size_t i = 0; i < groups[g].size(); ++i) {
            groups[g][i].url = source.urls[i];
            groups[g][i].list = source.lists[i].get();
            groups[g][i].finished = source.lists[i] == nullptr;
        }
    }
    return groups;
}

// Takes the next record of the stream, if there is one. A last record is compared with nothing.
void take_record(TimedStream& stream) {
    if (stream.finished || stream.has_current) {
        return;
    }
    const auto record = take_segment_timing(stream.list);
    if (record == nullptr) {
        return;
    }
    stream.current = *record;
    stream.has_current = true;
    stream.finished = record->end == 1 || record->duration == kNoTiming;
}

// All streams of the group that still run have a record.
bool is_complete(const TimedGroup& group) {
    bool any = false;
    for (const TimedStream& stream : group) {
        if (!stream.finished && !stream.has_current) {
            return false;
        }
        any = any || !stream.finished;
    }
    return any;
}

Status compare_streams(const TimedGroup& group, bool is_manifest, Loglist* loglist) {
    Status status = Status::kOk;
    for (std::size_t i = 0; i < group.size(); ++i) {
        for (std::size_t j = i + 1; j < group.size(); ++j) {
            const TimedStream& a = group[i];
            const TimedStream& b = group[j];
            if (a.finished || b.finished) {
                continue;
            }
            const bool equal = std::fabs(a.current.duration - b.current.duration) < kTolerance;
            status |= is_manifest ? check(equal, loglist, 4110, {}, a.url, b.url)
                                  : check(equal, loglist, 4109, {}, a.url, b.url);
        }
    }
    return status;
}

// The record against the one before, which it then replaces.
Status advance(TimedStream& stream, bool is_manifest, Loglist* loglist) {
    Status status = Status::kOk;
    const SegmentTiming& now = stream.current;
    const double before = stream.previous.duration;
    if (std::fabs(before) >= kTolerance) {
        const double most = static_cast<double>(now.sample_duration) + kTolerance;
        const bool constant = std::fabs(before - now.duration) < most;
        status = is_manifest ? check(constant, loglist, 2051, {}, stream.url)
                             : check(constant, loglist, 2050, {}, stream.url);
    }
    stream.previous = now;
    stream.has_current = false;
    return status;
}

bool all_finished(const std::vector<TimedGroup>& groups) {
    for (const TimedGroup& group : groups) {
        for (const TimedStream& stream : group) {
            if (!stream.finished) {
                return false;
            }
        }
    }
    return true;
}

// One record of each stream that runs, once all have come. False if some haven't.
bool handle_group(TimedGroup& group, bool is_manifest, Loglist* loglist, Status& status) {
    for (TimedStream& stream : group) {
        take_record(stream);
    }
    if (!is_complete(group)) {
        return false;
    }
    status |= compare_streams(group, is_manifest, loglist);
    for (TimedStream& stream : group) {
        if (!stream.finished) {
            status |= advance(stream, is_manifest, loglist);
        }
    }
    return true;
}

}  // namespace

std::uint32_t IFrameThreadFunc(void* argument) {
    auto& table = *static_cast<SyncTable*>(argument);
    std::unique_ptr<Loglist> loglist =
        init_loglist(static_cast<std::uint32_t>(g_check_point_num), g_checkpoint_list.data());
    const bool is_manifest = g_file_format == FormatId::kDash;
    std::vector<TimedGroup> groups = timed_groups(table);
    Status status = Status::kOk;
    for (;;) {
        bool moved = false;
        for (TimedGroup& group : groups) {
            moved = handle_group(group, is_manifest, loglist.get(), status) || moved;
        }
        if (all_finished(groups)) {
            break;
        }
        if (!moved) {
            osal_thread_sleep(kPause);
        }
    }
    destroy_loglist(loglist);
    table.status |= status;
    return 0;
}

}  // namespace mediasplit
