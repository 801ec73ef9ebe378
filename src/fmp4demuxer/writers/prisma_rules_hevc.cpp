#include <array>
#include <cmath>
#include <memory>
#include <string>

#include "src/fmp4demuxer/dash_context.h"
#include "src/fmp4demuxer/writers/prisma_rules.h"
#include "src/log/logging.h"
#include "src/mp4demuxer/mp4demuxer.h"
#include "src/records/manifest_context.h"
#include "src/video/codec_text.h"
#include "src/video/enhancement_metadata.h"
#include "src/video/level_rules.h"

namespace mediasplit {
namespace {

constexpr std::uint8_t kTypeSps = 33;
constexpr std::uint8_t kTypeMetadata = 62;
constexpr std::uint8_t kTypeEnhancement = 63;
constexpr std::uint32_t kDualLayerProfile = 4;
constexpr std::uint32_t kSingleLayerProfile = 8;
constexpr std::uint32_t kDashPrismaRules = 32;
constexpr float kNoFrameRate = 1e-6F;

// What profile 8 asks of the colour description, by the base layer it is compatible with.
struct ColourRule {
    std::uint32_t compatible_id;
    std::uint8_t primaries;
    std::uint8_t matrix;
    std::array<std::uint8_t, 2> transfers;
    const char* transfer_text;
    const char* slow_profile;  // segmentProfiles up to 60 frames a second
    const char* fast_profile;
};

constexpr std::array<ColourRule, 2> kColourRules{{
    {1, 9, 9, {16, 16}, "16", "chd1", "chd2"},
    {4, 9, 9, {14, 18}, "14, 18", "clg1", "clg2"},
}};

// The brand that a base layer of kind 4 asks for, by its transfer characteristics.
struct BrandRule {
    std::uint8_t transfer;
    std::uint32_t brand;
    const char* text;
};

constexpr std::uint32_t kBrandedBaseLayer = 4;
constexpr std::array<BrandRule, 2> kBrandRules{{
    {18, fourcc("pb4h"), "pb4h"},
    {14, fourcc("pb4g"), "pb4g"},
}};

NalBuffer nal_of(ByteSpan unit) {
    return {unit.data(), static_cast<std::uint32_t>(unit.size())};
}

Status check_enhancement_sps(Mp4Demuxer& demuxer, Mp4Stream& stream, ByteSpan unit) {
    HevcConfig& config = *stream.hevc_config;
    if (stream.el_sps_checked != 0 || config.vps.empty() || config.sps.empty()) {
        return Status::kOk;
    }
    auto sps = std::make_unique<HevcSps>();
    const NalBuffer nal = nal_of(enhancement_parameter_set(unit));
    static_cast<void>(parse_hevc_sps_nal(&nal, sps.get(), demuxer.loglist));
    stream.el_sps_checked = 1;
    stream.el_seen = 1;
    return check_px_h265_profile_level(stream.px_config->profile, stream.px_config->level,
                                       &config.vps.front().record, &config.sps.front().record,
                                       sps.get(), demuxer.loglist, container_frame_rate(stream));
}

Status check_segment_profiles(const Mp4Demuxer& demuxer, const ColourRule& rule, float frame_rate) {
    if (demuxer.input_mode != kInputDash || demuxer.dash_context == nullptr ||
        frame_rate <= kNoFrameRate || !contain_cmaf_brand(demuxer)) {
        return Status::kOk;
    }
    const DashContext& context = *demuxer.dash_context;
    const std::string profile = "8." + std::to_string(rule.compatible_id);
    const std::string expected = frame_rate > 60 ? rule.fast_profile : rule.slow_profile;
    const Status status = check(context.segment_profiles.has_value(), demuxer.loglist, 2026, {},
                                profile, expected, context.representation_id);
    if (!context.segment_profiles) {
        return status;
    }
    return status | check(*context.segment_profiles == expected, demuxer.loglist, 2027, {}, profile,
                          context.representation_id, expected);
}

Status check_supplemental_codecs(const Mp4Demuxer& demuxer, const Mp4Stream& stream,
                                 const char* brand) {
    if (demuxer.input_mode != kInputHls || demuxer.manifest_context == nullptr) {
        return Status::kOk;
    }
    const ManifestContext& context = *demuxer.manifest_context;
    const PxConfig& config = *stream.px_config;
    note_evaluated(4164);
    if (!context.supplemental_codecs) {
        return Logging_err_type_check(demuxer.loglist, 4164, {}, config.profile,
                                      config.bl_compatible_id, context.stream_index);
    }
    const auto two_digits = [](std::uint32_t number) {
        return (number < 10 ? ".0" : ".") + std::to_string(number);
    };
    std::string codec;
    if (stream.px_kind == kPxPxhe) {
        codec = "pxhe" + two_digits(config.profile) + two_digits(config.level);
    } else if (stream.px_kind == kPxPxh1) {
        codec = "pxh1" + two_digits(config.profile) + two_digits(config.level);
    }
    codec += "/";
    codec += brand;
    return check(codec_is_contained(context.supplemental_codecs, codec), demuxer.loglist, 4166, {},
                 config.profile, config.bl_compatible_id, codec, context.stream_index);
}

Status check_brand(const Mp4Demuxer& demuxer, const Mp4Stream& stream, std::uint8_t transfer) {
    const PxConfig& config = *stream.px_config;
    Status status = Status::kOk;
    for (const BrandRule& rule : kBrandRules) {
        if (config.bl_compatible_id == kBrandedBaseLayer && rule.transfer == transfer) {
            status |= check(compat_brand_included(demuxer, rule.brand), demuxer.loglist, 2030, {},
                            config.profile, config.bl_compatible_id, rule.text);
            status |= check_supplemental_codecs(demuxer, stream, rule.text);
        }
    }
    return status;
}

Status check_colour(const Mp4Demuxer& demuxer, const Mp4Stream& stream, const HevcSps& sps,
                    float frame_rate) {
    const PxConfig& config = *stream.px_config;
    Status status = Status::kOk;
    for (const ColourRule& rule : kColourRules) {
        if (rule.compatible_id != config.bl_compatible_id) {
            continue;
        }
        const std::uint8_t transfer = sps.vui.transfer_characteristics;
        status |=
            check(sps.vui.colour_primaries == rule.primaries, demuxer.loglist, 4267, {},
                  config.profile, rule.compatible_id, sps.vui.colour_primaries, rule.primaries);
        status |= check(sps.vui.matrix_coeffs == rule.matrix, demuxer.loglist, 4266, {},
                        config.profile, rule.compatible_id, sps.vui.matrix_coeffs, rule.matrix);
        status |=
            check(transfer == rule.transfers[0] || transfer == rule.transfers[1], demuxer.loglist,
                  4268, {}, config.profile, rule.compatible_id, transfer, rule.transfer_text);
        status |= check_segment_profiles(demuxer, rule, frame_rate);
        status |= check_brand(demuxer, stream, transfer);
    }
    return status;
}

// A configuration without VPS borrows the stream's for one comparison; the units that go into the
// output stay those of the configuration.
Status compare_vps(Mp4Demuxer& demuxer, Mp4Stream& stream, ByteSpan unit, const HevcVps& vps) {
    HevcConfig& config = *stream.hevc_config;
    const bool enhancement = stream.px_kind == kPxPxhe || stream.px_kind == kPxPxh1;
    const bool manifest = demuxer.input_mode == kInputHls || demuxer.input_mode == kInputDash;
    if (!enhancement || !manifest || !config.vps.empty() || stream.vps_compared != 0 ||
        stream.px_config == nullptr || stream.px_config->profile != kSingleLayerProfile) {
        return Status::kOk;
    }
    stream.vps_compared = 1;
    config.vps.emplace_back();
    config.vps.back().unit.assign(unit.begin(), unit.end());
    config.vps.back().record = vps;
    std::string codec;
    const Status status = build_hevc_codec(&codec, stream.px_config->profile, &config,
                                           demuxer.output_suffix, demuxer.loglist);
    config.vps.clear();
    return status;
}

}  // namespace

Status inspect_hevc_unit(Mp4Demuxer& demuxer, Mp4Stream& stream, ByteSpan unit,
                         ByteSpan from_unit) {
    if ((stream.box_flags & kBoxPrisma) == 0 || stream.px_config == nullptr) {
        return Status::kOk;
    }
    const std::uint8_t type = first_byte(unit) >> 1 & 0x3F;
    if (stream.px_config->profile == kDualLayerProfile) {
        if (type == kTypeEnhancement && unit.size() > 2 && (unit[2] >> 1 & 0x3F) == kTypeSps) {
            return check_enhancement_sps(demuxer, stream, unit);
        }
        if (type == kTypeMetadata) {
            stream.rpu_seen = 1;
        }
    } else if (stream.px_config->profile == kSingleLayerProfile && type == kTypeMetadata) {
        // What the unit says counts for nothing here.
        const NalBuffer nal = nal_of(measure_unit(from_unit, 2));
        RpuNal rpu;
        rpu.data = nal.data;
        rpu.size = nal.size;
        static_cast<void>(parse_rpu_nal(&rpu, demuxer.loglist));
    }
    return Status::kOk;
}

Status inspect_hevc_vps(Mp4Demuxer& demuxer, Mp4Stream& stream, ByteSpan from_unit,
                        std::unique_ptr<HevcVps>& vps) {
    if ((stream.box_flags & kBoxPrisma) == 0) {
        return Status::kOk;  // nothing reads it
    }
    const ByteSpan unit = measure_unit(from_unit, 2);
    const NalBuffer nal = nal_of(unit);
    vps = std::make_unique<HevcVps>();
    static_cast<void>(parse_hevc_vps_nal(&nal, vps.get(), demuxer.loglist));
    return compare_vps(demuxer, stream, unit, *vps);
}

Status inspect_hevc_sps(Mp4Demuxer& demuxer, Mp4Stream& stream, ByteSpan from_unit,
                        const HevcVps* vps) {
    if ((stream.box_flags & kBoxPrisma) == 0) {
        return Status::kOk;
    }
    note_evaluated(4171);
    if (stream.px_config == nullptr) {
        return Logging_err_type_check(demuxer.loglist, 4171, {});
    }
    auto sps = std::make_unique<HevcSps>();
    const NalBuffer nal = nal_of(measure_unit(from_unit, 2));
    static_cast<void>(parse_hevc_sps_nal(&nal, sps.get(), demuxer.loglist));
    if (vps == nullptr && !stream.hevc_config->vps.empty()) {
        vps = &stream.hevc_config->vps.front().record;
    }
    std::unique_ptr<HevcVps> no_vps;
    if (vps == nullptr) {
        no_vps = std::make_unique<HevcVps>();
        vps = no_vps.get();
    }
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    float frame_rate = 0;
    static_cast<void>(parse_h265_width_height_framerate(&width, &height, &frame_rate, vps,
                                                        sps.get(), demuxer.loglist));
    const float container_rate = container_frame_rate(stream);
    Status status = check_px_h265_level(stream.px_config->level, vps, sps.get(), demuxer.loglist,
                                        container_rate);
    if (std::fabs(frame_rate) < kNoFrameRate) {
        frame_rate = container_rate;
    }
    if (has_checkpoint_set(demuxer.loglist, kDashPrismaRules) &&
        stream.px_config->profile == kSingleLayerProfile) {
        status |= check_colour(demuxer, stream, *sps, frame_rate);
    }
    return status;
}

}  // namespace mediasplit
