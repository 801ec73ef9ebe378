#include "src/dash_reader/inherited.h"

#include <algorithm>
#include <iterator>

#include "src/dash_reader/property_schemes.h"

namespace mediasplit {
namespace {

using Set = DashAdaptationSetInfo;
using Representation = DashRepresentationInfo;

template <typename Value>
struct InheritedField {
    std::string_view name;
    Value Representation::*own;
    Value Set::*inherited;
};

using Text = std::optional<std::string>;

constexpr InheritedField<Text> kTexts[] = {
    {"mimeType", &Representation::mimeType, &Set::mimeType},
    {"contentType", &Representation::contentType, &Set::contentType},
    {"codecs", &Representation::codecs, &Set::codecs},
    {"startWithSAP", &Representation::startWithSAP, &Set::startWithSAP},
    {"subsegmentStartsWithSAP", &Representation::subsegmentStartsWithSAP,
     &Set::subsegmentStartsWithSAP},
    {"subsegmentAlignment", &Representation::subsegmentAlignment, &Set::subsegmentAlignment},
    {"audioSamplingRate", &Representation::audioSamplingRate, &Set::audioSamplingRate},
    {"sar", &Representation::sar, &Set::sar},
    {"frameRate", &Representation::frameRate, &Set::frameRate},
    {"kid", &Representation::default_kid, &Set::default_kid},
    {"scte214:supplementalCodecs", &Representation::supplementalCodecs, &Set::supplementalCodecs},
    {"scte214:supplementalProfiles", &Representation::supplementalProfiles,
     &Set::supplementalProfiles},
    {"segmentProfiles", &Representation::segmentProfiles, &Set::segmentProfiles},
};

constexpr InheritedField<std::uint32_t> kNumbers[] = {
    {"width", &Representation::width, &Set::width},
    {"height", &Representation::height, &Set::height},
};

struct DescriptorRow {
    std::string_view name;
    DashDescriptorText Representation::*own;
    DashDescriptorText Set::*inherited;
    std::string_view element;
    std::string_view scheme;  // empty: the element needs none to be told
};

constexpr std::string_view kSupplemental = "SupplementalProperty";
constexpr std::string_view kEssential = "EssentialProperty";

constexpr DescriptorRow kDescriptors[] = {
    {"AudioChannelConfiguration", &Representation::audio_channel_configuration,
     &Set::audio_channel_configuration, "AudioChannelConfiguration", ""},
    {"OrvelAudioPlusExtensionType", &Representation::ec3_extension_type, &Set::ec3_extension_type,
     kSupplemental, kExtensionTypeScheme},
    {"ComplexityIndexTypeA", &Representation::ec3_complexity_index, &Set::ec3_complexity_index,
     kSupplemental, kComplexityIndexScheme},
    {"IMSVirtualized", &Representation::virtualized_content, &Set::virtualized_content,
     kSupplemental, kVirtualizedContentScheme},
    {"DashPreselection", &Representation::preselection, &Set::preselection, kEssential,
     kPreselectionScheme},
    {"MatrixCoefficients", &Representation::matrix_coefficients, &Set::matrix_coefficients,
     kEssential, kMatrixCoefficientsScheme},
    {"ColourPrimaries", &Representation::colour_primaries, &Set::colour_primaries, kEssential,
     kColourPrimariesScheme},
    {"TransferCharacteristics", &Representation::transfer_characteristics,
     &Set::transfer_characteristics, kEssential, kTransferCharacteristicsScheme},
};

template <typename Row, std::size_t kCount>
const Row* find_row(const Row (&rows)[kCount], std::string_view name) {
    const auto* const found = std::find_if(std::begin(rows), std::end(rows),
                                           [name](const Row& row) { return row.name == name; });
    return found == std::end(rows) ? nullptr : found;
}

void tell_holder(bool is_own, const Representation* representation, const Set* set,
                 std::string* ui_id) {
    if (ui_id == nullptr) {
        return;
    }
    if (is_own) {
        *ui_id = representation->ui_id;
    } else {
        *ui_id = set == nullptr ? std::string{} : set->ui_id;
    }
}

std::string path_of(const DescriptorRow& row) {
    std::string path = ">";
    path += row.element;
    if (!row.scheme.empty()) {
        path += "[schemeIdUri=";
        path += row.scheme;
        path += "]";
    }
    return path;
}

}  // namespace

const DashAdaptationSetInfo* adaptation_set_of(const DashPeriodInfo& period,
                                               const DashRepresentationInfo& representation) {
    const std::size_t index = representation.adaptation_set_index;
    return index < period.adaptation_sets.size() ? &period.adaptation_sets[index] : nullptr;
}

std::optional<std::string_view> get_dash_rep_attr_str(const DashRepresentationInfo* representation,
                                                      const DashAdaptationSetInfo* adaptation_set,
                                                      std::string_view name, std::string* ui_id) {
    const auto* const row = find_row(kTexts, name);
    if (row == nullptr) {
        return std::nullopt;
    }
    const Text* const own = representation == nullptr ? nullptr : &(representation->*row->own);
    const bool is_set = own != nullptr && own->has_value();
    tell_holder(is_set && !(*own)->empty(), representation, adaptation_set, ui_id);
    if (is_set) {
        return *own;
    }
    return adaptation_set == nullptr ? std::optional<std::string_view>{}
                                     : adaptation_set->*row->inherited;
}

std::uint32_t get_dash_rep_attr_int(const DashRepresentationInfo* representation,
                                    const DashAdaptationSetInfo* adaptation_set,
                                    std::string_view name, std::string* ui_id) {
    const auto* const row = find_row(kNumbers, name);
    if (row == nullptr) {
        return 0;
    }
    const std::uint32_t own = representation == nullptr ? 0 : representation->*row->own;
    tell_holder(own != 0, representation, adaptation_set, ui_id);
    if (own != 0) {
        return own;
    }
    return adaptation_set == nullptr ? 0 : adaptation_set->*row->inherited;
}

DashDescriptorText get_dash_rep_attr_descriptor(const DashRepresentationInfo* representation,
                                                const DashAdaptationSetInfo* adaptation_set,
                                                std::string_view name, std::string* path) {
    const DescriptorRow* const row = find_row(kDescriptors, name);
    if (row == nullptr) {
        return {};
    }
    const bool is_own =
        representation != nullptr && (representation->*row->own).scheme_id_uri.has_value();
    if (path != nullptr) {
        tell_holder(is_own, representation, adaptation_set, path);
        const std::string tail = path_of(*row);
        if (path->size() + tail.size() <= kLongestDescriptorPath) {
            *path += tail;
        } else {
            path->clear();
        }
    }
    if (is_own) {
        return representation->*row->own;
    }
    return adaptation_set == nullptr ? DashDescriptorText{} : adaptation_set->*row->inherited;
}

}  // namespace mediasplit
