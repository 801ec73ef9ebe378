#include "src/fmp4demuxer/checks/ac4_preselection.h"

#include <algorithm>
#include <optional>
#include <string>

#include "src/fmp4demuxer/checks/ac4_record.h"
#include "src/fmp4demuxer/checks/dash_audio.h"
#include "src/log/logging.h"
#include "src/util/language.h"
#include "src/util/text.h"

namespace mediasplit {
namespace {

using Preselection = DashPreselectionInfo;
using Id = std::optional<std::string>;

constexpr std::string_view kRoleScheme = "urn:mpeg:dash:role:2011";
constexpr std::string_view kAudioPurposeScheme = "urn:tva:metadata:cs:AudioPurposeCS:2007";

LogContext in(const Preselection& preselection, std::string_view what) {
    return {0, preselection.ui_id, what};
}

bool says(const DashDescriptorText& descriptor, std::string_view scheme, std::string_view value) {
    return descriptor.scheme_id_uri == scheme && descriptor.value == value;
}

bool is_accessible(const Preselection& preselection, std::string_view scheme,
                   std::string_view value) {
    return says(preselection.accessibility, scheme, value) ||
           says(preselection.accessibility_2, scheme, value);
}

// --- What a Preselection must have, whatever the box says ----------------------------------------

struct PresenceRule {
    MessageId<Id> id;
    std::string_view what;
    bool (*holds)(const Preselection& preselection);
};

constexpr PresenceRule kPresenceRules[] = {
    {4371, "codecs", [](const Preselection& from) { return from.codecs.has_value(); }},
    {2046, "audioSamplingRate",
     [](const Preselection& from) { return from.audioSamplingRate.has_value(); }},
    {4383, "AudioChannelConfiguration",
     [](const Preselection& from) { return from.audio_channel_configuration.present; }},
};

// For content that is for the visually impaired.
constexpr PresenceRule kVisuallyImpairedRules[] = {
    {4384, "Role",
     [](const Preselection& from) { return says(from.role, kRoleScheme, "alternate"); }},
    {4385, "Accessibility",
     [](const Preselection& from) { return is_accessible(from, kRoleScheme, "description"); }},
};

template <std::size_t kCount>
Status check_presence(const Preselection& preselection, const PresenceRule (&rules)[kCount],
                      Loglist* loglist) {
    Status status = Status::kOk;
    for (const PresenceRule& rule : rules) {
        status |= check(rule.holds(preselection), loglist, rule.id, in(preselection, rule.what),
                        preselection.id);
    }
    return status;
}

// --- Attributes ----------------------------------------------------------------------------------

Status check_tag(const Preselection& preselection, const DsiRecord* record,
                 const DsiPresentation* presentation, Loglist* loglist) {
    const LogContext where = in(preselection, "tag");
    const Id& tag = preselection.tag;
    Status status = check(tag.has_value(), loglist, 4358, where);
    if (!tag) {
        return status;
    }
    status |= check(is_unsigned_number(tag), loglist, 4357, where, tag);
    if (record != nullptr) {
        status |= check(presentation != nullptr, loglist, 4359, where, tag, preselection.id);
    }
    return status;
}

// "ac-4" and three components behind points.
bool has_codec_form(std::string_view codecs) {
    return codecs.substr(0, 5) == "ac-4." && std::count(codecs.begin(), codecs.end(), '.') == 3;
}

bool has_codec_components(std::string_view codecs) {
    constexpr auto kNone = std::string_view::npos;
    for (std::size_t point = codecs.find('.'); point != kNone;) {
        const std::size_t next = codecs.find('.', point + 1);
        const std::string_view component = codecs.substr(point + 1, next - point - 1);
        if (check_ac4_codec_component_value_valid(component) != 0) {
            return false;
        }
        point = next;
    }
    return true;
}

Status check_codecs(const Preselection& preselection, const DsiRecord* record,
                    const DsiPresentation* presentation, Loglist* loglist) {
    if (!preselection.codecs) {
        return Status::kOk;
    }
    const LogContext where = in(preselection, "codecs");
    const bool has_form = has_codec_form(*preselection.codecs);
    Status status = check(has_form, loglist, 4367, where, preselection.id);
    if (has_form) {
        status |= check(has_codec_components(*preselection.codecs), loglist, 4368, where,
                        preselection.id);
    }
    if (presentation != nullptr) {
        const std::string expected = ac4_codec_text(
            {record->bitstream_version, presentation->version, presentation->mdcompat});
        status |=
            check(preselection.codecs == expected, loglist, 4370, where, preselection.id, expected);
    }
    return status;
}

Status check_sampling_rate(const Preselection& preselection, const DsiRecord& record,
                           const DsiPresentation& presentation, Loglist* loglist) {
    const auto rate = ac4_sampling_rate(record, presentation);
    if (!rate || !preselection.audioSamplingRate) {
        return Status::kOk;
    }
    const std::string expected = std::to_string(*rate);
    return check(is_same_number(*preselection.audioSamplingRate, expected), loglist, 4379,
                 in(preselection, "audioSamplingRate"), preselection.id, expected,
                 preselection.audioSamplingRate);
}

Status check_language(const Preselection& preselection, const DsiPresentation& presentation,
                      Loglist* loglist) {
    if (!preselection.lang) {
        return Status::kOk;
    }
    const LogContext where = in(preselection, "lang");
    const std::string_view language = ac4_language(presentation);
    const Status status = check(!language.empty(), loglist, 4382, where, preselection.id);
    if (language.empty()) {
        return status;
    }
    return status | check(language_match(preselection.lang, language) == 0, loglist, 4381, where,
                          preselection.id, language, preselection.lang);
}

Status check_against_presentation(const Preselection& preselection, const DsiRecord& record,
                                  const DsiPresentation& presentation, Loglist* loglist) {
    Status status = check_sampling_rate(preselection, record, presentation, loglist);
    status |= check_language(preselection, presentation, loglist);
    if (ac4_is_for_visually_impaired(presentation)) {
        status |= check_presence(preselection, kVisuallyImpairedRules, loglist);
        status |= check(is_accessible(preselection, kAudioPurposeScheme, "1"), loglist, 2047,
                        in(preselection, "Accessibility"));
    }
    return status;
}

// The first component must be the one with the main component of the presentation.
Status check_main_component(const Ac4Preselection& preselection,
                            const DsiPresentation& presentation, Loglist* loglist) {
    const Ac4MainComponent main = ac4_main_component(presentation);
    const auto wrong =
        preselection.is_first ? Ac4MainComponent::kElsewhere : Ac4MainComponent::kHere;
    return check(!preselection.has_several || main != wrong, loglist, 4360,
                 in(preselection.info, "preselectionComponents"), preselection.info.id);
}

}  // namespace

bool is_unsigned_number(OptText text) {
    return !text.view().empty() && check_str_r10(text) == 0;
}

std::string_view ac4_preselection_number(const DashPreselectionInfo& preselection) {
    if (!is_unsigned_number(preselection.tag)) {
        return {};
    }
    const std::string_view tag = *preselection.tag;
    return tag.substr(std::min(tag.find_first_not_of('0'), tag.size() - 1));
}

Status check_ac4_preselection(const Ac4Preselection& preselection, const DsiRecord* record,
                              const DsiPresentation* presentation, Loglist* loglist) {
    const Preselection& info = preselection.info;
    Status status = Status::kOk;
    if (preselection.is_first) {
        status |= check_tag(info, record, presentation, loglist);
        status |= check_presence(info, kPresenceRules, loglist);
        status |= check_codecs(info, record, presentation, loglist);
        status |= check(!info.language.present, loglist, 4378, in(info, "Language"));
        if (presentation != nullptr) {
            status |= check_against_presentation(info, *record, *presentation, loglist);
        }
    }
    return presentation != nullptr
               ? status | check_main_component(preselection, *presentation, loglist)
               : status;
}

PreselectionLevels::PreselectionLevels(const Ac4Preselections& preselections) {
    for (const Ac4Preselection& preselection : preselections) {
        Ac4CodecProfile profile;
        if (extract_ac4_profile_value_from_dash_codecs(preselection.info.codecs, &profile) == 0) {
            levels_.push_back({profile.mdcompat, &preselection.info});
        }
    }
    std::stable_sort(levels_.begin(), levels_.end(),
                     [](const Level& a, const Level& b) { return a.mdcompat < b.mdcompat; });
}

Status PreselectionLevels::check_representation(const DashRepresentationInfo& representation,
                                                OptText codecs, Loglist* loglist) {
    Ac4CodecProfile own;
    if (levels_.empty() || extract_ac4_profile_value_from_dash_codecs(codecs, &own) != 0) {
        return Status::kOk;
    }
    note_evaluated(4369);
    Status status = Status::kOk;
    for (const Level& level : levels_) {
        if (level.mdcompat >= own.mdcompat || reports_ == kMostLevelReports) {
            break;
        }
        ++reports_;
        status |= Logging_err_type_check(loglist, 4369, in(*level.info, "codecs"), own.mdcompat,
                                         representation.id, level.mdcompat, level.info->id);
    }
    return status;
}

}  // namespace mediasplit
