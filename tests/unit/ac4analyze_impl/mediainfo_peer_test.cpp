// Streams of the frame builder, read by the analyzer and by an independent reader of AC-4.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/shell_command.h"
#include "tests/support/temp_folder.h"
#include "tests/unit/ac4analyze_impl/analyzer_fixture.h"

namespace mediasplit {
namespace {

// Values by "section/field", first ones kept: "Presentation #1/Channel mode".
using PeerReport = std::map<std::string, std::string>;

PeerReport ask_peer(const std::string& file) {
    PeerReport report;
    std::istringstream lines(run_shell("mediainfo --Full '" + file + "' 2>/dev/null").output);
    std::string section;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t colon = line.find(" : ");
        if (colon == std::string::npos) {
            continue;
        }
        const bool nested = line[0] == ' ';
        std::string key = line.substr(nested ? 1 : 0, colon - (nested ? 1 : 0));
        key.erase(key.find_last_not_of(' ') + 1);
        std::string value = line.substr(colon + 3);
        value.erase(value.find_last_not_of("\r ") + 1);
        if (!nested) {
            section = key;
        }
        report.emplace(nested ? section + "/" + key : key, value);
    }
    return report;
}

class MediainfoPeerTest : public AnalyzerFixture {
protected:
    void SetUp() override {
        if (run_shell("mediainfo --Version 2>&1").status == 127 * 256) {
            GTEST_SKIP() << "mediainfo is not installed";
        }
    }
    // Writes a stream of the frame, has both read it.
    void read_both(BuildFrame frame) {
        std::string stream;
        for (int i = 0; i < 40; ++i) {
            frame.sequence_counter = ++sequence_;
            const Ac4Bytes synced = write_syncframe(write_ac4_frame(frame), i % 2 == 0);
            stream.append(synced.begin(), synced.end());
            ASSERT_EQ(analyze(frame), 0);
            EXPECT_EQ(record_->status, 0U);
        }
        const TempFolder folder;
        peer_ = ask_peer(folder.write("stream.ac4", stream));
        ASSERT_EQ(peer_["Format"], "AC-4");
        compare_head();
        for (std::int32_t p = 0; p < record_->n_presentations; ++p) {
            compare_presentation(static_cast<std::size_t>(p));
        }
    }
    void expect(const std::string& field, const std::string& value) {
        EXPECT_EQ(peer_[field], value) << field;
    }
    static std::string mode_name(std::int32_t code) {
        static const std::map<std::int32_t, std::string> names = {
            {2, "Mono"},    {4, "Stereo"},       {24, "3.0"},           {26, "5.0"},
            {28, "5.1"},    {240, "7.0: 3/4/0"}, {242, "7.1: 3/4/0.1"}, {504, "7.0.4"},
            {506, "7.1.4"}, {1016, "9.0.4"},     {1018, "9.1.4"},       {1020, "22.2"}};
        const auto found = names.find(code);
        return found != names.end() ? found->second : std::to_string(code);
    }
    static std::string decibels(float value) {
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%.2f", static_cast<double>(value));
        return text.data();
    }
    void compare_head() {
        expect("bitstream_version", std::to_string(record_->bitstream_version));
        expect("Number of presentations", std::to_string(record_->n_presentations));
        expect("Sampling rate", std::to_string(substream(0).info.sample_rate));
        expect("Number of substreams", std::to_string(record_->substream_count_total));
        if (record_->bitstream_version == 2) {
            const auto groups =
                std::count_if(record_->groups.begin(), record_->groups.end(),
                              [](const AnalysisGroup& group) { return group.present; });
            expect("NumberOfGroups", std::to_string(groups));
        }
    }
    void compare_presentation(std::size_t p) {
        const std::string section = "Presentation #" + std::to_string(p + 1);
        const AnalysisPresentation& mine = presentation(p);
        if (record_->bitstream_version == 2) {
            expect(section + "/Channel mode", mode_name(mine.channel_mode));
            expect(section + "/Dialogue normalization", decibels(mine.metadata.dialnorm));
        }
        if (mine.presentation_group > 0) {
            expect(section + "/Presentation ID", std::to_string(mine.presentation_group - 1));
        }
        std::string groups;
        for (std::int32_t g = 0; g < mine.n_substream_groups; ++g) {
            groups +=
                (g > 0 ? " + " : "") + std::to_string(mine.groups[static_cast<std::size_t>(g)]);
        }
        if (!groups.empty()) {
            expect(section + "/Group #s", groups);
        }
    }

