#include <gtest/gtest.h>

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "oapinfolib/src/oap_parser_state.h"
#include "tests/support/shell_command.h"
#include "tests/support/temp_folder.h"
#include "tests/unit/oapinfolib/oap_test_support.h"

// Streams of the ac3 and eac3 encoders of ffmpeg, made when the tests run: every layout and rate
// they offer. What the library finds is held against the encoder's settings and against ffprobe.

namespace mediasplit {
namespace {

using test_support::Bytes;

struct Layout {
    const char* name;
    unsigned acmod;
    unsigned lfeon;
    unsigned channels;
};

constexpr Layout kLayouts[] = {
    {"mono", 1, 0, 1},       {"stereo", 2, 0, 2}, {"3.0(back)", 4, 0, 3}, {"3.0", 3, 0, 3},
    {"quad(side)", 6, 0, 4}, {"quad", 6, 0, 4},   {"4.0", 5, 0, 4},       {"5.0(side)", 7, 0, 5},
    {"5.0", 7, 0, 5},        {"FC+LFE", 1, 1, 2}, {"2.1", 2, 1, 3},       {"FL+FR+LFE+BC", 4, 1, 4},
    {"3.1", 3, 1, 4},        {"4.1", 5, 1, 5},    {"5.1(side)", 7, 1, 6}, {"5.1", 7, 1, 6}};
constexpr unsigned kRates[] = {48000, 44100, 32000};

std::string value_of(const std::string& text, const std::string& key) {
    const std::size_t at = text.find(key + "=");
    if (at == std::string::npos) {
        return "";
    }
    const std::size_t start = at + key.size() + 1;
    return text.substr(start, text.find('\n', start) - start);
}

class RealStreams : public testing::Test {
protected:
    void SetUp() override {
        for (const char* tool : {"ffmpeg", "ffprobe"}) {
            ASSERT_EQ(run_shell(std::string(tool) + " -version 2>&1").status, 0)
                << tool << " is not installed; these tests encode and probe with it";
        }
    }

    // Runs the encoder: `outputs` are the options and names of one or more outputs.
    void encode(const std::string& outputs) const {
        const ShellResult done = run_shell("cd " + folder.path() +
                                           " && ffmpeg -nostdin -v error -f lavfi -i "
                                           "'sine=frequency=440:sample_rate=48000:duration=0.4' " +
                                           outputs + " 2>&1");
        ASSERT_EQ(done.status, 0) << done.output;
    }

    [[nodiscard]] std::string probe(const std::string& file) const {
        return run_shell(
                   "ffprobe -v error -show_entries stream=codec_name,sample_rate,channels,"
                   "bit_rate -show_entries packet=size -of default=noprint_wrappers=1 " +
                   folder.path(file) + " 2>&1")
            .output;
    }

    [[nodiscard]] Bytes load(const std::string& file) const {
        const std::string text = read_file(folder.path(file));
        return {text.begin(), text.end()};
    }

