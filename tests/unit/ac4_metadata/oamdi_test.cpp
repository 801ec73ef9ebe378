#include "ac4/oamd/oamdi.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "ac4/oamd/oamdi_q15.h"

namespace mediasplit {
namespace {

struct Block {
    Block(int objects, int beds, int blocks, std::size_t shift = 0)
        : memory(AC4_ANALYZE_oamdi_query_mem(objects, beds, blocks) + shift) {
        info = AC4_ANALYZE_oamdi_init(memory.data() + shift, objects, beds, blocks);
    }
    std::vector<std::uint8_t> memory;
    oamdi* info = nullptr;
};

OamdProgAssign bed_and_dynamic(std::uint32_t mask, std::uint16_t dynamic) {
    OamdProgAssign assign;
    assign.bed_count = 1;
    assign.bed_masks[0] = mask;
    assign.dynamic_object_count = dynamic;
    return assign;
}

TEST(OamdiMemory, FollowsItsFormula) {
    EXPECT_EQ(AC4_ANALYZE_oamdi_query_mem(1, 0, 1), (30U + 16U) + 1U + 531U + 16U);
    EXPECT_EQ(AC4_ANALYZE_oamdi_query_mem(16, 2, 8),
              (8U * 30U + 16U) * 16U + 16U + 6U + 531U + 256U);
}

TEST(OamdiMemory, SizesOutOfRangeGiveZeroAndNoRecord) {
    std::array<std::uint8_t, 16> memory{};
    struct Sizes {
        int objects;
        int beds;
        int blocks;
    };
    for (const Sizes& sizes : {Sizes{4, 1, 9}, Sizes{4, 1, 0}, Sizes{0, 1, 1}, Sizes{-1, 0, 1},
                               Sizes{4, -1, 1}, Sizes{4, 1, -1}}) {
        EXPECT_EQ(AC4_ANALYZE_oamdi_query_mem(sizes.objects, sizes.beds, sizes.blocks), 0U);
        EXPECT_EQ(AC4_ANALYZE_oamdi_init(memory.data(), sizes.objects, sizes.beds, sizes.blocks),
                  nullptr);
    }
    EXPECT_EQ(AC4_ANALYZE_oamdi_init(nullptr, 1, 0, 1), nullptr);
}

TEST(OamdiMemory, FitsTheBlockAtEveryAlignment) {
    for (std::size_t shift = 0; shift < 16; ++shift) {
        for (const int blocks : {1, 3, 8}) {
            Block block(7, 3, blocks, shift);
            ASSERT_NE(block.info, nullptr);
            for (int object = 0; object < 7; ++object) {
                OamdObjInfoBlk values;
                values.gain = static_cast<std::int16_t>(object);
                AC4_ANALYZE_oamdi_set_obj_info_blk(block.info, object, blocks - 1, values);
                block.info->obj_not_active[object] = 0xFF;
            }
            const std::uint8_t* end = block.memory.data() + block.memory.size();
            EXPECT_LE(block.info->obj_not_active + 7, end);
            EXPECT_LE(reinterpret_cast<const std::uint8_t*>(block.info->beds + 3), end);
        }
    }
}

TEST(OamdiMemory, SizesAreToldBack) {
    Block block(5, 2, 4);
    const OamdInitInfo sizes = AC4_ANALYZE_oamdi_get_init_info(block.info);
    EXPECT_EQ(sizes.max_objects, 5);
    EXPECT_EQ(sizes.bed_count, 2);
    EXPECT_EQ(sizes.max_blocks, 4);
}

TEST(OamdiAssign, DynamicObjectsOnlyTakeTheFirstIndexes) {
    Block block(4, 1, 1);
    OamdProgAssign assign;
    assign.b_dynamic_objects_only = true;
    assign.dynamic_object_count = 3;
    EXPECT_EQ(AC4_ANALYZE_oamdi_set_prog_assign(block.info, assign), 0);
    EXPECT_EQ(AC4_ANALYZE_dyn_objs_prog_only(assign), 1);
    for (int object = 0; object < 3; ++object) {
        EXPECT_EQ(block.info->objects[object].role.kind, OamdObjectKind::kDynamic);
    }
    EXPECT_EQ(block.info->objects[3].role.kind, OamdObjectKind::kUnset);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_obj_count(block.info), 3);
}

TEST(OamdiAssign, Mask8WithOneEntryIsAnLfeOnlyBed) {
    Block block(4, 1, 1);
    const OamdProgAssign assign = bed_and_dynamic(8, 2);
    EXPECT_EQ(AC4_ANALYZE_lfe_only_bed(assign), 1);
    EXPECT_EQ(AC4_ANALYZE_dyn_objs_prog_only(assign), 0);
    EXPECT_EQ(AC4_ANALYZE_oamdi_set_prog_assign(block.info, assign), 0);
    EXPECT_EQ(static_cast<int>(block.info->objects[0].role.kind), 3);
    EXPECT_EQ(block.info->objects[0].role.channel, 3);
    EXPECT_EQ(block.info->objects[1].role.kind, OamdObjectKind::kDynamic);
    EXPECT_EQ(block.info->objects[2].role.kind, OamdObjectKind::kDynamic);
    EXPECT_EQ(block.info->beds[0].lfe_only, 1);
}

TEST(OamdiAssign, EachBitOfABedIsOneObjectWithItsChannel) {
    Block block(12, 2, 1);
    OamdProgAssign assign = bed_and_dynamic(0x1003F, 1);  // 5.1 and LFE2
    assign.bed_count = 2;
    assign.bed_masks[1] = 0x00003;
    EXPECT_EQ(AC4_ANALYZE_oamdi_set_prog_assign(block.info, assign), 0);
    const int channels[] = {0, 1, 2, 3, 4, 5, 16, 0, 1};
    for (int object = 0; object < 9; ++object) {
        const OamdObjectRole& role = block.info->objects[object].role;
        EXPECT_EQ(role.kind, OamdObjectKind::kBed);
        EXPECT_EQ(role.channel, channels[object]);
        EXPECT_EQ(role.bed, object < 7 ? 0 : 1);
    }
    EXPECT_EQ(block.info->objects[9].role.kind, OamdObjectKind::kDynamic);
    EXPECT_EQ(block.info->beds[1].first_object, 7);
    EXPECT_EQ(block.info->beds[1].object_count, 2);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_obj_count(block.info), 10);
}

