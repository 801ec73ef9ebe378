// The fetched files that are in use: what a run that is ended by a signal must not leave behind.
#pragma once

#include <cstdio>
#include <string>

namespace mediasplit {

// Notes that a fetched file is about to stand at `path`. May be called from any thread.
void note_fetched_file(const std::string& path);

// Notes a fetched file and opens it for writing; nullptr, and no note, if it can't be opened. May
// be called from any thread. Doesn't return once stop_fetched_files() was called.
std::FILE* create_fetched_file(const std::string& path);

// Takes the note back; the file stays.
void forget_fetched_file(const std::string& path);

// Removes the file and its note; the result is that of std::remove. Also right for a file that was
// never noted. May be called from any thread.
int remove_fetched_file(const std::string& path);

// Lets no thread create another fetched file, and waits for those that are at it (a second at the
// most: the interrupted thread may hold what they wait for). The run must end then. Does only what
// a signal handler may do.
void stop_fetched_files();

// Removes all files that are noted. Does only what a signal handler may do.
void remove_all_fetched_files();

}  // namespace mediasplit
