// What the manifest says of the stream that a demultiplexer serves.
#pragma once

#include <cstdint>

#include "src/dash_reader/dash_info.h"
#include "src/log/status.h"
#include "src/mp4demuxer/records.h"
#include "src/records/manifest_context.h"

namespace mediasplit {

// The manifest records of a demultiplexer's present position; all null for a plain file, and those
// of the other kind of manifest.
struct ManifestRecords {
    std::uint32_t mode = kInputFile;
    const DashInfo* mpd = nullptr;
    const DashPeriodInfo* period = nullptr;
    const DashAdaptationSetInfo* adaptation_set = nullptr;
    const DashRepresentationInfo* representation = nullptr;
    ManifestContext* context = nullptr;

    [[nodiscard]] bool is_dash() const { return mode == kInputDash; }
    [[nodiscard]] bool has_dash() const { return is_dash() && representation != nullptr; }
    [[nodiscard]] bool is_hls() const { return context != nullptr; }
};

// Looks the records up. A broken chain raises 3006, whose result is returned.
[[nodiscard]] Status find_manifest_records(const Mp4Demuxer& demuxer, ManifestRecords& records);

}  // namespace mediasplit
