// Codec texts from configurations: RFC 6381 3.3 and 3.4, ISO/IEC 14496-15 Annex E, and the codecs
// parameter of the AV1 ISO media binding.
#include <array>
#include <charconv>
#include <string_view>

#include "src/log/logging.h"
#include "src/video/codec_text.h"

namespace mediasplit {
namespace {

// Appends the number in base 10 or 16 (lower case), with zeros ahead up to `digits`.
void append_number(std::string& out, std::uint32_t value, int base, std::size_t digits = 1) {
    std::array<char, 16> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value, base).ptr;
    const std::string_view number(text.data(), static_cast<std::size_t>(end - text.data()));
    if (number.size() < digits) {
        out.append(digits - number.size(), '0');
    }
    out += number;
}

void append_decimal(std::string& out, std::uint32_t value, std::size_t digits = 1) {
    append_number(out, value, 10, digits);
}

void append_hex(std::string& out, std::uint32_t value, std::size_t digits = 1) {
    append_number(out, value, 16, digits);
}

HevcProfileTier profile_of(const HevcConfig& config) {
    HevcProfileTier result;
    result.profile_space = config.general_profile_space;
    result.tier_flag = config.general_tier_flag;
    result.profile_idc = config.general_profile_idc;
    result.level_idc = config.general_level_idc;
    result.profile_compatibility_flags = config.general_profile_compatibility_flags;
    result.progressive_source_flag = config.general_progressive_source_flag;
    result.interlaced_source_flag = config.general_interlaced_source_flag;
    result.non_packed_constraint_flag = config.general_non_packed_constraint_flag;
    result.frame_only_constraint_flag = config.general_frame_only_constraint_flag;
    result.reserved_zero_44bits_43_12 = config.general_reserved_zero_44bits_43_12;
    result.reserved_zero_44bits_11_0 = config.general_reserved_zero_44bits_11_0;
    return result;
}

// A value of the general profile under the name that message 4210 gives it.
struct ProfileField {
    const char* name;
    std::uint32_t (*value)(const HevcProfileTier& profile);
};

constexpr std::array<ProfileField, 11> kProfileFields = {{
    {"general_profile_space", [](const auto& p) { return std::uint32_t{p.profile_space}; }},
    {"general_tier_flag", [](const auto& p) { return std::uint32_t{p.tier_flag}; }},
    {"general_profile_idc", [](const auto& p) { return std::uint32_t{p.profile_idc}; }},
    {"general_level_idc", [](const auto& p) { return std::uint32_t{p.level_idc}; }},
    {"general_profile_compatibility_flags",
     [](const auto& p) { return p.profile_compatibility_flags; }},
    {"progressive_source_flag",
     [](const auto& p) { return std::uint32_t{p.progressive_source_flag}; }},
    {"general_interlaced_source_flag",
     [](const auto& p) { return std::uint32_t{p.interlaced_source_flag}; }},
    {"general_non_packed_constraint_flag",
     [](const auto& p) { return std::uint32_t{p.non_packed_constraint_flag}; }},
    {"general_frame_only_constraint_flag",
     [](const auto& p) { return std::uint32_t{p.frame_only_constraint_flag}; }},
    {"general_reserved_zero_44bits_43_12",
     [](const auto& p) { return p.reserved_zero_44bits_43_12; }},
    {"general_reserved_zero_44bits_11_0",
     [](const auto& p) { return std::uint32_t{p.reserved_zero_44bits_11_0}; }},
}};

Status compare_profiles(const HevcProfileTier& in_stream, const HevcProfileTier& in_box,
                        std::string_view stream_label, Loglist* loglist) {
    Status status = Status::kOk;
    for (const ProfileField& field : kProfileFields) {
        const std::uint32_t expected = field.value(in_stream);
        const std::uint32_t actual = field.value(in_box);
        status |= check(expected == actual, loglist, 4210, {}, stream_label, field.name, expected,
                        actual);
    }
    return status;
}

// The six bytes of constraints; zero bytes at the end are left out.
void append_constraints(std::string& out, const HevcProfileTier& profile) {
    const std::uint64_t flags = (std::uint64_t{profile.progressive_source_flag} << 47) |
                                (std::uint64_t{profile.interlaced_source_flag} << 46) |
                                (std::uint64_t{profile.non_packed_constraint_flag} << 45) |
                                (std::uint64_t{profile.frame_only_constraint_flag} << 44) |
                                (std::uint64_t{profile.reserved_zero_44bits_43_12} << 12) |
                                profile.reserved_zero_44bits_11_0;
    std::string zeros;
    for (int shift = 40; shift >= 0; shift -= 8) {
        const auto byte = static_cast<std::uint8_t>(flags >> shift);
        if (byte == 0) {
            zeros += ".0";
            continue;
        }
        out += zeros;
        zeros.clear();
        out += '.';
        append_hex(out, byte);
    }
}

std::uint32_t av1_bit_depth(const Av1Config& config) {
    if (config.high_bitdepth == 0 || config.seq_profile > 2) {
        return 8;
    }
    return config.seq_profile == 2 && config.twelve_bit != 0 ? 12 : 10;
}

}  // namespace

