#include "src/ac4analyze_impl/frame_analyzer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "ac4/metadata/huffman_code_books.h"
#include "tests/unit/ac4analyze_impl/analyzer_fixture.h"

namespace mediasplit {
namespace {

class FrameAnalyzerTest : public AnalyzerFixture {};

class StreamAnalyzerTest : public AnalyzerFixture {
protected:
    StreamAnalyzerTest() : AnalyzerFixture(kInputRawStream, 4096) {}
    int next() {
        return orv_ac4analyze_analyze_frame(analyzer_, nullptr, 0, &skipped_, record_.get());
    }
    int feed(const Ac4Bytes& bytes) {
        return orv_ac4analyze_feed(analyzer_, bytes.data(), bytes.size());
    }
    std::uint64_t skipped_ = 0;
};

TEST_F(FrameAnalyzerTest, ArgumentsAreChecked) {
    std::uint64_t size = 0;
    EXPECT_EQ(orv_ac4analyze_query_mem(100, nullptr), 17);
    EXPECT_EQ(orv_ac4analyze_query_mem(100, &size), 0);
    std::vector<std::byte> memory(static_cast<std::size_t>(size));
    Ac4Analyzer* analyzer = nullptr;
    Ac4AnalyzeConfig config;
    EXPECT_EQ(orv_ac4analyze_open(nullptr, memory.data(), &config, 100), 17);
    EXPECT_EQ(orv_ac4analyze_open(&analyzer, nullptr, &config, 100), 17);
    EXPECT_EQ(orv_ac4analyze_open(&analyzer, memory.data(), nullptr, 100), 17);
    for (const std::int32_t mode : {0, 1, 4, -1}) {
        config.input_mode = mode;
        EXPECT_EQ(orv_ac4analyze_open(&analyzer, memory.data(), &config, 100), 19);
    }
    const Ac4Bytes frame = write_ac4_frame(simple_stereo_frame());
    EXPECT_EQ(
        orv_ac4analyze_analyze_frame(nullptr, frame.data(), frame.size(), nullptr, record_.get()),
        16);
    EXPECT_EQ(orv_ac4analyze_analyze_frame(analyzer_, frame.data(), frame.size(), nullptr, nullptr),
              17);
    EXPECT_EQ(orv_ac4analyze_analyze_frame(analyzer_, nullptr, 10, nullptr, record_.get()), 17);
    EXPECT_EQ(orv_ac4analyze_feed(nullptr, frame.data(), 1), 16);
    EXPECT_EQ(orv_ac4analyze_feed(analyzer_, nullptr, 1), 17);
    EXPECT_EQ(orv_ac4analyze_feed(analyzer_, frame.data(), 1), 18);
    EXPECT_EQ(ac4analyze_get_ims_info(static_cast<const Ac4Analyzer*>(nullptr), 0), nullptr);
    orv_ac4analyze_close(nullptr);
}

TEST_F(FrameAnalyzerTest, VersionIsFourOneZero) {
    const std::uint32_t* version = orv_ac4analyze_get_version();
    EXPECT_EQ(version[0], 4U);
    EXPECT_EQ(version[1], 1U);
    EXPECT_EQ(version[2], 0U);
}

TEST_F(FrameAnalyzerTest, MemoryOfTheReportedSizeSuffices) {
    // Exactly sized and misaligned on purpose: a sanitizer sees any byte used behind it.
    std::uint64_t size = 0;
    ASSERT_EQ(orv_ac4analyze_query_mem(333, &size), 0);
    std::vector<std::byte> memory(static_cast<std::size_t>(size) + 3);
    Ac4Analyzer* analyzer = nullptr;
    const Ac4AnalyzeConfig config;
    ASSERT_EQ(orv_ac4analyze_open(&analyzer, memory.data() + 3, &config, 333), 0);
    const Ac4Bytes frame = write_ac4_frame(simple_stereo_frame());
    EXPECT_EQ(
        orv_ac4analyze_analyze_frame(analyzer, frame.data(), frame.size(), nullptr, record_.get()),
        0);
    orv_ac4analyze_close(analyzer);
    EXPECT_EQ(analyzer->arena.sections[0].used, 0U);
}

TEST_F(FrameAnalyzerTest, StereoFrameFillsTheRecord) {
    BuildFrame frame = simple_stereo_frame();
    frame.sequence_counter = 17;
    frame.wait_frames = 3;
    frame.br_code = 2;
    frame.short_program_id = 99;
    frame.presentations[0].id = 4;
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 0U);
    EXPECT_EQ(record_->sync_word, 0U);
    EXPECT_EQ(record_->frame_size, write_ac4_frame(frame).size());
    EXPECT_EQ(record_->bitstream_version, 2);
    EXPECT_EQ(record_->fs_index, 1);
    EXPECT_EQ(record_->frame_rate_index, 13);
    EXPECT_EQ(record_->wait_frames, 3);
    EXPECT_EQ(record_->br_code, 2);
    EXPECT_EQ(record_->bit_rate_mode, 3);
    EXPECT_TRUE(record_->b_iframe_global);
    EXPECT_EQ(record_->n_presentations, 1);
    EXPECT_EQ(record_->sequence_counter, 17);
    EXPECT_EQ(record_->short_program_id, 99U);
    EXPECT_EQ(record_->substream_count_total, 1);
    EXPECT_EQ(record_->substream_map[1], 0);
    EXPECT_EQ(record_->substream_map[0], -1) << "the presentation substream has no slot";

