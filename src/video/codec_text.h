// Codec texts as manifests name them (RFC 6381, ISO/IEC 14496-15 Annex E): building the text that a
// stream's configuration implies, and comparing texts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "src/log/status.h"
#include "src/util/opt_text.h"
#include "src/video/decoder_configs.h"
#include "src/video/parameter_sets.h"

namespace mediasplit {

struct Loglist;

// --- Building. The text replaces what `*out` holds; a null `out` or record fails. ---

/// "avc1.PPCCLL" for `px_kind` 2, "avc3.PPCCLL" for 1, ".PPCCLL" for any other, from the profile,
/// constraint and level bytes of the set.
Status build_avc_codec(std::string* out, std::uint32_t px_kind, const AvcSps* sps);

/// The text for an H.265 stream of sample entry `stream_id` (12 hev1, 13 hvc1). With a VPS in the
/// configuration the values come from there, and each that differs from the configuration raises
/// 4210 with `stream_label`; that doesn't keep the text from being built. Fails on a missing label.
/// Returns the OR of the reports' results.
Status build_hevc_codec(std::string* out, std::uint32_t stream_id, const HevcConfig* config,
                        OptText stream_label, Loglist* loglist);

/// The text for an AV1 stream, with the colour part for a base layer compatibility of 1 or 4. The
/// second argument isn't used.
Status build_av1_codec(std::string* out, std::uint32_t px_kind, const Av1Config* config,
                       const PxConfig* px_config);

// --- Comparing. `a` is the text at hand, `b` the expected one. The same text object matches, two
// missing texts among them; one missing text matches nothing. ---

/// By prefix if `b` is a bare "avc1" or "avc3"; else both in full, the digits ignoring case.
bool avc_codec_match(OptText a, OptText b);

/// By prefix if `b` is a bare "hev1" or "hvc1"; else character by character, with leading zeros and
/// the case ignored in the compatibility and constraint fields and trailing zero fields ignored.
bool hevc_codec_match(OptText a, OptText b);

/// By prefix if `b` is shorter than the full form of 13 characters; else exactly. Longer texts
/// never match.
bool ac4_codec_match(OptText a, OptText b);

/// Compares by what `b` begins with: one of the three above, "mp4a" by prefix, anything else
/// exactly.
bool codec_match(OptText a, OptText b);

/// Whether an element of the comma list matches `codec`. Texts over 127 characters are in no list.
bool codec_is_contained(OptText list, OptText codec);

/// Whether two comma lists hold the same codecs. Texts of different length or with different
/// numbers of commas never match.
bool codecs_match(OptText a, OptText b);

// --- Splitting lists ---

/// Puts the enhancement codecs of a comma list of at most 100 characters into `*out`, joined by
/// commas, and tells whether that is exactly one codec of the 10 characters "pxhe.08.09".
bool splitprsmcodec(OptText list, std::string* out);

/// The same for lists whose codecs may carry a "/brand": the result wants at least 10 characters.
bool splitprsm_supplemental_codec(OptText list, std::string* out);

/// Adds the audio codecs of a comma list of at most 100 characters to `out`, behind commas and
/// without those that stand there already. A codec of neither kind raises 2021, whose result is
/// ORed into `status`. Tells whether a codec of the kind was there.
bool splitcodec_audio(OptText codecs, std::optional<std::string>& out, Status& status,
                      Loglist* loglist);

/// The same for video codecs. The enhancement codecs of AV1 count as both.
bool splitcodec_video(OptText codecs, std::optional<std::string>& out, Status& status,
                      Loglist* loglist);

}  // namespace mediasplit
