#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "tests/unit/ac4/toc_fixture.h"

namespace mediasplit {
namespace {

class TocPresentationTest : public TocFixture {
protected:
    // A presentation over groups that hold one substream each.
    static BuildFrame frame_of(const std::vector<std::string>& modes) {
        BuildFrame frame = simple_stereo_frame();
        frame.groups.clear();
        frame.presentations[0].groups.clear();
        for (std::uint32_t i = 0; i < modes.size(); ++i) {
            BuildGroup group;
            group.substreams[0].mode = modes[i];
            group.substreams[0].index = 1;
            if (modes[i].size() >= 8 && modes[i] != ac4_mode::k222 &&
                modes[i].rfind("111111111", 0) != 0) {
                group.substreams[0].immersive = "0000";
            }
            if (modes[i].size() == 7 && modes[i] >= std::string(ac4_mode::k70Wide)) {
                group.substreams[0].add_ch_base = false;
            }
            frame.groups.push_back(group);
            frame.presentations[0].groups.push_back(i);
        }
        if (modes.size() > 1) {
            frame.presentations[0].config = modes.size() == 2 ? 0 : 3;
        }
        return frame;
    }
};

TEST_F(TocPresentationTest, SimpleStereoStreamIsReadInFull) {
    BuildFrame frame = simple_stereo_frame(40);
    frame.presentations[0].id = 6;
    frame.presentations[0].mdcompat = 3;
    ASSERT_EQ(open_frame(frame), 0);
    const PresentationInfo info = presentation(0);
    EXPECT_TRUE(info.decodable);
    EXPECT_TRUE(info.b_single_substream);
    EXPECT_EQ(info.presentation_version_plus1, 2);
    EXPECT_EQ(info.type_code, 1);
    EXPECT_EQ(info.mdcompat_plus1, 4);
    EXPECT_EQ(info.presentation_group_plus1, 7);
    EXPECT_EQ(info.n_substream_groups_declared, 1);
    EXPECT_EQ(info.n_substream_groups_used, 1);
    EXPECT_EQ(info.substream_total, 1);
    EXPECT_EQ(info.channel_mode, 4);
    EXPECT_EQ(info.core_channel_mode, 0);
    EXPECT_EQ(info.frame_rate_multiply, 1);
    EXPECT_EQ(info.frame_rate_fraction, 1);
    EXPECT_EQ(info.presentation_substream_index, 0);
    EXPECT_EQ(info.presentation_substream.size, frame.substreams[0].size());
    EXPECT_FALSE(info.b_emdf);

    const SubstreamInfo substream_info = substream(0, 0);
    EXPECT_EQ(substream_info.channel_mode, 4);
    EXPECT_EQ(substream_info.channel_count, 2);
    EXPECT_FALSE(substream_info.lfe);
    EXPECT_EQ(substream_info.channel_bitmap, 3U);
    EXPECT_EQ(substream_info.sample_rate, 48000);
    EXPECT_TRUE(substream_info.b_iframe);
    EXPECT_EQ(substream_info.substream_index, 1);
    EXPECT_EQ(substream_info.group, 0);
    EXPECT_EQ(substream_info.sus_ver, 1);
    EXPECT_TRUE(substream_info.content.b_content_type);
    EXPECT_EQ(substream_info.content.content_classifier, 0);
    EXPECT_EQ(std::string_view(substream_info.content.language.data(),
                               substream_info.content.language_size),
              "en");
    SubstreamInfo past;
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_substream_info(reader_, 0, 1, &past), 1);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_substream_info(reader_, 0, -1, &past), 1);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_substream_info(reader_, 1, 0, &past), 4);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_substream_info(reader_, -1, 0, &past), 4);
}

