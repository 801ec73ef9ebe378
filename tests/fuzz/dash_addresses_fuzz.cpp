// From the text of an MPD to the addresses of its segments.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include "src/dash_reader/dash_player.h"
#include "src/dash_reader/dash_reader.h"

namespace {

using namespace mediasplit;

constexpr int kMostSegments = 20;
// A template of 1,024 characters, filled in.
constexpr std::size_t kLongestUrl = 4096;

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

void play(const Ezxml* root, std::int32_t period, const std::optional<std::string>& id) {
    std::unique_ptr<DashPlayer> player;
    if (init_dash_player(&player, root, "dir/m.mpd", period, id, nullptr) != Status::kOk) {
        require(player == nullptr);
        return;
    }
    std::int32_t reloads = period;
    player->reload_count = &reloads;
    for (int i = 0; i < kMostSegments; ++i) {
        std::string url;
        std::optional<std::string> range;
        const std::uint64_t target = player->period_start_ms;
        if (get_segment_url(*player, url, &range, i == 1 ? &target : nullptr, nullptr) !=
            Status::kOk) {
            break;
        }
        if (player->segment_type == SegmentElementType::kTemplate) {
            require(url.size() <= kLongestUrl);
            // The initialization segment comes once.
            require(i == 0 || player->next_segment > 1);
        }
    }
    std::string name;
    get_init_segment_filename(*player, name);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    EzxmlPtr root;
    const std::string text(data, data + size);
    if (parse_dash_data(text, nullptr, "m.mpd", &root, nullptr) != Status::kOk) {
        return 0;
    }
    std::unique_ptr<DashInfo> info;
    const Status status = get_dash_info(&info, root.get(), "dir/m.mpd", kAllPeriods, {}, nullptr);
    require((status == Status::kOk) == (info != nullptr));
    if (info == nullptr) {
        play(root.get(), 0, "v");
        return 0;
    }
    int left = kMostSegments;
    for (const DashPeriodInfo& period : info->periods) {
        for (const DashRepresentationInfo& representation : period.representations) {
            require(representation.adaptation_set_index < period.adaptation_sets.size());
            if (left-- > 0) {
                play(root.get(), period.index, representation.id);
            }
        }
    }
    return 0;
}
