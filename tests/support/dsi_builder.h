// Writes `dac4` payloads from records, following the syntax tables of ETSI TS 103 190-2 Annex E
// with no code of their reader. What a record says is written, whether it makes sense or not.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "ac4/descriptor_generator/dsi_record.h"
#include "tests/support/ac4_metadata_builder.h"

namespace mediasplit {

// ac4_substream_group_dsi.
MetadataBits write_group_dsi(const DsiSubstreamGroup& group);

// ac4_presentation_v1_dsi with the indicators behind it, aligned. With `b_alternative` it has a
// name of three bytes and two targets; skipped bytes are 0x5A.
MetadataBits write_presentation_dsi(const DsiPresentation& presentation, bool indicators = true);

struct DsiWriting {
    bool indicators = true;
    // pres_bytes from the true size.
    std::function<std::uint32_t(std::uint32_t)> told_bytes = [](std::uint32_t size) {
        return size;
    };
    std::uint32_t padding = 0;  // bytes of 0xA5 behind each presentation, part of its size
};

// ac4_dsi_v1 up to the presentations, aligned.
MetadataBits write_dsi_head(const DsiRecord& record);
std::vector<std::uint8_t> write_dac4(const DsiRecord& record, const DsiWriting& writing = {});

// The record that a writer would make of what a stream asks for.
DsiRecord record_of(const ReferenceDsi& reference);

// A record in which each element of the syntax is used, with a value of its own: three
// presentations, of a coded number of groups, of EMDF substreams alone, and of a single group.
DsiRecord full_dsi_record();

}  // namespace mediasplit
