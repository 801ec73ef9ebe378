// Texts of a stream in all forms of a report: each document stays whole, whatever the bytes are.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "src/report/text_escape.h"
#include "src/report/writers.h"

namespace {

namespace report = mediasplit::report;

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

// A report with the text in every place that takes one.
report::FindingsReport report_with(const std::string& text) {
    report::FindingsReport result;
    result.input = text;
    result.streams.resize(2);
    result.streams[1].name = text;
    result.streams[1].outputs = {{text, text, 1}};
    result.findings.resize(2);
    result.findings[0].id = 4303;
    result.findings[0].stream = 1;
    result.findings[0].element = text;
    result.findings[0].attribute = text;
    result.findings[0].text = text;
    result.findings[1].id = 2039;
    result.notes = {{1, text, 1}};
    return result;
}

std::size_t count(std::string_view text, std::string_view word) {
    std::size_t found = 0;
    for (std::size_t at = text.find(word); at != std::string_view::npos;
         at = text.find(word, at + 1)) {
        ++found;
    }
    return found;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::string valid = report::valid_utf8(text);
    require(report::valid_utf8(valid) == valid);
    const std::string shown = report::printable(text);
    require(report::printable(shown) == shown);
    require(shown.find_first_of("\n\033") == std::string::npos);

    const report::FindingsReport written = report_with(text);
    std::ostringstream json;
    report::write_json(written, json);
    const auto read = nlohmann::json::parse(json.str());
    require(read["findings"][0]["text"] == valid);
    std::ostringstream page;
    report::write_html(written, page);
    require(count(page.str(), "<script>") == 1 && count(page.str(), "<tr data-level") == 2);
    std::ostringstream junit;
    report::write_junit(written, junit);
    require(count(junit.str(), "<testcase") == 4 && count(junit.str(), "</failure>") == 2);
    std::ostringstream terminal;
    report::write_text(written, {40, false}, terminal);
    require(terminal.str().find('\033') == std::string::npos);
    return 0;
}
