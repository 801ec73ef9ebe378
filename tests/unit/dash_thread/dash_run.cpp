#include "tests/unit/dash_thread/dash_run.h"

#include <cstdio>

#include "tests/support/mp4_builder.h"

namespace mediasplit {

std::string init_segment(std::uint32_t default_sample_duration) {
    std::string bytes = mp4_init();
    // Type, version and flags, track id and description index stand ahead of it.
    const std::size_t at = bytes.find("trex") + 16;
    bytes.replace(at, 4, as_text(mp4::u32(default_sample_duration)));
    return bytes;
}

std::string empty_segment() {
    return as_text(mp4::box("free", {mp4::zeros(8)}));
}

std::string manifest(const std::string& mpd_attributes, const std::string& period_attributes,
                     const std::string& addressing) {
    return "<MPD " + mpd_attributes + "><Period " + period_attributes +
           R"(><AdaptationSet><Representation id="r" bandwidth="1">)" + addressing +
           "</Representation></AdaptationSet></Period></MPD>";
}

void DashRun::add_segments(int last) {
    add("init.mp4", init_segment());
    for (int i = 1; i <= last; ++i) {
        add("s" + std::to_string(i) + ".mp4", mp4_segment(i));
    }
}

void DashRun::play(const std::string& mpd, const std::string& url) {
    (void)folder_.write("manifest.read", mpd);
    std::FILE* const file = std::fopen("manifest.read", "r");
    DashJob job;
    job.url = url;
    job.name = "stream";
    job.output_dir = "out";
    job.period_index = period_index_;
    job.representation_id = representation_;
    job.durations = &list_;
    job.keypairs = keypairs_;
    job.loglist = loglist_.get();
    job.live_remaining = &live_remaining_;
    job.reload_count = &reload_count_;
    job.previous_publish_time = &previous_publish_time_;
    job.outputs = &outputs_;
    result_ = dash_thread(file, nullptr, job, status_);
    (void)std::fclose(file);
}

int DashRun::play_to_the_end(const std::string& mpd) {
    constexpr int kMostReadings = 1000;
    int readings = 0;
    do {
        play_address(mpd);
        ++readings;
    } while (result_ == 1 && readings < kMostReadings);
    return readings;
}

}  // namespace mediasplit
