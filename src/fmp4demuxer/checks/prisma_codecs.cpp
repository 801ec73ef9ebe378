#include "src/fmp4demuxer/checks/prisma_codecs.h"

#include <algorithm>
#include <array>

#include "src/dash_reader/inherited.h"
#include "src/fmp4demuxer/checks/prisma_tables.h"
#include "src/video/codec_text.h"

namespace mediasplit {
namespace {

constexpr std::size_t kLongestList = 100;
constexpr std::array<std::string_view, 4> kEnhancementPrefixes{"pxav.", "pxa1.", "pxhe.", "pxh1."};
constexpr std::string_view kAv1Prefix = "pav1.";
constexpr std::uint32_t kAv1Profile = 10;

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

bool names_enhancement(std::string_view codec) {
    return std::any_of(kEnhancementPrefixes.begin(), kEnhancementPrefixes.end(),
                       [&](std::string_view prefix) { return contains(codec, prefix); });
}

// Calls `visit(word)` for each word between commas.
template <typename Visit>
void for_each_word(std::string_view list, Visit visit) {
    for (;;) {
        const std::size_t comma = std::min(list.find(','), list.size());
        visit(list.substr(0, comma));
        if (comma == list.size()) {
            return;
        }
        list.remove_prefix(comma + 1);
    }
}

}  // namespace

std::string get_main_codec(OptText codecs) {
    if (!codecs || codecs->size() > kLongestList) {
        return {};
    }
    for (std::string_view rest = *codecs; !rest.empty();) {
        const std::string_view word = rest.substr(0, rest.find(','));
        if (names_enhancement(word)) {
            return std::string(word);
        }
        rest.remove_prefix(std::min(word.size() + 1, rest.size()));
    }
    return codecs.str();
}

std::string_view prisma_prefix(std::uint32_t px_kind) {
    switch (px_kind) {
        case kPxPxav:
            return "pxav";
        case kPxPxa1:
            return "pxa1";
        case kPxPxhe:
            return "pxhe";
        case kPxPxh1:
            return "pxh1";
        default:
            return {};
    }
}

std::string enhancement_codec(std::string_view prefix, const PxConfig& config) {
    const auto two_digits = [](std::uint32_t number) {
        return (number < 10 ? ".0" : ".") + std::to_string(number);
    };
    return prefix.empty()
               ? std::string{}
               : std::string(prefix) + two_digits(config.profile) + two_digits(config.level);
}

std::string supplemental_codec(std::string_view codec, std::string_view brand) {
    return std::string(codec) + "/" + std::string(brand);
}

bool prsm_profile_dual_layer(std::uint32_t profile) {
    return profile == 4;
}

bool prsm_profile_supported(std::uint32_t profile) {
    constexpr std::array<std::uint32_t, 8> kProfiles{4, 5, 8, 9, 10, 20, 32, 34};
    return std::find(kProfiles.begin(), kProfiles.end(), profile) != kProfiles.end();
}

std::uint32_t orvel_prisma_codecs_validation(OptText codecs, OptText expected, std::string& other,
                                             bool shared, std::uint32_t profile) {
    other.clear();
    const std::string_view list = codecs.view();
    if (list.empty() || list.front() == ',' || list.back() == ',' || contains(list, ",,")) {
        return kCodecsMalformed;
    }
    if (expected.view().empty()) {
        return kCodecsNoExpected;
    }
    bool found = false;
    bool matched = false;
    for_each_word(list, [&](std::string_view word) {
        if (!names_enhancement(word) && !(profile == kAv1Profile && contains(word, kAv1Prefix))) {
            return;
        }
        found = true;
        if (codec_match(word, expected)) {
            matched = true;
        } else if (other.empty()) {
            other = word;
        }
    });
    if (!found) {
        return (profile == 8 || profile == 9) && !shared ? kCodecsNeedCompanion
                                                         : kCodecsWithoutOurs;
    }
    return matched ? 0 : kCodecsMismatch;
}

// --- The backward compatible codec --------------------------------------------------------------

namespace {

bool is_compatible_profile(std::uint32_t profile) {
    return profile == 8 || profile == 9;
}

const RuleMessage* message_for(const prisma::CompatibilityRule& both, std::uint32_t profile) {
    if (is_compatible_profile(profile)) {
        return &both.compatible;
    }
    return profile == 5 ? &both.incompatible : nullptr;
}

CodecPair expected_pair(const PrismaStream& prisma, std::string_view base_codec) {
    for (const prisma::CodecPairRow& row : prisma::kCodecPairs) {
        if (row.profile == prisma.config.profile && row.px_kind == prisma.stream.px_kind) {
            return {row.main, std::string(row.compatible != nullptr ? row.compatible : base_codec)};
        }
    }
    return {};
}

RuleDetail detail_of(const PrismaStream& prisma, const CodecPair& pair, std::string_view place) {
    RuleDetail detail;
    detail.expected = pair.compatible;
    detail.actual = prisma_prefix(prisma.stream.px_kind);
    detail.scheme = place;
    return detail;
}

Status check_dash_lists(const PrismaStream& prisma, const CodecPair& pair, CodecMarks& marks) {
    const ManifestRecords& manifest = prisma.manifest;
    const DashRepresentationInfo& own = *manifest.representation;
    Status status = check_one_rep_prsm_codec(
        prisma,
        get_dash_rep_attr_str(&own, manifest.adaptation_set, "codecs").value_or(std::string_view{}),
        pair, own.adaptation_set_index + 1, marks);
    for (const auto& shared : own.shared_init_representations) {
        const DashAdaptationSetInfo* set = adaptation_set_of(manifest, shared);
        status |= check_one_rep_prsm_codec(
            prisma, get_dash_rep_attr_str(&shared, set, "codecs").value_or(std::string_view{}),
            pair, shared.adaptation_set_index + 1, marks);
    }
    return status;
}

Status check_hls_lists(const PrismaStream& prisma, const CodecPair& pair, CodecMarks& marks) {
    const ManifestContext& context = *prisma.manifest.context;
    Status status = Status::kOk;
    for (const auto* list :
         {&context.variant_codecs, &context.duplicate_codecs_1, &context.duplicate_codecs_2}) {
        if (list->has_value()) {
            status |= check_one_rep_prsm_codec(prisma, **list, pair, 1, marks);
        }
    }
    return status;
}

}  // namespace

Status check_one_rep_prsm_codec(const PrismaStream& prisma, std::string_view codecs,
                                const CodecPair& pair, std::uint32_t mark, CodecMarks& marks) {
    const std::uint32_t profile = prisma.config.profile;
    const RuleDetail detail =
        detail_of(prisma, pair, prisma.manifest.is_dash() ? "codecs" : "CODECS");
    const CodecMarks before = marks;
    bool main_here = false;
    bool compatible_here = false;
    Status status = Status::kOk;
    for_each_word(codecs, [&](std::string_view word) {
        if (word.starts_with(pair.main)) {
            status |= prisma.check(before.main == 0, prisma::kTwoMainCodecs, detail);
            if (before.main == 0) {
                marks.main = mark;
                main_here = true;
            }
        }
        if (codec_match(word, pair.compatible)) {
            status |= prisma.check(before.compatible == 0, prisma::kTwoCompatibleCodecs, detail);
            if (before.compatible == 0) {
                marks.compatible = mark;
            }
            compatible_here = true;
        }
    });
    const auto reject_compatible = [&](bool holds, const prisma::CompatibilityRule& both) {
        const RuleMessage* message = message_for(both, profile);
        if (message != nullptr) {
            status |= prisma.check(holds, *message, detail);
            return !holds;
        }
        return false;
    };
    if (reject_compatible(!(main_here && compatible_here), prisma::kInOneList) &&
        before.compatible == 0) {
        marks.compatible = 0;
    }
    const bool in_one_group = (before.main != 0 || before.compatible != 0) &&
                              marks.main == marks.compatible && prisma.manifest.is_dash();
    if (prisma.manifest.is_dash() && reject_compatible(!in_one_group, prisma::kInOneSet)) {
        marks.compatible = 0;
    }
    return status;
}

Status orvel_prisma_compatible_codec_validation(const PrismaStream& prisma,
                                                std::string_view base_codec) {
    const ManifestRecords& manifest = prisma.manifest;
    if (!manifest.is_dash() && !manifest.is_hls()) {
        return Status::kOk;
    }
    const CodecPair pair = expected_pair(prisma, base_codec);
    if (pair.main.empty() || pair.compatible.empty()) {
        return Status::kOk;
    }
    CodecMarks marks;
    const Status status = manifest.is_dash() ? check_dash_lists(prisma, pair, marks)
                                             : check_hls_lists(prisma, pair, marks);
    const RuleDetail detail =
        detail_of(prisma, pair, manifest.is_dash() ? "AdaptationSet" : "#EXT-X-STREAM-INF");
    if (is_compatible_profile(prisma.config.profile)) {
        return status |
               prisma.check(marks.compatible != 0, prisma::kCompatibleStreamMissing, detail);
    }
    // Deliberate: only a stream in the first group is held to be alone.
    return status | prisma.check(marks.compatible == 0 || marks.main != 1,
                                 prisma::kCompatibleStreamThere, detail);
}

bool hls_codec_all_stream_partial_contained(const ManifestContext& context, OptText codec,
                                            std::uint32_t& index) {
    const bool contained = context.variant_codecs
                               ? codec_is_contained(context.variant_codecs, codec)
                               : context.duplicate_codecs_1 || context.duplicate_codecs_2;
    if (!contained) {
        index = context.stream_index;
    }
    return contained;
}

// --- Both ways of naming base layer and enhancement ----------------------------------------------

namespace {

// Unlike codec_is_contained() for lists of any length: those of a Representation are joined.
bool names_codec(OptText list, std::string_view codec) {
    bool found = false;
    for_each_word(list.view(),
                  [&](std::string_view word) { found = found || codec_match(word, codec); });
    return found;
}

}  // namespace

bool is_named_as_supplement(const PrismaStream& prisma) {
    const ManifestRecords& manifest = prisma.manifest;
    OptText list;
    if (manifest.is_dash()) {
        list = get_dash_rep_attr_str(manifest.representation, manifest.adaptation_set,
                                     "scte214:supplementalCodecs");
    } else if (manifest.is_hls()) {
        list = manifest.context->supplemental_codecs;
    }
    bool found = false;
    for_each_word(list.view(), [&](std::string_view word) {
        found = found || word.substr(0, word.find('/')) == prisma.expected_codec;
    });
    return found && !prisma.expected_codec.empty();
}

bool names_base_codec(const PrismaStream& prisma, std::string_view codec) {
    if (!prisma.manifest.is_hls()) {
        return names_codec(prisma.codecs, codec);
    }
    const ManifestContext& context = *prisma.manifest.context;
    std::uint32_t index = 0;
    return hls_codec_all_stream_partial_contained(context, codec, index) ||
           names_codec(context.duplicate_codecs_1, codec) ||
           names_codec(context.duplicate_codecs_2, codec);
}

}  // namespace mediasplit
