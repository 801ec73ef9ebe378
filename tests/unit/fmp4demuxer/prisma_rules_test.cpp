// The rules on enhancement streams that are applied while samples are written.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/nal_builder.h"
#include "tests/unit/fmp4demuxer/demux_run.h"

namespace mediasplit {
namespace {

using mp4::Bytes;
using testing::build_avc_sps;
using testing::build_hevc_pps;
using testing::build_hevc_sps;
using testing::build_hevc_vps;

// A run over a media segment, whose sample entries were checked with an earlier one.
class SampleRun : public DemuxRun {
public:
    Status walk(const Bytes& bytes, const SegmentSlot* slot = nullptr) {
        SegmentSlot media;
        media.kind = kSlotMedia;
        return DemuxRun::walk(bytes, slot != nullptr ? slot : &media);
    }
};

bool raised(const SampleRun& run, int id) {
    return run.sink.count(id) != 0;
}

std::string text_of(const SampleRun& run, int id) {
    for (const RecordedReport& report : run.sink.reports()) {
        if (report.id == id) {
            return report.text;
        }
    }
    return {};
}

mp4::MovieSpec movie_of(const mp4::TrackSpec& track) {
    mp4::MovieSpec movie;
    movie.tracks = {track};
    return movie;
}

// --- H.264 ------------------------------------------------------------------------------------

// 1280 x 720, 25 frames a second: level 2 of the enhancement format.
Bytes avc_sps_720() {
    testing::AvcSpsOptions options;
    options.profile_idc = 100;
    options.level_idc = 31;
    options.width_in_mbs = 80;
    options.height_in_map_units = 45;
    options.timing = testing::Fraction{1, 50};
    return build_avc_sps(options);
}

const Bytes kSlice{0x41, 0x9A, 0x02};

mp4::TrackSpec avc_prisma(std::vector<Bytes> units, std::optional<Bytes> config,
                          std::string_view entry = "pxav") {
    mp4::TrackSpec track;
    std::vector<Bytes> children{mp4::avcC({avc_sps_720()}, {{0x68, 0xEE}})};
    if (config) {
        children.push_back(*config);
    }
    track.entries = {children.size() == 2
                         ? mp4::video_entry(entry, 1280, 720, {children[0], children[1]})
                         : mp4::video_entry(entry, 1280, 720, {children[0]})};
    mp4::SampleSpec spec;
    spec.data = length_prefixed(units);
    spec.duration = 40;
    track.samples = {spec};
    return track;
}

TEST(AvcRules, StreamWithoutConfigurationRaises4171AtEachUnitAndIsWritten) {
    SampleRun run;
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of(avc_prisma({kSlice, kSlice}, std::nullopt)))),
              Status::kRuleBroken);
    EXPECT_EQ(run.sink.count(4171), 2U);
    EXPECT_EQ(run.output("in_track_id_1.out.264"), start_coded({kSlice, kSlice}));
    SampleRun with;
    EXPECT_EQ(
        with.walk(mp4::plain_file(movie_of(avc_prisma({kSlice}, mp4::prsm_config("pxvC", 9, 2))))),
        Status::kOk);
    EXPECT_FALSE(raised(with, 4171));
}

TEST(AvcRules, PlainStreamHasNoLevelToCompare) {
    SampleRun run;
    EXPECT_EQ(run.walk(mp4::plain_file(
                  movie_of(avc_prisma({avc_sps_720(), kSlice}, std::nullopt, "avc1")))),
              Status::kOk);
    EXPECT_TRUE(run.sink.ids().empty());
}

TEST(AvcRules, InBandSpsIsHeldAgainstTheLevel) {
    SampleRun fits;
    EXPECT_EQ(fits.walk(mp4::plain_file(
                  movie_of(avc_prisma({avc_sps_720(), kSlice}, mp4::prsm_config("pxvC", 9, 2))))),
              Status::kOk);
    EXPECT_FALSE(raised(fits, 4253));
    SampleRun differs;
    EXPECT_EQ(differs.walk(mp4::plain_file(
                  movie_of(avc_prisma({avc_sps_720(), kSlice}, mp4::prsm_config("pxvC", 9, 3))))),
              Status::kRuleBroken);
    EXPECT_TRUE(raised(differs, 4253));
}

