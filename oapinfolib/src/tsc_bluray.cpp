#include "oapinfolib/src/tsc.h"
#include "oapinfolib/src/tsc_rules.h"

// Rules of primary and secondary audio as in Blu-ray.

namespace mediasplit {

namespace {

bool is_out_of_bounds(const Frame& frame, std::int64_t bytes, float rate) {
    return frame.frame_bytes > bytes || frame.rate > rate;
}

bool is_below_256_bytes(const Frame& frame) {
    return frame.frame_bytes < 256;
}

// An AC-3 frame: the core.
constexpr FrameRule kPrimaryCore[] = {
    {[](const Frame& frame) { return frame.bsid != 6 && frame.bsid != 8; }, 119},
    {has_substream_id, 121},
    {is_dual_mono, 124},
    {is_not_48k, 125},
    {is_not_six_blocks, 126},
    {[](const Frame& frame) { return is_out_of_bounds(frame, 2560, 640); }, 128},
    {is_below_256_bytes, 129},
};

// A dependent E-AC-3 frame: the extension of the core.
constexpr FrameRule kPrimaryExtension[] = {
    {has_substream_id, 189},
    {is_map_inconsistent, 133},
    {is_dual_mono, 135},
    {is_not_48k, 136},
    {is_not_six_blocks, 138},
    {[](const Frame& frame) { return is_out_of_bounds(frame, 4096, 4736); }, 140},
    {is_below_256_bytes, 141},
};

// Any other E-AC-3 frame has no place here.
constexpr FrameRule kPrimaryOther[] = {
    {[](const Frame&) { return true; }, 117},
    {has_substream_id, 121},
};

constexpr FrameRule kEveryFrame[] = {
    {has_crc_error, 166},
};

constexpr ProgramRule kCommonProgram[] = {
    {has_bad_stream_type, 188}, {is_channel_total_changed, 114}, {is_sample_rate_changed, 116},
    {is_not_i0_with_d0, 117},   {has_blocks_differ, 118},
};

constexpr ProgramRule kPrimaryProgram[] = {
    {is_dependent_count_changed, 120},
    {is_i0_coding_changed, 122},
    {is_i0_acmod_changed, 123},
    {is_i0_words_changed, 127},
    {is_d0_coding_changed, 131},
    {is_d0_chanmap_changed, 132},
    {is_d0_acmod_changed, 134},
    {[](const Program& previous, const Program& current) {
         return has_d0(current) &&
                previous.dependent[0].frame_words != current.dependent[0].frame_words;
     },
     139},
};

bool has_no_external_scale(const BitstreamInfo& info) {
    return info.extpgmscle == 0 && info.extpgmlscle == 0 && info.extpgmcscle == 0 &&
           info.extpgmrscle == 0 && info.extpgmlsscle == 0 && info.extpgmrsscle == 0 &&
           info.extpgmlfescle == 0;
}

constexpr FrameRule kSecondaryAny[] = {
    {[](const Frame& frame) { return frame.bsid != 16; }, 142},
    {is_dependent, 177},
    {is_transcoded_or_reserved, 188},
};

constexpr FrameRule kSecondaryIndependent[] = {
    {has_substream_id, 143},
    {is_dual_mono, 146},
    {is_not_48k, 147},
    {is_not_six_blocks, 149},
    {[](const Frame& frame) { return frame.frame_bytes > 1024; }, 151},
    {[](const Frame& frame) { return frame.bsi.mixmdate != 1; }, 152},
    {has_pgmscle, 153},
    {[](const Frame& frame) { return has_paninfoe(frame) && frame.acmod != 1; }, 154},
    {[](const Frame& frame) { return frame.bsi.mixdef != 3 && frame.bsi.extpgmscle == 0; }, 178,
     Mark::kWarning},
    {[](const Frame& frame) { return frame.bsi.mixdef == 3 && has_no_external_scale(frame.bsi); },
     179, Mark::kWarning},
    {[](const Frame& frame) { return frame.acmod != 1; }, 180, Mark::kWarning},
    {[](const Frame& frame) { return frame.bsi.extpgmlscle != 0; }, 181, Mark::kWarning},
    {[](const Frame& frame) { return frame.bsi.extpgmcscle != 0; }, 182, Mark::kWarning},
    {[](const Frame& frame) { return frame.bsi.extpgmrscle != 0; }, 183, Mark::kWarning},
    {[](const Frame& frame) { return frame.bsi.extpgmlsscle != 0; }, 184, Mark::kWarning},
    {[](const Frame& frame) { return frame.bsi.extpgmrsscle != 0; }, 185, Mark::kWarning},
    {[](const Frame& frame) { return frame.bsi.extpgmlfescle != 0; }, 186, Mark::kWarning},
    {[](const Frame& frame) {
         return frame.bsi.premixcmpsel != 0 || frame.bsi.drcsrc != 0 || frame.bsi.premixcmpscl != 0;
     },
     190},
    {[](const Frame& frame) { return frame.bsi.mixdef != 0 && frame.bsi.mixdef != 3; }, 191},
};

constexpr ProgramRule kSecondaryProgram[] = {
    {has_dependents, 177},
    {is_i0_coding_changed, 144},
    {is_i0_acmod_changed, 145},
};

}  // namespace

void chkfrm_bluray_primary(const SubstreamRecord& frame, ComplianceBlock& block) {
    if (frame.bsid < 9) {
        tsc_run(kPrimaryCore, frame, block);
    } else if (frame.bsid != 16) {
        tsc_mark(block, frame.strmtyp != 0 ? 130 : 119, Mark::kFailure);
    } else if (is_dependent(frame)) {
        tsc_run(kPrimaryExtension, frame, block);
    } else {
        tsc_run(kPrimaryOther, frame, block);
    }
    tsc_run(kEveryFrame, frame, block);
}

void chkfrm_bluray_secondary(const SubstreamRecord& frame, ComplianceBlock& block) {
    tsc_run(kSecondaryAny, frame, block);
    if (frame.strmtyp == 0) {
        tsc_run(kSecondaryIndependent, frame, block);
    }
    tsc_run(kEveryFrame, frame, block);
}

void chkprg_bluray_common(const Timeslice& previous, Timeslice& current) {
    if (current.nprograms != 1) {
        tsc_mark(current.compliance, 113, Mark::kFailure);
    }
    tsc_run(kCommonProgram, previous.program[0], current.program[0], current.compliance);
}

void chkprg_bluray_primary(const Timeslice& previous, Timeslice& current) {
    tsc_run(kPrimaryProgram, previous.program[0], current.program[0], current.compliance);
}

void chkprg_bluray_secondary(const Timeslice& previous, Timeslice& current) {
    if (current.program[0].independent.bsid == 16) {
        tsc_run(kSecondaryProgram, previous.program[0], current.program[0], current.compliance);
    }
}

}  // namespace mediasplit
