// What the profiles of the enhancement format ask for, row by row.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>

#include "src/fmp4demuxer/checks/prisma_codecs.h"
#include "src/fmp4demuxer/checks/prisma_message.h"
#include "src/mp4demuxer/records.h"

namespace mediasplit::prisma {

using enum RuleValue;

// A number that a row doesn't ask for.
inline constexpr std::uint32_t kAny = 0xFFFFFFFF;

constexpr bool fits(std::uint32_t wanted, std::uint32_t value) {
    return wanted == kAny || wanted == value;
}

// --- The container -------------------------------------------------------------------------------

inline constexpr RuleMessage kMainBrand = rule<>(4170);
inline constexpr RuleMessage kVideoHandler = rule<>(4172);
inline constexpr RuleMessage kVideoHeader = rule<>(4173);
inline constexpr RuleMessage kMimeType = rule<>(4117);
inline constexpr RuleMessage kVersionMajor = rule<kActualNumber>(4194);  // must be 1
inline constexpr RuleMessage kVersionMinor = rule<kActualNumber>(4195);  // must be 0

// The configuration box of profiles up to one.
struct ConfigBoxRow {
    std::uint32_t last_profile;
    std::uint32_t box;
    RuleMessage message;
};

inline constexpr ConfigBoxRow kConfigBoxes[] = {
    {7, kBoxPxcC, rule<>(4191)},
    {10, kBoxPxvC, rule<>(4192)},
    {kAny, kBoxPxwC, rule<>(4193)},
};

// --- The codec list of the manifest, in the order of the reports ---------------------------------

struct CodecListRow {
    std::uint32_t result;  // bit of orvel_prisma_codecs_validation
    ManifestRule rules;
};

inline constexpr CodecListRow kCodecListRows[] = {
    {kCodecsMalformed, {rule<>(4118), rule<kStreamIndices>(4142), rule<kStreamIndex>(4149)}},
    {kCodecsNoExpected, {rule<>(4119), rule<>(4143), rule<>(4143)}},
    {kCodecsWithoutOurs,
     {rule<kExpected, kCodecs>(4120), rule<kExpected, kCodecs, kStreamIndices>(4144),
      rule<kExpected, kCodecs, kStreamIndex>(4150)}},
    {kCodecsNeedCompanion,
     {rule<kActual, kExpected>(4121), rule<kStreamIndex, kExpected>(4145),
      rule<kStreamIndex, kExpected>(4151)}},
    {kCodecsMismatch,
     {rule<kExpected, kActual>(4122), rule<kStreamIndices, kExpected, kActual>(4146),
      rule<kStreamIndex, kExpected, kActual>(4152)}},
};

// More codecs than the enhancement codec and a compatible one, or than the enhancement codec alone.
inline constexpr ManifestRule kMoreThanTwoCodecs{
    rule<kCodecs>(4125), rule<kCodecs, kStreamIndices>(4147), rule<kCodecs, kStreamIndex>(4153)};
inline constexpr ManifestRule kMoreThanOneCodec{
    rule<kCodecs>(4126), rule<kCodecs, kStreamIndices>(4148), rule<kCodecs, kStreamIndex>(4154)};

// --- The backward compatible codec ---------------------------------------------------------------

// Codecs by kind of entry: the prefix of the enhancement codec that the manifest has to name, and
// the codec that it has to name too (null: the base layer's), or must not with profile 5.
struct CodecPairRow {
    std::uint32_t profile;
    std::uint32_t px_kind;
    const char* main;
    const char* compatible;
};

inline constexpr CodecPairRow kCodecPairs[] = {
    {9, kPxPxav, "pxav.09", nullptr},  // H.264, sets in samples
    {9, kPxPxa1, "pxa1.09", nullptr},  // H.264, sets in the entry
    {8, kPxPxhe, "pxhe.08", nullptr},  // H.265, sets in samples
    {8, kPxPxh1, "pxh1.08", nullptr},  // H.265, sets in the entry
    {5, kPxPxhe, "pxhe.05", "hev1"},   // no base layer
    {5, kPxPxh1, "pxh1.05", "hvc1"},   // no base layer
};

// One rule in its forms for profiles with a backward compatible stream (8 and 9) and without (5).
struct CompatibilityRule {
    RuleMessage compatible{};
    RuleMessage incompatible{};
};

inline constexpr CompatibilityRule kInOneList{rule<kProfile, kActual, kExpected, kScheme>(4113),
                                              rule<kActual, kExpected, kScheme>(4114)};
inline constexpr CompatibilityRule kInOneSet{rule<kProfile>(4123), rule<>(4124)};
inline constexpr RuleMessage kCompatibleStreamMissing =
    rule<kProfile, kActual, kScheme, kExpected>(4115);
inline constexpr RuleMessage kCompatibleStreamThere = rule<kActual, kScheme, kExpected>(4116);
inline constexpr RuleMessage kTwoMainCodecs = rule<kScheme>(2024);
inline constexpr RuleMessage kTwoCompatibleCodecs = rule<kScheme>(2025);

// --- The configuration box -----------------------------------------------------------------------

// Flags for metadata, base layer and enhancement layer: 1, 1 and 0.
struct FlagRules {
    RuleMessage rpu{};
    RuleMessage base_layer{};
    RuleMessage enhancement_layer{};
};

inline constexpr FlagRules kCompatibleFlags{rule<>(4196), rule<>(4197), rule<>(4198)};
inline constexpr FlagRules kIncompatibleFlags{rule<>(4199), rule<>(4200), rule<>(4201)};
inline constexpr FlagRules kStereoFlags{rule<>(4238), rule<>(4239), rule<>(4240)};

// Compatible ids (bit n for id n) of a profile with one of the sample entries. The first row that
// has the track's entry counts.
struct CompatibleIdRow {
    std::uint32_t entries;
    std::uint32_t ids;
    RuleMessage message;
};

constexpr std::uint32_t ids(std::initializer_list<unsigned> list) {
    std::uint32_t bits = 0;
    for (const unsigned id : list) {
        bits |= 1U << id;
    }
    return bits;
}

inline constexpr CompatibleIdRow kProfile5Ids[] = {{kAny, ids({0}), rule<>(4228)}};
inline constexpr CompatibleIdRow kProfile8Ids[] = {
    {kAny, ids({1, 2, 4}), rule<kCompatibleId>(4211)}};
inline constexpr CompatibleIdRow kProfile9Ids[] = {{kAny, ids({2}), rule<>(4213)}};
inline constexpr CompatibleIdRow kProfile10Ids[] = {
    {kBoxAv01, ids({1, 4}), rule<kCompatibleId>(4216)},
    {kAny, ids({0, 1, 2, 4}), rule<kCompatibleId>(4217)}};

// --- Brands --------------------------------------------------------------------------------------

// The brand that tells the base layer. The first row that fits counts.
struct BrandRow {
    std::uint32_t profile;
    std::uint32_t compatible_id;
    std::uint32_t transfer;
    std::string_view brand;
};

inline constexpr BrandRow kBrands[] = {
    {9, kAny, kAny, "pb2g"},  // SDR
    {kAny, 1, kAny, "pb1p"},  // PQ
    {kAny, 2, kAny, "pb2g"},  // SDR
    {kAny, 4, 14, "pb4g"},    // HLG, told as ITU-R BT.2020
    {kAny, 4, 18, "pb4h"},    // HLG
};

constexpr std::uint32_t code_of(const BrandRow& row) {
    const char text[5] = {row.brand[0], row.brand[1], row.brand[2], row.brand[3], 0};
    return fourcc(text);
}

// Null if nothing tells.
constexpr const BrandRow* brand_of(std::uint32_t profile, std::uint32_t compatible_id,
                                   std::uint32_t transfer) {
    for (const BrandRow& row : kBrands) {
        if (fits(row.profile, profile) && fits(row.compatible_id, compatible_id) &&
            fits(row.transfer, transfer)) {
            return &row;
        }
    }
    return nullptr;
}

// --- Colour (ITU-T H.273) ------------------------------------------------------------------------

struct ColourRow {
    std::uint32_t compatible_id;
    std::uint32_t primaries;
    std::uint32_t matrix;
    std::array<std::uint32_t, 2> transfers;
    std::string_view transfer_text;
    // segmentProfiles of CMAF segments up to 60 frames a second and above; empty: not told.
    std::string_view segment_profile;
    std::string_view fast_segment_profile;
};

inline constexpr ColourRow kProfile8Colours[] = {
    {1, 9, 9, {16, 16}, "16", "chd1", "chd2"},
    {4, 9, 9, {14, 18}, "14, 18", "clg1", "clg2"},
};
inline constexpr ColourRow kProfile10Colours[] = {
    {1, 9, 9, {16, 16}, "16", "", ""},
    {4, 9, 9, {18, 18}, "18", "", ""},
};

// Null for a compatible id that fixes no colour.
constexpr const ColourRow* colour_of(std::span<const ColourRow> rows, std::uint32_t compatible_id) {
    for (const ColourRow& row : rows) {
        if (row.compatible_id == compatible_id) {
            return &row;
        }
    }
    return nullptr;
}

// Messages on colour values, by the place that they are from.
struct ColourMessages {
    RuleMessage matrix{};
    RuleMessage primaries{};
    RuleMessage transfer{};
};

inline constexpr ColourMessages kEntrySpsColour{
    rule<kProfile, kCompatibleId, kActualNumber, kExpectedNumber>(4203),
    rule<kProfile, kCompatibleId, kActualNumber, kExpectedNumber>(4204),
    rule<kProfile, kCompatibleId, kActualNumber, kExpected>(4205)};
inline constexpr ColourMessages kColrColour{
    rule<kProfile, kCompatibleId, kActualNumber, kExpectedNumber>(4207),
    rule<kProfile, kCompatibleId, kActualNumber, kExpectedNumber>(4208),
    rule<kProfile, kCompatibleId, kActualNumber, kExpected>(4209)};
inline constexpr RuleMessage kColrType = rule<kProfile>(4206);

// Frames a second above which segments have the faster profile.
inline constexpr float kFastFrameRate = 60;

// How messages name a profile whose compatible id alone doesn't tell the base layer.
struct ProfileTextRow {
    std::uint32_t profile;
    std::uint32_t compatible_id;
    std::uint32_t transfer;
    std::string_view text;
};

inline constexpr ProfileTextRow kProfileTexts[] = {
    {8, 4, 18,
     "8.4 (with -18 transfer characteristic: ARIB STD B67; also ITU-R BT.2100-1 HLG system)"},
    {8, 4, 14, "8.4 (with -14 transfer characteristic: ITU-R BT.2020-2 10-bit system)"},
};

// VIDEO-RANGE of a playlist's stream; the first row that fits counts.
struct VideoRangeRow {
    std::uint32_t profile;
    std::uint32_t compatible_id;
    std::uint32_t transfer;
    std::string_view range;
};

inline constexpr VideoRangeRow kVideoRanges[] = {
    {5, kAny, kAny, "PQ"},   // has no other
    {8, 1, kAny, "PQ"},      // by id
    {8, 2, kAny, "SDR"},     // by id
    {8, 4, kAny, "HLG"},     // by id
    {9, kAny, kAny, "SDR"},  // has no other
    {10, kAny, 16, "PQ"},    // by transfer characteristics
    {10, kAny, 18, "HLG"},   // by transfer characteristics
};

// --- Rules with one form for all profiles that have them -----------------------------------------

inline constexpr RuleMessage kBrandMissing = rule<kProfile, kCompatibleId, kExpected>(2030);

inline constexpr RuleMessage kNamespaceMissing = rule<kProfile>(4133);
inline constexpr std::string_view kNamespace = "urn:scte:dash:scte214-extensions";
inline constexpr RuleMessage kDashContent = rule<>(4134);
inline constexpr RuleMessage kSegmentProfilesMissing =
    rule<kProfileText, kExpected, kRepresentation>(2026);
inline constexpr RuleMessage kSegmentProfilesValue =
    rule<kProfileText, kRepresentation, kExpected>(2027);
inline constexpr RuleMessage kCicpMissing = rule<kProfileText, kScheme, kExpected>(4139);
inline constexpr RuleMessage kCicpValue = rule<kProfileText, kScheme, kExpected>(4140);
inline constexpr RuleMessage kCicpInRepresentation = rule<kProfileText, kScheme>(4141);

inline constexpr ManifestRule kVideoRangeMissing{{},
                                                 rule<kProfile, kCompatibleId, kStreamIndex>(4160),
                                                 rule<kProfile, kCompatibleId, kStreamIndex>(4161)};
inline constexpr ManifestRule kVideoRangeValue{
    {},
    rule<kProfile, kCompatibleId, kExpected, kStreamIndex>(4162),
    rule<kProfile, kCompatibleId, kExpected, kStreamIndex>(4163)};

// The supplemental codec has its own message where it is missing in a Representation only with
// profiles that always have one.
inline constexpr ManifestRule kSupplementalMissing{
    rule<kProfile, kExpected, kRepresentation>(4135),
    rule<kProfile, kCompatibleId, kStreamIndex>(4164),
    rule<kProfile, kCompatibleId, kStreamIndex>(4165)};
inline constexpr ManifestRule kSupplementalMissingInPlaylist{
    {}, kSupplementalMissing.variant, kSupplementalMissing.iframe};
inline constexpr ManifestRule kSupplementalValue{
    rule<kProfile, kRepresentation, kExpected>(4136),
    rule<kProfile, kCompatibleId, kExpected, kStreamIndex>(4166),
    rule<kProfile, kCompatibleId, kExpected, kStreamIndex>(4167)};
inline constexpr RuleMessage kSupplementalProfilesMissing =
    rule<kProfileText, kExpected, kRepresentation>(4137);
inline constexpr RuleMessage kSupplementalProfilesValue =
    rule<kProfileText, kRepresentation, kExpected>(4138);

// The base layer's codec in the manifest. The playlist's form is that of H.265 also for H.264: the
// catalogue has no other.
inline constexpr RuleMessage kBaseCodecIframe = rule<kProfile, kStreamIndex, kExpected>(4159);
inline constexpr ManifestRule kHevcBaseCodec{rule<kExpected, kRepresentation, kCodecs>(4129),
                                             rule<kExpected, kStreamIndex>(4157), kBaseCodecIframe};
inline constexpr ManifestRule kAvcBaseCodec{rule<kExpected, kRepresentation, kCodecs>(4128),
                                            rule<kExpected, kStreamIndex>(4157), kBaseCodecIframe};
inline constexpr ManifestRule kAv1BaseCodec{rule<kExpected, kRepresentation, kCodecs>(4131),
                                            rule<kExpected, kStreamIndex>(4158), kBaseCodecIframe};

// --- The profiles --------------------------------------------------------------------------------

struct ProfileRules {
    std::uint32_t profile = 0;
    // Prefix of the enhancement codec; without one that of the sample entry, of these kinds only.
    std::string_view codec_prefix{};
    std::array<std::uint32_t, 2> kinds{};
    std::uint32_t most_codecs = 2;
    ManifestRule too_many_codecs{};
    std::uint32_t entries = 0;  // bits of box_flags
    RuleMessage wrong_entry{};
    FlagRules flags{};
    std::span<const CompatibleIdRow> compatible_ids{};
    RuleMessage md_compression{};  // must be 0
    std::span<const ColourRow> colours{};
    ColourMessages sps_colour{};  // of the sample entry's parameter sets
    ManifestRule base_codec{};
    bool is_compatible = false;                // has a base layer that the manifest tells of
    std::uint32_t ids_without_base_layer = 0;  // all the same (bit n for id n)
    bool asks_for_brand = false;
    bool tells_dash_content = false;  // only some base layers, and their segment profiles
    ManifestRule supplemental_missing{};
    RuleMessage supplemental_profiles_missing{};
};

inline constexpr ProfileRules kProfile4{
    .profile = 4, .kinds = {kPxPxhe, kPxPxh1}, .too_many_codecs = kMoreThanTwoCodecs};

inline constexpr ProfileRules kProfile5{.profile = 5,
                                        .kinds = {kPxPxhe, kPxPxh1},
                                        .most_codecs = 1,
                                        .too_many_codecs = kMoreThanOneCodec,
                                        .entries = kBoxPxhe | kBoxPxh1,
                                        .wrong_entry = rule<>(4230),
                                        .flags = kIncompatibleFlags,
                                        .compatible_ids = kProfile5Ids,
                                        .md_compression = rule<>(4229)};

inline constexpr ProfileRules kProfile8{
    .profile = 8,
    .kinds = {kPxPxhe, kPxPxh1},
    .too_many_codecs = kMoreThanTwoCodecs,
    .entries = kBoxHvc1 | kBoxHev1,
    .wrong_entry = rule<>(4212),
    .flags = kCompatibleFlags,
    .compatible_ids = kProfile8Ids,
    .colours = kProfile8Colours,
    .sps_colour = kEntrySpsColour,
    .base_codec = kHevcBaseCodec,
    .is_compatible = true,
    .asks_for_brand = true,
    .tells_dash_content = true,
    .supplemental_missing = kSupplementalMissing,
    .supplemental_profiles_missing = kSupplementalProfilesMissing};

inline constexpr ProfileRules kProfile9{
    .profile = 9,
    .kinds = {kPxPxav, kPxPxa1},
    .too_many_codecs = kMoreThanTwoCodecs,
    .entries = kBoxAvc1 | kBoxAvc3,
    .wrong_entry = rule<>(4214),
    .flags = kCompatibleFlags,
    .compatible_ids = kProfile9Ids,
    .base_codec = kAvcBaseCodec,
    .is_compatible = true,
    .asks_for_brand = true,
    .supplemental_missing = kSupplementalMissing,
    .supplemental_profiles_missing = kSupplementalProfilesMissing};

inline constexpr ProfileRules kProfile10{.profile = 10,
                                         .codec_prefix = "pav1",
                                         .too_many_codecs = kMoreThanTwoCodecs,
                                         .entries = kBoxAv01 | kBoxPav1,
                                         .wrong_entry = rule<>(4219),
                                         .flags = kCompatibleFlags,
                                         .compatible_ids = kProfile10Ids,
                                         .colours = kProfile10Colours,
                                         .base_codec = kAv1BaseCodec,
                                         .is_compatible = true,
                                         .ids_without_base_layer = ids({0}),
                                         .supplemental_missing = kSupplementalMissingInPlaylist};

// Profile 20, the stereo profile.
inline constexpr std::int32_t kStereoPlaylistVersion = 12;
inline constexpr RuleMessage kStereoPlaylistVersionLow = rule<kActualNumber>(4247);
inline constexpr std::string_view kStereoLayout = "CH-STEREO";
inline constexpr ManifestRule kLayoutMissing{{},
                                             rule<kProfile, kCompatibleId, kStreamIndex>(4248),
                                             rule<kProfile, kCompatibleId, kStreamIndex>(4249)};
inline constexpr ManifestRule kLayoutValue{
    {},
    rule<kProfile, kCompatibleId, kExpected, kStreamIndex>(4250),
    rule<kProfile, kCompatibleId, kExpected, kStreamIndex>(4251)};

// Profiles 32 and 34 know one base layer, of id 3; 2 is to come.
struct NewerProfileRules {
    std::uint32_t entry;
    RuleMessage wrong_entry;
};

inline constexpr NewerProfileRules kProfile32{kBoxPavc, rule<>(4232)};
inline constexpr NewerProfileRules kProfile34{kBoxPxh8, rule<>(4233)};
inline constexpr std::uint32_t kNewerHighestLevel = 9;
inline constexpr RuleMessage kNewerIdToCome = rule<kProfile, kCompatibleId>(2031);
inline constexpr RuleMessage kNewerLevel = rule<kProfile, kCompatibleId, kLevel>(2032);
inline constexpr RuleMessage kNewerId = rule<kProfile>(4231);

}  // namespace mediasplit::prisma