    EXPECT_TRUE(presentation(0).decodable);
    EXPECT_EQ(presentation(0).presentation_version, 1);
    EXPECT_EQ(presentation(0).mdcompat, 0);
    EXPECT_EQ(presentation(0).presentation_group, 5);
    EXPECT_EQ(presentation(0).channel_mode, 4);
    EXPECT_EQ(presentation(0).n_substream_groups, 1);
    EXPECT_EQ(presentation(0).n_substreams, 1);
    EXPECT_EQ(presentation(0).substreams[0], 0);
    EXPECT_FLOAT_EQ(presentation(0).metadata.dialnorm, -24.0F);

    EXPECT_EQ(substream(0).slot, 0);
    EXPECT_EQ(substream(0).info.channel_mode, 4);
    EXPECT_EQ(substream(0).metadata.audio_size, 40U);
    EXPECT_EQ(substream(1).slot, -1);

    EXPECT_TRUE(record_->groups[0].present);
    EXPECT_EQ(record_->groups[0].n_substreams, 1U);
    EXPECT_EQ(record_->groups[0].listed, 1U);
    EXPECT_EQ(record_->groups[0].substreams[0], 0);
    EXPECT_TRUE(record_->groups[0].b_content_type);
    EXPECT_EQ(
        std::string_view(record_->groups[0].language.data(), record_->groups[0].language_size),
        "en");
    EXPECT_FALSE(record_->groups[1].present);
}

TEST_F(FrameAnalyzerTest, AbsentWaitFramesAreMinusOne) {
    ASSERT_EQ(analyze(simple_stereo_frame()), 0);
    EXPECT_EQ(record_->wait_frames, -1);
    EXPECT_EQ(record_->br_code, -1);
    BuildFrame frame = simple_stereo_frame();
    frame.wait_frames = 0;
    frame.sequence_counter = 2;
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->wait_frames, 0);
    EXPECT_EQ(record_->br_code, -1);
}

TEST_F(FrameAnalyzerTest, SubstreamsAreNumberedAcrossPresentations) {
    ASSERT_EQ(analyze(main_and_dialogue_frame()), 0);
    EXPECT_EQ(record_->status, 0U);
    EXPECT_EQ(record_->n_presentations, 3);
    EXPECT_EQ(presentation(0).n_substreams, 2);
    EXPECT_EQ(presentation(0).substreams[1], 1);
    EXPECT_EQ(presentation(1).substreams[0], 2);
    EXPECT_EQ(presentation(2).substreams[0], 3);
    EXPECT_EQ(substream(3).presentation, 2);
    EXPECT_EQ(substream(4).slot, -1);
    EXPECT_EQ(record_->substream_map[3], 2) << "the last slot that named the substream";
    EXPECT_EQ(record_->substream_map[4], 3);
    EXPECT_EQ(record_->substream_count_total, 2);
    EXPECT_EQ(presentation(0).channel_mode, 28);
    EXPECT_EQ(presentation(0).group_roles[1], 1);
    EXPECT_FLOAT_EQ(presentation(1).metadata.dialnorm, -23.0F);
    EXPECT_FLOAT_EQ(presentation(2).metadata.dialnorm, -25.0F);
    EXPECT_EQ(record_->groups[0].substreams[0], 0) << "the first slot of the group";
    EXPECT_EQ(record_->groups[1].substreams[0], 1);
    EXPECT_EQ(record_->groups[1].listed, 1U);
}

