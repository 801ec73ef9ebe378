#include "src/commonfileio/input_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <random>
#include <vector>

#include "src/util/fetcher.h"
#include "tests/support/http_server.h"
#include "tests/support/recording_sink.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {
namespace {

constexpr std::uint64_t kBlock = 0x100000;

// Bytes whose value follows from their place, with no period of a power of two.
std::string pattern(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>((i * 7 + i / 251 + i / 65521) & 0xFF);
    }
    return bytes;
}

class InputFileTest : public testing::Test {
protected:
    void open(std::size_t size) {
        bytes_ = pattern(size);
        path_ = folder_.write("input.bin", bytes_);
        ASSERT_EQ(OpenFileEx(path_, nullptr, 0, file_), Status::kOk);
    }
    void open_range(std::size_t size, std::int64_t start, std::int64_t length) {
        file_.range_active = 1;
        file_.range_start = start;
        file_.range_left = length;
        open(size);
    }
    std::string read(std::uint64_t count) {
        std::string out(count, '?');
        out.resize(ReadBytes(out.data(), count, file_));
        return out;
    }
    [[nodiscard]] std::string expected(std::size_t at, std::size_t count) const {
        return at >= bytes_.size() ? std::string() : bytes_.substr(at, count);
    }
    void TearDown() override { CloseFile(file_); }

    TempFolder folder_;
    std::string path_;
    std::string bytes_;
    InputFile file_;
};

TEST_F(InputFileTest, ReadsAWholeFileInPieces) {
    open(3 * kBlock + 12345);
    std::string all;
    for (std::string piece = read(40000); !piece.empty(); piece = read(40000)) {
        EXPECT_EQ(CurrentOffset(file_), all.size() + piece.size());
        all += piece;
    }
    EXPECT_EQ(all, bytes_);
    EXPECT_EQ(read(1), "");
}

TEST_F(InputFileTest, KeepsTheNameAsGivenUnlessOneIsSet) {
    open(10);
    EXPECT_EQ(file_.name, path_);
    CloseFile(file_);
    file_ = InputFile{};
    file_.name = "the manifest's name";
    ASSERT_EQ(OpenFileEx(path_, nullptr, 0, file_), Status::kOk);
    EXPECT_EQ(file_.name, "the manifest's name");
}

TEST_F(InputFileTest, OpenFailsWithoutAMessage) {
    const RecordingSink sink;
    EXPECT_EQ(OpenFileEx(folder_.path("none"), nullptr, 0, file_), Status::kCantOpen);
    EXPECT_EQ(OpenFileEx(nullptr, nullptr, 0, file_), Status::kCantOpen);
    EXPECT_TRUE(sink.reports().empty());
}

TEST_F(InputFileTest, FolderDoesNotOpen) {
    EXPECT_EQ(OpenFileEx(folder_.path(""), nullptr, 0, file_), Status::kCantOpen);
}

TEST_F(InputFileTest, OpenWithoutAPathUsesTheStreamAlreadySet) {
    const std::string path = folder_.write("x", "abc");
    file_.stream = open_for_reading(path);
    EXPECT_EQ(OpenFileEx(nullptr, nullptr, 0, file_), Status::kOk);
    EXPECT_EQ(read(9), "abc");
}

TEST_F(InputFileTest, RangeOfTenBytesHasABufferOfTenBytesAndDeliversTen) {
    open_range(100, 20, 10);
    EXPECT_EQ(file_.filled, 10U);
    EXPECT_EQ(file_.buffer.size(), 10U);
    EXPECT_EQ(read(100), expected(20, 10));
    EXPECT_EQ(read(100), "");
    EXPECT_EQ(file_.range_left, 0);
}

TEST_F(InputFileTest, RangeStartIsTheCurrentOffsetBeforeTheFirstRead) {
    open_range(10000, 5000, 100);
    EXPECT_EQ(CurrentOffset(file_), 5000U);
    EXPECT_EQ(read(3), expected(5000, 3));
    EXPECT_EQ(CurrentOffset(file_), 5003U);
}

TEST_F(InputFileTest, RangeLongerThanABlockEndsWhereItEnds) {
    open_range(4 * kBlock, 77, 2 * kBlock + 5);
    std::string all;
    for (std::string piece = read(99999); !piece.empty(); piece = read(99999)) {
        all += piece;
    }
    EXPECT_EQ(all, expected(77, 2 * kBlock + 5));
}

