// The forms that a report is written in.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string_view>

#include "src/report/findings_report.h"

namespace mediasplit::report {

inline constexpr std::string_view kToolName = "mediasplit";
inline constexpr std::string_view kToolVersion = MEDIASPLIT_VERSION;

/// How a text report is laid out.
struct TextLayout {
    std::size_t width = 100;  ///< columns of a line
    bool coloured = false;
};

/// For programs; docs/findings-schema.json describes it.
void write_json(const FindingsReport& report, std::ostream& out);
/// For people at a terminal: stream by stream, the gravest findings first.
void write_text(const FindingsReport& report, const TextLayout& layout, std::ostream& out);
/// For people at a browser: one page that needs nothing else.
void write_html(const FindingsReport& report, std::ostream& out);
/// For build servers, JUnit XML: a suite for each stream, a failure for each finding; a run that
/// failed is an error of the main stream's suite.
void write_junit(const FindingsReport& report, std::ostream& out);

}  // namespace mediasplit::report
