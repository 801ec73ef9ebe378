// What a demultiplexer is told about its stream by the HLS master playlist.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace mediasplit {

// A plain value: each demultiplexer works on a copy of its own.
struct ManifestContext {
    std::optional<std::string> codecs;
    std::optional<std::string> supplemental_codecs;  // SUPPLEMENTAL-CODECS
    std::optional<std::string> video_range;          // VIDEO-RANGE
    std::optional<std::string> req_video_layout;     // REQ-VIDEO-LAYOUT
    std::int32_t hls_version = 0;
    std::uint32_t has_renditions = 0;  // 1: a variant with linked renditions, or an I-frame stream
    std::uint32_t rendition_index = 0;
    std::uint32_t stream_index = 0;
    std::uint32_t first_duplicate_index = 0;
    std::uint32_t second_duplicate_index = 0;
    std::optional<std::string> duplicate_index_text;
    std::uint32_t channels_parsed = 0;
    std::optional<std::string> channels_text;  // CHANNELS of the rendition
    std::uint32_t channel_count = 0;
    std::uint32_t channels_have_identifier = 0;
    std::uint32_t channels_joc = 0;
    std::uint32_t channels_imsa = 0;
    std::uint32_t channels_none = 0;
    std::uint32_t found_channels = 0;
    std::uint32_t found_channels_valid = 0;
    std::uint32_t found_channels_max = 0;
    std::uint32_t found_joc = 0;
    std::uint32_t found_imsa = 0;
    std::uint32_t is_iframe_stream = 0;  // 1: from an #EXT-X-I-FRAME-STREAM-INF
    std::optional<std::string> bandwidth;
    std::optional<std::string> group_id;
    std::optional<std::string> language;
    std::optional<std::string> variant_codecs;
    std::optional<std::string> duplicate_codecs_1;
    std::optional<std::string> duplicate_codecs_2;
    std::uint32_t audio_only = 0;  // 1: only audio codecs, and an AUDIO group
};

}  // namespace mediasplit
