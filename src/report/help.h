// What the program tells about itself.
#pragma once

#include <string>

namespace mediasplit::report {

/// "mediasplit-report 2.0.0" and a line end.
std::string version_text();

/// The text of --help, made from the tables of options.
std::string help_text();

/// The part of it on this program's own options.
std::string own_options_text();

}  // namespace mediasplit::report