TEST_F(FrameAnalyzerTest, UnchangedTableFillsTheRecordAllTheSame) {
    BuildFrame frame = main_and_dialogue_frame();
    ASSERT_EQ(analyze(frame), 0);
    frame.sequence_counter = 2;
    *record_ = AnalysisRecord{};
    ASSERT_EQ(analyze(frame), 0);
    ASSERT_TRUE(analyzer_->toc_reader->toc_unchanged);
    EXPECT_EQ(record_->status, 0U);
    EXPECT_EQ(presentation(0).channel_mode, 28);
    EXPECT_TRUE(record_->groups[1].present);
    EXPECT_EQ(record_->groups[1].content_classifier, 4);
    EXPECT_EQ(record_->groups[1].substreams[0], 1);
    EXPECT_EQ(substream(1).info.channel_mode, 4);
    EXPECT_EQ(substream(3).info.content.content_classifier, 4);
    EXPECT_EQ(record_->substream_count_total, 2);
}

TEST_F(FrameAnalyzerTest, FrameWithoutPresentationsTouchesNoRecord) {
    record_->presentations[0].channel_mode = 77;
    BuildFrame frame;
    frame.presentations.clear();
    frame.groups.clear();
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 0U);
    EXPECT_EQ(record_->n_presentations, 0);
    EXPECT_EQ(record_->n_presentations_raw, 0);
    EXPECT_EQ(record_->substream_count_total, 0);
    EXPECT_EQ(presentation(0).channel_mode, 77);
}

TEST_F(FrameAnalyzerTest, IframeDistancesAreCounted) {
    const std::vector<bool> iframes = {true, false, false, true, true, false};
    const std::vector<std::int32_t> since = {1, 2, 3, 1, 1, 2};
    const std::vector<std::int32_t> last = {0, 0, 0, 3, 1, 1};
    for (std::size_t i = 0; i < iframes.size(); ++i) {
        BuildFrame frame = simple_stereo_frame();
        frame.sequence_counter = static_cast<std::uint32_t>(i) + 1;
        frame.iframe = iframes[i];
        ASSERT_EQ(analyze(frame), 0);
        EXPECT_EQ(record_->frames_since_iframe, since[i]) << i;
        EXPECT_EQ(record_->last_iframe_distance, last[i]) << i;
    }
}

TEST_F(FrameAnalyzerTest, IframeDistanceStaysAtItsLargest) {
    BuildFrame frame = simple_stereo_frame();
    frame.sequence_counter = 1;
    ASSERT_EQ(analyze(frame), 0);
    analyzer_->frames_since_iframe = std::numeric_limits<std::int32_t>::max() - 1;
    frame.iframe = false;
    for (std::uint32_t i = 2; i < 4; ++i) {
        frame.sequence_counter = i;
        ASSERT_EQ(analyze(frame), 0);
        EXPECT_EQ(record_->frames_since_iframe, std::numeric_limits<std::int32_t>::max());
    }
}

TEST_F(FrameAnalyzerTest, OldBitstreamVersionsKeepTheirDialnorm) {
    for (const std::uint32_t version : {0U, 1U}) {
        BuildFrame frame;
        frame.bitstream_version = version;
        frame.sequence_counter = version + 1;
        frame.groups.clear();
        BuildPresentation& text = frame.presentations[0];
        text.version = 0;
        text.config = 2;
        text.groups.clear();
        text.substreams.assign(2, BuildSubstream{});
        text.substreams[0].mode = ac4_mode::k51;
        text.substreams[1].index = 1;
        SubstreamText main;
        main.sus_ver = 0;
        main.ch_mode = 4;
        main.audio_bytes = 5;
        main.basic.dialnorm = 100;
        SubstreamText associate = main;
        associate.ch_mode = 1;
        associate.basic.dialnorm = 60;
        associate.extended.associated = true;
        associate.extended.scale_main = 7;
        frame.substreams = {write_substream(main), write_substream(associate)};
        ASSERT_EQ(analyze(frame), 0) << version;
        EXPECT_EQ(record_->status, 0U);
        EXPECT_EQ(presentation(0).type_code, 3);
        EXPECT_EQ(presentation(0).channel_mode, 28);
        EXPECT_TRUE(substream(0).metadata.dialnorm_present);
        EXPECT_FLOAT_EQ(substream(0).metadata.dialnorm, -25.0F);
        EXPECT_FLOAT_EQ(substream(1).metadata.dialnorm, -15.0F);
        EXPECT_EQ(substream(1).metadata.extended.scale_main.value, 7U);
        EXPECT_EQ(substream(1).info.sus_ver, 0);
        EXPECT_FALSE(record_->groups[0].present);
    }
}

