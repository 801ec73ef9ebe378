// Level and profile rules of enhancement streams, and their metadata units.
#pragma once

#include <cstdint>
#include <optional>

#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/util/bit_reader.h"
#include "src/video/parameter_sets.h"

namespace mediasplit {

// The place of the rule that ties `level` to picture size (luma samples) and frame rate (frames per
// second, 0 for unknown) (4253). No rule is applied here yet.
[[nodiscard]] inline Status check_px_level(std::uint32_t /*level*/, std::uint32_t /*width*/,
                                           std::uint32_t /*height*/, Loglist* /*loglist*/,
                                           float /*sps_rate*/, float /*container_rate*/) {
    return Status::kOk;
}

// The place of the rule that ties base and enhancement layer by profile (4252). No rule is applied
// here yet.
[[nodiscard]] inline Status check_px_profile_level(
    std::uint32_t /*profile*/, std::uint32_t /*level*/, std::uint32_t /*base_width*/,
    std::uint32_t /*base_height*/, std::uint32_t /*width*/, std::uint32_t /*height*/,
    Loglist* /*loglist*/, float /*base_rate*/, float /*container_rate*/) {
    return Status::kOk;
}

// check_px_level for H.265. `vps` may be null. No rule is applied here yet.
[[nodiscard]] inline Status check_px_h265_level(std::uint32_t /*level*/, const HevcVps* /*vps*/,
                                                const HevcSps& /*sps*/, Loglist* /*loglist*/,
                                                float /*container_rate*/) {
    return Status::kOk;
}

// check_px_profile_level for H.265. No rule is applied here yet.
[[nodiscard]] inline Status check_px_h265_profile_level(
    std::uint32_t /*profile*/, std::uint32_t /*level*/, const HevcVps& /*base_vps*/,
    const HevcSps& /*base_sps*/, const HevcSps& /*sps*/, Loglist* /*loglist*/,
    float /*container_rate*/) {
    return Status::kOk;
}

// The place where a metadata unit of an H.265 stream is read; its result counts for nothing.
inline void parse_rpu_nal(ByteSpan /*unit*/, Loglist* /*loglist*/) {}

// The place where the metadata header at bit `position` of `data` is read. Returns its compression
// value. No header is read here yet: there is no value, and nothing is compared.
[[nodiscard]] inline std::optional<std::uint8_t> rpu_compression(ByteSpan /*data*/,
                                                                std::uint32_t /*position*/,
                                                                Loglist* /*loglist*/) {
    return std::nullopt;
}

}  // namespace mediasplit
