// What the manifest says of the stream that a demultiplexer serves.
#pragma once

#include <cstdint>

#include "src/dash_reader/dash_info.h"
#include "src/log/status.h"
#include "src/mp4demuxer/records.h"
#include "src/records/manifest_context.h"

namespace mediasplit {

// Resolves the manifest records of the demultiplexer's present position into the arguments, each of
// which may be null. A Representation whose chain of records is broken raises 3006; a plain file
// has no records.
[[nodiscard]] Status get_input_manifest_info(const Mp4Demuxer* demuxer, const DashInfo** mpd,
                                             const DashPeriodInfo** period,
                                             const DashAdaptationSetInfo** adaptation_set,
                                             const DashRepresentationInfo** representation,
                                             ManifestContext** manifest_context, Loglist* loglist);

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

// Looks all of them up. A broken chain raises 3006, whose result is returned.
[[nodiscard]] Status find_manifest_records(const Mp4Demuxer& demuxer, ManifestRecords& records);

}  // namespace mediasplit
