// The segments of one Representation, address by address.
#pragma once

#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/xml_tree.h"
#include "src/dash_reader/base_url.h"
#include "src/dash_reader/segment_elements.h"
#include "src/dash_reader/segment_timeline.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/records/segment_timing.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// Value of the times below that a manifest doesn't tell.
inline constexpr double kNoTime = -1.0;

// A SegmentURL, as written; its address is made when it is handed out.
struct SegmentListEntry {
    std::optional<std::string> media{};
    std::optional<std::string> media_range{};
};

// One reading of the manifest for one Representation. Lives without the tree it was read from.
struct DashPlayer {
    std::optional<std::string> url{};   // of the manifest
    std::optional<std::string> type{};  // "static" if absent
    std::optional<std::string> representation_id{};
    SegmentElementType segment_type = SegmentElementType::kNone;

    std::optional<std::string> template_initialization{};  // below the base URL
    std::optional<std::string> template_media{};
    std::optional<std::string> template_id{};  // "id" and "bandwidth" of the Representation
    std::optional<std::string> template_bandwidth{};
    std::optional<std::string> template_start_number{};
    std::uint64_t template_duration = 0;  // 0: absent
    std::uint64_t template_timescale = 0;
    bool has_timeline = false;
    std::uint64_t timeline_next_t = 0;
    SegmentTimeline timeline{};

    std::optional<std::string> base_init_url{};
    std::optional<std::string> base_init_range{};
    std::optional<std::string> base_media_url{};
    std::optional<std::string> base_index_range{};

    std::optional<std::string> list_init_url{};
    std::optional<std::string> list_init_range{};
    std::optional<std::string> list_base_url{};
    std::vector<SegmentListEntry> list{};

    BaseUrls mpd_base_urls{};
    BaseUrls period_base_urls{};
    BaseUrls adaptation_set_base_urls{};
    BaseUrls representation_base_urls{};

    // 0: the initialization segment comes next; else one more than the index of the next media
    // segment.
    std::uint64_t next_segment = 0;
    double played_ms = 0;
    std::time_t started_at = 0;  // when the player was made

    std::optional<std::string> publishTime{};
    std::optional<std::string> availabilityStartTime{};
    std::optional<std::string> utc_timing_value{};  // of the "direct" scheme only
    double min_buffer_time_ms = kNoTime;
    double minimum_update_period_ms = kNoTime;  // dynamic manifests only
    std::uint64_t period_start_ms = 0;
    double period_duration_ms = kNoTime;

    // The caller's, none until it sets them.
    double* live_remaining = nullptr;  // seconds
    std::int32_t* reload_count = nullptr;
    std::string* previous_publish_time = nullptr;

    std::unique_ptr<SegmentTiming> last_duration{};  // held back until the next segment
};

// Makes a new `*player` for the first Representation of this id in the Period. Raises 3006 for a
// missing argument, a Period or a Representation that isn't there, 4043 and 4045 for a SegmentBase
// without address or index range; `*player` is empty then.
Status init_dash_player(std::unique_ptr<DashPlayer>* player, const Ezxml* root,
                        OptText manifest_url, std::int32_t period_index, OptText representation_id,
                        Loglist* loglist);
void destroy_dash_player(std::unique_ptr<DashPlayer>& player);

// Address, and byte range as written, of the next segment: first the initialization segment, then
// the media segments. `url` is empty behind the last one. `target`, if given, is where to start, in
// seconds; it moves templates only. Raises 4043 if there is no address, and what substitute_url
// raises.
Status get_segment_url(DashPlayer& player, std::string& url, std::optional<std::string>* range,
                       const std::uint64_t* target, Loglist* loglist);

// File name of the initialization segment without folder and extension, as splitfilename gives it.
int get_init_segment_filename(const DashPlayer& player, std::string& name);

}  // namespace mediasplit
