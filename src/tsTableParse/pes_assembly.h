// PES packets put together from transport packets (ISO/IEC 13818-1 2.4.3.6).
#pragma once

#include <cstddef>
#include <cstdint>

#include "src/tsTableParse/ts_context.h"
#include "src/tsTableParse/ts_tables.h"

namespace mediasplit {

// Adds the payload of the current packet, which begins at `offset`, to `pes`. A start writes what
// was collected before; a packet whose length is reached is checked against the PMT and written.
// The result is the OR of what was reported, kRuleBroken for a PES header that is refused.
Status tsPacketParsePESData(TsOutputFiles& files, std::size_t offset, PesBuffer& pes,
                            TsContext& context, const TsTables& tables);

// Writes what was collected, folds its PTS into the stream's range and makes the buffer idle.
void tsPacketFlushPESData(TsOutputFiles& files, PesBuffer& pes, TsContext& context,
                          std::int64_t pid);

// Makes the buffer idle: header fields cleared, no PTS. `dts` and the totals stay.
void tsPacketParserInitPESpacket(PesBuffer& pes);

// Place of an audio PID in the order of discovery, or -1.
int tsPacketParserGetAudioStreamIdx(const TsContext& context, std::int64_t pid);

}  // namespace mediasplit
