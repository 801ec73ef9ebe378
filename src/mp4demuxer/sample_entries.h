// What the types of sample entries stand for.
#pragma once

#include <cstdint>

#include "src/mp4demuxer/records.h"

namespace mediasplit {

struct SampleEntryKind {
    std::uint32_t type = 0;
    std::uint32_t stream_id = 0;
    std::uint32_t px_kind = 0;       // 0: the entry doesn't set it
    std::uint32_t box_flag = 0;      // the type's own bit
    bool is_prisma = false;          // sets kBoxPrisma as well
    std::uint32_t protected_px = 0;  // px_kind that the type gives below a Prisma entry's `frma`
};

// The row of a sample entry type, null for one that isn't known.
const SampleEntryKind* find_sample_entry(std::uint32_t type);

// Payload of a configuration box that is kept at most; no real one comes near it.
inline constexpr std::uint64_t kMaxConfigSize = 0x1000000;

}  // namespace mediasplit
