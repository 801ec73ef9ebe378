#include "ac4/toc_reader/toc_walk.h"

#include <algorithm>
#include <cstring>

#include "ac4/toc_reader/table_compare.h"
#include "ac4/toc_reader/toc_head.h"

namespace mediasplit {
namespace {

std::int64_t frame_bits(const Ac4TocReader& reader) {
    return reader.frame_bytes * 8;
}

// Reads the head and, if that is good, keeps it. The caller looks at the parser.
TocParser read_head(Ac4TocReader* reader) {
    TocParser parser = parser_at(reader, 0);
    AC4_ANALYZE_ac4toc_parse_num_presentations(parser, reader->bit_rate_mode);
    if (parser_ok(parser)) {
        reader->head = parser.head;
        reader->bit_rate_mode = parser.head.bit_rate_mode;
        reader->sequence_counter = static_cast<std::uint32_t>(parser.head.sequence_counter);
    } else {
        ++reader->sequence_counter;
    }
    return parser;
}

// Shows the frame to the rate calculation, once: a second look would count as a repeated frame and
// lose the status of a value from before a break.
void update_rate(Ac4TocReader* reader) {
    if (reader->rate_known) {
        return;
    }
    const TocHead& head = reader->head;
    BrcalcInput input;
    input.frame_rate_index = static_cast<std::uint32_t>(head.frame_rate_index);
    input.fs_index = static_cast<std::uint32_t>(head.fs_index);
    input.frame_bytes = static_cast<std::uint32_t>(reader->frame_bytes);
    input.br_code = static_cast<std::uint32_t>(head.br_code) & 3U;
    input.wait_frames_minus1 = head.wait_frames - 1;
    input.b_wait_frames = head.b_wait_frames;
    input.sequence_counter = head.sequence_counter;
    input.mode = head.bit_rate_mode;
    reader->rate = BrcalcOutput{};
    AC4_ANALYZE_ac4_brcalc_process(&reader->rate_state, input, &reader->rate);
    reader->rate_known = true;
}

// Caches hold only where the syntax starts at the same bit under the same head.
bool table_is_unchanged(const Ac4TocReader& reader) {
    const TocHead& now = reader.head;
    const TocHead& then = reader.stored.head;
    return reader.stored.valid && now.bitstream_version == then.bitstream_version &&
           now.n_presentations == then.n_presentations && now.fs_index == then.fs_index &&
           now.frame_rate_index == then.frame_rate_index &&
           now.presentations_position == then.presentations_position &&
           reader.stored.end <= frame_bits(reader) &&
           orv_compare_fast(reader.copy, reader.bits.base, now.presentations_position,
                            reader.stored.end, reader.masked_ranges);
}

void store_table(Ac4TocReader* reader) {
    const auto bytes = static_cast<std::uint64_t>((reader->substream_table_pos + 7) / 8);
    if (bytes > reader->buffer_size) {
        return;
    }
    std::memcpy(reader->copy, reader->bits.base, static_cast<std::size_t>(bytes));
    reader->stored = {true, reader->head, reader->substream_table_pos, reader->n_substream_groups};
}

void select_presentation(const TocParser& parser, const PresentationDescription& presentation,
                         const InlineSubstreams& substreams, SelectedPresentation* selected) {
    const bool group_syntax = parser.head.bitstream_version == kGroupSyntaxVersion;
    *selected = SelectedPresentation{};
    selected->decodable =
        AC4_ANALYZE_ac4toc_set_decodable_flag(parser.head.bitstream_version, presentation);
    selected->presentation_version = presentation.version;
    selected->mdcompat = presentation.mdcompat_plus1 - 1;
    selected->type_code = presentation_config_facts(presentation.config, group_syntax).type_code;
    selected->presentation_group_plus1 = presentation.id_plus1;
    selected->group_count =
        std::min(presentation.group_count, static_cast<std::int32_t>(selected->groups.size()));
    std::copy_n(presentation.groups.begin(), selected->group_count, selected->groups.begin());
    selected->substream_count = presentation.substream_count;
    for (std::size_t i = 0; i < substreams.size(); ++i) {
        if (static_cast<std::int32_t>(i) < presentation.substream_count) {
            selected->contents[i] = substreams[i].info.content;
        }
    }
}

void select_group(const GroupInfo& group, SelectedGroup* selected) {
    *selected = {true,
                 group.b_substreams_present,
                 group.b_hsf_ext,
                 group.b_channel_coded,
                 group.n_substreams,
                 group.content};
}

// Notes the groups of a presentation: the first one to name a group decides how it is read.
void note_groups(Ac4TocReader* reader, const PresentationDescription& presentation,
                 std::int32_t* highest) {
    for (std::int32_t i = 0; i < presentation.group_count; ++i) {
        const std::int32_t group = presentation.groups[static_cast<std::size_t>(i)];
        *highest = std::max(*highest, group);
        if (static_cast<std::size_t>(group) >= kMaxTocGroups) {
            continue;
        }
        GroupContext& context = reader->group_contexts[static_cast<std::size_t>(group)];
        if (context.frame_rate_factor == 0) {
            context = {presentation.frame_rate_multiply, presentation.version};
        }
    }
}

PresentationDescription read_presentation(TocParser& parser, InlineSubstreams* substreams) {
    return parser.head.bitstream_version == kGroupSyntaxVersion
               ? AC4_ANALYZE_ac4toc_parse_presentation_v1_info(parser)
               : AC4_ANALYZE_ac4toc_get_next_presentation_info(parser, substreams);
}

std::int32_t walk_presentations(Ac4TocReader* reader, TocParser& parser,
                                SelectionRecord* selection) {
    std::int32_t highest_group = -1;
    for (std::int32_t i = 0; i < parser.head.n_presentations && parser_ok(parser); ++i) {
        const auto index = static_cast<std::size_t>(i);
        reader->presentation_positions[index] = field_position(parser.in);
        const PresentationDescription presentation =
            read_presentation(parser, &reader->inline_substreams);
        note_groups(reader, presentation, &highest_group);
        if (selection != nullptr && index < selection->presentations.size()) {
            select_presentation(parser, presentation, reader->inline_substreams,
                                &selection->presentations[index]);
            selection->n_presentations = i + 1;
        }
    }
    return highest_group;
}

void walk_groups(Ac4TocReader* reader, TocParser& parser, SelectionRecord* selection) {
    for (std::int32_t i = 0; i < reader->n_substream_groups && parser_ok(parser); ++i) {
        const auto index = static_cast<std::size_t>(i);
        const bool kept = index < kMaxTocGroups;
        const GroupInfo group = AC4_ANALYZE_ac4toc_get_substream_group_info(
            parser, kept ? reader->group_contexts[index] : GroupContext{});
        if (kept) {
            reader->groups[index] = group;
        }
        if (selection != nullptr && index < selection->groups.size()) {
            select_group(group, &selection->groups[index]);
            selection->n_groups = i + 1;
        }
    }
}

int walk_table(Ac4TocReader* reader, SelectionRecord* selection) {
    clear_positions(reader);
    reader->group_contexts.fill(GroupContext{});
    reader->masked_ranges.count = 0;
    if (selection != nullptr) {
        selection->n_presentations = 0;
        selection->n_groups = 0;
    }
    TocParser parser = parser_at(reader, reader->head.presentations_position);
    parser.masked = &reader->masked_ranges;
    reader->n_substream_groups = walk_presentations(reader, parser, selection) + 1;
    reader->groups_start = field_position(parser.in);
    walk_groups(reader, parser, selection);
    if (!parser_ok(parser)) {
        clear_positions(reader);
        return finish_parse(reader, parser);
    }
    reader->groups_known = true;
    reader->substream_table_pos = field_position(parser.in);
    reader->positions_known = true;
    if (reader->head.bitstream_version == kGroupSyntaxVersion && parser.deferred == kTocOk) {
        store_table(reader);
    }
    return finish_parse(reader, parser);
}

}  // namespace

TocParser parser_at(Ac4TocReader* reader, std::int64_t position) {
    TocParser parser;
    parser.in.bits = &reader->bits;
    parser.head = reader->head;
    parser.mode = reader->mode;
    if (orv_bitbuf_set_abs_pos(&reader->bits, position) != 0) {
        parser.in.error = FieldError::kRanOut;
    }
    return parser;
}

int finish_parse(Ac4TocReader* reader, const TocParser& parser) {
    reader->deferred_error = parser.deferred;
    return parser_result(parser);
}

void clear_positions(Ac4TocReader* reader) {
    reader->presentation_positions.fill(0);
    reader->groups_known = false;
    reader->n_substream_groups = 0;
    reader->groups_start = 0;
    reader->substream_table_pos = 0;
    reader->positions_known = false;
    reader->stored.valid = false;
    reader->selected = kNoIndex;
    reader->walk = GroupWalk{};
    reader->last_substream.presentation = kNoIndex;
}

int ac4toc_reader_populate(Ac4TocReader* reader) {
    return reader->positions_known
               ? kTocOk
               : AC4_ANALYZE_ac4toc_reader_get_presentation_selection_info(reader, nullptr);
}

int AC4_ANALYZE_ac4toc_reader_get_presentation_selection_info(Ac4TocReader* reader,
                                                              SelectionRecord* selection) {
    const TocParser head = read_head(reader);
    if (!parser_ok(head)) {
        clear_positions(reader);
        return finish_parse(reader, head);
    }
    update_rate(reader);
    reader->toc_unchanged = table_is_unchanged(*reader);
    if (reader->toc_unchanged) {
        reader->positions_known = true;
        return finish_parse(reader, head);
    }
    const int result = walk_table(reader, selection);
    return result != kTocOk ? result : finish_parse(reader, head);
}

int AC4_ANALYZE_ac4toc_reader_get_toc_info(Ac4TocReader* reader, TocInfo* info) {
    const TocParser head = read_head(reader);
    if (!parser_ok(head)) {
        return finish_parse(reader, head);
    }
    // Positions of an earlier frame are of no use; those of this one stay, or a changed table would
    // be walked twice.
    if (!reader->positions_known) {
        clear_positions(reader);
    }
    update_rate(reader);
    copy_head(reader->head, info);
    info->rate_status = static_cast<std::int32_t>(reader->rate.status);
    info->rate_mean = reader->rate.lower;
    info->rate_peak = reader->rate.upper;
    return finish_parse(reader, head);
}

std::int32_t AC4_ANALYZE_ac4toc_seek_to_presentation_info(Ac4TocReader* reader,
                                                          std::int32_t index) {
    std::int32_t nearest = index;
    while (nearest > 0 && reader->presentation_positions[static_cast<std::size_t>(nearest)] == 0) {
        --nearest;
    }
    const std::int64_t position =
        nearest > 0 ? reader->presentation_positions[static_cast<std::size_t>(nearest)]
                    : reader->head.presentations_position;
    return orv_bitbuf_set_abs_pos(&reader->bits, position) == 0 ? nearest : kNoIndex;
}

int AC4_ANALYZE_ac4toc_get_selected_presentation_v1_info(Ac4TocReader* reader, std::int32_t index) {
    const int known = ac4toc_reader_populate(reader);
    if (!reader->positions_known) {
        return known;
    }
    if (index < 0 || index >= reader->head.n_presentations) {
        return kTocBadIndex;
    }
    if (reader->selected == index && reader->hash == nullptr) {
        return reader->selected_result;
    }
    const std::int32_t start = AC4_ANALYZE_ac4toc_seek_to_presentation_info(reader, index);
    TocParser parser = parser_at(reader, orv_bitbuf_get_abs_pos(&reader->bits));
    for (std::int32_t i = start; i <= index && parser_ok(parser); ++i) {
        parser.in.hash = i == index ? reader->hash : nullptr;
        reader->presentation_positions[static_cast<std::size_t>(i)] = field_position(parser.in);
        reader->presentation = read_presentation(parser, &reader->inline_substreams);
    }
    reader->selected = parser_ok(parser) ? index : kNoIndex;
    reader->selected_result = finish_parse(reader, parser);
    return reader->selected_result;
}

}  // namespace mediasplit
