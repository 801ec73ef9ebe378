// Reading MPEG-2 transport packets from a byte source.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "src/commonfileio/input_file.h"

namespace mediasplit {

inline constexpr std::uint64_t kTransportPacketSize = 188;

// A packet, which is seen in place where the input's buffer holds it whole.
struct TransportPacket {
    TransportPacket() = default;
    TransportPacket(const TransportPacket&) = delete;
    TransportPacket& operator=(const TransportPacket&) = delete;

    std::array<std::uint8_t, kTransportPacketSize> storage{};  // bytes that aren't seen in place
    std::span<const std::uint8_t, kTransportPacketSize> bytes = storage;
};

// Reads the next 188 bytes and counts them in `packet_count`: 0, or 2 if fewer are left (ISO/IEC
// 13818-1 2.4.3). The bytes hold until the next call for this input.
int ioReadPacket(TransportPacket& packet, InputFile& input, std::uint64_t& packet_count);

}  // namespace mediasplit
