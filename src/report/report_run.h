// The whole program behind `main`.
#pragma once

namespace mediasplit::report {

/// Runs the program with the arguments of `main` and returns its exit status: that of the run, 1 if
/// the report can't be written, 2 if the run succeeded and has findings that --fail-on asks for.
int run_reporting(int count, const char* const* arguments);

}  // namespace mediasplit::report
