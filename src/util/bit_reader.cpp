#include "src/util/bit_reader.h"

#include <algorithm>

#include "src/log/logging.h"

namespace mediasplit {
namespace {

constexpr const char* kSourceName = "../../../../mediacheck2/src/util";
constexpr int kRead8Line = 301;
constexpr int kRead16Line = 325;
constexpr int kRead32Line = 349;

constexpr std::uint32_t kWidest = 64;

std::uint64_t size_in_bits(ByteSpan buffer) {
    return std::uint64_t{buffer.size()} * 8;
}

// Up to 64 bits from `position` on, zeros behind the end.
std::uint64_t bits_at(std::uint64_t position, ByteSpan buffer, std::uint32_t count) {
    std::uint64_t value = 0;
    while (count > 0) {
        const std::uint64_t at = position / 8;
        const auto inside = static_cast<std::uint32_t>(position % 8);
        const std::uint32_t step = std::min(count, 8 - inside);
        const std::uint32_t byte = at < buffer.size() ? buffer[at] : 0U;
        value = value << step | (byte >> (8 - inside - step) & ((1U << step) - 1));
        position += step;
        count -= step;
    }
    return value;
}

std::uint64_t read_bits(std::uint32_t& position, ByteSpan buffer, std::uint32_t count) {
    // Of a longer field only the last 64 bits can reach the result.
    const std::uint32_t passed = count > kWidest ? count - kWidest : 0;
    const std::uint64_t value = bits_at(std::uint64_t{position} + passed, buffer, count - passed);
    position += count;
    return value;
}

template <typename Value>
Status read_checked(std::uint32_t& position, ByteSpan buffer, std::uint32_t count, Value* out,
                    int line) {
    if (std::uint64_t{position} + count > size_in_bits(buffer)) {
        return Logging_err_type_check(nullptr, 3004, LogContext{}, kSourceName, line);
    }
    const auto value = static_cast<Value>(read_bits(position, buffer, count));
    if (out != nullptr) {
        *out = value;
    }
    return Status::kOk;
}

// Counts the zero bits from `position` on and moves behind the 1 bit that ends them. False, at the
// end of the data, if there is none.
bool pass_prefix(std::uint64_t& position, ByteSpan buffer, std::uint64_t& zeros) {
    const std::uint64_t end = size_in_bits(buffer);
    const std::uint64_t start = position;
    while (position < end) {
        if (position % 8 == 0 && buffer[position / 8] == 0) {
            position += 8;
            continue;
        }
        if (bits_at(position++, buffer, 1) != 0) {
            zeros = position - 1 - start;
            return true;
        }
    }
    return false;
}

}  // namespace

std::uint8_t read_uint8(std::uint32_t& position, ByteSpan buffer, std::uint32_t count) {
    return static_cast<std::uint8_t>(read_bits(position, buffer, count));
}

std::uint16_t read_uint16(std::uint32_t& position, ByteSpan buffer, std::uint32_t count) {
    return static_cast<std::uint16_t>(read_bits(position, buffer, count));
}

std::uint32_t read_uint32(std::uint32_t& position, ByteSpan buffer, std::uint32_t count) {
    return static_cast<std::uint32_t>(read_bits(position, buffer, count));
}

std::uint64_t read_uint64(std::uint32_t& position, ByteSpan buffer, std::uint32_t count) {
    return read_bits(position, buffer, count);
}

Status read_uint8_s(std::uint32_t& position, ByteSpan buffer, std::uint32_t count,
                    std::uint8_t* out) {
    return read_checked(position, buffer, count, out, kRead8Line);
}

Status read_uint16_s(std::uint32_t& position, ByteSpan buffer, std::uint32_t count,
                     std::uint16_t* out) {
    return read_checked(position, buffer, count, out, kRead16Line);
}

Status read_uint32_s(std::uint32_t& position, ByteSpan buffer, std::uint32_t count,
                     std::uint32_t* out) {
    return read_checked(position, buffer, count, out, kRead32Line);
}

std::uint32_t read_ue_s(std::uint32_t& position, ByteSpan buffer) {
    std::uint64_t at = position;
    std::uint64_t zeros = 0;
    const bool stopped = pass_prefix(at, buffer, zeros);
    position = static_cast<std::uint32_t>(at);
    if (!stopped || at + zeros > size_in_bits(buffer)) {
        return 0;
    }
    const auto suffix =
        static_cast<std::uint32_t>(read_bits(position, buffer, static_cast<std::uint32_t>(zeros)));
    return suffix + (1U << (zeros % 32)) - 1;
}

std::int32_t read_se_s(std::uint32_t& position, ByteSpan buffer) {
    const std::int64_t code = read_ue_s(position, buffer);
    return static_cast<std::int32_t>(code % 2 == 0 ? -(code / 2) : (code + 1) / 2);
}

std::uint32_t reverse_bits(std::uint32_t value) {
    std::uint32_t result = 0;
    for (int i = 0; i < 32; ++i) {
        result = result << 1 | (value >> i & 1);
    }
    return result;
}

std::uint32_t write_bits(std::uint32_t position, std::span<std::uint8_t> buffer,
                         std::uint32_t count, std::uint32_t value) {
    const std::uint32_t low = value & 0xFFFF;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint64_t at = std::uint64_t{position} + i;
        if (at / 8 >= buffer.size()) {
            break;
        }
        const std::uint32_t left = count - 1 - i;
        const auto mask = static_cast<std::uint8_t>(0x80U >> (at % 8));
        std::uint8_t& byte = buffer[at / 8];
        const bool set = left < 16 && (low >> left & 1) != 0;
        byte = static_cast<std::uint8_t>(set ? byte | mask : byte & ~mask);
    }
    return position + count;
}

}  // namespace mediasplit
