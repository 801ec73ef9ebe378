// The tags of a media playlist that make segments (RFC 8216 4.3.2).
#include <algorithm>
#include <charconv>
#include <cstdlib>

#include "src/hls/attribute_list.h"
#include "src/hls/playlist_reading.h"
#include "src/log/logging.h"
#include "src/util/address.h"
#include "src/util/text.h"

namespace mediasplit {

namespace {

constexpr std::size_t kIvDigits = 32;
// Characters ahead of the digits of an IV, "0x".
constexpr std::size_t kIvPrefix = 2;

// The end of the nearest range ahead of slot `index`; discontinuities don't count.
std::optional<std::string> end_of_previous_range(const PlaylistReading& reading,
                                                 std::size_t index) {
    const auto& slots = reading.playlist.slots;
    while (index > 0 && slots[index - 1].kind == kSlotDiscontinuity) {
        --index;
    }
    if (index == 0 || slots[index - 1].byte_range == nullptr) {
        return std::nullopt;
    }
    const ByteRangeText& range = *slots[index - 1].byte_range;
    return ultoa_(str2ulonglong(range.length) + str2ulonglong(range.offset));
}

void read_byte_range(PlaylistReading& reading, std::size_t index, std::string_view line) {
    const std::size_t colon = line.find(':');
    auto range = split_byte_range(colon == std::string_view::npos ? std::string_view{}
                                                                  : line.substr(colon + 1));
    if (!range->offset && !range->length->empty() && index > 0) {
        range->offset = end_of_previous_range(reading, index);
        if (!range->offset) {
            report_invalid(reading);  // nothing tells where the range starts
        }
    }
    SegmentSlot& slot = reading.playlist.slots[index];
    slot.kind = kSlotMediaRange;
    slot.byte_range = std::move(range);
}

// The number as 32 hexadecimal digits.
std::string iv_of_number(std::uint32_t number) {
    char digits[kIvDigits];
    const char* const end = std::to_chars(digits, digits + sizeof(digits), number, 16).ptr;
    const std::string_view text(digits, static_cast<std::size_t>(end - digits));
    return std::string(kIvDigits - text.size(), '0').append(text);
}

// The key goes to the initialization section ahead of the segment, if one is there.
void give_key(PlaylistReading& reading, std::size_t index) {
    const SegmentKeyText& key = reading.key;
    if (!key.method && !key.uri && !key.iv) {
        return;
    }
    auto& slots = reading.playlist.slots;
    if (index > 0 && slots[index - 1].kind == kSlotInitialization) {
        --index;
    }
    auto copy = std::make_unique<SegmentKeyText>(key);
    if (!copy->iv) {
        copy->iv = iv_of_number(reading.sequence_start + static_cast<std::uint32_t>(index));
    }
    slots[index].key = std::move(copy);
}

void read_iv(PlaylistReading& reading, std::string_view value) {
    std::vector<std::uint8_t> bytes;
    reading.status |= StringtoChars(value.substr(std::min(kIvPrefix, value.size())), bytes);
    reading.key.iv.reset();
    if (!bytes.empty()) {
        // Deliberate: the bytes count as a text, which ends at its first zero.
        const auto end = std::find(bytes.begin(), bytes.end(), std::uint8_t{0});
        reading.key.iv.emplace(bytes.begin(), end);
    }
}

}  // namespace

void read_map(PlaylistReading& reading, std::string_view text) {
    SegmentSlot* const slot = take_record(reading.playlist.slots, reading.slots_used);
    if (slot == nullptr) {
        return;
    }
    slot->kind = kSlotInitialization;
    // Deliberate: a comma in a quoted URI cuts it.
    PieceReader pieces(text, kUnlimitedPiece);
    while (const auto piece = pieces.next()) {
        const auto attribute = split_trimmed_attribute(*piece);
        if (!attribute) {
            continue;
        }
        if (attribute->name == "URI") {
            slot->uri = make_absolute(reading, without_quotes(attribute->value));
        } else if (attribute->name == "BYTERANGE") {
            slot->byte_range = split_byte_range(without_quotes(attribute->value));
            if (!slot->byte_range->offset && !slot->byte_range->length->empty()) {
                report_invalid(reading);  // nothing tells where the range starts
            }
        }
    }
}

void read_segment(PlaylistReading& reading, std::string_view text) {
    const std::size_t index = reading.slots_used;
    SegmentSlot* const slot = take_record(reading.playlist.slots, reading.slots_used);
    if (slot == nullptr) {
        return;
    }
    slot->kind = kSlotMedia;
    slot->duration = text.substr(0, text.find(','));
    auto line = next_line(reading);
    if (line && line->starts_with("#EXT-X-BYTERANGE")) {
        read_byte_range(reading, index, *line);
        line = next_line(reading);
    } else if (line && (line->starts_with("#EXT-X-PROGRAM-DATE-TIME:") ||
                        line->starts_with("#EXT-X-BITRATE:"))) {
        line = next_line(reading);
    }
    // Deliberate: whatever stands here now is the URI, be it a further tag.
    if (line) {
        slot->uri = make_absolute(reading, *line);
    }
    give_key(reading, index);
}

void read_key(PlaylistReading& reading, std::string_view text) {
    PieceReader pieces(text);
    while (const auto piece = pieces.next_quoted()) {
        const auto attribute = split_trimmed_attribute(*piece);
        if (!attribute) {
            continue;
        }
        if (attribute->name == "METHOD") {
            reading.key.method = SharedText(std::string(attribute->value));
        } else if (attribute->name == "URI") {
            const std::string_view uri = without_quotes(attribute->value);
            reading.key.uri = SharedText(uri.starts_with(kDataKey) ? std::string(uri)
                                                                   : make_absolute(reading, uri));
        } else if (attribute->name == "IV") {
            read_iv(reading, attribute->value);
        }
    }
}

void read_media_sequence(PlaylistReading& reading, std::string_view text) {
    auto& field = reading.playlist.media_sequence;
    field = text;
    // Modulo 2^32, 0 if no number is there.
    reading.sequence_start = static_cast<std::uint32_t>(std::strtoul(field->c_str(), nullptr, 10));
}

}  // namespace mediasplit
