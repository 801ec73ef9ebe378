#include "src/audio/channel_words.h"

#include <algorithm>
#include <array>
#include <bit>
#include <iterator>

#include "src/util/bit_reader.h"

namespace mediasplit {

namespace {

constexpr std::array<std::uint32_t, 8> kModeChannels = {0, 0x4000, 0xA000, 0xE000,
                                                        0, 0,      0xB800, 0xF800};

// Locations that stand for one channel: all from Left to Rs, Cs, Ts, Cvh, LFE2 and LFE.
constexpr std::uint32_t kSingles = 0xF98B;
// Locations that stand for a pair.
constexpr std::uint32_t kPairs = 0x0674;

// Location of bit 0 of `chan_loc`; each bit above it is one location further down.
constexpr std::uint32_t kFirstLocation = 10;
constexpr std::uint32_t kLocations = 9;

struct SchemeRow {
    std::uint32_t word;
    std::int32_t scheme;
};

constexpr SchemeRow kSchemes[] = {
    {0x4000, 1},  {0xA000, 2},  {0xE000, 3},  {0xE100, 4},  {0xF800, 5},
    {0xF801, 6},  {0xF821, 7},  {0xA100, 9},  {0xB800, 10}, {0xE301, 11},
    {0xFA01, 12}, {0xF811, 14}, {0xF815, 16}, {0xF89D, 17}, {0xE255, 19},
};

std::uint32_t locations_of(std::uint32_t chan_loc) {
    std::uint32_t word = 0;
    for (std::uint32_t bit = 0; bit < kLocations; ++bit) {
        word |= (chan_loc >> bit & 1) << (kFirstLocation - bit);
    }
    return word;
}

}  // namespace

std::uint32_t acmod_to_channel_config(std::uint32_t acmod) {
    return acmod < kModeChannels.size() ? kModeChannels[acmod] : 0;
}

std::uint32_t calculate_ec3_channel_count(std::uint32_t word) {
    return static_cast<std::uint32_t>(std::popcount(word & kSingles) +
                                      2 * std::popcount(word & kPairs));
}

std::uint32_t extract_audio_config_value_dec3(std::span<const std::uint8_t> payload) {
    std::uint32_t position = 0;
    const auto bits = [&](std::uint32_t count) { return read_uint32(position, payload, count); };
    bits(13);  // data_rate
    const std::uint32_t substreams = bits(3) + 1;
    std::uint32_t word = 0;
    for (std::uint32_t i = 0; i < substreams; ++i) {
        bits(12);  // fscod, bsid, a reserved bit, asvc, bsmod
        const std::uint32_t acmod = bits(3);
        const std::uint32_t lfeon = bits(1);
        bits(3);
        const bool has_dependents = bits(4) != 0;
        const std::uint32_t chan_loc = bits(has_dependents ? 9 : 1);
        word =
            acmod_to_channel_config(acmod) | lfeon | (has_dependents ? locations_of(chan_loc) : 0);
    }
    return word;
}

std::int32_t mapping_ec3_channel_config_to_mpeg_scheme(std::uint32_t word) {
    const auto* const row = std::find_if(std::begin(kSchemes), std::end(kSchemes),
                                         [&](const SchemeRow& at) { return at.word == word; });
    return row == std::end(kSchemes) ? -1 : row->scheme;
}

}  // namespace mediasplit
