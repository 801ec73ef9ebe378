// What the types of sample entries stand for.
#pragma once

#include <cstdint>
#include <vector>

#include "src/commonfileio/input_file.h"
#include "src/mp4demuxer/records.h"

namespace mediasplit {

struct SampleEntryKind {
    std::uint32_t type = 0;
    std::uint32_t stream_id = 0;
    std::uint32_t px_kind = 0;   // 0: the entry doesn't set it
    std::uint32_t box_flag = 0;  // the type's own bit
    bool is_prisma = false;      // sets kBoxPrisma as well
    std::uint32_t plain_px = 0;  // px_kind of a Prisma track whose entry has this plain type
};

// The row of a sample entry type, null for one that isn't known.
const SampleEntryKind* find_sample_entry(std::uint32_t type);

// `plain_px` of the type with this stream_id, 0 if there is none.
std::uint32_t plain_px_of(std::uint32_t stream_id);

// Payload of a configuration box that is kept at most; no real one comes near it.
inline constexpr std::uint64_t kMaxConfigSize = 0x1000000;

// The payload of a configuration box.
std::vector<std::uint8_t> read_config(InputFile& file, const BoxNode& node);
// Keeps it as the track's decoder specific information.
void keep_dsi(Mp4Stream& stream, std::vector<std::uint8_t> payload);

}  // namespace mediasplit
