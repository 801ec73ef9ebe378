// Masks for has_checkpoint_set(): families of rules, by the first digits of checkpoint numbers.
#pragma once

#include <cstdint>

namespace mediasplit {

inline constexpr std::uint32_t kEac3Rules = 1;
inline constexpr std::uint32_t kAc4OverTheTopRules = 2;
inline constexpr std::uint32_t kAc4BroadcastRules = 4;
inline constexpr std::uint32_t kAc4Rules = kAc4OverTheTopRules | kAc4BroadcastRules;
inline constexpr std::uint32_t kPrismaManifestRules = 8;
inline constexpr std::uint32_t kPrismaBroadcastRules = 16;
inline constexpr std::uint32_t kPrismaOverTheTopRules = 32;
inline constexpr std::uint32_t kPrismaNewerRules = 64;
inline constexpr std::uint32_t kPrismaNewestRules = 128;
inline constexpr std::uint32_t kPrismaRules = kPrismaManifestRules | kPrismaBroadcastRules |
                                              kPrismaOverTheTopRules | kPrismaNewerRules |
                                              kPrismaNewestRules;

}  // namespace mediasplit
