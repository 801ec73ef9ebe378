// Telling file formats apart, and walking a file by its segment index.
#pragma once

#include "base/list.h"
#include "src/commonfileio/input_file.h"
#include "src/log/status.h"
#include "src/mp4demuxer/records.h"
#include "src/records/segment_slot.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// Results of get_file_type.
inline constexpr int kFileTypeUnknown = 0;
inline constexpr int kFileTypePlaylist = 1;
inline constexpr int kFileTypeTs = 4;
inline constexpr int kFileTypeMp4 = 5;
inline constexpr int kFileTypePackedAudio = 6;  // behind an ID3 tag
inline constexpr int kFileTypeAc3 = 7;          // AC-3, or E-AC-3 of a bsid up to 8
inline constexpr int kFileTypeEc3 = 8;          // E-AC-3 of a bsid from 11 to 16
inline constexpr int kFileTypeAdts = 9;
inline constexpr int kFileTypeAc4 = 10;

// The format of a file by its first 8 bytes. An http(s) `name` is read from its copy at
// `local_path`. A file that can't be opened raises 4022 with `name` and is unknown.
[[nodiscard]] int get_file_type(OptText name, OptText local_path);

// Reads the segment index (ISO/IEC 14496-12 8.16.3) that the slot's byte range points at, or that
// `file` begins with, and demultiplexes each subsegment by itself. Subsegments that gave a timing
// record hand it to `timing_list`, which may be null. Returns the OR of all reports.
[[nodiscard]] Status fmp4demux_with_sidx(InputFile& file, const SegmentSlot* slot,
                                         Mp4Demuxer* demuxer, List* timing_list);

}  // namespace mediasplit
