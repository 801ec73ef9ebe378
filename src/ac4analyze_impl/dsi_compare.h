// Comparison of an AC-4 specific box with the elementary stream.
#pragma once

#include "ac4/descriptor_generator/dsi_record.h"
#include "src/log/loglist.h"
#include "src/log/status.h"

namespace mediasplit {

// Holds a box against what a frame says it should be, field by field; each difference raises its
// message (4415 to 4473, 4484, 2049). `b_iframe_global` is the frame's. Notes in the box's
// presentations what the stream says of the sphere indicator. Returns the OR of all message
// results, 0 without a record or where the box has presentations that aren't described. Frames that
// ask for far more than sound ones use up what the record has to spare: the comparison ends for
// good then, with a note.
Status ac4_Ac4SpecificBox_comp(const ReferenceDsi* reference, DsiRecord* record,
                               bool b_iframe_global, Loglist* loglist);

// Holds what the box says of the sphere indicator against all frames compared so far (4473), unless
// the comparison has ended.
Status ac4_check_sphere_indicators(const DsiRecord& record, Loglist* loglist);

}  // namespace mediasplit
