#include "src/util/bit_reader.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string_view>
#include <vector>

#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

using Bytes = std::vector<std::uint8_t>;

// "0101 1" as bytes, filled up with zeros.
Bytes bits(std::string_view text) {
    Bytes bytes;
    std::size_t at = 0;
    for (const char c : text) {
        if (c == ' ') {
            continue;
        }
        if (at % 8 == 0) {
            bytes.push_back(0);
        }
        bytes.back() = static_cast<std::uint8_t>(bytes.back() | (c - '0') << (7 - at % 8));
        ++at;
    }
    return bytes;
}

std::uint32_t ue(std::string_view text) {
    std::uint32_t position = 0;
    return read_ue_s(position, bits(text));
}

TEST(BitReader, ReadsFieldsMostSignificantBitFirst) {
    const Bytes bytes{0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0, 0x11};
    std::uint32_t position = 0;
    EXPECT_EQ(read_uint8(position, bytes, 4), 0x1);
    EXPECT_EQ(read_uint16(position, bytes, 12), 0x234);
    EXPECT_EQ(read_uint32(position, bytes, 32), 0x56789ABCU);
    EXPECT_EQ(position, 48U);
    position = 4;
    EXPECT_EQ(read_uint64(position, bytes, 64), 0x23456789ABCDEF01ULL);
    EXPECT_EQ(position, 68U);
}

TEST(BitReader, ReadOfNoBitsYieldsZeroAndStays) {
    const Bytes bytes{0xFF};
    std::uint32_t position = 3;
    EXPECT_EQ(read_uint8(position, bytes, 0), 0);
    EXPECT_EQ(read_uint64(position, bytes, 0), 0U);
    EXPECT_EQ(position, 3U);
}

TEST(BitReader, BitsBehindTheEndAreZeroAndThePositionGoesOn) {
    const Bytes bytes{0xFF};
    std::uint32_t position = 4;
    EXPECT_EQ(read_uint16(position, bytes, 16), 0xF000);
    EXPECT_EQ(position, 20U);
    EXPECT_EQ(read_uint64(position, bytes, 64), 0U);
    position = std::numeric_limits<std::uint32_t>::max() - 3;
    EXPECT_EQ(read_uint32(position, bytes, 32), 0U);
    EXPECT_EQ(read_uint32(position, {}, 32), 0U);
}

TEST(BitReader, CountAboveTheWidthKeepsTheLowBits) {
    const Bytes bytes{0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0, 0x11, 0x22};
    std::uint32_t position = 0;
    EXPECT_EQ(read_uint8(position, bytes, 12), 0x23);
    position = 0;
    EXPECT_EQ(read_uint64(position, bytes, 80), 0x56789ABCDEF01122ULL);
    EXPECT_EQ(position, 80U);
    EXPECT_EQ(read_uint64(position, bytes, 4000000000U), 0U);
}

TEST(BitReader, AgreesWithReadingBitByBit) {
    std::mt19937 random(5);
    Bytes bytes(64);
    for (auto& byte : bytes) {
        byte = static_cast<std::uint8_t>(random());
    }
    for (int i = 0; i < 2000; ++i) {
        const std::uint32_t start = random() % 500;
        const std::uint32_t count = random() % 65;
        std::uint64_t expected = 0;
        for (std::uint32_t at = start; at < start + count; ++at) {
            expected = expected << 1 | (at < 512 ? bytes[at / 8] >> (7 - at % 8) & 1U : 0U);
        }
        std::uint32_t position = start;
        ASSERT_EQ(read_uint64(position, bytes, count), expected);
        ASSERT_EQ(position, start + count);
    }
}

TEST(BitReader, CheckedReadsDeliverUpToTheLastBit) {
    const RecordingSink sink;
    const Bytes bytes{0xAB, 0xCD, 0xEF, 0x01};
    std::uint32_t position = 8;
    std::uint8_t eight = 0;
    std::uint16_t sixteen = 0;
    std::uint32_t all = 0;
    EXPECT_EQ(read_uint8_s(position, bytes, 8, &eight), Status::kOk);
    EXPECT_EQ(eight, 0xCD);
    EXPECT_EQ(read_uint16_s(position, bytes, 16, &sixteen), Status::kOk);
    EXPECT_EQ(sixteen, 0xEF01);
    EXPECT_EQ(position, 32U);
    position = 0;
    EXPECT_EQ(read_uint32_s(position, bytes, 32, &all), Status::kOk);
    EXPECT_EQ(all, 0xABCDEF01U);
    position = 0;
    EXPECT_EQ(read_uint32_s(position, bytes, 32, nullptr), Status::kOk);
    EXPECT_EQ(position, 32U);
    EXPECT_TRUE(sink.reports().empty());
}

TEST(BitReader, CheckedReadsRefuseOneBitTooManyAndChangeNothing) {
    const RecordingSink sink;
    const Bytes bytes{0xAB, 0xCD};
    std::uint32_t position = 9;
    std::uint8_t eight = 77;
    std::uint16_t sixteen = 77;
    std::uint32_t all = 77;
    EXPECT_EQ(read_uint8_s(position, bytes, 8, &eight), Status::kFailed);
    EXPECT_EQ(read_uint16_s(position, bytes, 8, &sixteen), Status::kFailed);
    EXPECT_EQ(read_uint32_s(position, bytes, 8, &all), Status::kFailed);
    EXPECT_EQ(read_uint32_s(position, bytes, 0xFFFFFFFFU, nullptr), Status::kFailed);
    EXPECT_EQ(position, 9U);
    EXPECT_EQ(eight, 77);
    EXPECT_EQ(sixteen, 77);
    EXPECT_EQ(all, 77U);
    ASSERT_EQ(sink.count(3004), 4U);
    EXPECT_EQ(sink.reports()[0].text.rfind(
                  "MEMORY OUT OF BOUNDS ! [ File : ../../../../mediacheck2/src/util, Line : ", 0),
              0U);
}