TEST_F(FrameAnalyzerTest, NameTargetsAndEmdfComeThrough) {
    BuildFrame frame = simple_stereo_frame();
    PresentationText text;
    text.alternative = true;
    text.name = "Alt";
    text.targets = {{3, 5, {}, {}, {}, {{}}}};
    text.tail.put(0, 16);
    frame.substreams[0] = write_presentation(text).to_bytes();
    frame.presentations[0].alternative = true;
    frame.presentations[0].emdf.version = 1;
    frame.presentations[0].emdf.key_id = 3;
    frame.presentations[0].add_emdf = {BuildEmdf{2, 5, {}, 0, 0, 0}};
    frame.presentations[0].filter = true;
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 0U);
    EXPECT_EQ(std::string_view(presentation(0).presentation_name.data(), presentation(0).name_size),
              "Alt");
    EXPECT_EQ(presentation(0).n_targets, 1);
    EXPECT_EQ(presentation(0).targets[0].target_device_category, 5);
    EXPECT_TRUE(presentation(0).metadata.b_name_present);
    EXPECT_EQ(presentation(0).emdf.emdf_version, 1);
    EXPECT_EQ(presentation(0).emdf.key_id, 3);
    EXPECT_EQ(presentation(0).n_emdf_substreams, 1);
    EXPECT_EQ(presentation(0).emdf_substreams[0].key_id, 5);
    EXPECT_TRUE(presentation(0).b_enable_presentation);
}

TEST_F(FrameAnalyzerTest, ImmersiveStereoRecordIsKeptPerSubstream) {
    BuildFrame frame = simple_stereo_frame();
    frame.presentations[0].version = 2;
    frame.groups[0].substreams[0].mode = ac4_mode::k71Back;
    SubstreamText text;
    text.ch_mode = 1;
    text.audio_bytes = 3;
    EmdfText payload;
    payload.id = 18;
    ImsText ims;
    ims.version = 1;
    ims.code_3 = 5;
    payload.payload = write_ims(ims);
    text.emdf = std::vector<EmdfText>{payload};
    frame.substreams[1] = write_substream(text);
    EXPECT_EQ(ac4analyze_get_ims_info(analyzer_, 0), nullptr);
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(presentation(0).channel_mode, 10);
    ASSERT_NE(ac4analyze_get_ims_info(analyzer_, 0), nullptr);
    EXPECT_EQ(ac4analyze_get_ims_info(analyzer_, 0)->code_3, 5);
    EXPECT_EQ(ac4analyze_get_ims_info(analyzer_, 1), nullptr);
    EXPECT_EQ(ac4analyze_get_ims_info(analyzer_, 128), nullptr);
}

TEST_F(FrameAnalyzerTest, EmdfSubstreamOfAPresentationIsRead) {
    BuildFrame frame = simple_stereo_frame();
    EmdfText payload;
    payload.id = 18;
    ImsText ims;
    ims.code_2 = 3;
    payload.payload = write_ims(ims);
    frame.substreams.push_back(write_emdf({payload}).to_bytes());
    for (const bool own : {true, false}) {
        init_ac4_frame_data(analyzer_);
        BuildPresentation& text = frame.presentations[0];
        text.emdf.payloads_index.reset();
        text.add_emdf.reset();
        if (own) {
            text.emdf.payloads_index = 2;
        } else {
            text.add_emdf = {BuildEmdf{0, 0, 2, 0, 0, 0}};
        }
        ASSERT_EQ(analyze(frame), 0);
        ASSERT_NE(ac4analyze_get_ims_info(analyzer_, 0), nullptr) << own;
        EXPECT_EQ(ac4analyze_get_ims_info(analyzer_, 0)->code_2, 3);
    }
}

