#include "src/video/enhancement_metadata.h"

#include <gtest/gtest.h>

#include "tests/support/nal_builder.h"

namespace mediasplit {
namespace {

using testing::BitWriter;

// The prefix, type 2, the format and the flag that says that the header goes on.
BitWriter rpu_start(std::uint32_t format) {
    BitWriter out;
    out.u(0x7C0119, 24).u(2, 6).u(format, 11).u(0, 8).flag(true);
    return out;
}

RpuNal parse(const std::vector<std::uint8_t>& unit) {
    RpuNal rpu;
    rpu.data = unit.data();
    rpu.size = static_cast<std::uint32_t>(unit.size());
    EXPECT_EQ(parse_rpu_nal(&rpu, nullptr), Status::kOk);
    return rpu;
}

RpuNal parse(const BitWriter& out) {
    return parse(testing::escape_nal(out.bytes()));
}

constexpr std::uint32_t kRaw = (5U << 13) | 77U;

TEST(RpuNal, NullAndEmptyUnitsFail) {
    EXPECT_EQ(parse_rpu_nal(nullptr, nullptr), Status::kFailed);
    RpuNal rpu;
    EXPECT_EQ(parse_rpu_nal(&rpu, nullptr), Status::kFailed);
    const std::uint8_t byte = 0;
    rpu.data = &byte;
    EXPECT_EQ(parse_rpu_nal(&rpu, nullptr), Status::kFailed);
    std::uint32_t position = 0;
    EXPECT_EQ(parse_rpu_data_header(nullptr, ByteSpan(&byte, 1), position, nullptr),
              Status::kFailed);
    EXPECT_EQ(parse_rpu_data_header(&rpu, {}, position, nullptr), Status::kFailed);
}

TEST(RpuNal, OtherTypesStopAtOnce) {
    BitWriter out;
    out.u(0x7C0119, 24).u(3, 6).u(0, 11).u(0, 8).flag(true).flag(false).u(1, 2).u(0, 3);
    out.ue(1).ue(kRaw).ue(1).flag(false).flag(false).u(7, 3);
    EXPECT_EQ(parse(out).rpu_raw_value, 0U);
    EXPECT_EQ(parse(out).rpu_compression, 0);
}

TEST(RpuNal, ClearFlagStops) {
    BitWriter out;
    out.u(0x7C0119, 24).u(2, 6).u(0, 11).u(0, 8).flag(false).flag(false).u(1, 2).u(0, 3);
    out.ue(1).ue(kRaw).ue(1).flag(false).flag(false).u(7, 3);
    EXPECT_EQ(parse(out).rpu_raw_value, 0U);
}

TEST(RpuNal, HeaderWithoutValues) {
    BitWriter out = rpu_start(0x0FF);
    out.flag(true).u(1, 2).u(0, 3);
    out.ue(9).ue(kRaw).ue(8).flag(true).flag(true).u(5, 3).trailing();
    const RpuNal rpu = parse(out);
    EXPECT_EQ(rpu.rpu_raw_value, kRaw);
    EXPECT_EQ(rpu.rpu_high_bits, 5);
    EXPECT_EQ(rpu.rpu_compression, 5);
}

TEST(RpuNal, HeaderWithOneValue) {
    BitWriter out = rpu_start(0);
    out.flag(false).u(0, 2).ue(23).u(0, 3);
    out.ue(9).ue(kRaw).ue(8).flag(true).flag(true).ue(4).u(3, 3).trailing();
    const RpuNal rpu = parse(out);
    EXPECT_EQ(rpu.rpu_raw_value, kRaw);
    EXPECT_EQ(rpu.rpu_compression, 3);
}

TEST(RpuNal, HeaderWithTwoValues) {
    BitWriter out = rpu_start(0);
    out.flag(true).u(0, 2).ue(23).ue(24).u(0, 3);
    out.ue(9).ue(kRaw).ue(8).flag(true).flag(false).u(6, 3).trailing();
    const RpuNal rpu = parse(out);
    EXPECT_EQ(rpu.rpu_raw_value, kRaw);
    EXPECT_EQ(rpu.rpu_compression, 6);
}

TEST(RpuNal, HeaderEndsBehindItsLastFlag) {
    for (const bool last_flag : {false, true}) {
        BitWriter out;
        out.u(2, 6).u(0, 11).u(0, 8).flag(true).flag(true).u(0, 2).ue(1).ue(2).u(0, 3);
        out.ue(9).ue(10).ue(8).flag(false).flag(true).u(1, 3).flag(false).flag(last_flag);
        if (!last_flag) {
            out.ue(31);
        }
        const std::size_t end = out.bit_count();
        out.u(0xFFFF, 16);
        RpuNal rpu;
        std::uint32_t position = 0;
        EXPECT_EQ(parse_rpu_data_header(&rpu, out.bytes(), position, nullptr), Status::kOk);
        EXPECT_EQ(position, end);
    }
}

TEST(RpuNal, FormatsWithHighBitsStopBeforeTheRawValue) {
    for (const std::uint32_t format : {0x100U, 0x200U, 0x400U, 0x7FFU}) {
        BitWriter out = rpu_start(format);
        out.flag(false).u(1, 2).u(0, 3).ue(9).ue(kRaw).ue(8).flag(false).flag(false).u(7, 3);
        EXPECT_EQ(parse(out).rpu_raw_value, 0U) << format;
        EXPECT_EQ(parse(out).rpu_compression, 0) << format;
    }
}

TEST(RpuNal, SizeIsThatWithoutEmulationPrevention) {
    const RpuNal rpu = parse(std::vector<std::uint8_t>{0x7C, 1, 0x19, 0, 0, 3, 1, 0, 0, 3, 0, 9});
    EXPECT_EQ(rpu.size, 10U);
}

TEST(RpuNal, LongUnitsAreCutAt512Bytes) {
    BitWriter out = rpu_start(0);
    out.flag(false).u(1, 2).u(0, 3).ue(9).ue(kRaw).ue(8).flag(false).flag(false).u(5, 3);
    std::vector<std::uint8_t> unit = testing::escape_nal(out.bytes());
    unit.resize(5000, 0xAA);
    const RpuNal rpu = parse(unit);
    EXPECT_EQ(rpu.size, 512U);
    EXPECT_EQ(rpu.rpu_compression, 5);
}

TEST(RpuNal, CutUnitsReadAsZeros) {
    BitWriter out = rpu_start(0);
    out.flag(true).u(0, 2).ue(1).ue(2).u(0, 3).ue(9).ue(kRaw).ue(8).flag(true).flag(true).ue(1);
    out.u(5, 3).trailing();
    const std::vector<std::uint8_t> unit = out.bytes();
    for (std::size_t size = 1; size < unit.size() - 1; ++size) {
        const std::vector<std::uint8_t> cut(unit.begin(),
                                            unit.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(parse(cut).size, size);
    }
}

}  // namespace
}  // namespace mediasplit
