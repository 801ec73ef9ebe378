// Damaged files through the whole driver: each run ends by itself. The sanitizer builds tell
// whether memory was respected on the way.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "tests/support/mp4_input.h"
#include "tests/support/nal_builder.h"
#include "tests/unit/fmp4demuxer/demux_run.h"

namespace mediasplit {
namespace {

using mp4::Bytes;

mp4::TencSpec tenc_spec() {
    mp4::TencSpec spec;
    spec.version = 1;
    spec.pattern = 0x19;
    spec.kid = Bytes(16, 0xAB);
    spec.iv_size = 8;
    return spec;
}

mp4::SampleSpec protected_sample(Bytes data) {
    mp4::SampleSpec spec = sample(std::move(data));
    const auto half = static_cast<std::uint32_t>(spec.data.size() / 2);
    spec.senc = {Bytes(8, 1), {{4, half - 4}, {2, half - 2}}};
    return spec;
}

// Video of H.264 and H.265 under a protection scheme or in the clear, AAC, AC-4 and AV1.
std::vector<mp4::TrackSpec> all_tracks(std::string_view scheme) {
    const Bytes avc =
        length_prefixed({{0x09, 0x10}, testing::build_avc_sps({}), {0x7C, 1, 2}, Bytes(60, 0x65)});
    const Bytes hevc = length_prefixed({testing::build_hevc_vps({}),
                                        testing::build_hevc_sps({}),
                                        {0x7C, 1, 2, 3},
                                        Bytes(60, 0x26)});
    auto video = avc_track(1, {protected_sample(avc), protected_sample(avc)});
    const Bytes avcc = mp4::avcC({testing::build_avc_sps({})}, {{0x68, 1}});
    const Bytes prisma = mp4::prsm_config("pxvC", 9, 2, 2);
    if (!scheme.empty()) {
        video.entries = {mp4::video_entry("encv", 64, 64,
                                          {avcc, prisma, mp4::sinf("avc1", scheme, tenc_spec())})};
        video.write_senc = true;
    } else {
        video.entries = {mp4::video_entry("pxa1", 64, 64, {avcc, prisma})};
    }
    mp4::TrackSpec second;
    second.track_id = 2;
    second.entries = {mp4::video_entry(
        "pxhe", 64, 64,
        {mp4::hvcC({{32, {testing::build_hevc_vps({})}}, {33, {testing::build_hevc_sps({})}}}),
         mp4::prsm_config("pxvC", 8, 2, 4)})};
    second.samples = {sample(hevc), sample(hevc)};
    mp4::TrackSpec third;
    third.track_id = 3;
    third.entries = {mp4::video_entry(
        "av01", 64, 64,
        {mp4::box("av1C", {mp4::hex("81084e00")}), mp4::prsm_config("pxvC", 10, 2, 1, 1)})};
    third.samples = {sample({0x12, 0, 0x0A, 3, 1, 2, 3, 0x2A, 4, 4, 0xB5, 1, 1})};
    mp4::TrackSpec fourth;
    fourth.track_id = 4;
    fourth.handler = "soun";
    fourth.entries = {mp4::audio_entry("ac-4", 2, 16, 48000)};
    fourth.samples = {sample(Bytes(20, 1))};
    return {video, second, third, fourth, aac_track(5, {sample(Bytes(20, 2))})};
}

mp4::MovieSpec movie_with(std::string_view scheme) {
    mp4::MovieSpec movie;
    movie.tracks = all_tracks(scheme);
    return movie;
}

// Walks the bytes as a plain file and again as a further segment.
void walk_twice(const Bytes& bytes, bool writes) {
    DemuxRun run;
    run.writes = writes;
    run.key_text = "00112233445566778899aabbccddeeff";
    SegmentSlot slot;
    slot.kind = kSlotMedia;
    static_cast<void>(run.walk(bytes));
    static_cast<void>(run.walk(bytes, &slot));
    static_cast<void>(run.finish());
}

class Hostile : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override { ::testing::internal::CaptureStdout(); }
    void TearDown() override { ::testing::internal::GetCapturedStdout(); }

