#include "src/audio/hls_channels.h"

#include <algorithm>
#include <string>

#include "src/log/logging.h"
#include "src/video/codec_text.h"

namespace mediasplit {

namespace {

LogContext channels_context(const ManifestContext& context) {
    return {context.rendition_index, {}, "CHANNELS"};
}

// Notes the channels of a stream; false if CHANNELS has too few.
bool note_channels(ManifestContext& context, std::uint32_t channels) {
    context.found_channels_max = std::max(context.found_channels_max, channels);
    if (channels >= context.channel_count) {
        context.found_channels_valid = 1;
    }
    return channels <= context.channel_count;
}

bool names_identifier(const ManifestContext& context, std::uint32_t identifier) {
    return context.channels_have_identifier == 0 || identifier == 1;
}

Status check_ec3_limit(ManifestContext& context, std::uint32_t channels, Loglist* loglist) {
    return check(note_channels(context, channels), loglist, 4289, channels_context(context),
                 context.channels_text, context.rendition_index, channels);
}

Status check_joc(ManifestContext& context, std::uint32_t complexity, AudioCarrier carrier,
                 Loglist* loglist) {
    const LogContext where = channels_context(context);
    if (Status status =
            check(context.channels_text.has_value(), loglist, 4284, where, context.rendition_index);
        !context.channels_text) {
        return status;
    }
    if (context.channels_parsed == 0) {
        const std::string expected = std::to_string(complexity) + "/JOC";
        const bool holds = context.channels_text == expected;
        return carrier == AudioCarrier::kPackedAudio
                   ? check(holds, loglist, 4291, where, context.rendition_index, expected,
                           context.channels_text)
                   : check(holds, loglist, 4285, where, context.rendition_index, expected,
                           context.channels_text);
    }
    Status status = check_ec3_limit(context, complexity, loglist);
    status |= check(names_identifier(context, context.channels_joc), loglist, 4290, where,
                    context.channels_text, context.rendition_index);
    context.found_joc = 1;
    return status;
}

Status check_channels(ManifestContext& context, std::uint32_t channels, AudioCarrier carrier,
                      Loglist* loglist) {
    if (!context.channels_text) {
        return Status::kOk;
    }
    if (context.channels_parsed != 0) {
        return check_ec3_limit(context, channels, loglist);
    }
    const LogContext where = channels_context(context);
    const std::string expected = std::to_string(channels);
    const bool holds = context.channels_text == expected;
    return carrier == AudioCarrier::kPackedAudio
               ? check(holds, loglist, 4288, where, context.rendition_index, expected,
                       context.channels_text)
               : check(holds, loglist, 4287, where, context.rendition_index, expected,
                       context.channels_text);
}

}  // namespace

Status check_ec3_attributes(ManifestContext& context, const Ec3Programme& programme,
                            AudioCarrier carrier, Loglist* loglist) {
    const Status status =
        check(codec_is_contained(context.codecs, "ec-3"), loglist, 4283,
              LogContext{context.stream_index, {}, "CODECS"}, context.stream_index);
    const auto channels_rule = programme.is_joc ? check_joc : check_channels;
    return status | channels_rule(context, programme.channels, carrier, loglist);
}

Status check_ac4_channel_limit(ManifestContext& context, std::uint32_t channels, bool is_immersive,
                               Loglist* loglist) {
    if (context.channels_parsed != 1 || !context.channels_text) {
        return Status::kOk;
    }
    const LogContext where = channels_context(context);
    Status status = check(note_channels(context, channels), loglist, 4390, where,
                          context.channels_text, context.rendition_index, channels);
    if (is_immersive) {
        status |= check(names_identifier(context, context.channels_imsa), loglist, 4391, where,
                        context.channels_text, context.rendition_index);
        context.found_imsa = 1;
    }
    return status;
}

}  // namespace mediasplit
