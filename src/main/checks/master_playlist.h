// Rules of HLS master playlists, and what of one is to be followed.
#pragma once

#include <cstdint>

#include "src/hls/playlist_record.h"
#include "src/log/loglist.h"
#include "src/log/status.h"

namespace mediasplit {

// Checks the records of a master playlist and fills their derived fields: which streams and
// renditions are followed, which belong together, and in which timing group, numbered from 1 to
// `group_count`, they are. Returns the OR of the reports' results. A playlist that is no master
// stays as it is, `group_count` too.
[[nodiscard]] Status master_manifest_validation(PlaylistRecord& playlist, Loglist* loglist,
                                                std::uint32_t& group_count);

}  // namespace mediasplit
