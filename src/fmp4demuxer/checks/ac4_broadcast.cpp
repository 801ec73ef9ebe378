#include "src/fmp4demuxer/checks/ac4_broadcast.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "src/dash_reader/inherited.h"
#include "src/dash_reader/preselection_components.h"
#include "src/fmp4demuxer/checks/ac4_preselection.h"
#include "src/fmp4demuxer/checks/ac4_record.h"
#include "src/util/text.h"
#include "src/video/codec_text.h"

namespace mediasplit {
namespace {

using Set = DashAdaptationSetInfo;
using Representation = DashRepresentationInfo;

// --- What a set leaves to its Preselections ------------------------------------------------------

// Something that an element mustn't have when more than one Preselection names the set.
template <typename Element>
struct SharedSetRule {
    MessageId<> id;
    std::string_view what;
    bool (*is_used)(const Element& element);
};

constexpr SharedSetRule<Set> kSharedSetRules[] = {
    {4372, "AudioChannelConfiguration",
     [](const Set& set) { return set.audio_channel_configuration.present; }},
    {4373, "audioSamplingRate", [](const Set& set) { return set.audioSamplingRate.has_value(); }},
    {4374, "Role", [](const Set& set) { return set.role.present; }},
    {4375, "Accessibility", [](const Set& set) { return set.accessibility.present; }},
    {4376, "lang", [](const Set& set) { return set.lang.has_value(); }},
};

constexpr SharedSetRule<Representation> kSharedRepresentationRules[] = {
    {4372, "AudioChannelConfiguration",
     [](const Representation& from) { return from.audio_channel_configuration.present; }},
    {4373, "audioSamplingRate",
     [](const Representation& from) { return from.audioSamplingRate.has_value(); }},
};

template <typename Element, std::size_t kCount>
Status check_left_out(const Element& element, const SharedSetRule<Element> (&rules)[kCount],
                      Loglist* loglist) {
    Status status = Status::kOk;
    for (const SharedSetRule<Element>& rule : rules) {
        status |= check(!rule.is_used(element), loglist, rule.id,
                        LogContext{0, element.ui_id, rule.what});
    }
    return status;
}

constexpr AttributeRule kAttributes[] = {
    {2043, kAnyProfile, "startWithSAP", "1", Missing::kIsAllowed},
};

// --- Representations -----------------------------------------------------------------------------

// The codecs that a set must have: without the level where no presentation is whole.
struct SetCodecs {
    std::string text{};
    bool has_level = false;
};

SetCodecs codecs_of(const DsiRecord& record) {
    Ac4CodecProfile profile;
    (void)extract_codec_profile_value_dac4(record, &profile, true);
    const bool has_level = profile.mdcompat != kAc4NoCompatibility;
    const std::string text = ac4_codec_text(profile);
    constexpr std::size_t kWithoutLevel = 10;
    return {has_level ? text : text.substr(0, kWithoutLevel), has_level};
}

Status check_representation(const DashAudio& audio, bool is_shared,
                            const std::optional<SetCodecs>& expected, PreselectionLevels& levels) {
    const Set& set = audio.set;
    const Representation& representation = audio.representation;
    std::string holder;
    const auto codecs = get_dash_rep_attr_str(&representation, &set, "codecs", &holder);
    const LogContext where{0, holder, "codecs"};
    Status status = check(codecs.has_value(), audio.loglist, 4365, where);
    status |= check(!representation.codecs || !set.codecs, audio.loglist, 4366, where);
    if (expected && codecs) {
        status |= check(codec_is_contained(codecs, expected->text), audio.loglist, 4364, where,
                        set.id, expected->text);
    }
    status |= levels.check_representation(representation, codecs, audio.loglist);
    if (is_shared) {
        status |= check_left_out(representation, kSharedRepresentationRules, audio.loglist);
    }
    return status | check_attributes(audio, kAttributes);
}

// Calls `visit` for each Representation of the set that the manifest was read with.
template <typename Visit>
void for_each_representation(const DashPeriodInfo& period, const Set& set, const Visit& visit) {
    const auto is_of_set = [&](const Representation& representation) {
        return representation.adaptation_set_index < period.adaptation_sets.size() &&
               &period.adaptation_sets[representation.adaptation_set_index] == &set;
    };
    for (const Representation& kept : period.representations) {
        if (is_of_set(kept)) {
            visit(kept);
        }
        for (const Representation& shared : kept.shared_init_representations) {
            if (is_of_set(shared)) {
                visit(shared);
            }
        }
    }
}

// --- Presentations of the box --------------------------------------------------------------------

// By the decimal text of their number, the first of each.
using PresentationIndex = std::unordered_map<std::string, const DsiPresentation*>;

PresentationIndex index_of(const DsiRecord& record) {
    PresentationIndex index;
    for (const DsiPresentation& presentation : record.presentations) {
        const auto number = ac4_presentation_number(presentation);
        if (number && ac4_has_audio(presentation)) {
            index.emplace(std::to_string(*number), &presentation);
        }
    }
    return index;
}

const DsiPresentation* find_presentation(const PresentationIndex& index,
                                         const DashPreselectionInfo& preselection) {
    const auto found = index.find(std::string(ac4_preselection_number(preselection)));
    return found == index.end() ? nullptr : found->second;
}

Status check_presentations(const DashAudio& audio, const Ac4Preselections& preselections,
                           const DsiRecord& record) {
    const Set& set = audio.set;
    const LogContext where{0, set.ui_id, {}};
    std::unordered_set<std::string_view> referenced;
    for (const Ac4Preselection& preselection : preselections) {
        referenced.insert(ac4_preselection_number(preselection.info));
    }
    const bool is_marked = set.preselection.present && !set.preselection.value;
    Status status = Status::kOk;
    for (const DsiPresentation& presentation : record.presentations) {
        if (!ac4_has_audio(presentation)) {
            continue;
        }
        std::optional<std::string> number;
        if (const auto told = ac4_presentation_number(presentation)) {
            number = std::to_string(*told);
        }
        status |= check(number && referenced.count(*number) != 0, audio.loglist, 2045, where,
                        number, set.id);
        status |= check(ac4_is_intact(presentation) || is_marked, audio.loglist, 4386, where);
    }
    return status;
}

}  // namespace

Ac4Preselections ac4_preselections_of(const DashPeriodInfo& period,
                                      const DashAdaptationSetInfo& set) {
    Ac4Preselections list;
    if (!is_unsigned_number(set.id)) {
        return list;
    }
    const std::uint32_t id = str2uint_r10(set.id);
    std::vector<std::uint32_t> components;
    std::string first;
    for (const DashPreselectionInfo& preselection : period.preselections) {
        const OptText text = preselection.preselectionComponents;
        (void)get_all_adaptation_set_ids_from_preselection_components(text, components, false,
                                                                      nullptr);
        if (std::find(components.begin(), components.end(), id) == components.end()) {
            continue;
        }
        (void)select_main_ac4_audio_component_from_preselectionComponents(text, first);
        const bool is_first = is_unsigned_number(first) && str2uint_r10(first) == id;
        list.push_back({preselection, is_first, components.size() > 1});
    }
    return list;
}

Status check_ac4_broadcast_set(const DashAudio& audio, const DashPeriodInfo& period,
                               const Ac4Preselections& preselections, const DsiRecord* record) {
    const PresentationIndex index = record != nullptr ? index_of(*record) : PresentationIndex{};
    Status status = Status::kOk;
    for (const Ac4Preselection& preselection : preselections) {
        status |= check_ac4_preselection(
            preselection, record, find_presentation(index, preselection.info), audio.loglist);
    }
    std::optional<SetCodecs> expected;
    const LogContext where{0, audio.set.ui_id, "codecs"};
    if (record != nullptr) {
        status |= check_presentations(audio, preselections, *record);
        expected = codecs_of(*record);
        status |= check(expected->has_level, audio.loglist, 2044, where, audio.set.id);
    }
    status |= check(!audio.set.language.present, audio.loglist, 4377,
                    LogContext{0, audio.set.ui_id, "Language"});
    const bool is_shared = preselections.size() > 1;
    if (is_shared) {
        status |= check_left_out(audio.set, kSharedSetRules, audio.loglist);
    }
    PreselectionLevels levels(preselections);
    for_each_representation(period, audio.set, [&](const Representation& representation) {
        status |= check_representation({audio.mpd, audio.set, representation, audio.loglist},
                                       is_shared, expected, levels);
    });
    return status;
}

}  // namespace mediasplit
