#include "ac4/framer/framer.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "base/orv_bitbuf.h"

namespace mediasplit {
namespace {

constexpr std::uint64_t kSyncBytes = 2;
constexpr std::uint64_t kCrcBytes = 2;
constexpr std::uint64_t kFractionOne = 1ULL << 32;
constexpr int kLastFrameRateIndex = 13;

// Duration of one frame by frame_rate_index, in units of 1/240000 s (48 kHz) or 1/220500 s
// (44.1 kHz).
constexpr std::array<std::uint64_t, 16> kExternalFrameLength = {
    10010, 10000, 9600, 8008, 8000, 5005, 5000, 4800, 4004, 4000, 2400, 2002, 2000, 10240, 0, 0};

constexpr std::array<std::uint16_t, 256> make_crc_table() {
    constexpr std::uint32_t kGenerator = 0x8005;
    std::array<std::uint16_t, 256> table{};
    for (std::uint32_t i = 0; i < table.size(); ++i) {
        std::uint32_t value = i << 8;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value & 0x8000U) != 0 ? (value << 1) ^ kGenerator : value << 1;
        }
        table[i] = static_cast<std::uint16_t>(value);
    }
    return table;
}

constexpr std::array<std::uint16_t, 256> kCrcTable = make_crc_table();

auto allocation(Ac4Framer** framer) {
    return [framer](memlib* mem, MemPhase phase) {
        memlib_alloc_objects(mem, kMemlibPermanent, framer, 1, phase);
    };
}

// A frame's place behind its sync word.
struct FrameShape {
    std::uint64_t header = 0;  // sync word and size field
    std::uint64_t payload = 0;
    std::uint64_t total = 0;
};

// 0 with the shape of the frame at `at`, or 1 if its size field is cut.
int read_shape(const FramerBuffer& at, std::int32_t sync, FrameShape* shape) {
    FramerBuffer behind_sync = at;
    AC4_ANALYZE_framer_buffer_advance(&behind_sync, kSyncBytes);
    std::int32_t state = 0;
    AC4_ANALYZE_framer_parse_size_info(behind_sync, &state, &shape->payload);
    if (state != 2 && state != 7) {
        return 1;
    }
    shape->header = state == 2 ? 4 : 7;
    shape->total = shape->header + shape->payload + (sync == kFramerSyncCrc ? kCrcBytes : 0);
    return 0;
}

// True if the bytes behind a frame are, as far as they are there, a sync word.
bool sync_follows(const FramerBuffer& behind_frame) {
    const FramerBuffer head = {behind_frame.data, std::min(behind_frame.size, kSyncBytes)};
    std::int32_t state = kFramerNoSync;
    const std::uint64_t scanned = AC4_ANALYZE_framer_find_sync_word(head, &state);
    return state >= kFramerSyncPlain || (state == kFramerHalfSync && scanned == 1);
}

void deliver(Ac4Framer* framer, const FramerBuffer& at, std::int32_t sync, const FrameShape& shape,
             FramerFrame* frame) {
    if (at.size > shape.total) {
        FramerBuffer behind = at;
        AC4_ANALYZE_framer_buffer_advance(&behind, shape.total);
        framer->discontinuity |= sync_follows(behind) ? 0 : 1;
    }
    const FramerBuffer payload = {at.data + shape.header, shape.payload};
    std::int32_t damaged = 0;
    if (sync == kFramerSyncCrc &&
        AC4_ANALYZE_calculate_crc(at.data + kSyncBytes, shape.total - kSyncBytes) != 0) {
        damaged = 1;
    }
    damaged |= AC4_ANALYZE_framer_get_time(payload, framer->timescale, &framer->timing);
    framer->discontinuity |= damaged;

    const FramerTiming& timing = framer->timing;
    frame->sync_type = sync;
    frame->damaged = damaged;
    frame->discontinuity = framer->discontinuity;
    frame->timescale = framer->timescale;
    frame->timestamp = AC4_ANALYZE_framer_round(timing.timestamp.whole, timing.timestamp.fraction);
    frame->duration = AC4_ANALYZE_framer_round(timing.duration.whole, timing.duration.fraction);
    frame->data = framer->keep_sync != 0 ? at.data : payload.data;
    frame->size = framer->keep_sync != 0 ? shape.total : payload.size;
}

}  // namespace

