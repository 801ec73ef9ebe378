#include "src/ac4analyze_impl/dsi_compare.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "src/log/logging.h"

namespace mediasplit {
namespace {

using Fields = DsiPresentationFields;
using Group = DsiSubstreamGroupFields;
using Substream = DsiSubstream;

constexpr std::uint32_t kMostPresentations = 64;
constexpr std::uint32_t kLastModeWithoutFlags = 3;

// A frame of a few bytes may name a long group in many presentations, and lack the ids of all. A
// tested condition counts 1, a finding what telling it takes. Twenty presentations of five groups
// of two substreams make 3,000 conditions: only a frame that was made to be slow has more than a
// frame's share, and all frames of a track together more than what its record has to spare.
constexpr std::uint32_t kWorkOfAFrame = 16 * 1024;
constexpr std::uint32_t kWorkOfAFinding = 128;

// A compared field: its message, its place, and of which records it is compared (always, if it
// isn't told). Whether it applies is asked of the stream's side. `Indices` are the numbers that the
// message tells ahead of the expected and the actual value.
template <typename Record, typename... Indices>
struct Row {
    using Id = MessageId<Indices..., std::uint32_t, std::uint32_t>;
    Id id;
    std::uint32_t Record::*field;
    bool (*applies)(const Record& reference) = nullptr;
};

using U32 = std::uint32_t;
using HeadRow = Row<DsiHead>;
using PresentationRow = Row<Fields, U32>;
using GroupRow = Row<Group, U32, U32>;
using SubstreamRow = Row<Substream, U32, U32, U32>;
using EmdfRow = Row<DsiEmdfSubstream, U32, U32>;

bool is_channel_coded(const Fields& reference) {
    return reference.b_presentation_channel_coded != 0;
}
bool has_mode_flags(const Fields& reference) {
    return is_channel_coded(reference) &&
           reference.dsi_presentation_ch_mode > kLastModeWithoutFlags;
}
bool core_differs(const Fields& reference) {
    return reference.b_presentation_core_differs != 0;
}
bool core_is_coded(const Fields& reference) {
    return reference.b_presentation_core_channel_coded != 0;
}
bool is_filtered(const Fields& reference) {
    return reference.b_presentation_filter != 0;
}
bool is_not_single(const Fields& reference) {
    return reference.presentation_config_v1 != kDsiConfigSingle;
}
bool has_coded_group_count(const Fields& reference) {
    return reference.presentation_config_v1 == kDsiConfigCoded;
}
bool has_other_config(const Fields& reference) {
    return reference.presentation_config_v1 > kDsiConfigCoded;
}
bool adds_emdf(const Fields& reference) {
    return reference.b_add_emdf_substreams != 0;
}
bool is_ajoc(const Substream& reference) {
    return reference.b_ajoc != 0;
}
bool is_dynamic_ajoc(const Substream& reference) {
    return is_ajoc(reference) && reference.b_static_dmx == 0;
}
bool has_content_type(const Group& reference) {
    return reference.b_content_type != 0;
}

constexpr HeadRow kTiming[] = {
    {4420, &DsiHead::fs_index},
    {4421, &DsiHead::frame_rate_index},
};
constexpr HeadRow kProgram[] = {
    {4424, &DsiHead::b_program_id},
    {4425, &DsiHead::short_program_id,
     [](const DsiHead& reference) { return reference.b_program_id != 0; }},
    {4426, &DsiHead::b_uuid},
};
constexpr PresentationRow kConfigRow = {4429, &Fields::presentation_config_v1};
constexpr PresentationRow kIdentity[] = {
    {4430, &Fields::mdcompat},
    {4431, &Fields::b_presentation_id},
};
constexpr PresentationRow kIdRow = {4432, &Fields::presentation_id};
constexpr PresentationRow kLayout[] = {
    {4433, &Fields::dsi_frame_rate_multiply_info},
    {4434, &Fields::dsi_frame_rate_fraction_info},
    {4435, &Fields::presentation_emdf_version},
    {4436, &Fields::presentation_key_id},
    {4437, &Fields::b_presentation_channel_coded},
    {4438, &Fields::dsi_presentation_ch_mode, is_channel_coded},
    {4439, &Fields::pres_b_4_back_channels_present, has_mode_flags},
    {4440, &Fields::pres_top_channel_pairs, has_mode_flags},
    {4441, &Fields::presentation_channel_mask_v1},
    {4442, &Fields::b_presentation_core_differs},
    {4443, &Fields::b_presentation_core_channel_coded, core_differs},
    {4444, &Fields::dsi_presentation_channel_mode_core, core_is_coded},
    {4445, &Fields::b_presentation_filter},
    {4446, &Fields::b_enable_presentation, is_filtered},
    {4447, &Fields::n_filter_bytes, is_filtered},
};
constexpr PresentationRow kGroupCount[] = {
    {4449, &Fields::b_multi_pid, is_not_single},
    {4450, &Fields::n_substream_groups_minus2, has_coded_group_count},
};
constexpr GroupRow kGroupHead[] = {
    {4451, &Group::b_substreams_present},
    {4452, &Group::b_hsf_ext},
    {4453, &Group::b_channel_coded},
    {4454, &Group::n_substreams},
};
constexpr SubstreamRow kSampleRate = {4455, &Substream::dsi_sf_multiplier};
constexpr SubstreamRow kChannelMask = {4456, &Substream::dsi_substream_channel_mask};
constexpr SubstreamRow kObjects[] = {
    {4457, &Substream::b_ajoc},
    {4458, &Substream::b_static_dmx, is_ajoc},
    {4459, &Substream::n_dmx_objects_minus1, is_dynamic_ajoc},
    {4460, &Substream::n_umx_objects_minus1, is_ajoc},
};
constexpr SubstreamRow kObjectKinds[] = {
    {4461, &Substream::b_substream_contains_bed_objects},
    {4462, &Substream::b_substream_contains_dynamic_objects},
    {4463, &Substream::b_substream_contains_ISF_objects},
};
constexpr GroupRow kContent[] = {
    {4464, &Group::b_content_type},
    {4465, &Group::content_classifier, has_content_type},
};
constexpr PresentationRow kTail[] = {
    {4466, &Fields::n_skip_bytes, has_other_config},
    {4467, &Fields::b_pre_virtualized},
    {4468, &Fields::b_add_emdf_substreams},
    {4469, &Fields::n_add_emdf_substreams, adds_emdf},
};
constexpr EmdfRow kEmdf[] = {
    {4470, &DsiEmdfSubstream::emdf_version},
    {4471, &DsiEmdfSubstream::substream_key_id},
};
constexpr PresentationRow kBitRateRow = {4472, &Fields::b_presentation_bitrate_info};

// One comparison under way.
class Comparison {
public:
    Comparison(const ReferenceDsi& reference, DsiRecord& record, bool iframe, Loglist* loglist)
        : reference_(reference), record_(record), iframe_(iframe), loglist_(loglist) {}

