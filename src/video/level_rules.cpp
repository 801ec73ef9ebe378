#include "src/video/level_rules.h"

#include <array>
#include <cmath>

#include "src/log/logging.h"

namespace mediasplit {
namespace {

struct LevelRow {
    std::uint32_t level;
    float max_samples_per_second;
    std::uint32_t max_width;
};

// The first row whose limits both hold gives the level.
constexpr std::array<LevelRow, 13> kLevels = {{
    {1, 22118400.0F, 1280},
    {2, 27648000.0F, 1280},
    {3, 49766400.0F, 1920},
    {4, 62208000.0F, 2560},
    {5, 124416000.0F, 3840},
    {6, 199065600.0F, 3840},
    {7, 248832000.0F, 3840},
    {8, 398131200.0F, 3840},
    {9, 497664000.0F, 3840},
    {10, 995328000.0F, 3840},
    {11, 995328000.0F, 7680},
    {12, 1990656000.0F, 7680},
    {13, 3981312000.0F, 7680},
}};

struct LayerSizes {
    std::uint32_t base_width;
    std::uint32_t base_height;
    std::uint32_t enhancement_width;
    std::uint32_t enhancement_height;
};

// The enhancement layer has half the size of the base layer.
bool is_half_size(const LayerSizes& sizes) {
    return sizes.enhancement_width != 0 && sizes.enhancement_height != 0 &&
           (sizes.base_width / sizes.enhancement_width == 2 ||
            sizes.base_height / sizes.enhancement_height == 2);
}

bool is_same_size(const LayerSizes& sizes) {
    return sizes.base_width == sizes.enhancement_width ||
           sizes.base_height == sizes.enhancement_height;
}

bool is_any_size([[maybe_unused]] const LayerSizes& sizes) {
    return true;
}

bool is_unknown_profile([[maybe_unused]] const LayerSizes& sizes) {
    return false;
}

using SizeRule = bool (*)(const LayerSizes& sizes);

// By profile.
constexpr std::array<SizeRule, 7> kSizeRules = {
    is_half_size, is_same_size, is_half_size, is_same_size, is_half_size, is_any_size, is_any_size};

bool is_known(float frame_rate) {
    return std::fabs(frame_rate) >= 1e-6F;
}

float ratio(std::uint32_t time_scale, std::uint32_t num_units_in_tick) {
    return num_units_in_tick == 0
               ? 0.0F
               : static_cast<float>(time_scale) / static_cast<float>(num_units_in_tick);
}

}  // namespace

std::uint32_t px_level_of(std::uint32_t width, std::uint32_t height, float frame_rate) {
    const float samples_per_second = static_cast<float>(std::uint64_t{width} * height) * frame_rate;
    for (const LevelRow& row : kLevels) {
        if (samples_per_second <= row.max_samples_per_second && width <= row.max_width) {
            return row.level;
        }
    }
    return 0;
}

Status check_px_level(std::uint32_t level, std::uint32_t width, std::uint32_t height,
                      Loglist* loglist, float sps_frame_rate, float container_frame_rate) {
    const float frame_rate = is_known(sps_frame_rate) ? sps_frame_rate : container_frame_rate;
    if (!is_known(frame_rate)) {
        return Status::kOk;
    }
    return check(level == px_level_of(width, height, frame_rate), loglist, 4253, {}, level, width,
                 height, frame_rate);
}

Status check_px_profile_level(std::uint32_t profile, std::uint32_t level, std::uint32_t base_width,
                              std::uint32_t base_height, std::uint32_t enhancement_width,
                              std::uint32_t enhancement_height, Loglist* loglist,
                              float base_frame_rate, float container_frame_rate) {
    const SizeRule rule = profile < kSizeRules.size() ? kSizeRules[profile] : is_unknown_profile;
    const LayerSizes sizes = {base_width, base_height, enhancement_width, enhancement_height};
    const Status status = check(rule(sizes), loglist, 4252, {});
    return status | check_px_level(level, base_width, base_height, loglist, base_frame_rate,
                                   container_frame_rate);
}

Status parse_h265_width_height_framerate(std::uint32_t* width, std::uint32_t* height,
                                         float* frame_rate, const HevcVps* vps, const HevcSps* sps,
                                         [[maybe_unused]] Loglist* loglist) {
    if (width == nullptr || height == nullptr || frame_rate == nullptr || vps == nullptr ||
        sps == nullptr) {
        return Status::kFailed;
    }
    *width = sps->pic_width;
    *height = sps->pic_height;
    if (vps->vps_timing_info_present_flag != 0) {
        *frame_rate = ratio(vps->vps_time_scale, vps->vps_num_units_in_tick);
    } else if (sps->vui.vui_timing_info_present_flag != 0) {
        *frame_rate = ratio(sps->vui.vui_time_scale, sps->vui.vui_num_units_in_tick);
    } else {
        *frame_rate = 0;
    }
    return Status::kOk;
}

Status check_px_h265_level(std::uint32_t level, const HevcVps* vps, const HevcSps* sps,
                           Loglist* loglist, float container_frame_rate) {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    float frame_rate = 0;
    const Status status =
        parse_h265_width_height_framerate(&width, &height, &frame_rate, vps, sps, loglist);
    if (status != Status::kOk) {
        return status;
    }
    return check_px_level(level, width, height, loglist, frame_rate, container_frame_rate);
}

Status check_px_h265_profile_level(std::uint32_t profile, std::uint32_t level,
                                   const HevcVps* base_vps, const HevcSps* base_sps,
                                   const HevcSps* enhancement_sps, Loglist* loglist,
                                   float container_frame_rate) {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    float frame_rate = 0;
    if (enhancement_sps == nullptr) {
        return Status::kFailed;
    }
    const Status status = parse_h265_width_height_framerate(&width, &height, &frame_rate, base_vps,
                                                            base_sps, loglist);
    if (status != Status::kOk) {
        return status;
    }
    return check_px_profile_level(profile, level, width, height, enhancement_sps->pic_width,
                                  enhancement_sps->pic_height, loglist, frame_rate,
                                  container_frame_rate);
}

}  // namespace mediasplit
