// Frames written from random descriptions, read by this library and by an independent reader of
// AC-4, mediainfo, where it is installed: both must tell the same.

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <random>
#include <sstream>
#include <string>

#include "ac4/metadata/huffman_code_books.h"
#include "ac4/metadata/presentation_substream.h"
#include "ac4/metadata/substream_metadata.h"
#include "tests/support/ac4_builder.h"
#include "tests/support/shell_command.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {
namespace {

// Values by label; the first of a label stands, which is the plain number.
using Told = std::map<std::string, std::string>;

std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    const std::size_t last = text.find_last_not_of(" \n");
    return first == std::string::npos ? "" : text.substr(first, last - first + 1);
}

Told ask_mediainfo(const std::vector<std::uint8_t>& stream) {
    const TempFolder folder;
    const std::string path = folder.write("stream.ac4", std::string(stream.begin(), stream.end()));
    std::istringstream lines(run_shell("mediainfo --Full " + path + " 2>/dev/null").output);
    Told told;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t colon = line.find(" : ");
        if (colon != std::string::npos) {
            told.emplace(trimmed(line.substr(0, colon)), trimmed(line.substr(colon + 3)));
        }
    }
    return told;
}

struct Description {
    PresentationText presentation;
    SubstreamText substream;
};

class Randomizer {
public:
    explicit Randomizer(std::uint32_t seed) : random_(seed) {}

    std::uint32_t below(std::uint32_t count) { return random_() % count; }
    bool flag() { return below(2) == 1; }
    OptionalCode code(std::uint32_t count) {
        return flag() ? OptionalCode(below(count)) : std::nullopt;
    }

    LoudnessText loudness() {
        LoudnessText text;
        text.version = below(6);
        text.practice = below(7);
        text.dialgate_practice = code(8);
        text.loudcorr_type = flag();
        text.relgat = 500 + below(1000);
        text.spchgat = 500 + below(1000);
        text.speech_practice = below(8);
        text.strm3s = code(2048);
        text.max_strm3s = code(2048);
        text.truepk = code(2048);
        text.max_truepk = 500 + below(1000);
        text.boundary_zeros = code(9);
        text.boundary_end = flag();
        text.boundary_offset = code(2048);
        text.lra = below(1024);
        text.lra_practice = below(8);
        text.mntry = code(2048);
        text.max_mntry = 500 + below(1000);
        text.rtll_comp = code(256);
        if (flag()) {
            // The old syntax has rtll_comp in it, nine bits with its flag.
            text.extension = std::string(9 + below(60), flag() ? '1' : '0');
        }
        return text;
    }

    DrcSideText curve_side(std::uint32_t gains, std::uint32_t levels, std::uint32_t section_gains) {
        DrcSideText side;
        side.gain = below(gains);
        side.level = below(levels);
        if (flag()) {
            side.section = {below(section_gains), below(32)};
        }
        return side;
    }

    DrcModeText drc_mode(std::uint32_t id) {
        DrcModeText mode;
        mode.id = id;
        mode.level_from = below(32);
        mode.level_to = below(32);
        mode.default_profile = below(3) == 0;
        if (!mode.default_profile && flag()) {
            mode.curve = DrcCurveText{};
            mode.curve->null_low = below(16);
            mode.curve->null_high = below(16);
            mode.curve->boost = curve_side(16, 32, 16);
            mode.curve->cut = curve_side(32, 64, 32);
            if (flag()) {
                mode.curve->time_constants = {below(256), below(256), below(256), below(256)};
            }
            if (flag()) {
                mode.curve->smoothing = {below(32), below(32)};
            }
        }
        return mode;
    }

    DrcText drc() {
        DrcText text;
        const std::uint32_t modes = 1 + below(6);
        for (std::uint32_t id = 0; id < modes; ++id) {
            text.modes.push_back(drc_mode(id));
            const DrcModeText& mode = text.modes.back();
            if (mode.default_profile || mode.curve) {
                text.reset = flag();
            } else {
                text.gain_sets.push_back(DrcGainSetText{});
                text.gain_sets.back().first_gain = below(128);
            }
        }
        text.eac3_profile = below(6);
        return text;
    }

private:
    std::mt19937 random_;
};

// 5.1, so that the downmix coefficients stand behind everything else.
PresentationText describe_presentation(Randomizer& random) {
    PresentationText presentation;
    presentation.dialnorm = random.below(128);
    presentation.loudness = random.loudness();
    presentation.drc = random.drc();
    if (random.flag()) {
        presentation.additional = std::string(8 * (1 + random.below(20)), '0');
    }
    StereoDownmixText downmix{random.below(7), random.below(7), {}, {}, {}, random.below(32), 1};
    downmix.ltrt = {random.below(7), random.below(7)};
    presentation.tail.code("0").add(write_stereo_downmix(downmix, false, true));
    presentation.tail.code("1 01111 1 10001");

    return presentation;
}

