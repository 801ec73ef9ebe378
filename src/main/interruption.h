// What the program does with signals, and without memory.
#pragma once

namespace mediasplit {

// A reader that went away, or a file that reached its size limit, shows as a failed write and not
// as a signal. A run that is interrupted or told to end removes its fetched files and then ends by
// that signal; signals that the caller had ignored stay ignored. Called before any thread exists.
void prepare_for_signals();

// A run that gets no more memory tells so on the error stream, removes its fetched files and ends
// with status 1, whichever thread it was.
void prepare_for_want_of_memory();

}  // namespace mediasplit
