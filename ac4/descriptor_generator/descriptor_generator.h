// AC-4 descriptor generator: what an encoder would write about a stream, made from analyzed frames.
// It takes no catalogue and prints nothing. One thread per instance; all memory is the caller's.
#pragma once

#include <cstdint>

#include "ac4/descriptor_generator/analysis_record.h"
#include "ac4/descriptor_generator/dsi_record.h"
#include "base/memlib.h"

namespace mediasplit {

// Results of query, open and close.
inline constexpr int kDescriptorOk = 0;
inline constexpr int kDescriptorNullArgument = 1;

// Results of the update. The warnings are ORed together; they don't stop it.
inline constexpr std::uint32_t kDescriptorBadChannelMode = 1;  // of a channel coded presentation
inline constexpr std::uint32_t kDescriptorBadType = 5;         // of a presentation
inline constexpr std::uint32_t kDescriptorPresentations = 8;   // more than 64
inline constexpr std::uint32_t kDescriptorBadVersion = 16;     // bitstream_version not 1 or 2
// Marked immersive, by its layout it isn't.
inline constexpr std::uint32_t kDescriptorIndicator = 17;

struct DescriptorGeneratorConfig {};

struct DescriptorGenerator {
    memlib arena;
    std::uint32_t warnings = 0;  // of the last update
};

// Bytes of memory that open needs.
int orv_ac4_descriptor_generator_query_mem_size(const DescriptorGeneratorConfig* config,
                                                std::uint64_t* bytes);

// Places a generator in the caller's `memory`.
int orv_ac4_descriptor_generator_open(DescriptorGenerator** generator, void* memory,
                                      const DescriptorGeneratorConfig* config);

// Ends the use of the memory; the caller frees it.
void orv_ac4_descriptor_generator_close(DescriptorGenerator* generator);

// Forgets what the record says; its memory stays with it.
void orv_ac4descgen_init_mp4_descriptor(ReferenceDsi* reference);

// Brings the record up to a frame (ETSI TS 103 190-2 E.6): 0, kDescriptorBadVersion, or warnings.
// Allocates only when the stream's layout grows.
std::uint32_t orv_ac4descgen_update_AC4SampleEntry(DescriptorGenerator* generator,
                                                   ReferenceDsi* reference,
                                                   const AnalysisRecord& analysis);

}  // namespace mediasplit
