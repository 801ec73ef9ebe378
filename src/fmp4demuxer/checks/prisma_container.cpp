#include "src/fmp4demuxer/checks/prisma_container.h"

#include <algorithm>
#include <iterator>

#include "src/dash_reader/inherited.h"
#include "src/fmp4demuxer/checks/prisma_tables.h"
#include "src/mp4demuxer/mp4demuxer.h"
#include "src/video/level_rules.h"

namespace mediasplit {
namespace {

Status check_config_box(const PrismaStream& prisma) {
    const auto* const row = std::find_if(
        std::begin(prisma::kConfigBoxes), std::end(prisma::kConfigBoxes),
        [&](const prisma::ConfigBoxRow& box) { return prisma.config.profile <= box.last_profile; });
    return prisma.check(prisma.has_entry(row->box), row->message);
}

Status check_levels(const PrismaStream& prisma) {
    const float rate = container_frame_rate(prisma.stream);
    const std::uint32_t level = prisma.config.level;
    Status status = Status::kOk;
    if (prisma.stream.avc_config != nullptr) {
        for (const auto& set : prisma.stream.avc_config->sps) {
            status |= check_px_level(level, set.record.pic_width, set.record.pic_height,
                                     prisma.loglist(), set.record.frame_rate, rate);
        }
    }
    if (prisma.stream.hevc_config != nullptr) {
        const HevcConfig& config = *prisma.stream.hevc_config;
        const HevcVps none{};
        const HevcVps& vps = config.vps.empty() ? none : config.vps.front().record;
        for (const auto& set : config.sps) {
            status |= check_px_h265_level(level, &vps, &set.record, prisma.loglist(), rate);
        }
    }
    return status;
}

}  // namespace

Status check_mime_type(const PrismaStream& prisma) {
    return prisma.check(
        get_dash_rep_attr_str(prisma.manifest.representation, prisma.manifest.adaptation_set,
                              "mimeType") == "video/mp4",
        prisma::kMimeType);
}

Status prsm_genenral_validation(const PrismaStream& prisma) {
    const PxConfig& config = prisma.config;
    Status status =
        prisma.check(compat_brand_included(prisma.demuxer, fourcc("orv1")), prisma::kMainBrand);
    status |= prisma.check(prisma.stream.stream_type == kStreamVideo, prisma::kVideoHandler);
    status |= prisma.check((prisma.stream.marks & kMarkVmhd) != 0, prisma::kVideoHeader);
    status |= check_config_box(prisma);
    status |= check_levels(prisma);
    RuleDetail detail;
    detail.actual_number = config.version_major;
    status |= prisma.check(config.version_major == 1, prisma::kVersionMajor, detail);
    detail.actual_number = config.version_minor;
    status |= prisma.check(config.version_minor == 0, prisma::kVersionMinor, detail);
    return prisma.manifest.is_dash() ? status | check_mime_type(prisma) : status;
}

}  // namespace mediasplit
