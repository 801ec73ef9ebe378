// The records of ISO base media files: a presentation, its tracks, their tables, sample entries and
// protection. A record in its initial state means "nothing read yet".
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "src/video/decoder_configs.h"

namespace mediasplit {

class OutputFile;
struct DashContext;
struct DecryptContext;
struct DsiRecord;
struct Loglist;
struct ManifestContext;
struct Ezxml;
struct OapParserState;
struct OutputSet;

inline constexpr std::uint32_t kMaxTracks = 256;

// A four-character code as a big-endian number.
constexpr std::uint32_t fourcc(const char (&text)[5]) {
    std::uint32_t code = 0;
    for (int i = 0; i < 4; ++i) {
        code = code << 8 | static_cast<unsigned char>(text[i]);
    }
    return code;
}

// How many children of each type a box has had. Linear in few types, ordered beyond (types
// can be chosen to collide in a hashed table).
struct SiblingCounts {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> few;
    std::map<std::uint32_t, std::uint32_t> many;

    // Counts one more box of the type; returns how many there were before it.
    std::uint32_t add(std::uint32_t type);
};

// One box under way. A parent outlives its children; what stays of a finished child is its count.
struct BoxNode {
    std::int64_t size = 0;   // payload bytes; for the root, the bytes to walk
    std::uint32_t type = 0;  // four-character code, 0 for one that isn't printable
    BoxNode* parent = nullptr;
    std::uint32_t child_count = 0;
    SiblingCounts children;
    std::uint32_t index = 0;  // earlier siblings of the same type
    std::uint32_t depth = 0;  // 0 for the root
};

struct Subsample {
    std::uint32_t clear_bytes = 0;
    std::uint32_t protected_bytes = 0;
};

// A `senc` row (ISO/IEC 23001-7 7.2). The bytes stand in the pools of its stream: `senc_iv` and
// `senc_subsamples` give them.
struct SencEntry {
    std::uint64_t iv_at = 0;
    std::uint64_t subsamples_at = 0;
    std::uint16_t subsample_count = 0;
    std::uint8_t iv_size = 0;
};

// The rows of one `senc` box: rows without any bytes of their own take no memory.
struct SencBlock {
    std::uint64_t first_row = 0;
    std::uint64_t row_count = 0;
    std::uint64_t first_entry = 0;
    std::uint64_t entry_count = 0;
};

struct Ec3Substream {
    std::uint32_t fscod = 0;
    std::uint32_t bsid = 0;
    std::uint32_t asvc = 0;
    std::uint32_t bsmod = 0;
    std::uint32_t acmod = 0;
    std::uint32_t lfeon = 0;
    std::uint32_t num_dep_sub = 0;
    std::uint32_t chan_loc = 0;
};

// EC3SpecificBox (ETSI TS 102 366 F.6).
struct Ec3Config {
    std::uint32_t ec3_datarate = 0;
    std::uint32_t ec3_ind_sub_stream_count = 0;
    std::array<Ec3Substream, 8> substreams;
    std::uint32_t flag_ec3_extension_type_a = 0;
    std::uint32_t complexity_index_type_a = 0;
    std::uint32_t parse_error = 0;
    std::uint32_t reserved_nonzero = 0;
    std::uint32_t channel_count = 0;
};

// Brands as big-endian numbers (ISO/IEC 14496-12 4.3).
struct BrandRecord {
    std::uint32_t major_brand = 0;
    std::uint32_t minor_version = 0;
    std::uint32_t num_compat_brands = 0;
    std::vector<std::uint32_t> compat_brands;
    std::set<std::uint32_t> listed;  // what compat_brands holds
};

// Marks of Mp4Stream::marks.
inline constexpr std::uint32_t kMarkVmhd = 1;
inline constexpr std::uint32_t kMarkSmhd = 2;
inline constexpr std::uint32_t kMarkVdep = 4;
inline constexpr std::uint32_t kMarkStss = 8;
inline constexpr std::uint32_t kMarkTrun = 16;
inline constexpr std::uint32_t kMarkColr = 32;

// Bits of Mp4Stream::box_flags.
inline constexpr std::uint32_t kBoxPrisma = 0x1;  // a Prisma sample entry or configuration box
inline constexpr std::uint32_t kBoxAvc1 = 0x2;
inline constexpr std::uint32_t kBoxAvc3 = 0x4;
inline constexpr std::uint32_t kBoxHvc1 = 0x8;
inline constexpr std::uint32_t kBoxHev1 = 0x10;
inline constexpr std::uint32_t kBoxPxhe = 0x20;
inline constexpr std::uint32_t kBoxPxh1 = 0x40;
inline constexpr std::uint32_t kBoxAvcE = 0x80;
inline constexpr std::uint32_t kBoxAvcC = 0x100;
inline constexpr std::uint32_t kBoxHvcE = 0x200;
inline constexpr std::uint32_t kBoxHvcC = 0x400;
inline constexpr std::uint32_t kBoxPxcC = 0x800;
inline constexpr std::uint32_t kBoxPxvC = 0x1000;
inline constexpr std::uint32_t kBoxPxwC = 0x2000;
inline constexpr std::uint32_t kBoxPavc = 0x4000;
inline constexpr std::uint32_t kBoxPxh8 = 0x8000;
inline constexpr std::uint32_t kBoxDec3 = 0x10000;
inline constexpr std::uint32_t kBoxDac4 = 0x20000;
inline constexpr std::uint32_t kBoxLhvC = 0x40000;
inline constexpr std::uint32_t kBoxAv01 = 0x80000;
inline constexpr std::uint32_t kBoxPav1 = 0x100000;
inline constexpr std::uint32_t kBoxAv1C = 0x200000;
inline constexpr std::uint32_t kBoxSgpdAv1M = 0x400000;
inline constexpr std::uint32_t kBoxSgpd = 0x800000;

// Values of Mp4Stream::stream_type.
inline constexpr std::uint32_t kStreamAudio = 1;
inline constexpr std::uint32_t kStreamVideo = 2;
inline constexpr std::uint32_t kStreamText = 3;
inline constexpr std::uint32_t kStreamMeta = 4;
inline constexpr std::uint32_t kStreamHint = 5;

// Values of Mp4Stream::stream_id.
inline constexpr std::uint32_t kStreamIdAac = 1;
inline constexpr std::uint32_t kStreamIdAvc1 = 2;
inline constexpr std::uint32_t kStreamIdAvc3 = 4;
inline constexpr std::uint32_t kStreamIdAc3 = 6;
inline constexpr std::uint32_t kStreamIdEc3 = 7;
inline constexpr std::uint32_t kStreamIdMetadata = 8;
inline constexpr std::uint32_t kStreamIdTx3g = 9;
inline constexpr std::uint32_t kStreamIdMlpa = 10;
inline constexpr std::uint32_t kStreamIdS263 = 11;
inline constexpr std::uint32_t kStreamIdHev1 = 12;
inline constexpr std::uint32_t kStreamIdHvc1 = 13;
inline constexpr std::uint32_t kStreamIdAc4 = 14;
inline constexpr std::uint32_t kStreamIdAv01 = 15;

// Values of Mp4Stream::px_kind.
inline constexpr std::uint32_t kPxPxav = 1;
inline constexpr std::uint32_t kPxPxa1 = 2;
inline constexpr std::uint32_t kPxPxhe = 3;
inline constexpr std::uint32_t kPxPxh1 = 4;
inline constexpr std::uint32_t kPxPavc = 5;
inline constexpr std::uint32_t kPxPxh8 = 6;
inline constexpr std::uint32_t kPxPav1 = 16;

// Where the last lookups stopped. They are caches: a lookup behind one starts over.
struct SampleCursors {
    struct Chunk {
        bool begun = false;
        std::uint32_t row = 0;           // of stsc
        std::uint64_t chunk = 0;         // number at which the row begins
        std::uint64_t first_sample = 0;  // of that chunk
        std::uint64_t sum_from = 0;      // `sum` holds the sizes of the samples [sum_from, sum_to)
        std::uint64_t sum_to = 0;
        std::uint64_t sum = 0;
    } chunk;
    struct Run {
        std::uint32_t row = 0;
        std::uint64_t first_sample = 0;  // of the row
        std::uint32_t sum32 = 0;         // deltas of all rows before it, in 32 bits
        std::uint64_t sum64 = 0;         // and in 64
    } time, composition, behind;         // `behind`: of looks back at times
    struct Sync {
        std::uint32_t row = 0;
        std::uint64_t number = 0;  // the last one looked for
    } sync;
    std::size_t senc_block = 0;
};

// One track. The tables keep the file's byte order (big-endian), whether they come from a sample
// table box or were gathered from fragments.
struct Mp4Stream {
    std::uint32_t track_id = 0;
    std::uint32_t stream_type = 0;
    std::uint32_t stream_id = 0;
    std::uint32_t px_kind = 0;
    std::uint32_t box_flags = 0;
    std::vector<std::uint8_t> dsi;  // decoder specific information, empty when there is none
    std::uint32_t dsi_size = 0;

