// Master playlists for the tests of their rules.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "src/main/checks/master_playlist.h"
#include "tests/support/playlist_input.h"
#include "tests/support/recording_sink.h"

namespace mediasplit {

using Ids = std::vector<int>;

/// A master playlist read and checked, with what was reported meanwhile.
struct CheckedMaster {
    PlaylistRecord playlist{};
    Status status = Status::kOk;
    std::uint32_t group_count = 99;
    std::vector<RecordedReport> reports{};
    Ids ids{};

    [[nodiscard]] bool raised(int id) const {
        return std::find(ids.begin(), ids.end(), id) != ids.end();
    }
    [[nodiscard]] std::string text(std::size_t at = 0) const { return reports.at(at).text; }
};

/// A collector with the checkpoints of a run, or with others.
inline std::unique_ptr<Loglist> make_loglist(std::vector<std::string_view> entries = {
                                                 "210000", "330000", "430000", "310000", "410000",
                                                 "440000", "450000"}) {
    std::vector<CheckpointText> list(entries.size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        entries[i].copy(list[i].data(), list[i].size() - 1);
    }
    return init_loglist(static_cast<std::uint32_t>(list.size()), list.data());
}

inline CheckedMaster check_master(std::string_view text, Loglist* loglist = nullptr) {
    const std::unique_ptr<Loglist> own = make_loglist();
    CheckedMaster result;
    auto read = read_playlist(text, "m.m3u8");
    result.playlist = std::move(read.playlist);
    const RecordingSink sink;
    result.status = master_manifest_validation(
        result.playlist, loglist == nullptr ? own.get() : loglist, result.group_count);
    result.reports = sink.reports();
    result.ids = sink.ids();
    return result;
}

/// A stream that breaks no rule, with further attributes.
inline std::string stream(std::string_view codecs, std::string_view uri,
                          std::string_view more = "") {
    std::string line = "#EXT-X-STREAM-INF:BANDWIDTH=1000,FRAME-RATE=25,CODECS=\"";
    line.append(codecs).append("\"");
    if (!more.empty()) {
        line.append(",").append(more);
    }
    return line.append("\n").append(uri).append("\n");
}

/// A rendition that breaks no rule.
inline std::string media(std::string_view type, std::string_view group, std::string_view uri,
                         std::string_view more = "") {
    std::string line = "#EXT-X-MEDIA:NAME=\"n\",TYPE=";
    line.append(type).append(",GROUP-ID=\"").append(group).append("\",URI=\"").append(uri);
    line.append("\"");
    if (!more.empty()) {
        line.append(",").append(more);
    }
    return line.append("\n");
}

inline std::string iframe(std::string_view uri) {
    return "#EXT-X-I-FRAME-STREAM-INF:BANDWIDTH=1,CODECS=\"avc1\",URI=\"" + std::string(uri) +
           "\"\n";
}

}  // namespace mediasplit
