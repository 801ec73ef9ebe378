#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "oapinfolib/src/timeslice.h"
#include "oapinfolib/src/tsi.h"

// The frame-by-frame calls around the time slice analysis.

namespace mediasplit {

inline constexpr int kDitProcessError = 12;

struct DitVersion {
    int major = 0;
    int minor = 0;
    int update = 0;
};

struct DitQuery {
    std::size_t state_size = 0;  // bytes of a DitState
    DitVersion version{};
    const char* banner = "";
};

struct DitState {
    std::uint16_t ready = 0;
    std::array<std::uint16_t, 2> reserved{};
    TimesliceState timeslices;
};

// Tells whether a time slice has closed, and where to look at it; not owned.
struct FlushResult {
    bool closed = false;
    const TimesliceState* timeslices = nullptr;
};

// Fills the size, version and banner of the analysis. 0.
int oapi_dit_query(DitQuery& query);

// Makes a state ready for a new stream. 0.
int oapi_dit_open(DitState& state);

// Takes one frame. 0, or kDitProcessError if the frame or a check was refused.
int oapi_dit_processframe(DitState& state, const TsiFrame& frame, FlushResult& flush);

// Closes the last time slice. 0, or the code of a compliance check.
int oapi_dit_flush(DitState& state, const TsiFrame& frame, FlushResult& flush);

}  // namespace mediasplit
