#include "ac4/metadata/dialogue_enhancement.h"

#include <gtest/gtest.h>

#include <string>

#include "ac4/metadata/huffman_code_books.h"
#include "ac4/metadata/metadata_codes.h"
#include "tests/unit/ac4_metadata/metadata_test_reader.h"

namespace mediasplit {
namespace {

// `count` codes of a method's books; `absolute` puts one absolute code in front.
std::string parameters(std::uint32_t method, int count, bool absolute) {
    std::string codes;
    for (int i = 0; i < count; ++i) {
        const auto pick = static_cast<std::size_t>(i) * 11 + 5;
        if (absolute && i == 0) {
            codes += method % 2 != 0 ? huffman_code_books::kDeAbs1[pick]
                                     : huffman_code_books::kDeAbs0[pick];
        } else {
            codes += method % 2 != 0 ? huffman_code_books::kDeDiff1[pick % 121]
                                     : huffman_code_books::kDeDiff0[pick % 63];
        }
    }
    return codes;
}

struct Outcome {
    std::uint32_t code;
    DialogueEnhancement de;
    std::size_t position;
};

Outcome parse(const MetadataBits& text, DeState& state, bool b_iframe, int ch_mode) {
    TestReader reader(text);
    Outcome out{};
    out.code = parse_dialog_enhancement(reader.in, &out.de, &state, b_iframe, ch_mode);
    out.position = reader.position();
    return out;
}

// Reads a frame that must be good and taken to its last bit.
DialogueEnhancement parse_whole(const DeText& text, DeState& state, bool b_iframe, int ch_mode) {
    const MetadataBits bits = write_de(text);
    const Outcome out = parse(bits, state, b_iframe, ch_mode);
    EXPECT_EQ(out.code, kMetadataOk);
    EXPECT_EQ(out.position, bits.size());
    return out.de;
}

TEST(DialogueEnhancement, ChannelsOfEachConfiguration) {
    const int expected[] = {0, 1, 1, 2, 1, 2, 2, 3};
    for (std::uint32_t config = 0; config < 8; ++config) {
        EXPECT_EQ(de_channel_count(config), expected[config]);
    }
}

TEST(DialogueEnhancement, AbsentIsOneBit) {
    DeState state;
    const Outcome out = parse(write_de(std::nullopt), state, true, 4);
    EXPECT_EQ(out.code, kMetadataOk);
    EXPECT_EQ(out.position, 1U);
    EXPECT_FALSE(out.de.b_de_data_present);
}

// An I-frame: every method with every channel configuration. One absolute code in all, the rest is
// differential, in all channels.
TEST(DialogueEnhancement, IframeHasOneAbsoluteParameterInTheFirstChannelOnly) {
    for (std::uint32_t method = 0; method < 4; ++method) {
        for (std::uint32_t config = 0; config < 8; ++config) {
            for (const bool mid_side : {false, true}) {
                const int channels = de_channel_count(config);
                const bool cross = method % 2 != 0;
                if (mid_side && (cross || channels != 2)) {
                    continue;
                }
                DeText text;
                text.method = method;
                text.max_gain = 3;
                text.channels = config;
                if (channels > 0) {
                    if (cross && channels > 1) {
                        text.data += channels == 3 ? "0101101110" : "01011";
                    }
                    if (!cross && channels == 2) {
                        text.data += mid_side ? "1" : "0";
                    }
                    text.data += parameters(method, (channels - (mid_side ? 1 : 0)) * 8, true);
                    text.data += method > 1 ? "10101" : "";
                }
                DeState state;
                const DialogueEnhancement de = parse_whole(text, state, true, 4);
                EXPECT_TRUE(de.config_present);
                EXPECT_EQ(de.config.de_method, method);
                EXPECT_EQ(de.config.de_channel_config, config);
                EXPECT_EQ(de.config.de_max_gain, 4);
                EXPECT_FLOAT_EQ(de.max_gain_db, 12.0F);
            }
        }
    }
}

TEST(DialogueEnhancement, OtherFramesAreDifferentialThroughout) {
    DeText first;
    first.method = 3;
    first.channels = 7;
    first.data = std::string(10, '0').append(parameters(3, 24, true)).append("00000");
    DeState state;
    ASSERT_EQ(parse(write_de(first), state, true, 4).code, kMetadataOk);

    DeText next;
    next.config_flag = false;
    next.config = false;
    next.data =
        std::string("10").append(parameters(3, 24, false)).append("11111");  // positions kept
    const DialogueEnhancement de = parse_whole(next, state, false, 4);
    EXPECT_FALSE(de.config_present);
    EXPECT_EQ(de.config.de_method, 3);
}

TEST(DialogueEnhancement, NewPositionsComeBeforeTheKeepFlagOfTheData) {
    DeText next;
    next.config_flag = true;
    next.method = 1;
    next.channels = 3;
    next.data = "0101101";  // positions sent, data kept
    DeState state;
    parse_whole(next, state, false, 4);
    EXPECT_TRUE(state.seen);
}

TEST(DialogueEnhancement, KeptDataEndsTheStructure) {
    DeText next;
    next.config_flag = true;
    next.method = 2;
    next.channels = 1;
    next.data = "1";
    DeState state;
    parse_whole(next, state, false, 4);
}

TEST(DialogueEnhancement, WithoutAConfigurationIsNotFatal) {
    DeText next;
    next.config_flag = false;
    next.config = false;
    next.data = "1111";
    DeState state;
    const Outcome out = parse(write_de(next), state, false, 4);
    EXPECT_EQ(out.code, kMetadataDeConfigUnseen);
    EXPECT_EQ(out.code, 64U);
    EXPECT_TRUE(out.de.b_de_data_present);
    EXPECT_EQ(out.position, 2U);
}

TEST(DialogueEnhancement, NineChannelModesMayHaveASecondSetWithoutPositions) {
    for (const bool simulcast : {false, true}) {
        DeText text;
        text.method = 1;
        text.channels = 6;
        text.data = std::string("00000").append(parameters(1, 16, true));
        text.simulcast = simulcast;
        text.simulcast_data = simulcast ? parameters(1, 16, true) : "";
        const MetadataBits bits = write_de(text);
        for (const int ch_mode : {13, 14}) {
            DeState state;
            const Outcome out = parse(bits, state, true, ch_mode);
            EXPECT_EQ(out.code, kMetadataOk);
            EXPECT_EQ(out.position, bits.size());
            EXPECT_EQ(out.de.b_de_simulcast, simulcast);
        }
        DeState state;
        const Outcome other = parse(bits, state, true, 12);
        EXPECT_EQ(other.code, kMetadataOk);
        EXPECT_EQ(other.position, bits.size() - 1 - text.simulcast_data.size());
    }
}

TEST(DialogueEnhancement, CutAnywhereRunsOut) {
    DeText text;
    text.method = 3;
    text.channels = 7;
    text.data = std::string("0101101110").append(parameters(3, 24, true)).append("10101");
    text.simulcast = true;
    text.simulcast_data = parameters(3, 24, true).append("10101");
    const MetadataBits bits = write_de(text);
    for (std::size_t kept = 0; kept < bits.size(); ++kept) {
        DeState state;
        EXPECT_EQ(parse(bits.first(kept), state, true, 13).code, kMetadataRanOut) << kept;
        EXPECT_EQ(state.seen, kept >= 8) << kept;
    }
}

TEST(DialogueEnhancement, DataOfNoChannelsIsEmpty) {
    TestReader reader(MetadataBits().code("1111"));
    EXPECT_EQ(parse_de_data(reader.in, 3, 0, true, true), kMetadataOk);
    EXPECT_EQ(reader.position(), 0U);
}

}  // namespace
}  // namespace mediasplit
