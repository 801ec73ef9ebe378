// What an MPD says (ISO/IEC 23009-1 5.3), as plain records. Texts are attributes as written, unset
// if missing; nothing is inherited between levels here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "src/dash_reader/base_url.h"

namespace mediasplit {

// Longest identity of an element, of a Representation, and with the path of a descriptor.
inline constexpr std::size_t kLongestUiId = 104;
inline constexpr std::size_t kLongestRepresentationUiId = 500;
inline constexpr std::size_t kLongestDescriptorPath = 512;

// A descriptor element (5.8.2).
struct DashDescriptorText {
    std::optional<std::string> scheme_id_uri{};
    std::optional<std::string> value{};
    bool present = false;  // the element is there, whatever it says
};

// What an AdaptationSet and its Representations can both tell (5.3.7).
struct DashCommonInfo {
    std::optional<std::string> id{};
    std::optional<std::string> mimeType{};
    std::optional<std::string> contentType{};
    std::optional<std::string> codecs{};
    std::optional<std::string> startWithSAP{};
    std::optional<std::string> subsegmentStartsWithSAP{};
    std::optional<std::string> subsegmentAlignment{};
    std::optional<std::string> supplementalCodecs{};    // scte214:supplementalCodecs
    std::optional<std::string> supplementalProfiles{};  // scte214:supplementalProfiles
    std::optional<std::string> segmentProfiles{};
    std::optional<std::string> audioSamplingRate{};
    DashDescriptorText audio_channel_configuration{};
    DashDescriptorText ec3_extension_type{};
    DashDescriptorText ec3_complexity_index{};
    DashDescriptorText virtualized_content{};
    DashDescriptorText preselection{};
    DashDescriptorText matrix_coefficients{};
    DashDescriptorText colour_primaries{};
    DashDescriptorText transfer_characteristics{};
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::optional<std::string> sar{};
    std::optional<std::string> frameRate{};
    std::optional<std::string> default_kid{};
    BaseUrls base_urls{};
    std::string ui_id{};
};

struct DashRepresentationInfo : DashCommonInfo {
    std::optional<std::string> init_segment_url{};  // resolved
    std::optional<std::string> init_range{};
    std::optional<std::string> dependencyId{};
    std::uint32_t bandwidth = 0;
    std::uint32_t adaptation_set_index = 0;  // in the Period's `adaptation_sets`
    // Later Representations of the Period with the same initialization segment.
    std::vector<DashRepresentationInfo> shared_init_representations{};
    std::uint32_t duplicate_id = 0;  // 1: an earlier one has the same id; this one isn't played
};

struct DashAdaptationSetInfo : DashCommonInfo {
    std::optional<std::string> lang{};
    DashDescriptorText role{};
    DashDescriptorText language{};
    DashDescriptorText accessibility{};
    std::uint32_t representation_count = 0;  // Representation children, kept or not
};

struct DashPreselectionInfo {
    std::optional<std::string> id{};
    std::optional<std::string> preselectionComponents{};
    std::optional<std::string> tag{};
    std::optional<std::string> codecs{};
    std::optional<std::string> audioSamplingRate{};
    std::optional<std::string> frameRate{};
    std::optional<std::string> lang{};
    DashDescriptorText language{};
    DashDescriptorText role{};
    std::optional<std::string> label_id{};
    std::optional<std::string> label_lang{};
    std::optional<std::string> label_value{};
    DashDescriptorText audio_channel_configuration{};
    DashDescriptorText supplemental_property{};  // the first, whatever its scheme
    DashDescriptorText accessibility{};
    DashDescriptorText accessibility_2{};
    std::string ui_id{};  // empty without preselectionComponents
};

struct DashPeriodInfo {
    std::int32_t index = 0;  // among the Periods of the MPD
    std::optional<std::string> id{};
    BaseUrls base_urls{};
    std::vector<DashAdaptationSetInfo> adaptation_sets{};   // those that kept a Representation
    std::vector<DashRepresentationInfo> representations{};  // all kept, in document order
    std::vector<DashPreselectionInfo> preselections{};
    std::string ui_id{};
};

struct DashInfo {
    std::optional<std::string> url{};   // of the manifest, as the caller gave it
    std::optional<std::string> type{};  // "static" if absent
    std::optional<std::string> availabilityStartTime{};
    std::optional<std::string> availabilityEndTime{};
    std::optional<std::string> publishTime{};
    std::optional<std::string> minimumUpdatePeriod{};
    std::optional<std::string> profiles{};
    std::optional<std::string> mediaPresentationDuration{};
    std::optional<std::string> utc_timing_value{};  // of the "direct" scheme only
    std::optional<std::string> xmlns_scte214{};
    BaseUrls base_urls{};
    std::vector<DashPeriodInfo> periods{};
    std::string ui_id{};
};

}  // namespace mediasplit
