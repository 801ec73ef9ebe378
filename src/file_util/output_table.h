// The output files of one transport stream.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "src/file_util/output_file.h"
#include "src/log/status.h"

namespace mediasplit {

struct OutputEntry {
    std::uint32_t kind = 0;  // 0: not in use
    std::uint64_t stream_id = 0;
    std::string path;
    std::unique_ptr<OutputFile> file;
};

// Up to ten files of kind 1, and one of kind 2 beside them.
struct OutputTable {
    OutputEntry separate;
    std::array<OutputEntry, 10> entries;
    std::uint32_t kind_1_count = 0;
    std::uint32_t kind_2_count = 0;
    std::uint32_t truncate = 0;          // 1: files are created anew, 0: added to
    OutputRegistry* registry = nullptr;  // decides in its place, if there is one
};

// Opens the file of a stream: `kind` 1 takes the next entry, `kind` 2 the separate one.
// Status::kCantOpen and message 4081 if it can't be opened; the same without a message if all
// entries are in use.
Status ioOpenFile(OptText path, std::uint32_t kind, std::uint64_t stream_id, OutputTable& table);

// Closes all files of the table. False, and message 4081 for each file that couldn't be written as
// a whole.
bool ioCloseFiles(OutputTable& table);

// Writes the bytes if there is a file; write errors stay with the file. Always Status::kOk.
Status ioWritePESDataPacket(std::span<const std::uint8_t> data, OutputFile* file);

}  // namespace mediasplit
