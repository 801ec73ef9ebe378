#include "src/commonfileio/packet_reader.h"

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace mediasplit {
namespace {

TEST(PacketReader, CountsWholePacketsAndRefusesAShortOne) {
    const TempFolder folder;
    std::string bytes(2 * 188 + 187, 'x');
    bytes[188] = 'y';
    const std::string path = folder.write("a.ts", bytes);
    InputFile file;
    ASSERT_EQ(OpenFileEx(path, nullptr, 0, file), Status::kOk);
    TransportPacket packet;
    std::uint64_t count = 7;
    EXPECT_EQ(ioReadPacket(packet, file, count), 0);
    EXPECT_EQ(ioReadPacket(packet, file, count), 0);
    EXPECT_EQ(packet.bytes[0], 'y');
    EXPECT_EQ(count, 9U);
    EXPECT_EQ(ioReadPacket(packet, file, count), 2);
    EXPECT_EQ(count, 9U);
    CloseFile(file);
}

TEST(PacketReader, PacketsInPlaceAndAcrossTheEndOfTheBufferShowTheSameBytes) {
    const TempFolder folder;
    constexpr std::uint64_t kPackets = kInputBlockSize / kTransportPacketSize + 3;
    std::string bytes;
    for (std::uint64_t i = 0; i < kPackets; ++i) {
        bytes += std::string(kTransportPacketSize, static_cast<char>(i % 251));
    }
    const std::string path = folder.write("a.ts", bytes);
    InputFile file;
    ASSERT_EQ(OpenFileEx(path, nullptr, 0, file), Status::kOk);
    TransportPacket packet;
    std::uint64_t count = 0;
    while (ioReadPacket(packet, file, count) == 0) {
        for (const std::uint8_t byte : packet.bytes) {
            ASSERT_EQ(byte, (count - 1) % 251);
        }
    }
    EXPECT_EQ(count, kPackets);
    CloseFile(file);
}

}  // namespace
}  // namespace mediasplit