std::uint64_t AC4_ANALYZE_ac4framer_query_mem() {
    return memlib_query(allocation(nullptr));
}

Ac4Framer* AC4_ANALYZE_ac4framer_open(void* memory) {
    Ac4Framer* framer = nullptr;
    const memlib arena = memlib_open(memory, allocation(&framer));
    if (framer != nullptr) {
        framer->arena = arena;
    }
    return framer;
}

void AC4_ANALYZE_ac4framer_close(Ac4Framer* framer) {
    if (framer != nullptr) {
        framer->arena = memlib_close(framer->arena, allocation(nullptr));
    }
}

void AC4_ANALYZE_ac4framer_configure(Ac4Framer* framer, const FramerConfig& config) {
    framer->max_frame_size = config.max_frame_size;
    framer->keep_sync = config.keep_sync;
}

void AC4_ANALYZE_ac4framer_set_timestamp(Ac4Framer* framer, std::uint64_t timescale,
                                         std::uint64_t timestamp) {
    framer->discontinuity = 0;
    framer->timing.timestamp = {timestamp, 0};
    if (timescale != framer->timescale) {
        framer->timescale = timescale;
        framer->timing.recalculate = 1;
    }
}

int AC4_ANALYZE_ac4framer_get_frame(Ac4Framer* framer, const FramerBuffer& buffer,
                                    std::uint64_t* consumed, std::uint64_t* skipped,
                                    FramerFrame* frame) {
    FramerBuffer at = buffer;
    *consumed = 0;
    while (at.size > 0) {
        std::int32_t sync = kFramerNoSync;
        const std::uint64_t scanned = AC4_ANALYZE_framer_find_sync_word(at, &sync);
        const std::uint64_t kept = sync == kFramerNoSync ? 0 : sync == kFramerHalfSync ? 1 : 2;
        AC4_ANALYZE_framer_buffer_advance(&at, scanned);
        AC4_ANALYZE_framer_buffer_rewind(&at, kept);
        *skipped += scanned - kept;
        *consumed = buffer.size - at.size;
        FrameShape shape;
        if (sync < kFramerSyncPlain || at.size < 3 || read_shape(at, sync, &shape) != 0) {
            return 1;
        }
        if (shape.total > framer->max_frame_size) {
            if (at.size > shape.header) {
                FramerBuffer payload = at;
                AC4_ANALYZE_framer_buffer_advance(&payload, shape.header);
                AC4_ANALYZE_framer_get_time(payload, framer->timescale, &framer->timing);
            }
            AC4_ANALYZE_framer_buffer_advance(&at, kSyncBytes);
            *skipped += kSyncBytes;
            *consumed = buffer.size - at.size;
            framer->discontinuity = 1;
            continue;
        }
        if (at.size < shape.total) {
            return 1;
        }
        deliver(framer, at, sync, shape, frame);
        *consumed += frame->damaged != 0 ? kSyncBytes : shape.total;
        return 0;
    }
    return 1;
}

std::uint64_t AC4_ANALYZE_framer_find_sync_word(const FramerBuffer& buffer, std::int32_t* state) {
    bool after_ac = false;
    for (std::uint64_t i = 0; i < buffer.size; ++i) {
        const std::uint8_t byte = buffer.data[i];
        if (after_ac && (byte == 0x40 || byte == 0x41)) {
            *state = byte == 0x40 ? kFramerSyncPlain : kFramerSyncCrc;
            return i + 1;
        }
        after_ac = byte == 0xAC;
    }
    *state = after_ac ? kFramerHalfSync : kFramerNoSync;
    return buffer.size;
}

