#include "src/fmp4demuxer/checks/ec3_dash.h"

#include <string>

#include "src/audio/channel_words.h"
#include "src/dash_reader/inherited.h"
#include "src/fmp4demuxer/checks/audio_entry.h"
#include "src/video/codec_text.h"

namespace mediasplit {
namespace {

constexpr AttributeRule kAttributes[] = {
    {4275, kAnyProfile, "mimeType", "audio/mp4", Missing::kBreaksTheRule},
    {4276, kLiveProfile, "startWithSAP", "1", Missing::kBreaksTheRule},
    {4277, kOnDemandProfile, "subsegmentStartsWithSAP", "1", Missing::kBreaksTheRule},
    {2037, kOnDemandProfile, "startWithSAP", "1", Missing::kIsAllowed},
};

constexpr ChannelRules kChannels{
    .vendor_scheme = "tag:" MEDIASPLIT_TAG_AUTHORITY ",2014:dash:audio_channel_configuration:2011",
    .vendor_digits = 4,
    .other_scheme = 4270,
    .vendor_value_not_hex = 4272,
    .cicp_value_not_decimal = 4274,
    .cicp_has_no_value = 4271,
    .cicp_is_better = 2036,
    .wrong_value = 4273,
};

Status check_codecs(const DashAudio& audio) {
    std::string holder;
    const auto codecs = get_dash_rep_attr_str(&audio.representation, &audio.set, "codecs", &holder);
    return check(codec_is_contained(codecs, "ec-3"), audio.loglist, 4269,
                 LogContext{0, holder, "codecs"});
}

ChannelConfiguration channels_of(const Mp4Stream& stream) {
    const std::uint32_t word = extract_audio_config_value_dec3(stream.dsi);
    return {word, mapping_ec3_channel_config_to_mpeg_scheme(word)};
}

Status check_object_properties(const DashAudio& audio, const Ec3Config& config) {
    const ToldDescriptor complexity(audio, "ComplexityIndexTypeA");
    const ToldDescriptor type(audio, "OrvelAudioPlusExtensionType");
    Loglist* loglist = audio.loglist;
    if (config.flag_ec3_extension_type_a == 0) {
        return check(!complexity.text.present && !type.text.present, loglist, 4282,
                     LogContext{0, audio.representation.ui_id, "SupplementalProperty"});
    }
    Status status = check(complexity.text.present, loglist, 4278, complexity.at());
    status |= check(type.text.present, loglist, 4279, type.at());
    if (type.text.present) {
        status |= check(type.text.value == "JOC", loglist, 4281, type.at());
    }
    if (complexity.text.present) {
        const std::string expected = std::to_string(config.complexity_index_type_a);
        const std::string actual = complexity.text.value.value_or("");
        status |= check(is_same_number(actual, expected), loglist, 4280, complexity.at(), expected,
                        actual);
    }
    return status;
}

}  // namespace

Status check_ec3_representation(const DashAudio& audio, const Mp4Stream& stream) {
    const bool has_box = has_ec3_config(stream);
    Status status = check_codecs(audio);
    status |= check_channel_scheme(audio, kChannels);
    if (has_box) {
        status |= check_channel_value(audio, kChannels, channels_of(stream));
    }
    status |= check_attributes(audio, kAttributes);
    return has_box ? status | check_object_properties(audio, *stream.ec3_config) : status;
}

}  // namespace mediasplit
