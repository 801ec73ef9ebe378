#include "ac4/metadata/oamd_substream.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "ac4/metadata/metadata_codes.h"
#include "tests/unit/ac4_metadata/metadata_test_reader.h"

namespace mediasplit {
namespace {

struct Block {
    Block(int objects, int blocks) : memory(AC4_ANALYZE_oamdi_query_mem(objects, 1, blocks)) {
        info = AC4_ANALYZE_oamdi_init(memory.data(), objects, 1, blocks);
    }
    std::vector<std::uint8_t> memory;
    oamdi* info = nullptr;
};

OamdCommonData read_common(const MetadataBits& bits) {
    TestReader reader(bits);
    OamdCommonData out;
    oamd_read_common_data(reader.in, out);
    EXPECT_TRUE(field_ok(reader.in));
    EXPECT_EQ(reader.position(), bits.size());
    return out;
}

TEST(OamdCommonData, DefaultsAreThreeBits) {
    const MetadataBits bits = write_oamd_common({});
    EXPECT_EQ(bits.size(), 3U);
    const OamdCommonData out = read_common(bits);
    EXPECT_FALSE(out.master_screen_size_ratio.present);
    EXPECT_FALSE(out.b_bed_object_chan_distribute);
    EXPECT_EQ(out.additional_bytes, 0U);
}

TEST(OamdCommonData, ScreenRatioAndDistribution) {
    OamdCommonText text;
    text.screen_ratio = 19;
    text.distribute = true;
    const OamdCommonData out = read_common(write_oamd_common(text));
    EXPECT_EQ(out.master_screen_size_ratio, (CodedField{true, 19}));
    EXPECT_TRUE(out.b_bed_object_chan_distribute);
}

TEST(OamdCommonData, AdditionalDataIsSteppedOverByItsCount) {
    for (const std::size_t bytes : {1U, 2U, 3U, 9U, 100U}) {
        for (const char fill : {'0', '1'}) {
            OamdCommonText text;
            text.additional = std::string(bytes * 8, fill);
            EXPECT_EQ(read_common(write_oamd_common(text)).additional_bytes, bytes);
        }
    }
}

TEST(OamdCommonData, NineTrims) {
    std::vector<TrimText> trims(9);
    trims[1] = {false, true, {}};
    trims[2] = {false, false, {1, 2, 3, 4, 0x15}};
    trims[3] = {false, false, {std::nullopt, 12, std::nullopt, 0x1F, std::nullopt}};
    OamdCommonText text;
    text.additional = write_trim(2, 2, trims).text();
    const OamdCommonData out = read_common(write_oamd_common(text));
    EXPECT_TRUE(out.b_trim_present);
    EXPECT_EQ(out.warp_mode, 2);
    EXPECT_EQ(out.global_trim_mode, 2);
    EXPECT_EQ(out.trim_config[0].flags, kTrimAuto);
    EXPECT_EQ(out.trim_config[1].flags, kTrimDisabled);
    EXPECT_EQ(out.trim_config[2].flags, 31 << kTrimPresenceShift);
    EXPECT_EQ(out.trim_config[2].centre_surround, 0x12);
    EXPECT_EQ(out.trim_config[2].height, 3);
    EXPECT_EQ(out.trim_config[2].balance_top_bottom, 4);
    EXPECT_EQ(out.trim_config[2].balance_listener, -5);
    EXPECT_EQ(out.trim_config[3].flags, 0x0A << kTrimPresenceShift);
    EXPECT_EQ(out.trim_config[3].centre_surround, 0x0C);
    EXPECT_EQ(out.trim_config[3].balance_top_bottom, -15);
    EXPECT_EQ(out.trim_config[8].flags, kTrimAuto);
}

// No trim; then the bed downmix with LFE gain; every pair and tool; then the headphone fields.
TEST(OamdCommonData, BedRenderInfoAndHeadphone) {
    MetadataBits body = MetadataBits().code("0").code("1");
    StereoDownmixText downmix{4, 3, std::nullopt, std::pair{2U, 1U}, std::nullopt, 30, 1};
    body.add(write_stereo_downmix(downmix, false, true));
    body.code("1").code("1 101").code("1 011");        // w to f, b4 to b2
    body.code("1").code("1 0 1 111").code("1 1 000");  // tm: three-way, two-way
    body.code("1").code("1 1 010").code("0");          // tb
    body.code("0");                                    // tf
    body.code("1 110");                                // tfb to tm
    body.code("1 010 1");
    OamdCommonText text;
    text.additional = body.text();
    const OamdCommonData out = read_common(write_oamd_common(text));
    EXPECT_TRUE(out.b_bed_render_info);
    EXPECT_EQ(out.bed_downmix.loro_centre_mixgain, 4);
    EXPECT_EQ(out.bed_downmix.ltrt_surround_mixgain, 1);
    EXPECT_EQ(out.bed_downmix.lfe_mixgain, (CodedField{true, 30}));
    EXPECT_EQ(out.bed_downmix.preferred_dmx_method, 1);
    EXPECT_TRUE(out.b_headphone);
    EXPECT_EQ(out.hp_operation_mode, 2);
    EXPECT_TRUE(out.b_head_track_disable_all);
}

TEST(OamdCommonData, TopFrontAndBackPairsShareOneGain) {
    // No top pair in front or at the back: no gain to the middle; the headphone flag follows.
    const MetadataBits body = MetadataBits().code("0 1 0 1 0 0 0 0 0").code("1 011");
    OamdCommonText text;
    text.additional = body.text();
    const OamdCommonData out = read_common(write_oamd_common(text));
    EXPECT_TRUE(out.b_headphone);
    EXPECT_EQ(out.hp_operation_mode, 3);
}

TEST(OamdCommonData, CountBeyondTheDataRunsOut) {
    const MetadataBits bits = MetadataBits().code("1 0 1 1").variable(5, 2).put(0, 30);
    TestReader reader(bits);
    OamdCommonData out;
    oamd_read_common_data(reader.in, out);
    EXPECT_EQ(reader.in.error, FieldError::kRanOut);
}

TEST(OamdTimingData, SampleOffsets) {
    const std::pair<const char*, int> cases[] = {
        {"0", 0}, {"10 0", 16}, {"10 10", 8}, {"10 11", 24}, {"11 10111", 23}};
    for (const auto& [code, offset] : cases) {
        OamdTimingText text;
        text.sample_offset = MetadataBits().code(code).text();
        const MetadataBits bits = write_oamd_timing(text);
        TestReader reader(bits);
        OamdTiming out;
        oamd_read_timing(reader.in, out);
        EXPECT_EQ(out.sample_offset, offset);
        EXPECT_EQ(reader.position(), bits.size());
    }
}

TEST(OamdTimingData, RampsOfEachForm) {
    OamdTimingText text;
    text.blocks = {{1, "00"},     {2, "01"}, {3, "10"}, {4, "11 1 0111"}, {63, "11 0 00000010001"},
                   {5, "1111111"}};
    const MetadataBits bits = write_oamd_timing(text);
    TestReader reader(bits);
    OamdTiming out;
    oamd_read_timing(reader.in, out);
    EXPECT_EQ(reader.position(), bits.size());
    EXPECT_EQ(out.num_obj_info_blocks, 6);
    const int ramps[] = {0, 512, 1536, 1001, 17, 2048};
    for (std::size_t block = 0; block < 6; ++block) {
        EXPECT_EQ(out.update.ramp_duration[block], ramps[block]);
    }
    EXPECT_EQ(out.update.block_offset_factor[4], 63);
}

// One object, one block; the bits must be taken whole.
struct ObjectRun {
    explicit ObjectRun(int blocks = 1) : block(1, blocks) {}

