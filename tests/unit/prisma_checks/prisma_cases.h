// For each message of the rules on enhancement streams: a stream that the rule accepts, and what
// has to be changed in it, in one place if possible, for the rule to be broken.
#pragma once

#include <functional>
#include <vector>

#include "tests/unit/prisma_checks/prisma_scenario.h"

namespace mediasplit {

struct PrismaCase {
    int id = 0;
    Scenario accepted{};
    std::function<void(Scenario&)> change{};
    // Whether files can tell it: a stream without CODECS, for one, is never followed.
    bool as_program = true;
    // Whether the accepted stream comes as far as the rule.
    bool accepted_is_evaluated = true;
};

std::vector<PrismaCase> prisma_cases();

// Messages that the rules have, with the modes in which each must have a case.
struct RequiredCases {
    std::vector<std::uint32_t> modes;
    std::vector<int> ids;
};

std::vector<RequiredCases> required_prisma_cases();

inline constexpr std::uint32_t kFile = kInputFile;
inline constexpr std::uint32_t kDash = kInputDash;
inline constexpr std::uint32_t kVariant = kInputHls;
inline constexpr std::uint32_t kIframe = kInputHlsIframe;

}  // namespace mediasplit
