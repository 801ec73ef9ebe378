#include "ac4/toc_reader/toc_reader.h"

#include <algorithm>

#include "ac4/toc_reader/channel_modes.h"
#include "ac4/toc_reader/toc_walk.h"

namespace mediasplit {
namespace {

constexpr std::uint64_t kLeastFrameBytes = 4;  // 25 bits

auto allocation(Ac4TocReader** reader, std::uint8_t** copy, std::uint64_t copy_size) {
    return [reader, copy, copy_size](memlib* mem, MemPhase phase) {
        memlib_alloc_objects(mem, kMemlibPermanent, reader, 1, phase);
        memlib_alloc_objects(mem, kMemlibPermanent, copy, copy_size, phase);
    };
}

// Reads substream `index` of the group, on from where the last query ended if that is not behind
// it. False if it could not be read to its end; the result says more.
bool read_from_group(Ac4TocReader* reader, std::int32_t group_index, std::uint32_t index,
                     LastSubstream* out) {
    const GroupInfo& group = reader->groups[static_cast<std::size_t>(group_index)];
    const GroupContext& shared = reader->group_contexts[static_cast<std::size_t>(group_index)];
    const GroupContext context = {shared.frame_rate_factor, reader->presentation.version};
    GroupWalk& walk = reader->walk;
    if (walk.group != group_index || walk.presentation_version != context.presentation_version ||
        walk.next_substream > index) {
        walk = {group_index, context.presentation_version, 0, group.substreams_position};
    }
    SubstreamDescription& substream = out->description;
    TocParser parser = parser_at(reader, walk.position);
    for (; walk.next_substream <= index && parser_ok(parser); ++walk.next_substream) {
        substream = read_group_substream(parser, group, context);
    }
    walk.position = field_position(parser.in);
    if (!parser_ok(parser)) {
        walk = GroupWalk{};
    }
    substream.info.content = group.content;
    substream.info.group = group_index;
    substream.info.index_in_group = static_cast<std::int32_t>(index);
    substream.ext.b_oamd_substream = group.b_oamd_substream;
    substream.ext.b_oamd_ndot = group.b_oamd_ndot;
    substream.ext.oamd_substream_index = group.oamd_substream_index;
    out->result = finish_parse(reader, parser);
    return parser_ok(parser);
}

// Finds the group that holds substream `substream` of the selected presentation.
bool read_through_groups(Ac4TocReader* reader, std::int32_t substream, LastSubstream* out) {
    std::array<std::int32_t, kMaxPresentationGroups> groups{};
    const std::int32_t count = distinct_groups(*reader, groups.data());
    auto index = static_cast<std::uint32_t>(substream);
    for (std::int32_t i = 0; i < count; ++i) {
        const std::int32_t group = groups[static_cast<std::size_t>(i)];
        const std::uint32_t in_group = reader->groups[static_cast<std::size_t>(group)].n_substreams;
        if (index < in_group) {
            return read_from_group(reader, group, index, out);
        }
        index -= in_group;
    }
    out->result = kTocNoData;
    return false;
}

bool read_inline(const Ac4TocReader& reader, std::int32_t substream, LastSubstream* out) {
    if (substream >= reader.presentation.substream_count) {
        out->result = kTocNoData;
        return false;
    }
    out->description = reader.inline_substreams[static_cast<std::size_t>(substream)];
    return true;
}

// Brings the substream that is asked for into `last_substream`. False if there is none to show.
bool select_substream(Ac4TocReader* reader, std::int32_t presentation, std::int32_t substream,
                      int* result) {
    *result = AC4_ANALYZE_ac4toc_get_selected_presentation_v1_info(reader, presentation);
    if (presentation < 0 || reader->selected != presentation) {
        return false;
    }
    LastSubstream& last = reader->last_substream;
    if (last.presentation == presentation && last.substream == substream) {
        *result = last.result;
        return true;
    }
    last = LastSubstream{};
    bool found = false;
    if (substream < 0) {
        last.result = kTocNoData;
    } else if (reader->head.bitstream_version == kGroupSyntaxVersion) {
        found = read_through_groups(reader, substream, &last);
    } else {
        found = read_inline(*reader, substream, &last);
    }
    *result = last.result;
    if (found) {
        last.presentation = presentation;
        last.substream = substream;
    }
    return found;
}

}  // namespace

int AC4_ANALYZE_ac4toc_reader_query_mem(std::uint64_t* size, const TocReaderConfig& config) {
    if (size == nullptr) {
        return kTocNoData;
    }
    *size = memlib_query(allocation(nullptr, nullptr, config.copy_buffer_size));
    return kTocOk;
}

int AC4_ANALYZE_ac4toc_reader_open(Ac4TocReader** reader, void* memory,
                                   const TocReaderConfig& config) {
    if (reader == nullptr || memory == nullptr) {
        return kTocNoData;
    }
    std::uint8_t* copy = nullptr;
    *reader = nullptr;
    const memlib arena = memlib_open(memory, allocation(reader, &copy, config.copy_buffer_size));
    if (*reader == nullptr) {
        return kTocNoData;
    }
    (*reader)->arena = arena;
    (*reader)->buffer_size = config.copy_buffer_size;
    (*reader)->copy = copy;
    AC4_ANALYZE_ac4toc_reader_new_program(*reader);
    return AC4_ANALYZE_ac4_brcalc_state_reset(&(*reader)->rate_state) == 0 ? kTocOk : kTocNoData;
}

void AC4_ANALYZE_ac4toc_reader_close(Ac4TocReader* reader) {
    if (reader != nullptr) {
        reader->arena =
            memlib_close(reader->arena, allocation(nullptr, nullptr, reader->buffer_size));
    }
}

void AC4_ANALYZE_ac4toc_reader_set_mode(Ac4TocReader* reader, TocMode mode) {
    reader->mode = mode;
    reader->deferred_error = kTocOk;
}

void AC4_ANALYZE_ac4toc_reader_set_hash(Ac4TocReader* reader, HashRecord* hash) {
    reader->hash = hash;
}

TocReaderVersion AC4_ANALYZE_ac4toc_reader_get_version() {
    return TocReaderVersion{4, 1, 0};
}

void AC4_ANALYZE_ac4toc_reader_new_program(Ac4TocReader* reader) {
    clear_positions(reader);
    reader->group_contexts.fill(GroupContext{1, 0});
    reader->masked_ranges.count = 0;
    reader->toc_unchanged = false;
}

int AC4_ANALYZE_ac4toc_reader_feed(Ac4TocReader* reader, const std::uint8_t* data,
                                   std::uint64_t size, int frame_kind) {
    if (data == nullptr) {
        return kTocNoData;
    }
    if (frame_kind != kFrameKindRaw) {
        return kTocUnsupported;
    }
    if (size < kLeastFrameBytes) {
        return kTocNoData;
    }
    reader->frame_bytes = static_cast<std::int64_t>(size);
    orv_bitbuf_init(&reader->bits, data, reader->frame_bytes * 8);
    reader->rate_known = false;
    reader->positions_known = false;
    reader->toc_unchanged = false;
    reader->table.known = false;
    reader->target_bits_read = 0;
    return kTocOk;
}

int AC4_ANALYZE_ac4toc_reader_get_presentation_info(Ac4TocReader* reader, const TocInfo& toc,
                                                    std::int32_t index, PresentationInfo* info) {
    if (index < 0 || index >= toc.n_presentations) {
        return kTocBadIndex;
    }
    const int result = AC4_ANALYZE_ac4toc_get_selected_presentation_v1_info(reader, index);
    if (reader->selected != index) {
        return result;
    }
    const int filled = AC4_ANALYZE_ac4toc_get_presentation_info_pvt(reader, info);
    return filled != kTocOk ? filled : result;
}

int AC4_ANALYZE_ac4toc_reader_get_presentation_info_ext(Ac4TocReader* reader, const TocInfo& toc,
                                                        std::int32_t index,
                                                        PresentationInfoExt* info) {
    if (index < 0 || index >= toc.n_presentations) {
        return kTocBadIndex;
    }
    const int result = AC4_ANALYZE_ac4toc_get_selected_presentation_v1_info(reader, index);
    if (reader->selected != index) {
        return result;
    }
    const PresentationDescription& presentation = reader->presentation;
    const bool group_syntax = reader->head.bitstream_version == kGroupSyntaxVersion;
    const LayoutSum sum = sum_layouts(*reader);
    *info = PresentationInfoExt{};
    info->presentation_config = presentation.config;
    info->emdf = presentation.emdf;
    info->b_multi_pid = presentation.b_multi_pid;
    info->b_presentation_filter = presentation.b_presentation_filter;
    info->b_enable_presentation = presentation.b_enable_presentation;
    info->b_alternative = presentation.b_alternative;
    info->b_pres_ndot = presentation.b_pres_ndot;
    info->b_add_emdf_substreams = presentation.b_add_emdf_substreams;
    info->n_add_emdf_substreams = static_cast<std::int32_t>(presentation.n_add_emdf);
    info->n_skip_bytes = presentation.n_skip_bytes;
    info->b_4_back_channels_present = sum.b_4_back_channels_present;
    info->b_centre_present = sum.b_centre_present;
    info->top_channel_pairs = sum.top_channel_pairs;
    info->group_count = presentation.group_count;
    info->groups = presentation.groups;
    const ConfigFacts facts = presentation_config_facts(presentation.config, group_syntax);
    std::copy(facts.roles.begin(), facts.roles.end(), info->group_roles.begin());
    return result;
}

int AC4_ANALYZE_ac4toc_reader_get_substream_info(Ac4TocReader* reader, std::int32_t presentation,
                                                 std::int32_t substream, SubstreamInfo* info) {
    int result = kTocOk;
    if (select_substream(reader, presentation, substream, &result)) {
        *info = reader->last_substream.description.info;
    }
    return result;
}

int AC4_ANALYZE_ac4toc_reader_get_substream_info_ext(Ac4TocReader* reader,
                                                     std::int32_t presentation,
                                                     std::int32_t substream,
                                                     SubstreamInfoExt* info) {
    int result = kTocOk;
    if (!select_substream(reader, presentation, substream, &result)) {
        return result;
    }
    const SubstreamDescription& description = reader->last_substream.description;
    *info = description.ext;
    const int audio = AC4_ANALYZE_ac4toc_get_substream_segment_info(
        reader, description.info.substream_index, &info->segment);
    const int oamd = AC4_ANALYZE_ac4toc_get_substream_segment_info(
        reader, info->oamd_substream_index, &info->oamd_segment);
    return result != kTocOk ? result : audio != kTocOk ? audio : oamd;
}

int AC4_ANALYZE_ac4toc_reader_get_emdf_info(Ac4TocReader* reader, std::int32_t presentation,
                                            EmdfInfo* info) {
    if (presentation != reader->selected || presentation < 0) {
        return kTocBadIndex;
    }
    const PresentationDescription& description = reader->presentation;
    *info = EmdfInfo{};
    info->own = description.emdf;
    info->added = description.add_emdf;
    info->count = static_cast<std::int32_t>(
        std::min<std::size_t>(description.n_add_emdf, info->added.size()));
    int result = AC4_ANALYZE_ac4toc_get_substream_segment_info(reader, info->own.substream_index,
                                                               &info->own_segment);
    for (std::int32_t i = 0; i < info->count && result == kTocOk; ++i) {
        const auto entry = static_cast<std::size_t>(i);
        result = AC4_ANALYZE_ac4toc_get_substream_segment_info(
            reader, info->added[entry].substream_index, &info->added_segments[entry]);
    }
    return result;
}

int AC4_ANALYZE_ac4toc_reader_get_param_presentation(Ac4TocReader* reader, TocParameter kind,
                                                     std::int32_t presentation, std::int32_t group,
                                                     std::int64_t* position, bool* flag) {
    const int known = ac4toc_reader_populate(reader);
    if (!reader->positions_known) {
        return known;
    }
    if (reader->head.bitstream_version != kGroupSyntaxVersion) {
        return kTocUnsupported;
    }
    if (kind == TocParameter::kSubstreamTable) {
        *position = reader->substream_table_pos;
        *flag = true;
        return kTocOk;
    }
    if (kind == TocParameter::kContentClassifier) {
        if (group < 0 || group >= reader->n_substream_groups ||
            static_cast<std::size_t>(group) >= reader->groups.size()) {
            return kTocBadIndex;
        }
        const GroupInfo& found = reader->groups[static_cast<std::size_t>(group)];
        *position = found.content_position;
        *flag = found.content.b_content_type;
        return kTocOk;
    }
    const int result = AC4_ANALYZE_ac4toc_get_selected_presentation_v1_info(reader, presentation);
    if (reader->selected != presentation || presentation < 0) {
        return result;
    }
    const bool id = kind == TocParameter::kPresentationId;
    *position = id ? reader->presentation.id_position : reader->presentation.filter_position;
    *flag = id ? reader->presentation.id_plus1 > 0 : reader->presentation.b_presentation_filter;
    return result;
}

int AC4_ANALYZE_ac4toc_read_variable_bits(orv_bitbuf* bits, int n, HashRecord* hash,
                                          std::uint32_t* value) {
    FieldReader in;
    in.bits = bits;
    in.hash = hash;
    int used = 0;
    *value = read_variable_bits(in, n, &used);
    return used;
}

int AC4_ANALYZE_ac4toc_get_substream_segment_info(Ac4TocReader* reader, std::int32_t index,
                                                  SubstreamSegment* segment) {
    *segment = SubstreamSegment{};
    if (index < 0) {
        return kTocOk;
    }
    const int known = ac4toc_reader_populate(reader);
    if (!reader->positions_known) {
        return known;
    }
    if (!reader->table.known) {
        TocParser parser = parser_at(reader, reader->substream_table_pos);
        read_substream_table(parser, &reader->table);
        finish_parse(reader, parser);
    }
    if (!reader->table.usable) {
        return reader->table.result;
    }
    const int found = find_substream_segment(
        reader->table, static_cast<std::uint64_t>(reader->frame_bytes), index, segment);
    return found != kTocOk ? found : reader->table.result;
}

}  // namespace mediasplit
