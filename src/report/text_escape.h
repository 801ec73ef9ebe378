// Texts of a stream, made safe for the document that they go into.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace mediasplit::report {

/// Length of the UTF-8 character at the start of `text`, 0 if none stands there: a stray or missing
/// continuation byte, a longer form than needed, a surrogate, or a number above U+10FFFF (RFC 3629,
/// 3). `text` is not empty; `character` gets its number.
std::size_t utf8_character(std::string_view text, char32_t& character);

/// The text as valid UTF-8: each byte that isn't part of a character becomes "\xNN".
std::string valid_utf8(std::string_view text);

/// The same, and characters that would steer a terminal or that XML doesn't allow become "\xNN" or
/// "\u{NNNN}" too: control characters, direction marks, U+FFFE and the like. The result is one
/// line.
std::string printable(std::string_view text);

/// The printable text with the characters that HTML and XML give a meaning written as references.
std::string markup(std::string_view text);

/// Columns that a text takes on a terminal, one for each character.
std::size_t width_of(std::string_view utf8);

}  // namespace mediasplit::report
