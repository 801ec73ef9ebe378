#include <array>
#include <ostream>
#include <string>

#include "src/report/html_page.h"
#include "src/report/text_escape.h"
#include "src/report/wording.h"
#include "src/report/writers.h"

namespace mediasplit::report {

namespace {

constexpr Level kGravestFirst[] = {Level::kFatal, Level::kError, Level::kWarning, Level::kInfo};

template <typename Kind>
std::string_view name_at(int index) {
    return name_of(static_cast<Kind>(index));
}

using Counts = std::array<std::uint64_t, kLevelCount>;

struct Summary {
    std::array<std::array<Counts, kLayerCount>, kFamilyCount> cells{};
    std::array<bool, kLayerCount> has_layer{};
    std::array<bool, kFamilyCount> has_family{};
};

Summary summary_of(const FindingsReport& report) {
    Summary summary;
    for (const Finding& finding : report.findings) {
        const CatalogueRow& row = row_of(finding);
        const auto family = static_cast<std::size_t>(family_of(row));
        const auto layer = static_cast<std::size_t>(layer_of(row));
        ++summary.cells[family][layer][static_cast<std::size_t>(level_of(row))];
        summary.has_family[family] = true;
        summary.has_layer[layer] = true;
    }
    return summary;
}

class HtmlPage {
public:
    HtmlPage(const FindingsReport& report, std::ostream& out) : report_(report), out_(out) {}

    void write() {
        out_ << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
                "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
                "style-src 'unsafe-inline'; script-src 'unsafe-inline'; base-uri 'none'; "
                "form-action 'none'\">\n<title>Findings in "
             << markup(report_.input) << "</title>\n<style>" << kPageStyle
             << "</style>\n</head>\n<body>\n";
        write_head();
        out_ << "<main>\n";
        write_summary();
        write_streams();
        write_findings();
        write_notes();
        write_evaluated();
        out_ << "</main>\n<footer></footer>\n<script>" << kPageScript << "</script>\n</body>\n"
             << "</html>\n";
    }

private:
    void write_head() {
        out_ << "<header>\n<h1>" << markup(report_.input) << "</h1>\n<p><span class=\"badge "
             << (report_.failed ? "error\">Failed" : "good\">Succeed") << "</span> &middot; "
             << told_counts(report_) << " &middot; " << counted(report_.evaluated.size(), "rule")
             << " tested</p>\n<p class=\"quiet\">" << kToolName << " " << kToolVersion
             << "</p>\n</header>\n";
    }

    void write_cell(const Counts& counts) {
        out_ << "<td>";
        for (const Level level : kGravestFirst) {
            const std::uint64_t count = counts[static_cast<std::size_t>(level)];
            if (count != 0) {
                out_ << "<span class=\"" << name_of(level) << "\">"
                     << counted(count, name_of(level)) << "</span> ";
            }
        }
        out_ << "</td>";
    }

    void write_summary() {
        if (report_.findings.empty()) {
            return;
        }
        const Summary summary = summary_of(report_);
        out_ << "<h2>Summary</h2>\n<div class=\"scroll\"><table class=\"summary\">\n"
                "<thead><tr><th scope=\"col\">Family</th>";
        for (int layer = 0; layer < kLayerCount; ++layer) {
            if (summary.has_layer[static_cast<std::size_t>(layer)]) {
                out_ << "<th scope=\"col\">" << name_at<Layer>(layer) << "</th>";
            }
        }
        out_ << "</tr></thead>\n<tbody>\n";
        for (int family = 0; family < kFamilyCount; ++family) {
            if (!summary.has_family[static_cast<std::size_t>(family)]) {
                continue;
            }
            out_ << "<tr><th scope=\"row\">" << name_at<Family>(family) << "</th>";
            for (int layer = 0; layer < kLayerCount; ++layer) {
                if (summary.has_layer[static_cast<std::size_t>(layer)]) {
                    write_cell(summary.cells[static_cast<std::size_t>(family)]
                                            [static_cast<std::size_t>(layer)]);
                }
            }
            out_ << "</tr>\n";
        }
        out_ << "</tbody>\n</table></div>\n";
    }

    void write_streams() {
        out_ << "<h2>Streams</h2>\n<div class=\"scroll\"><table id=\"streams\">\n<thead><tr>"
                "<th scope=\"col\">Stream</th><th scope=\"col\">Findings</th>"
                "<th scope=\"col\">Outputs</th></tr></thead>\n<tbody>\n";
        for (const Stream& stream : report_.streams) {
            out_ << "<tr><td>" << markup(stream_title(stream)) << "</td><td>" << told_counts(stream)
                 << "</td><td><ul class=\"files\">";
            for (const Output& output : stream.outputs) {
                out_ << "<li>" << markup(output.file) << " <span class=\"quiet\">"
                     << grouped(output.bytes) << " bytes</span></li>";
            }
            out_ << "</ul></td></tr>\n";
        }
        out_ << "</tbody>\n</table></div>\n";
    }

