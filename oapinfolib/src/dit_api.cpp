#include "oapinfolib/src/dit_api.h"

namespace mediasplit {

namespace {

void init_ditstate(DitState& state) {
    state.ready = 1;
    state.reserved = {};
}

}  // namespace

static_assert(sizeof(void*) != 8 || sizeof(DitState) == 364864);

int oapi_dit_query(DitQuery& query) {
    query.state_size = sizeof(DitState);
    query.version = {5, 1, 6};
    query.banner = "AC-3 and E-AC-3 bitstream information";
    return 0;
}

int oapi_dit_open(DitState& state) {
    init_ditstate(state);
    tsi_sysinit(state.timeslices);
    return 0;
}

int oapi_dit_processframe(DitState& state, const TsiFrame& frame, FlushResult& flush) {
    flush.timeslices = nullptr;
    if (tsi_procframe(frame, state.timeslices, flush.closed) != 0) {
        return kDitProcessError;
    }
    if (flush.closed) {
        flush.timeslices = &state.timeslices;
    }
    return 0;
}

int oapi_dit_flush(DitState& state, const TsiFrame& frame, FlushResult& flush) {
    const int result = tsi_flush(frame.compliance_mode, state.timeslices);
    flush.closed = true;
    flush.timeslices = &state.timeslices;
    return result;
}

}  // namespace mediasplit