void AC4_ANALYZE_framer_parse_size_info(const FramerBuffer& buffer, std::int32_t* state,
                                        std::uint64_t* size) {
    *state = 0;
    *size = 0;
    for (std::uint64_t i = 0; i < buffer.size && *state != 2 && *state != 7; ++i) {
        const std::uint64_t byte = buffer.data[i];
        switch (*state) {
            case 0:
                *size = byte << 8;
                *state = byte == 0xFF ? 3 : 1;
                break;
            case 1:
                *size += byte;
                *state = 2;
                break;
            case 3:
                *size = byte == 0xFF ? 0 : *size + byte;
                *state = byte == 0xFF ? 4 : 2;
                break;
            default:  // the three bytes of the long form
                *size = (*size << 8) + byte;
                ++*state;
                break;
        }
    }
}

int AC4_ANALYZE_framer_get_time(const FramerBuffer& payload, std::uint64_t timescale,
                                FramerTiming* timing) {
    orv_bitbuf bits;
    orv_bitbuf_init(&bits, payload.data, static_cast<std::int64_t>(payload.size) * 8);
    const bool escaped_version = orv_bitbuf_read(&bits, 2) == 3;
    for (bool more = escaped_version; more && orv_bitbuf_get_bits_left(&bits) > 0;) {
        orv_bitbuf_read(&bits, 2);
        more = orv_bitbuf_read(&bits, 1) != 0;
    }
    orv_bitbuf_read(&bits, 10);                                              // sequence_counter
    if (orv_bitbuf_read(&bits, 1) != 0 && orv_bitbuf_read(&bits, 3) != 0) {  // wait_frames
        orv_bitbuf_read(&bits, 2);                                           // br_code
    }
    const auto fs_index = static_cast<std::uint16_t>(orv_bitbuf_read(&bits, 1));
    const auto frame_rate_index = static_cast<std::uint16_t>(orv_bitbuf_read(&bits, 4));
    if (orv_bitbuf_get_bits_left(&bits) < 0 || frame_rate_index > kLastFrameRateIndex) {
        return 1;
    }
    const bool changed =
        fs_index != timing->fs_index || frame_rate_index != timing->frame_rate_index;
    timing->fs_index = fs_index;
    timing->frame_rate_index = frame_rate_index;

    FramerTime& timestamp = timing->timestamp;
    timestamp.whole += timing->duration.whole;
    timestamp.fraction += timing->duration.fraction;
    timestamp.whole += timestamp.fraction / kFractionOne;
    timestamp.fraction %= kFractionOne;

    if (timing->recalculate != 0 || changed) {
        const std::uint64_t divisor = fs_index == 1 ? 240000 : 220500;
        const std::uint64_t product = kExternalFrameLength[frame_rate_index] * timescale;
        timing->duration = {product / divisor, ((product % divisor) << 32) / divisor};
        timing->recalculate = 0;
    }
    return 0;
}

std::uint16_t AC4_ANALYZE_calculate_crc(const std::uint8_t* data, std::uint64_t size) {
    std::uint32_t residue = 0;
    for (std::uint64_t i = 0; i < size; ++i) {
        residue = ((residue << 8) & 0xFFFFU) ^ kCrcTable[residue >> 8] ^ data[i];
    }
    return static_cast<std::uint16_t>(residue);
}

std::uint64_t AC4_ANALYZE_framer_round(std::uint64_t whole, std::uint64_t fraction) {
    return fraction >= kFractionOne / 2 ? whole + 1 : whole;
}

void AC4_ANALYZE_framer_buffer_advance(FramerBuffer* buffer, std::uint64_t n) {
    buffer->data += static_cast<std::ptrdiff_t>(n);
    buffer->size -= n;
}

void AC4_ANALYZE_framer_buffer_rewind(FramerBuffer* buffer, std::uint64_t n) {
    buffer->data -= static_cast<std::ptrdiff_t>(n);
    buffer->size += n;
}

}  // namespace mediasplit
