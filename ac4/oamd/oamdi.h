#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "ac4/oamd/prog_assign.h"

namespace mediasplit {

// Object audio metadata of one program as a self-contained block (ETSI TS 103 190-2):
// sizes are fixed by AC4_ANALYZE_oamdi_init over memory of the caller, nothing is allocated, and
// there is nothing to release. Every operation takes a null block: it then has no effect and gives
// 0 or null.

inline constexpr int kOamdMostBlocks = 8;
inline constexpr int kOamdTrimConfigs = 9;

// One object's metadata in one block. Q15: 32768 stands for 1.0, kept at most 32767.
struct OamdObjInfoBlk {
    std::array<std::int16_t, 3> position{};  // x, y, z in Q15
    std::array<std::int16_t, 3> width{};     // size in x, y, z in Q15
    std::int16_t divergence = 0;             // Q15
    std::int16_t gain = 0;                   // dB
    std::uint16_t priority = 0;              // Q15
    std::uint16_t distance_code = 0;         // obj_distance_factor_code + 1, 0 for none
    std::uint8_t gain_muted = 0;             // the gain is minus infinity
    std::uint8_t at_infinity = 0;
    std::uint8_t zone_mask = 0;
    std::uint8_t zone_flags = 0;
    std::uint8_t screen_factor_code = 0;
    std::uint8_t depth_factor = 0;
    std::uint8_t div_mode = 0;
    std::uint8_t trim_disabled = 0;
    std::uint8_t hp_render_mode = 0;
    std::uint8_t reused = 0;  // nothing new was sent
};
static_assert(sizeof(OamdObjInfoBlk) == 30);

struct OamdTrimConfig {
    std::uint8_t flags = 0;  // kTrimAuto, kTrimDisabled, and the 5 presence bits above them
    std::uint8_t centre_surround = 0;  // codes of 4 bits, centre in the upper half
    std::uint8_t height = 0;
    std::int8_t balance_top_bottom = 0;
    std::int8_t balance_listener = 0;
};
static_assert(sizeof(OamdTrimConfig) == 5);

inline constexpr std::uint8_t kTrimAuto = 1;
inline constexpr std::uint8_t kTrimDisabled = 2;
inline constexpr int kTrimPresenceShift = 2;

// Block update: from which sample on a block holds and how long the change takes.
struct OamdMdUpdateInfo {
    std::array<std::uint8_t, kOamdMostBlocks> block_offset_factor{};
    std::array<std::uint16_t, kOamdMostBlocks> ramp_duration{};  // samples
};

struct OamdBed {
    std::uint8_t first_object = 0;
    std::uint8_t object_count = 0;
    std::uint8_t lfe_only = 0;
};
static_assert(sizeof(OamdBed) == 3);

// Per-object trims of the object audio element.
struct OamdOaElement {
    std::array<std::int16_t, 8> trim{};
};
static_assert(sizeof(OamdOaElement) == 16);

struct OamdInitInfo {
    int max_objects = 0;
    int bed_count = 0;
    int max_blocks = 0;
};

struct OamdVersion {
    std::uint32_t major_number = 0;
    std::uint32_t minor_number = 0;
    std::uint32_t patch_number = 0;
};

struct oamdi {
    std::int32_t max_objects = 0;
    std::int32_t max_blocks = 0;
    std::int32_t bed_count = 0;
    std::int32_t num_objects = 0;
    std::int32_t num_info_blocks = 0;  // 1 to 8
    std::int32_t sample_offset = 0;
    OamdProgAssign prog_assign{};
    OamdMdUpdateInfo update_info{};
    std::array<OamdTrimConfig, kOamdTrimConfigs> trim_config{};
    std::uint8_t warp_mode = 0;
    std::uint8_t global_trim_mode = 0;
    // Arrays inside the caller's block.
    OamdObject* objects = nullptr;            // max_objects
    OamdOaElement* oa_elements = nullptr;     // max_objects
    OamdObjInfoBlk* obj_info_blks = nullptr;  // max_objects rows of max_blocks
    OamdBed* beds = nullptr;                  // bed_count
    std::uint8_t* obj_not_active = nullptr;   // max_objects, bit b for block b
};

// Bytes that a block takes; 0 if a size is out of range (no object, or blocks not 1 to 8).
std::size_t AC4_ANALYZE_oamdi_query_mem(int object_count, int bed_count, int block_count);

// Sets a record up in `block`, which holds AC4_ANALYZE_oamdi_query_mem bytes at any alignment and
// stays the caller's. Null for a null block or sizes out of range.
oamdi* AC4_ANALYZE_oamdi_init(void* block, int object_count, int bed_count, int block_count);

// Gives all fields their defaults; the sizes stay.
void AC4_ANALYZE_oamdi_reset(oamdi* info);

// Copies all fields of `source` into `target`. 0; 1, and the target as it was, if a size of the
// target is smaller.
int AC4_ANALYZE_oamdi_duplicate(const oamdi* source, oamdi* target);

// Stores an assignment and derives each object's role from it. 0; 1 if it needs more objects or
// beds than the block has: the former assignment then stands.
int AC4_ANALYZE_oamdi_set_prog_assign(oamdi* info, const OamdProgAssign& assign);

// Sets the 9 trim configurations to automatic.
void AC4_ANALYZE_oamdi_set_dimensional_trim_defaults(oamdi* info);

// Plain accessors. Indexes outside the block have no effect and give null or 0.
void AC4_ANALYZE_oamdi_set_md_update_info(oamdi* info, const OamdMdUpdateInfo& update,
                                          int num_info_blocks);
const OamdMdUpdateInfo* AC4_ANALYZE_oamdi_get_md_update_info(const oamdi* info);
void AC4_ANALYZE_oamdi_set_sample_offset(oamdi* info, int samples);
int AC4_ANALYZE_oamdi_get_sample_offset(const oamdi* info);
void AC4_ANALYZE_oamdi_set_obj_info_blk(oamdi* info, int object, int block,
                                        const OamdObjInfoBlk& values);
const OamdObjInfoBlk* AC4_ANALYZE_oamdi_get_obj_info_blk(const oamdi* info, int object, int block);
void AC4_ANALYZE_oamdi_set_obj_not_active(oamdi* info, int object, int block, bool not_active);
bool AC4_ANALYZE_oamdi_get_obj_not_active(const oamdi* info, int object, int block);
int AC4_ANALYZE_oamdi_get_num_obj_info_blks(const oamdi* info);
int AC4_ANALYZE_oamdi_get_obj_count(const oamdi* info);
const OamdProgAssign* AC4_ANALYZE_oamdi_get_prog_assign(const oamdi* info);
// All object rows, max_blocks entries an object.
const OamdObjInfoBlk* AC4_ANALYZE_oamdi_get_all_obj_md(const oamdi* info);
OamdInitInfo AC4_ANALYZE_oamdi_get_init_info(const oamdi* info);
OamdVersion AC4_ANALYZE_oamdi_get_lib_ver();
OamdVersion AC4_ANALYZE_oamdi_get_md_ver();
const OamdTrimConfig* AC4_ANALYZE_oamdi_get_trim_config(const oamdi* info, int config);
void AC4_ANALYZE_oamdi_set_trim_config(oamdi* info, int config, const OamdTrimConfig& values);
bool AC4_ANALYZE_oamdi_dimensional_trim_is_auto(const oamdi* info, int config);
bool AC4_ANALYZE_oamdi_dimensional_trim_is_disabled(const oamdi* info, int config);
void AC4_ANALYZE_oamdi_dimensional_trim_set_auto(oamdi* info, int config, bool on);
void AC4_ANALYZE_oamdi_dimensional_trim_set_disabled(oamdi* info, int config, bool on);

}  // namespace mediasplit
