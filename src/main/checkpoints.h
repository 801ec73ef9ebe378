// The list of active checkpoints.
#pragma once

#include <cstdint>

#include "src/log/loglist.h"

namespace mediasplit {

// Append to a list of `kCheckpointCapacity` places the entries that every run has, and then those
// that depend on what the list holds already. `count` grows with each entry.
void binary_checkpoint_init(std::int32_t& count, CheckpointText* list);
void force_checkpoint_init(std::int32_t& count, CheckpointText* list);

}  // namespace mediasplit
