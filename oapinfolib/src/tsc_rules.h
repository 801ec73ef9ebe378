#pragma once

#include "oapinfolib/src/timeslice.h"

// Conditions that rules of several modes have in common.

namespace mediasplit {

using Frame = SubstreamRecord;
using Program = ProgramRecord;

inline bool is_not_48k(const Frame& frame) {
    return frame.sample_rate != 48000;
}
inline bool is_not_six_blocks(const Frame& frame) {
    return frame.numblks != 6;
}
inline bool is_dual_mono(const Frame& frame) {
    return frame.acmod == 0;
}
inline bool has_substream_id(const Frame& frame) {
    return frame.substreamid != 0;
}
inline bool has_crc_error(const Frame& frame) {
    return frame.status != kStatusGood;
}
inline bool is_map_inconsistent(const Frame& frame) {
    return frame.nchans != chx_getnumchanexts(frame.chanmap);
}
inline bool has_pgmscle(const Frame& frame) {
    return frame.bsi.pgmscle[0] != 0 || frame.bsi.pgmscle[1] != 0;
}
inline bool has_paninfoe(const Frame& frame) {
    return frame.bsi.paninfoe[0] != 0 || frame.bsi.paninfoe[1] != 0;
}
inline bool is_dependent(const Frame& frame) {
    return frame.strmtyp == 1;
}
inline bool is_transcoded_or_reserved(const Frame& frame) {
    return frame.strmtyp > 1;
}

inline bool is_coding_changed(const Frame& previous, const Frame& current) {
    return previous.nfchans != current.nfchans || previous.lfeon != current.lfeon;
}

// Conditions over a program and the one before it. D0 is the first dependent substream.
inline bool has_d0(const Program& program) {
    return program.dependent[0].present != 0;
}
inline bool has_more_than_d0(const Program& program) {
    for (std::size_t slot = 1; slot < kMaxDependents; ++slot) {
        if (program.dependent[slot].present != 0) {
            return true;
        }
    }
    return false;
}
inline bool has_bad_stream_type(const Program&, const Program& current) {
    return is_transcoded_or_reserved(current.independent);
}
inline bool is_channel_total_changed(const Program& previous, const Program& current) {
    return previous.total_channels != current.total_channels ||
           previous.lfe_count != current.lfe_count;
}
inline bool is_total_words_changed(const Program& previous, const Program& current) {
    return previous.total_words != current.total_words;
}
inline bool is_sample_rate_changed(const Program& previous, const Program& current) {
    return previous.independent.sample_rate != current.independent.sample_rate;
}
inline bool is_not_i0_with_d0(const Program&, const Program& current) {
    return current.independent.present == 0 || has_more_than_d0(current);
}
inline bool has_blocks_differ(const Program&, const Program& current) {
    return has_d0(current) && current.dependent[0].numblks != current.independent.numblks;
}
inline bool has_dependents(const Program&, const Program& current) {
    return current.num_dependent != 0;
}
inline bool is_dependent_count_changed(const Program& previous, const Program& current) {
    return previous.num_dependent != current.num_dependent;
}
inline bool is_i0_coding_changed(const Program& previous, const Program& current) {
    return is_coding_changed(previous.independent, current.independent);
}
inline bool is_i0_acmod_changed(const Program& previous, const Program& current) {
    return previous.independent.acmod != current.independent.acmod;
}
inline bool is_i0_words_changed(const Program& previous, const Program& current) {
    return previous.independent.frame_words != current.independent.frame_words;
}
inline bool is_d0_coding_changed(const Program& previous, const Program& current) {
    return has_d0(current) && is_coding_changed(previous.dependent[0], current.dependent[0]);
}
inline bool is_d0_chanmap_changed(const Program& previous, const Program& current) {
    return has_d0(current) && previous.dependent[0].chanmap != current.dependent[0].chanmap;
}
inline bool is_d0_acmod_changed(const Program& previous, const Program& current) {
    return has_d0(current) && previous.dependent[0].acmod != current.dependent[0].acmod;
}

}  // namespace mediasplit
