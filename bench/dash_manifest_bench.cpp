// Reading manifests of growing size: the tree, the model, and one Representation's segments.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <memory>
#include <string>

#include "src/dash_reader/dash_player.h"
#include "src/dash_reader/dash_reader.h"

namespace {

using namespace mediasplit;

constexpr int kEntries = 50;  // of each timeline

// Of about 10,000 bytes a Representation.
std::string manifest(std::int64_t representations) {
    std::string text = "<MPD><Period><AdaptationSet>";
    for (std::int64_t i = 0; i < representations; ++i) {
        const std::string id = std::to_string(i);
        text += "<Representation id='" + id +
                "' bandwidth='1000'><SegmentTemplate initialization='" + id +
                ".mp4' media='$Number$'><SegmentTimeline>";
        for (int j = 0; j < kEntries; ++j) {
            text += "<S t='" + std::to_string(100000000000LL + j * 1000LL) +
                    "' d='1000' r='0' padding='" + std::string(150, 'x') + "'/>";
        }
        text += "</SegmentTimeline></SegmentTemplate></Representation>";
    }
    return text + "</AdaptationSet></Period></MPD>";
}

double peak_mebibytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

void read_manifest(benchmark::State& state) {
    const std::string text = manifest(state.range(0));
    const std::string last = std::to_string(state.range(0) - 1);
    for (auto _ : state) {
        EzxmlPtr root;
        (void)parse_dash_data(text, nullptr, "m.mpd", &root, nullptr);
        std::unique_ptr<DashInfo> info;
        (void)get_dash_info(&info, root.get(), "m.mpd", kAllPeriods, {}, nullptr);
        std::unique_ptr<DashPlayer> player;
        (void)init_dash_player(&player, root.get(), "m.mpd", 0, last, nullptr);
        benchmark::DoNotOptimize(player);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
    // Of the whole process, so of the largest manifest so far.
    state.counters["peak MiB"] = peak_mebibytes();
    state.SetComplexityN(state.range(0));
}
BENCHMARK(read_manifest)->Arg(20)->Arg(200)->Arg(2000)->Unit(benchmark::kMillisecond)->Complexity();

}  // namespace

BENCHMARK_MAIN();
