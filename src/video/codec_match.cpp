// Comparison of single codec texts.
#include <string_view>

#include "base/ascii.h"
#include "src/video/codec_text.h"

namespace mediasplit {
namespace {

constexpr std::size_t kBareCodec = 4;      // "avc1"
constexpr std::size_t kFullAvcCodec = 11;  // "avc1.PPCCLL"
constexpr std::size_t kFullAc4Codec = 13;  // "ac-4.BB.PP.MM"
constexpr std::size_t kMaxPoints = 9;      // of an H.265 codec in full

// What `a` may have behind the end of `b`: zero fields, with `points` seen already. A lone "0"
// passes too, also right behind the level; this is deliberate.
bool is_trailing_zeros(std::string_view rest, std::size_t points) {
    for (const char c : rest) {
        points += c == '.' ? 1 : 0;
        if ((c != '0' && c != '.') || points > kMaxPoints) {
            return false;
        }
    }
    return true;
}

bool hevc_fields_match(std::string_view a, std::string_view b) {
    std::size_t at = 0;
    std::size_t points = 0;
    for (const char expected : b) {
        if (at == a.size() || a[at] != expected) {
            // Only the compatibility flags and the constraint bytes may be written differently.
            if (points < 4 && points != 2) {
                return false;
            }
            while (at < a.size() && a[at] == '0') {
                ++at;
            }
            if (at == a.size() || to_lower(a[at]) != to_lower(expected)) {
                return false;
            }
        }
        points += expected == '.' ? 1 : 0;
        ++at;
    }
    return is_trailing_zeros(a.substr(at), points);
}

// What texts that differ must fulfil.
using Rule = bool (*)(std::string_view a, std::string_view b);

bool avc_rule(std::string_view a, std::string_view b) {
    if (b.size() == kBareCodec) {
        return a.starts_with(b);
    }
    return a.size() == kFullAvcCodec && b.size() == kFullAvcCodec &&
           a.substr(0, 5) == b.substr(0, 5) && equal_ignoring_case(a.substr(5), b.substr(5));
}

bool hevc_rule(std::string_view a, std::string_view b) {
    return b.size() == kBareCodec ? a.starts_with(b) : hevc_fields_match(a, b);
}

bool ac4_rule(std::string_view a, std::string_view b) {
    if (b.size() < kFullAc4Codec) {
        return a.size() <= kFullAc4Codec && a.starts_with(b);
    }
    return b.size() == kFullAc4Codec && a == b;
}

bool prefix_rule(std::string_view a, std::string_view b) {
    return a.starts_with(b);
}

struct RuleOfFamily {
    std::string_view prefix;  // of the expected text
    Rule rule;
};

constexpr RuleOfFamily kRules[] = {
    {"avc1", avc_rule},  {"avc3", avc_rule}, {"hev1", hevc_rule},
    {"hvc1", hevc_rule}, {"ac-4", ac4_rule}, {"mp4a", prefix_rule},
};

bool family_rule(std::string_view a, std::string_view b) {
    for (const RuleOfFamily& row : kRules) {
        if (b.starts_with(row.prefix)) {
            return row.rule(a, b);
        }
    }
    return a == b;
}

// One and the same text object matches whatever it holds, and so do two missing texts.
bool match(OptText a, OptText b, Rule rule) {
    if (!a || !b) {
        return !a && !b;
    }
    return (a->data() == b->data() && a->size() == b->size()) || rule(*a, *b);
}

}  // namespace

bool avc_codec_match(OptText a, OptText b) {
    return match(a, b, avc_rule);
}

bool hevc_codec_match(OptText a, OptText b) {
    return match(a, b, hevc_rule);
}

bool ac4_codec_match(OptText a, OptText b) {
    return match(a, b, ac4_rule);
}

bool codec_match(OptText a, OptText b) {
    return match(a, b, family_rule);
}

}  // namespace mediasplit
