// Writes transport streams packet by packet from descriptions.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mediasplit {

using Bytes = std::vector<std::uint8_t>;

struct TsStreamDescription {
    std::uint8_t type = 0;
    std::uint16_t pid = 0;
    Bytes descriptors{};  // whole descriptors, one after another
};

struct PesDescription {
    std::uint8_t stream_id = 0xE0;
    std::optional<std::uint64_t> pts{};
    std::optional<std::uint64_t> dts{};
    Bytes payload{};
    bool bounded = true;  // false: PES_packet_length 0
};

class TsBuilder {
public:
    // One packet: header, an adaptation field that fills what `payload` leaves free, the payload
    // (at most 184 bytes).
    TsBuilder& packet(std::uint16_t pid, bool start, const Bytes& payload);
    // One packet as it stands, filled up with `fill` or cut to 188 bytes.
    TsBuilder& raw(Bytes bytes, std::uint8_t fill = 0xFF);
    // A section with a right length and a CRC of zeros (nobody checks it), in as few packets as it
    // takes.
    TsBuilder& section(std::uint16_t pid, const Bytes& from_table_id);
    struct Program {
        std::uint16_t number;
        std::uint16_t pid;
    };
    TsBuilder& pat(const std::vector<Program>& programs);
    TsBuilder& pmt(std::uint16_t pid, std::uint16_t program,
                   const std::vector<TsStreamDescription>& streams,
                   const Bytes& program_descriptors = {});
    TsBuilder& pes(std::uint16_t pid, const PesDescription& description);

    [[nodiscard]] const Bytes& bytes() const { return bytes_; }
    Bytes& bytes() { return bytes_; }

private:
    Bytes bytes_;
    std::uint8_t counter_ = 0;
};

// PAT with program 1 at PID 0x100 and its PMT with `streams`.
TsBuilder one_program(const std::vector<TsStreamDescription>& streams);

// A transport stream with `payload` as its one ADTS stream, of PID 257, in one PES packet.
Bytes adts_stream(std::string_view payload);

// A PES packet header and payload as bytes.
Bytes pes_bytes(const PesDescription& description);

// A descriptor of `tag`.
Bytes descriptor(std::uint8_t tag, const Bytes& body);

// `count` bytes that differ from place to place and from seed to seed.
Bytes pattern(std::size_t count, std::uint8_t seed);

}  // namespace mediasplit