    Status run() {
        if (heads()) {
            if (reference_.named_substreams > kMostNamedSubstreams) {
                work_ = most_work();  // not all of the frame is described
            }
            for (U32 p = 0; p < record_.n_presentations && !asks_too_much(); ++p) {
                if (!presentation(p)) {
                    break;
                }
            }
        }
        settle();
        return status_;
    }

private:
    [[nodiscard]] U32 most_work() const { return kWorkOfAFrame + record_.spare_work; }
    [[nodiscard]] bool asks_too_much() const { return work_ >= most_work(); }

    void settle() {
        if (work_ <= kWorkOfAFrame) {
            return;
        }
        record_.spare_work -= std::min(record_.spare_work, work_ - kWorkOfAFrame);
        if (record_.spare_work == 0) {
            note_remark(
                "Frames of an AC-4 track were no longer compared with its box: they ask for too "
                "much.");
        }
    }

    template <typename... Values>
    bool hold(bool holds, MessageId<std::type_identity_t<Values>...> id, const Values&... values) {
        work_ += holds ? 1 : kWorkOfAFinding;
        status_ |= check<Values...>(holds, loglist_, id, {}, values...);
        return holds;
    }

    template <typename Record, typename... Indices>
    bool row(const Row<Record, Indices...>& row, const std::type_identity_t<Record>& reference,
             const std::type_identity_t<Record>& box, std::type_identity_t<Indices>... indices) {
        if (row.applies != nullptr && !row.applies(reference)) {
            return true;
        }
        const U32 expected = reference.*row.field;
        const U32 actual = box.*row.field;
        return hold<Indices..., U32, U32>(expected == actual, row.id, indices..., expected, actual);
    }

