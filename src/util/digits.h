// Decimal digits, whatever the locale.
#pragma once

namespace mediasplit {

constexpr bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace mediasplit
