// What a DASH manifest must say of an E-AC-3 stream (ETSI TS 102 366 Annex I, ETSI TS 103 420
// Annex D).
#pragma once

#include "src/fmp4demuxer/checks/dash_audio.h"
#include "src/log/status.h"
#include "src/mp4demuxer/records.h"

namespace mediasplit {

// Holds a Representation against an "ec-3" sample entry: 4269 to 4282, 2036, 2037. Without a "dec3"
// box what is told of the box isn't checked. The OR of the reports.
[[nodiscard]] Status check_ec3_representation(const DashAudio& audio, const Mp4Stream& stream);

}  // namespace mediasplit
