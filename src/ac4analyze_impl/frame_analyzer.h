#pragma once

#include <cstdint>

#include "ac4/descriptor_generator/analysis_record.h"
#include "ac4/framer/framer.h"
#include "ac4/metadata/metadata_state.h"
#include "ac4/toc_reader/toc_reader.h"
#include "base/memlib.h"

namespace mediasplit {

// AC-4 frame analyzer: one frame in, its header facts, presentations, substreams and metadata out,
// with a status word of warnings. Nothing is decoded, nothing printed, nothing allocated after
// open. One thread per instance; all memory is the caller's.
//
// Results: 0 done; 1 more data is needed; 16 no instance; 17 a null argument; 18 the input mode
// takes no feed; 19 unknown input mode; 32 metadata could not be read; 33 the table of contents
// could not be read, the data does not fit, or a part of the analyzer failed.

inline constexpr int kAnalyzeOk = 0;
inline constexpr int kAnalyzeMoreData = 1;
inline constexpr int kAnalyzeNoInstance = 16;
inline constexpr int kAnalyzeNullArgument = 17;
inline constexpr int kAnalyzeWrongMode = 18;
inline constexpr int kAnalyzeUnknownMode = 19;
inline constexpr int kAnalyzeMetadata = 32;
inline constexpr int kAnalyzeToc = 33;

inline constexpr std::int32_t kInputWholeFrames = 2;
inline constexpr std::int32_t kInputRawStream = 3;

struct Ac4AnalyzeConfig {
    std::int32_t input_mode = kInputWholeFrames;
    std::int32_t reserved = 0;  // stored as is
};

struct Ac4Analyzer {
    memlib arena;
    Ac4AnalyzeConfig config;
    Ac4Framer* framer = nullptr;
    Ac4TocReader* toc_reader = nullptr;
    std::uint8_t* stream = nullptr;  // bytes fed and not yet consumed
    std::uint64_t stream_capacity = 0;
    std::uint64_t stream_fill = 0;
    std::uint64_t buffer_size = 0;
    bool seen_frame = false;
    std::int32_t last_sequence_counter = 0;
    std::int32_t frames_since_iframe = 0;
    std::int32_t last_iframe_distance = 0;
    Ac4MetadataState frame_data;  // what metadata carries over from frame to frame
    SelectionRecord selection;
    TocInfo toc;
    AnalysisRecord* result = nullptr;  // while a call runs
};

// Bytes of memory that open needs for frames or a stream buffer of `buffer_size` bytes.
int orv_ac4analyze_query_mem(std::uint64_t buffer_size, std::uint64_t* bytes);

// Places an analyzer in the caller's `memory`.
int orv_ac4analyze_open(Ac4Analyzer** analyzer, void* memory, const Ac4AnalyzeConfig* config,
                        std::uint64_t buffer_size);

// Adds bytes of a raw stream (input mode 3).
int orv_ac4analyze_feed(Ac4Analyzer* analyzer, const std::uint8_t* data, std::uint64_t size);

// Analyzes the frame given (mode 2) or the next one of the stream fed (mode 3; `frame` is then not
// looked at, and `skipped` grows by the bytes that belong to no frame; it may be null). Records of
// presentations and substreams beyond those of this frame keep what they held.
int orv_ac4analyze_analyze_frame(Ac4Analyzer* analyzer, const std::uint8_t* frame,
                                 std::uint64_t size, std::uint64_t* skipped,
                                 AnalysisRecord* result);

// Ends the use of the memory; the caller frees it.
void orv_ac4analyze_close(Ac4Analyzer* analyzer);

// Major, minor and patch number.
const std::uint32_t* orv_ac4analyze_get_version();

// The immersive stereo record of a substream slot, null if the stream brought none.
const ImsInfo* ac4analyze_get_ims_info(const Ac4Analyzer* analyzer, int substream);

// Forgets the running metadata of all substreams.
void init_ac4_frame_data(Ac4Analyzer* analyzer);

// Samples of a frame at the base rate, 0 for a reserved combination.
std::int32_t ac4_frame_length(std::int32_t fs_index, std::int32_t frame_rate_index);

}  // namespace mediasplit
