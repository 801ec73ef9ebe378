// The whole program behind `main`.
#pragma once

namespace mediasplit {

// Opens what is missing of standard input, output and error, on nothing. run_program begins with
// it, and so does whoever opens files ahead of that: the first of them would take such a place, and
// with it what is meant for the terminal.
void open_standard_descriptors();

// Runs the program with the arguments of `main` and returns its exit status.
int run_program(int count, const char* const* arguments);

}  // namespace mediasplit
