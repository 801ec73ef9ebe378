// The parts that the names of elementary stream files are made of.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "src/records/manifest_context.h"

namespace mediasplit {

// What stands in the place of an extension of more than six characters.
inline constexpr std::string_view kUnknownExtension = "unknow";
[[nodiscard]] std::string_view output_extension(std::string_view extension);

// Appends the pieces as a whole; none of them, and false, if the stem would get to 1,024
// characters.
bool append_pieces(std::string& stem, std::initializer_list<std::string_view> pieces);

// Appends what a playlist tells of an audio rendition: "_GroupID_", "_Lang_" and "_Channel_", each
// with its text.
void append_rendition(std::string& stem, const ManifestContext& context);

// "<stem>.out.<extension>" with the stem made safe (fileStrValid), as which it is left. None for a
// safe stem of more than 248 characters.
[[nodiscard]] std::optional<std::string> output_file_name(std::string& stem,
                                                          std::string_view extension);

}  // namespace mediasplit
