#include "tests/support/ts_builder.h"

#include <algorithm>
#include <iterator>

namespace mediasplit {

namespace {

constexpr std::size_t kPacket = 188;
constexpr std::size_t kPayload = 184;

void append(Bytes& to, const Bytes& from) {
    std::copy(from.begin(), from.end(), std::back_inserter(to));
}

void append16(Bytes& to, unsigned value) {
    to.push_back(static_cast<std::uint8_t>(value >> 8));
    to.push_back(static_cast<std::uint8_t>(value));
}

Bytes timestamp(unsigned prefix, std::uint64_t value) {
    return {static_cast<std::uint8_t>(prefix << 4 | ((value >> 30) & 7) << 1 | 1),
            static_cast<std::uint8_t>(value >> 22),
            static_cast<std::uint8_t>(((value >> 15) & 0x7F) << 1 | 1),
            static_cast<std::uint8_t>(value >> 7),
            static_cast<std::uint8_t>((value & 0x7F) << 1 | 1)};
}

}  // namespace

TsBuilder& TsBuilder::packet(std::uint16_t pid, bool start, const Bytes& payload) {
    Bytes packet = {0x47, static_cast<std::uint8_t>((start ? 0x40 : 0) | pid >> 8),
                    static_cast<std::uint8_t>(pid)};
    const std::size_t size = std::min(payload.size(), kPayload);
    const std::size_t stuffing = kPayload - size;
    const unsigned control = stuffing == 0 ? 1 : (size == 0 ? 2 : 3);
    packet.push_back(static_cast<std::uint8_t>(control << 4 | (counter_++ & 0x0F)));
    if (stuffing > 0) {
        packet.push_back(static_cast<std::uint8_t>(stuffing - 1));
        if (stuffing > 1) {
            packet.push_back(0);
            packet.resize(packet.size() + stuffing - 2, 0xFF);
        }
    }
    packet.insert(packet.end(), payload.begin(),
                  payload.begin() + static_cast<std::ptrdiff_t>(size));
    append(bytes_, packet);
    return *this;
}

TsBuilder& TsBuilder::raw(Bytes bytes, std::uint8_t fill) {
    bytes.resize(kPacket, fill);
    append(bytes_, bytes);
    return *this;
}

TsBuilder& TsBuilder::section(std::uint16_t pid, const Bytes& from_table_id) {
    Bytes payload = {0};
    append(payload, from_table_id);
    for (std::size_t at = 0; at < payload.size(); at += kPayload) {
        Bytes part(
            payload.begin() + static_cast<std::ptrdiff_t>(at),
            payload.begin() + static_cast<std::ptrdiff_t>(std::min(at + kPayload, payload.size())));
        part.resize(kPayload, 0xFF);
        packet(pid, at == 0, part);
    }
    return *this;
}

TsBuilder& TsBuilder::pat(const std::vector<Program>& programs) {
    Bytes section = {0x00};
    append16(section, 0xB000 | static_cast<unsigned>(9 + 4 * programs.size()));
    append(section, {0x00, 0x01, 0xC1, 0x00, 0x00});
    for (const auto& program : programs) {
        append16(section, program.number);
        append16(section, 0xE000U | program.pid);
    }
    append(section, {0, 0, 0, 0});
    return this->section(0, section);
}

TsBuilder& TsBuilder::pmt(std::uint16_t pid, std::uint16_t program,
                          const std::vector<TsStreamDescription>& streams,
                          const Bytes& program_descriptors) {
    Bytes body;
    append16(body, program);
    append(body, {0xC1, 0x00, 0x00, 0xE1, 0xFF});
    append16(body, 0xF000U | static_cast<unsigned>(program_descriptors.size()));
    append(body, program_descriptors);
    for (const auto& stream : streams) {
        body.push_back(stream.type);
        append16(body, 0xE000U | stream.pid);
        append16(body, 0xF000U | static_cast<unsigned>(stream.descriptors.size()));
        append(body, stream.descriptors);
    }
    append(body, {0, 0, 0, 0});
    Bytes section = {0x02};
    append16(section, 0xB000U | static_cast<unsigned>(body.size()));
    append(section, body);
    return this->section(pid, section);
}

Bytes pes_bytes(const PesDescription& description) {
    Bytes header;
    if (description.pts) {
        append(header, timestamp(description.dts ? 3 : 2, *description.pts));
    }
    if (description.dts) {
        append(header, timestamp(1, *description.dts));
    }
    Bytes pes = {0, 0, 1, description.stream_id};
    append16(pes, description.bounded
                      ? static_cast<unsigned>(3 + header.size() + description.payload.size())
                      : 0U);
    const unsigned flags = description.pts ? (description.dts ? 0xC0U : 0x80U) : 0U;
    append(pes, {0x80, static_cast<std::uint8_t>(flags), static_cast<std::uint8_t>(header.size())});
    append(pes, header);
    append(pes, description.payload);
    return pes;
}

TsBuilder& TsBuilder::pes(std::uint16_t pid, const PesDescription& description) {
    const Bytes pes = pes_bytes(description);
    for (std::size_t at = 0; at < pes.size(); at += kPayload) {
        packet(
            pid, at == 0,
            Bytes(pes.begin() + static_cast<std::ptrdiff_t>(at),
                  pes.begin() + static_cast<std::ptrdiff_t>(std::min(at + kPayload, pes.size()))));
    }
    return *this;
}

TsBuilder one_program(const std::vector<TsStreamDescription>& streams) {
    TsBuilder builder;
    builder.pat({{1, 0x100}}).pmt(0x100, 1, streams);
    return builder;
}

Bytes adts_stream(std::string_view payload) {
    PesDescription pes;
    pes.stream_id = 0xC0;
    pes.pts = 90000;
    pes.payload.assign(payload.begin(), payload.end());
    return one_program({{0x0F, 257}}).pes(257, pes).bytes();
}

Bytes descriptor(std::uint8_t tag, const Bytes& body) {
    Bytes result = {tag, static_cast<std::uint8_t>(body.size())};
    append(result, body);
    return result;
}

Bytes pattern(std::size_t count, std::uint8_t seed) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<std::uint8_t>(seed + i * 7 + (i >> 8));
    }
    return bytes;
}

}  // namespace mediasplit
