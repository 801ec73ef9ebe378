// Writing pieces of an elementary stream, with the messages for what can't be written.
#pragma once

#include <cstdint>

#include "src/file_util/output_file.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/mp4demuxer/records.h"
#include "src/util/bit_reader.h"

namespace mediasplit {

// The file of a track, or null when the track isn't written.
[[nodiscard]] OutputFile* output_of(const Mp4Demuxer& demuxer, std::uint32_t stream_index);

// In all of these a null `file`, or one that failed before and was reported then, takes nothing and
// reports nothing.

// Writes the bytes; 4085 on failure.
[[nodiscard]] Status write_bytes(OutputFile* file, ByteSpan bytes, Loglist* loglist);

// Writes 00 00 00 01 and a unit of a sample; 4085 on failure.
[[nodiscard]] Status write_sample_unit(OutputFile* file, ByteSpan unit, Loglist* loglist);

// Writes 00 00 00 01 and a unit of a configuration box; 4083 when the start code fails, 4085 when
// the unit does.
[[nodiscard]] Status write_config_unit(OutputFile* file, ByteSpan unit, Loglist* loglist);

// Writes the parameter sets of an H.264 configuration: each SPS, then each PPS.
[[nodiscard]] Status h264_write_sps_pps_nal(const AvcConfig& config, OutputFile* file,
                                            Loglist* loglist);

}  // namespace mediasplit
