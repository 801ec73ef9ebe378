#include "ac4/toc_reader/presentation_syntax.h"

#include <algorithm>

namespace mediasplit {
namespace {

constexpr std::uint32_t kMostConfig = 31;
constexpr std::uint32_t kMostPresentationId = 510;
constexpr std::uint32_t kMostVersion = 1U << 16;  // a unary number: any would be taken, up to here
constexpr std::uint32_t kMostGroupsInConfig5 = 8;
constexpr std::int32_t kConfigCoded = 5;

constexpr std::int32_t kRoleMain = 0;
constexpr std::int32_t kRoleDialogue = 1;
constexpr std::int32_t kRoleAssociate = 2;
constexpr std::int32_t kRoleDialogueEnhancement = 3;

// By presentation_config: type code, groups declared, groups used, roles in slot order. Rows 5 and
// 6 and those behind them have no groups of their own.
constexpr std::array<ConfigFacts, 5> kConfigs = {{
    {6, 2, 2, {kRoleMain, kRoleDialogue, 0}},
    {2, 2, 1, {kRoleMain, kRoleDialogueEnhancement, 0}},
    {3, 2, 2, {kRoleMain, kRoleAssociate, 0}},
    {7, 3, 3, {kRoleMain, kRoleDialogue, kRoleAssociate}},
    {4, 3, 2, {kRoleMain, kRoleDialogueEnhancement, kRoleAssociate}},
}};

constexpr std::array<std::int32_t, 6> kInlineSubstreamCount = {2, 2, 2, 3, 3, 1};

std::int32_t read_config(TocParser& parser) {
    return static_cast<std::int32_t>(
        limited(parser, read_extended(parser.in, 3, 7, 2), kMostConfig));
}

std::int32_t read_presentation_version(TocParser& parser) {
    std::uint32_t version = 0;
    while (version <= kMostVersion && read_flag(parser.in)) {
        ++version;
    }
    return static_cast<std::int32_t>(limited(parser, version, kMostVersion));
}

// What both forms of a presentation start with. False for one that has EMDF substreams and nothing
// else: they are then taken as present.
bool read_presentation_start(TocParser& parser, PresentationDescription* out) {
    out->config = read_flag(parser.in) ? kConfigSingle : read_config(parser);
    out->version = read_presentation_version(parser);
    if (out->config == kConfigEmdfOnly) {
        out->b_add_emdf_substreams = true;
        return false;
    }
    out->mdcompat_plus1 = static_cast<std::int32_t>(read_field(parser.in, 3)) + 1;
    out->id_position = field_position(parser.in);
    if (read_flag(parser.in)) {
        const std::uint32_t stored = read_variable_bits(parser.in, 2) + 1;
        out->id_plus1 = static_cast<std::int32_t>(limited(parser, stored, kMostPresentationId));
    }
    out->frame_rate_multiply = read_frame_rate_multiply(parser);
    return true;
}

void read_additional_emdf(TocParser& parser, PresentationDescription* out) {
    out->n_add_emdf = out->b_add_emdf_substreams ? read_emdf_count(parser) : 0;
    for (std::uint32_t i = 0; i < out->n_add_emdf && parser_ok(parser); ++i) {
        const EmdfSubstream emdf = read_emdf_info(parser);
        if (i < out->add_emdf.size()) {
            out->add_emdf[i] = emdf;
        }
    }
}

void read_group_references(TocParser& parser, PresentationDescription* out) {
    for (std::int32_t i = 0; i < out->group_count && parser_ok(parser); ++i) {
        const std::int32_t group = AC4_ANALYZE_ac4toc_get_sgi_specifier(parser);
        if (static_cast<std::size_t>(i) < out->groups.size()) {
            out->groups[static_cast<std::size_t>(i)] = group;
        }
    }
}

void read_groups(TocParser& parser, PresentationDescription* out) {
    const ConfigFacts facts = presentation_config_facts(out->config, true);
    if (out->config != kConfigSingle) {
        out->b_multi_pid = read_flag(parser.in);
    }
    if (out->config == kConfigCoded) {
        std::uint32_t count = read_field(parser.in, 2) + 2;
        if (count == 5) {
            count += read_variable_bits(parser.in, 2);
        }
        limited(parser, count, kMostGroupsInConfig5);
        out->group_count = static_cast<std::int32_t>(count);
        out->groups_used = out->group_count;
    } else if (out->config > kConfigEmdfOnly && out->config != kConfigSingle) {
        out->n_skip_bytes = skip_presentation_config_ext(parser);
    } else {
        out->group_count = facts.declared;
        out->groups_used = facts.used;
    }
    read_group_references(parser, out);
    // In tolerant mode a count beyond the limit gets this far; what isn't kept isn't counted.
    const auto kept = static_cast<std::int32_t>(out->groups.size());
    out->group_count = std::min(out->group_count, kept);
    out->groups_used = std::min(out->groups_used, kept);
}

void read_inline_substreams(TocParser& parser, PresentationDescription* out,
                            InlineSubstreams* substreams) {
    const bool single = out->config == kConfigSingle;
    const bool known =
        single || static_cast<std::size_t>(out->config) < kInlineSubstreamCount.size();
    if (!single) {
        out->b_hsf_ext = read_flag(parser.in);
    }
    if (!known) {
        out->n_skip_bytes = skip_presentation_config_ext(parser);
        return;
    }
    out->substream_count =
        single ? 1 : kInlineSubstreamCount[static_cast<std::size_t>(out->config)];
    for (std::int32_t i = 0; i < out->substream_count && parser_ok(parser); ++i) {
        SubstreamDescription& substream = (*substreams)[static_cast<std::size_t>(i)];
        substream = get_substream_info(parser, out->frame_rate_multiply);
        if (i == 0 && out->b_hsf_ext) {
            substream.info.hsf_substream_index = read_hsf_ext_substream_info(parser);
        }
    }
}

}  // namespace

ConfigFacts presentation_config_facts(std::int32_t config, bool group_syntax) {
    if (config == kConfigSingle) {
        return {1, 1, 1, {}};
    }
    if (config == kConfigCoded) {
        return {group_syntax ? 9 : 5, 0, 0, {}};
    }
    if (config == kConfigEmdfOnly) {
        return {8, 0, 0, {}};
    }
    const auto row = static_cast<std::size_t>(config);
    return row < kConfigs.size() ? kConfigs[row] : ConfigFacts{};
}

PresentationDescription AC4_ANALYZE_ac4toc_get_next_presentation_info(
    TocParser& parser, InlineSubstreams* substreams) {
    PresentationDescription out;
    if (read_presentation_start(parser, &out)) {
        out.emdf = read_emdf_info(parser);
        read_inline_substreams(parser, &out, substreams);
        out.b_pre_virtualized = read_flag(parser.in);
        out.b_add_emdf_substreams = read_flag(parser.in);
    }
    read_additional_emdf(parser, &out);
    return out;
}

PresentationDescription AC4_ANALYZE_ac4toc_parse_presentation_v1_info(TocParser& parser) {
    PresentationDescription out;
    if (read_presentation_start(parser, &out)) {
        out.frame_rate_fraction = read_frame_rate_fraction(parser, out.frame_rate_multiply);
        out.emdf = read_emdf_info(parser);
        out.filter_position = field_position(parser.in);
        out.b_presentation_filter = read_flag(parser.in);
        out.b_enable_presentation = out.b_presentation_filter && read_flag(parser.in);
        read_groups(parser, &out);
        out.b_pre_virtualized = read_flag(parser.in);
        out.b_add_emdf_substreams = read_flag(parser.in);
        out.b_alternative = read_flag(parser.in);
        out.b_pres_ndot = read_flag(parser.in);
        out.presentation_substream_index = read_substream_index(parser);
    }
    read_additional_emdf(parser, &out);
    return out;
}

std::int32_t AC4_ANALYZE_ac4toc_get_sgi_specifier(TocParser& parser) {
    return static_cast<std::int32_t>(
        limited(parser, read_extended(parser.in, 3, 7, 2), kMaxTocGroups - 1));
}

bool AC4_ANALYZE_ac4toc_set_decodable_flag(std::int32_t bitstream_version,
                                           const PresentationDescription& presentation) {
    const std::int32_t version = presentation.version;
    const bool version_fits = bitstream_version == 2   ? version == 1 || version == 2
                              : bitstream_version <= 1 ? version == 0
                                                       : false;
    const std::int32_t type =
        presentation_config_facts(presentation.config, bitstream_version == 2).type_code;
    return version_fits && presentation.mdcompat_plus1 <= 4 && type != 0 && type != 8 &&
           type != 9 && presentation.frame_rate_multiply == 1;
}

}  // namespace mediasplit