TEST_F(InputFileTest, RangeBehindTheEndDeliversNothing) {
    open_range(100, 1000, 10);
    EXPECT_EQ(read(10), "");
}

TEST_F(InputFileTest, EmptyRangeDeliversNothingAndNegativeOneDoesNotOpen) {
    open_range(100, 0, 0);
    EXPECT_EQ(read(10), "");
    CloseFile(file_);
    file_ = InputFile{};
    file_.range_active = 1;
    file_.range_left = -1;
    EXPECT_EQ(OpenFileEx(path_, nullptr, 0, file_), Status::kCantOpen);
}

TEST_F(InputFileTest, NegativeRangeStartDoesNotOpen) {
    open(10);
    CloseFile(file_);
    file_ = InputFile{};
    file_.range_active = 1;
    file_.range_start = -5;
    file_.range_left = 3;
    EXPECT_EQ(OpenFileEx(path_, nullptr, 0, file_), Status::kCantOpen);
}

TEST_F(InputFileTest, SeekPastTheEndOfARangeReportsAndMovesAllTheSame) {
    open_range(100, 20, 10);
    const RecordingSink sink;
    EXPECT_EQ(SeekBytes(11, file_), Status::kOk);
    EXPECT_EQ(CurrentOffset(file_), 31U);
    EXPECT_EQ(file_.range_left, 10);
    ASSERT_EQ(sink.count(3008), 1U);
    EXPECT_EQ(sink.reports()[0].text, "SEEK BYTES ERR ! (In file : " + path_ +
                                          ", at position : 20, seek_bytes : 11) [ File : "
                                          "../../../../mediacheck2/src/commonfileio, Line : 373 ]");
}

TEST_F(InputFileTest, SeekInsideARangeReportsNothing) {
    open_range(100, 20, 10);
    const RecordingSink sink;
    EXPECT_EQ(SeekBytes(10, file_), Status::kOk);
    EXPECT_EQ(file_.range_left, 0);
    EXPECT_EQ(sink.count(3008), 0U);
    EXPECT_EQ(read(1), "");
}

TEST_F(InputFileTest, SeekWithinTheBufferCostsNoFileOperation) {
    open(2 * kBlock);
    file_.stream.close();  // Any file operation would fail from here on.
    file_.stream = open_for_reading("/dev/null");
    EXPECT_EQ(SeekBytes(kBlock - 1, file_), Status::kOk);
    EXPECT_EQ(file_.position, kBlock - 1);
    EXPECT_EQ(file_.filled, kBlock);
    EXPECT_EQ(read(1), expected(kBlock - 1, 1));
}

TEST_F(InputFileTest, SeekToExactlyTheEndOfTheBufferRefillsIt) {
    open(2 * kBlock + 3);
    EXPECT_EQ(SeekBytes(kBlock, file_), Status::kOk);
    EXPECT_EQ(read(5), expected(kBlock, 5));
    EXPECT_EQ(file_.position, 5U);
    EXPECT_EQ(file_.filled, kBlock);
}

TEST_F(InputFileTest, RequestOfExactlyOneBlockBehindASeekIsWhole) {
    open(4 * kBlock);
    for (const std::uint64_t distance : {kBlock, 2 * kBlock}) {
        Rewind(file_);
        EXPECT_EQ(SeekBytes(static_cast<std::int64_t>(distance), file_), Status::kOk);
        EXPECT_EQ(read(kBlock), expected(distance, kBlock));
    }
    Rewind(file_);
    EXPECT_EQ(read(kBlock), expected(0, kBlock));
}

TEST_F(InputFileTest, SeekToTheEndOfTheBufferAndBackReadsNothingFromTheFile) {
    open(2 * kBlock);
    const std::int64_t place = file_.stream.place();
    EXPECT_EQ(SeekBytes(kBlock, file_), Status::kOk);
    EXPECT_EQ(SeekBytes(-9, file_), Status::kOk);
    EXPECT_EQ(file_.stream.place(), place);
    EXPECT_EQ(read(12), expected(kBlock - 9, 12));
}

