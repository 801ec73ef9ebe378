#pragma once

#include <cstdint>

#include "ac4/toc_reader/toc_parser.h"

namespace mediasplit {

// One substream's description as it stands in the table.
struct SubstreamDescription {
    SubstreamInfo info;
    SubstreamInfoExt ext;
};

// What a group's syntax takes from the first presentation that refers to it; 0 stands for none.
struct GroupContext {
    std::int32_t frame_rate_factor = 0;
    std::int32_t presentation_version = 0;
};

// ac4_substream_info (ETSI TS 103 190-1 clause 4.2.3.4) of bitstream versions 0 and 1. A channel
// mode with no known layout is refused with kTocUnsupported.
SubstreamDescription get_substream_info(TocParser& parser, std::int32_t frame_rate_factor);

// ac4_hsf_ext_substream_info: the index of the extension.
std::int32_t read_hsf_ext_substream_info(TocParser& parser);

// ac4_substream_group_info (TS 103 190-2 clause 6.2.1.6). The three parts are read one behind the
// other: head, n_substreams substreams, tail.
void read_group_head(TocParser& parser, GroupInfo* group);
SubstreamDescription read_group_substream(TocParser& parser, const GroupInfo& group,
                                          const GroupContext& context);
void read_group_tail(TocParser& parser, GroupInfo* group);

// All of a group in one walk: its head and tail, and its substreams in sum.
GroupInfo AC4_ANALYZE_ac4toc_get_substream_group_info(TocParser& parser,
                                                      const GroupContext& context);

}  // namespace mediasplit
