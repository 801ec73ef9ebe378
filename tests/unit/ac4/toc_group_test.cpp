#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/unit/ac4/toc_fixture.h"

namespace mediasplit {
namespace {

class TocGroupTest : public TocFixture {
protected:
    static BuildFrame object_frame(const BuildSubstream& substream) {
        BuildFrame frame = simple_stereo_frame();
        frame.groups[0].channel_coded = false;
        frame.groups[0].substreams = {substream};
        frame.groups[0].substreams[0].index = 1;
        return frame;
    }
    static BuildSubstream ajoc(const std::string& bits) {
        BuildSubstream substream;
        substream.ajoc = bits;
        return substream;
    }
    static BuildSubstream objects(const std::string& bits) {
        BuildSubstream substream;
        substream.objects = bits;
        return substream;
    }
};

TEST_F(TocGroupTest, SubstreamsAreCountedThroughTheGroupsOfAPresentation) {
    BuildFrame frame = main_and_dialogue_frame();
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(toc_.n_presentations, 3);
    EXPECT_EQ(presentation(0).substream_total, 2);
    EXPECT_EQ(presentation(0).channel_mode, 28);
    EXPECT_EQ(substream(0, 0).substream_index, 3);
    EXPECT_EQ(substream(0, 1).substream_index, 4);
    EXPECT_EQ(substream(0, 1).group, 1);
    EXPECT_EQ(substream(0, 1).content.content_classifier, 4);
    EXPECT_EQ(substream(1, 0).substream_index, 3);
    EXPECT_EQ(substream(2, 0).substream_index, 4);
    EXPECT_EQ(presentation(2).channel_mode, 4);
    EXPECT_EQ(selection_.n_groups, 2);
    EXPECT_TRUE(selection_.groups[0].b_channel_coded);
    EXPECT_EQ(selection_.groups[1].content.content_classifier, 4);
}

TEST_F(TocGroupTest, GroupsMayHoldManySubstreams) {
    for (const std::uint32_t count : {1U, 2U, 4U, 5U, 6U, 30U}) {
        BuildFrame frame = simple_stereo_frame();
        frame.groups[0].hsf_ext = true;
        frame.groups[0].substreams.clear();
        for (std::uint32_t i = 0; i < count; ++i) {
            BuildSubstream substream;
            substream.mode = i == 0 ? ac4_mode::k51 : ac4_mode::kMono;
            substream.index = i % 2;
            substream.hsf_index = i + 10;
            frame.groups[0].substreams.push_back(substream);
        }
        ASSERT_EQ(open_frame(frame), 0) << count;
        EXPECT_EQ(presentation(0).substream_total, static_cast<std::int32_t>(count));
        EXPECT_EQ(presentation(0).channel_mode, 28);
        // In any order: the walk goes on from where it stands or starts anew.
        for (std::uint32_t i = count; i-- > 0;) {
            const SubstreamInfo info = substream(0, static_cast<std::int32_t>(i));
            EXPECT_EQ(info.hsf_substream_index, static_cast<std::int32_t>(i) + 10);
            EXPECT_EQ(info.index_in_group, static_cast<std::int32_t>(i));
        }
        for (std::uint32_t i = 0; i < count; ++i) {
            EXPECT_EQ(substream(0, static_cast<std::int32_t>(i)).channel_mode, i == 0 ? 28 : 2);
            EXPECT_EQ(substream_ext(0, static_cast<std::int32_t>(i)).segment.size,
                      frame.substreams[i % 2].size());
        }
    }
}

TEST_F(TocGroupTest, AbsentSubstreamsHaveNoIndex) {
    BuildFrame frame = simple_stereo_frame();
    frame.groups[0].substreams_present = false;
    frame.groups[0].hsf_ext = true;
    ASSERT_EQ(open_frame(frame), 0);
    const SubstreamInfo info = substream(0, 0);
    EXPECT_EQ(info.substream_index, -1);
    EXPECT_EQ(info.hsf_substream_index, -1);
    EXPECT_EQ(substream_ext(0, 0).segment.size, 0U);
    EXPECT_FALSE(selection_.groups[0].b_substreams_present);
    EXPECT_TRUE(selection_.groups[0].b_hsf_ext);
}

TEST_F(TocGroupTest, AGroupNamedTwiceCountsOnce) {
    BuildFrame frame = simple_stereo_frame();
    frame.presentations[0].config = 3;
    frame.presentations[0].groups = {0, 1, 0};
    frame.groups.push_back(frame.groups[0]);
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(presentation(0).substream_total, 2);
    EXPECT_EQ(presentation_ext(0).group_count, 3);
    SubstreamInfo past;
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_substream_info(reader_, 0, 2, &past), 1);
}

TEST_F(TocGroupTest, HighestGroupReferenceSetsTheCountAndItsLimit) {
    BuildFrame frame = simple_stereo_frame();
    const BuildGroup group = frame.groups[0];
    for (const std::uint32_t highest : {6U, 7U, 63U, 127U}) {
        frame.presentations[0].groups = {highest};
        frame.groups.assign(highest + 1, group);
        ASSERT_EQ(open_frame(frame), 0) << highest;
        EXPECT_EQ(substream(0, 0).group, static_cast<std::int32_t>(highest));
        EXPECT_EQ(selection_.n_groups, static_cast<std::int32_t>(highest < 64 ? highest + 1 : 64));
    }
    frame.presentations[0].groups = {128};
    frame.groups.assign(129, group);
    EXPECT_EQ(open_frame(frame), 2);
    AC4_ANALYZE_ac4toc_reader_set_mode(reader_, TocMode::kTolerant);
    EXPECT_EQ(open_frame(frame), 2);
    EXPECT_EQ(presentation(0).substream_total, 0);
    SubstreamSegment segment;
    EXPECT_EQ(AC4_ANALYZE_ac4toc_get_substream_segment_info(reader_, 1, &segment), 0);
    EXPECT_EQ(segment.size, frame.substreams[1].size()) << "the walk went past all groups";
}

TEST_F(TocGroupTest, FirstPresentationToNameAGroupSetsItsFrameFlags) {
    BuildFrame frame = simple_stereo_frame();
    frame.frame_rate_index = 2;
    frame.presentations[0].rate_bits = "10";  // factor 2
    BuildPresentation second = frame.presentations[0];
    second.rate_bits = "0";
    frame.presentations.push_back(second);
    frame.groups[0].substreams[0].iframes = {false, true};
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(substream(1, 0).substream_index, 1);
    EXPECT_FALSE(substream(1, 0).b_iframe);
}

TEST_F(TocGroupTest, StaticDownmixOfAjocIsACoreLayout) {
    // b_lfe 1, static; no common data; 16 + 1 upmix signals; dynamic objects only
    ASSERT_EQ(open_frame(object_frame(ajoc("1 1 0 1111 001 0 1"))), 0);
    const PresentationInfo info = presentation(0);
    EXPECT_EQ(info.channel_mode, 0);
    EXPECT_EQ(info.core_channel_mode, 28);
    EXPECT_TRUE(info.has_objects);
    EXPECT_TRUE(info.lfe);
    EXPECT_EQ(info.max_group_objects, 18);
    EXPECT_EQ(substream(0, 0).audio_type, AudioType::kAjoc);
    const SubstreamInfoExt ext = substream_ext(0, 0);
    EXPECT_TRUE(ext.b_static_dmx);
    EXPECT_EQ(ext.n_dmx_objects, 5);
    EXPECT_EQ(ext.n_umx_objects, 17);
    EXPECT_TRUE(ext.has_dynamic_objects);
    EXPECT_FALSE(ext.has_bed_objects);
    ASSERT_EQ(open_frame(object_frame(ajoc("0 1 0 0011 1"))), 0);
    EXPECT_EQ(presentation(0).core_channel_mode, 26);
}

TEST_F(TocGroupTest, AjocBedsAreCounted) {
    struct Case {
        const char* assignment;  // of 12 upmix signals
        std::int32_t bed;
        bool dynamic;
        bool isf;
    };
    const std::vector<Case> cases = {
        {"1", 0, true, false},                            // dynamic objects only
        {"0 1 001", 0, true, true},                       // ISF of 8
        {"0 0 1 010", 5, true, false},                    // 5.1 without LFE
        {"0 0 1 111", 11, true, false},                   // 7.1.4 without LFE
        {"0 0 0 1 1 00000000000000111", 3, true, false},  // 17-bit mask: L, R, C
        {"0 0 0 1 0 0000001001", 4, true, false},         // 10-bit mask: L/R, Ls/Rs
        {"0 0 0 0 0001 0000 0001", 2, true, false},       // two single channels: L, R
    };
    for (const Case& c : cases) {
        // b_lfe 0, 3 downmix signals as dynamic objects, no common data, 12 upmix signals
        const std::string bits = std::string("0 0 0010 1 0 1011 ") + c.assignment;
        ASSERT_EQ(open_frame(object_frame(ajoc(bits))), 0) << c.assignment;
        const SubstreamInfoExt ext = substream_ext(0, 0);
        EXPECT_EQ(ext.n_dmx_objects, 3);
        EXPECT_EQ(ext.n_umx_objects, 12);
        EXPECT_EQ(ext.bed_channels, c.bed) << c.assignment;
        EXPECT_EQ(ext.has_bed_objects, c.bed > 0);
        EXPECT_EQ(ext.has_dynamic_objects, c.dynamic) << c.assignment;
        EXPECT_EQ(ext.has_isf_objects, c.isf);
        EXPECT_EQ(substream(0, 0).substream_index, 1) << c.assignment;
        EXPECT_EQ(presentation(0).core_channel_mode, 0);
    }
}

TEST_F(TocGroupTest, AjocCommonDataIsSteppedOver) {
    OamdCommonText text;
    text.screen_ratio = 9;
    text.additional = std::string("1010101010");
    const std::string bits = "0 1 1" + write_oamd_common(text).text() + "0000 1";
    ASSERT_EQ(open_frame(object_frame(ajoc(bits))), 0);
    EXPECT_EQ(substream(0, 0).substream_index, 1);
    EXPECT_EQ(substream_ext(0, 0).n_umx_objects, 1);
}

TEST_F(TocGroupTest, DirectObjectsTellTheirKind) {
    struct Case {
        const char* bits;
        std::int32_t n_objects;
        std::int32_t bed;
        bool beds;
        bool dynamic;
        bool isf;
        bool lfe;
    };
    const std::vector<Case> cases = {
        {"011 1 1", 4, 0, false, true, false, true},
        {"100 1 0", 5, 0, false, true, false, false},
        {"111 1 0", 0, 0, false, true, false, false},  // reserved count
        {"010 0 1 1 1 010", 2, 6, true, false, false, false},
        {"010 0 1 1 0 1 00000000000001000", 2, 1, true, false, false, false},
        {"010 0 1 1 0 0 0000000001", 2, 2, true, false, false, false},
        {"010 0 1 0", 2, 0, true, false, false, false},
        {"001 0 0 1 1 011", 1, 0, false, false, true, false},
        {"001 0 0 1 0", 1, 0, false, false, true, false},
        {"001 0 0 0 0010 10101010 01010101", 1, 0, false, false, false, false},
    };
    for (const Case& c : cases) {
        ASSERT_EQ(open_frame(object_frame(objects(c.bits))), 0) << c.bits;
        const SubstreamInfoExt ext = substream_ext(0, 0);
        EXPECT_EQ(ext.n_objects, c.n_objects) << c.bits;
        EXPECT_EQ(ext.bed_channels, c.bed) << c.bits;
        EXPECT_EQ(ext.has_bed_objects, c.beds) << c.bits;
        EXPECT_EQ(ext.has_dynamic_objects, c.dynamic) << c.bits;
        EXPECT_EQ(ext.has_isf_objects, c.isf) << c.bits;
        EXPECT_EQ(substream(0, 0).lfe, c.lfe);
        EXPECT_EQ(substream(0, 0).audio_type, AudioType::kObjects);
        EXPECT_EQ(substream(0, 0).substream_index, 1) << c.bits;
    }
}

TEST_F(TocGroupTest, ObjectGroupNamesItsMetadataSubstream) {
    BuildFrame frame = object_frame(objects("001 1 0"));
    frame.groups[0].oamd = std::make_pair(true, 2U);
    frame.substreams.push_back(Ac4Bytes(5, 0));
    ASSERT_EQ(open_frame(frame), 0);
    const SubstreamInfoExt ext = substream_ext(0, 0);
    EXPECT_TRUE(ext.b_oamd_substream);
    EXPECT_TRUE(ext.b_oamd_ndot);
    EXPECT_EQ(ext.oamd_substream_index, 2);
    EXPECT_EQ(ext.oamd_segment.size, 5U);
    EXPECT_EQ(ext.oamd_segment.offset, bytes_.size() - 5);
}

TEST_F(TocGroupTest, ObjectsAreCountedPerGroup) {
    BuildFrame frame = main_and_dialogue_frame();
    for (BuildGroup& group : frame.groups) {
        group.channel_coded = false;
        group.substreams.assign(2, objects("011 1 1"));  // three objects and LFE each
    }
    frame.groups[1].substreams.push_back(objects("100 1 0"));
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(presentation(0).max_group_objects, 13);
    EXPECT_EQ(presentation(1).max_group_objects, 8);
    EXPECT_EQ(presentation(0).substream_total, 5);
}

TEST_F(TocGroupTest, ChannelsWithObjectsHaveNoLayout) {
    BuildFrame frame = main_and_dialogue_frame();
    frame.groups[1].channel_coded = false;
    frame.groups[1].substreams = {objects("001 1 0")};
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(presentation(0).channel_mode, 0);
    EXPECT_FALSE(presentation(0).all_channel_coded);
    EXPECT_EQ(presentation(1).channel_mode, 28);
}

TEST_F(TocGroupTest, SubstreamTableTellsOffsetsAndSizes) {
    BuildFrame frame = simple_stereo_frame();
    for (const std::size_t count : {2U, 3U, 4U, 7U, 200U, 1024U}) {
        frame.substreams.clear();
        for (std::size_t i = 0; i < count; ++i) {
            frame.substreams.emplace_back(i % 5 == 4 ? 1500 : i % 7, std::uint8_t{0});
        }
        ASSERT_EQ(open_frame(frame), 0) << count;
        std::uint64_t offset = write_toc(frame).size() / 8;
        for (std::size_t i = 0; i < count; ++i) {
            SubstreamSegment segment;
            ASSERT_EQ(AC4_ANALYZE_ac4toc_get_substream_segment_info(
                          reader_, static_cast<std::int32_t>(i), &segment),
                      0);
            EXPECT_EQ(segment.offset, offset);
            EXPECT_EQ(segment.size, frame.substreams[i].size());
            offset += segment.size;
        }
        SubstreamSegment segment;
        EXPECT_EQ(AC4_ANALYZE_ac4toc_get_substream_segment_info(
                      reader_, static_cast<std::int32_t>(count), &segment),
                  2);
        EXPECT_EQ(AC4_ANALYZE_ac4toc_get_substream_segment_info(reader_, -1, &segment), 0);
        EXPECT_EQ(segment.size, 0U);
    }
}

TEST_F(TocGroupTest, SingleSubstreamWithoutASizeTakesTheRestOfTheFrame) {
    BuildFrame frame = simple_stereo_frame();
    frame.groups[0].substreams[0].index = 0;
    frame.substreams = {Ac4Bytes(123, 0)};
    frame.size_present = false;
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(substream_ext(0, 0).segment.size, 123U);
    frame.size_present = true;
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(substream_ext(0, 0).segment.size, 123U);
}

TEST_F(TocGroupTest, TableBeyondItsLimitsIsRefused) {
    BuildFrame frame = simple_stereo_frame();
    SubstreamSegment segment;
    frame.substream_count = 1025;
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_get_substream_segment_info(reader_, 0, &segment), 2);
    frame.substream_count.reset();
    frame.substream_sizes = {32769};
    frame.substreams[0].resize(40000);
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_get_substream_segment_info(reader_, 0, &segment), 2);
    AC4_ANALYZE_ac4toc_reader_set_mode(reader_, TocMode::kTolerant);
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_get_substream_segment_info(reader_, 0, &segment), 2);
    EXPECT_EQ(segment.size, 32769U);
    AC4_ANALYZE_ac4toc_reader_set_mode(reader_, TocMode::kStrict);
    frame.substream_sizes = {32768};
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_get_substream_segment_info(reader_, 0, &segment), 0);
}

TEST_F(TocGroupTest, SubstreamThatOverrunsTheFrameIsRefused) {
    BuildFrame frame = simple_stereo_frame();
    SubstreamSegment segment;
    const auto true_size = static_cast<std::uint32_t>(frame.substreams[1].size());
    frame.substream_sizes = {static_cast<std::uint32_t>(frame.substreams[0].size()), true_size + 1};
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_get_substream_segment_info(reader_, 0, &segment), 0);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_get_substream_segment_info(reader_, 1, &segment), 2);
    frame.substream_sizes.clear();
    frame.payload_base = 100;
    Ac4Bytes bytes = write_ac4_frame(frame);
    bytes.resize(bytes.size() - 100);
    ASSERT_EQ(open_bytes(bytes), 0);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_get_substream_segment_info(reader_, 1, &segment), 2);
}

TEST_F(TocGroupTest, SubstreamIndexIsLimitedTo1023) {
    BuildFrame frame = simple_stereo_frame();
    frame.groups[0].substreams[0].index = 1023;
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(substream(0, 0).substream_index, 1023);
    frame.groups[0].substreams[0].index = 1024;
    EXPECT_EQ(open_frame(frame), 2);
}

}  // namespace
}  // namespace mediasplit
