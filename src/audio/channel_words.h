// Channels of E-AC-3 streams as words: bit 15 is Left, bit 0 LFE, in the order of the custom
// channel map (ETSI TS 102 366 E.1.3.1.8).
#pragma once

#include <cstdint>
#include <span>

namespace mediasplit {

// The word of an audio coding mode, without LFE; 0 above 7. Deliberate: the modes 2/1 and 3/1 have
// no channels.
[[nodiscard]] std::uint32_t acmod_to_channel_config(std::uint32_t acmod);

// Number of channels of a word; a location that stands for a pair counts as two.
[[nodiscard]] std::uint32_t calculate_ec3_channel_count(std::uint32_t word);

// The word of the last substream that the payload of a "dec3" box names (ETSI TS 102 366 F.6). What
// the payload doesn't hold reads as zeros.
[[nodiscard]] std::uint32_t extract_audio_config_value_dec3(std::span<const std::uint8_t> payload);

// The channel configuration of ISO/IEC 23091-3 with the channels of a word, or -1.
[[nodiscard]] std::int32_t mapping_ec3_channel_config_to_mpeg_scheme(std::uint32_t word);

}  // namespace mediasplit
