#include "tests/support/dsi_builder.h"

namespace mediasplit {
namespace {

MetadataBits write_text(const std::string& text) {
    MetadataBits bits;
    return bits.bytes(std::vector<std::uint8_t>(text.begin(), text.end()));
}

MetadataBits write_bit_rate(const DsiBitRate& rate) {
    MetadataBits bits;
    return bits.put(rate.bit_rate_mode, 2).put(rate.bit_rate, 32).put(rate.bit_rate_precision, 32);
}

MetadataBits write_substream_dsi(const DsiSubstream& substream, bool channel_coded) {
    MetadataBits bits;
    bits.put(substream.dsi_sf_multiplier, 2).put(substream.b_substream_bitrate_indicator, 1);
    if (substream.b_substream_bitrate_indicator != 0) {
        bits.put(substream.substream_bitrate_indicator, 5);
    }
    if (channel_coded) {
        return bits.put(substream.dsi_substream_channel_mask, 24);
    }
    bits.put(substream.b_ajoc, 1);
    if (substream.b_ajoc != 0) {
        bits.put(substream.b_static_dmx, 1);
        if (substream.b_static_dmx == 0) {
            bits.put(substream.n_dmx_objects_minus1, 4);
        }
        bits.put(substream.n_umx_objects_minus1, 6);
    }
    return bits.put(substream.b_substream_contains_bed_objects, 1)
        .put(substream.b_substream_contains_dynamic_objects, 1)
        .put(substream.b_substream_contains_ISF_objects, 1)
        .put(substream.reserved, 1);
}

MetadataBits write_layout(const DsiPresentation& p) {
    MetadataBits bits;
    bits.put(p.b_presentation_channel_coded, 1);
    if (p.b_presentation_channel_coded != 0) {
        bits.put(p.dsi_presentation_ch_mode, 5);
        if (p.dsi_presentation_ch_mode >= 11 && p.dsi_presentation_ch_mode <= 14) {
            bits.put(p.pres_b_4_back_channels_present, 1).put(p.pres_top_channel_pairs, 2);
        }
        bits.put(p.presentation_channel_mask_v1, 24);
    }
    bits.put(p.b_presentation_core_differs, 1);
    if (p.b_presentation_core_differs != 0) {
        bits.put(p.b_presentation_core_channel_coded, 1);
        if (p.b_presentation_core_channel_coded != 0) {
            bits.put(p.dsi_presentation_channel_mode_core, 2);
        }
    }
    return bits;
}

MetadataBits write_groups(const DsiPresentation& p) {
    MetadataBits bits;
    const std::uint32_t config = p.presentation_config_v1;
    if (config != 31) {
        bits.put(p.b_multi_pid, 1);
        if (config == 5) {
            bits.put(p.n_substream_groups_minus2, 3);
        } else if (config > 5) {
            bits.put(p.n_skip_bytes, 7).bytes(std::vector<std::uint8_t>(p.n_skip_bytes, 0x5A));
        }
    }
    for (const DsiSubstreamGroup& group : p.groups) {
        bits.add(write_group_dsi(group));
    }
    return bits;
}

MetadataBits write_audio(const DsiPresentation& p) {
    MetadataBits bits;
    bits.put(p.mdcompat, 3).put(p.b_presentation_id, 1);
    if (p.b_presentation_id != 0) {
        bits.put(p.presentation_id, 5);
    }
    bits.put(p.dsi_frame_rate_multiply_info, 2).put(p.dsi_frame_rate_fraction_info, 2);
    bits.put(p.presentation_emdf_version, 5).put(p.presentation_key_id, 10).add(write_layout(p));
    bits.put(p.b_presentation_filter, 1);
    if (p.b_presentation_filter != 0) {
        bits.put(p.b_enable_presentation, 1).put(p.n_filter_bytes, 8);
        bits.add(write_text(p.filter_data));
    }
    bits.add(write_groups(p));
    return bits.put(p.b_pre_virtualized, 1).put(p.b_add_emdf_substreams, 1);
}

DsiSubstream channel_substream(std::uint32_t mask) {
    DsiSubstream substream;
    substream.dsi_sf_multiplier = 1;
    substream.dsi_substream_channel_mask = mask;
    return substream;
}

DsiPresentation coded_count_presentation() {
    DsiPresentation p;
    p.version = 1;
    p.presentation_config_v1 = 5;
    p.mdcompat = 3;
    p.b_presentation_id = 1;
    p.presentation_id = 9;
    p.dsi_frame_rate_multiply_info = 1;
    p.dsi_frame_rate_fraction_info = 2;
    p.presentation_emdf_version = 17;
    p.presentation_key_id = 700;
    p.b_presentation_channel_coded = 1;
    p.dsi_presentation_ch_mode = 12;
    p.pres_b_4_back_channels_present = 1;
    p.pres_top_channel_pairs = 2;
    p.presentation_channel_mask_v1 = 0x7F;
    p.b_presentation_core_differs = 1;
    p.b_presentation_core_channel_coded = 1;
    p.dsi_presentation_channel_mode_core = 3;
    p.b_presentation_filter = 1;
    p.b_enable_presentation = 1;
    p.n_filter_bytes = 3;
    p.filter_data = "abc";
    p.b_multi_pid = 1;
    p.n_substream_groups_minus2 = 1;
    DsiSubstreamGroup channels;
    channels.b_substreams_present = 1;
    channels.b_hsf_ext = 1;
    channels.b_channel_coded = 1;
    channels.n_substreams = 2;
    channels.substreams = {channel_substream(0x47), channel_substream(0x800001)};
    channels.substreams[1].b_substream_bitrate_indicator = 1;
    channels.substreams[1].substream_bitrate_indicator = 19;
    channels.b_content_type = 1;
    channels.content_classifier = 4;
    channels.b_language_indicator = 1;
    channels.n_language_tag_bytes = 5;
    channels.language_tag_bytes = "en-GB";
    DsiSubstreamGroup ajoc;
    ajoc.b_substreams_present = 1;
    ajoc.n_substreams = 2;
    ajoc.substreams.resize(2);
    ajoc.substreams[0].b_ajoc = 1;
    ajoc.substreams[0].n_dmx_objects_minus1 = 10;
    ajoc.substreams[0].n_umx_objects_minus1 = 33;
    ajoc.substreams[0].b_substream_contains_bed_objects = 1;
    ajoc.substreams[1].b_ajoc = 1;
    ajoc.substreams[1].b_static_dmx = 1;
    ajoc.substreams[1].n_umx_objects_minus1 = 14;
    ajoc.substreams[1].b_substream_contains_dynamic_objects = 1;
    DsiSubstreamGroup objects;
    objects.n_substreams = 1;
    objects.substreams.resize(1);
    objects.substreams[0].dsi_sf_multiplier = 2;
    objects.substreams[0].b_substream_contains_ISF_objects = 1;
    objects.substreams[0].reserved = 1;
    objects.b_content_type = 1;
    objects.content_classifier = 7;
    p.groups = {channels, ajoc, objects};
    p.b_pre_virtualized = 1;
    p.b_add_emdf_substreams = 1;
    p.n_add_emdf_substreams = 2;
    p.emdf_substreams = {{21, 1000}, {3, 5}};
    p.b_presentation_bitrate_info = 1;
    p.bit_rate_info = {2, 256000, 1000};
    p.b_alternative = 1;
    p.de_indicator = 1;
    p.orvel_sphere_indicator = 1;
    p.reserved_field_1 = 6;
    p.b_extended_presentation_id = 1;
    p.extended_presentation_id = 400;
    return p;
}

}  // namespace

MetadataBits write_group_dsi(const DsiSubstreamGroup& group) {
    MetadataBits bits;
    bits.put(group.b_substreams_present, 1).put(group.b_hsf_ext, 1).put(group.b_channel_coded, 1);
    bits.put(group.n_substreams, 8);
    for (const DsiSubstream& substream : group.substreams) {
        bits.add(write_substream_dsi(substream, group.b_channel_coded != 0));
    }
    bits.put(group.b_content_type, 1);
    if (group.b_content_type != 0) {
        bits.put(group.content_classifier, 3).put(group.b_language_indicator, 1);
        if (group.b_language_indicator != 0) {
            bits.put(group.n_language_tag_bytes, 6).add(write_text(group.language_tag_bytes));
        }
    }
    return bits;
}

MetadataBits write_presentation_dsi(const DsiPresentation& p, bool indicators) {
    MetadataBits bits;
    bits.put(p.presentation_config_v1, 5);
    if (p.presentation_config_v1 != 6) {
        bits.add(write_audio(p));
    }
    if (p.b_add_emdf_substreams != 0) {
        bits.put(p.n_add_emdf_substreams, 7);
        for (const DsiEmdfSubstream& emdf : p.emdf_substreams) {
            bits.put(emdf.emdf_version, 5).put(emdf.substream_key_id, 10);
        }
    }
    bits.put(p.b_presentation_bitrate_info, 1);
    if (p.b_presentation_bitrate_info != 0) {
        bits.add(write_bit_rate(p.bit_rate_info));
    }
    bits.put(p.b_alternative, 1);
    if (p.b_alternative != 0) {
        bits.align().put(3, 16).bytes({'a', 'l', 't'}).put(2, 5).put(0x7FF, 11).put(0x123, 11);
    }
    bits.align();
    if (!indicators) {
        return bits;
    }
    bits.put(p.de_indicator, 1).put(p.orvel_sphere_indicator, 1).put(p.reserved_field_1, 4);
    bits.put(p.b_extended_presentation_id, 1);
    return p.b_extended_presentation_id != 0 ? bits.put(p.extended_presentation_id, 9)
                                             : bits.put(p.reserved_field_2, 1);
}

MetadataBits write_dsi_head(const DsiRecord& record) {
    MetadataBits bits;
    bits.put(record.dsi_version, 3).put(record.bitstream_version, 7).put(record.fs_index, 1);
    bits.put(record.frame_rate_index, 4).put(record.n_presentations, 9);
    bits.put(record.b_program_id, 1);
    if (record.b_program_id != 0) {
        bits.put(record.short_program_id, 16).put(record.b_uuid, 1);
        if (record.b_uuid != 0) {
            bits.bytes({record.program_uuid.begin(), record.program_uuid.end()});
        }
    }
    return bits.add(write_bit_rate(record.bit_rate_info)).align();
}

std::vector<std::uint8_t> write_dac4(const DsiRecord& record, const DsiWriting& writing) {
    MetadataBits bits = write_dsi_head(record);
    for (const DsiPresentation& presentation : record.presentations) {
        MetadataBits body = write_presentation_dsi(presentation, writing.indicators);
        body.bytes(std::vector<std::uint8_t>(writing.padding, 0xA5));
        const auto told = writing.told_bytes(static_cast<std::uint32_t>(body.size() / 8));
        bits.put(presentation.version, 8);
        told < 255 ? bits.put(told, 8) : bits.put(255, 8).put(told - 255, 16);
        bits.add(body);
    }
    return bits.to_bytes();
}

DsiRecord record_of(const ReferenceDsi& reference) {
    DsiRecord record;
    static_cast<DsiHead&>(record) = reference;
    record.presentations.assign(
        reference.presentations.begin(),
        reference.presentations.begin() + static_cast<std::ptrdiff_t>(reference.n_presentations));
    return record;
}

DsiRecord full_dsi_record() {
    DsiRecord record;
    record.dsi_version = 1;
    record.bitstream_version = 2;
    record.fs_index = 1;
    record.frame_rate_index = 13;
    record.n_presentations = 3;
    record.b_program_id = 1;
    record.short_program_id = 0xABCD;
    record.b_uuid = 1;
    record.program_uuid = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,
                           0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
    record.bit_rate_info = {1, 0xDEADBEEF, 0x12345678};

    DsiPresentation emdf_only;
    emdf_only.version = 1;
    emdf_only.presentation_config_v1 = 6;
    emdf_only.presentation_channel_mask_v1 = 0x800000;
    emdf_only.b_add_emdf_substreams = 1;
    emdf_only.n_add_emdf_substreams = 1;
    emdf_only.emdf_substreams = {{30, 1023}};

    DsiPresentation single;
    single.version = 2;
    single.presentation_config_v1 = 31;
    single.mdcompat = 1;
    single.presentation_channel_mask_v1 = 0x800000;
    single.groups.resize(1);
    single.groups[0].b_channel_coded = 1;
    single.groups[0].n_substreams = 1;
    single.groups[0].substreams = {channel_substream(1)};
    single.reserved_field_2 = 1;

    record.presentations = {coded_count_presentation(), emdf_only, single};
    return record;
}

}  // namespace mediasplit
