// Walking a Representation's segments in order.
#pragma once

#include "base/list.h"
#include "src/dash_reader/dash_player.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/mp4demuxer/records.h"

namespace mediasplit {

// Plays the segments of one reading of the manifest. A live walk joins where the clock of the
// manifest stands, and when it has played one update period or runs out of segments it waits until
// they are over by player_clock(). True if the manifest is to be loaded again (1023), which lasts
// until `player.live_remaining` is used up. All reports are ORed into `status`.
bool play_segments(DashPlayer& player, Mp4Demuxer& demuxer, List* durations, Status& status,
                   Loglist* loglist);

}  // namespace mediasplit
