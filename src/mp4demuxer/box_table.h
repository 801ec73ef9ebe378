// The table that sends a box to its handler by its type alone, wherever it stands.
#pragma once

#include <span>

#include "src/mp4demuxer/handlers.h"

namespace mediasplit {

struct BoxRow {
    std::uint32_t type = 0;
    BoxHandler* handler = nullptr;
    bool in_tree = false;      // the box becomes an element of the optional tree
    bool needs_track = false;  // without a current track the box is passed over quietly
};

std::span<const BoxRow> box_table();

// The row of a type, null when there is none.
const BoxRow* find_box_row(std::uint32_t type);

}  // namespace mediasplit
