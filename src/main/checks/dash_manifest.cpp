#include "src/main/checks/dash_manifest.h"

#include <cstddef>
#include <limits>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "src/dash_reader/preselection_components.h"
#include "src/log/logging.h"
#include "src/util/text.h"

namespace mediasplit {
namespace {

constexpr const char* kSourceName = "../../../../mediacheck2/src/main";

bool is_number(OptText text) {
    return check_str_r10(text) == 0;
}

// Calls `report(i, j)` for each pair i < j of equal keys, in order. Past the limit of reports each
// element only goes with the next one of its key.
template <typename Key, typename Report>
void for_equal_pairs(const std::vector<Key>& keys, const Report& report) {
    constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
    std::vector<std::size_t> next(keys.size(), kNone);
    std::unordered_map<Key, std::size_t> following;
    for (std::size_t i = keys.size(); i-- > 0;) {
        const auto [place, is_last] = following.emplace(keys[i], i);
        if (!is_last) {
            next[i] = place->second;
            place->second = i;
        }
    }
    std::uint64_t reports = 0;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        for (std::size_t j = next[i]; j != kNone; j = next[j]) {
            report(i, j);
            if (++reports > kMostPairReports) {
                break;
            }
        }
    }
}

bool is_ac4_codec(const std::optional<std::string>& codecs) {
    return codecs && codecs->find("ac-4") != std::string::npos;
}

// The numeric ids of one Period, and the rules on them.
class BroadcastIds {
public:
    BroadcastIds(const DashPeriodInfo& period, Loglist* loglist)
        : period_(period), loglist_(loglist) {}

    Status validate() {
        if (is_number(period_.id)) {
            ids_.push_back(str2uint_r10(period_.id));
        }
        for (const DashRepresentationInfo& representation : period_.representations) {
            add(representation);
            for (const auto& shared : representation.shared_init_representations) {
                add(shared);
            }
        }
        for (const DashAdaptationSetInfo& set : period_.adaptation_sets) {
            add(set);
        }
        for (const DashPreselectionInfo& preselection : period_.preselections) {
            add(preselection);
        }
        note_evaluated(4356);
        for_equal_pairs(ids_, [this](std::size_t first, std::size_t) {
            status_ |= Logging_err_type_check(loglist_, 4356, LogContext{0, period_.ui_id, "id"},
                                              ids_[first]);
        });
        return status_;
    }

private:
    // Adds a numeric id; false for any other text.
    bool take(OptText id) {
        if (!is_number(id)) {
            return false;
        }
        ids_.push_back(str2uint_r10(id));
        return true;
    }

    void add(const DashRepresentationInfo& representation) {
        status_ |= check(take(representation.id), loglist_, 4353,
                         LogContext{0, representation.ui_id, "id"}, representation.id);
    }

    void add(const DashAdaptationSetInfo& set) {
        if (!set.id) {
            return;
        }
        const bool is_numeric = take(set.id);
        status_ |= check(is_numeric, loglist_, 4352, LogContext{0, set.ui_id, "id"}, set.id);
        if (is_numeric) {
            set_ids_.insert(ids_.back());
        }
    }

    void add(const DashPreselectionInfo& preselection) {
        if (preselection.id) {
            status_ |= check(take(preselection.id), loglist_, 4354,
                             LogContext{0, preselection.ui_id, "id"}, preselection.id);
        }
        const LogContext where{0, preselection.ui_id, "preselectionComponents"};
        const OptText components = preselection.preselectionComponents;
        status_ |= check(components.has_value(), loglist_, 4362, where);
        const bool is_ac4 = is_ac4_codec(preselection.codecs);
        std::vector<std::uint32_t> numbers;
        status_ |= get_all_adaptation_set_ids_from_preselection_components(
            components, numbers, is_ac4, loglist_, preselection.ui_id);
        for (const std::uint32_t number : numbers) {
            if (is_ac4) {
                status_ |= check(set_ids_.count(number) != 0, loglist_, 4355, where, number);
            }
        }
    }

    const DashPeriodInfo& period_;
    Loglist* loglist_;
    std::vector<std::uint32_t> ids_{};
    std::unordered_set<std::uint32_t> set_ids_{};
    Status status_ = Status::kOk;
};

Status check_period_ids(const DashInfo& info, Loglist* loglist) {
    std::vector<std::string_view> ids;
    std::vector<std::string_view> ui_ids;
    for (const DashPeriodInfo& period : info.periods) {
        if (period.id) {
            ids.push_back(*period.id);
            ui_ids.push_back(period.ui_id);
        }
    }
    note_evaluated(4086);
    Status status = Status::kOk;
    for_equal_pairs(ids, [&](std::size_t first, std::size_t second) {
        for (const std::size_t i : {first, second}) {
            status |= Logging_err_type_check(loglist, 4086, LogContext{0, ui_ids[i], "id"}, ids[i]);
        }
    });
    return status;
}

}  // namespace

Status dash_manifest_validation(const DashInfo* info, Loglist* loglist) {
    if (info == nullptr) {
        return Logging_err_type_check(loglist, 3006, {}, kSourceName, 702);
    }
    if (info->periods.empty()) {
        return Status::kOk;
    }
    Status status = check_period_ids(*info, loglist);
    for (const DashPeriodInfo& period : info->periods) {
        for (const DashRepresentationInfo& representation : period.representations) {
            if (representation.id) {
                status |= check(representation.duplicate_id == 0, loglist, 4091,
                                LogContext{0, representation.ui_id, "id"}, period.index,
                                representation.id);
            }
        }
    }
    return status;
}

Status broadcast_dash_manifest_validation(const DashInfo* info, std::int32_t period_index,
                                          Loglist* loglist) {
    if (info == nullptr || period_index < 0 ||
        static_cast<std::size_t>(period_index) >= info->periods.size()) {
        return Logging_err_type_check(loglist, 3006, {}, kSourceName, 760);
    }
    const DashPeriodInfo& period = info->periods[static_cast<std::size_t>(period_index)];
    return BroadcastIds(period, loglist).validate();
}

}  // namespace mediasplit
