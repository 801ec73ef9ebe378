// What an HLS master playlist must say of an AC-4 track.
#pragma once

#include "ac4/descriptor_generator/dsi_record.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/records/manifest_context.h"

namespace mediasplit {

// Holds CODECS (4387) and CHANNELS (4388 to 4391) against a "dac4" box. What was found is put into
// the context. The OR of the reports.
[[nodiscard]] Status check_ac4_playlist(ManifestContext& context, const DsiRecord& record,
                                        Loglist* loglist);

}  // namespace mediasplit
