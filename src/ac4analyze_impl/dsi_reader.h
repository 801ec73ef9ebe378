#pragma once

#include <cstdint>
#include <string>

#include "base/xml_tree.h"
#include "src/util/bit_reader.h"

namespace mediasplit {

// An element of a fixed width: its name in the tree and its place in the record.
template <typename Record>
struct DsiElement {
    const char* name;
    std::uint32_t width;  // bits, at most 32
    std::uint32_t Record::*member;
};

// Reads elements by position and never past the end: an element that isn't there wholly keeps what
// it held, isn't put into the tree and fails this call and all later ones.
class DsiReader {
public:
    explicit DsiReader(ByteSpan data, std::uint64_t position = 0);

    // A value, which also goes into the tree.
    bool value(std::uint32_t width, const char* name, std::uint32_t* out, Ezxml* node);
    // A value that stays out of the tree.
    bool peel(std::uint32_t width, std::uint32_t* out);
    // Bits that are dropped.
    bool skip(std::uint64_t bits);
    // `count` bytes.
    bool bytes(std::uint32_t count, std::string* out);
    // Up to a multiple of 8 bits behind `start`.
    bool align(std::uint64_t start);
    // Moves forward to a position, or to the end of the data if that comes first. What lies behind
    // stays behind.
    void jump(std::uint64_t position);

    template <typename Record>
    bool value(const DsiElement<Record>& element, Record* record, Ezxml* node) {
        return value(element.width, element.name, &(record->*element.member), node);
    }
    template <typename Record, std::size_t kCount>
    bool values(const DsiElement<Record> (&elements)[kCount], Record* record, Ezxml* node) {
        for (const DsiElement<Record>& element : elements) {
            if (!value(element, record, node)) {
                return false;
            }
        }
        return true;
    }

    [[nodiscard]] std::uint64_t position() const { return position_; }
    [[nodiscard]] std::uint64_t bits_left() const { return size_ - position_; }
    [[nodiscard]] bool failed() const { return failed_; }

private:
    bool claim(std::uint64_t bits);

    ByteSpan data_;
    std::uint64_t size_ = 0;      // bits
    std::uint64_t position_ = 0;  // bits
    bool failed_ = false;
};

}  // namespace mediasplit
