#include "src/tsTableParse/segment_timing.h"

#include <algorithm>

#include "src/log/logging.h"
#include "src/tsTableParse/ts_tables.h"

namespace mediasplit {

namespace {

constexpr std::int64_t kLargestOffset = 2879;

Status check_stream(const TsAudioSummary& audio, const TsAudioSummary& before,
                    const TsSegmentSummary& current, const TsSegmentSummary& previous,
                    Loglist* loglist) {
    const std::int64_t video = current.first_video_pts;
    if (const Status status =
            check(audio.first_pts >= video, loglist, 4106, {}, audio.first_pts, video);
        status != Status::kOk) {
        return status;
    }
    const std::int64_t offset = audio.first_pts - video;
    Status status =
        check(offset <= kLargestOffset, loglist, 4107, {}, audio.first_pts, video, offset);
    if (before.stream_type == audio.stream_type) {
        // Deliberate: 32-bit arithmetic, and only a growing offset counts.
        const auto drift = static_cast<std::int32_t>(
            static_cast<std::uint32_t>(offset - before.end_pts + previous.video_end_pts));
        status |= check(drift <= 1, loglist, 4108, {});
    }
    return status;
}

}  // namespace

Status check_segment_timing(const TsSegmentSummary& previous, const TsSegmentSummary& current,
                            Loglist* loglist) {
    Status status = Status::kOk;
    if (previous.first_video_pts == kNoVideoPts || current.first_video_pts == kNoVideoPts) {
        return status;
    }
    const std::size_t count = std::min<std::size_t>(current.count, current.audio.size());
    for (std::size_t i = 0; i < count; ++i) {
        if (current.audio[i].stream_type == kTypeEc3) {
            status |= check_stream(current.audio[i], previous.audio[i], current, previous, loglist);
        }
    }
    return status;
}

}  // namespace mediasplit
