#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace mediasplit {

// Results of the table of contents reader. All-zero means unset unless a member says otherwise.

inline constexpr int kTocOk = 0;
inline constexpr int kTocNoData = 1;       // the data ran out or a hash hook stopped the reading
inline constexpr int kTocLimit = 2;        // a value exceeds a limit
inline constexpr int kTocUnsupported = 3;  // version or channel mode that is not understood
inline constexpr int kTocBadIndex = 4;     // index out of range

inline constexpr std::size_t kMaxTocPresentations = 512;
inline constexpr std::size_t kMaxTocGroups = 128;
inline constexpr std::size_t kMaxTocSubstreams = 1024;
inline constexpr std::size_t kMaxPresentationGroups = 9;
inline constexpr std::size_t kMaxSelectedPresentations = 64;
inline constexpr std::size_t kMaxSelectedGroups = 64;
inline constexpr std::size_t kMaxRememberedGroups = 3;
inline constexpr std::size_t kMaxInlineSubstreams = 3;
inline constexpr std::size_t kMaxAddedEmdf = 16;
inline constexpr std::size_t kMaxTargets = 31;
inline constexpr std::size_t kMaxNameBytes = 32;
inline constexpr std::size_t kMaxLanguageBytes = 64;

inline constexpr std::int32_t kNoIndex = -1;

// The bitstream_version whose presentations refer to substream groups.
inline constexpr std::int32_t kGroupSyntaxVersion = 2;

// Stands beside a br_code, which may be 0 itself.
inline constexpr std::int32_t kBrCodePresent = 16;

// Where a substream lies in the frame, in bytes; size 0 for none.
struct SubstreamSegment {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
};

// content_type (ETSI TS 103 190-1 clause 4.3.3.7).
struct ContentType {
    bool b_content_type = false;
    std::int32_t content_classifier = 0;
    bool b_language_indicator = false;
    bool b_serialized_language_tag = false;
    bool b_start_tag = false;
    std::uint32_t language_tag_chunk = 0;
    std::uint32_t language_size = 0;  // bytes, at most 63
    std::array<char, kMaxLanguageBytes> language{};
};

// emdf_info without its protection bits.
struct EmdfSubstream {
    std::int32_t emdf_version = 0;
    std::int32_t key_id = 0;
    std::int32_t substream_index = kNoIndex;  // of the payloads substream, if there is one
};

enum class ProgramIdKind : std::int32_t { kNone = 0, kShort = 1, kShortAndUuid = 2 };

struct TocInfo {
    std::int32_t bitstream_version = 0;
    std::int32_t fs_index = 0;
    std::int32_t frame_rate_index = 0;
    std::int32_t wait_frames_plus1 = 0;  // 0: none coded
    std::int32_t br_code = 0;            // value | kBrCodePresent, or 0: none coded
    std::int32_t bit_rate_mode = 0;      // a BitRateMode; keeps its last value
    std::int32_t rate_status = 0;
    std::uint64_t rate_mean = 0;  // bits per second
    std::uint64_t rate_peak = 0;  // bits per second
    bool b_iframe_global = false;
    std::int32_t n_presentations = 0;
    std::int32_t sequence_counter = 0;
    ProgramIdKind program_id_kind = ProgramIdKind::kNone;
    std::uint32_t short_program_id = 0;
    std::array<std::uint8_t, 16> program_uuid{};
};

struct TocTarget {
    std::int32_t target_level = 0;
    std::int32_t target_device_category = 0;
};

struct PresentationInfo {
    bool decodable = false;
    bool b_single_substream = false;  // a single substream (group)
    std::int32_t presentation_version_plus1 = 0;
    std::int32_t type_code = 0;
    std::int32_t mdcompat_plus1 = 0;            // 0: not coded (EMDF only)
    std::int32_t presentation_group_plus1 = 0;  // presentation_id + 1, 0: none
    bool b_hsf_ext = false;
    std::int32_t substream_count = 0;
    bool b_emdf = false;  // an EMDF payloads substream or additional EMDF substreams are named
    std::int32_t n_substream_groups_declared = 0;
    std::int32_t n_substream_groups_used = 0;
    bool b_pre_virtualized = false;
    std::int32_t presentation_substream_index = kNoIndex;
    SubstreamSegment presentation_substream;
    std::int32_t presentation_substream_group = kNoIndex;  // first group of the presentation
    std::int32_t frame_rate_multiply = 1;                  // 1, 2 or 4
    std::int32_t frame_rate_fraction = 1;                  // 1, 2 or 4
    std::int32_t channel_mode = 0;       // code, 0: not channel coded or no known layout
    std::int32_t core_channel_mode = 0;  // code, 0: none
    bool lfe = false;
    bool all_channel_coded = false;
    bool has_objects = false;
    std::int32_t max_group_objects = 0;
    std::int32_t substream_total = 0;
    std::uint32_t name_size = 0;
    std::array<char, kMaxNameBytes> presentation_name{};
    std::int32_t n_targets = 0;  // as coded; at most kMaxTargets are kept
    std::array<TocTarget, kMaxTargets> targets{};
};

