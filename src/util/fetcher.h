// Fetching http and https addresses into local files, through libcurl.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

#include "src/util/opt_text.h"

namespace mediasplit {

// Limits of every fetch.
struct FetchLimits {
    long timeout_seconds = 300;
    long redirects = 20;
};
// The limits in force. Change them only while no other thread runs.
FetchLimits& fetch_limits();

// Sets libcurl up, before any thread exists, and lets it go.
void urlinit();
void urluninit();

// Fetches `url`, cleaned by remove_parent_folder, into `path`; one try, redirects followed. 0; -1
// if an argument is missing or `path` can't be opened; else libcurl's code, with message 2054 and
// no file left. May run on any thread.
int url2file(OptText url, OptText path);

// Passes fetched bytes on to `file`; the number of items written.
std::size_t write_data(const void* data, std::size_t size, std::size_t count, std::FILE* file);

// `url` without "/./" and "/../". Deliberate: a "/../" takes the text from the last separator ahead
// of it along, wherever that text stands, so one that climbs too high eats the host name. 0; or 1
// with `out` empty if `url` is missing or longer than 1023 characters.
int remove_parent_folder(std::string& out, OptText url);

}  // namespace mediasplit
