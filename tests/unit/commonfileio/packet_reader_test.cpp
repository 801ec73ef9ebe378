#include "src/commonfileio/packet_reader.h"

#include <gtest/gtest.h>

#include <array>

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
    std::array<std::uint8_t, kTransportPacketSize> packet{};
    std::uint64_t count = 7;
    EXPECT_EQ(ioReadPacket(packet, file, count), 0);
    EXPECT_EQ(ioReadPacket(packet, file, count), 0);
    EXPECT_EQ(packet[0], 'y');
    EXPECT_EQ(count, 9U);
    EXPECT_EQ(ioReadPacket(packet, file, count), 2);
    EXPECT_EQ(count, 9U);
    CloseFile(file);
}

}  // namespace
}  // namespace mediasplit
