#include "src/report/text_escape.h"

#include <array>
#include <charconv>
#include <iterator>

namespace mediasplit::report {

namespace {

// The forms of a character: what its first byte looks like and the least number that needs it.
struct Utf8Form {
    unsigned char mask = 0;
    unsigned char lead = 0;
    std::size_t length = 0;
    char32_t least = 0;
};

constexpr Utf8Form kForms[] = {
    {0x80, 0x00, 1, 0},
    {0xE0, 0xC0, 2, 0x80},
    {0xF0, 0xE0, 3, 0x800},
    {0xF8, 0xF0, 4, 0x10000},
};

struct CharacterRange {
    char32_t first = 0;
    char32_t last = 0;
};

// Not to be shown as they are: C0 and C1 control characters, line and paragraph separators, marks
// and overrides of direction, byte order mark and noncharacters of the basic plane.
constexpr CharacterRange kUnprintable[] = {
    {0x00, 0x1F},     {0x7F, 0x9F},     {0x61C, 0x61C},   {0x200E, 0x200F}, {0x2028, 0x202E},
    {0x2066, 0x2069}, {0xFDD0, 0xFDEF}, {0xFEFF, 0xFEFF}, {0xFFFE, 0xFFFF},
};

bool is_unprintable(char32_t character) {
    for (const CharacterRange& range : kUnprintable) {
        if (character >= range.first && character <= range.last) {
            return true;
        }
    }
    return false;
}

void append_byte(std::string& out, unsigned char byte) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    out += "\\x";
    out += kDigits[byte >> 4U];
    out += kDigits[byte & 0x0FU];
}

void append_number(std::string& out, char32_t character) {
    std::array<char, 8> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(),
                                   static_cast<std::uint32_t>(character), 16);
    out += "\\u{";
    out.append(digits.data(), end.ptr);
    out += '}';
}

// Goes over the characters of a text; `each` gets its number and its bytes, `stray` a byte that is
// part of none.
template <typename Each, typename Stray>
void for_each_character(std::string_view text, const Each& each, const Stray& stray) {
    while (!text.empty()) {
        char32_t character = 0;
        const std::size_t length = utf8_character(text, character);
        if (length == 0) {
            stray(static_cast<unsigned char>(text.front()));
            text.remove_prefix(1);
            continue;
        }
        each(character, text.substr(0, length));
        text.remove_prefix(length);
    }
}

}  // namespace

std::size_t utf8_character(std::string_view text, char32_t& character) {
    const auto first = static_cast<unsigned char>(text.front());
    for (const Utf8Form& form : kForms) {
        if ((first & form.mask) != form.lead) {
            continue;
        }
        if (text.size() < form.length) {
            return 0;
        }
        character = first & static_cast<unsigned char>(~form.mask);
        for (std::size_t i = 1; i < form.length; ++i) {
            const auto byte = static_cast<unsigned char>(text[i]);
            if ((byte & 0xC0U) != 0x80U) {
                return 0;
            }
            character = character << 6U | (byte & 0x3FU);
        }
        const bool is_surrogate = character >= 0xD800 && character <= 0xDFFF;
        return character < form.least || character > 0x10FFFF || is_surrogate ? 0 : form.length;
    }
    return 0;
}

std::string valid_utf8(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for_each_character(
        text, [&out](char32_t, std::string_view bytes) { out += bytes; },
        [&out](unsigned char byte) { append_byte(out, byte); });
    return out;
}

std::string printable(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for_each_character(
        text,
        [&out](char32_t character, std::string_view bytes) {
            if (!is_unprintable(character)) {
                out += bytes;
            } else if (character < 0x80) {
                append_byte(out, static_cast<unsigned char>(character));
            } else {
                append_number(out, character);
            }
        },
        [&out](unsigned char byte) { append_byte(out, byte); });
    return out;
}

std::string markup(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : printable(text)) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\'':
                out += "&#39;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

std::size_t width_of(std::string_view utf8) {
    std::size_t width = 0;
    for_each_character(
        utf8, [&width](char32_t, std::string_view) { ++width; },
        [&width](unsigned char) { ++width; });
    return width;
}

}  // namespace mediasplit::report
