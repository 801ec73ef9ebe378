// Comparison of single codec texts.
#include <string_view>

#include "src/util/text.h"
#include "src/video/codec_text.h"

namespace mediasplit {
namespace {

constexpr std::size_t kFullAvcCodec = 11;  // "avc1.PPCCLL"
constexpr std::size_t kFullAc4Codec = 13;  // "ac-4.BB.PP.MM"
constexpr std::size_t kMaxPoints = 9;      // of an H.265 codec in full

// Both missing, or one and the same text.
bool is_same_object(OptText a, OptText b) {
    if (!a || !b) {
        return !a && !b;
    }
    return a->data() == b->data() && a->size() == b->size();
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

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
            if (at == a.size() || lower(a[at]) != lower(expected)) {
                return false;
            }
        }
        points += expected == '.' ? 1 : 0;
        ++at;
    }
    return is_trailing_zeros(a.substr(at), points);
}

}  // namespace

bool avc_codec_match(OptText a, OptText b) {
    if (is_same_object(a, b)) {
        return true;
    }
    if (!a || !b) {
        return false;
    }
    if (b->size() == 4) {
        return a->starts_with(*b);
    }
    return a->size() == kFullAvcCodec && b->size() == kFullAvcCodec &&
           a->substr(0, 5) == b->substr(0, 5) && case_sensitive_same(a->substr(5), b->substr(5));
}

bool hevc_codec_match(OptText a, OptText b) {
    if (is_same_object(a, b)) {
        return true;
    }
    if (!a || !b) {
        return false;
    }
    return b->size() == 4 ? a->starts_with(*b) : hevc_fields_match(*a, *b);
}

bool ac4_codec_match(OptText a, OptText b) {
    if (is_same_object(a, b)) {
        return true;
    }
    if (!a || !b) {
        return false;
    }
    if (b->size() < kFullAc4Codec) {
        return a->size() <= kFullAc4Codec && a->starts_with(*b);
    }
    return b->size() == kFullAc4Codec && *a == *b;
}

bool codec_match(OptText a, OptText b) {
    if (is_same_object(a, b)) {
        return true;
    }
    if (!a || !b) {
        return false;
    }
    if (b->starts_with("avc1") || b->starts_with("avc3")) {
        return avc_codec_match(a, b);
    }
    if (b->starts_with("hev1") || b->starts_with("hvc1")) {
        return hevc_codec_match(a, b);
    }
    if (b->starts_with("ac-4")) {
        return ac4_codec_match(a, b);
    }
    if (b->starts_with("mp4a")) {
        return a->starts_with(*b);
    }
    return *a == *b;
}

}  // namespace mediasplit
