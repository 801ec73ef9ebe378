// The first bytes are a little program of reads and writes, the rest is the buffer.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "src/util/bit_reader.h"

namespace {

using mediasplit::ByteSpan;

constexpr std::size_t kSteps = 32;

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

// One step; `count` is also used as a jump.
void run_step(std::uint8_t operation, std::uint32_t count, std::uint32_t& position, ByteSpan buffer,
              std::vector<std::uint8_t>& target) {
    const std::uint32_t before = position;
    std::uint32_t out = 0;
    switch (operation % 8) {
        case 0:
            (void)mediasplit::read_uint8(position, buffer, count);
            break;
        case 1:
            (void)mediasplit::read_uint32(position, buffer, count);
            break;
        case 2:
            (void)mediasplit::read_uint64(position, buffer, count * 0x1000001U);
            break;
        case 3:
            (void)mediasplit::read_ue_s(position, buffer);
            require(position >= before);
            break;
        case 4:
            (void)mediasplit::read_se_s(position, buffer);
            break;
        case 5:
            // Only where it fits: a refusal prints a line.
            if (std::uint64_t{before} + count <= std::uint64_t{buffer.size()} * 8) {
                require(mediasplit::read_uint32_s(position, buffer, count, &out) ==
                        mediasplit::Status::kOk);
                std::uint32_t again = before;
                require(mediasplit::read_uint32(again, buffer, count) == out);
            }
            break;
        case 6:
            require(mediasplit::write_bits(before, target, count, out) == before + count);
            break;
        default:
            position = count << (operation >> 3);
            break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::size_t program = size < 2 * kSteps ? size / 2 * 2 : 2 * kSteps;
    const ByteSpan buffer(data + program, size - program);
    std::vector<std::uint8_t> target(buffer.begin(), buffer.end());
    std::uint32_t position = 0;
    for (std::size_t i = 0; i < program; i += 2) {
        run_step(data[i], data[i + 1], position, buffer, target);
    }
    return 0;
}
