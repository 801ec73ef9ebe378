#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "src/dash_reader/dash_reader.h"
#include "src/dash_reader/element_fields.h"
#include "src/dash_reader/element_readers.h"
#include "src/dash_reader/source_name.h"
#include "src/log/logging.h"
#include "src/log/rule_families.h"
#include "src/util/text.h"

namespace mediasplit {
namespace {

// A text that is the same for equal initialization segments only: XML texts have no zero bytes.
std::string init_key(const DashRepresentationInfo& representation) {
    std::string key;
    for (const auto* text : {&representation.init_segment_url, &representation.init_range}) {
        key += *text ? '+' : '-';
        key += text->value_or(std::string{});
        key += '\0';
    }
    return key;
}

// Puts the Representations of a Period where they belong: kept, attached to one with the same
// initialization segment, or dropped.
class RepresentationSorter {
public:
    RepresentationSorter(DashPeriodInfo& period, OptText filter)
        : period_(period), filter_(filter) {}

    // True if the record was kept or attached.
    bool add(DashRepresentationInfo representation) {
        std::string key = init_key(representation);
        const auto same = by_init_.find(key);
        if (same != by_init_.end()) {
            period_.representations[same->second].shared_init_representations.push_back(
                std::move(representation));
            return true;
        }
        // All that were kept have another initialization segment, so the id decides alone.
        const std::string id = representation.id.value_or(std::string{});
        if (ids_.count(id) != 0) {
            representation.duplicate_id = 1;
        }
        if (filter_ && !str_match(representation.id, filter_)) {
            return false;
        }
        ids_.insert(id);
        by_init_.emplace(std::move(key), period_.representations.size());
        period_.representations.push_back(std::move(representation));
        return true;
    }

private:
    DashPeriodInfo& period_;
    OptText filter_;
    std::map<std::string, std::size_t> by_init_{};
    std::set<std::string> ids_{};
};

Status read_adaptation_set(Ezxml* node, std::int32_t own_index, const SegmentLevel& period_level,
                           DashPeriodInfo& period, RepresentationSorter& sorter, Loglist* loglist) {
    DashAdaptationSetInfo set;
    Status status = get_adaptation_set_info(node, period.index, own_index, set, period, loglist);
    if (status != Status::kOk) {
        return status;
    }
    const SegmentLevel set_level = read_segment_level(node);
    RepresentationPlace place{period.index, own_index,
                              static_cast<std::uint32_t>(period.adaptation_sets.size()), 0};
    bool has_kept = false;
    for (Ezxml* child = ezxml_child(node, "Representation"); child != nullptr;
         child = child->next, ++place.own_index) {
        const SegmentLevel own_level = read_segment_level(child);
        DashRepresentationInfo representation;
        const Status read = get_representation_info(child, place, representation, set, period,
                                                    {own_level, set_level, period_level}, loglist);
        status |= read;
        if (read == Status::kOk) {
            has_kept |= sorter.add(std::move(representation));
        }
    }
    if (has_kept) {
        period.adaptation_sets.push_back(std::move(set));
    }
    return status;
}

void read_utc_timing(const Ezxml* root, bool warns, DashInfo& info, Loglist* loglist) {
    const Ezxml* const timing = ezxml_child(root, "UTCTiming");
    if (timing == nullptr) {
        return;
    }
    info.utc_timing_value = direct_utc_time(timing);
    const auto scheme = owned_attribute(timing, "schemeIdUri");
    if (warns) {
        note_evaluated(2010);
    }
    if (warns && scheme != kUtcDirectScheme) {
        (void)Logging_err_type_check(loglist, 2010, LogContext{0, info.ui_id, "schemeIdUri"},
                                     scheme);
    }
}

constexpr TextField<DashInfo> kMpdTexts[] = {
    {"type", &DashInfo::type},
    {"availabilityStartTime", &DashInfo::availabilityStartTime},
    {"availabilityEndTime", &DashInfo::availabilityEndTime},
    {"publishTime", &DashInfo::publishTime},
    {"minimumUpdatePeriod", &DashInfo::minimumUpdatePeriod},
    {"profiles", &DashInfo::profiles},
    {"mediaPresentationDuration", &DashInfo::mediaPresentationDuration},
    {"xmlns:scte214", &DashInfo::xmlns_scte214},
};

std::int32_t count_periods(const Ezxml* root) {
    std::int32_t count = 0;
    for (const Ezxml* node = ezxml_child(root, "Period"); node != nullptr; node = node->next) {
        ++count;
    }
    return count;
}

}  // namespace

std::optional<std::string> direct_utc_time(const Ezxml* utc_timing) {
    if (owned_attribute(utc_timing, "schemeIdUri") != kUtcDirectScheme) {
        return std::nullopt;
    }
    return owned_attribute(utc_timing, "value");
}

Status get_period_info(Ezxml* node, std::int32_t index, OptText representation_id,
                       DashPeriodInfo& period, const DashInfo& info, Loglist* loglist) {
    period.index = index;
    period.id = owned_attribute(node, "id");
    period.base_urls = get_cur_level_baseURLs(info.base_urls, node);
    set_ui_id(node, "period" + std::to_string(index), kLongestUiId, period.ui_id);
    const SegmentLevel level = read_segment_level(node);
    RepresentationSorter sorter(period, representation_id);
    Status status = Status::kOk;
    std::int32_t set_index = 0;
    for (Ezxml* child = ezxml_child(node, "AdaptationSet"); child != nullptr;
         child = child->next, ++set_index) {
        status |= read_adaptation_set(child, set_index, level, period, sorter, loglist);
    }
    // A short manifest may tell of a great many, and each Representation's worker has a reading of
    // its own, in which the broadcast rules alone look at them.
    if (representation_id && !has_checkpoint_set(loglist, kAc4BroadcastRules)) {
        return status;
    }
    for (Ezxml* child = ezxml_child(node, "Preselection"); child != nullptr; child = child->next) {
        get_preselection_info(child, index, period.preselections.emplace_back());
    }
    return status;
}

Status get_mpd_attribute(Ezxml* root, std::int32_t period_index, OptText representation_id,
                         DashInfo& info, Loglist* loglist) {
    const std::int32_t count = count_periods(root);
    if (count == 0) {
        return Logging_err_type_check(loglist, 4026, {});
    }
    const bool all = period_index == kAllPeriods;
    if (!all && (period_index < 0 || period_index >= count)) {
        return Logging_err_type_check(loglist, 3006, {}, kDashReaderSourceName, 312);
    }
    set_ui_id(root, "mpd", kLongestUiId, info.ui_id);
    read_texts(root, kMpdTexts, info);
    if (!info.type) {
        info.type = "static";
    }
    read_utc_timing(root, all, info, loglist);
    info.base_urls = get_mpd_baseURLs(info.url, root);
    std::int32_t index = 0;
    for (Ezxml* node = ezxml_child(root, "Period"); node != nullptr; node = node->next, ++index) {
        if (!all && index != period_index) {
            continue;
        }
        const Status status = get_period_info(node, index, representation_id,
                                              info.periods.emplace_back(), info, loglist);
        if (status != Status::kOk) {
            return status;
        }
    }
    return Status::kOk;
}

}  // namespace mediasplit
