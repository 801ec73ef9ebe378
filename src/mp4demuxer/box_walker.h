// The walk over the boxes of one parent (ISO/IEC 14496-12 4.2), tolerant of what is broken: a
// broken box ends its parent, with a line on standard output, and never the run.
#pragma once

#include <string>
#include <string_view>

#include "src/mp4demuxer/handlers.h"

namespace mediasplit {

// Boxes nested deeper than this are passed over.
inline constexpr std::uint32_t kMaxBoxDepth = 64;

// Four bytes from 0x20 to 0x7E.
bool valid_mp4_box_type(std::string_view type);

// The type as text: four characters, or "(invalid string)".
std::string box_type_text(const BoxNode& node);

// The printable path, such as "file: moov->trak[1]", cut to 255 characters.
std::string box_path(const BoxNode& node);

// Walks the children of `node`, whose `size` is what there is to walk. `index` is where the first
// child goes in the optional tree below `tree`. Returns the OR of the handlers' results, 1 when a
// broken box ended the walk.
HandlerResult parse_box_with_index(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree,
                                   int index);

}  // namespace mediasplit
