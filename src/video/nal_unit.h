// NAL units of H.264 and H.265: the view of one unit, its header, and the removal of emulation
// prevention bytes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "src/log/status.h"
#include "src/util/bit_reader.h"

namespace mediasplit {

/// Bytes of a unit, after removal of emulation prevention, that the parsers look at; a longer unit
/// is cut there.
inline constexpr std::size_t kNalWorkAreaSize = 512;

/// A view of one NAL unit that starts at its first header byte. The bytes belong to the caller.
struct NalBuffer {
    const std::uint8_t* data = nullptr;
    std::uint32_t size = 0;  ///< bytes
};

/// nal_unit() header of ITU-T H.264 7.3.1.
struct AvcNalHeader {
    std::uint8_t forbidden_zero_bit = 0;
    std::uint8_t nal_ref_idc = 0;
    std::uint8_t nal_unit_type = 0;
};

/// nal_unit_header() of ITU-T H.265 7.3.1.2.
struct HevcNalHeader {
    std::uint8_t forbidden_zero_bit = 0;
    std::uint8_t nal_unit_type = 0;
    std::uint8_t nuh_layer_id = 0;
    std::uint8_t nuh_temporal_id_plus1 = 0;
};

/// Copies `input` to `out` without the 0x03 of each 00 00 03 (ITU-T H.264 7.4.1, H.265 7.4.2) and
/// returns the number of bytes written; what doesn't fit into `out` is cut off.
std::uint32_t nal_remove_0x03(std::span<std::uint8_t> out, ByteSpan input);

/// A unit without its emulation prevention bytes, cut at the size of the work area.
class UnescapedNal {
public:
    explicit UnescapedNal(const NalBuffer& nal)
        : size_(nal_remove_0x03(area_, ByteSpan(nal.data, nal.size))) {}

    [[nodiscard]] ByteSpan bytes() const { return ByteSpan(area_).first(size_); }

private:
    std::array<std::uint8_t, kNalWorkAreaSize> area_{};
    std::uint32_t size_ = 0;
};

/// Reads the one byte header of an H.264 unit at bit `position`. Fails on null arguments.
Status parse_avc_nal_header(AvcNalHeader* header, ByteSpan data, std::uint32_t& position);

/// Reads the two byte header of an H.265 unit at bit `position`. Fails on null arguments.
Status parse_hevc_nal_header(HevcNalHeader* header, ByteSpan data, std::uint32_t& position);

}  // namespace mediasplit
