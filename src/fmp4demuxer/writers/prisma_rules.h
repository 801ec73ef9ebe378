// Rules on the bitstream of an enhancement stream, applied unit by unit while samples are written.
#pragma once

#include <memory>

#include "src/fmp4demuxer/writers/nal_units.h"
#include "src/log/status.h"
#include "src/mp4demuxer/records.h"
#include "src/video/parameter_sets.h"

namespace mediasplit {

// Looks at an H.264 unit. `from_unit` holds the sample's bytes from the unit on.
[[nodiscard]] Status inspect_avc_unit(Mp4Demuxer& demuxer, Mp4Stream& stream, ByteSpan unit,
                                      ByteSpan from_unit);

// Looks at an H.265 unit other than a parameter set.
[[nodiscard]] Status inspect_hevc_unit(Mp4Demuxer& demuxer, Mp4Stream& stream, ByteSpan unit,
                                       ByteSpan from_unit);
// Looks at an in-band VPS and remembers it for the sample's SPS.
[[nodiscard]] Status inspect_hevc_vps(Mp4Demuxer& demuxer, Mp4Stream& stream, ByteSpan from_unit,
                                      std::unique_ptr<HevcVps>& vps);
// Looks at an in-band SPS. `vps` is the sample's own VPS, or null.
[[nodiscard]] Status inspect_hevc_sps(Mp4Demuxer& demuxer, Mp4Stream& stream, ByteSpan from_unit,
                                      const HevcVps* vps);

}  // namespace mediasplit
