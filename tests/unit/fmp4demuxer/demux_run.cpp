#include "tests/unit/fmp4demuxer/demux_run.h"

#include <algorithm>
#include <array>

#include "src/commonfileio/input_file.h"
#include "src/dash_reader/dash_info.h"
#include "tests/support/mp4_input.h"

namespace fs = std::filesystem;

namespace mediasplit {

std::vector<std::uint8_t> file_bytes(const std::string& path) {
    const std::string text = read_file(path);
    return {text.begin(), text.end()};
}

std::unique_ptr<Loglist> run_loglist() {
    constexpr std::array<CheckpointText, 7> kActive{{
        {"210000"},
        {"330000"},
        {"430000"},
        {"310000"},
        {"410000"},
        {"440000"},
        {"450000"},
    }};
    return init_loglist(kActive.size(), kActive.data());
}

void DemuxRun::make() {
    if (demuxer_ == nullptr) {
        demuxer_ = fmp4demux_create(
            writes ? std::optional<std::string>(folder.path()) : std::nullopt, base, suffix,
            manifest, dash, key_text, key_list, &create_status_, loglist.get(), track_filter);
    }
}

Status DemuxRun::walk(const mp4::Bytes& bytes, const SegmentSlot* slot) {
    make();
    mp4::MemoryInput input(bytes);
    input.file().name = "in.mp4";
    return fmp4demux(&input.file(), slot, demuxer_.get(), &timing_);
}

Status DemuxRun::finish() {
    return fmp4demux_destroy(std::move(demuxer_));
}

std::optional<mp4::Bytes> DemuxRun::output(const std::string& name) {
    if (!fs::exists(folder.path(name))) {
        return std::nullopt;
    }
    return file_bytes(folder.path(name));
}

std::vector<std::string> DemuxRun::output_names() {
    return file_names(folder.path());
}

DashContext resolved_dash() {
    static const DashInfo kMpd{};
    static const DashPeriodInfo kPeriod{};
    static const DashAdaptationSetInfo kSet{};
    static const DashRepresentationInfo kRepresentation{};
    DashContext context;
    context.mpd = &kMpd;
    context.period = &kPeriod;
    context.adaptation_set = &kSet;
    context.representation = &kRepresentation;
    context.representation_id = "v1";
    return context;
}

mp4::Bytes length_prefixed(const std::vector<mp4::Bytes>& units, unsigned length_size) {
    mp4::Bytes out;
    for (const mp4::Bytes& unit : units) {
        for (unsigned i = length_size; i-- > 0;) {
            out.push_back(static_cast<std::uint8_t>(unit.size() >> (8 * i)));
        }
        out.insert(out.end(), unit.begin(), unit.end());
    }
    return out;
}

mp4::Bytes start_coded(const std::vector<mp4::Bytes>& units) {
    mp4::Bytes out;
    for (const mp4::Bytes& unit : units) {
        out.insert(out.end(), {0, 0, 0, 1});
        out.insert(out.end(), unit.begin(), unit.end());
    }
    return out;
}

mp4::SampleSpec sample(mp4::Bytes data, bool is_sync) {
    mp4::SampleSpec spec;
    spec.data = std::move(data);
    spec.is_sync = is_sync;
    return spec;
}

mp4::TrackSpec avc_track(std::uint32_t track_id, std::vector<mp4::SampleSpec> samples) {
    mp4::TrackSpec track;
    track.track_id = track_id;
    track.entries = {mp4::video_entry("avc1", 640, 360, {mp4::avcC({kAvcSps}, {kAvcPps})})};
    track.samples = std::move(samples);
    return track;
}

mp4::TrackSpec aac_track(std::uint32_t track_id, std::vector<mp4::SampleSpec> samples) {
    mp4::TrackSpec track;
    track.track_id = track_id;
    track.handler = "soun";
    track.time_scale = 44100;
    // AAC-LC, 44.1 kHz, stereo.
    track.entries = {mp4::audio_entry("mp4a", 2, 16, 44100, {mp4::esds({0x12, 0x10})})};
    track.samples = std::move(samples);
    return track;
}

}  // namespace mediasplit
