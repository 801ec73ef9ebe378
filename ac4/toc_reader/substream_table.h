#pragma once

#include <array>
#include <cstdint>

#include "ac4/toc_reader/toc_parser.h"

namespace mediasplit {

// substream_index_table (ETSI TS 103 190-1 clause 4.2.3.11) of one frame, read once.
struct SubstreamTable {
    bool known = false;
    bool usable = false;  // read to its end
    int result = kTocOk;  // of reading it, parked errors included
    std::uint32_t count = 0;
    bool sizes_present = false;
    std::uint64_t payload_start = 0;  // bytes from the frame's start, payload_base included
    std::array<std::uint32_t, kMaxTocSubstreams> sizes{};    // bytes
    std::array<std::uint32_t, kMaxTocSubstreams> offsets{};  // bytes from payload_start
};

// Reads the table at the parser's position. The result is also kept in the table.
int read_substream_table(TocParser& parser, SubstreamTable* table);

// Where substream `index` lies in a frame of `frame_bytes`: 0, or 2 for an index behind the table
// or a segment that passes the frame's end.
int find_substream_segment(const SubstreamTable& table, std::uint64_t frame_bytes,
                           std::int32_t index, SubstreamSegment* segment);

}  // namespace mediasplit
