#include "src/mp4demuxer/sample_entries.h"

#include <bit>

#include "tests/unit/mp4demuxer/walk_support.h"

namespace mediasplit::mp4 {
namespace {

const Bytes kSps = hex("6742c01e");
const Bytes kPps = hex("68ce3c80");

WalkResult video_walk(std::string_view type, std::initializer_list<Bytes> children = {}) {
    return walk_and_listen(entry_movie("vide", video_entry(type, 1920, 1080, children)));
}

WalkResult audio_walk(std::string_view type, std::initializer_list<Bytes> children = {}) {
    return walk_and_listen(entry_movie("soun", audio_entry(type, 6, 16, 48000, children)));
}

WalkResult two_entries(const Bytes& first, const Bytes& second) {
    return walk_and_listen(
        box("moov", {mvhd(), track_of("vide", {stsd({first, second}), stsz({1, 2, 3})})}));
}

TEST(VideoEntry, SetsWhatItsTypeStandsFor) {
    struct Case {
        const char* type;
        std::uint32_t stream_id;
        std::uint32_t px_kind;
        std::uint32_t box_flags;
    };
    for (const Case& each :
         {Case{"avc1", 2, 0, 0x2}, Case{"avc3", 4, 0, 0x4}, Case{"hvc1", 13, 0, 0x8},
          Case{"hev1", 12, 0, 0x10}, Case{"av01", 15, 0, 0x80000}, Case{"pxav", 4, 1, 0x1},
          Case{"pxa1", 2, 2, 0x1}, Case{"pavc", 2, 5, 0x4001}, Case{"pxhe", 12, 3, 0x21},
          Case{"pxh1", 13, 4, 0x41}, Case{"pxh8", 13, 6, 0x8001}, Case{"pav1", 15, 16, 0x100001},
          Case{"s263", 11, 0, 0}, Case{"encv", 0, 0, 0}}) {
        const WalkResult result = video_walk(each.type);
        EXPECT_EQ(result.lines, "");
        EXPECT_EQ(result.stream().stream_id, each.stream_id) << each.type;
        EXPECT_EQ(result.stream().px_kind, each.px_kind) << each.type;
        EXPECT_EQ(result.stream().box_flags, each.box_flags) << each.type;
        EXPECT_EQ(result.stream().width, 1920U);
        EXPECT_EQ(result.stream().height, 1080U);
    }
}

TEST(VideoEntry, TooShortForItsFieldsEndsItsWalk) {
    const WalkResult result =
        walk_and_listen(join({entry_movie("vide", box("avc1", {zeros(30)})), box("last")}));
    EXPECT_EQ(result.lines,
              "The mp4 file: moov->trak->mdia->minf->stbl->stsd->avc1 size is out of the range we "
              "support: -48\n"
              "skip box file: last\n");
    EXPECT_EQ(result.stream().stream_id, 2U);
}

TEST(VideoEntry, WithAPrismaConfigurationCountsAsPrisma) {
    const WalkResult result =
        video_walk("avc1", {avcC({kSps}, {kPps}), prsm_config("pxcC", 9, 5, 2)});
    EXPECT_EQ(result.stream().px_kind, 2U);
    EXPECT_EQ(result.stream().box_flags, kBoxPrisma | kBoxAvc1 | kBoxAvcC | kBoxPxcC);
    ASSERT_NE(result.stream().px_config, nullptr);
    const PxConfig& config = *result.stream().px_config;
    EXPECT_EQ(config.version_major, 1U);
    EXPECT_EQ(config.version_minor, 0U);
    EXPECT_EQ(config.profile, 9U);
    EXPECT_EQ(config.level, 5U);
    EXPECT_EQ(config.rpu_flag, 1U);
    EXPECT_EQ(config.el_flag, 0U);
    EXPECT_EQ(config.bl_flag, 1U);
    EXPECT_EQ(config.bl_compatible_id, 2U);
    EXPECT_EQ(config.md_compression, 0U);
}

TEST(PrismaConfiguration, GivesTheKindOfPlainEntriesAlone) {
    const std::vector<std::pair<std::string, std::uint32_t>> kinds = {
        {"hvc1", 4}, {"hev1", 3}, {"avc1", 2}, {"avc3", 1}, {"av01", 0}, {"pxh8", 6}, {"pavc", 5}};
    for (const auto& [type, kind] : kinds) {
        EXPECT_EQ(video_walk(type, {prsm_config("pxvC", 8, 6)}).stream().px_kind, kind) << type;
    }
}

TEST(PrismaConfiguration, SetsTheFlagOfItsBox) {
    EXPECT_EQ(video_walk("hvc1", {prsm_config("pxcC", 8, 6)}).stream().box_flags, 0x809U);
    EXPECT_EQ(video_walk("hvc1", {prsm_config("pxvC", 8, 6)}).stream().box_flags, 0x1009U);
    EXPECT_EQ(video_walk("hvc1", {prsm_config("pxwC", 10, 6)}).stream().box_flags, 0x2009U);
}

TEST(PrismaConfiguration, ReadsEveryField) {
    // profile 85, level 42, flags 0 1 0, compatible id 10, compression 3
    const WalkResult result = video_walk("hvc1", {box("pxcC", {hex("0203 ab52ac")})});
    const PxConfig& config = *result.stream().px_config;
    EXPECT_EQ(config.version_major, 2U);
    EXPECT_EQ(config.version_minor, 3U);
    EXPECT_EQ(config.profile, 85U);
    EXPECT_EQ(config.level, 42U);
    EXPECT_EQ(config.rpu_flag, 0U);
    EXPECT_EQ(config.el_flag, 1U);
    EXPECT_EQ(config.bl_flag, 0U);
    EXPECT_EQ(config.bl_compatible_id, 10U);
    EXPECT_EQ(config.md_compression, 3U);
}

TEST(PrismaConfiguration, ReadsZerosBehindAShortPayload) {
    const WalkResult result =
        video_walk("hvc1", {box("pxcC", {hex("01")}), box("clli", {hex("00050006")})});
    EXPECT_EQ(result.stream().px_config->version_major, 1U);
    EXPECT_EQ(result.stream().px_config->profile, 0U);
    EXPECT_EQ(result.stream().max_content_light_level, 5U);
}

TEST(VideoEntry, ReadsColourLightAndMastering) {
    const WalkResult result =
        video_walk("hvc1", {box("colr", {text("nclx"), u16(9), u16(16), u16(8), u8(0x80)}),
                            box("clli", {u16(1000), u16(400)}),
                            box("mdcv", {u16(1), u16(2), u16(3), u16(4), u16(5), u16(6), u16(7),
                                         u16(8), u32(9), u32(10)}),
                            box("avcE", {zeros(3)}), box("hvcE", {zeros(3)})});
    const Mp4Stream& stream = result.stream();
    EXPECT_EQ(stream.marks, kMarkColr);
    EXPECT_EQ(stream.colour_type, fourcc("nclx"));
    EXPECT_EQ(stream.colour_primaries, 9);
    EXPECT_EQ(stream.transfer_characteristics, 16);
    EXPECT_EQ(stream.matrix_coefficients, 8);
    EXPECT_EQ(stream.full_range_flag, 1);
    EXPECT_EQ(stream.max_content_light_level, 1000);
    EXPECT_EQ(stream.max_pic_average_light_level, 400);
    EXPECT_EQ(stream.display_primaries_gx, 1);
    EXPECT_EQ(stream.display_primaries_gy, 2);
    EXPECT_EQ(stream.display_primaries_bx, 3);
    EXPECT_EQ(stream.display_primaries_by, 4);
    EXPECT_EQ(stream.display_primaries_rx, 5);
    EXPECT_EQ(stream.display_primaries_ry, 6);
    EXPECT_EQ(stream.white_point_x, 7);
    EXPECT_EQ(stream.white_point_y, 8);
    EXPECT_EQ(stream.max_display_mastering_luminance, 9U);
    EXPECT_EQ(stream.min_display_mastering_luminance, 10U);
    EXPECT_EQ(stream.box_flags, kBoxHvc1 | kBoxAvcE | kBoxHvcE);
}

TEST(VideoEntry, KeepsOnlyTheTypeOfAnotherColourBox) {
    const WalkResult result =
        video_walk("avc1", {box("colr", {text("nclc"), u16(9), u16(16), u16(8)})});
    EXPECT_EQ(result.stream().colour_type, fourcc("nclc"));
    EXPECT_EQ(result.stream().colour_primaries, 0);
}

TEST(SampleDescription, WalksAClearEntryAndItsEncryptedTwin) {
    const Bytes encrypted =
        video_entry("encv", 1280, 720, {sinf("avc1", "cenc", {}), avcC({kSps, kSps}, {kPps})});
    const WalkResult result =
        two_entries(video_entry("avc1", 640, 360, {avcC({kSps}, {kPps})}), encrypted);
    EXPECT_EQ(result.lines, "");
    EXPECT_EQ(result.stream().width, 1280U);
    EXPECT_EQ(result.stream().avc_config->sps.size(), 2U);
    EXPECT_EQ(result.stream().is_encrypted, 1U);
    EXPECT_EQ(result.stream().num_samples, 3U);
}

TEST(SampleDescription, TakesTheTwinsInEitherOrder) {
    const Bytes encrypted = video_entry("encv", 1280, 720, {sinf("hvc1", "cbcs", {})});
    const WalkResult result = two_entries(encrypted, video_entry("hvc1", 640, 360));
    EXPECT_EQ(result.stream().width, 640U);
    EXPECT_EQ(result.stream().stream_id, kStreamIdHvc1);
}

TEST(SampleDescription, RefusesTwoEntriesThatAreNoTwins) {
    const Bytes clear = video_entry("avc1", 640, 360);
    for (const Bytes& other :
         {video_entry("encv", 1, 1, {sinf("hvc1", "cenc", {})}), video_entry("avc1", 1, 1),
          video_entry("encv", 1, 1), video_entry("encv", 1, 1, {box("sinf")}),
          box("encv", {zeros(20)}), box_of_size(3, "encv"), box_of_size(400, "encv")}) {
        const WalkResult result = two_entries(clear, other);
        EXPECT_EQ(result.lines, "");
        EXPECT_EQ(result.stream().width, 0U);
        EXPECT_EQ(result.stream().stream_id, 0U);
        EXPECT_EQ(result.stream().num_samples, 3U);
    }
}

TEST(SampleDescription, RefusesNoEntryAndThree) {
    const Bytes entry = video_entry("avc1", 640, 360);
    for (const std::vector<Bytes>& entries :
         {std::vector<Bytes>{}, std::vector<Bytes>{entry, entry, entry}}) {
        const WalkResult result =
            walk_and_listen(box("moov", {track_of("vide", {stsd(entries), stsz({1})})}));
        EXPECT_EQ(result.lines, "");
        EXPECT_EQ(result.stream().width, 0U);
        EXPECT_EQ(result.stream().num_samples, 1U);
    }
}

TEST(AudioEntry, SetsWhatItsTypeStandsFor) {
    const std::vector<std::pair<std::string, std::uint32_t>> ids = {
        {"ac-3", 6}, {"ec-3", 7}, {"ac-4", 14}, {"mlpa", 10}, {"mp4a", 0}, {"enca", 0}};
    for (const auto& [type, id] : ids) {
        const WalkResult result = audio_walk(type);
        EXPECT_EQ(result.lines, "");
        EXPECT_EQ(result.stream().stream_id, id) << type;
        EXPECT_EQ(result.stream().audio_channel_count, 6U);
        EXPECT_EQ(result.stream().audio_sample_size, 16U);
        EXPECT_EQ(result.stream().audio_sample_rate, 48000U);
        EXPECT_EQ(result.stream().audio_reserved, 0U);
        EXPECT_EQ(result.stream().ec3_config != nullptr, type == "ec-3");
        EXPECT_EQ(result.stream().ac4_config != nullptr, type == "ac-4");
        EXPECT_EQ(result.stream().ac4_entry_count, type == "ac-4" ? 1U : 0U);
    }
}

TEST(AudioEntry, BelowTwentyEightBytesIsPassedOver) {
    const WalkResult result = walk_and_listen(
        box("moov", {track_of("soun", {stsd({box("ec-3", {repeat(1, 27)})}), stsz({1})})}));
    EXPECT_EQ(result.lines, "");
    EXPECT_EQ(result.stream().stream_id, 0U);
    EXPECT_EQ(result.stream().audio_channel_count, 0U);
    EXPECT_EQ(result.stream().num_samples, 1U);
}

TEST(AudioEntry, GathersTheFieldsThatShouldBeZero) {
    const std::size_t first_field = 8;
    struct Case {
        std::size_t at;
        bool counts;
    };
    // reserved, data reference index, revision, vendor, channels, size, compression id, packet
    // size, rate, fraction
    for (const Case& each : {Case{0, true}, Case{5, true}, Case{7, false}, Case{10, true},
                             Case{15, true}, Case{17, false}, Case{19, false}, Case{21, true},
                             Case{23, true}, Case{25, false}, Case{27, true}}) {
        Bytes entry = audio_entry("mp4a", 0, 0, 0);
        entry[first_field + each.at] |= 0x10;
        EXPECT_EQ(walk_and_listen(entry_movie("soun", entry)).stream().audio_reserved != 0,
                  each.counts)
            << each.at;
    }
}

TEST(AudioEntry, ReadsVersionOne) {
    const Bytes entry =
        box("mp4a", {zeros(6), u16(1), u16(1), u16(0), u32(0), u16(2), u16(16), zeros(4),
                     u16(44100), u16(0), u32(1024), u32(2), u32(8), u32(2), esds(hex("1210"))});
    const WalkResult result = walk_and_listen(entry_movie("soun", entry));
    EXPECT_EQ(result.lines, "");
    EXPECT_EQ(result.stream().audio_sample_size, 32U);
    EXPECT_EQ(result.stream().audio_reserved, 1U);
    EXPECT_EQ(result.stream().dsi, hex("1210"));
}

TEST(AudioEntry, KeepsTheSampleSizeOfVersionOneWithoutChannels) {
    const Bytes entry = box("mp4a", {zeros(6), u16(1), u16(1), zeros(6), u16(0), u16(16), zeros(4),
                                     u16(44100), u16(0), u32(1024), u32(2), u32(8), u32(2)});
    EXPECT_EQ(walk_and_listen(entry_movie("soun", entry)).stream().audio_sample_size, 16U);
}

TEST(AudioEntry, ReadsVersionTwo) {
    const auto version_two = [](double rate) {
        return box("mp4a",
                   {zeros(6), u16(1), u16(2), u16(0), u32(0), u16(3), u16(16), u16(0xFFFE), u16(0),
                    u32(0x10000), u32(72), u64(std::bit_cast<std::uint64_t>(rate)), u32(8),
                    u32(0x7F000000), u32(24), u32(0), u32(0), u32(0), esds(hex("1240"))});
    };
    const WalkResult result = walk_and_listen(entry_movie("soun", version_two(96000.75)));
    EXPECT_EQ(result.lines, "");
    EXPECT_EQ(result.stream().audio_sample_rate, 96000U);
    EXPECT_EQ(result.stream().audio_channel_count, 8U);
    EXPECT_EQ(result.stream().audio_sample_size, 24U);
    EXPECT_EQ(result.stream().dsi, hex("1240"));
    for (const double rate : {-1.0, 1e300, std::bit_cast<double>(0x7FF8000000000000)}) {
        EXPECT_EQ(
            walk_and_listen(entry_movie("soun", version_two(rate))).stream().audio_sample_rate, 0U);
    }
}

TEST(AudioEntry, TooShortForItsVersionEndsItsWalk) {
    Bytes entry = audio_entry("mp4a", 2, 16, 44100);
    entry[8 + 9] = 2;
    EXPECT_EQ(walk_and_listen(entry_movie("soun", entry)).lines,
              "The mp4 file: moov->trak->mdia->minf->stbl->stsd->mp4a size is out of the range we "
              "support: -36\n");
}

TEST(AudioEntry, ReadsTheDescriptorInsideAWaveBox) {
    // A short `mp4a` of four bytes stands there too and is passed over.
    const Bytes wave = box("wave", {frma("mp4a"), box("mp4a", {zeros(4)}), esds(hex("1190")),
                                    Bytes{0, 0, 0, 8, 0, 0, 0, 0}});
    const WalkResult result = audio_walk("mp4a", {wave});
    EXPECT_EQ(result.lines,
              "skip box file: moov->trak->mdia->minf->stbl->stsd->mp4a->wave->(invalid string)\n");
    EXPECT_EQ(result.stream().dsi, hex("1190"));
    EXPECT_EQ(result.stream().stream_id, kStreamIdAac);
    EXPECT_EQ(result.stream().audio_channel_count, 6U);
}

TEST(TextEntry, KeepsThirtyEightBytes) {
    Bytes payload;
    for (int i = 0; i < 60; ++i) {
        payload.push_back(static_cast<std::uint8_t>(i));
    }
    const WalkResult result = walk_and_listen(entry_movie("text", box("tx3g", {payload})));
    EXPECT_EQ(result.lines, "");
    EXPECT_EQ(result.stream().stream_id, kStreamIdTx3g);
    EXPECT_EQ(result.stream().dsi, Bytes(payload.begin(), payload.begin() + 38));
    EXPECT_EQ(result.stream().dsi_size, 38U);
    EXPECT_EQ(walk_and_listen(entry_movie("text", box("tx3g", {zeros(5)}))).stream().dsi_size, 5U);
}

Bytes metadata_entry(std::string_view schema) {
    return box("metx", {zeros(7), text("gzip"), u8(0), text("urn:x"), u8(0), text(schema)});
}

TEST(MetadataEntry, IsKnownByItsSchema) {
    const std::string schema = "http://" MEDIASPLIT_TAG_AUTHORITY "/ns/mobile Orvel-Mobile-1.0.xsd";
    const auto id_of = [](const Bytes& entry) {
        return walk_and_listen(entry_movie("meta", entry)).stream().stream_id;
    };
    EXPECT_EQ(id_of(metadata_entry(schema)), 8U);
    EXPECT_EQ(id_of(metadata_entry(schema + std::string(1, '\0') + "more")), 8U);
    EXPECT_EQ(id_of(metadata_entry(schema + "x")), 0U);
    EXPECT_EQ(id_of(metadata_entry(schema.substr(1))), 0U);
    EXPECT_EQ(id_of(metadata_entry("")), 0U);
    EXPECT_EQ(id_of(box("metx", {zeros(7), text("a"), u8(0), text("b")})), 0U);
    EXPECT_EQ(id_of(box("metx", {zeros(2)})), 0U);
}

TEST(TrackReference, NamesTheTrackThatIsDependedOn) {
    const WalkResult result =
        walk_and_listen(box("trak", {tkhd(2), box("tref", {box("vdep", {u32(1), u32(5)})})}));
    EXPECT_EQ(result.stream().depends_on_track, 1U);
    EXPECT_EQ(result.stream().marks, kMarkVdep);
}

TEST(VendorBox, TellsWhereItsMetadataStands) {
    const WalkResult result = walk_and_listen(
        join({box("free"), box("uuid", {text("ORVL-METADATA-00"), zeros(20)}),
              box("uuid", {text("ORVL-METADATA-01"), zeros(99)}), box("uuid", {zeros(15)})}));
    EXPECT_EQ(result.lines, "skip box file: free\n");
    EXPECT_EQ(result.demuxer->uuid_offset, 8);
    EXPECT_EQ(result.demuxer->uuid_size, 20);
}

TEST(ItemList, IsPassedOver) {
    EXPECT_EQ(walk_and_listen(join({box("ilst", {box("----", {box("mean")})}), box("last")})).lines,
              "skip box file: last\n");
    EXPECT_EQ(walk_and_listen(box("udta", {full_box("meta", 0, 0, {box("ilst")})})).lines, "");
}

}  // namespace
}  // namespace mediasplit::mp4