TEST(OamdiAssign, IsfLayersHaveFixedCounts) {
    const int counts[] = {4, 8, 10, 14, 15, 30};
    for (int layer = 1; layer <= 6; ++layer) {
        OamdProgAssign assign;
        assign.isf_layers = static_cast<std::uint8_t>(layer);
        const int count = counts[layer - 1];
        EXPECT_EQ(AC4_ANALYZE_oamdi_prog_assign_check_num_objs(assign, count), 0);
        EXPECT_EQ(AC4_ANALYZE_oamdi_prog_assign_check_num_objs(assign, count - 1), 1);
        std::vector<OamdObject> objects(static_cast<std::size_t>(count));
        EXPECT_EQ(AC4_ANALYZE_apply_prog_assign(assign, objects.data(), count), 0);
        EXPECT_EQ(objects.back().role.kind, OamdObjectKind::kIsf);
    }
    OamdProgAssign reserved;
    reserved.isf_layers = 7;
    EXPECT_EQ(AC4_ANALYZE_oamdi_prog_assign_check_num_objs(reserved, 0), 0);
}

TEST(OamdiAssign, OverTheLimitLeavesTheFormerAssignment) {
    Block block(6, 1, 1);
    ASSERT_EQ(AC4_ANALYZE_oamdi_set_prog_assign(block.info, bed_and_dynamic(0x3F, 0)), 0);
    EXPECT_EQ(AC4_ANALYZE_oamdi_set_prog_assign(block.info, bed_and_dynamic(0x3F, 1)), 1);
    OamdProgAssign two_beds = bed_and_dynamic(1, 0);
    two_beds.bed_count = 2;
    EXPECT_EQ(AC4_ANALYZE_oamdi_set_prog_assign(block.info, two_beds), 1);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_prog_assign(block.info)->bed_masks[0], 0x3FU);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_obj_count(block.info), 6);
    EXPECT_EQ(block.info->objects[5].role.kind, OamdObjectKind::kBed);
}

TEST(OamdiAssign, CountsOfBedMasks) {
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_bed_channels_count(0), 0);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_bed_channels_count(0x1FFFF), 17);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_bed_channels_count(0xFFFE0000), 0);  // beyond the 17
}

