#include "oapinfolib/src/timeslice.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <random>

#include "oapinfolib/src/tsi.h"
#include "tests/unit/oapinfolib/oap_test_support.h"

// Copies, comparisons and resets go over the slots in use. Here they are held against full ones,
// over random streams.

namespace mediasplit {
namespace {

bool equal_in_full(const Timeslice& a, const Timeslice& b) {
    bool equal = a.nprograms == b.nprograms && a.compliance == b.compliance;
    for (std::size_t i = 0; i < kMaxPrograms; ++i) {
        equal = equal &&
                static_cast<const ProgramTally&>(a.program[i]) ==
                    static_cast<const ProgramTally&>(b.program[i]) &&
                a.program[i].independent == b.program[i].independent &&
                a.program[i].dependent == b.program[i].dependent;
    }
    return equal;
}

void copy_in_full(const Timeslice& from, Timeslice& to) {
    to = from;
}

// tsi_tsinit as it would be over every slot.
void init_in_full(Timeslice& timeslice) {
    std::array<SubstreamRecord, kMaxPrograms> kept;
    for (std::size_t i = 0; i < kMaxPrograms; ++i) {
        kept[i].convsync = timeslice.program[i].independent.convsync;
        kept[i].frames_since_convsync = timeslice.program[i].independent.frames_since_convsync;
    }
    reset_timeslice(timeslice);
    for (std::size_t i = 0; i < kMaxPrograms; ++i) {
        timeslice.program[i].independent.previous_convsync = kept[i].convsync;
        timeslice.program[i].independent.frames_since_convsync = kept[i].frames_since_convsync;
    }
}

BitstreamInfo random_frame(std::minstd_rand& random) {
    BitstreamInfo info;
    info.bsid = 16;
    info.frmsiz = 100;
    info.acmod = 2;
    info.nfchans = 2;
    info.nchans = 2;
    info.convsync = static_cast<std::uint16_t>(random() % 2);
    info.strmtyp = random() % 3 == 0 ? 1 : 0;
    info.substreamid = static_cast<std::uint16_t>(random() % 3 == 0 ? 0 : random() % 8);
    info.chanmap = static_cast<std::uint16_t>(random() % 4);
    return info;
}

TEST(Timeslice, PartialOperationsEqualFullOnes) {
    auto state = std::make_unique<TimesliceState>();
    auto partial = std::make_unique<Timeslice>();
    auto full = std::make_unique<Timeslice>();
    auto shadow = std::make_unique<Timeslice>();
    tsi_sysinit(*state);
    std::minstd_rand random(7);
    ExpectText quiet;
    for (int round = 0; round < 3000; ++round) {
        const std::array<std::uint16_t, 3> aux{1, 2, 3};
        const BitstreamInfo info = random_frame(random);
        TsiFrame frame;
        frame.info = &info;
        frame.status = kStatusGood;
        frame.aux_bits = static_cast<std::int16_t>(random() % 40);
        frame.aux_data = aux.data();
        bool closed = false;
        tsi_procframe(frame, *state, closed);

        copy_in_full(state->current, *partial);
        copy_in_full(state->current, *full);
        tsi_tsinit(*partial);
        init_in_full(*full);
        ASSERT_TRUE(equal_in_full(*partial, *full)) << round;

        ASSERT_EQ(tsi_compare_ts(state->current, state->previous),
                  equal_in_full(state->current, state->previous))
            << round;
        if (random() % 4 == 0) {
            copy_timeslice(state->current, *shadow);
            ASSERT_TRUE(equal_in_full(state->current, *shadow)) << round;
        }
        ASSERT_EQ(tsi_compare_ts(state->current, *shadow), equal_in_full(state->current, *shadow))
            << round;
    }
}

TEST(Timeslice, ComparisonSeesEachKindOfDifference) {
    auto a = std::make_unique<Timeslice>();
    auto b = std::make_unique<Timeslice>();
    reset_timeslice(*a);
    reset_timeslice(*b);
    a->nprograms = b->nprograms = 2;
    a->program[1].num_dependent = b->program[1].num_dependent = 1;
    a->program[1].dependent[4].present = b->program[1].dependent[4].present = 1;
    a->program[0].independent.aux.bits = b->program[0].independent.aux.bits = 17;
    EXPECT_TRUE(tsi_compare_ts(*a, *b));
    const auto differs = [&](auto&& change) {
        auto changed = std::make_unique<Timeslice>(*a);
        change(*changed);
        return !tsi_compare_ts(*changed, *b) && !tsi_compare_ts(*b, *changed);
    };
    EXPECT_TRUE(differs([](Timeslice& t) { t.nprograms = 1; }));
    EXPECT_TRUE(differs([](Timeslice& t) { t.compliance.any_failure = 1; }));
    EXPECT_TRUE(differs([](Timeslice& t) { t.compliance.results[191] = Verdict::kWarning; }));
    EXPECT_TRUE(differs([](Timeslice& t) { t.program[1].total_words = 1; }));
    EXPECT_TRUE(differs([](Timeslice& t) { t.program[1].independent.bsi.panmean[1] = 1; }));
    EXPECT_TRUE(differs([](Timeslice& t) { t.program[1].dependent[4].rate = 1; }));
    EXPECT_TRUE(differs([](Timeslice& t) { t.program[1].dependent[5].present = 1; }));
    EXPECT_TRUE(differs([](Timeslice& t) { t.program[0].independent.aux.words[1] = 1; }));
    EXPECT_FALSE(differs([](Timeslice& t) { t.program[0].independent.aux.words[2] = 1; }))
        << "not in use";
    EXPECT_TRUE(differs([](Timeslice& t) { t.program[7].independent.frames_since_convsync = 3; }));
}

}  // namespace
}  // namespace mediasplit
