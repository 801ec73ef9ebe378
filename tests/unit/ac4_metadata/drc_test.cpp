#include "ac4/metadata/drc.h"

#include <gtest/gtest.h>

#include <string>

#include "ac4/metadata/huffman_code_books.h"
#include "ac4/metadata/metadata_codes.h"
#include "tests/unit/ac4_metadata/metadata_test_reader.h"

namespace mediasplit {
namespace {

constexpr DrcFacts kIframe{true, 4, 1920};
constexpr DrcFacts kDependent{false, 4, 1920};

DrcModeText default_mode(std::uint32_t id) {
    DrcModeText mode;
    mode.id = id;
    mode.default_profile = true;
    return mode;
}

DrcModeText gain_mode(std::uint32_t id, std::uint32_t gains_config) {
    DrcModeText mode;
    mode.id = id;
    mode.gains_config = gains_config;
    return mode;
}

DrcCurveText full_curve() {
    DrcCurveText curve;
    curve.null_low = 3;
    curve.null_high = 9;
    curve.boost = {12, 20, std::pair{5U, 17U}};
    curve.cut = {25, 50, std::pair{14U, 30U}};
    curve.time_constants = {100, 150, 200, 250};
    curve.smoothing = {11, 22};
    return curve;
}

std::string gain_codes(int count) {
    std::string codes;
    for (int i = 0; i < count; ++i) {
        codes += huffman_code_books::kDrc[static_cast<std::size_t>(i * 37 % 255)];
    }
    return codes;
}

struct Outcome {
    std::uint32_t code;
    DrcFrame frame;
    std::size_t position;
};

Outcome parse(const MetadataBits& text, const DrcFacts& facts, DrcState& state) {
    TestReader reader(text);
    Outcome out{};
    out.code = parse_drc_frame(reader.in, &out.frame, &state, facts);
    out.position = reader.position();
    return out;
}

// Reads a frame that must be good and taken to its last bit.
DrcFrame parse_whole(const DrcText& text, const DrcFacts& facts, DrcState& state) {
    const MetadataBits bits = write_drc(text);
    const Outcome out = parse(bits, facts, state);
    EXPECT_EQ(out.code, kMetadataOk);
    EXPECT_EQ(out.position, bits.size());
    return out.frame;
}

TEST(DrcFrame, AbsentIsOneBit) {
    DrcState state;
    const Outcome out = parse(write_drc(std::nullopt), kIframe, state);
    EXPECT_EQ(out.code, kMetadataOk);
    EXPECT_FALSE(out.frame.present);
    EXPECT_EQ(out.position, 1U);
    EXPECT_FALSE(state.seen);
}

TEST(DrcFrame, ReadsModesOfEachForm) {
    DrcText text;
    DrcModeText free_mode = default_mode(6);
    free_mode.level_from = 31;
    free_mode.level_to = 4;
    DrcModeText curve_mode;
    curve_mode.id = 1;
    curve_mode.curve = full_curve();
    DrcModeText repeat_mode;
    repeat_mode.id = 2;
    repeat_mode.repeat_id = 1;
    text.modes = {free_mode, curve_mode, repeat_mode, gain_mode(3, 0)};
    text.eac3_profile = 5;
    text.gain_sets = {{.first_gain = 70}};
    text.reset = true;
    DrcState state;
    const DrcFrame frame = parse_whole(text, kIframe, state);
    EXPECT_TRUE(frame.config_present && frame.data_read && frame.reset);
    EXPECT_EQ(frame.mode_count, 4);
    EXPECT_EQ(frame.eac3_profile, 5);
    EXPECT_EQ(frame.gain_sets, 1);
    EXPECT_EQ(frame.first_gain, 6);

    const DrcConfig& config = state.config;
    EXPECT_EQ(config.modes[0].level_from, -31);  // stored negated
    EXPECT_EQ(config.modes[0].level_to, -4);
    EXPECT_TRUE(config.modes[0].default_profile && config.modes[0].compression_curve);
    for (const std::size_t mode : {1U, 2U}) {  // the third takes after the second
        const DrcCompressionCurve& curve = config.modes[mode].curve;
        EXPECT_TRUE(config.modes[mode].compression_curve);
        EXPECT_EQ(curve.lev_nullband_low, 3);
        EXPECT_EQ(curve.lev_nullband_high, 9);
        EXPECT_EQ(curve.boost.max_gain, 12);
        EXPECT_EQ(curve.boost.max_level, 20);
        EXPECT_EQ(curve.boost.section_gain, 5);
        EXPECT_EQ(curve.boost.section_level, 17);
        EXPECT_EQ(curve.cut.max_gain, 25);
        EXPECT_EQ(curve.cut.max_level, 50);
        EXPECT_EQ(curve.cut.section_gain, 14);
        EXPECT_EQ(curve.cut.section_level, 30);
        EXPECT_EQ(curve.time_constants, (std::array<std::uint8_t, 4>{100, 150, 200, 250}));
        EXPECT_EQ(curve.attack_threshold, 11);
        EXPECT_EQ(curve.release_threshold, 22);
    }
    EXPECT_FALSE(config.modes[3].compression_curve);
}

TEST(DrcFrame, CurvesWithoutTheirOptionalPartsAreShorter) {
    DrcText text;
    DrcModeText mode;
    mode.curve = DrcCurveText{};
    text.modes = {mode};
    text.reset = false;
    DrcState state;
    const DrcFrame frame = parse_whole(text, kIframe, state);
    EXPECT_TRUE(state.config.modes[0].curve.tc_default);
    EXPECT_FALSE(frame.reset);
}

TEST(DrcFrame, RepeatOfAModeThatDidNotComeBeforeIsTheDefaultProfile) {
    DrcText text;
    DrcModeText mode;
    mode.id = 0;
    mode.repeat_id = 3;
    text.modes = {mode};
    text.reset = false;
    DrcState state;
    parse_whole(text, kIframe, state);
    EXPECT_TRUE(state.config.modes[0].default_profile);
}

struct GainCase {
    std::uint32_t gains_config;
    int ch_mode;
    int frame_length;
    int gains;  // the first included
};

// nr_drc_channels x nr_drc_bands x nr_drc_subframes.
TEST(DrcGains, CountFollowsModeBandsAndFrameLength) {
    const GainCase cases[] = {
        {0, 4, 1920, 1},          {1, 0, 384, 1},           {1, 1, 512, 2},
        {1, 3, 768, 3 * 3},       {2, 4, 960, 3 * 2 * 3},   {2, 10, 1024, 3 * 2 * 4},
        {3, 11, 1536, 4 * 4 * 6}, {3, 15, 1920, 4 * 4 * 6}, {3, 5, 2048, 3 * 4 * 8}};
    for (const GainCase& test : cases) {
        DrcText text;
        text.modes = {gain_mode(0, test.gains_config)};
        text.gain_sets = {{.codes = gain_codes(test.gains - 1)}};
        DrcState state;
        parse_whole(text, {true, test.ch_mode, test.frame_length}, state);
    }
}

TEST(DrcGains, SetWithoutAKnownCountIsSteppedOverByItsSize) {
    for (const DrcFacts facts :
         {DrcFacts{true, -1, 1920}, DrcFacts{true, 2, 1920}, DrcFacts{true, 4, 1234}}) {
        DrcText text;
        text.modes = {gain_mode(0, 3)};
        text.gain_sets = {{.codes = std::string(300, '0')}};
        DrcState state;
        parse_whole(text, facts, state);
    }
}

TEST(DrcGains, LaterVersionsAreSteppedOverByTheirSize) {
    for (const std::uint32_t version : {1U, 2U, 3U}) {
        DrcText text;
        text.modes = {gain_mode(0, 1)};
        text.gain_sets = {{.version = version, .codes = gain_codes(17), .rest = "1100110"}};
        DrcState state;
        parse_whole(text, kIframe, state);
    }
}

TEST(DrcGains, SizeOfALaterVersionBeyondTheDataRunsOut) {
    DrcText text;
    text.modes = {gain_mode(0, 0)};
    text.gain_sets = {{.version = 2, .rest = "1100110", .size = 500}};
    DrcState state;
    EXPECT_EQ(parse(write_drc(text), kIframe, state).code, kMetadataRanOut);
}

TEST(DrcGains, EndlessSizeIsRefused) {
    MetadataBits bits =
        write_drc(DrcText{.modes = {gain_mode(0, 0)}, .gain_sets = {}, .reset = {}});
    bits.put(63, 6).flag(true).code(std::string(400, '1'));
    DrcState state;
    EXPECT_EQ(parse(bits, kIframe, state).code, kMetadataTooLong);
}

TEST(DrcFrame, DependentFrameWithoutAConfigurationIsNotFatal) {
    DrcText text;
    text.gain_sets = {{.first_gain = 10}};
    DrcState state;
    const Outcome out = parse(write_drc(text), kDependent, state);
    EXPECT_EQ(out.code, kMetadataDrcConfigUnseen);
    EXPECT_EQ(out.code, 256U);
    EXPECT_FALSE(metadata_is_fatal(out.code));
    EXPECT_TRUE(out.frame.present);
    EXPECT_FALSE(out.frame.data_read);
}

TEST(DrcFrame, DependentFrameUsesTheLastConfiguration) {
    DrcText first;
    first.modes = {gain_mode(0, 1)};
    first.eac3_profile = 2;
    first.gain_sets = {{.codes = gain_codes(17)}};
    DrcState state;
    ASSERT_EQ(parse(write_drc(first), kIframe, state).code, kMetadataOk);
    DrcText second = first;
    second.modes.clear();
    second.gain_sets[0].first_gain = 0;
    const DrcFrame frame = parse_whole(second, kDependent, state);
    EXPECT_FALSE(frame.config_present);
    EXPECT_TRUE(frame.data_read);
    EXPECT_EQ(frame.eac3_profile, 2);
    EXPECT_EQ(frame.first_gain, -64);
}

TEST(DrcFrame, CutAnywhereRunsOutAndKeepsTheFormerConfiguration) {
    DrcText text;
    DrcModeText curve_mode;
    curve_mode.id = 7;
    curve_mode.curve = full_curve();
    text.modes = {curve_mode, gain_mode(1, 1)};
    text.gain_sets = {{.codes = gain_codes(17)}};
    text.reset = true;
    const MetadataBits bits = write_drc(text);
    MetadataBits config = MetadataBits().put(1, 1).put(1, 3);
    config.add(write_drc_mode(text.modes[0])).add(write_drc_mode(text.modes[1])).put(0, 3);
    for (std::size_t kept = 0; kept < bits.size(); ++kept) {
        DrcState state;
        EXPECT_EQ(parse(bits.first(kept), kIframe, state).code, kMetadataRanOut) << kept;
        EXPECT_EQ(state.seen, kept >= config.size()) << kept;
    }
}

}  // namespace
}  // namespace mediasplit
