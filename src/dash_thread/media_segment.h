// Taking one segment of a Representation apart, and telling how long it lasted.
#pragma once

#include <optional>
#include <string>

#include "base/list.h"
#include "src/commonfileio/input_file.h"
#include "src/dash_reader/dash_player.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/mp4demuxer/records.h"

namespace mediasplit {

// True if the player follows a live presentation that is loaded anew: numbered or timed segments of
// a dynamic manifest behind an http(s) address.
bool is_live(const DashPlayer& player);

// Demultiplexes the segment in `file`, which get_segment_file opened, with its byte range as
// written, and closes it. The durations of media segments go to `durations` (may be null) one
// segment late, so that the last one can be marked. All reports are ORed into `status`. True if
// the walk goes on.
bool play_cur_segment(DashPlayer& player, InputFile& file, const std::optional<std::string>& range,
                      Mp4Demuxer& demuxer, List* durations, Status& status, Loglist* loglist);

// Sends the duration held back, marked as the last one, or an end record without one.
void release_last_segment_duration(DashPlayer& player, List* durations);

// Tells the reader of `durations` (may be null) that nothing more comes from this stream.
void segment_duration_list_end(List* durations);

}  // namespace mediasplit
