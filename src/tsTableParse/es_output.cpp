#include "src/tsTableParse/es_output.h"

#include "src/file_util/path_names.h"
#include "src/log/logging.h"

namespace mediasplit {

namespace {

constexpr std::size_t kNameLimit = 1024;
constexpr std::size_t kSafeNameLimit = 248;
constexpr std::size_t kLongestExtension = 6;
constexpr std::uint32_t kIoAudio = 1;
constexpr std::uint32_t kIoVideo = 2;

bool is_left_out(const TsOutputFiles& files, std::int64_t pid) {
    return files.pid_filter != -1 && files.pid_filter != pid;
}

}  // namespace

Status buildFileName_ts(std::string& name, std::int64_t pid, const TsContext& context,
                        std::string_view extension, const TsOutputFiles& files) {
    name.clear();
    std::string stem = files.name_prefix.size() < kNameLimit ? files.name_prefix : std::string();
    stem += "_PID_" + std::to_string(pid);
    if (context.manifest != nullptr && context.manifest->bandwidth) {
        const std::string addition = "_Bitrate_" + *context.manifest->bandwidth + "bps";
        if (stem.size() + addition.size() < kNameLimit) {
            stem += addition;
        }
    }
    fileStrValid(&stem);
    if (stem.size() > kSafeNameLimit) {
        (void)Logging_err_type_check(nullptr, 4079, {}, stem);
        return Status::kFailed;
    }
    name = stem + ".out.";
    name += extension.size() > kLongestExtension ? std::string_view("unknow") : extension;
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
