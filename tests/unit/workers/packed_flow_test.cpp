// Whole runs over packed audio: what comes out, and what is found about the stream in CODECS and
// CHANNELS, before and after CHANNELS is read in parts.
#include "tests/support/ac4_builder.h"
#include "tests/support/eac3_builder.h"
#include "tests/support/packed_builder.h"
#include "tests/unit/workers/rendition_flow.h"

namespace mediasplit {
namespace {

namespace fs = std::filesystem;

using test_support::Ac3Spec;
using test_support::build_ac3_frame;
using test_support::build_eac3_frame;
using test_support::Eac3Spec;

// What is found about packed audio; other messages of these runs are about the playlist itself.
const Ids kAboutTheAudio = {2019, 2020, 4060, 4076, 4103, 4283, 4284, 4288, 4289, 4290, 4291, 4332,
                            4333, 4388, 4390, 4391, 4393, 4394, 4485, 4490, 4491, 4495, 4497};

class PackedFlow : public RenditionFlow {
protected:
    PackedFlow() : RenditionFlow(kAboutTheAudio) {}

    // A rendition whose segments have these bytes behind their tags.
    void add_presentation(const Rendition& about, const std::vector<Bytes>& segments) {
        std::vector<std::string> names;
        for (std::size_t i = 0; i < segments.size(); ++i) {
            names.push_back("audio" + std::to_string(i) + ".pa");
            add(names.back(), as_text(joined({id3_tag(90000 * i), segments[i]})));
        }
        add_playlists(about, "", names);
    }
    Ids findings(const Rendition& about, const std::vector<Bytes>& segments) {
        add_presentation(about, segments);
        return run();
    }
};

constexpr const char* kAc4 = "ac-4.02.01.00";

Bytes ac4_frame(const char* mode = ac4_mode::kStereo, const char* immersive = "",
                std::uint32_t version = 1, bool iframe = true) {
    BuildFrame frame = simple_stereo_frame();
    frame.iframe = iframe;
    frame.presentations[0].version = version;
    frame.groups[0].substreams[0].mode = mode;
    frame.groups[0].substreams[0].immersive = immersive;
    frame.groups[0].substreams[0].iframes = {iframe};
    return write_syncframe(write_ac4_frame(frame));
}

Bytes ac4_segment(std::size_t frames = 2) {
    return repeated(ac4_frame(), frames);
}

Bytes immersive_ac4() {
    return ac4_frame(ac4_mode::k714, "1111");
}

Bytes eac3_segment(std::optional<Bytes> addbsi = std::nullopt) {
    Eac3Spec spec;
    spec.addbsi = std::move(addbsi);
    return repeated(build_eac3_frame(spec), 2);
}

Bytes joc_segment(std::uint8_t complexity) {
    return eac3_segment(Bytes{1, complexity});
}

// --- What comes out ---------------------------------------------------------------------------

TEST_F(PackedFlow, SegmentsOfEachKindAreJoinedUnderTheNameOfTheRendition) {
    const Bytes adts = {0xFF, 0xF1, 0x50, 0x80, 0x01, 0x3F, 0xFC, 0xDE, 0x02, 0x00};
    const struct {
        const char* codecs;
        const char* channels;
        Bytes segment;
        const char* extension;
    } kinds[] = {{kAc4, "2", ac4_segment(), "ac4"},
                 {"ec-3", "6", eac3_segment(), "ec3"},
                 {"ac-3", "6", repeated(build_ac3_frame(Ac3Spec{}), 2), "ac3"},
                 {"mp4a.40.2", "2", adts, "aac"}};
    for (const auto& kind : kinds) {
        EXPECT_EQ(findings(rendition(kind.codecs, kind.channels),
                           {kind.segment, kind.segment, kind.segment}),
                  Ids{});
        const std::string name = std::string("audio_GroupID_g_Lang_en_Channel_") + kind.channels +
                                 "ch.out." + kind.extension;
        EXPECT_EQ(outputs()[name], as_text(repeated(kind.segment, 3))) << name;
    }
}

TEST_F(PackedFlow, AddressGivesWhatTheFolderGives) {
    add_presentation(rendition(kAc4, "2"), {ac4_segment(), ac4_segment(3)});
    EXPECT_EQ(run(), Ids{});
    const auto local = outputs();
    EXPECT_EQ(local.count("audio_GroupID_g_Lang_en_Channel_2ch.out.ac4"), 1U);
    for (const auto& [name, content] : local) {
        fs::remove("out/" + name);
    }
    EXPECT_EQ(run(server_.url("/master.m3u8")), Ids{});
    EXPECT_EQ(outputs(), local);
    EXPECT_TRUE(fs::is_empty("tmp"));
}

TEST_F(PackedFlow, ByteRangesOfOneFileAreItsSegments) {
    const Bytes first = joined({id3_tag(0), ac4_segment(1)});
    const Bytes second = joined({id3_tag(90000), ac4_segment(2)});
    add_presentation(rendition(kAc4, "2"), {});
    add("all.pa", as_text(joined({first, second})));
    add("audio.m3u8", "#EXTM3U\n#EXTINF:2,\n#EXT-X-BYTERANGE:" + std::to_string(first.size()) +
                          "@0\nall.pa\n#EXTINF:2,\n#EXT-X-BYTERANGE:" +
                          std::to_string(second.size()) + "\nall.pa\n#EXT-X-ENDLIST\n");
    EXPECT_EQ(run(), Ids{});
    EXPECT_EQ(outputs()["audio_GroupID_g_Lang_en_Channel_2ch.out.ac4"], as_text(ac4_segment(3)));
}

TEST_F(PackedFlow, DamagedSegmentsLoseTheirOwnAudioAlone) {
    const Bytes garbage(40, 0x55);
    EXPECT_EQ(findings(rendition(kAc4, "2"),
                       {ac4_segment(), joined({ac4_segment(1), garbage, ac4_segment(1)}), garbage,
                        ac4_segment()}),
              Ids{4490});
    EXPECT_EQ(outputs()["audio_GroupID_g_Lang_en_Channel_2ch.out.ac4"], as_text(ac4_segment(5)));

    EXPECT_EQ(findings(rendition("ec-3", "6"),
                       {eac3_segment(), joined({eac3_segment(), garbage}), eac3_segment()}),
              Ids{4332});
    EXPECT_EQ(outputs()["audio_GroupID_g_Lang_en_Channel_6ch.out.ec3"],
              as_text(repeated(eac3_segment(), 3)));

    // A damaged tag is told to the user and fails the run, after all other segments.
    add_presentation(rendition(kAc4, "2"), {ac4_segment(1), ac4_segment(1), ac4_segment(1)});
    add("audio1.pa", as_text(joined({id3_tag_of({}), ac4_segment(1)})));
    EXPECT_EQ(run("master.m3u8", true), Ids{4076});
    EXPECT_EQ(outputs()["audio_GroupID_g_Lang_en_Channel_2ch.out.ac4"], as_text(ac4_segment(2)));
}

TEST_F(PackedFlow, EachSegmentBeginsWithAnIFrame) {
    EXPECT_EQ(
        findings(rendition(kAc4, "2"),
                 {ac4_segment(), joined({ac4_frame(ac4_mode::kStereo, "", 1, false), ac4_frame()}),
                  joined({ac4_frame(), ac4_frame(ac4_mode::kStereo, "", 1, false)})}),
        Ids{4485});
}

// --- CODECS -----------------------------------------------------------------------------------

TEST_F(PackedFlow, CodecsOfTheVariantMustHaveTheAudio) {
    EXPECT_EQ(findings(rendition("ac-4.02.01.03", "2"), {ac4_segment(1)}), Ids{4393});
    EXPECT_EQ(findings(rendition("ac-4", "2"), {ac4_segment(1)}), Ids{4393});
    EXPECT_EQ(findings(rendition("mp4a.40.2", "2"), {ac4_segment(1)}), (Ids{4393, 4393}));
    EXPECT_EQ(findings(rendition("ac-3", "6"), {eac3_segment()}), Ids{4283});
    EXPECT_EQ(findings(rendition("ec-3", "6"), {build_ac3_frame(Ac3Spec{})}), Ids{4497});
    EXPECT_EQ(findings(rendition("ec-3", "2"), {{0xFF, 0xF1, 0x50, 0x80}}), Ids{4495});
    EXPECT_EQ(findings(rendition("mp4a.40.2,ac-4.02.01.00", "2"), {ac4_segment(1)}), Ids{});
}

// --- CHANNELS, the text as a whole ------------------------------------------------------------

TEST_F(PackedFlow, WholeChannelsTextOfAc4) {
    EXPECT_EQ(findings(rendition(kAc4, "6"), {ac4_frame()}), Ids{4394});
    EXPECT_EQ(findings(rendition(kAc4, ""), {ac4_frame()}), Ids{4388});
    EXPECT_EQ(findings(rendition(kAc4, "12/IMSA"), {immersive_ac4()}), Ids{});
    EXPECT_EQ(findings(rendition(kAc4, "12"), {immersive_ac4()}), Ids{4394});
    EXPECT_EQ(findings(rendition("ac-4.02.02.00", "2/IMSA"), {ac4_frame(ac4_mode::kStereo, "", 2)}),
              Ids{});
}

TEST_F(PackedFlow, WholeChannelsTextOfEac3) {
    EXPECT_EQ(findings(rendition("ec-3", "2"), {eac3_segment()}), Ids{4288});
    EXPECT_EQ(findings(rendition("ec-3", ""), {eac3_segment()}), Ids{});
    EXPECT_EQ(findings(rendition("ec-3", "16/JOC"), {joc_segment(16)}), Ids{});
    EXPECT_EQ(findings(rendition("ec-3", "12/JOC"), {joc_segment(16)}), Ids{4291});
    EXPECT_EQ(findings(rendition("ec-3", "16"), {joc_segment(16)}), Ids{4291});
    EXPECT_EQ(findings(rendition("ec-3", ""), {joc_segment(16)}), Ids{4284});
}

// --- CHANNELS, read in parts ------------------------------------------------------------------

TEST_F(PackedFlow, PartsOfChannelsOfAc4) {
    EXPECT_EQ(findings(rendition(kAc4, "2", true), {ac4_frame()}), Ids{});
    EXPECT_EQ(findings(rendition(kAc4, "6", true), {ac4_frame()}), Ids{});
    EXPECT_EQ(findings(rendition(kAc4, "1", true), {ac4_frame(), ac4_frame()}), (Ids{4390, 4390}));
    EXPECT_EQ(findings(rendition(kAc4, "", true), {ac4_frame()}), Ids{4388});
    EXPECT_EQ(findings(rendition(kAc4, "12/IMSA", true), {immersive_ac4()}), Ids{});
    EXPECT_EQ(findings(rendition(kAc4, "12", true), {immersive_ac4()}), Ids{});
    EXPECT_EQ(findings(rendition(kAc4, "12/X", true), {immersive_ac4()}), Ids{4391});
    // The identifier waits for its content up to the end of the stream.
    EXPECT_EQ(findings(rendition(kAc4, "12/IMSA", true), {ac4_frame()}), Ids{2020});
    EXPECT_EQ(findings(rendition(kAc4, "12/IMSA", true), {ac4_frame(), immersive_ac4()}), Ids{});
    EXPECT_EQ(findings(rendition(kAc4, "many", true), {ac4_frame()}), (Ids{4060, 4390}));
}

TEST_F(PackedFlow, PartsOfChannelsOfEac3) {
    EXPECT_EQ(findings(rendition("ec-3", "6", true), {eac3_segment()}), Ids{});
    EXPECT_EQ(findings(rendition("ec-3", "8", true), {eac3_segment()}), Ids{});
    EXPECT_EQ(findings(rendition("ec-3", "2", true), {eac3_segment()}), Ids{4289});
    EXPECT_EQ(findings(rendition("ec-3", "16/JOC", true), {joc_segment(16)}), Ids{});
    EXPECT_EQ(findings(rendition("ec-3", "12/JOC", true), {joc_segment(16)}), Ids{4289});
    EXPECT_EQ(findings(rendition("ec-3", "16/X", true), {joc_segment(16)}), Ids{4290});
    EXPECT_EQ(findings(rendition("ec-3", "16", true), {joc_segment(16)}), Ids{});
    EXPECT_EQ(findings(rendition("ec-3", "", true), {joc_segment(16)}), Ids{4284});
    EXPECT_EQ(findings(rendition("ec-3", "16/JOC", true), {eac3_segment()}), Ids{2020});
    EXPECT_EQ(findings(rendition("ec-3", "16/JOC,-", true), {joc_segment(16)}), Ids{4103});
}

}  // namespace
}  // namespace mediasplit
