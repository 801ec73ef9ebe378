#include "src/report/help.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>

#include "src/report/option_table.h"
#include "src/report/writers.h"

namespace mediasplit::report {

namespace {

constexpr std::size_t kWidth = 80;
constexpr std::size_t kHelpColumn = 26;

// `text` from column `at` on, in lines of kWidth that begin at kHelpColumn.
std::string folded(std::string_view text, std::size_t at) {
    std::string out;
    if (at + 1 > kHelpColumn) {
        out += '\n';
        at = 0;
    }
    out.append(kHelpColumn - at, ' ');
    std::size_t column = kHelpColumn;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(text.size(), word.size() + 1));
        if (column != kHelpColumn && column + 1 + word.size() > kWidth) {
            out += '\n';
            out.append(kHelpColumn, ' ');
            column = kHelpColumn;
        } else if (column != kHelpColumn) {
            out += ' ';
            ++column;
        }
        out += word;
        column += word.size();
    }
    return out + "\n";
}

std::string rows_text(std::span<const OptionRow> rows) {
    std::string out;
    for (const OptionRow& row : rows) {
        std::string head = "  " + std::string(row.word);
        if (!row.value_name.empty()) {
            head += " " + std::string(row.value_name);
        }
        out += head + folded(row.help, head.size());
    }
    return out;
}

}  // namespace

std::string version_text() {
    return "mediasplit-report " + std::string(kToolVersion) + "\n";
}

std::string own_options_text() {
    return "Options of the report:\n" + rows_text(kReportOptions);
}

std::string help_text() {
    return "Usage: mediasplit-report -i INPUT -o FOLDER [OPTION...]\n"
           "\n"
           "Takes streaming media apart as mediasplit does, and reports what its rules found\n"
           "on the way: where containers, manifests and bitstreams break the standards.\n"
           "\n" +
           own_options_text() +
           "\n"
           "Options of the run, as in mediasplit:\n" +
           rows_text(kRunOptions) +
           "\n"
           "Exit status:\n"
           "  0  the run succeeded\n"
           "  1  the run failed, or the report couldn't be written\n"
           "  2  the run succeeded and there are findings that --fail-on asks for\n"
           "\n"
           "Examples:\n"
           "  mediasplit-report -i film.mp4 -o out\n"
           "  mediasplit-report -i master.m3u8 -o out --report findings.html\n"
           "  mediasplit-report -i live.mpd -o out --report findings.xml --fail-on error\n";
}

}  // namespace mediasplit::report
