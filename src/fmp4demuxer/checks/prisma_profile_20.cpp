// Profile 20, the stereo profile, which shares nothing with the others but the form of its rules.
#include <algorithm>
#include <string_view>

#include "src/fmp4demuxer/checks/prisma_container.h"
#include "src/fmp4demuxer/checks/prisma_profiles.h"
#include "src/fmp4demuxer/checks/prisma_stream.h"
#include "src/fmp4demuxer/checks/prisma_tables.h"
#include "src/log/rule_families.h"
#include "src/mp4demuxer/mp4demuxer.h"
#include "src/util/text.h"

namespace mediasplit {
namespace {

using enum RuleValue;

constexpr std::uint8_t kMain10 = 2;
constexpr std::uint8_t kHighestHevcLevel = 183;

// A condition on the track, and the message if it doesn't hold.
struct TrackRule {
    bool (*holds)(const PrismaStream& prisma);
    RuleMessage message;
    std::uint32_t PxConfig::*told = nullptr;  // what the message tells
};

constexpr TrackRule kTrackRules[] = {
    {[](const PrismaStream& p) { return compat_brand_included(p.demuxer, fourcc("orv1")); },
     prisma::kMainBrand},
    {[](const PrismaStream& p) { return p.stream.stream_type == kStreamVideo; },
     prisma::kVideoHandler},
    {[](const PrismaStream& p) { return (p.stream.marks & kMarkVmhd) != 0; }, prisma::kVideoHeader},
    {[](const PrismaStream& p) { return p.has_entry(kBoxPxcC); }, rule<>(4234)},
    {[](const PrismaStream& p) { return p.config.level <= 12; }, rule<>(4235)},
    {[](const PrismaStream& p) { return p.config.version_major == 3; }, rule<kActualNumber>(4236),
     &PxConfig::version_major},
    {[](const PrismaStream& p) { return p.config.version_minor == 0; }, rule<kActualNumber>(4237),
     &PxConfig::version_minor},
    {[](const PrismaStream& p) { return p.config.rpu_flag == 1; }, prisma::kStereoFlags.rpu},
    {[](const PrismaStream& p) { return p.config.bl_flag == 1; }, prisma::kStereoFlags.base_layer},
    {[](const PrismaStream& p) { return p.config.el_flag == 0; },
     prisma::kStereoFlags.enhancement_layer},
    {[](const PrismaStream& p) { return p.config.bl_compatible_id == 0; }, rule<>(4241)},
    {[](const PrismaStream& p) { return p.config.md_compression == 0; }, rule<>(4242)},
    {[](const PrismaStream& p) { return p.has_entry(kBoxPxhe | kBoxPxh1); }, rule<>(4243)},
};

Status check_hevc_config(const PrismaStream& prisma) {
    if (prisma.stream.hevc_config == nullptr) {
        return Status::kOk;
    }
    const HevcConfig& config = *prisma.stream.hevc_config;
    Status status = prisma.check(config.general_profile_idc == kMain10, rule<>(4244));
    status |= prisma.check(config.general_level_idc <= kHighestHevcLevel, rule<>(4245));
    const bool has_second_layer =
        std::any_of(config.vps.begin(), config.vps.end(),
                    [](const auto& set) { return set.record.vps_max_layers_minus1 > 0; });
    return status | prisma.check(!has_second_layer || prisma.has_entry(kBoxLhvC), rule<>(4246));
}

Status check_playlist(const PrismaStream& prisma) {
    const ManifestContext& context = *prisma.manifest.context;
    RuleDetail detail;
    detail.expected = prisma::kStereoLayout;
    detail.actual_number = static_cast<std::uint32_t>(context.hls_version);
    const auto& layout = context.req_video_layout;
    Status status = prisma.check(layout.has_value(), prisma::kLayoutMissing, detail);
    if (layout) {
        // Comes as written, so with the quotation marks of a string.
        status |=
            prisma.check(unquoted(*layout) == prisma::kStereoLayout, prisma::kLayoutValue, detail);
    }
    return status | prisma.check(context.hls_version >= prisma::kStereoPlaylistVersion,
                                 prisma::kStereoPlaylistVersionLow, detail);
}

}  // namespace

Status prsm_profile_20_sampleentry_validation(const Mp4Demuxer& demuxer,
                                              std::uint32_t stream_index) {
    if (!is_prisma_track(demuxer, stream_index)) {
        return Status::kFailed;
    }
    PrismaStream prisma(demuxer, stream_index);
    Status status = prisma.find_manifest();
    if (status != Status::kOk) {
        return status;
    }
    for (const TrackRule& row : kTrackRules) {
        RuleDetail detail;
        detail.actual_number = row.told != nullptr ? prisma.config.*row.told : 0;
        status |= prisma.check(row.holds(prisma), row.message, detail);
    }
    status |= check_hevc_config(prisma);
    if (!has_checkpoint_set(prisma.loglist(), kPrismaManifestRules)) {
        return status;
    }
    if (prisma.manifest.is_dash()) {
        status |= check_mime_type(prisma);
    } else if (prisma.manifest.is_hls()) {
        status |= check_playlist(prisma);
    }
    return status;
}

}  // namespace mediasplit
