// Whole runs over renditions of AC-4 in fragments: what their sample entry must find in CODECS and
// CHANNELS, before and after CHANNELS is read in parts.
#include "src/ac4analyze_impl/es_parser.h"
#include "tests/support/ac4_builder.h"
#include "tests/support/dsi_builder.h"
#include "tests/support/mp4_builder.h"
#include "tests/unit/workers/rendition_flow.h"

namespace mediasplit {
namespace {

using mp4::Bytes;

const Ids kAboutTheAudio = {2019, 2020, 4060, 4387, 4388, 4389, 4390, 4391, 4414, 4473};

constexpr const char* kAc4 = "ac-4.02.01.00";

BuildFrame stereo() {
    return simple_stereo_frame();
}

// 7.1.4 whose presentation is marked immersive.
BuildFrame immersive() {
    BuildFrame frame = simple_stereo_frame();
    frame.groups[0].substreams[0].mode = ac4_mode::k714;
    frame.groups[0].substreams[0].immersive = "1111";
    PresentationText text;
    text.dialnorm = 96;
    text.additional = "1";
    text.tail.put(0, 64);
    frame.substreams = {write_presentation(text).to_bytes(), {}};
    return frame;
}

// What the box of these frames should say.
DsiRecord right_record(const Bytes& frame) {
    const auto parser = ac4_es_parser_new(nullptr);
    const auto reference = ac4_es_parser_ref_dsi_init();
    const auto analysis = ac4_es_parser_init();
    EXPECT_EQ(ac4_es_parser_ref_dsi(*parser, frame, *reference, *analysis, 1, nullptr),
              Status::kOk);
    return record_of(*reference);
}

class Ac4Flow : public RenditionFlow {
protected:
    Ac4Flow() : RenditionFlow(kAboutTheAudio) {}

    // What is found of a rendition of two segments, each of one such frame.
    Ids findings(const Rendition& about, const BuildFrame& description) {
        mp4::TrackSpec track;
        track.handler = "soun";
        track.time_scale = 48000;
        mp4::MovieSpec movie;
        for (const std::uint32_t counter : {1U, 2U}) {
            BuildFrame numbered = description;
            numbered.sequence_counter = counter;
            mp4::SampleSpec sample;
            sample.data = write_ac4_frame(numbered);
            sample.duration = 96000;
            track.samples.push_back(sample);
        }
        const Bytes box = write_dac4(right_record(track.samples[0].data));
        track.entries = {mp4::audio_entry("ac-4", 2, 16, 48000, {mp4::box("dac4", {box})})};
        movie.tracks = {track};
        add("init.mp4", as_text(mp4::initialization_segment(movie)));
        for (std::size_t i = 0; i < 2; ++i) {
            add(std::to_string(i) + ".m4s", as_text(mp4::media_segment(movie, i, 1, 0)));
        }
        add_playlists(about, "#EXT-X-MAP:URI=\"init.mp4\"\n", {"0.m4s", "1.m4s"});
        return run();
    }
};

TEST_F(Ac4Flow, GoodRenditionIsWrittenAsSyncFrames) {
    EXPECT_EQ(findings(rendition(kAc4, "2"), stereo()), Ids{});
    for (const int id : {4387, 4388, 4389, 4414}) {
        EXPECT_TRUE(sink_.was_evaluated(id)) << id;
    }
    std::string expected;
    for (const std::uint32_t counter : {1U, 2U}) {
        BuildFrame frame = stereo();
        frame.sequence_counter = counter;
        expected += as_text(write_syncframe(write_ac4_frame(frame), false, true));
    }
    std::size_t files = 0;
    for (const auto& [name, content] : outputs()) {
        if (name.ends_with(".out.ac4")) {
            ++files;
            EXPECT_EQ(content, expected) << name;
        }
    }
    EXPECT_EQ(files, 1U);
}

TEST_F(Ac4Flow, CodecsOfTheVariantMustHaveTheEntrysVersions) {
    EXPECT_EQ(findings(rendition("ac-4.02.01.03", "2"), stereo()), Ids{4387});
    EXPECT_EQ(findings(rendition("mp4a.40.2,ac-4.02.01.00", "2"), stereo()), Ids{});
}

TEST_F(Ac4Flow, WholeChannelsText) {
    EXPECT_EQ(findings(rendition(kAc4, ""), stereo()), Ids{4388});
    EXPECT_EQ(findings(rendition(kAc4, "6"), stereo()), Ids{4389});
    EXPECT_EQ(findings(rendition(kAc4, "2/IMSA"), stereo()), Ids{4389});
    EXPECT_EQ(findings(rendition(kAc4, "12/IMSA"), immersive()), Ids{});
    EXPECT_EQ(findings(rendition(kAc4, "12"), immersive()), Ids{4389});
}

TEST_F(Ac4Flow, PartsOfChannels) {
    EXPECT_EQ(findings(rendition(kAc4, "2", true), stereo()), Ids{});
    EXPECT_EQ(findings(rendition(kAc4, "6", true), stereo()), Ids{});
    EXPECT_EQ(findings(rendition(kAc4, "1", true), stereo()), Ids{4390});
    EXPECT_EQ(findings(rendition(kAc4, "", true), stereo()), Ids{4388});
    EXPECT_EQ(findings(rendition(kAc4, "12/IMSA", true), immersive()), Ids{});
    EXPECT_EQ(findings(rendition(kAc4, "12/X", true), immersive()), Ids{4391});
    EXPECT_EQ(findings(rendition(kAc4, "12", true), immersive()), Ids{});
    EXPECT_EQ(findings(rendition(kAc4, "2/IMSA", true), stereo()), Ids{2020});
    EXPECT_EQ(findings(rendition(kAc4, "many", true), stereo()), (Ids{4060, 4390}));
}

}  // namespace
}  // namespace mediasplit