// The rest of what a presentation says, for descriptor builders.
struct PresentationInfoExt {
    std::int32_t presentation_config = 0;  // -1 for a single substream (group)
    EmdfSubstream emdf;                    // the presentation's own emdf_info
    bool b_multi_pid = false;
    bool b_presentation_filter = false;
    bool b_enable_presentation = false;
    bool b_alternative = false;
    bool b_pres_ndot = false;
    bool b_add_emdf_substreams = false;
    std::int32_t n_add_emdf_substreams = 0;  // as coded
    std::uint32_t n_skip_bytes = 0;
    bool b_4_back_channels_present = false;
    bool b_centre_present = false;
    std::int32_t top_channel_pairs = 0;  // 0, 1 or 2
    std::int32_t group_count = 0;
    std::array<std::int32_t, kMaxPresentationGroups> groups{};
    std::array<std::int32_t, kMaxPresentationGroups> group_roles{};
};

enum class AudioType : std::int32_t { kChannels = 0, kAjoc = 1, kObjects = 2 };

struct SubstreamInfo {
    bool lfe = false;
    std::int32_t channel_count = 0;
    std::uint32_t channel_mask = 0;  // standard bed channels, 10 bits
    std::uint32_t nonstd_mask = 0;   // single bed channels, 17 bits
    std::uint32_t channel_bitmap = 0;
    std::int32_t channel_mode = 0;   // code, 0 for objects
    std::int32_t sample_rate = 0;    // Hz
    std::int32_t sf_multiplier = 0;  // 0 base rate, 1 96 kHz, 2 192 kHz
    bool b_bitrate_info = false;
    std::int32_t bitrate_indicator = 0;  // 0 to 19
    bool add_ch_base = false;
    ContentType content;  // of the group for bitstream_version 2
    AudioType audio_type = AudioType::kChannels;
    bool b_iframe = false;  // b_iframe or b_audio_ndot of the first frame
    std::int32_t sus_ver = 0;
    bool b_4_back_channels_present = false;
    bool b_centre_present = false;
    std::int32_t top_channels_present = 0;  // as coded
    std::int32_t substream_index = kNoIndex;
    std::int32_t hsf_substream_index = kNoIndex;
    std::int32_t group = kNoIndex;  // substream group, none before version 2
    std::int32_t index_in_group = 0;
};

// Bed and object facts and the places in the frame.
struct SubstreamInfoExt {
    SubstreamSegment segment;
    bool b_oamd_substream = false;
    bool b_oamd_ndot = false;
    std::int32_t oamd_substream_index = kNoIndex;
    SubstreamSegment oamd_segment;
    bool b_static_dmx = false;
    std::int32_t n_dmx_objects = 0;  // A-JOC downmix signals
    std::int32_t n_umx_objects = 0;  // A-JOC upmix signals
    std::int32_t n_objects = 0;      // all objects, LFE included
    bool has_bed_objects = false;
    bool has_dynamic_objects = false;
    bool has_isf_objects = false;
    std::int32_t isf_config = 0;
    std::int32_t bed_channels = 0;
};

// One ac4_substream_group_info (ETSI TS 103 190-2 clause 6.2.1.6) in sum.
struct GroupInfo {
    std::int64_t position = 0;             // bit position, 0: unknown
    std::int64_t substreams_position = 0;  // bit position of the first substream
    bool b_substreams_present = false;
    bool b_hsf_ext = false;
    bool b_channel_coded = false;
    std::uint32_t n_substreams = 0;
    bool b_oamd_substream = false;
    bool b_oamd_ndot = false;
    std::int32_t oamd_substream_index = kNoIndex;
    ContentType content;
    std::int64_t content_position = 0;  // bit position of b_content_type
    std::int32_t common_code = 0;       // the channel mode code of all substreams, 0: they differ
    std::uint32_t channel_bitmap = 0;   // of all substreams together
    std::uint32_t core_bitmap = 0;      // of their core layouts
    bool core_known = true;             // false: objects without a core layout
    bool lfe = false;
    bool b_4_back_channels_present = false;
    bool b_centre_present = false;
    std::int32_t top_channel_pairs = 0;
    std::int64_t n_objects = 0;  // of all substreams
};

struct EmdfInfo {
    EmdfSubstream own;
    SubstreamSegment own_segment;
    std::int32_t count = 0;  // additional EMDF substreams, at most kMaxAddedEmdf
    std::array<EmdfSubstream, kMaxAddedEmdf> added{};
    std::array<SubstreamSegment, kMaxAddedEmdf> added_segments{};
};

// What a player needs to choose a presentation; filled once per changed table.
struct SelectedPresentation {
    bool decodable = false;
    std::int32_t presentation_version = 0;
    std::int32_t mdcompat = 0;
    std::int32_t type_code = 0;
    std::int32_t presentation_group_plus1 = 0;
    std::int32_t group_count = 0;  // remembered groups
    std::array<std::int32_t, kMaxRememberedGroups> groups{};
    std::int32_t substream_count = 0;  // inline substreams, before bitstream_version 2
    std::array<ContentType, kMaxInlineSubstreams> contents{};
};

struct SelectedGroup {
    bool present = false;
    bool b_substreams_present = false;
    bool b_hsf_ext = false;
    bool b_channel_coded = false;
    std::uint32_t n_substreams = 0;
    ContentType content;
};

struct SelectionRecord {
    std::int32_t n_presentations = 0;  // entries in use
    std::int32_t n_groups = 0;         // entries in use
    std::array<SelectedPresentation, kMaxSelectedPresentations> presentations{};
    std::array<SelectedGroup, kMaxSelectedGroups> groups{};
};

}  // namespace mediasplit
