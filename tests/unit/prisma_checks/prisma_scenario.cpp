#include "tests/unit/prisma_checks/prisma_scenario.h"

#include <algorithm>

#include "tests/support/mp4_input.h"
#include "tests/support/nal_builder.h"
#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

using mp4::Bytes;

// 1280 x 720, profile 100, level 31.
Bytes avc_sps(std::uint32_t rate) {
    testing::AvcSpsOptions options;
    options.profile_idc = 100;
    options.level_idc = 31;
    options.width_in_mbs = 80;
    options.height_in_map_units = 45;
    options.timing = testing::Fraction{1, 2 * rate};
    return testing::build_avc_sps(options);
}

Bytes hevc_config(const Scenario& scenario) {
    testing::HevcVpsOptions vps;
    vps.profile.idc = scenario.vps_profile;
    vps.profile.level = scenario.hevc_level;
    vps.max_layers_minus1 = scenario.vps_layers_minus1;
    testing::HevcSpsOptions sps;
    sps.width = 1280;
    sps.height = 720;
    sps.colour = testing::HevcColour{scenario.primaries, scenario.transfer, scenario.matrix};
    sps.timing = testing::Fraction{1, scenario.rate};
    Bytes box = mp4::hvcC({{32, {testing::build_hevc_vps(vps)}},
                           {33, {testing::build_hevc_sps(sps)}},
                           {34, {testing::build_hevc_pps()}}});
    box[9] = scenario.hevc_profile;
    box[20] = scenario.hevc_level;
    return box;
}

bool is_avc(const std::string& entry) {
    constexpr const char* kEntries[] = {"avc1", "avc3", "pxav", "pxa1", "pavc"};
    return std::find(std::begin(kEntries), std::end(kEntries), entry) != std::end(kEntries);
}

Bytes codec_box(const Scenario& scenario) {
    if (!scenario.has_codec_box) {
        return {};
    }
    if (scenario.entry == "av01" || scenario.entry == "pav1") {
        return mp4::box("av1C", {mp4::hex("81044C00")});
    }
    return is_avc(scenario.entry) ? mp4::avcC({avc_sps(scenario.rate)}, {{0x68, 0xEE}})
                                  : hevc_config(scenario);
}

Bytes prisma_box(const Scenario& s) {
    if (s.config_box.empty()) {
        return {};
    }
    const std::uint32_t word = s.profile << 17 | s.level << 11 | s.rpu << 10 |
                               s.enhancement_layer << 9 | s.base_layer << 8 | s.compatible_id << 4 |
                               s.md_compression << 2;
    return mp4::box(s.config_box,
                    {mp4::u8(s.major), mp4::u8(s.minor), mp4::u24(word), mp4::zeros(19)});
}

Bytes colour_box(const Scenario& s) {
    if (!s.colr) {
        return {};
    }
    return mp4::box("colr", {mp4::text(s.colr->type), mp4::u16(s.colr->primaries),
                             mp4::u16(s.colr->transfer), mp4::u16(s.colr->matrix), mp4::u8(0)});
}

void replace_type(Bytes& bytes, const std::string& from, const std::string& to) {
    const auto at = std::search(bytes.begin(), bytes.end(), from.begin(), from.end());
    if (at != bytes.end()) {
        std::copy(to.begin(), to.end(), at);
    }
}

}  // namespace

Scenario::Scenario() {
    mpd.xmlns_scte214 = "urn:scte:dash:scte214-extensions";
    mpd.periods.emplace_back();
    period().adaptation_sets.resize(2);
    period().representations.emplace_back();
    set().mimeType = "video/mp4";
    set().colour_primaries = {"x", "9"};
    set().matrix_coefficients = {"x", "9"};
    set().transfer_characteristics = {"x", "16"};
    representation().id = "v1";
    context.stream_index = 3;
    context.duplicate_index_text = "3, 4";
    context.hls_version = 12;
}

void Scenario::share(const std::string& codecs, std::uint32_t adaptation_set_index) {
    DashRepresentationInfo other;
    other.codecs = codecs;
    other.adaptation_set_index = adaptation_set_index;
    representation().shared_init_representations.push_back(other);
}

void Scenario::set_codecs(const std::string& codecs) {
    representation().codecs = codecs;
    context.codecs = codecs;
    context.variant_codecs = codecs;
}

void Scenario::set_supplement(const std::string& codec, const std::string& brand) {
    representation().supplementalCodecs = codec;
    representation().supplementalProfiles = brand;
    context.supplemental_codecs = codec + "/" + brand;
}

void Scenario::drop_supplement() {
    representation().supplementalCodecs.reset();
    representation().supplementalProfiles.reset();
    context.supplemental_codecs.reset();
}

namespace {

mp4::MovieSpec movie_of(const Scenario& s) {
    mp4::MovieSpec movie;
    movie.ftyp_box = mp4::ftyp("isom", s.brands);
    mp4::TrackSpec track;
    track.entries = {
        mp4::video_entry(s.entry, 1280, 720,
                         {codec_box(s), s.has_lhvC ? mp4::box("lhvC", {mp4::zeros(6)}) : Bytes{},
                          prisma_box(s), colour_box(s)})};
    if (!s.sample.empty()) {
        mp4::SampleSpec sample;
        sample.data = s.sample;
        sample.duration = 1000 / s.rate;
        track.samples = {sample};
    }
    movie.tracks = {track};
    return movie;
}

Bytes damaged(const Scenario& s, Bytes file) {
    if (!s.has_vmhd) {
        replace_type(file, "vmhd", "free");
    }
    replace_type(file, "vide", s.handler);
    return file;
}

}  // namespace