    TempFolder folder;
};

std::string stream_name(const char* codec, std::size_t layout, unsigned rate) {
    return std::string(codec) + "_" + std::to_string(layout) + "_" + std::to_string(rate) + "." +
           codec;
}

void check_against_probe(const std::string& probed, const RunResult& run, const char* codec,
                         const Layout& layout, unsigned rate, std::size_t bytes) {
    const OapProgramInfo& program = run.info.program[0];
    EXPECT_EQ(value_of(probed, "codec_name"), codec);
    EXPECT_EQ(value_of(probed, "sample_rate"), std::to_string(rate));
    EXPECT_EQ(value_of(probed, "channels"), std::to_string(layout.channels));
    EXPECT_EQ(kSampleRate[program.fscod], rate);
    EXPECT_EQ(kChannelCount[program.acmod] + program.lfeon, layout.channels);
    // One packet of the probe is one frameset here; its sizes fill the file.
    EXPECT_EQ(run.info.framesets, count_of(probed, "size="));
    const double kbps = static_cast<double>(bytes) * 8 * rate / 1000 / 1536 / run.info.framesets;
    EXPECT_NEAR(run.info.data_rate, kbps, 1.0);
    EXPECT_NEAR(run.info.data_rate, std::stod(value_of(probed, "bit_rate")) / 1000, 1.5);
}

TEST_F(RealStreams, EveryLayoutAndRateOfBothEncoders) {
    for (const char* codec : {"ac3", "eac3"}) {
        const std::string help =
            run_shell(std::string("ffmpeg -hide_banner -h encoder=") + codec + " 2>&1").output;
        ASSERT_NE(help.find("Supported sample rates: 48000 44100 32000\n"), std::string::npos);
        std::string outputs;
        for (std::size_t i = 0; i < std::size(kLayouts); ++i) {
            ASSERT_NE(help.find(kLayouts[i].name), std::string::npos) << kLayouts[i].name;
            for (const unsigned rate : kRates) {
                outputs += std::string(" -af 'aformat=channel_layouts=") + kLayouts[i].name +
                           ":sample_rates=" + std::to_string(rate) + "' -c:a " + codec +
                           " -b:a 192k -f " + codec + " " + stream_name(codec, i, rate);
            }
        }
        encode(outputs);
        for (std::size_t i = 0; i < std::size(kLayouts); ++i) {
            for (const unsigned rate : kRates) {
                const std::string name = stream_name(codec, i, rate);
                SCOPED_TRACE(name + " " + kLayouts[i].name);
                const Bytes stream = load(name);
                const RunResult run = run_once(stream);
                EXPECT_EQ(run.err, "");
                ASSERT_EQ(run.info.num_programs, 1U);
                const OapProgramInfo& program = run.info.program[0];
                const bool is_eac3 = std::string(codec) == "eac3";
                EXPECT_EQ(program.bsid, is_eac3 ? 16U : 8U);
                EXPECT_EQ(program.acmod, kLayouts[i].acmod);
                EXPECT_EQ(program.lfeon, kLayouts[i].lfeon);
                EXPECT_EQ(program.strmtyp, 0U);
                EXPECT_EQ(program.num_dependent, 0U);
                EXPECT_EQ(run.info.byte_swapped, 0U);
                EXPECT_EQ(run.info.remainder_blocks, 0U);
                EXPECT_EQ(run.result, is_eac3 && rate == 48000 ? 0 : 1) << run.out;
                check_against_probe(probe(name), run, codec, kLayouts[i], rate, stream.size());
            }
        }
    }
}

TEST_F(RealStreams, MetadataOfTheEncoderComesThrough) {
    const std::string options =
        " -af aformat=channel_layouts=5.1 -b:a 448k -dialnorm -20 -copyright 1 -original 0 "
        "-mixing_level 100 -room_type large -dmix_mode ltrt -ltrt_cmixlev 0.707 -ltrt_surmixlev "
        "0.595 -loro_cmixlev 0.5 -loro_surmixlev 0.841 -dsurex_mode on -ad_conv_type hdcd ";
    encode(options + "-c:a eac3 a.eac3" + options + "-c:a ac3 a.ac3");
    for (const char* name : {"a.eac3", "a.ac3"}) {
        SCOPED_TRACE(name);
        const HeaderResult header = unpack(load(name));
        const BitstreamInfo& info = header.info;
        ASSERT_EQ(header.result, 0);
        EXPECT_EQ(info.dialnorm[0], 20);
        EXPECT_EQ(info.copyrightb, 1);
        EXPECT_EQ(info.origbs, 0);
        EXPECT_EQ(info.audprodie[0], 1);
        EXPECT_EQ(info.mixlevel[0], 20);
        EXPECT_EQ(info.roomtyp[0], 1);
        EXPECT_EQ(info.dmixmod, 1);
        EXPECT_EQ(info.ltrtcmixlev, 4);
        EXPECT_EQ(info.ltrtsurmixlev, 5);
        EXPECT_EQ(info.lorocmixlev, 6);
        EXPECT_EQ(info.lorosurmixlev, 3);
        EXPECT_EQ(info.dsurexmod, 2);
        EXPECT_EQ(info.adconvtyp[0], 1);
        EXPECT_EQ(info.mixlevels_present, 1);
    }
    EXPECT_EQ(unpack(load("a.ac3")).info.bsid, 6);
}

TEST_F(RealStreams, HighRatesHaveFewerBlocksAFrame) {
    encode(" -af aformat=channel_layouts=5.1 -c:a eac3 -b:a 3000k fast.eac3");
    const Bytes stream = load("fast.eac3");
    const RunResult run = run_once(stream);
    EXPECT_LT(unpack(stream).info.numblks, 6);
    EXPECT_NEAR(run.info.data_rate, 3000, 1);
    EXPECT_EQ(run.err, "");
}

TEST_F(RealStreams, OneFlippedBitIsFound) {
    encode(" -c:a eac3 -b:a 96k b.eac3 -c:a ac3 -b:a 96k b.ac3");
    for (const char* name : {"b.eac3", "b.ac3"}) {
        const Bytes stream = load(name);
        const std::size_t frame = frame_size(stream).words * std::size_t{2};
        // Behind the header, one byte in each 16th of the third frame.
        for (std::size_t part = 1; part < 16; ++part) {
            Bytes changed = stream;
            changed[2 * frame + part * frame / 16] ^= 0x10U;
            const RunResult run = run_once(changed);
            const bool partial = std::string(name) == "b.ac3" && part >= 10;
            EXPECT_EQ(run.result, partial ? 1 : 2) << name << ' ' << part;
            EXPECT_EQ(run.out.find("    166 - ") != std::string::npos, partial) << name << part;
        }
    }
}

TEST_F(RealStreams, SwappedStreamReadsTheSame) {
    encode(" -af aformat=channel_layouts=5.1 -c:a eac3 -b:a 384k c.eac3");
    const Bytes stream = load("c.eac3");
    const RunResult plain = run_once(stream);
    const RunResult other = run_once(test_support::swapped(stream));
    EXPECT_EQ(other.result, plain.result);
    EXPECT_EQ(other.info.byte_swapped, 1U);
    EXPECT_EQ(other.info.framesets, plain.info.framesets);
    EXPECT_EQ(other.info.data_rate, 384U);
    EXPECT_EQ(other.info.program[0].acmod, 7U);
}

TEST_F(RealStreams, FrameByFrameEqualsTheWholeBlock) {
    encode(" -c:a eac3 -b:a 128k d.eac3");
    const Bytes stream = load("d.eac3");
    const RunResult whole = run_once(stream);
    OapParser parser = oap_es_parser_new(1);
    std::size_t at = 0;
    std::uint32_t framesets = 0;
    while (at < stream.size()) {
        const Bytes rest(stream.begin() + static_cast<std::ptrdiff_t>(at), stream.end());
        const std::size_t size = frame_size(rest).words * std::size_t{2};
        const RunResult one =
            run(parser, Bytes(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(size)));
        EXPECT_EQ(one.result, 0);
        EXPECT_EQ(one.info.data_rate, whole.info.data_rate);
        framesets += one.info.framesets;
        at += size;
    }
    EXPECT_EQ(framesets, whole.info.framesets);
}

}  // namespace
}  // namespace mediasplit
