#include "tests/support/recording_sink.h"
#include "tests/unit/mp4demuxer/walk_support.h"

namespace mediasplit::mp4 {
namespace {

const Bytes kKid = hex("00112233445566778899aabbccddeeff");

WalkResult protected_video(const Bytes& sinf_box, std::initializer_list<Bytes> more = {}) {
    return walk_and_listen(
        entry_movie("vide", video_entry("encv", 16, 16, {sinf_box, join(more)})));
}

WalkResult with_tenc(const TencSpec& spec) {
    return protected_video(sinf("avc1", "cenc", spec));
}

// A movie of a protected track 1 with this IV size, and a fragment with these `senc` boxes.
Bytes senc_movie(std::uint32_t iv_size, std::initializer_list<Bytes> fragment) {
    TencSpec spec;
    spec.iv_size = iv_size;
    return join({entry_movie("vide", video_entry("encv", 16, 16, {sinf("avc1", "cenc", spec)})),
                 moof_of({tfhd(1, 0x18, {u32(1), u32(5)}), join(fragment)})});
}

Bytes iv_of(const WalkResult& result, std::uint32_t sample) {
    const Mp4Sample found = result.sample(sample);
    if (found.senc == nullptr) {
        return text("none");
    }
    const std::span<const std::uint8_t> iv = senc_iv(result.stream(), *found.senc);
    return {iv.begin(), iv.end()};
}

TEST(ProtectionScheme, IsRead) {
    const WalkResult result =
        protected_video(sinf("avc1", "cbcs", {1, 0x19, 1, 0, kKid, hex("0102")}));
    const Mp4Stream& stream = result.stream();
    EXPECT_EQ(result.lines, "");
    EXPECT_EQ(stream.is_encrypted, 1U);
    EXPECT_EQ(std::string(stream.scheme_type.begin(), stream.scheme_type.end()), "cbcs");
    EXPECT_EQ(stream.scheme_version, 0x10000U);
    EXPECT_EQ(stream.crypt_byte_block, 1);
    EXPECT_EQ(stream.skip_byte_block, 9);
    EXPECT_EQ(stream.default_isProtected, 1);
    EXPECT_EQ(stream.default_Per_Sample_IV_Size, 0);
    EXPECT_EQ(Bytes(stream.default_KID.begin(), stream.default_KID.end()), kKid);
    EXPECT_EQ(stream.default_constant_IV_size, 2);
    EXPECT_EQ(stream.default_constant_IV, hex("0102"));
}

TEST(ProtectionScheme, PassesOverItsAddress) {
    const WalkResult result = protected_video(
        box("sinf",
            {frma("avc1"), full_box("schm", 0, 1, {text("cenc"), u32(1), text("http:x"), u8(0)}),
             box("schi", {tenc({})})}));
    EXPECT_EQ(result.lines, "");
    EXPECT_EQ(result.stream().default_Per_Sample_IV_Size, 8);
}

TEST(TrackEncryption, HasNoPatternInVersionZero) {
    const WalkResult result = with_tenc({0, 0x19, 1, 8, kKid, std::nullopt});
    EXPECT_EQ(result.stream().crypt_byte_block, 0);
    EXPECT_EQ(result.stream().skip_byte_block, 0);
}

TEST(TrackEncryption, ReadsNoConstantIvWithoutProtection) {
    for (const std::uint32_t is_protected : {0U, 2U}) {
        const WalkResult result = with_tenc({1, 0, is_protected, 0, kKid, hex("0102")});
        EXPECT_EQ(result.stream().default_constant_IV_size, 0);
        EXPECT_TRUE(result.stream().default_constant_IV.empty());
    }
}

TEST(TrackEncryption, ReadsTheConstantIvWhateverTheSampleIvSize) {
    EXPECT_EQ(with_tenc({0, 0, 1, 16, kKid, hex("aabb")}).stream().default_constant_IV,
              hex("aabb"));
}

TEST(TrackEncryption, ReadsItsConstantIvInsideItsPayloadOnly) {
    // No size at all, and a size beyond the payload, with a box behind it.
    const WalkResult none = with_tenc({0, 0, 1, 8, kKid, std::nullopt});
    EXPECT_EQ(none.stream().default_constant_IV_size, 0);
    Bytes short_iv = tenc({0, 0, 1, 0, kKid, hex("aabb")});
    short_iv[short_iv.size() - 3] = 4;
    const WalkResult result = protected_video(box("sinf", {box("schi", {short_iv}), frma("hvc1")}));
    EXPECT_EQ(result.stream().default_constant_IV, hex("aabb0000"));
    EXPECT_EQ(result.stream().stream_id, kStreamIdHvc1);
}

TEST(TrackEncryption, KeepsAConstantIvOfAnySize) {
    EXPECT_EQ(with_tenc({0, 0, 1, 0, kKid, repeat(7, 255)}).stream().default_constant_IV,
              repeat(7, 255));
}

TEST(OriginalFormat, SetsTheCodecOfAProtectedEntry) {
    struct Case {
        const char* format;
        std::uint32_t stream_id;
        std::uint32_t px_kind;
        std::uint32_t box_flags;
    };
    for (const Case& each :
         {Case{"mp4a", 1, 0, 0}, Case{"ac-3", 6, 0, 0}, Case{"ec-3", 7, 0, 0},
          Case{"s263", 11, 0, 0}, Case{"ac-4", 14, 0, 0}, Case{"avc1", 2, 0, 0x2},
          Case{"avc3", 4, 0, 0x4}, Case{"hvc1", 13, 0, 0x8}, Case{"hev1", 12, 0, 0x10},
          Case{"av01", 15, 0, 0}, Case{"pxav", 4, 1, 0}, Case{"pxa1", 2, 2, 0},
          Case{"pavc", 2, 5, 0x4000}, Case{"pxhe", 12, 3, 0x20}, Case{"pxh1", 13, 4, 0x40},
          Case{"pxh8", 13, 6, 0x8000}, Case{"pav1", 15, 16, 0x100000}, Case{"zzzz", 0, 0, 0}}) {
        const WalkResult result = protected_video(sinf(each.format, "cenc", {}));
        EXPECT_EQ(result.stream().stream_id, each.stream_id) << each.format;
        EXPECT_EQ(result.stream().px_kind, each.px_kind) << each.format;
        EXPECT_EQ(result.stream().box_flags, each.box_flags) << each.format;
        EXPECT_EQ(result.stream().ac4_entry_count, each.stream_id == 14 ? 1U : 0U);
    }
}

TEST(OriginalFormat, GivesThePrismaKindBehindAPrismaConfiguration) {
    const std::vector<std::pair<std::string, std::uint32_t>> kinds = {
        {"avc1", 2}, {"avc3", 1}, {"hev1", 3}, {"hvc1", 4}};
    for (const auto& [format, kind] : kinds) {
        const WalkResult result = protected_video(prsm_config("pxcC", 8, 6), {frma(format)});
        EXPECT_EQ(result.stream().px_kind, kind) << format;
    }
}

TEST(ProtectionSystem, GoesToEveryTrackThatIsThere) {
    const WalkResult result = walk_and_listen(
        box("moov", {box("trak", {tkhd(1)}), box("trak", {tkhd(2)}),
                     full_box("pssh", 0, 0, {kKid, u32(3), zeros(3)}), box("trak", {tkhd(3)})}));
    EXPECT_EQ(result.lines, "");
    for (const std::size_t i : {0U, 1U}) {
        EXPECT_EQ(Bytes(result.stream(i).SystemID.begin(), result.stream(i).SystemID.end()), kKid);
    }
    EXPECT_EQ(result.stream(2).SystemID[0] + result.stream(2).SystemID[15], 0);
}

TEST(ProtectionSystem, WithKeyIdsIsPassedOver) {
    const WalkResult result = walk_and_listen(
        join({full_box("pssh", 1, 0, {kKid, u32(1), kKid, u32(0)}),
              full_box("pssh", 1, 0, {kKid, u32(0xFFFFFFFF), zeros(4)}), box("last")}));
    EXPECT_EQ(result.lines, "skip box file: last\n");
}

TEST(SampleGroup, KeepsItsTypeAndCount) {
    const WalkResult result = walk_and_listen(
        movie_of({full_box("sgpd", 1, 0, {text("seig"), u32(20), u32(1), zeros(20)})}));
    EXPECT_EQ(result.stream().sgpd_grouping_type, fourcc("seig"));
    EXPECT_EQ(result.stream().sgpd_entry_count, 1U);
    EXPECT_EQ(result.stream().box_flags, kBoxSgpd);
}

TEST(SampleGroup, ReadsAv1Metadata) {
    const WalkResult result = walk_and_listen(movie_of(
        {full_box("sgpd", 1, 0, {text("av1M"), u32(4), u32(1), text("av1M"), u32(0x04B5003C)})}));
    EXPECT_EQ(result.stream().sgpd_metadata_type, 4U);
    EXPECT_EQ(result.stream().sgpd_metadata_parameters, 0xB5003CU);
    EXPECT_EQ(result.stream().box_flags, kBoxSgpd | kBoxSgpdAv1M);
}

TEST(SampleEncryption, GivesEachSampleItsRow) {
    const WalkResult result = walk_and_listen(senc_movie(
        8, {trun(1, 2, {u32(0)}),
            senc({{hex("0102030405060708"), {{5, 100}, {6, 70000}}}, {hex("1112131415161718"), {}}},
                 true)}));
    EXPECT_EQ(iv_of(result, 0), hex("0102030405060708"));
    EXPECT_EQ(iv_of(result, 1), hex("1112131415161718"));
    const auto subsamples = senc_subsamples(result.stream(), *result.sample(0).senc);
    ASSERT_EQ(subsamples.size(), 2U);
    EXPECT_EQ(subsamples[0].clear_bytes, 5U);
    EXPECT_EQ(subsamples[0].protected_bytes, 100U);
    EXPECT_EQ(subsamples[1].clear_bytes, 6U);
    EXPECT_EQ(subsamples[1].protected_bytes, 70000U);
    EXPECT_EQ(result.sample(1).senc->subsample_count, 0U);
    EXPECT_EQ(result.stream().senc_count, 2U);
}

TEST(SampleEncryption, HasNoSubsamplesWithoutTheFlag) {
    const WalkResult result = walk_and_listen(
        senc_movie(8, {trun(1, 1, {u32(0)}), senc({{hex("0102030405060708"), {}}}, false)}));
    EXPECT_EQ(iv_of(result, 0), hex("0102030405060708"));
    EXPECT_EQ(result.sample(0).senc->subsample_count, 0U);
}

TEST(SampleEncryption, CountsRowsFromTheEnd) {
    WalkResult result = walk_and_listen(
        senc_movie(1, {trun(1, 2, {u32(0)}), senc({{hex("01"), {}}, {hex("02"), {}}}, false)}));
    EXPECT_EQ(iv_of(result, 0), hex("01"));
    walk_again(*result.demuxer, moof_of({tfhd(1, 0x18, {u32(1), u32(5)}), trun(1, 2, {u32(0)}),
                                         senc({{hex("03"), {}}, {hex("04"), {}}}, false)}));
    EXPECT_EQ(result.stream().senc_count, 4U);
    EXPECT_EQ(iv_of(result, 0), hex("03"));
    EXPECT_EQ(iv_of(result, 1), hex("04"));
}

TEST(SampleEncryption, TakesRowsThatAreMissingForMissing) {
    const WalkResult fewer = walk_and_listen(
        senc_movie(1, {trun(1, 3, {u32(0)}), senc({{hex("01"), {}}, {hex("02"), {}}}, false)}));
    EXPECT_EQ(iv_of(fewer, 0), text("none"));
    EXPECT_EQ(iv_of(fewer, 1), hex("01"));
    EXPECT_EQ(iv_of(fewer, 2), hex("02"));
    const WalkResult more = walk_and_listen(
        senc_movie(1, {trun(1, 1, {u32(0)}), senc({{hex("01"), {}}, {hex("02"), {}}}, false)}));
    EXPECT_EQ(iv_of(more, 0), hex("02"));
}

TEST(SampleEncryption, IsAbsentWithoutRows) {
    EXPECT_EQ(iv_of(walk_and_listen(senc_movie(8, {trun(1, 1, {u32(0)})})), 0), text("none"));
}

TEST(SampleEncryption, MayHaveRowsWithoutBytes) {
    const WalkResult result =
        walk_and_listen(senc_movie(0, {trun(1, 3, {u32(0)}), box("senc", {u32(0), u32(3)})}));
    EXPECT_EQ(result.stream().senc_count, 3U);
    EXPECT_TRUE(result.stream().senc.empty());
    EXPECT_EQ(iv_of(result, 2), Bytes{});
}

TEST(SampleEncryption, RefusesTooManyRows) {
    const RecordingSink sink;
    EXPECT_EQ(
        walk_and_listen(senc_movie(0, {box("senc", {u32(0), u32(65535)})})).stream().senc_count,
        65535U);
    EXPECT_TRUE(sink.notes().empty());
    EXPECT_EQ(
        walk_and_listen(senc_movie(0, {box("senc", {u32(0), u32(65536)})})).stream().senc_count,
        0U);
    EXPECT_EQ(sink.notes(),
              std::vector<std::string>{"The encryption data of a fragment's samples was dropped: "
                                       "it has more than 65,535 rows."});
}

TEST(SampleEncryption, KeepsTheRowsThatTheBoxHolds) {
    const WalkResult result = walk_and_listen(senc_movie(
        4, {trun(1, 3, {u32(0)}), box("senc", {u32(0), u32(3), hex("01020304 0506")}), zeros(0)}));
    EXPECT_EQ(result.stream().senc_count, 3U);
    EXPECT_EQ(iv_of(result, 0), hex("01020304"));
    EXPECT_EQ(iv_of(result, 1), Bytes{});
    EXPECT_EQ(iv_of(result, 2), Bytes{});
}

TEST(SampleEncryption, KeepsTheSubsamplesThatTheBoxHolds) {
    const WalkResult result = walk_and_listen(senc_movie(
        0,
        {trun(1, 1, {u32(0)}), box("senc", {u32(2), u32(1), u16(65535), u16(1), u32(2), u16(3)})}));
    EXPECT_EQ(result.sample(0).senc->subsample_count, 1U);
}

TEST(SampleEncryption, TakesNoMemoryForRowsWithoutBytes) {
    std::vector<Bytes> boxes = {tfhd(1)};
    for (int i = 0; i < 1000; ++i) {
        boxes.push_back(box("senc", {u32(0), u32(65535)}));
    }
    const WalkResult result =
        walk_and_listen(join({senc_movie(0, {}), box("moof", {box("traf", boxes)})}));
    EXPECT_EQ(result.stream().senc_count, 65535000U);
    EXPECT_TRUE(result.stream().senc.empty());
}

}  // namespace
}  // namespace mediasplit::mp4
