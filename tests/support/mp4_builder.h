// Writes ISO base media files for tests: single boxes, box trees, and whole plain or fragmented
// files from a description. Everything is a byte vector, so that a test can damage whatever it
// likes.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mediasplit::mp4 {

using Bytes = std::vector<std::uint8_t>;

// --- Pieces -----------------------------------------------------------------------------------

// Big-endian numbers.
Bytes u8(std::uint64_t value);
Bytes u16(std::uint64_t value);
Bytes u24(std::uint64_t value);
Bytes u32(std::uint64_t value);
Bytes u64(std::uint64_t value);
// The characters, without an end mark.
Bytes text(std::string_view characters);
Bytes repeat(std::uint8_t value, std::size_t count);
inline Bytes zeros(std::size_t count) {
    return repeat(0, count);
}
Bytes join(std::initializer_list<Bytes> parts);
Bytes join(const std::vector<Bytes>& parts);
// Bytes from hexadecimal digits; blanks don't count.
Bytes hex(std::string_view digits);

// --- Boxes ------------------------------------------------------------------------------------

// A box of these parts, with its true size.
Bytes box(std::string_view type, std::initializer_list<Bytes> parts = {});
Bytes box(std::string_view type, const std::vector<Bytes>& parts);
// With version and flags ahead.
Bytes full_box(std::string_view type, std::uint32_t version, std::uint32_t flags,
               std::initializer_list<Bytes> parts = {});
// With a 64-bit size.
Bytes large_box(std::string_view type, std::initializer_list<Bytes> parts = {});
// With whatever sizes the test tells.
Bytes box_of_size(std::uint64_t told_size, std::string_view type,
                  std::initializer_list<Bytes> parts = {});
Bytes large_box_of_size(std::uint64_t told_size, std::string_view type,
                        std::initializer_list<Bytes> parts = {});

Bytes ftyp(std::string_view major = "isom", const std::vector<std::string>& compatible = {"isom"});
Bytes styp(std::string_view major, const std::vector<std::string>& compatible);
Bytes mvhd(std::uint32_t timescale = 1000);
Bytes tkhd(std::uint32_t track_id, std::uint32_t version = 0);
Bytes mdhd(std::uint32_t time_scale, std::uint32_t duration = 0, std::string_view language = "und",
           std::uint32_t version = 0);
Bytes hdlr(std::string_view handler);

struct EditSpec {
    std::uint64_t segment_duration = 0;
    std::int64_t media_time = 0;  // -1 for an empty edit
};
Bytes edts(const std::vector<EditSpec>& edits, std::uint32_t version = 0);

using Rows = std::vector<std::vector<std::uint32_t>>;
// A table box: version and flags 0, the row count, rows of 32-bit words.
Bytes table_box(std::string_view type, const Rows& rows);
Bytes stsz(const std::vector<std::uint32_t>& sizes);
Bytes stsz_constant(std::uint32_t size, std::uint32_t count);
Bytes co64(const std::vector<std::uint64_t>& offsets);

Bytes trex(std::uint32_t track_id, std::uint32_t description = 1, std::uint32_t duration = 0,
           std::uint32_t size = 0, std::uint32_t flags = 0);
Bytes tfhd(std::uint32_t track_id, std::uint32_t flags = 0x20000,
           std::initializer_list<Bytes> fields = {});
Bytes trun(std::uint32_t flags, std::uint32_t count, std::initializer_list<Bytes> fields = {});

// Sample entries with the boxes that they hold.
Bytes video_entry(std::string_view type, std::uint32_t width, std::uint32_t height,
                  std::initializer_list<Bytes> children = {});
Bytes audio_entry(std::string_view type, std::uint32_t channels, std::uint32_t sample_size,
                  std::uint32_t sample_rate, std::initializer_list<Bytes> children = {});
Bytes stsd(const std::vector<Bytes>& entries);

// Configuration boxes.
Bytes avcC(const std::vector<Bytes>& sps, const std::vector<Bytes>& pps,
           std::uint32_t length_size_minus_one = 3);
struct HevcArray {
    std::uint32_t type = 0;
    std::vector<Bytes> units;
};
Bytes hvcC(const std::vector<HevcArray>& arrays, std::uint32_t length_size_minus_one = 3);
Bytes esds(const Bytes& decoder_specific_info, std::uint32_t object_type = 0x40);
Bytes prsm_config(std::string_view type, std::uint32_t profile, std::uint32_t level,
                  std::uint32_t compatible_id = 0, std::uint32_t md_compression = 0);

// Protection.
Bytes frma(std::string_view format);
Bytes schm(std::string_view scheme, std::uint32_t version = 0x10000);
struct TencSpec {
    std::uint32_t version = 0;
    std::uint32_t pattern = 0;  // crypt blocks in the high four bits, skip blocks in the low
    std::uint32_t is_protected = 1;
    std::uint32_t iv_size = 8;
    Bytes kid = Bytes(16, 0);
    std::optional<Bytes> constant_iv;  // written with its size when given
};
Bytes tenc(const TencSpec& spec);
Bytes sinf(std::string_view format, std::string_view scheme, const TencSpec& spec);
struct SubsampleSpec {
    std::uint32_t clear_bytes = 0;
    std::uint32_t protected_bytes = 0;
};
struct SencRow {
    Bytes iv;
    std::vector<SubsampleSpec> subsamples;
};
Bytes senc(const std::vector<SencRow>& rows, bool with_subsamples);

// --- Files ------------------------------------------------------------------------------------

struct SampleSpec {
    Bytes data;
    std::uint32_t duration = 1;
    std::int32_t composition_offset = 0;
    bool is_sync = true;
    SencRow senc;  // written into fragments and plain tracks when the track has `write_senc`
};

struct TrackSpec {
    std::uint32_t track_id = 1;
    std::string handler = "vide";
    std::uint32_t time_scale = 1000;
    std::string language = "und";
    std::vector<Bytes> entries;
    std::vector<SampleSpec> samples;
    std::vector<EditSpec> edits;
    Bytes extra;  // further boxes of the `trak`, such as a `tref`
    bool write_senc = false;
    bool senc_with_subsamples = true;
};

struct MovieSpec {
    Bytes ftyp_box = ftyp();
    std::uint32_t timescale = 1000;
    std::vector<TrackSpec> tracks;
    bool moov_first = true;
    bool use_co64 = false;
    std::uint32_t samples_per_chunk = 1;
    // Fragmented files only.
    std::uint32_t samples_per_fragment = 4;  // of each track
    bool default_base_is_moof = true;        // otherwise `tfhd` carries the base data offset
    bool in_one_moof = true;                 // the fragments of all tracks share a `moof`
};

// A plain file: samples of the tracks interleaved chunk by chunk.
Bytes plain_file(const MovieSpec& movie);
// `moov` with `mvex` and no samples.
Bytes initialization_segment(const MovieSpec& movie);
// `moof` and `mdat` of the samples [first, first + count) of each track; `file_offset` is where the
// bytes will stand.
Bytes media_segment(const MovieSpec& movie, std::size_t first, std::size_t count,
                    std::uint64_t file_offset, std::uint32_t sequence_number = 1);
// Initialization segment and all fragments in one file.
Bytes fragmented_file(const MovieSpec& movie);

// The samples' bytes of a track, one after another.
Bytes all_sample_data(const TrackSpec& track);

}  // namespace mediasplit::mp4
