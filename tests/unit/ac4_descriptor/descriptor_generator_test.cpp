#include "ac4/descriptor_generator/descriptor_generator.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "src/ac4analyze_impl/ac4_dsi.h"
#include "src/ac4analyze_impl/dsi_compare.h"
#include "src/ac4analyze_impl/es_parser.h"
#include "tests/support/ac4_builder.h"
#include "tests/support/dsi_builder.h"
#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

class Generator : public testing::Test {
protected:
    // The generator's result for a frame.
    std::uint32_t update(const BuildFrame& frame) {
        EXPECT_EQ(ac4_es_parser(*parser_, write_ac4_frame(frame), analysis_), 0);
        return orv_ac4descgen_update_AC4SampleEntry(parser_->generator, &reference_, *analysis_);
    }
    const DsiPresentation& presentation(std::size_t i = 0) {
        return reference_.presentations.at(i);
    }

    // Writes what the stream asks for, reads it, and expects that nothing differs.
    void expect_box_for_frame_raises_nothing(const BuildFrame& frame) {
        ASSERT_EQ(update(frame), 0U);
        DsiRecord box;
        ASSERT_EQ(ac4_dsi_parser(write_dac4(record_of(reference_)), box, nullptr), 0U);
        RecordingSink sink;
        EXPECT_EQ(ac4_Ac4SpecificBox_comp(&reference_, &box, true, nullptr), Status::kOk);
        EXPECT_EQ(sink.ids(), std::vector<int>{});
        for (const DsiPresentation& each : box.presentations) {
            EXPECT_TRUE(each.compared);
        }
    }

    std::unique_ptr<Ac4EsParser> parser_ = ac4_es_parser_new(nullptr);
    std::unique_ptr<AnalysisRecord> analysis_ = ac4_es_parser_init();
    ReferenceDsi reference_;
};

BuildFrame single_frame(const char* mode, const char* immersive = "", std::uint32_t version = 1) {
    BuildFrame frame = simple_stereo_frame();
    frame.presentations[0].version = version;
    frame.groups[0].substreams[0].mode = mode;
    frame.groups[0].substreams[0].immersive = immersive;
    frame.substreams = {{}, {}};
    return frame;
}

// A presentation substream that is marked immersive or isn't.
Ac4Bytes marked(bool immersive) {
    PresentationText text;
    text.dialnorm = 96;
    text.additional = immersive ? "1" : "0";
    text.tail.put(0, 64);
    return write_presentation(text).to_bytes();
}

BuildFrame object_frame(const BuildSubstream& substream) {
    BuildFrame frame = simple_stereo_frame();
    frame.groups[0].channel_coded = false;
    frame.groups[0].oamd = std::nullopt;
    frame.groups[0].substreams = {substream};
    frame.groups[0].substreams[0].index = 1;
    frame.substreams = {{}, {}};
    return frame;
}

TEST_F(Generator, StereoFrame) {
    BuildFrame frame = simple_stereo_frame();
    frame.short_program_id = 0x1234;
    frame.program_uuid =
        std::array<std::uint8_t, 16>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    frame.presentations[0].mdcompat = 2;
    frame.presentations[0].emdf.version = 5;
    frame.presentations[0].emdf.key_id = 9;
    EXPECT_EQ(update(frame), 0U);
    EXPECT_EQ(reference_.data_reference_index, 1U);
    EXPECT_EQ(reference_.channel_count, 2U);
    EXPECT_EQ(reference_.sampling_frequency, 48000U);
    EXPECT_EQ(reference_.dsi_version, 1U);
    EXPECT_EQ(reference_.bitstream_version, 2U);
    EXPECT_EQ(reference_.fs_index, 1U);
    EXPECT_EQ(reference_.frame_rate_index, 13U);
    EXPECT_EQ(reference_.n_presentations, 1U);
    EXPECT_EQ(reference_.b_program_id, 1U);
    EXPECT_EQ(reference_.short_program_id, 0x1234U);
    EXPECT_EQ(reference_.b_uuid, 1U);
    EXPECT_EQ(reference_.program_uuid, *frame.program_uuid);
    EXPECT_EQ(presentation().version, 1U);
    EXPECT_EQ(presentation().presentation_config_v1, 31U);
    EXPECT_EQ(presentation().mdcompat, 2U);
    EXPECT_EQ(presentation().b_presentation_id, 0U);
    EXPECT_EQ(presentation().presentation_emdf_version, 5U);
    EXPECT_EQ(presentation().presentation_key_id, 9U);
    EXPECT_EQ(presentation().b_presentation_channel_coded, 1U);
    EXPECT_EQ(presentation().dsi_presentation_ch_mode, 1U);
    EXPECT_EQ(presentation().presentation_channel_mask_v1, 1U);
    EXPECT_EQ(presentation().b_presentation_core_differs, 0U);
    ASSERT_EQ(presentation().groups.size(), 1U);
    const DsiSubstreamGroup& group = presentation().groups[0];
    EXPECT_EQ(group.b_substreams_present, 1U);
    EXPECT_EQ(group.b_channel_coded, 1U);
    EXPECT_EQ(group.n_substreams, 1U);
    ASSERT_EQ(group.substreams.size(), 1U);
    EXPECT_EQ(group.substreams[0].dsi_substream_channel_mask, 1U);
    EXPECT_EQ(group.b_content_type, 1U);
    EXPECT_EQ(group.language_tag_bytes, "en");
}