TEST(AvcRules, DualLayerStreamComparesItsTwoLayersOnce) {
    testing::AvcSpsOptions half;
    half.profile_idc = 100;
    half.width_in_mbs = 40;
    half.height_in_map_units = 23;
    const Bytes inner = build_avc_sps(half);
    const Bytes unit = mp4::join({{0x7E, 0x00}, inner, {0x7E}});
    SampleRun fits;
    EXPECT_EQ(
        fits.walk(mp4::plain_file(movie_of(avc_prisma({unit}, mp4::prsm_config("pxcC", 4, 2))))),
        Status::kOk);
    EXPECT_FALSE(raised(fits, 4252));
    EXPECT_EQ(fits.demuxer()->streams[0]->el_sps_checked, 1U);
    EXPECT_EQ(fits.demuxer()->streams[0]->el_seen, 1U);

    const Bytes same = mp4::join({{0x7E, 0x00}, avc_sps_720(), {0x7E}});
    SampleRun equal;
    EXPECT_EQ(equal.walk(mp4::plain_file(
                  movie_of(avc_prisma({same, same}, mp4::prsm_config("pxcC", 4, 2))))),
              Status::kRuleBroken);
    EXPECT_EQ(equal.sink.count(4252), 1U);
}

TEST(AvcRules, MetadataAndEnhancementUnitsAreNoted) {
    SampleRun run;
    EXPECT_EQ(run.walk(mp4::plain_file(
                  movie_of(avc_prisma({{0x7C, 0x01}, {0x7E}}, mp4::prsm_config("pxvC", 9, 2))))),
              Status::kOk);
    EXPECT_EQ(run.demuxer()->streams[0]->rpu_seen, 1U);
    EXPECT_EQ(run.demuxer()->streams[0]->el_seen, 1U);
    SampleRun dual;
    EXPECT_EQ(dual.walk(mp4::plain_file(
                  movie_of(avc_prisma({{0x7C, 0x01}}, mp4::prsm_config("pxcC", 4, 2))))),
              Status::kOk);
    EXPECT_EQ(dual.demuxer()->streams[0]->rpu_seen, 1U);
}

TEST(AvcRules, ManifestCodecThatDiffersFromTheStreamRaises4130) {
    struct Case {
        std::optional<std::string> codecs;
        bool fires;
    };
    // Entry "pxav" stands for "avc3"; profile 100, constraints 0, level 31.
    for (const Case& row : {Case{"avc3.64001F", false}, Case{"avc3.640020", true},
                            Case{"avc1.64001f", true}, Case{std::nullopt, true}}) {
        DashContext dash = resolved_dash();
        dash.codecs = row.codecs;
        SampleRun run;
        run.dash = &dash;
        SegmentSlot slot;
        slot.kind = kSlotMedia;
        static_cast<void>(run.walk(
            mp4::plain_file(movie_of(avc_prisma({avc_sps_720()}, mp4::prsm_config("pxvC", 9, 2)))),
            &slot));
        EXPECT_EQ(raised(run, 4130), row.fires) << row.codecs.value_or("none");
        if (row.codecs == "avc3.640020") {
            EXPECT_EQ(text_of(run, 4130),
                      "Mismatch in codecs attribute value between the DASH manifest and the "
                      "elemental stream: the codec indicated in the elemental stream is "
                      "avc3.64001f, but the codecs attribute in the Representation [id : v1] is "
                      "avc3.640020.");
        }
    }
}

TEST(AvcRules, RelatedCodecsJoinTheListWhileItHas99Characters) {
    DashContext dash = resolved_dash();
    dash.codecs = "pxav.09.01";
    dash.related_codecs = {"avc3.64001f", std::string(80, 'x'), "hvc1"};
    SampleRun run;
    run.dash = &dash;
    static_cast<void>(run.walk(
        mp4::plain_file(movie_of(avc_prisma({avc_sps_720()}, mp4::prsm_config("pxvC", 9, 2))))));
    const std::string text = text_of(run, 4130);
    EXPECT_NE(text.find(" is pxav.09.01,avc3.64001f,hvc1"), std::string::npos) << text;
}

// --- H.265 ------------------------------------------------------------------------------------

const Bytes kTrail{0x02, 0x01, 0xD0};

