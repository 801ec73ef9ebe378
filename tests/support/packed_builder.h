// Builds segments of packed audio: the ID3 tag of RFC 8216 3.4 and what stands behind it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <vector>

namespace mediasplit {

using Bytes = std::vector<std::uint8_t>;

Bytes joined(std::initializer_list<Bytes> parts);
Bytes repeated(const Bytes& part, std::size_t count);

// The tag with a time stamp, and `extra` bytes of other frames behind it.
Bytes id3_tag(std::uint64_t time_stamp, std::size_t extra = 0);
// A tag of this content, with the size told, or its own.
Bytes id3_tag_of(const Bytes& content, std::optional<std::uint32_t> size = std::nullopt);
// The PRIV frame of the time stamp.
Bytes time_stamp_frame(std::uint64_t time_stamp);

}  // namespace mediasplit
