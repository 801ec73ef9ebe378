// What a playlist says (RFC 8216), kept as text until it is used.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "src/records/segment_slot.h"

namespace mediasplit {

// What the URI of an #EXT-X-KEY begins with that is the key's id, in Base64.
inline constexpr std::string_view kDataKey = "data:text/plain;base64,";

// One #EXT-X-MEDIA (RFC 8216 4.3.4.1). Texts "with quotes" stand as behind the "=".
struct MediaRendition {
    std::optional<std::string> type;  // with quotes
    std::optional<std::string> uri;   // absolute
    std::optional<std::string> uri_as_written;
    std::optional<std::string> group_id;
    std::optional<std::string> language;
    std::optional<std::string> assoc_language;
    std::optional<std::string> name;
    std::optional<std::string> default_;         // DEFAULT, with quotes
    std::optional<std::string> autoselect;       // with quotes
    std::optional<std::string> forced;           // with quotes
    std::optional<std::string> instream_id;      // with quotes
    std::optional<std::string> characteristics;  // with quotes
    std::optional<std::string> channels;

    // Set by master_manifest_validation.
    std::optional<std::string> codecs;  // audio codecs of the streams that name the group
    std::uint32_t enabled = 0;          // 1: to be followed
    std::uint32_t group = 0;            // timing group from 1, or 0
    std::uint32_t index = 0;            // place among the #EXT-X-MEDIA lines (by the reader)
    std::uint32_t stream_index = 0;     // of the last stream that named the group
};

// One #EXT-X-STREAM-INF or #EXT-X-I-FRAME-STREAM-INF (RFC 8216 4.3.4.2, 4.3.4.3).
struct VariantStream {
    std::optional<std::string> uri;             // absolute
    std::optional<std::string> uri_as_written;  // none for an I-frame stream
    std::optional<std::string> bandwidth;       // with quotes, as the next but the codecs
    std::optional<std::string> average_bandwidth;
    std::optional<std::string> codecs;
    std::optional<std::string> supplemental_codecs;
    std::optional<std::string> resolution;  // with quotes, down to req_video_layout
    std::optional<std::string> frame_rate;  // none for an I-frame stream
    std::optional<std::string> hdcp_level;
    std::optional<std::string> allowed_cpc;
    std::optional<std::string> video_range;
    std::optional<std::string> req_video_layout;
    std::optional<std::string> audio;  // none for an I-frame stream
    std::optional<std::string> video;
    std::optional<std::string> subtitle;         // none for an I-frame stream
    std::optional<std::string> closed_captions;  // with quotes; none for an I-frame stream

    // Set by master_manifest_validation.
    std::uint32_t enabled = 0;         // 1: to be followed
    std::uint32_t audio_only = 0;      // 1: only audio codecs, and an AUDIO group
    std::uint32_t has_renditions = 0;  // 1: an enabled rendition has the GROUP-ID of AUDIO
    std::uint32_t group = 0;           // timing group from 1, or 0
    std::uint32_t merged = 0;          // 1: counts as part of an earlier stream
    std::uint32_t index = 0;           // place among the lines of its kind (by the reader)
    std::uint32_t first_duplicate_index = 0;
    std::uint32_t second_duplicate_index = 0;
    std::string duplicate_index_text;           // "index", then ", n" for each duplicate
    std::optional<std::string> variant_codecs;  // CODECS before the duplicates' were added
    std::optional<std::string> duplicate_codecs_1;
    std::optional<std::string> duplicate_codecs_2;
};

// A master or media playlist.
struct PlaylistRecord {
    std::optional<std::string> url;  // the name given to parse_file
    std::uint32_t is_master = 0;     // 1: there is an #EXT-X-STREAM-INF
    std::uint32_t has_ac4 = 0;       // bit 0 set by master_manifest_validation
    std::optional<std::string> master_version;
    std::vector<MediaRendition> media;
    std::vector<VariantStream> streams;
    std::vector<VariantStream> iframes;
    std::optional<std::string> version;  // of a media playlist
    std::optional<std::string> target_duration;
    std::optional<std::string> media_sequence;
    std::optional<std::string> playlist_type;
    std::uint32_t independent_segments = 0;  // 1: the tag was seen; the next two likewise
    std::uint32_t iframes_only = 0;
    std::uint32_t has_discontinuity = 0;
    std::vector<SegmentSlot> slots;
    double total_ms = 0;        // media handled so far, kept by the stream's worker
    std::time_t load_time = 0;  // when the worker read the playlist
};

}  // namespace mediasplit