Bytes hevc_sps(std::uint8_t primaries, std::uint8_t transfer, std::uint8_t matrix,
               std::uint32_t rate = 25) {
    testing::HevcSpsOptions options;
    options.width = 1280;
    options.height = 720;
    options.colour = testing::HevcColour{primaries, transfer, matrix};
    options.timing = testing::Fraction{1, rate};
    return build_hevc_sps(options);
}

mp4::TrackSpec hevc_prisma(std::vector<Bytes> units, std::optional<Bytes> config,
                           std::string_view entry = "pxhe", bool with_vps = true) {
    std::vector<mp4::HevcArray> arrays;
    if (with_vps) {
        arrays.push_back({32, {build_hevc_vps({})}});
    }
    arrays.push_back({33, {hevc_sps(9, 16, 9)}});
    mp4::TrackSpec track;
    const Bytes hvcc = mp4::hvcC(arrays);
    track.entries = {config ? mp4::video_entry(entry, 1280, 720, {hvcc, *config})
                            : mp4::video_entry(entry, 1280, 720, {hvcc})};
    mp4::SampleSpec spec;
    spec.data = length_prefixed(units);
    spec.duration = 40;
    track.samples = {spec};
    return track;
}

std::vector<int> hevc_ids(const Bytes& sps, std::uint32_t compatible_id,
                          std::uint32_t profile = 8) {
    SampleRun run;
    static_cast<void>(run.walk(mp4::plain_file(movie_of(
        hevc_prisma({sps, kTrail}, mp4::prsm_config("pxvC", profile, 2, compatible_id))))));
    std::vector<int> ids = run.sink.ids();
    std::sort(ids.begin(), ids.end());
    return ids;
}

TEST(HevcRules, StreamWithoutConfigurationRaises4171AtItsSpsAlone) {
    SampleRun run;
    EXPECT_EQ(run.walk(mp4::plain_file(
                  movie_of(hevc_prisma({hevc_sps(9, 16, 9), kTrail}, std::nullopt)))),
              Status::kRuleBroken);
    EXPECT_EQ(run.sink.ids(), std::vector<int>{4171});
}

TEST(HevcRules, PlainStreamIsNotLookedAt) {
    SampleRun run;
    EXPECT_EQ(run.walk(mp4::plain_file(
                  movie_of(hevc_prisma({hevc_sps(1, 1, 1), kTrail}, std::nullopt, "hvc1")))),
              Status::kOk);
    EXPECT_TRUE(run.sink.ids().empty());
}

TEST(HevcRules, InBandSpsIsHeldAgainstTheLevel) {
    SampleRun run;
    static_cast<void>(run.walk(mp4::plain_file(
        movie_of(hevc_prisma({hevc_sps(9, 16, 9)}, mp4::prsm_config("pxvC", 8, 5, 1))))));
    EXPECT_TRUE(raised(run, 4253));
    EXPECT_EQ(hevc_ids(hevc_sps(9, 16, 9), 1), std::vector<int>{});
}

TEST(HevcRules, ColourOfProfile8FollowsItsBaseLayer) {
    EXPECT_EQ(hevc_ids(hevc_sps(9, 16, 9), 1), std::vector<int>{});
    EXPECT_EQ(hevc_ids(hevc_sps(1, 16, 9), 1), std::vector<int>{4267});
    EXPECT_EQ(hevc_ids(hevc_sps(9, 16, 1), 1), std::vector<int>{4266});
    EXPECT_EQ(hevc_ids(hevc_sps(9, 18, 9), 1), std::vector<int>{4268});
    EXPECT_EQ(hevc_ids(hevc_sps(1, 1, 1), 1), (std::vector<int>{4266, 4267, 4268}));
    EXPECT_EQ(hevc_ids(hevc_sps(9, 16, 9), 4), std::vector<int>{4268});
    EXPECT_EQ(hevc_ids(hevc_sps(1, 1, 1), 2), std::vector<int>{});
    EXPECT_EQ(hevc_ids(hevc_sps(1, 1, 1), 1, 5), std::vector<int>{});
}

