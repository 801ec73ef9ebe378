// The output files of one demultiplexer: one slot a track, tracks of the same path share a file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "src/file_util/output_file.h"
#include "src/log/status.h"
#include "src/mp4demuxer/records.h"

namespace mediasplit {

// What a demultiplexer knows of the paths behind its slots.
struct OutputSet {
    OutputRegistry own_registry;
    OutputRegistry* registry = nullptr;  // of the job, or null for the own one
    std::unordered_map<std::string, std::shared_ptr<OutputFile>> open_files;
};

// Makes one slot for each track, keeping those that are there.
void size_output_slots(Mp4Demuxer& demuxer);

// Opens `path` for a track's slot if the slot is empty. A track whose path another track of the
// presentation writes shares that file. kFailed beside message 4082 when it can't be opened.
[[nodiscard]] Status open_output(Mp4Demuxer& demuxer, std::uint32_t stream_index,
                                 const std::string& path);

// Hands what the files have gathered to the system. A file that fails raises 4085 once.
[[nodiscard]] Status flush_outputs(Mp4Demuxer& demuxer);

// Closes all files; kFailed if the end of one couldn't be written.
[[nodiscard]] Status close_outputs(Mp4Demuxer& demuxer);

}  // namespace mediasplit
