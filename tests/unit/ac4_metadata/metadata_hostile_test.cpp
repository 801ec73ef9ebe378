#include <gtest/gtest.h>

#include <array>
#include <random>
#include <vector>

#include "ac4/metadata/oamd_substream.h"
#include "ac4/metadata/presentation_substream.h"
#include "ac4/metadata/substream_metadata.h"
#include "tests/unit/ac4_metadata/metadata_test_reader.h"

namespace mediasplit {
namespace {

constexpr std::array<OamdObjectKind, 3> kObjects = {
    OamdObjectKind::kLfeBed, OamdObjectKind::kDynamic, OamdObjectKind::kDynamic};

bool is_known(std::uint32_t code) {
    return !metadata_is_fatal(code) || code == kMetadataImsVersion || code == kMetadataRanOut ||
           code == kMetadataTooLong;
}

// All readers over the same bytes, with facts drawn from `random`.
void read_everything(const std::vector<std::uint8_t>& data, std::mt19937& random,
                     Ac4MetadataState& state) {
    const auto pick = [&random](int low, int high) {
        return low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
    };
    SubstreamFacts facts;
    facts.ch_mode = pick(-1, 16);
    facts.sus_ver = pick(0, 1);
    facts.b_iframe = pick(0, 1) == 1;
    facts.b_associated = pick(0, 1) == 1;
    facts.b_dialog = pick(0, 1) == 1;
    facts.b_object_coded = facts.ch_mode < 0;
    facts.frame_length = std::array{1920, 2048, 384, 7}[static_cast<std::size_t>(pick(0, 3))];
    facts.objects = {kObjects, pick(0, 8), pick(0, 1) == 1, pick(0, 1) == 1};
    SubstreamMetadata metadata;
    EXPECT_TRUE(is_known(ac4analyze_get_substream_metadata(&state, pick(-1, 129), data.data(),
                                                           data.size(), facts, &metadata)));
    PresentationFacts presentation;
    presentation.b_alternative = pick(0, 1) == 1;
    presentation.b_pres_ndot = pick(0, 1) == 1;
    presentation.n_substreams = pick(0, 300);
    presentation.n_substream_groups = pick(0, 9);
    presentation.ch_mode = pick(-1, 16);
    presentation.core_ch_mode = pick(-1, 6);
    presentation.b_4_back_channels_present = pick(0, 1) == 1;
    presentation.top_channel_pairs = pick(0, 3);
    presentation.b_objects = pick(0, 1) == 1;
    presentation.frame_length = facts.frame_length;
    PresentationMetadata out;
    EXPECT_TRUE(is_known(ac4analyze_parse_ac4_presentation_substream(
        &state, pick(-1, 65), data.data(), data.size(), presentation, &out)));
    EmdfContext context;
    EXPECT_TRUE(is_known(ac4analyze_parse_emdf_payloads_substream(
        &state, pick(-1, 129), data.data(), data.size(), &context)));
    OamdSubstream oamd;
    EXPECT_TRUE(is_known(
        ac4analyze_parse_oamd_substream(data.data(), data.size(), facts.objects, &oamd, nullptr)));
}

TEST(HostileMetadata, RandomBitsGiveKnownCodes) {
    std::mt19937 random(20);
    Ac4MetadataState state;
    for (int round = 0; round < 20000; ++round) {
        std::vector<std::uint8_t> data(random() % 200);
        for (std::uint8_t& byte : data) {
            byte = static_cast<std::uint8_t>(random());
        }
        if (data.size() > 2 && random() % 2 == 0) {
            data[0] = 0;  // little audio, so that the metadata is reached
            data[1] = static_cast<std::uint8_t>(random() % 8);
        }
        read_everything(data, random, state);
    }
}

TEST(HostileMetadata, EndlessOnesAndZerosEnd) {
    std::mt19937 random(21);
    Ac4MetadataState state;
    for (const int fill : {0x00, 0xFF, 0x55, 0xAA, 0x24, 0xDB}) {
        for (const std::size_t size : {1U, 2U, 3U, 64U, 100000U}) {
            for (int round = 0; round < 20; ++round) {
                std::vector<std::uint8_t> data(size, static_cast<std::uint8_t>(fill));
                data[0] = 0;
                read_everything(data, random, state);
            }
        }
    }
}

TEST(HostileMetadata, EveryFlippedBitOfARichSubstreamGivesAKnownCode) {
    SubstreamText text;
    text.sus_ver = 0;
    text.ch_mode = 6;
    text.audio_bytes = 3;
    text.basic.more = true;
    text.basic.loudness = LoudnessText{};
    text.basic.loudness->extension = "1011";
    text.extended.classifier = true;
    text.extended.active = 0xFFF;
    DrcModeText gains;
    gains.gains_config = 3;
    text.drc = DrcText{};
    text.drc->modes = {gains};
    text.drc->gain_sets = {{.codes = std::string(3 * 4 * 6 * 2, '1')}};
    EmdfText payload;
    payload.id = 18;
    payload.payload = write_ims({});
    text.emdf = std::vector<EmdfText>{payload};
    std::vector<std::uint8_t> data = write_substream(text);
    std::mt19937 random(22);
    Ac4MetadataState state;
    for (std::size_t bit = 0; bit < data.size() * 8; ++bit) {
        data[bit / 8] ^= static_cast<std::uint8_t>(0x80U >> bit % 8);
        for (int round = 0; round < 8; ++round) {
            read_everything(data, random, state);
        }
        data[bit / 8] ^= static_cast<std::uint8_t>(0x80U >> bit % 8);
    }
}

}  // namespace
}  // namespace mediasplit
