#pragma once

#include <array>
#include <cstdint>

#include "ac4/toc_reader/substream_syntax.h"
#include "ac4/toc_reader/toc_parser.h"

namespace mediasplit {

inline constexpr std::int32_t kConfigEmdfOnly = 6;
inline constexpr std::int32_t kConfigSingle = -1;  // a single substream (group), no config coded

// One presentation as it stands in the table.
struct PresentationDescription {
    std::int32_t config = 0;  // presentation_config or kConfigSingle
    std::int32_t version = 0;
    std::int32_t mdcompat_plus1 = 0;
    std::int32_t id_plus1 = 0;
    std::int32_t frame_rate_multiply = 1;
    std::int32_t frame_rate_fraction = 1;
    EmdfSubstream emdf;
    bool b_presentation_filter = false;
    bool b_enable_presentation = false;
    bool b_multi_pid = false;
    bool b_hsf_ext = false;
    bool b_pre_virtualized = false;
    bool b_add_emdf_substreams = false;
    bool b_alternative = false;
    bool b_pres_ndot = false;
    std::int32_t presentation_substream_index = kNoIndex;
    std::uint32_t n_skip_bytes = 0;
    std::uint32_t n_add_emdf = 0;  // as coded
    std::array<EmdfSubstream, kMaxAddedEmdf> add_emdf{};
    std::int32_t group_count = 0;  // specifiers read
    std::int32_t groups_used = 0;  // n_substream_groups of the standard
    std::array<std::int32_t, kMaxPresentationGroups> groups{};
    std::int32_t substream_count = 0;  // inline substreams, before bitstream_version 2
    std::int64_t id_position = 0;      // bit position of b_presentation_id
    std::int64_t filter_position = 0;  // bit position of b_presentation_filter
};

using InlineSubstreams = std::array<SubstreamDescription, kMaxInlineSubstreams>;

// What follows from presentation_config.
struct ConfigFacts {
    std::int32_t type_code = 0;
    std::int32_t declared = 0;  // group specifiers
    std::int32_t used = 0;      // n_substream_groups
    std::array<std::int32_t, 3> roles{};
};

// The row of a config; `group_syntax` for bitstream_version 2.
ConfigFacts presentation_config_facts(std::int32_t config, bool group_syntax);

// ac4_presentation_info (ETSI TS 103 190-1 clause 4.2.3.2) with its substreams.
PresentationDescription AC4_ANALYZE_ac4toc_get_next_presentation_info(TocParser& parser,
                                                                      InlineSubstreams* substreams);

// ac4_presentation_v1_info (TS 103 190-2 clause 6.2.1.3).
PresentationDescription AC4_ANALYZE_ac4toc_parse_presentation_v1_info(TocParser& parser);

// ac4_sgi_specifier of bitstream_version 2: a group index. Above the 128 groups that are kept it is
// refused with kTocLimit.
std::int32_t AC4_ANALYZE_ac4toc_get_sgi_specifier(TocParser& parser);

// Whether a decoder of this generation plays the presentation.
bool AC4_ANALYZE_ac4toc_set_decodable_flag(std::int32_t bitstream_version,
                                           const PresentationDescription& presentation);

}  // namespace mediasplit
