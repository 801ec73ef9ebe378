#include "oapinfolib/src/tsc.h"
#include "oapinfolib/src/tsc_rules.h"

// Rules of primary and secondary audio as in HD-DVD. The primary ones are also the general E-AC-3
// rules.

namespace mediasplit {

namespace {

constexpr float kMaxRate = 3024;  // kbps

bool has_oap_bsid(const Frame& frame) {
    return frame.bsid == 16 || frame.bsid == 12;
}

int bsid_row(const Frame& frame) {
    return frame.strmtyp != 0 ? 84 : 68;
}

// Blocks of a converter frameset are six: I0 frames from one converter sync to the next.
int frames_per_frameset(const Frame& frame) {
    return frame.numblks == 0 ? 0 : 6 / frame.numblks;
}

bool is_convsync_set(const Frame& frame) {
    return frame.convsync != 0;
}

// A converter sync that doesn't come a frameset after the one before; the first frame is free.
bool is_convsync_misplaced(const Frame& frame) {
    return is_convsync_set(frame) && frame.frames_since_convsync != frames_per_frameset(frame) &&
           frame.frames_since_convsync < kUnset16;
}

bool is_convsync_misplaced_at(const Program& program, std::uint16_t numblks) {
    return program.independent.numblks == numblks && is_convsync_misplaced(program.independent);
}

constexpr FrameRule kPrimaryIndependent[] = {
    {[](const Frame& frame) { return frame.substreamid > 3; }, 70},
    {is_dual_mono, 73},
    {is_not_48k, 74},
};

constexpr FrameRule kPrimaryDependent[] = {
    {has_substream_id, 85},
    {is_map_inconsistent, 88},
    {is_dual_mono, 90},
    {is_not_48k, 91},
};

constexpr ProgramRule kCommonProgram[] = {
    {has_bad_stream_type, 187},
    {is_channel_total_changed, 62},
    {is_total_words_changed, 63},
    {is_sample_rate_changed, 64},
    {is_not_i0_with_d0, 65},
    {[](const Program&, const Program& current) { return current.combined_rate > kMaxRate; }, 67},
    {has_blocks_differ, 66},
    {[](const Program&, const Program& current) {
         return has_d0(current) && current.dependent[0].sample_rate == 48000 &&
                current.combined_rate > kMaxRate;
     },
     67},
};

constexpr ProgramRule kPrimaryProgram[] = {
    {is_dependent_count_changed, 69},
    {is_i0_coding_changed, 71},
    {is_i0_acmod_changed, 72},
    {[](const Program& previous, const Program& current) {
         return previous.independent.numblks != current.independent.numblks;
     },
     76},
    // Frames of 44.1 kHz vary by a word.
    {[](const Program& previous, const Program& current) {
         return is_i0_words_changed(previous, current) && current.independent.sample_rate != 44100;
     },
     77},
    {[](const Program&, const Program& current) { return is_convsync_misplaced_at(current, 3); },
     81},
    {[](const Program&, const Program& current) { return is_convsync_misplaced_at(current, 2); },
     82},
    {[](const Program&, const Program& current) { return is_convsync_misplaced_at(current, 1); },
     83},
    {[](const Program&, const Program& current) {
         return current.independent.numblks > 3 && is_convsync_misplaced(current.independent);
     },
     169},
    {[](const Program&, const Program& current) {
         const Frame& frame = current.independent;
         return !is_convsync_set(frame) && frame.frames_since_convsync == kUnset16;
     },
     170},
    {[](const Program&, const Program& current) {
         const Frame& frame = current.independent;
         return !is_convsync_set(frame) && frame.frames_since_convsync != kUnset16 &&
                frame.frames_since_convsync >= frames_per_frameset(frame);
     },
     171},
    {has_blocks_differ, 95},
    {[](const Program&, const Program& current) {
         const Frame& d0 = current.dependent[0];
         return has_d0(current) && (d0.sample_rate != current.independent.sample_rate ||
                                    d0.sourcefscod != current.independent.sourcefscod);
     },
     93},
    {is_d0_coding_changed, 86},
    {is_d0_chanmap_changed, 87},
    {is_d0_acmod_changed, 89},
    {[](const Program& previous, const Program& current) {
         return has_d0(current) && previous.dependent[0].numblks != current.dependent[0].numblks;
     },
     94},
};

// The least sizes for 48 kHz by blocks per frame. Only the bounds for 1 and 6 blocks count as a
// failure of the stream; those for 2 and 3 mark their row and leave the stream as it is. That is
// deliberate.
bool is_below_bound(const Frame& frame, std::uint16_t numblks, std::int64_t bytes) {
    return frame.sample_rate == 48000 && frame.numblks == numblks && frame.frame_bytes <= bytes;
}

constexpr FrameRule kSecondaryAny[] = {
    {[](const Frame& frame) { return frame.bsid != 16; }, 100},
    {is_dependent, 101},
    {is_transcoded_or_reserved, 187},
};

constexpr FrameRule kSecondaryIndependent[] = {
    {has_substream_id, 102},
    {[](const Frame& frame) { return frame.acmod != 1 && frame.acmod != 2; }, 105},
    {is_not_48k, 106},
    {[](const Frame& frame) { return frame.frame_bytes > 2016; }, 110},
    {is_not_six_blocks, 108},
    {[](const Frame& frame) { return is_below_bound(frame, 6, 127); }, 111},
    {[](const Frame& frame) { return is_below_bound(frame, 3, 63); }, 111, Mark::kQuietFailure},
    {[](const Frame& frame) { return is_below_bound(frame, 2, 43); }, 111, Mark::kQuietFailure},
    {[](const Frame& frame) { return is_below_bound(frame, 1, 21); }, 111},
    {has_pgmscle, 173},
    {[](const Frame& frame) { return frame.bsi.extpgmscle != 0; }, 174},
    {has_paninfoe, 175},
    {[](const Frame& frame) { return frame.acmod == 2; }, 176, Mark::kWarning},
};

constexpr ProgramRule kSecondaryNoDependents[] = {
    {has_dependents, 101},
};

constexpr ProgramRule kSecondaryProgram[] = {
    {is_i0_coding_changed, 103},
    {is_i0_acmod_changed, 104},
    {is_total_words_changed, 109},
};

constexpr FrameRule kEveryFrame[] = {
    {has_crc_error, 166},
};

// The bsid test in front of the program rules: they have no meaning for another bsid.
bool check_program_bsid(Timeslice& current) {
    const Frame& frame = current.program[0].independent;
    if (has_oap_bsid(frame)) {
        return true;
    }
    tsc_mark(current.compliance, bsid_row(frame), Mark::kFailure);
    return false;
}

}  // namespace

void chkfrm_hddvd_primary(const SubstreamRecord& frame, ComplianceBlock& block) {
    if (!has_oap_bsid(frame)) {
        tsc_mark(block, bsid_row(frame), Mark::kFailure);
    } else if (frame.strmtyp == 0) {
        tsc_run(kPrimaryIndependent, frame, block);
    } else if (frame.strmtyp == 1) {
        tsc_run(kPrimaryDependent, frame, block);
    } else {
        tsc_mark(block, 187, Mark::kFailure);
    }
    tsc_run(kEveryFrame, frame, block);
}

void chkfrm_hddvd_secondary(const SubstreamRecord& frame, ComplianceBlock& block) {
    tsc_run(kSecondaryAny, frame, block);
    if (frame.strmtyp == 0) {
        tsc_run(kSecondaryIndependent, frame, block);
    }
    tsc_run(kEveryFrame, frame, block);
}

void chkprg_hddvd_common(const Timeslice& previous, Timeslice& current) {
    if (previous.nprograms != current.nprograms) {
        tsc_mark(current.compliance, 61, Mark::kFailure);
    }
    if (check_program_bsid(current)) {
        tsc_run(kCommonProgram, previous.program[0], current.program[0], current.compliance);
    }
}

void chkprg_hddvd_primary(const Timeslice& previous, Timeslice& current) {
    if (check_program_bsid(current)) {
        tsc_run(kPrimaryProgram, previous.program[0], current.program[0], current.compliance);
    }
}

void chkprg_hddvd_secondary(const Timeslice& previous, Timeslice& current) {
    const Program& program = current.program[0];
    tsc_run(kSecondaryNoDependents, previous.program[0], program, current.compliance);
    if (program.independent.bsid == 16) {
        tsc_run(kSecondaryProgram, previous.program[0], program, current.compliance);
    }
}

// A stream of short frames has to end with a whole frameset of six blocks.
void chkprg_hddvd_flush(Timeslice& current) {
    const Frame& frame = current.program[0].independent;
    if (frame.numblks != 6 && frame.frames_since_convsync != frames_per_frameset(frame) - 1) {
        tsc_mark(current.compliance, 172, Mark::kFailure);
    }
}

}  // namespace mediasplit
