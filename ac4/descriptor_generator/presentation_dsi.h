#pragma once

#include <cstdint>

#include "ac4/descriptor_generator/analysis_record.h"
#include "ac4/descriptor_generator/dsi_record.h"

namespace mediasplit {

// Fill a presentation whose fields are cleared, with the version set, from the frame's presentation
// of the index. Return warnings of the generator. `named_substreams` counts those of the frame;
// groups past kMostNamedSubstreams are left out.
std::uint32_t update_presentation_v1_dsi(std::uint32_t index, const AnalysisRecord& analysis,
                                         std::uint32_t* named_substreams, DsiPresentation* out);
std::uint32_t update_ac4_presentation_v0_dsi(std::uint32_t index, const AnalysisRecord& analysis,
                                             DsiPresentation* out);

// Fills a group and its substreams.
void update_ac4_substream_group_dsi(const AnalysisGroup& group, const AnalysisRecord& analysis,
                                    DsiSubstreamGroup* out);

// The fields of one substream, the channel mask or those of objects.
DsiSubstream update_ac4_substream_dsi(const AnalysisSubstream& substream);

}  // namespace mediasplit
