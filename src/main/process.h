// The run over one input.
#pragma once

#include <cstdint>

#include "src/log/loglist.h"

namespace mediasplit {

// Takes the input of the run options apart by its kind and prints the closing line. `data` and
// `size` are not used. Returns the exit status: 1 if a failure was reported, otherwise 0; broken
// rules alone leave it 0.
int process(const std::uint8_t* data, std::uint32_t size, Loglist* loglist);

}  // namespace mediasplit