TEST_F(InputFileTest, ReadAheadBehindAJumpIsLimitedOnce) {
    open(4 * kBlock);
    Rewind(file_);
    EXPECT_EQ(SeekBytes(2 * kBlock + 5, file_), Status::kOk);
    limit_read_ahead(100, file_);
    EXPECT_EQ(read(1), expected(2 * kBlock + 5, 1));
    EXPECT_EQ(file_.filled, 100U);
    // What lies behind is there all the same.
    EXPECT_EQ(read(300), expected(2 * kBlock + 6, 300));
    EXPECT_EQ(file_.filled, kBlock);
    limit_read_ahead(3, file_);
    EXPECT_EQ(read(kBlock), expected(2 * kBlock + 306, kBlock));
}

TEST_F(InputFileTest, SeekFarAheadAndBackLandsWhereItSays) {
    open(5 * kBlock);
    EXPECT_EQ(SeekBytes(4 * kBlock + 17, file_), Status::kOk);
    EXPECT_EQ(read(9), expected(4 * kBlock + 17, 9));
    EXPECT_EQ(SeekBytes(-9, file_), Status::kOk);
    EXPECT_EQ(read(9), expected(4 * kBlock + 17, 9));
    EXPECT_EQ(SeekBytes(-static_cast<std::int64_t>(4 * kBlock + 26), file_), Status::kOk);
    EXPECT_EQ(CurrentOffset(file_), 0U);
    EXPECT_EQ(read(9), expected(0, 9));
}

TEST_F(InputFileTest, SeekAheadOfTheStartFailsAndChangesNothing) {
    open(100);
    read(10);
    EXPECT_EQ(SeekBytes(-11, file_), Status::kCantOpen);
    EXPECT_EQ(CurrentOffset(file_), 10U);
    EXPECT_EQ(read(2), expected(10, 2));
    EXPECT_EQ(SeekBytes(std::numeric_limits<std::int64_t>::min(), file_), Status::kCantOpen);
    EXPECT_EQ(SeekBytes(std::numeric_limits<std::int64_t>::max(), file_), Status::kCantOpen);
    EXPECT_EQ(read(2), expected(12, 2));
}

TEST_F(InputFileTest, SeekBehindTheEndOfTheFileReadsNothingAndComesBack) {
    open(100);
    EXPECT_EQ(SeekBytes(1000, file_), Status::kOk);
    EXPECT_EQ(read(1), "");
    EXPECT_EQ(SeekBytes(-950, file_), Status::kOk);
    EXPECT_EQ(read(3), expected(50, 3));
}

TEST_F(InputFileTest, SeekBackAfterAShortReadLandsWhereItSays) {
    open(kBlock + 100);
    EXPECT_EQ(read(kBlock + 500).size(), kBlock + 100);
    EXPECT_EQ(SeekBytes(-50, file_), Status::kOk);
    EXPECT_EQ(read(500), expected(kBlock + 50, 50));
}

TEST_F(InputFileTest, RequestOfExactlyOneBlockAtAUsedUpBufferPassesOverIt) {
    open(4 * kBlock);
    EXPECT_EQ(read(kBlock - 1).size(), kBlock - 1);
    EXPECT_EQ(read(1).size(), 1U);
    EXPECT_EQ(read(kBlock), "");
    EXPECT_EQ(CurrentOffset(file_), kBlock);
    EXPECT_EQ(read(4), expected(2 * kBlock, 4));
}

TEST_F(InputFileTest, RequestOfExactlyOneBlockDeliversWhatIsLeftOfAShortOne) {
    open(kBlock + 10);
    EXPECT_EQ(read(kBlock - 1).size(), kBlock - 1);
    EXPECT_EQ(read(1).size(), 1U);
    EXPECT_EQ(read(kBlock), expected(kBlock, 10));
    EXPECT_EQ(read(1), "");
}

TEST_F(InputFileTest, RequestOfExactlyOneBlockFromTheBufferIsWhole) {
    open(4 * kBlock);
    EXPECT_EQ(read(kBlock), expected(0, kBlock));
    EXPECT_EQ(SeekBytes(5, file_), Status::kOk);
    EXPECT_EQ(read(kBlock), expected(kBlock + 5, kBlock));
}

