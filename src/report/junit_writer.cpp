#include <ostream>
#include <string>
#include <vector>

#include "src/report/text_escape.h"
#include "src/report/wording.h"
#include "src/report/writers.h"

namespace mediasplit::report {

namespace {

using Findings = std::vector<const Finding*>;

std::string attribute(std::string_view name, std::string_view value) {
    return " " + std::string(name) + "=\"" + markup(value) + "\"";
}

std::string attribute(std::string_view name, std::size_t value) {
    return attribute(name, std::to_string(value));
}

// Different findings have different names, and a finding the same from run to run.
std::string case_name(const Finding& finding) {
    const std::string place = place_of(finding);
    return std::to_string(finding.id) + (place.empty() ? "" : " " + place) + ": " + finding.text;
}

void write_finding(const Finding& finding, std::string_view suite, std::ostream& out) {
    const CatalogueRow& row = row_of(finding);
    const std::string text = (finding.stands_for_more ? "Further texts of: " : "") + finding.text;
    out << "    <testcase" << attribute("classname", std::string(suite) + "." + class_of(row))
        << attribute("name", case_name(finding)) << ">\n      <failure"
        << attribute("type", name_of(level_of(row))) << attribute("message", text) << '>'
        << markup(text);
    if (const std::string place = place_of(finding); !place.empty()) {
        out << "\nat " << markup(place);
    }
    if (row.reference[0] != 0) {
        out << "\n" << markup(row.reference);
    }
    if (finding.count > 1) {
        out << "\n" << grouped(finding.count) << " times";
    }
    out << "</failure>\n    </testcase>\n";
}

void write_suite(const FindingsReport& report, std::size_t index, const Findings& findings,
                 std::ostream& out) {
    const std::string title = stream_title(report.streams[index]);
    // The main stream stands for the run as a whole.
    const bool tells_failure = index == 0 && report.failed;
    out << "  <testsuite" << attribute("name", title) << attribute("tests", findings.size() + 1)
        << attribute("failures", findings.size()) << attribute("errors", tells_failure ? 1U : 0U)
        << attribute("skipped", std::size_t{0}) << ">\n";
    out << "    <testcase" << attribute("classname", title)
        << attribute("name", "demultiplex " + report.input);
    if (tells_failure) {
        out << ">\n      <error" << attribute("type", "run")
            << attribute("message", "Failed to demultiplex " + report.input)
            << "/>\n    </testcase>\n";
    } else {
        out << "/>\n";
    }
    for (const Finding* finding : findings) {
        write_finding(*finding, title, out);
    }
    out << "  </testsuite>\n";
}

}  // namespace

void write_junit(const FindingsReport& report, std::ostream& out) {
    const std::vector<Findings> of_streams = findings_of_streams(report);
    const std::size_t tests = report.findings.size() + report.streams.size();
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" << attribute("name", kToolName)
        << attribute("tests", tests) << attribute("failures", report.findings.size())
        << attribute("errors", report.failed ? 1U : 0U) << ">\n";
    for (std::size_t i = 0; i < report.streams.size(); ++i) {
        write_suite(report, i, of_streams[i], out);
    }
    out << "</testsuites>\n";
}

}  // namespace mediasplit::report
