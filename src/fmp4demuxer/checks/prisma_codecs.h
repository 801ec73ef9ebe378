// Codec texts of enhancement streams in manifests.
#pragma once

#include <string>

#include "src/util/opt_text.h"

namespace mediasplit {

// The first codec of a comma list that names the enhancement format, the whole list if none does.
// Empty for a missing or empty list and for one of more than 100 characters.
[[nodiscard]] std::string get_main_codec(OptText codecs);

}  // namespace mediasplit
