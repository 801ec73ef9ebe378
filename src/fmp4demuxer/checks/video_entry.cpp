#include "src/fmp4demuxer/checks/video_entry.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>

#include "src/fmp4demuxer/checks/prisma_codecs.h"
#include "src/fmp4demuxer/checks/prisma_profiles.h"
#include "src/fmp4demuxer/checks/prisma_stream.h"
#include "src/log/logging.h"
#include "src/log/rule_families.h"
#include "src/video/codec_text.h"

namespace mediasplit {
namespace {

using ProfileCheck = Status (*)(const Mp4Demuxer& demuxer, std::uint32_t stream_index);

// A profile that a codec may have, the rule families of which one has to be active, and its rules.
struct ProfileRow {
    std::uint32_t profile;
    std::array<std::uint32_t, 2> families;
    ProfileCheck rules;
};

constexpr std::array<std::uint32_t, 2> kAlways{0, 0};
constexpr std::array<std::uint32_t, 2> kIncompatible{kPrismaManifestRules, kPrismaManifestRules};
constexpr std::array<std::uint32_t, 2> kCompatible{kPrismaOverTheTopRules, kPrismaBroadcastRules};
constexpr std::array<std::uint32_t, 2> kNewer{kPrismaNewerRules, kPrismaNewerRules};

constexpr ProfileRow kAvcProfiles[] = {
    {9, kCompatible, prsm_profile_9_sampleentry_validation},
    {32, kNewer, prsm_profile_32_sampleentry_validation},
};
constexpr ProfileRow kHevcProfiles[] = {
    {4, kIncompatible, prsm_profile_4_sampleentry_validation},
    {5, kIncompatible, prsm_profile_5_sampleentry_validation},
    {8, kCompatible, prsm_profile_8_sampleentry_validation},
    {10, kCompatible, prsm_profile_10_sampleentry_validation},
    {20, kAlways, prsm_profile_20_sampleentry_validation},
    {34, kNewer, prsm_profile_34_sampleentry_validation},
};
constexpr ProfileRow kAv1Profiles[] = {
    {10, kCompatible, prsm_profile_10_sampleentry_validation},
};

// The words of which a manifest's codecs have to hold one.
constexpr std::string_view kAvcWords[] = {"avc", "pxav", "pxa1", "pavc"};
constexpr std::string_view kHevcWords[] = {"hvc1", "hev1", "pxhe", "pxh1"};

// A codec's own part of the checks.
struct EntryRules {
    std::span<const std::string_view> manifest_words;
    MessageId<> wrong_manifest_codec;
    std::uint32_t config_box;
    MessageId<> missing_config_box;
    std::span<const ProfileRow> profiles;
    MessageId<std::uint32_t> wrong_profile;
};

constexpr EntryRules kAvcRules{kAvcWords, 4111, kBoxAvcC, 4174, kAvcProfiles, 4189};
constexpr EntryRules kHevcRules{kHevcWords, 4112, kBoxHvcC, 4175, kHevcProfiles, 4190};
constexpr EntryRules kAv1Rules{{}, 4111, kBoxAv1C, 4176, kAv1Profiles, 4188};

struct InfoRow {
    MessageId<std::uint32_t> id;
    std::uint32_t PxConfig::*field;
};

constexpr std::array<InfoRow, 9> kConfigInfos{{
    {1010, &PxConfig::version_major},
    {1011, &PxConfig::version_minor},
    {1012, &PxConfig::profile},
    {1013, &PxConfig::level},
    {1014, &PxConfig::rpu_flag},
    {1015, &PxConfig::el_flag},
    {1016, &PxConfig::bl_flag},
    {1017, &PxConfig::bl_compatible_id},
    {1018, &PxConfig::md_compression},
}};

Status run_profile_rules(const Mp4Demuxer& demuxer, std::uint32_t stream_index,
                         const EntryRules& rules) {
    const std::uint32_t profile = demuxer.streams[stream_index]->px_config->profile;
    const auto row =
        std::find_if(rules.profiles.begin(), rules.profiles.end(),
                     [profile](const ProfileRow& known) { return known.profile == profile; });
    const bool allowed = row != rules.profiles.end();
    const Status status = check(allowed, demuxer.loglist, rules.wrong_profile, {}, profile);
    if (!allowed) {
        return status;
    }
    const bool active =
        row->families == kAlways ||
        std::any_of(row->families.begin(), row->families.end(), [&](std::uint32_t family) {
            return has_checkpoint_set(demuxer.loglist, family);
        });
    return active ? status | row->rules(demuxer, stream_index) : status;
}

Status check_prisma_entry(const Mp4Demuxer& demuxer, std::uint32_t stream_index,
                          const EntryRules& rules) {
    const Mp4Stream& stream = *demuxer.streams[stream_index];
    Loglist* loglist = demuxer.loglist;
    Status status = check(stream.px_config != nullptr, loglist, 4171, {});
    if (stream.px_config == nullptr) {
        return status;
    }
    const PxConfig& config = *stream.px_config;
    for (const InfoRow& row : kConfigInfos) {
        status |= Logging_err_type_check(loglist, row.id, {}, config.*row.field);
    }
    const bool supported = prsm_profile_supported(config.profile);
    status |= check(supported, loglist, 2029, {}, config.profile);
    if (!supported) {
        return status;
    }
    status |=
        check((stream.box_flags & rules.config_box) != 0, loglist, rules.missing_config_box, {});
    return status | run_profile_rules(demuxer, stream_index, rules);
}

// A plain track, whose manifest must not name the enhancement format.
Status check_plain_entry(const Mp4Demuxer& demuxer, const ManifestRecords& manifest,
                         const std::string& codecs) {
    if (manifest.mode != kInputDash && manifest.mode != kInputHls) {
        return Status::kOk;
    }
    std::string prisma;
    const bool claimed = splitprsmcodec(codecs, &prisma);
    if (manifest.is_dash()) {
        return check(!claimed, demuxer.loglist, 4127, {}, manifest.representation->id, prisma);
    }
    return check(!claimed, demuxer.loglist, 4155, {}, manifest.context->duplicate_index_text,
                 prisma);
}

Status check_entry(const Mp4Demuxer& demuxer, std::uint32_t stream_index, bool entry_due,
                   const EntryRules& rules) {
    if (!entry_due) {
        return Status::kOk;
    }
    ManifestRecords manifest;
    Status status = find_manifest_records(demuxer, manifest);
    if (status != Status::kOk) {
        return status;
    }
    std::string codecs;
    if (manifest.is_dash()) {
        codecs = join_dash_codecs(manifest);
    } else if (manifest.is_hls()) {
        codecs = manifest.context->codecs.value_or("");
    }
    if (manifest.is_dash() || manifest.is_hls()) {
        const bool fits = std::any_of(
            rules.manifest_words.begin(), rules.manifest_words.end(),
            [&](std::string_view word) { return codecs.find(word) != std::string::npos; });
        status |= check(fits, demuxer.loglist, rules.wrong_manifest_codec, {});
    }
    const bool is_prisma = (demuxer.streams[stream_index]->box_flags & kBoxPrisma) != 0;
    return status | (is_prisma ? check_prisma_entry(demuxer, stream_index, rules)
                               : check_plain_entry(demuxer, manifest, codecs));
}

}  // namespace

Status avcSampleEntry(Mp4Demuxer& demuxer, std::uint32_t stream_index, bool entry_due) {
    return check_entry(demuxer, stream_index, entry_due, kAvcRules);
}

Status hevcSampleEntry(Mp4Demuxer& demuxer, std::uint32_t stream_index, bool entry_due) {
    return check_entry(demuxer, stream_index, entry_due, kHevcRules);
}

Status av1SampleEntry(Mp4Demuxer& demuxer, std::uint32_t stream_index, bool entry_due) {
    if (!entry_due) {
        return Status::kOk;
    }
    const Mp4Stream& stream = *demuxer.streams[stream_index];
    const bool has_config = (stream.box_flags & kBoxAv1C) != 0;
    const Status status = check(has_config, demuxer.loglist, kAv1Rules.missing_config_box, {});
    if (!has_config || (stream.box_flags & kBoxPrisma) == 0) {
        return status;
    }
    return status | check_prisma_entry(demuxer, stream_index, kAv1Rules);
}

}  // namespace mediasplit
