#pragma once

#include <cstdint>

#ifndef MEDIASPLIT_TAG_AUTHORITY
#error "MEDIASPLIT_TAG_AUTHORITY must be defined by the build (link the target `log`)"
#endif

namespace mediasplit {

/// What kind of line a row makes; decides its prefix and its stream.
enum class MessageType : std::uint8_t { kPlain, kInfo, kWarning, kFatalError, kError, kDebug };

// Values of `CatalogueRow::code`.
inline constexpr std::uint32_t kNoCode = 0;
inline constexpr std::uint32_t kFailure = 1;               // the run failed
inline constexpr std::uint32_t kBrokenRule = 0x40000000U;  // a conformance rule is broken

/// One row of the message catalogue.
struct CatalogueRow {
    int id = 0;
    int checkpoint = 0;  ///< 0, or the six-digit checkpoint number of the rule
    int collect = 0;     ///< 0: written at once; 1: goes through the checkpoint gate to a `Loglist`
    MessageType type = MessageType::kPlain;
    std::uint32_t code = kNoCode;  ///< what a report of type fatal error or error returns
    const char* reference = "";    ///< document and clause the rule comes from, or empty
    const char* message = "";      ///< text with placeholders
};

}  // namespace mediasplit
