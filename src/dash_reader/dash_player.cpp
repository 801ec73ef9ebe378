#include "src/dash_reader/dash_player.h"

#include "src/dash_reader/dash_reader.h"
#include "src/dash_reader/element_fields.h"
#include "src/dash_reader/element_readers.h"
#include "src/dash_reader/player_support.h"
#include "src/dash_reader/source_name.h"
#include "src/log/logging.h"
#include "src/util/text.h"

namespace mediasplit {
namespace {

// The elements that a Representation stands in.
struct RepresentationNodes {
    const Ezxml* period = nullptr;
    const Ezxml* adaptation_set = nullptr;
    const Ezxml* representation = nullptr;
};

struct PeriodTimes {
    double start = 0;
    double duration = kNoTime;
    double end = kNoTime;
};

std::optional<double> duration_attribute(const Ezxml* node, const char* name) {
    const char* const text = ezxml_attr(node, name);
    return text == nullptr ? std::nullopt : std::optional<double>(GetDuration(text));
}

// Walks to the Period of `index`; null if there are fewer.
const Ezxml* find_period(const Ezxml* root, std::int32_t index, PeriodTimes& times) {
    times.end = duration_attribute(root, "mediaPresentationDuration").value_or(kNoTime);
    const Ezxml* node = ezxml_child(root, "Period");
    for (; node != nullptr && index > 0; node = node->next, --index) {
        times.start = duration_attribute(node, "start").value_or(times.start);
        times.start += duration_attribute(node, "duration").value_or(0);
    }
    if (node != nullptr) {
        times.duration = duration_attribute(node, "duration").value_or(kNoTime);
        times.start = duration_attribute(node, "start").value_or(times.start);
        times.end = duration_attribute(node->next, "start").value_or(times.end);
    }
    return node;
}

// The first Representation of this id in document order.
RepresentationNodes find_representation(const Ezxml* period, OptText id) {
    for (const Ezxml* set = ezxml_child(period, "AdaptationSet"); set != nullptr; set = set->next) {
        for (const Ezxml* node = ezxml_child(set, "Representation"); node != nullptr;
             node = node->next) {
            const char* const own_id = ezxml_attr(node, "id");
            if (own_id != nullptr && id && *id == own_id) {
                return {period, set, node};
            }
        }
    }
    return {};
}

std::optional<std::string> merged(OptText base, const char* url) {
    std::string address;
    return merge_baseURL(base, url, &address) == 0 ? std::optional(std::move(address))
                                                   : std::nullopt;
}

// A template without the attribute has no address; the base alone wouldn't be one.
std::optional<std::string> merged_template(OptText base, const char* url) {
    return url == nullptr ? std::nullopt : merged(base, url);
}

// The addressing element that applies, and the base URL of the level where it stands.
struct Addressing {
    const Ezxml* node = nullptr;
    OptText base{};
};

Addressing find_addressing(const RepresentationNodes& nodes, const DashPlayer& player,
                           const char* name) {
    const struct {
        const Ezxml* level;
        const BaseUrls& base_urls;
    } levels[] = {{nodes.representation, player.representation_base_urls},
                  {nodes.adaptation_set, player.adaptation_set_base_urls},
                  {nodes.period, player.period_base_urls}};
    for (const auto& row : levels) {
        if (const Ezxml* const node = ezxml_child(row.level, name); node != nullptr) {
            return {node, row.base_urls.first()};
        }
    }
    return {};
}

Status load_base(const RepresentationNodes& nodes, DashPlayer& player, Loglist* loglist) {
    const Addressing found = find_addressing(nodes, player, "SegmentBase");
    const Ezxml* const initialization = ezxml_child(found.node, "Initialization");
    player.base_init_url = merged(found.base, ezxml_attr(initialization, "sourceURL"));
    player.base_init_range = owned_attribute(initialization, "range");
    player.base_media_url = merged(found.base, nullptr);
    if (player.base_media_url.value_or("").empty()) {
        return report_no_address(player, loglist);
    }
    player.base_index_range = owned_attribute(found.node, "indexRange");
    return check(player.base_index_range.has_value(), loglist, 4045,
                 player_context(player, "indexRange"));
}

void load_list(const RepresentationNodes& nodes, DashPlayer& player) {
    const Addressing found = find_addressing(nodes, player, "SegmentList");
    const Ezxml* const initialization = ezxml_child(found.node, "Initialization");
    player.list_base_url = merged(found.base, nullptr);
    player.list_init_url = merged(found.base, ezxml_attr(initialization, "sourceURL"));
    player.list_init_range = owned_attribute(initialization, "range");
    for (const Ezxml* entry = ezxml_child(found.node, "SegmentURL"); entry != nullptr;
         entry = entry->next) {
        player.list.push_back(
            {owned_attribute(entry, "media"), owned_attribute(entry, "mediaRange")});
    }
}

void load_template(const RepresentationNodes& nodes, DashPlayer& player) {
    const Addressing found = find_addressing(nodes, player, "SegmentTemplate");
    player.template_initialization =
        merged_template(found.base, ezxml_attr(found.node, "initialization"));
    player.template_media = merged_template(found.base, ezxml_attr(found.node, "media"));
    player.template_id = owned_attribute(nodes.representation, "id");
    player.template_bandwidth = owned_attribute(nodes.representation, "bandwidth");
    player.template_start_number = owned_attribute(found.node, "startNumber");
    (void)get_attribute_uint64(found.node, "duration", player.template_duration);
    (void)get_attribute_uint64(found.node, "timescale", player.template_timescale);
    const Ezxml* const timeline = ezxml_child(found.node, "SegmentTimeline");
    player.has_timeline = timeline != nullptr;
    read_segment_timeline(timeline, player.timeline, player.timeline_next_t);
}

void load_manifest(const Ezxml* root, DashPlayer& player) {
    player.type = owned_attribute(root, "type").value_or("static");
    player.publishTime = owned_attribute(root, "publishTime");
    player.availabilityStartTime = owned_attribute(root, "availabilityStartTime");
    player.utc_timing_value = direct_utc_time(ezxml_child(root, "UTCTiming"));
    player.min_buffer_time_ms = duration_attribute(root, "minBufferTime").value_or(kNoTime);
    if (player.type == "dynamic") {
        const double period = duration_attribute(root, "minimumUpdatePeriod").value_or(kNoTime);
        player.minimum_update_period_ms = period == 0 ? kNoTime : period;
    }
}

void load_times(const PeriodTimes& times, DashPlayer& player) {
    player.period_start_ms = to_unsigned(times.start);
    if (times.duration >= 0) {
        player.period_duration_ms = times.duration;
    } else if (times.end >= times.start) {
        player.period_duration_ms = times.end - times.start;
    }
}

Status load(const Ezxml* root, std::int32_t period_index, OptText representation_id,
            DashPlayer& player, Loglist* loglist) {
    load_manifest(root, player);
    PeriodTimes times;
    const Ezxml* const period = find_period(root, period_index, times);
    const RepresentationNodes nodes = find_representation(period, representation_id);
    if (nodes.representation == nullptr) {
        return Logging_err_type_check(loglist, 3006, {}, kDashReaderSourceName, 905);
    }
    player.representation_id = representation_id.str();
    load_times(times, player);
    player.mpd_base_urls = get_mpd_baseURLs(player.url, root);
    player.period_base_urls = get_cur_level_baseURLs(player.mpd_base_urls, nodes.period);
    player.adaptation_set_base_urls =
        get_cur_level_baseURLs(player.period_base_urls, nodes.adaptation_set);
    player.representation_base_urls =
        get_cur_level_baseURLs(player.adaptation_set_base_urls, nodes.representation);
    player.segment_type =
        get_segment_element_type(nodes.representation, nodes.adaptation_set, nodes.period, loglist);
    switch (player.segment_type) {
        case SegmentElementType::kTemplate:
            load_template(nodes, player);
            return Status::kOk;
        case SegmentElementType::kBase:
            return load_base(nodes, player, loglist);
        case SegmentElementType::kList:
            load_list(nodes, player);
            return Status::kOk;
        case SegmentElementType::kNone:
            break;
    }
    return Status::kOk;
}

}  // namespace

Status init_dash_player(std::unique_ptr<DashPlayer>* player, const Ezxml* root,
                        OptText manifest_url, std::int32_t period_index, OptText representation_id,
                        Loglist* loglist) {
    if (player == nullptr || root == nullptr || !manifest_url || period_index < 0) {
        return Logging_err_type_check(loglist, 3006, {}, kDashReaderSourceName, 880);
    }
    *player = std::make_unique<DashPlayer>();
    (*player)->url = manifest_url.str();
    (*player)->started_at = std::time(nullptr);
    const Status status = load(root, period_index, representation_id, **player, loglist);
    if (status != Status::kOk) {
        destroy_dash_player(*player);
    }
    return status;
}

void destroy_dash_player(std::unique_ptr<DashPlayer>& player) {
    player.reset();
}

}  // namespace mediasplit