    template <typename Kind>
    void write_choice(std::string_view name, std::string_view title, int count) {
        out_ << "<label>" << title << " <select name=\"" << name
             << "\"><option value=\"\">all</option>";
        for (int i = 0; i < count; ++i) {
            out_ << "<option>" << name_at<Kind>(i) << "</option>";
        }
        out_ << "</select></label>\n";
    }

    // Out of sight until the script takes it over.
    void write_filters() {
        out_ << "<form id=\"filters\" class=\"filters\" hidden>\n"
                "<fieldset><legend>Levels</legend>";
        for (const Level level : kGravestFirst) {
            out_ << "<label><input type=\"checkbox\" name=\"level\" value=\"" << name_of(level)
                 << "\" checked> <span class=\"" << name_of(level) << "\">" << name_of(level)
                 << "</span></label>";
        }
        out_
            << "</fieldset>\n<label>Stream <select name=\"stream\"><option value=\"\">all</option>";
        for (std::size_t i = 0; i < report_.streams.size(); ++i) {
            out_ << "<option value=\"" << i << "\">" << markup(stream_title(report_.streams[i]))
                 << "</option>";
        }
        out_ << "</select></label>\n";
        write_choice<Family>("family", "Family", kFamilyCount);
        write_choice<Layer>("layer", "Layer", kLayerCount);
        out_ << "<label>Text <input type=\"search\" name=\"text\"></label>\n"
                "<button type=\"reset\">Show all</button>\n"
                "<span id=\"shown\" class=\"quiet\" role=\"status\"></span>\n</form>\n";
    }

    void write_findings() {
        out_ << "<h2>Findings</h2>\n";
        if (report_.findings.empty()) {
            out_ << "<p>No findings.</p>\n";
            return;
        }
        write_filters();
        out_ << "<table id=\"findings\">\n<thead><tr>";
        for (const std::string_view title :
             {"Level", "Id", "Family, layer", "Stream", "Message", "Count"}) {
            out_ << "<th scope=\"col\"" << (title == "Count" ? " class=\"number\"" : "")
                 << "><button type=\"button\">" << title << "</button></th>";
        }
        out_ << "</tr></thead>\n<tbody>\n";
        for (const Finding& finding : report_.findings) {
            write_finding(finding);
        }
        out_ << "</tbody>\n</table>\n";
    }

    void write_finding(const Finding& finding) {
        const CatalogueRow& row = row_of(finding);
        const Level level = level_of(row);
        out_ << "<tr data-level=\"" << name_of(level) << "\" data-stream=\"" << finding.stream
             << "\" data-family=\"" << name_of(family_of(row)) << "\" data-layer=\""
             << name_of(layer_of(row)) << "\"><td class=\"level\" data-key=\""
             << kLevelCount - static_cast<int>(level) << "\"><span class=\"badge " << name_of(level)
             << "\">" << name_of(level) << "</span></td><td>" << finding.id
             << "</td><td class=\"class\">" << class_of(row) << "</td><td class=\"stream\">"
             << markup(stream_title(report_.streams[finding.stream]))
             << "</td><td class=\"message\">";
        if (finding.stands_for_more) {
            out_ << "<span class=\"quiet\">Further texts of:</span> ";
        }
        out_ << markup(finding.text);
        if (const std::string place = place_of(finding); !place.empty()) {
            out_ << "<br><span class=\"quiet\">at " << markup(place) << "</span>";
        }
        if (row.reference[0] != 0) {
            out_ << "<br><span class=\"quiet clause\">" << markup(row.reference) << "</span>";
        }
        out_ << "</td><td class=\"number\" data-key=\"" << finding.count << "\">"
             << grouped(finding.count) << "</td></tr>\n";
    }

    void write_notes() {
        if (report_.notes.empty()) {
            return;
        }
        out_ << "<h2>Notes</h2>\n<ul id=\"notes\">\n";
        for (const Note& note : report_.notes) {
            out_ << "<li>" << markup(note.text);
            if (note.count > 1) {
                out_ << " (" << grouped(note.count) << " times)";
            }
            out_ << " <span class=\"quiet\">" << markup(stream_title(report_.streams[note.stream]))
                 << "</span></li>\n";
        }
        out_ << "</ul>\n";
    }

    void write_evaluated() {
        out_ << "<h2>Rules tested</h2>\n<details><summary>"
             << counted(report_.evaluated.size(), "rule")
             << "; all others were never met</summary>\n<p class=\"ids\">";
        for (const int id : report_.evaluated) {
            out_ << id << ' ';
        }
        out_ << "</p></details>\n";
    }

    const FindingsReport& report_;
    std::ostream& out_;
};

}  // namespace

void write_html(const FindingsReport& report, std::ostream& out) {
    HtmlPage(report, out).write();
}

}  // namespace mediasplit::report
