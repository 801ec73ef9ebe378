#include "src/dash_thread/segment_file.h"

#include <utility>

#include "src/commonfileio/file_descriptor.h"
#include "src/dash_thread/source_name.h"
#include "src/file_util/path_names.h"
#include "src/log/logging.h"
#include "src/util/address.h"
#include "src/util/fetcher.h"

namespace mediasplit {
namespace {

constexpr double kMillisecondsPerSecond = 1000.0;
constexpr double kDefaultPause = 2.0;  // seconds

// Seconds between two tries.
double retry_pause(const DashPlayer& player) {
    return player.min_buffer_time_ms == kNoTime
               ? kDefaultPause
               : player.min_buffer_time_ms * 0.5 / kMillisecondsPerSecond;
}

// The manifest tells how long the media is, not how many segments there are: that they reach to its
// end is a rule, so that a missing one is no failure.
bool is_counted_by_duration(const DashPlayer& player) {
    return player.segment_type == SegmentElementType::kTemplate && player.template_duration != 0;
}

Status report_missing(const DashPlayer& player, const std::string& url, Loglist* loglist) {
    if (!is_counted_by_duration(player)) {
        return Logging_err_type_check(loglist, 4063, {}, url);
    }
    double played = player.played_ms / kMillisecondsPerSecond;
    if (player.minimum_update_period_ms != kNoTime && player.reload_count != nullptr) {
        played += *player.reload_count * player.minimum_update_period_ms / kMillisecondsPerSecond;
    }
    const std::string id = player.representation_id.value_or("");
    return Logging_err_type_check(loglist, 2009, LogContext{0, id}, id, played);
}

SegmentFileResult open_segment(DashPlayer& player, const std::string& url, Status& status,
                               InputFile& file, Loglist* loglist) {
    FileDescriptor opened;
    std::optional<std::string> copy;
    if (!is_url(url)) {
        opened = open_for_reading(url);
    } else {
        copy = createUniqueFileName("segment");
        if (fetch_segment(url, *copy, retry_pause(player), loglist)) {
            opened = open_for_reading(*copy);
        }
    }
    if (is_counted_by_duration(player)) {
        note_evaluated(2009);
    }
    if (!opened) {
        status |= report_missing(player, url, loglist);
        return SegmentFileResult::kStop;
    }
    file = InputFile{};
    if (ReadFileExt(std::move(opened), copy, nullptr, 0, url, file) != Status::kOk) {
        status |= Logging_err_type_check(loglist, 3004, {}, kDashThreadSourceName, 117);
        (void)CloseFile(file);
        return SegmentFileResult::kStop;
    }
    return SegmentFileResult::kReady;
}

}  // namespace

SegmentFileResult get_segment_file(DashPlayer& player, const std::uint64_t* target, Status& status,
                                   InputFile& file, std::optional<std::string>& range,
                                   Loglist* loglist) {
    (void)CloseFile(file);
    std::string url;
    const Status addressed = get_segment_url(player, url, &range, target, loglist);
    if (addressed != Status::kOk) {
        status |= addressed;
        return SegmentFileResult::kStop;
    }
    if (url.empty()) {
        return SegmentFileResult::kNoMore;
    }
    return open_segment(player, url, status, file, loglist);
}

}  // namespace mediasplit
