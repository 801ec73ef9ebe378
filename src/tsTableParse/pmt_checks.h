// Rules on program map tables, with the HLS manifest where there is one.
#pragma once

#include "src/tsTableParse/ts_context.h"
#include "src/tsTableParse/ts_tables.h"

namespace mediasplit {

// Judges the first parsed program, as long as may_repeat_tables. The result is the OR of what was
// reported. What the descriptors say of the channels is noted in the manifest record of `context`.
Status check_pmt(TsContext& context, const TsTables& tables);

}  // namespace mediasplit
