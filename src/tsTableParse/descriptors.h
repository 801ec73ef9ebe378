// Descriptors of program and elementary streams (ISO/IEC 13818-1 2.6).
#pragma once

#include <cstddef>

#include "base/xml_tree.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/tsTableParse/section_bytes.h"
#include "src/tsTableParse/ts_tables.h"

namespace mediasplit {

// Reads the descriptor at the start of `bytes`; `consumed` gets its length with the two bytes
// ahead of it. The result is that of the parser of its tag. `tree` (may be nullptr) gets the
// fields.
Status tsTableParseDescriptor(SectionBytes bytes, TsDescriptor& descriptor, std::size_t& consumed,
                              Ezxml* tree, Loglist* loglist);

// Enhanced AC-3 descriptor. Deliberate: one layout, the ATSC one, serves both tags.
void tsTableParseEAC3Descriptor(SectionBytes bytes, Ec3TsDescriptor& ec3, Ezxml* tree);

// Enhancement-layer video descriptor. The result isn't kOk when profile, level or compatibility id
// are outside their ranges (4254, 4255, 4256); nothing behind the bad field is read then.
Status tsTableParsePRSMDescriptor(SectionBytes bytes, PrsmTsDescriptor& prsm, Ezxml* tree,
                                  Loglist* loglist);

}  // namespace mediasplit
