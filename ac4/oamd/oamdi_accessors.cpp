#include <algorithm>

#include "ac4/oamd/oamdi.h"

namespace mediasplit {
namespace {

// One object's entry of one block; null outside the record.
OamdObjInfoBlk* find_block(const oamdi* info, int object, int block) {
    if (info == nullptr || object < 0 || object >= info->max_objects || block < 0 ||
        block >= info->max_blocks) {
        return nullptr;
    }
    return info->obj_info_blks + (static_cast<std::ptrdiff_t>(object) * info->max_blocks + block);
}

template <typename Info>
auto find_trim(Info* info, int config) -> decltype(&info->trim_config[0]) {
    if (info == nullptr || config < 0 || config >= kOamdTrimConfigs) {
        return nullptr;
    }
    return &info->trim_config[static_cast<std::size_t>(config)];
}

bool trim_flag(const oamdi* info, int config, std::uint8_t flag) {
    const OamdTrimConfig* trim = find_trim(info, config);
    return trim != nullptr && (trim->flags & flag) != 0;
}

void set_trim_flag(oamdi* info, int config, std::uint8_t flag, bool on) {
    OamdTrimConfig* trim = find_trim(info, config);
    if (trim != nullptr) {
        trim->flags = static_cast<std::uint8_t>(on ? trim->flags | flag : trim->flags & ~flag);
    }
}

constexpr OamdVersion kLibraryVersion{1, 0, 0};
constexpr OamdVersion kMetadataVersion{1, 0, 0};

}  // namespace

void AC4_ANALYZE_oamdi_set_md_update_info(oamdi* info, const OamdMdUpdateInfo& update,
                                          int num_info_blocks) {
    if (info != nullptr) {
        info->update_info = update;
        info->num_info_blocks = std::clamp(num_info_blocks, 1, info->max_blocks);
    }
}

const OamdMdUpdateInfo* AC4_ANALYZE_oamdi_get_md_update_info(const oamdi* info) {
    return info != nullptr ? &info->update_info : nullptr;
}

void AC4_ANALYZE_oamdi_set_sample_offset(oamdi* info, int samples) {
    if (info != nullptr) {
        info->sample_offset = samples;
    }
}

int AC4_ANALYZE_oamdi_get_sample_offset(const oamdi* info) {
    return info != nullptr ? info->sample_offset : 0;
}

void AC4_ANALYZE_oamdi_set_obj_info_blk(oamdi* info, int object, int block,
                                        const OamdObjInfoBlk& values) {
    OamdObjInfoBlk* entry = find_block(info, object, block);
    if (entry != nullptr) {
        *entry = values;
    }
}

const OamdObjInfoBlk* AC4_ANALYZE_oamdi_get_obj_info_blk(const oamdi* info, int object, int block) {
    return find_block(info, object, block);
}

void AC4_ANALYZE_oamdi_set_obj_not_active(oamdi* info, int object, int block, bool not_active) {
    if (find_block(info, object, block) != nullptr) {
        const auto bit = static_cast<std::uint8_t>(1U << block);
        std::uint8_t& flags = info->obj_not_active[object];
        flags = static_cast<std::uint8_t>(not_active ? flags | bit : flags & ~bit);
    }
}

bool AC4_ANALYZE_oamdi_get_obj_not_active(const oamdi* info, int object, int block) {
    return find_block(info, object, block) != nullptr &&
           (info->obj_not_active[object] >> block & 1U) != 0;
}

int AC4_ANALYZE_oamdi_get_num_obj_info_blks(const oamdi* info) {
    return info != nullptr ? info->num_info_blocks : 0;
}

int AC4_ANALYZE_oamdi_get_obj_count(const oamdi* info) {
    return info != nullptr ? info->num_objects : 0;
}

const OamdProgAssign* AC4_ANALYZE_oamdi_get_prog_assign(const oamdi* info) {
    return info != nullptr ? &info->prog_assign : nullptr;
}

const OamdObjInfoBlk* AC4_ANALYZE_oamdi_get_all_obj_md(const oamdi* info) {
    return info != nullptr ? info->obj_info_blks : nullptr;
}

OamdInitInfo AC4_ANALYZE_oamdi_get_init_info(const oamdi* info) {
    return info != nullptr ? OamdInitInfo{info->max_objects, info->bed_count, info->max_blocks}
                           : OamdInitInfo{};
}

OamdVersion AC4_ANALYZE_oamdi_get_lib_ver() {
    return kLibraryVersion;
}

OamdVersion AC4_ANALYZE_oamdi_get_md_ver() {
    return kMetadataVersion;
}

const OamdTrimConfig* AC4_ANALYZE_oamdi_get_trim_config(const oamdi* info, int config) {
    return find_trim(info, config);
}

void AC4_ANALYZE_oamdi_set_trim_config(oamdi* info, int config, const OamdTrimConfig& values) {
    OamdTrimConfig* trim = find_trim(info, config);
    if (trim != nullptr) {
        *trim = values;
    }
}

bool AC4_ANALYZE_oamdi_dimensional_trim_is_auto(const oamdi* info, int config) {
    return trim_flag(info, config, kTrimAuto);
}

bool AC4_ANALYZE_oamdi_dimensional_trim_is_disabled(const oamdi* info, int config) {
    return trim_flag(info, config, kTrimDisabled);
}

void AC4_ANALYZE_oamdi_dimensional_trim_set_auto(oamdi* info, int config, bool on) {
    set_trim_flag(info, config, kTrimAuto, on);
}

void AC4_ANALYZE_oamdi_dimensional_trim_set_disabled(oamdi* info, int config, bool on) {
    set_trim_flag(info, config, kTrimDisabled, on);
}

}  // namespace mediasplit
