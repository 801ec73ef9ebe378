// Files that elementary streams are written to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <unordered_set>

#include "src/util/opt_text.h"

namespace mediasplit {

// A file written in large pieces. The first error is remembered and everything behind it is
// dropped: what stands on the disk then is a clean beginning.
class OutputFile {
public:
    // Adopts an open descriptor.
    explicit OutputFile(int descriptor) : descriptor_(descriptor) {}
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile() { close(); }

    // False as soon as anything couldn't be written.
    bool write(std::span<const std::uint8_t> bytes);
    // Hands everything to the system.
    bool flush();
    // Flushes and closes; further calls change nothing. True if every byte was written and the file
    // is still there.
    bool close();
    [[nodiscard]] bool failed() const { return failed_; }
    // Bytes taken by write() so far.
    [[nodiscard]] std::uint64_t bytes_written() const { return written_; }

private:
    bool write_through(std::span<const std::uint8_t> first, std::span<const std::uint8_t> second);

    int descriptor_ = -1;
    std::unique_ptr<std::uint8_t[]> buffer_;
    std::size_t used_ = 0;
    std::uint64_t written_ = 0;
    bool failed_ = false;
};

// Opens `path` for writing: mode "wb" creates it anew, "ab" adds to it. None and a message if that
// fails: 3006 for a missing argument, 4079 for a path of more than 4096 characters, else 4082.
std::unique_ptr<OutputFile> fileOpen_lstr(OptText path, OptText mode);

// Begins a run: what registries opened before it doesn't count, so that their files are created
// anew. To be called while no registry is in use.
void begin_outputs();

// The output paths that one stream's job has opened in this run: the first open of the run creates
// the file anew, later ones add to it, be they of this job or of one behind it, so that nothing
// written in a run is thrown away. A path belongs to the job that opened it for as long as that
// job's registry lives: streams side by side whose names are the same don't write into each other.
class OutputRegistry {
public:
    OutputRegistry() = default;
    OutputRegistry(OutputRegistry&& other) noexcept { opened_.swap(other.opened_); }
    OutputRegistry& operator=(OutputRegistry&& other) noexcept {
        opened_.swap(other.opened_);
        return *this;
    }
    ~OutputRegistry();

    // fileOpen_lstr, with "wb" the first time in the run that any registry is asked for the path
    // and "ab" afterwards. A path that couldn't be opened counts as not opened. None and 4082 for a
    // path of another registry.
    // Registries may be used from several threads, each from one.
    std::unique_ptr<OutputFile> open(const std::string& path);

private:
    std::unordered_set<std::string> opened_;
};

}  // namespace mediasplit
