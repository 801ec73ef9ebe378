// Runs the track driver over bytes of memory and shows what came out.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "src/fmp4demuxer/fmp4demux.h"
#include "tests/support/mp4_builder.h"
#include "tests/support/recording_sink.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {

// The bytes of a file, none if it can't be read.
std::vector<std::uint8_t> file_bytes(const std::string& path);

// A collector with the checkpoint list of every run.
std::unique_ptr<Loglist> run_loglist();

// One demultiplexer with an output folder, and all that it reports. Set the options, then walk.
class DemuxRun {
public:
    DemuxRun() = default;

    // Options of the demultiplexer.
    std::optional<std::string> base = "in";
    std::optional<std::string> suffix{};
    std::optional<std::string> key_text{};
    std::optional<std::string> key_list{};
    ManifestContext* manifest = nullptr;
    DashContext* dash = nullptr;
    std::uint32_t track_filter = kAllTracks;
    bool writes = true;

    // Walks the bytes as one file or segment; the first call makes the demultiplexer.
    Status walk(const mp4::Bytes& bytes, const SegmentSlot* slot = nullptr);
    // Closes the outputs.
    Status finish();

    [[nodiscard]] Mp4Demuxer* demuxer() { return demuxer_.get(); }
    void make();
    [[nodiscard]] Status create_status() const { return create_status_; }
    [[nodiscard]] SegmentTiming* timing() { return timing_.get(); }

    // Content of an output file, with everything written so far.
    std::optional<mp4::Bytes> output(const std::string& name);
    std::vector<std::string> output_names();

    RecordingSink sink;
    std::unique_ptr<Loglist> loglist = run_loglist();
    TempFolder folder;

private:
    std::unique_ptr<Mp4Demuxer> demuxer_;
    std::unique_ptr<SegmentTiming> timing_;
    Status create_status_ = Status::kOk;
};

// A Representation "v1" whose records are there and empty.
DashContext resolved_dash();

// NAL units behind four length bytes.
mp4::Bytes length_prefixed(const std::vector<mp4::Bytes>& units, unsigned length_size = 4);
// NAL units behind start codes.
mp4::Bytes start_coded(const std::vector<mp4::Bytes>& units);

mp4::TrackSpec avc_track(std::uint32_t track_id, std::vector<mp4::SampleSpec> samples);
mp4::TrackSpec aac_track(std::uint32_t track_id, std::vector<mp4::SampleSpec> samples);
mp4::SampleSpec sample(mp4::Bytes data, bool is_sync = true);

// The parameter sets of avc_track.
inline const mp4::Bytes kAvcSps{0x67, 0x64, 0x00, 0x1F, 0xAC};
inline const mp4::Bytes kAvcPps{0x68, 0xEE, 0x3C, 0x80};

}  // namespace mediasplit
