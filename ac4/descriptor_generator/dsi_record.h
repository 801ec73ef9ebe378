// AC-4 decoder specific information (ETSI TS 103 190-2 Annex E.6 to E.11): what a `dac4` box says,
// or what it should say.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace mediasplit {

inline constexpr std::uint32_t kDsiVersion = 1;
inline constexpr std::uint32_t kMaskNotChannelCoded = 0x800000;

// Values of presentation_config_v1.
inline constexpr std::uint32_t kDsiConfigCoded = 5;  // its number of groups is written
inline constexpr std::uint32_t kDsiConfigEmdfOnly = 6;
inline constexpr std::uint32_t kDsiConfigSingle = 31;
inline constexpr std::uint32_t kDsiConfigInvalid = 255;  // of a stream's type that has no value

// ac4_bitrate_dsi.
struct DsiBitRate {
    std::uint32_t bit_rate_mode = 0;
    std::uint32_t bit_rate = 0;
    std::uint32_t bit_rate_precision = 0;
};

struct DsiSubstream {
    std::uint32_t dsi_sf_multiplier = 0;
    std::uint32_t b_substream_bitrate_indicator = 0;
    std::uint32_t substream_bitrate_indicator = 0;
    std::uint32_t dsi_substream_channel_mask = 0;
    std::uint32_t b_ajoc = 0;
    std::uint32_t b_static_dmx = 0;
    std::uint32_t n_dmx_objects_minus1 = 0;
    std::uint32_t n_umx_objects_minus1 = 0;
    std::uint32_t b_substream_contains_bed_objects = 0;
    std::uint32_t b_substream_contains_dynamic_objects = 0;
    std::uint32_t b_substream_contains_ISF_objects = 0;
    std::uint32_t reserved = 0;
};

struct DsiSubstreamGroupFields {
    std::uint32_t b_substreams_present = 0;
    std::uint32_t b_hsf_ext = 0;
    std::uint32_t b_channel_coded = 0;
    std::uint32_t n_substreams = 0;
    std::uint32_t b_content_type = 0;
    std::uint32_t content_classifier = 0;
    std::uint32_t b_language_indicator = 0;
    std::uint32_t n_language_tag_bytes = 0;
};

struct DsiSubstreamGroup : DsiSubstreamGroupFields {
    std::vector<DsiSubstream> substreams;  // fewer than n_substreams where the box ended
    std::string language_tag_bytes;
};

// substream_emdf_info of an added EMDF substream.
struct DsiEmdfSubstream {
    std::uint32_t emdf_version = 0;
    std::uint32_t substream_key_id = 0;
};

struct DsiPresentationFields {
    std::uint32_t version = 0;
    std::uint32_t pres_bytes = 0;          // with its extension
    std::uint32_t presentation_bytes = 0;  // that the presentation's elements take
    bool bad = false;                      // an element could not be read
    std::uint32_t presentation_config_v1 = 0;
    std::uint32_t mdcompat = 0;
    std::uint32_t b_presentation_id = 0;
    std::uint32_t presentation_id = 0;
    std::uint32_t dsi_frame_rate_multiply_info = 0;
    std::uint32_t dsi_frame_rate_fraction_info = 0;
    std::uint32_t presentation_emdf_version = 0;
    std::uint32_t presentation_key_id = 0;
    std::uint32_t b_presentation_channel_coded = 0;
    std::uint32_t dsi_presentation_ch_mode = 0;
    std::uint32_t pres_b_4_back_channels_present = 0;
    std::uint32_t pres_top_channel_pairs = 0;
    std::uint32_t presentation_channel_mask_v1 = 0;
    std::uint32_t b_presentation_core_differs = 0;
    std::uint32_t b_presentation_core_channel_coded = 0;
    std::uint32_t dsi_presentation_channel_mode_core = 0;
    std::uint32_t b_presentation_filter = 0;
    std::uint32_t b_enable_presentation = 0;
    std::uint32_t n_filter_bytes = 0;
    std::uint32_t b_multi_pid = 0;
    std::uint32_t n_substream_groups_minus2 = 0;
    std::uint32_t n_skip_bytes = 0;
    std::uint32_t b_pre_virtualized = 0;
    std::uint32_t b_add_emdf_substreams = 0;
    std::uint32_t n_add_emdf_substreams = 0;
    std::uint32_t b_presentation_bitrate_info = 0;
    DsiBitRate bit_rate_info;
    std::uint32_t b_alternative = 0;
    std::uint32_t de_indicator = 0;
    std::uint32_t orvel_sphere_indicator = 0;
    std::uint32_t reserved_field_1 = 0;
    std::uint32_t b_extended_presentation_id = 0;
    std::uint32_t extended_presentation_id = 0;
    std::uint32_t reserved_field_2 = 0;

