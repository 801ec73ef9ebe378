#include "src/main/input_format.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "base/ascii.h"

namespace mediasplit {

namespace {

struct ExtensionRow {
    std::string_view extension{};
    FormatId format = FormatId::kUnknown;
};

// TS names stand for a single file here; a template makes them a series.
constexpr ExtensionRow kExtensions[] = {
    {".m3u8", FormatId::kHls},   {".m3u", FormatId::kHls},  {".ts", FormatId::kTsFile},
    {".trp", FormatId::kTsFile}, {".mpd", FormatId::kDash}, {".mp4", FormatId::kMp4},
    {".m4i", FormatId::kMp4},    {".m4s", FormatId::kMp4},  {".m4v", FormatId::kMp4},
    {".m4a", FormatId::kMp4},    {".m4p", FormatId::kMp4},  {".m4r", FormatId::kMp4},
    {".cmfa", FormatId::kMp4},   {".cmfv", FormatId::kMp4}, {".mov", FormatId::kMp4},
    {".MOV", FormatId::kMp4},    {".ec3", FormatId::kEac3}, {".ac4", FormatId::kAc4},
};

}  // namespace

bool input_is_template(std::string_view name) {
    if (name.find("%d") != std::string_view::npos) {
        return true;
    }
    // From each "%" on, the digits behind it; each character is looked at once.
    for (std::size_t at = name.find('%'); at != std::string_view::npos; at = name.find('%', at)) {
        ++at;
        while (at < name.size() && is_digit(name[at])) {
            ++at;
        }
        if (at < name.size() && name[at] == 'd') {
            return true;
        }
    }
    return false;
}

FormatId format_of_input(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos) {
        return FormatId::kUnknown;
    }
    const auto* row = std::find_if(
        std::begin(kExtensions), std::end(kExtensions),
        [extension = name.substr(dot)](const ExtensionRow& r) { return r.extension == extension; });
    if (row == std::end(kExtensions)) {
        return FormatId::kUnknown;
    }
    const bool is_series = row->format == FormatId::kTsFile && input_is_template(name);
    return is_series ? FormatId::kTsSeries : row->format;
}

}  // namespace mediasplit
