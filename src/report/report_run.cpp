#include "src/report/report_run.h"

#include <csignal>
#include <cstdio>
#include <optional>
#include <ostream>
#include <string>
#include <utility>

#include "src/log/output.h"
#include "src/main/run.h"
#include "src/records/run_options.h"
#include "src/report/command_words.h"
#include "src/report/findings_collector.h"
#include "src/report/help.h"
#include "src/report/live_lines.h"
#include "src/report/report_file.h"
#include "src/report/writers.h"

namespace mediasplit::report {

namespace {

constexpr int kSuccess = 0;
constexpr int kFailedRun = 1;
constexpr int kFoundSomething = 2;

int tell_error(const std::string& text, bool is_usage) {
    write_to_stderr("mediasplit-report: " + text + "\n" +
                    (is_usage ? "\"mediasplit-report --help\" tells what there is.\n" : ""));
    return kFailedRun;
}

int run_with_sink(const CommandWords& words, FindingsCollector& collector) {
    set_findings_sink(&collector);
    std::optional<LiveLines> lines;
    if (!words.quiet && LiveLines::can_be_shown()) {
        lines.emplace(collector);
    }
    const int exit_status =
        run_program(static_cast<int>(words.run_words.size()), words.run_words.data());
    lines.reset();
    set_findings_sink(nullptr);
    static_cast<void>(std::fflush(stdout));
    return exit_status;
}

void write_as(Format format, const FindingsReport& report, const TextLayout& layout,
              std::ostream& out) {
    switch (format) {
        case Format::kJson:
            write_json(report, out);
            break;
        case Format::kText:
            write_text(report, layout, out);
            break;
        case Format::kHtml:
            write_html(report, out);
            break;
        case Format::kJunit:
            write_junit(report, out);
            break;
    }
}

int report_run(const CommandWords& words, ReportFile file) {
    FindingsCollector collector;
    const int run_status = run_with_sink(words, collector);
    FindingsReport report = collector.take_report(g_input.value_or(""), run_status != kSuccess);
    const bool found = words.fail_on && count_from(report, *words.fail_on) != 0;
    report = with_level(std::move(report), words.least_level);
    if (file.is_output_of(report.streams)) {
        return tell_error(
            "can't write the report to " + words.report_path + ": the run wrote a stream to it",
            false);
    }
    const bool whole =
        file.write([&](std::ostream& out) { write_as(words.format, report, file.layout(), out); });
    if (!whole) {
        return tell_error("can't write the report to " + words.report_path, false);
    }
    if (run_status != kSuccess) {
        return run_status;
    }
    return found ? kFoundSomething : kSuccess;
}

}  // namespace

int run_reporting(int count, const char* const* arguments) {
    open_standard_descriptors();
    const CommandWords words = read_command_words(count, arguments);
    if (!words.error.empty()) {
        return tell_error(words.error, true);
    }
    if (words.wants_help) {
        write_to_stdout(help_text());
        return kSuccess;
    }
    if (words.wants_version) {
        write_to_stdout(version_text());
        return kSuccess;
    }
    if (words.only_asks) {
        const int exit_status =
            run_program(static_cast<int>(words.run_words.size()), words.run_words.data());
        if (words.asks_usage) {
            write_to_stdout("\n" + own_options_text());
        }
        return exit_status;
    }
    // A report that goes to a file whose limit is reached, or to a reader that went away, shows as
    // a failed write.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    std::string error;
    std::optional<ReportFile> file =
        ReportFile::open(words.report_path, words.input, words.folder, error);
    if (!file) {
        return tell_error("can't write the report to " + words.report_path + ": " + error, false);
    }
    return report_run(words, std::move(*file));
}

}  // namespace mediasplit::report
