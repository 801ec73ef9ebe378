// The rules that tie level and profile of the enhancement format's configuration to picture size
// and frame rate.
#pragma once

#include <cstdint>

#include "src/log/status.h"
#include "src/video/parameter_sets.h"

namespace mediasplit {

struct Loglist;

/// The lowest level that allows pictures of this size (luma samples) at `frame_rate` (frames per
/// second); 0 if none does.
std::uint32_t px_level_of(std::uint32_t width, std::uint32_t height, float frame_rate);

/// Raises 4253 if `level` isn't the one that follows from size and frame rate. The rate is that of
/// the parameter set, else that of the container; with neither there is nothing to check.
Status check_px_level(std::uint32_t level, std::uint32_t width, std::uint32_t height,
                      Loglist* loglist, float sps_frame_rate, float container_frame_rate);

/// Raises 4252 if the sizes of base and enhancement layer don't fit `profile`, and checks the level
/// of the base layer as above.
Status check_px_profile_level(std::uint32_t profile, std::uint32_t level, std::uint32_t base_width,
                              std::uint32_t base_height, std::uint32_t enhancement_width,
                              std::uint32_t enhancement_height, Loglist* loglist,
                              float base_frame_rate, float container_frame_rate);

/// Picture size and frame rate of an H.265 stream. The rate is that of the VPS, else that of the
/// SPS, else 0. Fails on null arguments.
Status parse_h265_width_height_framerate(std::uint32_t* width, std::uint32_t* height,
                                         float* frame_rate, const HevcVps* vps, const HevcSps* sps,
                                         Loglist* loglist);

/// `check_px_level` with the values of the parameter sets. Fails on null arguments.
Status check_px_h265_level(std::uint32_t level, const HevcVps* vps, const HevcSps* sps,
                           Loglist* loglist, float container_frame_rate);

/// `check_px_profile_level` with the values of the parameter sets. Fails on null arguments.
Status check_px_h265_profile_level(std::uint32_t profile, std::uint32_t level,
                                   const HevcVps* base_vps, const HevcSps* base_sps,
                                   const HevcSps* enhancement_sps, Loglist* loglist,
                                   float container_frame_rate);

}  // namespace mediasplit
