#include "tests/unit/dash_thread/dash_run.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "src/util/segments.h"

namespace mediasplit {

namespace fs = std::filesystem;

namespace {

mp4::MovieSpec movie() {
    mp4::MovieSpec result;
    mp4::TrackSpec track;
    track.entries = {mp4::box("zzzz", {mp4::zeros(8)})};
    for (int i = 0; i < 12; ++i) {
        mp4::SampleSpec sample;
        sample.data = mp4::text(sample_text(i));
        sample.duration = 2000;
        track.samples.push_back(sample);
    }
    result.tracks = {track};
    return result;
}

std::string as_text(const std::vector<std::uint8_t>& bytes) {
    return {bytes.begin(), bytes.end()};
}

}  // namespace

std::time_t TestClock::time = 0;
std::vector<std::uint32_t> TestClock::sleeps;

TestClock::TestClock() {
    time = 1000;
    sleeps.clear();
    player_clock() = {[] { return time; },
                      [](std::uint32_t seconds) {
                          sleeps.push_back(seconds);
                          time += seconds;
                      }};
}

TestClock::~TestClock() {
    player_clock() = former_;
}

std::string sample_text(int number) {
    return "sample " + std::to_string(number) + ".";
}

std::string init_segment(std::uint32_t default_sample_duration) {
    std::string bytes = as_text(mp4::initialization_segment(movie()));
    // Type, version and flags, track id and description index stand ahead of it.
    const std::size_t at = bytes.find("trex") + 16;
    bytes.replace(at, 4, as_text(mp4::u32(default_sample_duration)));
    return bytes;
}

std::string segment(int number) {
    return as_text(mp4::media_segment(movie(), static_cast<std::size_t>(number), 1, 0,
                                      static_cast<std::uint32_t>(number) + 1));
}

std::string empty_segment() {
    return as_text(mp4::box("free", {mp4::zeros(8)}));
}

std::string samples(int first, int last) {
    std::string result;
    for (int i = first; i <= last; ++i) {
        result += sample_text(i);
    }
    return result;
}

std::string manifest(const std::string& mpd_attributes, const std::string& period_attributes,
                     const std::string& addressing) {
    return "<MPD " + mpd_attributes + "><Period " + period_attributes +
           R"(><AdaptationSet><Representation id="r" bandwidth="1">)" + addressing +
           "</Representation></AdaptationSet></Period></MPD>";
}

DashRun::DashRun() {
    constexpr std::array<CheckpointText, 3> kActive{{{"210000"}, {"310000"}, {"430000"}}};
    loglist_ = init_loglist(kActive.size(), kActive.data());
    osal_ = {nullptr, cb_malloc, cb_free};
    const ListParams params{&osal_, 0};
    const ListCallbacks callbacks{cb_malloc, cb_free, nullptr, nullptr};
    EXPECT_EQ(list_create(&list_, &params), kListOk);
    EXPECT_EQ(list_register_callbacks(&list_, &callbacks), kListOk);
    fs::create_directory("tmp");
    fs::create_directory("out");
}

DashRun::~DashRun() {
    (void)take_timing();
    (void)list_destroy(&list_);
}

void DashRun::add(const std::string& name, const std::string& content) {
    (void)folder_.write(name, content);
    server_.serve("/" + name, content);
}

void DashRun::add_segments(int last) {
    add("init.mp4", init_segment());
    for (int i = 1; i <= last; ++i) {
        add("s" + std::to_string(i) + ".mp4", segment(i));
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

Ids DashRun::ids() const {
    Ids result = sink_.ids();
    const auto is_noise = [](int id) { return id == 3 || id == 2054; };
    result.erase(std::remove_if(result.begin(), result.end(), is_noise), result.end());
    return result;
}

std::vector<std::string> DashRun::texts(int id) const {
    std::vector<std::string> result;
    for (const RecordedReport& report : sink_.reports()) {
        if (report.id == id) {
            result.push_back(report.text);
        }
    }
    return result;
}

std::vector<SegmentTiming> DashRun::take_timing() {
    std::vector<SegmentTiming> result;
    while (const auto record = take_segment_timing(&list_)) {
        result.push_back(*record);
    }
    return result;
}

}  // namespace mediasplit