Bytes Scenario::bytes() const {
    return damaged(*this, mp4::plain_file(movie_of(*this)));
}

Bytes Scenario::initialization() const {
    return damaged(*this, mp4::initialization_segment(movie_of(*this)));
}

void ScenarioResult::take(const RecordingSink& sink) {
    for (const RecordedReport& report : sink.reports()) {
        ids.push_back(report.id);
        texts.push_back(report.text);
    }
    for (int id = 1010; id < 4499; ++id) {
        if (sink.was_evaluated(id)) {
            evaluated.insert(id);
        }
    }
}

bool ScenarioResult::raised(int id) const {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

std::string ScenarioResult::text(int id) const {
    const auto at = std::find(ids.begin(), ids.end(), id);
    return at == ids.end() ? std::string{} : texts[static_cast<std::size_t>(at - ids.begin())];
}

ScenarioResult run(Scenario scenario) {
    RecordingSink sink;
    std::vector<CheckpointText> list;
    for (const std::string& text : scenario.checkpoints) {
        CheckpointText entry{};
        std::copy(text.begin(), text.end(), entry.begin());
        list.push_back(entry);
    }
    const auto loglist = init_loglist(static_cast<std::uint32_t>(list.size()), list.data());
    DashContext dash;
    dash.mpd = &scenario.mpd;
    dash.period = &scenario.period();
    dash.adaptation_set = &scenario.set();
    dash.representation = &scenario.representation();
    scenario.context.is_iframe_stream = scenario.mode == kInputHlsIframe ? 1 : 0;
    const bool is_hls = scenario.mode == kInputHls || scenario.mode == kInputHlsIframe;
    Status status = Status::kOk;
    auto demuxer = fmp4demux_create(nullptr, nullptr, nullptr, is_hls ? &scenario.context : nullptr,
                                    scenario.mode == kInputDash ? &dash : nullptr, nullptr, nullptr,
                                    &status, loglist.get(), kAllTracks);
    const Bytes bytes = scenario.bytes();
    mp4::MemoryInput input(bytes);
    SegmentSlot slot;
    slot.kind = scenario.slot_kind;
    ScenarioResult result;
    result.status = fmp4demux(&input.file(), &slot, demuxer.get(), nullptr);
    static_cast<void>(fmp4demux_destroy(std::move(demuxer)));
    result.take(sink);
    return result;
}

Scenario profile_8(std::uint32_t mode) {
    Scenario s;
    s.mode = mode;
    s.set_codecs(kHevcCodec);
    s.set_supplement("pxhe.08.02", "pb1p");
    s.representation().segmentProfiles = "chd1";
    s.context.video_range = "PQ";
    return s;
}

Scenario profile_9(std::uint32_t mode) {
    Scenario s = profile_8(mode);
    s.entry = "avc1";
    s.profile = 9;
    s.compatible_id = 2;
    s.set_codecs(kAvcCodec);
    s.set_supplement("pxa1.09.02", "pb2g");
    s.context.video_range = "SDR";
    return s;
}

Scenario profile_10(std::uint32_t mode) {
    Scenario s = profile_8(mode);
    s.entry = "av01";
    s.profile = 10;
    s.colr = ColourBox{};
    s.set_codecs(kAv1Codec);
    s.set_supplement("pav1.10.02", "pb1p");
    return s;
}

Scenario profile_8_in_two(std::uint32_t mode) {
    Scenario s = profile_8(mode);
    s.set_codecs("pxhe.08.02");
    s.share(kHevcCodec, 1);
    s.context.duplicate_codecs_1 = kHevcCodec;
    return s;
}

Scenario profile_9_in_two(std::uint32_t mode) {
    Scenario s = profile_9(mode);
    s.set_codecs("pxa1.09.02");
    s.share(kAvcCodec, 1);
    s.context.duplicate_codecs_1 = kAvcCodec;
    return s;
}

Scenario profile_10_alone(std::uint32_t mode) {
    Scenario s = profile_10(mode);
    s.entry = "pav1";
    s.compatible_id = 0;
    s.set_codecs("pav1.10.02");
    s.drop_supplement();
    s.mpd.xmlns_scte214.reset();
    s.colr.reset();
    return s;
}

Scenario profile_5(std::uint32_t mode) {
    Scenario s;
    s.mode = mode;
    s.entry = "pxhe";
    s.config_box = "pxcC";
    s.profile = 5;
    s.compatible_id = 0;
    s.set_codecs("pxhe.05.02");
    s.context.video_range = "PQ";
    return s;
}

Scenario profile_4(std::uint32_t mode) {
    Scenario s = profile_5(mode);
    s.profile = 4;
    s.set_codecs("pxhe.04.02");
    return s;
}

Scenario profile_20(std::uint32_t mode) {
    Scenario s = profile_5(mode);
    s.profile = 20;
    s.major = 3;
    s.hevc_profile = 2;
    s.vps_profile = 2;
    s.context.req_video_layout = "CH-STEREO";
    return s;
}

Scenario newer_profile(std::uint32_t profile, std::uint32_t mode) {
    Scenario s;
    s.mode = mode;
    s.profile = profile;
    s.entry = profile == 32 ? "pavc" : "pxh8";
    s.config_box = "pxwC";
    s.compatible_id = 3;
    // Nothing is known of how manifests name these; the entry's family is looked for.
    s.set_codecs(profile == 32 ? "pavc.32.02" : "pxh1.34.02");
    return s;
}

}  // namespace mediasplit
