#include "tests/support/worker_run.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <mutex>

#include "src/file_util/output_file.h"
#include "src/util/segments.h"
#include "tests/support/mp4_builder.h"

namespace mediasplit {

namespace {

constexpr int kSamples = 12;

mp4::MovieSpec movie() {
    mp4::MovieSpec result;
    mp4::TrackSpec track;
    track.entries = {mp4::box("zzzz", {mp4::zeros(8)})};
    for (int i = 0; i < kSamples; ++i) {
        mp4::SampleSpec sample;
        sample.data = mp4::text(sample_text(i));
        sample.duration = 2000;
        track.samples.push_back(sample);
    }
    result.tracks = {track};
    return result;
}

}  // namespace

std::string as_text(const std::vector<std::uint8_t>& bytes) {
    return {bytes.begin(), bytes.end()};
}

std::string sample_text(int number) {
    return "sample " + std::to_string(number) + ".";
}

std::string samples(int first, int last) {
    std::string result;
    for (int i = first; i <= last; ++i) {
        result += sample_text(i);
    }
    return result;
}

std::string mp4_init() {
    return as_text(mp4::initialization_segment(movie()));
}

std::string mp4_segment(int number) {
    return as_text(mp4::media_segment(movie(), static_cast<std::size_t>(number), 1, 0,
                                      static_cast<std::uint32_t>(number) + 1));
}

std::atomic<std::time_t> TestClock::time = 0;
std::vector<std::uint32_t> TestClock::sleeps;

TestClock::TestClock() {
    time = 1000;
    sleeps.clear();
    player_clock() = {[] { return time.load(); },
                      [](std::uint32_t seconds) {
                          static std::mutex mutex;
                          const std::scoped_lock lock(mutex);
                          sleeps.push_back(seconds);
                          time += seconds;
                      }};
}

TestClock::~TestClock() {
    player_clock() = former_;
}

WorkerRun::WorkerRun() {
    begin_outputs();
    constexpr std::array<CheckpointText, 3> kActive{{{"210000"}, {"310000"}, {"430000"}}};
    loglist_ = init_loglist(kActive.size(), kActive.data());
    const ListParams params{&osal_, 0};
    const ListCallbacks callbacks{cb_malloc, cb_free, nullptr, nullptr};
    (void)list_create(&list_, &params);
    (void)list_register_callbacks(&list_, &callbacks);
    std::filesystem::create_directory("tmp");
    std::filesystem::create_directory("out");
}

WorkerRun::~WorkerRun() {
    (void)take_timing();
    (void)list_destroy(&list_);
}

void WorkerRun::add(const std::string& name, const std::string& content) {
    (void)folder_.write(name, content);
    server_.serve("/" + name, content);
}

std::vector<std::string> WorkerRun::texts(int id) const {
    std::vector<std::string> result;
    for (const RecordedReport& report : sink_.reports()) {
        if (report.id == id) {
            result.push_back(report.text);
        }
    }
    return result;
}

Ids WorkerRun::ids_without(const Ids& left_out) const {
    Ids result = sink_.ids();
    std::erase_if(result, [&](int id) {
        return std::find(left_out.begin(), left_out.end(), id) != left_out.end();
    });
    return result;
}

std::vector<SegmentTiming> WorkerRun::take_timing() {
    std::vector<SegmentTiming> result;
    while (const auto record = take_segment_timing(&list_)) {
        result.push_back(*record);
    }
    return result;
}

}  // namespace mediasplit
