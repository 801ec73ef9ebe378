#include "src/main/flows/flows.h"

namespace mediasplit {

// The place of the playlist flow: playlists aren't followed yet, so the run fails.
Status run_hls(Loglist* /*loglist*/) {
    return Status::kFailed;
}

}  // namespace mediasplit
