#pragma once

#include <array>
#include <cstdint>

namespace mediasplit {

// Assignment of a program's objects to beds, intermediate spatial format (ISF) layers and dynamic
// objects (`bed_dyn_obj_assignment` of ETSI TS 103 190-2).

inline constexpr int kOamdBedChannels = 17;  // bits of a bed mask, bit 0 is L
inline constexpr int kOamdMostBeds = 16;
inline constexpr std::uint32_t kOamdLfeMask = 8;  // LFE alone
inline constexpr std::uint32_t kOamdBedMask = (1U << kOamdBedChannels) - 1;

enum class OamdObjectKind : std::uint8_t {
    kUnset = 0,
    kDynamic = 1,
    kBed = 2,
    kLfeBed = 3,
    kIsf = 4
};

// Objects of the ISF layouts by `isf_config` 0 to 5; 0 for the reserved codes.
int oamd_isf_object_count(std::uint32_t isf_config);

struct OamdProgAssign {
    bool b_dynamic_objects_only = false;
    std::uint8_t bed_count = 0;                            // entries of bed_masks in use
    std::array<std::uint32_t, kOamdMostBeds> bed_masks{};  // 17 bits each, bit 0 is L
    std::uint8_t isf_layers = 0;                           // 0 none, 1 to 6: isf_config + 1
    std::uint16_t dynamic_object_count = 0;
};

// What an object is: its kind, and for a bed object its bed and channel order.
struct OamdObjectRole {
    OamdObjectKind kind = OamdObjectKind::kUnset;
    std::uint8_t bed = 0;
    std::uint8_t channel = 0;  // 0 to 16
};

// An object's standing in the program, whatever the block of metadata.
struct OamdObject {
    OamdObjectRole role{};
    std::uint8_t ducking_disabled = 0;
    std::uint32_t sound_category = 0;
    std::uint32_t alt_data_sets = 0;
    std::int32_t alt_gain_code = -1;  // of the first alternative data set, -1 for none
};
static_assert(sizeof(OamdObject) == 16);

// Number of channels of a bed mask, bits beyond the 17 ignored.
int AC4_ANALYZE_oamdi_get_bed_channels_count(std::uint32_t mask);

// 1 if every pair of channels of the mask (L/R, Ls/Rs, ...) is there whole or not at all, so that
// the standard 10-bit mask can say the same.
int AC4_ANALYZE_oamdi_is_std_chan_assign(std::uint32_t mask);

// Widens a 10-bit standard mask (bit 0 is the L/R pair) to the 17-bit form.
std::uint32_t oamd_mask_from_std(std::uint32_t std_mask);

// Widens a `bed_chan_assign_code` (0 to 7) to the 17-bit form; `with_lfe` for direct coded objects.
std::uint32_t oamd_mask_from_code(std::uint32_t code, bool with_lfe);

// 1 if the assignment is a single bed of LFE alone.
int AC4_ANALYZE_lfe_only_bed(const OamdProgAssign& assign);

// 1 if the assignment has dynamic objects and neither beds nor ISF.
int AC4_ANALYZE_dyn_objs_prog_only(const OamdProgAssign& assign);

// Objects that the assignment stands for.
int oamd_prog_assign_object_count(const OamdProgAssign& assign);

// 1 if the assignment needs more than `num_objects` objects, else 0.
int AC4_ANALYZE_oamdi_prog_assign_check_num_objs(const OamdProgAssign& assign, int num_objects);

// Gives each of `max_objects` objects the role that the assignment says: beds first, in mask order,
// then ISF and dynamic objects; those behind them are unset. 0; 1, and the objects as they were, if
// the assignment needs more of them.
int AC4_ANALYZE_apply_prog_assign(const OamdProgAssign& assign, OamdObject* objects,
                                  int max_objects);

}  // namespace mediasplit
