#include "src/ac4analyze_impl/es_parser.h"

#include <new>
#include <string>

#include "src/log/logging.h"
#include "src/log/output.h"

namespace mediasplit {
namespace {

constexpr std::uint64_t kStreamBufferSize = 0x20000;
constexpr const char* kFolder = "../../../../mediacheck2/src/ac4analyze_impl";
constexpr std::int32_t kOldestSupportedVersion = 2;

std::unique_ptr<std::byte[]> allocate_zeroed(std::uint64_t bytes) {
    // Not make_unique: a lack of memory is told, not thrown.
    auto* memory = new (std::nothrow) std::byte[static_cast<std::size_t>(bytes)]();
    return std::unique_ptr<std::byte[]>(memory);
}

void print_internal_error(const char* operation, std::uint32_t code) {
    write_to_stdout("Internal error of " + std::string(operation) + ": " + std::to_string(code) +
                    "\n");
}

bool allocate_blocks(Ac4EsParser& parser, const Ac4EsParserParts& parts) {
    std::uint64_t analyzer_bytes = 0;
    std::uint64_t generator_bytes = 0;
    const DescriptorGeneratorConfig config;
    if (orv_ac4analyze_query_mem(kStreamBufferSize, &analyzer_bytes) != kAnalyzeOk ||
        orv_ac4_descriptor_generator_query_mem_size(&config, &generator_bytes) != kDescriptorOk) {
        return false;
    }
    parser.analyzer_memory = parts.allocate(analyzer_bytes);
    parser.generator_memory = parts.allocate(generator_bytes);
    return parser.analyzer_memory != nullptr && parser.generator_memory != nullptr;
}

const AnalysisPresentation& top_presentation(const AnalysisRecord* analysis) {
    static const AnalysisPresentation none;
    return analysis != nullptr ? analysis->presentations[0] : none;
}

}  // namespace

const Ac4EsParserParts kAc4EsParserParts = {allocate_zeroed, orv_ac4analyze_open,
                                            orv_ac4_descriptor_generator_open};

Ac4EsParser::~Ac4EsParser() {
    orv_ac4_descriptor_generator_close(generator);
    orv_ac4analyze_close(analyzer);
}

std::unique_ptr<Ac4EsParser> ac4_es_parser_new(Loglist* loglist, const Ac4EsParserParts& parts) {
    auto parser = std::make_unique<Ac4EsParser>();
    if (!allocate_blocks(*parser, parts)) {
        static_cast<void>(Logging_err_type_check(loglist, 3002, {}, kFolder, __LINE__));
        return nullptr;
    }
    const Ac4AnalyzeConfig analyzer_config = {kInputWholeFrames, 0};
    if (parts.open_analyzer(&parser->analyzer, parser->analyzer_memory.get(), &analyzer_config,
                            kStreamBufferSize) != kAnalyzeOk) {
        static_cast<void>(Logging_err_type_check(loglist, 3009, {}, kFolder, __LINE__));
        return nullptr;
    }
    const DescriptorGeneratorConfig generator_config;
    if (parts.open_generator(&parser->generator, parser->generator_memory.get(),
                             &generator_config) != kDescriptorOk) {
        static_cast<void>(Logging_err_type_check(loglist, 3010, {}, kFolder, __LINE__));
        return nullptr;
    }
    return parser;
}

void ac4_es_parser_delete(std::unique_ptr<Ac4EsParser>& parser) {
    parser.reset();
}

Status ac4_es_parser_version(Loglist* loglist) {
    const std::uint32_t* version = orv_ac4analyze_get_version();
    const std::string text = "AC4Analyzer version " + std::to_string(version[0]) + "." +
                             std::to_string(version[1]) + "." + std::to_string(version[2]);
    return Logging_err_type_check(loglist, 2, {}, text);
}

std::unique_ptr<AnalysisRecord> ac4_es_parser_init() {
    return std::make_unique<AnalysisRecord>();
}

// What an analysis doesn't set is never read, so the head and the presentation that the readers
// below look at are enough.
void ac4_es_parser_clear(AnalysisRecord& analysis) {
    static_cast<AnalysisHead&>(analysis) = AnalysisHead{};
    analysis.presentations[0] = AnalysisPresentation{};
}

void ac4_es_parser_flush(std::unique_ptr<AnalysisRecord>& analysis) {
    analysis.reset();
}

std::unique_ptr<ReferenceDsi> ac4_es_parser_ref_dsi_init() {
    auto reference = std::make_unique<ReferenceDsi>();
    orv_ac4descgen_init_mp4_descriptor(reference.get());
    return reference;
}

void ac4_es_parser_ref_dsi_clear(ReferenceDsi& reference) {
    orv_ac4descgen_init_mp4_descriptor(&reference);
}

void ac4_es_parser_ref_dsi_flush(std::unique_ptr<ReferenceDsi>& reference) {
    reference.reset();
}

int ac4_es_parser(Ac4EsParser& parser, ByteSpan frame, std::unique_ptr<AnalysisRecord>& analysis) {
    if (analysis == nullptr) {
        analysis = ac4_es_parser_init();
    }
    return orv_ac4analyze_analyze_frame(parser.analyzer, frame.data(), frame.size(), nullptr,
                                        analysis.get());
}

Status ac4_es_parser_ref_dsi(Ac4EsParser& parser, ByteSpan frame, ReferenceDsi& reference,
                             AnalysisRecord& analysis, std::uint32_t number, Loglist* loglist) {
    ac4_es_parser_clear(analysis);
    const int analyzed = orv_ac4analyze_analyze_frame(parser.analyzer, frame.data(), frame.size(),
                                                      nullptr, &analysis);
    if (analyzed != kAnalyzeOk) {
        print_internal_error("orv_ac4analyze_analyze_frame", static_cast<std::uint32_t>(analyzed));
        return Status::kFailed;
    }
    const std::uint32_t updated =
        orv_ac4descgen_update_AC4SampleEntry(parser.generator, &reference, analysis);
    if (number != 1 || updated == kDescriptorIndicator) {
        return Status::kOk;
    }
    const bool supported =
        updated != kDescriptorBadVersion && analysis.bitstream_version >= kOldestSupportedVersion;
    if (supported && updated != 0) {
        print_internal_error("orv_ac4descgen_update_AC4SampleEntry", updated);
        return Status::kFailed;
    }
    return check(supported, loglist, 4488, {});
}

bool ac4_get_bitstream_b_iframe_global(const AnalysisRecord* analysis) {
    return analysis != nullptr && analysis->b_iframe_global;
}

std::int32_t ac4_get_bitstream_version(const AnalysisRecord* analysis) {
    return analysis != nullptr ? analysis->bitstream_version : 0;
}

std::int32_t ac4_get_presentation_version(const AnalysisRecord* analysis) {
    if (analysis == nullptr) {
        return 0;
    }
    return analysis->n_presentations > 0 ? analysis->presentations[0].presentation_version : -1;
}

std::int32_t ac4_get_top_mdcompat(const AnalysisRecord* analysis) {
    return top_presentation(analysis).mdcompat;
}

bool ac4_get_top_b_channel_coded(const AnalysisRecord* analysis) {
    return top_presentation(analysis).channel_mode != 0;
}

std::int32_t ac4_get_top_pres_ch_mode(const AnalysisRecord* analysis) {
    return top_presentation(analysis).channel_mode;
}

std::int32_t ac4_get_top_pres_top_channel_pairs(const AnalysisRecord* analysis) {
    return top_presentation(analysis).top_channels_present;
}

std::uint32_t ac4_get_top_channel_layout_count(const AnalysisRecord* analysis) {
    return channel_layout_count(top_presentation(analysis));
}

}  // namespace mediasplit
