// Profile, tier and level of ITU-T H.265 7.3.3.
#include "src/video/bit_cursor.h"
#include "src/video/hevc_parameter_sets.h"

namespace mediasplit {

Status parse_hevc_profile_tier(HevcProfileTier* profile, ByteSpan data, std::uint32_t& position) {
    if (profile == nullptr || data.data() == nullptr) {
        return Status::kFailed;
    }
    BitCursor bits(data, position);
    profile->profile_space = bits.u8(2);
    profile->tier_flag = bits.flag();
    profile->profile_idc = bits.u8(5);
    profile->profile_compatibility_flags = bits.u32(32);
    for (std::size_t i = 0; i < profile->profile_compatibility_flag.size(); ++i) {
        profile->profile_compatibility_flag[i] =
            static_cast<std::uint8_t>((profile->profile_compatibility_flags >> (31 - i)) & 1U);
    }
    profile->progressive_source_flag = bits.flag();
    profile->interlaced_source_flag = bits.flag();
    profile->non_packed_constraint_flag = bits.flag();
    profile->frame_only_constraint_flag = bits.flag();
    profile->reserved_zero_44bits_43_12 = bits.u32(32);
    profile->reserved_zero_44bits_11_0 = bits.u16(12);
    return Status::kOk;
}

Status parse_profile_present_info(HevcProfileTierLevel* levels, ByteSpan data,
                                  std::uint32_t& position, std::uint32_t max_sub_layers_minus1) {
    if (levels == nullptr || data.data() == nullptr) {
        return Status::kFailed;
    }
    BitCursor bits(data, position);
    for (std::uint32_t i = 0; i < max_sub_layers_minus1 && i < kMaxHevcSubLayers; ++i) {
        levels->sub_layer_profile_present_flag[i] = bits.flag();
        levels->sub_layer_level_present_flag[i] = bits.flag();
    }
    if (max_sub_layers_minus1 > 0) {
        for (std::uint32_t i = max_sub_layers_minus1; i < kMaxHevcSubLayers; ++i) {
            bits.skip(2);  // reserved_zero_2bits
        }
    }
    return Status::kOk;
}

Status parse_hevc_profile_tier_level(HevcProfileTierLevel* levels, ByteSpan data,
                                     std::uint32_t& position, std::uint32_t max_sub_layers_minus1) {
    if (levels == nullptr || data.data() == nullptr) {
        return Status::kFailed;
    }
    BitCursor bits(data, position);
    Status status = parse_hevc_profile_tier(&levels->general, data, position);
    levels->general.level_idc = bits.u8(8);
    status |= parse_profile_present_info(levels, data, position, max_sub_layers_minus1);
    levels->sub_layers.clear();
    for (std::uint32_t i = 0; i < max_sub_layers_minus1 && i < kMaxHevcSubLayers; ++i) {
        HevcProfileTier layer;
        if (levels->sub_layer_profile_present_flag[i] != 0) {
            status |= parse_hevc_profile_tier(&layer, data, position);
        }
        if (levels->sub_layer_level_present_flag[i] != 0) {
            layer.level_idc = bits.u8(8);
        }
        levels->sub_layers.push_back(layer);
    }
    return status;
}

}  // namespace mediasplit