// 5.1; the dialogue enhancement stands behind everything else.
SubstreamText describe_substream(Randomizer& random, int sus_ver) {
    SubstreamText substream;
    substream.sus_ver = sus_ver;
    substream.ch_mode = 4;
    substream.basic.dialnorm = random.below(128);
    if (sus_ver == 0) {
        substream.drc = random.drc();
        substream.basic.downmix =
            StereoDownmixText{random.below(8), random.below(8), random.code(32), {},
                              random.code(32), random.code(32), random.below(4)};
    }
    substream.audio_bytes = random.below(2000);
    substream.basic.more = true;
    substream.basic.substream_loudness = random.code(256);
    if (random.flag()) {
        substream.basic.loudness = random.loudness();
    }
    substream.basic.dmixtyp_5ch = random.code(8);
    substream.basic.upmixtyp_5ch = random.code(16);
    substream.basic.phase90_mc = random.below(4);
    substream.basic.surround_known = random.flag();
    substream.basic.lfe_known = random.flag();
    substream.basic.dc_block = random.code(2);
    substream.extended.dialog = random.flag();
    substream.extended.dialog_max_gain = random.code(4);
    if (random.flag()) {
        substream.extended.pan_dialog = {random.below(256), random.below(256)};
    }
    substream.extended.classifier = random.flag();
    substream.extended.active = random.below(0x1000);
    substream.extended.has_dialog = random.below(8);
    substream.extended.event_probability = random.code(16);
    substream.de = DeText{};
    substream.de->max_gain = 1 + random.below(3);
    substream.de->channels = 1;
    substream.de->data = huffman_code_books::kDeAbs0[random.below(32)];
    for (int band = 1; band < 8; ++band) {
        substream.de->data += huffman_code_books::kDeDiff0[random.below(63)];
    }
    return substream;
}

BuildFrame frame_of(const SubstreamText& text) {
    BuildFrame frame;
    frame.frame_rate_index = 2;
    frame.presentations[0].rate_bits.assign(1, '0');
    frame.presentations[0].id = 0;
    frame.presentations[0].emdf.primary_length = 1;
    if (text.sus_ver == 0) {
        frame.bitstream_version = 0;
        frame.presentations[0].version = 0;
        frame.presentations[0].substreams.resize(1);
        frame.presentations[0].substreams[0].mode = std::string(ac4_mode::k51);
        frame.substreams = {write_substream(text)};
    }
    return frame;
}

BuildFrame frame_of(const Description& text) {
    BuildFrame frame = frame_of(text.substream);
    frame.groups[0].substreams[0].mode = std::string(ac4_mode::k51);
    frame.groups[0].substreams[0].index = 1;
    frame.substreams = {write_presentation(text.presentation).to_bytes(),
                        write_substream(text.substream)};
    return frame;
}

std::vector<std::uint8_t> stream_of(BuildFrame frame) {
    std::vector<std::uint8_t> stream;
    for (frame.sequence_counter = 1; frame.sequence_counter <= 10; ++frame.sequence_counter) {
        const Ac4Bytes bytes = write_syncframe(write_ac4_frame(frame));
        stream.insert(stream.end(), bytes.begin(), bytes.end());
    }
    return stream;
}

PresentationMetadata read_presentation(const PresentationText& text) {
    const std::vector<std::uint8_t> data = write_presentation(text).to_bytes();
    PresentationFacts facts;
    facts.b_pres_ndot = true;
    facts.n_substreams = 1;
    facts.n_substream_groups = 1;
    facts.ch_mode = 4;
    facts.frame_length = 2048;
    Ac4MetadataState state;
    PresentationMetadata out;
    EXPECT_EQ(ac4analyze_parse_ac4_presentation_substream(&state, 0, data.data(), data.size(),
                                                          facts, &out),
              kMetadataOk);
    return out;
}

SubstreamMetadata read_substream(const SubstreamText& text) {
    const std::vector<std::uint8_t> data = write_substream(text);
    SubstreamFacts facts;
    facts.ch_mode = 4;
    facts.sus_ver = text.sus_ver;
    facts.b_iframe = true;
    facts.frame_length = 2048;
    Ac4MetadataState state;
    SubstreamMetadata out;
    EXPECT_EQ(ac4analyze_get_substream_metadata(&state, 0, data.data(), data.size(), facts, &out),
              kMetadataOk);
    return out;
}

double number(const Told& told, const std::string& label) {
    const auto found = told.find(label);
    EXPECT_NE(found, told.end()) << label;
    return found != told.end() ? std::strtod(found->second.c_str(), nullptr) : 0;
}

