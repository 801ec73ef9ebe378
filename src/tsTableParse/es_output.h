// Output files of the transport stream demultiplexer.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "src/tsTableParse/ts_context.h"

namespace mediasplit {

// The output name of a PID: "<prefix>_PID_<pid>", with "_Bitrate_<bandwidth>bps" behind if the
// manifest has one, made safe as a file name, and ".out.<extension>". Raises 4079 and gives kFailed
// if it is too long; `name` is empty then.
Status buildFileName_ts(std::string& name, std::int64_t pid, const TsContext& context,
                        std::string_view extension, const TsOutputFiles& files);

// Creates the file of a PID (kind 0 audio, 1 video) in the output folder, unless the PID filter
// leaves it out or there is no folder. Raises 4081 if that fails, and the run fails.
Status esCreateWriteCallback(const std::string& name, std::uint32_t kind, std::int64_t pid,
                             TsOutputFiles& files);

// Writes to the file of a PID; an unknown PID, or one that the filter leaves out, writes nothing.
void esWriteCallback(TsOutputFiles& files, std::span<const std::uint8_t> data, std::uint32_t kind,
                     std::int64_t pid);

}  // namespace mediasplit
