#include "src/audio/hls_channels.h"

#include <algorithm>
#include <optional>
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

// The rule that CHANNELS is the one right text, by where the stream tells its channels.
using TextRule = MessageId<std::uint32_t, std::string, std::optional<std::string>>;

struct TextRules {
    TextRule packed_audio;
    TextRule sample_entry;
};
constexpr TextRules kObjectAudioText = {4291, 4285};
constexpr TextRules kChannelCountText = {4288, 4287};

Status check_text(const ManifestContext& context, const std::string& expected,
                  const TextRules& rules, AudioCarrier carrier, Loglist* loglist) {
    const TextRule rule =
        carrier == AudioCarrier::kPackedAudio ? rules.packed_audio : rules.sample_entry;
    return check(context.channels_text == expected, loglist, rule, channels_context(context),
                 context.rendition_index, expected, context.channels_text);
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
        return check_text(context, std::to_string(complexity) + "/JOC", kObjectAudioText, carrier,
                          loglist);
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
    return check_text(context, std::to_string(channels), kChannelCountText, carrier, loglist);
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
