// The command line: what is this program's own, and what is the run's.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "src/report/rule_class.h"

namespace mediasplit::report {

enum class Format : std::uint8_t { kJson, kText, kHtml, kJunit };

/// The format that a file's extension stands for; text if it stands for none.
Format format_of_file(std::string_view path);

struct CommandWords {
    std::string report_path{"-"};
    Format format = Format::kText;
    std::optional<Level> fail_on{};  ///< none: findings don't count for the exit status
    Level least_level = Level::kInfo;
    bool quiet = false;
    bool wants_help = false;
    bool wants_version = false;

    std::vector<const char*> run_words{};  ///< the arguments of the run, program name first
    std::optional<std::string> input{};    ///< value of the run's last -i
    std::optional<std::string> folder{};   ///< value of the run's last -o
    /// The run only tells version or usage and has no input: there is nothing to report.
    bool only_asks = false;
    bool asks_usage = false;  ///< and it is the usage that it tells

    std::string error{};  ///< what is wrong with this program's own words, or empty
};

/// Takes the arguments of `main` apart. A word behind one of the run's options that take a value is
/// that value, whatever it looks like; all words that aren't this program's own are the run's to
/// judge.
CommandWords read_command_words(int count, const char* const* arguments);

}  // namespace mediasplit::report
