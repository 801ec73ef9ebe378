// Broken and hostile files: the walk comes to its end by itself, reads nothing that isn't there,
// and takes memory in proportion to the file.
#include <fstream>

#include "tests/unit/mp4demuxer/walk_support.h"

namespace mediasplit::mp4 {
namespace {

// Walks the bytes and asks for every sample, as far as there are any.
std::uint64_t walk_all(const Bytes& bytes) {
    // Reports of broken parameter sets would fill the terminal.
    ::testing::internal::CaptureStderr();
    const WalkResult result = walk_and_listen(bytes);
    ::testing::internal::GetCapturedStderr();
    std::uint64_t checksum = 0;
    Mp4Sample out;
    for (std::uint32_t t = 0; t < result.demuxer->stream_count; ++t) {
        const Mp4Stream& stream = result.stream(t);
        for (std::uint32_t i = 0; i < std::min(stream.num_samples, 1000U); ++i) {
            if (mp4demuxer_get_sample(*result.demuxer, t, i, out) == nullptr) {
                break;
            }
            checksum += out.offset + out.size + out.pts + out.dts + out.duration + out.sync;
            if (out.senc != nullptr) {
                checksum += senc_iv(stream, *out.senc).size();
                for (const Subsample& subsample : senc_subsamples(stream, *out.senc)) {
                    checksum += subsample.clear_bytes;
                }
            }
        }
        static_cast<void>(get_sample_offset(stream, 0xFFFFFFFF));
        checksum += get_sample_pts(stream, 0xFFFFFFFF) + get_sample_dts(stream, 0xFFFFFFFF) +
                    get_sample_size(stream, 0xFFFFFFFF) + get_sample_flags(stream, 0xFFFFFFFF) +
                    get_sample_duration(stream, 0xFFFFFFFF);
    }
    return checksum;
}

// Every kind of box that a handler reads.
MovieSpec rich_movie() {
    MovieSpec movie;
    TencSpec spec;
    spec.version = 1;
    spec.pattern = 0x19;
    spec.constant_iv = repeat(3, 16);
    TrackSpec video;
    video.entries = {
        video_entry("avc1", 16, 16,
                    {avcC({hex("6742c01e")}, {hex("68ce")}), prsm_config("pxcC", 9, 5),
                     box("colr", {text("nclx"), zeros(7)})}),
        video_entry("encv", 16, 16,
                    {sinf("avc1", "cenc", spec), avcC({hex("6742c01e")}, {hex("68ce")})})};
    video.write_senc = true;
    video.edits = {{3000, -1}, {9000, 0}};
    TrackSpec hevc;
    hevc.track_id = 2;
    hevc.entries = {video_entry("hvc1", 16, 16,
                                {hvcC({{32, {hex("40010c01")}},
                                       {33, {hex("42010101")}},
                                       {34, {hex("4401c172")}},
                                       {39, {hex("4e0105")}}}),
                                 box("av1C", {hex("81000c00"), zeros(40)})})};
    hevc.extra = box("tref", {box("vdep", {u32(1)})});
    TrackSpec audio;
    audio.track_id = 3;
    audio.handler = "soun";
    audio.entries = {audio_entry("ec-3", 2, 16, 48000,
                                 {box("dec3", {hex("1400200f0001 10")}), esds(hex("1190"))})};
    for (int i = 0; i < 5; ++i) {
        const SampleSpec sample{
            repeat(0x40, 7), 3, i % 2, i % 2 == 0, {repeat(9, 8), {{1, 2}, {3, 4}}}};
        video.samples.push_back(sample);
        hevc.samples.push_back(sample);
        audio.samples.push_back(sample);
    }
    movie.tracks = {video, hevc, audio};
    return movie;
}

std::vector<Bytes> rich_files() {
    return {plain_file(rich_movie()), fragmented_file(rich_movie())};
}

TEST(HostileFile, CutAtAnyByteEnds) {
    for (const Bytes& file : rich_files()) {
        for (std::size_t size = 0; size < file.size(); ++size) {
            walk_all(Bytes(file.begin(), file.begin() + static_cast<long>(size)));
        }
    }
}

TEST(HostileFile, WithAnyByteChangedEnds) {
    for (const Bytes& file : rich_files()) {
        for (std::size_t at = 0; at < file.size(); ++at) {
            for (const int flip : {0x01, 0x80, 0xFF}) {
                Bytes changed = file;
                changed[at] = static_cast<std::uint8_t>(changed[at] ^ flip);
                walk_all(changed);
            }
        }
    }
}

TEST(HostileFile, WithAnyWordMadeExtremeEnds) {
    for (const Bytes& file : rich_files()) {
        for (std::size_t at = 0; at + 4 <= file.size(); ++at) {
            for (const std::uint32_t value :
                 {0U, 1U, 7U, 8U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
                Bytes changed = file;
                const Bytes word = u32(value);
                std::copy(word.begin(), word.end(), changed.begin() + static_cast<long>(at));
                walk_all(changed);
            }
        }
    }
}

TEST(HostileFile, NestedAHundredThousandDeepEnds) {
    constexpr std::uint32_t kDepth = 100000;
    Bytes bytes;
    bytes.reserve(kDepth * 8);
    for (std::uint32_t i = kDepth; i > 0; --i) {
        const Bytes header = join({u32(i * 8), text(i % 2 == 0 ? "udta" : "traf")});
        bytes.insert(bytes.end(), header.begin(), header.end());
    }
    const WalkResult result = walk_and_listen(bytes);
    EXPECT_EQ(std::count(result.lines.begin(), result.lines.end(), '\n'), 1);
    EXPECT_EQ(result.lines.substr(0, 31), "skip box file: udta->traf->udta");
    EXPECT_EQ(result.lines.size(), std::string("skip box \n").size() + 255);
}

// The most memory that the process held since the last reset, in KiB.
long peak_kibibytes() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0) {
            return std::stol(line.substr(6));
        }
    }
    return 0;
}

