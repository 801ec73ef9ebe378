// Every status bit, set and not set.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/unit/ac4analyze_impl/analyzer_fixture.h"

namespace mediasplit {
namespace {

class AnalyzerStatusTest : public AnalyzerFixture {
protected:
    // Status of one frame after a good one.
    std::uint32_t status_after(std::int32_t first, std::int32_t second) {
        BuildFrame frame = simple_stereo_frame();
        frame.sequence_counter = static_cast<std::uint32_t>(first);
        analyze(frame);
        frame.sequence_counter = static_cast<std::uint32_t>(second);
        EXPECT_EQ(analyze(frame), 0);
        return record_->status;
    }
    static BuildFrame frame_with_substream(const SubstreamText& text) {
        BuildFrame frame = simple_stereo_frame();
        frame.substreams[1] = write_substream(text);
        return frame;
    }
    static SubstreamText stereo() {
        SubstreamText text;
        text.ch_mode = 1;
        text.audio_bytes = 4;
        return text;
    }
};

TEST_F(AnalyzerStatusTest, SequenceCounterAbove1020IsOutOfRange) {
    EXPECT_EQ(status_after(1019, 1020), 0U);
    EXPECT_EQ(status_after(1020, 1021), 1U | 2U);
    EXPECT_EQ(status_after(1022, 1023), 1U);
}

TEST_F(AnalyzerStatusTest, SequenceBreaksAreTold) {
    EXPECT_EQ(status_after(5, 6), 0U);
    EXPECT_EQ(status_after(1020, 1), 0U);
    EXPECT_EQ(status_after(1020, 0), 2U);
    EXPECT_EQ(status_after(5, 7), 2U);
    EXPECT_EQ(status_after(5, 5), 2U);
    EXPECT_EQ(status_after(5, 0), 2U);
    EXPECT_EQ(status_after(5, 4), 2U);
}

TEST_F(AnalyzerStatusTest, AfterSequenceZeroOnlyZeroIsABreak) {
    EXPECT_EQ(status_after(0, 1), 0U);
    EXPECT_EQ(status_after(0, 700), 0U);
    EXPECT_EQ(status_after(0, 0), 2U);
}

TEST_F(AnalyzerStatusTest, FirstFrameNeverBreaksTheSequence) {
    BuildFrame frame = simple_stereo_frame();
    frame.sequence_counter = 500;
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 0U);
}

TEST_F(AnalyzerStatusTest, SequenceBreakForgetsTheRunningMetadata) {
    BuildFrame frame = simple_stereo_frame();
    frame.sequence_counter = 10;
    ASSERT_EQ(analyze(frame), 0);
    analyzer_->frame_data.substreams[0].dialnorm_seen = true;
    frame.sequence_counter = 11;
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_TRUE(analyzer_->frame_data.substreams[0].dialnorm_seen);
    frame.sequence_counter = 13;
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_FALSE(analyzer_->frame_data.substreams[0].dialnorm_seen);
}

TEST_F(AnalyzerStatusTest, StreamShouldStartWithAnIframe) {
    BuildFrame frame = simple_stereo_frame();
    frame.iframe = false;
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 0x200U);
    frame.sequence_counter = 2;
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 0U) << "only on the first frame";
}

TEST_F(AnalyzerStatusTest, MoreThanSixtyFourPresentationsAreCut) {
    ASSERT_EQ(analyze(many_presentations_frame(64, 1)), 0);
    EXPECT_EQ(record_->status & 4U, 0U);
    EXPECT_EQ(record_->n_presentations, 64);
    ASSERT_EQ(analyze(many_presentations_frame(65, 1)), 0);
    EXPECT_EQ(record_->status & 4U, 4U);
    EXPECT_EQ(record_->n_presentations, 64);
    EXPECT_EQ(record_->n_presentations_raw, 65);
    EXPECT_EQ(presentation(63).presentation_group, 64);
}

TEST_F(AnalyzerStatusTest, FractionsOfFramesHaveNoMetadata) {
    BuildFrame frame = simple_stereo_frame();
    frame.frame_rate_index = 6;
    frame.presentations[0].rate_bits = "1";
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 8U);
    EXPECT_EQ(presentation(0).frame_rate_fraction, 2);
    EXPECT_EQ(substream(0).slot, 0);
    EXPECT_EQ(substream(0).metadata.audio_size, 0U);
    frame.presentations[0].rate_bits = "0";
    frame.sequence_counter = 2;
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 0U);
    EXPECT_EQ(substream(0).metadata.audio_size, 40U);
}