    const OamdObjInfoBlk& read(const char* code, OamdObjectKind kind, bool ndot, int blocks = 1) {
        const MetadataBits bits = MetadataBits().code(code);
        TestReader reader(bits);
        const std::array<OamdObjectKind, 1> kinds = {kind};
        oamd_read_dyndata(reader.in, {kinds, blocks, ndot, false}, false, block.info);
        EXPECT_TRUE(field_ok(reader.in)) << code;
        EXPECT_EQ(reader.position(), bits.size()) << code;
        return *AC4_ANALYZE_oamdi_get_obj_info_blk(block.info, 0, blocks - 1);
    }

    Block block;
};

constexpr auto kDynamic = OamdObjectKind::kDynamic;
constexpr auto kBed = OamdObjectKind::kBed;

TEST(OamdObjectBlocks, NotActiveHasNoInfo) {
    ObjectRun run;
    run.read("1 0", kDynamic, true);
    EXPECT_TRUE(AC4_ANALYZE_oamdi_get_obj_not_active(run.block.info, 0, 0));
    run.read("0 1 0", kBed, true);
    EXPECT_FALSE(AC4_ANALYZE_oamdi_get_obj_not_active(run.block.info, 0, 0));
}

TEST(OamdObjectBlocks, BasicInfoForms) {
    ObjectRun run;
    EXPECT_EQ(run.read("0 1 0", kBed, true).gain, 0);              // default
    EXPECT_EQ(run.read("0 0 0 0 000000 0", kBed, true).gain, 15);  // gain only
    EXPECT_EQ(run.read("0 0 0 0 001111 0", kBed, true).gain, -1);  // there is no code for 0 dB
    EXPECT_EQ(run.read("0 0 0 0 111111 0", kBed, true).gain, -49);
    EXPECT_EQ(run.read("0 0 0 10 0", kBed, true).gain_muted, 1);
    EXPECT_EQ(run.read("0 0 10 11 11111 0", kBed, true).priority, 32767);  // both
    EXPECT_EQ(run.read("0 0 11 00000 0", kBed, true).priority, 0);         // priority only
    EXPECT_EQ(run.read("0 1 0", kBed, false).reused, 1);                   // basic info reused
    EXPECT_EQ(run.read("0 0 1 0", kBed, false).reused, 0);
}

TEST(OamdObjectBlocks, AbsolutePositionZoneAndOther) {
    ObjectRun run;
    const OamdObjInfoBlk& blk = run.read(
        "0 1  000000 111110 0 1111  0 110 101  0 1111 1 11111 00000 11111 101 10 0 1110 10 "
        "111111  0",
        kDynamic, true);
    EXPECT_EQ(blk.position, (std::array<std::int16_t, 3>{0, 32767, -32767}));
    EXPECT_EQ(blk.zone_flags, 6);
    EXPECT_EQ(blk.zone_mask, 5);
    EXPECT_EQ(blk.width, (std::array<std::int16_t, 3>{32767, 0, 32767}));
    EXPECT_EQ(blk.screen_factor_code, 5);
    EXPECT_EQ(blk.depth_factor, 2);
    EXPECT_EQ(blk.distance_code, 15);
    EXPECT_EQ(blk.div_mode, 2);
    EXPECT_EQ(blk.divergence, 32767);
}

TEST(OamdObjectBlocks, RenderFormsOfOtherLengths) {
    ObjectRun run;
    // Zone flags without a mask, one width, at infinity, divergence of the table.
    const OamdObjInfoBlk& blk =
        run.read("0 1  111111 000000 1 0000  0 011  0 1101 0 10000 1 00 11  0", kDynamic, true);
    EXPECT_EQ(blk.zone_mask, 0);
    EXPECT_EQ(blk.width[0], blk.width[2]);
    EXPECT_EQ(blk.at_infinity, 1);
    EXPECT_EQ(blk.divergence, 32767);
    run.read("0 1  111111 000000 1 0000  1  1  0", kDynamic, true);          // all default
    run.read("0 1  111111 000000 1 0000  1  0 1000 01  0", kDynamic, true);  // divergence kept
}

TEST(OamdObjectBlocks, PositionMovesByStepsAndStaysInside) {
    ObjectRun run;
    run.read("0 1  000001 111110 0 0001  1 1  0", kDynamic, true);
    // Not ndot: basic reused, not reused, part: only position, differential: -2, +3, +2.
    const OamdObjInfoBlk& blk = run.read("0 1 0 1 001 1 110 011 010 0", kDynamic, false);
    EXPECT_EQ(blk.position[0], 0);      // 1 - 2 stays at 0
    EXPECT_EQ(blk.position[1], 32767);  // stays at 62 of 62
    EXPECT_EQ(blk.position[2], 2185);   // -1 + 2 = 1 of 15
    const OamdObjInfoBlk& other = run.read("0 1 0 1 001 1 001 000 101 0", kDynamic, false);
    EXPECT_EQ(other.position[0], 529);    // 1 of 62
    EXPECT_EQ(other.position[2], -4369);  // 1 - 3 = -2 of 15
}

TEST(OamdObjectBlocks, ReusedAndPartialRenderInfo) {
    ObjectRun run;
    EXPECT_EQ(run.read("0 1 1 0", kDynamic, false).reused, 1);
    run.read("0 1 0 1 000 0", kDynamic, false);                         // a part with nothing in it
    run.read("0 1 0 1 010 1 0", kDynamic, false);                       // zone only
    run.read("0 1 0 1 100 1 0", kDynamic, false);                       // other only
    run.read("0 1 0 0 0 000000 000000 0 0000 1 1 0", kDynamic, false);  // all new, absolute
}

TEST(OamdObjectBlocks, TableDataIsSteppedOverByItsSize) {
    ObjectRun run;
    const OamdObjInfoBlk& blk =
        run.read("1  1 0001  1 1 10 1 00000000000", kBed, true);  // not active, yet with table data
    EXPECT_EQ(blk.trim_disabled, 1);
    EXPECT_EQ(blk.hp_render_mode, 2);
    // Active dynamic objects have a finer position in it: two axes of two bits.
    run.read("0 1  000000 000000 0 0000 1 1  1 0001  0 1 101 1111 1 01 1 000", kDynamic, true);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_obj_info_blk(run.block.info, 0, 0)->hp_render_mode, 1);
}

TEST(OamdObjectBlocks, OnlyTheFirstBlockIsWithoutReference) {
    ObjectRun run(3);
    run.read("0 1 0  0 1 0  0 0 1 0", kBed, true, 3);
}

TEST(OamdSubstreamData, OfSizeZeroIsDone) {
    OamdSubstream out;
    EXPECT_EQ(ac4analyze_parse_oamd_substream(nullptr, 0, {}, &out, nullptr), kMetadataOk);
}

MetadataBits whole_substream() {
    OamdCommonText common;
    common.additional = write_trim(1, 2, std::vector<TrimText>(9)).text();
    OamdTimingText timing;
    timing.sample_offset = "1111000";
    timing.blocks = {{7, "01"}, {9, "00"}};
    MetadataBits bits = MetadataBits().flag(true).add(write_oamd_common(common));
    bits.flag(true).add(write_oamd_timing(timing));
    bits.code("0 1 0  0 1 0");  // the bed object's two blocks
    bits.code("0 1  000000 000000 0 0000 1 1  0").code("1 0");
    return bits.align();
}

constexpr std::array<OamdObjectKind, 2> kKinds = {kBed, kDynamic};

TEST(OamdSubstreamData, FillsRecordAndBlock) {
    const std::vector<std::uint8_t> data = whole_substream().to_bytes();
    Block block(2, 2);
    OamdSubstream out;
    EXPECT_EQ(ac4analyze_parse_oamd_substream(data.data(), data.size(), {kKinds, 0, true, false},
                                              &out, block.info),
              kMetadataOk);
    EXPECT_TRUE(out.b_oamd_common_data_present && out.b_oamd_timing_present);
    EXPECT_EQ(out.timing.sample_offset, 24);
    EXPECT_EQ(out.timing.num_obj_info_blocks, 2);
    EXPECT_EQ(block.info->warp_mode, 1);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_sample_offset(block.info), 24);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_num_obj_info_blks(block.info), 2);
    EXPECT_EQ(AC4_ANALYZE_oamdi_get_md_update_info(block.info)->ramp_duration[0], 512);
    EXPECT_FALSE(AC4_ANALYZE_oamdi_get_obj_not_active(block.info, 1, 0));
    EXPECT_TRUE(AC4_ANALYZE_oamdi_get_obj_not_active(block.info, 1, 1));
}