TEST_F(TocPresentationTest, EveryChannelModeHasItsCodeCountAndBitmap) {
    struct Case {
        const char* mode;
        std::int32_t code;
        std::int32_t channels;
        bool lfe;
        std::uint32_t bitmap;
    };
    // 7.1.4 and 9.1.4 are deliberately counted as 13 and 15.
    const std::array<Case, 16> cases = {{{ac4_mode::kMono, 2, 1, false, 4},
                                         {ac4_mode::kStereo, 4, 2, false, 3},
                                         {ac4_mode::k30, 24, 3, false, 7},
                                         {ac4_mode::k50, 26, 5, false, 55},
                                         {ac4_mode::k51, 28, 6, true, 63},
                                         {ac4_mode::k70Back, 240, 7, false, 247},
                                         {ac4_mode::k71Back, 242, 8, true, 255},
                                         {ac4_mode::k70Wide, 244, 7, false, 3127},
                                         {ac4_mode::k71Wide, 246, 8, true, 3135},
                                         {ac4_mode::k70Top, 248, 7, false, 823},
                                         {ac4_mode::k71Top, 250, 8, true, 831},
                                         {ac4_mode::k704, 504, 11, false, 64567},
                                         {ac4_mode::k714, 506, 13, true, 64575},
                                         {ac4_mode::k904, 1016, 13, false, 64759},
                                         {ac4_mode::k914, 1018, 15, true, 64767},
                                         {ac4_mode::k222, 1020, 0, false, 0}}};
    for (const Case& c : cases) {
        ASSERT_EQ(open_frame(frame_of({c.mode})), 0) << c.code;
        const SubstreamInfo info = substream(0, 0);
        EXPECT_EQ(info.channel_mode, c.code);
        EXPECT_EQ(info.channel_count, c.channels) << c.code;
        EXPECT_EQ(info.lfe, c.lfe) << c.code;
        EXPECT_EQ(info.channel_bitmap, c.bitmap) << c.code;
        // A single group's code comes through as it is.
        EXPECT_EQ(presentation(0).channel_mode, c.code);
        EXPECT_TRUE(presentation(0).decodable);
    }
}

TEST_F(TocPresentationTest, EscapedChannelModeIsLimitedToThirtyOne) {
    const std::string escape = ac4_mode::kEscape;
    ASSERT_EQ(open_frame(frame_of({escape + MetadataBits().variable(31, 2).text()})), 0);
    EXPECT_EQ(substream(0, 0).channel_mode, 1022);
    EXPECT_EQ(presentation(0).channel_mode, 1022);
    EXPECT_EQ(open_frame(frame_of({escape + MetadataBits().variable(32, 2).text()})), 2);
    AC4_ANALYZE_ac4toc_reader_set_mode(reader_, TocMode::kTolerant);
    EXPECT_EQ(open_frame(frame_of({escape + MetadataBits().variable(32, 2).text()})), 2);
    EXPECT_EQ(substream(0, 0).channel_mode, 1022);
}

TEST_F(TocPresentationTest, LayoutsOfGroupsAreJoined) {
    struct Case {
        std::vector<std::string> modes;
        std::int32_t code;
    };
    const std::vector<Case> cases = {
        {{ac4_mode::kMono, ac4_mode::kStereo}, 4},  // the mono signal goes into the stereo pair
        {{ac4_mode::kStereo, ac4_mode::kMono}, 4},
        {{ac4_mode::kMono, ac4_mode::kMono}, 2},
        {{ac4_mode::k51, ac4_mode::kStereo}, 28},
        {{ac4_mode::k50, ac4_mode::k51}, 28},
        {{ac4_mode::k50, ac4_mode::k51, ac4_mode::k71Back}, 242},
        {{ac4_mode::kStereo, ac4_mode::kMono, ac4_mode::k30}, 24},
        {{ac4_mode::k714, ac4_mode::k51}, 506},
        {{ac4_mode::k70Wide, ac4_mode::k70Top}, 0},  // no layout has both
        {{ac4_mode::k222, ac4_mode::k222}, 1020},
    };
    for (const Case& c : cases) {
        ASSERT_EQ(open_frame(frame_of(c.modes)), 0);
        EXPECT_EQ(presentation(0).channel_mode, c.code);
        EXPECT_EQ(presentation(0).substream_total, static_cast<std::int32_t>(c.modes.size()));
    }
}