    std::uint32_t audio_channel_count = 0;
    std::uint32_t audio_sample_rate = 0;  // Hz
    std::uint32_t audio_sample_size = 0;  // bits
    std::uint32_t audio_reserved = 0;     // OR of the fields that a version 0 entry wants zero
    std::uint32_t mp4a_object_type_indication = 0;

    std::uint32_t width = 0;
    std::uint32_t height = 0;

    std::uint32_t colour_type = 0;
    std::uint16_t colour_primaries = 0;
    std::uint16_t transfer_characteristics = 0;
    std::uint16_t matrix_coefficients = 0;
    std::uint8_t full_range_flag = 0;

    std::uint16_t display_primaries_gx = 0;
    std::uint16_t display_primaries_gy = 0;
    std::uint16_t display_primaries_bx = 0;
    std::uint16_t display_primaries_by = 0;
    std::uint16_t display_primaries_rx = 0;
    std::uint16_t display_primaries_ry = 0;
    std::uint16_t white_point_x = 0;
    std::uint16_t white_point_y = 0;
    std::uint32_t max_display_mastering_luminance = 0;
    std::uint32_t min_display_mastering_luminance = 0;
    std::uint16_t max_content_light_level = 0;
    std::uint16_t max_pic_average_light_level = 0;

    std::unique_ptr<Ec3Config> ec3_config;
    std::shared_ptr<DsiRecord> ac4_config;
    std::uint32_t ac4_entry_count = 0;
    std::unique_ptr<PxConfig> px_config;
    std::unique_ptr<AvcConfig> avc_config;
    std::unique_ptr<HevcConfig> hevc_config;
    std::unique_ptr<HevcConfig> lhevc_config;
    std::unique_ptr<Av1Config> av1_config;

