#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "src/ac4analyze_impl/es_parser.h"
#include "tests/support/ac4_builder.h"
#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

using Ids = std::vector<int>;

class EsParser : public testing::Test {
protected:
    Status feed(const Ac4Bytes& bytes, std::uint32_t number = 1) {
        testing::internal::CaptureStdout();
        const Status status =
            ac4_es_parser_ref_dsi(*parser_, bytes, *reference_, *analysis_, number, nullptr);
        lines_ = testing::internal::GetCapturedStdout();
        return status;
    }
    Status feed(const BuildFrame& frame, std::uint32_t number = 1) {
        return feed(write_ac4_frame(frame), number);
    }

    RecordingSink sink_;
    std::unique_ptr<Ac4EsParser> parser_ = ac4_es_parser_new(nullptr);
    std::unique_ptr<ReferenceDsi> reference_ = ac4_es_parser_ref_dsi_init();
    std::unique_ptr<AnalysisRecord> analysis_ = ac4_es_parser_init();
    std::string lines_;
};

TEST_F(EsParser, BringsTheReferenceUpToTheFrame) {
    EXPECT_EQ(feed(simple_stereo_frame()), Status::kOk);
    EXPECT_EQ(lines_, "");
    EXPECT_EQ(reference_->dsi_version, 1U);
    EXPECT_EQ(reference_->bitstream_version, 2U);
    EXPECT_EQ(reference_->n_presentations, 1U);
    EXPECT_EQ(analysis_->n_presentations, 1);
    ac4_es_parser_ref_dsi_clear(*reference_);
    ac4_es_parser_clear(*analysis_);
    EXPECT_EQ(reference_->n_presentations, 0U);
    EXPECT_EQ(analysis_->n_presentations, 0);
    EXPECT_EQ(ac4_get_top_pres_ch_mode(analysis_.get()), 0);
}

TEST_F(EsParser, FrameThatCannotBeAnalyzedIsToldOnStandardOutput) {
    EXPECT_EQ(feed(Ac4Bytes{0xFF}), Status::kFailed);
    EXPECT_EQ(lines_, "Internal error of orv_ac4analyze_analyze_frame: 33\n");
    EXPECT_EQ(feed(Ac4Bytes{}, 2), Status::kFailed);
    EXPECT_NE(lines_, "");
    EXPECT_EQ(sink_.ids(), Ids{});
}

TEST_F(EsParser, WarningOfTheGeneratorFailsTheFirstSampleOnly) {
    BuildFrame frame = simple_stereo_frame();
    frame.presentations[0].config = 7;  // a type without a configuration of its own
    frame.groups.clear();
    EXPECT_EQ(feed(frame), Status::kFailed);
    EXPECT_EQ(lines_, "Internal error of orv_ac4descgen_update_AC4SampleEntry: 5\n");
    EXPECT_EQ(feed(frame, 2), Status::kOk);
    EXPECT_EQ(lines_, "");
}

TEST_F(EsParser, MoreThan64PresentationsFailTheFirstSampleOnly) {
    const BuildFrame frame = many_presentations_frame(65, 3);
    EXPECT_EQ(feed(frame), Status::kFailed);
    EXPECT_EQ(lines_, "Internal error of orv_ac4descgen_update_AC4SampleEntry: 8\n");
    EXPECT_EQ(feed(frame, 2), Status::kOk);
    EXPECT_EQ(reference_->n_presentations, 65U);
}

TEST_F(EsParser, PlainLayoutMarkedImmersiveIsNoFailure) {
    BuildFrame frame = simple_stereo_frame();
    PresentationText text;
    text.dialnorm = 96;
    text.additional = "1";
    text.tail.put(0, 16);
    frame.substreams[0] = write_presentation(text).to_bytes();
    EXPECT_EQ(feed(frame), Status::kOk);
    EXPECT_EQ(lines_, "");
    EXPECT_EQ(reference_->presentations[0].orvel_sphere_indicator, 0U);
    EXPECT_TRUE(analysis_->presentations[0].metadata.immersive_audio_indicator);
}

TEST_F(EsParser, OldBitstreamVersionsAreDeprecated) {
    for (const std::uint32_t version : {0U, 1U}) {
        BuildFrame frame = simple_stereo_frame();
        frame.bitstream_version = version;
        frame.presentations[0].version = 0;
        BuildSubstream substream;
        substream.index = 1;
        frame.presentations[0].substreams = {substream};
        frame.substreams = {{}, {}};
        sink_.clear();
        EXPECT_EQ(feed(frame), Status::kRuleBroken) << lines_;
        EXPECT_EQ(sink_.ids(), Ids{4488});
        EXPECT_EQ(lines_, "");
        EXPECT_EQ(feed(frame, 2), Status::kOk);
        EXPECT_EQ(sink_.ids(), Ids{4488});
    }
}

TEST_F(EsParser, CurrentBitstreamVersionIsTestedAndRaisesNothing) {
    feed(simple_stereo_frame());
    EXPECT_TRUE(sink_.was_evaluated(4488));
    EXPECT_EQ(sink_.ids(), Ids{});
}

