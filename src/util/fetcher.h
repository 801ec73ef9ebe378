// Fetching http and https addresses into local files, through libcurl.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "src/log/loglist.h"
#include "src/util/opt_text.h"

namespace mediasplit {

inline constexpr std::uint64_t kUnlimitedFetch = ~std::uint64_t{0};

// Limits of every fetch.
struct FetchLimits {
    long timeout_seconds = 300;
    long redirects = 20;
    // Of a playlist or manifest. They are read into memory as a whole; the longest of a day's live
    // window are some megabytes.
    std::uint64_t manifest_bytes = 64U << 20U;
};
// The limits in force. Change them only while no other thread runs.
FetchLimits& fetch_limits();

// Sets libcurl up, before any thread exists, and lets it go.
void urlinit();
void urluninit();

// Fetches `url`, cleaned by remove_parent_folder, into `path`; one try, redirects followed. 0; -1
// if an argument is missing or `path` can't be opened; else libcurl's code, with message 2054 and
// no file left. More than `most_bytes` are a failed download, too (libcurl's code 23). The file is
// noted until remove_fetched_file(). May run on any thread.
int url2file(OptText url, OptText path, std::uint64_t most_bytes = kUnlimitedFetch);

// url2file() of a segment, in up to three tries: true once one succeeds. One that fails raises 2052
// and is followed by a pause of whole seconds, at most as long as a server is waited for.
// Deliberate: the pause follows the last try, too.
bool fetch_segment(const std::string& url, const std::string& path, double pause_seconds,
                   Loglist* loglist);

// Passes fetched bytes on to `file`; the number of items written.
std::size_t write_data(const void* data, std::size_t size, std::size_t count, std::FILE* file);

// `url` without "/./" and "/../". Deliberate: a "/../" takes the text from the last separator ahead
// of it along, wherever that text stands, so one that climbs too high eats the host name. 0; or 1
// with `out` empty if `url` is missing or longer than 1023 characters.
int remove_parent_folder(std::string& out, OptText url);

}  // namespace mediasplit
