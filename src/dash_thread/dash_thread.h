// Plays one Representation of one Period of a DASH manifest: brings its segments in, in their
// order, and hands each to the demultiplexer.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "base/list.h"
#include "src/file_util/output_file.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// What a Representation's worker is told, and what it keeps from one reading of its manifest to the
// next. The texts and the pointers are the caller's.
struct DashJob {
    OptText url;  // of the manifest
    OptText name;
    OptText output_dir;
    std::int32_t period_index = 0;
    OptText representation_id;
    List* durations = nullptr;  // gets a record for each segment, the last one marked; may be null
    OptText keypairs;           // of --decryption-keys
    Loglist* loglist = nullptr;

    double* live_remaining = nullptr;              // seconds that are still wanted of a live stream
    std::int32_t* reload_count = nullptr;          // readings since the manifest was made
    std::string* previous_publish_time = nullptr;  // of the last reading
    OutputRegistry* outputs = nullptr;             // files opened by this worker
};

// Reads the manifest in `file` (null: parsed from `text`) and plays the Representation. All reports
// are ORed into `status`. Returns 1 if the manifest is to be loaded again, else 0; the end of the
// job leaves an end record on its list. May run on any thread.
int dash_thread(std::FILE* file, OptText text, const DashJob& job, Status& status);

}  // namespace mediasplit