TEST(HevcRules, ColourMessagesTellTheValues) {
    SampleRun run;
    static_cast<void>(run.walk(mp4::plain_file(
        movie_of(hevc_prisma({hevc_sps(1, 7, 5)}, mp4::prsm_config("pxvC", 8, 2, 4))))));
    EXPECT_EQ(text_of(run, 4267),
              "For a [Orvel Prisma] profile 8.4 stream, the colour_primaries 1 in SPS NAL in the "
              "elemental stream must be 9.");
    EXPECT_EQ(text_of(run, 4266),
              "For a [Orvel Prisma] profile 8.4 stream, the matrix_coeffs 5 in SPS NAL in the "
              "elemental stream must be 9.");
    EXPECT_EQ(text_of(run, 4268),
              "For a [Orvel Prisma] profile 8.4 stream, the transfer_characteristics 7 in SPS NAL "
              "in the elemental stream is not supported. The supported value: 14, 18.");
}

TEST(HevcRules, TransferOfBaseLayer4AsksForABrand) {
    const auto with_brands = [](std::uint8_t transfer, const std::vector<std::string>& brands) {
        auto movie =
            movie_of(hevc_prisma({hevc_sps(9, transfer, 9)}, mp4::prsm_config("pxvC", 8, 2, 4)));
        movie.ftyp_box = mp4::ftyp("isom", brands);
        SampleRun run;
        static_cast<void>(run.walk(mp4::plain_file(movie)));
        return text_of(run, 2030);
    };
    EXPECT_EQ(with_brands(18, {"pb4h"}), "");
    EXPECT_EQ(with_brands(14, {"pb4g"}), "");
    EXPECT_EQ(with_brands(18, {"pb4g"}),
              "For a [Orvel Prisma] profile 8.4 stream, in MP4, the compatible brand \"pb4h\" "
              "should be included.");
    EXPECT_EQ(with_brands(14, {"isom"}),
              "For a [Orvel Prisma] profile 8.4 stream, in MP4, the compatible brand \"pb4g\" "
              "should be included.");
    EXPECT_EQ(with_brands(16, {"isom"}), "");
}

TEST(HevcRules, SupplementalCodecsOfAPlaylistHoldTheCodecWithItsBrand) {
    const auto ids = [](std::string_view entry, std::optional<std::string> supplemental) {
        auto movie =
            movie_of(hevc_prisma({hevc_sps(9, 18, 9)}, mp4::prsm_config("pxvC", 8, 2, 4), entry));
        movie.ftyp_box = mp4::ftyp("isom", {"pb4h"});
        ManifestContext context;
        context.stream_index = 3;
        context.supplemental_codecs = std::move(supplemental);
        SampleRun run;
        run.manifest = &context;
        run.suffix = "init";
        SegmentSlot slot;
        slot.kind = kSlotMedia;
        static_cast<void>(run.walk(mp4::plain_file(movie), &slot));
        return run.sink.ids();
    };
    EXPECT_EQ(ids("pxhe", "pxhe.08.02/pb4h"), std::vector<int>{});
    EXPECT_EQ(ids("pxh1", "hvc1,pxh1.08.02/pb4h"), std::vector<int>{});
    EXPECT_EQ(ids("pxhe", "pxhe.08.02/pb4g"), std::vector<int>{4166});
    EXPECT_EQ(ids("pxhe", "pxh1.08.02/pb4h"), std::vector<int>{4166});
    EXPECT_EQ(ids("pxhe", std::nullopt), std::vector<int>{4164});
}

