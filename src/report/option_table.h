// The options that this program has beyond those of a run.
#pragma once

#include "src/main/option_table.h"

namespace mediasplit::report {

inline constexpr OptionRow kReportOptions[] = {
    {"--report", OptionValue::kFile, "FILE",
     "Where the report goes; \"-\", which is also the default, is standard output. What the run "
     "itself prints there goes to standard error then."},
    {"--format", OptionValue::kChoice, "json|text|html|junit",
     "The form of the report. Unless given, the extension of FILE tells (.json, .html, .htm, .xml "
     "for JUnit), and else it is text."},
    {"--fail-on", OptionValue::kChoice, "error|warning|none",
     "Ends with exit status 2 if the run succeeded and something of this level or above was found; "
     "none unless given."},
    {"--min-level", OptionValue::kChoice, "info|warning|error",
     "Leaves out findings below this level; info unless given, and warning for JUnit."},
    {"--quiet", OptionValue::kNone, "",
     "No live lines on standard error while the run goes on at a terminal."},
    {"--help", OptionValue::kNone, "", "Prints this help."},
    {"--version", OptionValue::kNone, "", "Prints name and version."},
};

}  // namespace mediasplit::report
