#include "src/id3demuxer/frame_buffer.h"

#include <algorithm>

namespace mediasplit {

namespace {

constexpr std::uint64_t kFirstSize = 0x8000;
// Well below the block size, of which no request may be.
constexpr std::uint64_t kPiece = 0x10000;

}  // namespace

void FrameBuffer::make_room(std::uint64_t count) {
    const std::uint64_t needed = filled_ + count;
    if (needed > storage_.size()) {
        storage_.resize(std::max({needed, 2 * storage_.size(), kFirstSize}));
    }
}

void FrameBuffer::append(std::span<const std::uint8_t> bytes) {
    make_room(bytes.size());
    std::copy(bytes.begin(), bytes.end(), storage_.begin() + static_cast<std::ptrdiff_t>(filled_));
    filled_ += bytes.size();
}

std::uint64_t FrameBuffer::append_from(InputFile& file, std::uint64_t count) {
    std::uint64_t done = 0;
    while (done < count) {
        const std::uint64_t piece = std::min(count - done, kPiece);
        make_room(piece);
        const std::uint64_t got = ReadBytes(storage_.data() + filled_, piece, file);
        filled_ += got;
        done += got;
        if (got < piece) {
            break;
        }
    }
    return done;
}

}  // namespace mediasplit
