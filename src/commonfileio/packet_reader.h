// Reading MPEG-2 transport packets from a byte source.
#pragma once

#include <cstdint>
#include <span>

#include "src/commonfileio/input_file.h"

namespace mediasplit {

inline constexpr std::uint64_t kTransportPacketSize = 188;

// Reads the next 188 bytes and counts them in `packet_count`: 0, or 2 if fewer are left (ISO/IEC
// 13818-1 2.4.3).
int ioReadPacket(std::span<std::uint8_t, kTransportPacketSize> packet, InputFile& input,
                 std::uint64_t& packet_count);

}  // namespace mediasplit
