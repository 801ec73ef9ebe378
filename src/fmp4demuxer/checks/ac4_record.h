// What the rules on AC-4 tracks ask of decoder specific information.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "ac4/descriptor_generator/dsi_record.h"
#include "src/ac4analyze_impl/dsi_values.h"

namespace mediasplit {

inline constexpr std::uint32_t kAc4LegacyPresentation = 1;
inline constexpr std::uint32_t kAc4ImsPresentation = 2;  // immersive stereo

// The lowest mdcompat where no presentation counts.
inline constexpr std::uint32_t kAc4NoCompatibility = 0xFFFFFFFF;

// The number that presentations of one group share and by which a manifest points at them: the
// extended id, else the id; none if the box tells neither.
[[nodiscard]] std::optional<std::uint32_t> ac4_presentation_number(
    const DsiPresentation& presentation);

// Whether there is something to hear in a presentation that the box describes.
[[nodiscard]] bool ac4_has_audio(const DsiPresentation& presentation);

// Whether all of a presentation is in the track.
[[nodiscard]] bool ac4_is_intact(const DsiPresentation& presentation);

// Base sampling frequency in Hz (ETSI TS 103 190-1 4.3.3.2.5), none if the box doesn't tell.
[[nodiscard]] std::optional<std::uint32_t> ac4_base_rate(const DsiRecord& record);

// Sampling frequency of a presentation in Hz, the highest of its substreams; none as above.
[[nodiscard]] std::optional<std::uint32_t> ac4_sampling_rate(const DsiRecord& record,
                                                             const DsiPresentation& presentation);

// The language of the first substream group that tells one; empty if none does.
[[nodiscard]] std::string_view ac4_language(const DsiPresentation& presentation);

// Whether there is content for the visually impaired.
[[nodiscard]] bool ac4_is_for_visually_impaired(const DsiPresentation& presentation);

// What the box says of a track's share of a presentation: it has the main component, it has only
// others, or that isn't told.
enum class Ac4MainComponent : std::uint8_t { kHere, kElsewhere, kNotTold };
[[nodiscard]] Ac4MainComponent ac4_main_component(const DsiPresentation& presentation);

}  // namespace mediasplit
