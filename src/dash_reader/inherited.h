// Attributes that a Representation takes from its AdaptationSet (ISO/IEC 23009-1 5.3.7).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "src/dash_reader/dash_info.h"

namespace mediasplit {

// The AdaptationSet that the Representation stands in, among those that the Period keeps; nullptr
// if it isn't there.
const DashAdaptationSetInfo* adaptation_set_of(const DashPeriodInfo& period,
                                               const DashRepresentationInfo& representation);

// The text attribute `name` of the Representation, else of the AdaptationSet; it lives as long as
// the records. "kid" names the default key id. None for a name without a field. `ui_id`, if given,
// becomes the identity of the element it is from: the AdaptationSet's if the Representation's text
// is missing or empty.
std::optional<std::string_view> get_dash_rep_attr_str(const DashRepresentationInfo* representation,
                                                      const DashAdaptationSetInfo* adaptation_set,
                                                      std::string_view name,
                                                      std::string* ui_id = nullptr);

// The same for "width" and "height", where 0 is missing.
std::uint32_t get_dash_rep_attr_int(const DashRepresentationInfo* representation,
                                    const DashAdaptationSetInfo* adaptation_set,
                                    std::string_view name, std::string* ui_id = nullptr);

// The same for a descriptor: AudioChannelConfiguration, OrvelAudioPlusExtensionType,
// ComplexityIndexTypeA, IMSVirtualized, DashPreselection, MatrixCoefficients, ColourPrimaries,
// TransferCharacteristics. `path`, if given, becomes the identity of the element and the way from
// there to the descriptor, or empty if that has more than 512 characters.
DashDescriptorText get_dash_rep_attr_descriptor(const DashRepresentationInfo* representation,
                                                const DashAdaptationSetInfo* adaptation_set,
                                                std::string_view name, std::string* path = nullptr);

}  // namespace mediasplit
