#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "src/log/catalogue.h"

namespace mediasplit {

/// Kinds of values that a placeholder can take.
enum class ValueKind : std::uint8_t { kNone, kInteger, kText, kCharacter, kFloating };

/// A placeholder of a message: one of %d %u %x %c %s %f, with `l` or `ll` ahead where they apply.
struct Placeholder {
    ValueKind kind = ValueKind::kNone;  ///< kNone: no placeholder that the catalogue knows
    char conversion = 0;
    bool is_long = false;    ///< 64 bits wide (`l`, `ll`)
    std::size_t length = 0;  ///< bytes from the "%" to the conversion
};

/// Reads the placeholder at `text`, which points at a "%".
constexpr Placeholder read_placeholder(const char* text) {
    Placeholder result;
    std::size_t at = 1;
    while (at <= 2 && text[at] == 'l') {
        ++at;
    }
    result.is_long = at > 1;
    result.conversion = text[at];
    result.length = at + 1;
    switch (result.conversion) {
        case 'd':
        case 'u':
        case 'x':
            result.kind = ValueKind::kInteger;
            break;
        case 'f':
            result.kind = at <= 2 ? ValueKind::kFloating : ValueKind::kNone;
            break;
        case 's':
            result.kind = result.is_long ? ValueKind::kNone : ValueKind::kText;
            break;
        case 'c':
            result.kind = result.is_long ? ValueKind::kNone : ValueKind::kCharacter;
            break;
        default:
            break;
    }
    return result;
}

/// The kind of value that a C++ type gives: integers (also plain enumerations and bool), texts
/// (`const char*`, `std::string`, `std::string_view` and optional ones), `char`, floating numbers.
template <typename Value>
consteval ValueKind value_kind() {
    using Plain = std::remove_cv_t<Value>;
    if constexpr (std::is_same_v<Plain, char>) {
        return ValueKind::kCharacter;
    } else if constexpr (std::is_integral_v<Plain> ||
                         (std::is_enum_v<Plain> && std::is_convertible_v<Plain, int>)) {
        return ValueKind::kInteger;
    } else if constexpr (std::is_floating_point_v<Plain>) {
        return ValueKind::kFloating;
    } else if constexpr (std::is_convertible_v<const Value&, std::string_view> ||
                         std::is_same_v<Plain, std::optional<std::string>> ||
                         std::is_same_v<Plain, std::optional<std::string_view>>) {
        return ValueKind::kText;
    } else {
        return ValueKind::kNone;
    }
}

// Never defined: a call to one of them in a constant expression ends the compilation, and its name
// tells why.
[[noreturn]] void message_number_is_in_no_table();
[[noreturn]] void values_do_not_fit_the_placeholders_of_the_message();

/// The number of a catalogue row that takes values of the given types. It can only be made from a
/// constant; a number outside the tables, or values that don't fit the placeholders of the row in
/// number and kind, don't compile.
template <typename... Values>
class MessageId {
public:
    // Implicit, so that a call reads like the rule: check(holds, loglist, 4294, where).
    consteval MessageId(int id) : id_(id) {
        const CatalogueRow* const row = find_catalogue_row(id);
        if (row == nullptr) {
            message_number_is_in_no_table();
        }
        constexpr ValueKind kKinds[] = {value_kind<Values>()..., ValueKind::kNone};
        std::size_t used = 0;
        for (const char* at = row->message; *at != 0;) {
            if (*at != '%') {
                ++at;
                continue;
            }
            const Placeholder placeholder = read_placeholder(at);
            if (used == sizeof...(Values) || placeholder.kind == ValueKind::kNone ||
                placeholder.kind != kKinds[used]) {
                values_do_not_fit_the_placeholders_of_the_message();
            }
            ++used;
            at += placeholder.length;
        }
        if (used != sizeof...(Values)) {
            values_do_not_fit_the_placeholders_of_the_message();
        }
    }

    [[nodiscard]] constexpr int number() const { return id_; }

private:
    int id_;
};

/// A value of a message with its type erased; it refers to the texts it was made from.
struct MessageValue {
    ValueKind kind = ValueKind::kNone;
    std::uint64_t integer = 0;  ///< two's complement; also the character of a kCharacter
    double floating = 0;
    std::string_view text{};
};

template <typename Value>
MessageValue make_message_value(const Value& value) {
    MessageValue result;
    constexpr ValueKind kKind = value_kind<Value>();
    result.kind = kKind;
    if constexpr (kKind == ValueKind::kCharacter) {
        result.integer = static_cast<unsigned char>(value);
    } else if constexpr (kKind == ValueKind::kInteger) {
        result.integer = static_cast<std::uint64_t>(value);
    } else if constexpr (kKind == ValueKind::kFloating) {
        result.floating = static_cast<double>(value);
    } else if constexpr (std::is_pointer_v<Value>) {
        result.text = value == nullptr ? std::string_view("(null)") : std::string_view(value);
    } else if constexpr (std::is_array_v<Value>) {
        result.text = std::string_view(static_cast<const char*>(value));
    } else if constexpr (std::is_convertible_v<const Value&, std::string_view>) {
        result.text = value;
    } else if constexpr (kKind == ValueKind::kText) {
        result.text = value ? std::string_view(*value) : std::string_view("(null)");
    }
    return result;
}

}  // namespace mediasplit
