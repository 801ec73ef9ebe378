// What a playlist or a manifest says of one segment, kept as text until it is used.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "src/records/shared_text.h"

namespace mediasplit {

// A byte range as its decimal texts. `last_byte` comes from DASH manifests only.
struct ByteRangeText {
    std::optional<std::string> offset;
    std::optional<std::string> last_byte;
    std::optional<std::string> length;
};

// The #EXT-X-KEY state in force for a segment (RFC 8216 4.3.2.4). One tag speaks of any number of
// segments.
struct SegmentKeyText {
    SharedText method;
    SharedText uri;
    std::optional<std::string> iv;
};

// Values of SegmentSlot::kind.
inline constexpr std::uint32_t kSlotUnset = 0;
inline constexpr std::uint32_t kSlotWholeFile = 1;
inline constexpr std::uint32_t kSlotInitialization = 2;
inline constexpr std::uint32_t kSlotIndexed = 3;
inline constexpr std::uint32_t kSlotMedia = 4;
inline constexpr std::uint32_t kSlotMediaRange = 5;
inline constexpr std::uint32_t kSlotDiscontinuity = 6;
inline constexpr std::uint32_t kSlotEndOfList = 7;

// One entry of a media playlist or of a DASH segment list. The rare parts hang behind pointers: a
// playlist can have 100,000 of these.
struct SegmentSlot {
    std::optional<std::string> duration;  // seconds, as written; only media segments have one
    std::optional<std::string> uri;       // absolute address or path
    std::unique_ptr<ByteRangeText> byte_range;
    std::uint32_t kind = kSlotUnset;
    std::unique_ptr<SegmentKeyText> key;
};

}  // namespace mediasplit
