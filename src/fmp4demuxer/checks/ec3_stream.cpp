#include "src/fmp4demuxer/checks/ec3_stream.h"

#include "src/fmp4demuxer/checks/audio_entry.h"
#include "src/log/logging.h"

namespace mediasplit {

Status check_ec3_sample(Mp4Demuxer& demuxer, std::uint32_t stream_index, ByteSpan sample) {
    Mp4Stream& stream = *demuxer.streams[stream_index];
    if (stream.oap_parser == nullptr) {
        stream.oap_parser = std::shared_ptr<OapParserState>(oap_es_parser_new(1));
    }
    auto* const parser = static_cast<OapParserState*>(stream.oap_parser.get());
    OapEsInfo info;
    const bool is_good =
        parser != nullptr && oap_es_parser(sample.data(), static_cast<std::uint32_t>(sample.size()),
                                           parser, &info) == kOapGood;
    const Status status = check(is_good, demuxer.loglist, 4333, {});
    if (!is_good || !has_ec3_config(stream)) {
        return status;
    }
    return status | oap_es_info_validate(&info, stream.ec3_config.get(), true, demuxer.loglist);
}

}  // namespace mediasplit
