// Looks samples up in a track's tables. Each lookup leaves a cursor where it stopped, so that a
// walk upwards visits every row once; a lookup behind its cursor starts over.
#include <algorithm>

#include "src/mp4demuxer/box_reader.h"
#include "src/mp4demuxer/mp4demuxer.h"
#include "src/mp4demuxer/sample_tables.h"

namespace mediasplit {

namespace {

struct ChunkPlace {
    std::uint64_t chunk = 0;         // number, from 1
    std::uint64_t first_sample = 0;  // of the chunk
};

std::uint32_t stsc_first_chunk(const Mp4Stream& stream, std::uint32_t row) {
    return load_u32(stream.stsc, row * kStscRow);
}

// A row goes on until the chunk at which the next one begins; one that begins no later than this
// row is never met, and this row goes on for ever.
std::uint64_t stsc_row_end(const Mp4Stream& stream, std::uint32_t row, std::uint32_t rows,
                           std::uint64_t begin) {
    const std::uint64_t end = row + 1 < rows ? stsc_first_chunk(stream, row + 1) : 0;
    return end > begin ? end : ~std::uint64_t{0};
}

std::optional<ChunkPlace> find_chunk(const Mp4Stream& stream, std::uint64_t sample) {
    const std::uint32_t rows = rows_of(stream.stsc, kStscRow, stream.stsc_count);
    if (rows == 0) {
        return std::nullopt;
    }
    SampleCursors::Chunk& at = stream.cursors.chunk;
    if (!at.begun || sample < at.first_sample) {
        at = {};
        at.begun = true;
        at.chunk = stsc_first_chunk(stream, 0);
    }
    for (;;) {
        const std::uint64_t per_chunk = load_u32(stream.stsc, at.row * kStscRow + 4);
        const std::uint64_t end = stsc_row_end(stream, at.row, rows, at.chunk);
        const bool is_last = end == ~std::uint64_t{0};
        if (per_chunk != 0) {
            const std::uint64_t ahead = (sample - at.first_sample) / per_chunk;
            if (is_last || ahead < end - at.chunk) {
                return ChunkPlace{at.chunk + ahead, at.first_sample + ahead * per_chunk};
            }
        }
        if (is_last) {
            return std::nullopt;
        }
        at.first_sample += (end - at.chunk) * per_chunk;
        at.chunk = end;
        ++at.row;
    }
}

std::uint64_t stsz_at(const Mp4Stream& stream, std::uint64_t sample) {
    const std::uint64_t at = sample * kStszRow;
    return at + kStszRow <= stream.stsz.size() ? load_u32(stream.stsz, at) : 0;
}

// Sizes of the chunk's samples before `sample`.
std::uint64_t bytes_before(const Mp4Stream& stream, std::uint64_t first, std::uint64_t sample) {
    if (stream.sample_size != 0) {
        return (sample - first) * stream.sample_size;
    }
    SampleCursors::Chunk& at = stream.cursors.chunk;
    if (at.sum_from != first || sample < at.sum_to || at.sum_to < first) {
        at.sum_from = first;
        at.sum_to = first;
        at.sum = 0;
    }
    for (; at.sum_to < sample; ++at.sum_to) {
        at.sum += stsz_at(stream, at.sum_to);
    }
    return at.sum;
}

// Moves the cursor to the row that holds `sample`, or to the last row if it lies past the table.
// Both tables of runs have a count and a value in each row.
void find_run(const std::vector<std::uint8_t>& table, std::uint32_t rows, std::uint64_t sample,
              SampleCursors::Run& at) {
    if (sample < at.first_sample) {
        at = {};
    }
    while (at.row + 1 < rows) {
        const std::uint32_t count = load_u32(table, at.row * kSttsRow);
        if (sample < at.first_sample + count) {
            return;
        }
        const std::uint32_t delta = load_u32(table, at.row * kSttsRow + 4);
        at.sum32 += delta * count;
        at.sum64 += static_cast<std::uint64_t>(delta) * count;
        at.first_sample += count;
        ++at.row;
    }
}

struct DecodeTime {
    std::uint32_t sum32 = 0;
    std::uint64_t sum64 = 0;
};

DecodeTime decode_time(const Mp4Stream& stream, std::uint32_t sample) {
    const std::uint32_t rows = rows_of(stream.stts, kSttsRow, stream.stts_count);
    if (rows == 0) {
        return {};
    }
    SampleCursors::Run& at = stream.cursors.time;
    find_run(stream.stts, rows, sample, at);
    const std::uint32_t count = load_u32(stream.stts, at.row * kSttsRow);
    const std::uint32_t delta = load_u32(stream.stts, at.row * kSttsRow + 4);
    const std::uint64_t counted = std::min<std::uint64_t>(count, sample - at.first_sample);
    return {at.sum32 + delta * static_cast<std::uint32_t>(counted), at.sum64 + delta * counted};
}

std::int64_t composition_offset(const Mp4Stream& stream, std::uint32_t sample) {
    const std::uint32_t rows = rows_of(stream.ctts, kCttsRow, stream.ctts_count);
    if (rows == 0) {
        return 0;
    }
    SampleCursors::Run& at = stream.cursors.composition;
    find_run(stream.ctts, rows, sample, at);
    return static_cast<std::int32_t>(load_u32(stream.ctts, at.row * kCttsRow + 4));
}

// The rows are counted from the end, which ties them to the samples of this walk: rows stay from
// segment to segment, and sample tables don't.
const SencEntry* find_senc(const Mp4Stream& stream, std::uint32_t sample) {
    static constexpr SencEntry kEmptyRow{};
    const std::uint64_t from_start = stream.senc_count + sample;
    if (stream.senc_count == 0 || from_start < stream.num_samples) {
        return nullptr;
    }
    const std::uint64_t row = from_start - stream.num_samples;
    if (row >= stream.senc_count) {
        return nullptr;
    }
    const std::vector<SencBlock>& blocks = stream.senc_blocks;
    std::size_t& at = stream.cursors.senc_block;
    const auto holds = [row](const SencBlock& block) {
        return row >= block.first_row && row - block.first_row < block.row_count;
    };
    if (at >= blocks.size() || !holds(blocks[at])) {
        const auto next = std::upper_bound(
            blocks.begin(), blocks.end(), row,
            [](std::uint64_t wanted, const SencBlock& block) { return wanted < block.first_row; });
        if (next == blocks.begin()) {
            return nullptr;
        }
        at = static_cast<std::size_t>(next - blocks.begin()) - 1;
    }
    const SencBlock& block = blocks[at];
    const std::uint64_t in_block = row - block.first_row;
    return in_block < block.entry_count ? &stream.senc[block.first_entry + in_block] : &kEmptyRow;
}

}  // namespace

std::optional<std::uint64_t> get_sample_offset(const Mp4Stream& stream,
                                               std::uint32_t sample_index) {
    if (stream.num_samples == 0) {
        return std::nullopt;
    }
    const std::uint64_t sample = std::min(sample_index, stream.num_samples - 1);
    const std::optional<ChunkPlace> place = find_chunk(stream, sample);
    const std::size_t width = chunk_row(stream);
    if (!place || place->chunk == 0 ||
        place->chunk > rows_of(stream.chunks, width, stream.num_chunks)) {
        return std::nullopt;
    }
    const std::size_t at = (place->chunk - 1) * width;
    const std::uint64_t start =
        width == 8 ? load_u64(stream.chunks, at) : load_u32(stream.chunks, at);
    return start + bytes_before(stream, place->first_sample, sample);
}

std::uint32_t get_sample_size(const Mp4Stream& stream, std::uint32_t sample_index) {
    if (stream.sample_size != 0) {
        return stream.sample_size;
    }
    const std::uint64_t rows = stream.stsz.size() / kStszRow;
    if (rows == 0) {
        return 0;
    }
    return static_cast<std::uint32_t>(
        stsz_at(stream, std::min<std::uint64_t>(sample_index, rows - 1)));
}

std::uint64_t get_sample_dts(const Mp4Stream& stream, std::uint32_t sample_index) {
    return decode_time(stream, sample_index).sum32;
}

std::uint64_t get_sample_pts(const Mp4Stream& stream, std::uint32_t sample_index) {
    if (!stream.has_stts) {
        return ~std::uint64_t{0};
    }
    return decode_time(stream, sample_index).sum64 +
           static_cast<std::uint64_t>(composition_offset(stream, sample_index)) +
           static_cast<std::uint64_t>(stream.elst_offset);
}

std::uint32_t get_sample_duration(const Mp4Stream& stream, std::uint32_t sample_index) {
    const std::uint32_t rows = rows_of(stream.stts, kSttsRow, stream.stts_count);
    if (rows == 0) {
        return 0;
    }
    // A look back leaves the cursor of the walk alone: writers ask for sample 0 again and again.
    const bool looks_back = sample_index < stream.cursors.time.first_sample;
    SampleCursors::Run& at = looks_back ? stream.cursors.behind : stream.cursors.time;
    find_run(stream.stts, rows, sample_index, at);
    return load_u32(stream.stts, at.row * kSttsRow + 4);
}

std::uint32_t get_sample_flags(const Mp4Stream& stream, std::uint32_t sample_index) {
    const std::uint32_t rows = rows_of(stream.stss, kStssRow, stream.stss_count);
    if (rows == 0) {
        return (stream.marks & (kMarkStss | kMarkTrun)) != 0 ? 0 : 1;
    }
    const std::uint64_t number = static_cast<std::uint64_t>(sample_index) + 1;
    SampleCursors::Sync& at = stream.cursors.sync;
    if (number < at.number) {
        at = {};
    }
    at.number = number;
    while (at.row < rows && load_u32(stream.stss, at.row * kStssRow) < number) {
        ++at.row;
    }
    return at.row < rows && load_u32(stream.stss, at.row * kStssRow) == number ? 1 : 0;
}

float container_frame_rate(const Mp4Stream& stream) {
    const std::uint32_t duration =
        stream.has_stts ? get_sample_duration(stream, 0) : stream.default_sample_duration;
    if (duration == 0) {
        return 0;
    }
    return static_cast<float>(stream.time_scale) / static_cast<float>(duration);
}

std::span<const std::uint8_t> senc_iv(const Mp4Stream& stream, const SencEntry& entry) {
    return std::span<const std::uint8_t>(stream.senc_ivs).subspan(entry.iv_at, entry.iv_size);
}

std::span<const Subsample> senc_subsamples(const Mp4Stream& stream, const SencEntry& entry) {
    return std::span<const Subsample>(stream.senc_subsample_pool)
        .subspan(entry.subsamples_at, entry.subsample_count);
}

const Mp4Sample* mp4demuxer_get_sample(const Mp4Demuxer& demuxer, std::uint32_t stream_index,
                                       std::uint32_t sample_index, Mp4Sample& out) {
    if (stream_index >= demuxer.streams.size()) {
        return nullptr;
    }
    const Mp4Stream& stream = *demuxer.streams[stream_index];
    if (sample_index >= stream.num_samples) {
        return nullptr;
    }
    const std::optional<std::uint64_t> offset = get_sample_offset(stream, sample_index);
    if (!offset) {
        return nullptr;
    }
    out.offset = *offset;
    out.size = stream.sample_size != 0 ? stream.sample_size
                                       : static_cast<std::uint32_t>(stsz_at(stream, sample_index));
    out.pts = get_sample_pts(stream, sample_index);
    out.dts = get_sample_dts(stream, sample_index);
    out.duration = get_sample_duration(stream, sample_index);
    out.sync = get_sample_flags(stream, sample_index);
    out.stream_index = stream_index;
    out.stream_id = stream.stream_id;
    out.senc = find_senc(stream, sample_index);
    out.cts = static_cast<std::int64_t>(out.dts - out.pts);
    out.time_scale = stream.time_scale;
    return &out;
}

}  // namespace mediasplit
