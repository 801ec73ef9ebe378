#include "src/report/command_words.h"

#include <getopt.h>

#include <algorithm>
#include <iterator>

#include "src/report/option_table.h"

namespace mediasplit::report {

namespace {

template <typename Value>
struct Choice {
    std::string_view name{};
    Value value{};
};

constexpr Choice<Format> kFormats[] = {{"json", Format::kJson},
                                       {"text", Format::kText},
                                       {"html", Format::kHtml},
                                       {"junit", Format::kJunit}};
constexpr Choice<Format> kExtensions[] = {{".json", Format::kJson},
                                          {".html", Format::kHtml},
                                          {".htm", Format::kHtml},
                                          {".xml", Format::kJunit}};
constexpr Choice<std::optional<Level>> kFailLevels[] = {
    {"error", Level::kError}, {"warning", Level::kWarning}, {"none", std::nullopt}};
constexpr Choice<Level> kLeastLevels[] = {
    {"info", Level::kInfo}, {"warning", Level::kWarning}, {"error", Level::kError}};

template <typename Value, std::size_t kCount>
const Value* find_choice(const Choice<Value> (&choices)[kCount], std::string_view name) {
    const auto* row = std::find_if(std::begin(choices), std::end(choices),
                                   [name](const Choice<Value>& c) { return c.name == name; });
    return row == std::end(choices) ? nullptr : &row->value;
}

// What getopt_long answers for the option at a place of the table.
constexpr int kFirstOption = 256;

enum OwnOption : std::uint8_t {
    kReport,
    kFormat,
    kFailOn,
    kMinLevel,
    kQuiet,
    kHelp,
    kVersion,
    kOwnOptionCount
};
static_assert(std::size(kReportOptions) == kOwnOptionCount);
static_assert(kReportOptions[kReport].word == "--report");
static_assert(kReportOptions[kFormat].word == "--format");
static_assert(kReportOptions[kFailOn].word == "--fail-on");
static_assert(kReportOptions[kMinLevel].word == "--min-level");
static_assert(kReportOptions[kQuiet].word == "--quiet");
static_assert(kReportOptions[kHelp].word == "--help");
static_assert(kReportOptions[kVersion].word == "--version");

// The row of this program's option that a word names, with or without "=VALUE" behind it.
const OptionRow* own_option(std::string_view word) {
    const std::string_view name = word.substr(0, word.find('='));
    const auto* row = std::find_if(std::begin(kReportOptions), std::end(kReportOptions),
                                   [name](const OptionRow& r) { return r.word == name; });
    return row == std::end(kReportOptions) ? nullptr : row;
}

// The words of `arguments` that are this program's own; the others go to `words.run_words`.
std::vector<char*> split_words(int count, const char* const* arguments, CommandWords& words) {
    std::vector<char*> own;
    const auto add_own = [&own](const char* word) {
        own.push_back(const_cast<char*>(word));  // getopt_long changes their order only
    };
    bool is_reading = true;  // the run reads on until it meets a word that it doesn't know
    for (int i = 0; i < count; ++i) {
        const std::string_view word = arguments[i];
        if (i == 0) {
            add_own(arguments[i]);
            words.run_words.push_back(arguments[i]);
            continue;
        }
        if (const OptionRow* row = own_option(word); row != nullptr) {
            add_own(arguments[i]);
            const bool has_value = word.size() > row->word.size();
            if (row->value != OptionValue::kNone && !has_value && i + 1 < count) {
                add_own(arguments[++i]);
            }
            continue;
        }
        words.run_words.push_back(arguments[i]);
        if (has_run_option(word, true)) {
            const char* const value = i + 1 < count ? arguments[++i] : nullptr;
            if (value != nullptr) {
                words.run_words.push_back(value);
            }
            if (word == "-i" || word == "-o") {
                std::optional<std::string>& text = word == "-i" ? words.input : words.folder;
                text = value == nullptr ? std::nullopt : std::optional<std::string>(value);
            }
        } else if (has_run_option(word, false)) {
            words.only_asks = words.only_asks || (is_reading && !words.input);
            words.asks_usage = words.asks_usage || (is_reading && word == "-h");
            is_reading = false;
        } else {
            is_reading = false;
        }
    }
    if (words.run_words.size() <= 1) {
        words.only_asks = true;
        words.asks_usage = true;
    }
    return own;
}

std::vector<option> long_options() {
    std::vector<option> options;
    for (std::size_t i = 0; i < std::size(kReportOptions); ++i) {
        const OptionRow& row = kReportOptions[i];
        options.push_back({row.word.data() + 2,
                           row.value == OptionValue::kNone ? no_argument : required_argument,
                           nullptr, kFirstOption + static_cast<int>(i)});
    }
    options.push_back({});
    return options;
}

struct Choices {
    std::optional<Format> format{};
    std::optional<Level> least_level{};
};

// False if the value is none of the option's choices.
bool take_option(OwnOption which, const char* value, CommandWords& words, Choices& choices) {
    switch (which) {
        case kReport:
            words.report_path = value;
            return true;
        case kFormat:
            if (const Format* format = find_choice(kFormats, value); format != nullptr) {
                choices.format = *format;
                return true;
            }
            return false;
        case kFailOn:
            if (const auto* level = find_choice(kFailLevels, value); level != nullptr) {
                words.fail_on = *level;
                return true;
            }
            return false;
        case kMinLevel:
            if (const Level* level = find_choice(kLeastLevels, value); level != nullptr) {
                choices.least_level = *level;
                return true;
            }
            return false;
        case kQuiet:
            words.quiet = true;
            return true;
        case kHelp:
            words.wants_help = true;
            return true;
        case kVersion:
            words.wants_version = true;
            return true;
        case kOwnOptionCount:
            break;
    }
    return false;
}

void read_own_words(std::vector<char*> own, CommandWords& words) {
    const int count = static_cast<int>(own.size());
    own.push_back(nullptr);
    const std::vector<option> options = long_options();
    Choices choices;
    optind = 0;  // begins anew
    opterr = 0;
    for (;;) {
        const int answer = getopt_long(count, own.data(), "+:", options.data(), nullptr);
        if (answer == -1) {
            break;
        }
        if (answer < kFirstOption) {
            const std::string word = own[static_cast<std::size_t>(optind - 1)];
            words.error = answer == ':' ? "the option \"" + word + "\" needs a value"
                                        : "the option \"" + word + "\" takes no value";
            return;
        }
        const auto which = static_cast<OwnOption>(answer - kFirstOption);
        if (!take_option(which, optarg, words, choices)) {
            words.error = "the option \"" + std::string(kReportOptions[which].word) +
                          "\" takes one of " + std::string(kReportOptions[which].value_name) +
                          ", not \"" + optarg + "\"";
            return;
        }
    }
    words.format = choices.format.value_or(format_of_file(words.report_path));
    // On a build server each finding that is listed counts as a failure: info doesn't by default.
    words.least_level = choices.least_level.value_or(
        words.format == Format::kJunit ? Level::kWarning : Level::kInfo);
}

}  // namespace

Format format_of_file(std::string_view path) {
    const std::string_view name = path.substr(path.rfind('/') + 1);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos) {
        return Format::kText;
    }
    const Format* format = find_choice(kExtensions, name.substr(dot));
    return format == nullptr ? Format::kText : *format;
}

CommandWords read_command_words(int count, const char* const* arguments) {
    CommandWords words;
    read_own_words(split_words(count, arguments, words), words);
    return words;
}

}  // namespace mediasplit::report