TEST_F(TocPresentationTest, CoreLayoutExistsForImmersiveModesOnly) {
    struct Case {
        const char* mode;
        std::int32_t core;
    };
    const std::array<Case, 8> cases = {{{ac4_mode::k50, 0},
                                        {ac4_mode::k51, 0},
                                        {ac4_mode::k704, 248},
                                        {ac4_mode::k714, 250},
                                        {ac4_mode::k904, 248},
                                        {ac4_mode::k914, 250},
                                        {ac4_mode::k71Top, 0},
                                        {ac4_mode::k222, 0}}};
    for (const Case& c : cases) {
        ASSERT_EQ(open_frame(frame_of({c.mode})), 0);
        EXPECT_EQ(presentation(0).core_channel_mode, c.core) << c.mode;
    }
    ASSERT_EQ(open_frame(frame_of({ac4_mode::k704, ac4_mode::k714})), 0);
    EXPECT_EQ(presentation(0).core_channel_mode, 250);
}

TEST_F(TocPresentationTest, ImmersiveFlagsAreJoinedOverTheGroups) {
    struct Case {
        const char* first;
        const char* second;
        bool back;
        bool centre;
        std::int32_t pairs;
    };
    const std::array<Case, 5> cases = {{{"0000", "0000", false, false, 0},
                                        {"1001", "0000", true, false, 1},
                                        {"0110", "0001", false, true, 1},
                                        {"0011", "1000", true, false, 2},
                                        {"0010", "0111", false, true, 2}}};
    for (const Case& c : cases) {
        BuildFrame frame = frame_of({ac4_mode::k714, ac4_mode::k714});
        frame.groups[0].substreams[0].immersive = c.first;
        frame.groups[1].substreams[0].immersive = c.second;
        ASSERT_EQ(open_frame(frame), 0);
        const PresentationInfoExt ext = presentation_ext(0);
        EXPECT_EQ(ext.b_4_back_channels_present, c.back);
        EXPECT_EQ(ext.b_centre_present, c.centre);
        EXPECT_EQ(ext.top_channel_pairs, c.pairs);
    }
}

TEST_F(TocPresentationTest, PresentationVersionTwoMakesImmersiveStereo) {
    struct Case {
        const char* mode;
        std::int32_t code;
        bool decodable;
    };
    const std::array<Case, 7> cases = {{{ac4_mode::k70Back, 8, true},
                                        {ac4_mode::k71Back, 10, true},
                                        {ac4_mode::k70Wide, 244, false},
                                        {ac4_mode::k71Wide, 246, false},
                                        {ac4_mode::k70Top, 248, false},
                                        {ac4_mode::k71Top, 250, false},
                                        {ac4_mode::k51, 28, true}}};
    for (const Case& c : cases) {
        BuildFrame frame = frame_of({c.mode});
        // A second presentation of version 1 over the same group keeps the plain reading.
        frame.presentations.push_back(frame.presentations[0]);
        frame.presentations[0].version = 2;
        ASSERT_EQ(open_frame(frame), 0);
        EXPECT_EQ(presentation(0).channel_mode, c.code);
        EXPECT_EQ(presentation(0).decodable, c.decodable) << c.mode;
        EXPECT_EQ(substream(0, 0).channel_mode, c.code);
        EXPECT_EQ(substream(0, 0).channel_count, c.code <= 10 ? 2 : substream(1, 0).channel_count);
        EXPECT_TRUE(presentation(1).decodable);
        EXPECT_GT(presentation(1).channel_mode, 10);
        EXPECT_EQ(substream(1, 0).channel_mode, presentation(1).channel_mode);
    }
}

