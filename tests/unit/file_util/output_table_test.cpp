#include "src/file_util/output_table.h"

#include <gtest/gtest.h>

#include "tests/support/recording_sink.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {
namespace {

constexpr std::uint8_t kBytes[] = {'a', 'b', 'c'};

TEST(OutputTable, FirstKindTakesTheNextEntryAndTheSecondTheSeparateOne) {
    const TempFolder folder;
    OutputTable table;
    table.truncate = 1;
    EXPECT_EQ(ioOpenFile(folder.path("a"), 1, 256, table), Status::kOk);
    EXPECT_EQ(ioOpenFile(folder.path("b"), 1, 257, table), Status::kOk);
    EXPECT_EQ(ioOpenFile(folder.path("v"), 2, 300, table), Status::kOk);
    EXPECT_EQ(table.kind_1_count, 2U);
    EXPECT_EQ(table.kind_2_count, 1U);
    EXPECT_EQ(table.entries[1].stream_id, 257U);
    EXPECT_EQ(table.entries[1].kind, 1U);
    EXPECT_EQ(table.separate.stream_id, 300U);
    EXPECT_EQ(ioWritePESDataPacket(kBytes, table.entries[1].file.get()), Status::kOk);
    EXPECT_EQ(ioWritePESDataPacket(kBytes, table.separate.file.get()), Status::kOk);
    EXPECT_EQ(ioWritePESDataPacket(kBytes, nullptr), Status::kOk);
    EXPECT_TRUE(ioCloseFiles(table));
    EXPECT_EQ(read_file(folder.path("a")), "");
    EXPECT_EQ(read_file(folder.path("b")), "abc");
    EXPECT_EQ(read_file(folder.path("v")), "abc");
    EXPECT_FALSE(table.separate.file);
}

TEST(OutputTable, WithoutTruncateFilesAreAddedTo) {
    const TempFolder folder;
    const std::string path = folder.write("a", "old ");
    OutputTable table;
    EXPECT_EQ(ioOpenFile(path, 1, 1, table), Status::kOk);
    ioWritePESDataPacket(kBytes, table.entries[0].file.get());
    ioCloseFiles(table);
    EXPECT_EQ(read_file(path), "old abc");
}

TEST(OutputTable, FileThatCannotBeCreatedIsReported) {
    const TempFolder folder;
    const RecordingSink sink;
    OutputTable table;
    const std::string path = folder.path("none/a");
    EXPECT_EQ(ioOpenFile(path, 1, 1, table), Status::kCantOpen);
    EXPECT_EQ(sink.ids(), (std::vector<int>{4082, 4081}));
    EXPECT_EQ(sink.reports()[1].text, "Fail to create the output elementary stream file: " + path);
    EXPECT_TRUE(ioCloseFiles(table));
}

TEST(OutputTable, EleventhFileOfTheFirstKindIsRefused) {
    const TempFolder folder;
    OutputTable table;
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(ioOpenFile(folder.path(std::to_string(i)), 1, 1, table), Status::kOk);
    }
    EXPECT_EQ(ioOpenFile(folder.path("10"), 1, 1, table), Status::kCantOpen);
    EXPECT_EQ(table.kind_1_count, 10U);
    EXPECT_TRUE(ioCloseFiles(table));
}

TEST(OutputTable, FileThatCannotBeWrittenAsAWholeIsNamedAtTheClose) {
    const TempFolder folder;
    const RecordingSink sink;
    OutputTable table;
    EXPECT_EQ(ioOpenFile("/dev/full", 1, 1, table), Status::kOk);
    EXPECT_EQ(ioOpenFile(folder.path("a"), 1, 2, table), Status::kOk);
    ioWritePESDataPacket(kBytes, table.entries[0].file.get());
    ioWritePESDataPacket(kBytes, table.entries[1].file.get());
    EXPECT_FALSE(ioCloseFiles(table));
    ASSERT_EQ(sink.ids(), (std::vector<int>{4081}));
    EXPECT_EQ(sink.reports()[0].text,
              "Fail to create the output elementary stream file: /dev/full");
    EXPECT_EQ(read_file(folder.path("a")), "abc");
}

}  // namespace
}  // namespace mediasplit
