#include "src/tsTableParse/es_output.h"

#include <optional>
#include <utility>

#include "src/file_util/name_parts.h"
#include "src/log/logging.h"

namespace mediasplit {

namespace {

constexpr std::uint32_t kIoAudio = 1;
constexpr std::uint32_t kIoVideo = 2;

bool is_left_out(const TsOutputFiles& files, std::int64_t pid) {
    return files.pid_filter != -1 && files.pid_filter != pid;
}

}  // namespace

Status buildFileName_ts(std::string& name, std::int64_t pid, const TsContext& context,
                        std::string_view extension, const TsOutputFiles& files) {
    name.clear();
    std::string stem;
    append_pieces(stem, {files.name_prefix});
    stem += "_PID_" + std::to_string(pid);
    if (context.manifest != nullptr && context.manifest->bandwidth) {
        append_pieces(stem, {"_Bitrate_", *context.manifest->bandwidth, "bps"});
    }
    std::optional<std::string> file_name = output_file_name(stem, output_extension(extension));
    if (!file_name) {
        (void)Logging_err_type_check(nullptr, 4079, {}, stem);
        return Status::kFailed;
    }
    name = std::move(*file_name);
    return Status::kOk;
}

Status esCreateWriteCallback(const std::string& name, std::uint32_t kind, std::int64_t pid,
                             TsOutputFiles& files) {
    if (files.output_folder.empty() || is_left_out(files, pid)) {
        return Status::kOk;
    }
    const Status status =
        ioOpenFile(files.output_folder + "/" + name, kind == 0 ? kIoAudio : kIoVideo,
                   static_cast<std::uint64_t>(pid), files.table);
    if (status != Status::kOk) {
        // A stream that has nowhere to go fails the run.
        files.status |= Status::kFailed;
    }
    return status;
}

void esWriteCallback(TsOutputFiles& files, std::span<const std::uint8_t> data, std::uint32_t kind,
                     std::int64_t pid) {
    if (is_left_out(files, pid)) {
        return;
    }
    OutputFile* file = nullptr;
    if (kind == 1) {
        file = files.table.separate.file.get();
    } else {
        for (const auto& entry : files.table.entries) {
            if (entry.kind != 0 && entry.stream_id == static_cast<std::uint64_t>(pid)) {
                file = entry.file.get();
            }
        }
    }
    ioWritePESDataPacket(data, file);
}

}  // namespace mediasplit
