#pragma once

#include <array>
#include <cstdint>

#include "ac4/bitrate/brcalc.h"
#include "ac4/toc_reader/presentation_syntax.h"
#include "ac4/toc_reader/substream_table.h"
#include "ac4/toc_reader/toc_parser.h"
#include "ac4/toc_reader/toc_records.h"
#include "base/memlib.h"
#include "base/orv_bitbuf.h"

namespace mediasplit {

// Lazy reader of AC-4 tables of contents (ETSI TS 103 190-1 clause 4.2.3, TS 103 190-2 clause
// 6.2.1). Per frame: feed it, let AC4_ANALYZE_ac4toc_reader_get_presentation_selection_info walk
// the table once, then ask anything in any order; queries start from cached bit positions. A frame
// whose table equals the last one's, but for fields that change with every frame, isn't walked at
// all.
//
// Operations return the kToc... codes. In tolerant mode an error that leaves the syntax readable is
// parked and returned at the end of the call, with as many fields filled as possible.

// Where the walk over a group's substreams stands, so that the next query goes on from there.
struct GroupWalk {
    std::int32_t group = kNoIndex;
    std::int32_t presentation_version = 0;
    std::uint32_t next_substream = 0;
    std::int64_t position = 0;
};

// The substream that was asked for last.
struct LastSubstream {
    std::int32_t presentation = kNoIndex;
    std::int32_t substream = kNoIndex;
    int result = kTocOk;  // of reading it, parked errors included
    SubstreamDescription description;
};

// The table that the next frame's is compared with.
struct StoredTable {
    bool valid = false;
    TocHead head;
    std::int64_t end = 0;  // bit position behind the groups
    std::int32_t n_groups = 0;
};

struct Ac4TocReader {
    memlib arena;
    std::uint64_t buffer_size = 0;
    std::uint8_t* copy = nullptr;  // buffer_size bytes

    // The frame.
    orv_bitbuf bits;
    std::int64_t frame_bytes = 0;
    TocHead head;
    BrcalcOutput rate;
    bool rate_known = false;       // the rate calculation has seen this frame
    bool positions_known = false;  // the caches below hold for this frame
    SubstreamTable table;
    std::int64_t target_bits_read = 0;  // of the presentations' names and targets

    // From frame to frame.
    AC4_ANALYZE_ac4_brcalc_state rate_state;
    std::uint32_t sequence_counter = 0;
    BitRateMode bit_rate_mode = BitRateMode::kNone;

    // Positions, 0 for unknown.
    std::array<std::int64_t, kMaxTocPresentations> presentation_positions{};
    bool groups_known = false;
    std::int32_t n_substream_groups = 0;
    std::int64_t groups_start = 0;
    std::array<GroupInfo, kMaxTocGroups> groups{};
    std::array<GroupContext, kMaxTocGroups> group_contexts{};
    std::int64_t substream_table_pos = 0;

    // The presentation that was asked for last.
    std::int32_t selected = kNoIndex;
    int selected_result = kTocOk;
    PresentationDescription presentation;
    InlineSubstreams inline_substreams{};
    GroupWalk walk;
    LastSubstream last_substream;

    bool toc_unchanged = false;
    StoredTable stored;
    MaskedRanges masked_ranges;

    HashRecord* hash = nullptr;  // not owned

