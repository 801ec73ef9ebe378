// Rules on audio Representations that have one form for E-AC-3 and AC-4.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "src/dash_reader/dash_info.h"
#include "src/log/logging.h"
#include "src/log/status.h"

namespace mediasplit {

// An audio Representation and what stands above it. It refers to the manifest's records.
struct DashAudio {
    const DashInfo& mpd;
    const DashAdaptationSetInfo& set;
    const DashRepresentationInfo& representation;
    Loglist* loglist = nullptr;
};

// A descriptor of the Representation or its AdaptationSet (get_dash_rep_attr_descriptor).
struct ToldDescriptor {
    ToldDescriptor(const DashAudio& audio, std::string_view name);

    // Where messages say that an attribute of it stands.
    [[nodiscard]] LogContext at(std::string_view attribute = "value") const {
        return {0, path, attribute};
    }

    std::string path{};  // made by what makes the text
    DashDescriptorText text;
};

// --- Attributes ----------------------------------------------------------------------------------

inline constexpr std::string_view kAnyProfile;
inline constexpr std::string_view kLiveProfile = "urn:mpeg:dash:profile:isoff-live:2011";
inline constexpr std::string_view kOnDemandProfile = "urn:mpeg:dash:profile:isoff-on-demand:2011";

enum class Missing : bool { kBreaksTheRule, kIsAllowed };

// An attribute of the Representation or its AdaptationSet that must have a value.
struct AttributeRule {
    MessageId<> id;
    std::string_view profile;  // of the manifests that the rule is for
    std::string_view attribute;
    std::string_view value;
    Missing missing;
};

// Applies the rules in their order. The OR of the reports; so for all below.
[[nodiscard]] Status check_attributes(const DashAudio& audio, std::span<const AttributeRule> rules);

// --- AudioChannelConfiguration -------------------------------------------------------------------

inline constexpr std::string_view kCicpChannelScheme = "urn:mpeg:mpegB:cicp:ChannelConfiguration";
inline constexpr std::int32_t kNoCicpValue = -1;

// How a codec's channels may be told: by the scheme of the vendor, in hexadecimal, or by that of
// ISO/IEC 23091-3, in decimal.
struct ChannelRules {
    std::string_view vendor_scheme;
    int vendor_digits;
    MessageId<> other_scheme;
    MessageId<> vendor_value_not_hex;
    MessageId<> cicp_value_not_decimal;
    MessageId<std::string_view> cicp_has_no_value;  // what to use in its place
    MessageId<std::int32_t, std::string_view> cicp_is_better;
    MessageId<std::string_view, std::string_view> wrong_value;  // expected, actual
};

// The channels of a stream in both schemes.
struct ChannelConfiguration {
    std::uint32_t vendor = 0;
    std::int32_t cicp = kNoCicpValue;
};

// The scheme must be one of the two, and the value a number of its kind.
[[nodiscard]] Status check_channel_scheme(const DashAudio& audio, const ChannelRules& rules);

// The value must be that of the stream, and the scheme the one that fits. Nothing is checked in
// another scheme.
[[nodiscard]] Status check_channel_value(const DashAudio& audio, const ChannelRules& rules,
                                         const ChannelConfiguration& stream);

// Whether two texts are the same number: leading zeros and the case of digits don't count.
[[nodiscard]] bool is_same_number(std::string_view a, std::string_view b);

}  // namespace mediasplit