TEST_F(InputFileTest, LargerRequestsNeverLoseBytes) {
    open(8 * kBlock);
    read(10);
    // The part behind the buffer is exactly one block.
    EXPECT_EQ(read(2 * kBlock - 10), expected(10, 2 * kBlock - 10));
    // Whole blocks at a used-up buffer, and no block twice.
    EXPECT_EQ(read(2 * kBlock), expected(2 * kBlock, 2 * kBlock));
    EXPECT_EQ(read(kBlock + 1), expected(4 * kBlock, kBlock + 1));
    EXPECT_EQ(read(7), expected(5 * kBlock + 1, 7));
    EXPECT_EQ(CurrentOffset(file_), 5 * kBlock + 8);
}

TEST_F(InputFileTest, LargerRequestCutToOneBlockByTheRangeIsWhole) {
    open_range(4 * kBlock, 0, 2 * kBlock);
    EXPECT_EQ(read(kBlock - 1).size(), kBlock - 1);
    EXPECT_EQ(read(1).size(), 1U);
    EXPECT_EQ(read(5 * kBlock), expected(kBlock, kBlock));
}

TEST_F(InputFileTest, ShortReadDeliversWhatIsThereAndThenNothing) {
    open(2 * kBlock + 100);
    read(3);
    EXPECT_EQ(read(5 * kBlock), expected(3, 5 * kBlock));
    EXPECT_EQ(read(kBlock + 1), "");
    EXPECT_EQ(read(1), "");
    EXPECT_EQ(CurrentOffset(file_), 2 * kBlock + 100);
}

TEST_F(InputFileTest, RewindClearsTheRangeAndSeesTheWholeFile) {
    open_range(2 * kBlock, 20, 10);
    read(4);
    EXPECT_EQ(Rewind(file_), Status::kOk);
    EXPECT_EQ(file_.range_active, 0U);
    EXPECT_EQ(file_.range_start, 0);
    EXPECT_EQ(file_.range_left, 0);
    EXPECT_EQ(CurrentOffset(file_), 0U);
    EXPECT_EQ(read(2 * kBlock), bytes_);
}

TEST_F(InputFileTest, RewindBehindTheEndReadsAgain) {
    open(100);
    read(200);
    EXPECT_EQ(read(1), "");
    Rewind(file_);
    EXPECT_EQ(read(200), bytes_);
}

TEST_F(InputFileTest, ReopenGoesBackToTheStartOfTheRange) {
    open_range(1000, 20, 10);
    read(10);
    file_.range_left = 10;
    EXPECT_EQ(ReOpenFileEx(file_), Status::kOk);
    EXPECT_EQ(CurrentOffset(file_), 20U);
    EXPECT_EQ(read(100), expected(20, 10));
}

TEST_F(InputFileTest, ReopenWithALongerRangeHasRoomForIt) {
    open_range(3 * kBlock, 20, 10);
    file_.range_start = 7;
    file_.range_left = 2 * kBlock;
    EXPECT_EQ(ReOpenFileEx(file_), Status::kOk);
    EXPECT_EQ(read(3 * kBlock), expected(7, 2 * kBlock));
}

TEST_F(InputFileTest, ReopenDoesNotReadAgainWhatTheBufferHolds) {
    open(3 * kBlock);
    Rewind(file_);
    EXPECT_EQ(SeekBytes(kBlock + 7, file_), Status::kOk);
    limit_read_ahead(100, file_);
    EXPECT_EQ(read(8), expected(kBlock + 7, 8));
    EXPECT_EQ(SeekBytes(92, file_), Status::kOk);
    const std::int64_t place = file_.stream.place();
    file_.range_active = 1;
    file_.range_start = static_cast<std::int64_t>(kBlock + 7);
    file_.range_left = 100;
    EXPECT_EQ(ReOpenFileEx(file_), Status::kOk);
    EXPECT_EQ(file_.stream.place(), place);
    EXPECT_EQ(CurrentOffset(file_), kBlock + 7);
    EXPECT_EQ(read(1000), expected(kBlock + 7, 100));
    // A longer range, or one that begins elsewhere, is read.
    for (const std::int64_t start : {0, 1}) {
        file_.range_start = static_cast<std::int64_t>(kBlock + 7) + start;
        file_.range_left = 101;
        EXPECT_EQ(ReOpenFileEx(file_), Status::kOk);
        EXPECT_EQ(read(1000), expected(kBlock + 7 + static_cast<std::uint64_t>(start), 101));
    }
}

