#include "ac4/toc_reader/object_syntax.h"

#include <array>
#include <bit>

#include "ac4/oamd/common_data.h"
#include "ac4/oamd/prog_assign.h"

namespace mediasplit {
namespace {

// Objects by n_objects_code, the LFE not counted; the other codes are reserved.
constexpr std::array<std::int32_t, 5> kObjectsOfCode = {0, 1, 2, 3, 5};

void read_isf(TocParser& parser, ObjectAssignment* assignment) {
    assignment->isf_config = static_cast<std::int32_t>(read_field(parser.in, 3));
    assignment->isf_objects =
        oamd_isf_object_count(static_cast<std::uint32_t>(assignment->isf_config));
}

void read_masks(TocParser& parser, ObjectAssignment* assignment) {
    if (read_flag(parser.in)) {
        assignment->nonstd_mask = read_field(parser.in, 17);
    } else {
        assignment->std_mask = read_field(parser.in, 10);
        assignment->nonstd_mask = oamd_mask_from_std(assignment->std_mask);
    }
    assignment->bed_channels = AC4_ANALYZE_oamdi_get_bed_channels_count(assignment->nonstd_mask);
}

void read_assign_code(TocParser& parser, bool with_lfe, ObjectAssignment* assignment) {
    assignment->nonstd_mask = oamd_mask_from_code(read_field(parser.in, 3), with_lfe);
    assignment->bed_channels = AC4_ANALYZE_oamdi_get_bed_channels_count(assignment->nonstd_mask);
}

void read_single_channels(TocParser& parser, std::uint32_t n_signals,
                          ObjectAssignment* assignment) {
    std::uint32_t n_bed_signals = 1;
    if (n_signals > 1) {
        n_bed_signals = read_field(parser.in, static_cast<int>(std::bit_width(n_signals - 1))) + 1;
    }
    for (std::uint32_t i = 0; i < n_bed_signals && parser_ok(parser); ++i) {
        assignment->nonstd_mask |= 1U << read_field(parser.in, 4);
    }
    assignment->bed_channels = static_cast<std::int32_t>(n_bed_signals);
}

}  // namespace

ObjectAssignment get_ac4toc_bed_dyn_obj_assignment(TocParser& parser, std::uint32_t n_signals) {
    ObjectAssignment assignment;
    assignment.dynamic_only = read_flag(parser.in);
    if (assignment.dynamic_only) {
        return assignment;
    }
    if (read_flag(parser.in)) {
        read_isf(parser, &assignment);
    } else if (read_flag(parser.in)) {
        read_assign_code(parser, false, &assignment);
    } else if (read_flag(parser.in)) {
        read_masks(parser, &assignment);
    } else {
        read_single_channels(parser, n_signals, &assignment);
    }
    return assignment;
}

void ac4toc_substream_info_obj_common_data_parse(TocParser& parser, SubstreamInfo* info,
                                                 SubstreamInfoExt* ext) {
    const std::uint32_t n_objects_code = read_field(parser.in, 3);
    ext->n_objects = n_objects_code < kObjectsOfCode.size() ? kObjectsOfCode[n_objects_code] : 0;
    ext->has_dynamic_objects = read_flag(parser.in);
    if (ext->has_dynamic_objects) {
        info->lfe = read_flag(parser.in);
        ext->n_objects += info->lfe ? 1 : 0;
        return;
    }
    ObjectAssignment assignment;
    ext->has_bed_objects = read_flag(parser.in);
    if (ext->has_bed_objects) {
        if (read_flag(parser.in)) {  // b_bed_start
            if (read_flag(parser.in)) {
                read_assign_code(parser, true, &assignment);
            } else {
                read_masks(parser, &assignment);
            }
        }
    } else {
        ext->has_isf_objects = read_flag(parser.in);
        if (!ext->has_isf_objects) {
            skip_field(parser.in, static_cast<std::int64_t>(read_field(parser.in, 4)) * 8);
        } else if (read_flag(parser.in)) {  // b_isf_start
            read_isf(parser, &assignment);
        }
    }
    ext->bed_channels = assignment.bed_channels;
    ext->isf_config = assignment.isf_config;
    info->channel_mask = assignment.std_mask;
    info->nonstd_mask = assignment.nonstd_mask;
}

void AC4_ANALYZE_ac4toc_oamd_reader_parse_common_data(FieldReader& in) {
    OamdCommonData dropped;
    oamd_read_common_data(in, dropped);
}

}  // namespace mediasplit
