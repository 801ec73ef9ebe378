// Moving attributes and descriptors of an element into a record, by tables of its fields.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/xml_tree.h"
#include "src/dash_reader/dash_info.h"

namespace mediasplit {

inline std::optional<std::string> owned_attribute(const Ezxml* node, std::string_view name) {
    const char* const text = ezxml_attr(node, name);
    return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

inline DashDescriptorText read_descriptor(const Ezxml* node) {
    return {owned_attribute(node, "schemeIdUri"), owned_attribute(node, "value"), node != nullptr};
}

template <typename Record>
struct TextField {
    const char* attribute;
    std::optional<std::string> Record::*field;
};

template <typename Record, std::size_t kCount>
void read_texts(const Ezxml* node, const TextField<Record> (&fields)[kCount], Record& record) {
    for (const TextField<Record>& row : fields) {
        record.*row.field = owned_attribute(node, row.attribute);
    }
}

// Attributes of an AdaptationSet and of its Representations, which inherit them.
inline constexpr TextField<DashCommonInfo> kInheritedTexts[] = {
    {"mimeType", &DashCommonInfo::mimeType},
    {"contentType", &DashCommonInfo::contentType},
    {"codecs", &DashCommonInfo::codecs},
    {"startWithSAP", &DashCommonInfo::startWithSAP},
    {"subsegmentStartsWithSAP", &DashCommonInfo::subsegmentStartsWithSAP},
    {"subsegmentAlignment", &DashCommonInfo::subsegmentAlignment},
    {"scte214:supplementalCodecs", &DashCommonInfo::supplementalCodecs},
    {"scte214:supplementalProfiles", &DashCommonInfo::supplementalProfiles},
    {"segmentProfiles", &DashCommonInfo::segmentProfiles},
    {"audioSamplingRate", &DashCommonInfo::audioSamplingRate},
    {"sar", &DashCommonInfo::sar},
    {"frameRate", &DashCommonInfo::frameRate},
};

template <typename Record>
struct DescriptorField {
    const char* element;
    DashDescriptorText Record::*field;
};

// Each from the first child of its name.
template <typename Record, std::size_t kCount>
void read_descriptors(const Ezxml* node, const DescriptorField<Record> (&fields)[kCount],
                      Record& record) {
    for (const DescriptorField<Record>& row : fields) {
        record.*row.field = read_descriptor(ezxml_child(node, row.element));
    }
}

// Stores the element's identity, cut at `limit` characters.
inline void set_ui_id(Ezxml* node, std::string text, std::size_t limit, std::string& ui_id) {
    text.resize(std::min(text.size(), limit));
    ezxml_set_attr_copy(node, "ui-id", text);
    ui_id = std::move(text);
}

}  // namespace mediasplit
