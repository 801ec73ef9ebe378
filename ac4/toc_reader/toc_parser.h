#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "ac4/bitrate/brcalc.h"
#include "ac4/syntax/field_reader.h"
#include "ac4/toc_reader/toc_records.h"

namespace mediasplit {

// What every syntax reader of the table of contents carries along: the bits, the head's facts that
// decide the syntax, and how errors are taken.

// The head of ac4_toc, up to the presentations.
struct TocHead {
    std::int32_t bitstream_version = 0;
    std::int32_t sequence_counter = 0;
    bool b_wait_frames = false;
    std::int32_t wait_frames = 0;
    std::int32_t br_code = 0;  // value | kBrCodePresent, or 0
    BitRateMode bit_rate_mode = BitRateMode::kNone;
    std::int32_t fs_index = 0;
    std::int32_t frame_rate_index = 0;
    bool b_iframe_global = false;
    std::int32_t n_presentations = 0;
    std::uint32_t payload_base = 0;
    ProgramIdKind program_id_kind = ProgramIdKind::kNone;
    std::uint32_t short_program_id = 0;
    std::array<std::uint8_t, 16> program_uuid{};
    std::int64_t presentations_position = 0;  // bit position behind the head
};

// Bit ranges that may differ between two tables that mean the same.
struct MaskedRange {
    std::int64_t start = 0;
    std::int64_t length = 0;
};

inline constexpr std::size_t kMaxMaskedRanges = 512;

struct MaskedRanges {
    std::size_t count = 0;
    std::array<MaskedRange, kMaxMaskedRanges> ranges{};
};

enum class TocMode : int { kStrict = 0, kTolerant = 1 };

struct TocParser {
    FieldReader in;
    TocHead head;
    TocMode mode = TocMode::kStrict;
    int code = kTocOk;               // what stopped the parse, if a value did
    int deferred = kTocOk;           // tolerant mode: the first error that did not stop it
    MaskedRanges* masked = nullptr;  // takes the EMDF protection fields, if given
};

inline bool parser_ok(const TocParser& parser) {
    return field_ok(parser.in);
}

// Ends the parse with `code` in either mode.
void stop(TocParser& parser, int code);

// Takes an error that leaves the syntax readable: strict mode stops, tolerant mode parks it.
void refuse(TocParser& parser, int code);

// `value`, refused with kTocLimit if it is above `most`.
std::uint32_t limited(TocParser& parser, std::uint32_t value, std::uint32_t most);

// The result code of a parse.
int parser_result(const TocParser& parser);

// substream_index: 2 bits, escaped by variable_bits(2), at most 1023.
std::int32_t read_substream_index(TocParser& parser);

// n_add_emdf_substreams: 2 bits, of which 0 goes on as variable_bits(2) + 4.
std::uint32_t read_emdf_count(TocParser& parser);

// frame_rate_multiply_info and frame_rate_fractions_info (ETSI TS 103 190-2
// clauses 6.3.2.2, 6.3.2.3).
std::int32_t read_frame_rate_multiply(TocParser& parser);
std::int32_t read_frame_rate_fraction(TocParser& parser, std::int32_t frame_rate_multiply);

// emdf_info with its protection fields, whose place goes to `masked` (TS 103 190-1
// clause 4.2.14.14).
EmdfSubstream read_emdf_info(TocParser& parser);

// presentation_config_ext_info, stepped over; the skip bytes.
std::uint32_t skip_presentation_config_ext(TocParser& parser);

// bitrate_indicator as an index from 0 to 19.
std::int32_t AC4_ANALYZE_ac4toc_get_bitrate_indicator(TocParser& parser);

// content_type behind its flag, which the caller has read as set.
void AC4_ANALYZE_ac4toc_get_substream_content_type(TocParser& parser, ContentType* content);

}  // namespace mediasplit