TEST(OamdiAssign, StandardMasksHaveWholePairs) {
    for (const std::uint32_t whole :
         {0x00000U, 0x00003U, 0x00004U, 0x00008U, 0x0003FU, 0x1FFFFU, 0x10000U, 0x0C000U}) {
        EXPECT_EQ(AC4_ANALYZE_oamdi_is_std_chan_assign(whole), 1) << whole;
    }
    for (const std::uint32_t half :
         {0x00001U, 0x00002U, 0x00010U, 0x00080U, 0x00100U, 0x00800U, 0x01000U, 0x08000U}) {
        EXPECT_EQ(AC4_ANALYZE_oamdi_is_std_chan_assign(half), 0) << half;
    }
}

TEST(OamdiAssign, MasksFromTheOtherForms) {
    EXPECT_EQ(oamd_mask_from_std(0x3FF), 0x1FFFFU);
    EXPECT_EQ(oamd_mask_from_std(0x00F), 0x0003FU);
    EXPECT_EQ(oamd_mask_from_std(0x200), 0x10000U);
    const int with_lfe[] = {2, 3, 6, 8, 10, 8, 10, 12};
    const int without[] = {2, 3, 5, 7, 9, 7, 9, 11};
    for (std::uint32_t code = 0; code < 8; ++code) {
        EXPECT_EQ(AC4_ANALYZE_oamdi_get_bed_channels_count(oamd_mask_from_code(code, true)),
                  with_lfe[code]);
        EXPECT_EQ(AC4_ANALYZE_oamdi_get_bed_channels_count(oamd_mask_from_code(code, false)),
                  without[code]);
        EXPECT_EQ(AC4_ANALYZE_oamdi_is_std_chan_assign(oamd_mask_from_code(code, true)), 1);
    }
    EXPECT_EQ(oamd_mask_from_code(8, true), 0U);
}

TEST(OamdiFields, AccessorsStoreAndGiveBack) {
    Block block(3, 1, 2);
    OamdMdUpdateInfo update;
    update.ramp_duration[1] = 1536;
    AC4_ANALYZE_oamdi_set_md_update_info(block.info, update, 2);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_md_update_info(block.info)->ramp_duration[1], 1536);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_num_obj_info_blks(block.info), 2);
    AC4_ANALYZE_oamdi_set_md_update_info(block.info, update, 9);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_num_obj_info_blks(block.info), 2);  // the block's limit
    AC4_ANALYZE_oamdi_set_sample_offset(block.info, 24);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_sample_offset(block.info), 24);
    OamdObjInfoBlk values;
    values.position = {1, 2, 3};
    AC4_ANALYZE_oamdi_set_obj_info_blk(block.info, 2, 1, values);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_obj_info_blk(block.info, 2, 1)->position[2], 3);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_all_obj_md(block.info)[2 * 2 + 1].position[0], 1);
    AC4_ANALYZE_oamdi_set_obj_not_active(block.info, 1, 1, true);
    EXPECT_TRUE(AC4_ANALYZE_oamdi_get_obj_not_active(block.info, 1, 1));
    EXPECT_FALSE(AC4_ANALYZE_oamdi_get_obj_not_active(block.info, 1, 0));
    AC4_ANALYZE_oamdi_set_obj_not_active(block.info, 1, 1, false);
    EXPECT_FALSE(AC4_ANALYZE_oamdi_get_obj_not_active(block.info, 1, 1));
    OamdTrimConfig trim;
    trim.height = 9;
    AC4_ANALYZE_oamdi_set_trim_config(block.info, 8, trim);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_trim_config(block.info, 8)->height, 9);
    EXPECT_GT(AC4_ANALYZE_oamdi_get_lib_ver().major_number, 0U);
    EXPECT_GT(AC4_ANALYZE_oamdi_get_md_ver().major_number, 0U);
}

TEST(OamdiFields, TrimsStartAutomatic) {
    Block block(1, 0, 1);
    for (int config = 0; config < kOamdTrimConfigs; ++config) {
        EXPECT_TRUE(AC4_ANALYZE_oamdi_dimensional_trim_is_auto(block.info, config));
        EXPECT_FALSE(AC4_ANALYZE_oamdi_dimensional_trim_is_disabled(block.info, config));
    }
    AC4_ANALYZE_oamdi_dimensional_trim_set_auto(block.info, 4, false);
    AC4_ANALYZE_oamdi_dimensional_trim_set_disabled(block.info, 4, true);
    EXPECT_FALSE(AC4_ANALYZE_oamdi_dimensional_trim_is_auto(block.info, 4));
    EXPECT_TRUE(AC4_ANALYZE_oamdi_dimensional_trim_is_disabled(block.info, 4));
    AC4_ANALYZE_oamdi_set_dimensional_trim_defaults(block.info);
    EXPECT_TRUE(AC4_ANALYZE_oamdi_dimensional_trim_is_auto(block.info, 4));
    EXPECT_FALSE(AC4_ANALYZE_oamdi_dimensional_trim_is_disabled(block.info, 4));
}

