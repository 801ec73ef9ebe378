// "ac-4" sample entries with their "dac4" box (ETSI TS 103 190-1 Annex E, ETSI TS 103 190-2
// Annex E).
#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <unordered_set>

#include "src/fmp4demuxer/checks/ac4_dash.h"
#include "src/fmp4demuxer/checks/ac4_playlist.h"
#include "src/fmp4demuxer/checks/ac4_record.h"
#include "src/fmp4demuxer/checks/audio_entry.h"
#include "src/fmp4demuxer/checks/manifest_records.h"
#include "src/log/logging.h"
#include "src/log/rule_families.h"

namespace mediasplit {
namespace {

// --- The sample entry ----------------------------------------------------------------------------

struct EntryRule {
    MessageId<> id;
    bool (*holds)(const Mp4Stream& stream);
};

constexpr EntryRule kEntryRules[] = {
    {4402, has_ac4_config},
    {4403, [](const Mp4Stream& stream) { return stream.stream_type == kStreamAudio; }},
    {4404, [](const Mp4Stream& stream) { return (stream.marks & kMarkSmhd) != 0; }},
    {4405, [](const Mp4Stream& stream) { return stream.audio_reserved == 0; }},
    {4408, [](const Mp4Stream& stream) { return stream.audio_sample_size == 16; }},
};

// --- The box -------------------------------------------------------------------------------------

constexpr std::uint32_t kEveryDelivery = 0;

struct BoxRule {
    MessageId<> id;
    std::uint32_t family;
    bool (*holds)(const DsiRecord& record);
};

bool is_alone(const DsiRecord& record) {
    return record.box_count <= 1;
}

template <typename Test>
bool all_presentations(const DsiRecord& record, const Test& test) {
    return std::all_of(record.presentations.begin(), record.presentations.end(), test);
}

bool reserved_bits_are_zero(const DsiRecord& record) {
    const auto is_clear = [](const DsiSubstream& substream) { return substream.reserved == 0; };
    return all_presentations(record, [&](const DsiPresentation& presentation) {
        return presentation.reserved_field_1 == 0 && presentation.reserved_field_2 == 0 &&
               std::all_of(presentation.groups.begin(), presentation.groups.end(),
                           [&](const DsiSubstreamGroup& group) {
                               return std::all_of(group.substreams.begin(), group.substreams.end(),
                                                  is_clear);
                           });
    });
}

// The record notes where such a presentation stands.
bool has_no_version_0(const DsiRecord& record) {
    return record.presentation_parse_end == 0;
}

bool is_ims(const DsiPresentation& presentation) {
    return presentation.version == kAc4ImsPresentation;
}

bool has_no_version_0_or_2(const DsiRecord& record) {
    return has_no_version_0(record) &&
           all_presentations(
               record, [](const DsiPresentation& presentation) { return !is_ims(presentation); });
}

// Immersive stereo goes with a presentation for decoders that don't know it.
bool ims_has_its_legacy(const DsiRecord& record) {
    const auto& all = record.presentations;
    return std::none_of(all.begin(), all.end(), is_ims) ||
           (record.n_presentations == 2 && all.size() == 2 && is_ims(all[0]) &&
            all[1].version == kAc4LegacyPresentation);
}

bool has_number(const DsiPresentation& presentation) {
    return ac4_presentation_number(presentation).has_value();
}

// Presentations with one number are a group; one without a number is a group of its own.
bool is_slim(const DsiRecord& record) {
    std::unordered_set<std::uint32_t> numbers;
    std::size_t groups = 0;
    for (const DsiPresentation& presentation : record.presentations) {
        const auto number = ac4_presentation_number(presentation);
        groups += !number || numbers.insert(*number).second ? 1 : 0;
    }
    return groups <= 1;
}

bool is_slim_or_numbered(const DsiRecord& record) {
    return is_slim(record) || all_presentations(record, has_number);
}

constexpr BoxRule kBoxRules[] = {
    {4406, kEveryDelivery, is_alone},
    {4407, kEveryDelivery, reserved_bits_are_zero},
    {4489, kEveryDelivery, has_no_version_0},
    {4412, kAc4OverTheTopRules, ims_has_its_legacy},
    {4413, kAc4BroadcastRules, has_no_version_0_or_2},
    {4401, kEveryDelivery, is_slim_or_numbered},
    {4400, kAc4OverTheTopRules, is_slim},
};

// --- Timing --------------------------------------------------------------------------------------

// Media timescales of a frame rate.
struct Timescales {
    std::uint32_t one;
    std::uint32_t other;
    std::string_view text;
};

constexpr Timescales k48000{48000, 48000, "48000"};
constexpr Timescales k240000{240000, 240000, "240000"};
constexpr Timescales kEither{48000, 240000, "48000 or 240000"};

// By frame_rate_index, at 48 kHz.
constexpr std::array<Timescales, 14> kTimescales = {
    k48000, k48000,  k48000, kEither, k48000,  k48000, k48000,
    k48000, k240000, k48000, k48000,  k240000, k48000, k48000,
};

Status check_timing(const Mp4Stream& stream, const DsiRecord& record, Loglist* loglist) {
    Status status = Status::kOk;
    if (const auto rate = ac4_base_rate(record)) {
        status |= check(stream.audio_sample_rate == *rate, loglist, 4410, {}, *rate,
                        stream.audio_sample_rate);
    }
    if (record.fs_index == 1 && record.frame_rate_index < kTimescales.size()) {
        const Timescales& allowed = kTimescales[record.frame_rate_index];
        status |= check(stream.time_scale == allowed.one || stream.time_scale == allowed.other,
                        loglist, 4409, {}, allowed.text, stream.time_scale);
    }
    return status;
}

// --- All of it -----------------------------------------------------------------------------------

Status check_entry(const Mp4Stream& stream, Loglist* loglist) {
    Status status = Status::kOk;
    for (const EntryRule& rule : kEntryRules) {
        status |= check(rule.holds(stream), loglist, rule.id, {});
    }
    return status;
}

Status check_box(const Mp4Stream& stream, const DsiRecord& record, Loglist* loglist) {
    Status status = check_timing(stream, record, loglist);
    for (std::size_t i = 0; i < record.presentations.size(); ++i) {
        const DsiPresentation& presentation = record.presentations[i];
        status |=
            check(presentation.pres_bytes >= presentation.presentation_bytes, loglist, 4411, {}, i);
    }
    for (const BoxRule& rule : kBoxRules) {
        if (rule.family == kEveryDelivery || has_checkpoint_set(loglist, rule.family)) {
            status |= check(rule.holds(record), loglist, rule.id, {});
        }
    }
    return status;
}

}  // namespace

Status ac4SampleEntry(Mp4Demuxer& demuxer, std::uint32_t stream_index, bool entry_due) {
    if (!entry_due) {
        return Status::kOk;
    }
    const Mp4Stream& stream = *demuxer.streams[stream_index];
    const DsiRecord* const record = has_ac4_config(stream) ? stream.ac4_config.get() : nullptr;
    Loglist* const loglist = demuxer.loglist;
    Status status = check_entry(stream, loglist);
    if (record != nullptr) {
        status |= check_box(stream, *record, loglist);
    }
    ManifestRecords manifest;
    status |= find_manifest_records(demuxer, manifest);
    if (manifest.has_dash()) {
        status |= check_ac4_representation(
            {*manifest.mpd, *manifest.adaptation_set, *manifest.representation, loglist},
            *manifest.period, record);
    }
    if (manifest.is_hls() && record != nullptr) {
        status |= check_ac4_playlist(*manifest.context, *record, loglist);
    }
    return status;
}

}  // namespace mediasplit
