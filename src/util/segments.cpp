#include "src/util/segments.h"

#include "src/log/logging.h"

namespace mediasplit {

Status safe_output_segment_url(const SegmentSlot* slot, Loglist* loglist) {
    if (slot == nullptr || !slot->uri) {
        return Status::kOk;
    }
    return Logging_err_type_check(loglist, 3, LogContext{}, *slot->uri);
}

void bubbleSegment(List* list, std::unique_ptr<SegmentTiming>& record) {
    if (record && list != nullptr &&
        list_insert_element(list, kListTail, record.get()) == kListOk) {
        (void)record.release();  // The list carries it now.
    }
    record.reset();
}

std::unique_ptr<SegmentTiming> take_segment_timing(List* list) {
    void* payload = nullptr;
    (void)list_remove_element(list, kListHead, &payload);
    return std::unique_ptr<SegmentTiming>(static_cast<SegmentTiming*>(payload));
}

}  // namespace mediasplit
