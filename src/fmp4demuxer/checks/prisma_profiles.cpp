#include "src/fmp4demuxer/checks/prisma_profiles.h"

#include <algorithm>
#include <string>

#include "src/dash_reader/inherited.h"
#include "src/dash_reader/property_schemes.h"
#include "src/fmp4demuxer/checks/prisma_codecs.h"
#include "src/fmp4demuxer/checks/prisma_container.h"
#include "src/fmp4demuxer/checks/prisma_stream.h"
#include "src/fmp4demuxer/checks/prisma_tables.h"
#include "src/log/rule_families.h"
#include "src/mp4demuxer/mp4demuxer.h"
#include "src/util/text.h"
#include "src/video/codec_text.h"
#include "src/video/level_rules.h"

namespace mediasplit {
namespace {

using prisma::BrandRow;
using prisma::ColourRow;
using prisma::FlagRules;
using prisma::kAny;
using prisma::ProfileRules;

constexpr float kNoFrameRate = 1e-6F;

RuleDetail expecting(std::string_view text) {
    RuleDetail detail;
    detail.expected = text;
    return detail;
}

const HevcSps* first_sps(const Mp4Stream& stream) {
    if (stream.hevc_config == nullptr || stream.hevc_config->sps.empty()) {
        return nullptr;
    }
    return &stream.hevc_config->sps.front().record;
}

bool has_colour_box(const Mp4Stream& stream) {
    return (stream.marks & kMarkColr) != 0 && stream.colour_type == fourcc("nclx");
}

// Transfer characteristics of the parameter set, of the `colr` box, or else the one that the
// compatible id stands for if there is one only. 0 if nothing tells.
std::uint32_t transfer_of(const PrismaStream& prisma, const ProfileRules& rules) {
    if (const HevcSps* sps = first_sps(prisma.stream); sps != nullptr) {
        return sps->vui.transfer_characteristics;
    }
    if (has_colour_box(prisma.stream)) {
        return prisma.stream.transfer_characteristics;
    }
    const ColourRow* row = prisma::colour_of(rules.colours, prisma.config.bl_compatible_id);
    return row != nullptr && row->transfers[0] == row->transfers[1] ? row->transfers[0] : 0;
}

// What a profile's rules look at beside the stream itself.
struct ProfileStream {
    PrismaStream prisma;
    const ProfileRules& rules;
    std::uint32_t transfer = 0;
    const ColourRow* colour = nullptr;
    const BrandRow* brand = nullptr;
    std::string base_codec{};
};

std::string expected_codec(const PrismaStream& prisma, const ProfileRules& rules) {
    std::string_view prefix = rules.codec_prefix;
    const bool is_known_kind = std::find(rules.kinds.begin(), rules.kinds.end(),
                                         prisma.stream.px_kind) != rules.kinds.end();
    if (prefix.empty() && is_known_kind) {
        prefix = prisma_prefix(prisma.stream.px_kind);
    }
    return enhancement_codec(prefix, prisma.config);
}

// The codec of the base layer, empty if the configuration doesn't tell.
std::string base_codec(const PrismaStream& prisma, Status& status) {
    const Mp4Stream& stream = prisma.stream;
    std::string codec;
    if (stream.av1_config != nullptr) {
        status |= build_av1_codec(&codec, stream.px_kind, stream.av1_config.get(), &prisma.config);
    } else if (stream.hevc_config != nullptr) {
        status |= build_hevc_codec(&codec, stream.stream_id, stream.hevc_config.get(),
                                   prisma.demuxer.output_suffix.value_or(""), prisma.loglist());
    } else if (stream.avc_config != nullptr && !stream.avc_config->sps.empty()) {
        status |= build_avc_codec(&codec, stream.px_kind, &stream.avc_config->sps.front().record);
    }
    return codec;
}

// --- The container -------------------------------------------------------------------------------

Status check_flags(const PrismaStream& prisma, const FlagRules& flags) {
    return prisma.check(prisma.config.rpu_flag == 1, flags.rpu) |
           prisma.check(prisma.config.bl_flag == 1, flags.base_layer) |
           prisma.check(prisma.config.el_flag == 0, flags.enhancement_layer);
}

Status check_configuration(const ProfileStream& track) {
    const PrismaStream& prisma = track.prisma;
    const ProfileRules& rules = track.rules;
    Status status = check_flags(prisma, rules.flags);
    for (const prisma::CompatibleIdRow& row : rules.compatible_ids) {
        if (row.entries == kAny || prisma.has_entry(row.entries)) {
            status |=
                prisma.check((row.ids >> prisma.config.bl_compatible_id & 1) != 0, row.message);
            break;
        }
    }
    status |= prisma.check(prisma.config.md_compression == 0, rules.md_compression);
    return status | prisma.check(prisma.has_entry(rules.entries), rules.wrong_entry);
}

Status check_brand(const ProfileStream& track) {
    if (!track.rules.asks_for_brand || track.brand == nullptr) {
        return Status::kOk;
    }
    return track.prisma.check(
        compat_brand_included(track.prisma.demuxer, prisma::code_of(*track.brand)),
        prisma::kBrandMissing, expecting(track.brand->brand));
}

// Colour values, and the messages of the place that they are from.
struct ColourValues {
    std::uint32_t matrix;
    std::uint32_t primaries;
    std::uint32_t transfer;
};
Status check_colour_values(const PrismaStream& prisma, const ColourRow& row,
                           const ColourValues& values, const prisma::ColourMessages& messages) {
    const auto detail = [&](std::uint32_t actual, std::uint32_t expected) {
        RuleDetail result = expecting(row.transfer_text);
        result.actual_number = actual;
        result.expected_number = expected;
        return result;
    };
    return prisma.check(values.matrix == row.matrix, messages.matrix,
                        detail(values.matrix, row.matrix)) |
           prisma.check(values.primaries == row.primaries, messages.primaries,
                        detail(values.primaries, row.primaries)) |
           prisma.check(values.transfer == row.transfers[0] || values.transfer == row.transfers[1],
                        messages.transfer, detail(values.transfer, 0));
}

Status check_colour(const ProfileStream& track) {
    if (track.colour == nullptr) {
        return Status::kOk;
    }
    const PrismaStream& prisma = track.prisma;
    const Mp4Stream& stream = prisma.stream;
    Status status = Status::kOk;
    if (stream.hevc_config != nullptr) {
        for (const auto& set : stream.hevc_config->sps) {
            const HevcVui& vui = set.record.vui;
            status |= check_colour_values(
                prisma, *track.colour,
                {vui.matrix_coeffs, vui.colour_primaries, vui.transfer_characteristics},
                track.rules.sps_colour);
        }
    }
    if ((stream.marks & kMarkColr) == 0) {
        return status;
    }
    const bool is_nclx = has_colour_box(stream);
    status |= prisma.check(is_nclx, prisma::kColrType);
    if (is_nclx) {
        status |= check_colour_values(
            prisma, *track.colour,
            {stream.matrix_coefficients, stream.colour_primaries, stream.transfer_characteristics},
            prisma::kColrColour);
    }
    return status;
}

// --- The manifest --------------------------------------------------------------------------------

bool is_one_of_several(const ManifestRecords& manifest) {
    if (manifest.is_dash()) {
        return !manifest.representation->shared_init_representations.empty();
    }
    return manifest.is_hls() && manifest.context->duplicate_codecs_1.has_value();
}

// Whether the stream has a base layer that the manifest has to tell of.
bool has_base_layer(const ProfileStream& track) {
    const std::uint32_t id = track.prisma.config.bl_compatible_id;
    return track.rules.is_compatible && (track.rules.ids_without_base_layer >> id & 1) == 0;
}

// Manifests tell of a backward compatible stream in one of two ways: a stream of its own for each
// of the two codecs, or one stream with the base layer's codec and the enhancement codec as its
// supplement. The catalogue has the rules of both. To be sound, a manifest has to keep those of one
// way: with the supplement no codec list has to name the enhancement codec, and the base layer's
// codec may stand in either of the two streams' lists. Only both codecs in one list are wrong
// either way.
Status check_codec_list(const ProfileStream& track) {
    const PrismaStream& prisma = track.prisma;
    std::string other;
    std::uint32_t result =
        orvel_prisma_codecs_validation(prisma.codecs, prisma.expected_codec, other,
                                       is_one_of_several(prisma.manifest), prisma.config.profile);
    if (has_base_layer(track) && is_named_as_supplement(prisma)) {
        result &= ~(kCodecsWithoutOurs | kCodecsNeedCompanion);
    }
    RuleDetail detail = expecting(prisma.expected_codec);
    detail.actual = other;
    Status status = Status::kOk;
    for (const prisma::CodecListRow& row : prisma::kCodecListRows) {
        status |= prisma.check((result & row.result) == 0, row.rules, detail);
    }
    const auto commas = std::count(prisma.codecs.begin(), prisma.codecs.end(), ',');
    return status | prisma.check(commas < static_cast<std::ptrdiff_t>(track.rules.most_codecs),
                                 track.rules.too_many_codecs);
}

Status check_base_codec(const ProfileStream& track) {
    if (track.base_codec.empty()) {
        return Status::kOk;
    }
    return track.prisma.check(names_base_codec(track.prisma, track.base_codec),
                              track.rules.base_codec, expecting(track.base_codec));
}

// An attribute of the Representation: there, and of this value. Without a message for a missing
// one only its value is looked at.
Status check_attribute(const PrismaStream& prisma, std::string_view name, std::string_view expected,
                       const RuleMessage& missing, const RuleMessage& wrong) {
    const auto value =
        get_dash_rep_attr_str(prisma.manifest.representation, prisma.manifest.adaptation_set, name);
    const Status status = prisma.check(value.has_value(), missing, expecting(expected));
    return value ? status | prisma.check(*value == expected, wrong, expecting(expected)) : status;
}

Status check_dash_supplements(const ProfileStream& track) {
    const PrismaStream& prisma = track.prisma;
    Status status = prisma.check(prisma.manifest.mpd->xmlns_scte214 == prisma::kNamespace,
                                 prisma::kNamespaceMissing);
    if (!prisma.expected_codec.empty()) {
        status |=
            check_attribute(prisma, "scte214:supplementalCodecs", prisma.expected_codec,
                            track.rules.supplemental_missing.dash, prisma::kSupplementalValue.dash);
    }
    if (track.brand != nullptr) {
        status |= check_attribute(prisma, "scte214:supplementalProfiles", track.brand->brand,
                                  track.rules.supplemental_profiles_missing,
                                  prisma::kSupplementalProfilesValue);
    }
    return status;
}

Status check_segment_profiles(const ProfileStream& track) {
    const PrismaStream& prisma = track.prisma;
    if (track.colour == nullptr || track.colour->segment_profile.empty() ||
        !contain_cmaf_brand(prisma.demuxer)) {
        return Status::kOk;
    }
    float rate = 0;
    if (const HevcSps* sps = first_sps(prisma.stream); sps != nullptr) {
        const HevcConfig& config = *prisma.stream.hevc_config;
        const HevcVps none{};
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        static_cast<void>(parse_h265_width_height_framerate(
            &width, &height, &rate, config.vps.empty() ? &none : &config.vps.front().record, sps,
            prisma.loglist()));
    }
    if (rate <= kNoFrameRate) {
        rate = container_frame_rate(prisma.stream);
    }
    if (rate <= kNoFrameRate) {
        return Status::kOk;
    }
    return check_attribute(prisma, "segmentProfiles",
                           rate > prisma::kFastFrameRate ? track.colour->fast_segment_profile
                                                         : track.colour->segment_profile,
                           prisma::kSegmentProfilesMissing, prisma::kSegmentProfilesValue);
}

Status check_dash_content(const ProfileStream& track) {
    if (!track.rules.tells_dash_content) {
        return Status::kOk;
    }
    const std::uint32_t id = track.prisma.config.bl_compatible_id;
    return check_segment_profiles(track) |
           track.prisma.check(id == 1 || (id == 4 && track.transfer == 18), prisma::kDashContent);
}

// One of the colour descriptors of ISO/IEC 23001-8: in the AdaptationSet only, with this value.
struct CicpRow {
    const char* scheme;
    DashDescriptorText DashCommonInfo::*field;
    std::uint32_t (*expected)(const ProfileStream& track);
};

constexpr CicpRow kCicpRows[] = {
    {kColourPrimariesScheme, &DashCommonInfo::colour_primaries,
     [](const ProfileStream& track) { return track.colour->primaries; }},
    {kMatrixCoefficientsScheme, &DashCommonInfo::matrix_coefficients,
     [](const ProfileStream& track) { return track.colour->matrix; }},
    // The stream's own value if it is one of those allowed.
    {kTransferCharacteristicsScheme, &DashCommonInfo::transfer_characteristics,
     [](const ProfileStream& track) {
         const auto& allowed = track.colour->transfers;
         return track.transfer == allowed[0] ? allowed[0] : allowed[1];
     }},
};

Status check_colour_descriptors(const ProfileStream& track) {
    if (track.colour == nullptr) {
        return Status::kOk;
    }
    const PrismaStream& prisma = track.prisma;
    Status status = Status::kOk;
    for (const CicpRow& row : kCicpRows) {
        const std::string expected = std::to_string(row.expected(track));
        RuleDetail detail = expecting(expected);
        detail.scheme = row.scheme;
        const DashDescriptorText& in_set = prisma.manifest.adaptation_set->*row.field;
        const bool there = in_set.scheme_id_uri.has_value();
        status |= prisma.check(there, prisma::kCicpMissing, detail);
        if (there) {
            status |= prisma.check(in_set.value == expected, prisma::kCicpValue, detail);
        }
        const auto& own = prisma.manifest.representation->*row.field;
        status |=
            prisma.check(!own.scheme_id_uri.has_value(), prisma::kCicpInRepresentation, detail);
    }
    return status;
}

Status check_video_range(const ProfileStream& track) {
    const PrismaStream& prisma = track.prisma;
    const auto* const row =
        std::find_if(std::begin(prisma::kVideoRanges), std::end(prisma::kVideoRanges),
                     [&](const prisma::VideoRangeRow& range) {
                         return range.profile == prisma.config.profile &&
                                prisma::fits(range.compatible_id, prisma.config.bl_compatible_id) &&
                                prisma::fits(range.transfer, track.transfer);
                     });
    if (row == std::end(prisma::kVideoRanges)) {
        return Status::kOk;
    }
    const auto& range = prisma.manifest.context->video_range;
    const Status status = prisma.check(range.has_value(), prisma::kVideoRangeMissing);
    // Comes as written; some playlists quote it.
    return range ? status | prisma.check(unquoted(*range) == row->range, prisma::kVideoRangeValue,
                                         expecting(row->range))
                 : status;
}

Status check_hls_supplements(const ProfileStream& track) {
    const PrismaStream& prisma = track.prisma;
    if (track.brand == nullptr || prisma.expected_codec.empty()) {
        return Status::kOk;
    }
    const std::string expected = supplemental_codec(prisma.expected_codec, track.brand->brand);
    const auto& codecs = prisma.manifest.context->supplemental_codecs;
    const Status status = prisma.check(codecs.has_value(), track.rules.supplemental_missing);
    return codecs ? status | prisma.check(codec_is_contained(codecs, expected),
                                          prisma::kSupplementalValue, expecting(expected))
                  : status;
}

Status check_manifest(const ProfileStream& track) {
    const PrismaStream& prisma = track.prisma;
    if (!has_checkpoint_set(prisma.loglist(), kPrismaManifestRules) ||
        (!prisma.manifest.is_dash() && !prisma.manifest.is_hls())) {
        return Status::kOk;
    }
    const bool is_hls = prisma.manifest.is_hls();
    Status status = check_codec_list(track);
    if (is_hls) {
        status |= check_video_range(track);
    }
    if (has_base_layer(track)) {
        status |= check_base_codec(track);
        status |= is_hls ? check_hls_supplements(track)
                         : check_dash_supplements(track) | check_dash_content(track) |
                               check_colour_descriptors(track);
    }
    return status | orvel_prisma_compatible_codec_validation(prisma, track.base_codec);
}

// --- The frame of profiles 4, 5, 8, 9 and 10 -----------------------------------------------------

void describe(ProfileStream& track) {
    PrismaStream& prisma = track.prisma;
    track.transfer = transfer_of(prisma, track.rules);
    track.colour = prisma::colour_of(track.rules.colours, prisma.config.bl_compatible_id);
    track.brand =
        prisma::brand_of(prisma.config.profile, prisma.config.bl_compatible_id, track.transfer);
    prisma.expected_codec = expected_codec(prisma, track.rules);
    for (const prisma::ProfileTextRow& row : prisma::kProfileTexts) {
        if (row.profile == prisma.config.profile &&
            row.compatible_id == prisma.config.bl_compatible_id && row.transfer == track.transfer) {
            prisma.profile_text = row.text;
        }
    }
}

Status validate(const Mp4Demuxer& demuxer, std::uint32_t stream_index, const ProfileRules& rules) {
    if (!is_prisma_track(demuxer, stream_index)) {
        return Status::kFailed;
    }
    ProfileStream track{PrismaStream(demuxer, stream_index), rules};
    Status status = track.prisma.find_manifest();
    if (status != Status::kOk) {
        return status;
    }
    describe(track);
    status |= prsm_genenral_validation(track.prisma);
    status |= check_configuration(track) | check_brand(track) | check_colour(track);
    if (rules.is_compatible) {
        track.base_codec = base_codec(track.prisma, status);
    }
    return status | check_manifest(track);
}

// --- Profiles 32 and 34 --------------------------------------------------------------------------

Status validate(const Mp4Demuxer& demuxer, std::uint32_t stream_index,
                const prisma::NewerProfileRules& rules) {
    if (!is_prisma_track(demuxer, stream_index)) {
        return Status::kFailed;
    }
    PrismaStream prisma(demuxer, stream_index);
    Status status = prisma.find_manifest();
    if (status != Status::kOk) {
        return status;
    }
    status |= prsm_genenral_validation(prisma) | check_flags(prisma, prisma::kCompatibleFlags);
    const std::uint32_t id = prisma.config.bl_compatible_id;
    status |= prisma.check(id == 2 || id == 3, prisma::kNewerId);
    status |= prisma.check(id != 2, prisma::kNewerIdToCome);
    if (id == 3) {
        status |= prisma.check(prisma.has_entry(rules.entry), rules.wrong_entry);
        status |=
            prisma.check(prisma.config.level <= prisma::kNewerHighestLevel, prisma::kNewerLevel);
    }
    return status;
}

}  // namespace

Status prsm_profile_4_sampleentry_validation(const Mp4Demuxer& demuxer,
                                             std::uint32_t stream_index) {
    return validate(demuxer, stream_index, prisma::kProfile4);
}

Status prsm_profile_5_sampleentry_validation(const Mp4Demuxer& demuxer,
                                             std::uint32_t stream_index) {
    return validate(demuxer, stream_index, prisma::kProfile5);
}

Status prsm_profile_8_sampleentry_validation(const Mp4Demuxer& demuxer,
                                             std::uint32_t stream_index) {
    return validate(demuxer, stream_index, prisma::kProfile8);
}

Status prsm_profile_9_sampleentry_validation(const Mp4Demuxer& demuxer,
                                             std::uint32_t stream_index) {
    return validate(demuxer, stream_index, prisma::kProfile9);
}

Status prsm_profile_10_sampleentry_validation(const Mp4Demuxer& demuxer,
                                              std::uint32_t stream_index) {
    return validate(demuxer, stream_index, prisma::kProfile10);
}

Status prsm_profile_32_sampleentry_validation(const Mp4Demuxer& demuxer,
                                              std::uint32_t stream_index) {
    return validate(demuxer, stream_index, prisma::kProfile32);
}

Status prsm_profile_34_sampleentry_validation(const Mp4Demuxer& demuxer,
                                              std::uint32_t stream_index) {
    return validate(demuxer, stream_index, prisma::kProfile34);
}

}  // namespace mediasplit