TEST(HevcRules, CmafSegmentsWantTheirSegmentProfile) {
    const auto run_with = [](std::uint32_t rate, std::uint32_t compatible_id,
                             std::optional<std::string> profiles, const std::string& brand) {
        auto movie =
            movie_of(hevc_prisma({hevc_sps(9, compatible_id == 1 ? 16 : 18, 9, rate)},
                                 mp4::prsm_config("pxvC", 8, rate > 60 ? 4 : 2, compatible_id)));
        movie.ftyp_box = mp4::ftyp("isom", {brand, "pb4h"});
        DashContext dash = resolved_dash();
        dash.segment_profiles = std::move(profiles);
        SampleRun run;
        run.dash = &dash;
        run.suffix = "init";
        SegmentSlot slot;
        slot.kind = kSlotMedia;
        static_cast<void>(run.walk(mp4::plain_file(movie), &slot));
        if (raised(run, 2026)) {
            return text_of(run, 2026);
        }
        return text_of(run, 2027);
    };
    EXPECT_EQ(run_with(25, 1, "chd1", "cmfc"), "");
    EXPECT_EQ(run_with(60, 1, "chd1", "cmfc"), "");
    EXPECT_EQ(run_with(61, 1, "chd2", "cmfc"), "");
    EXPECT_EQ(run_with(25, 4, "clg1", "cmf2"), "");
    EXPECT_EQ(run_with(100, 4, "clg2", "cmf2"), "");
    EXPECT_EQ(run_with(25, 1, std::nullopt, "iso6"), "");
    EXPECT_EQ(run_with(25, 1, std::nullopt, "cmfc"),
              "For a [Orvel Prisma] profile 8.1 stream, in the DASH manifest, if the segments are "
              "CMAF segments, the segmentProfiles attribute with the value chd1 should be "
              "indicated in the corresponding Representation [id:v1] or its parent AdaptationSet.");
    EXPECT_EQ(run_with(61, 4, "clg1", "cmfc"),
              "For a [Orvel Prisma] profile 8.4 stream, in the DASH manifest, if the segments are "
              "CMAF segments, the value of the segmentProfiles attribute in the corresponding "
              "Representation [id:v1] or its parent AdaptationSet should be clg2. ");
}

TEST(HevcRules, SpsWithoutTimingTakesTheContainersFrameRate) {
    testing::HevcSpsOptions options;
    options.width = 1280;
    options.height = 720;
    options.colour = testing::HevcColour{9, 16, 9};
    auto movie =
        movie_of(hevc_prisma({build_hevc_sps(options)}, mp4::prsm_config("pxvC", 8, 4, 1)));
    movie.ftyp_box = mp4::ftyp("isom", {"cmfc"});
    movie.tracks[0].samples[0].duration = 16;  // 62.5 frames a second
    DashContext dash = resolved_dash();
    dash.segment_profiles = "chd1";
    SampleRun run;
    run.dash = &dash;
    SegmentSlot slot;
    slot.kind = kSlotMedia;
    static_cast<void>(run.walk(mp4::plain_file(movie), &slot));
    EXPECT_TRUE(raised(run, 2027));
}

TEST(HevcRules, ConfigurationWithoutVpsIsHeldAgainstTheStreamsOnceAndTheOutputStays) {
    testing::HevcVpsOptions other;
    other.profile.level = 93;
    const Bytes vps = build_hevc_vps(other);
    const Bytes idr{0x26, 0x01, 0xAF};
    auto track = hevc_prisma({vps, kTrail}, mp4::prsm_config("pxvC", 8, 2, 1), "pxhe", false);
    track.samples.push_back(track.samples[0]);
    mp4::SampleSpec last;
    last.data = length_prefixed({idr});
    track.samples.push_back(last);
    ManifestContext context;
    SampleRun run;
    run.manifest = &context;
    run.suffix = "init";
    SegmentSlot slot;
    slot.kind = kSlotMedia;
    EXPECT_EQ(run.walk(mp4::plain_file(movie_of(track)), &slot), Status::kRuleBroken);
    EXPECT_TRUE(raised(run, 4210));
    // The units that go in stay those of the configuration.
    const Bytes sps = hevc_sps(9, 16, 9);
    EXPECT_EQ(run.output("in.out.265"), start_coded({vps, kTrail, vps, kTrail, sps, idr}));
    SampleRun plain;
    static_cast<void>(plain.walk(mp4::plain_file(movie_of(track))));
    EXPECT_FALSE(raised(plain, 4210));
    // An initialization section whose name has no extension gives no label; the rule is the same.
    SampleRun nameless;
    nameless.manifest = &context;
    EXPECT_EQ(nameless.walk(mp4::plain_file(movie_of(track)), &slot), Status::kRuleBroken);
    EXPECT_TRUE(raised(nameless, 4210));
}

