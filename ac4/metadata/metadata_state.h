#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "ac4/metadata/dialogue_enhancement.h"
#include "ac4/metadata/drc.h"
#include "ac4/metadata/loudness.h"

namespace mediasplit {

inline constexpr int kMetadataSubstreams = 128;
inline constexpr int kMetadataPresentations = 64;

// Immersive stereo record (EMDF payload 18): its fields in stream order, named by their widths.
struct ImsInfo {
    bool present = false;
    std::uint8_t version = 0;  // 2 bits
    std::uint8_t code_3 = 0;
    bool flag_1 = false;
    bool has_code_5 = false;
    std::uint8_t code_5 = 0;
    std::uint8_t code_2 = 0;
    bool flag_2 = false;
    bool has_tail = false;
    std::uint8_t tail_code_2 = 0;
    bool tail_flag = false;
};

// What a substream's next frame needs of this one.
struct MetadataSlot {
    bool dialnorm_seen = false;
    float dialnorm = 0.0F;  // dB
    bool loudness_seen = false;
    FurtherLoudness loudness{};
    DrcState drc{};
    DeState de{};
    ImsInfo ims{};
};

// Running metadata of a stream; belongs to one analyzer and is cleared at its open and at each
// break of the stream.
struct Ac4MetadataState {
    std::array<MetadataSlot, kMetadataSubstreams> substreams{};
    std::array<MetadataSlot, kMetadataPresentations> presentations{};
    // Slots from these on were never handed out and are as they were made.
    std::size_t used_substreams = 0;
    std::size_t used_presentations = 0;
    // What the readers of substreams went through, but for audio and payloads that they stepped
    // over. Only counted here: whoever reads a frame clears it.
    std::int64_t bits_read = 0;
};

// Forgets everything that was seen.
void ac4_metadata_state_reset(Ac4MetadataState* state);

// Counts bits as read, or takes those that were stepped over out again. Nothing without a state.
void metadata_count_bits(Ac4MetadataState* state, std::int64_t bits);

// Slots by number; null for a number outside them.
MetadataSlot* metadata_substream_slot(Ac4MetadataState* state, int substream);
MetadataSlot* metadata_presentation_slot(Ac4MetadataState* state, int presentation);

inline constexpr float kDialnormStep = -0.25F;  // dB

// Loudness in force for a frame: what it sent, or the last that was sent.
struct LoudnessCarried {
    float dialnorm = 0.0F;  // dB
    FurtherLoudness loudness{};
    bool changed = false;  // this frame's measurements differ from the last ones
};

// Takes a frame's dialogue level and measurements into its slot, in place of what the slot held.
LoudnessCarried metadata_carry_loudness(MetadataSlot& slot, const CodedField& dialnorm_bits,
                                        const FurtherLoudness& loudness);

// The immersive stereo record of a substream, null if none was seen.
const ImsInfo* ac4analyze_get_ims_info(const Ac4MetadataState* state, int substream);

}  // namespace mediasplit
