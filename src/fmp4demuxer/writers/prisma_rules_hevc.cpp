#include <cmath>
#include <memory>
#include <string>
#include <string_view>

#include "src/fmp4demuxer/checks/prisma_codecs.h"
#include "src/fmp4demuxer/checks/prisma_tables.h"
#include "src/fmp4demuxer/dash_context.h"
#include "src/fmp4demuxer/writers/prisma_rules.h"
#include "src/log/logging.h"
#include "src/log/rule_families.h"
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
constexpr std::uint32_t kSingleLayerProfile = 8;
constexpr float kNoFrameRate = 1e-6F;

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

Status check_segment_profiles(const Mp4Demuxer& demuxer, const prisma::ColourRow& row,
                              float frame_rate) {
    if (demuxer.input_mode != kInputDash || demuxer.dash_context == nullptr ||
        frame_rate <= kNoFrameRate || !contain_cmaf_brand(demuxer)) {
        return Status::kOk;
    }
    const DashContext& context = *demuxer.dash_context;
    const std::string profile = "8." + std::to_string(row.compatible_id);
    const std::string_view expected =
        frame_rate > prisma::kFastFrameRate ? row.fast_segment_profile : row.segment_profile;
    const Status status = check(context.segment_profiles.has_value(), demuxer.loglist, 2026, {},
                                profile, expected, context.representation_id);
    if (!context.segment_profiles) {
        return status;
    }
    return status | check(*context.segment_profiles == expected, demuxer.loglist, 2027, {}, profile,
                          context.representation_id, expected);
}

Status check_supplemental_codecs(const Mp4Demuxer& demuxer, const Mp4Stream& stream,
                                 std::string_view brand) {
    if (demuxer.input_mode != kInputHls || demuxer.manifest_context == nullptr) {
        return Status::kOk;
    }
    const ManifestContext& context = *demuxer.manifest_context;
    const PxConfig& config = *stream.px_config;
    const bool there = context.supplemental_codecs.has_value();
    const Status status = check(there, demuxer.loglist, 4164, {}, config.profile,
                                config.bl_compatible_id, context.stream_index);
    if (!there) {
        return status;
    }
    const bool is_h265_kind = stream.px_kind == kPxPxhe || stream.px_kind == kPxPxh1;
    const std::string codec = supplemental_codec(
        is_h265_kind ? enhancement_codec(prisma_prefix(stream.px_kind), config) : "", brand);
    return status | check(codec_is_contained(context.supplemental_codecs, codec), demuxer.loglist,
                          4166, {}, config.profile, config.bl_compatible_id, codec,
                          context.stream_index);
}

// The brand that only the stream itself tells: where the compatible id leaves more than one.
Status check_brand(const Mp4Demuxer& demuxer, const Mp4Stream& stream, std::uint8_t transfer) {
    const PxConfig& config = *stream.px_config;
    const prisma::BrandRow* row =
        prisma::brand_of(config.profile, config.bl_compatible_id, transfer);
    if (row == nullptr || row->transfer == prisma::kAny) {
        return Status::kOk;
    }
    return check(compat_brand_included(demuxer, prisma::code_of(*row)), demuxer.loglist, 2030, {},
                 config.profile, config.bl_compatible_id, row->brand) |
           check_supplemental_codecs(demuxer, stream, row->brand);
}

Status check_colour(const Mp4Demuxer& demuxer, const Mp4Stream& stream, const HevcSps& sps,
                    float frame_rate) {
    const PxConfig& config = *stream.px_config;
    const prisma::ColourRow* row =
        prisma::colour_of(prisma::kProfile8Colours, config.bl_compatible_id);
    if (row == nullptr) {
        return Status::kOk;
    }
    const HevcVui& vui = sps.vui;
    const std::uint8_t transfer = vui.transfer_characteristics;
    const bool transfer_fits = transfer == row->transfers[0] || transfer == row->transfers[1];
    Status status = check(vui.colour_primaries == row->primaries, demuxer.loglist, 4267, {},
                          config.profile, row->compatible_id, vui.colour_primaries, row->primaries);
    status |= check(vui.matrix_coeffs == row->matrix, demuxer.loglist, 4266, {}, config.profile,
                    row->compatible_id, vui.matrix_coeffs, row->matrix);
    status |= check(transfer_fits, demuxer.loglist, 4268, {}, config.profile, row->compatible_id,
                    transfer, row->transfer_text);
    status |= check_segment_profiles(demuxer, *row, frame_rate);
    return status | check_brand(demuxer, stream, transfer);
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
                                           demuxer.output_suffix.value_or(""), demuxer.loglist);
    config.vps.clear();
    return status;
}

}  // namespace

Status inspect_hevc_unit(Mp4Demuxer& demuxer, Mp4Stream& stream, ByteSpan unit,
                         ByteSpan from_unit) {
    if ((stream.box_flags & kBoxPrisma) == 0 || stream.px_config == nullptr) {
        return Status::kOk;
    }
    const std::uint8_t type = hevc_unit_type(unit);
    if (prsm_profile_dual_layer(stream.px_config->profile)) {
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
    if (has_checkpoint_set(demuxer.loglist, kPrismaOverTheTopRules) &&
        stream.px_config->profile == kSingleLayerProfile) {
        status |= check_colour(demuxer, stream, *sps, frame_rate);
    }
    return status;
}

}  // namespace mediasplit
