// Conversions and comparisons of short texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "src/log/status.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// Removes trailing blanks, tabs, line feeds and carriage returns and shows the text from its first
// character that is neither blank nor tab.
std::string_view erasespace(std::string_view text);

// The text between its quotation marks, as attributes of playlists have them; all of it if it
// doesn't both begin and end with one.
std::string_view unquoted(std::string_view text);

// 0 if all characters are decimal digits, also for an empty text; else 1, also for none.
int check_str_r10(OptText text);
// The same for hexadecimal digits.
int check_str_hex(OptText text);

// An owned copy, or none for none.
std::optional<std::string> string_dup(OptText text);

// The number that a text of digits means, modulo 2^32 or 2^64; 0 if it is missing, empty or has
// another character.
std::uint32_t str2uint_r10(OptText text);
std::uint32_t str2uint_hex(OptText text);
std::uint64_t str2ulonglong(OptText text);

// A decimal number with "." or "," ahead of its fraction; further separators are passed over. 0.0
// if the text is empty or has any other character.
double stringtodouble(std::string_view text);

// Decimal texts.
std::string ultoa_(std::uint64_t value);
std::string uitoa_(std::uint32_t value);

// Appends the two lower-case hexadecimal digits of a byte.
void append_hex_byte(std::string& text, std::uint8_t byte);

// Reverses a text in place.
void myReserve(std::string& text);

// How often `c` occurs; 0 for a text of more than 4096 characters.
std::size_t str_count_char(OptText text, char c);

// True if the texts are equal or both missing.
bool str_match(OptText a, OptText b);

// True if both texts have at most 100 characters and are equal when the case of A to Z is ignored,
// the name notwithstanding.
bool case_sensitive_same(OptText a, OptText b);

// 0 if the text is a box type (ISO/IEC 14496-12 4.2): four characters from 0x20 to 0x7E. Else 1.
int valid_mp4_box_type(OptText text);

// `text` with every `find` replaced, cut at `limit` bytes.
std::string str_replace(std::string_view text, std::string_view find, std::string_view replacement,
                        std::size_t limit);

// The bytes of a hexadecimal text that ends at its first "," or at its end. Raises 4015 for an odd
// length and 4016 for a character that is no digit, with no bytes then. A missing text fails
// without a message.
Status StringtoChars(OptText hex, std::vector<std::uint8_t>& bytes);

// Looks the 16 bytes of `key_id` up as lower case text in the list of --decryption-keys
// ("id:key,id:key"). The result begins behind the ":" and runs to the end of the list; none if the
// id isn't there or fewer than `bits` / 4 characters follow.
std::optional<std::string_view> get_decryption_key(OptText pairs,
                                                   std::span<const std::uint8_t> key_id,
                                                   std::size_t bits);

// Milliseconds of an ISO 8601 duration; -1.0 if it doesn't begin with "P" or a part of it has more
// than 100 characters. Deliberate: a year has 360 days and a month 30, and the number ahead of "M"
// counts days where there is no "Y".
double GetDuration(OptText text);

}  // namespace mediasplit
