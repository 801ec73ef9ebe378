#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "ac4/metadata/presentation_substream.h"
#include "ac4/metadata/substream_metadata.h"
#include "ac4/toc_reader/toc_records.h"

namespace mediasplit {

// What one AC-4 frame is found to be. The record is large: its owner keeps one and has every frame
// analyzed into it.

inline constexpr std::size_t kAnalysisPresentations = 64;
inline constexpr std::size_t kAnalysisSubstreams = 128;
inline constexpr std::size_t kAnalysisGroups = 64;
inline constexpr std::int32_t kUnusedSlot = -1;

// Bits of AnalysisRecord::status. Codes of the metadata readers appear as they are.
inline constexpr std::uint32_t kStatusSequenceRange = 1;  // sequence_counter above 1020
inline constexpr std::uint32_t kStatusSequenceBreak = 2;
inline constexpr std::uint32_t kStatusPresentations = 4;        // more than 64 presentations
inline constexpr std::uint32_t kStatusFraction = 8;             // metadata in pieces: not read
inline constexpr std::uint32_t kStatusEmdf = 16;                // more than 16 EMDF substreams
inline constexpr std::uint32_t kStatusNotUnderstood = 32;       // metadata of a substream
inline constexpr std::uint32_t kStatusSubstreamIndex = 128;     // index above 127
inline constexpr std::uint32_t kStatusNoIframe = 0x200;         // the stream starts elsewhere
inline constexpr std::uint32_t kStatusLanguage = 0x400;         // invalid language tag
inline constexpr std::uint32_t kStatusGroup = 0x800;            // substream group out of range
inline constexpr std::uint32_t kStatusSubstreams = 0x4000;      // too many substreams
inline constexpr std::uint32_t kStatusTocLimit = 0x5000;        // table of contents, code 2
inline constexpr std::uint32_t kStatusTocUnsupported = 0x6000;  // code 3
inline constexpr std::uint32_t kStatusTocOther = 0x7000;        // any other code

struct AnalysisPresentation {
    bool decodable = false;
    std::int32_t presentation_version = 0;
    std::int32_t mdcompat = 0;  // -1: not coded
    std::int32_t type_code = 0;
    std::int32_t presentation_config = 0;  // -1 for a single substream (group)
    std::int32_t channel_mode = 0;         // code, 0: not channel coded
    std::int32_t core_channel_mode = 0;    // code, 0: none
    std::int32_t presentation_group = 0;   // presentation_id + 1, 0: none
    bool b_hsf_ext = false;
    bool b_pre_virtualized = false;
    bool b_multi_pid = false;
    bool b_presentation_filter = false;
    bool b_enable_presentation = false;
    bool b_alternative = false;
    std::int32_t frame_rate_multiply = 0;  // 1, 2 or 4
    std::int32_t frame_rate_fraction = 0;  // 1, 2 or 4
    std::uint32_t n_skip_bytes = 0;
    std::int32_t n_substream_groups = 0;       // groups named
    std::int32_t n_substream_groups_used = 0;  // n_substream_groups of the standard
    std::array<std::int32_t, kMaxPresentationGroups> groups{};
    std::array<std::int32_t, kMaxPresentationGroups> group_roles{};
    std::int32_t n_substreams = 0;
    std::array<std::int16_t, kAnalysisSubstreams> substreams{};  // slots, -1 where none was left
    EmdfSubstream emdf;  // presentation_emdf_version and presentation_key_id
    bool b_add_emdf_substreams = false;
    std::int32_t n_emdf_substreams = 0;  // kept, at most 16
    std::array<EmdfSubstream, kMaxAddedEmdf> emdf_substreams{};
    bool b_4_back_channels_present = false;
    bool b_centre_present = false;
    std::int32_t top_channels_present = 0;  // pairs: 0, 1 or 2
    bool lfe = false;
    bool has_objects = false;
    std::uint32_t name_size = 0;
    std::array<char, kMaxNameBytes> presentation_name{};
    std::int32_t n_targets = 0;  // kept, at most 31
    std::array<TocTarget, kMaxTargets> targets{};
    std::int32_t presentation_substream_index = kNoIndex;
    PresentationMetadata metadata;  // of the presentation substream
};

struct AnalysisSubstream {
    std::int32_t slot = kUnusedSlot;  // its number, -1: not in use
    std::int32_t presentation = 0;
    SubstreamInfo info;
    SubstreamInfoExt ext;
    SubstreamMetadata metadata;
};

struct AnalysisGroup {
    bool present = false;
    bool b_substreams_present = false;
    bool b_hsf_ext = false;
    bool b_channel_coded = false;
    std::uint32_t n_substreams = 0;  // as coded
    std::uint32_t listed = 0;
    std::array<std::int16_t, kAnalysisSubstreams> substreams{};  // slots in group order
    bool b_content_type = false;
    std::int32_t content_classifier = 0;
    bool b_language_indicator = false;
    std::uint32_t language_size = 0;  // bytes
    std::array<char, kMaxLanguageBytes> language{};
};

// What a frame says of itself; cleared for each frame.
struct AnalysisHead {
    std::uint32_t status = 0;
    std::uint32_t sync_word = 0;   // 0xAC40 or 0xAC41 behind the framer, 0 for whole frames
    bool damaged = false;          // from the framer
    std::uint64_t frame_size = 0;  // bytes
    std::int32_t bitstream_version = 0;
    std::int32_t fs_index = 0;
    std::int32_t frame_rate_index = 0;
    std::int32_t wait_frames = -1;  // -1: not coded
    std::int32_t br_code = -1;      // -1: not coded
    std::int32_t bit_rate_mode = 0;
    std::int32_t rate_status = 0;
    std::uint64_t rate_mean = 0;  // bits per second
    std::uint64_t rate_peak = 0;  // bits per second
    bool b_iframe_global = false;
    std::int32_t frames_since_iframe = 0;   // the I-frame counted as 1
    std::int32_t last_iframe_distance = 0;  // frames between the last two I-frames
    std::int32_t n_presentations = 0;       // at most 64
    std::int32_t n_presentations_raw = 0;
    std::int32_t sequence_counter = 0;
    ProgramIdKind program_id_kind = ProgramIdKind::kNone;
    std::uint32_t short_program_id = 0;
    std::array<std::uint8_t, 16> program_uuid{};
    std::int32_t substream_count_total = 0;                         // entries of the map in use
    std::array<std::int16_t, kAnalysisSubstreams> substream_map{};  // slot by table index, or -1
};

struct AnalysisRecord : AnalysisHead {
    std::array<AnalysisPresentation, kAnalysisPresentations> presentations{};
    std::array<AnalysisSubstream, kAnalysisSubstreams> substreams{};
    std::array<AnalysisGroup, kAnalysisGroups> groups{};
};

}  // namespace mediasplit
