#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "tests/unit/ac4analyze_impl/analyzer_fixture.h"

namespace mediasplit {
namespace {

class AnalyzerHostileTest : public AnalyzerFixture {
protected:
    void run(const Ac4Bytes& bytes) {
        const int result = analyze_bytes(bytes);
        EXPECT_TRUE(result == 0 || result == 32 || result == 33) << result;
        EXPECT_LE(record_->n_presentations, 64);
        for (const AnalysisSubstream& substream : record_->substreams) {
            if (substream.slot != kUnusedSlot) {
                EXPECT_LE(substream.ext.segment.offset + substream.ext.segment.size, bytes.size());
            }
        }
    }
    // Analyzes a frame whose parts are named over and over, twice: what was read of it comes to
    // four times its size and 32 KiB, and at most one part more.
    void expect_bounded(BuildFrame frame) {
        for (const std::uint32_t sequence : {1U, 2U}) {
            frame.sequence_counter = sequence;
            const Ac4Bytes bytes = write_ac4_frame(frame);
            const auto size = static_cast<std::int64_t>(bytes.size());
            ASSERT_EQ(analyze_bytes(bytes), 0);
            EXPECT_EQ(record_->status, 32U);
            EXPECT_GT(analyzer_->frame_data.bits_read, (4 * size + 32768) * 8);
            EXPECT_LT(analyzer_->frame_data.bits_read, (5 * size + 32768) * 8);
        }
    }
    static std::vector<EmdfText> unknown_payloads(std::size_t count, std::size_t size) {
        EmdfText payload;
        payload.id = 1;
        payload.payload.assign(size, 0x55);
        return std::vector<EmdfText>(count, payload);
    }
    static std::vector<BuildFrame> frames() {
        BuildFrame rich = main_and_dialogue_frame(3);
        SubstreamText text;
        text.ch_mode = 4;
        text.audio_bytes = 2;
        text.basic.more = true;
        text.basic.substream_loudness = 3;
        text.extended.classifier = true;
        text.de = DeText{};
        EmdfText payload;
        payload.id = 18;
        payload.payload = write_ims(ImsText{});
        text.emdf = std::vector<EmdfText>{payload};
        rich.substreams[3] = write_substream(text);
        BuildFrame objects = simple_stereo_frame(2);
        objects.groups[0].channel_coded = false;
        objects.groups[0].oamd = std::make_pair(false, 2U);
        objects.groups[0].substreams[0].objects = "011 1 1";
        objects.presentations[0].alternative = true;
        objects.substreams.push_back(Ac4Bytes{0x5F, 0x11, 0x92, 0x00});
        BuildFrame old;
        old.bitstream_version = 1;
        old.groups.clear();
        old.presentations[0].version = 0;
        old.presentations[0].groups.clear();
        old.presentations[0].substreams.assign(1, BuildSubstream{});
        SubstreamText old_text;
        old_text.sus_ver = 0;
        old_text.ch_mode = 1;
        old_text.drc = DrcText{};
        old.substreams = {write_substream(old_text)};
        return {rich, objects, old, many_presentations_frame(70, 5)};
    }
};

TEST_F(AnalyzerHostileTest, FramesCutAtEveryByte) {
    for (const BuildFrame& frame : frames()) {
        const Ac4Bytes whole = write_ac4_frame(frame);
        for (std::size_t cut = 1; cut <= whole.size(); ++cut) {
            run(Ac4Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut)));
        }
    }
}

TEST_F(AnalyzerHostileTest, FramesWithEveryBitFlipped) {
    std::size_t index = 0;
    for (const BuildFrame& frame : frames()) {
        const Ac4Bytes whole = write_ac4_frame(frame);
        const std::size_t step = index++ == 3 ? 5 : 1;
        for (std::size_t bit = 0; bit < whole.size() * 8; bit += step) {
            Ac4Bytes changed = whole;
            changed[bit / 8] ^= static_cast<std::uint8_t>(0x80U >> (bit % 8));
            run(changed);
        }
    }
}

TEST_F(AnalyzerHostileTest, BytesOfAnyValueAndNoise) {
    std::mt19937 random(11);
    const Ac4Bytes whole = write_ac4_frame(frames()[0]);
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const std::uint8_t value : {0x00, 0xFF, 0x55, 0xAA}) {
            Ac4Bytes changed = whole;
            changed[at] = value;
            run(changed);
        }
    }
    for (int i = 0; i < 1500; ++i) {
        Ac4Bytes noise(4 + random() % 300);
        for (std::uint8_t& byte : noise) {
            byte = static_cast<std::uint8_t>(random());
        }
        noise[0] = static_cast<std::uint8_t>((noise[0] & 0x3FU) | (random() % 3) << 6);
        run(noise);
    }
}