TEST_F(TocPresentationTest, ConfigDecidesTypeGroupsAndRoles) {
    struct Case {
        std::optional<std::uint32_t> config;
        std::size_t groups;
        std::int32_t type;
        std::int32_t used;
        std::array<std::int32_t, 3> roles;
    };
    const std::vector<Case> cases = {
        {{}, 1, 1, 1, {0, 0, 0}}, {0, 2, 6, 2, {0, 1, 0}}, {1, 2, 2, 1, {0, 3, 0}},
        {2, 2, 3, 2, {0, 2, 0}},  {3, 3, 7, 3, {0, 1, 2}}, {4, 3, 4, 2, {0, 3, 2}},
        {5, 2, 9, 2, {0, 0, 0}},  {5, 4, 9, 4, {0, 0, 0}}, {5, 5, 9, 5, {0, 0, 0}},
        {5, 8, 9, 8, {0, 0, 0}},  {7, 0, 0, 0, {0, 0, 0}}, {31, 0, 0, 0, {0, 0, 0}},
    };
    for (const Case& c : cases) {
        BuildFrame frame = simple_stereo_frame();
        BuildPresentation& presentation_text = frame.presentations[0];
        presentation_text.config = c.config;
        presentation_text.multi_pid = true;
        presentation_text.groups.clear();
        presentation_text.skip_bytes = 40;
        for (std::uint32_t i = 0; i < c.groups; ++i) {
            presentation_text.groups.push_back(static_cast<std::uint32_t>(c.groups) - 1 - i);
        }
        BuildGroup group = frame.groups[0];
        frame.groups.assign(c.groups, group);
        ASSERT_EQ(open_frame(frame), 0) << c.type;
        const PresentationInfo info = presentation(0);
        EXPECT_EQ(info.type_code, c.type);
        EXPECT_EQ(info.decodable, c.type != 0 && c.type != 9);
        EXPECT_EQ(info.n_substream_groups_declared, static_cast<std::int32_t>(c.groups));
        EXPECT_EQ(info.n_substream_groups_used, c.used);
        const PresentationInfoExt ext = presentation_ext(0);
        EXPECT_EQ(ext.presentation_config, c.config ? static_cast<std::int32_t>(*c.config) : -1);
        EXPECT_EQ(ext.b_multi_pid, c.config.has_value());
        EXPECT_EQ(ext.n_skip_bytes, c.groups == 0 ? 40U : 0U);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(ext.group_roles[i], c.roles[i]);
        }
        for (std::size_t i = 0; i < c.groups; ++i) {
            EXPECT_EQ(ext.groups[i], static_cast<std::int32_t>(c.groups - 1 - i));
        }
        EXPECT_EQ(selection_.presentations[0].group_count,
                  static_cast<std::int32_t>(c.groups < 3 ? c.groups : 3));
    }
}

TEST_F(TocPresentationTest, ConfigAndGroupCountHaveLimits) {
    BuildFrame frame = simple_stereo_frame();
    frame.presentations[0].config = 32;
    EXPECT_EQ(open_frame(frame), 2);
    frame.presentations[0].config = 5;
    frame.presentations[0].groups.assign(9, 0);
    EXPECT_EQ(open_frame(frame), 2);
    AC4_ANALYZE_ac4toc_reader_set_mode(reader_, TocMode::kTolerant);
    EXPECT_EQ(open_frame(frame), 2);
    EXPECT_EQ(presentation(0).n_substream_groups_declared, 9);
    frame.presentations[0].groups.assign(30, 0);
    EXPECT_EQ(open_frame(frame), 2);
    EXPECT_EQ(presentation(0).n_substream_groups_declared, 9);
}

TEST_F(TocPresentationTest, VersionHasALimit) {
    BuildFrame frame = simple_stereo_frame();
    frame.presentations[0].version = 1U << 16;
    EXPECT_EQ(open_frame(frame), 0);
    frame.presentations[0].version = (1U << 16) + 1;
    EXPECT_EQ(open_frame(frame), 2);
}

