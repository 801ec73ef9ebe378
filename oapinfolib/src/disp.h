#pragma once

#include <cstdint>

#include "oapinfolib/src/timeslice.h"

// The report of the analysis on the standard output stream. A line is one call of the stream.

namespace mediasplit {

// Bits of `disp_flags`. The last three add to the lines of substreams.
enum DispFlags : std::uint16_t {
    kDispProgram = 0x0002,
    kDispIndependent = 0x0004,
    kDispDependent = 0x0008,
    kDispCompliance = 0x0010,  // of each time slice
    kDispTotals = 0x0020,
    kDispSummaryCompliance = 0x0040,
    kDispBsi = 0x0100,
    kDispAuxdata = 0x0200,
    kDispEncinfo = 0x0400,
    kDispWarnings = 0x0800,
};

// Why a time slice is worth a report.
enum DispReason : int {
    kDispSame = 0,
    kDispProgramChanged = 1,
    kDispIndependentChanged = 2,
    kDispDependentChanged = 3,
    kDispComplianceChanged = 4,
    kDispBsiChanged = 5,
    kDispHasAuxdata = 6,
    kDispHasEncinfo = 7,
};

// Compares a time slice with the shadow, the last one that was taken up, in what `flags` selects.
int disp_new_ts(std::uint16_t flags, const Timeslice& timeslice, const Timeslice& shadow);

// Takes a time slice up as the shadow. 0.
int disp_copy_ts(const Timeslice& timeslice, Timeslice& shadow);

// Takes time slice `number` into the report: prints the shadow if the time slice differs from it or
// `final_slice` is set, and takes the new one up. Number 0 is taken up and nothing is printed. 0.
int disp_printtsinfo(std::uint16_t flags, std::int64_t number, std::int64_t& last_printed,
                     const Timeslice& timeslice, Timeslice& shadow, bool final_slice);

// Lines of one frame; they end in " (?)" if it has a CRC error. 0.
int disp_printfrminfo(std::uint16_t flags, const SubstreamRecord& frame);

// Lines of all header fields. 0.
int disp_printbsi(const BitstreamInfo& info, bool has_crc_error);

// Lines of the auxiliary data: `bits` of it in left-justified words. 0.
int disp_printauxdata(int bits, const std::uint16_t* data, bool has_crc_error);

// Line of the encoder information, `bits` is 0 for none. 0.
int disp_printencinfo(int bits, std::uint16_t data, bool has_crc_error);

// Totals and compliance lines of the whole stream. 0.
int disp_printfilesummary(std::uint16_t flags, const TimesliceState& state);

// Text of a frame status.
const char* disp_printstatus(FrameStatus status);

// Text of a compliance row.
const char* disp_geterrstring(int row);

// A line of 70 or 35 tildes.
void disp_spacer();
void disp_half_spacer();

}  // namespace mediasplit
