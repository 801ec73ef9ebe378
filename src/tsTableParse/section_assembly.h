// Sections of program tables put together from packets, and the PAT (ISO/IEC 13818-1 2.4.4.3).
#pragma once

#include <cstddef>

#include "src/tsTableParse/ts_context.h"
#include "src/tsTableParse/ts_tables.h"

namespace mediasplit {

// Adds the payload of the current packet, which begins at `offset`, to the section of its PID, and
// acts on the section once it is complete: the PAT is read, a PMT is read and its streams selected.
// The result is the OR of what was reported.
Status tsTableParse(TsOutputFiles& files, std::size_t offset, TsContext& context, TsTables& tables);

// Reads a complete PAT section into the tables.
void tsTableParsePAT(TsTables& tables, const TsSection& section);

}  // namespace mediasplit
