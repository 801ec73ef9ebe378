#include "ac4/oamd/prog_assign.h"

#include <algorithm>
#include <bit>
#include <cstddef>

namespace mediasplit {
namespace {

// Channel orders of the 17-bit mask: L, R, C, LFE, Ls, Rs, Lb, Rb, Tfl, Tfr, Tsl, Tsr, Tbl, Tbr,
// Lw, Rw, LFE2. One row for each bit of the 10-bit mask.
constexpr std::array<std::uint32_t, 10> kStdMaskChannels = {
    0x00003, 0x00004, 0x00008, 0x00030, 0x000C0, 0x00300, 0x00C00, 0x03000, 0x0C000, 0x10000};

// Layouts 2.0, 3.0, 5.1, 5.1.2, 5.1.4, 7.1, 7.1.2, 7.1.4 by bed_chan_assign_code. The two heights
// of 5.1.2 and 7.1.2 are the side ones.
constexpr std::array<std::uint32_t, 8> kCodeChannels = {0x00003, 0x00007, 0x0003F, 0x00C3F,
                                                        0x0333F, 0x000FF, 0x00CFF, 0x033FF};

constexpr std::array<int, 6> kIsfObjects = {4, 8, 10, 14, 15, 30};

// Fills roles in order; stays at their end once it is full.
class RoleWriter {
public:
    RoleWriter(OamdObject* objects, int count) : next_(objects), end_(objects + count) {}

    void put(OamdObjectKind kind, int bed = 0, int channel = 0) {
        if (next_ != end_) {
            next_->role = {kind, static_cast<std::uint8_t>(bed),
                           static_cast<std::uint8_t>(channel)};
            ++next_;
        }
    }

    void put_bed(int bed, std::uint32_t mask) {
        if (mask == kOamdLfeMask) {
            put(OamdObjectKind::kLfeBed, bed, std::countr_zero(kOamdLfeMask));
            return;
        }
        for (int channel = 0; channel < kOamdBedChannels; ++channel) {
            if ((mask >> channel & 1U) != 0) {
                put(OamdObjectKind::kBed, bed, channel);
            }
        }
    }

    void put_many(OamdObjectKind kind, int count) {
        for (int i = 0; i < count && next_ != end_; ++i) {
            put(kind);
        }
    }

    void clear_rest() {
        for (; next_ != end_; ++next_) {
            next_->role = {};
        }
    }

private:
    OamdObject* next_;
    OamdObject* end_;
};

int beds_in_use(const OamdProgAssign& assign) {
    return std::min<int>(assign.bed_count, kOamdMostBeds);
}

}  // namespace

int oamd_isf_object_count(std::uint32_t isf_config) {
    return isf_config < kIsfObjects.size() ? kIsfObjects[isf_config] : 0;
}

int AC4_ANALYZE_oamdi_get_bed_channels_count(std::uint32_t mask) {
    return std::popcount(mask & kOamdBedMask);
}

int AC4_ANALYZE_oamdi_is_std_chan_assign(std::uint32_t mask) {
    return std::all_of(kStdMaskChannels.begin(), kStdMaskChannels.end(),
                       [mask](std::uint32_t channels) {
                           return (mask & channels) == 0 || (mask & channels) == channels;
                       })
               ? 1
               : 0;
}

std::uint32_t oamd_mask_from_std(std::uint32_t std_mask) {
    std::uint32_t mask = 0;
    for (std::size_t bit = 0; bit < kStdMaskChannels.size(); ++bit) {
        mask |= (std_mask >> bit & 1U) != 0 ? kStdMaskChannels[bit] : 0;
    }
    return mask;
}

std::uint32_t oamd_mask_from_code(std::uint32_t code, bool with_lfe) {
    const std::uint32_t mask = code < kCodeChannels.size() ? kCodeChannels[code] : 0;
    return with_lfe ? mask : mask & ~kOamdLfeMask;
}

int AC4_ANALYZE_lfe_only_bed(const OamdProgAssign& assign) {
    return assign.bed_count == 1 && assign.bed_masks[0] == kOamdLfeMask ? 1 : 0;
}

int AC4_ANALYZE_dyn_objs_prog_only(const OamdProgAssign& assign) {
    return assign.b_dynamic_objects_only && assign.bed_count == 0 && assign.isf_layers == 0 ? 1 : 0;
}

int oamd_prog_assign_object_count(const OamdProgAssign& assign) {
    int count = assign.dynamic_object_count;
    if (assign.isf_layers != 0) {
        count += oamd_isf_object_count(assign.isf_layers - 1U);
    }
    for (int bed = 0; bed < beds_in_use(assign); ++bed) {
        count += AC4_ANALYZE_oamdi_get_bed_channels_count(
            assign.bed_masks[static_cast<std::size_t>(bed)]);
    }
    return count;
}

int AC4_ANALYZE_oamdi_prog_assign_check_num_objs(const OamdProgAssign& assign, int num_objects) {
    return oamd_prog_assign_object_count(assign) > num_objects ? 1 : 0;
}

int AC4_ANALYZE_apply_prog_assign(const OamdProgAssign& assign, OamdObject* objects,
                                  int max_objects) {
    if (objects == nullptr ||
        AC4_ANALYZE_oamdi_prog_assign_check_num_objs(assign, max_objects) != 0) {
        return 1;
    }
    RoleWriter writer(objects, max_objects);
    for (int bed = 0; bed < beds_in_use(assign); ++bed) {
        writer.put_bed(bed, assign.bed_masks[static_cast<std::size_t>(bed)]);
    }
    if (assign.isf_layers != 0) {
        writer.put_many(OamdObjectKind::kIsf, oamd_isf_object_count(assign.isf_layers - 1U));
    }
    writer.put_many(OamdObjectKind::kDynamic, assign.dynamic_object_count);
    writer.clear_rest();
    return 0;
}

}  // namespace mediasplit
