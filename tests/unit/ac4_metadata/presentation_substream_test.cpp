#include "ac4/metadata/presentation_substream.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/unit/ac4_metadata/metadata_test_reader.h"

namespace mediasplit {
namespace {

struct Outcome {
    std::uint32_t code;
    PresentationMetadata metadata;
};

Outcome parse(const std::vector<std::uint8_t>& data, const PresentationFacts& facts,
              Ac4MetadataState& state, int presentation = 0) {
    Outcome out{};
    out.code = ac4analyze_parse_ac4_presentation_substream(&state, presentation, data.data(),
                                                           data.size(), facts, &out.metadata);
    return out;
}

Outcome parse(const PresentationText& text, const PresentationFacts& facts) {
    Ac4MetadataState state;
    return parse(write_presentation(text).to_bytes(), facts, state);
}

PresentationFacts stereo_facts() {
    PresentationFacts facts;
    facts.ch_mode = 1;
    facts.b_pres_ndot = true;
    facts.n_substreams = 1;
    facts.n_substream_groups = 1;
    facts.frame_length = 1920;
    return facts;
}

PresentationText with_tail(const std::string& bits) {
    PresentationText text;
    text.tail.code(bits);
    return text;
}

// How many of the bits from the group gains on the structure takes; more of them follow.
std::size_t tail_length(const std::string& tail, const PresentationFacts& facts) {
    const std::size_t head = write_presentation({}).size();
    TestReader reader(write_presentation(with_tail(std::string(tail).append("1111111111111111"))));
    MetadataSlot slot;
    PresentationMetadata out;
    EXPECT_EQ(parse_presentation_substream(reader.in, slot, facts, &out), kMetadataOk);
    return reader.position() - head;
}

TEST(PresentationSubstream, OfSizeZeroIsDone) {
    Ac4MetadataState state;
    PresentationMetadata out;
    EXPECT_EQ(ac4analyze_parse_ac4_presentation_substream(&state, 0, nullptr, 0, {}, &out),
              kMetadataOk);
}

TEST(PresentationSubstream, DialnormIsAQuarterDecibelAStep) {
    PresentationText text = with_tail("0");
    text.dialnorm = 93;
    const Outcome out = parse(text, stereo_facts());
    EXPECT_EQ(out.code, kMetadataOk);
    EXPECT_TRUE(out.metadata.dialnorm_present);
    EXPECT_FLOAT_EQ(out.metadata.dialnorm, -23.25F);
    EXPECT_FALSE(out.metadata.drc.present);
}

TEST(PresentationSubstream, NameAndTargetsStandInAlternativePresentations) {
    PresentationText text = with_tail("0");
    text.alternative = true;
    text.name = "English";
    TargetText first;
    first.level = 5;
    first.category = 9;
    first.extension = 3;
    first.ducking = 40;
    first.loudness = 20;
    first.substreams = {OptionalCode(0), std::nullopt, OptionalCode(6)};
    TargetText second;
    second.substreams = {std::nullopt, std::nullopt, std::nullopt};
    text.targets = {first, second};
    text.dialnorm = 80;
    PresentationFacts facts = stereo_facts();
    facts.b_alternative = true;
    facts.n_substreams = 3;
    const Outcome out = parse(text, facts);
    EXPECT_EQ(out.code, kMetadataOk);
    EXPECT_TRUE(out.metadata.b_name_present);
    EXPECT_EQ(std::string(out.metadata.name.data(), out.metadata.name_length), "English");
    EXPECT_EQ(out.metadata.n_targets, 2U);
    const PresentationTarget& target = out.metadata.targets[0];
    EXPECT_EQ(target.target_level, 5);
    EXPECT_EQ(target.target_device_category, 9);
    EXPECT_EQ(target.max_ducking_depth, (CodedField{true, 40}));
    EXPECT_EQ(target.loud_corr_target, (CodedField{true, 20}));
    EXPECT_EQ(target.active_substreams, 2);
    EXPECT_EQ(out.metadata.targets[1].active_substreams, 0);
    EXPECT_FLOAT_EQ(out.metadata.dialnorm, -20.0F);
}

TEST(PresentationSubstream, NameWithoutALengthHas32Bytes) {
    PresentationText text = with_tail("0");
    text.alternative = true;
    text.long_name = true;
    text.name = std::string(32, 'n');
    text.targets.resize(1);
    text.dialnorm = 8;
    PresentationFacts facts = stereo_facts();
    facts.b_alternative = true;
    facts.n_substreams = 0;
    const Outcome out = parse(text, facts);
    EXPECT_EQ(out.code, kMetadataOk);
    EXPECT_EQ(std::string(out.metadata.name.data(), out.metadata.name_length), *text.name);
    EXPECT_FLOAT_EQ(out.metadata.dialnorm, -2.0F);
}

TEST(PresentationSubstream, TargetsBeyond31AreReadAndDropped) {
    PresentationText text = with_tail("0");
    text.alternative = true;
    text.targets.resize(40);
    text.targets[30].level = 7;
    text.dialnorm = 12;
    PresentationFacts facts = stereo_facts();
    facts.b_alternative = true;
    facts.n_substreams = 0;
    const Outcome out = parse(text, facts);
    EXPECT_EQ(out.code, kMetadataOk);
    EXPECT_EQ(out.metadata.n_targets, 40U);
    EXPECT_EQ(out.metadata.targets[30].target_level, 7);
    EXPECT_FLOAT_EQ(out.metadata.dialnorm, -3.0F);
}

TEST(PresentationSubstream, AdditionalDataTellsImmersiveAudioAndIsSteppedOver) {
    for (const std::size_t bytes : {1U, 15U, 16U, 40U}) {
        for (const bool immersive : {false, true}) {
            PresentationText text = with_tail("0");
            text.additional = std::string(bytes * 8, '1');
            text.additional->front() = immersive ? '1' : '0';
            text.dialnorm = 20;
            const Outcome out = parse(text, stereo_facts());
            EXPECT_EQ(out.code, kMetadataOk);
            EXPECT_TRUE(out.metadata.b_additional_data);
            EXPECT_EQ(out.metadata.immersive_audio_indicator, immersive);
            EXPECT_FLOAT_EQ(out.metadata.dialnorm, -5.0F) << bytes;
        }
    }
}

TEST(PresentationSubstream, LoudnessIsOfThePresentationForm) {
    PresentationText text = with_tail("0");
    text.loudness = LoudnessText{};
    text.loudness->practice = 3;
    text.loudness->boundary_zeros = 2;
    text.loudness->rtll_comp = 99;
    const Outcome out = parse(text, stereo_facts());
    EXPECT_EQ(out.code, kMetadataOk);
    EXPECT_EQ(out.metadata.loudness.loud_prac_type, 3);
    EXPECT_EQ(out.metadata.loudness.prgmbndy_zeros, 2U);
    EXPECT_EQ(out.metadata.loudness.rtll_comp.value, 99);
}

TEST(PresentationSubstream, DrcIsReadAndKeptForEachPresentation) {
    PresentationText text = with_tail("1 0 0 0 1 00000111");
    DrcText drc;
    drc.modes = {DrcModeText{}};
    drc.eac3_profile = 4;
    drc.gain_sets = {DrcGainSetText{}};
    text.drc = drc;
    Ac4MetadataState state;
    PresentationFacts facts = stereo_facts();
    Outcome out = parse(write_presentation(text).to_bytes(), facts, state, 3);
    EXPECT_EQ(out.code, kMetadataOk);
    EXPECT_EQ(out.metadata.drc.eac3_profile, 4);
    EXPECT_EQ(out.metadata.drc_metadata_size, write_drc(drc).size());
    EXPECT_EQ(out.metadata.pan_associated, (CodedField{true, 7}));

    text.drc->modes.clear();
    facts.b_pres_ndot = false;
    const std::vector<std::uint8_t> dependent = write_presentation(text).to_bytes();
    EXPECT_EQ(parse(dependent, facts, state, 3).code, kMetadataOk);
    out = parse(dependent, facts, state, 4);
    EXPECT_EQ(out.code, kMetadataDrcConfigUnseen);
    EXPECT_EQ(out.metadata.pan_associated, (CodedField{true, 7}));  // the size led on
}

TEST(PresentationSubstream, DrcCutByItsSizeIsNotUnderstood) {
    PresentationText text = with_tail("0");
    text.drc = DrcText{};
    text.drc->modes = {DrcModeText{}};
    text.drc->gain_sets = {DrcGainSetText{}};
    text.drc_size = 6;
    EXPECT_EQ(parse(text, stereo_facts()).code, kMetadataNotUnderstood);
}

TEST(PresentationSubstream, DrcOfSizeZeroIsAbsent) {
    MetadataBits bits;
    bits.code("0").put(40, 7).code("0").put(0, 5).code("0").code("0").code("0 0");
    Ac4MetadataState state;
    const Outcome out = parse(bits.to_bytes(), stereo_facts(), state);
    EXPECT_EQ(out.code, kMetadataOk);
    EXPECT_FALSE(out.metadata.drc.present);
}

TEST(PresentationSubstream, GroupGainsOfTwoGroupsAndMore) {
    PresentationFacts facts = stereo_facts();
    facts.ch_mode = 0;  // no downmix, no correction
    EXPECT_EQ(tail_length("0", facts), 1U);
    facts.n_substream_groups = 3;
    EXPECT_EQ(tail_length("0 0", facts), 2U);
    EXPECT_EQ(tail_length("110", facts), 3U);
    EXPECT_EQ(tail_length(MetadataBits().code("10").put(0, 18).code("0").text(), facts), 21U);
}

TEST(PresentationSubstream, AssociatedMixFieldsAreKept) {
    PresentationFacts facts = stereo_facts();
    facts.ch_mode = 0;
    const PresentationText text = with_tail("1 1 00000001 1 00000010 1 00000011 0");
    const Outcome out = parse(text, facts);
    EXPECT_EQ(out.code, kMetadataOk);
    EXPECT_TRUE(out.metadata.b_associated);
    EXPECT_EQ(out.metadata.scale_main.value, 1);
    EXPECT_EQ(out.metadata.scale_main_centre.value, 2);
    EXPECT_EQ(out.metadata.scale_main_front.value, 3);
    EXPECT_FALSE(out.metadata.pan_associated.present);
}

struct TailCase {
    int ch_mode;
    int core;
    bool objects;
    const char* zeros;  // every flag clear
    const char* ones;   // every flag set, values zero
};

// Stereo downmix and loudness corrections by mode and core. In front of each tail stands
// `b_associated`; the stereo downmix with all parts is 1 + 6 + 1 + 6 [+ 1 + 5] + 2 bits.
TEST(PresentationSubstream, DownmixAndCorrectionsFollowModeAndCore) {
    const TailCase cases[] = {
        {0, -1, false, "0", "0"},
        {1, -1, false, "0", "0"},
        {2, -1, false, "0 00", "0 100000 100000"},
        // 5.0 and 5.1: downmix, then LoRo and LtRt.
        {3, -1, false, "0 0 00", "0 1000000 1000000 00 100000 100000"},
        {4, -1, false, "0 0 00", "0 1000000 1000000 100000 00 100000 100000"},
        // 7.X: also immersive output, 5.X, 5.X.2 and 7.X.
        {6, -1, false, "0 0 0 00 0",
         "0 1000000 1000000 100000 00 1 100000 100000 100000 100000 100000"},
        // 7.1.4 with a 5.1.2 core: also the corrections with heights and those of the core.
        {12, 6, false, "0 0 0 00 0 000",
         "0 1000000 1000000 100000 00 1 100000 100000 100000 100000 100000"
         "100000 100000 100000 100000 100000 1 00000 00000"},
        // A core that is the whole is none.
        {4, 4, false, "0 0 00", "0 1000000 1000000 100000 00 100000 100000"},
        // Objects: a flag for all of it; a 5.1 core has a downmix with LFE.
        {-1, -1, true, "0 0",
         "0 1 1 100000 100000 100000 100000 100000 100000 100000 100000 100000"},
        {-1, 4, false, "0 0 00", "0 1000000 1000000 100000 00 100000 1 00000 00000"},
        {-1, 3, false, "0 0 00", "0 1000000 1000000 00 100000 1 00000 00000"},
    };
    for (const TailCase& test : cases) {
        SCOPED_TRACE(testing::Message() << test.ch_mode << " core " << test.core);
        PresentationFacts facts = stereo_facts();
        facts.ch_mode = test.ch_mode;
        facts.core_ch_mode = test.core;
        facts.b_objects = test.objects;
        for (const char* tail : {test.zeros, test.ones}) {
            const std::string bits = MetadataBits().code(tail).text();
            EXPECT_EQ(tail_length(bits, facts), bits.size());
        }
    }
}

struct CustomCase {
    int ch_mode;
    int pairs;
    bool four_back;
    std::uint32_t out;
    const char* bits;  // of cdmx_parameters behind out_ch_config
};

// Tools by source and target layout; "1 000" front of a two-way tool, "0 1 000" side of a
// three-way one.
TEST(PresentationSubstream, CustomDownmixToolsFollowSourceAndTarget) {
    const CustomCase cases[] = {
        {13, 2, true, 0, "1000 1000 1000 000"},
        {14, 2, true, 1, "1000 000 000"},
        {14, 2, true, 2, "1000 000"},
        {14, 2, true, 3, "1000 01000 1000"},
        {14, 2, true, 4, "1000 000"},
        {14, 2, true, 7, "1000"},
        {12, 2, true, 0, "1000 1000 000"},
        {12, 2, true, 3, "01000 01000"},
        {11, 2, false, 0, "1000 0000"},
        {11, 2, false, 1, "000"},
        {14, 1, true, 0, "1000 1000 000"},
        {14, 1, true, 1, "1000 000"},
        {14, 1, true, 3, "1000 1000"},
        {14, 1, true, 4, "1000"},
        {12, 1, true, 0, "1000 000"},
        {12, 1, true, 2, "000"},
        {12, 1, true, 3, "01000"},
        {12, 1, false, 0, "1000"},
        {12, 1, false, 1, ""},
    };
    for (const CustomCase& test : cases) {
        PresentationFacts facts = stereo_facts();
        facts.ch_mode = test.ch_mode;
        facts.top_channel_pairs = test.pairs;
        facts.b_4_back_channels_present = test.four_back;
        const bool narrow = !test.four_back;
        MetadataBits tail;
        tail.code("0 1 01");  // not associated, present, two configurations
        for (int i = 0; i < 2; ++i) {
            tail.put(test.out, narrow ? 1 : 3).code(test.bits);
        }
        tail.code("0").code("0 00 0");  // no downmix, no corrections
        EXPECT_EQ(tail_length(tail.text(), facts), tail.size())
            << test.ch_mode << " " << test.pairs << " " << test.out;
    }
}

TEST(PresentationSubstream, SourcesWithoutAKnownLayoutHaveNoCustomDownmix) {
    PresentationFacts facts = stereo_facts();
    facts.ch_mode = 12;
    facts.b_4_back_channels_present = true;
    const std::string no_custom = MetadataBits().code("0 0 0 00 0").text();
    EXPECT_EQ(tail_length(no_custom, facts), no_custom.size());
    facts.ch_mode = 14;
    facts.top_channel_pairs = 2;
    facts.b_4_back_channels_present = false;
    EXPECT_EQ(tail_length(no_custom, facts), no_custom.size());
}

TEST(PresentationSubstream, BitsBehindTheEndAreTolerated) {
    PresentationText text = with_tail(std::string(64, '1').insert(0, "000"));
    EXPECT_EQ(parse(text, stereo_facts()).code, kMetadataOk);
}

TEST(PresentationSubstream, CutAtEveryBitRunsOut) {
    PresentationText text = with_tail("1 1 00000001 1 00000010 1 00000011 1 00000001");
    text.alternative = true;
    text.name = "name";
    text.targets.resize(5);
    text.additional = "1010";
    text.loudness = LoudnessText{};
    text.loudness->relgat = 3;
    text.drc = DrcText{};
    text.drc->modes = {DrcModeText{}};
    text.drc->gain_sets = {DrcGainSetText{}};
    PresentationFacts facts = stereo_facts();
    facts.b_alternative = true;
    facts.n_substreams = 0;
    const MetadataBits bits = write_presentation(text);
    for (std::size_t kept = 0; kept <= bits.size(); ++kept) {
        TestReader reader(bits.first(kept));
        MetadataSlot slot;
        PresentationMetadata out;
        EXPECT_EQ(parse_presentation_substream(reader.in, slot, facts, &out),
                  kept == bits.size() ? kMetadataOk : kMetadataRanOut)
            << kept;
    }
}

}  // namespace
}  // namespace mediasplit
