#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// The block of memory that is analysed, read like a file: word by word into one frame buffer, with
// the byte order found anew on each frame.

namespace mediasplit {

inline constexpr std::size_t kFrameBufferWords = 2048;  // the largest frame

inline constexpr int kFioReadError = 3;
inline constexpr int kFioBadSync = 5;

// Byte orders of a stream.
inline constexpr std::int16_t kOrderUnknown = -1;
inline constexpr std::int16_t kOrderWords = 0;  // 77 0B: words in the order of a little-endian host
inline constexpr std::int16_t kOrderFile = 1;   // 0B 77

struct FileBuffer {
    std::array<std::uint16_t, kFrameBufferWords> words{};  // the current frame, in host order
    bool eof = false;
    std::int16_t byte_order = kOrderUnknown;
    std::int64_t frames_done = 0;
    std::int64_t bytes_done = 0;
    std::int64_t bytes_left = 0;  // of the block, not yet copied
    std::size_t words_used = 0;   // words that hold something
};

// What the frame calls read: a buffer, its capacity and its valid words.
struct FrameDescriptor {
    const std::uint16_t* words = nullptr;
    std::uint16_t capacity = 0;
    std::uint16_t valid_words = 0;
};

// Starts on a block of `size` bytes.
void openfilebufs(std::uint32_t size, FileBuffer& file);

// Ends the work on a block. 0.
int closefilebufs();

// Sets a descriptor to an empty frame buffer.
void initbufdescriptors(const FileBuffer& file, FrameDescriptor& descriptor);

// Looks at the sync word at `next`. 0, with `byte_order` known, or `eof` set when nothing is left;
// kFioReadError for a single byte; kFioBadSync for any other word. A change of order gives a
// warning.
int detectbyteorder(const std::uint8_t* next, FileBuffer& file);

// Copies `count` words from `source` into the frame buffer at `offset` and turns them into host
// order. 0, with `eof` set when nothing is left; kFioReadError if less is left than asked for.
int readfilein(std::int64_t count, std::size_t offset, const std::uint8_t* source,
               FileBuffer& file);

// Swaps the bytes of each word.
void performbyterev(std::size_t count, std::uint16_t* words);

}  // namespace mediasplit
