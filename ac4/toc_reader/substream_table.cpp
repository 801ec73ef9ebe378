#include "ac4/toc_reader/substream_table.h"

namespace mediasplit {
namespace {

constexpr std::uint32_t kMostSubstreamBytes = 32768;

std::uint32_t read_substream_size(TocParser& parser) {
    const bool more = read_flag(parser.in);
    std::uint32_t size = read_field(parser.in, 10);
    if (more) {
        size += read_variable_bits(parser.in, 2) << 10;
    }
    return limited(parser, size, kMostSubstreamBytes);
}

void read_entries(TocParser& parser, SubstreamTable* table) {
    table->count = read_field(parser.in, 2);
    if (table->count == 0) {
        table->count = read_variable_bits(parser.in, 2) + 4;
    }
    if (table->count > kMaxTocSubstreams) {
        stop(parser, kTocLimit);
        return;
    }
    table->sizes_present = table->count == 1 ? read_flag(parser.in) : true;
    std::uint32_t offset = 0;
    for (std::uint32_t i = 0; i < table->count && table->sizes_present && parser_ok(parser); ++i) {
        table->sizes[i] = read_substream_size(parser);
        table->offsets[i] = offset;
        offset += table->sizes[i];
    }
}

}  // namespace

int read_substream_table(TocParser& parser, SubstreamTable* table) {
    read_entries(parser, table);
    align_field(parser.in);
    table->payload_start =
        static_cast<std::uint64_t>(field_position(parser.in) / 8) + parser.head.payload_base;
    table->known = true;
    table->usable = parser_ok(parser);
    table->result = parser_result(parser);
    return table->result;
}

int find_substream_segment(const SubstreamTable& table, std::uint64_t frame_bytes,
                           std::int32_t index, SubstreamSegment* segment) {
    const auto entry = static_cast<std::uint32_t>(index);
    if (entry >= table.count) {
        return kTocLimit;
    }
    const std::uint64_t offset = table.payload_start + table.offsets[entry];
    if (offset > frame_bytes) {
        return kTocLimit;
    }
    const std::uint64_t size = table.sizes_present ? table.sizes[entry] : frame_bytes - offset;
    if (size > frame_bytes - offset) {
        return kTocLimit;
    }
    *segment = {offset, size};
    return kTocOk;
}

}  // namespace mediasplit
