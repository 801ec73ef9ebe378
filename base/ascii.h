// Characters of ASCII texts, whatever the locale says.
#pragma once

#include <algorithm>
#include <string_view>

namespace mediasplit {

constexpr bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// "A" to "Z" in lower case, any other character as it is.
constexpr char to_lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Value of a digit in `base` (2 to 16), letters in either case; -1 if it is none.
constexpr int digit_value(char c, int base) {
    const char lower = to_lower(c);
    int value = -1;
    if (is_digit(c)) {
        value = c - '0';
    } else if (lower >= 'a' && lower <= 'f') {
        value = lower - 'a' + 10;
    }
    return value < base ? value : -1;
}

constexpr bool equal_ignoring_case(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char left, char right) { return to_lower(left) == to_lower(right); });
}

}  // namespace mediasplit
