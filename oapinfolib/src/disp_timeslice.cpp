#include <cstdlib>

#include "oapinfolib/src/disp.h"
#include "oapinfolib/src/disp_line.h"
#include "oapinfolib/src/tsc.h"

namespace mediasplit {

namespace {

// Frames of 44.1 kHz vary by a word, which is no change.
bool is_size_changed(std::int64_t a, std::int64_t b) {
    return std::llabs(a - b) > 1;
}

bool is_program_changed(const ProgramRecord& a, const ProgramRecord& b) {
    return a.num_dependent != b.num_dependent || is_size_changed(a.total_words, b.total_words) ||
           a.total_channels != b.total_channels || a.lfe_count != b.lfe_count ||
           a.status != b.status;
}

bool is_frame_changed(const SubstreamRecord& a, const SubstreamRecord& b) {
    return a.present != b.present || a.bsid != b.bsid || a.strmtyp != b.strmtyp ||
           a.substreamid != b.substreamid || a.acmod != b.acmod || a.numblks != b.numblks ||
           a.lfeon != b.lfeon || a.nfchans != b.nfchans || a.sample_rate != b.sample_rate ||
           a.sourcefscod != b.sourcefscod || is_size_changed(a.frame_words, b.frame_words) ||
           a.status != b.status;
}

int compare_frames(std::uint16_t flags, const SubstreamRecord& frame, const SubstreamRecord& shadow,
                   int reason) {
    if (is_frame_changed(frame, shadow)) {
        return reason;
    }
    if ((flags & kDispBsi) != 0 && frame.bsi != shadow.bsi) {
        return kDispBsiChanged;
    }
    if ((flags & kDispAuxdata) != 0 && frame.aux.bits > 0) {
        return kDispHasAuxdata;
    }
    if ((flags & kDispEncinfo) != 0 && frame.encinfo_present != 0) {
        return kDispHasEncinfo;
    }
    return kDispSame;
}

int compare_dependents(std::uint16_t flags, const ProgramRecord& program,
                       const ProgramRecord& shadow) {
    if (program.num_dependent == 0 && shadow.num_dependent == 0) {
        return kDispSame;
    }
    for (std::size_t slot = 0; slot < kMaxDependents; ++slot) {
        const int reason = compare_frames(flags, program.dependent[slot], shadow.dependent[slot],
                                          kDispDependentChanged);
        if (reason != kDispSame) {
            return reason;
        }
    }
    return kDispSame;
}

int compare_programs(std::uint16_t flags, const Timeslice& timeslice, const Timeslice& shadow) {
    const bool by_program = (flags & kDispProgram) != 0;
    if (timeslice.nprograms != shadow.nprograms) {
        return by_program ? kDispProgramChanged : kDispIndependentChanged;
    }
    for (std::size_t i = 0; by_program && i < programs_in_use(timeslice); ++i) {
        if (is_program_changed(timeslice.program[i], shadow.program[i])) {
            return kDispProgramChanged;
        }
    }
    return kDispSame;
}

void print_program(const ProgramRecord& program, bool doubtful) {
    DispLine line;
    line.took(std::snprintf(line.at(), line.room(), "    Combined data rate: %2.1f kbps",
                            static_cast<double>(program.combined_rate)));
    line.end(doubtful);
    line.took(std::snprintf(line.at(), line.room(), "    Number of dependent substreams: %d",
                            int{program.num_dependent}));
    line.end(doubtful);
    line.took(std::snprintf(line.at(), line.room(),
                            "    Number of 16b words between sync frames (+/-1): %ld",
                            static_cast<long>(program.total_words)));
    line.end(doubtful);
    line.took(std::snprintf(line.at(), line.room(), "    Number of coded channels: %d.%d",
                            int{program.coded_channels}, int{program.coded_lfe}));
    line.end(doubtful);
    line.took(std::snprintf(line.at(), line.room(), "    Program status: %s",
                            disp_printstatus(program.status)));
    line.end(doubtful);
    line.add("    Coded channels present: ");
    disp_printchans(program.channel_present, line);
    line.end(doubtful);
}

void print_substreams(std::uint16_t flags, const ProgramRecord& program) {
    if ((flags & kDispIndependent) != 0 && program.independent.present != 0) {
        std::printf("        INDEPENDENT SUBSTREAM INFORMATION:\n");
        disp_printfrminfo(flags, program.independent);
    }
    for (std::size_t slot = 0; (flags & kDispDependent) != 0 && slot < kMaxDependents; ++slot) {
        if (program.dependent[slot].present != 0) {
            std::printf("        DEPENDENT SUBSTREAM %d INFORMATION:\n", static_cast<int>(slot));
            disp_printfrminfo(flags, program.dependent[slot]);
        }
    }
}

// Looks at all rows at once: nearly every time slice of a good stream passes them.
bool all_passed(const ComplianceBlock& block) {
    std::uint32_t verdicts = 0;
    for (const Verdict verdict : block.results) {
        verdicts |= static_cast<std::uint32_t>(verdict);
    }
    return verdicts == static_cast<std::uint32_t>(Verdict::kPassed);
}

void print_rows(const ComplianceBlock& block, bool with_failures, bool with_warnings) {
    if (all_passed(block)) {
        return;
    }
    for (std::size_t row = 0; row < kResultRows; ++row) {
        const Verdict verdict = block.results[row];
        if ((with_failures && verdict == Verdict::kFailure) ||
            (with_warnings && verdict == Verdict::kWarning)) {
            std::printf("    %03d - %s\n", static_cast<int>(row),
                        disp_geterrstring(static_cast<int>(row)));
        }
    }
}

// Failure rows without the any-failure flag stay out of a time slice's lines; the summary has them.
void print_timeslice_rows(std::uint16_t flags, const ComplianceBlock& block) {
    if ((flags & kDispCompliance) != 0) {
        print_rows(block, block.any_failure != 0, (flags & kDispWarnings) != 0);
    }
}

void print_timeslice(std::uint16_t flags, const Timeslice& timeslice) {
    const bool is_titled = (flags & (kDispProgram | kDispIndependent | kDispDependent)) != 0;
    bool doubtful = false;
    for (std::size_t i = 0; is_titled && i < programs_in_use(timeslice); ++i) {
        const ProgramRecord& program = timeslice.program[i];
        if (i == 0) {
            disp_spacer();
        } else {
            disp_half_spacer();
        }
        doubtful = doubtful || program.status != kStatusGood;
        if ((flags & kDispProgram) != 0) {
            print_program(program, doubtful);
        }
        print_substreams(flags, program);
    }
    print_timeslice_rows(flags, timeslice.compliance);
}

}  // namespace

int disp_new_ts(std::uint16_t flags, const Timeslice& timeslice, const Timeslice& shadow) {
    int reason = compare_programs(flags, timeslice, shadow);
    for (std::size_t i = 0; reason == kDispSame && i < programs_in_use(timeslice); ++i) {
        const ProgramRecord& program = timeslice.program[i];
        if ((flags & kDispIndependent) != 0) {
            reason = compare_frames(flags, program.independent, shadow.program[i].independent,
                                    kDispIndependentChanged);
        }
        if (reason == kDispSame && (flags & kDispDependent) != 0) {
            reason = compare_dependents(flags, program, shadow.program[i]);
        }
    }
    if (reason == kDispSame && timeslice.compliance != shadow.compliance) {
        reason = kDispComplianceChanged;
    }
    return reason;
}

int disp_copy_ts(const Timeslice& timeslice, Timeslice& shadow) {
    copy_timeslice(timeslice, shadow);
    return 0;
}

int disp_printtsinfo(std::uint16_t flags, std::int64_t number, std::int64_t& last_printed,
                     const Timeslice& timeslice, Timeslice& shadow, bool final_slice) {
    if (number == 0) {
        return disp_copy_ts(timeslice, shadow);
    }
    if (disp_new_ts(flags, timeslice, shadow) == kDispSame && !final_slice) {
        return 0;
    }
    print_timeslice(flags, shadow);
    last_printed = number;
    return disp_copy_ts(timeslice, shadow);
}

int disp_printfilesummary(std::uint16_t flags, const TimesliceState& state) {
    if ((flags & kDispTotals) != 0) {
        disp_spacer();
        std::printf("Total number of timeslices: %ld\n", static_cast<long>(state.timeslice_count));
        std::printf("Total number of frames: %ld\n", static_cast<long>(state.frame_count));
        std::printf("Total playing time: %2.1f seconds\n", static_cast<double>(state.playing_time));
        std::printf("Overall data rate: %2.1f kbps\n", static_cast<double>(state.data_rate));
        std::printf("Overall bitstream status: %s\n", disp_printstatus(state.status));
    }
    if ((flags & kDispWarnings) != 0) {
        print_rows(state.failures, state.failures.any_failure != 0, true);
    } else if ((flags & kDispSummaryCompliance) != 0) {
        print_rows(state.failures, true, false);
    }
    return 0;
}

const char* disp_geterrstring(int row) {
    return tsc_row_text(row);
}

void disp_spacer() {
    std::printf("%s\n", "~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~");
}

void disp_half_spacer() {
    std::printf("%s\n", "~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~~");
}

}  // namespace mediasplit
