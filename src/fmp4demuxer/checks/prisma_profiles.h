// Rules on the sample entry, the configuration, the parameter sets and the manifest of an
// enhancement stream, by its profile.
#pragma once

#include <cstdint>

#include "src/log/status.h"
#include "src/mp4demuxer/records.h"

namespace mediasplit {

// Each takes a track with a configuration of the enhancement format and returns the OR of all
// reports, or a failure if there is no such track. Rules on the manifest are applied with
// checkpoint family 8 only.
[[nodiscard]] Status prsm_profile_4_sampleentry_validation(const Mp4Demuxer& demuxer,
                                                           std::uint32_t stream_index);
[[nodiscard]] Status prsm_profile_5_sampleentry_validation(const Mp4Demuxer& demuxer,
                                                           std::uint32_t stream_index);
[[nodiscard]] Status prsm_profile_8_sampleentry_validation(const Mp4Demuxer& demuxer,
                                                           std::uint32_t stream_index);
[[nodiscard]] Status prsm_profile_9_sampleentry_validation(const Mp4Demuxer& demuxer,
                                                           std::uint32_t stream_index);
[[nodiscard]] Status prsm_profile_10_sampleentry_validation(const Mp4Demuxer& demuxer,
                                                            std::uint32_t stream_index);
[[nodiscard]] Status prsm_profile_20_sampleentry_validation(const Mp4Demuxer& demuxer,
                                                            std::uint32_t stream_index);
[[nodiscard]] Status prsm_profile_32_sampleentry_validation(const Mp4Demuxer& demuxer,
                                                            std::uint32_t stream_index);
[[nodiscard]] Status prsm_profile_34_sampleentry_validation(const Mp4Demuxer& demuxer,
                                                            std::uint32_t stream_index);

}  // namespace mediasplit
