#include "src/commonfileio/packet_reader.h"

namespace mediasplit {

int ioReadPacket(std::span<std::uint8_t, kTransportPacketSize> packet, InputFile& input,
                 std::uint64_t& packet_count) {
    if (ReadBytes(packet.data(), packet.size(), input) < packet.size()) {
        return 2;
    }
    ++packet_count;
    return 0;
}

}  // namespace mediasplit