// A frame may name its EMDF substreams a thousand times over: what was read isn't read again.
TEST_F(FrameAnalyzerTest, EmdfSubstreamNamedAgainIsNotReadAgain) {
    BuildFrame frame = simple_stereo_frame();
    const auto ims_payload = [](std::uint32_t code_2) {
        ImsText ims;
        ims.code_2 = code_2;
        EmdfText payload;
        payload.id = 18;
        payload.payload = write_ims(ims);
        return write_emdf({payload}).to_bytes();
    };
    frame.substreams.push_back(ims_payload(3));
    frame.substreams.push_back(ims_payload(1));
    frame.presentations[0].emdf.payloads_index = 2;
    const auto named = [](std::uint32_t index) { return BuildEmdf{0, 0, index, 0, 0, 0}; };
    frame.presentations[0].add_emdf = {named(2), named(3), named(2), named(3), named(2)};
    ASSERT_EQ(analyze(frame), 0);
    ASSERT_NE(ac4analyze_get_ims_info(analyzer_, 0), nullptr);
    EXPECT_EQ(ac4analyze_get_ims_info(analyzer_, 0)->code_2, 1);
    EXPECT_EQ(presentation(0).n_emdf_substreams, 5);
}

TEST_F(FrameAnalyzerTest, ObjectsAndTheirMetadataSubstreamAreRead) {
    BuildFrame frame = simple_stereo_frame();
    frame.groups[0].channel_coded = false;
    frame.groups[0].oamd = std::make_pair(true, 2U);
    BuildSubstream& object = frame.groups[0].substreams[0];
    object.objects = "011 1 1";  // three dynamic objects and LFE
    SubstreamText text;
    text.audio_bytes = 2;
    frame.substreams[1] = write_substream(text);
    OamdTimingText timing;
    timing.blocks = {{0, "00"}};
    MetadataBits oamd;
    oamd.flag(false).flag(true).add(write_oamd_timing(timing)).align();
    frame.substreams.push_back(oamd.to_bytes());
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 0U);
    EXPECT_TRUE(presentation(0).has_objects);
    EXPECT_EQ(presentation(0).channel_mode, 0);
    EXPECT_EQ(substream(0).info.audio_type, AudioType::kObjects);
    EXPECT_EQ(substream(0).ext.n_objects, 4);
    EXPECT_EQ(substream(0).metadata.audio_size, 2U);
}

TEST_F(FrameAnalyzerTest, RateOfAConstantStreamIsTold) {
    BuildFrame frame = simple_stereo_frame(60);
    frame.wait_frames = 0;
    for (std::uint32_t i = 1; i <= 5; ++i) {
        frame.sequence_counter = i;
        Ac4Bytes bytes = write_ac4_frame(frame);
        bytes.resize(200, 0);
        ASSERT_EQ(analyze_bytes(bytes), 0);
    }
    // 200 bytes in 2048 samples at 48 kHz
    EXPECT_EQ(record_->rate_status, 0);
    EXPECT_LE(record_->rate_mean, 37500U);
    EXPECT_GE(record_->rate_peak, 37500U);
}

// Gains of one channel group in one band: one code for each later subframe of the coded frame.
DrcText gains_of(int subframes) {
    DrcText text;
    text.modes.resize(1);
    text.modes[0].gains_config = 1;
    text.gain_sets.resize(1);
    for (int i = 1; i < subframes; ++i) {
        text.gain_sets[0].codes += huffman_code_books::kDrc[0];
    }
    return text;
}

// 1920 samples at the base rate are six subframes, 960 samples are three.
TEST_F(FrameAnalyzerTest, MultipliedFrameRateShortensTheCodedFramesOfASubstream) {
    for (const bool multiplied : {false, true}) {
        BuildFrame frame;
        frame.bitstream_version = 1;
        frame.sequence_counter = multiplied ? 2 : 1;
        frame.frame_rate_index = 0;
        frame.groups.clear();
        BuildPresentation& text = frame.presentations[0];
        text.version = 0;
        text.rate_bits = multiplied ? "1" : "0";
        text.groups.clear();
        text.substreams.assign(1, BuildSubstream{});
        text.substreams[0].iframes.assign(multiplied ? 2 : 1, true);
        SubstreamText main;
        main.sus_ver = 0;
        main.ch_mode = 1;
        main.drc = gains_of(multiplied ? 3 : 6);
        frame.substreams.assign(2, write_substream(main));
        ASSERT_EQ(analyze(frame), 0);
        EXPECT_EQ(record_->status, 0U);
        EXPECT_EQ(presentation(0).frame_rate_multiply, multiplied ? 2 : 1);
        EXPECT_TRUE(substream(0).metadata.drc.data_read);
    }
}

