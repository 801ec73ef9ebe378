// Program map tables (ISO/IEC 13818-1 2.4.4.8).
#pragma once

#include "base/xml_tree.h"
#include "src/tsTableParse/ts_context.h"
#include "src/tsTableParse/ts_tables.h"

namespace mediasplit {

// Reads a complete PMT section into `program`. The result isn't kOk if a descriptor is beyond use;
// `program` is incomplete then. A stream type that isn't known raises 2022 and stays in the table.
// `tree` (may be nullptr) gets the fields.
Status tsTableParsePMT(const TsContext& context, TsProgram& program, const TsSection& section,
                       Ezxml* tree = nullptr);

}  // namespace mediasplit