TEST(OamdiFields, IndexesOutsideHaveNoEffect) {
    Block block(3, 1, 2);
    for (const int object : {-1, 3}) {
        AC4_ANALYZE_oamdi_set_obj_info_blk(block.info, object, 0, {});
        AC4_ANALYZE_oamdi_set_obj_not_active(block.info, object, 0, true);
        EXPECT_EQ(AC4_ANALYZE_oamdi_get_obj_info_blk(block.info, object, 0), nullptr);
        EXPECT_FALSE(AC4_ANALYZE_oamdi_get_obj_not_active(block.info, object, 0));
    }
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_obj_info_blk(block.info, 0, 2), nullptr);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_trim_config(block.info, 9), nullptr);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_trim_config(block.info, -1), nullptr);
    AC4_ANALYZE_oamdi_set_trim_config(block.info, 9, {});
    EXPECT_FALSE(AC4_ANALYZE_oamdi_dimensional_trim_is_auto(block.info, 9));
}

TEST(OamdiFields, NullBlockHasNoEffect) {
    AC4_ANALYZE_oamdi_reset(nullptr);
    AC4_ANALYZE_oamdi_set_dimensional_trim_defaults(nullptr);
    AC4_ANALYZE_oamdi_set_md_update_info(nullptr, {}, 1);
    AC4_ANALYZE_oamdi_set_sample_offset(nullptr, 1);
    AC4_ANALYZE_oamdi_set_obj_info_blk(nullptr, 0, 0, {});
    AC4_ANALYZE_oamdi_set_obj_not_active(nullptr, 0, 0, true);
    AC4_ANALYZE_oamdi_set_trim_config(nullptr, 0, {});
    AC4_ANALYZE_oamdi_dimensional_trim_set_auto(nullptr, 0, true);
    AC4_ANALYZE_oamdi_dimensional_trim_set_disabled(nullptr, 0, true);
    EXPECT_EQ(AC4_ANALYZE_oamdi_set_prog_assign(nullptr, {}), 0);
    EXPECT_EQ(AC4_ANALYZE_oamdi_duplicate(nullptr, nullptr), 0);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_md_update_info(nullptr), nullptr);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_sample_offset(nullptr), 0);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_obj_info_blk(nullptr, 0, 0), nullptr);
    EXPECT_FALSE(AC4_ANALYZE_oamdi_get_obj_not_active(nullptr, 0, 0));
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_num_obj_info_blks(nullptr), 0);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_obj_count(nullptr), 0);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_prog_assign(nullptr), nullptr);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_all_obj_md(nullptr), nullptr);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_init_info(nullptr).max_objects, 0);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_trim_config(nullptr, 0), nullptr);
    EXPECT_FALSE(AC4_ANALYZE_oamdi_dimensional_trim_is_auto(nullptr, 0));
    EXPECT_EQ(AC4_ANALYZE_apply_prog_assign({}, nullptr, 0), 1);
}

TEST(OamdiDuplicate, CopiesIntoALargerBlock) {
    Block from(3, 1, 2);
    AC4_ANALYZE_oamdi_set_prog_assign(from.info, bed_and_dynamic(7, 0));
    OamdObjInfoBlk values;
    values.gain = -7;
    AC4_ANALYZE_oamdi_set_obj_info_blk(from.info, 2, 1, values);
    AC4_ANALYZE_oamdi_set_obj_not_active(from.info, 1, 1, true);
    AC4_ANALYZE_oamdi_set_sample_offset(from.info, 8);
    Block to(5, 2, 4);
    EXPECT_EQ(AC4_ANALYZE_oamdi_duplicate(from.info, to.info), 0);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_obj_info_blk(to.info, 2, 1)->gain, -7);
    EXPECT_TRUE(AC4_ANALYZE_oamdi_get_obj_not_active(to.info, 1, 1));
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_sample_offset(to.info), 8);
    EXPECT_EQ(to.info->objects[2].role.channel, 2);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_obj_count(to.info), 3);
    EXPECT_EQ(to.info->beds[0].object_count, 3);
}

