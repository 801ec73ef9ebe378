#include "tests/support/ac4_metadata_builder.h"

#include <algorithm>
#include <array>

namespace mediasplit {
namespace {

bool one_of(int value, std::initializer_list<int> values) {
    return std::find(values.begin(), values.end(), value) != values.end();
}

bool has_lfe(int ch_mode) {
    return one_of(ch_mode, {4, 6, 8, 10, 12, 14, 15});
}

// Pads to whole bytes with zeros.
std::string filled(std::string bits) {
    bits.resize((bits.size() + 7) / 8 * 8, '0');
    return bits;
}

MetadataBits write_curve_side(const DrcSideText& side, int gain_bits, int level_bits,
                              int section_gain_bits) {
    MetadataBits bits;
    bits.put(side.gain, gain_bits);
    if (side.gain > 0) {
        bits.put(side.level, level_bits).flag(side.section.has_value());
        if (side.section) {
            bits.put(side.section->first, section_gain_bits).put(side.section->second, 5);
        }
    }
    return bits;
}

MetadataBits write_curve(const DrcCurveText& curve) {
    MetadataBits bits;
    bits.put(curve.null_low, 4).put(curve.null_high, 4);
    bits.add(write_curve_side(curve.boost, 4, 5, 4));
    bits.add(write_curve_side(curve.cut, 5, 6, 5));
    bits.flag(!curve.time_constants);
    if (curve.time_constants) {
        for (const std::uint32_t constant : *curve.time_constants) {
            bits.put(constant, 8);
        }
        bits.flag(curve.smoothing.has_value());
        if (curve.smoothing) {
            bits.put(curve.smoothing->first, 5).put(curve.smoothing->second, 5);
        }
    }
    return bits;
}

MetadataBits write_gain_set(const DrcGainSetText& set) {
    MetadataBits body;
    body.put(set.version, 2);
    if (set.version <= 1) {
        body.put(set.first_gain, 7).code(set.codes);
    }
    body.code(set.rest);
    MetadataBits bits;
    bits.size_field(set.size.value_or(static_cast<std::uint32_t>(body.size())), 6, 2);
    return bits.add(body);
}

}  // namespace

MetadataBits& MetadataBits::put(std::uint64_t value, int n) {
    for (int bit = n - 1; bit >= 0; --bit) {
        text_.push_back((value >> bit & 1U) != 0 ? '1' : '0');
    }
    return *this;
}

MetadataBits& MetadataBits::code(std::string_view bits) {
    std::copy_if(bits.begin(), bits.end(), std::back_inserter(text_),
                 [](char c) { return c == '0' || c == '1'; });
    return *this;
}

MetadataBits& MetadataBits::bytes(const std::vector<std::uint8_t>& values) {
    for (const std::uint8_t value : values) {
        put(value, 8);
    }
    return *this;
}

MetadataBits& MetadataBits::variable(std::uint64_t value, int n) {
    const std::uint64_t mask = (std::uint64_t{1} << n) - 1;
    std::vector<std::uint64_t> groups{value & mask};
    for (std::uint64_t rest = value >> n; rest > 0; rest = (rest - 1) >> n) {
        groups.push_back((rest - 1) & mask);
    }
    for (std::size_t i = groups.size(); i-- > 0;) {
        put(groups[i], n).flag(i != 0);
    }
    return *this;
}

MetadataBits& MetadataBits::escaped(std::uint64_t value, int n, int more) {
    const std::uint64_t escape = (std::uint64_t{1} << n) - 1;
    put(std::min(value, escape), n);
    return value >= escape ? variable(value - escape, more) : *this;
}

MetadataBits& MetadataBits::optional(const std::optional<std::uint32_t>& value, int n) {
    flag(value.has_value());
    return value ? put(*value, n) : *this;
}

MetadataBits& MetadataBits::size_field(std::uint64_t value, int n, int more) {
    put(value & ((std::uint64_t{1} << n) - 1), n).flag(value >> n != 0);
    return value >> n != 0 ? variable(value >> n, more) : *this;
}

MetadataBits& MetadataBits::align() {
    text_ = filled(text_);
    return *this;
}

MetadataBits MetadataBits::first(std::size_t count) const {
    MetadataBits part;
    part.text_ = text_.substr(0, count);
    return part;
}

std::vector<std::uint8_t> MetadataBits::to_bytes() const {
    const std::string whole = filled(text_);
    std::vector<std::uint8_t> out(whole.size() / 8);
    for (std::size_t i = 0; i < whole.size(); ++i) {
        out[i / 8] = static_cast<std::uint8_t>(out[i / 8] << 1 | (whole[i] == '1' ? 1 : 0));
    }
    return out;
}

MetadataBits write_loudness(const LoudnessText& text, int sus_ver, bool presentation) {
    MetadataBits bits;
    const bool full = presentation || sus_ver == 0;
    if (full) {
        bits.put(std::min<std::uint32_t>(text.version, 3), 2);
        if (text.version >= 3) {
            bits.put(text.version - 3, 4);
        }
        bits.put(text.practice, 4);
        if (text.practice != 0) {
            bits.optional(text.dialgate_practice, 3).flag(text.loudcorr_type);
        }
    } else {
        bits.flag(text.dialgate_practice.has_value());
    }
    bits.optional(text.relgat, 11).optional(text.spchgat, 11);
    if (text.spchgat) {
        bits.put(text.speech_practice, 3);
    }
    bits.optional(text.strm3s, 11).optional(text.max_strm3s, 11);
    bits.optional(text.truepk, 11).optional(text.max_truepk, 11);
    if (full) {
        bits.flag(text.boundary_zeros.has_value());
        if (text.boundary_zeros) {
            bits.code(std::string(*text.boundary_zeros, '0')).flag(true);
            bits.flag(text.boundary_end).optional(text.boundary_offset, 11);
        }
    }
    bits.optional(text.lra, 10);
    if (text.lra) {
        bits.put(text.lra_practice, 3);
    }
    bits.optional(text.mntry, 11).optional(text.max_mntry, 11);
    if (sus_ver == 1) {
        bits.optional(text.rtll_comp, 8);
    }
    bits.flag(text.extension.has_value());
    if (text.extension) {
        bits.escaped(text.extension->size(), 5, 4).code(*text.extension);
    }
    return bits;
}

MetadataBits write_stereo_downmix(const std::optional<StereoDownmixText>& text, bool corrections,
                                  bool lfe) {
    MetadataBits bits;
    bits.flag(text.has_value());
    if (!text) {
        return bits;
    }
    bits.put(text->loro_centre, 3).put(text->loro_surround, 3);
    if (corrections) {
        bits.optional(text->loro_correction, 5);
    }
    bits.flag(text->ltrt.has_value());
    if (text->ltrt) {
        bits.put(text->ltrt->first, 3).put(text->ltrt->second, 3);
    }
    if (corrections) {
        bits.optional(text->ltrt_correction, 5);
    }
    if (lfe) {
        bits.optional(text->lfe, 5);
    }
    return bits.put(text->preferred, 2);
}

MetadataBits write_basic(const BasicText& text, int sus_ver, int ch_mode) {
    MetadataBits bits;
    if (sus_ver == 0) {
        bits.put(text.dialnorm, 7);
    }
    bits.flag(text.more);
    if (!text.more) {
        return bits;
    }
    if (sus_ver == 1) {
        bits.optional(text.substream_loudness, 8);
    }
    if (sus_ver == 0 || text.substream_loudness) {
        bits.flag(text.loudness.has_value());
        if (text.loudness) {
            bits.add(write_loudness(*text.loudness, sus_ver, false));
        }
    }
    if (ch_mode == 1) {
        bits.optional(text.dmixtyp_2ch, 3);
        if (text.dmixtyp_2ch) {
            bits.put(text.phase90_2ch, 2);
        }
    }
    if (ch_mode > 1) {
        if (sus_ver == 0) {
            bits.add(write_stereo_downmix(text.downmix, true, has_lfe(ch_mode)));
        }
        if (one_of(ch_mode, {3, 4})) {
            bits.optional(text.dmixtyp_5ch, 3).optional(text.upmixtyp_5ch, 4);
        }
        if (one_of(ch_mode, {5, 6})) {
            bits.optional(text.upmixtyp_7ch, 2);
        } else if (one_of(ch_mode, {7, 8})) {
            bits.flag(text.upmixtyp_7ch.has_value());
        } else if (one_of(ch_mode, {9, 10})) {
            bits.optional(text.upmixtyp_7ch, 1);
        }
        bits.put(text.phase90_mc, 2).flag(text.surround_known).flag(text.lfe_known);
    }
    return bits.optional(text.dc_block, 1);
}

MetadataBits write_extended(const ExtendedText& text, int sus_ver, int ch_mode) {
    MetadataBits bits;
    if (sus_ver == 1) {
        bits.flag(text.dialog);
    }
    if (sus_ver == 0 && text.associated) {
        bits.optional(text.scale_main, 8).optional(text.scale_main_centre, 8);
        bits.optional(text.scale_main_front, 8);
        if (ch_mode == 0) {
            bits.put(text.pan_associated, 8);
        }
    }
    if (text.dialog) {
        bits.optional(text.dialog_max_gain, 2).flag(!text.pan_dialog.empty());
        for (const std::uint32_t pan : text.pan_dialog) {
            bits.put(pan, 8);
        }
        if (text.pan_dialog.size() == 2) {
            bits.put(text.pan_selector, 2);
        }
    }
    bits.flag(text.classifier);
    if (text.classifier) {
        const bool side = ch_mode >= 3;
        const bool left_right = ch_mode >= 1;
        const bool back = one_of(ch_mode, {5, 6, 11, 12, 13, 14, 15});
        const bool wide = one_of(ch_mode, {7, 8, 15});
        const bool top = one_of(ch_mode, {9, 10});
        const std::array<bool, 12> there = {ch_mode == 0 || ch_mode >= 2,
                                            left_right,
                                            left_right,
                                            side,
                                            side,
                                            back,
                                            back,
                                            wide,
                                            wide,
                                            top,
                                            top,
                                            has_lfe(ch_mode)};
        for (std::size_t i = 0; i < there.size(); ++i) {
            const bool active = (text.active >> i & 1U) != 0;
            if (there[i]) {
                bits.flag(active);
            }
            if (there[i] && active && i < 3) {
                bits.flag((text.has_dialog >> i & 1U) != 0);
            }
        }
    }
    return bits.optional(text.event_probability, 4);
}

MetadataBits write_drc_mode(const DrcModeText& mode) {
    MetadataBits bits;
    bits.put(mode.id, 3);
    if (mode.id > 3) {
        bits.put(mode.level_from, 5).put(mode.level_to, 5);
    }
    bits.optional(mode.repeat_id, 3);
    if (!mode.repeat_id) {
        bits.flag(mode.default_profile);
        if (!mode.default_profile) {
            bits.flag(mode.curve.has_value());
            if (mode.curve) {
                bits.add(write_curve(*mode.curve));
            } else {
                bits.put(mode.gains_config, 2);
            }
        }
    }
    return bits;
}

MetadataBits write_drc(const std::optional<DrcText>& text) {
    MetadataBits bits;
    bits.flag(text.has_value());
    if (!text) {
        return bits;
    }
    if (!text->modes.empty()) {
        bits.put(text->modes.size() - 1, 3);
        for (const DrcModeText& mode : text->modes) {
            bits.add(write_drc_mode(mode));
        }
        bits.put(text->eac3_profile, 3);
    }
    for (const DrcGainSetText& set : text->gain_sets) {
        bits.add(write_gain_set(set));
    }
    if (text->reset) {
        bits.flag(*text->reset).put(0, 2);
    }
    return bits;
}

MetadataBits write_de(const std::optional<DeText>& text) {
    MetadataBits bits;
    bits.flag(text.has_value());
    if (!text) {
        return bits;
    }
    if (text->config_flag) {
        bits.flag(*text->config_flag);
    }
    if (text->config) {
        bits.put(text->method, 2).put(text->max_gain, 2).put(text->channels, 3);
    }
    bits.code(text->data);
    if (text->simulcast) {
        bits.flag(*text->simulcast).code(text->simulcast_data);
    }
    return bits;
}

MetadataBits write_emdf_payload(const EmdfText& text) {
    MetadataBits bits;
    const auto optional_variable = [&bits](const OptionalCode& value, int n) {
        bits.flag(value.has_value());
        if (value) {
            bits.variable(*value, n);
        }
    };
    bits.escaped(text.id, 5, 5);
    optional_variable(text.smpoffst, 11);
    optional_variable(text.duration, 11);
    optional_variable(text.groupid, 2);
    bits.optional(text.codecdata, 8);
    bits.flag(text.discard);
    if (!text.discard) {
        if (!text.smpoffst) {
            bits.flag(text.frame_aligned);
            bits.code(text.frame_aligned ? "10" : "");
        }
        if (text.smpoffst || text.frame_aligned) {
            bits.put(21, 5).put(2, 2);
        }
    }
    bits.variable(text.size.value_or(static_cast<std::uint32_t>(text.payload.size())), 8);
    return bits.bytes(text.payload);
}

MetadataBits write_emdf(const std::vector<EmdfText>& payloads) {
    MetadataBits bits;
    for (const EmdfText& payload : payloads) {
        bits.add(write_emdf_payload(payload));
    }
    return bits.put(0, 5);
}

std::vector<std::uint8_t> write_ims(const ImsText& text) {
    MetadataBits bits;
    bits.put(text.version, 2).put(text.code_3, 3).flag(text.flag_1).optional(text.code_5, 5);
    bits.put(text.code_2, 2).flag(text.flag_2).flag(text.tail.has_value());
    if (text.tail) {
        bits.put(text.tail->first, 2).flag(text.tail->second);
    }
    return bits.to_bytes();
}

MetadataBits write_metadata(const SubstreamText& text) {
    MetadataBits bits = write_basic(text.basic, text.sus_ver, text.ch_mode);
    bits.add(write_extended(text.extended, text.sus_ver, text.ch_mode)).add(text.objects);
    MetadataBits tools;
    if (text.sus_ver == 0) {
        tools.add(write_drc(text.drc));
    }
    tools.add(write_de(text.de)).code(text.tools_padding);
    bits.size_field(text.tools_size.value_or(static_cast<std::uint32_t>(tools.size())), 7, 3);
    bits.add(tools).flag(text.emdf.has_value());
    if (text.emdf) {
        bits.add(write_emdf(*text.emdf));
    }
    return bits;
}

std::vector<std::uint8_t> write_substream(const SubstreamText& text) {
    MetadataBits bits;
    bits.size_field(text.audio_bytes, 15, 7);
    bits.bytes(std::vector<std::uint8_t>(text.audio_bytes, 0xA5));
    return bits.add(write_metadata(text)).to_bytes();
}

MetadataBits write_presentation(const PresentationText& text) {
    MetadataBits bits;
    if (text.alternative) {
        bits.flag(text.name.has_value());
        if (text.name) {
            bits.flag(!text.long_name);
            if (!text.long_name) {
                bits.put(text.name->size(), 5);
            }
            bits.bytes({text.name->begin(), text.name->end()});
        }
        bits.escaped(text.targets.size() - 1, 2, 2);
        for (const TargetText& target : text.targets) {
            bits.put(target.level, 3).put(target.category, 4).optional(target.extension, 4);
            bits.optional(target.ducking, 6).optional(target.loudness, 5);
            for (const OptionalCode& substream : target.substreams) {
                bits.flag(substream.has_value());
                if (substream) {
                    bits.escaped(*substream, 1, 2);
                }
            }
        }
    }
    bits.flag(text.additional.has_value());
    if (text.additional) {
        const std::string body = filled(*text.additional);
        bits.escaped(body.size() / 8 - 1, 4, 2).align().code(body);
    }
    bits.put(text.dialnorm, 7).flag(text.loudness.has_value());
    if (text.loudness) {
        bits.add(write_loudness(*text.loudness, 1, true));
    }
    const MetadataBits drc = write_drc(text.drc);
    bits.size_field(text.drc_size.value_or(static_cast<std::uint32_t>(drc.size())), 5, 3);
    return bits.add(drc).add(text.tail);
}

MetadataBits write_trim(std::uint32_t warp_mode, std::uint32_t mode,
                        const std::vector<TrimText>& trims) {
    MetadataBits bits;
    bits.flag(true).put(warp_mode, 2).put(0, 2).put(mode, 2);
    for (const TrimText& trim : trims) {
        bits.flag(trim.automatic);
        if (trim.automatic) {
            continue;
        }
        bits.flag(trim.disabled);
        if (trim.disabled) {
            continue;
        }
        for (const OptionalCode& value : trim.codes) {
            bits.flag(value.has_value());
        }
        for (std::size_t i = 0; i < trim.codes.size(); ++i) {
            if (trim.codes[i]) {
                bits.put(*trim.codes[i], i < 3 ? 4 : 5);
            }
        }
    }
    return bits;
}

MetadataBits write_oamd_common(const OamdCommonText& text) {
    MetadataBits bits;
    bits.flag(!text.screen_ratio);
    if (text.screen_ratio) {
        bits.put(*text.screen_ratio, 5);
    }
    bits.flag(text.distribute).flag(text.additional.has_value());
    if (text.additional) {
        const std::string body = filled(*text.additional);
        bits.escaped(body.size() / 8 - 1, 1, 2).code(body);
    }
    return bits;
}

MetadataBits write_oamd_timing(const OamdTimingText& text) {
    MetadataBits bits;
    bits.code(text.sample_offset).put(text.blocks.size(), 3);
    for (const auto& [offset_factor, ramp] : text.blocks) {
        bits.put(offset_factor, 6).code(ramp);
    }
    return bits;
}

}  // namespace mediasplit
