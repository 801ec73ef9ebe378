#include "tests/unit/fmp4demuxer/demux_run.h"

#include <stdlib.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>

#include "src/commonfileio/input_file.h"
#include "tests/support/mp4_input.h"

namespace fs = std::filesystem;

namespace mediasplit {

TempFolder::TempFolder() {
    std::string name = (fs::temp_directory_path() / "fmp4_test_XXXXXX").string();
    path_ = mkdtemp(name.data());
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::vector<std::uint8_t> read_file(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void write_file(const fs::path& path, const std::vector<std::uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary);
    for (const std::uint8_t byte : bytes) {
        out.put(static_cast<char>(byte));
    }
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
            writes ? std::optional<std::string>(folder.text()) : std::nullopt, base, suffix,
            manifest, dash, key_text, key_list, &create_status_, loglist.get(), track_filter);
    }
}

Status DemuxRun::walk(const mp4::Bytes& bytes, const SegmentSlot* slot) {
    make();
    mp4::MemoryInput input(bytes);
    input.file().name = "in.mp4";
    return fmp4demux(&input.file(), slot, demuxer_.get(), &timing_);
}

Status DemuxRun::walk_file(const fs::path& path) {
    make();
    InputFile file;
    if (OpenFileEx(path.string(), nullptr, 0, file) != Status::kOk) {
        return Status::kCantOpen;
    }
    const Status status = fmp4demux(&file, nullptr, demuxer_.get(), &timing_);
    return status | CloseFile(file);
}

Status DemuxRun::finish() {
    return fmp4demux_destroy(std::move(demuxer_));
}

std::optional<mp4::Bytes> DemuxRun::output(const std::string& name) {
    const fs::path path = folder.path() / name;
    if (!fs::exists(path)) {
        return std::nullopt;
    }
    return read_file(path);
}

std::vector<std::string> DemuxRun::output_names() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder.path())) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
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
