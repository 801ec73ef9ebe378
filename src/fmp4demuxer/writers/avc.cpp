#include "src/fmp4demuxer/writers/nal_units.h"
#include "src/fmp4demuxer/writers/prisma_rules.h"
#include "src/fmp4demuxer/writers/sample_writers.h"
#include "src/fmp4demuxer/writers/unit_output.h"

namespace mediasplit {
namespace {

constexpr std::uint8_t kTypeIdr = 5;
constexpr std::uint8_t kTypeDelimiter = 9;

bool has_idr(ByteSpan sample, unsigned length_size, Loglist* loglist, Status& status) {
    NalUnits units(sample, length_size);
    while (!units.at_end()) {
        if (avc_unit_type(units.next(loglist, status)) == kTypeIdr) {
            return true;
        }
    }
    return false;
}

}  // namespace

Status avcSample(Mp4Demuxer& demuxer, std::uint32_t stream_index, ByteSpan sample) {
    Mp4Stream& stream = *demuxer.streams[stream_index];
    if (stream.avc_config == nullptr || sample.empty()) {
        return Status::kOk;
    }
    OutputFile* file = output_of(demuxer, stream_index);
    Loglist* loglist = demuxer.loglist;
    const unsigned length_size = stream.avc_config->length_size_minus_one + 1U;
    Status status = Status::kOk;
    bool sets_due = has_idr(sample, length_size, loglist, status);
    NalUnits units(sample, length_size);
    while (!units.at_end()) {
        const ByteSpan unit = units.next(loglist, status);
        status |= inspect_avc_unit(demuxer, stream, unit, units.from_unit());
        // A delimiter stays the sample's first unit.
        const bool delimiter = avc_unit_type(unit) == kTypeDelimiter;
        if (sets_due && !delimiter) {
            status |= h264_write_sps_pps_nal(*stream.avc_config, file, loglist);
        }
        status |= write_sample_unit(file, unit, loglist);
        if (sets_due && delimiter) {
            status |= h264_write_sps_pps_nal(*stream.avc_config, file, loglist);
        }
        sets_due = false;
    }
    return status;
}

}  // namespace mediasplit
