#include "src/commonfileio/packet_reader.h"

#include <cstring>

namespace mediasplit {

int ioReadPacket(std::span<std::uint8_t, kTransportPacketSize> packet, InputFile& input,
                 std::uint64_t& packet_count) {
    // Nearly all packets lie in the buffer as a whole.
    const std::span<const std::uint8_t> view = read_view(kTransportPacketSize, input);
    if (!view.empty()) {
        std::memcpy(packet.data(), view.data(), kTransportPacketSize);
        ++packet_count;
        return 0;
    }
    if (ReadBytes(packet.data(), packet.size(), input) < packet.size()) {
        return 2;
    }
    ++packet_count;
    return 0;
}

}  // namespace mediasplit
