#include "ac4/metadata/substream_metadata.h"

#include <gtest/gtest.h>

#include <array>

#include "tests/unit/ac4_metadata/metadata_test_reader.h"

namespace mediasplit {
namespace {

SubstreamFacts facts_of(const SubstreamText& text) {
    SubstreamFacts facts;
    facts.ch_mode = text.ch_mode;
    facts.sus_ver = text.sus_ver;
    facts.b_iframe = true;
    facts.b_associated = text.extended.associated;
    facts.b_dialog = text.extended.dialog;
    facts.frame_length = 1920;
    return facts;
}

SubstreamText simple(int sus_ver, int ch_mode) {
    SubstreamText text;
    text.sus_ver = sus_ver;
    text.ch_mode = ch_mode;
    text.audio_bytes = 5;
    return text;
}

// An EMDF payload behind everything else: it is found only if every bit before it was stepped over
// as the syntax says.
void add_marker(SubstreamText& text) {
    EmdfText marker;
    marker.id = 18;
    marker.payload = write_ims({.version = 1, .code_3 = 6});
    text.emdf = std::vector<EmdfText>{marker};
}

struct Outcome {
    std::uint32_t code;
    SubstreamMetadata metadata;
};

Outcome parse(const std::vector<std::uint8_t>& data, const SubstreamFacts& facts,
              Ac4MetadataState& state, int substream = 0) {
    Outcome out{};
    out.code = ac4analyze_get_substream_metadata(&state, substream, data.data(), data.size(), facts,
                                                 &out.metadata);
    return out;
}

Outcome parse(const SubstreamText& text, Ac4MetadataState& state) {
    return parse(write_substream(text), facts_of(text), state);
}

void expect_marker(const Outcome& out) {
    EXPECT_EQ(out.code, kMetadataOk);
    EXPECT_TRUE(out.metadata.emdf.ims_present);
    EXPECT_EQ(out.metadata.ims.code_3, 6);
}

BasicText full_basic() {
    BasicText basic;
    basic.dialnorm = 93;
    basic.more = true;
    basic.loudness = LoudnessText{};
    basic.loudness->practice = 1;
    basic.loudness->relgat = 1234;
    basic.substream_loudness = 17;
    basic.dmixtyp_2ch = 5;
    basic.phase90_2ch = 2;
    basic.downmix = StereoDownmixText{4, 3, 21, std::pair{5U, 6U}, 22, 23, 2};
    basic.dmixtyp_5ch = 6;
    basic.upmixtyp_5ch = 9;
    basic.upmixtyp_7ch = 1;
    basic.phase90_mc = 3;
    basic.surround_known = true;
    basic.lfe_known = true;
    basic.dc_block = 1;
    return basic;
}

TEST(SubstreamMetadata, OfSizeZeroIsDone) {
    Ac4MetadataState state;
    SubstreamMetadata out;
    EXPECT_EQ(ac4analyze_get_substream_metadata(&state, 0, nullptr, 0, {}, &out), kMetadataOk);
}

TEST(SubstreamMetadata, AudioSizeBeyondTheDataRunsOut) {
    std::vector<std::uint8_t> data = MetadataBits().size_field(9, 15, 7).to_bytes();
    data.resize(2 + 8);
    Ac4MetadataState state;
    EXPECT_EQ(parse(data, {}, state).code, kMetadataRanOut);
    EXPECT_EQ(parse(data, {}, state).code, 8192U);
}

TEST(SubstreamMetadata, AudioSizeIsExtendedAbove15Bits) {
    SubstreamText text = simple(1, 1);
    text.audio_bytes = (5U << 15) + 123;
    add_marker(text);
    Ac4MetadataState state;
    const Outcome out = parse(text, state);
    expect_marker(out);
    EXPECT_EQ(out.metadata.audio_size, (5U << 15) + 123);
}

TEST(SubstreamMetadata, AudioSizeOfMoreThanFourGroupsIsRefused) {
    const std::string group(8, '1');
    MetadataBits five;
    five.put(0, 15).flag(true).code(group + group + group + group + group);
    five.code(std::string(64, '0'));
    Ac4MetadataState state;
    EXPECT_EQ(parse(five.to_bytes(), {}, state).code, kMetadataTooLong);
    EXPECT_EQ(parse(five.to_bytes(), {}, state).code, 12288U);
    MetadataBits four;  // readable, but far beyond the data
    four.put(0, 15).flag(true).code(group + group + group + "00000000");
    Ac4MetadataState other;
    EXPECT_EQ(parse(four.to_bytes(), {}, other).code, kMetadataRanOut);
}

TEST(SubstreamMetadata, SmallestMetadataOfBothSyntaxes) {
    for (const int sus_ver : {0, 1}) {
        for (int ch_mode = -1; ch_mode <= 16; ++ch_mode) {
            SubstreamText text = simple(sus_ver, ch_mode);
            add_marker(text);
            Ac4MetadataState state;
            const Outcome out = parse(text, state);
            expect_marker(out);
            EXPECT_EQ(out.metadata.audio_size, 5U);
            EXPECT_EQ(out.metadata.dialnorm_present, sus_ver == 0);
            EXPECT_FALSE(out.metadata.de.b_de_data_present);
        }
    }
}

TEST(SubstreamMetadata, FullBasicMetadataOfEveryChannelMode) {
    for (const int sus_ver : {0, 1}) {
        for (int ch_mode = -1; ch_mode <= 15; ++ch_mode) {
            SubstreamText text = simple(sus_ver, ch_mode);
            text.basic = full_basic();
            add_marker(text);
            Ac4MetadataState state;
            const Outcome out = parse(text, state);
            SCOPED_TRACE(testing::Message() << sus_ver << " " << ch_mode);
            expect_marker(out);
            const BasicMetadata& basic = out.metadata.basic;
            EXPECT_TRUE(basic.more);
            EXPECT_EQ(out.metadata.dialnorm, sus_ver == 0 ? -23.25F : 0.0F);
            EXPECT_EQ(out.metadata.loudness.loudrelgat, (CodedField{true, 1234}));
            EXPECT_EQ(basic.substream_loudness.present, sus_ver == 1);
            EXPECT_EQ(basic.pre_dmixtyp_2ch.value, ch_mode == 1 ? 5 : 0);
            EXPECT_EQ(basic.phase90_info_2ch, ch_mode == 1 ? 2 : 0);
            EXPECT_EQ(basic.stereo_dmx.present, sus_ver == 0 && ch_mode > 1);
            EXPECT_EQ(basic.pre_dmixtyp_5ch.value, ch_mode == 3 || ch_mode == 4 ? 6 : 0);
            EXPECT_EQ(basic.pre_upmixtyp_5ch.value, ch_mode == 3 || ch_mode == 4 ? 9 : 0);
            EXPECT_EQ(basic.pre_upmixtyp_7ch.present, ch_mode >= 5 && ch_mode <= 10);
            EXPECT_EQ(basic.phase90_info_mc, ch_mode > 1 ? 3 : 0);
            EXPECT_EQ(basic.b_lfe_attenuation_known, ch_mode > 1);
            EXPECT_EQ(basic.dc_block_on, (CodedField{true, 1}));
        }
    }
}

TEST(SubstreamMetadata, DownmixCodesAreKept) {
    SubstreamText text = simple(0, 4);
    text.basic = full_basic();
    Ac4MetadataState state;
    const StereoDownmix downmix = parse(text, state).metadata.basic.stereo_dmx;
    EXPECT_EQ(downmix.loro_centre_mixgain, 4);
    EXPECT_EQ(downmix.loro_surround_mixgain, 3);
    EXPECT_EQ(downmix.loro_dmx_loud_corr, (CodedField{true, 21}));
    EXPECT_TRUE(downmix.ltrt_present);
    EXPECT_EQ(downmix.ltrt_centre_mixgain, 5);
    EXPECT_EQ(downmix.ltrt_surround_mixgain, 6);
    EXPECT_EQ(downmix.ltrt_dmx_loud_corr, (CodedField{true, 22}));
    EXPECT_EQ(downmix.lfe_mixgain, (CodedField{true, 23}));
    EXPECT_EQ(downmix.preferred_dmx_method, 2);
}

TEST(SubstreamMetadata, FullExtendedMetadataOfEveryChannelMode) {
    // Speakers of the classifier that each mode has.
    constexpr std::array<std::uint32_t, 17> kThere = {0x001, 0x006, 0x007, 0x01F, 0x81F, 0x07F,
                                                      0x87F, 0x19F, 0x99F, 0x61F, 0xE1F, 0x07F,
                                                      0x87F, 0x07F, 0x87F, 0x9FF, 0x000};
    for (const int sus_ver : {0, 1}) {
        for (int ch_mode = -1; ch_mode <= 15; ++ch_mode) {
            SubstreamText text = simple(sus_ver, ch_mode);
            text.extended.associated = sus_ver == 0;
            text.extended.scale_main = 10;
            text.extended.scale_main_centre = 20;
            text.extended.scale_main_front = 30;
            text.extended.pan_associated = 60;
            text.extended.dialog = true;
            text.extended.dialog_max_gain = 2;
            text.extended.pan_dialog = {40, 200};
            text.extended.pan_dialog.resize(ch_mode == 0 ? 1 : 2);
            text.extended.pan_selector = 3;
            text.extended.classifier = true;
            text.extended.active = 0xFFF;
            text.extended.has_dialog = 0x005;
            text.extended.event_probability = 11;
            add_marker(text);
            Ac4MetadataState state;
            const Outcome out = parse(text, state);
            SCOPED_TRACE(testing::Message() << sus_ver << " " << ch_mode);
            expect_marker(out);
            const ExtendedMetadata& extended = out.metadata.extended;
            EXPECT_EQ(extended.scale_main_centre.present, sus_ver == 0);
            EXPECT_EQ(extended.scale_main_front.value, sus_ver == 0 ? 30 : 0);
            EXPECT_FLOAT_EQ(extended.pan_associated, sus_ver == 0 && ch_mode == 0 ? 90.0F : 0.0F);
            EXPECT_FLOAT_EQ(extended.dialog_max_gain, 9.0F);
            EXPECT_FLOAT_EQ(extended.pan_dialog[0], 60.0F);
            EXPECT_FLOAT_EQ(extended.pan_dialog[1], ch_mode == 0 ? 0.0F : 300.0F);
            EXPECT_EQ(extended.pan_signal_selector, ch_mode == 0 ? 0 : 3);
            const std::uint32_t there = ch_mode < 0 ? 0 : kThere[static_cast<std::size_t>(ch_mode)];
            EXPECT_EQ(extended.active_channels, there);
            EXPECT_EQ(extended.dialog_channels, there & 0x005U);
            EXPECT_EQ(extended.event_probability, (CodedField{true, 11}));
        }
    }
}

TEST(SubstreamMetadata, InactiveChannelsHaveNoDialogFlag) {
    SubstreamText text = simple(1, 4);
    text.extended.classifier = true;
    text.extended.active = 0x802;
    text.extended.has_dialog = 0x002;
    add_marker(text);
    Ac4MetadataState state;
    const Outcome out = parse(text, state);
    expect_marker(out);
    EXPECT_EQ(out.metadata.extended.active_channels, 0x802);
    EXPECT_EQ(out.metadata.extended.dialog_channels, 0x002);
}

DrcText gain_drc() {
    DrcText drc;
    drc.modes = {DrcModeText{}};
    drc.gain_sets = {DrcGainSetText{}};
    return drc;
}

TEST(SubstreamMetadata, DrcStandsInTheOldSyntaxOnly) {
    for (const int sus_ver : {0, 1}) {
        SubstreamText text = simple(sus_ver, 1);
        text.drc = gain_drc();
        text.de = DeText{};
        text.de->max_gain = 1;
        add_marker(text);
        Ac4MetadataState state;
        const Outcome out = parse(text, state);
        expect_marker(out);
        EXPECT_EQ(out.metadata.drc.present, sus_ver == 0);
        EXPECT_TRUE(out.metadata.de.b_de_data_present);
        EXPECT_FLOAT_EQ(out.metadata.de.max_gain_db, 6.0F);
    }
}

TEST(SubstreamMetadata, ToolsMayBeLongerThanWhatIsKnownOfThem) {
    SubstreamText text = simple(0, 1);
    text.tools_padding = std::string(900, '1');
    add_marker(text);
    Ac4MetadataState state;
    const Outcome out = parse(text, state);
    expect_marker(out);
    EXPECT_EQ(out.metadata.tools_metadata_size, 902U);
}

TEST(SubstreamMetadata, ToolsCutByTheirSizeAreNotUnderstoodAndTheRestIsRead) {
    SubstreamText text = simple(0, 1);
    text.drc = gain_drc();
    const std::size_t whole = write_drc(text.drc).size();
    text.tools_size = 10;
    add_marker(text);
    // What follows the declared size is written by hand: nothing of the tools behind it.
    MetadataBits bits = write_basic(text.basic, 0, 1);
    bits.add(write_extended(text.extended, 0, 1)).size_field(10, 7, 3);
    bits.add(write_drc(text.drc).first(10)).flag(true).add(write_emdf(*text.emdf));
    MetadataBits data = MetadataBits().size_field(0, 15, 7);
    data.add(bits);
    ASSERT_GT(whole, 10U);
    Ac4MetadataState state;
    const Outcome out = parse(data.to_bytes(), facts_of(text), state);
    EXPECT_EQ(out.code, kMetadataNotUnderstood);
    EXPECT_EQ(out.code, 32U);
    EXPECT_TRUE(out.metadata.emdf.ims_present);
}

TEST(SubstreamMetadata, ToolsBeyondTheDataRunOut) {
    SubstreamText text = simple(0, 1);
    text.tools_size = 5000;
    Ac4MetadataState state;
    EXPECT_EQ(parse(text, state).code, kMetadataRanOut);
}

TEST(SubstreamMetadata, EndlessToolsSizeIsRefused) {
    MetadataBits bits = MetadataBits().size_field(0, 15, 7);
    bits.add(write_basic({}, 1, 1)).add(write_extended({}, 1, 1));
    bits.put(127, 7).flag(true).code(std::string(400, '1'));
    Ac4MetadataState state;
    SubstreamFacts facts;
    facts.ch_mode = 1;
    EXPECT_EQ(parse(bits.to_bytes(), facts, state).code, kMetadataTooLong);
}

TEST(SubstreamMetadata, UnseenConfigurationsDoNotKeepTheRestFromBeingRead) {
    SubstreamText text = simple(0, 1);
    text.drc = DrcText{};
    text.drc->gain_sets = {DrcGainSetText{}};
    add_marker(text);
    SubstreamFacts facts = facts_of(text);
    facts.b_iframe = false;
    Ac4MetadataState state;
    const Outcome out = parse(write_substream(text), facts, state);
    EXPECT_EQ(out.code, kMetadataDrcConfigUnseen);
    EXPECT_TRUE(out.metadata.emdf.ims_present);

    SubstreamText other = simple(1, 1);
    other.de = DeText{};
    other.de->config_flag = false;
    other.de->config = false;
    other.de->data = "1010";
    add_marker(other);
    facts = facts_of(other);
    facts.b_iframe = false;
    const Outcome second = parse(write_substream(other), facts, state);
    EXPECT_EQ(second.code, kMetadataDeConfigUnseen);
    EXPECT_TRUE(second.metadata.emdf.ims_present);
}

TEST(SubstreamMetadata, ConfigurationsAreKeptFromFrameToFrameForEachSlot) {
    SubstreamText first = simple(0, 1);
    first.drc = gain_drc();
    Ac4MetadataState state;
    ASSERT_EQ(parse(write_substream(first), facts_of(first), state, 5).code, kMetadataOk);

    SubstreamText next = simple(0, 1);
    next.drc = DrcText{};
    next.drc->gain_sets = {DrcGainSetText{}};
    SubstreamFacts facts = facts_of(next);
    facts.b_iframe = false;
    const std::vector<std::uint8_t> data = write_substream(next);
    EXPECT_EQ(parse(data, facts, state, 5).code, kMetadataOk);
    EXPECT_EQ(parse(data, facts, state, 6).code, kMetadataDrcConfigUnseen);
    EXPECT_EQ(parse(data, facts, state, 128).code, kMetadataDrcConfigUnseen);
    ac4_metadata_state_reset(&state);
    EXPECT_EQ(parse(data, facts, state, 5).code, kMetadataDrcConfigUnseen);
}

TEST(SubstreamMetadata, LoudnessCarriesOverAndAChangeIsTold) {
    SubstreamText text = simple(0, 1);
    text.basic.dialnorm = 100;
    text.basic.more = true;
    text.basic.loudness = LoudnessText{};
    text.basic.loudness->relgat = 500;
    Ac4MetadataState state;
    Outcome out = parse(text, state);
    EXPECT_FALSE(out.metadata.loudness_changed);  // nothing to differ from
    out = parse(text, state);
    EXPECT_FALSE(out.metadata.loudness_changed);
    text.basic.loudness->relgat = 501;
    out = parse(text, state);
    EXPECT_TRUE(out.metadata.loudness_changed);
    EXPECT_EQ(out.metadata.loudness.loudrelgat.value, 501);

    SubstreamText plain = simple(0, 1);
    plain.basic.dialnorm = 4;
    out = parse(plain, state);
    EXPECT_FLOAT_EQ(out.metadata.dialnorm, -1.0F);
    EXPECT_FALSE(out.metadata.loudness_changed);
    EXPECT_EQ(out.metadata.loudness.loudrelgat.value, 501);
}

TEST(SubstreamMetadata, ImmersiveStereoVersion3EndsTheFrame) {
    SubstreamText text = simple(1, 1);
    EmdfText payload;
    payload.id = 18;
    payload.payload = write_ims({.version = 3});
    text.emdf = std::vector<EmdfText>{payload};
    Ac4MetadataState state;
    const Outcome out = parse(text, state);
    EXPECT_EQ(out.code, kMetadataImsVersion);
    EXPECT_TRUE(metadata_is_fatal(out.code));
}

TEST(SubstreamMetadata, ObjectsOfAnAlternativePresentationAreSteppedOver) {
    constexpr std::array<OamdObjectKind, 2> kObjects = {OamdObjectKind::kLfeBed,
                                                        OamdObjectKind::kDynamic};
    SubstreamText text = simple(1, -1);
    // One block: the LFE default, the dynamic object not active; no alternative sets.
    text.objects.code("0 1 0").code("1 0").code("0 00 00");
    add_marker(text);
    SubstreamFacts facts = facts_of(text);
    facts.b_object_coded = true;
    facts.objects.objects = kObjects;
    facts.objects.num_obj_info_blocks = 1;
    facts.objects.b_ndot = true;
    facts.objects.b_alternative = true;
    Ac4MetadataState state;
    expect_marker(parse(write_substream(text), facts, state));

    // Without knowing the objects nothing behind them can be found.
    facts.objects.objects = {};
    const Outcome unknown = parse(write_substream(text), facts, state);
    EXPECT_EQ(unknown.code, kMetadataNotUnderstood);
    EXPECT_FALSE(unknown.metadata.emdf.ims_present);

    // A-JOC substreams and other presentations have none.
    SubstreamText none = simple(1, -1);
    add_marker(none);
    facts.b_ajoc = true;
    expect_marker(parse(write_substream(none), facts, state));
    facts.b_ajoc = false;
    facts.objects.b_alternative = false;
    expect_marker(parse(write_substream(none), facts, state));
}

TEST(SubstreamMetadata, CutAtEveryBitNeverPasses) {
    SubstreamText text = simple(0, 4);
    text.basic = full_basic();
    text.drc = gain_drc();
    text.de = DeText{};
    add_marker(text);
    const std::vector<std::uint8_t> data = write_substream(text);
    const SubstreamFacts facts = facts_of(text);
    Ac4MetadataState state;
    ASSERT_EQ(parse(data, facts, state).code, kMetadataOk);
    for (std::size_t kept = 1; kept < data.size(); ++kept) {
        const std::vector<std::uint8_t> cut(data.begin(),
                                            data.begin() + static_cast<std::ptrdiff_t>(kept));
        Ac4MetadataState fresh;
        EXPECT_EQ(parse(cut, facts, fresh).code, kMetadataRanOut) << kept;
    }
}

TEST(ChannelModes, CodesOfTheTableOfContents) {
    const std::array<int, 17> codes = {2,   4,   24,  26,  28,   240,  242,  244, 246,
                                       248, 250, 504, 506, 1016, 1018, 1020, 1022};
    for (std::size_t mode = 0; mode < codes.size(); ++mode) {
        EXPECT_EQ(ch_mode_from_code(codes[mode]), static_cast<int>(mode));
    }
    EXPECT_EQ(ch_mode_from_code(8), 1);
    EXPECT_EQ(ch_mode_from_code(10), 1);
    EXPECT_EQ(ch_mode_from_code(0), kNoChannelMode);
    EXPECT_EQ(ch_mode_from_code(252), kNoChannelMode);
    EXPECT_EQ(core_ch_mode_from_code(26), 3);
    EXPECT_EQ(core_ch_mode_from_code(28), 4);
    EXPECT_EQ(core_ch_mode_from_code(248), 5);
    EXPECT_EQ(core_ch_mode_from_code(250), 6);
    EXPECT_EQ(core_ch_mode_from_code(0), kNoChannelMode);
}

}  // namespace
}  // namespace mediasplit