TEST_F(TocPresentationTest, EmdfOnlyPresentationHasNothingElse) {
    BuildFrame frame = simple_stereo_frame();
    BuildPresentation emdf_only;
    emdf_only.config = 6;
    emdf_only.add_emdf = {BuildEmdf{1, 2, 0, 0, 0, 0}, BuildEmdf{4, 9, {}, 1, 3, 7}};
    frame.presentations.push_back(emdf_only);
    ASSERT_EQ(open_frame(frame), 0);
    const PresentationInfo info = presentation(1);
    EXPECT_EQ(info.type_code, 8);
    EXPECT_EQ(info.mdcompat_plus1, 0);
    EXPECT_FALSE(info.decodable);
    EXPECT_TRUE(info.b_emdf);
    EXPECT_EQ(info.substream_total, 0);
    EmdfInfo emdf;
    ASSERT_EQ(AC4_ANALYZE_ac4toc_reader_get_emdf_info(reader_, 1, &emdf), 0);
    EXPECT_EQ(emdf.count, 2);
    EXPECT_EQ(emdf.added[0].emdf_version, 1);
    EXPECT_EQ(emdf.added[0].key_id, 2);
    EXPECT_EQ(emdf.added_segments[0].size, frame.substreams[0].size());
    EXPECT_EQ(emdf.added[1].emdf_version, 4);
    EXPECT_EQ(emdf.added[1].key_id, 9);
    EXPECT_EQ(emdf.added[1].substream_index, -1);
    EXPECT_EQ(emdf.added_segments[1].size, 0U);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_emdf_info(reader_, 0, &emdf), 4);
}

TEST_F(TocPresentationTest, PresentationsKeepTheirEmdfData) {
    BuildFrame frame = simple_stereo_frame();
    frame.presentations[0].emdf = BuildEmdf{3, 7, 1, 2, 3, 0xA5};
    frame.presentations[0].add_emdf = std::vector<BuildEmdf>(20, BuildEmdf{2, 3, {}, 0, 0, 0});
    frame.presentations[0].filter = true;
    ASSERT_EQ(open_frame(frame), 0);
    const PresentationInfoExt ext = presentation_ext(0);
    EXPECT_EQ(ext.emdf.emdf_version, 3);
    EXPECT_EQ(ext.emdf.key_id, 7);
    EXPECT_EQ(ext.emdf.substream_index, 1);
    EXPECT_TRUE(ext.b_presentation_filter);
    EXPECT_TRUE(ext.b_enable_presentation);
    EXPECT_TRUE(ext.b_add_emdf_substreams);
    EXPECT_EQ(ext.n_add_emdf_substreams, 20);
    EmdfInfo emdf;
    ASSERT_EQ(AC4_ANALYZE_ac4toc_reader_get_emdf_info(reader_, 0, &emdf), 0);
    EXPECT_EQ(emdf.count, 16);
    EXPECT_EQ(emdf.own_segment.size, frame.substreams[1].size());
}

TEST_F(TocPresentationTest, PresentationIdLimitAppliesToTheStoredValue) {
    BuildFrame frame = simple_stereo_frame();
    frame.presentations[0].id = 509;
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(presentation(0).presentation_group_plus1, 510);
    frame.presentations[0].id = 510;
    EXPECT_EQ(open_frame(frame), 2);
}

TEST_F(TocPresentationTest, FrameRateFieldsFollowTheFrameRate) {
    struct Case {
        std::uint32_t rate_index;
        const char* bits;
        std::size_t flags;
        std::int32_t multiply;
        std::int32_t fraction;
    };
    const std::vector<Case> cases = {
        {0, "0", 1, 1, 1},   {1, "1", 2, 2, 1}, {2, "0", 1, 1, 1},  {3, "10", 2, 2, 1},
        {4, "11", 4, 4, 1},  {5, "0", 1, 1, 1}, {6, "1", 1, 1, 2},  {7, "00", 1, 1, 1},
        {8, "01", 1, 1, 2},  {9, "1", 2, 2, 1}, {10, "0", 1, 1, 1}, {11, "10", 1, 1, 2},
        {12, "11", 1, 1, 4}, {13, "", 1, 1, 1},
    };
    for (const Case& c : cases) {
        BuildFrame frame = simple_stereo_frame();
        frame.frame_rate_index = c.rate_index;
        frame.presentations[0].rate_bits = c.bits;
        frame.groups[0].substreams[0].iframes.assign(c.flags, false);
        frame.groups[0].substreams[0].iframes[0] = true;
        ASSERT_EQ(open_frame(frame), 0) << c.rate_index;
        const PresentationInfo info = presentation(0);
        EXPECT_EQ(info.frame_rate_multiply, c.multiply) << c.rate_index;
        EXPECT_EQ(info.frame_rate_fraction, c.fraction) << c.rate_index;
        EXPECT_EQ(info.decodable, c.multiply == 1);
        EXPECT_TRUE(substream(0, 0).b_iframe);
        EXPECT_EQ(substream(0, 0).substream_index, 1);
    }
}

