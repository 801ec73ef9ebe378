// The ID3 tag ahead of packed audio.
#pragma once

#include <cstdint>
#include <optional>

#include "src/commonfileio/input_file.h"

namespace mediasplit {

// Reads the tag at the file's position as a whole (ID3 version 2.4 3.1) and returns the time stamp
// of its first frame, in ticks of 90 kHz (RFC 8216 3.4). None if the tag is damaged, empty or
// larger than 2 MiB, or begins with another frame.
[[nodiscard]] std::optional<std::uint64_t> read_id3_time_stamp(InputFile& file);

}  // namespace mediasplit
