// Streams of real encoders, plain and with a configuration of the enhancement format put into them,
// alone and below manifests: sound ones are found sound, in runs of the whole program.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>
#include <string>

#include "tests/support/temp_folder.h"
#include "tests/unit/prisma_checks/prisma_cases.h"

namespace mediasplit {
namespace {

using mp4::Bytes;

constexpr const char* kSource =
    "ffmpeg -v error -nostdin -y -f lavfi -i testsrc2=size=320x180:rate=25 -frames:v 50 -bitexact ";
constexpr const char* kHdr =
    "-color_primaries bt2020 -color_trc smpte2084 -colorspace bt2020nc -color_range tv "
    "-pix_fmt yuv420p10le ";

// What is encoded once for all tests.
struct Encoding {
    const char* name;
    std::string options;
};

const Encoding kEncodings[] = {
    {"h264", "-c:v libx264 -preset ultrafast -x264-params log-level=none "},
    {"h265", std::string(kHdr) +
                 "-c:v libx265 -preset ultrafast -tag:v hvc1 -x265-params "
                 "log-level=none:colorprim=bt2020:transfer=smpte2084:colormatrix=bt2020nc "},
    {"h265_in_band", std::string(kHdr) +
                         "-c:v libx265 -preset ultrafast -tag:v hev1 -x265-params "
                         "log-level=none:repeat-headers=1:colorprim=bt2020:transfer=smpte2084:"
                         "colormatrix=bt2020nc "},
    {"av1", std::string(kHdr) + "-c:v libaom-av1 -cpu-used 8 -crf 50 "},
};

struct Files {
    Bytes whole;
    Bytes initialization;
    Bytes segment;
};

Bytes bytes_of(const std::string& path) {
    const std::string text = read_file(path);
    return {text.begin(), text.end()};
}

std::uint32_t number_at(const Bytes& bytes, std::size_t at) {
    return std::uint32_t{bytes[at]} << 24 | std::uint32_t{bytes[at + 1]} << 16 |
           std::uint32_t{bytes[at + 2]} << 8 | bytes[at + 3];
}

void put_number(Bytes& bytes, std::size_t at, std::size_t number) {
    const Bytes four = mp4::u32(number);
    std::copy(four.begin(), four.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

// Where the type of a box stands, the first time behind `from`.
std::size_t type_at(const Bytes& bytes, const std::string& type, std::size_t from = 0) {
    const auto found = std::search(bytes.begin() + static_cast<std::ptrdiff_t>(from), bytes.end(),
                                   type.begin(), type.end());
    EXPECT_NE(found, bytes.end()) << type;
    return static_cast<std::size_t>(found - bytes.begin());
}

const Files& files_of(const std::string& name) {
    static std::map<std::string, Files> made;
    const auto there = made.find(name);
    if (there != made.end()) {
        return there->second;
    }
    const TempFolder folder;
    const auto* const encoding =
        std::find_if(std::begin(kEncodings), std::end(kEncodings),
                     [&](const Encoding& candidate) { return name == candidate.name; });
    const auto encode = [&](const std::string& flags, const std::string& file) {
        const std::string command = kSource + encoding->options + flags + folder.path(file);
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        return bytes_of(folder.path(file));
    };
    Files& files = made[name];
    files.whole = encode("-movflags +write_colr ", "whole.mp4");
    const Bytes parts =
        encode("-movflags +write_colr+frag_keyframe+empty_moov+delay_moov+default_base_moof ",
               "parts.mp4");
    const auto border = static_cast<std::ptrdiff_t>(type_at(parts, "moof") - 4);
    files.initialization = Bytes(parts.begin(), parts.begin() + border);
    files.segment = Bytes(parts.begin() + border, parts.end());
    return files;
}

bool can_encode() {
    static const bool kCan = std::system(
                                 "ffmpeg -v error -encoders 2>/dev/null | grep -q libx265 && "
                                 "ffmpeg -v error -encoders 2>/dev/null | grep -q libaom") == 0;
    return kCan;
}

// --- Putting a configuration in ------------------------------------------------------------------

// The entry gets another type and one more box; two brands take the place of ffmpeg's. The media
// data has to stand ahead of the `moov` or in other files.
Bytes with_config(Bytes file, const std::string& from, const std::string& to, const Bytes& box,
                  const std::string& brand) {
    const std::size_t entry = type_at(file, from, type_at(file, "stsd"));
    std::copy(to.begin(), to.end(), file.begin() + static_cast<std::ptrdiff_t>(entry));
    const std::size_t end = entry - 4 + number_at(file, entry - 4);
    std::set<std::size_t> holders{entry - 4};
    for (const char* holder : {"moov", "trak", "mdia", "minf", "stbl", "stsd"}) {
        holders.insert(type_at(file, holder) - 4);
    }
    for (const std::size_t at : holders) {
        put_number(file, at, number_at(file, at) + box.size());
    }
    file.insert(file.begin() + static_cast<std::ptrdiff_t>(end), box.begin(), box.end());
    // "ftyp", major brand, version, compatible brands.
    std::copy_n("orv1", 4, file.begin() + 16);
    std::copy(brand.begin(), brand.end(), file.begin() + 20);
    EXPECT_GE(number_at(file, 0), 24U);
    return file;
}

Bytes config_box(const Scenario& s) {
    return mp4::prsm_config(s.config_box, s.profile, s.level, s.compatible_id, s.md_compression);
}

// --- Codec texts by hand, from the configuration boxes -------------------------------------------

std::string text_of(const char* format, std::initializer_list<unsigned> values) {
    std::array<char, 64> text{};
    std::array<unsigned, 8> all{};
    std::copy(values.begin(), values.end(), all.begin());
    std::snprintf(text.data(), text.size(), format, all[0], all[1], all[2], all[3], all[4], all[5],
                  all[6], all[7]);
    return text.data();
}

std::string avc_text(const Bytes& file) {
    const std::size_t at = type_at(file, "avcC") + 4;
    return text_of("avc1.%02x%02x%02x", {file[at + 1], file[at + 2], file[at + 3]});
}

// ISO/IEC 14496-15 E.3: profile, compatibility flags from the lowest bit, tier and level, and the
// constraint bytes up to the last that isn't zero.
std::string hevc_text(const Bytes& file, const std::string& entry) {
    const std::size_t at = type_at(file, "hvcC") + 4;
    const std::uint32_t flags = number_at(file, at + 2);
    std::uint32_t reversed = 0;
    for (unsigned bit = 0; bit < 32; ++bit) {
        reversed |= (flags >> bit & 1) << (31 - bit);
    }
    std::string text =
        entry + text_of(".%u.%x.%c%u", {file[at + 1] & 0x1FU, reversed,
                                        (file[at + 1] & 0x20) != 0 ? unsigned{'H'} : unsigned{'L'},
                                        file[at + 12]});
    std::size_t last = 6;
    while (last > 0 && file[at + 5 + last] == 0) {
        --last;
    }
    for (std::size_t i = 1; i <= last; ++i) {
        text += text_of(".%x", {file[at + 5 + i]});
    }
    return text;
}

// AV1 codec ISO media file format binding, 5, with the colour values of base layer 1.
std::string av1_text(const Bytes& file) {
    const std::size_t at = type_at(file, "av1C") + 4;
    const unsigned chroma = file[at + 2];
    return text_of("av01.%u.%02u%c.%02u.%u.%u%u%u",
                   {unsigned{file[at + 1]} >> 5, file[at + 1] & 0x1FU,
                    (chroma & 0x80) != 0 ? unsigned{'H'} : unsigned{'M'},
                    (chroma & 0x40) != 0 ? 10U : 8U, chroma >> 4 & 1, chroma >> 3 & 1,
                    chroma >> 2 & 1, chroma & 3}) +
           ".09.16.09.0";
}

// --- The runs ------------------------------------------------------------------------------------

std::vector<std::string> findings(const Scenario& s) {
    const ScenarioResult result = run_program_on(s);
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < result.ids.size(); ++i) {
        // Advice against parameter sets in samples, and codecs that master playlists don't know.
        if (result.ids[i] >= 2000 && result.ids[i] != 2016 && result.ids[i] != 2021) {
            texts.push_back(std::to_string(result.ids[i]) + " " + result.texts[i]);
        }
    }
    return texts;
}

using Texts = std::vector<std::string>;
constexpr std::uint32_t kModes[] = {kFile, kDash, kVariant, kIframe};

class PrismaRealStreams : public testing::Test {
protected:
    void SetUp() override {
        if (!can_encode()) {
            GTEST_SKIP() << "ffmpeg with libx265 and libaom is missing";
        }
    }
};

TEST_F(PrismaRealStreams, PlainOnesRaiseNothing) {
    struct Row {
        const char* encoding;
        std::string codecs;
    };
    for (const Row& row : {Row{"h264", avc_text(files_of("h264").whole)},
                           Row{"h265", hevc_text(files_of("h265").whole, "hvc1")},
                           Row{"h265_in_band", hevc_text(files_of("h265_in_band").whole, "hev1")},
                           Row{"av1", av1_text(files_of("av1").whole)}}) {
        for (const std::uint32_t mode : kModes) {
            Scenario s;
            s.mode = mode;
            s.set_codecs(row.codecs);
            const Files& files = files_of(row.encoding);
            s.files = ScenarioFiles{files.whole, files.initialization, files.segment};
            EXPECT_EQ(findings(s), Texts{}) << row.encoding << " in mode " << mode;
        }
    }
}

struct RealProfile {
    const char* encoding;
    const char* from;  // the encoder's sample entry
    Scenario (*make)(std::uint32_t mode);
    const char* to;
    const char* brand;
    std::string codecs;
    const char* supplement;
};

void expect_sound(const RealProfile& row) {
    const Files& files = files_of(row.encoding);
    for (const std::uint32_t mode : kModes) {
        Scenario s = row.make(mode);
        s.level = 1;
        s.set_codecs(row.codecs);
        if (*row.supplement != '\0') {
            s.set_supplement(row.supplement, row.brand);
        }
        const Bytes box = config_box(s);
        s.files = ScenarioFiles{with_config(files.whole, row.from, row.to, box, row.brand),
                                with_config(files.initialization, row.from, row.to, box, row.brand),
                                files.segment};
        EXPECT_EQ(findings(s), Texts{}) << row.to << " in mode " << mode;
        const ScenarioResult result = run_program_on(s);
        EXPECT_TRUE(result.evaluated.contains(4170)) << row.to << " in mode " << mode;
        // The level is held against the encoder's parameter sets where there are some.
        s.files->whole =
            with_config(files.whole, row.from, row.to,
                        mp4::prsm_config(s.config_box, s.profile, 9, s.compatible_id), row.brand);
        if (mode == kFile && s.profile != 10) {
            const Texts told = findings(s);
            EXPECT_FALSE(told.empty()) << row.to;
            for (const std::string& text : told) {
                EXPECT_EQ(text.substr(0, 4), "4253") << text;
            }
        }
    }
}

TEST_F(PrismaRealStreams, Profile5) {
    expect_sound({"h265", "hvc1", profile_5, "pxh1", "pb1p", "pxh1.05.01", ""});
    expect_sound({"h265_in_band", "hev1", profile_5, "pxhe", "pb1p", "pxhe.05.01", ""});
}

TEST_F(PrismaRealStreams, Profile8) {
    expect_sound({"h265", "hvc1", profile_8, "hvc1", "pb1p",
                  hevc_text(files_of("h265").whole, "hvc1"), "pxh1.08.01"});
}

TEST_F(PrismaRealStreams, Profile9) {
    expect_sound({"h264", "avc1", profile_9, "avc1", "pb2g", avc_text(files_of("h264").whole),
                  "pxa1.09.01"});
}

TEST_F(PrismaRealStreams, Profile10) {
    expect_sound(
        {"av1", "av01", profile_10, "av01", "pb1p", av1_text(files_of("av1").whole), "pav1.10.01"});
}

}  // namespace
}  // namespace mediasplit