    std::uint32_t marks = 0;
    std::uint32_t time_scale = 0;  // units per second
    std::uint32_t duration = 0;    // in time_scale units
    std::array<char, 4> lang{};    // three letters and a zero
    std::uint32_t depends_on_track = 0;
    std::uint32_t default_sample_duration = 0;
    std::uint32_t default_sample_size = 0;
    std::uint32_t default_sample_flag = 0;
    std::uint32_t curr_sample_descr_idx = 0;
    std::uint32_t base_is_moof = 0;
    std::int64_t base_offset = 0;
    std::uint64_t baseMediaDecodeTime = ~std::uint64_t{0};
    std::int64_t elst_offset = 0;  // in time_scale units
    std::uint64_t elst_segment_duration = 0;

    std::vector<std::uint8_t> chunks;
    std::uint32_t num_chunks = 0;
    std::uint32_t stco_is_64bit = 0;
    std::vector<std::uint8_t> stsc;
    std::uint32_t stsc_count = 0;
    bool has_stts = false;  // there is a table, be it one of no rows
    std::vector<std::uint8_t> stts;
    std::uint32_t stts_count = 0;
    std::vector<std::uint8_t> ctts;
    std::uint32_t ctts_count = 0;
    std::vector<std::uint8_t> stss;
    std::uint32_t stss_count = 0;

    std::array<std::uint8_t, 16> SystemID{};
    std::array<char, 4> scheme_type{};
    std::uint32_t scheme_version = 0;
    std::uint32_t is_encrypted = 0;
    std::uint8_t crypt_byte_block = 0;
    std::uint8_t skip_byte_block = 0;
    std::uint8_t default_isProtected = 0;
    std::uint8_t default_Per_Sample_IV_Size = 0;
    std::array<std::uint8_t, 16> default_KID{};
    std::uint8_t default_constant_IV_size = 0;
    std::vector<std::uint8_t> default_constant_IV;
    std::uint32_t sgpd_grouping_type = 0;
    std::uint32_t sgpd_entry_count = 0;
    std::uint32_t sgpd_metadata_type = 0;
    std::uint32_t sgpd_metadata_parameters = 0;
    std::vector<SencEntry> senc;
    std::uint64_t senc_count = 0;  // rows told by all `senc` boxes, those without bytes included
    std::vector<SencBlock> senc_blocks;
    std::vector<std::uint8_t> senc_ivs;
    std::vector<Subsample> senc_subsample_pool;

