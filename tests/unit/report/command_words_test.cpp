#include "src/report/command_words.h"

#include <gtest/gtest.h>

#include <iterator>

#include "src/report/option_table.h"

namespace mediasplit::report {
namespace {

using Words = std::vector<std::string>;

CommandWords read(const Words& arguments) {
    std::vector<const char*> pointers{"mediasplit-report"};
    for (const std::string& word : arguments) {
        pointers.push_back(word.c_str());
    }
    return read_command_words(static_cast<int>(pointers.size()), pointers.data());
}

// The words of the run behind the program's name. Read before the arguments end.
Words run_words_of(const Words& arguments) {
    std::vector<const char*> pointers{"mediasplit-report"};
    for (const std::string& word : arguments) {
        pointers.push_back(word.c_str());
    }
    const CommandWords words =
        read_command_words(static_cast<int>(pointers.size()), pointers.data());
    EXPECT_EQ(words.error, "");
    EXPECT_STREQ(words.run_words.at(0), "mediasplit-report");
    return {std::next(words.run_words.begin()), words.run_words.end()};
}

TEST(CommandWords, DefaultsAreTextOnStandardOutput) {
    const CommandWords words = read({"-i", "a.mp4", "-o", "out"});
    EXPECT_EQ(words.error, "");
    EXPECT_EQ(words.report_path, "-");
    EXPECT_EQ(words.format, Format::kText);
    EXPECT_FALSE(words.fail_on);
    EXPECT_EQ(words.least_level, Level::kInfo);
    EXPECT_FALSE(words.quiet);
    EXPECT_FALSE(words.only_asks);
    EXPECT_EQ(words.input, "a.mp4");
    EXPECT_EQ(words.folder, "out");
}

TEST(CommandWords, OwnWordsAreTakenFromAnywhere) {
    const Words arguments{"--report", "r.json", "-i",  "a.mp4",   "--fail-on",
                          "warning",  "-o",     "out", "--quiet", "--min-level=error"};
    EXPECT_EQ(run_words_of(arguments), (Words{"-i", "a.mp4", "-o", "out"}));
    const CommandWords words = read(arguments);
    EXPECT_EQ(words.report_path, "r.json");
    EXPECT_EQ(words.format, Format::kJson);
    EXPECT_EQ(words.fail_on, Level::kWarning);
    EXPECT_EQ(words.least_level, Level::kError);
    EXPECT_TRUE(words.quiet);
}

TEST(CommandWords, ValuesOfTheRunAreNotExamined) {
    for (const char* option :
         {"-i", "-o", "-s", "--decryption-keys", "--track-id", "--pid", "--live-duration"}) {
        SCOPED_TRACE(option);
        const Words arguments{option, "--report", "x"};
        EXPECT_EQ(run_words_of(arguments), arguments);
        EXPECT_EQ(read(arguments).report_path, "-");
    }
}

TEST(CommandWords, OwnValuesAreNotExamined) {
    EXPECT_EQ(read({"--report", "-i"}).report_path, "-i");
    EXPECT_EQ(read({"--report="}).report_path, "");
    EXPECT_EQ(read({"--report", "a=b"}).report_path, "a=b");
}

TEST(CommandWords, WordsThatNobodyKnowsAreTheRunsToJudge) {
    for (const Words& arguments :
         {Words{"foo"}, Words{"--"}, Words{"-"}, Words{"--repor", "x"}, Words{"--reports"},
          Words{"-x", "-y"}, Words{"-ia.mp4"}, Words{"--pid=3"}, Words{"-i"}}) {
        SCOPED_TRACE(arguments[0]);
        EXPECT_EQ(run_words_of(arguments), arguments);
    }
}

TEST(CommandWords, LastOneCounts) {
    const CommandWords words = read({"--report", "a.json", "--report", "b.html", "--fail-on",
                                     "error", "--fail-on", "none", "-i", "a", "-i", "b"});
    EXPECT_EQ(words.report_path, "b.html");
    EXPECT_EQ(words.format, Format::kHtml);
    EXPECT_FALSE(words.fail_on);
    EXPECT_EQ(words.input, "b");
}

TEST(CommandWords, ExtensionTellsTheFormatUnlessItIsGiven) {
    EXPECT_EQ(format_of_file("a/b.json"), Format::kJson);
    EXPECT_EQ(format_of_file("a.htm"), Format::kHtml);
    EXPECT_EQ(format_of_file("a.html"), Format::kHtml);
    EXPECT_EQ(format_of_file("a.b.xml"), Format::kJunit);
    EXPECT_EQ(format_of_file("a.txt"), Format::kText);
    EXPECT_EQ(format_of_file("a.json/b"), Format::kText);
    EXPECT_EQ(format_of_file("json"), Format::kText);
    EXPECT_EQ(format_of_file("-"), Format::kText);
    EXPECT_EQ(read({"--format", "junit", "--report", "a.json"}).format, Format::kJunit);
    EXPECT_EQ(read({"--format", "text", "--report", "a.json"}).format, Format::kText);
    EXPECT_EQ(read({"--format", "html"}).format, Format::kHtml);
}

TEST(CommandWords, JunitLeavesInfoOutUnlessAskedForIt) {
    EXPECT_EQ(read({"--format", "junit"}).least_level, Level::kWarning);
    EXPECT_EQ(read({"--min-level", "info", "--format", "junit"}).least_level, Level::kInfo);
    EXPECT_EQ(read({"--report", "a.xml"}).least_level, Level::kWarning);
}

TEST(CommandWords, MistakesAreTold) {
    EXPECT_EQ(read({"--report"}).error, "the option \"--report\" needs a value");
    EXPECT_EQ(read({"--quiet=1"}).error, "the option \"--quiet=1\" takes no value");
    EXPECT_EQ(read({"--format", "pdf"}).error,
              "the option \"--format\" takes one of json|text|html|junit, not \"pdf\"");
    EXPECT_EQ(read({"--fail-on=info"}).error,
              "the option \"--fail-on\" takes one of error|warning|none, not \"info\"");
    EXPECT_EQ(read({"--min-level", ""}).error,
              "the option \"--min-level\" takes one of info|warning|error, not \"\"");
}

TEST(CommandWords, QuestionsHaveNothingToReport) {
    EXPECT_TRUE(read({}).only_asks);
    EXPECT_TRUE(read({"--report", "x"}).only_asks);
    EXPECT_TRUE(read({"-h"}).only_asks);
    EXPECT_TRUE(read({"-h"}).asks_usage);
    EXPECT_TRUE(read({"-v"}).only_asks);
    EXPECT_FALSE(read({"-v"}).asks_usage);
    EXPECT_TRUE(read({"-s", "x", "-v", "-h"}).only_asks);
    EXPECT_FALSE(read({"-s", "x", "-v", "-h"}).asks_usage);
    // With an input ahead the run goes on; behind an unknown word nothing is read.
    EXPECT_FALSE(read({"-i", "a.mp4", "-v"}).only_asks);
    EXPECT_FALSE(read({"foo", "-v"}).only_asks);
    EXPECT_FALSE(read({"-i", "-v"}).only_asks);
    EXPECT_TRUE(read({"--help"}).wants_help);
    EXPECT_TRUE(read({"-i", "a", "--version"}).wants_version);
}

// The choices that help texts and completions show are those that are taken.
TEST(CommandWords, AllShownChoicesAreTaken) {
    for (const OptionRow& row : kReportOptions) {
        if (row.value != OptionValue::kChoice) {
            continue;
        }
        std::string_view rest = row.value_name;
        while (!rest.empty()) {
            const std::string choice(rest.substr(0, rest.find('|')));
            rest.remove_prefix(std::min(rest.size(), choice.size() + 1));
            EXPECT_EQ(read({std::string(row.word), choice}).error, "");
        }
    }
}

}  // namespace
}  // namespace mediasplit::report
