// Messages of rules that a table holds: which values each takes, checked where the table is built.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "src/log/message_id.h"

namespace mediasplit {

// What a message can tell of a stream and of the rule that it breaks.
enum class RuleValue : std::uint8_t {
    kProfile,         // of the configuration box
    kCompatibleId,    // of the configuration box
    kLevel,           // of the configuration box
    kProfileText,     // profile and compatible id as one text
    kRepresentation,  // id of the Representation
    kStreamIndex,     // of the playlist's stream
    kStreamIndices,   // text of the indices of all streams that are the same one
    kCodecs,          // the manifest's codec list
    kExpected,        // texts and numbers of the rule at hand
    kActual,
    kScheme,
    kExpectedNumber,
    kActualNumber,
};

constexpr bool is_number(RuleValue value) {
    switch (value) {
        case RuleValue::kProfile:
        case RuleValue::kCompatibleId:
        case RuleValue::kLevel:
        case RuleValue::kStreamIndex:
        case RuleValue::kExpectedNumber:
        case RuleValue::kActualNumber:
            return true;
        default:
            return false;
    }
}

// A row of the catalogue and the values that fill its placeholders in order. Without a number there
// is no such rule.
struct RuleMessage {
    int number = 0;
    std::array<RuleValue, 5> values{};
    std::size_t value_count = 0;
};

template <bool kIsNumber>
struct RuleValueType {
    using Type = std::string_view;
};
template <>
struct RuleValueType<true> {
    using Type = std::uint32_t;
};

// Doesn't compile when the values don't fit the row in number and kind.
template <RuleValue... kValues>
constexpr RuleMessage rule(MessageId<typename RuleValueType<is_number(kValues)>::Type...> id) {
    return {id.number(), {kValues...}, sizeof...(kValues)};
}

// One rule on manifests in its forms for a Representation, a variant stream and an I-frame stream.
struct ManifestRule {
    RuleMessage dash{};
    RuleMessage variant{};
    RuleMessage iframe{};
};

}  // namespace mediasplit
