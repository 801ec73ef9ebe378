#include "src/fmp4demuxer/checks/manifest_records.h"

#include "src/fmp4demuxer/dash_context.h"
#include "src/fmp4demuxer/source_name.h"
#include "src/log/logging.h"

namespace mediasplit {
namespace {

template <typename Record>
void hand_out(const Record* record, const Record** out) {
    if (out != nullptr) {
        *out = record;
    }
}

}  // namespace

Status get_input_manifest_info(const Mp4Demuxer* demuxer, const DashInfo** mpd,
                               const DashPeriodInfo** period,
                               const DashAdaptationSetInfo** adaptation_set,
                               const DashRepresentationInfo** representation,
                               ManifestContext** manifest_context, Loglist* loglist) {
    if (demuxer == nullptr) {
        return Logging_err_type_check(loglist, 3006, {}, kDriverSourceName, 131);
    }
    if (demuxer->input_mode == kInputDash) {
        const DashContext* context = demuxer->dash_context;
        if (context == nullptr || context->mpd == nullptr || context->period == nullptr ||
            context->adaptation_set == nullptr || context->representation == nullptr) {
            return Logging_err_type_check(loglist, 3006, {}, kDriverSourceName, 137);
        }
        hand_out(context->mpd, mpd);
        hand_out(context->period, period);
        hand_out(context->adaptation_set, adaptation_set);
        hand_out(context->representation, representation);
    } else if (demuxer->input_mode != kInputFile) {
        if (demuxer->manifest_context == nullptr) {
            return Logging_err_type_check(loglist, 3006, {}, kDriverSourceName, 145);
        }
        if (manifest_context != nullptr) {
            *manifest_context = demuxer->manifest_context;
        }
    }
    return Status::kOk;
}

Status find_manifest_records(const Mp4Demuxer& demuxer, ManifestRecords& records) {
    records.mode = demuxer.input_mode;
    return get_input_manifest_info(&demuxer, &records.mpd, &records.period, &records.adaptation_set,
                                   &records.representation, &records.context, demuxer.loglist);
}

}  // namespace mediasplit
