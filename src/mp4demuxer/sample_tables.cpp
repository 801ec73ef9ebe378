// Sample tables of plain files (ISO/IEC 14496-12 8.6, 8.7). Rows are kept as they stand in the
// file.
#include "src/mp4demuxer/sample_tables.h"

#include "src/log/findings.h"
#include "src/mp4demuxer/box_reader.h"
#include "src/mp4demuxer/handlers.h"

namespace mediasplit {

namespace {

// Skips version and flags and reads the row count, which every table begins with.
std::uint32_t read_row_count(PayloadReader& in) {
    in.skip(4);
    return in.u32();
}

// Reads the rows that the box holds; false, with an empty table, for one that is too large.
bool read_rows(PayloadReader& in, std::uint64_t count, std::size_t row_size,
               std::vector<std::uint8_t>& table) {
    table = {};
    if (count * row_size > kMaxTableSize) {
        note_remark("A sample table was dropped: it is larger than tables may be (2 MiB).");
        return false;
    }
    in.append_to(table, count * row_size);
    table.resize(table.size() / row_size * row_size);
    return true;
}

// The three tables that keep their count even when they are refused.
HandlerResult read_counted_table(InputFile& file, const BoxNode& node, std::size_t row_size,
                                 std::vector<std::uint8_t>& table, std::uint32_t& count) {
    PayloadReader in(file, node.size);
    count = read_row_count(in);
    return read_rows(in, count, row_size, table) ? kHandled : kRefused;
}

}  // namespace

void reset_sample_tables(Mp4Stream& stream) {
    stream.stsz = {};
    stream.chunks = {};
    stream.stsc = {};
    stream.stts = {};
    stream.ctts = {};
    stream.stss = {};
    stream.has_stts = false;
    stream.sample_size = 0;
    stream.num_samples = 0;
    stream.next_sample = 0;
    stream.num_chunks = 0;
    stream.stco_is_64bit = 0;
    stream.stsc_count = 0;
    stream.stts_count = 0;
    stream.ctts_count = 0;
    stream.stss_count = 0;
    stream.duration = 0;
    stream.baseMediaDecodeTime = ~std::uint64_t{0};
    stream.cursors = {};
}

HandlerResult parse_box_stts(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    stream->cursors = {};
    const HandlerResult result =
        read_counted_table(file, node, kSttsRow, stream->stts, stream->stts_count);
    stream->has_stts = result == kHandled;
    return result;
}

HandlerResult parse_box_ctts(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    stream->cursors = {};
    return read_counted_table(file, node, kCttsRow, stream->ctts, stream->ctts_count);
}

HandlerResult parse_box_stss(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    stream->cursors = {};
    stream->marks |= kMarkStss;
    return read_counted_table(file, node, kStssRow, stream->stss, stream->stss_count);
}

HandlerResult parse_box_stsc(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    stream->cursors = {};
    stream->stsc_count = 0;
    PayloadReader in(file, node.size);
    const std::uint32_t count = read_row_count(in);
    if (!read_rows(in, count, kStscRow, stream->stsc)) {
        return kRefused;
    }
    stream->stsc_count = count;
    return kHandled;
}

HandlerResult parse_box_stco(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    stream->cursors = {};
    stream->num_chunks = 0;
    stream->stco_is_64bit = node.type == fourcc("co64") ? 1 : 0;
    PayloadReader in(file, node.size);
    const std::uint32_t count = read_row_count(in);
    if (!read_rows(in, count, chunk_row(*stream), stream->chunks)) {
        return kRefused;
    }
    stream->num_chunks = count;
    return kHandled;
}

HandlerResult parse_box_stsz(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    stream->cursors = {};
    PayloadReader in(file, node.size);
    in.skip(4);
    const std::uint32_t size = in.u32();
    stream->num_samples = in.u32();
    if (size != 0) {
        stream->sample_size = size;
        return kHandled;
    }
    stream->stsz = {};
    in.append_to(stream->stsz, static_cast<std::uint64_t>(stream->num_samples) * kStszRow);
    // A count beyond the rows of the box stands for no samples.
    stream->num_samples = rows_of(stream->stsz, kStszRow, stream->num_samples);
    return kHandled;
}

}  // namespace mediasplit
