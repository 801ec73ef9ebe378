// Walks over plain H.264, H.265 and AV1 tracks without output, so that what is looked at in a
// sample is most of the time. Built twice: as the program has it, and with the rules on enhancement
// streams left out (plain_video_without_rules.cpp); plain_video_ratio.py holds one against the
// other.
#include <benchmark/benchmark.h>

#include "src/fmp4demuxer/fmp4demux.h"
#include "tests/support/mp4_builder.h"
#include "tests/support/mp4_input.h"
#include "tests/support/nal_builder.h"

namespace mediasplit {
namespace {

using mp4::Bytes;

constexpr std::size_t kSamples = 4000;
constexpr std::size_t kUnitsInSample = 8;
constexpr std::size_t kUnitSize = 400;
constexpr std::size_t kSamplesInGroup = 50;

Bytes with_length(const Bytes& unit) {
    return mp4::join({mp4::u32(unit.size()), unit});
}

Bytes slice(std::initializer_list<std::uint8_t> header) {
    Bytes unit(kUnitSize, 0xA5);
    std::copy(header.begin(), header.end(), unit.begin());
    return with_length(unit);
}

// Every so many samples begins with parameter sets, as it does in broadcasts.
Bytes file_of(const char* entry, const Bytes& config, const Bytes& sets, const Bytes& unit) {
    mp4::MovieSpec movie;
    mp4::TrackSpec track;
    track.entries = {mp4::video_entry(entry, 1280, 720, {config})};
    for (std::size_t i = 0; i < kSamples; ++i) {
        std::vector<Bytes> parts(kUnitsInSample, unit);
        if (i % kSamplesInGroup == 0) {
            parts.insert(parts.begin(), sets);
        }
        mp4::SampleSpec sample;
        sample.data = mp4::join(parts);
        track.samples.push_back(sample);
    }
    movie.tracks = {track};
    return mp4::plain_file(movie);
}

void walk(benchmark::State& state, const Bytes& file) {
    for (auto _ : state) {
        Status status = Status::kOk;
        auto demuxer = fmp4demux_create(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                        nullptr, &status, nullptr, kAllTracks);
        mp4::MemoryInput input(file);
        benchmark::DoNotOptimize(fmp4demux(&input.file(), nullptr, demuxer.get(), nullptr));
        static_cast<void>(fmp4demux_destroy(std::move(demuxer)));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(file.size()));
}

void h264(benchmark::State& state) {
    const Bytes sps = testing::build_avc_sps({});
    const Bytes pps{0x68, 0xEE};
    walk(state, file_of("avc1", mp4::avcC({sps}, {pps}),
                        mp4::join({with_length(sps), with_length(pps)}), slice({0x41, 0x9A})));
}
BENCHMARK(h264)->Unit(benchmark::kMillisecond);

void h265(benchmark::State& state) {
    const Bytes vps = testing::build_hevc_vps({});
    const Bytes sps = testing::build_hevc_sps({});
    const Bytes pps = testing::build_hevc_pps();
    walk(state, file_of("hvc1", mp4::hvcC({{32, {vps}}, {33, {sps}}, {34, {pps}}}),
                        mp4::join({with_length(vps), with_length(sps), with_length(pps)}),
                        slice({0x02, 0x01})));
}
BENCHMARK(h265)->Unit(benchmark::kMillisecond);

void av1(benchmark::State& state) {
    Bytes unit(kUnitSize, 0xA5);
    unit[0] = 0x32;  // a frame with a size of two bytes
    unit[1] = 0x80 | ((kUnitSize - 3) & 0x7F);
    unit[2] = (kUnitSize - 3) >> 7;
    walk(state, file_of("av01", mp4::box("av1C", {mp4::hex("81084e00")}), {0x12, 0x00}, unit));
}
BENCHMARK(av1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace mediasplit

BENCHMARK_MAIN();
