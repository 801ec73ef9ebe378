#include "src/dash_thread/walk.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

#include "src/dash_thread/media_segment.h"
#include "src/dash_thread/segment_file.h"
#include "src/dash_thread/start_time.h"
#include "src/log/logging.h"
#include "src/util/player_clock.h"
#include "src/util/segments.h"

namespace mediasplit {
namespace {

constexpr double kMillisecondsPerSecond = 1000.0;
constexpr double kLeastRound = 100.0;          // milliseconds
constexpr double kAlmostNothing = 0.00000001;  // seconds
constexpr double kLongestWait = 2147483647.0;  // milliseconds
constexpr std::uint64_t kMostRepeats = 1000;   // of one address, one after the other

// Ends a walk that nothing else ends: one that hands out the same address again and again, or
// numbered segments without any duration, which never fill the time that is to be played. A segment
// of a few bytes may be told for a time without practical end, so its repeats are counted, too.
class EndlessWalkGuard {
public:
    // Tells of a media segment just played. True if the walk must end.
    bool played(const DashPlayer& player, const std::string& address, double played_before) {
        if (player.segment_type != SegmentElementType::kTemplate) {
            return false;
        }
        const bool is_repeated = address == previous_;
        previous_ = address;
        repeats_ = is_repeated ? repeats_ + 1 : 0;
        if (repeats_ == kMostRepeats) {
            note_remark("A segment that the manifest names again and again was left.");
            return true;
        }
        if (ends_by_itself(player)) {
            return false;
        }
        const bool adds_time = player.played_ms > played_before;
        const std::optional<double> limit = limit_of(player);
        if (is_repeated && !(adds_time && limit)) {
            return true;
        }
        if (adds_time || player.template_duration == 0) {
            return false;
        }
        const double scale =
            player.template_timescale == 0 ? 1 : static_cast<double>(player.template_timescale);
        told_ms_ += kMillisecondsPerSecond * static_cast<double>(player.template_duration) / scale;
        return ++empty_segments_ > 1 && (!limit || told_ms_ + player.played_ms >= *limit);
    }

private:
    // A timeline has an end, unless it is one that was cut.
    static bool ends_by_itself(const DashPlayer& player) {
        return player.template_duration == 0 && player.has_timeline &&
               player.timeline.size() < kMostTimelineEntries;
    }
    // How much is played at most, in milliseconds; none if there is no limit.
    static std::optional<double> limit_of(const DashPlayer& player) {
        if (is_live(player) && player.live_remaining != nullptr) {
            return kMillisecondsPerSecond * *player.live_remaining;
        }
        return player.period_duration_ms == kNoTime ? std::nullopt
                                                    : std::optional(player.period_duration_ms);
    }

    std::string previous_;
    std::uint64_t repeats_ = 0;
    std::uint64_t empty_segments_ = 0;
    double told_ms_ = 0;  // of segments without samples, by the manifest
};

std::int32_t remaining_wait(const DashPlayer& player) {
    const auto passed = static_cast<double>(player_clock().now() - player.started_at);
    const double wait = player.played_ms - passed * kMillisecondsPerSecond;
    return static_cast<std::int32_t>(std::clamp(wait, -kLongestWait, kLongestWait));
}

// Waits until the played part of a live presentation is over. True if its manifest is to be loaded
// again, false if all that was wanted is done.
bool wait_for_update(DashPlayer& player, double step, List* durations, Loglist* loglist) {
    std::int32_t wait = remaining_wait(player);
    if (player.reload_count != nullptr) {
        ++*player.reload_count;
    }
    if (player.previous_publish_time != nullptr && player.publishTime &&
        !player.publishTime->empty()) {
        *player.previous_publish_time = *player.publishTime;
    }
    const std::uint32_t pause = wait < 1 ? 0 : static_cast<std::uint32_t>(wait) / 1000;
    wait = std::max(wait, 1);
    // An info message; it has no result.
    (void)Logging_err_type_check(loglist, 1023, {}, player.representation_id, wait);
    player_clock().sleep(pause);
    double* const remaining = player.live_remaining;
    if (remaining != nullptr && *remaining > kAlmostNothing) {
        // A round that played nothing counts, too: a presentation that stands still must end.
        *remaining -= std::max(step, kLeastRound) / kMillisecondsPerSecond;
        if (*remaining >= -kAlmostNothing) {
            bubbleSegment(durations, player.last_duration);
            return true;
        }
        *remaining = 0;
    }
    release_last_segment_duration(player, durations);
    return false;
}

}  // namespace

bool play_segments(DashPlayer& player, Mp4Demuxer& demuxer, List* durations, Status& status,
                   Loglist* loglist) {
    EndlessWalkGuard guard;
    InputFile file;
    std::optional<std::string> range;
    while (true) {
        std::optional<std::uint64_t> target;
        if (player.next_segment == 1) {
            // Deliberate: seconds and milliseconds are added as they stand.
            target = get_timeoffset(player, loglist) + player.period_start_ms;
        }
        const SegmentFileResult brought =
            get_segment_file(player, target ? &*target : nullptr, status, file, range, loglist);
        if (brought == SegmentFileResult::kNoMore && is_live(player)) {
            return wait_for_update(player, player.played_ms, durations, loglist);
        }
        if (brought != SegmentFileResult::kReady) {
            break;
        }
        const bool is_media = player.next_segment != 1;
        const std::string address = file.name.value_or("");
        const double played_before = player.played_ms;
        if (!play_cur_segment(player, file, range, demuxer, durations, status, loglist) ||
            (is_media && guard.played(player, address, played_before))) {
            break;
        }
        if (is_live(player) && player.minimum_update_period_ms != kNoTime &&
            player.played_ms >= player.minimum_update_period_ms) {
            return wait_for_update(player, player.minimum_update_period_ms, durations, loglist);
        }
    }
    release_last_segment_duration(player, durations);
    return false;
}

}  // namespace mediasplit
