#include "base/orv_bitbuf.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <vector>

namespace mediasplit {
namespace {

constexpr std::array<std::uint8_t, 10> kBytes = {0x12, 0x34, 0x56, 0x78, 0x9A,
                                                 0xBC, 0xDE, 0xF0, 0xA5, 0x5A};

orv_bitbuf reader_over(const std::uint8_t* data, std::int64_t bits) {
    orv_bitbuf buf;
    orv_bitbuf_init(&buf, data, bits);
    return buf;
}

void expect_same(const orv_bitbuf& a, const orv_bitbuf& b) {
    EXPECT_EQ(a.base, b.base);
    EXPECT_EQ(a.cursor, b.cursor);
    EXPECT_EQ(a.bit_offset, b.bit_offset);
    EXPECT_EQ(a.bits_left, b.bits_left);
}

// Reference: one bit at a time, zeros outside the data.
std::uint64_t slow_bits(const std::vector<std::uint8_t>& data, std::int64_t position, int n) {
    std::uint64_t value = 0;
    for (int i = 0; i < n; ++i) {
        const std::int64_t at = position + i;
        const bool inside = at < static_cast<std::int64_t>(data.size()) * 8;
        const unsigned bit =
            inside ? (data[static_cast<std::size_t>(at >> 3)] >> (7 - (at & 7))) & 1U : 0U;
        value = (value << 1) | bit;
    }
    return value;
}

TEST(OrvBitbuf, ReadOfNoBitsGivesZeroAndStays) {
    orv_bitbuf buf = reader_over(kBytes.data(), 80);
    ASSERT_EQ(orv_bitbuf_skip(&buf, 3), 0);
    const orv_bitbuf before = buf;
    EXPECT_EQ(orv_bitbuf_read(&buf, 0), 0U);
    EXPECT_EQ(orv_bitbuf_read_long(&buf, 0), 0U);
    EXPECT_EQ(orv_bitbuf_fast_read(&buf, 0), 0U);
    std::uint32_t value = 7;
    EXPECT_EQ(orv_bitbuf_safe_read(&buf, 0, &value), 0);
    EXPECT_EQ(value, 0U);
    expect_same(before, buf);
}

TEST(OrvBitbuf, ReadsMostSignificantBitFirst) {
    orv_bitbuf buf = reader_over(kBytes.data(), 80);
    EXPECT_EQ(orv_bitbuf_read(&buf, 4), 0x1U);
    EXPECT_EQ(orv_bitbuf_read(&buf, 8), 0x23U);
    EXPECT_EQ(orv_bitbuf_read(&buf, 1), 0U);
    EXPECT_EQ(orv_bitbuf_read(&buf, 3), 4U);
    EXPECT_EQ(orv_bitbuf_read(&buf, 32), 0x56789ABCU);
    EXPECT_EQ(orv_bitbuf_get_abs_pos(&buf), 48);
    EXPECT_EQ(orv_bitbuf_get_bits_left(&buf), 32);
}

TEST(OrvBitbuf, LongReadHoldsSixtyFourBitsFromInsideAByte) {
    orv_bitbuf buf = reader_over(kBytes.data(), 80);
    ASSERT_EQ(orv_bitbuf_skip(&buf, 4), 0);
    EXPECT_EQ(orv_bitbuf_fast_read_long(&buf, 64), 0x23456789ABCDEF0AULL);
    EXPECT_EQ(orv_bitbuf_get_abs_pos(&buf), 68);
}

TEST(OrvBitbuf, PlainReadPastEndKeepsBitsAtTheTopAndCountsBelowZero) {
    orv_bitbuf buf = reader_over(kBytes.data(), 12);
    ASSERT_EQ(orv_bitbuf_skip(&buf, 8), 0);
    EXPECT_EQ(orv_bitbuf_read(&buf, 16), 0x3000U);
    EXPECT_EQ(orv_bitbuf_get_bits_left(&buf), -12);
    EXPECT_EQ(orv_bitbuf_get_abs_pos(&buf), 24);
    EXPECT_EQ(orv_bitbuf_read(&buf, 32), 0U);
    EXPECT_EQ(orv_bitbuf_get_bits_left(&buf), -44);
    EXPECT_EQ(orv_bitbuf_get_abs_pos(&buf), 56);
}

TEST(OrvBitbuf, OverrunReaderGoesBackToWhereItWas) {
    orv_bitbuf buf = reader_over(kBytes.data(), 13);
    orv_bitbuf_read(&buf, 32);
    orv_bitbuf_read(&buf, 7);
    ASSERT_EQ(orv_bitbuf_get_abs_pos(&buf), 39);
    EXPECT_EQ(orv_bitbuf_get_alignment_bits(&buf), 1);
    ASSERT_EQ(orv_bitbuf_skip(&buf, -31), 0);
    EXPECT_EQ(orv_bitbuf_get_abs_pos(&buf), 8);
    EXPECT_EQ(orv_bitbuf_get_bits_left(&buf), 5);
    EXPECT_EQ(orv_bitbuf_read(&buf, 5), 0x6U);
    orv_bitbuf_read(&buf, 20);
    ASSERT_EQ(orv_bitbuf_set_abs_pos(&buf, 4), 0);
    EXPECT_EQ(orv_bitbuf_read(&buf, 4), 0x2U);
}

TEST(OrvBitbuf, OverrunReaderGoesBackAShortWayAndStaysOverrun) {
    orv_bitbuf buf = reader_over(kBytes.data(), 13);
    orv_bitbuf_read(&buf, 16);
    ASSERT_EQ(orv_bitbuf_get_bits_left(&buf), -3);
    EXPECT_EQ(orv_bitbuf_skip(&buf, -1), 0);
    EXPECT_EQ(orv_bitbuf_get_bits_left(&buf), -2);
    EXPECT_EQ(orv_bitbuf_get_abs_pos(&buf), 15);
    EXPECT_EQ(orv_bitbuf_skip(&buf, -15), 0);
    EXPECT_EQ(orv_bitbuf_read(&buf, 13), 0x246U);
}

TEST(OrvBitbuf, SafeReadOneBitShortRefusesAndChangesNothing) {
    orv_bitbuf buf = reader_over(kBytes.data(), 31);
    const orv_bitbuf before = buf;
    std::uint32_t value = 99;
    std::uint64_t wide = 99;
    EXPECT_EQ(orv_bitbuf_safe_read(&buf, 32, &value), 1);
    EXPECT_EQ(orv_bitbuf_safe_read_long(&buf, 32, &wide), 1);
    EXPECT_EQ(orv_bitbuf_safe_peek(&buf, 32, &value), 1);
    EXPECT_EQ(orv_bitbuf_safe_peek_long(&buf, 32, &wide), 1);
    EXPECT_EQ(value, 99U);
    EXPECT_EQ(wide, 99U);
    expect_same(before, buf);
    EXPECT_EQ(orv_bitbuf_safe_read(&buf, 31, &value), 0);
    EXPECT_EQ(value, 0x12345678U >> 1);
    EXPECT_EQ(orv_bitbuf_get_bits_left(&buf), 0);
}

TEST(OrvBitbuf, PeeksLeaveThePosition) {
    orv_bitbuf buf = reader_over(kBytes.data(), 20);
    ASSERT_EQ(orv_bitbuf_skip(&buf, 4), 0);
    const orv_bitbuf before = buf;
    std::uint32_t value = 0;
    std::uint64_t wide = 0;
    EXPECT_EQ(orv_bitbuf_peek(&buf, 8), 0x23U);
    EXPECT_EQ(orv_bitbuf_peek(&buf, 32), 0x23450000U);
    EXPECT_EQ(orv_bitbuf_peek_long(&buf, 64), 0x2345000000000000ULL);
    EXPECT_EQ(orv_bitbuf_fast_peek(&buf, 12), 0x234U);
    EXPECT_EQ(orv_bitbuf_fast_peek_long(&buf, 16), 0x2345U);
    EXPECT_EQ(orv_bitbuf_safe_peek(&buf, 16, &value), 0);
    EXPECT_EQ(value, 0x2345U);
    EXPECT_EQ(orv_bitbuf_safe_peek_long(&buf, 9, &wide), 0);
    EXPECT_EQ(wide, 0x46U);
    expect_same(before, buf);
}

TEST(OrvBitbuf, SkipByAllThatIsLeftSucceedsAndOneMoreIsRefused) {
    orv_bitbuf buf = reader_over(kBytes.data(), 21);
    EXPECT_EQ(orv_bitbuf_skip(&buf, 22), 1);
    EXPECT_EQ(orv_bitbuf_get_abs_pos(&buf), 0);
    EXPECT_EQ(orv_bitbuf_skip(&buf, 21), 0);
    EXPECT_EQ(orv_bitbuf_get_bits_left(&buf), 0);
    EXPECT_EQ(orv_bitbuf_skip(&buf, 1), 1);
    EXPECT_EQ(orv_bitbuf_skip(&buf, 0), 0);
}

TEST(OrvBitbuf, SkipBackToTheStartSucceedsAndOneMoreIsRefused) {
    orv_bitbuf buf = reader_over(kBytes.data(), 80);
    ASSERT_EQ(orv_bitbuf_skip(&buf, 13), 0);
    EXPECT_EQ(orv_bitbuf_skip(&buf, -14), 1);
    EXPECT_EQ(orv_bitbuf_get_abs_pos(&buf), 13);
    EXPECT_EQ(orv_bitbuf_skip(&buf, -13), 0);
    EXPECT_EQ(orv_bitbuf_get_abs_pos(&buf), 0);
    EXPECT_EQ(orv_bitbuf_get_bits_left(&buf), 80);
    EXPECT_EQ(orv_bitbuf_skip(&buf, std::numeric_limits<std::int64_t>::min()), 1);
    EXPECT_EQ(orv_bitbuf_skip(&buf, std::numeric_limits<std::int64_t>::max()), 1);
}

TEST(OrvBitbuf, AlignAtABoundaryStaysEvenWithNothingLeft) {
    orv_bitbuf buf = reader_over(kBytes.data(), 16);
    ASSERT_EQ(orv_bitbuf_skip(&buf, 16), 0);
    EXPECT_EQ(orv_bitbuf_align(&buf), 0);
    EXPECT_EQ(orv_bitbuf_get_abs_pos(&buf), 16);
}

TEST(OrvBitbuf, AlignMovesToTheNextByteAndIsRefusedBeyondTheData) {
    orv_bitbuf buf = reader_over(kBytes.data(), 12);
    ASSERT_EQ(orv_bitbuf_skip(&buf, 3), 0);
    EXPECT_EQ(orv_bitbuf_get_alignment_bits(&buf), 5);
    EXPECT_EQ(orv_bitbuf_align(&buf), 0);
    EXPECT_EQ(orv_bitbuf_get_abs_pos(&buf), 8);
    ASSERT_EQ(orv_bitbuf_skip(&buf, 2), 0);
    EXPECT_EQ(orv_bitbuf_align(&buf), 1);
    EXPECT_EQ(orv_bitbuf_get_abs_pos(&buf), 10);
}

TEST(OrvBitbuf, AbsolutePositionMovesBothWaysAndIsRefusedOutside) {
    orv_bitbuf buf = reader_over(kBytes.data(), 80);
    EXPECT_EQ(orv_bitbuf_set_abs_pos(&buf, 80), 0);
    EXPECT_EQ(orv_bitbuf_get_bits_left(&buf), 0);
    EXPECT_EQ(orv_bitbuf_set_abs_pos(&buf, 81), 1);
    EXPECT_EQ(orv_bitbuf_set_abs_pos(&buf, -1), 1);
    EXPECT_EQ(orv_bitbuf_get_abs_pos(&buf), 80);
    EXPECT_EQ(orv_bitbuf_set_abs_pos(&buf, 9), 0);
    EXPECT_EQ(orv_bitbuf_read(&buf, 7), 0x34U);
}

TEST(OrvBitbuf, EmptyAndNullBuffersReadAsZeros) {
    orv_bitbuf buf = reader_over(nullptr, 64);
    EXPECT_EQ(orv_bitbuf_get_bits_left(&buf), 0);
    EXPECT_EQ(orv_bitbuf_read(&buf, 8), 0U);
    EXPECT_EQ(orv_bitbuf_get_bits_left(&buf), -8);
    buf = reader_over(kBytes.data(), -5);
    EXPECT_EQ(orv_bitbuf_get_bits_left(&buf), 0);
}

TEST(OrvBitbuf, EveryOffsetWidthAndStrengthAgreesWithBitByBitReading) {
    const std::vector<std::uint8_t> data(kBytes.begin(), kBytes.end());
    for (std::int64_t position = 0; position <= 80; ++position) {
        for (int n = 0; n <= 64; ++n) {
            const std::uint64_t expected = slow_bits(data, position, n);
            orv_bitbuf plain = reader_over(data.data(), 80);
            ASSERT_EQ(orv_bitbuf_set_abs_pos(&plain, position), 0);
            orv_bitbuf fast = plain;
            orv_bitbuf safe = plain;
            ASSERT_EQ(orv_bitbuf_peek_long(&plain, n), expected);
            ASSERT_EQ(orv_bitbuf_read_long(&plain, n), expected) << position << " " << n;
            ASSERT_EQ(orv_bitbuf_get_abs_pos(&plain), position + n);
            ASSERT_EQ(orv_bitbuf_get_bits_left(&plain), 80 - position - n);
            std::uint64_t value = 0;
            ASSERT_EQ(orv_bitbuf_safe_read_long(&safe, n, &value), position + n <= 80 ? 0 : 1);
            if (position + n <= 80) {
                ASSERT_EQ(value, expected);
                ASSERT_EQ(orv_bitbuf_fast_read_long(&fast, n), expected);
                ASSERT_EQ(orv_bitbuf_get_abs_pos(&fast), position + n);
            }
        }
    }
}

TEST(OrvBitbuf, ReadsTouchNoByteBehindTheData) {
    // Exactly sized heap blocks: a sanitizer sees any byte touched behind them.
    for (std::size_t size = 1; size <= 9; ++size) {
        const std::vector<std::uint8_t> data(size, 0xFF);
        orv_bitbuf buf = reader_over(data.data(), static_cast<std::int64_t>(size) * 8);
        for (std::size_t i = 0; i < size; ++i) {
            EXPECT_EQ(orv_bitbuf_fast_read(&buf, 8), 0xFFU);
        }
        EXPECT_EQ(orv_bitbuf_read_long(&buf, 64), 0U);
        ASSERT_EQ(orv_bitbuf_set_abs_pos(&buf, 1), 0);
        EXPECT_EQ(orv_bitbuf_get_bits_left(&buf), static_cast<std::int64_t>(size) * 8 - 1);
        EXPECT_NE(orv_bitbuf_read_long(&buf, 64), 0U);
    }
}

}  // namespace
}  // namespace mediasplit
