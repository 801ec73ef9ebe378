// Whether two records say the same, element by element.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "ac4/descriptor_generator/dsi_record.h"

namespace mediasplit {

inline void expect_same_substream(const DsiSubstream& a, const DsiSubstream& b) {
    EXPECT_EQ(a.dsi_sf_multiplier, b.dsi_sf_multiplier);
    EXPECT_EQ(a.b_substream_bitrate_indicator, b.b_substream_bitrate_indicator);
    EXPECT_EQ(a.substream_bitrate_indicator, b.substream_bitrate_indicator);
    EXPECT_EQ(a.dsi_substream_channel_mask, b.dsi_substream_channel_mask);
    EXPECT_EQ(a.b_ajoc, b.b_ajoc);
    EXPECT_EQ(a.b_static_dmx, b.b_static_dmx);
    EXPECT_EQ(a.n_dmx_objects_minus1, b.n_dmx_objects_minus1);
    EXPECT_EQ(a.n_umx_objects_minus1, b.n_umx_objects_minus1);
    EXPECT_EQ(a.b_substream_contains_bed_objects, b.b_substream_contains_bed_objects);
    EXPECT_EQ(a.b_substream_contains_dynamic_objects, b.b_substream_contains_dynamic_objects);
    EXPECT_EQ(a.b_substream_contains_ISF_objects, b.b_substream_contains_ISF_objects);
    EXPECT_EQ(a.reserved, b.reserved);
}

inline void expect_same_group(const DsiSubstreamGroup& a, const DsiSubstreamGroup& b) {
    EXPECT_EQ(a.b_substreams_present, b.b_substreams_present);
    EXPECT_EQ(a.b_hsf_ext, b.b_hsf_ext);
    EXPECT_EQ(a.b_channel_coded, b.b_channel_coded);
    EXPECT_EQ(a.n_substreams, b.n_substreams);
    ASSERT_EQ(a.substreams.size(), b.substreams.size());
    for (std::size_t i = 0; i < a.substreams.size(); ++i) {
        SCOPED_TRACE("substream " + std::to_string(i));
        expect_same_substream(a.substreams[i], b.substreams[i]);
    }
    EXPECT_EQ(a.b_content_type, b.b_content_type);
    EXPECT_EQ(a.content_classifier, b.content_classifier);
    EXPECT_EQ(a.b_language_indicator, b.b_language_indicator);
    EXPECT_EQ(a.n_language_tag_bytes, b.n_language_tag_bytes);
    EXPECT_EQ(a.language_tag_bytes, b.language_tag_bytes);
}

inline void expect_same_presentation(const DsiPresentation& a, const DsiPresentation& b) {
    EXPECT_EQ(a.version, b.version);
    EXPECT_EQ(a.presentation_config_v1, b.presentation_config_v1);
    EXPECT_EQ(a.mdcompat, b.mdcompat);
    EXPECT_EQ(a.b_presentation_id, b.b_presentation_id);
    EXPECT_EQ(a.presentation_id, b.presentation_id);
    EXPECT_EQ(a.dsi_frame_rate_multiply_info, b.dsi_frame_rate_multiply_info);
    EXPECT_EQ(a.dsi_frame_rate_fraction_info, b.dsi_frame_rate_fraction_info);
    EXPECT_EQ(a.presentation_emdf_version, b.presentation_emdf_version);
    EXPECT_EQ(a.presentation_key_id, b.presentation_key_id);
    EXPECT_EQ(a.b_presentation_channel_coded, b.b_presentation_channel_coded);
    EXPECT_EQ(a.dsi_presentation_ch_mode, b.dsi_presentation_ch_mode);
    EXPECT_EQ(a.pres_b_4_back_channels_present, b.pres_b_4_back_channels_present);
    EXPECT_EQ(a.pres_top_channel_pairs, b.pres_top_channel_pairs);
    EXPECT_EQ(a.presentation_channel_mask_v1, b.presentation_channel_mask_v1);
    EXPECT_EQ(a.b_presentation_core_differs, b.b_presentation_core_differs);
    EXPECT_EQ(a.b_presentation_core_channel_coded, b.b_presentation_core_channel_coded);
    EXPECT_EQ(a.dsi_presentation_channel_mode_core, b.dsi_presentation_channel_mode_core);
    EXPECT_EQ(a.b_presentation_filter, b.b_presentation_filter);
    EXPECT_EQ(a.b_enable_presentation, b.b_enable_presentation);
    EXPECT_EQ(a.n_filter_bytes, b.n_filter_bytes);
    EXPECT_EQ(a.filter_data, b.filter_data);
    EXPECT_EQ(a.b_multi_pid, b.b_multi_pid);
    EXPECT_EQ(a.n_substream_groups_minus2, b.n_substream_groups_minus2);
    EXPECT_EQ(a.n_skip_bytes, b.n_skip_bytes);
    ASSERT_EQ(a.groups.size(), b.groups.size());
    for (std::size_t i = 0; i < a.groups.size(); ++i) {
        SCOPED_TRACE("group " + std::to_string(i));
        expect_same_group(a.groups[i], b.groups[i]);
    }
    EXPECT_EQ(a.b_pre_virtualized, b.b_pre_virtualized);
    EXPECT_EQ(a.b_add_emdf_substreams, b.b_add_emdf_substreams);
    EXPECT_EQ(a.n_add_emdf_substreams, b.n_add_emdf_substreams);
    ASSERT_EQ(a.emdf_substreams.size(), b.emdf_substreams.size());
    for (std::size_t i = 0; i < a.emdf_substreams.size(); ++i) {
        EXPECT_EQ(a.emdf_substreams[i].emdf_version, b.emdf_substreams[i].emdf_version);
        EXPECT_EQ(a.emdf_substreams[i].substream_key_id, b.emdf_substreams[i].substream_key_id);
    }
    EXPECT_EQ(a.b_presentation_bitrate_info, b.b_presentation_bitrate_info);
    EXPECT_EQ(a.bit_rate_info.bit_rate_mode, b.bit_rate_info.bit_rate_mode);
    EXPECT_EQ(a.bit_rate_info.bit_rate, b.bit_rate_info.bit_rate);
    EXPECT_EQ(a.bit_rate_info.bit_rate_precision, b.bit_rate_info.bit_rate_precision);
    EXPECT_EQ(a.b_alternative, b.b_alternative);
    EXPECT_EQ(a.de_indicator, b.de_indicator);
    EXPECT_EQ(a.orvel_sphere_indicator, b.orvel_sphere_indicator);
    EXPECT_EQ(a.reserved_field_1, b.reserved_field_1);
    EXPECT_EQ(a.b_extended_presentation_id, b.b_extended_presentation_id);
    EXPECT_EQ(a.extended_presentation_id, b.extended_presentation_id);
    EXPECT_EQ(a.reserved_field_2, b.reserved_field_2);
}

inline void expect_same_record(const DsiRecord& a, const DsiRecord& b) {
    EXPECT_EQ(a.dsi_version, b.dsi_version);
    EXPECT_EQ(a.bitstream_version, b.bitstream_version);
    EXPECT_EQ(a.fs_index, b.fs_index);
    EXPECT_EQ(a.frame_rate_index, b.frame_rate_index);
    EXPECT_EQ(a.n_presentations, b.n_presentations);
    EXPECT_EQ(a.b_program_id, b.b_program_id);
    EXPECT_EQ(a.short_program_id, b.short_program_id);
    EXPECT_EQ(a.b_uuid, b.b_uuid);
    EXPECT_EQ(a.program_uuid, b.program_uuid);
    EXPECT_EQ(a.bit_rate_info.bit_rate_mode, b.bit_rate_info.bit_rate_mode);
    EXPECT_EQ(a.bit_rate_info.bit_rate, b.bit_rate_info.bit_rate);
    EXPECT_EQ(a.bit_rate_info.bit_rate_precision, b.bit_rate_info.bit_rate_precision);
    ASSERT_EQ(a.presentations.size(), b.presentations.size());
    for (std::size_t i = 0; i < a.presentations.size(); ++i) {
        SCOPED_TRACE("presentation " + std::to_string(i));
        expect_same_presentation(a.presentations[i], b.presentations[i]);
    }
}

}  // namespace mediasplit