TEST_F(Generator, ProgramIdWithoutUuidAndNone) {
    BuildFrame frame = simple_stereo_frame();
    frame.short_program_id = 7;
    update(frame);
    EXPECT_EQ(reference_.b_program_id, 1U);
    EXPECT_EQ(reference_.b_uuid, 0U);
    update(simple_stereo_frame());
    EXPECT_EQ(reference_.b_program_id, 0U);
}

TEST_F(Generator, HighRatesAreHalvedIntoTheEntry) {
    for (const auto& [multiplier, rate] : {std::pair{0U, 48000U}, std::pair{1U, 48000U}}) {
        BuildFrame frame = simple_stereo_frame();
        frame.groups[0].substreams[0].sf_multiplier = multiplier != 0;
        frame.groups[0].substreams[0].bitrate = std::nullopt;
        frame.substreams = {{}, {}};
        update(frame);  // 96 and 192 kHz
        EXPECT_EQ(reference_.sampling_frequency, rate);
        EXPECT_EQ(presentation().groups[0].substreams[0].dsi_sf_multiplier, multiplier + 1);
    }
}

TEST_F(Generator, IdsAbove31AreExtended) {
    for (const std::uint32_t id : {0U, 31U, 32U, 400U}) {
        BuildFrame frame = simple_stereo_frame();
        frame.presentations[0].id = id;
        update(frame);
        EXPECT_EQ(presentation().b_presentation_id, 1U);
        EXPECT_EQ(presentation().presentation_id, id);
        EXPECT_EQ(presentation().b_extended_presentation_id, id > 31 ? 1U : 0U);
        EXPECT_EQ(presentation().extended_presentation_id, id > 31 ? id : 0U);
    }
}

TEST_F(Generator, ConfigOfEachType) {
    for (std::uint32_t config = 0; config < 5; ++config) {
        BuildFrame frame = simple_stereo_frame();
        frame.presentations[0].config = config;
        frame.presentations[0].groups.assign(config < 3 ? 2 : 3, 0);
        frame.presentations[0].multi_pid = config == 2;
        frame.substreams = {{}, {}};
        EXPECT_EQ(update(frame), 0U);
        EXPECT_EQ(presentation().presentation_config_v1, config);
        EXPECT_EQ(presentation().groups.size(), config < 3 ? 2U : 3U);
        EXPECT_EQ(presentation().b_multi_pid, config == 2 ? 1U : 0U);
    }
    BuildFrame frame = simple_stereo_frame();
    frame.presentations[0].config = 5;
    frame.presentations[0].groups.assign(6, 0);
    frame.substreams = {{}, {}};
    EXPECT_EQ(update(frame), 0U);
    EXPECT_EQ(presentation().presentation_config_v1, 5U);
    EXPECT_EQ(presentation().n_substream_groups_minus2, 4U);
    EXPECT_EQ(presentation().groups.size(), 6U);
}