TEST(OamdSubstreamData, BlockWithoutRoomDropsWhatIsBeyond) {
    const std::vector<std::uint8_t> data = whole_substream().to_bytes();
    Block block(1, 1);
    for (oamdi* info : {block.info, static_cast<oamdi*>(nullptr)}) {
        OamdSubstream out;
        EXPECT_EQ(ac4analyze_parse_oamd_substream(data.data(), data.size(),
                                                  {kKinds, 0, true, false}, &out, info),
                  kMetadataOk);
    }
}

TEST(OamdSubstreamData, AlternativePresentationsHaveNoObjectsHere) {
    MetadataBits bits = MetadataBits().flag(false).flag(true);
    bits.add(write_oamd_timing({"0", {{1, "00"}}})).align();
    const std::vector<std::uint8_t> data = bits.to_bytes();
    OamdSubstream out;
    EXPECT_EQ(ac4analyze_parse_oamd_substream(data.data(), data.size(), {kKinds, 0, true, true},
                                              &out, nullptr),
              kMetadataOk);
    EXPECT_EQ(out.timing.num_obj_info_blocks, 1);
}

TEST(OamdSubstreamData, CutAtEveryByteRunsOut) {
    const std::vector<std::uint8_t> data = whole_substream().to_bytes();
    for (std::size_t kept = 1; kept < data.size(); ++kept) {
        const std::vector<std::uint8_t> cut(data.begin(),
                                            data.begin() + static_cast<std::ptrdiff_t>(kept));
        OamdSubstream out;
        EXPECT_EQ(ac4analyze_parse_oamd_substream(cut.data(), cut.size(), {kKinds, 0, true, false},
                                                  &out, nullptr),
                  kMetadataRanOut)
            << kept;
    }
}

