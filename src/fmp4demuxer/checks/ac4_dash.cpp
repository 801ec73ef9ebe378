#include "src/fmp4demuxer/checks/ac4_dash.h"

#include <string>

#include "ac4/descriptor_generator/channel_layout.h"
#include "src/dash_reader/inherited.h"
#include "src/fmp4demuxer/checks/ac4_broadcast.h"
#include "src/fmp4demuxer/checks/ac4_record.h"
#include "src/log/rule_families.h"
#include "src/video/codec_text.h"

namespace mediasplit {
namespace {

constexpr AttributeRule kAttributes[] = {
    {4339, kAnyProfile, "mimeType", "audio/mp4", Missing::kBreaksTheRule},
    {4340, kLiveProfile, "startWithSAP", "1", Missing::kBreaksTheRule},
    {4341, kOnDemandProfile, "subsegmentStartsWithSAP", "1", Missing::kBreaksTheRule},
    {2042, kOnDemandProfile, "startWithSAP", "1", Missing::kIsAllowed},
};

constexpr ChannelRules kChannels{
    .vendor_scheme = "tag:" MEDIASPLIT_TAG_AUTHORITY ",2015:dash:audio_channel_configuration:2015",
    .vendor_digits = 6,
    .other_scheme = 4347,
    .vendor_value_not_hex = 4345,
    .cicp_value_not_decimal = 4344,
    .cicp_has_no_value = 4346,
    .cicp_is_better = 2041,
    .wrong_value = 4343,
};

// What the value of AudioChannelConfiguration is for immersive stereo.
struct ImsRow {
    MessageId<> id;
    std::string_view scheme;
    std::string_view value;
};

constexpr ImsRow kImsValues[] = {
    {4349, kChannels.vendor_scheme, "000001"},
    {4348, kCicpChannelScheme, "2"},
};

Status check_codecs(const DashAudio& audio, const Ac4CodecProfile& profile) {
    std::string holder;
    const auto codecs = get_dash_rep_attr_str(&audio.representation, &audio.set, "codecs", &holder);
    const std::string expected = ac4_codec_text(profile);
    return check(codec_is_contained(codecs, expected), audio.loglist, 4342,
                 LogContext{0, holder, "codecs"}, expected);
}

Status check_ims_channels(const DashAudio& audio) {
    const ToldDescriptor told(audio, "AudioChannelConfiguration");
    Status status = Status::kOk;
    for (const ImsRow& row : kImsValues) {
        if (told.text.scheme_id_uri == row.scheme) {
            status |= check(told.text.value == row.value, audio.loglist, row.id, told.at());
        }
    }
    return status;
}

Status check_virtualized_content(const DashAudio& audio, bool is_ims) {
    const ToldDescriptor property(audio, "IMSVirtualized");
    if (is_ims) {
        return check(property.text.value == "1", audio.loglist, 4350, property.at());
    }
    return has_checkpoint_set(audio.loglist, kAc4OverTheTopRules)
               ? check(!property.text.present, audio.loglist, 4351, property.at())
               : Status::kOk;
}

// What the box tells of the stream as a whole.
Status check_box_values(const DashAudio& audio, const DsiRecord& record) {
    Ac4CodecProfile profile;
    ChannelConfiguration channels;
    (void)extract_codec_profile_value_dac4(record, &profile, false);
    (void)extract_audio_config_value_dac4(record, &channels.vendor, false);
    channels.cicp = mapping_ac4_channel_config_to_mpeg_scheme(channels.vendor);
    const bool is_ims = profile.presentation_version == kAc4ImsPresentation;
    Status status = Status::kOk;
    if (has_checkpoint_set(audio.loglist, kAc4OverTheTopRules)) {
        status |= check_codecs(audio, profile);
    }
    status |= is_ims ? check_ims_channels(audio) : check_channel_value(audio, kChannels, channels);
    return status | check_virtualized_content(audio, is_ims);
}

}  // namespace

Status check_ac4_representation(const DashAudio& audio, const DashPeriodInfo& period,
                                const DsiRecord* record) {
    const bool is_broadcast = has_checkpoint_set(audio.loglist, kAc4BroadcastRules);
    const Ac4Preselections preselections =
        is_broadcast ? ac4_preselections_of(period, audio.set) : Ac4Preselections{};
    Status status = check_attributes(audio, kAttributes);
    // Where Preselections name the set, they may tell the channels in its place.
    const bool told_elsewhere = !preselections.empty() &&
                                !audio.set.audio_channel_configuration.present &&
                                !audio.representation.audio_channel_configuration.present;
    if (!told_elsewhere) {
        status |= check_channel_scheme(audio, kChannels);
    }
    if (record != nullptr) {
        status |= check_box_values(audio, *record);
    }
    if (is_broadcast) {
        status |= check_ac4_broadcast_set(audio, period, preselections, record);
    }
    return status;
}

}  // namespace mediasplit
