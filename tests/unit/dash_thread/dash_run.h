// Plays a Representation of a manifest that a test wrote, in a working folder of its own and by a
// clock of its own, and shows what came of it.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "src/dash_thread/dash_thread.h"
#include "tests/support/worker_run.h"

namespace mediasplit {

// mp4_init() with another default duration of samples.
std::string init_segment(std::uint32_t default_sample_duration = 0);
// Segments of which all samples are gone.
std::string empty_segment();

// A manifest of one Period with the Representation "r" of some bandwidth.
std::string manifest(const std::string& mpd_attributes, const std::string& period_attributes,
                     const std::string& addressing);
// Numbered segments of 2 s, "init.mp4" and "s1.mp4" onward.
inline const std::string kNumbers =
    R"(<SegmentTemplate initialization="init.mp4" media="s$Number$.mp4" duration="2"/>)";

class DashRun : public testing::Test, protected WorkerRun {
protected:
    // init.mp4 and the segments s1.mp4 to s<last>.mp4.
    void add_segments(int last);

    // Plays one reading of the manifest.
    void play(const std::string& mpd, const std::string& url = "stream.mpd");
    void play_address(const std::string& mpd) { play(mpd, server_.url("/stream.mpd")); }
    // Plays readings of the same manifest until no further one is asked for; returns their count.
    int play_to_the_end(const std::string& mpd);

    [[nodiscard]] static std::string output() {
        return read_file("out/stream_init_track_id_1.out.data");
    }
    // Ids without message 3, which names each file, and without 2054, which the fetcher raises.
    [[nodiscard]] Ids ids() const { return ids_without({3, 2054}); }

    OutputRegistry outputs_;

    std::optional<std::string> keypairs_;
    std::int32_t period_index_ = 0;
    std::string representation_ = "r";
    double live_remaining_ = 10.0;
    std::int32_t reload_count_ = 0;
    std::string previous_publish_time_;
    Status status_ = Status::kOk;
    int result_ = -1;
};

}  // namespace mediasplit
