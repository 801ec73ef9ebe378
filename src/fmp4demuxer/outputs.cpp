#include "src/fmp4demuxer/outputs.h"

#include <algorithm>
#include <limits>

#include "src/log/logging.h"

namespace mediasplit {
namespace {

OutputSet& output_set(Mp4Demuxer& demuxer) {
    if (demuxer.outputs == nullptr) {
        demuxer.outputs = std::make_shared<OutputSet>();
    }
    return *demuxer.outputs;
}

// The bytes a file has taken, as the messages give sizes.
std::int32_t taken_bytes(const OutputFile& file) {
    constexpr std::uint64_t kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(file.bytes_written(), kMost));
}

}  // namespace

void size_output_slots(Mp4Demuxer& demuxer) {
    if (demuxer.out_files.size() < demuxer.streams.size()) {
        demuxer.out_files.resize(demuxer.streams.size());
    }
    demuxer.out_file_count = static_cast<std::uint32_t>(demuxer.out_files.size());
}

Status open_output(Mp4Demuxer& demuxer, std::uint32_t stream_index, const std::string& path) {
    if (demuxer.out_files[stream_index] != nullptr) {
        return Status::kOk;
    }
    OutputSet& outputs = output_set(demuxer);
    std::shared_ptr<OutputFile>& file = outputs.open_files[path];
    if (file == nullptr) {
        OutputRegistry& registry =
            outputs.registry != nullptr ? *outputs.registry : outputs.own_registry;
        file = registry.open(path);
    }
    demuxer.out_files[stream_index] = file;
    return file == nullptr ? Status::kFailed : Status::kOk;
}

Status flush_outputs(Mp4Demuxer& demuxer) {
    Status status = Status::kOk;
    if (demuxer.outputs == nullptr) {
        return status;
    }
    for (auto& [path, file] : demuxer.outputs->open_files) {
        // A file that failed before was reported by its writer.
        if (file != nullptr && !file->failed() && !file->flush()) {
            status |= Status::kFailed;
            status |= Logging_err_type_check(demuxer.loglist, 4085, {}, taken_bytes(*file));
        }
    }
    return status;
}

Status close_outputs(Mp4Demuxer& demuxer) {
    Status status = Status::kOk;
    if (demuxer.outputs != nullptr) {
        for (auto& [path, file] : demuxer.outputs->open_files) {
            const bool known = file == nullptr || file->failed();
            if (file != nullptr && !file->close()) {
                status |= Status::kFailed;
                status |=
                    known ? Status::kOk
                          : Logging_err_type_check(demuxer.loglist, 4085, {}, taken_bytes(*file));
            }
        }
        demuxer.outputs->open_files.clear();
    }
    demuxer.out_files.clear();
    demuxer.out_file_count = 0;
    return status;
}

}  // namespace mediasplit
