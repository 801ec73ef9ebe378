// Whole analyzer over a sequence of frames, each behind a 16-bit length, or over a raw stream.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "src/ac4analyze_impl/frame_analyzer.h"
#include "tests/fuzz/frame_sequence.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using namespace mediasplit;

constexpr std::uint64_t kBufferSize = 8192;

AnalysisRecord& record() {
    static const std::unique_ptr<AnalysisRecord> kept = std::make_unique<AnalysisRecord>();
    return *kept;
}

void check(int result) {
    if (result != 0 && result != 1 && result != 17 && result != 32 && result != 33) {
        std::abort();
    }
    for (const AnalysisSubstream& substream : record().substreams) {
        const SubstreamSegment& segment = substream.ext.segment;
        if (substream.slot != kUnusedSlot && segment.offset + segment.size > record().frame_size) {
            std::abort();
        }
    }
}

void analyze_frames(Ac4Analyzer* analyzer, const std::uint8_t* data, std::size_t size) {
    for_each_frame(data, size, [analyzer](const std::vector<std::uint8_t>& frame) {
        check(
            orv_ac4analyze_analyze_frame(analyzer, frame.data(), frame.size(), nullptr, &record()));
    });
}

void analyze_stream(Ac4Analyzer* analyzer, const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kPiece = 700;
    std::uint64_t skipped = 0;
    for (std::size_t at = 0; at < size; at += kPiece) {
        if (orv_ac4analyze_feed(analyzer, data + at, std::min(kPiece, size - at)) != 0) {
            break;
        }
        int result = 0;
        while (result != 1) {
            result = orv_ac4analyze_analyze_frame(analyzer, nullptr, 0, &skipped, &record());
            check(result);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) {
        return 0;
    }
    const bool stream = (data[0] & 1U) != 0;
    const Ac4AnalyzeConfig config = {stream ? kInputRawStream : kInputWholeFrames, 0};
    std::uint64_t bytes = 0;
    orv_ac4analyze_query_mem(kBufferSize, &bytes);
    std::vector<std::byte> memory(static_cast<std::size_t>(bytes));
    Ac4Analyzer* analyzer = nullptr;
    if (orv_ac4analyze_open(&analyzer, memory.data(), &config, kBufferSize) != 0) {
        std::abort();
    }
    if (stream) {
        analyze_stream(analyzer, data + 1, size - 1);
    } else {
        analyze_frames(analyzer, data + 1, size - 1);
    }
    orv_ac4analyze_close(analyzer);
    return 0;
}
