// Handing out the segments of a player one by one.
#include <algorithm>
#include <limits>
#include <utility>

#include "src/dash_reader/dash_player.h"
#include "src/dash_reader/player_support.h"
#include "src/dash_reader/segment_template.h"
#include "src/file_util/path_names.h"
#include "src/log/logging.h"
#include "src/util/text.h"

namespace mediasplit {
namespace {

struct SegmentAddress {
    std::optional<std::string> url{};
    std::optional<std::string> range{};
};

struct TemplatePosition {
    std::uint64_t index = 0;
    std::uint64_t time = 0;
};

// Deliberate: the time comes out in seconds here and not in timescale units.
TemplatePosition position_at(const DashPlayer& player, std::uint64_t target) {
    const auto duration = static_cast<double>(player.template_duration);
    if (player.template_timescale == 0) {
        const double segments = static_cast<double>(target) / duration;
        return {to_unsigned(segments), to_unsigned(duration * segments)};
    }
    const std::uint64_t ticks = player.template_timescale * target;
    const double segments = static_cast<double>(ticks) / duration;
    const double seconds = duration * segments / static_cast<double>(player.template_timescale);
    return {static_cast<std::uint32_t>(to_unsigned(segments)), to_unsigned(seconds)};
}

// Deliberate: with a timescale the time comes out in seconds here, without one in units of
// "duration".
TemplatePosition next_position(const DashPlayer& player) {
    const std::uint64_t index = player.next_segment - 1;
    if (player.template_timescale == 0) {
        return {index, player.template_duration * index};
    }
    const auto cut_index = static_cast<std::uint32_t>(index);
    const double ticks = static_cast<double>(player.template_duration) * cut_index;
    return {cut_index, to_unsigned(ticks / static_cast<double>(player.template_timescale))};
}

// None past the end.
std::optional<TemplatePosition> timeline_position(const DashPlayer& player,
                                                  const std::uint64_t* target) {
    const std::uint64_t index = player.next_segment - 1;
    const SegmentTimeline& timeline = player.timeline;
    if (index >= timeline.size()) {
        return std::nullopt;
    }
    const bool reloaded = player.reload_count != nullptr && *player.reload_count >= 1;
    if (target == nullptr || !reloaded) {
        return TemplatePosition{index, timeline.at(index)};
    }
    const std::uint64_t scale = player.template_timescale == 0 ? 1 : player.template_timescale;
    const std::uint64_t found = timeline.find_from(index, *target * scale);
    const std::uint64_t last = timeline.size() - 1;
    return TemplatePosition{found, timeline.at(found > last ? last : found)};
}

std::optional<TemplatePosition> template_position(const DashPlayer& player,
                                                  const std::uint64_t* target) {
    if (player.template_duration != 0) {
        return target != nullptr ? position_at(player, *target) : next_position(player);
    }
    if (player.has_timeline) {
        return timeline_position(player, target);
    }
    // Nothing tells one segment from the next: it is the caller's to stop.
    return TemplatePosition{};
}

Status next_of_template(DashPlayer& player, std::string& url, const std::uint64_t* target,
                        Loglist* loglist) {
    const bool is_init = player.next_segment == 0;
    const auto& url_template = is_init ? player.template_initialization : player.template_media;
    if (is_init) {
        player.next_segment = 1;
        return url_template ? substitute_url(url_template, player.template_id,
                                             player.template_bandwidth, {}, {}, &url, loglist)
                            : report_no_address(player, loglist);
    }
    const auto position = template_position(player, target);
    if (!position) {
        ++player.next_segment;
        return Status::kOk;
    }
    // Never round to where the initialization segment would come again.
    constexpr std::uint64_t kLastIndex = std::numeric_limits<std::uint64_t>::max() - 2;
    player.next_segment = std::min(position->index, kLastIndex) + 2;
    if (!url_template) {
        return report_no_address(player, loglist);
    }
    const std::uint64_t start =
        player.template_start_number ? str2uint_r10(player.template_start_number) : 1;
    return substitute_url(url_template, player.template_id, player.template_bandwidth,
                          ultoa_(start + position->index), ultoa_(position->time), &url, loglist);
}

// The next segment of a SegmentBase or SegmentList; none behind the last one.
std::optional<SegmentAddress> next_listed(const DashPlayer& player) {
    const bool is_base = player.segment_type == SegmentElementType::kBase;
    if (player.next_segment == 0) {
        return is_base ? SegmentAddress{player.base_init_url, player.base_init_range}
                       : SegmentAddress{player.list_init_url, player.list_init_range};
    }
    if (is_base) {
        return player.next_segment == 1
                   ? std::optional(SegmentAddress{player.base_media_url, player.base_index_range})
                   : std::nullopt;
    }
    if (player.next_segment > player.list.size()) {
        return std::nullopt;
    }
    const SegmentListEntry& entry = player.list[player.next_segment - 1];
    SegmentAddress address{std::string{}, entry.media_range};
    if (merge_baseURL(player.list_base_url, entry.media, &*address.url) != 0) {
        address.url.reset();
    }
    return address;
}

}  // namespace

Status get_segment_url(DashPlayer& player, std::string& url, std::optional<std::string>* range,
                       const std::uint64_t* target, Loglist* loglist) {
    url.clear();
    if (range != nullptr) {
        range->reset();
    }
    if (player.segment_type == SegmentElementType::kTemplate) {
        return next_of_template(player, url, target, loglist);
    }
    if (player.segment_type == SegmentElementType::kNone) {
        return Status::kOk;
    }
    auto address = next_listed(player);
    if (!address) {
        return Status::kOk;
    }
    if (!address->url) {
        return report_no_address(player, loglist);
    }
    ++player.next_segment;
    url = std::move(*address->url);
    if (range != nullptr) {
        *range = std::move(address->range);
    }
    return Status::kOk;
}

int get_init_segment_filename(const DashPlayer& player, std::string& name) {
    switch (player.segment_type) {
        case SegmentElementType::kTemplate:
            return splitfilename(player.template_initialization, name);
        case SegmentElementType::kBase:
            return splitfilename(player.base_init_url, name);
        case SegmentElementType::kList:
            return splitfilename(player.list_init_url, name);
        case SegmentElementType::kNone:
            break;
    }
    return -1;
}

}  // namespace mediasplit
