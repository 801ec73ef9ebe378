#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

// Analysis of E-AC-3 and AC-3 elementary streams (ETSI TS 102 366). This header is all that a
// caller needs.
//
//     OapParser parser = oap_es_parser_new(1);  // once for a stream
//     OapEsInfo info;                           // for each block:
//     const int result = oap_es_parser(data, size, parser.get(), &info);
//     oap_es_parser_delete(parser);             // or let it go out of scope
//
// A block is whole syncframes of one stream: an MP4 sample, the audio collected from a PES packet,
// or the frames of one time slice. Frames stand as 0B 77, or with the bytes of each word swapped.
//
// What a caller looks at when the result is 0:
// - `framesets` and `remainder_blocks`: whether the block is one access unit (1 and 0) or holds at
//   least one (not 0, and 0);
// - `byte_swapped`: whether the stream stands in file order (0);
// - `data_rate`, `num_programs` and each `program` with its `dependent` list: the values to hold
//   against a sample entry box or a descriptor;
// - `addbsie`, `addbsi_len` and `addbsi` of the first dependent substream, or of a program that has
//   none: byte 0 is the flag of the object audio extension, byte 1 its complexity index
//   (ETSI TS 103 420).
//
// Output: the lines of broken compliance rules ("    074 - FAILURE: ...") go to the standard output
// stream, once for each time slice that differs from the one before and, at the end of each call,
// once for the stream so far. A stream without failures prints nothing. Fatal texts and warnings go
// to the standard error stream. No message catalogue stands behind this library: callers raise
// their own message for a result other than 0. Other report sections and rule sets are chosen in
// oap_parser_state.h.
//
// An instance serves one stream and one thread; instances share nothing. No call allocates memory
// after oap_es_parser_new.

namespace mediasplit {

inline constexpr std::size_t kOapMaxPrograms = 8;
inline constexpr std::size_t kOapMaxDependents = 8;
inline constexpr std::size_t kOapAddbsiBytes = 64;

// Results of oap_es_parser.
inline constexpr int kOapGood = 0;        // read, and no compliance failure stands
inline constexpr int kOapCompliance = 1;  // read, but a failure stands, from this block or before
inline constexpr int kOapUnreadable = 2;  // not read to its end; OapEsInfo is untouched

// A dependent substream. Fields hold the coded values of the standard.
struct OapDependentInfo {
    std::uint32_t bsid = 0;
    std::uint32_t bsmod = 0;
    std::uint32_t fscod = 0;
    std::uint32_t acmod = 0;
    std::uint32_t lfeon = 0;
    std::uint32_t chanmap = 0;  // 16 bits, top bit L; the channels of acmod if none is coded
    std::uint32_t strmtyp = 0;
    std::uint32_t substreamid = 0;
    std::uint32_t addbsie = 0;
    std::uint32_t addbsi_len = 0;  // bytes of addbsi, addbsil + 1; 0 without addbsie
    std::array<std::uint8_t, kOapAddbsiBytes> addbsi{};
};

// A program: an independent substream and the dependent ones that belong to it.
struct OapProgramInfo {
    std::uint32_t num_dependent = 0;
    std::uint32_t bsid = 0;
    std::uint32_t bsmod = 0;
    std::uint32_t fscod = 0;
    std::uint32_t acmod = 0;
    std::uint32_t lfeon = 0;
    std::uint32_t chanmap = 0;
    std::uint32_t strmtyp = 0;
    std::uint32_t substreamid = 0;
    std::uint32_t addbsie = 0;
    std::uint32_t addbsi_len = 0;
    std::array<std::uint8_t, kOapAddbsiBytes> addbsi{};
    std::array<OapDependentInfo, kOapMaxDependents> dependent;  // by substreamid
};

// What a block holds: the last time slice of the block, and sums over the block.
struct OapEsInfo {
    std::uint32_t byte_swapped = 0;      // 1 if a frame of this call stood as 77 0B
    std::uint32_t remainder_blocks = 0;  // audio blocks of this call beyond whole framesets
    std::uint32_t data_rate = 0;         // kbps over the stream so far, cut to a whole number
    std::uint32_t framesets = 0;         // whole framesets of six audio blocks in this call
    std::uint32_t num_programs = 0;      // 0 to 8
    std::array<OapProgramInfo, kOapMaxPrograms> program;
    std::array<std::uint32_t, 5> reserved{};  // keeps the record at its known size
};

struct OapParserState;

// State of a parser on the heap.
struct OapParserDeleter {
    void operator()(OapParserState* state) const;
};
using OapParser = std::unique_ptr<OapParserState, OapParserDeleter>;

// Makes a parser, or gives null, with a fatal text, if there is no memory. `flag` is kept and has
// no effect.
OapParser oap_es_parser_new(std::uint32_t flag);

// Analyses `size` bytes of whole syncframes at `data` and fills `info`. kOapGood, kOapCompliance,
// kOapUnreadable, or a positive code of a check. A block ends at its first frame that can't be
// read, or that has a CRC error in all of it: nothing resynchronises. When the block ends exactly
// behind the first six bytes of a longer frame the text "Incomplete frame" goes out, `info` is
// untouched and the result is the one of the calls before.
int oap_es_parser(const std::uint8_t* data, std::uint32_t size, OapParserState* state,
                  OapEsInfo* info);

// Frees a parser. 0; 2 if there is none.
int oap_es_parser_delete(OapParser& state);

}  // namespace mediasplit
