// Boxes of any kind: a walk over the whole input, lookups in what it left, and a second walk over
// the rear half as a further segment of the same presentation.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <span>

#include "src/mp4demuxer/mp4demuxer.h"
#include "tests/support/mp4_input.h"

namespace {

constexpr std::uint32_t kMostSamples = 5000;

void look_samples_up(const mediasplit::Mp4Demuxer& demuxer) {
    using namespace mediasplit;
    Mp4Sample sample;
    std::uint64_t sum = 0;
    for (std::uint32_t t = 0; t < demuxer.stream_count; ++t) {
        const Mp4Stream& stream = *demuxer.streams[t];
        for (std::uint32_t i = 0; i < std::min(stream.num_samples, kMostSamples); ++i) {
            if (mp4demuxer_get_sample(demuxer, t, i, sample) == nullptr) {
                break;
            }
            sum += sample.offset;
            if (sample.senc != nullptr) {
                for (const std::uint8_t byte : senc_iv(stream, *sample.senc)) {
                    sum += byte;
                }
                for (const Subsample& subsample : senc_subsamples(stream, *sample.senc)) {
                    sum += subsample.protected_bytes;
                }
            }
        }
        for (const std::uint32_t i : {stream.num_samples / 2, 0xFFFFFFFFU, 0U}) {
            sum += get_sample_offset(stream, i).value_or(0) + get_sample_pts(stream, i) +
                   get_sample_dts(stream, i) + get_sample_flags(stream, i) +
                   get_sample_size(stream, i) + get_sample_duration(stream, i);
        }
    }
    // Keeps the lookups from being dropped.
    volatile std::uint64_t sink = sum;
    static_cast<void>(sink);
}

bool silence_output() {
    static_cast<void>(std::freopen("/dev/null", "w", stdout));
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool silent = silence_output();
    static_cast<void>(silent);
    const std::span<const std::uint8_t> bytes(data, size);
    const auto demuxer = mediasplit::mp4::walk(bytes);
    look_samples_up(*demuxer);
    mediasplit::mp4::walk_again(*demuxer, bytes.subspan(size / 2));
    look_samples_up(*demuxer);
    return 0;
}
