// What a demultiplexer is told of the Representation that it serves.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mediasplit {

struct DashInfo;
struct DashPeriodInfo;
struct DashAdaptationSetInfo;
struct DashRepresentationInfo;

// Filled by the DASH player for the current position, read by the driver, the writers and the
// checks. The records stay the player's. Texts are manifest attributes as written, of the
// Representation or, where that has none, of its AdaptationSet; a missing one is unset.
struct DashContext {
    const DashInfo* mpd = nullptr;
    const DashPeriodInfo* period = nullptr;                  // the current Period
    const DashAdaptationSetInfo* adaptation_set = nullptr;   // its first AdaptationSet
    const DashRepresentationInfo* representation = nullptr;  // and the first of its Representations

    std::optional<std::string> period_id{};
    std::uint32_t period_index = 0;
    std::optional<std::string> language{};  // "lang" of the AdaptationSet
    std::optional<std::string> representation_id{};
    std::optional<std::string> codecs{};
    std::optional<std::string> segment_profiles{};
    // "codecs" of the Representations that share this one's initialization segment, in document
    // order.
    std::vector<std::string> related_codecs{};
};

}  // namespace mediasplit
