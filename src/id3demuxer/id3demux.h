// Packed audio of HLS renditions (RFC 8216 3.4): a segment that is a bare elementary stream behind
// an ID3 tag with a time stamp.
#pragma once

#include <cstdint>
#include <string>

#include "src/commonfileio/input_file.h"
#include "src/file_util/output_file.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/records/manifest_context.h"
#include "src/records/segment_slot.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// What the audio behind the tag is.
enum class PackedKind : std::uint32_t { kNone = 0, kAc3 = 7, kEac3 = 8, kAac = 9, kAc4 = 10 };

// Takes one segment apart: reads the tag (4076), reports its time stamp (message 12, ticks of
// 90 kHz), holds the audio against CODECS and CHANNELS of `context` and writes it to a file in
// `output_dir`. The file is made anew with `new_file`, otherwise added to; `outputs`, if given,
// decides that by whether it was opened before. Without a folder nothing is written. `slot` and
// `context` may be null; what the audio turns out to be is put into `context`. `file` stands at the
// first byte of the segment, or is reopened with the byte range of `slot`; null raises 4063. The OR
// of all reports; kFailed too if an output can't be written in full.
// Deliberate: audio of an unknown kind isn't an error and gives kOk, whatever was reported before.
[[nodiscard]] Status id3demux(InputFile* file, const SegmentSlot* slot, OptText output_dir,
                              OptText name, bool new_file, ManifestContext* context,
                              Loglist* loglist, OutputRegistry* outputs = nullptr);

// Builds the path of the output of packed audio: with a context from the name and what the playlist
// tells of the rendition, without one from the name. 0; or 1 with a message (3006, 4079) if a part
// is missing or the name can't be made, with `path` untouched.
[[nodiscard]] int buildFullName_Id3(std::string* path, OptText output_dir, OptText name,
                                    const ManifestContext* context, OptText extension,
                                    PackedKind kind);

}  // namespace mediasplit
