#include "src/file_util/name_parts.h"

#include "src/file_util/path_names.h"

namespace mediasplit {
namespace {

constexpr std::size_t kLongestExtension = 6;
constexpr std::size_t kLongestStem = 1023;     // while the parts are put together
constexpr std::size_t kLongestSafeStem = 248;  // of a finished name
constexpr std::size_t kLongestChannelText = 32;

void append_channels(std::string& stem, const std::string& channels) {
    if (allNumber(channels)) {
        append_pieces(stem, {"_Channel_", channels, "ch"});
    } else if (const auto cleaned = eraseInvalidChr(channels, kLongestChannelText); cleaned) {
        append_pieces(stem, {"_Channel_", *cleaned});
    }
}

}  // namespace

std::string_view output_extension(std::string_view extension) {
    return extension.size() > kLongestExtension ? kUnknownExtension : extension;
}

bool append_pieces(std::string& stem, std::initializer_list<std::string_view> pieces) {
    std::size_t length = stem.size();
    for (const std::string_view piece : pieces) {
        length += piece.size();
    }
    if (length > kLongestStem) {
        return false;
    }
    for (const std::string_view piece : pieces) {
        stem += piece;
    }
    return true;
}

void append_rendition(std::string& stem, const ManifestContext& context) {
    if (context.group_id) {
        append_pieces(stem, {"_GroupID_", *context.group_id});
    }
    if (context.language) {
        append_pieces(stem, {"_Lang_", *context.language});
    }
    if (context.channels_text) {
        append_channels(stem, *context.channels_text);
    }
}

std::optional<std::string> output_file_name(std::string& stem, std::string_view extension) {
    static_cast<void>(fileStrValid(&stem));
    if (stem.size() > kLongestSafeStem) {
        return std::nullopt;
    }
    return stem + ".out." + std::string(extension);
}

}  // namespace mediasplit