    std::vector<std::uint8_t> stsz;
    std::uint32_t sample_size = 0;
    std::uint32_t num_samples = 0;
    std::uint32_t next_sample = 0;

    mutable SampleCursors cursors;

    // Scratch of the sample writers.
    std::uint32_t el_sps_checked = 0;
    std::uint32_t el_seen = 0;
    std::uint32_t rpu_seen = 0;
    std::uint32_t parameter_sets_written = 0;
    std::uint32_t vps_compared = 0;  // a configuration without VPS was held against the stream's
    std::uint32_t rpu_compression_seen = 0;
    std::uint32_t rpu_compression_max = 0;
    std::shared_ptr<OapParserState> oap_parser;  // E-AC-3 analysis of one walk
    std::shared_ptr<void> ac4_parser;
    std::shared_ptr<void> ac4_ref_dsi;
    std::shared_ptr<void> ac4_es;
};

// A lookup's result. `senc` points into the stream and holds until the next walk.
struct Mp4Sample {
    std::uint64_t offset = 0;  // in the file
    std::uint32_t size = 0;    // bytes
    std::uint64_t pts = 0;     // time_scale units
    std::uint64_t dts = 0;     // time_scale units, summed in 32 bits
    std::uint32_t duration = 0;
    std::uint32_t sync = 0;
    std::uint32_t stream_index = 0;
    std::uint32_t stream_id = 0;
    const SencEntry* senc = nullptr;
    std::int64_t cts = 0;  // dts - pts
    std::uint32_t time_scale = 0;
};

// A `trex` for a track that isn't there yet.
struct TrexPending {
    std::uint32_t valid = 0;
    std::uint32_t track_id = 0;
    std::uint32_t sample_description_index = 0;
    std::uint32_t default_duration = 0;
    std::uint32_t default_size = 0;
    std::uint32_t default_flags = 0;
};

// Values of Mp4Demuxer::input_mode.
inline constexpr std::uint32_t kInputHls = 1;
inline constexpr std::uint32_t kInputDash = 2;
inline constexpr std::uint32_t kInputHlsIframe = 3;
inline constexpr std::uint32_t kInputFile = 5;

// Value of Mp4Demuxer::track_filter that selects every track.
inline constexpr std::uint32_t kAllTracks = 0xFFFFFFFFU;

// One presentation: a plain file, or an initialization section with all segments that follow it.
struct Mp4Demuxer {
    BoxNode root;
    Ezxml* tree_root = nullptr;
    Loglist* loglist = nullptr;
    std::unique_ptr<BrandRecord> ftyp;
    std::unique_ptr<BrandRecord> styp;
    std::uint32_t timescale = 0;
    std::uint32_t input_mode = 0;
    ManifestContext* manifest_context = nullptr;
    DashContext* dash_context = nullptr;
    std::vector<std::uint8_t> key;
    std::uint32_t key_size = 0;
    std::optional<std::string> key_list;
    std::shared_ptr<DecryptContext> decrypt;
    std::uint32_t stream_count = 0;
    std::vector<std::unique_ptr<Mp4Stream>> streams;
    std::optional<std::string> output_dir;
    std::optional<std::string> output_base;
    std::optional<std::string> output_suffix;
    std::vector<std::shared_ptr<OutputFile>> out_files;  // one slot a stream, null until opened
    std::uint32_t out_file_count = 0;
    std::shared_ptr<OutputSet> outputs;  // paths behind the slots
    Mp4Stream* current = nullptr;
    std::uint64_t range_start = 0;
    std::uint32_t range_length = 0;
    std::int64_t moof_offset = 0;
    std::int64_t moof_size = 0;
    std::int64_t uuid_offset = 0;
    std::int64_t uuid_size = 0;
    std::int64_t sidx_first_offset = 0;
    std::vector<std::uint32_t> sidx_sizes;
    std::uint16_t sidx_count = 0;
    TrexPending trex_pending;
    void* ilst_context = nullptr;
    // (context, "mean.name" or the item's type, type code, value)
    std::function<void(void*, const std::string&, std::uint8_t, std::span<const std::uint8_t>)>
        ilst_callback;
    std::uint32_t track_filter = kAllTracks;
    // What is left in this walk for fragment samples that have no bytes of their own in a box: a
    // small file can't stand for more samples than it has bytes.
    std::uint64_t implicit_samples_left = 0;
};

}  // namespace mediasplit
