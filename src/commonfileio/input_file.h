// The byte source of all demultiplexers: one file, or a byte range of one, read through a buffer of
// 1 MiB. The file may be a temporary copy of a downloaded segment, removed when the source closes.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "src/commonfileio/file_descriptor.h"
#include "src/commonfileio/raw_buffer.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// Size of a block read from a file.
inline constexpr std::uint64_t kInputBlockSize = 0x100000;

// Belongs to one thread. A fresh record is closed; set the three range fields before opening to
// read only a part. A record that is used again for another file is assigned `InputFile{}` first.
struct InputFile {
    FileDescriptor stream;     // none for a memory source
    std::uint64_t offset = 0;  // absolute place in the file of the next byte
    RawBuffer buffer;
    std::span<const std::uint8_t> memory;  // the caller's bytes, for a memory source
    std::uint64_t filled = 0;              // valid bytes in the buffer
    std::uint64_t position = 0;            // next byte in the buffer
    std::uint64_t refill_due = 0;          // bytes to fill the buffer with before the next read
    std::uint32_t range_active = 0;        // 1: only the range is read
    std::int64_t range_start = 0;          // first byte of the range
    std::int64_t range_left = 0;           // bytes of the range still unread
    std::optional<std::string> name;       // the input as the user or the manifest names it
    std::uint32_t memory_size = 0;
    std::optional<std::string> temp_name;  // local path of the downloaded copy
};

// Opens `path`, fetching it into the folder "tmp" first if it is an http(s) address; with no path
// the stream already set is used. `data` and `size` are not used. `name` is kept if it is set.
// Status::kCantOpen without a message if the file can't be fetched, opened or positioned.
Status OpenFileEx(OptText path, const std::uint8_t* data, std::uint32_t size, InputFile& file);

// Adopts an open stream, or with none the `size` bytes at `data`, which stay the caller's.
// `temp_name`, if given, is the file that CloseFile removes. Status::kCantOpen if the start of the
// range can't be reached.
Status ReadFileExt(FileDescriptor stream, OptText temp_name, const std::uint8_t* data,
                   std::uint32_t size, OptText name, InputFile& file);

// Goes back to the start of the range, with the range fields as they now stand. What the buffer
// holds of the range isn't read again.
Status ReOpenFileEx(InputFile& file);

// Closes the file and removes its temporary copy (message 11 if that fails). Always Status::kOk;
// `range_active` stays as it was.
Status CloseFile(InputFile& file);

// CloseFile, and 4065 if bytes of the file have gone or couldn't be read since it was opened: then
// its streams aren't whole.
Status close_whole_input(InputFile& file, Loglist* loglist);

// Delivers up to `count` bytes; less at the end of the range or of the file. Returns the number of
// bytes delivered. A memory source delivers nothing.
// Deliberate: a request of exactly 0x100000 bytes that meets a used-up buffer passes over one full
// block and delivers nothing. A caller that needs that many bytes asks in two requests.
std::uint64_t ReadBytes(void* destination, std::uint64_t count, InputFile& file);

// As ReadBytes of `count` bytes, but shows them in place if they lie in the buffer as a whole.
// Otherwise the result is empty, nothing has moved, and ReadBytes does it. The view holds until the
// next call for this file.
std::span<const std::uint8_t> read_view(std::uint64_t count, InputFile& file);

// Shows and passes what the buffer holds, which is filled again first if it is used up: a block at
// the most. Empty at the end of the range or of the file, and for a memory source. The view holds
// until the next call for this file.
std::span<const std::uint8_t> read_block(InputFile& file);

// Moves by `count` bytes, usually forward. Status::kCantOpen, with nothing changed, if the file
// can't be positioned there. Leaving the range raises 3008 but moves all the same. Bytes outside of
// the buffer are read when they are asked for.
Status SeekBytes(std::int64_t count, InputFile& file);

// Tells that of the bytes behind the last jump no more than `count` are wanted for now: the read
// that brings them in takes no more.
void limit_read_ahead(std::uint64_t count, InputFile& file);

// Absolute place in the file of the next byte.
inline std::uint64_t CurrentOffset(const InputFile& file) {
    return file.offset;
}

// Size in bytes of the whole file, whatever the range; -1 if it can't be told.
std::int64_t FileSize(const InputFile& file);

// Back to the first byte of the file, without a range from now on. Always Status::kOk.
Status Rewind(InputFile& file);

}  // namespace mediasplit
