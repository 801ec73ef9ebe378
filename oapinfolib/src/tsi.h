#pragma once

#include <cstdint>

#include "oapinfolib/src/timeslice.h"

// Folds the frames of a stream into time slices and programs, checks their order, keeps the totals,
// and has the compliance rules run whenever the make-up of a time slice changes (ETSI TS 102 366
// E.1.3.1).

namespace mediasplit {

// "Invalid bitstream detected. ...": the frame can't stand where it stands.
inline constexpr int kTsiBadFrame = 6913;

// One frame as the analysis takes it. `aux_data` and `encinfo` may be null.
struct TsiFrame {
    const BitstreamInfo* info = nullptr;
    FrameStatus status = kStatusUnknown;
    int compliance_mode = 1;
    std::int16_t aux_bits = 0;
    const std::uint16_t* aux_data = nullptr;  // left-justified words that hold aux_bits bits
    const std::uint16_t* encinfo = nullptr;
};

// Clears the whole state for a new stream.
void tsi_sysinit(TimesliceState& state);

// Takes one frame. 0, kTsiBadFrame (its fatal text is out), or the code of a compliance check.
// `closed` tells that a time slice has closed, which then stands in `previous`.
int tsi_procframe(const TsiFrame& frame, TimesliceState& state, bool& closed);

// Closes the current time slice, with its checks where it differs from the one before, and opens a
// new one.
int tsi_handle_new_ts(int compliance_mode, TimesliceState& state);

// Closes the current time slice at the end of the data: its checks run, and it is `previous` then.
int tsi_flush(int compliance_mode, TimesliceState& state);

// Folds `status` into `aggregate`: unknown outranks a full error, that a partial one, that good.
// kTsiBadFrame for any other value, with `aggregate` unknown then.
int tsi_determinestatus(FrameStatus status, FrameStatus& aggregate);

}  // namespace mediasplit
