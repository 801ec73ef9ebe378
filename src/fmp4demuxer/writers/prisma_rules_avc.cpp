#include <memory>
#include <string>

#include "src/fmp4demuxer/checks/prisma_codecs.h"
#include "src/fmp4demuxer/dash_context.h"
#include "src/fmp4demuxer/writers/prisma_rules.h"
#include "src/log/logging.h"
#include "src/log/rule_families.h"
#include "src/mp4demuxer/mp4demuxer.h"
#include "src/video/codec_text.h"
#include "src/video/level_rules.h"

namespace mediasplit {
namespace {

constexpr std::uint8_t kTypeSps = 7;
constexpr std::uint8_t kTypeMetadata = 28;
constexpr std::uint8_t kTypeEnhancement = 30;
constexpr std::size_t kLongestCodecList = 99;

std::unique_ptr<AvcSps> parse_sps(ByteSpan unit, Loglist* loglist) {
    auto sps = std::make_unique<AvcSps>();
    const NalBuffer nal{unit.data(), static_cast<std::uint32_t>(unit.size())};
    static_cast<void>(parse_avc_sps_nal(&nal, sps.get(), loglist));
    return sps;
}

Status check_enhancement_sps(Mp4Demuxer& demuxer, Mp4Stream& stream, ByteSpan unit) {
    if (stream.el_sps_checked != 0 || stream.avc_config->sps.empty()) {
        return Status::kOk;
    }
    const std::unique_ptr<AvcSps> sps = parse_sps(enhancement_parameter_set(unit), demuxer.loglist);
    const AvcSps& base = stream.avc_config->sps.front().record;
    stream.el_sps_checked = 1;
    stream.el_seen = 1;
    return check_px_profile_level(stream.px_config->profile, stream.px_config->level,
                                  base.pic_width, base.pic_height, sps->pic_width, sps->pic_height,
                                  demuxer.loglist, base.frame_rate, container_frame_rate(stream));
}

// The codecs of the Representation and of those it goes with, as far as 99 characters hold them.
std::string collect_codecs(const DashContext& context) {
    std::string list = context.codecs.value_or(std::string{});
    if (list.size() > kLongestCodecList) {
        list.clear();
    }
    for (const std::string& codecs : context.related_codecs) {
        if (list.size() + 1 + codecs.size() <= kLongestCodecList) {
            list += "," + codecs;
        }
    }
    return list;
}

Status check_manifest_codec(const Mp4Demuxer& demuxer, const Mp4Stream& stream, const AvcSps& sps) {
    if (!has_checkpoint_set(demuxer.loglist, kPrismaOverTheTopRules) ||
        demuxer.input_mode != kInputDash || demuxer.dash_context == nullptr) {
        return Status::kOk;
    }
    const DashContext& context = *demuxer.dash_context;
    const std::string codecs = collect_codecs(context);
    std::string codec;
    static_cast<void>(build_avc_codec(&codec, stream.px_kind, &sps));
    // Deliberate: the joined list is held against the codec as one text, so that no list of several
    // codecs fits.
    return check(codec_match(codecs, codec), demuxer.loglist, 4130, {}, codec,
                 context.representation_id, codecs);
}

Status inspect_sps(Mp4Demuxer& demuxer, Mp4Stream& stream, ByteSpan from_unit) {
    if (stream.px_config == nullptr) {
        return Status::kOk;
    }
    const std::unique_ptr<AvcSps> sps = parse_sps(measure_unit(from_unit, 1), demuxer.loglist);
    const Status status =
        check_px_level(stream.px_config->level, sps->pic_width, sps->pic_height, demuxer.loglist,
                       sps->frame_rate, container_frame_rate(stream));
    return status | check_manifest_codec(demuxer, stream, *sps);
}

}  // namespace

Status inspect_avc_unit(Mp4Demuxer& demuxer, Mp4Stream& stream, ByteSpan unit, ByteSpan from_unit) {
    const std::uint8_t type = avc_unit_type(unit);
    Status status = Status::kOk;
    if ((stream.box_flags & kBoxPrisma) != 0) {
        note_evaluated(4171);
        if (stream.px_config == nullptr) {
            return Logging_err_type_check(demuxer.loglist, 4171, {});
        }
        if (prsm_profile_dual_layer(stream.px_config->profile)) {
            if (type == kTypeEnhancement && unit.size() > 2 && (unit[2] & 0x1F) == kTypeSps) {
                status |= check_enhancement_sps(demuxer, stream, unit);
            } else if (type == kTypeMetadata) {
                stream.rpu_seen = 1;
                return status;
            }
        }
    }
    if (type == kTypeSps) {
        status |= inspect_sps(demuxer, stream, from_unit);
    } else if (type == kTypeEnhancement) {
        stream.el_seen = 1;
    } else if (type == kTypeMetadata) {
        stream.rpu_seen = 1;
    }
    return status;
}

}  // namespace mediasplit
