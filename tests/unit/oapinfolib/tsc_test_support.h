#pragma once

#include <string>

#include "oapinfolib/src/tsc.h"

// Rows that a rule set has marked, as text: "74", or "176w" for a warning, with blanks between; and
// whether the any-failure flag agrees.

namespace mediasplit {

inline std::string marked_rows(const ComplianceBlock& block) {
    std::string rows;
    for (std::size_t row = 0; row < kResultRows; ++row) {
        if (block.results[row] == Verdict::kPassed) {
            continue;
        }
        rows += rows.empty() ? "" : " ";
        rows += std::to_string(row);
        rows += block.results[row] == Verdict::kWarning ? "w" : "";
    }
    return rows;
}

}  // namespace mediasplit
