#pragma once

#include "ac4/toc_reader/toc_reader.h"

namespace mediasplit {

// The reader's inner operations, shared by its queries.

// A parser over the frame that stands at a bit position.
TocParser parser_at(Ac4TocReader* reader, std::int64_t position);

// Notes the parked error and gives the result code of a parse.
int finish_parse(Ac4TocReader* reader, const TocParser& parser);

// Makes sure that the caches hold for the frame, so that substream_table_pos is known.
int ac4toc_reader_populate(Ac4TocReader* reader);

// Forgets the cached positions.
void clear_positions(Ac4TocReader* reader);

// Reads presentation `index` into the reader, walking on from the nearest known start.
int AC4_ANALYZE_ac4toc_get_selected_presentation_v1_info(Ac4TocReader* reader, std::int32_t index);

// Fills a presentation's layout, counts, name and targets.
int AC4_ANALYZE_ac4toc_get_presentation_info_pvt(Ac4TocReader* reader, PresentationInfo* info);

// What the groups, or before bitstream_version 2 the substreams, of the selected presentation are
// together.
struct LayoutSum {
    bool any = false;
    bool all_channel_coded = true;
    bool core_known = true;
    bool lfe = false;
    bool b_4_back_channels_present = false;
    bool b_centre_present = false;
    std::int32_t top_channel_pairs = 0;
    std::int32_t common_code = 0;
    std::uint32_t bitmap = 0;
    std::uint32_t core_bitmap = 0;
    std::int64_t max_objects = 0;  // of one group
    std::int32_t substreams = 0;
};

LayoutSum sum_layouts(const Ac4TocReader& reader);

// The groups that the selected presentation names, each once, in the order named. `groups` has room
// for kMaxPresentationGroups; the count.
std::int32_t distinct_groups(const Ac4TocReader& reader, std::int32_t* groups);

}  // namespace mediasplit
