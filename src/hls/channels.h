// The CHANNELS attribute of a rendition (RFC 8216 4.3.4.1) against what its segments hold.
#pragma once

#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/records/manifest_context.h"

namespace mediasplit {

// Reads `channels_text` into the other fields: 4060 for a count that is no number, 4103 for "-"
// beside another identifier. kFailed without a context or for a text of 500 characters or more.
Status parse_channels_info(ManifestContext* context, Loglist* loglist);

// Holds what was told against what was found: 2019 and 2020.
Status check_channels_info(const ManifestContext* context, Loglist* loglist);

// Adds what a demultiplexer found, in its own copy of the context.
void pass_hls_check_channels_info(ManifestContext* context, const ManifestContext* found);

}  // namespace mediasplit
