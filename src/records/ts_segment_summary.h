// Timing of one transport stream file or segment, in ticks of 90 kHz.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace mediasplit {

inline constexpr std::size_t kTsAudioSummaries = 10;
inline constexpr std::int64_t kNoVideoPts = -1;

struct TsAudioSummary {
    std::uint32_t stream_type = 0;  // of the program map table
    std::int64_t first_pts = 0;     // smallest PTS seen
    std::int64_t end_pts = 0;
};

struct TsSegmentSummary {
    std::uint32_t count = 0;  // audio streams found, at most as many as `audio` holds
    std::array<TsAudioSummary, kTsAudioSummaries> audio{};
    std::int64_t first_video_pts = kNoVideoPts;  // smallest PTS seen
    std::int64_t video_end_pts = 0;
};

}  // namespace mediasplit
