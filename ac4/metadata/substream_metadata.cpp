#include "ac4/metadata/substream_metadata.h"

#include <array>

#include "ac4/oamd/field_forms.h"

namespace mediasplit {
namespace {

constexpr float kPanStep = 1.5F;         // degrees
constexpr float kDialogGainStep = 3.0F;  // dB

// Reading of one substream: where, with what facts, what came out.
struct Reading {
    FieldReader& in;
    const SubstreamFacts& facts;
    SubstreamMetadata& out;
    MetadataSlot& slot;
    std::uint32_t soft_codes = 0;
};

float read_pan(FieldReader& in) {
    return kPanStep * static_cast<float>(read_field(in, 8));
}

bool is_between(int value, int low, int high) {
    return value >= low && value <= high;
}

void read_loudness(Reading& r, FurtherLoudness& loudness) {
    FieldReader& in = r.in;
    if (r.facts.sus_ver == 0) {
        if (read_flag(in)) {
            parse_further_loudness_info(in, &loudness, r.facts.sus_ver, false);
        }
        return;
    }
    r.out.basic.substream_loudness = read_optional_field(in, 8);
    if (r.out.basic.substream_loudness.present && read_flag(in)) {
        parse_further_loudness_info(in, &loudness, r.facts.sus_ver, false);
    }
}

void read_7ch_upmix(FieldReader& in, int ch_mode, BasicMetadata& basic) {
    basic.pre_upmixtyp_7ch.present = read_flag(in);
    if (basic.pre_upmixtyp_7ch.present) {
        const bool back = ch_mode_has(ch_mode, kHasBack);
        const bool top = ch_mode_has(ch_mode, kHasTopFront);
        basic.pre_upmixtyp_7ch.value =
            static_cast<std::uint16_t>(read_field(in, back ? 2 : (top ? 1 : 0)));
    }
}

void read_multichannel_basics(Reading& r) {
    FieldReader& in = r.in;
    BasicMetadata& basic = r.out.basic;
    const int ch_mode = r.facts.ch_mode;
    if (r.facts.sus_ver == 0) {
        read_stereo_downmix(in,
                            {.loudness_corrections = true, .lfe = ch_mode_has(ch_mode, kHasLfe)},
                            basic.stereo_dmx);
    }
    if (is_between(ch_mode, 3, 4)) {
        basic.pre_dmixtyp_5ch = read_optional_field(in, 3);
        basic.pre_upmixtyp_5ch = read_optional_field(in, 4);
    }
    if (is_between(ch_mode, 5, 10)) {
        read_7ch_upmix(in, ch_mode, basic);
    }
    basic.phase90_info_mc = read_byte(in, 2);
    basic.b_surround_attenuation_known = read_flag(in);
    basic.b_lfe_attenuation_known = read_flag(in);
}

// Everything of `basic_metadata` behind `b_more_basic_metadata`.
FurtherLoudness read_more_basic_metadata(Reading& r) {
    FurtherLoudness loudness;
    read_loudness(r, loudness);
    if (r.facts.ch_mode == 1) {
        r.out.basic.pre_dmixtyp_2ch = read_optional_field(r.in, 3);
        if (r.out.basic.pre_dmixtyp_2ch.present) {
            r.out.basic.phase90_info_2ch = read_byte(r.in, 2);
        }
    }
    if (r.facts.ch_mode > 1) {
        read_multichannel_basics(r);
    }
    r.out.basic.dc_block_on = read_optional_field(r.in, 1);
    return loudness;
}

void read_basic_metadata(Reading& r) {
    CodedField dialnorm;
    if (r.facts.sus_ver == 0) {
        dialnorm = {true, static_cast<std::uint16_t>(read_field(r.in, 7))};
    }
    FurtherLoudness loudness;
    r.out.basic.more = read_flag(r.in);
    if (r.out.basic.more) {
        loudness = read_more_basic_metadata(r);
    }
    if (!field_ok(r.in)) {
        return;
    }
    const LoudnessCarried carried = metadata_carry_loudness(r.slot, dialnorm, loudness);
    r.out.dialnorm_present = dialnorm.present;
    r.out.dialnorm = carried.dialnorm;
    r.out.loudness = carried.loudness;
    r.out.loudness_changed = carried.changed;
}

void read_associated_mix(Reading& r) {
    FieldReader& in = r.in;
    ExtendedMetadata& extended = r.out.extended;
    extended.scale_main = read_optional_field(in, 8);
    extended.scale_main_centre = read_optional_field(in, 8);
    extended.scale_main_front = read_optional_field(in, 8);
    extended.pan_associated_present = r.facts.ch_mode == 0;
    if (extended.pan_associated_present) {
        extended.pan_associated = read_pan(in);
    }
}

void read_dialog(Reading& r) {
    FieldReader& in = r.in;
    ExtendedMetadata& extended = r.out.extended;
    extended.dialog_max_gain_present = read_flag(in);
    if (extended.dialog_max_gain_present) {
        extended.dialog_max_gain = kDialogGainStep * static_cast<float>(read_field(in, 2) + 1);
    }
    const bool b_pan_dialog_present = read_flag(in);
    if (!b_pan_dialog_present) {
        return;
    }
    extended.pan_dialog_count = r.facts.ch_mode == 0 ? 1 : 2;
    extended.pan_dialog[0] = read_pan(in);
    if (extended.pan_dialog_count == 2) {
        extended.pan_dialog[1] = read_pan(in);
        extended.pan_signal_selector = read_byte(in, 2);
    }
}

void read_channels_classifier(Reading& r) {
    struct ChannelRow {
        ChannelSet needed;
        bool may_have_dialog;
    };
    constexpr std::array<ChannelRow, 12> kRows = {{{kHasCentre, true},
                                                   {kHasLeftRight, true},
                                                   {kHasLeftRight, true},
                                                   {kHasSurround, false},
                                                   {kHasSurround, false},
                                                   {kHasBack, false},
                                                   {kHasBack, false},
                                                   {kHasWide, false},
                                                   {kHasWide, false},
                                                   {kHasTopFront, false},
                                                   {kHasTopFront, false},
                                                   {kHasLfe, false}}};
    ExtendedMetadata& extended = r.out.extended;
    std::uint16_t channel = 1;
    for (const ChannelRow& row : kRows) {
        if (ch_mode_has(r.facts.ch_mode, row.needed) && read_flag(r.in)) {
            extended.active_channels |= channel;
            if (row.may_have_dialog && read_flag(r.in)) {
                extended.dialog_channels |= channel;
            }
        }
        channel = static_cast<std::uint16_t>(channel << 1);
    }
}

void read_extended_metadata(Reading& r) {
    ExtendedMetadata& extended = r.out.extended;
    extended.b_dialog = r.facts.sus_ver == 0 ? r.facts.b_dialog : read_flag(r.in);
    if (r.facts.sus_ver == 0 && r.facts.b_associated) {
        read_associated_mix(r);
    }
    if (extended.b_dialog) {
        read_dialog(r);
    }
    extended.b_channels_classifier = read_flag(r.in);
    if (extended.b_channels_classifier) {
        read_channels_classifier(r);
    }
    extended.event_probability = read_optional_field(r.in, 4);
}

// Object blocks of an alternative presentation. Their syntax has no size, so without the objects
// nothing behind them can be found; false then.
bool read_alternative_objects(Reading& r) {
    if (!r.facts.b_object_coded || r.facts.b_ajoc || !r.facts.objects.b_alternative) {
        return true;
    }
    if (r.facts.objects.objects.empty()) {
        r.soft_codes |= kMetadataNotUnderstood;
        return false;
    }
    oamd_read_dyndata(r.in, r.facts.objects, true, nullptr);
    return true;
}

// DRC and dialogue enhancement. A part whose configuration wasn't seen cannot be stepped over, and
// one that leaves its declared size is not understood; neither keeps the rest from being read.
void read_tools(Reading& r) {
    r.out.tools_metadata_size = read_extensible_size(r.in, 7, 3);
    const FieldError stopped =
        read_enclosed(r.in, r.out.tools_metadata_size, [&r](FieldReader& inner) {
            const SubstreamFacts& facts = r.facts;
            std::uint32_t code = kMetadataOk;
            if (facts.sus_ver == 0) {
                const DrcFacts drc{facts.b_iframe, facts.ch_mode, facts.frame_length};
                code = parse_drc_frame(inner, &r.out.drc, &r.slot.drc, drc);
            }
            if (code == kMetadataOk) {
                code = parse_dialog_enhancement(inner, &r.out.de, &r.slot.de, facts.b_iframe,
                                                facts.ch_mode);
            }
            r.soft_codes |= code & kMetadataSoftCodes;
        });
    if (stopped != FieldError::kNone) {
        r.soft_codes |= kMetadataNotUnderstood;
    }
}

std::uint32_t read_metadata(Reading& r, Ac4MetadataState* state, int substream) {
    read_basic_metadata(r);
    read_extended_metadata(r);
    if (!read_alternative_objects(r)) {
        return metadata_code(r.in);
    }
    read_tools(r);
    const bool b_emdf_payloads_substream = read_flag(r.in);
    if (!b_emdf_payloads_substream) {
        return metadata_code(r.in);
    }
    return parse_emdf_payloads_substream(state, substream, r.in, &r.out.emdf);
}

}  // namespace

std::uint32_t ac4analyze_get_substream_metadata(Ac4MetadataState* state, int substream,
                                                const std::uint8_t* data, std::size_t size,
                                                const SubstreamFacts& facts,
                                                SubstreamMetadata* out) {
    *out = {};
    if (size == 0) {
        return kMetadataOk;
    }
    SubstreamReader reader(data, size);
    FieldReader& in = reader.in;
    out->audio_size = read_extensible_size(in, 15, 7);
    skip_field(in, static_cast<std::int64_t>(out->audio_size) * 8);
    if (!field_ok(in)) {
        return metadata_code(in);
    }
    const std::int64_t start = field_position(in);
    MetadataSlot unkept;
    MetadataSlot* slot = metadata_substream_slot(state, substream);
    Reading reading{in, facts, *out, slot != nullptr ? *slot : unkept};
    const std::uint32_t code = read_metadata(reading, state, substream);
    metadata_count_bits(state, field_position(in) - start);
    out->ims = reading.slot.ims;
    return metadata_is_fatal(code) ? code : code | reading.soft_codes;
}

}  // namespace mediasplit
