#include "oapinfolib/src/tsc.h"

#include <array>

#include "oapinfolib/src/fatal.h"

namespace mediasplit {

namespace {

constexpr FatalSite kSiteFrameMode{kSourceTsc, 97};
constexpr FatalSite kSiteTimesliceMode{kSourceTsc, 148};
constexpr FatalSite kSiteProgramMode{kSourceTsc, 212};

using FrameCheck = void (*)(const SubstreamRecord&, ComplianceBlock&);
using ProgramCheck = void (*)(const Timeslice&, Timeslice&);

struct ModeRules {
    FrameCheck frame;
    ProgramCheck common;
    ProgramCheck program;
    void (*flush)(Timeslice&);
};

// By compliance mode; mode 0 has no rules.
constexpr std::array<ModeRules, 5> kModes{{
    {nullptr, nullptr, nullptr, nullptr},
    {chkfrm_hddvd_primary, chkprg_hddvd_common, chkprg_hddvd_primary, chkprg_hddvd_flush},
    {chkfrm_bluray_primary, chkprg_bluray_common, chkprg_bluray_primary, nullptr},
    {chkfrm_hddvd_secondary, chkprg_hddvd_common, chkprg_hddvd_secondary, nullptr},
    {chkfrm_bluray_secondary, chkprg_bluray_common, chkprg_bluray_secondary, nullptr},
}};

bool is_known(int mode) {
    return mode >= 0 && mode < static_cast<int>(kModes.size());
}

int refuse_mode(const char* text, FatalSite site) {
    return refuse(kTscUnknownMode, text, site);
}

// A failure stands, and a warning gives way to a failure alone.
void merge(const ComplianceBlock& timeslice, ComplianceBlock& stream) {
    for (std::size_t row = 0; row < kResultRows; ++row) {
        const Verdict found = timeslice.results[row];
        const Verdict kept = stream.results[row];
        const bool failed = found == Verdict::kFailure || kept == Verdict::kFailure;
        const Verdict other = kept == Verdict::kPassed ? found : kept;
        stream.results[row] = failed ? Verdict::kFailure : other;
    }
    if (timeslice.any_failure != 0) {
        stream.any_failure = 1;
    }
}

}  // namespace

void tsc_tsinit(ComplianceBlock& block) {
    block = ComplianceBlock{};
}

void tsc_mark(ComplianceBlock& block, int row, Mark mark) {
    Verdict& result = block.results[static_cast<std::size_t>(row)];
    result = mark == Mark::kWarning ? Verdict::kWarning : Verdict::kFailure;
    if (mark == Mark::kFailure) {
        block.any_failure = 1;
    }
}

void tsc_run(std::span<const FrameRule> rules, const SubstreamRecord& frame,
             ComplianceBlock& block) {
    for (const FrameRule& rule : rules) {
        if (rule.broken(frame)) {
            tsc_mark(block, rule.row, rule.mark);
        }
    }
}

void tsc_run(std::span<const ProgramRule> rules, const ProgramRecord& previous,
             const ProgramRecord& current, ComplianceBlock& block) {
    for (const ProgramRule& rule : rules) {
        if (rule.broken(previous, current)) {
            tsc_mark(block, rule.row, Mark::kFailure);
        }
    }
}

int tsc_chkfrm(int mode, const SubstreamRecord& frame, ComplianceBlock& block) {
    if (!is_known(mode)) {
        return refuse_mode("Unknown compliance mode requested", kSiteFrameMode);
    }
    const FrameCheck check = kModes[static_cast<std::size_t>(mode)].frame;
    if (check == nullptr) {
        tsc_tsinit(block);
    } else {
        check(frame, block);
    }
    return 0;
}

int tsc_chkts(int mode, Timeslice& timeslice, ComplianceBlock& stream) {
    if (!is_known(mode)) {
        return refuse_mode("Unknown compliance mode requested", kSiteTimesliceMode);
    }
    for (int i = 0; i < timeslice.nprograms; ++i) {
        const ProgramRecord& program = timeslice.program[static_cast<std::size_t>(i)];
        if (program.independent.present != 0) {
            tsc_chkfrm(mode, program.independent, timeslice.compliance);
        }
        if (program.num_dependent == 0) {
            continue;
        }
        for (const SubstreamRecord& dependent : program.dependent) {
            if (dependent.present != 0) {
                tsc_chkfrm(mode, dependent, timeslice.compliance);
            }
        }
    }
    merge(timeslice.compliance, stream);
    return 0;
}

int tsc_chkprg(int mode, bool final_slice, const Timeslice& previous, Timeslice& current,
               ComplianceBlock& stream) {
    if (!is_known(mode)) {
        return refuse_mode("Unknown compliance mode", kSiteProgramMode);
    }
    if (mode == kModeNone) {
        tsc_tsinit(current.compliance);
        stream.any_failure = current.compliance.any_failure;
        return 0;
    }
    const ModeRules& rules = kModes[static_cast<std::size_t>(mode)];
    rules.common(previous, current);
    rules.program(previous, current);
    if (final_slice && rules.flush != nullptr) {
        rules.flush(current);
    }
    merge(current.compliance, stream);
    return 0;
}

}  // namespace mediasplit