TEST_F(FrameAnalyzerTest, MultipliedFrameRateShortensTheCodedFramesOfAPresentation) {
    for (const bool multiplied : {false, true}) {
        BuildFrame frame = simple_stereo_frame();
        frame.sequence_counter = multiplied ? 2 : 1;
        frame.frame_rate_index = 0;
        frame.presentations[0].rate_bits = multiplied ? "1" : "0";
        frame.groups[0].substreams[0].iframes.assign(multiplied ? 2 : 1, true);
        PresentationText text;
        text.dialnorm = 96;
        text.drc = gains_of(multiplied ? 3 : 6);
        text.tail.put(0, 64);
        frame.substreams[0] = write_presentation(text).to_bytes();
        ASSERT_EQ(analyze(frame), 0);
        EXPECT_EQ(record_->status, 0U);
        EXPECT_TRUE(presentation(0).metadata.drc.data_read);
    }
}

TEST_F(FrameAnalyzerTest, FrameLengthsFollowTheFrameRate) {
    constexpr std::array<std::int32_t, 14> kExpected = {1920, 1920, 2048, 1536, 1536, 960, 960,
                                                        1024, 768,  768,  512,  384,  384, 2048};
    for (std::int32_t i = 0; i < 14; ++i) {
        EXPECT_EQ(ac4_frame_length(1, i), kExpected[static_cast<std::size_t>(i)]);
        EXPECT_EQ(ac4_frame_length(0, i), i == 13 ? 2048 : 0);
    }
    EXPECT_EQ(ac4_frame_length(1, 14), 0);
    EXPECT_EQ(ac4_frame_length(1, 15), 0);
    EXPECT_EQ(ac4_frame_length(1, -1), 0);
}

TEST_F(StreamAnalyzerTest, StreamIsFramedInPiecesOfAnySize) {
    Ac4Bytes stream = {0x01, 0x02, 0xAC};
    std::vector<std::size_t> sizes;
    for (std::uint32_t i = 1; i <= 6; ++i) {
        BuildFrame frame = simple_stereo_frame(10 * i);
        frame.sequence_counter = i;
        const Ac4Bytes raw = write_ac4_frame(frame);
        sizes.push_back(raw.size());
        const Ac4Bytes synced = write_syncframe(raw, i % 2 == 0);
        stream.insert(stream.end(), synced.begin(), synced.end());
    }
    for (const std::size_t piece : {1U, 7U, 64U, 1000U}) {
        skipped_ = 0;
        std::size_t frames = 0;
        for (std::size_t at = 0; at < stream.size(); at += piece) {
            const std::size_t n = std::min(piece, stream.size() - at);
            ASSERT_EQ(orv_ac4analyze_feed(analyzer_, stream.data() + at, n), 0);
            while (next() == 0) {
                EXPECT_EQ(record_->frame_size, sizes[frames]);
                EXPECT_EQ(record_->sync_word, frames % 2 == 0 ? 0xAC40U : 0xAC41U);
                EXPECT_FALSE(record_->damaged);
                EXPECT_EQ(record_->sequence_counter, static_cast<std::int32_t>(frames) + 1);
                ++frames;
            }
        }
        EXPECT_EQ(frames, 6U);
        EXPECT_EQ(skipped_, 3U);
        EXPECT_EQ(analyzer_->stream_fill, 0U);
    }
}

TEST_F(StreamAnalyzerTest, DamagedFrameIsAnalyzedAndMarked) {
    Ac4Bytes synced = write_syncframe(write_ac4_frame(simple_stereo_frame()), true);
    synced.back() ^= 1;
    ASSERT_EQ(feed(synced), 0);
    EXPECT_EQ(next(), 0);
    EXPECT_TRUE(record_->damaged);
    EXPECT_EQ(analyzer_->stream_fill, synced.size() - 2);
    EXPECT_EQ(next(), 1);
    EXPECT_EQ(skipped_, synced.size() - 2);
}

TEST_F(StreamAnalyzerTest, FeedBeyondTheBufferIsRefused) {
    EXPECT_EQ(feed(Ac4Bytes(4096 + 11, 0)), 0);
    EXPECT_EQ(feed(Ac4Bytes(1, 0)), 33);
    EXPECT_EQ(next(), 1);
    EXPECT_EQ(feed(Ac4Bytes(4096 + 12, 0)), 33);
    EXPECT_EQ(feed(Ac4Bytes(4096, 0)), 0);
}

}  // namespace
}  // namespace mediasplit
