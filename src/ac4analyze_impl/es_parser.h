// Service layer of AC-4: an analyzer with a descriptor generator per track, and readers of what a
// frame's analysis says.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "ac4/descriptor_generator/channel_layout.h"
#include "ac4/descriptor_generator/descriptor_generator.h"
#include "src/ac4analyze_impl/frame_analyzer.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/util/bit_reader.h"

namespace mediasplit {

// Instances of both libraries in memory of their own. One per track; no sharing.
struct Ac4EsParser {
    std::unique_ptr<std::byte[]> analyzer_memory;
    std::unique_ptr<std::byte[]> generator_memory;
    Ac4Analyzer* analyzer = nullptr;
    DescriptorGenerator* generator = nullptr;

    Ac4EsParser() = default;
    Ac4EsParser(const Ac4EsParser&) = delete;
    Ac4EsParser& operator=(const Ac4EsParser&) = delete;
    ~Ac4EsParser();
};

// Where a parser takes its parts from; replaced by tests of what happens without them.
struct Ac4EsParserParts {
    std::unique_ptr<std::byte[]> (*allocate)(std::uint64_t bytes);
    int (*open_analyzer)(Ac4Analyzer**, void*, const Ac4AnalyzeConfig*, std::uint64_t);
    int (*open_generator)(DescriptorGenerator**, void*, const DescriptorGeneratorConfig*);
};
extern const Ac4EsParserParts kAc4EsParserParts;

// A parser for whole frames, or null after 3002 (no memory), 3009 or 3010 (a library didn't open).
std::unique_ptr<Ac4EsParser> ac4_es_parser_new(Loglist* loglist,
                                               const Ac4EsParserParts& parts = kAc4EsParserParts);
void ac4_es_parser_delete(std::unique_ptr<Ac4EsParser>& parser);

// Tells the analyzer's version by message 2.
Status ac4_es_parser_version(Loglist* loglist);

// An analysis record. Clearing forgets the frame.
std::unique_ptr<AnalysisRecord> ac4_es_parser_init();
void ac4_es_parser_clear(AnalysisRecord& analysis);
void ac4_es_parser_flush(std::unique_ptr<AnalysisRecord>& analysis);

// A record of what the box should say.
std::unique_ptr<ReferenceDsi> ac4_es_parser_ref_dsi_init();
void ac4_es_parser_ref_dsi_clear(ReferenceDsi& reference);
void ac4_es_parser_ref_dsi_flush(std::unique_ptr<ReferenceDsi>& reference);

// Analyzes a frame; makes the record on first use. The result of orv_ac4analyze_analyze_frame.
int ac4_es_parser(Ac4EsParser& parser, ByteSpan frame, std::unique_ptr<AnalysisRecord>& analysis);

// Analyzes a frame and brings the reference up to it. `number` counts samples from 1. A failed
// analysis, or on the first sample a warning of the generator, is told by a line on standard output
// and kFailed; a first sample of a deprecated bitstream version raises 4488.
Status ac4_es_parser_ref_dsi(Ac4EsParser& parser, ByteSpan frame, ReferenceDsi& reference,
                             AnalysisRecord& analysis, std::uint32_t number, Loglist* loglist);

// Fields of a frame's analysis; 0 for none. Those named "top" read the first presentation.
bool ac4_get_bitstream_b_iframe_global(const AnalysisRecord* analysis);
std::int32_t ac4_get_bitstream_version(const AnalysisRecord* analysis);
// -1 if the frame has no presentation.
std::int32_t ac4_get_presentation_version(const AnalysisRecord* analysis);
std::int32_t ac4_get_top_mdcompat(const AnalysisRecord* analysis);
bool ac4_get_top_b_channel_coded(const AnalysisRecord* analysis);
// A channel mode code.
std::int32_t ac4_get_top_pres_ch_mode(const AnalysisRecord* analysis);
std::int32_t ac4_get_top_pres_top_channel_pairs(const AnalysisRecord* analysis);
std::uint32_t ac4_get_top_channel_layout_count(const AnalysisRecord* analysis);

}  // namespace mediasplit