TEST_F(Generator, TypeWithoutConfigIsInvalid) {
    BuildFrame frame = simple_stereo_frame();
    frame.presentations[0].config = 9;
    frame.groups.clear();
    EXPECT_EQ(update(frame), 5U);
    EXPECT_EQ(presentation().presentation_config_v1, 255U);
    EXPECT_TRUE(presentation().groups.empty());
}

TEST_F(Generator, EmdfOnlyPresentation) {
    BuildFrame frame = simple_stereo_frame();
    BuildPresentation emdf;
    emdf.config = 6;
    BuildEmdf first;
    first.version = 4;
    first.key_id = 12;
    emdf.add_emdf = std::vector<BuildEmdf>{first, BuildEmdf{}};
    frame.presentations.push_back(emdf);
    EXPECT_EQ(update(frame), 0U);
    EXPECT_EQ(presentation(1).presentation_config_v1, 6U);
    EXPECT_EQ(presentation(1).b_add_emdf_substreams, 1U);
    ASSERT_EQ(presentation(1).n_add_emdf_substreams, 2U);
    EXPECT_EQ(presentation(1).emdf_substreams[0].emdf_version, 4U);
    EXPECT_EQ(presentation(1).emdf_substreams[0].substream_key_id, 12U);
    EXPECT_EQ(presentation(1).mdcompat, 0U);
    EXPECT_EQ(presentation(1).presentation_channel_mask_v1, 0x800000U);
}

TEST_F(Generator, PresentationFlags) {
    BuildFrame frame = simple_stereo_frame();
    frame.presentations[0].filter = true;
    frame.presentations[0].pre_virtualized = true;
    frame.presentations[0].add_emdf = std::vector<BuildEmdf>(3);
    EXPECT_EQ(update(frame), 0U);
    EXPECT_EQ(presentation().b_presentation_filter, 1U);
    EXPECT_EQ(presentation().b_enable_presentation, 1U);
    EXPECT_EQ(presentation().n_filter_bytes, 0U);
    EXPECT_EQ(presentation().b_pre_virtualized, 1U);
    EXPECT_EQ(presentation().b_add_emdf_substreams, 1U);
    EXPECT_EQ(presentation().n_add_emdf_substreams, 3U);
    EXPECT_EQ(presentation().b_presentation_bitrate_info, 0U);
}

// 7.1.4: the core layout 5.1.2 is 3 in the two bits of its field, 5.0.2 is 2.
TEST_F(Generator, ImmersiveChannelLayoutsAndTheirCores) {
    struct Case {
        const char* mode;
        std::uint32_t dsi_mode;
        std::uint32_t core;
        std::uint32_t mask;
    };
    // Four back channels, a centre, two pairs on top.
    for (const Case& each :
         {Case{ac4_mode::k704, 11, 2, 0x3F}, Case{ac4_mode::k714, 12, 3, 0x7F},
          Case{ac4_mode::k904, 13, 2, 0x1003F}, Case{ac4_mode::k914, 14, 3, 0x1007F}}) {
        EXPECT_EQ(update(single_frame(each.mode, "1 1 11")), 0U);
        EXPECT_EQ(presentation().dsi_presentation_ch_mode, each.dsi_mode);
        EXPECT_EQ(presentation().pres_b_4_back_channels_present, 1U);
        EXPECT_EQ(presentation().pres_top_channel_pairs, 2U);
        EXPECT_EQ(presentation().presentation_channel_mask_v1, each.mask);
        EXPECT_EQ(presentation().b_presentation_core_differs, 1U);
        EXPECT_EQ(presentation().b_presentation_core_channel_coded, 1U);
        EXPECT_EQ(presentation().dsi_presentation_channel_mode_core, each.core);
        EXPECT_EQ(presentation().groups[0].substreams[0].dsi_substream_channel_mask, each.mask);
    }
    for (const char* one_pair : {"0 0 01", "0 0 10"}) {
        EXPECT_EQ(update(single_frame(ac4_mode::k714, one_pair)), 0U);
        EXPECT_EQ(presentation().pres_top_channel_pairs, 1U);
        EXPECT_EQ(presentation().presentation_channel_mask_v1, 0xC5U);
        EXPECT_EQ(presentation().groups[0].substreams[0].dsi_substream_channel_mask, 0xC5U);
    }
}

