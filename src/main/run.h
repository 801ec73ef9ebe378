// The whole program behind `main`.
#pragma once

namespace mediasplit {

// Runs the program with the arguments of `main` and returns its exit status.
int run_program(int count, const char* const* arguments);

}  // namespace mediasplit
