#include "ac4/oamd/object_data.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "ac4/oamd/field_forms.h"
#include "ac4/oamd/oamdi_q15.h"

namespace mediasplit {
namespace {

constexpr int kPositionSteps = 62;  // x and y
constexpr int kHeightSteps = 15;
constexpr int kWidthSteps = 31;
constexpr int kDivergenceSteps = 63;
constexpr std::int16_t kMostQ15 = 32767;

constexpr std::array<std::uint16_t, 16> kRampTable = {
    32, 64, 128, 256, 320, 480, 1000, 1001, 1024, 1600, 1601, 1602, 1920, 2000, 2002, 2048};

// The codes 0, 10 and 11 as 0, 1 and 2.
int read_three_way_code(FieldReader& in) {
    if (!read_flag(in)) {
        return 0;
    }
    return read_flag(in) ? 2 : 1;
}

std::int16_t q15_from_steps(std::int32_t code, std::int32_t steps) {
    const std::int32_t value = (code * 32768 + steps / 2) / steps;
    return static_cast<std::int16_t>(std::min<std::int32_t>(value, kMostQ15));
}

// Sign bit and magnitude of the height.
std::int16_t read_height(FieldReader& in) {
    const bool positive = read_flag(in);
    const std::int16_t height = q15_from_steps(static_cast<int>(read_field(in, 4)), kHeightSteps);
    return static_cast<std::int16_t>(positive ? height : -height);
}

std::int16_t read_position(FieldReader& in) {
    return q15_from_steps(static_cast<int>(read_field(in, 6)), kPositionSteps);
}

// A coordinate moved by a signed 3-bit count of its steps.
std::int16_t read_moved(FieldReader& in, std::int16_t from, int steps, int lowest) {
    const auto coded = static_cast<int>(read_field(in, 3));
    const int move = coded < 4 ? coded : coded - 8;
    const SignMagnitudeQ15 start = AC4_ANALYZE_oamdi_get_smag_Q15(from);
    const int magnitude = AC4_ANALYZE_oamdi_round_from_Q15_away_from_zero(steps, start.magnitude);
    const int to = std::clamp((start.negative ? -magnitude : magnitude) + move, lowest, steps);
    const std::int16_t value = q15_from_steps(to < 0 ? -to : to, steps);
    return static_cast<std::int16_t>(to < 0 ? -value : value);
}

void skip_ext_prec_pos(FieldReader& in) {
    for (std::uint32_t presence = read_field(in, 3); presence != 0; presence &= presence - 1) {
        skip_field(in, 2);
    }
}

void read_object_basic_info(FieldReader& in, OamdObjInfoBlk& blk) {
    blk.gain = 0;
    blk.gain_muted = 0;
    blk.priority = kMostQ15;
    const bool b_default_basic_info_md = read_flag(in);
    if (b_default_basic_info_md) {
        return;
    }
    const int basic_info_md = read_three_way_code(in);
    if (basic_info_md != 2) {
        const int object_gain_code = read_three_way_code(in);
        if (object_gain_code == 0) {
            // +15 dB down to -49 dB; 0 dB has no code, since it is the default.
            const auto value = static_cast<int>(read_field(in, 6));
            blk.gain = static_cast<std::int16_t>(value < 15 ? 15 - value : 14 - value);
        }
        blk.gain_muted = object_gain_code == 1 ? 1 : 0;
    }
    if (basic_info_md != 0) {
        blk.priority = static_cast<std::uint16_t>(
            q15_from_steps(static_cast<int>(read_field(in, 5)), kWidthSteps));
    }
}

void read_object_position(FieldReader& in, bool b_no_delta, OamdObjInfoBlk& blk) {
    const bool b_diff_pos_coding = !b_no_delta && read_flag(in);
    auto& [x, y, z] = blk.position;
    if (b_diff_pos_coding) {
        x = read_moved(in, x, kPositionSteps, 0);
        y = read_moved(in, y, kPositionSteps, 0);
        z = read_moved(in, z, kHeightSteps, -kHeightSteps);
    } else {
        x = read_position(in);
        y = read_position(in);
        z = read_height(in);
    }
}

void read_object_zone(FieldReader& in, OamdObjInfoBlk& blk) {
    blk.zone_flags = 0;
    blk.zone_mask = 0;
    const bool b_grouped_zone_defaults = read_flag(in);
    if (!b_grouped_zone_defaults) {
        blk.zone_flags = read_byte(in, 3);
        blk.zone_mask = (blk.zone_flags & 4U) != 0 ? read_byte(in, 3) : std::uint8_t{0};
    }
}

void read_object_width(FieldReader& in, OamdObjInfoBlk& blk) {
    const bool three_axes = read_flag(in);
    const auto read_width = [&in] {
        return q15_from_steps(static_cast<int>(read_field(in, 5)), kWidthSteps);
    };
    blk.width.fill(read_width());
    if (three_axes) {
        blk.width[1] = read_width();
        blk.width[2] = read_width();
    }
}

void read_object_divergence(FieldReader& in, OamdObjInfoBlk& blk) {
    blk.div_mode = read_byte(in, 2);
    if (blk.div_mode == 0) {
        blk.divergence = q15_from_steps(static_cast<int>(read_field(in, 2)), 3);
    } else if (blk.div_mode >= 2) {
        blk.divergence = q15_from_steps(static_cast<int>(read_field(in, 6)), kDivergenceSteps);
    }
}

void read_object_other(FieldReader& in, OamdObjInfoBlk& blk) {
    const bool b_grouped_other_defaults = read_flag(in);
    const std::uint32_t mask = b_grouped_other_defaults ? 0 : read_field(in, 4);
    if ((mask & 1U) != 0) {
        read_object_width(in, blk);
    }
    if ((mask & 2U) != 0) {
        blk.screen_factor_code = read_byte(in, 3);
        blk.depth_factor = read_byte(in, 2);
    }
    if ((mask & 4U) != 0) {
        blk.at_infinity = read_flag(in) ? 1 : 0;
        blk.distance_code = blk.at_infinity != 0
                                ? std::uint16_t{0}
                                : static_cast<std::uint16_t>(read_field(in, 4) + 1);
    }
    if ((mask & 8U) != 0) {
        read_object_divergence(in, blk);
    }
}

void read_object_render_info(FieldReader& in, bool b_no_delta, bool part, OamdObjInfoBlk& blk) {
    const std::uint32_t present = part ? read_field(in, 3) : 7U;
    if ((present & 1U) != 0) {
        read_object_position(in, b_no_delta, blk);
    }
    if ((present & 2U) != 0) {
        read_object_zone(in, blk);
    }
    if ((present & 4U) != 0) {
        read_object_other(in, blk);
    }
}

// `add_table_data`, whose byte count rules over what is known of it.
void read_table_data(FieldReader& in, bool may_have_position, OamdObjInfoBlk& blk) {
    const std::uint64_t bytes = std::uint64_t{read_field(in, 4)} + 1;
    read_enclosed(in, bytes * 8, [may_have_position, &blk](FieldReader& inner) {
        blk.trim_disabled = read_flag(inner) ? 1 : 0;
        if (may_have_position && read_flag(inner)) {
            skip_ext_prec_pos(inner);
        }
        if (read_flag(inner)) {
            blk.hp_render_mode = read_byte(inner, 2);
        }
    });
}

// Brings `blk` from the former block's values to this one's; false for an object not active.
bool read_object_info_block(FieldReader& in, bool b_no_delta, bool b_dynamic_object,
                            OamdObjInfoBlk& blk) {
    const bool active = !read_flag(in);
    blk.reused = 0;
    if (active) {
        const bool basic_reused = !b_no_delta && read_flag(in);
        if (!basic_reused) {
            read_object_basic_info(in, blk);
        }
        bool render_reused = false;
        if (b_dynamic_object) {
            render_reused = !b_no_delta && read_flag(in);
            const bool part = !b_no_delta && !render_reused && read_flag(in);
            if (!render_reused) {
                read_object_render_info(in, b_no_delta, part, blk);
            }
        }
        blk.reused = basic_reused && (render_reused || !b_dynamic_object) ? 1 : 0;
    }
    const bool b_add_table_data = read_flag(in);
    if (b_add_table_data) {
        read_table_data(in, active && b_dynamic_object, blk);
    }
    return active;
}

// The last values known of an object, from the block that the former frame ended with.
OamdObjInfoBlk last_values(const oamdi* info, int object) {
    const int last = std::max(AC4_ANALYZE_oamdi_get_num_obj_info_blks(info), 1) - 1;
    const OamdObjInfoBlk* blk = AC4_ANALYZE_oamdi_get_obj_info_blk(info, object, last);
    return blk != nullptr ? *blk : OamdObjInfoBlk{};
}

void read_object_blocks(FieldReader& in, const OamdObjectFacts& facts, oamdi* info) {
    for (std::size_t i = 0; i < facts.objects.size() && field_ok(in); ++i) {
        const auto object = static_cast<int>(i);
        const bool dynamic = facts.objects[i] == OamdObjectKind::kDynamic;
        OamdObjInfoBlk blk = last_values(info, object);
        for (int block = 0; block < facts.num_obj_info_blocks && field_ok(in); ++block) {
            const bool active =
                read_object_info_block(in, facts.b_ndot && block == 0, dynamic, blk);
            AC4_ANALYZE_oamdi_set_obj_info_blk(info, object, block, blk);
            AC4_ANALYZE_oamdi_set_obj_not_active(info, object, block, !active);
        }
    }
}

// One data point of an alternative set; the gain code, or -1 for none.
std::int32_t read_alternative_point(FieldReader& in, bool dynamic) {
    const CodedField gain = read_optional_field(in, 6);
    if (dynamic && read_flag(in)) {
        skip_field(in, 6 + 6 + 1 + 4);
    }
    return gain.present ? gain.value : -1;
}

void read_alternative_set(FieldReader& in, const OamdObjectFacts& facts,
                          std::span<OamdObject> objects) {
    const bool b_keep = read_flag(in);
    if (!b_keep) {
        const bool isf = facts.objects.front() == OamdObjectKind::kIsf;
        const bool one_point = isf || read_flag(in);
        const std::size_t points = one_point ? 1 : facts.objects.size();
        for (std::size_t i = 0; i < points && field_ok(in); ++i) {
            const std::int32_t gain =
                read_alternative_point(in, facts.objects[i] == OamdObjectKind::kDynamic);
            if (i < objects.size()) {
                objects[i].alt_gain_code = gain;
            }
        }
    }
    const bool b_additional_data = read_flag(in);
    if (b_additional_data) {
        skip_field(in, (std::int64_t{read_variable_bits(in, 2)} + 1) * 8);
    }
}

void read_alternative_data(FieldReader& in, const OamdObjectFacts& facts, oamdi* info) {
    std::span<OamdObject> objects;
    if (info != nullptr) {
        objects = {info->objects, static_cast<std::size_t>(info->max_objects)};
    }
    const bool ducking_disabled = read_flag(in);
    const std::uint32_t category = read_extended(in, 2, 3, 2);
    const std::uint32_t sets = read_extended(in, 2, 3, 2);
    const std::size_t stored = std::min(objects.size(), facts.objects.size());
    for (OamdObject& object : objects.first(stored)) {
        object.ducking_disabled = ducking_disabled ? 1 : 0;
        object.sound_category = category;
        object.alt_data_sets = sets;
    }
    for (std::uint32_t set = 0; set < sets && field_ok(in); ++set) {
        read_alternative_set(in, facts, set == 0 ? objects : std::span<OamdObject>{});
    }
}

std::uint16_t read_ramp_duration(FieldReader& in) {
    switch (read_field(in, 2)) {
        case 0:
            return 0;
        case 1:
            return 512;
        case 2:
            return 1536;
        default:
            break;
    }
    const bool b_use_ramp_table = read_flag(in);
    return b_use_ramp_table ? kRampTable[read_field(in, 4)]
                            : static_cast<std::uint16_t>(read_field(in, 11));
}

std::uint8_t read_sample_offset(FieldReader& in) {
    constexpr std::array<std::uint8_t, 3> kOffsets = {16, 8, 24};
    switch (read_three_way_code(in)) {
        case 0:
            return 0;
        case 1:
            return kOffsets[static_cast<std::size_t>(read_three_way_code(in))];
        default:
            return read_byte(in, 5);
    }
}

}  // namespace

void oamd_read_timing(FieldReader& in, OamdTiming& out) {
    out = {};
    out.sample_offset = read_sample_offset(in);
    out.num_obj_info_blocks = read_byte(in, 3);
    for (std::size_t block = 0; block < out.num_obj_info_blocks; ++block) {
        out.update.block_offset_factor[block] = read_byte(in, 6);
        out.update.ramp_duration[block] = read_ramp_duration(in);
    }
}

void oamd_read_dyndata(FieldReader& in, const OamdObjectFacts& facts, bool single, oamdi* info) {
    read_object_blocks(in, facts, info);
    if (single && facts.b_alternative && !facts.objects.empty()) {
        read_alternative_data(in, facts, info);
    }
}

}  // namespace mediasplit