TEST_F(Generator, UnknownChannelModeWarns) {
    AnalysisRecord& record = *analysis_;
    update(simple_stereo_frame());
    record.presentations[0].channel_mode = 1022;
    EXPECT_EQ(orv_ac4descgen_update_AC4SampleEntry(parser_->generator, &reference_, record), 1U);
    EXPECT_EQ(presentation().b_presentation_channel_coded, 0U);
    EXPECT_EQ(presentation().presentation_channel_mask_v1, 0x800000U);
}

TEST_F(Generator, OldAndNewBitstreamVersions) {
    update(simple_stereo_frame());
    for (const auto& [version, result] :
         {std::pair{0, 16U}, std::pair{1, 0U}, std::pair{2, 0U}, std::pair{3, 16U}}) {
        analysis_->bitstream_version = version;
        orv_ac4descgen_init_mp4_descriptor(&reference_);
        EXPECT_EQ(orv_ac4descgen_update_AC4SampleEntry(parser_->generator, &reference_, *analysis_),
                  result);
        EXPECT_EQ(reference_.dsi_version, result == 0 ? 1U : 0U);
        EXPECT_EQ(reference_.data_reference_index, 1U);
    }
}

TEST_F(Generator, Version0PresentationHasItsIdentity) {
    update(simple_stereo_frame());
    analysis_->presentations[0].presentation_version = 0;
    analysis_->presentations[0].presentation_group = 8;
    EXPECT_EQ(orv_ac4descgen_update_AC4SampleEntry(parser_->generator, &reference_, *analysis_),
              0U);
    EXPECT_EQ(presentation().version, 0U);
    EXPECT_EQ(presentation().presentation_id, 7U);
    EXPECT_EQ(presentation().presentation_channel_mask_v1, 1U);
}

TEST_F(Generator, FrameOf65PresentationsKeeps64) {
    EXPECT_EQ(update(many_presentations_frame(65, 4)), 8U);
    EXPECT_EQ(reference_.n_presentations, 65U);
    EXPECT_EQ(reference_.presentations.size(), 64U);
    EXPECT_EQ(update(many_presentations_frame(64, 4)), 0U);
    EXPECT_EQ(reference_.n_presentations, 64U);
}

// Presentations that name one group of 128 substreams eight times: 1,024 in each.
BuildFrame frame_of_long_groups(std::size_t presentations) {
    BuildFrame frame = simple_stereo_frame();
    frame.presentations[0].config = 5;
    frame.presentations[0].groups.assign(8, 0);
    frame.presentations.resize(presentations, frame.presentations[0]);
    for (std::size_t i = 0; i < presentations; ++i) {
        frame.presentations[i].id = static_cast<std::uint32_t>(i);
    }
    frame.groups[0].substreams.assign(128, frame.groups[0].substreams[0]);
    frame.substreams = {{}, {}};
    return frame;
}

TEST_F(Generator, GroupsPast4096SubstreamsAreLeftOutAndNotCompared) {
    expect_box_for_frame_raises_nothing(frame_of_long_groups(4));
    EXPECT_EQ(reference_.named_substreams, 4096U);
    EXPECT_EQ(presentation(3).groups.at(7).substreams.size(), 128U);
    DsiRecord box;
    ASSERT_EQ(ac4_dsi_parser(write_dac4(record_of(reference_)), box, nullptr), 0U);
    box.n_presentations = 64;

    EXPECT_EQ(update(frame_of_long_groups(64)), 0U);
    EXPECT_EQ(reference_.n_presentations, 64U);
    EXPECT_EQ(presentation(3).groups.size(), 8U);
    EXPECT_EQ(presentation(4).groups.size(), 0U);
    EXPECT_EQ(presentation(63).groups.size(), 0U);
    RecordingSink sink;
    EXPECT_EQ(ac4_Ac4SpecificBox_comp(&reference_, &box, true, nullptr), Status::kOk);
    EXPECT_EQ(sink.ids(), std::vector<int>{});
    EXPECT_EQ(sink.notes().size(), 1U);

    EXPECT_EQ(update(frame_of_long_groups(1)), 0U);
    EXPECT_EQ(presentation().groups.size(), 8U);
    EXPECT_EQ(reference_.named_substreams, 1024U);
}

