#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "oapinfolib/src/bsid_tables.h"

// One line of the report, put together in place and written in one call.

namespace mediasplit {

struct DispLine {
    std::array<char, 2048> text{};
    std::size_t length = 0;

    char* at() { return text.data() + length; }
    [[nodiscard]] std::size_t room() const { return text.size() - length; }

    // Takes the result of a snprintf to at() and room().
    void took(int count) {
        length = std::min(length + static_cast<std::size_t>(std::max(count, 0)), text.size() - 1);
    }
    void add(const char* part) { took(std::snprintf(at(), room(), "%s", part)); }

    // Writes the line, with the mark of doubtful information if wanted, and empties it.
    void end(bool doubtful) {
        std::printf("%s%s\n", text.data(), doubtful ? " (?)" : "");
        text[0] = '\0';
        length = 0;
    }
};

// Adds the names of the marked positions as a bracketed list.
void disp_printchans(const std::array<std::uint32_t, kChannelPositions>& present, DispLine& line);

}  // namespace mediasplit
