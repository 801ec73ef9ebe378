// Follows one HLS media playlist: brings its segments in, in their order, and hands each to the
// demultiplexer of its format.
#pragma once

#include <cstdio>

#include "base/list.h"
#include "src/file_util/output_file.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/records/manifest_context.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// What a stream's job keeps from one reload of its playlist to the next, so that every round adds
// to the same files.
struct StreamOutputs {
    OutputRegistry registry;  // files opened by this job
    bool has_begun = false;   // a segment was demultiplexed
};

// Follows the playlist in `file` (nullptr: it couldn't be opened), named `url`, to its end. Files
// are named after `name` in `output_dir`. `context` (may be nullptr) is what the master playlist
// says of the stream, and gets what the CHANNELS attribute tells. All reports are ORed into
// `status`. `sync_list` (may be nullptr) gets a record for each segment, the last one marked.
// `keypairs` are the pairs of --decryption-keys. `live_remaining` (may be nullptr) is how many
// seconds of media are still wanted of an address. Returns 1 if the playlist is to be loaded again,
// else 0. May run on any thread.
int thread(std::FILE* file, OptText url, OptText name, OptText output_dir, ManifestContext* context,
           Status& status, List* sync_list, OptText keypairs, double* live_remaining,
           Loglist* loglist, StreamOutputs& outputs);

// Tells the reader of `sync_list` (may be nullptr) that nothing more comes from this stream.
void send_end_record(List* sync_list);

}  // namespace mediasplit
