#include "src/fmp4demuxer/checks/audio_entry.h"

#include "src/audio/hls_channels.h"
#include "src/fmp4demuxer/checks/ec3_dash.h"
#include "src/fmp4demuxer/checks/manifest_records.h"
#include "src/log/logging.h"

namespace mediasplit {

namespace {

constexpr std::uint32_t kChannelCount = 2;
constexpr std::uint32_t kSampleSize = 16;
constexpr std::uint32_t kSamplingRate = 48000;

Status check_container(const Mp4Stream& stream, Loglist* loglist) {
    Status status = check(stream.audio_channel_count == kChannelCount, loglist, 4294, {});
    status |= check(stream.audio_sample_size == kSampleSize, loglist, 4295, {});
    status |= check(stream.audio_sample_rate == kSamplingRate, loglist, 4296, {});
    status |= check(stream.time_scale == kSamplingRate, loglist, 2039, {});
    status |= check(stream.stream_type == kStreamAudio, loglist, 4297, {});
    return status | check((stream.marks & kMarkSmhd) != 0, loglist, 4298, {});
}

Status check_config(const Mp4Stream& stream, Loglist* loglist) {
    Status status = check(has_ec3_config(stream), loglist, 4299, {});
    if (has_ec3_config(stream)) {
        status |= check(stream.ec3_config->reserved_nonzero == 0, loglist, 4300, {});
        status |= check(stream.ec3_config->parse_error == 0, loglist, 4301, {});
    }
    return status | check(stream.audio_reserved == 0, loglist, 4302, {});
}

Ec3Programme programme_of(const Ec3Config& config) {
    const bool is_joc = config.flag_ec3_extension_type_a != 0;
    return {is_joc, is_joc ? config.complexity_index_type_a : config.channel_count};
}

}  // namespace

Status oap_sample_entry_validation(Mp4Demuxer& demuxer, std::uint32_t stream_index,
                                   bool entry_due) {
    if (!entry_due) {
        return Status::kOk;
    }
    const Mp4Stream& stream = *demuxer.streams[stream_index];
    Status status = check_container(stream, demuxer.loglist);
    status |= check_config(stream, demuxer.loglist);
    ManifestRecords manifest;
    status |= find_manifest_records(demuxer, manifest);
    if (manifest.has_dash()) {
        status |= check_ec3_representation(
            {*manifest.mpd, *manifest.adaptation_set, *manifest.representation, demuxer.loglist},
            stream);
    }
    if (manifest.is_hls() && has_ec3_config(stream)) {
        status |= check_ec3_attributes(*manifest.context, programme_of(*stream.ec3_config),
                                       AudioCarrier::kSampleEntry, demuxer.loglist);
    }
    return status;
}

}  // namespace mediasplit
