#include "tests/support/nal_builder.h"

namespace mediasplit::testing {
namespace {

void write_timing(BitWriter& out, const Fraction& timing) {
    out.u(timing.units_in_tick, 32).u(timing.time_scale, 32);
}

void write_avc_vui(BitWriter& out, const AvcSpsOptions& options) {
    out.flag(options.aspect_ratio_idc.has_value());
    if (options.aspect_ratio_idc) {
        out.u(*options.aspect_ratio_idc, 8);
        if (*options.aspect_ratio_idc == 255) {
            out.u(options.sar_width, 16).u(options.sar_height, 16);
        }
    }
    out.flag(false).flag(false).flag(false);  // overscan, video signal, chroma location
    out.flag(options.timing.has_value());
    if (options.timing) {
        write_timing(out, *options.timing);
        out.flag(true);  // fixed_frame_rate_flag
    }
    out.flag(false).flag(false);  // NAL and VCL HRD
    out.flag(false).flag(false);  // pic_struct, bitstream restriction
}

void write_window(BitWriter& out, const std::optional<CropOffsets>& window) {
    out.flag(window.has_value());
    if (window) {
        out.ue(window->left).ue(window->right).ue(window->top).ue(window->bottom);
    }
}

void write_hevc_header(BitWriter& out, unsigned type) {
    out.flag(false).u(type, 6).u(0, 6).u(1, 3);
}

void write_hevc_vui(BitWriter& out, const HevcSpsOptions& options) {
    out.flag(options.aspect_ratio_idc.has_value());
    if (options.aspect_ratio_idc) {
        out.u(*options.aspect_ratio_idc, 8);
    }
    out.flag(false);  // overscan
    out.flag(options.colour.has_value());
    if (options.colour) {
        out.u(5, 3).flag(false).flag(true);
        out.u(options.colour->primaries, 8).u(options.colour->transfer, 8);
        out.u(options.colour->matrix, 8);
    }
    out.flag(false);                          // chroma location
    out.flag(false).flag(false).flag(false);  // neutral chroma, field sequence, frame field info
    out.flag(false);                          // default display window
    out.flag(options.timing.has_value());
    if (options.timing) {
        write_timing(out, *options.timing);
        out.flag(false).flag(false);  // picture order count, HRD
    }
    out.flag(false);  // bitstream restriction
}

bool is_high_profile(std::uint8_t profile_idc) {
    for (const int profile : {100, 110, 122, 244, 44, 83, 86, 118, 128, 138, 139, 134, 135}) {
        if (profile == profile_idc) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::vector<std::uint8_t> escape_nal(const std::vector<std::uint8_t>& payload) {
    std::vector<std::uint8_t> result;
    int zeros = 0;
    for (const std::uint8_t byte : payload) {
        if (zeros == 2 && byte <= 3) {
            result.push_back(3);
            zeros = 0;
        }
        result.push_back(byte);
        zeros = byte == 0 ? zeros + 1 : 0;
    }
    return result;
}

std::vector<std::uint8_t> build_avc_sps(const AvcSpsOptions& options) {
    BitWriter out;
    out.u(0x67, 8).u(options.profile_idc, 8).u(options.constraint_flags, 8);
    out.u(options.level_idc, 8).ue(0);
    if (is_high_profile(options.profile_idc)) {
        out.ue(options.chroma_format_idc);
        if (options.chroma_format_idc == 3) {
            out.flag(options.separate_colour_plane);
        }
        out.ue(options.bit_depth - 8).ue(options.bit_depth - 8).flag(false).flag(false);
    }
    out.ue(0).ue(2);        // log2_max_frame_num_minus4, pic_order_cnt_type
    out.ue(1).flag(false);  // max_num_ref_frames, gaps
    out.ue(options.width_in_mbs - 1).ue(options.height_in_map_units - 1);
    out.flag(options.frame_mbs_only);
    if (!options.frame_mbs_only) {
        out.flag(false);
    }
    out.flag(true);  // direct_8x8_inference_flag
    write_window(out, options.crop);
    const bool has_vui = options.timing.has_value() || options.aspect_ratio_idc.has_value();
    out.flag(has_vui);
    if (has_vui) {
        write_avc_vui(out, options);
    }
    return escape_nal(out.trailing().bytes());
}

void write_hevc_profile(BitWriter& out, const HevcProfileOptions& profile) {
    out.u(profile.space, 2).u(profile.tier, 1).u(profile.idc, 5).u(profile.compatibility_flags, 32);
    out.flag(profile.progressive).flag(profile.interlaced).flag(profile.non_packed);
    out.flag(profile.frame_only).u(profile.reserved_44bits, 44);
}

std::vector<std::uint8_t> build_hevc_vps(const HevcVpsOptions& options) {
    BitWriter out;
    write_hevc_header(out, 32);
    out.u(0, 4).flag(true).flag(true).u(options.max_layers_minus1, 6).u(0, 3).flag(true);
    out.u(0xFFFF, 16);
    write_hevc_profile(out, options.profile);
    out.u(options.profile.level, 8);
    out.flag(true).ue(4).ue(2).ue(0);  // sub-layer ordering
    out.u(0, 6).ue(0);                 // vps_max_layer_id, vps_num_layer_sets_minus1
    out.flag(options.timing.has_value());
    if (options.timing) {
        write_timing(out, *options.timing);
        out.flag(false).ue(0);  // picture order count, HRD parameters
    }
    out.flag(false);  // vps_extension_flag
    return escape_nal(out.trailing().bytes());
}

std::vector<std::uint8_t> build_hevc_sps(const HevcSpsOptions& options) {
    BitWriter out;
    write_hevc_header(out, 33);
    out.u(0, 4).u(0, 3).flag(true);
    write_hevc_profile(out, options.profile);
    out.u(options.profile.level, 8);
    out.ue(0).ue(options.chroma_format_idc);
    if (options.chroma_format_idc == 3) {
        out.flag(false);
    }
    out.ue(options.width).ue(options.height);
    write_window(out, options.conformance_window);
    out.ue(options.bit_depth - 8).ue(options.bit_depth - 8);
    out.ue(4);                                          // log2_max_pic_order_cnt_lsb_minus4
    out.flag(true).ue(4).ue(2).ue(0);                   // sub-layer ordering
    out.ue(0).ue(3).ue(0).ue(3).ue(1).ue(1);            // block sizes and depths
    out.flag(false).flag(true).flag(true).flag(false);  // scaling list, AMP, SAO, PCM
    out.ue(0).flag(false).flag(true).flag(true);        // reference sets, long-term, MVP, smoothing
    const bool has_vui = options.timing.has_value() || options.aspect_ratio_idc.has_value() ||
                         options.colour.has_value();
    out.flag(has_vui);
    if (has_vui) {
        write_hevc_vui(out, options);
    }
    out.flag(false);  // sps_extension_present_flag
    return escape_nal(out.trailing().bytes());
}

std::vector<std::uint8_t> build_hevc_pps() {
    BitWriter out;
    write_hevc_header(out, 34);
    out.ue(0).ue(0).flag(false).flag(false).u(0, 3).flag(true).flag(false);
    out.ue(0).ue(0).se(0).flag(false).flag(false).flag(false);
    out.se(0).se(0).flag(false).flag(true).flag(false).flag(false).flag(false).flag(true);
    out.flag(true).flag(false).flag(false).flag(false).ue(0).flag(false).flag(false);
    return escape_nal(out.trailing().bytes());
}

}  // namespace mediasplit::testing
