// Channel modes and masks of AC-4 decoder specific information (ETSI TS 103 190-2 E.10).
#pragma once

#include <cstdint>

#include "ac4/descriptor_generator/analysis_record.h"

namespace mediasplit {

// Mode of the decoder specific information for a channel mode code of the analyzer; -1 for none.
std::int32_t convert_2_ac4_ch_mode(std::int32_t code);

// Channels of a `dsi_presentation_ch_mode`, 0 above 15.
std::uint32_t chmode_2_channel_count(std::uint32_t mode);

// The speaker groups of a mode as a 24-bit mask; 1 for a mode above 15. The three other arguments
// count for the modes 11 to 14: pairs of top channels, four back channels, a centre.
std::uint32_t get_channel_mask_v1(std::uint32_t dsi_presentation_ch_mode,
                                  std::uint32_t top_channel_pairs, bool b_4_back_channels_present,
                                  bool b_centre_present);

// Channels of a mask.
std::uint32_t channel_mask_v1_to_channel_count(std::uint32_t mask);

// ChannelConfiguration (ISO/IEC 23091-3 table 8) for a mask, -1 for none.
std::int32_t mapping_ac4_channel_config_to_mpeg_scheme(std::uint32_t word);

// Channels of a presentation by its mode and, for the modes with flags, what they say is there; 0
// for a mode that isn't known.
std::uint32_t channel_layout_count(const AnalysisPresentation& presentation);

}  // namespace mediasplit
