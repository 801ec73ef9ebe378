#pragma once

#include <cstddef>
#include <cstdint>

#include "ac4/metadata/metadata_state.h"
#include "ac4/syntax/field_reader.h"

namespace mediasplit {

// EMDF payloads (`emdf_payloads_substream`, ETSI TS 103 190-1 clause 4.2.14). Payload id 18,
// immersive stereo, is read; all others are stepped over.

inline constexpr std::uint32_t kEmdfPayloadIms = 18;

struct EmdfPayload {
    std::uint32_t id = 0;
    std::uint32_t size = 0;  // bytes
};

// Facts gathered over the payloads of one substream.
struct EmdfContext {
    std::uint32_t payload_count = 0;
    bool ims_present = false;
};

// Reads `emdf_payloads_substream` up to its closing id, aligned. `substream` is the slot of `state`
// that takes the immersive stereo record; a number outside the slots drops it. 0 or a code.
std::uint32_t parse_emdf_payloads_substream(Ac4MetadataState* state, int substream, FieldReader& in,
                                            EmdfContext* context);

// The same over `size` bytes of an EMDF substream. 0 for size 0; 8192 if it ran past the end.
std::uint32_t ac4analyze_parse_emdf_payloads_substream(Ac4MetadataState* state, int substream,
                                                       const std::uint8_t* data, std::size_t size,
                                                       EmdfContext* context);

// Reads one payload's bytes through `in`, which ends with the payload. 0 for an id other than 18.
std::uint32_t ac4analyze_parse_emdf_payload(Ac4MetadataState* state, int substream, FieldReader& in,
                                            const EmdfPayload& payload);

// Reads the immersive stereo record. 0, 8192, or 128 for version 3, whose fields are not known.
std::uint32_t ac4analyse_ims_parse_frame(FieldReader& in, ImsInfo* out);

}  // namespace mediasplit
