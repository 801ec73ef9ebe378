// Bytes of memory as the file that a reader of boxes wants.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "src/commonfileio/input_file.h"
#include "src/mp4demuxer/mp4demuxer.h"

namespace mediasplit::mp4 {

// An open input over a nameless file that holds `bytes`.
class MemoryInput {
public:
    explicit MemoryInput(std::span<const std::uint8_t> bytes);
    MemoryInput(const MemoryInput&) = delete;
    MemoryInput& operator=(const MemoryInput&) = delete;
    ~MemoryInput();

    [[nodiscard]] InputFile& file() { return file_; }

private:
    InputFile file_;
};

// A presentation with one walk over the bytes behind it.
std::unique_ptr<Mp4Demuxer> walk(std::span<const std::uint8_t> bytes);
// A further walk of the same presentation, as for the next segment.
void walk_again(Mp4Demuxer& demuxer, std::span<const std::uint8_t> bytes);

}  // namespace mediasplit::mp4
