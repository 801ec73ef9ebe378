#include "src/main/flows/flows.h"

namespace mediasplit {

// The place of the manifest flow: manifests aren't followed yet, so the run fails.
Status run_dash(Loglist* /*loglist*/) {
    return Status::kFailed;
}

}  // namespace mediasplit
