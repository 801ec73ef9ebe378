#include "src/fmp4demuxer/checks/ec3_stream.h"

#include <limits>

#include "oapinfolib/src/oapinfo_api.h"
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
    OapEsInfo info;
    const bool parsed = parse(parser_of(*demuxer.streams[stream_index]), sample, info);
    return check(parsed, demuxer.loglist, 4333, {});
}

void end_ec3_stream(Mp4Stream& stream) {
    stream.oap_parser.reset();
}

}  // namespace mediasplit
