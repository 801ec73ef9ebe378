#include "ac4/oamd/common_data.h"

namespace mediasplit {
namespace {

constexpr std::uint8_t kCustomTrims = 2;  // global_trim_mode

// A code of 4 bits, 0 if its flag isn't set.
std::uint8_t read_code_if(FieldReader& in, bool wanted) {
    return wanted ? read_byte(in, 4) : std::uint8_t{0};
}

std::int8_t read_balance_if(FieldReader& in, bool wanted) {
    if (!wanted) {
        return 0;
    }
    const bool negative = read_flag(in);
    const auto amount = static_cast<std::int8_t>(read_field(in, 4));
    return static_cast<std::int8_t>(negative ? -amount : amount);
}

OamdTrimConfig read_trim_config(FieldReader& in) {
    OamdTrimConfig trim;
    if (read_flag(in)) {
        trim.flags = kTrimAuto;
        return trim;
    }
    if (read_flag(in)) {
        trim.flags = kTrimDisabled;
        return trim;
    }
    const std::uint32_t presence = read_field(in, 5);
    trim.flags = static_cast<std::uint8_t>(presence << kTrimPresenceShift);
    const auto centre = read_code_if(in, (presence & 16U) != 0);
    const auto surround = read_code_if(in, (presence & 8U) != 0);
    trim.centre_surround = static_cast<std::uint8_t>(centre << 4 | surround);
    trim.height = read_code_if(in, (presence & 4U) != 0);
    trim.balance_top_bottom = read_balance_if(in, (presence & 2U) != 0);
    trim.balance_listener = read_balance_if(in, (presence & 1U) != 0);
    return trim;
}

void read_trim(FieldReader& in, OamdCommonData& out) {
    out.b_trim_present = read_flag(in);
    if (!out.b_trim_present) {
        return;
    }
    out.warp_mode = read_byte(in, 2);
    skip_field(in, 2);
    out.global_trim_mode = read_byte(in, 2);
    if (out.global_trim_mode == kCustomTrims) {
        for (OamdTrimConfig& trim : out.trim_config) {
            trim = read_trim_config(in);
        }
    }
}

// `b_cdmx_...` and its 3-bit gain.
void skip_optional_gain(FieldReader& in) {
    skip_field(in, read_flag(in) ? 3 : 0);
}

// A flag for the pair of top channels, then each of its tools behind its own flag.
bool skip_top_channel_tools(FieldReader& in) {
    const bool present = read_flag(in);
    if (present) {
        if (read_flag(in)) {
            skip_three_way_tool(in);
        }
        if (read_flag(in)) {
            skip_two_way_tool(in);
        }
    }
    return present;
}

void read_bed_render_info(FieldReader& in, OamdCommonData& out) {
    out.b_bed_render_info = read_flag(in);
    if (!out.b_bed_render_info) {
        return;
    }
    read_stereo_downmix(in, {.loudness_corrections = false, .lfe = true}, out.bed_downmix);
    const bool b_cdmx_data_present = read_flag(in);
    if (!b_cdmx_data_present) {
        return;
    }
    skip_optional_gain(in);  // w_to_f
    skip_optional_gain(in);  // b4_to_b2
    skip_top_channel_tools(in);
    const bool b_tb_ch_present = skip_top_channel_tools(in);
    const bool b_tf_ch_present = skip_top_channel_tools(in);
    if (b_tb_ch_present || b_tf_ch_present) {
        skip_optional_gain(in);  // tfb_to_tm
    }
}

void read_headphone(FieldReader& in, OamdCommonData& out) {
    out.b_headphone = read_flag(in);
    if (out.b_headphone) {
        out.hp_operation_mode = read_byte(in, 3);
        if (out.hp_operation_mode == 1 || out.hp_operation_mode == 2) {
            out.b_head_track_disable_all = read_flag(in);
        }
    }
}

bool has_bits(const FieldReader& in) {
    return field_ok(in) && orv_bitbuf_get_bits_left(in.bits) > 0;
}

}  // namespace

void oamd_read_common_data(FieldReader& in, OamdCommonData& out) {
    out = {};
    out.master_screen_size_ratio.present = !read_flag(in) && field_ok(in);
    if (out.master_screen_size_ratio.present) {
        out.master_screen_size_ratio.value = static_cast<std::uint16_t>(read_field(in, 5));
    }
    out.b_bed_object_chan_distribute = read_flag(in);
    const bool b_additional_data = read_flag(in);
    if (!b_additional_data) {
        return;
    }
    out.additional_bytes = read_extended(in, 1, 1, 2) + 1;
    read_enclosed(in, std::uint64_t{out.additional_bytes} * 8, [&out](FieldReader& inner) {
        read_trim(inner, out);
        if (has_bits(inner)) {
            read_bed_render_info(inner, out);
        }
        if (has_bits(inner)) {
            read_headphone(inner, out);
        }
    });
}

}  // namespace mediasplit