TEST_F(EsParser, AnalyzesIntoARecordMadeOnFirstUse) {
    std::unique_ptr<AnalysisRecord> record;
    EXPECT_EQ(ac4_es_parser(*parser_, write_ac4_frame(simple_stereo_frame()), record), 0);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->bitstream_version, 2);
    const AnalysisRecord* first = record.get();
    EXPECT_EQ(ac4_es_parser(*parser_, Ac4Bytes{0xFF}, record), 33);
    EXPECT_EQ(record.get(), first);
    ac4_es_parser_flush(record);
    EXPECT_EQ(record, nullptr);
}

TEST_F(EsParser, VersionIsToldByMessage2) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(ac4_es_parser_version(nullptr), Status::kOk);
    testing::internal::GetCapturedStdout();
    ASSERT_EQ(sink_.ids(), Ids{2});
    EXPECT_NE(sink_.reports()[0].text.find("4.1.0"), std::string::npos);
}

TEST_F(EsParser, ReadersGiveTheFirstPresentation) {
    BuildFrame frame = main_and_dialogue_frame();
    frame.presentations[0].mdcompat = 2;
    frame.groups[0].substreams[0].mode = ac4_mode::k714;
    frame.groups[0].substreams[0].immersive = "1 1 11";
    frame.presentations[0].config.reset();
    frame.presentations[0].groups = {0};
    ASSERT_EQ(ac4_es_parser(*parser_, write_ac4_frame(frame), analysis_), 0);
    EXPECT_TRUE(ac4_get_bitstream_b_iframe_global(analysis_.get()));
    EXPECT_EQ(ac4_get_bitstream_version(analysis_.get()), 2);
    EXPECT_EQ(ac4_get_presentation_version(analysis_.get()), 1);
    EXPECT_EQ(ac4_get_top_mdcompat(analysis_.get()), 2);
    EXPECT_TRUE(ac4_get_top_b_channel_coded(analysis_.get()));
    EXPECT_EQ(ac4_get_top_pres_ch_mode(analysis_.get()), 506);
    EXPECT_EQ(ac4_get_top_pres_top_channel_pairs(analysis_.get()), 2);
    EXPECT_EQ(ac4_get_top_channel_layout_count(analysis_.get()), 12U);
}

TEST_F(EsParser, ReadersGiveZeroWithoutARecord) {
    EXPECT_FALSE(ac4_get_bitstream_b_iframe_global(nullptr));
    EXPECT_EQ(ac4_get_bitstream_version(nullptr), 0);
    EXPECT_EQ(ac4_get_presentation_version(nullptr), 0);
    EXPECT_EQ(ac4_get_top_mdcompat(nullptr), 0);
    EXPECT_FALSE(ac4_get_top_b_channel_coded(nullptr));
    EXPECT_EQ(ac4_get_top_pres_ch_mode(nullptr), 0);
    EXPECT_EQ(ac4_get_top_pres_top_channel_pairs(nullptr), 0);
    EXPECT_EQ(ac4_get_top_channel_layout_count(nullptr), 0U);
    EXPECT_EQ(ac4_get_presentation_version(analysis_.get()), -1);
}

TEST_F(EsParser, DeleteTakesTheParser) {
    ac4_es_parser_delete(parser_);
    EXPECT_EQ(parser_, nullptr);
    ac4_es_parser_delete(parser_);
    ac4_es_parser_ref_dsi_flush(reference_);
    EXPECT_EQ(reference_, nullptr);
}

std::unique_ptr<std::byte[]> no_memory(std::uint64_t /*bytes*/) {
    return nullptr;
}
int no_analyzer(Ac4Analyzer** /*analyzer*/, void* /*memory*/, const Ac4AnalyzeConfig* /*config*/,
                std::uint64_t /*size*/) {
    return kAnalyzeToc;
}
int no_generator(DescriptorGenerator** /*generator*/, void* /*memory*/,
                 const DescriptorGeneratorConfig* /*config*/) {
    return 3;
}

TEST(EsParserParts, WhatDoesNotOpenIsToldAndGivesNoParser) {
    struct Case {
        Ac4EsParserParts parts;
        int id;
    };
    Ac4EsParserParts memory = kAc4EsParserParts;
    memory.allocate = no_memory;
    Ac4EsParserParts analyzer = kAc4EsParserParts;
    analyzer.open_analyzer = no_analyzer;
    Ac4EsParserParts generator = kAc4EsParserParts;
    generator.open_generator = no_generator;
    for (const Case& each : {Case{memory, 3002}, Case{analyzer, 3009}, Case{generator, 3010}}) {
        RecordingSink sink;
        testing::internal::CaptureStderr();
        EXPECT_EQ(ac4_es_parser_new(nullptr, each.parts), nullptr);
        testing::internal::GetCapturedStderr();
        ASSERT_EQ(sink.ids(), Ids{each.id});
        EXPECT_NE(sink.reports()[0].text.find("../../../../mediacheck2/src/ac4analyze_impl"),
                  std::string::npos);
    }
}

}  // namespace
}  // namespace mediasplit
