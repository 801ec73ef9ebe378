#include "src/fmp4demuxer/writers/unit_output.h"

#include <array>

#include "src/fmp4demuxer/writers/config_units.h"
#include "src/log/logging.h"

namespace mediasplit {
namespace {

constexpr std::array<std::uint8_t, 4> kStartCode{0, 0, 0, 1};

bool takes_bytes(const OutputFile* file) {
    return file != nullptr && !file->failed();
}

}  // namespace

OutputFile* output_of(const Mp4Demuxer& demuxer, std::uint32_t stream_index) {
    return stream_index < demuxer.out_files.size() ? demuxer.out_files[stream_index].get()
                                                   : nullptr;
}

Status write_bytes(OutputFile* file, ByteSpan bytes, Loglist* loglist) {
    if (!takes_bytes(file) || file->write(bytes)) {
        return Status::kOk;
    }
    return Logging_err_type_check(loglist, 4085, {}, static_cast<std::uint32_t>(bytes.size()));
}

Status write_sample_unit(OutputFile* file, ByteSpan unit, Loglist* loglist) {
    const Status status = write_bytes(file, kStartCode, loglist);
    return status | write_bytes(file, unit, loglist);
}

Status write_config_unit(OutputFile* file, ByteSpan unit, Loglist* loglist) {
    if (takes_bytes(file) && !file->write(kStartCode)) {
        return Logging_err_type_check(loglist, 4083, {});
    }
    return write_bytes(file, unit, loglist);
}

Status h264_write_sps_pps_nal(const AvcConfig& config, OutputFile* file, Loglist* loglist) {
    Status status = Status::kOk;
    for (const auto& unit : config.sps) {
        status |= write_config_unit(file, unit_bytes(unit), loglist);
    }
    for (const auto& unit : config.pps) {
        status |= write_config_unit(file, unit_bytes(unit), loglist);
    }
    return status;
}

}  // namespace mediasplit
