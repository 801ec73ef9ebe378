#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "src/report/text_escape.h"
#include "src/report/wording.h"
#include "src/report/writers.h"

namespace mediasplit::report {

namespace {

constexpr std::size_t kLeastWidth = 30;
constexpr std::size_t kTextIndent = 10;

struct LevelHead {
    Level level = Level::kInfo;
    std::string_view title{};
    std::string_view colour{};
};

// The gravest first.
constexpr LevelHead kLevelHeads[] = {
    {Level::kFatal, "Fatal errors", "\033[1;31m"},
    {Level::kError, "Errors", "\033[31m"},
    {Level::kWarning, "Warnings", "\033[33m"},
    {Level::kInfo, "Info", "\033[36m"},
};
constexpr std::string_view kBold = "\033[1m";
constexpr std::string_view kDim = "\033[2m";

class TextPage {
public:
    TextPage(const FindingsReport& report, const TextLayout& layout, std::ostream& out)
        : report_(report),
          findings_(findings_of_streams(report)),
          width_(std::max(layout.width, kLeastWidth)),
          coloured_(layout.coloured),
          out_(out) {}

    void write() {
        write_head();
        for (std::size_t i = 0; i < report_.streams.size(); ++i) {
            write_stream(i);
        }
    }

private:
    [[nodiscard]] std::string in(std::string_view colour, const std::string& text) const {
        return coloured_ && !colour.empty() ? std::string(colour) + text + "\033[0m" : text;
    }

    void write_head() {
        out_ << in(kBold, printable(report_.input)) << '\n'
             << (report_.failed ? in(kLevelHeads[1].colour, "Failed") : "Succeed") << "; "
             << told_counts(report_) << "; " << counted(report_.evaluated.size(), "rule")
             << " tested\n";
    }

    // Words of `text` in lines of the page's width, the first behind what stands there already.
    void write_wrapped(std::string_view text, std::string_view colour) {
        std::string line;
        std::size_t line_width = 0;
        const auto end_line = [&] {
            out_ << in(colour, line) << '\n';
            line.clear();
            line_width = 0;
        };
        for (std::size_t at = text.find_first_not_of(' '); at != std::string_view::npos;) {
            const std::size_t end = std::min(text.find(' ', at), text.size());
            const std::string_view word = text.substr(at, end - at);
            const std::size_t word_width = width_of(word);
            if (line_width != 0 && kTextIndent + line_width + 1 + word_width > width_) {
                end_line();
                out_ << std::string(kTextIndent, ' ');
            }
            if (line_width != 0) {
                line += ' ';
                ++line_width;
            }
            line += word;
            line_width += word_width;
            at = text.find_first_not_of(' ', end);
        }
        end_line();
    }

    void write_stream(std::size_t index) {
        const Stream& stream = report_.streams[index];
        const bool has_notes =
            std::any_of(report_.notes.begin(), report_.notes.end(),
                        [index](const Note& note) { return note.stream == index; });
        const bool is_idle = stream.outputs.empty() && stream.counts == decltype(stream.counts){};
        if (stream.name.empty() && is_idle && !has_notes && report_.streams.size() > 1) {
            return;  // all that happened, happened in the streams of the manifest
        }
        out_ << '\n' << in(kBold, stream_title(stream)) << ": " << told_counts(stream) << '\n';
        write_outputs(stream);
        for (const LevelHead& head : kLevelHeads) {
            write_level(index, head);
        }
        if (has_notes) {
            write_notes(index);
        }
    }

    void write_outputs(const Stream& stream) {
        std::size_t longest = 0;
        std::size_t digits = 0;
        for (const Output& output : stream.outputs) {
            longest = std::max(longest, width_of(printable(output.file)));
            digits = std::max(digits, grouped(output.bytes).size());
        }
        for (const Output& output : stream.outputs) {
            const std::string file = printable(output.file);
            const std::string bytes = grouped(output.bytes);
            out_ << "    " << file << std::string(longest - width_of(file) + 2, ' ')
                 << std::string(digits - bytes.size(), ' ') << bytes << " bytes\n";
        }
    }

    void write_level(std::size_t stream, const LevelHead& head) {
        bool is_first = true;
        for (const Finding* finding : findings_[stream]) {
            if (level_of(row_of(*finding)) != head.level) {
                continue;
            }
            if (is_first) {
                out_ << "  " << in(head.colour, std::string(head.title)) << '\n';
                is_first = false;
            }
            write_finding(*finding, head);
        }
    }

    void write_finding(const Finding& finding, const LevelHead& head) {
        const CatalogueRow& row = row_of(finding);
        out_ << "    " << in(head.colour, std::to_string(finding.id)) << "  ";
        write_wrapped(
            (finding.stands_for_more ? "Further texts of: " : "") + printable(finding.text), "");
        std::string details = class_of(row);
        for (const std::string& detail :
             {place_of(finding), std::string(row.reference),
              finding.count > 1 ? grouped(finding.count) + " times" : std::string()}) {
            if (!detail.empty()) {
                details += "; " + detail;
            }
        }
        out_ << std::string(kTextIndent, ' ');
        write_wrapped(details, kDim);
    }

    void write_notes(std::size_t stream) {
        out_ << "  Notes\n";
        for (const Note& note : report_.notes) {
            if (note.stream == stream) {
                out_ << std::string(kTextIndent, ' ');
                write_wrapped(
                    printable(note.text) +
                        (note.count > 1 ? " (" + grouped(note.count) + " times)" : std::string()),
                    "");
            }
        }
    }

    const FindingsReport& report_;
    std::vector<std::vector<const Finding*>> findings_;
    std::size_t width_;
    bool coloured_;
    std::ostream& out_;
};

}  // namespace

void write_text(const FindingsReport& report, const TextLayout& layout, std::ostream& out) {
    TextPage(report, layout, out).write();
}

}  // namespace mediasplit::report