    TocMode mode = TocMode::kStrict;
    int deferred_error = kTocOk;  // of the last call
};

struct TocReaderConfig {
    std::uint64_t copy_buffer_size = 0;  // bytes; a longer table is walked in every frame
};

struct TocReaderVersion {
    std::uint32_t major_number = 0;
    std::uint32_t minor_number = 0;
    std::uint32_t patch_number = 0;
};

inline constexpr int kFrameKindRaw = 1;  // raw_ac4_frame

// Bytes of memory that open needs. 0; 1 without an out pointer.
int AC4_ANALYZE_ac4toc_reader_query_mem(std::uint64_t* size, const TocReaderConfig& config);

// Places a reader in the caller's `memory`. 0; 1 for a null argument.
int AC4_ANALYZE_ac4toc_reader_open(Ac4TocReader** reader, void* memory,
                                   const TocReaderConfig& config);

// Ends the use of the memory; the caller frees it.
void AC4_ANALYZE_ac4toc_reader_close(Ac4TocReader* reader);

// Strict or tolerant; clears the parked error.
void AC4_ANALYZE_ac4toc_reader_set_mode(Ac4TocReader* reader, TocMode mode);

// Lets a listener see every element of the presentations that are asked for from here on, to
// fingerprint them; null for none. The walk over the whole table isn't shown. Not owned.
void AC4_ANALYZE_ac4toc_reader_set_hash(Ac4TocReader* reader, HashRecord* hash);

TocReaderVersion AC4_ANALYZE_ac4toc_reader_get_version();

// Forgets everything that was learned from earlier frames but the rate.
void AC4_ANALYZE_ac4toc_reader_new_program(Ac4TocReader* reader);

// Shows the next frame, which must stay until the following feed. 0; 1 for null or, for the kind
// kFrameKindRaw, fewer than 25 bits; 3 for any other kind.
int AC4_ANALYZE_ac4toc_reader_feed(Ac4TocReader* reader, const std::uint8_t* data,
                                   std::uint64_t size, int frame_kind);

// Walks all presentations and groups once and fills the caches and, if given, the record. When the
// table is unchanged nothing is walked and `selection`, which must then be the last call's, stays.
int AC4_ANALYZE_ac4toc_reader_get_presentation_selection_info(Ac4TocReader* reader,
                                                              SelectionRecord* selection);

// The head of the table and the rate. A failure leaves the reader as it was, but for the sequence
// counter, which counts up.
int AC4_ANALYZE_ac4toc_reader_get_toc_info(Ac4TocReader* reader, TocInfo* info);

// Presentation `index`, with its name, targets and channel layout; `_ext` gives the rest. 0; 4 for
// a bad index; 2 also once the frame's names and targets come to several times its size.
int AC4_ANALYZE_ac4toc_reader_get_presentation_info(Ac4TocReader* reader, const TocInfo& toc,
                                                    std::int32_t index, PresentationInfo* info);
int AC4_ANALYZE_ac4toc_reader_get_presentation_info_ext(Ac4TocReader* reader, const TocInfo& toc,
                                                        std::int32_t index,
                                                        PresentationInfoExt* info);

// Substream `substream` of a presentation, counted through its groups; `_ext` gives object facts
// and the segments in the frame. 0; 1 past the last one; 4 for a bad presentation.
int AC4_ANALYZE_ac4toc_reader_get_substream_info(Ac4TocReader* reader, std::int32_t presentation,
                                                 std::int32_t substream, SubstreamInfo* info);
int AC4_ANALYZE_ac4toc_reader_get_substream_info_ext(Ac4TocReader* reader,
                                                     std::int32_t presentation,
                                                     std::int32_t substream,
                                                     SubstreamInfoExt* info);

// The EMDF data of the presentation that was asked for last. 0; 4 for any other presentation.
int AC4_ANALYZE_ac4toc_reader_get_emdf_info(Ac4TocReader* reader, std::int32_t presentation,
                                            EmdfInfo* info);

// Parameters whose place in the frame can be asked for.
enum class TocParameter : int {
    kPresentationId = 0,      // flag: an id is coded
    kEnablePresentation = 1,  // flag: b_enable_presentation is coded
    kContentClassifier = 2,   // of a group; flag: a content type is coded
    kSubstreamTable = 3       // flag: its position is known
};

// Bit position of the parameter's flag (of the table's first bit for kSubstreamTable) and whether
// it is there. 0; 3 for a bitstream_version other than 2; 4 for a bad index.
int AC4_ANALYZE_ac4toc_reader_get_param_presentation(Ac4TocReader* reader, TocParameter kind,
                                                     std::int32_t presentation, std::int32_t group,
                                                     std::int64_t* position, bool* flag);

// variable_bits(n): the bits read, 0 on failure, with `value` 0.
int AC4_ANALYZE_ac4toc_read_variable_bits(orv_bitbuf* bits, int n, HashRecord* hash,
                                          std::uint32_t* value);

// Where a substream lies in the frame. 0, with size 0 for a negative index; 1 if the data ran out;
// 2 if a limit or the frame's end is passed.
int AC4_ANALYZE_ac4toc_get_substream_segment_info(Ac4TocReader* reader, std::int32_t index,
                                                  SubstreamSegment* segment);

// Stands at the nearest known start at or below presentation `index` and returns its index.
std::int32_t AC4_ANALYZE_ac4toc_seek_to_presentation_info(Ac4TocReader* reader, std::int32_t index);

}  // namespace mediasplit
