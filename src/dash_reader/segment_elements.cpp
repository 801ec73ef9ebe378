#include "src/dash_reader/segment_elements.h"

#include <string_view>

#include "src/dash_reader/segment_template.h"
#include "src/dash_reader/source_name.h"
#include "src/log/logging.h"

namespace mediasplit {
namespace {

// A base URL of this length or more isn't used.
constexpr std::size_t kBaseUrlLimit = 1024;
// Longest byte range text that is kept.
constexpr std::size_t kLongestRange = 512;

// In the order of SegmentElementType.
constexpr std::string_view kElementNames[kSegmentElementTypes] = {"", "SegmentTemplate",
                                                                  "SegmentBase", "SegmentList"};

SegmentElement read_element(const Ezxml* node, SegmentElementType type) {
    SegmentElement element;
    element.node = node;
    if (type == SegmentElementType::kTemplate) {
        element.url = ezxml_attr(node, "initialization");
        element.has_initialization = element.url != nullptr;
        return element;
    }
    const Ezxml* const initialization = ezxml_child(node, "Initialization");
    element.has_initialization = initialization != nullptr;
    element.url = ezxml_attr(initialization, "sourceURL");
    element.range = ezxml_attr(initialization, "range");
    return element;
}

struct FoundElement {
    const SegmentElement* element = nullptr;
    OptText base{};
};

}  // namespace

SegmentLevel read_segment_level(const Ezxml* level) {
    SegmentLevel result;
    for (std::size_t i = 1; i < kSegmentElementTypes; ++i) {
        if (const Ezxml* const node = ezxml_child(level, kElementNames[i]); node != nullptr) {
            result[i] = read_element(node, static_cast<SegmentElementType>(i));
        }
    }
    return result;
}

SegmentElementType segment_element_type(const SegmentLevels& levels) {
    for (std::size_t i = 1; i < kSegmentElementTypes; ++i) {
        if (levels.representation[i].node != nullptr || levels.adaptation_set[i].node != nullptr ||
            levels.period[i].node != nullptr) {
            return static_cast<SegmentElementType>(i);
        }
    }
    return SegmentElementType::kNone;
}

SegmentElementType get_segment_element_type(const Ezxml* representation,
                                            const Ezxml* adaptation_set, const Ezxml* period,
                                            Loglist* loglist) {
    if (representation == nullptr || adaptation_set == nullptr || period == nullptr) {
        (void)Logging_err_type_check(loglist, 3006, {}, kDashReaderSourceName, 610);
        return SegmentElementType::kNone;
    }
    const SegmentLevel own = read_segment_level(representation);
    const SegmentLevel set = read_segment_level(adaptation_set);
    const SegmentLevel top = read_segment_level(period);
    return segment_element_type({own, set, top});
}

Status get_init_segment(const SegmentLevels& levels, const Ezxml* representation_node,
                        const DashRepresentationInfo& representation,
                        const DashAdaptationSetInfo& adaptation_set, const DashPeriodInfo& period,
                        std::optional<std::string>& url, std::optional<std::string>& range,
                        Loglist* loglist) {
    url.reset();
    range.reset();
    const SegmentElementType type = segment_element_type(levels);
    const auto index = static_cast<std::size_t>(type);
    const FoundElement own{&levels.representation[index], representation.base_urls.first()};
    const FoundElement set{&levels.adaptation_set[index], adaptation_set.base_urls.first()};
    const FoundElement top{&levels.period[index], period.base_urls.first()};
    // Deliberate: a SegmentList of the AdaptationSet has no initialization segment in this lookup.
    const bool skips_set = type == SegmentElementType::kList;
    for (const FoundElement& found : {own, skips_set ? own : set, top}) {
        if (found.element->node == nullptr) {
            continue;
        }
        if (!found.element->has_initialization) {
            return Status::kOk;
        }
        const OptText base = found.base.view().size() < kBaseUrlLimit ? found.base.view() : "";
        std::string address;
        merge_baseURL(base, found.element->url, &address);
        if (type == SegmentElementType::kTemplate) {
            const Status status = substitute_url(address, representation.id,
                                                 ezxml_attr(representation_node, "bandwidth"), {},
                                                 {}, &address, loglist);
            if (status != Status::kOk) {
                return status;
            }
        } else if (found.element->range != nullptr) {
            range = std::string_view(found.element->range).substr(0, kLongestRange);
        }
        url = std::move(address);
        return Status::kOk;
    }
    return Status::kOk;
}

}  // namespace mediasplit
