#include "src/fmp4demuxer/writers/prisma_rules.h"

#include "src/mp4demuxer/mp4demuxer.h"

namespace mediasplit {

float container_frame_rate(const Mp4Stream& stream) {
    const std::uint32_t duration =
        stream.has_stts ? get_sample_duration(stream, 0) : stream.default_sample_duration;
    if (duration == 0) {
        return 0;
    }
    return static_cast<float>(stream.time_scale) / static_cast<float>(duration);
}

}  // namespace mediasplit