TEST_F(AnalyzerHostileTest, EndlessEscapesAndLargeCountsEndQuickly) {
    run(Ac4Bytes(100000, 0xFF));
    run(Ac4Bytes(100000, 0x00));
    Ac4Bytes ones(100000, 0xFF);
    ones[0] = 0xBF;  // bitstream_version 2
    run(ones);
    // One group with as many substreams as the frame holds, named by 512 presentations.
    BuildFrame frame = many_presentations_frame(512, 1);
    BuildSubstream substream = frame.groups[0].substreams[0];
    frame.groups[0].substreams.assign(3000, substream);
    run(write_ac4_frame(frame));
    EXPECT_EQ(record_->groups[0].n_substreams, 3000U);
}

TEST_F(AnalyzerHostileTest, LongMetadataOfASubstreamNamedOverAndOver) {
    BuildFrame frame = simple_stereo_frame();
    SubstreamText text;
    text.ch_mode = 1;
    text.emdf = unknown_payloads(2000, 0);
    frame.substreams[1] = write_substream(text);
    const BuildSubstream named = frame.groups[0].substreams[0];
    frame.groups[0].substreams.assign(128, named);
    expect_bounded(frame);
    EXPECT_EQ(substream(0).metadata.emdf.payload_count, 2000U);
    EXPECT_EQ(substream(127).slot, 127);
    EXPECT_EQ(substream(127).metadata.emdf.payload_count, 0U);
}

TEST_F(AnalyzerHostileTest, LongEmdfSubstreamOfManyPresentations) {
    BuildFrame frame = simple_stereo_frame();
    frame.substreams.push_back(write_emdf(unknown_payloads(4000, 0)).to_bytes());
    BuildPresentation presentation_text = frame.presentations[0];
    presentation_text.emdf.payloads_index = 2;
    frame.presentations.assign(64, presentation_text);
    expect_bounded(frame);
}

TEST_F(AnalyzerHostileTest, LongPresentationSubstreamOfManyPresentations) {
    BuildFrame frame = simple_stereo_frame();
    PresentationText text;
    text.alternative = true;
    text.targets.assign(4000, TargetText{2, 3, {}, {}, {}, {{}}});
    text.tail.put(0, 16);
    frame.substreams[0] = write_presentation(text).to_bytes();
    BuildPresentation presentation_text = frame.presentations[0];
    presentation_text.alternative = true;
    frame.presentations.assign(64, presentation_text);
    expect_bounded(frame);
    EXPECT_EQ(presentation(0).metadata.n_targets, 4000U);
    EXPECT_EQ(presentation(63).n_targets, 31) << "those that are kept";
    EXPECT_EQ(presentation(63).metadata.n_targets, 0U);
}

TEST_F(AnalyzerHostileTest, ShortPartsAndPayloadsAreReadForEveryoneWhoNamesThem) {
    BuildFrame frame = simple_stereo_frame();
    SubstreamText text;
    text.ch_mode = 1;
    text.audio_bytes = 300;
    text.basic.more = true;
    text.basic.substream_loudness = 3;
    text.emdf = unknown_payloads(1, 4000);
    frame.substreams[1] = write_substream(text);
    frame.groups.push_back(frame.groups[0]);
    frame.substreams.push_back(write_emdf(unknown_payloads(2, 4000)).to_bytes());
    BuildPresentation presentation_text = frame.presentations[0];
    presentation_text.config = 0;
    presentation_text.groups = {0, 1};
    presentation_text.emdf.payloads_index = 2;
    frame.presentations.assign(64, presentation_text);
    ASSERT_EQ(analyze(frame), 0);
    EXPECT_EQ(record_->status, 0U);
    EXPECT_EQ(substream(127).presentation, 63);
    EXPECT_EQ(substream(127).metadata.basic.substream_loudness.value, 3U);
    EXPECT_EQ(substream(127).metadata.emdf.payload_count, 1U);
    EXPECT_TRUE(presentation(63).metadata.dialnorm_present);
}

}  // namespace
}  // namespace mediasplit