TEST(OamdAlternativeData, SetsFollowTheObjects) {
    Block block(2, 1);
    // Two inactive objects; ducking disabled, category 3 + 1, two sets.
    MetadataBits bits = MetadataBits().code("1 0 1 0").code("1").escaped(4, 2, 2).escaped(2, 2, 2);
    // Set 0: not kept, own data points; a bed point with gain, a dynamic one with position;
    // additional data of two bytes. Set 1: kept, no additional data.
    bits.code("0 0").code("1 101010").code("0 1 000000 111111 1 1111").code("1");
    bits.variable(1, 2).put(0xABCD, 16).code("1 0");
    TestReader reader(bits);
    oamd_read_dyndata(reader.in, {kKinds, 1, true, true}, true, block.info);
    EXPECT_TRUE(field_ok(reader.in));
    EXPECT_EQ(reader.position(), bits.size());
    EXPECT_EQ(block.info->objects[0].ducking_disabled, 1);
    EXPECT_EQ(block.info->objects[1].sound_category, 4U);
    EXPECT_EQ(block.info->objects[0].alt_data_sets, 2U);
    EXPECT_EQ(block.info->objects[0].alt_gain_code, 42);
    EXPECT_EQ(block.info->objects[1].alt_gain_code, -1);
}

TEST(OamdAlternativeData, CommonDataAndIsfHaveOnePoint) {
    const MetadataBits common =
        MetadataBits().code("1 0 1 0").code("0 00 01").code("0 1").code("0 0").code("0");
    TestReader first(common);
    constexpr std::array<OamdObjectKind, 2> kDynamicPair = {kDynamic, kDynamic};
    oamd_read_dyndata(first.in, {kDynamicPair, 1, true, true}, true, nullptr);
    EXPECT_EQ(first.position(), common.size());
    const MetadataBits isf =
        MetadataBits().code("1 0 1 0").code("0 00 01").code("0").code("0").code("0");
    TestReader second(isf);
    constexpr std::array<OamdObjectKind, 2> kIsfPair = {OamdObjectKind::kIsf, OamdObjectKind::kIsf};
    oamd_read_dyndata(second.in, {kIsfPair, 1, true, true}, true, nullptr);
    EXPECT_EQ(second.position(), isf.size());
}

TEST(OamdAlternativeData, HugeSetCountEndsWithTheData) {
    const MetadataBits bits =
        MetadataBits().code("1 0").code("0 00").escaped(1000000, 2, 2).put(0, 64);
    TestReader reader(bits);
    constexpr std::array<OamdObjectKind, 1> kOne = {kBed};
    oamd_read_dyndata(reader.in, {kOne, 1, true, true}, true, nullptr);
    EXPECT_EQ(reader.in.error, FieldError::kRanOut);
}

}  // namespace
}  // namespace mediasplit
