// Creating folders for output and temporary files.
#pragma once

#include <string>

#include "src/log/status.h"

namespace mediasplit {

// Creates the folder `path`. Deliberate: only "\\" separates parents that are created on the way; a
// path with "/" needs its parents. 0, or not 0 if a folder couldn't be made or the path is empty.
int recursive_create_path(const std::string& path);

// The same for the output folder; an existing folder is used as it stands. Raises 4080 and returns
// its result if there is no such folder afterwards.
Status open_output_folder(const std::string& path);

}  // namespace mediasplit
