// How findings are sorted: by level, by the family of codecs and by the layer that their rule looks
// at. All of it follows from the catalogue.
#pragma once

#include <cstdint>
#include <string_view>

#include "src/log/catalogue_row.h"

namespace mediasplit::report {

/// How grave a finding is, the least grave first.
enum class Level : std::uint8_t { kInfo, kWarning, kError, kFatal };

enum class Family : std::uint8_t { kGeneral, kEac3, kAc4, kPrisma };

enum class Layer : std::uint8_t { kGeneral, kDash, kHls, kMp4, kTs, kEs };

inline constexpr int kLevelCount = 4;
inline constexpr int kFamilyCount = 4;
inline constexpr int kLayerCount = 6;

/// "info", "warning", "error", "fatal".
std::string_view name_of(Level level);
/// "general", "E-AC-3", "AC-4", "Orvel Prisma".
std::string_view name_of(Family family);
/// "general", "DASH", "HLS", "MP4", "TS", "ES".
std::string_view name_of(Layer layer);

/// Whether a row makes a finding: plain output and debug lines make none.
bool is_finding(const CatalogueRow& row);
/// The level of a row that makes a finding.
Level level_of(const CatalogueRow& row);
/// Whether a row is a rule, something that a stream can meet or break: a warning or an error.
bool is_rule(const CatalogueRow& row);
/// By the first digit of the checkpoint number; without one, by what the message speaks of.
Family family_of(const CatalogueRow& row);
/// By the third digit of the checkpoint number; without one, by what the message speaks of.
Layer layer_of(const CatalogueRow& row);

}  // namespace mediasplit::report
