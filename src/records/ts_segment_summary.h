// What one transport stream segment held, for comparisons from segment to segment.
#pragma once

#include <array>
#include <cstdint>

namespace mediasplit {

inline constexpr std::size_t kMaxTsAudioStreams = 10;

// All times in ticks of 90 kHz.
struct TsAudioSummary {
    std::uint32_t stream_type = 0;  // value of the PMT
    std::int64_t first_pts = 0;     // smallest PTS, -1 if none was seen
    std::int64_t end_pts = 0;       // end of the last PES packet, -1 if no PTS was seen
};

struct TsSegmentSummary {
    std::uint32_t count = 0;  // audio streams, in the order of discovery
    std::array<TsAudioSummary, kMaxTsAudioStreams> audio{};
    std::int64_t first_video_pts = 0;  // smallest video PTS; a caller that compares sets -1 first
    std::int64_t video_end_pts = 0;    // largest video PTS plus the mean distance of the PTS
};

}  // namespace mediasplit
