// Taking attribute lists apart (RFC 8216 4.2). All results show parts of the line that is read.
#pragma once

#include <cstddef>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>

#include "src/records/segment_slot.h"

namespace mediasplit {

// Longest piece between commas, in characters. A longer one ends the list.
inline constexpr std::size_t kLongestPiece = 500;
inline constexpr std::size_t kUnlimitedPiece = std::numeric_limits<std::size_t>::max();

// Goes through the pieces between commas; runs of commas count as one.
class PieceReader {
public:
    explicit PieceReader(std::string_view list, std::size_t longest = kLongestPiece)
        : list_(list), longest_(longest) {}

    // The next piece; nothing at the end of the list.
    std::optional<std::string_view> next();
    // The same, but a piece goes on over the commas between double quotes. One that gets as long as
    // `kLongestPiece` that way ends the list.
    std::optional<std::string_view> next_quoted();

private:
    // Lets the current piece reach to the end of the next one. False if there is none.
    bool extend();
    [[nodiscard]] std::string_view current() const { return list_.substr(begin_, end_ - begin_); }

    std::string_view list_;
    std::size_t longest_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
};

struct AttributeText {
    std::string_view name;
    std::string_view value;
};

// A piece cut at its first "="; nothing if it has none.
std::optional<AttributeText> split_attribute(std::string_view piece);
// The same with blanks around name and value taken off.
std::optional<AttributeText> split_trimmed_attribute(std::string_view piece);

// The value without its first and its last character, whatever they are.
std::string_view without_quotes(std::string_view value);

// A range of the form "length" or "length@offset" (RFC 8216 4.3.2.2). An empty text gives an empty
// length.
std::unique_ptr<ByteRangeText> split_byte_range(std::string_view text);

}  // namespace mediasplit
