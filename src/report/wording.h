// Numbers and names in words, the same in all forms that people read.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "src/report/findings_report.h"

namespace mediasplit::report {

/// "1,234,567".
std::string grouped(std::uint64_t number);
/// "1 error", "2 errors", "1,000 errors".
std::string counted(std::uint64_t number, std::string_view noun);
/// "2 errors, 1 warning, 3 infos", without those that are none; "no findings" for none at all.
std::string told_counts(const Stream& stream);
/// The same for all streams together.
std::string told_counts(const FindingsReport& report);
/// The printable name of a stream; "Main stream" for the main one.
std::string stream_title(const Stream& stream);
/// "E-AC-3, MP4": family and layer, "general" only if both are.
std::string class_of(const CatalogueRow& row);
/// Where in a manifest a finding lies, "ELEMENT @ATTRIBUTE", printable; empty for none.
std::string place_of(const Finding& finding);

}  // namespace mediasplit::report