    // Notes of the comparison with the elementary stream.
    bool compared = false;                            // with some frame
    std::uint32_t stream_orvel_sphere_indicator = 0;  // OR of all frames
};

struct DsiPresentation : DsiPresentationFields {
    std::string filter_data;
    std::vector<DsiSubstreamGroup> groups;
    std::vector<DsiEmdfSubstream> emdf_substreams;
};

struct DsiHead {
    std::uint32_t dsi_version = 0;
    std::uint32_t bitstream_version = 0;
    std::uint32_t fs_index = 0;
    std::uint32_t frame_rate_index = 0;
    std::uint32_t n_presentations = 0;
    std::uint32_t b_program_id = 0;
    std::uint32_t short_program_id = 0;
    std::uint32_t b_uuid = 0;
    std::array<std::uint8_t, 16> program_uuid{};
};

// What comparisons of a box with its frames may take beyond the share that each has.
inline constexpr std::uint32_t kSpareWorkOfABox = std::uint32_t{1} << 19;

// A parsed `dac4` payload (ac4_dsi_v1).
struct DsiRecord : DsiHead {
    DsiBitRate bit_rate_info;
    std::vector<DsiPresentation> presentations;  // fewer than n_presentations where the box ended
    std::uint32_t presentation_parse_end = 0;    // index + 1 of the version 0 presentation at which
                                                 // the reading stopped
    std::uint32_t box_count = 0;                 // payloads read into this record, the last counts

    // Note of the comparison: what is left of it. With nothing left it has ended for good.
    std::uint32_t spare_work = kSpareWorkOfABox;
};

// Substreams of a frame that are described. A few bytes may name a group of 128 substreams hundreds
// of times; sound frames stay far below.
inline constexpr std::uint32_t kMostNamedSubstreams = 4096;

// What the box of a stream should say, made from a frame.
struct ReferenceDsi : DsiHead {
    // Of the sample entry.
    std::uint32_t data_reference_index = 0;
    std::uint32_t channel_count = 0;
    std::uint32_t sampling_frequency = 0;  // Hz, in 16 bits

    // Of all groups of all presentations, each as often as it is named. Past kMostNamedSubstreams
    // the lists of groups are short.
    std::uint32_t named_substreams = 0;

    // At most 64, where n_presentations may say more. Entries behind the frame's presentations may
    // be left from earlier frames: they keep their memory.
    std::vector<DsiPresentation> presentations;
};

// Whether flags for back channels, centre and pairs of top channels go with a
// dsi_presentation_ch_mode: 7.0.4, 7.1.4, 9.0.4 and 9.1.4.
constexpr bool dsi_mode_has_flags(std::uint32_t mode) {
    return mode >= 11 && mode <= 14;
}

// Number of substream groups of a presentation_config_v1; `minus2` is asked for the coded number.
constexpr std::uint32_t dsi_group_count(std::uint32_t config, std::uint32_t minus2) {
    constexpr std::array<std::uint32_t, 5> kGroups = {2, 2, 2, 3, 3};
    if (config < kGroups.size()) {
        return kGroups[config];
    }
    if (config == kDsiConfigCoded) {
        return minus2 + 2;
    }
    return config == kDsiConfigSingle ? 1 : 0;
}

inline std::uint32_t dsi_group_count(const DsiPresentationFields& presentation) {
    return dsi_group_count(presentation.presentation_config_v1,
                           presentation.n_substream_groups_minus2);
}

// An entry of a list, or an empty one where the list is shorter than it was said to be.
template <typename Entry>
const Entry& dsi_entry(const std::vector<Entry>& list, std::size_t index) {
    static const Entry empty{};
    return index < list.size() ? list[index] : empty;
}

}  // namespace mediasplit
