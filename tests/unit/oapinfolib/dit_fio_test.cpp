#include "oapinfolib/src/dit_fio.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/unit/oapinfolib/oap_test_support.h"

namespace mediasplit {
namespace {

constexpr std::uint8_t kFileOrder[] = {0x0B, 0x77, 0x12, 0x34};
constexpr std::uint8_t kWordOrder[] = {0x77, 0x0B, 0x34, 0x12};

struct File : testing::Test {
    FileBuffer file;
    void SetUp() override { openfilebufs(4, file); }
};

TEST_F(File, StartsWithUnknownOrder) {
    EXPECT_EQ(file.byte_order, -1);
    EXPECT_EQ(file.bytes_left, 4);
    EXPECT_FALSE(file.eof);
}

TEST_F(File, FindsBothOrdersWithoutAWord) {
    ExpectText text;
    EXPECT_EQ(detectbyteorder(kFileOrder, file), 0);
    EXPECT_EQ(file.byte_order, 1);
    openfilebufs(4, file);
    EXPECT_EQ(detectbyteorder(kWordOrder, file), 0);
    EXPECT_EQ(file.byte_order, 0);
    EXPECT_EQ(text.err(), "");
}

TEST_F(File, EachChangeOfOrderGivesAWarning) {
    ExpectText text;
    detectbyteorder(kFileOrder, file);
    detectbyteorder(kFileOrder, file);
    detectbyteorder(kWordOrder, file);
    detectbyteorder(kWordOrder, file);
    detectbyteorder(kFileOrder, file);
    EXPECT_EQ(text.err(),
              "\nWARNING:  FIO: Byte order status changed\n"
              "\nWARNING:  FIO: Byte order status changed\n");
}

TEST_F(File, OtherWordIsNoSync) {
    const std::uint8_t other[] = {0x0B, 0x78};
    ExpectText text;
    EXPECT_EQ(detectbyteorder(other, file), 5);
    text.fatal("Invalid syncword detected while detecting byte order", "dit_fio", 1);
}

TEST_F(File, NothingLeftIsTheEnd) {
    openfilebufs(0, file);
    EXPECT_EQ(detectbyteorder(nullptr, file), 0);
    EXPECT_TRUE(file.eof);
    EXPECT_EQ(file.byte_order, -1);
}

TEST_F(File, StrayByteIsRefused) {
    openfilebufs(1, file);
    ExpectText text;
    EXPECT_EQ(detectbyteorder(kFileOrder, file), 3);
    EXPECT_EQ(text.err(), fatal_text("Cannot read from input file", "dit_fio", 85));
}

TEST_F(File, WordsComeInHostOrder) {
    detectbyteorder(kFileOrder, file);
    EXPECT_EQ(readfilein(2, 3, kFileOrder, file), 0);
    EXPECT_EQ(file.words[3], 0x0B77);
    EXPECT_EQ(file.words[4], 0x1234);
    EXPECT_EQ(file.bytes_left, 0);
    openfilebufs(4, file);
    detectbyteorder(kWordOrder, file);
    EXPECT_EQ(readfilein(2, 0, kWordOrder, file), 0);
    EXPECT_EQ(file.words[0], 0x0B77);
    EXPECT_EQ(file.words[1], 0x1234);
}

TEST_F(File, LessThanAskedForIsRefusedAndNothingIsTheEnd) {
    ExpectText text;
    EXPECT_EQ(readfilein(3, 0, kFileOrder, file), 3);
    EXPECT_EQ(file.bytes_left, 4);
    text.fatal("Cannot read from input file", "dit_fio", 1);
    openfilebufs(0, file);
    EXPECT_EQ(readfilein(3, 0, kFileOrder, file), 0);
    EXPECT_TRUE(file.eof);
}

TEST_F(File, NoWordsCopyNothing) {
    EXPECT_EQ(readfilein(0, 0, nullptr, file), 0);
    EXPECT_EQ(readfilein(-2, 0, nullptr, file), 0);
    EXPECT_EQ(file.bytes_left, 4);
    EXPECT_FALSE(file.eof);
}

TEST_F(File, OpeningClearsWhatTheLastBlockLeft) {
    detectbyteorder(kFileOrder, file);
    readfilein(2, 0, kFileOrder, file);
    openfilebufs(4, file);
    EXPECT_EQ(file.words[0], 0);
    EXPECT_EQ(file.words[1], 0);
    EXPECT_EQ(file.byte_order, -1);
}

TEST_F(File, LargestFrameFitsTheBuffer) {
    const std::vector<std::uint8_t> block(4096, 0xA5);
    openfilebufs(4096, file);
    EXPECT_EQ(readfilein(2048, 0, block.data(), file), 0);
    EXPECT_EQ(file.words[2047], 0xA5A5);
    openfilebufs(8192, file);
    const std::vector<std::uint8_t> larger(8192, 0x5A);
    EXPECT_EQ(readfilein(4096, 0, larger.data(), file), 0) << "cut at the buffer's end";
    EXPECT_EQ(file.words[2047], 0x5A5A);
}

TEST_F(File, DescriptorStartsEmpty) {
    FrameDescriptor descriptor{nullptr, 0, 7};
    initbufdescriptors(file, descriptor);
    EXPECT_EQ(descriptor.words, file.words.data());
    EXPECT_EQ(descriptor.capacity, 2048);
    EXPECT_EQ(descriptor.valid_words, 0);
    EXPECT_EQ(closefilebufs(), 0);
}

TEST(PerformByteRev, SwapsEachWord) {
    std::uint16_t words[] = {0x0102, 0xA0B0, 0x00FF};
    performbyterev(2, words);
    EXPECT_EQ(words[0], 0x0201);
    EXPECT_EQ(words[1], 0xB0A0);
    EXPECT_EQ(words[2], 0x00FF);
}

}  // namespace
}  // namespace mediasplit
