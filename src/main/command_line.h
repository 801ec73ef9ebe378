// The command line.
#pragma once

namespace mediasplit {

// What `cmdParse` returns when there are no arguments at all.
inline constexpr int kNoArguments = -2;

// Reads the arguments (with the program's name as the first) into the options of the run, and tells
// the kind of the input and the active checkpoints. Returns `kNoArguments`, or the OR of the codes
// of the errors it raised: 0 when there is nothing against a run. "-v" and "-h" print what they ask
// for and end the reading with 0.
int cmdParse(int count, const char* const* arguments);

}  // namespace mediasplit
