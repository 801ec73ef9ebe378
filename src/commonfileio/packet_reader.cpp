#include "src/commonfileio/packet_reader.h"

namespace mediasplit {

int ioReadPacket(TransportPacket& packet, InputFile& input, std::uint64_t& packet_count) {
    // Nearly all packets lie in the buffer as a whole.
    if (const auto view = read_view(kTransportPacketSize, input); !view.empty()) {
        packet.bytes = view.first<kTransportPacketSize>();
    } else {
        packet.bytes = packet.storage;
        if (ReadBytes(packet.storage.data(), kTransportPacketSize, input) < kTransportPacketSize) {
            return 2;
        }
    }
    ++packet_count;
    return 0;
}

}  // namespace mediasplit
