// What the name of the input tells about its kind.
#pragma once

#include <string_view>

#include "src/records/run_options.h"

namespace mediasplit {

// Whether a name stands for a numbered series: it holds "%d", or "%" and "d" with nothing but
// decimal digits between them.
bool input_is_template(std::string_view name);

// The kind of an input, by the text from the last "." of its name on; letters count as written.
FormatId format_of_input(std::string_view name);

}  // namespace mediasplit