TEST(HevcRules, DualLayerStreamComparesItsTwoLayersOnce) {
    const Bytes same = mp4::join({{0x7E, 0x01}, hevc_sps(2, 2, 2), {0x7E}});
    SampleRun run;
    static_cast<void>(run.walk(
        mp4::plain_file(movie_of(hevc_prisma({same, same}, mp4::prsm_config("pxcC", 4, 2))))));
    EXPECT_EQ(run.sink.count(4252), 1U);
    EXPECT_EQ(run.demuxer()->streams[0]->el_seen, 1U);
    testing::HevcSpsOptions half;
    half.width = 640;
    half.height = 360;
    const Bytes inner = mp4::join({{0x7E, 0x01}, build_hevc_sps(half), {0x7E}});
    SampleRun fits;
    static_cast<void>(
        fits.walk(mp4::plain_file(movie_of(hevc_prisma({inner}, mp4::prsm_config("pxcC", 4, 2))))));
    EXPECT_FALSE(raised(fits, 4252));
}

TEST(HevcRules, MetadataUnitOfADualLayerStreamIsNoted) {
    SampleRun run;
    static_cast<void>(run.walk(mp4::plain_file(
        movie_of(hevc_prisma({{0x7C, 0x01, 0x19}}, mp4::prsm_config("pxcC", 4, 2))))));
    EXPECT_EQ(run.demuxer()->streams[0]->rpu_seen, 1U);
}

// --- AV1 --------------------------------------------------------------------------------------

struct Sequence {
    std::uint32_t profile = 0;
    std::uint32_t level = 8;
    std::uint32_t tier = 0;
    bool high_bitdepth = true;
    bool monochrome = false;
    std::uint32_t primaries = 9;
    std::uint32_t transfer = 16;
    std::uint32_t matrix = 9;
    std::uint32_t chroma_position = 2;
    bool with_timing = false;
};

// Without the OBU header.
Bytes sequence_header(const Sequence& sequence) {
    testing::BitWriter out;
    out.u(sequence.profile, 3).u(0, 1).u(0, 1);
    out.flag(sequence.with_timing);
    if (sequence.with_timing) {
        out.u(1, 32).u(25, 32).flag(true).ue(3);          // timing_info
        out.flag(true).u(9, 5).u(1, 32).u(4, 5).u(4, 5);  // decoder_model_info
    }
    out.flag(sequence.with_timing);  // initial_display_delay_present_flag
    out.u(sequence.with_timing ? 1 : 0, 5);
    for (int i = 0; i <= (sequence.with_timing ? 1 : 0); ++i) {
        out.u(0, 12).u(sequence.level, 5);
        if (sequence.level > 7) {
            out.u(sequence.tier, 1);
        }
        if (sequence.with_timing) {
            out.flag(true).u(5, 10).u(6, 10).flag(false);
            out.flag(true).u(3, 4);
        }
    }
    out.u(10, 4).u(9, 4).u(1279, 11).u(719, 10).u(0, 1);
    out.u(0, 3);
    out.u(0, 4).flag(true).u(0, 2).flag(true).flag(true).u(6, 3);
    out.u(0, 3);
    out.flag(sequence.high_bitdepth).flag(sequence.monochrome).flag(true);
    out.u(sequence.primaries, 8).u(sequence.transfer, 8).u(sequence.matrix, 8);
    out.flag(false);
    if (!sequence.monochrome) {
        out.u(sequence.chroma_position, 2);
    }
    out.flag(false).trailing();
    return out.bytes();
}

Bytes obu(std::uint32_t type, const Bytes& payload) {
    return mp4::join(
        {{static_cast<std::uint8_t>(type << 3 | 2), static_cast<std::uint8_t>(payload.size())},
         payload});
}

// av1C of `sequence_header({})`: profile 0, level 8, tier 0, high bit depth, 4:2:0, position 2.
const Bytes kAv1C = mp4::box("av1C", {mp4::hex("81084e00")});
const Bytes kColr =
    mp4::box("colr", {mp4::text("nclx"), mp4::u16(9), mp4::u16(16), mp4::u16(9), mp4::u8(0)});
const Bytes kDelimiter{0x12, 0x00};

std::vector<int> av1_ids(const Bytes& data, std::vector<Bytes> boxes,
                         std::uint32_t md_compression = 0) {
    boxes.insert(boxes.begin(), kAv1C);
    boxes.push_back(mp4::prsm_config("pxvC", 10, 5, 1, md_compression));
    mp4::TrackSpec track;
    track.entries = {mp4::video_entry("av01", 1280, 720, {mp4::join(boxes)})};
    track.samples = {sample(data)};
    SampleRun run;
    static_cast<void>(run.walk(mp4::plain_file(movie_of(track))));
    EXPECT_EQ(run.output("in_track_id_1.out.obu"), data);
    return run.sink.ids();
}

