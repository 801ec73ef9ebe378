#include "src/fmp4demuxer/track_driver.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <unordered_set>

#include "src/fmp4demuxer/checks/ac4_record.h"
#include "src/fmp4demuxer/checks/audio_entry.h"
#include "src/fmp4demuxer/checks/video_entry.h"
#include "src/fmp4demuxer/dash_context.h"
#include "src/fmp4demuxer/output_names.h"
#include "src/fmp4demuxer/outputs.h"
#include "src/log/logging.h"
#include "src/log/rule_families.h"
#include "src/records/manifest_context.h"
#include "src/util/language.h"
#include "src/util/text.h"
#include "src/video/codec_text.h"

namespace mediasplit {
namespace {

// The codecs that the manifest tells of the stream; none for a plain file.
OptText manifest_codecs(const Mp4Demuxer& demuxer) {
    if (demuxer.input_mode == kInputDash && demuxer.dash_context != nullptr) {
        return demuxer.dash_context->codecs;
    }
    if (demuxer.manifest_context != nullptr) {
        return demuxer.manifest_context->codecs;
    }
    return {};
}

bool has_manifest(const Mp4Demuxer& demuxer) {
    return demuxer.input_mode != kInputFile;
}

using EntryCheck = Status (*)(Mp4Demuxer& demuxer, std::uint32_t stream_index, bool entry_due);

Status check_aac_entry(Mp4Demuxer& demuxer, std::uint32_t /*stream_index*/, bool entry_due) {
    if (!entry_due || !has_manifest(demuxer)) {
        return Status::kOk;
    }
    return check(codec_is_contained(manifest_codecs(demuxer), "mp4a"), demuxer.loglist, 4492, {});
}

Status check_ac3_entry(Mp4Demuxer& demuxer, std::uint32_t /*stream_index*/, bool entry_due) {
    if (!entry_due || !has_manifest(demuxer)) {
        return Status::kOk;
    }
    return check(codec_is_contained(manifest_codecs(demuxer), "ac-3"), demuxer.loglist, 4493, {});
}

Status check_other_entry(Mp4Demuxer& demuxer, std::uint32_t stream_index, bool entry_due) {
    if (!entry_due) {
        return Status::kOk;
    }
    const Mp4Stream& stream = *demuxer.streams[stream_index];
    Status status = check((stream.box_flags & kBoxPrisma) == 0, demuxer.loglist, 2033, {});
    if (!has_manifest(demuxer)) {
        return status;
    }
    constexpr std::array<std::string_view, 4> kKnownCodecs{"ec-3", "ac-4", "pxa", "pxh"};
    const std::string_view codecs = manifest_codecs(demuxer).view();
    const bool names_known = std::any_of(
        kKnownCodecs.begin(), kKnownCodecs.end(),
        [&](std::string_view codec) { return codecs.find(codec) != std::string_view::npos; });
    return status | check(!names_known, demuxer.loglist, 4494, {}, codecs);
}

struct TrackKind {
    std::uint32_t stream_id;
    EntryCheck entry_check;
    const char* extension;
};

constexpr std::array<TrackKind, 10> kTrackKinds{{
    {kStreamIdAac, check_aac_entry, "aac"},
    {kStreamIdAvc1, avcSampleEntry, "264"},
    {kStreamIdAvc3, avcSampleEntry, "264"},
    {kStreamIdAc3, check_ac3_entry, "ac3"},
    {kStreamIdEc3, oap_sample_entry_validation, "ec3"},
    {kStreamIdHev1, hevcSampleEntry, "265"},
    {kStreamIdHvc1, hevcSampleEntry, "265"},
    {kStreamIdAc4, ac4SampleEntry, "ac4"},
    {kStreamIdAv01, av1SampleEntry, "obu"},
    {kStreamIdAv01Other, av1SampleEntry, "obu"},
}};

const TrackKind* find_kind(std::uint32_t stream_id) {
    const auto* const at =
        std::find_if(kTrackKinds.begin(), kTrackKinds.end(),
                     [&](const TrackKind& row) { return row.stream_id == stream_id; });
    return at == kTrackKinds.end() ? nullptr : &*at;
}

Status open_track(Mp4Demuxer& demuxer, std::uint32_t stream_index, const TrackKind* kind) {
    if (!demuxer.output_dir) {
        return Status::kOk;
    }
    if (kind == nullptr) {
        return open_output(demuxer, stream_index, track_file_name(demuxer, stream_index, "data"));
    }
    if (demuxer.out_files[stream_index] != nullptr) {
        return Status::kOk;
    }
    std::string name;
    const Status status = buildFullName_mp4(&name, &demuxer, stream_index, kind->extension,
                                            demuxer.streams[stream_index]->stream_type);
    if (has_failed(status) || name.empty()) {
        return status;
    }
    return status | open_output(demuxer, stream_index, name);
}

// Ids of the tracks that dependent tracks name as what they depend on.
std::unordered_set<std::uint32_t> base_layer_tracks(const Mp4Demuxer& demuxer) {
    std::unordered_set<std::uint32_t> ids;
    for (const auto& stream : demuxer.streams) {
        if ((stream->marks & kMarkVdep) != 0) {
            ids.insert(stream->depends_on_track);
        }
    }
    return ids;
}

}  // namespace

std::optional<ByteRange> byte_range_of(const SegmentSlot* slot) {
    if (slot == nullptr || slot->byte_range == nullptr) {
        return std::nullopt;
    }
    const ByteRangeText& text = *slot->byte_range;
    ByteRange range;
    range.start = str2ulonglong(text.offset);
    if (text.last_byte) {
        range.length = str2ulonglong(text.last_byte) + 1 - range.start;
    } else {
        range.length = str2ulonglong(text.length);
    }
    return range;
}

bool entry_checks_due(const SegmentSlot* slot) {
    return slot == nullptr || (slot->kind != kSlotIndexed && slot->kind != kSlotMedia &&
                               slot->kind != kSlotMediaRange);
}

bool is_selected(const Mp4Demuxer& demuxer, const Mp4Stream& stream) {
    return demuxer.track_filter == kAllTracks || demuxer.track_filter == stream.track_id;
}

bool selection_exists(const Mp4Demuxer& demuxer) {
    return demuxer.track_filter == kAllTracks ||
           std::any_of(demuxer.streams.begin(), demuxer.streams.end(),
                       [&](const auto& stream) { return is_selected(demuxer, *stream); });
}

Status check_languages(const Mp4Demuxer& demuxer) {
    Status status = Status::kOk;
    if (demuxer.input_mode != kInputDash || demuxer.dash_context == nullptr ||
        !demuxer.dash_context->language) {
        return status;
    }
    const std::string& expected = *demuxer.dash_context->language;
    for (const auto& stream : demuxer.streams) {
        const std::string_view lang(stream->lang.data());
        const bool known = is_terminological_code(lang);
        status |= check(known, demuxer.loglist, 4104, {}, lang);
        if (known) {
            status |= check(language_match(expected, lang) == 0, demuxer.loglist, 4093, {}, lang,
                            expected);
        }
    }
    return status;
}

Status open_tracks(Mp4Demuxer& demuxer, bool entry_due) {
    Status status = Status::kOk;
    std::uint32_t ac4_tracks = 0;
    const std::unordered_set<std::uint32_t> base_layers = base_layer_tracks(demuxer);
    for (std::uint32_t index = 0; index < demuxer.streams.size(); ++index) {
        const Mp4Stream& stream = *demuxer.streams[index];
        // The base layer of a dependent track is neither checked nor written.
        if (!is_selected(demuxer, stream) ||
            ((stream.marks & kMarkVdep) == 0 && base_layers.count(stream.track_id) != 0)) {
            continue;
        }
        const TrackKind* kind = find_kind(stream.stream_id);
        ac4_tracks += stream.stream_id == kStreamIdAc4 ? 1 : 0;
        status |= kind != nullptr ? kind->entry_check(demuxer, index, entry_due)
                                  : check_other_entry(demuxer, index, entry_due);
        status |= open_track(demuxer, index, kind);
    }
    if (has_checkpoint_set(demuxer.loglist, kAc4Rules)) {
        status |= check(ac4_tracks <= 1, demuxer.loglist, 4396, {});
    }
    return status;
}

}  // namespace mediasplit
