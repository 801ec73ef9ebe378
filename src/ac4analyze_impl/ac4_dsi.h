// Reader of AC-4 decoder specific information, the payload of a `dac4` box (ETSI TS 103 190-2
// Annex E.6 to E.11).
#pragma once

#include <cstdint>

#include "ac4/descriptor_generator/dsi_record.h"
#include "base/xml_tree.h"
#include "src/util/bit_reader.h"

namespace mediasplit {

// Reads a payload into `record`, whose earlier content is dropped, and each element as a child into
// the optional `tree`, which must not outlive the record. Returns 1 for an empty payload. A payload
// that ends early is none of the caller's errors: 0, with the elements that were there.
std::uint32_t ac4_dsi_parser(ByteSpan payload, DsiRecord& record, Ezxml* tree);

// Reads an `ac4_substream_group_dsi` at bit `position` and moves it behind what was read. Returns 1
// if the data ended, else 0.
std::uint32_t f_ac4_substream_group_dsi(DsiSubstreamGroup& group, std::uint64_t& position,
                                        ByteSpan data, Ezxml* node);

}  // namespace mediasplit
