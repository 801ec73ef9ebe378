#include "src/main/series_name.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <optional>

#include "base/ascii.h"

namespace mediasplit {

namespace {

// A wider number makes a name that no file can have.
constexpr std::size_t kLargestWidth = 8192;

struct Conversion {
    bool left = false;
    bool plus = false;
    bool blank = false;
    bool alternate = false;
    bool zeros = false;
    std::size_t width = 0;
    std::optional<std::size_t> precision{};
    char type = 0;
    std::size_t length = 0;  // characters of the template that it takes
};

// Takes the decimal number at `at`, held at `kLargestWidth`.
std::size_t read_size(std::string_view text, std::size_t& at) {
    std::size_t value = 0;
    for (; at < text.size() && is_digit(text[at]); ++at) {
        value = std::min(value * 10 + static_cast<std::size_t>(text[at] - '0'), kLargestWidth);
    }
    return value;
}

void read_flags(std::string_view text, std::size_t& at, Conversion& conversion) {
    for (; at < text.size(); ++at) {
        switch (text[at]) {
            case '-':
                conversion.left = true;
                break;
            case '+':
                conversion.plus = true;
                break;
            case ' ':
                conversion.blank = true;
                break;
            case '#':
                conversion.alternate = true;
                break;
            case '0':
                conversion.zeros = true;
                break;
            default:
                return;
        }
    }
}

// The integer conversion at the start of `text`, which begins with "%".
std::optional<Conversion> read_conversion(std::string_view text) {
    constexpr std::string_view kLengthModifiers = "hljzt";
    constexpr std::string_view kTypes = "diuoxX";
    Conversion conversion;
    std::size_t at = 1;
    read_flags(text, at, conversion);
    conversion.width = read_size(text, at);
    if (at < text.size() && text[at] == '.') {
        ++at;
        conversion.precision = read_size(text, at);
    }
    while (at < text.size() && kLengthModifiers.find(text[at]) != std::string_view::npos) {
        ++at;
    }
    if (at >= text.size() || kTypes.find(text[at]) == std::string_view::npos) {
        return std::nullopt;
    }
    conversion.type = text[at];
    conversion.length = at + 1;
    return conversion;
}

std::string_view sign_of(const Conversion& conversion, bool negative) {
    if (negative) {
        return "-";
    }
    if (conversion.plus) {
        return "+";
    }
    return conversion.blank ? " " : "";
}

std::string digits_of(std::uint32_t number, char type) {
    const int base = type == 'o' ? 8 : type == 'x' || type == 'X' ? 16 : 10;
    std::array<char, 16> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, base).ptr;
    if (type == 'X') {
        std::for_each(buffer.data(), end, [](char& c) {
            c = c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c;
        });
    }
    return {buffer.data(), end};
}

std::string converted(const Conversion& conversion, std::uint32_t number) {
    const bool is_signed = conversion.type == 'd' || conversion.type == 'i';
    const bool negative = is_signed && (number >> 31U) != 0;
    std::string digits = digits_of(negative ? 0U - number : number, conversion.type);
    if (conversion.precision == std::size_t{0} && number == 0) {
        digits.clear();
    }
    std::string prefix(is_signed ? sign_of(conversion, negative) : "");
    if (conversion.alternate && number != 0 && (conversion.type | 0x20) == 'x') {
        prefix = conversion.type == 'x' ? "0x" : "0X";
    }
    std::size_t digit_count = std::max(digits.size(), conversion.precision.value_or(1));
    if (conversion.alternate && conversion.type == 'o' && digit_count == digits.size()) {
        digit_count += digits.empty() || digits.front() != '0' ? 1 : 0;
    }
    if (conversion.zeros && !conversion.left && !conversion.precision &&
        conversion.width > prefix.size()) {
        digit_count = std::max(digit_count, conversion.width - prefix.size());
    }
    if (conversion.precision == std::size_t{0} && number == 0 && !conversion.alternate) {
        digit_count = 0;
    }
    const std::string number_text = prefix + std::string(digit_count - digits.size(), '0') + digits;
    const std::size_t blanks =
        conversion.width > number_text.size() ? conversion.width - number_text.size() : 0;
    return conversion.left ? number_text + std::string(blanks, ' ')
                           : std::string(blanks, ' ') + number_text;
}

}  // namespace

SeriesName series_file_name(std::string_view name_template, std::uint32_t number) {
    SeriesName result;
    for (std::size_t at = 0; at < name_template.size();) {
        const std::string_view rest = name_template.substr(at);
        if (rest.starts_with("%%")) {
            result.name.push_back('%');
            at += 2;
            continue;
        }
        if (rest.front() == '%' && !result.is_numbered) {
            if (const auto conversion = read_conversion(rest)) {
                result.name.append(converted(*conversion, number));
                result.is_numbered = true;
                at += conversion->length;
                continue;
            }
        }
        result.name.push_back(rest.front());
        ++at;
    }
    return result;
}

}  // namespace mediasplit