TEST_F(TocPresentationTest, DecodableNeedsAFittingVersionAndCompatibility) {
    struct Case {
        std::uint32_t bitstream_version;
        std::uint32_t version;
        std::uint32_t mdcompat;
        bool decodable;
    };
    const std::vector<Case> cases = {
        {2, 1, 0, true}, {2, 2, 3, true}, {2, 0, 0, false}, {2, 3, 0, false}, {2, 1, 4, false},
        {0, 0, 3, true}, {1, 0, 0, true}, {0, 1, 0, false}, {1, 1, 0, false}, {1, 0, 4, false},
    };
    for (const Case& c : cases) {
        BuildFrame frame = c.bitstream_version == 2
                               ? simple_stereo_frame()
                               : old_frame(c.bitstream_version, old_presentation(1));
        frame.presentations[0].version = c.version;
        frame.presentations[0].mdcompat = c.mdcompat;
        ASSERT_EQ(open_frame(frame), 0);
        EXPECT_EQ(presentation(0).decodable, c.decodable)
            << c.bitstream_version << " " << c.version << " " << c.mdcompat;
        EXPECT_EQ(selection_.presentations[0].decodable, c.decodable);
        EXPECT_EQ(selection_.presentations[0].presentation_version,
                  static_cast<std::int32_t>(c.version));
        EXPECT_EQ(selection_.presentations[0].mdcompat, static_cast<std::int32_t>(c.mdcompat));
    }
}

TEST_F(TocPresentationTest, OldSyntaxReadsItsSubstreamsInline) {
    struct Case {
        std::optional<std::uint32_t> config;
        std::size_t substreams;
        std::int32_t type;
    };
    const std::vector<Case> cases = {{{}, 1, 1}, {0, 2, 6}, {1, 2, 2}, {2, 2, 3},
                                     {3, 3, 7},  {4, 3, 4}, {5, 1, 5}, {7, 0, 0}};
    for (const std::uint32_t version : {0U, 1U}) {
        for (const Case& c : cases) {
            BuildPresentation text = old_presentation(c.substreams);
            text.config = c.config;
            text.skip_bytes = 3;
            text.hsf_ext = c.config.has_value() && c.substreams > 0;
            for (std::uint32_t i = 0; i < c.substreams; ++i) {
                BuildSubstream& sub = text.substreams[i];
                sub.index = i;
                sub.mode = i == 0 ? ac4_mode::k51 : ac4_mode::kStereo;
                sub.content = BuildContent{i, "fr", {}};
                sub.sf_multiplier = i == 1;
            }
            if (text.hsf_ext) {
                text.substreams[0].hsf_index = 3;
            }
            ASSERT_EQ(open_frame(old_frame(version, text)), 0) << c.type;
            const PresentationInfo info = presentation(0);
            EXPECT_EQ(info.type_code, c.type);
            EXPECT_EQ(info.substream_count, static_cast<std::int32_t>(c.substreams));
            EXPECT_EQ(info.b_hsf_ext, text.hsf_ext);
            EXPECT_EQ(info.channel_mode, c.substreams > 0 ? 28 : 0);
            EXPECT_EQ(info.decodable, c.type != 0);
            for (std::uint32_t i = 0; i < c.substreams; ++i) {
                const auto index = static_cast<std::int32_t>(i);
                const SubstreamInfo sub = substream(0, index);
                EXPECT_EQ(sub.substream_index, index);
                EXPECT_EQ(sub.sus_ver, 0);
                EXPECT_EQ(sub.content.content_classifier, index);
                EXPECT_EQ(sub.sample_rate, i == 1 ? 192000 : 96000);
                EXPECT_EQ(sub.hsf_substream_index, i == 0 && text.hsf_ext ? 3 : -1);
                EXPECT_EQ(substream_ext(0, index).segment.size, 6U);
            }
            const SelectedPresentation& selected = selection_.presentations[0];
            EXPECT_EQ(selected.substream_count, static_cast<std::int32_t>(c.substreams));
            for (std::uint32_t i = 0; i < 3; ++i) {
                EXPECT_EQ(selected.contents[i].b_content_type, i < c.substreams);
                EXPECT_EQ(selected.contents[i].language_size, i < c.substreams ? 2U : 0U);
            }
            SubstreamInfo past;
            EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_substream_info(
                          reader_, 0, static_cast<std::int32_t>(c.substreams), &past),
                      1);
        }
    }
}