TEST(Av1Rules, MatchingSequenceHeaderRaisesNothing) {
    Sequence sequence;
    EXPECT_EQ(av1_ids(mp4::join({kDelimiter, obu(1, sequence_header(sequence))}), {kColr}),
              std::vector<int>{});
    sequence.with_timing = true;
    EXPECT_EQ(av1_ids(mp4::join({kDelimiter, obu(1, sequence_header(sequence))}), {kColr}),
              std::vector<int>{});
}

TEST(Av1Rules, EachFieldThatDiffersFromTheConfigurationRaises4218) {
    const auto ids = [](const Sequence& sequence) {
        return av1_ids(mp4::join({kDelimiter, obu(1, sequence_header(sequence))}), {kColr});
    };
    Sequence level;
    level.level = 9;
    EXPECT_EQ(ids(level), std::vector<int>{4218});
    Sequence tier;
    tier.tier = 1;
    EXPECT_EQ(ids(tier), std::vector<int>{4218});
    Sequence depth;
    depth.high_bitdepth = false;
    EXPECT_EQ(ids(depth), std::vector<int>{4218});
    Sequence position;
    position.chroma_position = 1;
    EXPECT_EQ(ids(position), std::vector<int>{4218});
    Sequence monochrome;
    monochrome.monochrome = true;
    // Its chroma sample position reads as 0.
    EXPECT_EQ(ids(monochrome), (std::vector<int>{4218, 4218}));
}

TEST(Av1Rules, ColourBoxIsHeldAgainstTheSequenceHeader) {
    Sequence sequence;
    sequence.primaries = 1;
    EXPECT_EQ(av1_ids(obu(1, sequence_header(sequence)), {kColr}), std::vector<int>{4225});
    sequence.transfer = 1;
    sequence.matrix = 1;
    EXPECT_EQ(av1_ids(obu(1, sequence_header(sequence)), {kColr}),
              (std::vector<int>{4225, 4225, 4225}));
    EXPECT_EQ(av1_ids(obu(1, sequence_header({})), {}), std::vector<int>{4222});
}

TEST(Av1Rules, TileGroupOrPaddingFirstRaises4226) {
    EXPECT_EQ(av1_ids(mp4::join({obu(4, {1, 2}), obu(4, {1})}), {}), std::vector<int>{4226});
    EXPECT_EQ(av1_ids(obu(15, {0}), {}), std::vector<int>{4226});
    EXPECT_EQ(av1_ids(mp4::join({kDelimiter, obu(4, {1, 2}), obu(15, {0})}), {}),
              std::vector<int>{});
}

Bytes light_level(std::uint16_t max, std::uint16_t average) {
    return obu(5, mp4::join({mp4::u8(1), mp4::u16(max), mp4::u16(average), mp4::u8(0x80)}));
}

TEST(Av1Rules, LightLevelIsHeldAgainstItsBox) {
    const Bytes clli = mp4::box("clli", {mp4::u16(1000), mp4::u16(400)});
    EXPECT_EQ(av1_ids(mp4::join({kDelimiter, light_level(1000, 400)}), {clli}), std::vector<int>{});
    EXPECT_EQ(av1_ids(mp4::join({kDelimiter, light_level(999, 400)}), {clli}),
              std::vector<int>{4224});
    EXPECT_EQ(av1_ids(mp4::join({kDelimiter, light_level(1, 1)}), {clli}),
              (std::vector<int>{4224, 4224}));
    EXPECT_EQ(av1_ids(mp4::join({kDelimiter, light_level(1000, 400)}), {}), std::vector<int>{4221});
}

Bytes mastering_values(const std::vector<std::uint16_t>& primaries, std::uint32_t max,
                       std::uint32_t min) {
    Bytes out;
    for (const std::uint16_t value : primaries) {
        out = mp4::join({out, mp4::u16(value)});
    }
    return mp4::join({out, mp4::u32(max), mp4::u32(min)});
}

