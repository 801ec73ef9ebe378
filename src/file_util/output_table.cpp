#include "src/file_util/output_table.h"

#include "src/log/logging.h"

namespace mediasplit {
namespace {

constexpr std::uint32_t kSeparateKind = 2;

bool close_entry(OutputEntry& entry) {
    const bool whole = !entry.file || entry.file->close();
    entry.file.reset();
    return check(whole, nullptr, 4081, {}, entry.path) == Status::kOk;
}

}  // namespace

Status ioOpenFile(OptText path, std::uint32_t kind, std::uint64_t stream_id, OutputTable& table) {
    const bool separate = kind == kSeparateKind;
    if (!separate && table.kind_1_count >= table.entries.size()) {
        return Status::kCantOpen;
    }
    OutputEntry& entry = separate ? table.separate : table.entries[table.kind_1_count];
    ++(separate ? table.kind_2_count : table.kind_1_count);
    entry.kind = kind;
    entry.stream_id = stream_id;
    entry.path = path.view();
    entry.file = table.registry != nullptr ? table.registry->open(path.str())
                                           : fileOpen_lstr(path, table.truncate != 0 ? "wb" : "ab");
    if (!entry.file) {
        (void)Logging_err_type_check(nullptr, 4081, LogContext{}, path.view());
        return Status::kCantOpen;
    }
    return Status::kOk;
}

bool ioCloseFiles(OutputTable& table) {
    bool whole = close_entry(table.separate);
    for (OutputEntry& entry : table.entries) {
        whole = close_entry(entry) && whole;
    }
    return whole;
}

Status ioWritePESDataPacket(std::span<const std::uint8_t> data, OutputFile* file) {
    if (file != nullptr) {
        file->write(data);
    }
    return Status::kOk;
}

}  // namespace mediasplit