// Makes what is held now the peak, and returns it.
long reset_peak_kibibytes() {
    std::ofstream("/proc/self/clear_refs") << 5;
    const long peak = peak_kibibytes();
    EXPECT_GT(peak, 0);
    return peak;
}

TEST(HostileFile, OfAThousandBytesTakesLittleMemory) {
    const long before = reset_peak_kibibytes();
    const auto table = [](const char* type, std::uint32_t count) {
        return box(type, {u32(0), u32(count), zeros(40)});
    };
    walk_all(join({movie_of({box("stsz", {u32(0), u32(0), u32(0x40000000), zeros(40)}),
                             table("stts", 0x3FFFF), table("ctts", 0x3FFFF), table("stss", 0x7FFFF),
                             table("stsc", 0x20000), table("stco", 0x7FFFF)}),
                   moof_of({tfhd(1), trun(0xF01, 65535, {zeros(40)}),
                            box("senc", {u32(2), u32(65535), zeros(40)})}),
                   box("ftyp", {zeros(9)})}));
    EXPECT_LT(peak_kibibytes() - before, 8 * 1024);
}

TEST(HostileFile, OfManyTracksThatClaimSamplesTakesLittleMemory) {
    // 256 tracks and 8 runs of 65,535 samples for each: 134 million samples in 140 KB.
    std::vector<Bytes> traks;
    std::vector<Bytes> rest;
    for (std::uint32_t id = 1; id <= 256; ++id) {
        traks.push_back(box("trak", {tkhd(id)}));
        std::vector<Bytes> boxes = {tfhd(id, 0x18, {u32(1), u32(1)})};
        boxes.insert(boxes.end(), 8, trun(0, 65535));
        rest.push_back(box("moof", {box("traf", boxes)}));
    }
    const long before = reset_peak_kibibytes();
    const WalkResult result = walk_and_listen(join({box("moov", traks), join(rest)}));
    EXPECT_EQ(result.stream(0).num_samples, 8U * 65535);
    EXPECT_LT(peak_kibibytes() - before, 32 * 1024);
}

TEST(HostileFile, OfAMillionSmallBoxesTakesMemoryOfItsSize) {
    constexpr std::uint32_t kBoxes = 1000000;
    Bytes bytes;
    bytes.reserve(kBoxes * 8);
    for (std::uint32_t i = 0; i < kBoxes; ++i) {
        const Bytes header = join({u32(8), text("mdat")});
        bytes.insert(bytes.end(), header.begin(), header.end());
    }
    const auto demuxer = mp4demuxer_create();
    const long before = reset_peak_kibibytes();
    EXPECT_EQ(lines_of(*demuxer, bytes), "");
    EXPECT_EQ(demuxer->root.child_count, kBoxes);
    EXPECT_LT(peak_kibibytes() - before, 24 * 1024);
}

TEST(HostileFile, OfAMillionTypesIsWalkedOnce) {
    constexpr std::uint32_t kBoxes = 300000;
    Bytes bytes;
    bytes.reserve(kBoxes * 8);
    for (std::uint32_t i = 0; i < kBoxes; ++i) {
        const char type[] = {static_cast<char>('A' + i % 26), static_cast<char>('A' + i / 26 % 26),
                             static_cast<char>('A' + i / 676 % 26),
                             static_cast<char>('A' + i / 17576 % 26)};
        const Bytes header = join({u32(8), text(std::string_view(type, 4))});
        bytes.insert(bytes.end(), header.begin(), header.end());
    }
    const WalkResult result = walk_and_listen(bytes);
    EXPECT_EQ(result.demuxer->root.child_count, kBoxes);
    EXPECT_EQ(result.lines.size(), kBoxes * std::string("skip box file: AAAA\n").size());
}

TEST(HostileFile, WithHugeRangeOverASmallFileEnds) {
    const std::unique_ptr<Mp4Demuxer> demuxer = mp4demuxer_create();
    const Bytes bytes =
        movie_of({box_of_size(0xF0000000, "stsz", {u32(0), u32(0), u32(0x30000000)})});
    Bytes claimed = bytes;
    for (const char* container : {"moov", "trak", "mdia", "minf", "stbl"}) {
        const Bytes name = text(container);
        const auto at = std::search(claimed.begin(), claimed.end(), name.begin(), name.end());
        const Bytes size = u32(0xF8000000);
        std::copy(size.begin(), size.end(), at - 4);
    }
    MemoryInput input(claimed);
    mp4demuxer_update(demuxer.get(), 0, 0xFFFFFFFF);
    const long before = reset_peak_kibibytes();
    ::testing::internal::CaptureStdout();
    mp4demuxer_parse_boxes(*demuxer, input.file());
    ::testing::internal::GetCapturedStdout();
    EXPECT_LT(peak_kibibytes() - before, 16 * 1024);
}

}  // namespace
}  // namespace mediasplit::mp4
