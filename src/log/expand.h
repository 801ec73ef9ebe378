#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "src/log/message_id.h"

namespace mediasplit {

/// Bytes of an expanded text and of a finished line, with the terminator that ends them.
inline constexpr std::size_t kLineCapacity = 2048;

/// A message with its values, bare and as a finished line.
struct ExpandedMessage {
    std::string line{};  ///< with prefix, reference in parentheses and line end
    std::size_t text_begin = 0;
    std::size_t text_size = 0;

    /// The message alone, as a part of the line.
    [[nodiscard]] std::string_view text() const {
        return std::string_view(line).substr(text_begin, text_size);
    }
};

/// Puts the values into the row's message. Values that would make the line pass `kLineCapacity`
/// are cut, the row's own text never is. Nothing if the values don't fit the row's placeholders.
std::optional<ExpandedMessage> expand_message(const CatalogueRow& row, const MessageValue* values,
                                              std::size_t count);

/// What a line without values reads like when it is written as a format: "%%" gives "%", all else
/// stands as it is.
std::string written_form(std::string line);

}  // namespace mediasplit
