#include "src/report/help.h"

#include <gtest/gtest.h>

#include <sstream>

#include "src/report/option_table.h"

namespace mediasplit::report {
namespace {

TEST(Help, NamesEveryOptionWithItsValue) {
    const std::string help = help_text();
    const auto expect_row = [&help](const OptionRow& row) {
        const std::string value = row.value_name.empty() ? "" : " " + std::string(row.value_name);
        EXPECT_NE(help.find("\n  " + std::string(row.word) + value), std::string::npos) << row.word;
    };
    for (const OptionRow& row : kReportOptions) {
        expect_row(row);
        EXPECT_NE(own_options_text().find(row.word), std::string::npos);
    }
    for (const OptionRow& row : kRunOptions) {
        expect_row(row);
        EXPECT_EQ(own_options_text().find("\n  " + std::string(row.word) + " "), std::string::npos);
    }
}

TEST(Help, FitsATerminal) {
    std::istringstream lines(help_text());
    for (std::string line; std::getline(lines, line);) {
        EXPECT_LE(line.size(), 80U) << line;
        EXPECT_TRUE(line.empty() || line.back() != ' ') << line;
    }
}

TEST(Help, RowsAreComplete) {
    const auto expect_sound = [](const OptionRow& row) {
        EXPECT_TRUE(row.word.starts_with("-"));
        EXPECT_TRUE(row.help.ends_with(".")) << row.word;
        EXPECT_EQ(row.value == OptionValue::kNone, row.value_name.empty()) << row.word;
        EXPECT_EQ(row.value == OptionValue::kChoice,
                  row.value_name.find('|') != std::string_view::npos)
            << row.word;
    };
    for (const OptionRow& row : kReportOptions) {
        expect_sound(row);
    }
    for (const OptionRow& row : kRunOptions) {
        expect_sound(row);
    }
}

TEST(Help, VersionIsOneLine) {
    EXPECT_EQ(version_text(), "mediasplit-report 2.0.0\n");
}

}  // namespace
}  // namespace mediasplit::report
