// Rules on one Preselection of AC-4 for broadcast.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "ac4/descriptor_generator/dsi_record.h"
#include "src/dash_reader/dash_info.h"
#include "src/fmp4demuxer/checks/ac4_broadcast.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// Whether there is a text of decimal digits.
[[nodiscard]] bool is_unsigned_number(OptText text);

// The number of the presentation that a Preselection points at, without leading zeros; empty if its
// "tag" isn't a number.
[[nodiscard]] std::string_view ac4_preselection_number(const DashPreselectionInfo& preselection);

// Holds a Preselection against the track of one of its components: where that is its first one,
// against all rules (4357 to 4359, 4367, 4368, 4370, 4371, 4378, 4379, 4381 to 4385, 2046, 2047),
// and in any case against the place of the main component (4360). The presentation is the one that
// it points at, null if there is none; `record` is null without a "dac4" box. The OR of the
// reports.
[[nodiscard]] Status check_ac4_preselection(const Ac4Preselection& preselection,
                                            const DsiRecord* record,
                                            const DsiPresentation* presentation, Loglist* loglist);

// Pairs of a Representation and a Preselection are reported up to this many.
inline constexpr std::uint32_t kMostLevelReports = 100000;

// The compatibility levels that Preselections tell, lowest first.
class PreselectionLevels {
public:
    explicit PreselectionLevels(const Ac4Preselections& preselections);

    // Holds the level of a Representation of their set against them (4369), if `codecs` tells one.
    [[nodiscard]] Status check_representation(const DashRepresentationInfo& representation,
                                              OptText codecs, Loglist* loglist);

private:
    struct Level {
        std::uint32_t mdcompat;
        const DashPreselectionInfo* info;
    };
    std::vector<Level> levels_{};
    std::uint32_t reports_ = 0;
};

}  // namespace mediasplit
