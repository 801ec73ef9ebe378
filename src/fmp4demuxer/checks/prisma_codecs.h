// Codec texts of enhancement streams in manifests.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "src/fmp4demuxer/checks/prisma_stream.h"
#include "src/log/status.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// The first codec of a comma list that names the enhancement format, the whole list if none does.
// Empty for a missing or empty list and for one of more than 100 characters.
[[nodiscard]] std::string get_main_codec(OptText codecs);

// "pxav", "pxa1", "pxhe", "pxh1" by the kind of sample entry; empty for others.
[[nodiscard]] std::string_view prisma_prefix(std::uint32_t px_kind);

// The enhancement codec of a configuration, such as "pxhe.08.02"; empty without a prefix.
[[nodiscard]] std::string enhancement_codec(std::string_view prefix, const PxConfig& config);
// The same as manifests name it beside a base layer's: bare in a Representation, and with the
// brand of the base layer in a playlist.
[[nodiscard]] std::string supplemental_codec(std::string_view codec, std::string_view brand);

// Whether all enhancement data is in a track of its own, and whether the profile is known at all.
[[nodiscard]] bool prsm_profile_dual_layer(std::uint32_t profile);
[[nodiscard]] bool prsm_profile_supported(std::uint32_t profile);

// Result bits of orvel_prisma_codecs_validation.
inline constexpr std::uint32_t kCodecsMalformed = 1;    // no list, or one with an empty word
inline constexpr std::uint32_t kCodecsWithoutOurs = 2;  // no enhancement codec
inline constexpr std::uint32_t kCodecsMismatch = 4;     // enhancement codecs, none as expected
inline constexpr std::uint32_t kCodecsNoExpected = 8;   // there is no expected codec
// No enhancement codec where another stream would have to name it (profiles 8 and 9).
inline constexpr std::uint32_t kCodecsNeedCompanion = 16;

// Looks for the enhancement codec `expected` in a comma list. `other` becomes the first enhancement
// codec that isn't it. `shared` tells that several streams of the manifest are this one.
[[nodiscard]] std::uint32_t orvel_prisma_codecs_validation(OptText codecs, OptText expected,
                                                           std::string& other, bool shared,
                                                           std::uint32_t profile);

// What is known so far of where the codecs of one stream stand in the manifest: 0, or the mark of
// the group they were found in.
struct CodecMarks {
    std::uint32_t main = 0;
    std::uint32_t compatible = 0;
};

// The codecs that the manifest has to name for a stream that is backward compatible, or that a
// stream that isn't must not name.
struct CodecPair {
    std::string main{};  // prefix
    std::string compatible{};
};

// Takes one codec list of the stream's manifest into account (2024, 2025, 4113, 4114, 4123, 4124).
// `mark` is the group of the list: 1 and the index of the AdaptationSet, or 1 for a playlist.
[[nodiscard]] Status check_one_rep_prsm_codec(const PrismaStream& prisma, std::string_view codecs,
                                              const CodecPair& pair, std::uint32_t mark,
                                              CodecMarks& marks);

// Whether the backward compatible codec stands in the right place (the above, 4115, 4116).
// `base_codec` is the codec of the base layer as the configuration tells it. Profiles without one,
// and streams without a manifest, have nothing to check.
[[nodiscard]] Status orvel_prisma_compatible_codec_validation(const PrismaStream& prisma,
                                                              std::string_view base_codec);

// Whether the variant stream names the codec, by the list that it had before it was merged with
// others. Without such a list one of the merged ones counts as naming it. `index` becomes the
// stream's if it doesn't.
[[nodiscard]] bool hls_codec_all_stream_partial_contained(const ManifestContext& context,
                                                          OptText codec, std::uint32_t& index);

// Whether the manifest names the expected codec as one that goes with the base layer's: in
// scte214:supplementalCodecs, or in SUPPLEMENTAL-CODECS with whatever brand.
[[nodiscard]] bool is_named_as_supplement(const PrismaStream& prisma);

// Whether the manifest names the base layer's codec where it has to: in the list of the
// Representation and those that share its initialization segment; in a playlist, in a list of the
// stream itself or of those merged with it.
[[nodiscard]] bool names_base_codec(const PrismaStream& prisma, std::string_view codec);

}  // namespace mediasplit
