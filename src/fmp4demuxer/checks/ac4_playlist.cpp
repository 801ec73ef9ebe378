#include "src/fmp4demuxer/checks/ac4_playlist.h"

#include <optional>
#include <string>

#include "ac4/descriptor_generator/channel_layout.h"
#include "src/audio/hls_channels.h"
#include "src/fmp4demuxer/checks/ac4_record.h"
#include "src/log/logging.h"
#include "src/video/codec_text.h"

namespace mediasplit {
namespace {

// CHANNELS as the first presentation wants it; no text where there is no rule.
struct Channels {
    std::optional<std::string> text{};
    std::uint32_t count = 0;
    bool is_immersive = false;
};

Channels channels_of(const DsiPresentation& first, std::uint32_t version, std::uint32_t mask) {
    if (version == 0 || first.b_presentation_channel_coded == 0) {
        return {};
    }
    if (version == kAc4ImsPresentation) {
        return {"2/IMSA", 2, true};
    }
    const std::uint32_t count = channel_mask_v1_to_channel_count(mask);
    const bool is_immersive = first.orvel_sphere_indicator != 0;
    return {std::to_string(count) + (is_immersive ? "/IMSA" : ""), count, is_immersive};
}

Status check_channels(ManifestContext& context, const Channels& channels, Loglist* loglist) {
    const LogContext where{context.rendition_index, {}, "CHANNELS"};
    Status status = Status::kOk;
    if (channels.text) {
        status |=
            check(context.channels_text.has_value(), loglist, 4388, where, context.rendition_index);
        if (context.channels_text && context.channels_parsed == 0) {
            status |= check(channels.text == context.channels_text, loglist, 4389, where,
                            context.rendition_index, channels.text, context.channels_text);
        }
    }
    return status |
           check_ac4_channel_limit(context, channels.count, channels.is_immersive, loglist);
}

}  // namespace

Status check_ac4_playlist(ManifestContext& context, const DsiRecord& record, Loglist* loglist) {
    Ac4CodecProfile profile;
    std::uint32_t mask = 0;
    (void)extract_value_dac4(record, &profile, &mask, false);
    const std::string codec = ac4_codec_text(profile);
    const Status status =
        check(codec_is_contained(context.codecs, codec), loglist, 4387,
              LogContext{context.stream_index, {}, "CODECS"}, context.stream_index, codec);
    const DsiPresentation& first = dsi_entry(record.presentations, 0);
    return status |
           check_channels(context, channels_of(first, profile.presentation_version, mask), loglist);
}

}  // namespace mediasplit
