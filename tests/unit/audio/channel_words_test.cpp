#include "src/audio/channel_words.h"

#include <gtest/gtest.h>

#include <map>
#include <vector>

namespace mediasplit {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(ChannelWords, EachCodingModeHasItsChannels) {
    const std::vector<std::uint32_t> words = {0, 0x4000, 0xA000, 0xE000, 0, 0, 0xB800, 0xF800};
    for (std::uint32_t acmod = 0; acmod < words.size(); ++acmod) {
        EXPECT_EQ(acmod_to_channel_config(acmod), words[acmod]) << acmod;
    }
    EXPECT_EQ(acmod_to_channel_config(8), 0U);
    EXPECT_EQ(acmod_to_channel_config(0xFFFFFFFF), 0U);
}

TEST(ChannelWords, ModesTwoOneAndThreeOneHaveNoChannelsDeliberately) {
    EXPECT_EQ(calculate_ec3_channel_count(acmod_to_channel_config(4)), 0U);
    EXPECT_EQ(calculate_ec3_channel_count(acmod_to_channel_config(5)), 0U);
}

TEST(ChannelWords, PairsCountAsTwo) {
    const std::vector<std::uint32_t> counts = {1, 1, 2, 1, 2, 2, 2, 1, 1, 2, 2, 1, 1, 1, 1, 1};
    for (std::uint32_t bit = 0; bit < 16; ++bit) {
        EXPECT_EQ(calculate_ec3_channel_count(1U << bit), counts[bit]) << bit;
    }
    EXPECT_EQ(calculate_ec3_channel_count(0xFFFF), 22U);
    EXPECT_EQ(calculate_ec3_channel_count(0xFFFF0000), 0U);
    EXPECT_EQ(calculate_ec3_channel_count(0xF801), 6U);
}

TEST(ChannelWords, CicpNumbers) {
    const std::map<std::uint32_t, std::int32_t> schemes = {
        {0x4000, 1},  {0xA000, 2},  {0xE000, 3},  {0xE100, 4},  {0xF800, 5},
        {0xF801, 6},  {0xF821, 7},  {0xA100, 9},  {0xB800, 10}, {0xE301, 11},
        {0xFA01, 12}, {0xF811, 14}, {0xF815, 16}, {0xF89D, 17}, {0xE255, 19}};
    for (std::uint32_t word = 0; word <= 0x1FFFF; ++word) {
        const auto row = schemes.find(word);
        EXPECT_EQ(mapping_ec3_channel_config_to_mpeg_scheme(word),
                  row == schemes.end() ? -1 : row->second);
    }
}

// 640 kbit/s, one substream of fscod 0 and bsid 16.
TEST(ChannelWords, BoxWithoutDependentsGivesModeAndLfe) {
    EXPECT_EQ(extract_audio_config_value_dec3(Bytes{0x14, 0x00, 0x20, 0x0F, 0x00}), 0xF801U);
    EXPECT_EQ(extract_audio_config_value_dec3(Bytes{0x14, 0x00, 0x20, 0x04, 0x00}), 0xA000U);
}

TEST(ChannelWords, LocationsOfTheBoxAreSpreadFromBitTenDown) {
    for (std::uint32_t bit = 0; bit < 9; ++bit) {
        const std::uint32_t chan_loc = 1U << bit;
        const Bytes box = {0x14,
                           0x00,
                           0x20,
                           0x0F,
                           static_cast<std::uint8_t>(2 | chan_loc >> 8),
                           static_cast<std::uint8_t>(chan_loc)};
        EXPECT_EQ(extract_audio_config_value_dec3(box), 0xF801U | 1U << (10 - bit)) << bit;
    }
}

TEST(ChannelWords, LastSubstreamOfTheBoxCounts) {
    // Two substreams: 3/2 with LFE and a dependent one with Lrs/Rrs, then stereo.
    EXPECT_EQ(extract_audio_config_value_dec3(
                  Bytes{0x14, 0x01, 0x20, 0x0F, 0x02, 0x02, 0x20, 0x04, 0x00}),
              0xA000U);
}

TEST(ChannelWords, CutBoxReadsAsZeros) {
    const Bytes box = {0x14, 0x07, 0x20, 0x0F, 0x03, 0xFF};
    for (std::size_t size = 0; size < box.size(); ++size) {
        EXPECT_EQ(extract_audio_config_value_dec3(std::span(box).first(size)), 0U) << size;
    }
}

}  // namespace
}  // namespace mediasplit
