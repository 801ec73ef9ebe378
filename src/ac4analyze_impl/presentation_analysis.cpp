#include "src/ac4analyze_impl/presentation_analysis.h"

#include <algorithm>
#include <array>
#include <span>

#include "ac4/metadata/channel_modes.h"
#include "ac4/metadata/emdf_payloads.h"
#include "ac4/metadata/metadata_codes.h"
#include "ac4/metadata/oamd_substream.h"
#include "ac4/syntax/reading_limit.h"
#include "src/ac4analyze_impl/language_tag.h"

namespace mediasplit {
namespace {

constexpr std::size_t kMostObjects = 64;

// The frame under analysis and where its numbering of substreams stands.
struct FrameWalk {
    Ac4Analyzer* analyzer = nullptr;
    const std::uint8_t* frame = nullptr;
    AnalysisRecord* result = nullptr;
    std::int32_t next_slot = 0;
    std::int32_t presentation = 0;
};

// Takes a metadata reader's code; 0, or 32 if it ends the frame.
int take_metadata_code(FrameWalk& walk, std::uint32_t code) {
    walk.result->status |= code;
    return metadata_is_fatal(code) ? kAnalyzeMetadata : kAnalyzeOk;
}

// Whether so much of the frame's metadata was read that no more of it is, which is then told.
bool is_read_enough(FrameWalk& walk) {
    const bool enough =
        passes_reading_limit(walk.analyzer->frame_data.bits_read, walk.result->frame_size);
    walk.result->status |= enough ? kStatusNotUnderstood : 0;
    return enough;
}

// Takes a table of contents reader's code; 0 or 33.
int take_toc_code(FrameWalk& walk, int code) {
    walk.result->status |= toc_status(code);
    return code == kTocOk ? kAnalyzeOk : kAnalyzeToc;
}

void copy_presentation(const PresentationInfo& info, AnalysisPresentation* out) {
    out->decodable = info.decodable;
    out->presentation_version = info.presentation_version_plus1 - 1;
    out->mdcompat = info.mdcompat_plus1 - 1;
    out->type_code = info.type_code;
    out->channel_mode = info.channel_mode;
    out->core_channel_mode = info.core_channel_mode;
    out->presentation_group = info.presentation_group_plus1;
    out->b_hsf_ext = info.b_hsf_ext;
    out->b_pre_virtualized = info.b_pre_virtualized;
    out->frame_rate_multiply = info.frame_rate_multiply;
    out->frame_rate_fraction = info.frame_rate_fraction;
    out->n_substream_groups = info.n_substream_groups_declared;
    out->n_substream_groups_used = info.n_substream_groups_used;
    out->lfe = info.lfe;
    out->has_objects = info.has_objects;
    out->name_size = info.name_size;
    out->presentation_name = info.presentation_name;
    out->n_targets = std::min(info.n_targets, static_cast<std::int32_t>(kMaxTargets));
    out->targets = info.targets;
    out->presentation_substream_index = info.presentation_substream_index;
    out->n_substreams = info.substream_total;
}

void copy_presentation_ext(const PresentationInfoExt& ext, AnalysisPresentation* out) {
    out->presentation_config = ext.presentation_config;
    out->b_multi_pid = ext.b_multi_pid;
    out->b_presentation_filter = ext.b_presentation_filter;
    out->b_enable_presentation = ext.b_enable_presentation;
    out->b_alternative = ext.b_alternative;
    out->n_skip_bytes = ext.n_skip_bytes;
    out->groups = ext.groups;
    out->group_roles = ext.group_roles;
    out->emdf = ext.emdf;
    out->b_add_emdf_substreams = ext.b_add_emdf_substreams;
    out->n_emdf_substreams = ext.n_add_emdf_substreams;
    out->b_4_back_channels_present = ext.b_4_back_channels_present;
    out->b_centre_present = ext.b_centre_present;
    out->top_channels_present = ext.top_channel_pairs;
}

void apply_limits(FrameWalk& walk, AnalysisPresentation* presentation) {
    if (presentation->n_substreams > static_cast<std::int32_t>(kAnalysisSubstreams)) {
        walk.result->status |= kStatusSubstreams;
        presentation->n_substreams = static_cast<std::int32_t>(kAnalysisSubstreams);
    }
    if (presentation->n_emdf_substreams > static_cast<std::int32_t>(kMaxAddedEmdf)) {
        walk.result->status |= kStatusEmdf;
        presentation->n_emdf_substreams = static_cast<std::int32_t>(kMaxAddedEmdf);
    }
}

void fill_group(const SelectedGroup& selected, AnalysisGroup* group) {
    group->present = true;
    group->b_substreams_present = selected.b_substreams_present;
    group->b_hsf_ext = selected.b_hsf_ext;
    group->b_channel_coded = selected.b_channel_coded;
    group->n_substreams = selected.n_substreams;
    group->b_content_type = selected.content.b_content_type;
    group->content_classifier = selected.content.content_classifier;
    group->b_language_indicator = selected.content.b_language_indicator;
    group->language_size = selected.content.language_size;
    group->language = selected.content.language;
}

void fill_groups(FrameWalk& walk, const AnalysisPresentation& presentation) {
    const SelectionRecord& selection = walk.analyzer->selection;
    for (std::int32_t i = 0; i < presentation.n_substream_groups; ++i) {
        const std::int32_t group = presentation.groups[static_cast<std::size_t>(i)];
        if (group < 0 || group >= selection.n_groups) {
            walk.result->status |= kStatusGroup;
            continue;
        }
        const auto index = static_cast<std::size_t>(group);
        if (!walk.result->groups[index].present) {
            fill_group(selection.groups[index], &walk.result->groups[index]);
        }
    }
}

// Enters a slot into its group's list, once however many presentations name the group.
void list_in_group(FrameWalk& walk, const AnalysisSubstream& substream) {
    const std::int32_t index = substream.info.group;
    if (index < 0 || static_cast<std::size_t>(index) >= kAnalysisGroups) {
        return;
    }
    AnalysisGroup& group = walk.result->groups[static_cast<std::size_t>(index)];
    const auto place = static_cast<std::uint32_t>(substream.info.index_in_group);
    if (place == group.listed && place < group.substreams.size()) {
        group.substreams[group.listed++] = static_cast<std::int16_t>(substream.slot);
    }
}

void map_substream(FrameWalk& walk, const AnalysisSubstream& substream) {
    const std::int32_t index = substream.info.substream_index;
    if (index >= static_cast<std::int32_t>(kAnalysisSubstreams)) {
        walk.result->status |= kStatusSubstreamIndex;
    } else if (index >= 0) {
        walk.result->substream_map[static_cast<std::size_t>(index)] =
            static_cast<std::int16_t>(substream.slot);
    }
}

void check_language(FrameWalk& walk, const ContentType& content) {
    if (content.b_language_indicator && !content.b_serialized_language_tag &&
        !language_tag_is_valid({content.language.data(), content.language_size})) {
        walk.result->status |= kStatusLanguage;
    }
}

// Roles in slot order before bitstream_version 2: an associated or dialogue service is told by its
// content type or by its place in the presentation.
constexpr std::int32_t kRoleDialogue = 1;
constexpr std::int32_t kRoleAssociate = 2;

bool is_associated(const ContentType& content, std::int32_t role) {
    const std::int32_t classifier = content.content_classifier;
    return role == kRoleAssociate ||
           (content.b_content_type && (classifier == 2 || classifier == 3 || classifier == 5));
}

bool is_dialogue(const ContentType& content, std::int32_t role) {
    return role == kRoleDialogue || (content.b_content_type && content.content_classifier == 4);
}

// The kinds of a substream's objects, LFE first.
std::size_t object_kinds(const AnalysisSubstream& substream,
                         std::array<OamdObjectKind, kMostObjects>* kinds) {
    const SubstreamInfoExt& ext = substream.ext;
    const auto count = std::min(static_cast<std::size_t>(ext.n_objects), kinds->size());
    OamdObjectKind kind = OamdObjectKind::kDynamic;
    if (ext.has_bed_objects) {
        kind = OamdObjectKind::kBed;
    } else if (ext.has_isf_objects) {
        kind = OamdObjectKind::kIsf;
    }
    std::fill_n(kinds->begin(), count, kind);
    if (substream.info.lfe && count > 0) {
        (*kinds)[0] = OamdObjectKind::kLfeBed;
    }
    return count;
}

// Samples that one substream's metadata speaks of: with a multiplied frame rate a frame holds
// several coded frames that share its length (frame_rate_factor of ETSI TS 103 190-1).
std::int32_t coded_frame_length(const FrameWalk& walk, std::int32_t frame_rate_multiply) {
    return ac4_frame_length(walk.result->fs_index, walk.result->frame_rate_index) /
           std::max(frame_rate_multiply, 1);
}

// Number of object blocks from the object metadata substream. What isn't understood there does not
// end the frame.
int read_object_timing(FrameWalk& walk, const AnalysisSubstream& substream) {
    const SubstreamSegment& segment = substream.ext.oamd_segment;
    OamdSubstream oamd;
    OamdObjectFacts facts;
    facts.b_ndot = substream.ext.b_oamd_ndot;
    const std::uint32_t code = ac4analyze_parse_oamd_substream(
        walk.frame + segment.offset, static_cast<std::size_t>(segment.size), facts, &oamd, nullptr);
    if (code != kMetadataOk) {
        walk.result->status |= kStatusNotUnderstood;
    }
    return oamd.timing.num_obj_info_blocks;
}

int read_substream_metadata(FrameWalk& walk, const AnalysisPresentation& presentation,
                            std::int32_t place, AnalysisSubstream* substream) {
    if (is_read_enough(walk)) {
        return kAnalyzeOk;
    }
    const SubstreamInfo& info = substream->info;
    const std::int32_t role = static_cast<std::size_t>(place) < presentation.group_roles.size()
                                  ? presentation.group_roles[static_cast<std::size_t>(place)]
                                  : 0;
    std::array<OamdObjectKind, kMostObjects> kinds{};
    SubstreamFacts facts;
    facts.ch_mode = ch_mode_from_code(info.channel_mode);
    facts.sus_ver = info.sus_ver;
    facts.b_iframe = info.b_iframe;
    facts.b_associated = is_associated(info.content, role);
    facts.b_dialog = is_dialogue(info.content, role);
    facts.b_object_coded = info.audio_type == AudioType::kObjects;
    facts.b_ajoc = info.audio_type == AudioType::kAjoc;
    facts.frame_length = coded_frame_length(walk, presentation.frame_rate_multiply);
    if (facts.b_object_coded) {
        facts.objects.objects = std::span(kinds.data(), object_kinds(*substream, &kinds));
        facts.objects.num_obj_info_blocks = read_object_timing(walk, *substream);
        facts.objects.b_ndot = info.b_iframe;
        facts.objects.b_alternative = presentation.b_alternative;
    }
    const SubstreamSegment& segment = substream->ext.segment;
    return take_metadata_code(
        walk, ac4analyze_get_substream_metadata(
                  &walk.analyzer->frame_data, substream->slot, walk.frame + segment.offset,
                  static_cast<std::size_t>(segment.size), facts, &substream->metadata));
}

int analyze_substream(FrameWalk& walk, AnalysisPresentation* presentation, std::int32_t place) {
    std::int16_t& entry = presentation->substreams[static_cast<std::size_t>(place)];
    entry = kUnusedSlot;
    if (walk.next_slot >= static_cast<std::int32_t>(kAnalysisSubstreams)) {
        walk.result->status |= kStatusSubstreams;
        return kAnalyzeOk;
    }
    AnalysisSubstream& substream =
        walk.result->substreams[static_cast<std::size_t>(walk.next_slot)];
    substream = AnalysisSubstream{};
    Ac4TocReader* reader = walk.analyzer->toc_reader;
    int code = AC4_ANALYZE_ac4toc_reader_get_substream_info(reader, walk.presentation, place,
                                                            &substream.info);
    if (code == kTocOk) {
        code = AC4_ANALYZE_ac4toc_reader_get_substream_info_ext(reader, walk.presentation, place,
                                                                &substream.ext);
    }
    if (code != kTocOk) {
        return take_toc_code(walk, code);
    }
    substream.slot = walk.next_slot++;
    substream.presentation = walk.presentation;
    entry = static_cast<std::int16_t>(substream.slot);
    map_substream(walk, substream);
    list_in_group(walk, substream);
    check_language(walk, substream.info.content);
    if (presentation->frame_rate_fraction >= 2) {
        walk.result->status |= kStatusFraction;
        return kAnalyzeOk;
    }
    return read_substream_metadata(walk, *presentation, place, &substream);
}

int read_emdf_segment(FrameWalk& walk, std::int32_t slot, const SubstreamSegment& segment) {
    if (is_read_enough(walk)) {
        return kAnalyzeOk;
    }
    EmdfContext context;
    return take_metadata_code(walk,
                              ac4analyze_parse_emdf_payloads_substream(
                                  &walk.analyzer->frame_data, slot, walk.frame + segment.offset,
                                  static_cast<std::size_t>(segment.size), &context));
}

// Whether an added EMDF substream was named before, as the presentation's own or as an added one.
bool is_named_before(const EmdfInfo& emdf, std::size_t added) {
    const std::int32_t index = emdf.added[added].substream_index;
    const auto* const end = emdf.added.data() + added;
    return index == emdf.own.substream_index ||
           std::any_of(emdf.added.data(), end, [index](const EmdfSubstream& other) {
               return other.substream_index == index;
           });
}

// Payloads of the presentation's own EMDF substreams go with its first substream. Each is read
// once, however often it is named: a frame must not cost many times its size.
int analyze_emdf(FrameWalk& walk, AnalysisPresentation* presentation) {
    EmdfInfo emdf;
    const int code = AC4_ANALYZE_ac4toc_reader_get_emdf_info(walk.analyzer->toc_reader,
                                                             walk.presentation, &emdf);
    if (code != kTocOk) {
        return take_toc_code(walk, code);
    }
    presentation->emdf_substreams = emdf.added;
    const std::int32_t slot =
        presentation->n_substreams > 0 ? presentation->substreams[0] : kUnusedSlot;
    int result = read_emdf_segment(walk, slot, emdf.own_segment);
    for (std::size_t i = 0; i < static_cast<std::size_t>(emdf.count) && result == kAnalyzeOk; ++i) {
        if (!is_named_before(emdf, i)) {
            result = read_emdf_segment(walk, slot, emdf.added_segments[i]);
        }
    }
    return result;
}

int read_presentation_substream(FrameWalk& walk, const PresentationInfo& info,
                                const PresentationInfoExt& ext,
                                AnalysisPresentation* presentation) {
    if (is_read_enough(walk)) {
        return kAnalyzeOk;
    }
    PresentationFacts facts;
    facts.b_alternative = ext.b_alternative;
    facts.b_pres_ndot = ext.b_pres_ndot;
    facts.n_substreams = info.substream_total;
    facts.n_substream_groups = info.n_substream_groups_used;
    facts.ch_mode = ch_mode_from_code(info.channel_mode);
    facts.core_ch_mode = core_ch_mode_from_code(info.core_channel_mode);
    facts.b_4_back_channels_present = ext.b_4_back_channels_present;
    facts.top_channel_pairs = ext.top_channel_pairs;
    facts.b_objects = info.has_objects;
    facts.frame_length = coded_frame_length(walk, info.frame_rate_multiply);
    const SubstreamSegment& segment = info.presentation_substream;
    return take_metadata_code(
        walk, ac4analyze_parse_ac4_presentation_substream(
                  &walk.analyzer->frame_data, walk.presentation, walk.frame + segment.offset,
                  static_cast<std::size_t>(segment.size), facts, &presentation->metadata));
}

int analyze_presentation(FrameWalk& walk) {
    AnalysisPresentation& presentation =
        walk.result->presentations[static_cast<std::size_t>(walk.presentation)];
    presentation = AnalysisPresentation{};
    Ac4TocReader* reader = walk.analyzer->toc_reader;
    PresentationInfo info;
    PresentationInfoExt ext;
    int code = AC4_ANALYZE_ac4toc_reader_get_presentation_info(reader, walk.analyzer->toc,
                                                               walk.presentation, &info);
    if (code == kTocOk) {
        code = AC4_ANALYZE_ac4toc_reader_get_presentation_info_ext(reader, walk.analyzer->toc,
                                                                   walk.presentation, &ext);
    }
    if (code != kTocOk) {
        return take_toc_code(walk, code);
    }
    copy_presentation(info, &presentation);
    copy_presentation_ext(ext, &presentation);
    apply_limits(walk, &presentation);
    if (walk.result->bitstream_version == kGroupSyntaxVersion) {
        fill_groups(walk, presentation);
    }
    int result = kAnalyzeOk;
    for (std::int32_t i = 0; i < presentation.n_substreams && result == kAnalyzeOk; ++i) {
        result = analyze_substream(walk, &presentation, i);
    }
    if (result == kAnalyzeOk) {
        result = analyze_emdf(walk, &presentation);
    }
    return result == kAnalyzeOk ? read_presentation_substream(walk, info, ext, &presentation)
                                : result;
}

}  // namespace

int analyze_presentations(Ac4Analyzer* analyzer, const std::uint8_t* frame,
                          AnalysisRecord* result) {
    FrameWalk walk;
    walk.analyzer = analyzer;
    walk.frame = frame;
    walk.result = result;
    analyzer->frame_data.bits_read = 0;
    for (; walk.presentation < result->n_presentations; ++walk.presentation) {
        const int analyzed = analyze_presentation(walk);
        if (analyzed != kAnalyzeOk) {
            return analyzed;
        }
    }
    return kAnalyzeOk;
}

std::uint32_t toc_status(int code) {
    switch (code) {
        case kTocOk:
            return 0;
        case kTocLimit:
            return kStatusTocLimit;
        case kTocUnsupported:
            return kStatusTocUnsupported;
        default:
            return kStatusTocOther;
    }
}

}  // namespace mediasplit
