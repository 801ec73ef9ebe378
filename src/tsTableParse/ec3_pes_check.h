// Holds the E-AC-3 frames of a PES packet against the descriptor of the PMT.
#pragma once

#include "src/log/status.h"
#include "src/tsTableParse/ts_context.h"
#include "src/tsTableParse/ts_tables.h"

namespace mediasplit {

// The E-AC-3 parser of the current PID, made on first use; nullptr when there are ten others.
OapParserState* tsPacketParserGetOAPinfo(TsContext& context, std::int64_t pid);

// Checks the collected bytes of `pes`. The first rule that is broken ends the check with its
// result. Notes the whole frames of the packet in the stream's record.
Status tsPacketParsePESData_EC3(const Ec3TsDescriptor& descriptor, const PesBuffer& pes,
                                TsContext& context);

}  // namespace mediasplit
