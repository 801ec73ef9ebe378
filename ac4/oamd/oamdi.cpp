#include "ac4/oamd/oamdi.h"

#include <algorithm>
#include <memory>

namespace mediasplit {
namespace {

// Bytes beside the arrays: the record and what aligning it and the arrays can take.
constexpr std::size_t kFixedBytes = 531;

std::size_t entry_count(int value) {
    return static_cast<std::size_t>(value);
}

// Hands out one array after the other from the caller's block.
class BlockCursor {
public:
    explicit BlockCursor(void* block) : next_(block) {}

    template <typename T>
    T* take(std::size_t count) {
        std::size_t space = SIZE_MAX;
        void* place = std::align(alignof(T), sizeof(T), next_, space);
        T* first = static_cast<T*>(place);
        std::uninitialized_value_construct_n(first, count);
        next_ = first + count;
        return first;
    }

private:
    void* next_;
};

static_assert(sizeof(oamdi) + alignof(oamdi) - 1 <= kFixedBytes);
static_assert(alignof(OamdObject) == 4 && alignof(OamdOaElement) == 2 &&
                  alignof(OamdObjInfoBlk) == 2 && alignof(OamdBed) == 1,
              "arrays stand in falling order of alignment, so none of them needs padding");

template <typename T>
void copy_entries(const T* from, int count, T* to) {
    std::copy(from, from + count, to);
}

}  // namespace

std::size_t AC4_ANALYZE_oamdi_query_mem(int object_count, int bed_count, int block_count) {
    if (object_count <= 0 || bed_count < 0 || block_count <= 0 || block_count > kOamdMostBlocks) {
        return 0;
    }
    const std::size_t objects = entry_count(object_count);
    return (entry_count(block_count) * sizeof(OamdObjInfoBlk) + sizeof(OamdOaElement)) * objects +
           objects + entry_count(bed_count) * sizeof(OamdBed) + kFixedBytes +
           objects * sizeof(OamdObject);
}

oamdi* AC4_ANALYZE_oamdi_init(void* block, int object_count, int bed_count, int block_count) {
    if (block == nullptr ||
        AC4_ANALYZE_oamdi_query_mem(object_count, bed_count, block_count) == 0) {
        return nullptr;
    }
    BlockCursor cursor(block);
    auto* info = cursor.take<oamdi>(1);
    info->max_objects = object_count;
    info->max_blocks = block_count;
    info->bed_count = bed_count;
    const std::size_t objects = entry_count(object_count);
    info->objects = cursor.take<OamdObject>(objects);
    info->oa_elements = cursor.take<OamdOaElement>(objects);
    info->obj_info_blks = cursor.take<OamdObjInfoBlk>(objects * entry_count(block_count));
    info->beds = cursor.take<OamdBed>(entry_count(bed_count));
    info->obj_not_active = cursor.take<std::uint8_t>(objects);
    AC4_ANALYZE_oamdi_reset(info);
    return info;
}

void AC4_ANALYZE_oamdi_reset(oamdi* info) {
    if (info == nullptr) {
        return;
    }
    info->num_objects = 0;
    info->num_info_blocks = 1;
    info->sample_offset = 0;
    info->prog_assign = {};
    info->update_info = {};
    info->warp_mode = 0;
    info->global_trim_mode = 0;
    AC4_ANALYZE_oamdi_set_dimensional_trim_defaults(info);
    std::fill_n(info->objects, info->max_objects, OamdObject{});
    std::fill_n(info->oa_elements, info->max_objects, OamdOaElement{});
    std::fill_n(info->obj_info_blks, info->max_objects * info->max_blocks, OamdObjInfoBlk{});
    std::fill_n(info->beds, info->bed_count, OamdBed{});
    std::fill_n(info->obj_not_active, info->max_objects, std::uint8_t{0});
}

int AC4_ANALYZE_oamdi_duplicate(const oamdi* source, oamdi* target) {
    if (source == nullptr || target == nullptr) {
        return 0;
    }
    if (target->max_objects < source->max_objects || target->max_blocks < source->max_blocks ||
        target->bed_count < source->bed_count) {
        return 1;
    }
    AC4_ANALYZE_oamdi_reset(target);
    target->num_objects = source->num_objects;
    target->num_info_blocks = source->num_info_blocks;
    target->sample_offset = source->sample_offset;
    target->prog_assign = source->prog_assign;
    target->update_info = source->update_info;
    target->trim_config = source->trim_config;
    target->warp_mode = source->warp_mode;
    target->global_trim_mode = source->global_trim_mode;
    copy_entries(source->objects, source->max_objects, target->objects);
    copy_entries(source->oa_elements, source->max_objects, target->oa_elements);
    copy_entries(source->beds, source->bed_count, target->beds);
    copy_entries(source->obj_not_active, source->max_objects, target->obj_not_active);
    for (std::ptrdiff_t object = 0; object < source->max_objects; ++object) {
        copy_entries(source->obj_info_blks + object * source->max_blocks, source->max_blocks,
                     target->obj_info_blks + object * target->max_blocks);
    }
    return 0;
}

int AC4_ANALYZE_oamdi_set_prog_assign(oamdi* info, const OamdProgAssign& assign) {
    if (info == nullptr) {
        return 0;
    }
    if (assign.bed_count > info->bed_count || assign.bed_count > kOamdMostBeds ||
        AC4_ANALYZE_oamdi_prog_assign_check_num_objs(assign, info->max_objects) != 0) {
        return 1;
    }
    info->prog_assign = assign;
    info->num_objects = oamd_prog_assign_object_count(assign);
    std::fill_n(info->beds, info->bed_count, OamdBed{});
    int first = 0;
    for (std::size_t bed = 0; bed < assign.bed_count; ++bed) {
        const std::uint32_t mask = assign.bed_masks[bed];
        const int count = AC4_ANALYZE_oamdi_get_bed_channels_count(mask);
        info->beds[bed] = {static_cast<std::uint8_t>(first), static_cast<std::uint8_t>(count),
                           static_cast<std::uint8_t>(mask == kOamdLfeMask)};
        first += count;
    }
    return AC4_ANALYZE_apply_prog_assign(assign, info->objects, info->max_objects);
}

void AC4_ANALYZE_oamdi_set_dimensional_trim_defaults(oamdi* info) {
    if (info != nullptr) {
        OamdTrimConfig automatic;
        automatic.flags = kTrimAuto;
        info->trim_config.fill(automatic);
    }
}

}  // namespace mediasplit
