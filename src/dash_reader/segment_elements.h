// The elements that tell where segments are (ISO/IEC 23009-1 5.3.9), and the initialization
// segment.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "base/xml_tree.h"
#include "src/dash_reader/dash_info.h"
#include "src/log/loglist.h"
#include "src/log/status.h"

namespace mediasplit {

enum class SegmentElementType : std::uint32_t {
    kNone = 0,
    kTemplate = 1,
    kBase = 2,
    kList = 3,
};
inline constexpr std::size_t kSegmentElementTypes = 4;

// One addressing element, and what it says of the initialization segment. The texts are the tree's.
struct SegmentElement {
    const Ezxml* node = nullptr;
    bool has_initialization = false;  // the child or, of a template, the attribute
    const char* url = nullptr;        // "sourceURL" or "initialization"
    const char* range = nullptr;
};

// The addressing elements of one level, by type.
using SegmentLevel = std::array<SegmentElement, kSegmentElementTypes>;
SegmentLevel read_segment_level(const Ezxml* level);

// The levels from which a Representation takes its addressing.
struct SegmentLevels {
    const SegmentLevel& representation;
    const SegmentLevel& adaptation_set;
    const SegmentLevel& period;
};

// Which kind of addressing applies: a template at any of the levels, else a SegmentBase at any,
// else a SegmentList at any. A null node raises 3006.
SegmentElementType get_segment_element_type(const Ezxml* representation,
                                            const Ezxml* adaptation_set, const Ezxml* period,
                                            Loglist* loglist);
SegmentElementType segment_element_type(const SegmentLevels& levels);

// Address and byte range of the initialization segment; unset if the manifest names none. The
// records give the base URLs, and the id and the bandwidth for a template.
Status get_init_segment(const SegmentLevels& levels, const Ezxml* representation_node,
                        const DashRepresentationInfo& representation,
                        const DashAdaptationSetInfo& adaptation_set, const DashPeriodInfo& period,
                        std::optional<std::string>& url, std::optional<std::string>& range,
                        Loglist* loglist);

}  // namespace mediasplit
