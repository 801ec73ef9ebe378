#include "src/file_util/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <mutex>

#include "src/log/logging.h"

namespace mediasplit {
namespace {

constexpr const char* kSourceName = "../../../../mediacheck2/src/file_util";
constexpr int kFileOpenLine = 342;
constexpr std::size_t kLongestPath = 4096;
constexpr std::size_t kBufferSize = 256 * 1024;
constexpr mode_t kFileMode = 0666;

iovec to_iovec(std::span<const std::uint8_t> bytes) {
    // The system reads through this pointer only.
    return {const_cast<std::uint8_t*>(bytes.data()), bytes.size()};
}

// What becomes of the paths of a run, for all threads.
struct ClaimedPaths {
    std::mutex mutex;
    std::unordered_set<std::string> paths;    // that some registry holds
    std::unordered_set<std::string> written;  // that some registry has opened in this run
};

ClaimedPaths& claimed_paths() {
    static ClaimedPaths claimed;
    return claimed;
}

// False if a registry holds the path already.
bool claim(const std::string& path) {
    ClaimedPaths& claimed = claimed_paths();
    const std::lock_guard lock(claimed.mutex);
    return claimed.paths.insert(path).second;
}

void release(const std::string& path) {
    ClaimedPaths& claimed = claimed_paths();
    const std::lock_guard lock(claimed.mutex);
    claimed.paths.erase(path);
}

bool is_written(const std::string& path) {
    ClaimedPaths& claimed = claimed_paths();
    const std::lock_guard lock(claimed.mutex);
    return claimed.written.contains(path);
}

void note_written(const std::string& path) {
    ClaimedPaths& claimed = claimed_paths();
    const std::lock_guard lock(claimed.mutex);
    claimed.written.insert(path);
}

// Flags of open() for a mode text of C streams; -1 for an unknown one.
int open_flags(std::string_view mode) {
    if (mode == "wb" || mode == "w") {
        return O_WRONLY | O_CREAT | O_TRUNC;
    }
    if (mode == "ab" || mode == "a") {
        return O_WRONLY | O_CREAT | O_APPEND;
    }
    return -1;
}

// The file was removed since it was opened: nobody will see its bytes.
bool is_gone(int descriptor) {
    struct stat info {};
    return ::fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode) && info.st_nlink == 0;
}

}  // namespace

bool OutputFile::write(std::span<const std::uint8_t> bytes) {
    if (failed_ || descriptor_ < 0) {
        return false;
    }
    written_ += bytes.size();
    if (bytes.size() > kBufferSize - used_) {
        // What waits and what comes leave in one call, without a copy.
        const std::span<const std::uint8_t> waiting(buffer_.get(), used_);
        used_ = 0;
        return write_through(waiting, bytes);
    }
    if (!buffer_) {
        buffer_ = std::make_unique_for_overwrite<std::uint8_t[]>(kBufferSize);
    }
    if (!bytes.empty()) {
        std::memcpy(buffer_.get() + used_, bytes.data(), bytes.size());
        used_ += bytes.size();
    }
    return true;
}

bool OutputFile::write_through(std::span<const std::uint8_t> first,
                               std::span<const std::uint8_t> second) {
    while (!first.empty() || !second.empty()) {
        const iovec parts[] = {to_iovec(first), to_iovec(second)};
        const ssize_t done = ::writev(descriptor_, parts, 2);
        if (done < 0 && errno == EINTR) {
            continue;
        }
        if (done <= 0) {
            failed_ = true;
            return false;
        }
        auto left = static_cast<std::size_t>(done);
        const std::size_t of_first = left < first.size() ? left : first.size();
        first = first.subspan(of_first);
        left -= of_first;
        second = second.subspan(left);
    }
    return true;
}

bool OutputFile::flush() {
    if (failed_ || descriptor_ < 0) {
        return !failed_;
    }
    const std::span<const std::uint8_t> waiting(buffer_.get(), used_);
    used_ = 0;
    return write_through(waiting, {});
}

bool OutputFile::close() {
    flush();
    if (descriptor_ >= 0) {
        failed_ = is_gone(descriptor_) || failed_;
        failed_ = ::close(descriptor_) != 0 || failed_;
        descriptor_ = -1;
        buffer_.reset();
    }
    return !failed_;
}

std::unique_ptr<OutputFile> fileOpen_lstr(OptText path, OptText mode) {
    if (!path || !mode) {
        (void)Logging_err_type_check(nullptr, 3006, LogContext{}, kSourceName, kFileOpenLine);
        return nullptr;
    }
    if (path->size() > kLongestPath) {
        (void)Logging_err_type_check(nullptr, 4079, LogContext{}, *path);
        return nullptr;
    }
    const int flags = open_flags(*mode);
    const int descriptor =
        flags < 0 ? -1 : ::open(path.str().c_str(), flags | O_CLOEXEC, kFileMode);
    if (descriptor < 0) {
        (void)Logging_err_type_check(nullptr, 4082, LogContext{}, *path);
        return nullptr;
    }
    note_output(*path);
    return std::make_unique<OutputFile>(descriptor);
}

void begin_outputs() {
    ClaimedPaths& claimed = claimed_paths();
    const std::lock_guard lock(claimed.mutex);
    claimed.written.clear();
}

OutputRegistry::~OutputRegistry() {
    for (const std::string& path : opened_) {
        release(path);
    }
}

std::unique_ptr<OutputFile> OutputRegistry::open(const std::string& path) {
    const bool is_new = !opened_.contains(path);
    if (is_new && !claim(path)) {
        (void)Logging_err_type_check(nullptr, 4082, LogContext{}, path);
        return nullptr;
    }
    auto file = fileOpen_lstr(path, is_new && !is_written(path) ? "wb" : "ab");
    if (file && is_new) {
        note_written(path);
        opened_.insert(path);
    } else if (is_new) {
        release(path);
    }
    return file;
}

}  // namespace mediasplit