TEST(ExpGolomb, ReadsCodeNumbers) {
    EXPECT_EQ(ue("1"), 0U);
    EXPECT_EQ(ue("010"), 1U);
    EXPECT_EQ(ue("011"), 2U);
    EXPECT_EQ(ue("00100"), 3U);
    EXPECT_EQ(ue("00101"), 4U);
    EXPECT_EQ(ue("00111"), 6U);
    EXPECT_EQ(ue("0001000"), 7U);
    EXPECT_EQ(ue("000000000 1 000000001"), 512U);
}

TEST(ExpGolomb, ReadsTheLongestCode) {
    // 31 zeros, a one, 31 ones: 2^32 - 2.
    EXPECT_EQ(ue(std::string(31, '0') + std::string(32, '1')), 4294967294U);
}

TEST(ExpGolomb, AdvancesBehindTheCode) {
    const Bytes bytes = bits("1 010 00101 1");
    std::uint32_t position = 0;
    EXPECT_EQ(read_ue_s(position, bytes), 0U);
    EXPECT_EQ(position, 1U);
    EXPECT_EQ(read_ue_s(position, bytes), 1U);
    EXPECT_EQ(position, 4U);
    EXPECT_EQ(read_ue_s(position, bytes), 4U);
    EXPECT_EQ(position, 9U);
}

TEST(ExpGolomb, SuffixAcrossTheEndGivesZeroBehindTheStoppingBit) {
    const Bytes bytes = bits("0000 1111");
    std::uint32_t position = 0;
    EXPECT_EQ(read_ue_s(position, bytes), 0U);
    EXPECT_EQ(position, 5U);
    // One that just fits.
    const Bytes whole = bits("0000 1111 1000 0000");
    position = 0;
    EXPECT_EQ(read_ue_s(position, whole), 30U);
    EXPECT_EQ(position, 9U);
}

TEST(ExpGolomb, PrefixWithoutAStoppingBitEndsAtTheEndOfTheData) {
    const Bytes bytes(1000);
    std::uint32_t position = 3;
    EXPECT_EQ(read_ue_s(position, bytes), 0U);
    EXPECT_EQ(position, 8000U);
    EXPECT_EQ(read_ue_s(position, bytes), 0U);
    EXPECT_EQ(position, 8000U);
    EXPECT_EQ(read_ue_s(position, {}), 0U);
}

TEST(ExpGolomb, OverLongCodeIsANumberAndNoFailure) {
    // 40 zeros, a one, 40 bits: the shift count is taken modulo 32.
    const std::string text = std::string(40, '0') + "1" + std::string(38, '0') + "11";
    EXPECT_EQ(ue(text), 3U + (1U << 8) - 1);
    EXPECT_EQ(ue(std::string(32, '0') + "1" + std::string(31, '0') + "1"), 1U);
}

TEST(ExpGolomb, SignedCodesAlternate) {
    const Bytes bytes = bits("1 010 011 00100 00101 00110");
    std::uint32_t position = 0;
    const int expected[] = {0, 1, -1, 2, -2, 3};
    for (const int value : expected) {
        EXPECT_EQ(read_se_s(position, bytes), value);
    }
}

TEST(ReverseBits, PutsTheBitsInReverseOrder) {
    EXPECT_EQ(reverse_bits(0), 0U);
    EXPECT_EQ(reverse_bits(1), 0x80000000U);
    EXPECT_EQ(reverse_bits(0x60000000), 0x00000006U);
    EXPECT_EQ(reverse_bits(0x12345678), 0x1E6A2C48U);
}

TEST(WriteBits, SetsAndClearsInPlaceAndNothingElse) {
    Bytes bytes{0x00, 0x00, 0x00};
    EXPECT_EQ(write_bits(6, bytes, 3, 7), 9U);
    EXPECT_EQ(bytes, (Bytes{0x03, 0x80, 0x00}));
    bytes = {0xFF, 0xFF, 0xFF};
    EXPECT_EQ(write_bits(6, bytes, 3, 0), 9U);
    EXPECT_EQ(bytes, (Bytes{0xFC, 0x7F, 0xFF}));
    EXPECT_EQ(write_bits(4, bytes, 12, 0xABC), 16U);
    EXPECT_EQ(bytes, (Bytes{0xFA, 0xBC, 0xFF}));
}

TEST(WriteBits, OfNoBitsChangesNothing) {
    Bytes bytes{0x55};
    EXPECT_EQ(write_bits(3, bytes, 0, 0xFFFF), 3U);
    EXPECT_EQ(bytes, (Bytes{0x55}));
}

TEST(WriteBits, OnlySixteenBitsReachTheBuffer) {
    Bytes bytes{0xFF, 0xFF, 0xFF};
    EXPECT_EQ(write_bits(0, bytes, 24, 0xFFABCD), 24U);
    EXPECT_EQ(bytes, (Bytes{0x00, 0xAB, 0xCD}));
}

TEST(WriteBits, BitsBehindTheEndAreDropped) {
    Bytes bytes{0x00};
    EXPECT_EQ(write_bits(6, bytes, 8, 0xFF), 14U);
    EXPECT_EQ(bytes, (Bytes{0x03}));
    EXPECT_EQ(write_bits(100, bytes, 4000000000U, 1), 4000000100U);
}

}  // namespace
}  // namespace mediasplit
