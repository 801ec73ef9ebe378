// An open file of the system, closed by its owner's end.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace mediasplit {

// A stretch of a file, in bytes.
struct FileStretch {
    std::uint64_t start = 0;
    std::uint64_t length = 0;
};

// Owns one descriptor opened for reading and remembers, as a C stream would, that a read met the
// end of the file.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor);
    FileDescriptor(FileDescriptor&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)),
          at_end_(std::exchange(other.at_end_, false)),
          size_at_open_(other.size_at_open_),
          error_at_(other.error_at_) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { close(); }

    explicit operator bool() const { return descriptor_ >= 0; }
    // A read came back short since the last seek.
    [[nodiscard]] bool at_end() const { return at_end_; }

    // Fills `destination` as far as the file goes; returns the number of bytes read.
    std::uint64_t read(std::span<std::uint8_t> destination);
    // Moves to `offset` bytes from the start, or from the present place. False: not moved.
    bool seek_to(std::int64_t offset);
    bool seek_by(std::int64_t distance);
    // Bytes from the start to the present place; -1 if that can't be told.
    [[nodiscard]] std::int64_t place() const;
    // Size of the file in bytes with the place left alone; -1 if that isn't possible.
    [[nodiscard]] std::int64_t size() const;
    [[nodiscard]] bool is_folder() const;
    // What the file had when it was opened and can't be read any more: it has shrunk since, or a
    // read failed. None if all is well.
    [[nodiscard]] std::optional<FileStretch> loss() const;
    void close();

private:
    int descriptor_ = -1;
    bool at_end_ = false;
    std::uint64_t size_at_open_ = 0;  // 0 for what isn't a regular file
    std::optional<std::uint64_t> error_at_;
};

// Opens a file for reading; an empty descriptor if that fails, also for a folder.
FileDescriptor open_for_reading(const std::string& path);

}  // namespace mediasplit
