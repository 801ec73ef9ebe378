#include "src/ac4analyze_impl/frame_analyzer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <limits>

#include "src/ac4analyze_impl/presentation_analysis.h"

namespace mediasplit {
namespace {

constexpr std::array<std::uint32_t, 3> kVersion = {4, 1, 0};
constexpr std::uint64_t kStreamMargin = 11;
constexpr std::int32_t kLastSequenceCounter = 1020;
constexpr std::array<std::int32_t, 14> kFrameLengths = {1920, 1920, 2048, 1536, 1536, 960, 960,
                                                        1024, 768,  768,  512,  384,  384, 2048};
constexpr std::int32_t kOnlyFrameRate441 = 13;

struct Parts {
    Ac4Analyzer* analyzer = nullptr;
    std::uint64_t* framer_memory = nullptr;
    std::uint64_t* reader_memory = nullptr;
    std::uint8_t* stream = nullptr;
};

std::uint64_t words(std::uint64_t bytes) {
    return (bytes + 7) / 8;
}

auto allocation(Parts* parts, std::uint64_t reader_bytes, std::uint64_t stream_bytes) {
    return [=](memlib* mem, MemPhase phase) {
        memlib_alloc_objects(mem, kMemlibPermanent, parts != nullptr ? &parts->analyzer : nullptr,
                             1, phase);
        memlib_alloc_objects(mem, kMemlibPermanent,
                             parts != nullptr ? &parts->framer_memory : nullptr,
                             words(AC4_ANALYZE_ac4framer_query_mem()), phase);
        memlib_alloc_objects(mem, kMemlibPermanent,
                             parts != nullptr ? &parts->reader_memory : nullptr,
                             words(reader_bytes), phase);
        memlib_alloc_objects(mem, kMemlibPermanent, parts != nullptr ? &parts->stream : nullptr,
                             stream_bytes, phase);
    };
}

void clear_result(AnalysisRecord* result) {
    static_cast<AnalysisHead&>(*result) = AnalysisHead{};
    result->substream_map.fill(kUnusedSlot);
    for (AnalysisSubstream& substream : result->substreams) {
        substream.slot = kUnusedSlot;
    }
    for (AnalysisGroup& group : result->groups) {
        // The others are as they were made.
        if (group.present || group.listed != 0) {
            group = AnalysisGroup{};
        }
    }
}

void copy_toc(const TocInfo& toc, AnalysisRecord* result) {
    result->bitstream_version = toc.bitstream_version;
    result->fs_index = toc.fs_index;
    result->frame_rate_index = toc.frame_rate_index;
    result->wait_frames = toc.wait_frames_plus1 - 1;
    result->br_code = toc.br_code != 0 ? toc.br_code - kBrCodePresent : -1;
    result->bit_rate_mode = toc.bit_rate_mode;
    result->rate_status = toc.rate_status;
    result->rate_mean = toc.rate_mean;
    result->rate_peak = toc.rate_peak;
    result->b_iframe_global = toc.b_iframe_global;
    result->n_presentations_raw = toc.n_presentations;
    result->n_presentations =
        std::min(toc.n_presentations, static_cast<std::int32_t>(kAnalysisPresentations));
    result->sequence_counter = toc.sequence_counter;
    result->program_id_kind = toc.program_id_kind;
    result->short_program_id = toc.short_program_id;
    result->program_uuid = toc.program_uuid;
}

void track_iframes(Ac4Analyzer* analyzer, AnalysisRecord* result) {
    if (result->b_iframe_global) {
        analyzer->last_iframe_distance = analyzer->frames_since_iframe;
        analyzer->frames_since_iframe = 1;
    } else {
        // Frames placed over one another may be any number.
        constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
        analyzer->frames_since_iframe = std::min(analyzer->frames_since_iframe, kMost - 1) + 1;
    }
    result->frames_since_iframe = analyzer->frames_since_iframe;
    result->last_iframe_distance = analyzer->last_iframe_distance;
}

// After a 0 any other value may come; otherwise the counter goes up by one and from 1020 to 1.
bool sequence_breaks(std::int32_t previous, std::int32_t now) {
    if (previous == 0) {
        return now == 0;
    }
    return now != (previous == kLastSequenceCounter ? 1 : previous + 1);
}

void check_sequence(Ac4Analyzer* analyzer, AnalysisRecord* result) {
    const std::int32_t counter = result->sequence_counter;
    if (!analyzer->seen_frame && !result->b_iframe_global) {
        result->status |= kStatusNoIframe;
    }
    if (counter > kLastSequenceCounter) {
        result->status |= kStatusSequenceRange;
    }
    if (analyzer->seen_frame && sequence_breaks(analyzer->last_sequence_counter, counter)) {
        result->status |= kStatusSequenceBreak;
        init_ac4_frame_data(analyzer);
    }
    analyzer->last_sequence_counter = counter;
}

// Walks the table and reads its head; 0 or 33.
int read_toc(Ac4Analyzer* analyzer, const std::uint8_t* frame, std::uint64_t size,
             AnalysisRecord* result) {
    Ac4TocReader* reader = analyzer->toc_reader;
    if (AC4_ANALYZE_ac4toc_reader_feed(reader, frame, size, kFrameKindRaw) != kTocOk) {
        return kAnalyzeToc;
    }
    int code =
        AC4_ANALYZE_ac4toc_reader_get_presentation_selection_info(reader, &analyzer->selection);
    if (code == kTocOk) {
        code = AC4_ANALYZE_ac4toc_reader_get_toc_info(reader, &analyzer->toc);
    }
    if (code == kTocLimit || code == kTocUnsupported) {
        result->status |= toc_status(code);
    }
    return code == kTocOk ? kAnalyzeOk : kAnalyzeToc;
}

void count_substreams(AnalysisRecord* result) {
    const auto used = std::count_if(result->substream_map.begin(), result->substream_map.end(),
                                    [](std::int16_t slot) { return slot != kUnusedSlot; });
    result->substream_count_total = static_cast<std::int32_t>(used);
}

int analyze_raw_frame(Ac4Analyzer* analyzer, const std::uint8_t* frame, std::uint64_t size,
                      AnalysisRecord* result) {
    const int read = read_toc(analyzer, frame, size, result);
    if (read != kAnalyzeOk) {
        return read;
    }
    copy_toc(analyzer->toc, result);
    track_iframes(analyzer, result);
    if (result->n_presentations_raw > result->n_presentations) {
        result->status |= kStatusPresentations;
    }
    check_sequence(analyzer, result);
    const int analyzed = analyze_presentations(analyzer, frame, result);
    if (analyzed != kAnalyzeOk) {
        return analyzed;
    }
    count_substreams(result);
    analyzer->seen_frame = true;
    return kAnalyzeOk;
}

int analyze_from_stream(Ac4Analyzer* analyzer, std::uint64_t* skipped, AnalysisRecord* result) {
    std::uint64_t consumed = 0;
    FramerFrame frame;
    const int framed = AC4_ANALYZE_ac4framer_get_frame(
        analyzer->framer, {analyzer->stream, analyzer->stream_fill}, &consumed, skipped, &frame);
    int analyzed = kAnalyzeMoreData;
    if (framed == 0) {
        result->sync_word = frame.sync_type == kFramerSyncCrc ? 0xAC41 : 0xAC40;
        result->damaged = frame.damaged != 0;
        result->frame_size = frame.size;
        analyzed = analyze_raw_frame(analyzer, frame.data, frame.size, result);
    }
    analyzer->stream_fill -= consumed;
    std::memmove(analyzer->stream, analyzer->stream + consumed,
                 static_cast<std::size_t>(analyzer->stream_fill));
    return analyzed;
}

}  // namespace

int orv_ac4analyze_query_mem(std::uint64_t buffer_size, std::uint64_t* bytes) {
    if (bytes == nullptr) {
        return kAnalyzeNullArgument;
    }
    std::uint64_t reader_bytes = 0;
    if (AC4_ANALYZE_ac4toc_reader_query_mem(&reader_bytes, {buffer_size}) != kTocOk) {
        return kAnalyzeToc;
    }
    *bytes = memlib_query(allocation(nullptr, reader_bytes, buffer_size + kStreamMargin));
    return kAnalyzeOk;
}

int orv_ac4analyze_open(Ac4Analyzer** analyzer, void* memory, const Ac4AnalyzeConfig* config,
                        std::uint64_t buffer_size) {
    if (analyzer == nullptr || memory == nullptr || config == nullptr) {
        return kAnalyzeNullArgument;
    }
    if (config->input_mode != kInputWholeFrames && config->input_mode != kInputRawStream) {
        return kAnalyzeUnknownMode;
    }
    const TocReaderConfig reader_config = {buffer_size};
    std::uint64_t reader_bytes = 0;
    if (AC4_ANALYZE_ac4toc_reader_query_mem(&reader_bytes, reader_config) != kTocOk) {
        return kAnalyzeToc;
    }
    Parts parts;
    const memlib arena =
        memlib_open(memory, allocation(&parts, reader_bytes, buffer_size + kStreamMargin));
    Ac4Analyzer* opened = parts.analyzer;
    if (opened == nullptr) {
        return kAnalyzeToc;
    }
    opened->arena = arena;
    opened->config = *config;
    opened->buffer_size = buffer_size;
    opened->stream = parts.stream;
    opened->stream_capacity = buffer_size + kStreamMargin;
    opened->framer = AC4_ANALYZE_ac4framer_open(parts.framer_memory);
    if (opened->framer == nullptr ||
        AC4_ANALYZE_ac4toc_reader_open(&opened->toc_reader, parts.reader_memory, reader_config) !=
            kTocOk) {
        return kAnalyzeToc;
    }
    AC4_ANALYZE_ac4framer_configure(opened->framer, {buffer_size, 0});
    init_ac4_frame_data(opened);
    *analyzer = opened;
    return kAnalyzeOk;
}

int orv_ac4analyze_feed(Ac4Analyzer* analyzer, const std::uint8_t* data, std::uint64_t size) {
    if (analyzer == nullptr) {
        return kAnalyzeNoInstance;
    }
    if (data == nullptr) {
        return kAnalyzeNullArgument;
    }
    if (analyzer->config.input_mode != kInputRawStream) {
        return kAnalyzeWrongMode;
    }
    if (size > analyzer->stream_capacity - analyzer->stream_fill) {
        return kAnalyzeToc;
    }
    std::memcpy(analyzer->stream + analyzer->stream_fill, data, static_cast<std::size_t>(size));
    analyzer->stream_fill += size;
    return kAnalyzeOk;
}

int orv_ac4analyze_analyze_frame(Ac4Analyzer* analyzer, const std::uint8_t* frame,
                                 std::uint64_t size, std::uint64_t* skipped,
                                 AnalysisRecord* result) {
    if (analyzer == nullptr) {
        return kAnalyzeNoInstance;
    }
    if (result == nullptr) {
        return kAnalyzeNullArgument;
    }
    clear_result(result);
    analyzer->result = result;
    int analyzed = kAnalyzeNullArgument;
    if (analyzer->config.input_mode == kInputRawStream) {
        std::uint64_t dropped = 0;
        analyzed = analyze_from_stream(analyzer, skipped != nullptr ? skipped : &dropped, result);
    } else if (frame != nullptr) {
        result->frame_size = size;
        analyzed = analyze_raw_frame(analyzer, frame, size, result);
    }
    analyzer->result = nullptr;
    return analyzed;
}

void orv_ac4analyze_close(Ac4Analyzer* analyzer) {
    if (analyzer == nullptr) {
        return;
    }
    std::uint64_t reader_bytes = 0;
    AC4_ANALYZE_ac4toc_reader_query_mem(&reader_bytes, {analyzer->buffer_size});
    AC4_ANALYZE_ac4toc_reader_close(analyzer->toc_reader);
    AC4_ANALYZE_ac4framer_close(analyzer->framer);
    analyzer->arena =
        memlib_close(analyzer->arena, allocation(nullptr, reader_bytes, analyzer->stream_capacity));
}

const std::uint32_t* orv_ac4analyze_get_version() {
    return kVersion.data();
}

const ImsInfo* ac4analyze_get_ims_info(const Ac4Analyzer* analyzer, int substream) {
    return analyzer != nullptr ? ac4analyze_get_ims_info(&analyzer->frame_data, substream)
                               : nullptr;
}

void init_ac4_frame_data(Ac4Analyzer* analyzer) {
    ac4_metadata_state_reset(&analyzer->frame_data);
}

std::int32_t ac4_frame_length(std::int32_t fs_index, std::int32_t frame_rate_index) {
    const auto row = static_cast<std::size_t>(frame_rate_index);
    if (row >= kFrameLengths.size() || (fs_index != 1 && frame_rate_index != kOnlyFrameRate441)) {
        return 0;
    }
    return kFrameLengths[row];
}

}  // namespace mediasplit