    PeerReport peer_;
    std::uint32_t sequence_ = 0;
};

TEST_F(MediainfoPeerTest, StereoStreamReadsTheSame) {
    BuildFrame frame = simple_stereo_frame(100);
    frame.frame_rate_index = 2;
    frame.presentations[0].rate_bits = "0";
    frame.presentations[0].id = 3;
    read_both(frame);
    expect("Frame rate", "25.000");
    expect("Group #1/Language", "en");
    expect("Group #1/Channel coded", "Yes");
    expect("Substream #1/Channel mode", "Stereo");
}

TEST_F(MediainfoPeerTest, MainAndDialogueReadTheSame) {
    read_both(main_and_dialogue_frame(100));
    expect("Presentation #1/Presentation config", "Music and Effects + Dialogue");
    expect("Presentation #1/Language", "en-GB");
    expect("Group #1/Content classifier", "Music and Effects");
    expect("Group #2/Content classifier", "Dialogue");
}

TEST_F(MediainfoPeerTest, ImmersiveModesReadTheSame) {
    for (const char* mode : {ac4_mode::k704, ac4_mode::k714}) {
        BuildFrame frame = simple_stereo_frame(100);
        frame.groups[0].substreams[0].mode = mode;
        frame.groups[0].substreams[0].immersive = "1111";
        SubstreamText text;
        text.ch_mode = std::string(mode) == ac4_mode::k704 ? 11 : 12;
        text.audio_bytes = 50;
        frame.substreams[1] = write_substream(text);
        read_both(frame);
    }
}

TEST_F(MediainfoPeerTest, ThreePartPresentationsReadTheSame) {
    BuildFrame frame = main_and_dialogue_frame(60);
    frame.presentations[0].config = 3;
    frame.presentations[0].groups = {0, 1, 2};
    BuildGroup associate;
    associate.substreams[0].mode = ac4_mode::kMono;
    associate.substreams[0].index = 5;
    associate.content = BuildContent{5, "de", {}};
    frame.groups.push_back(associate);
    SubstreamText text;
    text.ch_mode = 0;
    text.audio_bytes = 10;
    frame.substreams.push_back(write_substream(text));
    read_both(frame);
    expect("Group #3/Content classifier", "Commentary");
    expect("Group #3/Language", "de");
}

TEST_F(MediainfoPeerTest, OldSyntaxReadsTheSame) {
    BuildFrame frame;
    frame.bitstream_version = 0;
    frame.groups.clear();
    BuildPresentation& text = frame.presentations[0];
    text.version = 0;
    text.groups.clear();
    text.substreams.assign(1, BuildSubstream{});
    text.substreams[0].mode = ac4_mode::k51;
    text.substreams[0].content = BuildContent{0, "fr", {}};
    SubstreamText audio;
    audio.sus_ver = 0;
    audio.ch_mode = 4;
    audio.audio_bytes = 60;
    audio.basic.dialnorm = 88;
    frame.substreams = {write_substream(audio)};
    read_both(frame);
    expect("Substream #1/Channel mode", mode_name(substream(0).info.channel_mode));
    expect("Substream #1/Dialog Normalization", decibels(substream(0).metadata.dialnorm));
    expect("Presentation0 ChannelMode/Language", "fr");
}

}  // namespace
}  // namespace mediasplit
