#include "ac4/metadata/presentation_substream.h"

#include "ac4/oamd/field_forms.h"

namespace mediasplit {
namespace {

void read_name(FieldReader& in, PresentationMetadata& out) {
    out.b_name_present = read_flag(in);
    if (!out.b_name_present) {
        return;
    }
    const bool b_length = read_flag(in);
    out.name_length = b_length ? read_byte(in, 5) : std::uint8_t{kPresentationNameBytes};
    for (std::size_t i = 0; i < out.name_length; ++i) {
        out.name[i] = static_cast<char>(read_field(in, 8));
    }
}

PresentationTarget read_target(FieldReader& in, int n_substreams) {
    PresentationTarget target;
    target.target_level = read_byte(in, 3);
    target.target_device_category = read_byte(in, 4);
    read_optional_field(in, 4);  // b_tdc_extension
    target.max_ducking_depth = read_optional_field(in, 6);
    target.loud_corr_target = read_optional_field(in, 5);
    for (int i = 0; i < n_substreams && field_ok(in); ++i) {
        const bool b_active = read_flag(in);
        if (b_active) {
            read_extended(in, 1, 1, 2);  // alt_data_set_index
            ++target.active_substreams;
        }
    }
    return target;
}

void read_targets(FieldReader& in, const PresentationFacts& facts, PresentationMetadata& out) {
    out.n_targets = read_extended(in, 2, 3, 2) + 1;
    for (std::uint32_t i = 0; i < out.n_targets && field_ok(in); ++i) {
        const PresentationTarget target = read_target(in, facts.n_substreams);
        if (i < out.targets.size()) {
            out.targets[i] = target;
        }
    }
}

// Only the first bit keeps its meaning over the editions of the standard; the byte count rules.
void read_additional_data(FieldReader& in, PresentationMetadata& out) {
    out.b_additional_data = read_flag(in);
    if (!out.b_additional_data) {
        return;
    }
    const std::uint64_t bytes = std::uint64_t{read_extended(in, 4, 15, 2)} + 1;
    align_field(in);
    read_enclosed(in, bytes * 8,
                  [&out](FieldReader& inner) { out.immersive_audio_indicator = read_flag(inner); });
}

void read_loudness(FieldReader& in, MetadataSlot& slot, PresentationMetadata& out) {
    const CodedField dialnorm{true, static_cast<std::uint16_t>(read_field(in, 7))};
    FurtherLoudness loudness;
    const bool b_further_loudness_info = read_flag(in);
    if (b_further_loudness_info) {
        parse_further_loudness_info(in, &loudness, 1, true);
    }
    if (!field_ok(in)) {
        return;
    }
    const LoudnessCarried carried = metadata_carry_loudness(slot, dialnorm, loudness);
    out.dialnorm_present = true;
    out.dialnorm = carried.dialnorm;
    out.loudness = carried.loudness;
    out.loudness_changed = carried.changed;
}

// Soft codes of the DRC part; its size leads on in any case.
std::uint32_t read_drc(FieldReader& in, const PresentationFacts& facts, MetadataSlot& slot,
                       PresentationMetadata& out) {
    std::uint32_t code = kMetadataOk;
    out.drc_metadata_size = read_extensible_size(in, 5, 3);
    if (out.drc_metadata_size == 0) {
        return code;
    }
    const DrcFacts drc{facts.b_pres_ndot, facts.ch_mode, facts.frame_length};
    const FieldError stopped = read_enclosed(in, out.drc_metadata_size, [&](FieldReader& inner) {
        code = parse_drc_frame(inner, &out.drc, &slot.drc, drc) & kMetadataSoftCodes;
    });
    return stopped == FieldError::kNone ? code : code | kMetadataNotUnderstood;
}

void skip_group_gains(FieldReader& in, int n_substream_groups) {
    if (n_substream_groups <= 1) {
        return;
    }
    const bool b_substream_group_gains_present = read_flag(in);
    if (b_substream_group_gains_present) {
        const bool b_keep = read_flag(in);
        skip_field(in, b_keep ? 0 : std::int64_t{6} * n_substream_groups);
    }
}

void read_associated_mix(FieldReader& in, PresentationMetadata& out) {
    out.b_associated = read_flag(in);
    if (out.b_associated) {
        out.scale_main = read_optional_field(in, 8);
        out.scale_main_centre = read_optional_field(in, 8);
        out.scale_main_front = read_optional_field(in, 8);
        out.pan_associated = read_optional_field(in, 8);
    }
}

// `bs_ch_config`, -1 for a presentation without custom downmixes.
int custom_downmix_source(const PresentationFacts& facts) {
    if (facts.ch_mode < 11 || facts.ch_mode > 14 || facts.top_channel_pairs < 1 ||
        facts.top_channel_pairs > 2) {
        return -1;
    }
    const int first = facts.top_channel_pairs == 2 ? 0 : 3;
    const bool wide = facts.ch_mode >= 13;
    if (facts.b_4_back_channels_present) {
        return first + (wide ? 0 : 1);
    }
    return wide ? -1 : first + 2;
}

enum class DownmixTool : std::uint8_t {
    kNone,
    kGain,       // 3 bits
    kTwoWay,     // one pair, front or side
    kThreeWay,   // one pair, front, side or back
    kTwoTwoWay,  // front and back pair
    kTwoThreeWay
};

struct DownmixTools {
    DownmixTool first = DownmixTool::kNone;
    DownmixTool second = DownmixTool::kNone;
};

void skip_tool(FieldReader& in, DownmixTool tool) {
    switch (tool) {
        case DownmixTool::kNone:
            break;
        case DownmixTool::kGain:
            skip_field(in, 3);
            break;
        case DownmixTool::kTwoTwoWay:
            skip_two_way_tool(in);
            [[fallthrough]];
        case DownmixTool::kTwoWay:
            skip_two_way_tool(in);
            break;
        case DownmixTool::kTwoThreeWay:
            skip_three_way_tool(in);
            [[fallthrough]];
        case DownmixTool::kThreeWay:
            skip_three_way_tool(in);
            break;
    }
}

// Tools by source and target: 5.1, 5.1.2, 5.1.4, 7.1, 7.1.2.
void skip_custom_downmix(FieldReader& in, int bs_ch_config) {
    using enum DownmixTool;
    using TargetRow = std::array<DownmixTools, 5>;
    constexpr TargetRow kFourTopsFourBacks = {{{kTwoTwoWay, kGain},
                                               {kGain, kGain},
                                               {kGain, kNone},
                                               {kTwoThreeWay, kNone},
                                               {kGain, kNone}}};
    constexpr TargetRow kFourTops = {{{kTwoTwoWay, kNone}, {kGain, kNone}, {}, {}, {}}};
    constexpr TargetRow kTwoTopsFourBacks = {
        {{kTwoWay, kGain}, {kGain, kNone}, {kGain, kNone}, {kThreeWay, kNone}, {}}};
    constexpr TargetRow kTwoTops = {{{kTwoWay, kNone}, {}, {}, {}, {}}};
    constexpr std::array<TargetRow, 6> kTools = {kFourTopsFourBacks, kFourTopsFourBacks, kFourTops,
                                                 kTwoTopsFourBacks,  kTwoTopsFourBacks,  kTwoTops};
    const bool few_targets = bs_ch_config == 2 || bs_ch_config == 5;
    const std::uint32_t out_ch_config = read_field(in, few_targets ? 1 : 3);
    if (bs_ch_config == 0 || bs_ch_config == 3) {
        skip_field(in, 1 + 3);  // tool_scr_to_c_l
    }
    const TargetRow& row = kTools[static_cast<std::size_t>(bs_ch_config)];
    if (out_ch_config < row.size()) {
        skip_tool(in, row[out_ch_config].first);
        skip_tool(in, row[out_ch_config].second);
    }
}

void read_custom_downmixes(FieldReader& in, const PresentationFacts& facts,
                           PresentationMetadata& out) {
    const int bs_ch_config = custom_downmix_source(facts);
    out.b_cdmx_data_present = bs_ch_config >= 0 && read_flag(in);
    if (out.b_cdmx_data_present) {
        out.n_cdmx_configs = static_cast<std::uint8_t>(read_field(in, 2) + 1);
        for (int i = 0; i < out.n_cdmx_configs; ++i) {
            skip_custom_downmix(in, bs_ch_config);
        }
    }
    if (facts.ch_mode >= 3 || facts.core_ch_mode >= 3) {
        const bool lfe = ch_mode_has(facts.ch_mode, kHasLfe) ||
                         (facts.ch_mode == kNoChannelMode &&
                          (facts.core_ch_mode == 4 || facts.core_ch_mode == 6));
        read_stereo_downmix(in, {.loudness_corrections = false, .lfe = lfe}, out.stereo_dmx);
    }
}

void read_loudness_corrections(FieldReader& in, const PresentationFacts& facts,
                               PresentationMetadata& out) {
    const int mode = facts.ch_mode;
    const int core = facts.core_ch_mode;
    out.b_obj_loud_corr = facts.b_objects && read_flag(in);
    const bool objects = out.b_obj_loud_corr;
    const bool immersive_source = mode > 4 || objects;
    out.b_corr_for_immersive_out = immersive_source && read_flag(in);
    const bool immersive = immersive_source && out.b_corr_for_immersive_out;
    const bool heights = (mode > 10 || objects) && out.b_corr_for_immersive_out;

    const auto skip_corrections = [&in](bool wanted, int count, int bits) {
        for (int i = 0; i < count && wanted; ++i) {
            skip_field(in, read_flag(in) ? bits : 0);
        }
    };
    skip_corrections(mode > 1 || objects, 2, 5);  // loro, ltrt
    skip_corrections(immersive_source, 1, 5);     // 5.X
    skip_corrections(immersive, 2, 5);            // 5.X.2, 7.X
    skip_corrections(heights, 3, 5);              // 7.X.4, 7.X.2, 5.X.4
    skip_corrections(core >= 5, 1, 5);            // core 5.X.2
    skip_corrections(core >= 3, 1, 5);            // core 5.X
    skip_corrections(core >= 3, 1, 10);           // core loro and ltrt behind one flag
    skip_corrections(objects, 1, 5);              // 9.X.4
}

}  // namespace

std::uint32_t parse_presentation_substream(FieldReader& in, MetadataSlot& slot,
                                           const PresentationFacts& told,
                                           PresentationMetadata* out) {
    *out = {};
    PresentationFacts facts = told;
    if (facts.core_ch_mode == facts.ch_mode) {
        facts.core_ch_mode = kNoChannelMode;  // a core that is the whole is none
    }
    if (facts.b_alternative) {
        read_name(in, *out);
        read_targets(in, facts, *out);
    }
    read_additional_data(in, *out);
    read_loudness(in, slot, *out);
    const std::uint32_t soft_codes = read_drc(in, facts, slot, *out);
    skip_group_gains(in, facts.n_substream_groups);
    read_associated_mix(in, *out);
    read_custom_downmixes(in, facts, *out);
    read_loudness_corrections(in, facts, *out);
    return field_ok(in) ? soft_codes : metadata_code(in);
}

std::uint32_t ac4analyze_parse_ac4_presentation_substream(Ac4MetadataState* state, int presentation,
                                                          const std::uint8_t* data,
                                                          std::size_t size,
                                                          const PresentationFacts& facts,
                                                          PresentationMetadata* out) {
    *out = {};
    if (size == 0) {
        return kMetadataOk;
    }
    MetadataSlot unkept;
    MetadataSlot* slot = metadata_presentation_slot(state, presentation);
    SubstreamReader reader(data, size);
    const std::uint32_t code =
        parse_presentation_substream(reader.in, slot != nullptr ? *slot : unkept, facts, out);
    metadata_count_bits(state, field_position(reader.in));
    return code;
}

}  // namespace mediasplit
