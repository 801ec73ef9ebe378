#include "src/dash_reader/broadcast_rules.h"

#include <string>
#include <string_view>

#include "src/log/logging.h"

namespace mediasplit {

Status broadcast_mpd_validation(const DashInfo& info, Loglist* loglist) {
    constexpr std::string_view kProfile = "urn:mpeg:dash:profile:isoff-broadcast:2015";
    const auto where = [&info](std::string_view attribute) {
        return LogContext{0, info.ui_id, attribute};
    };
    const bool has_profile = info.profiles && info.profiles->find(kProfile) != std::string::npos;
    Status status = check(has_profile, loglist, 4094, where("profiles"));
    status |= check(info.type == "dynamic", loglist, 4095, where("type"));
    std::string_view missing;
    if (!info.publishTime) {
        missing = "publishTime";
    } else if (!info.availabilityStartTime) {
        missing = "availabilityStartTime";
    } else if (!info.minimumUpdatePeriod) {
        missing = "minimumUpdatePeriod";
    }
    return status | check(missing.empty(), loglist, 4096, where(missing));
}

}  // namespace mediasplit
