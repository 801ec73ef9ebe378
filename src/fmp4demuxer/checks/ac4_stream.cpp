#include "src/fmp4demuxer/checks/ac4_stream.h"

#include <memory>

#include "src/ac4analyze_impl/dsi_compare.h"
#include "src/ac4analyze_impl/es_parser.h"
#include "src/log/logging.h"

namespace mediasplit {
namespace {

struct Analysis {
    Ac4EsParser* parser = nullptr;
    ReferenceDsi* reference = nullptr;
    AnalysisRecord* frame = nullptr;

    [[nodiscard]] bool complete() const {
        return parser != nullptr && reference != nullptr && frame != nullptr;
    }
};

// The track's parser and records, made at its first sample.
Analysis analysis_of(Mp4Stream& stream, Loglist* loglist) {
    if (stream.ac4_parser == nullptr) {
        stream.ac4_parser = std::shared_ptr<Ac4EsParser>(ac4_es_parser_new(loglist));
        stream.ac4_ref_dsi = std::shared_ptr<ReferenceDsi>(ac4_es_parser_ref_dsi_init());
        stream.ac4_es = std::shared_ptr<AnalysisRecord>(ac4_es_parser_init());
    }
    return {static_cast<Ac4EsParser*>(stream.ac4_parser.get()),
            static_cast<ReferenceDsi*>(stream.ac4_ref_dsi.get()),
            static_cast<AnalysisRecord*>(stream.ac4_es.get())};
}

// The sync sample table of a fragmented file says nothing of its samples.
Status check_sync_flag(const Mp4Stream& stream, bool iframe, std::uint32_t number, bool sync,
                       Loglist* loglist) {
    if ((stream.marks & kMarkStss) == 0 || (stream.marks & kMarkTrun) != 0) {
        return Status::kOk;
    }
    return check(iframe || !sync, loglist, 4398, {}, number) |
           check(!iframe || sync, loglist, 4397, {}, number);
}

}  // namespace

Status check_ac4_sample(Mp4Demuxer& demuxer, std::uint32_t stream_index, ByteSpan sample,
                        std::uint32_t number, std::uint32_t sync) {
    Mp4Stream& stream = *demuxer.streams[stream_index];
    if (stream.ac4_config == nullptr) {
        return Status::kOk;
    }
    const Analysis analysis = analysis_of(stream, demuxer.loglist);
    if (!analysis.complete() ||
        ac4_es_parser_ref_dsi(*analysis.parser, sample, *analysis.reference, *analysis.frame,
                              number, demuxer.loglist) != Status::kOk) {
        return Status::kRuleBroken;
    }
    const bool iframe = ac4_get_bitstream_b_iframe_global(analysis.frame);
    const Status compared = ac4_Ac4SpecificBox_comp(analysis.reference, stream.ac4_config.get(),
                                                    iframe, demuxer.loglist);
    Status status = compared;
    status |= check(compared == Status::kOk, demuxer.loglist, 4414, {});
    status |= check_sync_flag(stream, iframe, number, sync != 0, demuxer.loglist);
    ac4_es_parser_ref_dsi_clear(*analysis.reference);
    ac4_es_parser_clear(*analysis.frame);
    return status;
}

Status end_ac4_stream(Mp4Demuxer& demuxer, std::uint32_t stream_index) {
    Mp4Stream& stream = *demuxer.streams[stream_index];
    stream.ac4_parser.reset();
    stream.ac4_ref_dsi.reset();
    stream.ac4_es.reset();
    return stream.ac4_config != nullptr
               ? ac4_check_sphere_indicators(*stream.ac4_config, demuxer.loglist)
               : Status::kOk;
}

}  // namespace mediasplit