Status build_avc_codec(std::string* out, std::uint32_t px_kind, const AvcSps* sps) {
    if (out == nullptr || sps == nullptr) {
        return Status::kFailed;
    }
    out->clear();
    if (px_kind == 2) {
        *out = "avc1";
    } else if (px_kind == 1) {
        *out = "avc3";
    }
    *out += '.';
    append_hex(*out, sps->profile_idc, 2);
    append_hex(*out, sps->constraint_flags, 2);
    append_hex(*out, sps->level_idc, 2);
    return Status::kOk;
}

Status build_hevc_codec(std::string* out, std::uint32_t stream_id, const HevcConfig* config,
                        OptText stream_label, Loglist* loglist) {
    if (out == nullptr || config == nullptr || !stream_label) {
        return Status::kFailed;
    }
    out->clear();
    if (stream_id == 12) {
        *out = "hev1";
    } else if (stream_id == 13) {
        *out = "hvc1";
    }
    Status status = Status::kOk;
    HevcProfileTier profile = profile_of(*config);
    if (!config->vps.empty()) {
        const HevcProfileTier& in_stream = config->vps.front().record.profile_tier_level.general;
        status |= compare_profiles(in_stream, profile, *stream_label, loglist);
        profile = in_stream;
    }
    constexpr std::array<std::string_view, 4> kProfileSpaces = {".", ".A", ".B", ".C"};
    if (profile.profile_space < kProfileSpaces.size()) {
        *out += kProfileSpaces[profile.profile_space];
        append_decimal(*out, profile.profile_idc);
    }
    *out += '.';
    append_hex(*out, reverse_bits(profile.profile_compatibility_flags));
    constexpr std::array<std::string_view, 2> kTiers = {".L", ".H"};
    if (profile.tier_flag < kTiers.size()) {
        *out += kTiers[profile.tier_flag];
        append_decimal(*out, profile.level_idc);
    }
    append_constraints(*out, profile);
    return status;
}

Status build_av1_codec(std::string* out, [[maybe_unused]] std::uint32_t px_kind,
                       const Av1Config* config, const PxConfig* px_config) {
    if (out == nullptr || config == nullptr || px_config == nullptr) {
        return Status::kFailed;
    }
    *out = "av01.";
    append_decimal(*out, config->seq_profile);
    *out += '.';
    append_decimal(*out, config->seq_level_idx_0, 2);
    *out += config->seq_tier_0 != 0 ? "H." : "M.";
    append_decimal(*out, av1_bit_depth(*config), 2);
    *out += '.';
    append_decimal(*out, config->monochrome);
    *out += '.';
    const bool is_420 = config->chroma_subsampling_x == 1 && config->chroma_subsampling_y == 1;
    append_decimal(*out, config->chroma_subsampling_x);
    append_decimal(*out, config->chroma_subsampling_y);
    append_decimal(*out, is_420 ? config->chroma_sample_position : 0U);
    if (px_config->bl_compatible_id == 1) {
        *out += ".09.16.09.0";
    } else if (px_config->bl_compatible_id == 4) {
        *out += ".09.18.09.0";
    }
    return Status::kOk;
}

}  // namespace mediasplit
