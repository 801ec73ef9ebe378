#include "src/file_util/output_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <random>

#include "tests/support/recording_sink.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {
namespace {

std::span<const std::uint8_t> bytes_of(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

class OutputFileTest : public testing::Test {
protected:
    TempFolder folder_;
    RecordingSink sink_;
};

TEST_F(OutputFileTest, WritesArriveInOrderWhateverTheirSize) {
    const std::string path = folder_.path("out");
    auto file = fileOpen_lstr(path, "wb");
    ASSERT_TRUE(file);
    std::mt19937 random(3);
    std::string expected;
    for (int i = 0; i < 400; ++i) {
        const std::size_t size = random() % (i % 10 == 0 ? 700000 : 3000);
        const std::string piece(size, static_cast<char>(random()));
        EXPECT_TRUE(file->write(bytes_of(piece)));
        expected += piece;
    }
    EXPECT_EQ(file->bytes_written(), expected.size());
    EXPECT_TRUE(file->close());
    EXPECT_TRUE(file->close());
    EXPECT_TRUE(read_file(path) == expected);
}

TEST_F(OutputFileTest, WritesAroundTheSizeOfTheBufferArriveWhole) {
    for (const std::size_t first : {0U, 1U, 262143U, 262144U, 262145U}) {
        for (const std::size_t second : {0U, 1U, 262143U, 262144U, 262145U}) {
            const std::string path = folder_.path("out");
            auto file = fileOpen_lstr(path, "wb");
            EXPECT_TRUE(file->write(bytes_of(std::string(first, 'a'))));
            EXPECT_TRUE(file->write(bytes_of(std::string(second, 'b'))));
            EXPECT_TRUE(file->close());
            EXPECT_TRUE(read_file(path) == std::string(first, 'a') + std::string(second, 'b'));
        }
    }
}

TEST_F(OutputFileTest, FlushHandsOverWhatWaits) {
    const std::string path = folder_.path("out");
    auto file = fileOpen_lstr(path, "wb");
    file->write(bytes_of("abc"));
    EXPECT_EQ(read_file(path), "");
    EXPECT_TRUE(file->flush());
    EXPECT_EQ(read_file(path), "abc");
}

TEST_F(OutputFileTest, EndOfTheObjectWritesWhatWaits) {
    const std::string path = folder_.path("out");
    fileOpen_lstr(path, "wb")->write(bytes_of("abc"));
    EXPECT_EQ(read_file(path), "abc");
}

TEST_F(OutputFileTest, ModeWbCreatesAnewAndAbAdds) {
    const std::string path = folder_.write("out", "old");
    fileOpen_lstr(path, "ab")->write(bytes_of("+"));
    EXPECT_EQ(read_file(path), "old+");
    fileOpen_lstr(path, "wb")->write(bytes_of("new"));
    EXPECT_EQ(read_file(path), "new");
}

TEST_F(OutputFileTest, FullDiskIsRememberedAsAFailure) {
    OutputFile file(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    EXPECT_TRUE(file.write(bytes_of("waits in the buffer")));
    EXPECT_FALSE(file.failed());
    EXPECT_FALSE(file.flush());
    EXPECT_TRUE(file.failed());
    EXPECT_FALSE(file.write(bytes_of("x")));
    EXPECT_FALSE(file.close());
}

TEST_F(OutputFileTest, FullDiskShowsAtALargeWriteAtOnce) {
    OutputFile file(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    EXPECT_FALSE(file.write(bytes_of(std::string(1000000, 'x'))));
    EXPECT_FALSE(file.close());
}

TEST_F(OutputFileTest, FullDiskShowsAtClose) {
    OutputFile file(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    EXPECT_TRUE(file.write(bytes_of("x")));
    EXPECT_FALSE(file.close());
}

TEST_F(OutputFileTest, MissingArgumentIsReported) {
    EXPECT_FALSE(fileOpen_lstr(nullptr, "wb"));
    EXPECT_FALSE(fileOpen_lstr("x", nullptr));
    ASSERT_EQ(sink_.count(3006), 2U);
    EXPECT_EQ(sink_.reports()[0].text,
              "INVALID INPUT PARAMETER ! [ File : ../../../../mediacheck2/src/file_util, Line : "
              "342 ]");
}

TEST_F(OutputFileTest, PathOfMoreThan4096CharactersIsReported) {
    EXPECT_FALSE(fileOpen_lstr(std::string(4096, 'a'), "wb"));
    EXPECT_EQ(sink_.count(4079), 0U);
    EXPECT_EQ(sink_.count(4082), 1U);
    EXPECT_FALSE(fileOpen_lstr(std::string(4097, 'a'), "wb"));
    EXPECT_EQ(sink_.count(4079), 1U);
    EXPECT_EQ(sink_.count(4082), 1U);
}

TEST_F(OutputFileTest, PathThatCannotBeOpenedIsReported) {
    const std::string path = folder_.path("none/out");
    EXPECT_FALSE(fileOpen_lstr(path, "wb"));
    ASSERT_EQ(sink_.count(4082), 1U);
    EXPECT_EQ(sink_.reports()[0].text, "Fail to open the output file path: " + path);
    EXPECT_TRUE(fileOpen_lstr(folder_.path("out"), "wb"));
    EXPECT_EQ(sink_.count(4082), 1U);
}

TEST_F(OutputFileTest, RegistryCreatesAPathAnewOnceAndAddsToItAfterwards) {
    const std::string path = folder_.write("out", "from an earlier run");
    const std::string other = folder_.write("other", "from an earlier run");
    {
        OutputRegistry registry;
        registry.open(path)->write(bytes_of("one"));
        registry.open(path)->write(bytes_of(" two"));
        registry.open(other)->write(bytes_of("x"));
    }
    EXPECT_EQ(read_file(path), "one two");
    EXPECT_EQ(read_file(other), "x");
    OutputRegistry().open(path)->write(bytes_of(" three"));
    EXPECT_EQ(read_file(path), "one two three") << "by another job of the run";
    begin_outputs();
    OutputRegistry().open(path)->write(bytes_of("four"));
    EXPECT_EQ(read_file(path), "four") << "by another run";
}

TEST_F(OutputFileTest, PathOfALivingRegistryIsRefusedToOthers) {
    const std::string path = folder_.path("out");
    auto first = std::make_unique<OutputRegistry>();
    first->open(path)->write(bytes_of("first"));
    OutputRegistry second;
    EXPECT_FALSE(second.open(path));
    EXPECT_EQ(sink_.count(4082), 1U);
    EXPECT_EQ(read_file(path), "first") << "closed or not, it stays with its job";
    first.reset();
    begin_outputs();
    second.open(path)->write(bytes_of("second"));
    EXPECT_EQ(read_file(path), "second");
    EXPECT_EQ(sink_.count(4082), 1U);
}

TEST_F(OutputFileTest, RegistryForgetsAPathThatCouldNotBeOpened) {
    OutputRegistry registry;
    const std::string path = folder_.path("none/out");
    EXPECT_FALSE(registry.open(path));
    std::filesystem::create_directory(folder_.path("none"));
    (void)folder_.write("none/out", "from an earlier run");
    registry.open(path)->write(bytes_of("new"));
    EXPECT_EQ(read_file(path), "new");
}

TEST(OutputFile, FileThatWasRemovedMeanwhileIsNotWhole) {
    const TempFolder folder;
    const std::string path = folder.path("a");
    const auto file = fileOpen_lstr(path, "wb");
    ASSERT_NE(file, nullptr);
    const std::uint8_t bytes[] = {1, 2, 3};
    EXPECT_TRUE(file->write(bytes));
    std::filesystem::remove(path);
    EXPECT_FALSE(file->close());
    EXPECT_TRUE(file->failed());
}

TEST(OutputFile, FileThatWasMovedMeanwhileIsWhole) {
    const TempFolder folder;
    const auto file = fileOpen_lstr(folder.path("a"), "wb");
    ASSERT_NE(file, nullptr);
    std::filesystem::rename(folder.path("a"), folder.path("b"));
    EXPECT_TRUE(file->close());
}

}  // namespace
}  // namespace mediasplit
