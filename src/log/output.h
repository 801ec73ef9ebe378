#pragma once

#include <string_view>

namespace mediasplit {

/// Writes text to standard output or standard error with one output call, so that lines of
/// concurrent threads stay whole, and hands it to the system at once.
void write_to_stdout(std::string_view text);
void write_to_stderr(std::string_view text);

}  // namespace mediasplit