    template <typename Record, std::size_t kCount, typename... Indices>
    void rows(const Row<Record, Indices...> (&table)[kCount],
              const std::type_identity_t<Record>& reference,
              const std::type_identity_t<Record>& box, std::type_identity_t<Indices>... indices) {
        for (const Row<Record, Indices...>& each : table) {
            row(each, reference, box, indices...);
        }
    }

    // False where the comparison ends.
    bool heads() {
        hold(record_.dsi_version == kDsiVersion, 4415);
        if (!hold<U32, U32>(reference_.bitstream_version == record_.bitstream_version, 4419,
                            reference_.bitstream_version, record_.bitstream_version)) {
            return false;
        }
        rows(kTiming, reference_, record_);
        if (!hold<U32>(reference_.n_presentations <= kMostPresentations, 4422,
                       kMostPresentations) ||
            !hold<U32, U32>(reference_.n_presentations == record_.n_presentations, 4423,
                            reference_.n_presentations, record_.n_presentations)) {
            return false;
        }
        rows(kProgram, reference_, record_);
        if (reference_.b_uuid != 0) {
            hold(reference_.program_uuid == record_.program_uuid, 4427);
        }
        return true;
    }

    // False where the comparison ends.
    bool presentation(U32 p) {
        const DsiPresentation& box = dsi_entry(record_.presentations, p);
        const DsiPresentation* reference = nullptr;
        if (record_.n_presentations == 1) {
            reference = &dsi_entry(reference_.presentations, 0);
            if (!hold<U32>(reference->version == box.version, 4418, p)) {
                return false;
            }
        } else {
            constexpr U32 kSet = 1;
            if (!hold<U32, U32, U32>(box.b_presentation_id == kSet, 4428, p, kSet,
                                     box.b_presentation_id)) {
                return true;
            }
            reference = find(box);
            if (!hold<U32>(reference != nullptr, 4417, p)) {
                return true;
            }
        }
        return reference->version == 0 || fields(*reference, box, p);
    }

    const DsiPresentation* find(const DsiPresentation& box) {
        for (U32 r = 0; r < reference_.n_presentations; ++r) {
            const DsiPresentation& reference = dsi_entry(reference_.presentations, r);
            hold(reference.b_presentation_id != 0, 4484);
            if (matches(reference, box)) {
                return &reference;
            }
        }
        return nullptr;
    }

    static bool matches(const DsiPresentation& reference, const DsiPresentation& box) {
        if (reference.version != box.version ||
            reference.b_extended_presentation_id != box.b_extended_presentation_id) {
            return false;
        }
        return box.b_extended_presentation_id != 0
                   ? reference.extended_presentation_id == box.extended_presentation_id
                   : reference.presentation_id == box.presentation_id;
    }

    bool fields(const DsiPresentation& reference, const DsiPresentation& box, U32 p) {
        if (!row(kConfigRow, reference, box, p)) {
            return false;
        }
        rows(kIdentity, reference, box, p);
        if (reference.b_presentation_id != 0 && reference.b_extended_presentation_id == 0 &&
            box.b_extended_presentation_id == 0) {
            row(kIdRow, reference, box, p);
        }
        rows(kLayout, reference, box, p);
        if (is_filtered(reference)) {
            hold<U32>(same_filter(reference, box), 4448, p);
        }
        rows(kGroupCount, reference, box, p);
        const U32 n_groups = std::min(dsi_group_count(reference), dsi_group_count(box));
        for (U32 g = 0; g < n_groups && !asks_too_much(); ++g) {
            group(dsi_entry(reference.groups, g), dsi_entry(box.groups, g), g, p);
        }
        rows(kTail, reference, box, p);
        emdf_substreams(reference, box, p);
        row(kBitRateRow, reference, box, p);
        sphere_indicator(reference, box, p);
        return true;
    }

