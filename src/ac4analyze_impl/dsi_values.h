// What AC-4 decoder specific information says in sum, and codec texts of AC-4 (ETSI TS 103 190-2
// E.13).
#pragma once

#include <cstdint>
#include <string>

#include "ac4/descriptor_generator/dsi_record.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// The numbers of a codec text "ac-4.bb.vv.mm".
struct Ac4CodecProfile {
    std::uint32_t bitstream_version = 0;
    std::uint32_t presentation_version = 0;  // of the first presentation
    std::uint32_t mdcompat = 0;  // the lowest of all presentations, 0xFFFFFFFF if there are none
};

// "ac-4.02.01.03".
[[nodiscard]] std::string ac4_codec_text(const Ac4CodecProfile& profile);

// Takes the codec profile and the channel mask of the first presentation. With `filtered`,
// presentations spread over several streams don't count for the lowest mdcompat. Returns 0.
int extract_value_dac4(const DsiRecord& record, Ac4CodecProfile* profile,
                       std::uint32_t* channel_mask, bool filtered);
// The same without the mask.
int extract_codec_profile_value_dac4(const DsiRecord& record, Ac4CodecProfile* profile,
                                     bool filtered);
// The mask alone.
int extract_audio_config_value_dac4(const DsiRecord& record, std::uint32_t* channel_mask,
                                    bool filtered);

// Splits a codec text of exactly the form "ac-4.xx.xx.xx" with two hexadecimal digits each; 0, or 1
// for any other form.
int extract_ac4_profile_value_from_dash_codecs(OptText codecs, Ac4CodecProfile* profile);

// 0 for exactly two hexadecimal digits, else 1.
int check_ac4_codec_component_value_valid(OptText component);

}  // namespace mediasplit
