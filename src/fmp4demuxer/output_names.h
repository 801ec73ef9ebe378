// Names of elementary stream files.
#pragma once

#include <cstdint>
#include <string>

#include "src/log/status.h"
#include "src/mp4demuxer/records.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// Forms the output path of a track in `name`: from folder, base and track id for a plain file, from
// what the manifest says of the stream else. An I-frame stream gets no name. kFailed, with a
// message, for a missing argument (3006) or a name over 248 characters (4079).
[[nodiscard]] Status buildFullName_mp4(std::string* name, const Mp4Demuxer* demuxer,
                                       std::uint32_t stream_index, OptText extension,
                                       std::uint32_t stream_type);

// The path of a plain file's track, which tracks without a known codec have in all modes.
[[nodiscard]] std::string track_file_name(const Mp4Demuxer& demuxer, std::uint32_t stream_index,
                                          std::string_view extension);

}  // namespace mediasplit
