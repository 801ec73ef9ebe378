// Schemes of SupplementalProperty and EssentialProperty elements that have fields of their own.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/xml_tree.h"
#include "src/dash_reader/dash_info.h"
#include "src/log/catalogue_row.h"

namespace mediasplit {

inline constexpr const char* kExtensionTypeScheme =
    "tag:" MEDIASPLIT_TAG_AUTHORITY ",2018:dash:EC3_ExtensionType:2018";
inline constexpr const char* kComplexityIndexScheme =
    "tag:" MEDIASPLIT_TAG_AUTHORITY ",2018:dash:EC3_ExtensionComplexityIndex:2018";
inline constexpr const char* kVirtualizedContentScheme =
    "tag:" MEDIASPLIT_TAG_AUTHORITY ",2016:dash:virtualized_content:2016";
inline constexpr const char* kPreselectionScheme = "urn:mpeg:dash:preselection:2016";
inline constexpr const char* kMatrixCoefficientsScheme = "urn:mpeg:mpegB:cicp:MatrixCoefficients";
inline constexpr const char* kColourPrimariesScheme = "urn:mpeg:mpegB:cicp:ColourPrimaries";
inline constexpr const char* kTransferCharacteristicsScheme =
    "urn:mpeg:mpegB:cicp:TransferCharacteristics";

// Fills the fields of the schemes from the children of `node`, and calls `duplicated(scheme,
// is_vendor)` for each element whose scheme is held already. The colour schemes count as
// SupplementalProperty only if `colour_may_be_supplemental`.
template <typename Record, typename Duplicated>
void read_property_schemes(const Ezxml* node, bool colour_may_be_supplemental, Record& record,
                           const Duplicated& duplicated) {
    struct Row {
        std::string_view scheme;
        DashDescriptorText Record::*field;
        bool is_vendor;
        bool supplemental;
        bool essential;
    };
    const bool colour = colour_may_be_supplemental;
    const Row rows[] = {
        {kExtensionTypeScheme, &Record::ec3_extension_type, true, true, false},
        {kComplexityIndexScheme, &Record::ec3_complexity_index, true, true, false},
        {kVirtualizedContentScheme, &Record::virtualized_content, true, true, false},
        {kPreselectionScheme, &Record::preselection, false, false, true},
        {kMatrixCoefficientsScheme, &Record::matrix_coefficients, false, colour, true},
        {kColourPrimariesScheme, &Record::colour_primaries, false, colour, true},
        {kTransferCharacteristicsScheme, &Record::transfer_characteristics, false, colour, true},
    };
    const auto take = [&](const Ezxml* property, bool Row::*wanted) {
        const char* const scheme = ezxml_attr(property, "schemeIdUri");
        for (const Row& row : rows) {
            if (scheme == nullptr || !(row.*wanted) || row.scheme != scheme) {
                continue;
            }
            DashDescriptorText& held = record.*row.field;
            if (held.scheme_id_uri) {
                duplicated(row.scheme, row.is_vendor);
                continue;
            }
            held.present = true;
            held.scheme_id_uri = scheme;
            const char* const value = ezxml_attr(property, "value");
            held.value = value == nullptr ? std::nullopt : std::optional<std::string>(value);
        }
    };
    for (const Ezxml* child = ezxml_child(node, "SupplementalProperty"); child != nullptr;
         child = child->next) {
        take(child, &Row::supplemental);
    }
    for (const Ezxml* child = ezxml_child(node, "EssentialProperty"); child != nullptr;
         child = child->next) {
        take(child, &Row::essential);
    }
}

}  // namespace mediasplit
