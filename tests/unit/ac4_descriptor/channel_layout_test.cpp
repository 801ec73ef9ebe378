#include "ac4/descriptor_generator/channel_layout.h"

#include <gtest/gtest.h>

#include <map>

namespace mediasplit {
namespace {

TEST(ChannelLayout, ModeOfEachCode) {
    const std::map<std::int32_t, std::int32_t> modes = {
        {2, 0},    {4, 1},    {8, 1},    {10, 1},    {24, 2},    {26, 3},
        {28, 4},   {240, 5},  {242, 6},  {244, 7},   {246, 8},   {248, 9},
        {250, 10}, {504, 11}, {506, 12}, {1016, 13}, {1018, 14}, {1020, 15}};
    for (std::int32_t code = -2; code < 1100; ++code) {
        const auto row = modes.find(code);
        EXPECT_EQ(convert_2_ac4_ch_mode(code), row != modes.end() ? row->second : -1) << code;
    }
}

TEST(ChannelLayout, ChannelsOfEachMode) {
    constexpr std::uint32_t kChannels[] = {1, 2, 3, 5, 6, 7, 8, 7, 8, 7, 8, 11, 12, 13, 14, 24};
    for (std::uint32_t mode = 0; mode < 40; ++mode) {
        EXPECT_EQ(chmode_2_channel_count(mode), mode < 16 ? kChannels[mode] : 0U) << mode;
    }
    EXPECT_EQ(chmode_2_channel_count(0xFFFFFFFF), 0U);
}

TEST(ChannelLayout, ChannelsOfEachMaskBit) {
    constexpr std::uint32_t kWeights[] = {2, 1, 2, 2, 2, 2, 1, 2, 2, 1, 1, 1, 1, 2, 1, 1, 2, 2, 2};
    std::uint32_t sum = 0;
    for (std::uint32_t bit = 0; bit < 32; ++bit) {
        const std::uint32_t weight = bit < 19 ? kWeights[bit] : 0;
        EXPECT_EQ(channel_mask_v1_to_channel_count(1U << bit), weight) << bit;
        sum += weight;
    }
    EXPECT_EQ(channel_mask_v1_to_channel_count(0), 0U);
    EXPECT_EQ(channel_mask_v1_to_channel_count(0xFFFFFFFF), sum);
    EXPECT_EQ(channel_mask_v1_to_channel_count(71), 6U);
}

TEST(ChannelLayout, SchemeOfEachWord) {
    const std::map<std::uint32_t, std::int32_t> schemes = {
        {1, 2},        {2, 1},        {3, 3},        {5, 10},       {7, 5},        {71, 6},
        {79, 12},      {87, 14},      {119, 16},     {127, 19},     {2679, 17},    {2687, 18},
        {5215, 15},    {32769, 9},    {32771, 4},    {32839, 11},   {0x1007F, 20}, {0x20047, 7},
        {0x2FF7F, 13}, {0x40047, 14}, {0x40067, 16}, {0x4006F, 19}, {0x40A67, 17}, {0x40A6F, 18},
        {0x4144F, 15}, {0x5006F, 20}, {0x6FF6F, 13}};
    for (std::uint32_t word = 0; word < 0x80000; ++word) {
        const auto row = schemes.find(word);
        ASSERT_EQ(mapping_ac4_channel_config_to_mpeg_scheme(word),
                  row != schemes.end() ? row->second : -1)
            << word;
    }
    EXPECT_EQ(mapping_ac4_channel_config_to_mpeg_scheme(0x800000), -1);
}

// Modes without flags have one mask whatever the flags say.
TEST(ChannelLayout, MaskOfEachModeWithoutFlags) {
    const std::map<std::uint32_t, std::uint32_t> masks = {
        {0, 2},        {1, 1},        {2, 3},  {3, 7},  {4, 71},
        {5, 0x20007},  {6, 0x20047},  {7, 15}, {8, 79}, {9, 0x40007},
        {10, 0x40047}, {15, 0x2FF7F}, {16, 1}, {31, 1}, {0xFFFFFFFF, 1}};
    for (const auto& [mode, mask] : masks) {
        for (const bool back : {false, true}) {
            for (const bool centre : {false, true}) {
                for (std::uint32_t pairs = 0; pairs < 4; ++pairs) {
                    EXPECT_EQ(get_channel_mask_v1(mode, pairs, back, centre), mask) << mode;
                }
            }
        }
    }
}

// The centre flag deliberately rules bit 3.
TEST(ChannelLayout, MaskOfEachModeWithFlags) {
    struct Case {
        std::uint32_t mode;
        std::uint32_t plain;
        std::uint32_t with_4_back;
    };
    for (const Case& each : {Case{11, 13, 15}, Case{12, 77, 79}, Case{13, 0x10005, 0x10007},
                             Case{14, 0x10045, 0x10047}}) {
        for (const bool back : {false, true}) {
            for (const bool centre : {false, true}) {
                for (std::uint32_t pairs = 0; pairs < 4; ++pairs) {
                    std::uint32_t mask = back ? each.with_4_back : each.plain;
                    mask |= pairs == 1 ? 0x80 : 0;
                    mask |= pairs == 2 ? 0x30 : 0;
                    mask = centre ? mask | 8 : mask & ~8U;
                    EXPECT_EQ(get_channel_mask_v1(each.mode, pairs, back, centre), mask)
                        << each.mode << back << centre << pairs;
                }
            }
        }
    }
}

TEST(ChannelLayout, CountOfEachPlainMode) {
    const std::map<std::int32_t, std::uint32_t> counts = {
        {2, 1},   {4, 2},   {8, 2},   {10, 2},  {24, 3},    {26, 5},   {28, 6}, {240, 7}, {242, 8},
        {244, 7}, {246, 8}, {248, 7}, {250, 8}, {1020, 24}, {1022, 0}, {0, 0},  {3, 0}};
    for (const auto& [code, count] : counts) {
        AnalysisPresentation presentation;
        presentation.channel_mode = code;
        presentation.b_4_back_channels_present = true;
        presentation.b_centre_present = true;
        presentation.top_channels_present = 2;
        EXPECT_EQ(channel_layout_count(presentation), count) << code;
    }
}

TEST(ChannelLayout, CountOfModesWithFlagsFollowsTheFlags) {
    const std::map<std::int32_t, std::uint32_t> fixed = {{504, 2}, {506, 3}, {1016, 4}, {1018, 5}};
    constexpr std::uint32_t kTop[] = {0, 2, 4, 0};
    for (const auto& [code, count] : fixed) {
        for (const bool back : {false, true}) {
            for (const bool centre : {false, true}) {
                for (std::int32_t top = 0; top < 4; ++top) {
                    AnalysisPresentation presentation;
                    presentation.channel_mode = code;
                    presentation.b_4_back_channels_present = back;
                    presentation.b_centre_present = centre;
                    presentation.top_channels_present = top;
                    EXPECT_EQ(channel_layout_count(presentation),
                              count + (back ? 4 : 2) + (centre ? 1 : 0) + kTop[top]);
                }
            }
        }
    }
}

}  // namespace
}  // namespace mediasplit
