#include "src/main/command_line.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "src/main/checkpoints.h"
#include "tests/support/recording_sink.h"
#include "tests/support/run_options_scope.h"

namespace mediasplit {
namespace {

class CommandLine : public testing::Test {
protected:
    // Reads the words behind the program's name and keeps what was printed.
    int parse(std::initializer_list<const char*> words) {
        reset_run_options();
        sink_.clear();
        std::vector<const char*> arguments = {"mediasplit"};
        arguments.insert(arguments.end(), words);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int result = cmdParse(static_cast<int>(arguments.size()), arguments.data());
        out_ = testing::internal::GetCapturedStdout();
        err_ = testing::internal::GetCapturedStderr();
        return result;
    }

    RunOptionsScope scope_;
    RecordingSink sink_;
    std::string out_;
    std::string err_;
};

using Ids = std::vector<int>;

TEST_F(CommandLine, WithoutArgumentsThereIsNothingToRead) {
    EXPECT_EQ(parse({}), kNoArguments);
    EXPECT_EQ(cmdParse(0, nullptr), kNoArguments);
    EXPECT_EQ(g_check_point_num, 0);
}

TEST_F(CommandLine, AllOptionsReachTheRun) {
    EXPECT_EQ(parse({"-i", "a_%d.ts", "-o", "out", "-s", "12", "--decryption-keys", "k:v",
                     "--track-id", "3", "--pid", "256", "--live-duration", "2.5"}),
              0);
    EXPECT_EQ(g_input, "a_%d.ts");
    EXPECT_EQ(g_output_dir, "out");
    EXPECT_EQ(g_startIndex, 12U);
    EXPECT_EQ(g_keypairs, "k:v");
    EXPECT_EQ(g_track_id, 3);
    EXPECT_EQ(g_pid, 256);
    EXPECT_DOUBLE_EQ(g_tested_duration_in_live, 2.5);
    EXPECT_EQ(g_file_format, FormatId::kTsSeries);
    EXPECT_TRUE(sink_.ids().empty());
}

TEST_F(CommandLine, DefaultsStandWithoutOptions) {
    EXPECT_EQ(parse({"-i", "a.mp4"}), 0);
    EXPECT_FALSE(g_output_dir.has_value());
    EXPECT_FALSE(g_keypairs.has_value());
    EXPECT_EQ(g_startIndex, 0U);
    EXPECT_EQ(g_track_id, -1);
    EXPECT_EQ(g_pid, -1);
    EXPECT_DOUBLE_EQ(g_tested_duration_in_live, 10.0);
    EXPECT_EQ(g_file_format, FormatId::kMp4);
}

TEST_F(CommandLine, ValuesAreTakenUnexamined) {
    EXPECT_EQ(parse({"-i", "-o", "-o", "-i"}), 0);
    EXPECT_EQ(g_input, "-o");
    EXPECT_EQ(g_output_dir, "-i");
}

TEST_F(CommandLine, LastOfRepeatedOptionsWins) {
    EXPECT_EQ(parse({"-i", "a.mp4", "-i", "b.ts"}), 0);
    EXPECT_EQ(g_input, "b.ts");
    EXPECT_EQ(parse({"-i", "a.mp4", "-i"}), 1);
    EXPECT_EQ(sink_.ids(), Ids{4002});
}

TEST_F(CommandLine, LastWordsWithoutValueAreTreatedAsNotGiven) {
    for (const char* word : {"-o", "--decryption-keys", "--track-id", "--pid"}) {
        EXPECT_EQ(parse({"-i", "a.mp4", word}), 0) << word;
        EXPECT_FALSE(g_output_dir.has_value());
        EXPECT_FALSE(g_keypairs.has_value());
        EXPECT_EQ(g_track_id, -1);
        EXPECT_EQ(g_pid, -1);
    }
    EXPECT_EQ(parse({"-i"}), 1);
    EXPECT_EQ(sink_.ids(), Ids{4002});
}

TEST_F(CommandLine, UnknownWordsEndTheReading) {
    for (const char* word : {"foo", "--px-old-signaling", "--broadcast-profile", "-I", "--i", "",
                             "-ia.mp4", "--track-id=3"}) {
        EXPECT_EQ(parse({word, "-i", "a.mp4", "-s"}), 1) << word;
        EXPECT_EQ(sink_.ids(), Ids{4001});
        EXPECT_EQ(err_, "ERROR: The command \"" + std::string(word) + "\" is unsupported.\n");
        EXPECT_FALSE(g_input.has_value());
        EXPECT_EQ(g_check_point_num, 0);
    }
}

TEST_F(CommandLine, InputIsRequired) {
    EXPECT_EQ(parse({"-o", "out"}), 1);
    EXPECT_EQ(err_, "ERROR: The command \"-i\" is required.\n");
    EXPECT_EQ(g_check_point_num, 7);
}

TEST_F(CommandLine, StartIndexNeedsAValue) {
    EXPECT_EQ(parse({"-i", "a_%d.ts", "-s"}), 1);
    EXPECT_EQ(err_, "ERROR: The command \"-s\" needs an argument to indicate the start number.\n");
    EXPECT_EQ(g_check_point_num, 0);
}

TEST_F(CommandLine, EachBadCharacterOfTheStartIndexIsReportedAndReadingGoesOn) {
    EXPECT_EQ(parse({"-s", "1x", "-i", "a_%d.ts", "-o", "out"}), 1);
    EXPECT_EQ(sink_.ids(), Ids{4006});
    EXPECT_EQ(err_, "ERROR: The command \"-s\" must be followed with an unsigned integer.\n");
    EXPECT_EQ(g_startIndex, 0U);
    EXPECT_EQ(g_output_dir, "out");
    EXPECT_EQ(g_check_point_num, 7);
    EXPECT_EQ(parse({"-s", "-1.5", "-i", "a_%d.ts"}), 1);
    EXPECT_EQ(sink_.ids(), (Ids{4006, 4006}));
}

TEST_F(CommandLine, StartIndexConvertsToItsLow32Bits) {
    EXPECT_EQ(parse({"-s", "4294967295", "-i", "a_%d.ts"}), 0);
    EXPECT_EQ(g_startIndex, 0xFFFFFFFFU);
    EXPECT_EQ(parse({"-s", "4294967298", "-i", "a_%d.ts"}), 0);
    EXPECT_EQ(g_startIndex, 2U);
    EXPECT_EQ(parse({"-s", "99999999999999999999999", "-i", "a_%d.ts"}), 0);
    EXPECT_EQ(g_startIndex, 0xFFFFFFFFU);
    EXPECT_EQ(parse({"-s", "", "-i", "a_%d.ts"}), 0);
    EXPECT_EQ(g_startIndex, 0U);
    EXPECT_EQ(parse({"-s", "007", "-i", "a_%d.ts"}), 0);
    EXPECT_EQ(g_startIndex, 7U);
}

TEST_F(CommandLine, StartIndexGetsAWarningForManifestsAndMp4Only) {
    for (const char* input : {"a.m3u8", "a.mpd", "a.mp4"}) {
        EXPECT_EQ(parse({"-s", "2", "-i", input, "-o", "out"}), 0) << input;
        EXPECT_EQ(sink_.ids(), Ids{2001}) << input;
        EXPECT_EQ(out_,
                  "WARNING: The command \"-s start number\" is only used when the input is a "
                  "series of TS files. \n");
    }
    for (const char* input : {"a.ts", "a_%d.ts", "a.ec3", "a.ac4", "a.xyz", "a"}) {
        EXPECT_EQ(parse({"-s", "2", "-i", input, "-o", "out"}), 0) << input;
        EXPECT_TRUE(sink_.ids().empty()) << input;
    }
}

TEST_F(CommandLine, SelectionsConvertLikeStrtolAndKeepTheirLow32Bits) {
    struct Row {
        const char* text;
        std::int32_t value;
    };
    for (const Row& row : {Row{"7", 7}, Row{"-5", -5}, Row{"", 0}, Row{"x", 0}, Row{"12x", 12},
                           Row{" 9", 9}, Row{"0x10", 0}, Row{"4294967299", 3},
                           Row{"4294967295", -1}, Row{"99999999999999999999", -1}}) {
        EXPECT_EQ(parse({"-i", "a.mp4", "--track-id", row.text, "--pid", row.text}), 0);
        EXPECT_EQ(g_track_id, row.value) << row.text;
        EXPECT_EQ(g_pid, row.value) << row.text;
    }
    EXPECT_TRUE(sink_.ids().empty());
}

TEST_F(CommandLine, LiveDurationNeedsAValue) {
    EXPECT_EQ(parse({"-i", "a.m3u8", "--live-duration"}), 1);
    EXPECT_EQ(err_,
              "ERROR: The command \"--live-duration\" needs an argument to indicate the tested "
              "duration in the live stream.\n");
    EXPECT_EQ(g_check_point_num, 0);
}

TEST_F(CommandLine, LiveDurationTakesDigitsAndOnePoint) {
    struct Row {
        const char* text;
        double value;
    };
    for (const Row& row : {Row{"5", 5.0}, Row{"0.25", 0.25}, Row{".5", 0.5}, Row{"3.", 3.0},
                           Row{"", 0.0}, Row{".", 0.0}}) {
        EXPECT_EQ(parse({"-i", "a.m3u8", "--live-duration", row.text}), 0) << row.text;
        EXPECT_DOUBLE_EQ(g_tested_duration_in_live, row.value) << row.text;
    }
}

TEST_F(CommandLine, EachCharacterFromTheSecondPointOnIsReported) {
    EXPECT_EQ(parse({"-i", "a.m3u8", "--live-duration", "1.2.3"}), 1);
    EXPECT_EQ(sink_.ids(), (Ids{4010, 4010}));
    EXPECT_DOUBLE_EQ(g_tested_duration_in_live, 10.0);
    EXPECT_EQ(parse({"-i", "a.m3u8", "--live-duration", "1.2.x3."}), 1);
    EXPECT_EQ(sink_.ids(), (Ids{4010, 4010, 4010, 4010}));
}

TEST_F(CommandLine, LiveDurationWithOtherCharactersIsDropped) {
    EXPECT_EQ(parse({"-i", "a.m3u8", "--live-duration", "1,5s", "-o", "out"}), 1);
    EXPECT_EQ(sink_.ids(), (Ids{4010, 4010}));
    EXPECT_EQ(err_.substr(0, err_.find('\n')),
              "ERROR: The command \"--live-duration\" must be followed with a number.");
    EXPECT_DOUBLE_EQ(g_tested_duration_in_live, 10.0);
    EXPECT_EQ(g_output_dir, "out");
}

TEST_F(CommandLine, VersionAndHelpEndTheReadingWithZeroWhereverTheyStand) {
    EXPECT_EQ(parse({"-v"}), 0);
    EXPECT_EQ(out_.find("Usage:"), std::string::npos);
    EXPECT_EQ(parse({"-h"}), 0);
    EXPECT_NE(out_.find("Usage:"), std::string::npos);
    EXPECT_EQ(parse({"-s", "x", "-v", "foo"}), 0);
    EXPECT_EQ(sink_.count(4006), 1U);
    EXPECT_EQ(sink_.count(4001), 0U);
    EXPECT_EQ(parse({"-i", "a.mp4", "-o", "out", "-v"}), 0);
    EXPECT_EQ(g_input, "a.mp4");
    EXPECT_EQ(g_file_format, FormatId::kUnknown);
    EXPECT_EQ(g_check_point_num, 0);
}

TEST_F(CommandLine, InputsWithoutKnownExtensionStayUnknown) {
    EXPECT_EQ(parse({"-i", "name", "-s", "2"}), 0);
    EXPECT_EQ(g_file_format, FormatId::kUnknown);
    EXPECT_EQ(parse({"-i", "a.MP4"}), 0);
    EXPECT_EQ(g_file_format, FormatId::kUnknown);
    EXPECT_EQ(parse({"-i", ""}), 0);
    EXPECT_EQ(g_file_format, FormatId::kUnknown);
}

std::vector<std::string> entries(std::int32_t count, const CheckpointText* list) {
    std::vector<std::string> result;
    for (std::int32_t i = 0; i < count; ++i) {
        result.emplace_back(list[i].data());
    }
    return result;
}

TEST_F(CommandLine, CheckpointListIsFixed) {
    EXPECT_EQ(parse({"-i", "a.mp4"}), 0);
    EXPECT_EQ(entries(g_check_point_num, g_checkpoint_list.data()),
              (std::vector<std::string>{"210000", "330000", "430000", "310000", "410000", "440000",
                                        "450000"}));
}

TEST(Checkpoints, BroadcastEntriesKeepTheirCounterpartsOut) {
    std::array<CheckpointText, kCheckpointCapacity> list{};
    list[0] = {'3', '2', '0', '0', '0', '0'};
    list[1] = {'4', '2', '0', '0', '0', '0'};
    std::int32_t count = 2;
    force_checkpoint_init(count, list.data());
    EXPECT_EQ(entries(count, list.data()),
              (std::vector<std::string>{"320000", "420000", "440000", "450000"}));
}

TEST(Checkpoints, FullListTakesNoMore) {
    std::array<CheckpointText, kCheckpointCapacity> list{};
    std::int32_t count = kCheckpointCapacity - 1;
    binary_checkpoint_init(count, list.data());
    EXPECT_EQ(count, static_cast<std::int32_t>(kCheckpointCapacity));
    EXPECT_STREQ(list.back().data(), "210000");
}

}  // namespace
}  // namespace mediasplit
