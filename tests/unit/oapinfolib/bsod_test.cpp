#include "oapinfolib/src/bsod.h"

#include <gtest/gtest.h>

#include <array>

namespace mediasplit {
namespace {

constexpr std::array<std::uint16_t, 3> kWords{0xA5C3, 0x0F1E, 0x8001};

BsodReader open(std::int64_t bit = 0) {
    BsodReader reader;
    bsod_init(kWords.data(), kWords.size(), bit, reader);
    return reader;
}

TEST(Bsod, InitReadsTheWordAtTheOffset) {
    const BsodReader reader = open(20);
    EXPECT_EQ(reader.current, 0x0F1E);
    EXPECT_EQ(reader.bit, 4);
}

TEST(Bsod, RightJustifiedBitsCrossAWord) {
    BsodReader reader = open();
    EXPECT_EQ(bsod_unprj(reader, 4), 0xA);
    EXPECT_EQ(bsod_unprj(reader, 16), 0x5C30);
    EXPECT_EQ(bsod_unprj(reader, 12), 0xF1E);
    EXPECT_EQ(bsod_unprj(reader, 16), 0x8001);
}

TEST(Bsod, NoBitsAreZeroAndDontMove) {
    BsodReader reader = open(3);
    EXPECT_EQ(bsod_unprj(reader, 0), 0);
    EXPECT_EQ(bsod_unplj(reader, 0), 0);
    EXPECT_EQ(reader.bit, 3);
}

TEST(Bsod, LeftJustifiedBitsHaveZerosBehind) {
    BsodReader reader = open();
    EXPECT_EQ(bsod_unplj(reader, 8), 0xA500);
    EXPECT_EQ(bsod_unplj(reader, 3), 0xC000);
    EXPECT_EQ(bsod_unplj(reader, 16), 0x1878);
}

TEST(Bsod, SkipAndRewindMeetAgain) {
    BsodReader reader = open();
    bsod_skip(reader, 37);
    EXPECT_EQ(reader.index, 2);
    EXPECT_EQ(reader.bit, 5);
    bsod_rewind(reader, 37);
    EXPECT_EQ(bsod_unprj(reader, 16), 0xA5C3);
}

TEST(Bsod, BitsBehindTheEndAreZero) {
    BsodReader reader = open(44);
    EXPECT_EQ(bsod_unprj(reader, 16), 0x1000);
    EXPECT_EQ(bsod_unprj(reader, 16), 0);
    bsod_skip(reader, 1LL << 40U);
    EXPECT_EQ(bsod_unprj(reader, 16), 0);
    EXPECT_EQ(bsod_unprj(reader, 16), 0);
}

TEST(Bsod, RewindStopsAtTheFirstBit) {
    BsodReader reader = open(5);
    bsod_rewind(reader, 1LL << 40U);
    EXPECT_EQ(bsod_unprj(reader, 16), 0xA5C3);
}

TEST(Bsod, ReaderOverNothingGivesZeros) {
    BsodReader reader;
    bsod_init(nullptr, 9, 0, reader);
    EXPECT_EQ(bsod_unprj(reader, 16), 0);
}

}  // namespace
}  // namespace mediasplit
