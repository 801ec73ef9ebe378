#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "oapinfolib/src/bsid.h"
#include "oapinfolib/src/bsid_tables.h"

// Records of the time slice analysis. A time slice is everything from one frame of an independent
// substream 0 up to the next; its programs stand in stream order. The records are large and mostly
// empty, so clearing, copying and comparing go over the slots in use alone: slots beyond
// `nprograms`, dependent slots that aren't `present` and auxiliary words beyond `bits` hold the
// values given here (an unused program keeps its converter counters besides).

namespace mediasplit {

// CRC result of a frame, and the worst one of a program or stream.
using FrameStatus = std::int32_t;
inline constexpr FrameStatus kStatusUnknown = -1;
inline constexpr FrameStatus kStatusGood = 0;
inline constexpr FrameStatus kStatusFullError = 1;     // information may be corrupt
inline constexpr FrameStatus kStatusPartialError = 2;  // AC-3: an error in the last part alone

inline constexpr std::size_t kMaxPrograms = 8;
inline constexpr std::size_t kMaxDependents = 8;
inline constexpr std::size_t kMaxAuxWords = 1024;
inline constexpr std::size_t kResultRows = 192;

inline constexpr std::uint16_t kUnset16 = 0xFFFF;  // -1 in an unsigned field

enum class Verdict : std::uint32_t { kPassed = 0, kFailure = 1, kWarning = 2 };

// Results of the compliance rules, one word for each row of the text table.
struct ComplianceBlock {
    std::uint32_t any_failure = 0;
    std::array<Verdict, kResultRows> results{};

    bool operator==(const ComplianceBlock& other) const;
};

// Auxiliary data of one frame. Only the words that `bits` covers are in use, and they alone are
// copied and compared.
struct AuxData {
    std::int16_t bits = 0;
    std::array<std::uint16_t, kMaxAuxWords> words;

    constexpr AuxData() : words{} {}
    AuxData(const AuxData& other) : words{} { assign(other); }
    AuxData& operator=(const AuxData& other) {
        assign(other);
        return *this;
    }
    ~AuxData() = default;
    bool operator==(const AuxData& other) const;

    [[nodiscard]] std::size_t used_words() const;

private:
    void assign(const AuxData& other);
};

// Facts of one frame.
struct SubstreamRecord {
    std::uint16_t acmod = 0;
    std::uint32_t present = 0;
    AuxData aux;
    std::uint16_t bsid = 0;
    std::uint16_t chanmap = kUnset16;
    std::array<std::uint32_t, kChannelPositions> channel_present{};
    std::uint16_t convsync = kUnset16;
    std::uint16_t previous_convsync = 0;  // convsync of the slot one time slice earlier
    float rate = 0;                       // kbps
    std::uint16_t encinfo_present = 0;
    std::uint16_t encinfo = 0;
    FrameStatus status = kStatusUnknown;
    std::uint16_t frames_since_convsync = 0;  // kUnset16 in the slot's first frame
    std::uint16_t lfeon = 0;
    std::uint16_t numblks = 0;
    std::int64_t frame_bytes = 0;
    std::uint16_t nchans = 0;
    std::uint16_t nfchans = 0;
    std::int64_t frame_words = 0;
    std::int64_t sample_rate = 0;  // Hz
    std::uint16_t sourcefscod = kUnset16;
    std::uint16_t source_rate = 0;  // Hz modulo 65536, so that 96000 wraps
    std::uint16_t strmtyp = 0;
    std::uint16_t substreamid = 0;
    BitstreamInfo bsi{};

    bool operator==(const SubstreamRecord&) const = default;
};

// Sums over the frames of one program.
struct ProgramTally {
    std::uint16_t num_dependent = 0;
    std::int64_t num_substreams = 0;
    std::uint16_t coded_channels = 0;
    std::uint16_t total_channels = 0;
    std::uint16_t coded_lfe = 0;
    std::uint16_t lfe_count = 0;
    std::array<std::uint32_t, kChannelPositions> channel_present{};
    std::uint16_t numblks = 0;  // of the independent frame
    std::int64_t total_words = 0;
    float combined_rate = 0;        // kbps
    std::uint16_t channel_map = 0;  // OR of the dependent frames' maps
    FrameStatus status = kStatusGood;

    bool operator==(const ProgramTally&) const = default;
};

struct ProgramRecord : ProgramTally {
    SubstreamRecord independent;
    std::array<SubstreamRecord, kMaxDependents> dependent;  // by substreamid
};

struct Timeslice {
    std::int16_t nprograms = 0;
    ComplianceBlock compliance;
    std::array<ProgramRecord, kMaxPrograms> program;
};

// Analysis of a stream over all its time slices.
struct TimesliceState {
    std::int64_t timeslice_count = 0;  // time slices opened
    std::int64_t frame_count = 0;
    float playing_time = 0;        // seconds
    float data_rate = 0;           // kbps, mean over the time slices
    float previous_data_rate = 0;  // data_rate when the current time slice opened
    FrameStatus status = kStatusGood;
    Timeslice current;
    Timeslice previous;        // the last one that closed
    ComplianceBlock failures;  // merged over the stream
};

// Number of programs in use.
inline std::size_t programs_in_use(const Timeslice& timeslice) {
    return static_cast<std::size_t>(timeslice.nprograms);
}

// Sets a slot to the values of an empty one.
void reset_substream(SubstreamRecord& record);

// Sets each slot of a time slice to the values of an empty one, in use or not.
void reset_timeslice(Timeslice& timeslice);

// Empties a time slice by its slots in use. The independent record of each program keeps its
// converter counter and has its `convsync` moved to `previous_convsync`.
void tsi_tsinit(Timeslice& timeslice);

// Copies what is in use in either.
void copy_timeslice(const Timeslice& from, Timeslice& to);

// Whether two time slices are the same in every field.
bool tsi_compare_ts(const Timeslice& a, const Timeslice& b);

}  // namespace mediasplit
