#include "src/commonfileio/input_file.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "src/file_util/path_names.h"
#include "src/log/logging.h"
#include "src/util/address.h"
#include "src/util/fetched_files.h"
#include "src/util/fetcher.h"

namespace mediasplit {
namespace {

constexpr const char* kSourceName = "../../../../mediacheck2/src/commonfileio";
constexpr int kSeekLine = 373;

bool is_used_up(const InputFile& file) {
    return file.position >= file.filled;
}

// Makes room for `size` bytes at least. False if there is no memory for them.
bool reserve_buffer(InputFile& file, std::uint64_t size) {
    if (file.buffer.size() >= size) {
        return true;
    }
    try {
        file.buffer.resize(size);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

// Reads up to `size` bytes to the start of the buffer.
bool refill(InputFile& file, std::uint64_t size) {
    if (!reserve_buffer(file, size)) {
        return false;
    }
    file.filled = file.stream.read(std::span(file.buffer.data(), size));
    file.position = 0;
    file.refill_due = 0;
    return true;
}

// Fills the buffer as the last jump left it to the next read.
bool bring_in(InputFile& file) {
    return file.refill_due == 0 || refill(file, file.refill_due);
}

// What a fresh source reads first: just the range if it is shorter than a block.
std::uint64_t first_read_size(const InputFile& file) {
    if (file.range_active == 0) {
        return kInputBlockSize;
    }
    const std::int64_t left = std::max<std::int64_t>(file.range_left, 0);
    return std::min(static_cast<std::uint64_t>(left), kInputBlockSize);
}

// Whether the buffer begins with the range and holds what a fresh source reads of it.
bool holds_first_read(const InputFile& file) {
    const std::int64_t end = file.stream.place();
    return end >= 0 && end - static_cast<std::int64_t>(file.filled) == file.range_start &&
           (file.filled >= first_read_size(file) || file.stream.at_end());
}

Status fill_first(InputFile& file) {
    return refill(file, first_read_size(file)) ? Status::kOk : Status::kCantOpen;
}

// Copies out of the buffer without going past its end.
std::uint64_t deliver_buffered(std::uint8_t* destination, std::uint64_t count, InputFile& file) {
    const std::uint64_t size = std::min(count, file.filled - file.position);
    if (size != 0) {
        std::memcpy(destination, file.buffer.data() + file.position, size);
        file.position += size;
    }
    return size;
}

// The whole blocks of a request go straight to where they are wanted; the buffer counts as used up
// behind them, and the stream stands where the buffer ends.
std::uint64_t deliver_blocks(std::uint8_t* destination, std::uint64_t count, InputFile& file) {
    const std::uint64_t size = count - count % kInputBlockSize;
    file.position = 0;
    file.filled = 0;
    return size == 0 ? 0 : file.stream.read(std::span(destination, size));
}

// A request for exactly one block at a used-up buffer: a full block is passed over, a short one is
// delivered. Deliberate.
std::uint64_t pass_over_block(std::uint8_t* destination, InputFile& file) {
    if (!refill(file, kInputBlockSize) || file.filled == kInputBlockSize) {
        file.position = file.filled;
        return 0;
    }
    return deliver_buffered(destination, file.filled, file);
}

std::uint64_t deliver(std::uint8_t* destination, std::uint64_t count, InputFile& file) {
    std::uint64_t done = deliver_buffered(destination, count, file);
    if (done == count || file.stream.at_end()) {
        return done;
    }
    const std::uint64_t blocks = (count - done) - (count - done) % kInputBlockSize;
    const std::uint64_t got = deliver_blocks(destination + done, count - done, file);
    done += got;
    if (got == blocks && done != count && refill(file, kInputBlockSize)) {
        done += deliver_buffered(destination + done, count - done, file);
    }
    return done;
}

// What of a request lies inside the range.
std::uint64_t cut_to_range(std::uint64_t count, const InputFile& file) {
    if (file.range_active == 0) {
        return count;
    }
    const std::int64_t left = std::max<std::int64_t>(file.range_left, 0);
    return std::min(count, static_cast<std::uint64_t>(left));
}

void account(std::uint64_t delivered, InputFile& file) {
    file.offset += delivered;
    if (file.range_active != 0) {
        file.range_left -= static_cast<std::int64_t>(delivered);
    }
}

// Moves the stream so that the buffer begins `count` bytes behind its present position.
bool seek_stream(std::int64_t count, InputFile& file) {
    const auto position = static_cast<std::int64_t>(file.position);
    const auto filled = static_cast<std::int64_t>(file.filled);
    if (count > std::numeric_limits<std::int64_t>::max() - position) {
        return false;
    }
    const std::int64_t target = position + count;
    if (target >= 0 && target <= filled) {
        // At its very end the buffer stays as long as nothing is read, and the stream stands there.
        file.position = static_cast<std::uint64_t>(target);
        file.refill_due = target == filled ? kInputBlockSize : 0;
        return true;
    }
    if (target < std::numeric_limits<std::int64_t>::min() + filled ||
        !file.stream.seek_by(target - filled)) {
        return false;
    }
    // Where the next byte is read, or whether one is, isn't known yet.
    file.filled = 0;
    file.position = 0;
    file.refill_due = kInputBlockSize;
    return true;
}

}  // namespace

Status OpenFileEx(OptText path, const std::uint8_t* /*data*/, std::uint32_t /*size*/,
                  InputFile& file) {
    if (path) {
        if (!file.name) {
            file.name = path.str();
        }
        file.offset = 0;
        if (is_url(*path)) {
            mallocAndCreateUniqueFileName("segment", file.temp_name);
            if (url2file(path, file.temp_name) != 0) {
                return Status::kCantOpen;
            }
            file.stream = open_for_reading(*file.temp_name);
        } else {
            file.stream = open_for_reading(path.str());
        }
    }
    if (!file.stream) {
        return Status::kCantOpen;
    }
    if (file.range_start != 0 || file.offset != 0) {
        if (!file.stream.seek_to(file.range_start)) {
            return Status::kCantOpen;
        }
        file.offset = static_cast<std::uint64_t>(file.range_start);
    }
    if (file.range_active != 0 && file.range_left < 0) {
        return Status::kCantOpen;
    }
    return fill_first(file);
}

Status ReadFileExt(FileDescriptor stream, OptText temp_name, const std::uint8_t* data,
                   std::uint32_t size, OptText name, InputFile& file) {
    if (!file.name && name) {
        file.name = name.str();
    }
    file.offset = 0;
    if (temp_name) {
        file.temp_name = temp_name.str();
    }
    if (stream) {
        file.stream = std::move(stream);
        if (file.range_start != 0) {
            if (!file.stream.seek_to(file.range_start)) {
                return Status::kCantOpen;
            }
            file.offset = static_cast<std::uint64_t>(file.range_start);
        }
        return fill_first(file);
    }
    file.memory = data == nullptr ? std::span<const std::uint8_t>() : std::span(data, size);
    file.memory_size = size;
    file.filled = size;
    if (file.range_active != 0) {
        file.filled = static_cast<std::uint64_t>(file.range_start) +
                      static_cast<std::uint64_t>(file.range_left);
    }
    return Status::kOk;
}

Status ReOpenFileEx(InputFile& file) {
    if (!file.stream) {
        file.offset = static_cast<std::uint64_t>(file.range_start);
        file.filled = file.memory_size;
        if (file.range_active != 0) {
            file.filled = file.offset + static_cast<std::uint64_t>(file.range_left);
        }
        return Status::kOk;
    }
    if (holds_first_read(file)) {
        file.position = 0;
        file.refill_due = 0;
    } else if (!file.stream.seek_to(file.range_start) || fill_first(file) != Status::kOk) {
        return Status::kCantOpen;
    }
    file.offset = static_cast<std::uint64_t>(file.range_start);
    return Status::kOk;
}

Status CloseFile(InputFile& file) {
    if (file.stream) {
        file.buffer = RawBuffer{};
        file.stream.close();
    }
    if (file.temp_name && !file.temp_name->empty() && remove_fetched_file(*file.temp_name) != 0) {
        (void)Logging_err_type_check(nullptr, 11, LogContext{}, *file.temp_name,
                                     file.name.value_or(std::string()));
    }
    file.temp_name.reset();
    file.name.reset();
    file.range_start = 0;
    file.range_left = 0;
    file.position = 0;
    file.filled = 0;
    file.refill_due = 0;
    file.offset = 0;
    return Status::kOk;
}

Status close_whole_input(InputFile& file, Loglist* loglist) {
    Status status = Status::kOk;
    if (const std::optional<FileStretch> loss = file.stream.loss()) {
        status = Logging_err_type_check(loglist, 4065, {}, loss->start, loss->length,
                                        file.name.value_or(std::string()));
    }
    return status | CloseFile(file);
}

std::uint64_t ReadBytes(void* destination, std::uint64_t count, InputFile& file) {
    if (!file.stream || !bring_in(file) || file.buffer.empty() ||
        (is_used_up(file) && file.stream.at_end())) {
        return 0;
    }
    const std::uint64_t wanted = cut_to_range(count, file);
    auto* const bytes = static_cast<std::uint8_t*>(destination);
    std::uint64_t delivered = 0;
    if (is_used_up(file) && count == kInputBlockSize && wanted == count) {
        delivered = pass_over_block(bytes, file);
    } else {
        delivered = deliver(bytes, wanted, file);
    }
    account(delivered, file);
    return delivered;
}

std::span<const std::uint8_t> read_view(std::uint64_t count, InputFile& file) {
    if (!file.stream || !bring_in(file) || is_used_up(file) ||
        count > file.filled - file.position || cut_to_range(count, file) != count) {
        return {};
    }
    const auto view = std::span<const std::uint8_t>(file.buffer.data() + file.position, count);
    file.position += count;
    account(count, file);
    return view;
}

std::span<const std::uint8_t> read_block(InputFile& file) {
    if (!file.stream || file.buffer.empty() ||
        (is_used_up(file) && (file.stream.at_end() || !refill(file, kInputBlockSize)))) {
        return {};
    }
    return read_view(cut_to_range(file.filled - file.position, file), file);
}

Status SeekBytes(std::int64_t count, InputFile& file) {
    if (file.stream && !seek_stream(count, file)) {
        return Status::kCantOpen;
    }
    if (file.range_active != 0) {
        if (count > file.range_left) {
            // Reported only: the move stands and the result stays 0.
            (void)Logging_err_type_check(nullptr, 3008, LogContext{},
                                         file.name.value_or(std::string()), file.offset, count,
                                         kSourceName, kSeekLine);
        } else {
            // Unsigned, so that no distance overflows.
            file.range_left = static_cast<std::int64_t>(
                static_cast<std::uint64_t>(file.range_left) - static_cast<std::uint64_t>(count));
        }
    }
    file.offset += static_cast<std::uint64_t>(count);
    return Status::kOk;
}

void limit_read_ahead(std::uint64_t count, InputFile& file) {
    file.refill_due = std::min(file.refill_due, count);
}

std::int64_t FileSize(const InputFile& file) {
    return file.stream ? file.stream.size() : std::int64_t{file.memory_size};
}

Status Rewind(InputFile& file) {
    file.offset = 0;
    file.range_active = 0;
    file.range_start = 0;
    file.range_left = 0;
    if (!file.stream) {
        file.filled = file.memory_size;
        file.position = 0;
        return Status::kOk;
    }
    // The first read fills the buffer; what follows is often a jump to a range far from here.
    (void)file.stream.seek_to(0);
    file.filled = 0;
    file.position = 0;
    file.refill_due = kInputBlockSize;
    return Status::kOk;
}

}  // namespace mediasplit
