#include "src/ac4analyze_impl/language_tag.h"

#include <algorithm>
#include <cstddef>

namespace mediasplit {
namespace {

constexpr std::size_t kMostPlainBytes = 4;
constexpr std::size_t kMostBytes = 11;

bool is_lower(char c) {
    return c >= 'a' && c <= 'z';
}

bool is_letter_or_digit(char c) {
    return is_lower(c) || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool is_made_of(std::string_view part, bool (*allowed)(char)) {
    return !part.empty() && std::all_of(part.begin(), part.end(), allowed);
}

}  // namespace

bool language_tag_is_valid(std::string_view tag) {
    const std::size_t first_end = tag.find('-');
    const bool plain = first_end == std::string_view::npos;
    if (tag.size() > (plain ? kMostPlainBytes : kMostBytes) ||
        !is_made_of(tag.substr(0, first_end), is_lower)) {
        return false;
    }
    for (std::size_t at = first_end; at != std::string_view::npos;) {
        const std::size_t end = tag.find('-', at + 1);
        if (!is_made_of(tag.substr(at + 1, end - at - 1), is_letter_or_digit)) {
            return false;
        }
        at = end;
    }
    return true;
}

}  // namespace mediasplit
