// Changes transport streams packet by packet: packets are changed inside, dropped, repeated or
// moved, and all others stay where a packet begins.
#include "tests/fuzz/mutation.h"

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed);

namespace {

using mediasplit::Bytes;
using mediasplit::Dice;

constexpr std::size_t kPacket = 188;
constexpr std::size_t kOptions = 1;  // ahead of the first packet

using Packets = std::vector<Bytes>;

Packets take_apart(const std::uint8_t* data, std::size_t size) {
    Packets packets;
    for (; size > 0; data += packets.back().size(), size -= packets.back().size()) {
        packets.emplace_back(data, data + std::min(size, kPacket));
    }
    return packets;
}

// Changes `count` bytes at `at` and keeps the size.
void mutate_inside(Bytes& packet, std::size_t at, std::size_t count) {
    at = std::min(at, packet.size());
    count = std::min(count, packet.size() - at);
    Bytes part(packet.begin() + static_cast<std::ptrdiff_t>(at),
               packet.begin() + static_cast<std::ptrdiff_t>(at + count));
    mediasplit::mutate_plainly(part, count);
    part.resize(count);
    std::copy(part.begin(), part.end(), packet.begin() + static_cast<std::ptrdiff_t>(at));
}

void change(Packets& packets, Dice& dice) {
    const std::size_t index = dice.below(packets.size());
    const auto at = packets.begin() + static_cast<std::ptrdiff_t>(index);
    switch (dice.below(10)) {
        case 0:
            packets.erase(at);
            break;
        case 1:
            packets.insert(at, Bytes(*at));
            break;
        case 2:
            std::swap(*at, packets[dice.below(packets.size())]);
            break;
        case 3:
            mutate_inside(*at, 1, 3);  // identifier and flags
            break;
        case 4:
        case 5:
            mutate_inside(*at, 4, 32);  // heads of sections and PES packets
            break;
        case 6:
            // Tables stand in the first packets.
            mutate_inside(packets[dice.below(std::min<std::size_t>(packets.size(), 4))], 4,
                          kPacket);
            break;
        default:
            mutate_inside(*at, 1 + dice.below(kPacket - 1), 1 + dice.below(16));
            break;
    }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
    Dice dice(seed);
    if (size < kOptions + kPacket || dice.one_in(10)) {
        return LLVMFuzzerMutate(data, size, most);
    }
    Packets packets = take_apart(data + kOptions, size - kOptions);
    for (std::size_t turns = 1 + dice.below(4); turns > 0 && !packets.empty(); --turns) {
        change(packets, dice);
    }
    Bytes result(data, data + kOptions);
    if (dice.one_in(20)) {
        result[0] = static_cast<std::uint8_t>(dice.below(16));
    }
    for (const Bytes& packet : packets) {
        result.insert(result.end(), packet.begin(), packet.end());
    }
    return mediasplit::hand_over(result, data, most);
}