    // Every byte under one scheme, every third under the others.
    static std::size_t step() { return std::string(GetParam()) == "cenc" ? 1 : 3; }
};

TEST_P(Hostile, FilesCutAtAnyByteEnd) {
    for (const Bytes& file :
         {mp4::plain_file(movie_with(GetParam())), mp4::fragmented_file(movie_with(GetParam()))}) {
        for (std::size_t size = 0; size < file.size(); size += step()) {
            walk_twice({file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size)},
                       size % 16 == 0);
        }
    }
}

TEST_P(Hostile, FilesWithAnyByteChangedEnd) {
    for (const Bytes& file :
         {mp4::plain_file(movie_with(GetParam())), mp4::fragmented_file(movie_with(GetParam()))}) {
        for (std::size_t at = 0; at < file.size(); at += step()) {
            constexpr std::array<int, 3> kMasks{0xFF, 0x80, 0x01};
            Bytes changed = file;
            changed[at] = static_cast<std::uint8_t>(changed[at] ^ kMasks[at / step() % 3]);
            walk_twice(changed, false);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Schemes, Hostile, ::testing::Values("", "cenc", "cbcs"),
                         [](const auto& info) {
                             return std::string(info.param).empty() ? std::string("clear")
                                                                    : std::string(info.param);
                         });

TEST(HostileSamples, LargeParameterSetsAtTinyPicturesDoNotFillTheDisk) {
    ::testing::internal::CaptureStderr();
    Bytes large(60000, 0x55);
    large[0] = 0x68;
    mp4::MovieSpec movie;
    movie.tracks = {avc_track(
        1, std::vector<mp4::SampleSpec>(1000, sample(length_prefixed({Bytes{0x65, 0x88}}))))};
    movie.tracks[0].entries = {
        mp4::video_entry("avc1", 64, 64, {mp4::avcC({kAvcSps}, {large, large}, 3)})};
    const Bytes file = mp4::plain_file(movie);
    DemuxRun run;
    static_cast<void>(run.walk(file));
    static_cast<void>(run.finish());
    ::testing::internal::GetCapturedStderr();
    const auto out = run.output("in_track_id_1.out.264");
    ASSERT_TRUE(out);
    EXPECT_GT(out->size(), 64 * file.size());
    EXPECT_LT(out->size(), 64 * file.size() + 2 * kInputBlockSize);
    ASSERT_EQ(run.sink.notes().size(), 1U);
    EXPECT_EQ(
        run.sink.notes()[0],
        "Samples were dropped: those before them came to more than 64 times the size of their "
        "file.");
}

// Writes a number of 32 bits `offset` bytes behind the type of the first box of that type.
void patch_box(Bytes& file, std::string_view type, std::size_t offset, std::uint32_t value) {
    const auto at = std::search(file.begin(), file.end(), type.begin(), type.end());
    ASSERT_NE(at, file.end());
    for (int i = 0; i < 4; ++i) {
        *(at + 4 + static_cast<std::ptrdiff_t>(offset) + i) =
            static_cast<std::uint8_t>(value >> (24 - 8 * i));
    }
}

TEST(HostileSamples, BrokenUnitsOfOverlaidChunksDoNotFloodTheErrorStream) {
    constexpr std::uint32_t kChunks = 500;
    mp4::MovieSpec movie;
    movie.tracks = {avc_track(1, std::vector<mp4::SampleSpec>(kChunks, sample({0xFF})))};
    Bytes file = mp4::plain_file(movie);
    patch_box(file, "stts", 8, kChunks * kChunks);
    patch_box(file, "stsc", 12, kChunks);  // samples of each chunk
    patch_box(file, "stsz", 4, 1);         // all samples of one byte
    patch_box(file, "stsz", 8, kChunks * kChunks);
    const auto data = std::search(file.begin(), file.end(), "mdat", "mdat" + 4) + 4;
    for (std::uint32_t row = 0; row < kChunks; ++row) {
        patch_box(file, "stco", 8 + 4 * row, static_cast<std::uint32_t>(data - file.begin()));
    }
    DemuxRun run;
    ::testing::internal::CaptureStderr();
    static_cast<void>(run.walk(file));
    const std::string lines = ::testing::internal::GetCapturedStderr();
    static_cast<void>(run.finish());
    EXPECT_GT(run.sink.count(4073), kChunks);
    EXPECT_LT(lines.size(), 64 * file.size() + 2 * kInputBlockSize);
    EXPECT_EQ(run.sink.notes().size(), 1U);
}

// A box that a byte range lets be larger than the file by far: it ends with the file.
TEST(HostileSamples, RangeBehindTheEndIsNotReadForEver) {
    const Bytes file = mp4::join({mp4::u32(8), mp4::text("styp"), mp4::u32(0), mp4::text("trak"),
                                  mp4::u32(0), mp4::text("esds")});
    SegmentSlot slot;
    slot.kind = kSlotInitialization;
    slot.byte_range = std::make_unique<ByteRangeText>();
    slot.byte_range->offset = "0";
    slot.byte_range->length = "4000000000";
    DemuxRun run;
    ::testing::internal::CaptureStdout();
    static_cast<void>(run.walk(file, &slot));
    ::testing::internal::GetCapturedStdout();
    ASSERT_NE(run.demuxer(), nullptr);
    EXPECT_EQ(run.demuxer()->streams.size(), 1U);
}

TEST(HostileSamples, SamplesOfFewBytesOverOneAnotherEnd) {
    constexpr std::uint32_t kChunks = 1000;
    mp4::MovieSpec movie;
    movie.tracks = {aac_track(1, std::vector<mp4::SampleSpec>(kChunks, sample({0xFF})))};
    Bytes file = mp4::plain_file(movie);
    patch_box(file, "stts", 8, kChunks * kChunks);
    patch_box(file, "stsc", 12, kChunks);
    patch_box(file, "stsz", 4, 1);
    patch_box(file, "stsz", 8, kChunks * kChunks);
    const auto data = std::search(file.begin(), file.end(), "mdat", "mdat" + 4) + 4;
    for (std::uint32_t row = 0; row < kChunks; ++row) {
        patch_box(file, "stco", 8 + 4 * row, static_cast<std::uint32_t>(data - file.begin()));
    }
    DemuxRun run;
    static_cast<void>(run.walk(file));
    static_cast<void>(run.finish());
    // Each takes at least 64 of 64 times the file's bytes and 1 MiB.
    EXPECT_LE(run.output("in_track_id_1.out.aac")->size(),
              8 * (file.size() + kInputBlockSize / 64 + 1));
}

TEST(HostileSamples, AnyTwoLengthBytesAreSurvived) {
    ::testing::internal::CaptureStderr();
    for (unsigned first = 0; first < 256; first += 51) {
        for (unsigned second = 0; second < 256; second += 17) {
            const Bytes data{
                static_cast<std::uint8_t>(first), static_cast<std::uint8_t>(second), 3, 4, 5, 6, 7};
            for (unsigned length_size = 1; length_size <= 4; ++length_size) {
                auto track = avc_track(1, {sample(data)});
                track.entries = {mp4::video_entry(
                    "avc1", 64, 64, {mp4::avcC({kAvcSps}, {kAvcPps}, length_size - 1)})};
                mp4::MovieSpec movie;
                movie.tracks = {track};
                DemuxRun run;
                run.writes = false;
                static_cast<void>(run.walk(mp4::plain_file(movie)));
            }
        }
    }
    ::testing::internal::GetCapturedStderr();
}

}  // namespace
}  // namespace mediasplit
