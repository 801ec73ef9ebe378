#include "src/dash_thread/media_segment.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "src/fmp4demuxer/fmp4demux.h"
#include "src/fmp4demuxer/segment_index.h"
#include "src/log/logging.h"
#include "src/util/address.h"
#include "src/util/segments.h"
#include "src/util/text.h"

namespace mediasplit {
namespace {

constexpr double kMillisecondsPerSecond = 1000.0;

// "first-last"; repeated dashes count as one.
std::unique_ptr<ByteRangeText> split_range(const std::optional<std::string>& range) {
    if (!range) {
        return nullptr;
    }
    auto split = std::make_unique<ByteRangeText>();
    const std::string_view text = *range;
    const auto next_word = [&text](std::size_t from) -> std::optional<std::string> {
        const std::size_t begin = text.find_first_not_of('-', from);
        if (begin == std::string_view::npos) {
            return std::nullopt;
        }
        return std::string(text.substr(begin, text.find('-', begin) - begin));
    };
    split->offset = next_word(0);
    if (split->offset) {
        split->last_byte = next_word(text.find(*split->offset) + split->offset->size());
    }
    return split;
}

std::uint32_t kind_of_media(const DashPlayer& player, bool has_range) {
    switch (player.segment_type) {
        case SegmentElementType::kTemplate:
            return kSlotMedia;
        case SegmentElementType::kBase:
            return kSlotIndexed;
        case SegmentElementType::kList:
            if (player.next_segment > player.list.size() + 1) {
                return kSlotUnset;
            }
            return has_range ? kSlotMediaRange : kSlotMedia;
        case SegmentElementType::kNone:
            break;
    }
    return kSlotUnset;
}

// Where the index or the first media segment stands in a file that initializes itself; none if the
// initialization has a file of its own.
std::optional<std::string> range_in_initialization_file(const DashPlayer& player) {
    if (player.segment_type == SegmentElementType::kBase) {
        return player.base_init_url == player.base_media_url ? player.base_index_range
                                                             : std::nullopt;
    }
    if (player.segment_type != SegmentElementType::kList || player.list.empty()) {
        return std::nullopt;
    }
    const SegmentListEntry& first = player.list.front();
    std::string address;
    const bool is_same = merge_baseURL(player.list_base_url, first.media, &address) == 0 &&
                         player.list_init_url == address;
    return is_same ? first.media_range : std::nullopt;
}

// Of a file that initializes itself: what stands ahead of its index or of its media, which come by
// themselves.
std::unique_ptr<ByteRangeText> bytes_ahead_of_media(const DashPlayer& player) {
    auto range = split_range(range_in_initialization_file(player));
    const std::uint64_t begin = range == nullptr ? 0 : str2ulonglong(range->offset);
    if (begin == 0) {
        return nullptr;
    }
    range->offset = "0";
    range->last_byte = std::to_string(begin - 1);
    return range;
}

// What is to be demultiplexed; kSlotUnset if nothing is. A template tells no byte ranges.
SegmentSlot current_slot(const DashPlayer& player, const InputFile& file,
                         const std::optional<std::string>& range) {
    SegmentSlot slot;
    slot.uri = file.name;
    if (player.next_segment == 0 && player.segment_type == SegmentElementType::kList) {
        return slot;
    }
    slot.kind =
        player.next_segment == 1 ? kSlotInitialization : kind_of_media(player, range.has_value());
    if (player.segment_type != SegmentElementType::kTemplate) {
        slot.byte_range = split_range(range);
    }
    if (slot.kind == kSlotInitialization && slot.byte_range == nullptr) {
        slot.byte_range = bytes_ahead_of_media(player);
    }
    return slot;
}

// An end that no byte range tells is the end of the file.
void complete_range(SegmentSlot& slot, const InputFile& file) {
    if (slot.byte_range != nullptr && slot.byte_range->offset && !slot.byte_range->last_byte) {
        const std::int64_t size = FileSize(file);
        slot.byte_range->last_byte = std::to_string(size > 0 ? size - 1 : 0);
    }
}

bool template_goes_on(const DashPlayer& player, double played) {
    if (is_live(player) && player.live_remaining != nullptr &&
        played >= kMillisecondsPerSecond * *player.live_remaining) {
        return false;
    }
    if (player.period_duration_ms == kNoTime) {
        return true;
    }
    if (player.minimum_update_period_ms != kNoTime && player.reload_count != nullptr) {
        played += *player.reload_count * player.minimum_update_period_ms;
    }
    return player.period_duration_ms > played;
}

bool goes_on(const DashPlayer& player) {
    const double played = 1 + player.played_ms;
    switch (player.segment_type) {
        case SegmentElementType::kTemplate:
            return template_goes_on(player, played);
        case SegmentElementType::kList:
            // Deliberate: with an unknown duration of the period (-1) the first segment is the
            // last one.
            return player.next_segment - 1 != player.list.size() &&
                   player.period_duration_ms != 0 && player.period_duration_ms > played;
        case SegmentElementType::kBase:
        case SegmentElementType::kNone:
            break;
    }
    return false;
}

// Counts the segment's duration in, sends the duration held back and holds this one.
bool account(DashPlayer& player, std::unique_ptr<SegmentTiming> timing, List* durations) {
    const double duration = timing == nullptr ? 0 : kMillisecondsPerSecond * timing->duration;
    const double sample =
        timing == nullptr ? 0
                          : kMillisecondsPerSecond * static_cast<double>(timing->sample_duration);
    const bool is_list = player.segment_type == SegmentElementType::kList;
    const bool adds_sample = duration > 1 + sample;
    player.played_ms += duration;
    if (adds_sample) {
        player.played_ms += sample;
    }
    const bool continues = goes_on(player);
    // Deliberate: the last sample's duration counts for the tests only, and of a list it is taken
    // off even if it wasn't added.
    if (is_list || adds_sample) {
        player.played_ms -= sample;
    }
    if (timing != nullptr) {
        timing->end = continues ? 0 : 1;
    }
    bubbleSegment(durations, player.last_duration);
    player.last_duration = std::move(timing);
    if (is_list) {
        bubbleSegment(durations, player.last_duration);
    }
    return continues;
}

bool demux(DashPlayer& player, InputFile& file, const SegmentSlot& slot, Mp4Demuxer& demuxer,
           List* durations, Status& status, Loglist* loglist) {
    status |= safe_output_segment_url(&slot, loglist);
    if (slot.kind == kSlotIndexed) {
        status |= fmp4demux_with_sidx(file, &slot, &demuxer, durations);
        return false;
    }
    std::unique_ptr<SegmentTiming> timing;
    status |= fmp4demux(&file, &slot, &demuxer, &timing);
    if (slot.kind == kSlotInitialization) {
        return true;
    }
    return account(player, std::move(timing), durations);
}

}  // namespace

bool is_live(const DashPlayer& player) {
    return player.segment_type == SegmentElementType::kTemplate && player.url &&
           is_url(*player.url) && player.type == "dynamic";
}

bool play_cur_segment(DashPlayer& player, InputFile& file, const std::optional<std::string>& range,
                      Mp4Demuxer& demuxer, List* durations, Status& status, Loglist* loglist) {
    SegmentSlot slot = current_slot(player, file, range);
    complete_range(slot, file);
    const bool continues =
        slot.kind != kSlotUnset && demux(player, file, slot, demuxer, durations, status, loglist);
    status |= close_whole_input(file, loglist);
    note_segment();
    return continues;
}

void release_last_segment_duration(DashPlayer& player, List* durations) {
    if (player.last_duration == nullptr) {
        segment_duration_list_end(durations);
        return;
    }
    player.last_duration->end = 1;
    bubbleSegment(durations, player.last_duration);
}

void segment_duration_list_end(List* durations) {
    auto record = std::make_unique<SegmentTiming>();
    record->duration = -1.0;
    record->is_last_kind = 1;
    record->end = 1;
    bubbleSegment(durations, record);
}

}  // namespace mediasplit
