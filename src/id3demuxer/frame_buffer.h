// Frames gathered in one block of memory.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "src/commonfileio/input_file.h"

namespace mediasplit {

// Grows with the bytes that a file really delivers, whatever size it tells, and keeps its memory
// from one use to the next.
class FrameBuffer {
public:
    void append(std::span<const std::uint8_t> bytes);
    // Appends the next `count` bytes of the file, or all that are left. Returns their number.
    std::uint64_t append_from(InputFile& file, std::uint64_t count);
    void clear() { filled_ = 0; }
    [[nodiscard]] std::span<const std::uint8_t> bytes() const {
        return std::span(storage_).first(filled_);
    }
    [[nodiscard]] std::uint64_t size() const { return filled_; }

private:
    void make_room(std::uint64_t count);

    std::vector<std::uint8_t> storage_;
    std::uint64_t filled_ = 0;
};

}  // namespace mediasplit