TEST_F(AnalyzerStatusTest, MoreThanSixteenEmdfSubstreamsAreCut) {
    BuildFrame frame = simple_stereo_frame();
    frame.presentations[0].add_emdf = std::vector<BuildEmdf>(16);
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 0U);
    frame.sequence_counter = 2;
    frame.presentations[0].add_emdf = std::vector<BuildEmdf>(17);
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 16U);
    EXPECT_EQ(presentation(0).n_emdf_substreams, 16);
}

TEST_F(AnalyzerStatusTest, MetadataThatContradictsItsSizeIsToldAndSteppedOver) {
    SubstreamText text = stereo();
    text.de = DeText{};
    text.de->data = std::string();
    text.tools_size = 3;
    ASSERT_EQ(analyze(frame_with_substream(text)), 0);
    EXPECT_EQ(record_->status & 32U, 32U);
}

TEST_F(AnalyzerStatusTest, DialogueEnhancementBeforeItsSetupIsTold) {
    BuildFrame frame = simple_stereo_frame();
    frame.groups[0].substreams[0].iframes = {false};
    SubstreamText text = stereo();
    text.de = DeText{};
    text.de->config_flag = false;
    text.de->config = false;
    text.de->data = "1";
    frame.substreams[1] = write_substream(text);
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 64U);
}

TEST_F(AnalyzerStatusTest, DrcDataBeforeItsSetupIsToldAndNotFatal) {
    BuildFrame frame;
    frame.bitstream_version = 1;
    frame.groups.clear();
    BuildPresentation& presentation_text = frame.presentations[0];
    presentation_text.version = 0;
    presentation_text.groups.clear();
    presentation_text.substreams.assign(1, BuildSubstream{});
    presentation_text.substreams[0].iframes = {false};
    SubstreamText text = stereo();
    text.sus_ver = 0;
    text.drc = DrcText{};
    text.drc->reset = true;
    frame.substreams = {write_substream(text)};
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 256U);
}

TEST_F(AnalyzerStatusTest, ImmersiveStereoVersionThreeEndsTheFrame) {
    SubstreamText text = stereo();
    EmdfText payload;
    payload.id = 18;
    ImsText ims;
    ims.version = 3;
    payload.payload = write_ims(ims);
    text.emdf = std::vector<EmdfText>{payload};
    EXPECT_EQ(analyze(frame_with_substream(text)), 32);
    EXPECT_EQ(record_->status, 128U);
}

TEST_F(AnalyzerStatusTest, AudioBeyondItsSubstreamEndsTheFrame) {
    BuildFrame frame = simple_stereo_frame();
    frame.substreams[1] = MetadataBits().put(500, 15).flag(false).put(0, 64).to_bytes();
    EXPECT_EQ(analyze(frame), 32);
    EXPECT_EQ(record_->status, 8192U);
}

TEST_F(AnalyzerStatusTest, PresentationSubstreamThatIsCutEndsTheFrame) {
    BuildFrame frame = simple_stereo_frame();
    frame.substreams[0] = {0x40};
    EXPECT_EQ(analyze(frame), 32);
    EXPECT_EQ(record_->status, 8192U);
}

TEST_F(AnalyzerStatusTest, SubstreamIndexAbove127HasNoPlaceInTheMap) {
    BuildFrame frame = simple_stereo_frame();
    const Ac4Bytes audio = frame.substreams[1];
    frame.substreams.resize(129, audio);
    frame.groups[0].substreams[0].index = 127;
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 0U);
    EXPECT_EQ(record_->substream_map[127], 0);
    frame.groups[0].substreams[0].index = 128;
    frame.sequence_counter = 2;
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 128U);
    EXPECT_EQ(record_->substream_count_total, 0);
}

