#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "src/dash_reader/dash_player.h"
#include "src/dash_reader/dash_reader.h"

namespace mediasplit::testing {

/// An MPD text, parsed, with what is read from it.
struct MpdReading {
    EzxmlPtr root{};
    std::unique_ptr<DashInfo> info{};
    std::unique_ptr<DashPlayer> player{};
    Status status = Status::kOk;

    explicit MpdReading(const std::string& text) {
        status = parse_dash_data(text, nullptr, "test", &root, nullptr);
    }
    MpdReading& read(OptText filter = {}, std::int32_t period = kAllPeriods,
                     OptText url = "http://host/dir/m.mpd", Loglist* loglist = nullptr) {
        status = get_dash_info(&info, root.get(), url, period, filter, loglist);
        return *this;
    }
    MpdReading& play(OptText id, std::int32_t period = 0, OptText url = "http://host/dir/m.mpd") {
        status = init_dash_player(&player, root.get(), url, period, id, nullptr);
        return *this;
    }
    /// The next address; "" at the end.
    std::string next(std::optional<std::string>* range = nullptr,
                     std::optional<std::uint64_t> target = std::nullopt) {
        std::string url;
        status = get_segment_url(*player, url, range, target ? &*target : nullptr, nullptr);
        return url;
    }
};

/// A Period with one AdaptationSet around `content`.
inline std::string in_set(const std::string& content) {
    return "<Period><AdaptationSet>" + content + "</AdaptationSet></Period>";
}
inline std::string in_mpd(const std::string& content, const std::string& attributes = "") {
    return "<MPD " + attributes + ">" + content + "</MPD>";
}
/// An MPD with one Representation "v" of 1000 bits a second, with `content` in it.
inline std::string one_representation(const std::string& content) {
    return in_mpd(
        in_set("<Representation id=\"v\" bandwidth=\"1000\">" + content + "</Representation>"));
}
inline std::string representation(const std::string& id, const std::string& url) {
    return "<Representation id=\"" + id + "\" bandwidth=\"1\"><SegmentTemplate initialization=\"" +
           url + "\"/></Representation>";
}

}  // namespace mediasplit::testing
