#include <string>
#include <string_view>

#include "base/xml_tree.h"
#include "src/mp4demuxer/handlers.h"
#include "tests/support/dsi_builder.h"
#include "tests/support/nal_builder.h"
#include "tests/support/recording_sink.h"
#include "tests/unit/mp4demuxer/walk_support.h"

namespace mediasplit::mp4 {
namespace {

const Bytes kSps = hex("6742c01e");
const Bytes kPps = hex("68ce3c80");

WalkResult video_walk(std::string_view type, std::initializer_list<Bytes> children) {
    return walk_and_listen(entry_movie("vide", video_entry(type, 16, 16, children)));
}

WalkResult audio_walk(std::string_view type, std::initializer_list<Bytes> children) {
    return walk_and_listen(entry_movie("soun", audio_entry(type, 2, 16, 48000, children)));
}

std::vector<std::string> texts_of(const RecordingSink& sink) {
    std::vector<std::string> texts;
    for (const RecordedReport& report : sink.reports()) {
        texts.push_back(std::to_string(report.id) + " " + report.text);
    }
    return texts;
}

std::string overrun(const char* name, const char* box_type, int offset, int length, int size) {
    return "4072 In MP4, the [" + std::string(name) + "] NAL unit type information in the \"" +
           box_type + "\" box is over offset. The offset + length (" + std::to_string(offset) +
           " + " + std::to_string(length) + ") exceeds the box left size (" + std::to_string(size) +
           ")";
}

TEST(AvcConfiguration, KeepsAndParsesItsParameterSets) {
    const RecordingSink sink;
    const WalkResult result = video_walk("avc1", {avcC({kSps, hex("6764001f")}, {kPps}, 1)});
    const Mp4Stream& stream = result.stream();
    ASSERT_NE(stream.avc_config, nullptr);
    const AvcConfig& config = *stream.avc_config;
    EXPECT_EQ(config.configuration_version, 1);
    EXPECT_EQ(config.profile_idc, 0x42);
    EXPECT_EQ(config.profile_compatibility, 0xC0);
    EXPECT_EQ(config.level_idc, 0x1E);
    EXPECT_EQ(config.length_size_minus_one, 1);
    ASSERT_EQ(config.sps.size(), 2U);
    EXPECT_EQ(config.sps[0].unit, kSps);
    EXPECT_EQ(config.sps[0].record.profile_idc, 0x42);
    EXPECT_EQ(config.sps[1].unit, hex("6764001f"));
    EXPECT_EQ(config.sps[1].record.profile_idc, 0x64);
    ASSERT_EQ(config.pps.size(), 1U);
    EXPECT_EQ(config.pps[0], kPps);
    EXPECT_NE(stream.box_flags & kBoxAvcC, 0U);
    EXPECT_EQ(stream.dsi_size, 7 + 2 * (2 + 4) + 2 + 4U);
    EXPECT_EQ(sink.count(4072), 0U);
    EXPECT_TRUE(sink.was_evaluated(4072));
}

TEST(AvcConfiguration, GivesThePictureSizeOfItsParameterSet) {
    testing::AvcSpsOptions options;
    options.width_in_mbs = 120;
    options.height_in_map_units = 68;
    options.crop = testing::CropOffsets{0, 0, 0, 4};
    const WalkResult result = video_walk("avc1", {avcC({testing::build_avc_sps(options)}, {kPps})});
    EXPECT_EQ(result.stream().avc_config->sps.at(0).record.pic_width, 1920U);
    EXPECT_EQ(result.stream().avc_config->sps.at(0).record.pic_height, 1080U);
}

TEST(AvcConfiguration, ReportsAUnitThatRunsOverTheBox) {
    const RecordingSink sink;
    const WalkResult result =
        video_walk("avc1", {box("avcC", {hex("0142c01eff e1 0009 6742c01e")})});
    EXPECT_EQ(texts_of(sink), std::vector<std::string>{overrun("SPS", "avcC", 8, 9, 12)});
    ASSERT_EQ(result.stream().avc_config->sps.size(), 1U);
    EXPECT_EQ(result.stream().avc_config->sps[0].unit, kSps);
    EXPECT_TRUE(result.stream().avc_config->pps.empty());
    EXPECT_EQ(result.lines.find("skip"), std::string::npos);
}

TEST(AvcConfiguration, ReportsAPictureParameterSetThatRunsOver) {
    const RecordingSink sink;
    const WalkResult result =
        video_walk("avc1", {box("avcC", {hex("0142c01eff e0 02 0001 68 0002 68")})});
    EXPECT_EQ(texts_of(sink), std::vector<std::string>{overrun("PPS", "avcC", 12, 2, 13)});
    EXPECT_EQ(result.stream().avc_config->pps.size(), 2U);
}

TEST(AvcConfiguration, AcceptsAUnitThatEndsWithTheBox) {
    const RecordingSink sink;
    video_walk("avc1", {box("avcC", {hex("0142c01eff e0 01 0002 68ce")})});
    EXPECT_EQ(sink.count(4072), 0U);
}

TEST(AvcConfiguration, KeepsThirtyTwoUnitsOfAKind) {
    const RecordingSink sink;
    const WalkResult result =
        video_walk("avc1", {avcC(std::vector<Bytes>(31, kSps), std::vector<Bytes>(255, kPps)),
                            box("clli", {u16(7), u16(8)})});
    EXPECT_EQ(result.stream().avc_config->sps.size(), 31U);
    EXPECT_EQ(result.stream().avc_config->pps.size(), 32U);
    EXPECT_EQ(result.stream().max_content_light_level, 7);
    EXPECT_EQ(sink.reports().size(), 0U);
}

TEST(AvcConfiguration, ReportsNoMoreUnitsBehindTheEndThanItKeeps) {
    const RecordingSink sink;
    const WalkResult result = video_walk("avc1", {box("avcC", {hex("0142c01eff e0 ff")})});
    EXPECT_EQ(sink.count(4072), 32U);
    EXPECT_EQ(result.stream().avc_config->pps.size(), 32U);
}

TEST(AvcConfiguration, BelowFourBytesHoldsNothing) {
    for (const Bytes& payload : {Bytes{}, hex("0142c0")}) {
        const WalkResult result = video_walk("avc1", {box("avcC", {payload})});
        ASSERT_NE(result.stream().avc_config, nullptr);
        EXPECT_EQ(result.stream().avc_config->configuration_version, 0);
        EXPECT_TRUE(result.stream().avc_config->sps.empty());
        EXPECT_NE(result.stream().box_flags & kBoxAvcC, 0U);
        EXPECT_EQ(result.stream().dsi_size, payload.size());
    }
}

TEST(AvcConfiguration, TakesAnUnescapedSetOverTheWorkAreaWhole) {
    Bytes sps = kSps;
    sps.resize(3000, 0x55);
    const WalkResult result = video_walk("avc1", {avcC({sps}, {kPps})});
    EXPECT_EQ(result.stream().avc_config->sps.at(0).unit, sps);
    EXPECT_EQ(result.stream().avc_config->sps.at(0).record.profile_idc, 0x42);
}

TEST(AvcConfiguration, ReadsParameterSetsWithStartCodes) {
    const WalkResult result =
        video_walk("avc1", {box("avcC", {text("PIFF"), kSps, hex("00000001"), kPps})});
    const AvcConfig& config = *result.stream().avc_config;
    EXPECT_EQ(config.length_size_minus_one, 3);
    ASSERT_EQ(config.sps.size(), 1U);
    EXPECT_EQ(config.sps[0].unit, kSps);
    EXPECT_EQ(config.sps[0].record.profile_idc, 0x42);
    ASSERT_EQ(config.pps.size(), 1U);
    EXPECT_EQ(config.pps[0], kPps);
}

TEST(AvcConfiguration, ReadsStartCodeFormsThatAreCut) {
    const auto sets = [](const Bytes& payload) {
        const WalkResult result = video_walk("avc1", {box("avcC", {text("PIFF"), payload})});
        const AvcConfig& config = *result.stream().avc_config;
        return std::make_pair(config.sps.at(0).unit, config.pps.at(0));
    };
    EXPECT_EQ(sets({}), std::make_pair(Bytes{}, Bytes{}));
    EXPECT_EQ(sets(hex("67")), std::make_pair(Bytes{}, Bytes{}));
    EXPECT_EQ(sets(hex("6742c01e99")), std::make_pair(hex("67"), Bytes{}));
    EXPECT_EQ(sets(hex("00000001")), std::make_pair(Bytes{}, Bytes{}));
}

const Bytes kVps = hex("40010c01");
const Bytes kHevcSps = hex("42010101");
const Bytes kHevcPps = hex("4401c172");
const Bytes kSei = hex("4e010500");

TEST(HevcConfiguration, ReadsEveryFieldOfItsHead) {
    const WalkResult result = video_walk(
        "hvc1", {box("hvcC", {hex("01 a5 12345678 9abcdef01234 5d f123 fe fd fa fb 0203 bd 00")})});
    const HevcConfig& config = *result.stream().hevc_config;
    EXPECT_EQ(config.configuration_version, 1);
    EXPECT_EQ(config.general_profile_space, 2);
    EXPECT_EQ(config.general_tier_flag, 1);
    EXPECT_EQ(config.general_profile_idc, 5);
    EXPECT_EQ(config.general_profile_compatibility_flags, 0x12345678U);
    EXPECT_EQ(config.general_progressive_source_flag, 1);
    EXPECT_EQ(config.general_interlaced_source_flag, 0);
    EXPECT_EQ(config.general_non_packed_constraint_flag, 0);
    EXPECT_EQ(config.general_frame_only_constraint_flag, 1);
    EXPECT_EQ(config.general_reserved_zero_44bits_43_12, 0xABCDEF01U);
    EXPECT_EQ(config.general_reserved_zero_44bits_11_0, 0x234);
    EXPECT_EQ(config.general_level_idc, 0x5D);
    EXPECT_EQ(config.min_spatial_segmentation_idc, 0x123);
    EXPECT_EQ(config.parallelism_type, 2);
    EXPECT_EQ(config.chroma_format_idc, 1);
    EXPECT_EQ(config.bit_depth_luma_minus8, 2);
    EXPECT_EQ(config.bit_depth_chroma_minus8, 3);
    EXPECT_EQ(config.avg_frame_rate, 0x203);
    EXPECT_EQ(config.constant_frame_rate, 2);
    EXPECT_EQ(config.num_temporal_layers, 7);
    EXPECT_EQ(config.temporal_id_nested, 1);
    EXPECT_EQ(config.length_size_minus_one, 1);
    EXPECT_EQ(config.num_arrays, 0);
    EXPECT_TRUE(config.vps.empty() && config.sps.empty() && config.pps.empty());
}

TEST(HevcConfiguration, KeepsItsUnitsByType) {
    const WalkResult result = video_walk(
        "hvc1", {hvcC({{32, {kVps}}, {33, {kHevcSps, kHevcSps}}, {34, {kHevcPps}}, {39, {kSei}}})});
    const HevcConfig& config = *result.stream().hevc_config;
    ASSERT_EQ(config.vps.size(), 1U);
    EXPECT_EQ(config.vps[0].unit, kVps);
    EXPECT_EQ(config.vps[0].record.header.nal_unit_type, 32);
    ASSERT_EQ(config.sps.size(), 2U);
    EXPECT_EQ(config.sps[1].unit, kHevcSps);
    EXPECT_EQ(config.sps[1].record.header.nal_unit_type, 33);
    ASSERT_EQ(config.pps.size(), 1U);
    EXPECT_EQ(config.pps[0].record.header.nal_unit_type, 34);
    ASSERT_EQ(config.sei.size(), 1U);
    EXPECT_EQ(config.sei[0], kSei);
    EXPECT_NE(result.stream().box_flags & kBoxHvcC, 0U);
    EXPECT_FALSE(result.stream().dsi.empty());
}

TEST(HevcConfiguration, AddsArraysOfOneTypeUp) {
    const WalkResult result =
        video_walk("hvc1", {hvcC({{33, {kHevcSps}}, {34, {kHevcPps}}, {33, {kHevcSps, kVps}}})});
    EXPECT_EQ(result.stream().hevc_config->sps.size(), 3U);
    EXPECT_EQ(result.stream().hevc_config->sps[2].unit, kVps);
}

TEST(HevcConfiguration, ReadsTheNextArrayFromTheByteBehindAnotherType) {
    // Behind type 35 stands no count: the byte 0x22 is an array of PPS.
    Bytes payload = hvcC({});
    payload.erase(payload.begin(), payload.begin() + 8);
    payload.back() = 2;
    const WalkResult result =
        video_walk("hvc1", {box("hvcC", {payload, hex("23 22 0001 0002 4401")})});
    ASSERT_EQ(result.stream().hevc_config->pps.size(), 1U);
    EXPECT_EQ(result.stream().hevc_config->pps[0].unit, hex("4401"));
}

TEST(HevcConfiguration, ReportsUnitsThatRunOver) {
    const std::vector<std::pair<int, const char*>> names = {
        {32, "VPS"}, {33, "SPS"}, {34, "PPS"}, {39, "PREFIX_SEI"}};
    for (const auto& [type, name] : names) {
        Bytes payload = hvcC({{static_cast<std::uint32_t>(type), {kVps}}});
        payload.erase(payload.begin(), payload.begin() + 8);
        payload.pop_back();
        const RecordingSink sink;
        video_walk("hvc1", {box("hvcC", {payload})});
        EXPECT_EQ(texts_of(sink), std::vector<std::string>{overrun(name, "hvcC", 28, 4, 31)});
    }
}

TEST(HevcConfiguration, KeepsThirtyTwoUnitsOfAType) {
    const WalkResult result =
        video_walk("hvc1", {hvcC({{34, std::vector<Bytes>(40, kHevcPps)}, {32, {kVps}}})});
    EXPECT_EQ(result.stream().hevc_config->pps.size(), 32U);
    EXPECT_EQ(result.stream().hevc_config->vps.size(), 1U);
}

TEST(HevcConfiguration, EndsWithTheBoxWhateverItsCountsSay) {
    Bytes payload = hvcC({});
    payload.erase(payload.begin(), payload.begin() + 8);
    payload.back() = 255;
    const RecordingSink sink;
    const WalkResult result = video_walk("hvc1", {box("hvcC", {payload, hex("20 ffff")})});
    EXPECT_EQ(sink.count(4072), 32U);
    EXPECT_EQ(result.stream().hevc_config->vps.size(), 32U);
}

TEST(HevcConfiguration, MayBeEmpty) {
    const WalkResult result = video_walk("hvc1", {box("hvcC")});
    ASSERT_NE(result.stream().hevc_config, nullptr);
    EXPECT_TRUE(result.stream().dsi.empty());
}

TEST(LayeredHevcConfiguration, HasAShorterHeadAndIsNoDecoderInformation) {
    const WalkResult result =
        video_walk("hvc1", {box("lhvC", {hex("01 f123 fe f5 01 21 0001 0004"), kHevcSps})});
    const Mp4Stream& stream = result.stream();
    ASSERT_NE(stream.lhevc_config, nullptr);
    EXPECT_EQ(stream.hevc_config, nullptr);
    EXPECT_EQ(stream.lhevc_config->configuration_version, 1);
    EXPECT_EQ(stream.lhevc_config->min_spatial_segmentation_idc, 0x123);
    EXPECT_EQ(stream.lhevc_config->parallelism_type, 2);
    EXPECT_EQ(stream.lhevc_config->num_temporal_layers, 6);
    EXPECT_EQ(stream.lhevc_config->temporal_id_nested, 1);
    EXPECT_EQ(stream.lhevc_config->length_size_minus_one, 1);
    EXPECT_EQ(stream.lhevc_config->sps.at(0).unit, kHevcSps);
    EXPECT_TRUE(stream.dsi.empty());
    EXPECT_NE(stream.box_flags & kBoxLhvC, 0U);
}

TEST(LayeredHevcConfiguration, ReportsUnitsThatRunOver) {
    const RecordingSink sink;
    video_walk("hvc1", {box("lhvC", {hex("01 f000 fc 0f 01 21 0001 0005"), kHevcSps})});
    EXPECT_EQ(texts_of(sink), std::vector<std::string>{overrun("SPS", "lhvC", 11, 5, 15)});
}

TEST(Av1Configuration, ReadsEveryFieldOfItsHead) {
    // 1 0000001 | 010 01101 | 1 0 1 0 1 0 10 | 000 1 0101
    const WalkResult result = video_walk("av01", {box("av1C", {hex("81 4d aa 15")})});
    const Av1Config& config = *result.stream().av1_config;
    EXPECT_EQ(config.marker, 1);
    EXPECT_EQ(config.version, 1);
    EXPECT_EQ(config.seq_profile, 2);
    EXPECT_EQ(config.seq_level_idx_0, 13);
    EXPECT_EQ(config.seq_tier_0, 1);
    EXPECT_EQ(config.high_bitdepth, 0);
    EXPECT_EQ(config.twelve_bit, 1);
    EXPECT_EQ(config.monochrome, 0);
    EXPECT_EQ(config.chroma_subsampling_x, 1);
    EXPECT_EQ(config.chroma_subsampling_y, 0);
    EXPECT_EQ(config.chroma_sample_position, 2);
    EXPECT_EQ(config.initial_presentation_delay_present, 1);
    EXPECT_EQ(config.initial_presentation_delay_minus_one, 5);
    EXPECT_EQ(result.stream().dsi, hex("814daa15"));
    EXPECT_NE(result.stream().box_flags & kBoxAv1C, 0U);
}

TEST(Av1Configuration, KeepsNoDelayThatIsNotPresent) {
    EXPECT_EQ(video_walk("av01", {box("av1C", {hex("814daa05")})})
                  .stream()
                  .av1_config->initial_presentation_delay_minus_one,
              0);
}

TEST(Av1Configuration, ReadsUnitsOnlyBeyondThirtyTwoBytes) {
    // A padding unit of two bytes, then a metadata unit of type 4 (T.35).
    const Bytes units = hex("7a 02 0000 2a 09 04 b5 003c 00010405");
    for (const std::size_t size : {32U, 33U}) {
        const Bytes payload = join({hex("81000c00"), units, zeros(size - 4 - units.size())});
        ASSERT_EQ(payload.size(), size);
        const WalkResult result = video_walk("av01", {box("av1C", {payload})});
        const Av1Config& config = *result.stream().av1_config;
        // The unit at bit 32 is read from 33 bytes on; the next, at bit 64, lies beyond them.
        EXPECT_EQ(config.obu_type, 0);
    }
    const Bytes payload = join({hex("81000c00"), units, zeros(100)});
    const WalkResult result = video_walk("av01", {box("av1C", {payload})});
    const Av1Config& config = *result.stream().av1_config;
    EXPECT_EQ(config.obu_forbidden_bit, 0);
    EXPECT_EQ(config.obu_type, 5);
    EXPECT_EQ(config.obu_extension_flag, 0);
    EXPECT_EQ(config.obu_has_size_field, 1);
    EXPECT_EQ(config.obu_size, 9U);
    EXPECT_EQ(config.metadata_type, 4U);
    EXPECT_EQ(config.itu_t_t35_country_code, 0xB5);
    EXPECT_EQ(config.itu_t_t35_terminal_provider_code, 0x3C);
    EXPECT_EQ(config.itu_t_t35_terminal_provider_oriented_code, 0x10405U);
}

TEST(Av1Configuration, ReadsAMetadataUnitRightBehindTheHead) {
    const Bytes units = hex("2a 09 04 b5 003c 00010405");
    const auto type_of = [&units](std::size_t size) {
        const Bytes payload = join({hex("81000c00"), units, zeros(size - 4 - units.size())});
        return video_walk("av01", {box("av1C", {payload})}).stream().av1_config->obu_type;
    };
    EXPECT_EQ(type_of(32), 0);
    EXPECT_EQ(type_of(33), 5);
}

TEST(Av1Configuration, EndsAtAUnitOfAnySize) {
    const Bytes payload = join({hex("81000c00 0a ffffffffffffffff"), zeros(60)});
    EXPECT_EQ(video_walk("av01", {box("av1C", {payload})}).stream().av1_config->obu_type, 0);
    EXPECT_EQ(video_walk("av01", {box("av1C")}).stream().av1_config->marker, 0);
}

TEST(ElementaryStreamDescriptor, GivesTheDecoderInformation) {
    const WalkResult result = audio_walk("mp4a", {esds(hex("119056e500"), 0x67)});
    EXPECT_EQ(result.stream().stream_id, kStreamIdAac);
    EXPECT_EQ(result.stream().mp4a_object_type_indication, 0x67U);
    EXPECT_EQ(result.stream().dsi, hex("119056e500"));
    EXPECT_EQ(result.stream().dsi_size, 5U);
}

TEST(ElementaryStreamDescriptor, ReadsLengthsOfSeveralBytes) {
    const WalkResult result =
        audio_walk("mp4a", {full_box("esds", 0, 0,
                                     {hex("03808080 22 0001 00 04808080 14 40"), zeros(12),
                                      hex("05808080 02 1190 06808080 01 02")}),
                            box("last")});
    EXPECT_EQ(result.stream().mp4a_object_type_indication, 0x40U);
    EXPECT_EQ(result.stream().dsi, hex("1190"));
}

TEST(ElementaryStreamDescriptor, TakesWhatTheBoxHolds) {
    const WalkResult result = audio_walk(
        "mp4a", {full_box("esds", 0, 0, {hex("05 ffffffff7f 1190")}), full_box("dac3", 1, 2)});
    EXPECT_EQ(result.lines, "");
    // The box behind it has replaced what was there.
    EXPECT_EQ(result.stream().dsi, hex("01000002"));
    EXPECT_EQ(
        audio_walk("mp4a", {full_box("esds", 0, 0, {hex("05 ffffffff7f 1190")})}).stream().dsi,
        hex("1190"));
}

TEST(ElementaryStreamDescriptor, PassesOverOtherTags) {
    const WalkResult result =
        audio_walk("mp4a", {full_box("esds", 0, 0, {hex("06 03 050101 05 01 77")})});
    EXPECT_EQ(result.stream().dsi, hex("77"));
}

TEST(Ec3Configuration, ReadsSubstreamsAndCountsChannels) {
    // 640 kbit/s, one substream; fscod 0, bsid 16; bsmod 0, acmod 7, lfeon 1; no dependent
    const WalkResult result = audio_walk("ec-3", {box("dec3", {hex("1400 20 0f 00")})});
    const Ec3Config& config = *result.stream().ec3_config;
    EXPECT_EQ(config.ec3_datarate, 640U);
    EXPECT_EQ(config.ec3_ind_sub_stream_count, 1U);
    EXPECT_EQ(config.substreams[0].bsid, 16U);
    EXPECT_EQ(config.substreams[0].acmod, 7U);
    EXPECT_EQ(config.substreams[0].lfeon, 1U);
    EXPECT_EQ(config.channel_count, 6U);
    EXPECT_EQ(config.flag_ec3_extension_type_a, 0U);
    EXPECT_EQ(config.parse_error, 0U);
    EXPECT_EQ(config.reserved_nonzero, 0U);
    EXPECT_EQ(result.stream().dsi, hex("1400200f00"));
    EXPECT_NE(result.stream().box_flags & kBoxDec3, 0U);
}

TEST(Ec3Configuration, CountsThreeChannelsForTwoAndLfe) {
    const WalkResult result = audio_walk("ec-3", {box("dec3", {hex("0000 20 05 00")})});
    EXPECT_EQ(result.stream().ec3_config->channel_count, 3U);
}

TEST(Ec3Configuration, HasNoChannelsForModesFourAndFive) {
    const std::vector<std::uint32_t> counts = {0, 1, 2, 3, 0, 0, 4, 5};
    for (std::uint32_t mode = 0; mode < 8; ++mode) {
        const WalkResult result =
            audio_walk("ec-3", {box("dec3", {hex("000020"), u8(mode << 1), u8(0)})});
        EXPECT_EQ(result.stream().ec3_config->channel_count, counts[mode]) << mode;
    }
}

TEST(Ec3Configuration, CountsTheLocationsOfDependentSubstreams) {
    // Bits 0, 1, 3, 4, 5, 6 of chan_loc are pairs but for 3 and 5's mask bits 7 and 5: by hand,
    // mask bits 10, 9, 6, 5, 4 are in 0x674 (10, 9, 6, 5, 4, 2).
    const std::vector<std::uint32_t> added = {2, 2, 1, 1, 2, 2, 2, 1, 1};
    for (std::uint32_t bit = 0; bit < 9; ++bit) {
        const WalkResult result = audio_walk(
            "ec-3", {box("dec3", {hex("0000 20 0e"), u8(2 | (1U << bit) >> 8), u8(1U << bit)})});
        const Ec3Config& config = *result.stream().ec3_config;
        EXPECT_EQ(config.substreams[0].num_dep_sub, 1U);
        EXPECT_EQ(config.substreams[0].chan_loc, 1U << bit);
        EXPECT_EQ(config.channel_count, 5 + added[bit]) << bit;
    }
}

TEST(Ec3Configuration, ReadsEverySubstreamsFields) {
    // Two substreams: fscod 2, bsid 10, asvc 1, bsmod 5; the second with chan_loc.
    const WalkResult result = audio_walk("ec-3", {box("dec3", {hex("0001 94 d4 00 20 0f 0355")})});
    const Ec3Config& config = *result.stream().ec3_config;
    EXPECT_EQ(config.ec3_ind_sub_stream_count, 2U);
    EXPECT_EQ(config.substreams[0].fscod, 2U);
    EXPECT_EQ(config.substreams[0].bsid, 10U);
    EXPECT_EQ(config.substreams[0].asvc, 1U);
    EXPECT_EQ(config.substreams[0].bsmod, 5U);
    EXPECT_EQ(config.substreams[0].acmod, 2U);
    EXPECT_EQ(config.substreams[1].num_dep_sub, 1U);
    EXPECT_EQ(config.substreams[1].chan_loc, 0x155U);
    EXPECT_EQ(config.channel_count, 2U);
}

TEST(Ec3Configuration, TellsReservedBits) {
    EXPECT_EQ(audio_walk("ec-3", {box("dec3", {hex("0000 21 0f 00")})})
                  .stream()
                  .ec3_config->reserved_nonzero,
              1U);
    EXPECT_EQ(audio_walk("ec-3", {box("dec3", {hex("0000 20 0f 20")})})
                  .stream()
                  .ec3_config->reserved_nonzero,
              1U);
}

TEST(Ec3Configuration, ReadsItsExtension) {
    const auto extension = [](const char* payload) {
        return *audio_walk("ec-3", {box("dec3", {hex(payload)})}).stream().ec3_config;
    };
    EXPECT_EQ(extension("0000200f00 00").flag_ec3_extension_type_a, 0U);
    EXPECT_EQ(extension("0000200f00 01 10").flag_ec3_extension_type_a, 1U);
    EXPECT_EQ(extension("0000200f00 01 10").complexity_index_type_a, 16U);
    EXPECT_EQ(extension("0000200f00 01 10").parse_error, 0U);
    EXPECT_EQ(extension("0000200f00 01").flag_ec3_extension_type_a, 1U);
    EXPECT_EQ(extension("0000200f00 01").complexity_index_type_a, 0U);
    EXPECT_EQ(extension("0000200f00 01").parse_error, 1U);
}

TEST(Ec3Configuration, TellsAPayloadThatIsTooShort) {
    EXPECT_EQ(
        audio_walk("ec-3", {box("dec3", {hex("0007 200f00")})}).stream().ec3_config->parse_error,
        1U);
    EXPECT_EQ(audio_walk("ec-3", {box("dec3")}).stream().ec3_config->parse_error, 1U);
}

TEST(Ec3Configuration, IsMadeForAnotherEntryToo) {
    const WalkResult result = audio_walk("enca", {box("dec3", {hex("1400200f00")})});
    ASSERT_NE(result.stream().ec3_config, nullptr);
    EXPECT_EQ(result.stream().ec3_config->channel_count, 6U);
}

TEST(PlainConfigurations, BecomeDecoderInformation) {
    for (const char* type : {"dac3", "dmlp", "d263"}) {
        const WalkResult result = audio_walk("mp4a", {box(type, {hex("10112f")})});
        EXPECT_EQ(result.stream().dsi, hex("10112f")) << type;
        EXPECT_EQ(result.stream().dsi_size, 3U);
    }
}

// The first element of a name below `node`, at any depth.
const Ezxml* find_element(const Ezxml* node, const char* name) {
    for (const Ezxml* child = node->child; child != nullptr; child = child->ordered) {
        if (std::string_view(child->name) == name) {
            return child;
        }
        if (const Ezxml* found = find_element(child, name); found != nullptr) {
            return found;
        }
    }
    return nullptr;
}

TEST(Ac4Configuration, StandsInTheTreeOfItsFile) {
    const Bytes payload = write_dac4(full_dsi_record());
    const EzxmlPtr tree = ezxml_new("file");
    const std::unique_ptr<Mp4Demuxer> demuxer = mp4demuxer_create();
    demuxer->tree_root = tree.get();
    walk_again(*demuxer,
               entry_movie("soun", audio_entry("ac-4", 2, 16, 48000, {box("dac4", {payload})})));
    const Ezxml* dac4 = find_element(tree.get(), "dac4");
    ASSERT_NE(dac4, nullptr);
    EXPECT_EQ(ezxml_attr(dac4, "size"), std::to_string(payload.size()));
    EXPECT_STREQ(ezxml_child(dac4, "n_presentations")->txt, "3");
    const Ezxml* group = find_element(dac4, "ac4_substream_group_dsi");
    ASSERT_NE(group, nullptr);
    EXPECT_STREQ(ezxml_child(group, "n_substreams")->txt, "2");
    EXPECT_STREQ(find_element(group, "dsi_substream_channel_mask")->txt, "71");
    std::size_t presentations = 0;
    for (const Ezxml* child = dac4->child; child != nullptr; child = child->ordered) {
        presentations += std::string_view(child->name) == "ac4_presentation_dsi" ? 1 : 0;
    }
    EXPECT_EQ(presentations, 3U);
    // The elements carry the identity of the values of this very record.
    const DsiRecord& record = *demuxer->streams.at(0)->ac4_config;
    EXPECT_EQ(ezxml_attr(ezxml_child(dac4, "n_presentations"), "ui-id"),
              std::to_string(reinterpret_cast<std::uintptr_t>(&record.n_presentations)));
}

TEST(Ac4Configuration, MarksItsBoxAndMakesTheRecord) {
    const WalkResult result = audio_walk("enca", {box("dac4", {hex("2082")})});
    EXPECT_NE(result.stream().box_flags & kBoxDac4, 0U);
    EXPECT_NE(result.stream().ac4_config, nullptr);
}

}  // namespace
}  // namespace mediasplit::mp4
