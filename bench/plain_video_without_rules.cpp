// Takes the place of the rules on enhancement streams where a benchmark leaves them out. Whoever
// links this gets none of the objects that hold the rules.
#include "src/fmp4demuxer/writers/prisma_rules.h"
#include "src/fmp4demuxer/writers/sample_writers.h"

namespace mediasplit {

Status inspect_avc_unit(Mp4Demuxer& /*demuxer*/, Mp4Stream& /*stream*/, ByteSpan /*unit*/,
                        ByteSpan /*from_unit*/) {
    return Status::kOk;
}

Status inspect_hevc_unit(Mp4Demuxer& /*demuxer*/, Mp4Stream& /*stream*/, ByteSpan /*unit*/,
                         ByteSpan /*from_unit*/) {
    return Status::kOk;
}

Status inspect_hevc_vps(Mp4Demuxer& /*demuxer*/, Mp4Stream& /*stream*/, ByteSpan /*from_unit*/,
                        std::unique_ptr<HevcVps>& /*vps*/) {
    return Status::kOk;
}

Status inspect_hevc_sps(Mp4Demuxer& /*demuxer*/, Mp4Stream& /*stream*/, ByteSpan /*from_unit*/,
                        const HevcVps* /*vps*/) {
    return Status::kOk;
}

Status av1Sample(Mp4Demuxer& /*demuxer*/, std::uint32_t /*stream_index*/, ByteSpan /*sample*/) {
    return Status::kOk;
}

Status end_av1_stream(Mp4Demuxer& /*demuxer*/, std::uint32_t /*stream_index*/) {
    return Status::kOk;
}

}  // namespace mediasplit
