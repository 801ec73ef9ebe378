#include "ac4/descriptor_generator/descriptor_generator.h"

#include "ac4/descriptor_generator/channel_layout.h"
#include "ac4/descriptor_generator/presentation_dsi.h"

namespace mediasplit {
namespace {

constexpr std::int32_t kVersionWithOldSyntax = 1;
constexpr std::uint32_t kMost16 = 0xFFFF;

auto allocation(DescriptorGenerator** generator) {
    return [=](memlib* mem, MemPhase phase) {
        memlib_alloc_objects(mem, kMemlibPermanent, generator, 1, phase);
    };
}

// AudioSampleEntry holds the rate in 16 bits: higher ones are halved until they fit.
std::uint32_t entry_sampling_frequency(const AnalysisRecord& analysis) {
    const AnalysisSubstream& first = analysis.substreams[0];
    std::uint32_t rate =
        first.slot != kUnusedSlot ? static_cast<std::uint32_t>(first.info.sample_rate) : 0;
    while (rate > kMost16) {
        rate /= 2;
    }
    return rate;
}

void update_sample_entry(const AnalysisRecord& analysis, ReferenceDsi* reference) {
    reference->data_reference_index = 1;
    reference->channel_count =
        analysis.n_presentations > 0 ? channel_layout_count(analysis.presentations[0]) : 0;
    reference->sampling_frequency = entry_sampling_frequency(analysis);
}

void update_head(const AnalysisRecord& analysis, DsiHead* head) {
    head->dsi_version = kDsiVersion;
    head->bitstream_version = static_cast<std::uint32_t>(analysis.bitstream_version);
    head->fs_index = static_cast<std::uint32_t>(analysis.fs_index);
    head->frame_rate_index = static_cast<std::uint32_t>(analysis.frame_rate_index);
    head->n_presentations = static_cast<std::uint32_t>(analysis.n_presentations_raw);
    head->b_program_id = analysis.program_id_kind != ProgramIdKind::kNone ? 1 : 0;
    head->short_program_id = analysis.short_program_id;
    head->b_uuid = analysis.program_id_kind == ProgramIdKind::kShortAndUuid ? 1 : 0;
    head->program_uuid = analysis.program_uuid;
}

std::uint32_t update_presentation(std::uint32_t index, const AnalysisRecord& analysis,
                                  std::uint32_t* named_substreams, DsiPresentation* out) {
    static_cast<DsiPresentationFields&>(*out) = DsiPresentationFields{};
    const std::int32_t version = analysis.presentations[index].presentation_version;
    out->version = static_cast<std::uint32_t>(version);
    if (version == 0) {
        return update_ac4_presentation_v0_dsi(index, analysis, out);
    }
    return version <= 2 ? update_presentation_v1_dsi(index, analysis, named_substreams, out) : 0;
}

}  // namespace

int orv_ac4_descriptor_generator_query_mem_size(const DescriptorGeneratorConfig* config,
                                                std::uint64_t* bytes) {
    if (config == nullptr || bytes == nullptr) {
        return kDescriptorNullArgument;
    }
    *bytes = memlib_query(allocation(nullptr));
    return kDescriptorOk;
}

int orv_ac4_descriptor_generator_open(DescriptorGenerator** generator, void* memory,
                                      const DescriptorGeneratorConfig* config) {
    if (generator == nullptr || memory == nullptr || config == nullptr) {
        return kDescriptorNullArgument;
    }
    DescriptorGenerator* opened = nullptr;
    const memlib arena = memlib_open(memory, allocation(&opened));
    opened->arena = arena;
    *generator = opened;
    return kDescriptorOk;
}

void orv_ac4_descriptor_generator_close(DescriptorGenerator* generator) {
    if (generator != nullptr) {
        generator->arena = memlib_close(generator->arena, allocation(nullptr));
    }
}

void orv_ac4descgen_init_mp4_descriptor(ReferenceDsi* reference) {
    static_cast<DsiHead&>(*reference) = DsiHead{};
    reference->data_reference_index = 0;
    reference->channel_count = 0;
    reference->sampling_frequency = 0;
    reference->named_substreams = 0;
}

std::uint32_t orv_ac4descgen_update_AC4SampleEntry(DescriptorGenerator* generator,
                                                   ReferenceDsi* reference,
                                                   const AnalysisRecord& analysis) {
    generator->warnings = 0;
    update_sample_entry(analysis, reference);
    if (analysis.bitstream_version != kVersionWithOldSyntax &&
        analysis.bitstream_version != kGroupSyntaxVersion) {
        return kDescriptorBadVersion;
    }
    update_head(analysis, reference);
    const auto kept = static_cast<std::uint32_t>(analysis.n_presentations);
    if (reference->presentations.size() < kept) {
        reference->presentations.resize(kept);
    }
    reference->named_substreams = 0;
    for (std::uint32_t i = 0; i < kept; ++i) {
        generator->warnings |= update_presentation(i, analysis, &reference->named_substreams,
                                                   &reference->presentations[i]);
    }
    if (reference->n_presentations > kept) {
        generator->warnings |= kDescriptorPresentations;
    }
    return generator->warnings;
}

}  // namespace mediasplit
