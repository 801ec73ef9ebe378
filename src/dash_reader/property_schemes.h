// Schemes of SupplementalProperty and EssentialProperty elements that have fields of their own.
#pragma once

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

}  // namespace mediasplit