// A word that is left out where it would be the usual one.
std::string word(const Told& told, const std::string& label, const char* usual) {
    const auto found = told.find(label);
    return found != told.end() ? found->second : usual;
}

// Loudness codes in tenths from -102.4.
double level(const CodedField& field) {
    return (field.value - 1024) / 10.0;
}

void expect_same(const Told& told, const PresentationMetadata& ours) {
    constexpr double kRounding = 0.051;
    EXPECT_NEAR(number(told, "Dialogue normalization"), ours.dialnorm, 0.005);
    EXPECT_NEAR(number(told, "Integrated loudness (level gated)"), level(ours.loudness.loudrelgat),
                kRounding);
    EXPECT_NEAR(number(told, "Integrated loudness (speech gated)"),
                level(ours.loudness.loudspchgat), kRounding);
    EXPECT_NEAR(number(told, "Max true peak"), level(ours.loudness.max_truepk), kRounding);
    EXPECT_NEAR(number(told, "Maximum momentary loudness"), level(ours.loudness.max_loudmntry),
                kRounding);
    EXPECT_NEAR(number(told, "Loudness range"), ours.loudness.lra.value / 10.0, kRounding);
    constexpr const char* kProfiles[] = {"None",           "Film standard", "Film light",
                                         "Music standard", "Music light",   "Speech"};
    ASSERT_LT(ours.drc.eac3_profile, 6);
    EXPECT_EQ(word(told, "E-AC-3 DRC profile", "None"), kProfiles[ours.drc.eac3_profile]);
    const auto gain = [](int code) { return 3.0 - 1.5 * code; };
    const StereoDownmix& downmix = ours.stereo_dmx;
    EXPECT_NEAR(number(told, "LoRo center mix gain"), gain(downmix.loro_centre_mixgain), 0.01);
    EXPECT_NEAR(number(told, "LoRo surround mix gain"), gain(downmix.loro_surround_mixgain), 0.01);
    EXPECT_NEAR(number(told, "LtRt center mix gain"), gain(downmix.ltrt_centre_mixgain), 0.01);
    EXPECT_NEAR(number(told, "LtRt surround mix gain"), gain(downmix.ltrt_surround_mixgain), 0.01);
    EXPECT_NEAR(number(told, "LFE mix gain"), 10.0 - downmix.lfe_mixgain.value, 0.01);
}

void expect_same(const Told& told, const SubstreamMetadata& ours) {
    const auto yes_no = [](bool yes) { return yes ? "Yes" : "No"; };
    EXPECT_EQ(word(told, "Surround attenuation known", "No"),
              yes_no(ours.basic.b_surround_attenuation_known));
    EXPECT_EQ(word(told, "LFE attenuation known", "No"),
              yes_no(ours.basic.b_lfe_attenuation_known));
    EXPECT_TRUE(ours.de.b_de_data_present);
    EXPECT_EQ(word(told, "Enabled", "No"), "Yes");
    // Of a dialogue substream it tells the gain of the dialogue metadata instead.
    const ExtendedMetadata& extended = ours.extended;
    if (!extended.b_dialog || extended.dialog_max_gain_present) {
        EXPECT_NEAR(number(told, "Max gain"),
                    extended.b_dialog ? extended.dialog_max_gain : ours.de.max_gain_db, 0.01);
    }
}

bool mediainfo_is_missing() {
    return std::system("command -v mediainfo >/dev/null 2>&1") != 0;
}

TEST(IndependentReader, TellsTheSameOfRandomFrames) {
    if (mediainfo_is_missing()) {
        GTEST_SKIP() << "mediainfo is not installed";
    }
    for (std::uint32_t seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        Randomizer random(seed);
        const Description text{describe_presentation(random), describe_substream(random, 1)};
        const Told told = ask_mediainfo(stream_of(frame_of(text)));
        expect_same(told, read_presentation(text.presentation));
        expect_same(told, read_substream(text.substream));
    }
}

TEST(IndependentReader, TellsTheSameOfRandomFramesOfTheOldSyntax) {
    if (mediainfo_is_missing()) {
        GTEST_SKIP() << "mediainfo is not installed";
    }
    for (std::uint32_t seed = 100; seed < 140; ++seed) {
        SCOPED_TRACE(seed);
        Randomizer random(seed);
        SubstreamText text = describe_substream(random, 0);
        text.extended.dialog = false;  // told by the content type in this syntax
        const Told told = ask_mediainfo(stream_of(frame_of(text)));
        const SubstreamMetadata ours = read_substream(text);
        EXPECT_NEAR(number(told, "Dialog Normalization"), ours.dialnorm, 0.005);
        expect_same(told, ours);
    }
}

}  // namespace
}  // namespace mediasplit
