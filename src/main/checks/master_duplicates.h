// Records of a master playlist that describe the same stream.
#pragma once

#include "src/hls/playlist_record.h"
#include "src/log/loglist.h"
#include "src/log/status.h"

namespace mediasplit {

// How many characters a list of codecs gathers. Nothing reads lists this long; the bound keeps a
// hostile playlist from growing without measure.
inline constexpr std::size_t kLongestGatheredCodecs = 500;

// Puts the CODECS of a followed stream behind those of the earlier streams with the same address
// and groups but other CODECS, and notes it there as their duplicate: 4101 when two are noted
// already.
[[nodiscard]] Status merge_same_streams(PlaylistRecord& playlist, Loglist* loglist);

// 4102 for each pair of multichannel E-AC-3 renditions that differ in the bit rate only.
[[nodiscard]] Status check_single_bit_rate(const PlaylistRecord& playlist, Loglist* loglist);

// Marks the streams that have renditions, and switches off those that repeat an earlier stream.
[[nodiscard]] Status drop_repeated_streams(PlaylistRecord& playlist, Loglist* loglist);

}  // namespace mediasplit
