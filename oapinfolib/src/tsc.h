#pragma once

#include <span>

#include "oapinfolib/src/timeslice.h"

// Compliance rules of E-AC-3 delivery, by mode. A rule that is broken leaves a mark in the row of
// its text; nothing here stops the analysis.

namespace mediasplit {

enum ComplianceMode : int {
    kModeNone = 0,
    kModeHddvdPrimary = 1,  // also the general rules of a primary E-AC-3 stream
    kModeBlurayPrimary = 2,
    kModeHddvdSecondary = 3,
    kModeBluraySecondary = 4,
};

// "Unknown compliance mode requested" or "Unknown compliance mode".
inline constexpr int kTscUnknownMode = 7169;

// What a broken rule leaves.
enum class Mark {
    kFailure,       // result 1, and the any-failure flag
    kWarning,       // result 2
    kQuietFailure,  // result 1 without the any-failure flag
};

// One rule about a frame, and one about a program and its predecessor.
struct FrameRule {
    bool (*broken)(const SubstreamRecord& frame);
    int row;
    Mark mark = Mark::kFailure;
};

struct ProgramRule {
    bool (*broken)(const ProgramRecord& previous, const ProgramRecord& current);
    int row;
};

void tsc_tsinit(ComplianceBlock& block);

// Runs the frame rules of `mode` on one frame. 0, or kTscUnknownMode with its fatal text. Mode 0
// clears the block.
int tsc_chkfrm(int mode, const SubstreamRecord& frame, ComplianceBlock& block);

// Runs the frame rules over all frames of the time slice and merges its block into that of the
// stream.
int tsc_chkts(int mode, Timeslice& timeslice, ComplianceBlock& stream);

// Runs the program rules, which look at the first program, and merges. `final_slice` is set when
// the data ends behind `current`; `previous` and `current` may be the same time slice.
int tsc_chkprg(int mode, bool final_slice, const Timeslice& previous, Timeslice& current,
               ComplianceBlock& stream);

// Leaves the mark of a broken rule in `row`.
void tsc_mark(ComplianceBlock& block, int row, Mark mark);

// Runs the rows of a rule table.
void tsc_run(std::span<const FrameRule> rules, const SubstreamRecord& frame,
             ComplianceBlock& block);
void tsc_run(std::span<const ProgramRule> rules, const ProgramRecord& previous,
             const ProgramRecord& current, ComplianceBlock& block);

// Rule sets of the modes.
void chkfrm_hddvd_primary(const SubstreamRecord& frame, ComplianceBlock& block);
void chkfrm_hddvd_secondary(const SubstreamRecord& frame, ComplianceBlock& block);
void chkfrm_bluray_primary(const SubstreamRecord& frame, ComplianceBlock& block);
void chkfrm_bluray_secondary(const SubstreamRecord& frame, ComplianceBlock& block);
void chkprg_hddvd_common(const Timeslice& previous, Timeslice& current);
void chkprg_hddvd_primary(const Timeslice& previous, Timeslice& current);
void chkprg_hddvd_secondary(const Timeslice& previous, Timeslice& current);
void chkprg_hddvd_flush(Timeslice& current);
void chkprg_bluray_common(const Timeslice& previous, Timeslice& current);
void chkprg_bluray_primary(const Timeslice& previous, Timeslice& current);
void chkprg_bluray_secondary(const Timeslice& previous, Timeslice& current);

// Text of a row, "" for a row that has none.
const char* tsc_row_text(int row);

}  // namespace mediasplit
