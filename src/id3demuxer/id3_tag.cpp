#include "src/id3demuxer/id3_tag.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "src/id3demuxer/frame_buffer.h"

namespace mediasplit {

namespace {

constexpr std::uint64_t kTagHeaderSize = 10;
constexpr std::size_t kTagSizeAt = 6;
constexpr std::uint64_t kMaxTagSize = 0x200000;

constexpr std::size_t kOwnerAt = 10;  // behind the frame's own header
// With its ending zero.
constexpr char kOwnerText[] = "com.apple.streaming.transportStreamTimestamp";
constexpr std::string_view kOwner{kOwnerText, sizeof kOwnerText};
constexpr std::size_t kTimeStampAt = kOwnerAt + kOwner.size();
constexpr std::size_t kTimeStampSize = 8;

bool has_text(std::span<const std::uint8_t> bytes, std::size_t at, std::string_view text) {
    return bytes.size() >= at + text.size() &&
           std::equal(
               text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at),
               [](char c, std::uint8_t byte) { return static_cast<unsigned char>(c) == byte; });
}

// A number of bytes that each have `bits` bits.
std::uint64_t number(std::span<const std::uint8_t> bytes, unsigned bits) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes) {
        value = value << bits | (byte & ((1U << bits) - 1));
    }
    return value;
}

}  // namespace

std::optional<std::uint64_t> read_id3_time_stamp(InputFile& file) {
    FrameBuffer buffer;
    if (buffer.append_from(file, kTagHeaderSize) != kTagHeaderSize ||
        !has_text(buffer.bytes(), 0, "ID3")) {
        return std::nullopt;
    }
    const std::uint64_t size = number(buffer.bytes().subspan(kTagSizeAt, 4), 7);
    if (size == 0 || size > kMaxTagSize) {
        return std::nullopt;
    }
    buffer.clear();
    if (buffer.append_from(file, size) != size) {
        return std::nullopt;
    }
    const std::span<const std::uint8_t> tag = buffer.bytes();
    if (!has_text(tag, 0, "PRIV") || !has_text(tag, kOwnerAt, kOwner) ||
        tag.size() < kTimeStampAt + kTimeStampSize) {
        return std::nullopt;
    }
    return number(tag.subspan(kTimeStampAt, kTimeStampSize), 8);
}

}  // namespace mediasplit
