#include "src/file_util/output_folder.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/recording_sink.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {
namespace {

class OutputFolderTest : public testing::Test {
protected:
    OutputFolderTest() : here_(folder_.path()) {}
    TempFolder folder_;
    WorkingDirectory here_;
    RecordingSink sink_;
};

TEST_F(OutputFolderTest, CreatesAFolderAndAcceptsItTheSecondTime) {
    EXPECT_EQ(recursive_create_path("tmp"), 0);
    EXPECT_TRUE(std::filesystem::is_directory("tmp"));
    EXPECT_EQ(recursive_create_path("tmp"), 0);
    EXPECT_TRUE(sink_.reports().empty());
}

TEST_F(OutputFolderTest, EmptyPathFails) {
    EXPECT_EQ(recursive_create_path(""), 1);
    EXPECT_EQ(open_output_folder(""), Status::kFailed);
    EXPECT_EQ(sink_.count(4080), 1U);
}

TEST_F(OutputFolderTest, ParentsAreNotCreatedForAPathWithSlashes) {
    EXPECT_NE(recursive_create_path("a/b/c"), 0);
    EXPECT_FALSE(std::filesystem::exists("a"));
    EXPECT_EQ(open_output_folder("a/b/c"), Status::kFailed);
    ASSERT_EQ(sink_.count(4080), 1U);
    EXPECT_EQ(sink_.reports()[0].text, "Fail to create the output elementary stream folder: a/b/c");
}

TEST_F(OutputFolderTest, BackslashSeparatesFoldersThatAreCreated) {
    EXPECT_EQ(recursive_create_path("a\\b"), 0);
    EXPECT_TRUE(std::filesystem::is_directory("a"));
    EXPECT_TRUE(std::filesystem::is_directory("a\\b"));
}

TEST_F(OutputFolderTest, ExistingFolderIsUsedAsItStands) {
    std::filesystem::create_directory("out");
    (void)folder_.write("out/keep", "x");
    EXPECT_EQ(open_output_folder("out"), Status::kOk);
    EXPECT_EQ(read_file("out/keep"), "x");
    EXPECT_TRUE(sink_.reports().empty());
}

TEST_F(OutputFolderTest, FileInThePlaceOfTheFolderFails) {
    (void)folder_.write("out", "x");
    EXPECT_EQ(open_output_folder("out"), Status::kFailed);
    EXPECT_EQ(sink_.count(4080), 1U);
}

}  // namespace
}  // namespace mediasplit
