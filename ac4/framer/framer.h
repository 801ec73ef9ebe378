#pragma once

#include <cstdint>

#include "base/memlib.h"

namespace mediasplit {

// AC-4 framer: finds ac4_syncframe (ETSI TS 103 190-1 Annex H) in a byte buffer and hands back the
// payload, its time and two flags, damaged and discontinuous. All output points into the caller's
// buffer.

// A time or duration in ticks: whole ticks and a fraction of 2^32.
struct FramerTime {
    std::uint64_t whole = 0;
    std::uint64_t fraction = 0;
};

// What the clock needs from frame to frame.
struct FramerTiming {
    std::uint16_t fs_index = 1;  // 48 kHz family
    std::uint16_t frame_rate_index = 13;
    std::int32_t recalculate = 1;
    FramerTime timestamp;  // of the next frame
    FramerTime duration;   // of one frame
};

struct Ac4Framer {
    memlib arena;
    std::uint64_t max_frame_size = 0;
    std::uint64_t keep_sync = 0;      // non-zero: frames come with sync word, size and CRC
    std::uint64_t timescale = 90000;  // ticks per second
    std::int32_t discontinuity = 0;   // sticky until the next set_timestamp
    FramerTiming timing;
};

// A view that moves through the caller's buffer.
struct FramerBuffer {
    const std::uint8_t* data = nullptr;
    std::uint64_t size = 0;
};

struct FramerConfig {
    std::uint64_t max_frame_size = 0;  // largest frame accepted, header and CRC word included
    std::uint64_t keep_sync = 0;
};

inline constexpr std::int32_t kFramerNoSync = 0;
inline constexpr std::int32_t kFramerHalfSync = 1;   // a lone 0xAC at the end
inline constexpr std::int32_t kFramerSyncPlain = 2;  // 0xAC40
inline constexpr std::int32_t kFramerSyncCrc = 3;    // 0xAC41

struct FramerFrame {
    const std::uint8_t* data = nullptr;  // payload, or the whole frame with `keep_sync`
    std::uint64_t size = 0;
    std::int32_t sync_type = 0;  // kFramerSyncPlain or kFramerSyncCrc
    std::int32_t damaged = 0;    // CRC error or bad timing field
    std::uint64_t timescale = 0;
    std::uint64_t duration = 0;   // rounded to ticks
    std::uint64_t timestamp = 0;  // rounded to ticks
    std::int32_t discontinuity = 0;
};

// Bytes of memory that open needs.
std::uint64_t AC4_ANALYZE_ac4framer_query_mem();

// Places a framer with its start values in the caller's `memory`; null for null.
Ac4Framer* AC4_ANALYZE_ac4framer_open(void* memory);

// Ends the use of the memory; the caller frees it.
void AC4_ANALYZE_ac4framer_close(Ac4Framer* framer);

void AC4_ANALYZE_ac4framer_configure(Ac4Framer* framer, const FramerConfig& config);

// Sets the time of the next frame and clears the discontinuity flag.
void AC4_ANALYZE_ac4framer_set_timestamp(Ac4Framer* framer, std::uint64_t timescale,
                                         std::uint64_t timestamp);

// Looks for the next frame: 0 with `frame` filled, or 1 if more data is needed. `consumed` bytes of
// the buffer need not be shown again; `skipped` grows by the bytes that belong to no frame. A
// damaged frame is delivered but consumes only its sync word, so that the next call looks inside
// it.
int AC4_ANALYZE_ac4framer_get_frame(Ac4Framer* framer, const FramerBuffer& buffer,
                                    std::uint64_t* consumed, std::uint64_t* skipped,
                                    FramerFrame* frame);

// Scans for a sync word and returns the bytes scanned, the sync word included; `state` takes one of
// the kFramer... values.
std::uint64_t AC4_ANALYZE_framer_find_sync_word(const FramerBuffer& buffer, std::int32_t* state);

// Reads the frame size behind a sync word. `state` ends at 2 (16-bit form) or 7 (24-bit form);
// anything else means that the data ran out.
void AC4_ANALYZE_framer_parse_size_info(const FramerBuffer& buffer, std::int32_t* state,
                                        std::uint64_t* size);

// Reads the head of a payload and moves the clock on by one frame. 0, or 1 with nothing changed for
// a head that is cut or whose frame rate is reserved.
int AC4_ANALYZE_framer_get_time(const FramerBuffer& payload, std::uint64_t timescale,
                                FramerTiming* timing);

// CRC-16 residue (generator 0x8005, start 0): 0 for data that ends with its CRC word.
std::uint16_t AC4_ANALYZE_calculate_crc(const std::uint8_t* data, std::uint64_t size);

// Whole ticks, rounded half up.
std::uint64_t AC4_ANALYZE_framer_round(std::uint64_t whole, std::uint64_t fraction);

// Moves a view forward or back; the caller makes sure that the bytes exist.
void AC4_ANALYZE_framer_buffer_advance(FramerBuffer* buffer, std::uint64_t n);
void AC4_ANALYZE_framer_buffer_rewind(FramerBuffer* buffer, std::uint64_t n);

}  // namespace mediasplit
