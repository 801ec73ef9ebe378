#include "src/mp4demuxer/box_reader.h"

#include <algorithm>
#include <array>

namespace mediasplit {

namespace {

// Pieces in which large payloads are read. Below a block of the byte source, so that a piece is
// never of the one size that it passes over.
constexpr std::uint64_t kPiece = kInputBlockSize / 4;

// A number of `width` bytes, zeros for those that the file doesn't have. `ended`, if it isn't null,
// is set where nothing of it came.
std::uint64_t read_number(InputFile& file, std::size_t width, bool* ended = nullptr) {
    std::array<std::uint8_t, 8> bytes{};
    std::span<const std::uint8_t> view = read_view(width, file);
    if (view.empty()) {
        if (ReadBytes(bytes.data(), width, file) == 0 && ended != nullptr) {
            *ended = true;
        }
        view = std::span<const std::uint8_t>(bytes).first(width);
    }
    std::uint64_t value = 0;
    for (const std::uint8_t byte : view) {
        value = value << 8 | byte;
    }
    return value;
}

}  // namespace

std::uint8_t f_src_read_u8(InputFile& file) {
    return static_cast<std::uint8_t>(read_number(file, 1));
}

std::uint16_t f_src_read_u16(InputFile& file) {
    return static_cast<std::uint16_t>(read_number(file, 2));
}

std::uint32_t f_src_read_u32(InputFile& file) {
    return static_cast<std::uint32_t>(read_number(file, 4));
}

std::uint64_t f_src_read_u64(InputFile& file) {
    return read_number(file, 8);
}

PayloadReader::PayloadReader(InputFile& file, std::int64_t size)
    : file_(&file), left_(size > 0 ? static_cast<std::uint64_t>(size) : 0) {}

std::uint64_t PayloadReader::number(std::size_t width) {
    if (left_ >= width) [[likely]] {
        bool ended = false;
        const std::uint64_t value = read_number(*file_, width, &ended);
        // The payload of a cut file ends with the file, whatever size its box or its range tells.
        left_ = ended ? 0 : left_ - width;
        return value;
    }
    const std::size_t there = static_cast<std::size_t>(left_);
    left_ = 0;
    return there == 0 ? 0 : read_number(*file_, there) << 8 * (width - there);
}

void PayloadReader::fill(std::span<std::uint8_t> out) {
    std::fill(out.begin(), out.end(), std::uint8_t{0});
    const std::uint64_t count = std::min<std::uint64_t>(out.size(), left_);
    left_ -= count;
    ReadBytes(out.data(), count, *file_);
}

void PayloadReader::skip(std::uint64_t count) {
    count = std::min(count, left_);
    left_ -= count;
    static_cast<void>(SeekBytes(static_cast<std::int64_t>(count), *file_));
}

void PayloadReader::append_to(std::vector<std::uint8_t>& out, std::uint64_t count) {
    count = std::min(count, left_);
    while (count != 0) {
        const std::uint64_t piece = std::min(count, kPiece);
        const std::size_t before = out.size();
        out.resize(before + piece);
        const std::uint64_t got = ReadBytes(out.data() + before, piece, *file_);
        left_ -= got;
        count -= got;
        if (got < piece) {
            out.resize(before + got);
            return;
        }
    }
}

std::vector<std::uint8_t> PayloadReader::rest(std::uint64_t most) {
    std::vector<std::uint8_t> bytes;
    append_to(bytes, std::min(left_, most));
    return bytes;
}

std::uint8_t ByteReader::u8() {
    const std::uint64_t at = position_++;
    return at < data_.size() ? data_[at] : std::uint8_t{0};
}

std::uint16_t ByteReader::u16() {
    const unsigned high = u8();
    return static_cast<std::uint16_t>(high << 8 | u8());
}

std::uint32_t ByteReader::u32() {
    const std::uint32_t high = u16();
    return high << 16 | u16();
}

std::span<const std::uint8_t> ByteReader::take(std::uint64_t count) {
    const std::uint64_t begin = std::min<std::uint64_t>(position_, data_.size());
    const std::uint64_t there = std::min<std::uint64_t>(count, data_.size() - begin);
    position_ += count;
    return data_.subspan(begin, there);
}

void store_u32(std::vector<std::uint8_t>& table, std::size_t at, std::uint32_t value) {
    table[at] = static_cast<std::uint8_t>(value >> 24);
    table[at + 1] = static_cast<std::uint8_t>(value >> 16);
    table[at + 2] = static_cast<std::uint8_t>(value >> 8);
    table[at + 3] = static_cast<std::uint8_t>(value);
}

void append_u32(std::vector<std::uint8_t>& table, std::uint32_t value) {
    const std::size_t at = table.size();
    table.resize(at + 4);
    store_u32(table, at, value);
}

void append_u64(std::vector<std::uint8_t>& table, std::uint64_t value) {
    append_u32(table, static_cast<std::uint32_t>(value >> 32));
    append_u32(table, static_cast<std::uint32_t>(value));
}

}  // namespace mediasplit
