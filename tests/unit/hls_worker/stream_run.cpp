#include "tests/unit/hls_worker/stream_run.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "src/util/segments.h"
#include "tests/support/ts_builder.h"

namespace mediasplit {

namespace fs = std::filesystem;

namespace {

mp4::MovieSpec movie() {
    mp4::MovieSpec result;
    mp4::TrackSpec track;
    track.entries = {mp4::box("zzzz", {mp4::zeros(8)})};
    for (int i = 0; i < 9; ++i) {
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

std::string mp4_init() {
    return as_text(mp4::initialization_segment(movie()));
}

std::string mp4_segment(int number) {
    return as_text(mp4::media_segment(movie(), static_cast<std::size_t>(number), 1, 0,
                                      static_cast<std::uint32_t>(number) + 1));
}

std::string ts_segment(const std::string& payload) {
    TsBuilder stream = one_program({{0x0F, 257}});
    PesDescription pes;
    pes.stream_id = 0xC0;
    pes.pts = 90000;
    pes.payload.assign(payload.begin(), payload.end());
    stream.pes(257, pes);
    return as_text(stream.bytes());
}

StreamRun::StreamRun() {
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

StreamRun::~StreamRun() {
    (void)take_timing();
    (void)list_destroy(&list_);
}

void StreamRun::follow(const std::string& playlist, const std::string& url) {
    (void)folder_.write("playlist.read", playlist);
    std::FILE* const file = std::fopen("playlist.read", "r");
    result_ = thread(file, url, "list", "out", context_ ? &*context_ : nullptr, status_, &list_,
                     keypairs_, &live_remaining_, loglist_.get(), outputs_);
    (void)std::fclose(file);
}

std::string StreamRun::output(const std::string& name) const {
    return read_file(folder_.path("out/" + name));
}

std::vector<std::string> StreamRun::files(const std::string& name) const {
    std::vector<std::string> result;
    for (const auto& entry : fs::directory_iterator(folder_.path(name))) {
        result.push_back(entry.path().filename().string());
    }
    std::sort(result.begin(), result.end());
    return result;
}

Ids StreamRun::ids() const {
    Ids result = sink_.ids();
    result.erase(std::remove(result.begin(), result.end(), 3), result.end());
    return result;
}

std::vector<std::string> StreamRun::texts(int id) const {
    std::vector<std::string> result;
    for (const RecordedReport& report : sink_.reports()) {
        if (report.id == id) {
            result.push_back(report.text);
        }
    }
    return result;
}

std::vector<SegmentTiming> StreamRun::take_timing() {
    std::vector<SegmentTiming> result;
    while (const auto record = take_segment_timing(&list_)) {
        result.push_back(*record);
    }
    return result;
}

}  // namespace mediasplit
