// Writers of samples: each takes one decrypted sample, looks at it and appends its elementary form
// to the track's file. Without a file the sample is looked at all the same. No payload byte is ever
// changed. All return the OR of their reports' results.
#pragma once

#include <cstdint>

#include "src/log/status.h"
#include "src/mp4demuxer/records.h"
#include "src/util/bit_reader.h"

namespace mediasplit {

// A 7-byte ADTS header (ISO/IEC 13818-7 6.2) from the track's configuration, and the sample.
[[nodiscard]] Status aacSample(Mp4Demuxer& demuxer, std::uint32_t stream_index, ByteSpan sample);

// The sample as it stands.
[[nodiscard]] Status ec3Sample(Mp4Demuxer& demuxer, std::uint32_t stream_index, ByteSpan sample);

// A 7-byte sync frame header (ETSI TS 103 190-1 Annex G), and the sample. `number` counts samples
// from 1, `sync` is the container's sync flag.
[[nodiscard]] Status ac4Sample(Mp4Demuxer& demuxer, std::uint32_t stream_index, ByteSpan sample,
                               std::uint32_t number, std::uint32_t sync);

// Each NAL unit behind 00 00 00 01; the parameter sets of `avcC` go in at a sample with an IDR
// unit. A track without `avcC` writes nothing. 4073 for a unit that passes the sample's end.
[[nodiscard]] Status avcSample(Mp4Demuxer& demuxer, std::uint32_t stream_index, ByteSpan sample);

// The same for H.265; the units of `hvcC` go in ahead of a sample's first IDR unit unless a VPS or
// SPS stands before it in the sample.
[[nodiscard]] Status hevcSample(Mp4Demuxer& demuxer, std::uint32_t stream_index, ByteSpan sample);

// The sample as it stands, for a track with an enhancement configuration; nothing for a plain one.
[[nodiscard]] Status av1Sample(Mp4Demuxer& demuxer, std::uint32_t stream_index, ByteSpan sample);

// What is left to say of an AV1 track when a walk ends (4187).
[[nodiscard]] Status end_av1_stream(Mp4Demuxer& demuxer, std::uint32_t stream_index);

// The sample as it stands.
[[nodiscard]] Status unspecifiedSample(Mp4Demuxer& demuxer, std::uint32_t stream_index,
                                       ByteSpan sample);

}  // namespace mediasplit
