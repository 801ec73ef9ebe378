// Frames per second of the AC-4 table of contents reader and the frame analyzer.
//
// "walk" forgets the table before each frame, so that every frame is walked; "fast" lets the reader
// compare the table with the last one. The frames of a run differ in their sequence counter and
// EMDF protection, as those of a stream do.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "ac4/toc_reader/toc_reader.h"
#include "src/ac4analyze_impl/frame_analyzer.h"
#include "tests/support/ac4_builder.h"

namespace {

using namespace mediasplit;

constexpr std::uint64_t kBufferSize = 0x20000;

enum Stream : std::int64_t { kStereo, kMainAndDialogue, kManyPresentations };

std::vector<Ac4Bytes> make_frames(std::int64_t stream) {
    BuildFrame frame = stream == kStereo            ? simple_stereo_frame(400)
                       : stream == kMainAndDialogue ? main_and_dialogue_frame(400)
                                                    : many_presentations_frame(512, 64);
    std::vector<Ac4Bytes> frames;
    for (std::uint32_t i = 1; i <= 8; ++i) {
        frame.sequence_counter = i;
        for (BuildPresentation& presentation : frame.presentations) {
            presentation.emdf.protection = static_cast<std::uint8_t>(i);
        }
        frames.push_back(write_ac4_frame(frame));
    }
    return frames;
}

void name_stream(benchmark::State& state) {
    constexpr const char* kNames[] = {"stereo", "5.1+dialogue", "512 presentations"};
    state.SetLabel(kNames[state.range(0)]);
    state.SetItemsProcessed(state.iterations());
}

void read_tables(benchmark::State& state, bool fast) {
    const std::vector<Ac4Bytes> frames = make_frames(state.range(0));
    std::uint64_t size = 0;
    AC4_ANALYZE_ac4toc_reader_query_mem(&size, {kBufferSize});
    std::vector<std::byte> memory(static_cast<std::size_t>(size));
    Ac4TocReader* reader = nullptr;
    AC4_ANALYZE_ac4toc_reader_open(&reader, memory.data(), {kBufferSize});
    SelectionRecord selection;
    TocInfo toc;
    std::size_t next = 0;
    for ([[maybe_unused]] auto _ : state) {
        const Ac4Bytes& frame = frames[next++ % frames.size()];
        if (!fast) {
            AC4_ANALYZE_ac4toc_reader_new_program(reader);
        }
        AC4_ANALYZE_ac4toc_reader_feed(reader, frame.data(), frame.size(), kFrameKindRaw);
        if (AC4_ANALYZE_ac4toc_reader_get_presentation_selection_info(reader, &selection) != 0 ||
            AC4_ANALYZE_ac4toc_reader_get_toc_info(reader, &toc) != 0) {
            state.SkipWithError("a frame was refused");
            break;
        }
        benchmark::DoNotOptimize(toc.n_presentations);
    }
    AC4_ANALYZE_ac4toc_reader_close(reader);
    name_stream(state);
}

void analyze_frames(benchmark::State& state, bool fast) {
    const std::vector<Ac4Bytes> frames = make_frames(state.range(0));
    std::uint64_t size = 0;
    orv_ac4analyze_query_mem(kBufferSize, &size);
    std::vector<std::byte> memory(static_cast<std::size_t>(size));
    Ac4Analyzer* analyzer = nullptr;
    const Ac4AnalyzeConfig config;
    orv_ac4analyze_open(&analyzer, memory.data(), &config, kBufferSize);
    const auto record = std::make_unique<AnalysisRecord>();
    std::size_t next = 0;
    for ([[maybe_unused]] auto _ : state) {
        const Ac4Bytes& frame = frames[next++ % frames.size()];
        if (!fast) {
            AC4_ANALYZE_ac4toc_reader_new_program(analyzer->toc_reader);
        }
        if (orv_ac4analyze_analyze_frame(analyzer, frame.data(), frame.size(), nullptr,
                                         record.get()) != 0) {
            state.SkipWithError("a frame was refused");
            break;
        }
        benchmark::DoNotOptimize(record->status);
    }
    orv_ac4analyze_close(analyzer);
    name_stream(state);
}

void toc_walk(benchmark::State& state) {
    read_tables(state, false);
}
void toc_fast(benchmark::State& state) {
    read_tables(state, true);
}
void analyzer_walk(benchmark::State& state) {
    analyze_frames(state, false);
}
void analyzer_fast(benchmark::State& state) {
    analyze_frames(state, true);
}

BENCHMARK(toc_walk)->DenseRange(kStereo, kManyPresentations);
BENCHMARK(toc_fast)->DenseRange(kStereo, kManyPresentations);
BENCHMARK(analyzer_walk)->DenseRange(kStereo, kManyPresentations);
BENCHMARK(analyzer_fast)->DenseRange(kStereo, kManyPresentations);

}  // namespace

BENCHMARK_MAIN();
