// What an audio stream must find in the CODECS and CHANNELS attributes of its master playlist
// (RFC 8216 4.3.4.1 and 4.3.4.2).
#pragma once

#include <cstdint>

#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/records/manifest_context.h"

namespace mediasplit {

// Where a stream tells its channels.
enum class AudioCarrier : std::uint8_t { kPackedAudio, kSampleEntry };

// An E-AC-3 stream as its attributes must describe it.
struct Ec3Programme {
    bool is_joc = false;
    std::uint32_t channels = 0;  // of object audio: its complexity index
};

// Holds an E-AC-3 stream against CODECS (4283) and CHANNELS: object audio needs CHANNELS (4284);
// before CHANNELS was parsed it must be the one right text (4285 and 4287 for a sample entry, 4288
// and 4291 for packed audio), afterwards it must allow for the stream (4289, 4290). What was found
// is put into `context`. The OR of the reports.
[[nodiscard]] Status check_ec3_attributes(ManifestContext& context, const Ec3Programme& programme,
                                          AudioCarrier carrier, Loglist* loglist);

// Holds an AC-4 stream against a CHANNELS attribute that was parsed: 4390 for too few channels,
// 4391 for immersive audio that isn't named; what was found is put into `context`. Nothing is done
// without CHANNELS, or before it was parsed.
[[nodiscard]] Status check_ac4_channel_limit(ManifestContext& context, std::uint32_t channels,
                                             bool is_immersive, Loglist* loglist);

}  // namespace mediasplit
