// Names of the files of a numbered series.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace mediasplit {

struct SeriesName {
    std::string name{};
    bool is_numbered = false;  // false: the template took no number, all its names are the same
};

// Reads the template as a print format: its first integer conversion (d, i, u, o, x or X, with
// flags, width and precision) takes the number and "%%" gives "%". Everything else stands as it is
// written, further conversions too.
SeriesName series_file_name(std::string_view name_template, std::uint32_t number);

}  // namespace mediasplit
