#include "src/fmp4demuxer/writers/config_units.h"
#include "src/fmp4demuxer/writers/nal_units.h"
#include "src/fmp4demuxer/writers/prisma_rules.h"
#include "src/fmp4demuxer/writers/sample_writers.h"
#include "src/fmp4demuxer/writers/unit_output.h"

namespace mediasplit {
namespace {

constexpr std::uint8_t kTypeIdrWithLeading = 19;
constexpr std::uint8_t kTypeIdr = 20;
constexpr std::uint8_t kTypeVps = 32;
constexpr std::uint8_t kTypeSps = 33;

template <typename Units>
Status write_units(const Units& units, OutputFile* file, Loglist* loglist) {
    Status status = Status::kOk;
    for (const auto& unit : units) {
        status |= write_config_unit(file, unit_bytes(unit), loglist);
    }
    return status;
}

Status write_config(const HevcConfig& config, OutputFile* file, Loglist* loglist) {
    Status status = write_units(config.vps, file, loglist);
    status |= write_units(config.sps, file, loglist);
    status |= write_units(config.pps, file, loglist);
    return status | write_units(config.sei, file, loglist);
}

}  // namespace

Status hevcSample(Mp4Demuxer& demuxer, std::uint32_t stream_index, ByteSpan sample) {
    Mp4Stream& stream = *demuxer.streams[stream_index];
    stream.parameter_sets_written = 0;
    if (stream.hevc_config == nullptr || sample.empty()) {
        return Status::kOk;
    }
    OutputFile* file = output_of(demuxer, stream_index);
    Loglist* loglist = demuxer.loglist;
    std::unique_ptr<HevcVps> sample_vps;
    Status status = Status::kOk;
    NalUnits units(sample, stream.hevc_config->length_size_minus_one + 1U);
    while (!units.at_end()) {
        const ByteSpan unit = units.next(loglist, status);
        status |= inspect_hevc_unit(demuxer, stream, unit, units.from_unit());
        const std::uint8_t type = hevc_unit_type(unit);
        if ((type == kTypeIdrWithLeading || type == kTypeIdr) &&
            stream.parameter_sets_written == 0) {
            status |= write_config(*stream.hevc_config, file, loglist);
            stream.parameter_sets_written = 1;
        } else if (type == kTypeVps) {
            status |= inspect_hevc_vps(demuxer, stream, units.from_unit(), sample_vps);
            stream.parameter_sets_written = 1;
        } else if (type == kTypeSps) {
            status |= inspect_hevc_sps(demuxer, stream, units.from_unit(), sample_vps.get());
            stream.parameter_sets_written = 1;
        }
        status |= write_sample_unit(file, unit, loglist);
    }
    return status;
}

}  // namespace mediasplit
