#include "src/dash_reader/inherited.h"

#include <algorithm>
#include <iterator>

#include "src/dash_reader/element_fields.h"
#include "src/dash_reader/property_schemes.h"

namespace mediasplit {
namespace {

using Set = DashAdaptationSetInfo;
using Representation = DashRepresentationInfo;

struct NumberRow {
    std::string_view name;
    std::uint32_t DashCommonInfo::*field;
};

constexpr NumberRow kNumbers[] = {
    {"width", &DashCommonInfo::width},
    {"height", &DashCommonInfo::height},
};

struct DescriptorRow {
    std::string_view name;
    DashDescriptorText DashCommonInfo::*field;
    std::string_view element;
    std::string_view scheme;  // empty: the element needs none to be told
};

constexpr std::string_view kSupplemental = "SupplementalProperty";
constexpr std::string_view kEssential = "EssentialProperty";

constexpr DescriptorRow kDescriptors[] = {
    {"AudioChannelConfiguration", &DashCommonInfo::audio_channel_configuration,
     "AudioChannelConfiguration", ""},
    {"OrvelAudioPlusExtensionType", &DashCommonInfo::ec3_extension_type, kSupplemental,
     kExtensionTypeScheme},
    {"ComplexityIndexTypeA", &DashCommonInfo::ec3_complexity_index, kSupplemental,
     kComplexityIndexScheme},
    {"IMSVirtualized", &DashCommonInfo::virtualized_content, kSupplemental,
     kVirtualizedContentScheme},
    {"DashPreselection", &DashCommonInfo::preselection, kEssential, kPreselectionScheme},
    {"MatrixCoefficients", &DashCommonInfo::matrix_coefficients, kEssential,
     kMatrixCoefficientsScheme},
    {"ColourPrimaries", &DashCommonInfo::colour_primaries, kEssential, kColourPrimariesScheme},
    {"TransferCharacteristics", &DashCommonInfo::transfer_characteristics, kEssential,
     kTransferCharacteristicsScheme},
};

template <typename Row, std::size_t kCount>
const Row* find_row(const Row (&rows)[kCount], std::string_view name) {
    const auto* const found = std::find_if(std::begin(rows), std::end(rows),
                                           [name](const Row& row) { return row.name == name; });
    return found == std::end(rows) ? nullptr : found;
}

// The text of this name; null for a name without a field.
std::optional<std::string> DashCommonInfo::*text_field(std::string_view name) {
    for (const auto& row : kInheritedTexts) {
        if (name == row.attribute) {
            return row.field;
        }
    }
    return name == "kid" ? &DashCommonInfo::default_kid : nullptr;
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
    const auto field = text_field(name);
    if (field == nullptr) {
        return std::nullopt;
    }
    const bool is_set = representation != nullptr && (representation->*field).has_value();
    const bool is_own = is_set && !(representation->*field)->empty();
    tell_holder(is_own, representation, adaptation_set, ui_id);
    if (is_set) {
        return representation->*field;
    }
    return adaptation_set == nullptr ? std::optional<std::string_view>{} : adaptation_set->*field;
}

std::uint32_t get_dash_rep_attr_int(const DashRepresentationInfo* representation,
                                    const DashAdaptationSetInfo* adaptation_set,
                                    std::string_view name, std::string* ui_id) {
    const auto* const row = find_row(kNumbers, name);
    if (row == nullptr) {
        return 0;
    }
    const std::uint32_t own = representation == nullptr ? 0 : representation->*row->field;
    tell_holder(own != 0, representation, adaptation_set, ui_id);
    if (own != 0) {
        return own;
    }
    return adaptation_set == nullptr ? 0 : adaptation_set->*row->field;
}

DashDescriptorText get_dash_rep_attr_descriptor(const DashRepresentationInfo* representation,
                                                const DashAdaptationSetInfo* adaptation_set,
                                                std::string_view name, std::string* path) {
    const DescriptorRow* const row = find_row(kDescriptors, name);
    if (row == nullptr) {
        return {};
    }
    const bool is_own =
        representation != nullptr && (representation->*row->field).scheme_id_uri.has_value();
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
        return representation->*row->field;
    }
    return adaptation_set == nullptr ? DashDescriptorText{} : adaptation_set->*row->field;
}

}  // namespace mediasplit
