// Telling addresses from local paths.
#pragma once

#include <string_view>

namespace mediasplit {

// Whether the text is an http or https address.
inline bool is_url(std::string_view text) {
    return text.starts_with("http://") || text.starts_with("https://");
}

}  // namespace mediasplit
