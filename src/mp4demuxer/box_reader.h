// Reading of box contents: numbers straight from the file, and a reader that knows where the
// payload of a box ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "src/commonfileio/input_file.h"

namespace mediasplit {

// Big-endian numbers at the read position. Bytes behind the end of the file read as 0.
std::uint8_t f_src_read_u8(InputFile& file);
std::uint16_t f_src_read_u16(InputFile& file);
std::uint32_t f_src_read_u32(InputFile& file);
std::uint64_t f_src_read_u64(InputFile& file);

// Reads the next `size` bytes of a file as the payload of a box. Behind the end of the payload, or
// of the file, everything reads as 0 and the file's position stays.
class PayloadReader {
public:
    PayloadReader(InputFile& file, std::int64_t size);

    std::uint8_t u8() { return static_cast<std::uint8_t>(number(1)); }
    std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
    std::uint32_t u24() { return static_cast<std::uint32_t>(number(3)); }
    std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
    std::uint64_t u64() { return number(8); }
    void fill(std::span<std::uint8_t> out);
    void skip(std::uint64_t count);
    // Appends up to `count` bytes as far as payload and file go; memory grows with what arrives.
    void append_to(std::vector<std::uint8_t>& out, std::uint64_t count);
    // The rest of the payload, at most `most` bytes.
    std::vector<std::uint8_t> rest(std::uint64_t most);
    // Bytes of the payload not read yet.
    [[nodiscard]] std::uint64_t left() const { return left_; }

private:
    std::uint64_t number(std::size_t width);

    InputFile* file_;
    std::uint64_t left_;
};

// Reads bytes of memory from front to back; behind the end they are 0 and the position goes on.
class ByteReader {
public:
    explicit ByteReader(std::span<const std::uint8_t> data) : data_(data) {}

    std::uint8_t u8();
    std::uint16_t u16();
    std::uint32_t u32();
    void skip(std::uint64_t count) { position_ += count; }
    // The next `count` bytes as far as they are there.
    std::span<const std::uint8_t> take(std::uint64_t count);
    [[nodiscard]] std::uint64_t position() const { return position_; }
    [[nodiscard]] std::uint64_t size() const { return data_.size(); }
    [[nodiscard]] bool at_end() const { return position_ >= data_.size(); }

private:
    std::span<const std::uint8_t> data_;
    std::uint64_t position_ = 0;
};

// Big-endian numbers in tables. The caller keeps `at` inside.
inline std::uint32_t load_u32(const std::vector<std::uint8_t>& table, std::size_t at) {
    return static_cast<std::uint32_t>(table[at]) << 24 |
           static_cast<std::uint32_t>(table[at + 1]) << 16 |
           static_cast<std::uint32_t>(table[at + 2]) << 8 | table[at + 3];
}
inline std::uint64_t load_u64(const std::vector<std::uint8_t>& table, std::size_t at) {
    return static_cast<std::uint64_t>(load_u32(table, at)) << 32 | load_u32(table, at + 4);
}
void store_u32(std::vector<std::uint8_t>& table, std::size_t at, std::uint32_t value);
void append_u32(std::vector<std::uint8_t>& table, std::uint32_t value);
void append_u64(std::vector<std::uint8_t>& table, std::uint64_t value);

}  // namespace mediasplit
