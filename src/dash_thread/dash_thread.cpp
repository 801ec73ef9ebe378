#include "src/dash_thread/dash_thread.h"

#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>
#include <semaphore>
#include <thread>
#include <utility>
#include <vector>

#include "src/dash_reader/broadcast_rules.h"
#include "src/dash_reader/dash_player.h"
#include "src/dash_reader/dash_reader.h"
#include "src/dash_reader/inherited.h"
#include "src/dash_thread/media_segment.h"
#include "src/dash_thread/walk.h"
#include "src/file_util/path_names.h"
#include "src/fmp4demuxer/dash_context.h"
#include "src/fmp4demuxer/fmp4demux.h"
#include "src/log/findings.h"
#include "src/log/logging.h"
#include "src/log/rule_families.h"
#include "src/util/player_clock.h"
#include "src/util/text.h"

namespace mediasplit {
namespace {

constexpr int kLoadAgain = 1;
constexpr int kDone = 0;
constexpr std::size_t kKeyBits = 128;
constexpr std::size_t kKeyIdDigits = 32;
constexpr std::ptrdiff_t kMostTrees = 4;  // held by all workers

const DashRepresentationInfo* first_representation(const DashInfo& info) {
    return info.periods.empty() || info.periods[0].representations.empty()
               ? nullptr
               : &info.periods[0].representations[0];
}

std::optional<std::string> inherited(const DashRepresentationInfo& representation,
                                     const DashAdaptationSetInfo* set, std::string_view name) {
    const auto text = get_dash_rep_attr_str(&representation, set, name);
    return text ? std::optional<std::string>(*text) : std::nullopt;
}

// What goes with the Representation: those that share its initialization segment. What it depends
// on otherwise isn't in a reading of one Representation.
std::vector<std::string> related_codecs(const DashPeriodInfo& period,
                                        const DashRepresentationInfo& representation) {
    std::vector<std::string> list;
    for (const DashRepresentationInfo& other : representation.shared_init_representations) {
        const DashAdaptationSetInfo* const set = adaptation_set_of(period, other);
        if (set == nullptr) {
            continue;
        }
        if (auto codecs = inherited(other, set, "codecs"); codecs) {
            list.push_back(std::move(*codecs));
        }
    }
    return list;
}

DashContext make_context(const DashInfo& info) {
    DashContext context;
    context.mpd = &info;
    if (info.periods.empty()) {
        return context;
    }
    const DashPeriodInfo& period = info.periods[0];
    context.period = &period;
    context.period_id = period.id;
    context.period_index = static_cast<std::uint32_t>(period.index);
    const DashRepresentationInfo* const representation = first_representation(info);
    if (representation == nullptr || period.adaptation_sets.empty()) {
        return context;
    }
    const DashAdaptationSetInfo& set = period.adaptation_sets[0];
    context.adaptation_set = &set;
    context.representation = representation;
    context.language = set.lang;
    context.representation_id = representation->id;
    context.codecs = inherited(*representation, &set, "codecs");
    context.segment_profiles = inherited(*representation, &set, "segmentProfiles");
    context.related_codecs = related_codecs(period, *representation);
    return context;
}

// The key for a key id as manifests write it, in groups with dashes between them.
std::optional<std::string> find_key(OptText keypairs, OptText key_id) {
    std::string digits;
    for (const char c : key_id.view()) {
        if (c != '-') {
            digits += c;
        }
    }
    constexpr const char* kDigits = "0123456789abcdefABCDEF";
    std::vector<std::uint8_t> bytes;
    if (digits.size() != kKeyIdDigits || digits.find_first_not_of(kDigits) != std::string::npos ||
        StringtoChars(digits, bytes) != Status::kOk) {
        return std::nullopt;
    }
    const auto key = get_decryption_key(keypairs, bytes, kKeyBits);
    return key ? std::optional<std::string>(*key) : std::nullopt;
}

// The key for the key id of the Representation or, as most manifests have it, of its AdaptationSet.
std::optional<std::string> key_of(const DashInfo& info, OptText keypairs) {
    const DashRepresentationInfo* const representation = first_representation(info);
    if (representation == nullptr) {
        return std::nullopt;
    }
    const DashAdaptationSetInfo* const set = adaptation_set_of(info.periods[0], *representation);
    return find_key(keypairs, get_dash_rep_attr_str(representation, set, "kid"));
}

// The name of the initialization segment: of a template, with the Representation's values in it.
std::optional<std::string> output_suffix(const DashPlayer& player,
                                         const DashRepresentationInfo* representation) {
    std::string name;
    const bool is_template = player.segment_type == SegmentElementType::kTemplate;
    const int result = is_template && representation != nullptr && representation->init_segment_url
                           ? splitfilename(representation->init_segment_url, name)
                           : get_init_segment_filename(player, name);
    return result == 0 ? std::optional(std::move(name)) : std::nullopt;
}

// A worker's turn to hold the tree of a manifest. Few have it at a time: the trees of a large
// manifest with many Representations wouldn't fit into memory side by side.
class TreeTurn {
public:
    TreeTurn() { turns().acquire(); }
    TreeTurn(const TreeTurn&) = delete;
    TreeTurn& operator=(const TreeTurn&) = delete;
    ~TreeTurn() { turns().release(); }

private:
    using Turns = std::counting_semaphore<kMostTrees>;
    static Turns& turns() {
        static Turns all(
            std::clamp<std::ptrdiff_t>(std::thread::hardware_concurrency(), 1, kMostTrees));
        return all;
    }
};

// Gives what a large tree took back to the system; else each worker's share of the heap would keep
// as much.
void release_tree(EzxmlPtr& root, [[maybe_unused]] long text_size) {
    root.reset();
#ifdef __GLIBC__
    constexpr long kLargeText = 1 << 20;
    if (text_size > kLargeText) {
        (void)malloc_trim(0);
    }
#endif
}

// One reading of the manifest.
struct Reading {
    EzxmlPtr root;
    std::unique_ptr<DashPlayer> player;
    std::unique_ptr<DashInfo> info;
};

bool read_manifest(std::FILE* file, OptText text, const DashJob& job, Reading& reading,
                   Status& status) {
    const Status parsed = parse_dash_data(text, file, job.url, &reading.root, job.loglist);
    if (parsed != Status::kOk) {
        status |= parsed | Status::kFailed;
        return false;
    }
    Status read = init_dash_player(&reading.player, reading.root.get(), job.url, job.period_index,
                                   job.representation_id, job.loglist);
    if (read == Status::kOk) {
        read = get_dash_info(&reading.info, reading.root.get(), job.url, job.period_index,
                             job.representation_id, job.loglist);
    }
    if (read != Status::kOk) {
        status |= read | Status::kFailed;
        return false;
    }
    return true;
}

// Hands what the job keeps over to the player.
void attach(const DashJob& job, DashPlayer& player) {
    player.started_at = player_clock().now();
    player.live_remaining = job.live_remaining;
    player.previous_publish_time = job.previous_publish_time;
    player.reload_count = job.reload_count;
    const bool has_times = job.previous_publish_time != nullptr &&
                           !job.previous_publish_time->empty() &&
                           !player.publishTime.value_or("").empty();
    if (has_times && *job.previous_publish_time != *player.publishTime &&
        job.reload_count != nullptr) {
        *job.reload_count = 0;
    }
}

}  // namespace

int dash_thread(std::FILE* file, OptText text, const DashJob& job, Status& status) {
    std::optional<TreeTurn> turn(std::in_place);
    Reading reading;
    if (!read_manifest(file, text, job, reading, status)) {
        segment_duration_list_end(job.durations);
        return kDone;
    }
    DashPlayer& player = *reading.player;
    attach(job, player);
    if (has_checkpoint_set(job.loglist, kAc4BroadcastRules)) {
        status |= broadcast_mpd_validation(*reading.info, job.loglist);
    }
    if (player.segment_type == SegmentElementType::kNone) {
        note_remark(
            "Nothing was taken apart: the manifest tells no segments (SegmentTemplate, SegmentBase "
            "or SegmentList).");
    }
    const DashRepresentationInfo* const representation = first_representation(*reading.info);
    const auto suffix = output_suffix(player, representation);
    DashContext context = make_context(*reading.info);
    const auto key = key_of(*reading.info, job.keypairs);
    std::unique_ptr<Mp4Demuxer> demuxer =
        fmp4demux_create(job.output_dir, job.name, suffix, nullptr, &context, key, job.keypairs,
                         &status, job.loglist, kAllTracks);
    release_tree(reading.root, file == nullptr ? 0 : std::ftell(file));
    turn.reset();
    if (demuxer == nullptr) {
        status |= Status::kFailed;
        segment_duration_list_end(job.durations);
        return kDone;
    }
    if (job.outputs != nullptr) {
        fmp4demux_share_outputs(*demuxer, *job.outputs);
    }
    const bool again = play_segments(player, *demuxer, job.durations, status, job.loglist);
    status |= fmp4demux_destroy(std::move(demuxer));
    return again ? kLoadAgain : kDone;
}

}  // namespace mediasplit
