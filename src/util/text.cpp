#include "src/util/text.h"

#include <algorithm>

#include "base/ascii.h"
#include "src/log/logging.h"

namespace mediasplit {
namespace {

constexpr std::size_t kLongestCounted = 4096;
constexpr std::size_t kLongestCompared = 100;
constexpr std::size_t kLongestDurationPart = 100;
constexpr std::size_t kKeyIdSize = 16;
constexpr std::size_t kBoxTypeSize = 4;
// Further digits of a fraction can't change a 64-bit float.
constexpr double kSmallestFraction = 1e-20;

constexpr double kDaysPerYear = 360;
constexpr double kDaysPerMonth = 30;
constexpr double kDaysPerWeek = 7;
constexpr double kSecondsPerDay = 24 * 3600;

bool all_digits(std::string_view text, int base) {
    return std::all_of(text.begin(), text.end(),
                       [base](char c) { return digit_value(c, base) >= 0; });
}

template <typename Number>
Number to_number(OptText text, int base) {
    if (!text || !all_digits(*text, base)) {
        return 0;
    }
    Number value = 0;
    for (const char c : *text) {
        value = value * static_cast<Number>(base) + static_cast<Number>(digit_value(c, base));
    }
    return value;
}

// Cuts the number ahead of `letter` off the front of `part`. Nothing if the letter isn't there.
std::optional<double> take_field(std::string_view& part, char letter) {
    const std::size_t at = part.find(letter);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    const double value = stringtodouble(part.substr(0, at));
    part.remove_prefix(at + 1);
    return value;
}

double days_of(std::string_view date) {
    const auto years = take_field(date, 'Y');
    const double months = take_field(date, 'M').value_or(0);
    const double weeks = take_field(date, 'W').value_or(0);
    const double days = take_field(date, 'D').value_or(0);
    return years.value_or(0) * kDaysPerYear + months * (years ? kDaysPerMonth : 1) +
           weeks * kDaysPerWeek + days;
}

double seconds_of(std::string_view time) {
    const double hours = take_field(time, 'H').value_or(0);
    const double minutes = take_field(time, 'M').value_or(0);
    const double seconds = take_field(time, 'S').value_or(0);
    return (hours * 60 + minutes) * 60 + seconds;
}

}  // namespace

std::string_view erasespace(std::string_view text) {
    const std::size_t last = text.find_last_not_of(" \t\n\r");
    if (last == std::string_view::npos) {
        return {};
    }
    text = text.substr(0, last + 1);
    return text.substr(text.find_first_not_of(" \t"));
}

std::string_view unquoted(std::string_view text) {
    const bool is_quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
    return is_quoted ? text.substr(1, text.size() - 2) : text;
}

int check_str_r10(OptText text) {
    return text && all_digits(*text, 10) ? 0 : 1;
}

int check_str_hex(OptText text) {
    return text && all_digits(*text, 16) ? 0 : 1;
}

std::optional<std::string> string_dup(OptText text) {
    return text ? std::optional(text.str()) : std::nullopt;
}

std::uint32_t str2uint_r10(OptText text) {
    return to_number<std::uint32_t>(text, 10);
}

std::uint32_t str2uint_hex(OptText text) {
    return to_number<std::uint32_t>(text, 16);
}

std::uint64_t str2ulonglong(OptText text) {
    return to_number<std::uint64_t>(text, 10);
}

double stringtodouble(std::string_view text) {
    double whole = 0;
    double fraction = 0;
    double scale = 1;
    bool in_fraction = false;
    for (const char c : text) {
        if (c == '.' || c == ',') {
            in_fraction = true;
            continue;
        }
        const int digit = digit_value(c, 10);
        if (digit < 0) {
            return 0.0;
        }
        if (!in_fraction) {
            whole = whole * 10 + digit;
        } else if (scale * kSmallestFraction < 1) {
            fraction = fraction * 10 + digit;
            scale *= 10;
        }
    }
    return whole + fraction / scale;
}

std::string ultoa_(std::uint64_t value) {
    return std::to_string(value);
}

std::string uitoa_(std::uint32_t value) {
    return std::to_string(value);
}

void append_hex_byte(std::string& text, std::uint8_t byte) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
}

void myReserve(std::string& text) {
    std::reverse(text.begin(), text.end());
}

std::size_t str_count_char(OptText text, char c) {
    if (!text || text->size() > kLongestCounted) {
        return 0;
    }
    return static_cast<std::size_t>(std::count(text->begin(), text->end(), c));
}

bool str_match(OptText a, OptText b) {
    return a.has_value() == b.has_value() && *a == *b;
}

bool case_sensitive_same(OptText a, OptText b) {
    return a && b && a->size() <= kLongestCompared && equal_ignoring_case(*a, *b);
}

int valid_mp4_box_type(OptText text) {
    const bool valid =
        text && text->size() == kBoxTypeSize &&
        std::all_of(text->begin(), text->end(), [](char c) { return c >= 0x20 && c <= 0x7E; });
    return valid ? 0 : 1;
}

std::string str_replace(std::string_view text, std::string_view find, std::string_view replacement,
                        std::size_t limit) {
    std::string out;
    while (!text.empty() && out.size() < limit) {
        const std::size_t at = find.empty() ? std::string_view::npos : text.find(find);
        out += text.substr(0, at);
        if (at == std::string_view::npos) {
            break;
        }
        out += replacement;
        text.remove_prefix(at + find.size());
    }
    out.resize(std::min(out.size(), limit));
    return out;
}

Status StringtoChars(OptText hex, std::vector<std::uint8_t>& bytes) {
    bytes.clear();
    if (!hex) {
        return Status::kFailed;
    }
    const std::string_view text = hex->substr(0, hex->find(','));
    if (text.size() % 2 != 0) {
        return Logging_err_type_check(nullptr, 4015, LogContext{}, text);
    }
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const int high = digit_value(text[i], 16);
        const int low = digit_value(text[i + 1], 16);
        if (high < 0 || low < 0) {
            bytes.clear();
            const char illegal = high < 0 ? text[i] : text[i + 1];
            return Logging_err_type_check(nullptr, 4016, LogContext{}, illegal);
        }
        bytes.push_back(static_cast<std::uint8_t>(high << 4 | low));
    }
    return Status::kOk;
}

std::optional<std::string_view> get_decryption_key(OptText pairs,
                                                   std::span<const std::uint8_t> key_id,
                                                   std::size_t bits) {
    if (!pairs || key_id.size() < kKeyIdSize) {
        return std::nullopt;
    }
    std::string id;
    for (const std::uint8_t byte : key_id.first(kKeyIdSize)) {
        append_hex_byte(id, byte);
    }
    const std::size_t at = pairs->find(id);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    const std::size_t key = at + id.size() + 1;
    if (key > pairs->size() || pairs->size() - key < bits / 4) {
        return std::nullopt;
    }
    return pairs->substr(key);
}

double GetDuration(OptText text) {
    if (!text || !text->starts_with('P')) {
        return -1.0;
    }
    const std::string_view parts = text->substr(1);
    const std::size_t split = parts.find('T');
    const std::string_view date = parts.substr(0, split);
    const std::string_view time =
        split == std::string_view::npos ? std::string_view{} : parts.substr(split + 1);
    if (date.size() > kLongestDurationPart || time.size() > kLongestDurationPart) {
        return -1.0;
    }
    return (days_of(date) * kSecondsPerDay + seconds_of(time)) * 1000;
}

}  // namespace mediasplit
