#include "src/fmp4demuxer/checks/dash_audio.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>

#include "src/dash_reader/inherited.h"
#include "src/util/text.h"

namespace mediasplit {
namespace {

constexpr std::string_view kConfiguration = "AudioChannelConfiguration";

bool has_profile(const DashInfo& mpd, std::string_view profile) {
    return profile.empty() || (mpd.profiles && mpd.profiles->find(profile) != std::string::npos);
}

std::string hex_text(std::uint32_t value, int digits) {
    std::array<char, 16> text{};
    (void)std::snprintf(text.data(), text.size(), "%0*X", digits, value);
    return text.data();
}

std::string_view without_zeros(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of('0'), text.size() - 1));
}

}  // namespace

ToldDescriptor::ToldDescriptor(const DashAudio& audio, std::string_view name)
    : text(get_dash_rep_attr_descriptor(&audio.representation, &audio.set, name, &path)) {}

bool is_same_number(std::string_view a, std::string_view b) {
    return !a.empty() && !b.empty() && case_sensitive_same(without_zeros(a), without_zeros(b));
}

Status check_attributes(const DashAudio& audio, std::span<const AttributeRule> rules) {
    Status status = Status::kOk;
    for (const AttributeRule& rule : rules) {
        if (!has_profile(audio.mpd, rule.profile)) {
            continue;
        }
        std::string holder;
        const std::optional<std::string_view> text =
            get_dash_rep_attr_str(&audio.representation, &audio.set, rule.attribute, &holder);
        const bool holds = text ? *text == rule.value : rule.missing == Missing::kIsAllowed;
        status |= check(holds, audio.loglist, rule.id, LogContext{0, holder, rule.attribute});
    }
    return status;
}

Status check_channel_scheme(const DashAudio& audio, const ChannelRules& rules) {
    const ToldDescriptor told(audio, kConfiguration);
    const std::optional<std::string>& value = told.text.value;
    const bool is_vendor = told.text.scheme_id_uri == rules.vendor_scheme;
    const bool is_cicp = told.text.scheme_id_uri == kCicpChannelScheme;
    const bool has_value = value && !value->empty();
    Status status =
        check(is_vendor || is_cicp, audio.loglist, rules.other_scheme, told.at("schemeIdUri"));
    if (is_vendor) {
        status |= check(has_value && check_str_hex(value) == 0, audio.loglist,
                        rules.vendor_value_not_hex, told.at());
    }
    if (is_cicp) {
        status |= check(has_value && check_str_r10(value) == 0, audio.loglist,
                        rules.cicp_value_not_decimal, told.at());
    }
    return status;
}

Status check_channel_value(const DashAudio& audio, const ChannelRules& rules,
                           const ChannelConfiguration& stream) {
    const ToldDescriptor told(audio, kConfiguration);
    const LogContext where = told.at();
    const std::string actual = told.text.value.value_or("");
    const std::string vendor = hex_text(stream.vendor, rules.vendor_digits);
    const bool has_cicp = stream.cicp != kNoCicpValue;
    Status status = Status::kOk;
    if (told.text.scheme_id_uri == rules.vendor_scheme) {
        status |= check<std::int32_t, std::string_view>(
            !has_cicp, audio.loglist, rules.cicp_is_better, where, stream.cicp, vendor);
        status |=
            check<std::string_view, std::string_view>(is_same_number(actual, vendor), audio.loglist,
                                                      rules.wrong_value, where, vendor, actual);
    } else if (told.text.scheme_id_uri == kCicpChannelScheme) {
        status |= check<std::string_view>(has_cicp, audio.loglist, rules.cicp_has_no_value, where,
                                          vendor);
        if (has_cicp) {
            const std::string cicp = std::to_string(stream.cicp);
            status |= check<std::string_view, std::string_view>(is_same_number(actual, cicp),
                                                                audio.loglist, rules.wrong_value,
                                                                where, cicp, actual);
        }
    }
    return status;
}

}  // namespace mediasplit
