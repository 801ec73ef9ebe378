#include "oapinfolib/src/timeslice.h"

#include <algorithm>
#include <cstring>

namespace mediasplit {

namespace {

// The sizes that callers of the size query know.
static_assert(sizeof(void*) != 8 || sizeof(BitstreamInfo) == 312);
static_assert(sizeof(void*) != 8 || sizeof(SubstreamRecord) == 2504);
static_assert(sizeof(void*) != 8 || sizeof(Timeslice) == 182024);

const SubstreamRecord kEmptySubstream{};

// What an unused program carries from one time slice to the next.
bool same_counters(const SubstreamRecord& a, const SubstreamRecord& b) {
    return a.convsync == b.convsync && a.previous_convsync == b.previous_convsync &&
           a.frames_since_convsync == b.frames_since_convsync;
}

void copy_counters(const SubstreamRecord& from, SubstreamRecord& to) {
    to.convsync = from.convsync;
    to.previous_convsync = from.previous_convsync;
    to.frames_since_convsync = from.frames_since_convsync;
}

bool same_program(const ProgramRecord& a, const ProgramRecord& b) {
    if (static_cast<const ProgramTally&>(a) != static_cast<const ProgramTally&>(b) ||
        a.independent != b.independent) {
        return false;
    }
    // The tallies are equal, so either both have dependent frames or none has.
    if (a.num_dependent == 0) {
        return true;
    }
    for (std::size_t slot = 0; slot < kMaxDependents; ++slot) {
        const bool in_use = a.dependent[slot].present != 0 || b.dependent[slot].present != 0;
        if (in_use && a.dependent[slot] != b.dependent[slot]) {
            return false;
        }
    }
    return true;
}

void copy_program(const ProgramRecord& from, ProgramRecord& to) {
    const bool has_dependents = from.num_dependent != 0 || to.num_dependent != 0;
    static_cast<ProgramTally&>(to) = static_cast<const ProgramTally&>(from);
    to.independent = from.independent;
    if (!has_dependents) {
        return;
    }
    for (std::size_t slot = 0; slot < kMaxDependents; ++slot) {
        if (from.dependent[slot].present != 0 || to.dependent[slot].present != 0) {
            to.dependent[slot] = from.dependent[slot];
        }
    }
}

void empty_program(ProgramRecord& program) {
    const bool has_dependents = program.num_dependent != 0;
    const std::uint16_t convsync = program.independent.convsync;
    const std::uint16_t counter = program.independent.frames_since_convsync;
    static_cast<ProgramTally&>(program) = ProgramTally{};
    reset_substream(program.independent);
    program.independent.previous_convsync = convsync;
    program.independent.frames_since_convsync = counter;
    if (!has_dependents) {
        return;
    }
    for (SubstreamRecord& dependent : program.dependent) {
        if (dependent.present != 0) {
            reset_substream(dependent);
        }
    }
}

}  // namespace

bool ComplianceBlock::operator==(const ComplianceBlock& other) const {
    return any_failure == other.any_failure &&
           std::memcmp(results.data(), other.results.data(), sizeof results) == 0;
}

std::size_t AuxData::used_words() const {
    return bits <= 0 ? 0 : std::min((static_cast<std::size_t>(bits) - 1) / 16 + 1, kMaxAuxWords);
}

void AuxData::assign(const AuxData& other) {
    bits = other.bits;
    std::copy_n(other.words.begin(), other.used_words(), words.begin());
}

bool AuxData::operator==(const AuxData& other) const {
    return bits == other.bits &&
           std::equal(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(used_words()),
                      other.words.begin());
}

void reset_substream(SubstreamRecord& record) {
    record = kEmptySubstream;
}

void reset_timeslice(Timeslice& timeslice) {
    timeslice.nprograms = 0;
    timeslice.compliance = ComplianceBlock{};
    for (ProgramRecord& program : timeslice.program) {
        static_cast<ProgramTally&>(program) = ProgramTally{};
        reset_substream(program.independent);
        for (SubstreamRecord& dependent : program.dependent) {
            reset_substream(dependent);
        }
    }
}

void tsi_tsinit(Timeslice& timeslice) {
    const std::size_t in_use = programs_in_use(timeslice);
    for (std::size_t i = 0; i < in_use; ++i) {
        empty_program(timeslice.program[i]);
    }
    for (std::size_t i = in_use; i < kMaxPrograms; ++i) {
        SubstreamRecord& unused = timeslice.program[i].independent;
        unused.previous_convsync = unused.convsync;
        unused.convsync = kUnset16;
    }
    timeslice.nprograms = 0;
    timeslice.compliance = ComplianceBlock{};
}

void copy_timeslice(const Timeslice& from, Timeslice& to) {
    const std::size_t in_use = std::max(programs_in_use(from), programs_in_use(to));
    to.nprograms = from.nprograms;
    to.compliance = from.compliance;
    for (std::size_t i = 0; i < in_use; ++i) {
        copy_program(from.program[i], to.program[i]);
    }
    for (std::size_t i = in_use; i < kMaxPrograms; ++i) {
        copy_counters(from.program[i].independent, to.program[i].independent);
    }
}

bool tsi_compare_ts(const Timeslice& a, const Timeslice& b) {
    if (a.nprograms != b.nprograms || a.compliance != b.compliance) {
        return false;
    }
    const std::size_t in_use = programs_in_use(a);
    for (std::size_t i = 0; i < in_use; ++i) {
        if (!same_program(a.program[i], b.program[i])) {
            return false;
        }
    }
    for (std::size_t i = in_use; i < kMaxPrograms; ++i) {
        if (!same_counters(a.program[i].independent, b.program[i].independent)) {
            return false;
        }
    }
    return true;
}

}  // namespace mediasplit
