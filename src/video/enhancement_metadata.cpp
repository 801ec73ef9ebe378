#include "src/video/enhancement_metadata.h"

#include "src/video/bit_cursor.h"
#include "src/video/nal_unit.h"

namespace mediasplit {
namespace {

constexpr std::uint8_t kRpuTypeWithHeader = 2;

}  // namespace

Status parse_rpu_data_header(RpuNal* rpu, ByteSpan data, std::uint32_t& position,
                             [[maybe_unused]] Loglist* loglist) {
    if (rpu == nullptr || data.data() == nullptr) {
        return Status::kFailed;
    }
    BitCursor bits(data, position);
    const std::uint8_t type = bits.u8(6);
    const std::uint16_t format = bits.u16(11);
    if (type != kRpuTypeWithHeader) {
        return Status::kOk;
    }
    bits.skip(4 + 4);
    if (bits.flag() == 0) {
        return Status::kOk;
    }
    const bool has_second_value = bits.flag() != 0;
    const bool has_values = bits.u8(2) == 0;
    if (has_values) {
        bits.ue();
        if (has_second_value) {
            bits.ue();
        }
    }
    bits.skip(2 + 1);
    if ((format & 0x700U) != 0) {
        return Status::kOk;
    }
    bits.ue();
    rpu->rpu_raw_value = bits.ue();
    rpu->rpu_high_bits = static_cast<std::uint8_t>(rpu->rpu_raw_value >> 13);
    bits.ue();
    const bool first_flag = bits.flag() != 0;
    const bool second_flag = bits.flag() != 0;
    if (first_flag && second_flag && has_values) {
        bits.ue();
    }
    rpu->rpu_compression = bits.u8(3);
    bits.skip(1);
    if (bits.flag() == 0 && has_values && has_second_value) {
        bits.ue();
    }
    return Status::kOk;
}

Status parse_rpu_nal(RpuNal* rpu, Loglist* loglist) {
    if (rpu == nullptr || rpu->data == nullptr || rpu->size == 0) {
        return Status::kFailed;
    }
    const UnescapedNal unit(NalBuffer{rpu->data, rpu->size});
    std::uint32_t position = 0;
    BitCursor bits(unit.bytes(), position);
    bits.skip(1 + 6 + 6 + 3 + 8);
    rpu->size = static_cast<std::uint32_t>(unit.bytes().size());
    return parse_rpu_data_header(rpu, unit.bytes(), position, loglist);
}

}  // namespace mediasplit
