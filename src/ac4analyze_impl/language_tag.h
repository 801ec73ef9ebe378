#pragma once

#include <string_view>

namespace mediasplit {

// Whether a language tag of a content type is well formed: parts joined by "-", the first of lower
// case letters, the others of letters and digits; at most 4 bytes for a plain language and 11 with
// further parts.
bool language_tag_is_valid(std::string_view tag);

}  // namespace mediasplit
