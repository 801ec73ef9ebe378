#include "src/video/nal_unit.h"

#include "src/video/bit_cursor.h"

namespace mediasplit {

std::uint32_t nal_remove_0x03(std::span<std::uint8_t> out, ByteSpan input) {
    std::size_t written = 0;
    std::size_t zeros = 0;
    for (const std::uint8_t byte : input) {
        if (zeros >= 2 && byte == 3) {
            zeros = 0;
            continue;
        }
        if (written == out.size()) {
            break;
        }
        zeros = byte == 0 ? zeros + 1 : 0;
        out[written++] = byte;
    }
    return static_cast<std::uint32_t>(written);
}

Status parse_avc_nal_header(AvcNalHeader* header, ByteSpan data, std::uint32_t& position) {
    if (header == nullptr || data.data() == nullptr) {
        return Status::kFailed;
    }
    BitCursor bits(data, position);
    header->forbidden_zero_bit = bits.flag();
    header->nal_ref_idc = bits.u8(2);
    header->nal_unit_type = bits.u8(5);
    return Status::kOk;
}

Status parse_hevc_nal_header(HevcNalHeader* header, ByteSpan data, std::uint32_t& position) {
    if (header == nullptr || data.data() == nullptr) {
        return Status::kFailed;
    }
    BitCursor bits(data, position);
    header->forbidden_zero_bit = bits.flag();
    header->nal_unit_type = bits.u8(6);
    header->nuh_layer_id = bits.u8(6);
    header->nuh_temporal_id_plus1 = bits.u8(3);
    return Status::kOk;
}

}  // namespace mediasplit