TEST_F(Generator, SphereIndicatorFollowsTheMark) {
    struct Case {
        const char* mode;
        bool plain;
    };
    for (const Case& each :
         {Case{ac4_mode::kMono, true}, Case{ac4_mode::kStereo, true}, Case{ac4_mode::k30, true},
          Case{ac4_mode::k50, true}, Case{ac4_mode::k51, true}, Case{ac4_mode::k70Back, true},
          Case{ac4_mode::k71Back, true}, Case{ac4_mode::k704, false},
          Case{ac4_mode::k714, false}}) {
        for (const bool mark : {false, true}) {
            BuildFrame frame = single_frame(each.mode, each.plain ? "" : "1 1 11");
            frame.substreams[0] = marked(mark);
            EXPECT_EQ(update(frame), each.plain && mark ? 17U : 0U) << each.mode;
            EXPECT_EQ(presentation().orvel_sphere_indicator, !each.plain && mark ? 1U : 0U);
        }
    }
}

// Immersive stereo stands for stereo of channels or of objects, whatever the mark.
TEST_F(Generator, SphereIndicatorOfImmersiveStereoFollowsItsKind) {
    EXPECT_EQ(update(single_frame(ac4_mode::k70Back, "", 2)), 0U);
    EXPECT_EQ(presentation().version, 2U);
    EXPECT_EQ(presentation().dsi_presentation_ch_mode, 1U);
    EXPECT_EQ(presentation().orvel_sphere_indicator, 0U);
    EXPECT_EQ(presentation().groups[0].substreams[0].dsi_substream_channel_mask, 1U);
    EXPECT_EQ(update(single_frame(ac4_mode::k71Back, "", 2)), 0U);
    EXPECT_EQ(presentation().orvel_sphere_indicator, 1U);
}

TEST_F(Generator, ObjectSubstreams) {
    BuildSubstream dynamic_ajoc;
    dynamic_ajoc.ajoc = "0 0 0011 1 0 0111 1";
    EXPECT_EQ(update(object_frame(dynamic_ajoc)), 0U);
    EXPECT_EQ(presentation().b_presentation_channel_coded, 0U);
    EXPECT_EQ(presentation().presentation_channel_mask_v1, 0x800000U);
    const DsiSubstream ajoc = presentation().groups[0].substreams.at(0);
    EXPECT_EQ(presentation().groups[0].b_channel_coded, 0U);
    EXPECT_EQ(ajoc.b_ajoc, 1U);
    EXPECT_EQ(ajoc.b_static_dmx, 0U);
    EXPECT_EQ(ajoc.n_dmx_objects_minus1, 3U);
    EXPECT_EQ(ajoc.n_umx_objects_minus1, 7U);
    EXPECT_EQ(ajoc.b_substream_contains_dynamic_objects, 1U);
    EXPECT_EQ(ajoc.b_substream_contains_bed_objects, 0U);
    EXPECT_EQ(ajoc.dsi_substream_channel_mask, 0U);

    BuildSubstream static_ajoc;
    static_ajoc.ajoc = "1 1 0 0111 1";
    EXPECT_EQ(update(object_frame(static_ajoc)), 0U);
    EXPECT_EQ(presentation().groups[0].substreams.at(0).b_static_dmx, 1U);
    EXPECT_EQ(presentation().groups[0].substreams[0].n_dmx_objects_minus1, 0U);
    // The static downmix is 5.1, a core layout of its own.
    EXPECT_EQ(presentation().b_presentation_core_differs, 1U);
    EXPECT_EQ(presentation().b_presentation_core_channel_coded, 1U);
    EXPECT_EQ(presentation().dsi_presentation_channel_mode_core, 1U);
}

