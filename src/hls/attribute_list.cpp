#include "src/hls/attribute_list.h"

#include <algorithm>

#include "src/hls/playlist_reader.h"
#include "src/util/text.h"

namespace mediasplit {

bool hasPairsDoubleQuotation(std::string_view text) {
    return std::count(text.begin(), text.end(), '"') % 2 == 0;
}

std::optional<std::string_view> PieceReader::next() {
    begin_ = std::min(list_.find_first_not_of(',', end_), list_.size());
    end_ = std::min(list_.find(',', begin_), list_.size());
    if (begin_ == end_) {
        return std::nullopt;
    }
    if (end_ - begin_ > longest_) {
        begin_ = end_ = list_.size();
        return std::nullopt;
    }
    return current();
}

bool PieceReader::extend() {
    const std::size_t begin = list_.find_first_not_of(',', end_);
    if (begin == std::string_view::npos) {
        return false;
    }
    end_ = std::min(list_.find(',', begin), list_.size());
    return true;
}

std::optional<std::string_view> PieceReader::next_quoted() {
    if (!next()) {
        return std::nullopt;
    }
    while (!hasPairsDoubleQuotation(current()) && extend()) {
        if (end_ - begin_ >= kLongestPiece) {
            begin_ = end_ = list_.size();
            return std::nullopt;
        }
    }
    return current();
}

std::optional<AttributeText> split_attribute(std::string_view piece) {
    const std::size_t at = piece.find('=');
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    return AttributeText{piece.substr(0, at), piece.substr(at + 1)};
}

std::optional<AttributeText> split_trimmed_attribute(std::string_view piece) {
    auto attribute = split_attribute(piece);
    if (attribute) {
        attribute->name = erasespace(attribute->name);
        attribute->value = erasespace(attribute->value);
    }
    return attribute;
}

std::string_view without_quotes(std::string_view value) {
    return value.size() < 2 ? std::string_view{} : value.substr(1, value.size() - 2);
}

std::unique_ptr<ByteRangeText> split_byte_range(std::string_view text) {
    auto range = std::make_unique<ByteRangeText>();
    const std::size_t length = std::min(text.find_first_not_of('@'), text.size());
    const std::size_t length_end = std::min(text.find('@', length), text.size());
    range->length = text.substr(length, length_end - length);
    const std::size_t offset = text.find_first_not_of('@', length_end);
    if (offset != std::string_view::npos) {
        range->offset = text.substr(offset, text.find('@', offset) - offset);
    }
    return range;
}

}  // namespace mediasplit