TEST(OamdiDuplicate, RefusesASmallerBlock) {
    Block from(3, 1, 2);
    Block fewer_objects(2, 1, 2);
    Block fewer_beds(3, 0, 2);
    Block fewer_blocks(3, 1, 1);
    AC4_ANALYZE_oamdi_set_sample_offset(fewer_blocks.info, 16);
    EXPECT_EQ(AC4_ANALYZE_oamdi_duplicate(from.info, fewer_objects.info), 1);
    EXPECT_EQ(AC4_ANALYZE_oamdi_duplicate(from.info, fewer_beds.info), 1);
    EXPECT_EQ(AC4_ANALYZE_oamdi_duplicate(from.info, fewer_blocks.info), 1);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_sample_offset(fewer_blocks.info), 16);
}

TEST(OamdiReset, GivesBackTheDefaultsAndKeepsTheSizes) {
    Block block(3, 1, 2);
    AC4_ANALYZE_oamdi_set_prog_assign(block.info, bed_and_dynamic(7, 0));
    AC4_ANALYZE_oamdi_set_sample_offset(block.info, 8);
    AC4_ANALYZE_oamdi_set_obj_not_active(block.info, 1, 1, true);
    AC4_ANALYZE_oamdi_reset(block.info);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_obj_count(block.info), 0);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_sample_offset(block.info), 0);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_num_obj_info_blks(block.info), 1);
    EXPECT_FALSE(AC4_ANALYZE_oamdi_get_obj_not_active(block.info, 1, 1));
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_init_info(block.info).max_blocks, 2);
}

TEST(OamdiQ15, MagnitudeIsLimited) {
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_smag_Q15(-32768).magnitude, 32767);
    EXPECT_TRUE(AC4_ANALYZE_oamdi_get_smag_Q15(-32768).negative);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_smag_Q15(40000).magnitude, 32767);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_smag_Q15(INT32_MIN).magnitude, 32767);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_smag_Q15(5).magnitude, 5);
    EXPECT_FALSE(AC4_ANALYZE_oamdi_get_smag_Q15(5).negative);
}

TEST(OamdiQ15, TruncationEndsAtWholeAndZero) {
    EXPECT_EQ(AC4_ANALYZE_oamdi_truncate_from_Q15(62, 32767), 62);
    EXPECT_EQ(AC4_ANALYZE_oamdi_truncate_from_Q15(62, 99999), 62);
    EXPECT_EQ(AC4_ANALYZE_oamdi_truncate_from_Q15(62, -5), 0);
    EXPECT_EQ(AC4_ANALYZE_oamdi_truncate_from_Q15(62, 16383), 31);
    EXPECT_EQ(AC4_ANALYZE_oamdi_truncate_from_Q15(62, 16382), 30);
}

TEST(OamdiQ15, RoundsToNearest) {
    EXPECT_EQ(AC4_ANALYZE_oamdi_round_from_Q15_away_from_zero(15, 16384), 8);  // 7.5
    EXPECT_EQ(AC4_ANALYZE_oamdi_round_from_Q15_away_from_zero(15, 16383), 7);
    EXPECT_EQ(AC4_ANALYZE_oamdi_round_from_Q15_away_from_zero(62, 32767), 62);
    EXPECT_EQ(AC4_ANALYZE_oamdi_round_from_Q15_away_from_zero(62, 0), 0);
}

TEST(OamdiQ15, RoundsAwayFromTheMiddleOnBothSides) {
    // 16 steps: half a step above and below the middle goes one step out.
    EXPECT_EQ(AC4_ANALYZE_oamdi_round_from_Q15_away_from_half(16, 16384), 8);
    EXPECT_EQ(AC4_ANALYZE_oamdi_round_from_Q15_away_from_half(16, 16384 + 1024), 9);
    EXPECT_EQ(AC4_ANALYZE_oamdi_round_from_Q15_away_from_half(16, 16384 - 1024), 7);
    EXPECT_EQ(AC4_ANALYZE_oamdi_round_from_Q15_away_from_half(16, 16384 + 1023), 8);
    EXPECT_EQ(AC4_ANALYZE_oamdi_round_from_Q15_away_from_half(16, 16384 - 1023), 8);
    EXPECT_EQ(AC4_ANALYZE_oamdi_round_from_Q15_away_from_half(16, 0), 0);
    EXPECT_EQ(AC4_ANALYZE_oamdi_round_from_Q15_away_from_half(16, 32767), 16);
}

}  // namespace
}  // namespace mediasplit