TEST_F(InputFileTest, ReopenOfAShortFileKeepsItsBuffer) {
    open(100);
    EXPECT_EQ(read(60), expected(0, 60));
    EXPECT_EQ(ReOpenFileEx(file_), Status::kOk);
    EXPECT_EQ(read(200), bytes_);
    EXPECT_EQ(ReOpenFileEx(file_), Status::kOk);
    EXPECT_EQ(read(200), bytes_);
}

TEST_F(InputFileTest, ReopenFailsWhereTheFileCannotBePositioned) {
    open(100);
    file_.range_start = -1;
    EXPECT_EQ(ReOpenFileEx(file_), Status::kCantOpen);
}

TEST_F(InputFileTest, SeekPastAShortRangeBufferHasRoomToRefill) {
    open_range(3 * kBlock, 20, 10);
    EXPECT_EQ(SeekBytes(20, file_), Status::kOk);
    EXPECT_EQ(read(4), expected(40, 4));
    EXPECT_EQ(file_.filled, kBlock);
}

TEST_F(InputFileTest, FileSizeIsThatOfTheWholeFileAndLeavesThePositionIntact) {
    open_range(2 * kBlock, 20, 100);
    read(3);
    EXPECT_EQ(FileSize(file_), static_cast<std::int64_t>(2 * kBlock));
    EXPECT_EQ(read(97), expected(23, 97));
    file_.range_active = 0;
    read(kBlock);
    EXPECT_EQ(FileSize(file_), static_cast<std::int64_t>(2 * kBlock));
}

TEST_F(InputFileTest, FileSizeOfWhatHasNoPositionIsUnknown) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[1]);
    ASSERT_EQ(ReadFileExt(FileDescriptor(ends[0]), nullptr, nullptr, 0, "pipe", file_),
              Status::kOk);
    EXPECT_EQ(FileSize(file_), -1);
    EXPECT_EQ(SeekBytes(1, file_), Status::kCantOpen);
    EXPECT_EQ(Rewind(file_), Status::kOk);
}

TEST_F(InputFileTest, CloseRemovesTheTemporaryCopy) {
    const std::string copy = folder_.write("copy", "abc");
    ASSERT_EQ(ReadFileExt(open_for_reading(copy), copy, nullptr, 0, "http://h/x", file_),
              Status::kOk);
    EXPECT_EQ(file_.name, "http://h/x");
    EXPECT_EQ(read(9), "abc");
    const RecordingSink sink;
    file_.range_active = 1;
    EXPECT_EQ(CloseFile(file_), Status::kOk);
    EXPECT_FALSE(std::filesystem::exists(copy));
    EXPECT_FALSE(file_.name);
    EXPECT_FALSE(file_.temp_name);
    EXPECT_EQ(file_.range_active, 1U);
    EXPECT_TRUE(sink.reports().empty());
    EXPECT_EQ(CloseFile(file_), Status::kOk);
}

TEST_F(InputFileTest, CloseReportsATemporaryCopyThatIsGone) {
    const std::string copy = folder_.write("copy", "abc");
    ReadFileExt(open_for_reading(copy), copy, nullptr, 0, "http://h/x", file_);
    std::filesystem::remove(copy);
    const RecordingSink sink;
    CloseFile(file_);
    ASSERT_EQ(sink.count(11), 1U);
    EXPECT_EQ(sink.reports()[0].text, "Fail to remove " + copy + " (http://h/x)");
}

TEST_F(InputFileTest, AdoptedStreamStartsAtTheRange) {
    bytes_ = pattern(5000);
    const std::string path = folder_.write("x", bytes_);
    file_.range_active = 1;
    file_.range_start = 4000;
    file_.range_left = 50;
    ASSERT_EQ(ReadFileExt(open_for_reading(path), nullptr, nullptr, 0, "x", file_), Status::kOk);
    EXPECT_EQ(CurrentOffset(file_), 4000U);
    EXPECT_EQ(read(100), expected(4000, 50));
}