    // A different length is a finding of its own: the bytes that both sides have are compared.
    static bool same_filter(const DsiPresentation& reference, const DsiPresentation& box) {
        const std::size_t size = std::min(reference.filter_data.size(), box.filter_data.size());
        return std::memcmp(reference.filter_data.data(), box.filter_data.data(), size) == 0;
    }

    // Substreams that only one side has are told by n_substreams.
    void group(const DsiSubstreamGroup& reference, const DsiSubstreamGroup& box, U32 g, U32 p) {
        rows(kGroupHead, reference, box, g, p);
        const bool channel_coded = reference.b_channel_coded != 0;
        const U32 n_substreams = std::min(reference.n_substreams, box.n_substreams);
        for (U32 s = 0; s < n_substreams; ++s) {
            substream(dsi_entry(reference.substreams, s), dsi_entry(box.substreams, s),
                      channel_coded, {s, g, p});
        }
        rows(kContent, reference, box, g, p);
    }

    struct Place {
        U32 s;
        U32 g;
        U32 p;
    };

    void substream(const Substream& reference, const Substream& box, bool channel_coded,
                   const Place& at) {
        row(kSampleRate, reference, box, at.s, at.g, at.p);
        if (channel_coded) {
            row(kChannelMask, reference, box, at.s, at.g, at.p);
        } else {
            rows(kObjects, reference, box, at.s, at.g, at.p);
        }
        rows(kObjectKinds, reference, box, at.s, at.g, at.p);
    }

    void emdf_substreams(const DsiPresentation& reference, const DsiPresentation& box, U32 p) {
        const U32 count = std::min(reference.n_add_emdf_substreams, box.n_add_emdf_substreams);
        for (U32 e = 0; e < count; ++e) {
            rows(kEmdf, dsi_entry(reference.emdf_substreams, e), dsi_entry(box.emdf_substreams, e),
                 e, p);
        }
    }

    // A box may announce for the whole track what not every frame has.
    void sphere_indicator(const DsiPresentation& reference, const DsiPresentation& box, U32 p) {
        const U32 expected = reference.orvel_sphere_indicator;
        const U32 actual = box.orvel_sphere_indicator;
        if (!is_channel_coded(reference)) {
            hold<U32, U32, U32>(expected == actual, 2049, p, expected, actual);
        } else if (iframe_) {
            hold<U32, U32, U32>(actual != 0 || expected == 0, 4473, p, expected, actual);
        }
        if (p < record_.presentations.size()) {
            record_.presentations[p].compared = true;
            record_.presentations[p].stream_orvel_sphere_indicator |= expected;
        }
    }

    const ReferenceDsi& reference_;
    DsiRecord& record_;
    bool iframe_;
    Loglist* loglist_;
    U32 work_ = 0;
    Status status_ = Status::kOk;
};

}  // namespace

Status ac4_Ac4SpecificBox_comp(const ReferenceDsi* reference, DsiRecord* record,
                               bool b_iframe_global, Loglist* loglist) {
    if (reference == nullptr || record == nullptr || record->presentation_parse_end != 0 ||
        record->spare_work == 0) {
        return Status::kOk;
    }
    return Comparison(*reference, *record, b_iframe_global, loglist).run();
}

Status ac4_check_sphere_indicators(const DsiRecord& record, Loglist* loglist) {
    Status status = Status::kOk;
    if (record.spare_work == 0) {
        return status;  // frames that weren't compared may have it
    }
    for (std::size_t p = 0; p < record.presentations.size(); ++p) {
        const DsiPresentation& presentation = record.presentations[p];
        if (presentation.orvel_sphere_indicator == 1 && presentation.compared) {
            status |=
                check(presentation.stream_orvel_sphere_indicator == 1, loglist, 4473, {},
                      static_cast<U32>(p), presentation.stream_orvel_sphere_indicator, U32{1});
        }
    }
    return status;
}

}  // namespace mediasplit