TEST_F(TocPresentationTest, OldSyntaxRefusesModesWithoutALayout) {
    BuildPresentation text = old_presentation(1);
    text.substreams[0].mode = "1111110";  // assigned to nothing
    EXPECT_EQ(open_frame(old_frame(0, text)), 3);
    text.substreams[0].mode =
        "1111111"
        "000";  // escape
    EXPECT_EQ(open_frame(old_frame(1, text)), 3);
    AC4_ANALYZE_ac4toc_reader_set_mode(reader_, TocMode::kTolerant);
    EXPECT_EQ(open_frame(old_frame(1, text)), 3);
    EXPECT_EQ(substream(0, 0).channel_mode, 1022);
}

TEST_F(TocPresentationTest, BitrateIndicatorHasShortAndLongCodes) {
    struct Case {
        const char* bits;
        std::int32_t index;
    };
    const std::vector<Case> cases = {{"000", 0},    {"010", 1},    {"100", 2},    {"110", 3},
                                     {"00100", 4},  {"00111", 7},  {"01100", 8},  {"01111", 11},
                                     {"10100", 12}, {"10111", 15}, {"11100", 16}, {"11111", 19}};
    for (const Case& c : cases) {
        BuildFrame frame = simple_stereo_frame();
        frame.groups[0].substreams[0].bitrate = c.bits;
        ASSERT_EQ(open_frame(frame), 0);
        EXPECT_TRUE(substream(0, 0).b_bitrate_info);
        EXPECT_EQ(substream(0, 0).bitrate_indicator, c.index) << c.bits;
        EXPECT_EQ(substream(0, 0).substream_index, 1);
    }
}

TEST_F(TocPresentationTest, FortyFourKilohertzHasNoMultiplier) {
    BuildFrame frame = simple_stereo_frame();
    frame.fs_index = 0;
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(substream(0, 0).sample_rate, 44100);
    EXPECT_EQ(substream(0, 0).sf_multiplier, 0);
}

TEST_F(TocPresentationTest, SerializedLanguageTagGivesItsChunk) {
    BuildFrame frame = simple_stereo_frame();
    frame.groups[0].content = BuildContent{5, {}, std::make_pair(true, 0x656EU)};
    ASSERT_EQ(open_frame(frame), 0);
    const ContentType content = substream(0, 0).content;
    EXPECT_EQ(content.content_classifier, 5);
    EXPECT_TRUE(content.b_serialized_language_tag);
    EXPECT_TRUE(content.b_start_tag);
    EXPECT_EQ(content.language_tag_chunk, 0x656EU);
    EXPECT_EQ(content.language_size, 0U);
}

TEST_F(TocPresentationTest, LongestLanguageTagIsKept) {
    BuildFrame frame = simple_stereo_frame();
    const std::string tag(63, 'x');
    frame.groups[0].content = BuildContent{0, tag, {}};
    ASSERT_EQ(open_frame(frame), 0);
    const ContentType content = substream(0, 0).content;
    EXPECT_EQ(std::string_view(content.language.data(), content.language_size), tag);
    EXPECT_EQ(selection_.groups[0].content.language_size, 63U);
}

}  // namespace
}  // namespace mediasplit