TEST_F(Generator, BoxMadeForAFrameRaisesNothing) {
    expect_box_for_frame_raises_nothing(simple_stereo_frame());
    expect_box_for_frame_raises_nothing(main_and_dialogue_frame());
    expect_box_for_frame_raises_nothing(single_frame(ac4_mode::k714, "1 1 11"));
    expect_box_for_frame_raises_nothing(single_frame(ac4_mode::k904, "0 1 01"));
    expect_box_for_frame_raises_nothing(single_frame(ac4_mode::k71Back, "", 2));
    expect_box_for_frame_raises_nothing(single_frame(ac4_mode::k222));
    BuildSubstream ajoc;
    ajoc.ajoc = "0 0 0011 1 0 0111 1";
    expect_box_for_frame_raises_nothing(object_frame(ajoc));
    ajoc.ajoc = "1 1 0 0111 1";
    expect_box_for_frame_raises_nothing(object_frame(ajoc));
    BuildFrame frame = main_and_dialogue_frame();
    frame.presentations[1].id = 300;
    frame.presentations[2].add_emdf = std::vector<BuildEmdf>(2);
    frame.short_program_id = 77;
    expect_box_for_frame_raises_nothing(frame);
    BuildFrame coded = simple_stereo_frame();
    coded.presentations[0].config = 5;
    coded.presentations[0].groups.assign(4, 0);
    coded.substreams = {{}, {}};
    expect_box_for_frame_raises_nothing(coded);
}

// What a writer puts into the box of a layout without a core of its own, by hand.
TEST_F(Generator, BoxOfEachPlainLayoutRaisesNothing) {
    struct Case {
        const char* mode;
        std::uint32_t dsi_mode;
        std::uint32_t mask;
    };
    for (const Case& each :
         {Case{ac4_mode::kMono, 0, 0x2}, Case{ac4_mode::kStereo, 1, 0x1},
          Case{ac4_mode::k30, 2, 0x3}, Case{ac4_mode::k50, 3, 0x7}, Case{ac4_mode::k51, 4, 0x47},
          Case{ac4_mode::k70Back, 5, 0x20007}, Case{ac4_mode::k71Back, 6, 0x20047}}) {
        BuildFrame frame = single_frame(each.mode);
        frame.groups[0].content = std::nullopt;
        ASSERT_EQ(update(frame), 0U);
        DsiRecord box;
        box.dsi_version = 1;
        box.bitstream_version = 2;
        box.fs_index = 1;
        box.frame_rate_index = 13;
        box.n_presentations = 1;
        DsiPresentation only;
        only.version = 1;
        only.presentation_config_v1 = 31;
        only.b_presentation_channel_coded = 1;
        only.dsi_presentation_ch_mode = each.dsi_mode;
        only.presentation_channel_mask_v1 = each.mask;
        only.groups.resize(1);
        only.groups[0].b_substreams_present = 1;
        only.groups[0].b_channel_coded = 1;
        only.groups[0].n_substreams = 1;
        only.groups[0].substreams.resize(1);
        only.groups[0].substreams[0].dsi_substream_channel_mask = each.mask;
        box.presentations = {only};
        const RecordingSink sink;
        EXPECT_EQ(ac4_Ac4SpecificBox_comp(&reference_, &box, true, nullptr), Status::kOk);
        EXPECT_EQ(sink.ids(), std::vector<int>{}) << each.mode;
        box.presentations[0].b_presentation_core_differs = 1;
        static_cast<void>(ac4_Ac4SpecificBox_comp(&reference_, &box, true, nullptr));
        EXPECT_EQ(sink.ids(), std::vector<int>{4442}) << each.mode;
    }
}

TEST(GeneratorInstance, NullArgumentsAreRefused) {
    const DescriptorGeneratorConfig config;
    std::uint64_t bytes = 0;
    EXPECT_EQ(orv_ac4_descriptor_generator_query_mem_size(nullptr, &bytes), 1);
    EXPECT_EQ(orv_ac4_descriptor_generator_query_mem_size(&config, nullptr), 1);
    ASSERT_EQ(orv_ac4_descriptor_generator_query_mem_size(&config, &bytes), 0);
    std::vector<std::byte> memory(static_cast<std::size_t>(bytes));
    DescriptorGenerator* generator = nullptr;
    EXPECT_EQ(orv_ac4_descriptor_generator_open(nullptr, memory.data(), &config), 1);
    EXPECT_EQ(orv_ac4_descriptor_generator_open(&generator, nullptr, &config), 1);
    EXPECT_EQ(orv_ac4_descriptor_generator_open(&generator, memory.data(), nullptr), 1);
    ASSERT_EQ(orv_ac4_descriptor_generator_open(&generator, memory.data(), &config), 0);
    orv_ac4_descriptor_generator_close(generator);
    orv_ac4_descriptor_generator_close(nullptr);
}

}  // namespace
}  // namespace mediasplit
