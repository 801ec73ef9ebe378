#include "src/commonfileio/file_descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace mediasplit {
namespace {

// 0 for what isn't a regular file.
std::uint64_t regular_size(int descriptor) {
    struct stat info {};
    const bool is_regular = ::fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode);
    return is_regular ? static_cast<std::uint64_t>(info.st_size) : 0;
}

}  // namespace

FileDescriptor::FileDescriptor(int descriptor)
    : descriptor_(descriptor), size_at_open_(descriptor < 0 ? 0 : regular_size(descriptor)) {}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
        close();
        descriptor_ = std::exchange(other.descriptor_, -1);
        at_end_ = std::exchange(other.at_end_, false);
        size_at_open_ = other.size_at_open_;
        error_at_ = other.error_at_;
    }
    return *this;
}

std::uint64_t FileDescriptor::read(std::span<std::uint8_t> destination) {
    std::uint64_t done = 0;
    while (done < destination.size()) {
        const ssize_t got =
            ::read(descriptor_, destination.data() + done, destination.size() - done);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            at_end_ = true;
            if (got < 0 && !error_at_) {
                error_at_ = static_cast<std::uint64_t>(place());
            }
            break;
        }
        done += static_cast<std::uint64_t>(got);
    }
    return done;
}

bool FileDescriptor::seek_to(std::int64_t offset) {
    if (::lseek(descriptor_, offset, SEEK_SET) < 0) {
        return false;
    }
    at_end_ = false;
    return true;
}

bool FileDescriptor::seek_by(std::int64_t distance) {
    if (::lseek(descriptor_, distance, SEEK_CUR) < 0) {
        return false;
    }
    at_end_ = false;
    return true;
}

std::int64_t FileDescriptor::place() const {
    return ::lseek(descriptor_, 0, SEEK_CUR);
}

std::int64_t FileDescriptor::size() const {
    const std::int64_t here = place();
    if (here < 0) {
        return -1;
    }
    const off_t end = ::lseek(descriptor_, 0, SEEK_END);
    if (::lseek(descriptor_, here, SEEK_SET) < 0) {
        return -1;
    }
    return end;
}

std::optional<FileStretch> FileDescriptor::loss() const {
    if (descriptor_ < 0) {
        return std::nullopt;
    }
    if (error_at_) {
        // At least the byte that was asked for.
        return FileStretch{*error_at_, std::max(size_at_open_, *error_at_ + 1) - *error_at_};
    }
    const std::uint64_t end = regular_size(descriptor_);
    if (end >= size_at_open_) {
        return std::nullopt;
    }
    return FileStretch{end, size_at_open_ - end};
}

bool FileDescriptor::is_folder() const {
    struct stat info {};
    return descriptor_ >= 0 && ::fstat(descriptor_, &info) == 0 && S_ISDIR(info.st_mode);
}

void FileDescriptor::close() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
        descriptor_ = -1;
    }
    at_end_ = false;
}

FileDescriptor open_for_reading(const std::string& path) {
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    // A folder opens like a file, but there is nothing to be read from it.
    return file.is_folder() ? FileDescriptor{} : std::move(file);
}

}  // namespace mediasplit