TEST(Av1Rules, MasteringColoursAreComparedPlaceByPlaceWithoutRemapping) {
    const std::vector<std::uint16_t> values{1, 2, 3, 4, 5, 6, 7, 8};
    const Bytes mdcv = mp4::box("mdcv", {mastering_values(values, 9, 10)});
    const auto unit = [](const Bytes& data) {
        return mp4::join({kDelimiter, obu(5, mp4::join({mp4::u8(2), data, mp4::u8(0x80)}))});
    };
    EXPECT_EQ(av1_ids(unit(mastering_values(values, 9, 10)), {mdcv}), std::vector<int>{});
    // The same colours in the unit's own order of red, green, blue.
    EXPECT_EQ(av1_ids(unit(mastering_values({5, 6, 1, 2, 3, 4, 7, 8}, 9, 10)), {mdcv}),
              std::vector<int>(6, 4223));
    EXPECT_EQ(av1_ids(unit(mastering_values(values, 8, 11)), {mdcv}),
              (std::vector<int>{4223, 4223}));
    EXPECT_EQ(av1_ids(unit(mastering_values(values, 9, 10)), {}), std::vector<int>{4220});
}

// A T.35 unit whose metadata header tells this compression value.
Bytes t35_unit(std::uint32_t compression, bool extended_country = false) {
    testing::BitWriter out;
    out.u(4, 8);
    if (extended_country) {
        out.u(255, 8);
    }
    out.u(extended_country ? 1 : 0xB5, 8);
    out.u(0, 64).u(0, 11);  // 75 bits
    out.u(1, 8).flag(true).u(1, 8).flag(false);
    out.u(2, 6).u(0, 11);     // type 2, format 0
    out.u(0, 8).flag(true);   // 4 + 4 bits, flag
    out.flag(false).u(1, 2);  // A 0, Q 1
    out.u(0, 3);
    out.ue(0).ue(0).ue(0);
    out.u(0, 2);
    out.u(compression, 3);
    out.u(0, 8).trailing();
    return mp4::join({kDelimiter, obu(5, out.bytes())});
}

TEST(Av1Rules, CompressionOfTheMetadataFitsTheConfiguration) {
    EXPECT_EQ(av1_ids(t35_unit(0), {}, 0), std::vector<int>{});
    EXPECT_EQ(av1_ids(t35_unit(1), {}, 0), std::vector<int>{4187});
    EXPECT_EQ(av1_ids(t35_unit(2, true), {}, 0), std::vector<int>{4187});
    EXPECT_EQ(av1_ids(t35_unit(0), {}, 3), std::vector<int>{});
    EXPECT_EQ(av1_ids(t35_unit(2), {}, 3), std::vector<int>{});
    EXPECT_EQ(av1_ids(t35_unit(1), {}, 3), std::vector<int>{4187});
    EXPECT_EQ(av1_ids(t35_unit(1), {}, 2), std::vector<int>{});
}

TEST(Av1Rules, CompressionOfConfiguration1IsJudgedAtTheEndByItsHighestValue) {
    EXPECT_EQ(av1_ids(t35_unit(1), {}, 1), std::vector<int>{});
    EXPECT_EQ(av1_ids(mp4::join({t35_unit(0), t35_unit(1)}), {}, 1), std::vector<int>{});
    EXPECT_EQ(av1_ids(t35_unit(0), {}, 1), std::vector<int>{4187});
    EXPECT_EQ(av1_ids(mp4::join({t35_unit(1), t35_unit(2)}), {}, 1), std::vector<int>{4187});
}

TEST(Av1Rules, UnitsAreWalkedByTheirSizeWhateverTheyClaim) {
    // A size beyond the sample, a unit without a size, an extension byte, a size of 8 bytes.
    EXPECT_EQ(av1_ids({0x12, 0x7F, 0x22, 0x00}, {}), std::vector<int>{});
    EXPECT_EQ(av1_ids(mp4::join({{0x10}, obu(4, {1})}), {}), std::vector<int>{});
    EXPECT_EQ(av1_ids(mp4::join({{0x16, 0x08, 0x00}, obu(1, sequence_header({}))}), {kColr}),
              std::vector<int>{});
    EXPECT_EQ(av1_ids({0x12, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x00, 0x32, 0x00}, {}),
              std::vector<int>{});
    EXPECT_EQ(av1_ids({0x12, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x32, 0x00}, {}),
              std::vector<int>{});
}

}  // namespace
}  // namespace mediasplit
