// Each message on enhancement streams, in records and in runs of the whole program: raised where
// its rule is broken, and not where it is kept.
#include <gtest/gtest.h>

#include <set>
#include <utility>

#include "tests/unit/prisma_checks/prisma_cases.h"

namespace mediasplit {
namespace {

std::string name_of(const PrismaCase& row) {
    return std::to_string(row.id) + ", profile " + std::to_string(row.accepted.profile) +
           ", mode " + std::to_string(row.accepted.mode);
}

template <typename Run>
void expect_case(const PrismaCase& row, const Run& run) {
    const ScenarioResult accepted = run(row.accepted);
    EXPECT_FALSE(accepted.raised(row.id)) << name_of(row) << ": " << accepted.text(row.id);
    EXPECT_TRUE(accepted.evaluated.contains(row.id) || !row.accepted_is_evaluated) << name_of(row);
    Scenario changed = row.accepted;
    row.change(changed);
    EXPECT_TRUE(run(changed).raised(row.id)) << name_of(row);
}

TEST(PrismaCases, EachRuleIsKeptAndBroken) {
    for (const PrismaCase& row : prisma_cases()) {
        expect_case(row, [](const Scenario& s) { return run(s); });
    }
}

TEST(PrismaCases, EachRuleIsKeptAndBrokenInWholeRuns) {
    for (const PrismaCase& row : prisma_cases()) {
        if (row.as_program) {
            expect_case(row, run_program_on);
        }
    }
}

TEST(PrismaCases, EachMessageHasACaseInEachKindOfInput) {
    std::set<std::pair<int, std::uint32_t>> there;
    for (const PrismaCase& row : prisma_cases()) {
        if (row.as_program) {
            there.insert({row.id, row.accepted.mode});
        }
    }
    for (const RequiredCases& required : required_prisma_cases()) {
        for (const int id : required.ids) {
            for (const std::uint32_t mode : required.modes) {
                EXPECT_TRUE(there.contains({id, mode})) << id << " in mode " << mode;
            }
        }
    }
}

// Rules on manifests aren't so much as looked at without one, nor those of the other kinds.
TEST(PrismaCases, MessagesBelongToTheirKindOfInput) {
    std::set<std::pair<int, std::uint32_t>> there;
    std::set<int> of_manifests;
    for (const PrismaCase& row : prisma_cases()) {
        there.insert({row.id, row.accepted.mode});
    }
    for (const PrismaCase& row : prisma_cases()) {
        if (!there.contains({row.id, kFile})) {
            of_manifests.insert(row.id);
        }
    }
    // An I-frame stream has one list only, so that nothing can be named twice there.
    for (const int id : {2024, 2025, 4116}) {
        there.insert({id, kIframe});
    }
    for (const std::uint32_t mode : {kFile, kDash, kVariant, kIframe}) {
        for (const auto& make : {profile_4, profile_5, profile_8, profile_9, profile_10, profile_20,
                                 profile_32, profile_34}) {
            for (const int id : run(make(mode)).evaluated) {
                EXPECT_TRUE(!of_manifests.contains(id) || there.contains({id, mode}))
                    << id << " in mode " << mode;
            }
        }
    }
}

}  // namespace
}  // namespace mediasplit
