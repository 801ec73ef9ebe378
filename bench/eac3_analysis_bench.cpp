// Speed of the E-AC-3 analysis on 100 MB of stream, fed time slice by time slice, beside two plain
// walks over the same bytes: one CRC-16 byte table, and one copy.
#include <benchmark/benchmark.h>

#include <array>
#include <cstring>
#include <vector>

#include "oapinfolib/src/crc.h"
#include "oapinfolib/src/oapinfo_api.h"
#include "tests/support/eac3_builder.h"

namespace {

using mediasplit::OapEsInfo;
using mediasplit::OapParser;
using mediasplit::test_support::Bytes;

constexpr std::size_t kStreamBytes = 100U << 20U;

Bytes independent(unsigned words) {
    mediasplit::test_support::Eac3Spec spec;
    spec.words = words;
    return mediasplit::test_support::build_eac3_frame(spec);
}

Bytes dependent(unsigned words) {
    mediasplit::test_support::Eac3Spec spec;
    spec.words = words;
    spec.strmtyp = 1;
    spec.acmod = 6;
    spec.lfeon = 0;
    spec.chanmap = 0x1A00;
    return mediasplit::test_support::build_eac3_frame(spec);
}

// One time slice of a stream: 5.1 at 448 or 192 kbit/s, or 7.1 at 1024 kbit/s.
Bytes timeslice(std::int64_t kind) {
    switch (kind) {
        case 0:
            return independent(896);
        case 1:
            return independent(384);
        default:
            return mediasplit::test_support::join({independent(1280), dependent(768)});
    }
}

Bytes repeated(const Bytes& slice) {
    Bytes stream;
    stream.reserve(kStreamBytes + slice.size());
    while (stream.size() < kStreamBytes) {
        stream.insert(stream.end(), slice.begin(), slice.end());
    }
    return stream;
}

void set_bytes(benchmark::State& state, const Bytes& stream, const Bytes& slice) {
    const auto rounds = static_cast<std::int64_t>(state.iterations());
    state.SetBytesProcessed(rounds * static_cast<std::int64_t>(stream.size()));
    state.SetItemsProcessed(rounds * static_cast<std::int64_t>(stream.size() / slice.size()));
}

void analysis_by_timeslice(benchmark::State& state) {
    const Bytes slice = timeslice(state.range(0));
    const Bytes stream = repeated(slice);
    const OapParser parser = mediasplit::oap_es_parser_new(1);
    OapEsInfo info;
    for (auto _ : state) {
        for (std::size_t at = 0; at < stream.size(); at += slice.size()) {
            const int result = mediasplit::oap_es_parser(
                stream.data() + at, static_cast<std::uint32_t>(slice.size()), parser.get(), &info);
            if (result != 0 || info.framesets != 1) {
                state.SkipWithError("the stream should be good");
                return;
            }
        }
    }
    set_bytes(state, stream, slice);
}
BENCHMARK(analysis_by_timeslice)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

void analysis_of_whole_stream(benchmark::State& state) {
    const Bytes slice = timeslice(state.range(0));
    const Bytes stream = repeated(slice);
    OapEsInfo info;
    for (auto _ : state) {
        const OapParser parser = mediasplit::oap_es_parser_new(1);
        benchmark::DoNotOptimize(mediasplit::oap_es_parser(
            stream.data(), static_cast<std::uint32_t>(stream.size()), parser.get(), &info));
    }
    set_bytes(state, stream, slice);
}
BENCHMARK(analysis_of_whole_stream)->Arg(0)->Unit(benchmark::kMillisecond);

std::array<std::uint16_t, 256> byte_table() {
    std::array<std::uint16_t, 256> table{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        const auto value = static_cast<std::uint8_t>(byte);
        table[byte] = mediasplit::test_support::reference_crc(&value, 1);
    }
    return table;
}

void plain_crc_loop(benchmark::State& state) {
    const Bytes stream = repeated(timeslice(0));
    const std::array<std::uint16_t, 256> table = byte_table();
    for (auto _ : state) {
        std::uint16_t crc = 0;
        for (const std::uint8_t byte : stream) {
            crc = static_cast<std::uint16_t>(crc << 8U ^ table[(crc >> 8U ^ byte) & 0xFFU]);
        }
        benchmark::DoNotOptimize(crc);
    }
    set_bytes(state, stream, timeslice(0));
}
BENCHMARK(plain_crc_loop)->Unit(benchmark::kMillisecond);

void plain_copy(benchmark::State& state) {
    const Bytes stream = repeated(timeslice(0));
    std::array<std::uint8_t, 4096> frame{};
    const std::size_t size = timeslice(0).size();
    for (auto _ : state) {
        for (std::size_t at = 0; at < stream.size(); at += size) {
            std::memcpy(frame.data(), stream.data() + at, size);
            benchmark::ClobberMemory();
        }
    }
    set_bytes(state, stream, timeslice(0));
}
BENCHMARK(plain_copy)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
