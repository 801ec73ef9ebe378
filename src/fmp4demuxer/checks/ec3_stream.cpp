#include "src/fmp4demuxer/checks/ec3_stream.h"

#include <limits>

#include "oapinfolib/src/oapinfo_api.h"
#include "src/fmp4demuxer/checks/audio_entry.h"
#include "src/log/logging.h"

namespace mediasplit {
namespace {

OapParserState* parser_of(Mp4Stream& stream) {
    if (stream.oap_parser == nullptr) {
        stream.oap_parser = oap_es_parser_new(1);
    }
    return stream.oap_parser.get();
}

bool parse(OapParserState* parser, ByteSpan sample, OapEsInfo& info) {
    if (parser == nullptr || sample.size() > std::numeric_limits<std::uint32_t>::max()) {
        return false;
    }
    const auto size = static_cast<std::uint32_t>(sample.size());
    return oap_es_parser(sample.data(), size, parser, &info) == kOapGood;
}

}  // namespace

Status check_ec3_sample(Mp4Demuxer& demuxer, std::uint32_t stream_index, ByteSpan sample) {
    Mp4Stream& stream = *demuxer.streams[stream_index];
    OapEsInfo info;
    const bool is_good = parse(parser_of(stream), sample, info);
    const Status status = check(is_good, demuxer.loglist, 4333, {});
    if (!is_good || !has_ec3_config(stream)) {
        return status;
    }
    return status | oap_es_info_validate(&info, stream.ec3_config.get(), true, demuxer.loglist);
}

}  // namespace mediasplit
