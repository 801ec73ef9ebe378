#include "src/fmp4demuxer/checks/manifest_records.h"

#include "src/fmp4demuxer/fmp4demux.h"

namespace mediasplit {

Status find_manifest_records(const Mp4Demuxer& demuxer, ManifestRecords& records) {
    records.mode = demuxer.input_mode;
    return get_input_manifest_info(&demuxer, &records.mpd, &records.period, &records.adaptation_set,
                                   &records.representation, &records.context, demuxer.loglist);
}

}  // namespace mediasplit
