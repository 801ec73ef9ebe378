#include "src/dash_reader/element_readers.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "src/dash_reader/dash_reader.h"
#include "src/dash_reader/element_fields.h"
#include "src/dash_reader/property_schemes.h"
#include "src/log/logging.h"

namespace mediasplit {
namespace {

using Set = DashAdaptationSetInfo;
using Representation = DashRepresentationInfo;
using Preselection = DashPreselectionInfo;

constexpr TextField<Set> kSetTexts[] = {
    {"id", &Set::id},
    {"lang", &Set::lang},
};

constexpr DescriptorField<Set> kSetDescriptors[] = {
    {"Role", &Set::role},
    {"Language", &Set::language},
    {"Accessibility", &Set::accessibility},
    {"AudioChannelConfiguration", &Set::audio_channel_configuration},
};

constexpr TextField<Representation> kRepresentationTexts[] = {
    {"id", &Representation::id},
    {"dependencyId", &Representation::dependencyId},
};

constexpr DescriptorField<Representation> kRepresentationDescriptors[] = {
    {"AudioChannelConfiguration", &Representation::audio_channel_configuration},
};

constexpr TextField<Preselection> kPreselectionTexts[] = {
    {"id", &Preselection::id},
    {"preselectionComponents", &Preselection::preselectionComponents},
    {"tag", &Preselection::tag},
    {"codecs", &Preselection::codecs},
    {"audioSamplingRate", &Preselection::audioSamplingRate},
    {"frameRate", &Preselection::frameRate},
    {"lang", &Preselection::lang},
};

constexpr DescriptorField<Preselection> kPreselectionDescriptors[] = {
    {"Language", &Preselection::language},
    {"Role", &Preselection::role},
    {"AudioChannelConfiguration", &Preselection::audio_channel_configuration},
    {"SupplementalProperty", &Preselection::supplemental_property},
    {"Accessibility", &Preselection::accessibility},
};

constexpr TextField<Preselection> kLabelTexts[] = {
    {"id", &Preselection::label_id},
    {"lang", &Preselection::label_lang},
    {"value", &Preselection::label_value},
};

// Protection schemes of ISO/IEC 23001-7 clause 10.
constexpr std::string_view kProtectionSchemes[] = {"cenc", "cbc1", "cens", "cbcs"};

// Deliberate: only the first ContentProtection is looked at.
std::optional<std::string> default_key_id(const Ezxml* node) {
    const Ezxml* const protection = ezxml_child(node, "ContentProtection");
    const char* const value = ezxml_attr(protection, "value");
    const bool known = value != nullptr &&
                       std::any_of(std::begin(kProtectionSchemes), std::end(kProtectionSchemes),
                                   [value](std::string_view name) { return name == value; });
    return known ? owned_attribute(protection, "cenc:default_KID") : std::nullopt;
}

// Fills the fields of known schemes from the children of `node`, and calls `duplicated(scheme,
// is_vendor)` for each element whose scheme is held already. The colour schemes count as
// SupplementalProperty only if `colour_may_be_supplemental`.
template <typename Duplicated>
void read_property_schemes(const Ezxml* node, bool colour_may_be_supplemental,
                           DashCommonInfo& record, const Duplicated& duplicated) {
    struct Row {
        std::string_view scheme;
        DashDescriptorText DashCommonInfo::*field;
        bool is_vendor;
        bool supplemental;
        bool essential;
    };
    const bool colour = colour_may_be_supplemental;
    const Row rows[] = {
        {kExtensionTypeScheme, &DashCommonInfo::ec3_extension_type, true, true, false},
        {kComplexityIndexScheme, &DashCommonInfo::ec3_complexity_index, true, true, false},
        {kVirtualizedContentScheme, &DashCommonInfo::virtualized_content, true, true, false},
        {kPreselectionScheme, &DashCommonInfo::preselection, false, false, true},
        {kMatrixCoefficientsScheme, &DashCommonInfo::matrix_coefficients, false, colour, true},
        {kColourPrimariesScheme, &DashCommonInfo::colour_primaries, false, colour, true},
        {kTransferCharacteristicsScheme, &DashCommonInfo::transfer_characteristics, false, colour,
         true},
    };
    const auto take_all = [&](const char* element, bool Row::*wanted) {
        for (const Ezxml* property = ezxml_child(node, element); property != nullptr;
             property = property->next) {
            const char* const scheme = ezxml_attr(property, "schemeIdUri");
            for (const Row& row : rows) {
                if (scheme == nullptr || !(row.*wanted) || row.scheme != scheme) {
                    continue;
                }
                DashDescriptorText& held = record.*row.field;
                if (held.scheme_id_uri) {
                    duplicated(row.scheme, row.is_vendor);
                } else {
                    held = read_descriptor(property);
                }
            }
        }
    };
    take_all("SupplementalProperty", &Row::supplemental);
    take_all("EssentialProperty", &Row::essential);
}

Status read_picture_size(const Ezxml* node, DashCommonInfo& record, Loglist* loglist) {
    const Status width = get_attribute_uint32(node, "width", record.width, loglist);
    return width | get_attribute_uint32(node, "height", record.height, loglist);
}

Status require_attribute(const Ezxml* node, const char* name, const std::string& ui_id,
                         Loglist* loglist) {
    return check(ezxml_attr(node, name) != nullptr, loglist, 4090, LogContext{0, ui_id, name}, name,
                 node->name);
}

std::string set_identity(std::int32_t period_index, std::int32_t own_index, const Set& set) {
    const std::string stem = "period" + std::to_string(period_index) + "-as";
    return set.id ? stem + "-id" + *set.id : stem + std::to_string(own_index);
}

std::string representation_identity(const RepresentationPlace& place,
                                    const Representation& representation) {
    const std::string stem = "period" + std::to_string(place.period_index) + "-as" +
                             std::to_string(place.adaptation_set_index) + "-rep";
    return representation.id ? stem + "-id" + *representation.id
                             : stem + std::to_string(place.own_index);
}

}  // namespace

Status get_adaptation_set_info(Ezxml* node, std::int32_t period_index, std::int32_t own_index,
                               DashAdaptationSetInfo& adaptation_set, const DashPeriodInfo& period,
                               Loglist* loglist) {
    read_texts<DashCommonInfo>(node, kInheritedTexts, adaptation_set);
    read_texts(node, kSetTexts, adaptation_set);
    set_ui_id(node, set_identity(period_index, own_index, adaptation_set), kLongestUiId,
              adaptation_set.ui_id);
    const Status status = read_picture_size(node, adaptation_set, loglist);
    if (status != Status::kOk) {
        return status;
    }
    read_descriptors(node, kSetDescriptors, adaptation_set);
    const LogContext context{0, adaptation_set.ui_id, "schemeIdUri"};
    note_evaluated(2005);
    note_evaluated(2007);
    read_property_schemes(node, true, adaptation_set, [&](std::string_view scheme, bool is_vendor) {
        // Warnings: they return nothing.
        if (is_vendor) {
            (void)Logging_err_type_check(loglist, 2005, context, scheme, own_index);
        } else {
            (void)Logging_err_type_check(loglist, 2007, context, scheme, own_index);
        }
    });
    adaptation_set.default_kid = default_key_id(node);
    for (const Ezxml* child = ezxml_child(node, "Representation"); child != nullptr;
         child = child->next) {
        ++adaptation_set.representation_count;
    }
    adaptation_set.base_urls = get_cur_level_baseURLs(period.base_urls, node);
    return Status::kOk;
}

Status get_representation_info(Ezxml* node, const RepresentationPlace& place,
                               DashRepresentationInfo& representation,
                               const DashAdaptationSetInfo& adaptation_set,
                               const DashPeriodInfo& period, const SegmentLevels& levels,
                               Loglist* loglist) {
    read_texts<DashCommonInfo>(node, kInheritedTexts, representation);
    read_texts(node, kRepresentationTexts, representation);
    set_ui_id(node, representation_identity(place, representation), kLongestRepresentationUiId,
              representation.ui_id);
    representation.adaptation_set_index = place.kept_index;
    Status status = require_attribute(node, "id", representation.ui_id, loglist);
    status |= require_attribute(node, "bandwidth", representation.ui_id, loglist);
    status |= get_attribute_uint32(node, "bandwidth", representation.bandwidth, loglist);
    status |= read_picture_size(node, representation, loglist);
    if (status != Status::kOk) {
        return status;
    }
    read_descriptors(node, kRepresentationDescriptors, representation);
    const LogContext context{0, representation.ui_id, "schemeIdUri"};
    note_evaluated(2006);
    note_evaluated(2008);
    read_property_schemes(
        node, false, representation, [&](std::string_view scheme, bool is_vendor) {
            if (is_vendor) {
                (void)Logging_err_type_check(loglist, 2006, context, scheme, representation.id);
            } else {
                (void)Logging_err_type_check(loglist, 2008, context, scheme, representation.id);
            }
        });
    representation.default_kid = default_key_id(node);
    representation.base_urls = get_cur_level_baseURLs(adaptation_set.base_urls, node);
    return get_init_segment(levels, node, representation, adaptation_set, period,
                            representation.init_segment_url, representation.init_range, loglist);
}

void get_preselection_info(Ezxml* node, std::int32_t period_index,
                           DashPreselectionInfo& preselection) {
    read_texts(node, kPreselectionTexts, preselection);
    read_descriptors(node, kPreselectionDescriptors, preselection);
    read_texts(ezxml_child(node, "Label"), kLabelTexts, preselection);
    const Ezxml* const accessibility = ezxml_child(node, "Accessibility");
    if (accessibility != nullptr) {
        preselection.accessibility_2 = read_descriptor(accessibility->next);
    }
    if (!preselection.preselectionComponents) {
        return;
    }
    std::string identity = "period" + std::to_string(period_index);
    if (preselection.id) {
        identity += "-id" + *preselection.id;
    }
    identity += "-preselectionComponents" + *preselection.preselectionComponents;
    set_ui_id(node, std::move(identity), kLongestUiId, preselection.ui_id);
}

}  // namespace mediasplit
