#include "ac4/syntax/field_reader.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace mediasplit {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct Source {
    explicit Source(Bytes data) : bytes(std::move(data)) {
        orv_bitbuf_init(&buf, bytes.data(), static_cast<std::int64_t>(bytes.size()) * 8);
        in.bits = &buf;
    }
    Bytes bytes;
    orv_bitbuf buf;
    FieldReader in;
};

TEST(FieldReader, FirstFailureSticks) {
    Source s({0xFF});
    EXPECT_EQ(read_field(s.in, 6), 0x3FU);
    EXPECT_EQ(read_field(s.in, 3), 0U);
    EXPECT_EQ(s.in.error, FieldError::kRanOut);
    EXPECT_EQ(read_field(s.in, 1), 0U) << "a bit is left, but the reader has failed";
    EXPECT_EQ(field_position(s.in), 6);
}

TEST(FieldReader, VariableBitsFollowsTheStandard) {
    struct Case {
        Bytes data;
        std::uint32_t value;
        int used;
    };
    // 000; 010; 110; 001 000; 111 110
    const std::vector<Case> cases = {
        {{0x00}, 0, 3}, {{0x40}, 1, 3}, {{0xC0}, 3, 3}, {{0x20}, 4, 6}, {{0xF8}, 19, 6}};
    for (const Case& c : cases) {
        Source s(c.data);
        int used = -1;
        EXPECT_EQ(read_variable_bits(s.in, 2, &used), c.value);
        EXPECT_EQ(used, c.used);
    }
}

TEST(FieldReader, VariableBitsBeyondThirtyTwoBitsIsRefused) {
    Source endless(Bytes(64, 0xFF));
    int used = -1;
    EXPECT_EQ(read_variable_bits(endless.in, 2, &used), 0U);
    EXPECT_EQ(used, 0);
    EXPECT_EQ(endless.in.error, FieldError::kTooLong);
    EXPECT_EQ(field_position(endless.in), 30);

    Source four_groups({0x01, 0x01, 0x01, 0x02});  // four groups of 7 bits are exactly 32
    EXPECT_EQ(read_variable_bits(four_groups.in, 7, &used),
              (((((0U + 1) << 7) + 1) << 7) + 1) * 128 + 1);
    EXPECT_EQ(used, 32);
    Source five_groups({0x01, 0x01, 0x01, 0x03, 0x00});
    EXPECT_EQ(read_variable_bits(five_groups.in, 7), 0U);
    EXPECT_EQ(five_groups.in.error, FieldError::kTooLong);
}

TEST(FieldReader, VariableBitsThatRunOutFailAsSuch) {
    Source s({0xFF});
    int used = -1;
    EXPECT_EQ(read_variable_bits(s.in, 2, &used), 0U);
    EXPECT_EQ(used, 0);
    EXPECT_EQ(s.in.error, FieldError::kRanOut);
}

TEST(FieldReader, ExtendedFieldAddsToItsEscapeValue) {
    Source plain({0x40});  // 01
    EXPECT_EQ(read_extended(plain.in, 2, 3, 2), 1U);
    EXPECT_EQ(field_position(plain.in), 2);
    Source escaped({0xD0});  // 11 010
    EXPECT_EQ(read_extended(escaped.in, 2, 3, 2), 4U);
    EXPECT_EQ(field_position(escaped.in), 5);
}

TEST(FieldReader, SkipAndAlignFailAtTheEnd) {
    Source s({0, 0});
    skip_field(s.in, 3);
    align_field(s.in);
    EXPECT_EQ(field_position(s.in), 8);
    skip_field(s.in, 9);
    EXPECT_EQ(s.in.error, FieldError::kRanOut);
    EXPECT_EQ(field_position(s.in), 8);
}

TEST(FieldReader, HookSeesEveryFieldAndMayStop) {
    struct Seen {
        std::vector<std::pair<std::uint64_t, int>> fields;
        static int note(void* user, std::uint64_t value, int bits) {
            auto* seen = static_cast<Seen*>(user);
            seen->fields.emplace_back(value, bits);
            return seen->fields.size() == 3 ? 1 : 0;
        }
    };
    Seen seen;
    HashRecord hook{&Seen::note, &seen, 0};
    Source s({0xA5, 0xFF});
    s.in.hash = &hook;
    EXPECT_EQ(read_field(s.in, 4), 0xAU);
    EXPECT_EQ(read_field(s.in, 4), 0x5U);
    EXPECT_EQ(hook.error, 0);
    EXPECT_EQ(read_field(s.in, 2), 0U);
    EXPECT_EQ(s.in.error, FieldError::kHook);
    EXPECT_EQ(hook.error, 1);
    EXPECT_EQ(seen.fields, (std::vector<std::pair<std::uint64_t, int>>{{0xA, 4}, {5, 4}, {3, 2}}));
}

}  // namespace
}  // namespace mediasplit
