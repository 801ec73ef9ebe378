// Reads the boxes of an ISO base media file, or of a byte range of one, into an `Mp4Demuxer`, and
// looks samples up in what was read (ISO/IEC 14496-12).
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "src/commonfileio/input_file.h"
#include "src/mp4demuxer/records.h"

namespace mediasplit {

// Makes an empty presentation. Releasing the result releases all that was read into it.
[[nodiscard]] std::unique_ptr<Mp4Demuxer> mp4demuxer_create();

// Sets the byte range of the next walk (0 and 0 for the whole file) and drops every track's sample
// tables; entries, defaults, time scales and `senc` rows stay. Returns 1 for null, else 0.
std::uint32_t mp4demuxer_update(Mp4Demuxer* demuxer, std::uint64_t range_start,
                                std::uint32_t range_length);

// Walks the boxes of `file` from its read position on. A broken box ends its parent and prints a
// line to standard output; nothing is returned.
void mp4demuxer_parse_boxes(Mp4Demuxer& demuxer, InputFile& file);

// Releases the presentation. Null is accepted.
void mp4demuxer_destroy(std::unique_ptr<Mp4Demuxer> demuxer);

// Looks sample `sample_index` (from 0, within this walk) of a track up. Returns `&out`, or null
// when there is no such sample: past the count, or in no chunk of the table. A walk upwards costs
// constant time a sample.
const Mp4Sample* mp4demuxer_get_sample(const Mp4Demuxer& demuxer, std::uint32_t stream_index,
                                       std::uint32_t sample_index, Mp4Sample& out);

// File offset; an index past the end stands for the last sample. None when the tables place the
// sample in no chunk.
std::optional<std::uint64_t> get_sample_offset(const Mp4Stream& stream, std::uint32_t sample_index);
// Presentation time in time_scale units, all ones without an `stts` table.
std::uint64_t get_sample_pts(const Mp4Stream& stream, std::uint32_t sample_index);
// Decoding time in time_scale units, summed in 32 bits.
std::uint64_t get_sample_dts(const Mp4Stream& stream, std::uint32_t sample_index);
// 1 for a sync sample.
std::uint32_t get_sample_flags(const Mp4Stream& stream, std::uint32_t sample_index);
// Bytes; an index past the end takes the last row.
std::uint32_t get_sample_size(const Mp4Stream& stream, std::uint32_t sample_index);
// time_scale units; an index past the end takes the last row, 0 without rows.
std::uint32_t get_sample_duration(const Mp4Stream& stream, std::uint32_t sample_index);

// Frames per second as the container tells, 0 when it doesn't.
float container_frame_rate(const Mp4Stream& stream);

// The IV of a `senc` row, empty when it has none, and its subsamples.
std::span<const std::uint8_t> senc_iv(const Mp4Stream& stream, const SencEntry& entry);
std::span<const Subsample> senc_subsamples(const Mp4Stream& stream, const SencEntry& entry);

// Whether `brand` is a compatible brand of `ftyp`; the major brand isn't looked at.
bool compat_brand_included(const Mp4Demuxer& demuxer, std::uint32_t brand);
// Whether the brands of the segments so far, or else of `ftyp`, have a CMAF brand (ISO/IEC
// 23000-19) as major or compatible brand.
bool contain_cmaf_brand(const Mp4Demuxer& demuxer);

}  // namespace mediasplit