TEST_F(AnalyzerStatusTest, InvalidLanguageTagsAreTold) {
    struct Case {
        const char* tag;
        std::uint32_t status;
    };
    const std::vector<Case> cases = {
        {"en", 0},      {"EN", 0x400},    {"", 0x400},    {"zh-Hant-TW", 0},
        {"en-", 0x400}, {"abcde", 0x400}, {"de-1996", 0}, {"en-GB-oxendict", 0x400}};
    std::uint32_t sequence = 1;
    for (const Case& c : cases) {
        BuildFrame frame = simple_stereo_frame();
        frame.sequence_counter = sequence++;
        frame.groups[0].content = BuildContent{0, c.tag, {}};
        ASSERT_EQ(analyze(frame), 0);
        EXPECT_EQ(record_->status, c.status) << c.tag;
    }
    BuildFrame frame = simple_stereo_frame();
    frame.sequence_counter = sequence;
    frame.groups[0].content = BuildContent{0, {}, std::make_pair(false, 0U)};
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 0U) << "serialized chunks are no whole tag";
}

TEST_F(AnalyzerStatusTest, GroupsAbove63HaveNoRecord) {
    BuildFrame frame = simple_stereo_frame();
    const BuildGroup group = frame.groups[0];
    frame.groups.assign(64, group);
    frame.presentations[0].groups = {63};
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 0U);
    EXPECT_TRUE(record_->groups[63].present);
    frame.sequence_counter = 2;
    frame.groups.assign(65, group);
    frame.presentations[0].groups = {64};
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 0x800U);
    EXPECT_EQ(substream(0).info.group, 64);
}

TEST_F(AnalyzerStatusTest, SubstreamsBeyond128AreSkipped) {
    // 64 presentations of two substreams fill the slots exactly.
    BuildFrame frame = many_presentations_frame(64, 3);
    for (BuildPresentation& text : frame.presentations) {
        text.config = 0;
        text.groups = {0, 1};
    }
    frame.groups.resize(2);
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 0U);
    EXPECT_EQ(substream(127).presentation, 63);
    frame.sequence_counter = 2;
    frame.presentations[5].config = 3;
    frame.presentations[5].groups = {0, 1, 2};
    frame.groups = many_presentations_frame(1, 3).groups;
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 0x4000U);
    EXPECT_EQ(presentation(63).n_substreams, 2);
    EXPECT_EQ(presentation(63).substreams[0], 127);
    EXPECT_EQ(presentation(63).substreams[1], -1);
}

TEST_F(AnalyzerStatusTest, PresentationOfMoreThan128SubstreamsIsCut) {
    BuildFrame frame = simple_stereo_frame();
    BuildSubstream substream_text = frame.groups[0].substreams[0];
    frame.groups[0].substreams.assign(129, substream_text);
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 0x4000U);
    EXPECT_EQ(presentation(0).n_substreams, 128);
    EXPECT_EQ(record_->groups[0].n_substreams, 129U);
    EXPECT_EQ(record_->groups[0].listed, 128U);
}

TEST_F(AnalyzerStatusTest, TableErrorsAreToldByTheirCode) {
    EXPECT_EQ(analyze(many_presentations_frame(513, 1)), 33);
    EXPECT_EQ(record_->status, 0x5000U);
    BuildFrame frame = simple_stereo_frame();
    frame.bitstream_version = 3;
    EXPECT_EQ(analyze(frame), 33);
    EXPECT_EQ(record_->status, 0x6000U);
    EXPECT_EQ(analyze_bytes({0x80, 0, 0}), 33);
    EXPECT_EQ(record_->status, 0U);
    // A segment that overruns the frame.
    frame = simple_stereo_frame();
    Ac4Bytes bytes = write_ac4_frame(frame);
    bytes.pop_back();
    EXPECT_EQ(analyze_bytes(bytes), 33);
    EXPECT_EQ(record_->status, 0x5000U);
    // A name that is cut.
    frame.substreams[0] = {0xCF, 'a'};
    frame.presentations[0].alternative = true;
    EXPECT_EQ(analyze(frame), 33);
    EXPECT_EQ(record_->status, 0x7000U);
}

TEST_F(AnalyzerStatusTest, FailedFirstFrameLeavesTheNextOneFirst) {
    EXPECT_EQ(analyze(many_presentations_frame(513, 1)), 33);
    BuildFrame frame = simple_stereo_frame();
    frame.iframe = false;
    frame.sequence_counter = 900;
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 0x200U);
}

}  // namespace
}  // namespace mediasplit
