#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/ac4_metadata_builder.h"

namespace mediasplit {

// Writes AC-4 frames from descriptions: any table of contents of bitstream versions 0, 1 and 2 with
// its substreams, following the syntax tables of ETSI TS 103 190-1 and -2 with no code of the
// readers. What the description says is written, whether it makes sense or not.

using Ac4Bytes = std::vector<std::uint8_t>;
using OptionalFlag = std::optional<bool>;

// channel_mode prefix codes by layout.
namespace ac4_mode {
inline constexpr const char* kMono = "0";
inline constexpr const char* kStereo = "10";
inline constexpr const char* k30 = "1100";
inline constexpr const char* k50 = "1101";
inline constexpr const char* k51 = "1110";
inline constexpr const char* k70Back = "1111000";
inline constexpr const char* k71Back = "1111001";
inline constexpr const char* k70Wide = "1111010";
inline constexpr const char* k71Wide = "1111011";
inline constexpr const char* k70Top = "1111100";
inline constexpr const char* k71Top = "1111101";
inline constexpr const char* k704 = "11111100";
inline constexpr const char* k714 = "11111101";
inline constexpr const char* k904 = "111111100";
inline constexpr const char* k914 = "111111101";
inline constexpr const char* k222 = "111111110";
inline constexpr const char* kEscape = "111111111";  // behind it variable_bits(2)
}  // namespace ac4_mode

struct BuildContent {
    std::uint32_t classifier = 0;
    std::optional<std::string> language;
    std::optional<std::pair<bool, std::uint32_t>> serialized;  // b_start_tag, chunk
};

struct BuildEmdf {
    std::uint32_t version = 0;
    std::uint32_t key_id = 0;
    std::optional<std::uint32_t> payloads_index;
    std::uint32_t primary_length = 0;  // code: 0, 8, 32 or 128 bits
    std::uint32_t secondary_length = 0;
    std::uint8_t protection = 0;  // repeated
};

// ac4_substream_info, _chan, _ajoc or _obj.
struct BuildSubstream {
    std::string mode = ac4_mode::kStereo;  // with its escape, if any
    std::optional<std::string> ajoc;       // in place of the mode: bits behind b_ajoc = 1
    std::optional<std::string> objects;    // in place of the mode: bits behind b_ajoc = 0
    OptionalFlag sf_multiplier;            // written at 48 kHz
    std::optional<std::string> bitrate;    // bits of bitrate_indicator
    OptionalFlag add_ch_base;
    std::string immersive;                // b_4_back, b_centre, top_channels of modes 11 to 14
    std::optional<BuildContent> content;  // versions 0 and 1
    std::vector<bool> iframes = {true};
    std::uint32_t index = 0;
    std::optional<std::uint32_t> hsf_index;  // written behind it
};

struct BuildGroup {
    bool substreams_present = true;
    bool hsf_ext = false;
    bool channel_coded = true;
    std::optional<std::pair<bool, std::uint32_t>> oamd;  // b_oamd_ndot, index
    std::vector<BuildSubstream> substreams = {BuildSubstream{}};
    std::optional<BuildContent> content;
};

struct BuildPresentation {
    std::optional<std::uint32_t> config;  // none: a single substream (group)
    std::uint32_t version = 1;
    std::uint32_t mdcompat = 0;
    std::optional<std::uint32_t> id;
    std::string rate_bits;  // frame_rate_multiply_info and frame_rate_fractions_info
    BuildEmdf emdf;
    OptionalFlag filter;  // b_enable_presentation
    bool multi_pid = false;
    std::vector<std::uint32_t> groups = {0};
    bool hsf_ext = false;                    // versions 0 and 1
    std::vector<BuildSubstream> substreams;  // versions 0 and 1
    std::uint32_t skip_bytes = 0;            // configs from 7 on
    bool pre_virtualized = false;
    std::optional<std::vector<BuildEmdf>> add_emdf;
    bool alternative = false;
    bool pres_ndot = true;
    std::uint32_t substream_index = 0;  // of the presentation substream
};

struct BuildFrame {
    std::uint32_t bitstream_version = 2;
    std::uint32_t sequence_counter = 1;
    std::optional<std::uint32_t> wait_frames;
    std::uint32_t br_code = 0;
    std::uint32_t fs_index = 1;
    std::uint32_t frame_rate_index = 13;
    bool iframe = true;
    std::uint32_t payload_base = 0;
    std::optional<std::uint32_t> short_program_id;
    std::optional<std::array<std::uint8_t, 16>> program_uuid;
    std::vector<BuildPresentation> presentations = {BuildPresentation{}};
    std::vector<BuildGroup> groups = {BuildGroup{}};
    std::vector<Ac4Bytes> substreams = {Ac4Bytes(8, 0)};
    bool size_present = true;                      // for a single substream
    std::vector<std::uint32_t> substream_sizes;    // in place of the true ones
    std::optional<std::uint32_t> substream_count;  // in place of the true one
};

MetadataBits write_emdf_info(const BuildEmdf& emdf);
MetadataBits write_content_type(const std::optional<BuildContent>& content);
MetadataBits write_group(const BuildGroup& group, std::uint32_t fs_index);

// The table of contents up to substream_index_table, not aligned.
MetadataBits write_toc_head(const BuildFrame& frame);
// The whole table, aligned.
MetadataBits write_toc(const BuildFrame& frame);
// raw_ac4_frame.
Ac4Bytes write_ac4_frame(const BuildFrame& frame);
// ac4_syncframe around a raw frame, with the 24-bit size if asked for or needed.
Ac4Bytes write_syncframe(const Ac4Bytes& frame, bool with_crc = false, bool long_size = false);

// Frames that several tests and benchmarks start from.
// One stereo presentation of `audio_bytes` with its presentation substream.
BuildFrame simple_stereo_frame(std::size_t audio_bytes = 40);
// 5.1 main and stereo dialogue in two groups, with the two alone and mixed.
BuildFrame main_and_dialogue_frame(std::size_t audio_bytes = 40);
// `count` presentations that take turns over `groups` groups.
BuildFrame many_presentations_frame(std::uint32_t count, std::uint32_t groups);

}  // namespace mediasplit
