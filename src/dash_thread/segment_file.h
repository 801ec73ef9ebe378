// Bringing the segments of a Representation to local files.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "src/commonfileio/input_file.h"
#include "src/dash_reader/dash_player.h"
#include "src/log/loglist.h"
#include "src/log/status.h"

namespace mediasplit {

enum class SegmentFileResult : int {
    kReady = 0,
    kNoMore = 1,  // behind the last address
    kStop = 3,
};

// Closes `file` and opens the next segment in its place, `range` being the byte range as written. A
// segment behind an http(s) address is fetched first: three tries, half the manifest's
// minBufferTime between them (2052 for each that fails). A segment that can't be had raises 2009 if
// it is one of a template of equal durations, which may just have run past the last one, else 4063.
// `target` (seconds, may be null) is where to start. All reports are ORed into `status`.
SegmentFileResult get_segment_file(DashPlayer& player, const std::uint64_t* target, Status& status,
                                   InputFile& file, std::optional<std::string>& range,
                                   Loglist* loglist);

}  // namespace mediasplit