TEST_F(InputFileTest, MemorySourceHasASizeAndAnOffsetButIsNotReadThroughReadBytes) {
    const std::vector<std::uint8_t> data{1, 2, 3, 4, 5};
    ASSERT_EQ(ReadFileExt({}, nullptr, data.data(), 5, "memory", file_), Status::kOk);
    EXPECT_EQ(FileSize(file_), 5);
    EXPECT_EQ(file_.filled, 5U);
    EXPECT_EQ(read(5), "");
    EXPECT_EQ(SeekBytes(3, file_), Status::kOk);
    EXPECT_EQ(CurrentOffset(file_), 3U);
    EXPECT_EQ(ReOpenFileEx(file_), Status::kOk);
    EXPECT_EQ(CurrentOffset(file_), 0U);
    EXPECT_EQ(Rewind(file_), Status::kOk);
    EXPECT_EQ(file_.filled, 5U);
    EXPECT_TRUE(read_view(1, file_).empty());
}

TEST_F(InputFileTest, MemorySourceWithARangeIsFilledToItsEnd) {
    const std::vector<std::uint8_t> data(50);
    file_.range_active = 1;
    file_.range_start = 10;
    file_.range_left = 20;
    ASSERT_EQ(ReadFileExt({}, nullptr, data.data(), 50, "memory", file_), Status::kOk);
    EXPECT_EQ(file_.filled, 30U);
    EXPECT_EQ(ReOpenFileEx(file_), Status::kOk);
    EXPECT_EQ(CurrentOffset(file_), 10U);
}

TEST_F(InputFileTest, ViewShowsWhatLiesInTheBufferAndMovesOn) {
    open(kBlock + 100);
    const auto view = read_view(50, file_);
    EXPECT_EQ(std::string(view.begin(), view.end()), expected(0, 50));
    EXPECT_EQ(CurrentOffset(file_), 50U);
    EXPECT_EQ(read(5), expected(50, 5));
    EXPECT_TRUE(read_view(kBlock, file_).empty());
    EXPECT_EQ(CurrentOffset(file_), 55U);
    EXPECT_EQ(read(kBlock), expected(55, kBlock));
}

TEST_F(InputFileTest, ViewStopsAtTheEndOfTheRange) {
    open_range(100, 20, 10);
    EXPECT_TRUE(read_view(11, file_).empty());
    EXPECT_EQ(read_view(10, file_).size(), 10U);
    EXPECT_EQ(file_.range_left, 0);
    EXPECT_TRUE(read_view(1, file_).empty());
}

TEST_F(InputFileTest, BlocksShowTheWholeFileInTurn) {
    open(2 * kBlock + 100);
    EXPECT_EQ(read(30), expected(0, 30));
    std::uint64_t at = 30;
    for (const std::uint64_t size : {kBlock - 30, kBlock, std::uint64_t{100}}) {
        const auto block = read_block(file_);
        ASSERT_EQ(std::string(block.begin(), block.end()), expected(at, size));
        at += size;
        ASSERT_EQ(CurrentOffset(file_), at);
    }
    EXPECT_TRUE(read_block(file_).empty());
    EXPECT_EQ(CurrentOffset(file_), at);
}

TEST_F(InputFileTest, BlocksStopAtTheEndOfTheRange) {
    open_range(2 * kBlock, 20, kBlock + 10);
    EXPECT_EQ(read_block(file_).size(), kBlock);
    const auto block = read_block(file_);
    EXPECT_EQ(std::string(block.begin(), block.end()), expected(20 + kBlock, 10));
    EXPECT_EQ(file_.range_left, 0);
    EXPECT_TRUE(read_block(file_).empty());
}

TEST_F(InputFileTest, EmptyFileAndFolderDeliverNothing) {
    open(0);
    EXPECT_EQ(read(10), "");
    EXPECT_TRUE(read_block(file_).empty());
    EXPECT_EQ(FileSize(file_), 0);
    CloseFile(file_);
    file_ = InputFile{};
    if (OpenFileEx(folder_.path(), nullptr, 0, file_) == Status::kOk) {
        EXPECT_EQ(read(10), "");
    }
}

