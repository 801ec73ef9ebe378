// Small services around segments that several followers and demultiplexers share.
#pragma once

#include <memory>

#include "base/list.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/records/segment_slot.h"
#include "src/records/segment_timing.h"

namespace mediasplit {

// Message 3 with the slot's address, if it has one.
Status safe_output_segment_url(const SegmentSlot* slot, Loglist* loglist);

// Hands a record over to the tail of `list`, whose reader frees it (take_segment_timing). Without a
// list, or if it takes no more, the record is freed here. `record` is empty afterwards.
void bubbleSegment(List* list, std::unique_ptr<SegmentTiming>& record);

// The record at the head of `list`; none if it is empty.
std::unique_ptr<SegmentTiming> take_segment_timing(List* list);

}  // namespace mediasplit
