#include "src/tsTableParse/pes_assembly.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "src/log/logging.h"
#include "src/tsTableParse/ec3_pes_check.h"
#include "src/tsTableParse/es_output.h"

namespace mediasplit {

namespace {

constexpr std::size_t kFullPayload = 184;
constexpr std::int64_t kPrivateStream1 = 0xBD;
constexpr std::int64_t kPtsUpperHalf = std::int64_t{1} << 32;

// Calls `use` with the stream of this PID in each program that has it: the first that its table
// names, however often it does.
template <typename Use>
void for_each_stream_of(std::int64_t pid, const TsTables& tables, Use use) {
    for (std::size_t i = 0; i < tables.program_count; ++i) {
        const auto& streams = tables.programs[i].streams;
        const auto found = std::find_if(
            streams.begin(), streams.end(),
            [pid](const TsElementaryStream& stream) { return stream.elementary_pid == pid; });
        if (found != streams.end()) {
            use(*found);
        }
    }
}

const TsDescriptor* find_descriptor(const TsElementaryStream& stream, std::int64_t tag) {
    const auto found =
        std::find_if(stream.descriptors.begin(), stream.descriptors.end(),
                     [tag](const TsDescriptor& descriptor) { return descriptor.tag == tag; });
    return found == stream.descriptors.end() ? nullptr : &*found;
}

// A time stamp of 33 bits in five bytes from `at` on (2.4.3.7).
std::int64_t read_timestamp(const TsContext& context, std::size_t at) {
    const auto byte = [&context, at](std::size_t index) -> std::int64_t {
        return context.byte_at(at + index);
    };
    return ((byte(0) >> 1) & 7) << 30 | byte(1) << 22 | (byte(2) >> 1) << 15 | byte(3) << 7 |
           byte(4) >> 1;
}

// E-AC-3 and AC-4 travel as private stream 1. True if the header may pass.
bool stream_id_is_allowed(const PesBuffer& pes, const TsContext& context, const TsTables& tables) {
    bool allowed = true;
    for_each_stream_of(context.pid, tables, [&](const TsElementaryStream& stream) {
        const bool is_private = pes.stream_id == kPrivateStream1;
        if (stream.stream_type == kTypeEc3) {
            allowed &= check(is_private, context.loglist, 4330, {}) == Status::kOk;
        } else if (stream.stream_type == kTypePrivateData &&
                   find_descriptor(stream, kTagAc4) != nullptr) {
            allowed &= check(is_private, context.loglist, 4483, {}) == Status::kOk;
        }
    });
    return allowed;
}

Status read_timestamps(std::size_t offset, PesBuffer& pes, const TsContext& context) {
    pes.pts_dts_flags = context.byte_at(offset + 7) >> 6;
    pes.pts = -1;
    if (pes.pts_dts_flags < 2) {
        return Status::kOk;
    }
    pes.pts = read_timestamp(context, offset + 9);
    if (pes.pts_dts_flags == 3) {
        pes.dts = read_timestamp(context, offset + 14);
    }
    // Deliberate: only the upper half of the time line is judged.
    const bool in_order = pes.pts < kPtsUpperHalf || pes.pts >= pes.dts;
    return check(in_order, context.loglist, 4105, {}, pes.pts, pes.dts);
}

// Reads the header of a new PES packet; all of it is expected in this transport packet. `offset`
// moves to the payload. kRuleBroken if the packet is refused; its payload is dropped then.
Status start_pes_packet(TsOutputFiles& files, std::size_t& offset, PesBuffer& pes,
                        TsContext& context, const TsTables& tables, bool& refused) {
    if (pes.bytes_collected != 0) {
        pes.total_bytes += pes.bytes_collected;
        tsPacketFlushPESData(files, pes, context, context.pid);
    }
    pes.bytes_collected = 0;
    pes.complete = 0;
    pes.idle = 0;
    pes.stream_id = context.byte_at(offset + 3);
    pes.pes_packet_length = context.byte_at(offset + 4) << 8 | context.byte_at(offset + 5);
    if (!stream_id_is_allowed(pes, context, tables)) {
        tsPacketFlushPESData(files, pes, context, context.pid);
        refused = true;
        return Status::kRuleBroken;
    }
    const Status status = read_timestamps(offset, pes, context);
    pes.header_data_length = context.byte_at(offset + 8);
    offset += 9 + static_cast<std::size_t>(pes.header_data_length);
    pes.payload_target = pes.pes_packet_length != 0
                             ? pes.pes_packet_length - pes.header_data_length - 3
                             : kPesCapacity;
    return status;
}

// The payload of the packet from `offset` on.
std::span<const std::uint8_t> payload_from(const TsContext& context, std::size_t offset) {
    return context.packet.bytes.subspan(std::min(offset, kTransportPacketSize));
}

void append(PesBuffer& pes, std::span<const std::uint8_t> bytes) {
    std::uint8_t* end = pes.data.data() + pes.bytes_collected;
    if (bytes.size() == kFullPayload) {
        // Nearly all packets; a size that is known makes this a few wide moves.
        std::memcpy(end, bytes.data(), kFullPayload);
    } else if (!bytes.empty()) {
        std::memcpy(end, bytes.data(), bytes.size());
    }
    pes.bytes_collected += static_cast<std::int64_t>(bytes.size());
}

// Holds the E-AC-3 frames of a complete PES packet against the descriptors of one stream.
Status check_against_pmt(const TsElementaryStream& stream, const PesBuffer& pes,
                         TsContext& context) {
    if (stream.stream_type == kTypeEc3) {
        const TsDescriptor* descriptor = find_descriptor(stream, kTagEc3Atsc);
        const Status status = descriptor == nullptr
                                  ? Status::kOk
                                  : tsPacketParsePESData_EC3(descriptor->ec3, pes, context);
        // Deliberate: a failed check raises 4317 on top of its own message.
        const bool passed = descriptor != nullptr && status == Status::kOk;
        return status | check(passed, context.loglist, 4317, {});
    }
    if (stream.stream_type == kTypePrivateData) {
        for (const auto& descriptor : stream.descriptors) {
            if (descriptor.tag == kTagEc3Dvb) {
                return tsPacketParsePESData_EC3(descriptor.ec3, pes, context);
            }
            if (descriptor.tag == kTagAc4) {
                return Status::kOk;
            }
        }
    }
    return Status::kOk;
}

// Judges and writes a PES packet that reached its length. What is left of the transport packet
// begins a new one with the same length and no PTS, so that no payload byte is lost.
Status complete_pes_packet(TsOutputFiles& files, std::span<const std::uint8_t> rest, PesBuffer& pes,
                           TsContext& context, const TsTables& tables) {
    Status status = Status::kOk;
    pes.total_bytes += pes.payload_target;
    if (pes.kind == 0 && pes.stream_id == kPrivateStream1) {
        for_each_stream_of(context.pid, tables, [&](const TsElementaryStream& stream) {
            status |= check_against_pmt(stream, pes, context);
        });
    }
    const std::int64_t target = pes.payload_target;
    tsPacketFlushPESData(files, pes, context, context.pid);
    if (!rest.empty()) {
        pes.payload_target = target;
        append(pes, rest);
    }
    return status;
}

void fold_pts(std::int64_t pts, std::int64_t& first, std::int64_t& last) {
    if (pts == -1) {
        return;
    }
    first = first == -1 ? pts : std::min(first, pts);
    last = std::max(last, pts);
}

void fold_audio_pts(std::int64_t pts, std::size_t index, TsStreamInfo& info) {
    const std::int64_t last = info.audio_last_pts[index];
    fold_pts(pts, info.audio_first_pts[index], info.audio_last_pts[index]);
    if (info.audio_last_pts[index] != last) {
        const std::uint32_t length = info.audio_frame_ticks[index] * info.audio_frames[index];
        info.audio_end_pts[index] = info.audio_last_pts[index] + static_cast<std::int32_t>(length);
    }
}

}  // namespace

int tsPacketParserGetAudioStreamIdx(const TsContext& context, std::int64_t pid) {
    const TsStreamInfo& info = context.stream_info;
    for (std::uint32_t i = 0; i < info.audio_count; ++i) {
        if (info.audio_pid[i] == pid) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

void tsPacketParserInitPESpacket(PesBuffer& pes) {
    pes.bytes_collected = 0;
    pes.payload_target = 0;
    pes.pes_packet_length = 0;
    pes.stream_id = 0;
    pes.header_data_length = 0;
    pes.complete = 0;
    pes.idle = 1;
    pes.pts_dts_flags = 0;
    pes.pts = -1;
}

void tsPacketFlushPESData(TsOutputFiles& files, PesBuffer& pes, TsContext& context,
                          std::int64_t pid) {
    const auto bytes = std::span(pes.data).first(static_cast<std::size_t>(pes.bytes_collected));
    esWriteCallback(files, bytes, pes.kind, pid);
    TsStreamInfo& info = context.stream_info;
    if (pes.kind == 1) {
        fold_pts(pes.pts, info.video_first_pts, info.video_last_pts);
    } else if (const int index = tsPacketParserGetAudioStreamIdx(context, pid); index >= 0) {
        fold_audio_pts(pes.pts, static_cast<std::size_t>(index), info);
    }
    tsPacketParserInitPESpacket(pes);
}

Status tsPacketParsePESData(TsOutputFiles& files, std::size_t offset, PesBuffer& pes,
                            TsContext& context, const TsTables& tables) {
    Status status = Status::kOk;
    if (context.payload_unit_start_indicator) {
        bool refused = false;
        status = start_pes_packet(files, offset, pes, context, tables, refused);
        if (refused) {
            return status;
        }
    }
    if (pes.payload_target <= 0) {
        return status;
    }
    const auto payload = payload_from(context, offset);
    const auto wanted = static_cast<std::size_t>(
        std::max<std::int64_t>(pes.payload_target - pes.bytes_collected, 0));
    const auto taken = payload.first(std::min(wanted, payload.size()));
    append(pes, taken);
    if (pes.bytes_collected < pes.payload_target) {
        return status;
    }
    pes.complete = 1;
    return status | complete_pes_packet(files, payload.subspan(taken.size()), pes, context, tables);
}

}  // namespace mediasplit