// Any mix of reads, views and seeks shows the bytes that a plain copy of the file has there.
TEST_F(InputFileTest, AnyMixOfCallsAgreesWithThePlainBytes) {
    open(3 * kBlock + 4321);
    std::mt19937 random(1);
    std::uint64_t at = 0;
    for (int i = 0; i < 3000; ++i) {
        std::uint64_t count = random() % (random() % 8 == 0 ? 2 * kBlock : 5000U);
        count += count == kBlock ? 1 : 0;
        const auto kind = random() % 3;
        if (kind == 0) {
            const std::string got = read(count);
            ASSERT_EQ(got, expected(at, count)) << "read of " << count << " at " << at;
            at += got.size();
        } else if (kind == 1) {
            const auto view = read_view(count, file_);
            ASSERT_EQ(std::string(view.begin(), view.end()), expected(at, view.size()));
            at += view.size();
        } else {
            const std::uint64_t target = random() % (bytes_.size() + 10);
            ASSERT_EQ(
                SeekBytes(static_cast<std::int64_t>(target) - static_cast<std::int64_t>(at), file_),
                Status::kOk);
            at = target;
        }
        ASSERT_EQ(CurrentOffset(file_), at);
    }
}

class DownloadedFileTest : public InputFileTest {
protected:
    DownloadedFileTest() : here_(folder_.path()) { std::filesystem::create_directory("tmp"); }
    static std::size_t files_in_tmp() {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator("tmp"), {}));
    }

    WorkingDirectory here_;
    HttpServer server_;
};

TEST_F(DownloadedFileTest, AddressIsFetchedReadAndItsCopyRemoved) {
    server_.serve("/a.mp4", "the segment");
    ASSERT_EQ(OpenFileEx(server_.url("/a.mp4"), nullptr, 0, file_), Status::kOk);
    EXPECT_EQ(file_.name, server_.url("/a.mp4"));
    EXPECT_EQ(file_.temp_name->rfind("tmp/segment_", 0), 0U);
    EXPECT_EQ(files_in_tmp(), 1U);
    EXPECT_EQ(read(100), "the segment");
    CloseFile(file_);
    EXPECT_EQ(files_in_tmp(), 0U);
}

TEST_F(DownloadedFileTest, AddressThatIsNotThereFailsAndItsCloseReportsTheSecondRemoval) {
    const RecordingSink sink;
    EXPECT_EQ(OpenFileEx(server_.url("/none"), nullptr, 0, file_), Status::kCantOpen);
    EXPECT_EQ(sink.count(2054), 1U);
    EXPECT_EQ(files_in_tmp(), 0U);
    CloseFile(file_);
    EXPECT_EQ(sink.count(11), 1U);
}

TEST_F(InputFileTest, FileThatShrinksAfterTheOpenIsToldAtTheClose) {
    const RecordingSink sink;
    open(3 * kBlock);
    read(10);
    std::filesystem::resize_file(path_, kBlock + 7);
    EXPECT_EQ(read(5 * kBlock), expected(10, kBlock - 3));
    EXPECT_EQ(close_whole_input(file_, nullptr), Status::kFailed);
    ASSERT_EQ(sink.ids(), (std::vector<int>{4065}));
    EXPECT_EQ(
        sink.reports()[0].text,
        "Fail to read the data specified by the byte range [start : 1048583, length : 2097145] "
        "in the segment file [" +
            path_ + "] .");
}

TEST_F(InputFileTest, FileThatStaysOrGrowsIsClosedInSilence) {
    const RecordingSink sink;
    open(1000);
    read(100);
    EXPECT_EQ(close_whole_input(file_, nullptr), Status::kOk);
    file_ = InputFile{};
    open(1000);
    std::filesystem::resize_file(path_, 2000);
    EXPECT_EQ(close_whole_input(file_, nullptr), Status::kOk);
    file_ = InputFile{};
    EXPECT_EQ(close_whole_input(file_, nullptr), Status::kOk);
    EXPECT_TRUE(sink.reports().empty());
}

TEST_F(InputFileTest, FileThatCannotBeReadIsToldAtTheClose) {
    const RecordingSink sink;
    // The start of this process' own memory is mapped to nothing: a read of it fails.
    file_.stream = FileDescriptor(::open("/proc/self/mem", O_RDONLY));
    std::uint8_t byte = 0;
    EXPECT_EQ(file_.stream.read({&byte, 1}), 0U);
    EXPECT_TRUE(file_.stream.at_end());
    file_.name = "memory";
    EXPECT_EQ(close_whole_input(file_, nullptr), Status::kFailed);
    ASSERT_EQ(sink.ids(), (std::vector<int>{4065}));
    EXPECT_EQ(sink.reports()[0].text,
              "Fail to read the data specified by the byte range [start : 0, length : 1] in the "
              "segment file [memory] .");
}

}  // namespace
}  // namespace mediasplit
