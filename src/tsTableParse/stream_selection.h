// Which streams of a program are written, and under what extension.
#pragma once

#include "src/tsTableParse/ts_context.h"
#include "src/tsTableParse/ts_tables.h"

namespace mediasplit {

// Selects `stream` if its type, or for private data its descriptors, say that it is audio or video,
// and opens its file. A stream that is selected already is passed over; a second video PID raises
// 4075. The result is the OR of what was reported, without the opening of the file.
Status select_stream(TsOutputFiles& files, const TsElementaryStream& stream, TsContext& context);

}  // namespace mediasplit
