#include <gtest/gtest.h>

#include <memory>
#include <ostream>

#include "oapinfolib/src/tsc.h"
#include "tests/unit/oapinfolib/oap_test_support.h"
#include "tests/unit/oapinfolib/tsc_test_support.h"

// Each program rule of each mode: the smallest change against the time slice before that breaks it.

namespace mediasplit {
namespace {

Timeslice& independent_alone(Timeslice& timeslice) {
    reset_timeslice(timeslice);
    timeslice.nprograms = 1;
    ProgramRecord& program = timeslice.program[0];
    program.total_channels = 5;
    program.lfe_count = 1;
    program.total_words = 768;
    program.numblks = 6;
    program.combined_rate = 384;
    SubstreamRecord& frame = program.independent;
    frame.present = 1;
    frame.bsid = 16;
    frame.acmod = 7;
    frame.nfchans = 5;
    frame.lfeon = 1;
    frame.nchans = 6;
    frame.numblks = 6;
    frame.sample_rate = 48000;
    frame.sourcefscod = 0;
    frame.frame_words = 768;
    frame.convsync = 1;
    frame.frames_since_convsync = 1;
    return timeslice;
}

Timeslice& with_d0(Timeslice& timeslice) {
    independent_alone(timeslice);
    ProgramRecord& program = timeslice.program[0];
    program.num_dependent = 1;
    SubstreamRecord& frame = program.dependent[0];
    frame = program.independent;
    frame.strmtyp = 1;
    frame.acmod = 2;
    frame.nfchans = 2;
    frame.lfeon = 0;
    frame.nchans = 2;
    frame.chanmap = 0x0200;
    frame.frame_words = 300;
    return timeslice;
}

// One block a frame, in the last frame of a frameset.
Timeslice& one_block(Timeslice& timeslice) {
    independent_alone(timeslice);
    SubstreamRecord& frame = timeslice.program[0].independent;
    frame.numblks = 1;
    frame.convsync = 0;
    frame.frames_since_convsync = 5;
    return timeslice;
}

struct ProgramCase {
    const char* name;
    int mode;
    Timeslice& (*base)(Timeslice&);
    void (*change)(Timeslice& previous, Timeslice& current);
    const char* rows;
    bool final_slice = false;
};

void PrintTo(const ProgramCase& test, std::ostream* out) {
    *out << test.name;
}

SubstreamRecord& i0(Timeslice& timeslice) {
    return timeslice.program[0].independent;
}
SubstreamRecord& d0(Timeslice& timeslice) {
    return timeslice.program[0].dependent[0];
}
void convsync(Timeslice& timeslice, int numblks, int set, int counter) {
    i0(timeslice).numblks = static_cast<std::uint16_t>(numblks);
    i0(timeslice).convsync = static_cast<std::uint16_t>(set);
    i0(timeslice).frames_since_convsync = static_cast<std::uint16_t>(counter);
}
void convsync_both(Timeslice& previous, Timeslice& current, int numblks, int set, int counter) {
    convsync(previous, numblks, set, counter);
    convsync(current, numblks, set, counter);
}

using Slice = Timeslice;

const ProgramCase kCases[] = {
    // Modes 1 and 3, common.
    {"PrimaryIsGood", 1, independent_alone, [](Slice&, Slice&) {}, ""},
    {"PrimaryWithD0IsGood", 1, with_d0, [](Slice&, Slice&) {}, ""},
    {"PrimaryProgramCount", 1, independent_alone, [](Slice&, Slice& s) { s.nprograms = 2; }, "61"},
    {"PrimaryAc3", 1, independent_alone,
     [](Slice& p, Slice& s) {
         i0(p).bsid = i0(s).bsid = 8;
         s.program[0].total_words = 9;
     },
     "68"},
    {"PrimaryBsidOfOtherStreamType", 1, independent_alone,
     [](Slice& p, Slice& s) {
         i0(p).bsid = i0(s).bsid = 13;
         i0(s).strmtyp = 2;
     },
     "84"},
    {"PrimaryTranscoded", 1, independent_alone, [](Slice&, Slice& s) { i0(s).strmtyp = 2; },
     "187"},
    {"PrimaryChannelTotal", 1, independent_alone,
     [](Slice&, Slice& s) { s.program[0].total_channels = 7; }, "62"},
    {"PrimaryLfeCount", 1, independent_alone,
     [](Slice&, Slice& s) { s.program[0].lfe_count = 2; }, "62"},
    {"PrimaryTotalWords", 1, independent_alone,
     [](Slice&, Slice& s) { s.program[0].total_words = 767; }, "63"},
    {"PrimaryRateChange", 1, independent_alone,
     [](Slice& p, Slice&) { i0(p).sample_rate = 44100; }, "64"},
    {"PrimaryIndependentAbsent", 1, independent_alone,
     [](Slice&, Slice& s) { i0(s).present = 0; }, "65"},
    {"PrimarySecondDependent", 1, with_d0,
     [](Slice&, Slice& s) { s.program[0].dependent[1].present = 1; }, "65"},
    {"PrimaryLastDependent", 1, with_d0,
     [](Slice&, Slice& s) { s.program[0].dependent[7].present = 1; }, "65"},
    {"PrimaryRateOf3024IsGood", 1, with_d0,
     [](Slice&, Slice& s) { s.program[0].combined_rate = 3024; }, ""},
    {"PrimaryRateAbove3024", 1, independent_alone,
     [](Slice&, Slice& s) { s.program[0].combined_rate = 3024.5F; }, "67"},
    {"PrimaryRateAbove3024WithD0", 1, with_d0,
     [](Slice&, Slice& s) { s.program[0].combined_rate = 3024.5F; }, "67"},
    {"PrimaryBlocksDiffer", 1, with_d0,
     [](Slice& p, Slice& s) { d0(p).numblks = d0(s).numblks = 3; }, "66 95"},
    // Mode 1.
    {"PrimaryDependentCount", 1, independent_alone,
     [](Slice&, Slice& s) { s.program[0].num_dependent = 1; }, "69"},
    {"PrimaryChannels", 1, independent_alone, [](Slice&, Slice& s) { i0(s).nfchans = 4; }, "71"},
    {"PrimaryLfe", 1, independent_alone, [](Slice&, Slice& s) { i0(s).lfeon = 0; }, "71"},
    {"PrimaryAcmod", 1, independent_alone, [](Slice&, Slice& s) { i0(s).acmod = 6; }, "72"},
    {"PrimaryBlocks", 1, independent_alone,
     [](Slice& p, Slice&) { i0(p).numblks = 3; }, "76"},
    {"PrimaryFrameWords", 1, independent_alone,
     [](Slice&, Slice& s) { i0(s).frame_words = 767; }, "77"},
    {"PrimaryFrameWordsOf44kVary", 1, independent_alone,
     [](Slice& p, Slice& s) {
         i0(p).sample_rate = i0(s).sample_rate = 44100;
         i0(s).frame_words = 767;
     },
     ""},
    {"PrimarySyncOfThreeBlocksOnTime", 1, independent_alone,
     [](Slice& p, Slice& s) { convsync_both(p, s, 3, 1, 2); }, ""},
    {"PrimarySyncOfThreeBlocksEarly", 1, independent_alone,
     [](Slice& p, Slice& s) { convsync_both(p, s, 3, 1, 1); }, "81"},
    {"PrimarySyncOfTwoBlocksOnTime", 1, independent_alone,
     [](Slice& p, Slice& s) { convsync_both(p, s, 2, 1, 3); }, ""},
    {"PrimarySyncOfTwoBlocksLate", 1, independent_alone,
     [](Slice& p, Slice& s) { convsync_both(p, s, 2, 1, 4); }, "82"},
    {"PrimarySyncOfOneBlockOnTime", 1, independent_alone,
     [](Slice& p, Slice& s) { convsync_both(p, s, 1, 1, 6); }, ""},
    {"PrimarySyncOfOneBlockEarly", 1, independent_alone,
     [](Slice& p, Slice& s) { convsync_both(p, s, 1, 1, 5); }, "83"},
    {"PrimarySyncOfSixBlocksLate", 1, independent_alone,
     [](Slice& p, Slice& s) { convsync_both(p, s, 6, 1, 2); }, "169"},
    {"PrimarySyncOfFirstFrameIsFree", 1, independent_alone,
     [](Slice& p, Slice& s) { convsync_both(p, s, 1, 1, -1); }, ""},
    {"PrimaryNoSyncInFirstFrame", 1, independent_alone,
     [](Slice& p, Slice& s) { convsync_both(p, s, 1, 0, -1); }, "170"},
    {"PrimaryNoSyncInTime", 1, independent_alone,
     [](Slice& p, Slice& s) { convsync_both(p, s, 1, 0, 6); }, "171"},
    {"PrimaryNoSyncYet", 1, independent_alone,
     [](Slice& p, Slice& s) { convsync_both(p, s, 1, 0, 5); }, ""},
    {"PrimaryD0Rate", 1, with_d0,
     [](Slice& p, Slice& s) { d0(p).sample_rate = d0(s).sample_rate = 44100; }, "93"},
    {"PrimaryD0SourceRate", 1, with_d0,
     [](Slice& p, Slice& s) { d0(p).sourcefscod = d0(s).sourcefscod = 1; }, "93"},
    {"PrimaryD0Channels", 1, with_d0, [](Slice&, Slice& s) { d0(s).nfchans = 3; }, "86"},
    {"PrimaryD0Lfe", 1, with_d0, [](Slice&, Slice& s) { d0(s).lfeon = 1; }, "86"},
    {"PrimaryD0Map", 1, with_d0, [](Slice&, Slice& s) { d0(s).chanmap = 0x0400; }, "87"},
    {"PrimaryD0Acmod", 1, with_d0, [](Slice&, Slice& s) { d0(s).acmod = 6; }, "89"},
    {"PrimaryD0Blocks", 1, with_d0, [](Slice& p, Slice&) { d0(p).numblks = 3; }, "94"},
    {"PrimaryD0ThatIsGoneIsNotCompared", 1, with_d0,
     [](Slice&, Slice& s) {
         d0(s) = SubstreamRecord{};
         s.program[0].num_dependent = 0;
     },
     "69"},
    // The end of the data, mode 1.
    {"FlushOfWholeFrameset", 1, one_block, [](Slice&, Slice&) {}, "", true},
    {"FlushOfPartFrameset", 1, one_block,
     [](Slice& p, Slice& s) { convsync_both(p, s, 1, 0, 4); }, "172", true},
    {"PartFramesetBeforeTheEnd", 1, one_block,
     [](Slice& p, Slice& s) { convsync_both(p, s, 1, 0, 4); }, "", false},
    {"FlushOfSixBlocks", 1, independent_alone, [](Slice&, Slice&) {}, "", true},
    {"FlushRunsBesideTheProgramRules", 1, one_block,
     [](Slice&, Slice& s) {
         convsync(s, 1, 0, 3);
         i0(s).acmod = 6;
     },
     "72 172", true},
    {"FlushOfFirstFrame", 1, one_block,
     [](Slice& p, Slice& s) { convsync_both(p, s, 1, 0, -1); }, "170 172", true},
    {"FlushOfTwoBlocks", 1, one_block,
     [](Slice& p, Slice& s) { convsync_both(p, s, 2, 0, 2); }, "", true},
    {"FlushOfThreeBlocks", 1, one_block,
     [](Slice& p, Slice& s) { convsync_both(p, s, 3, 0, 0); }, "172", true},
    // Mode 2.
    {"BlurayIsGood", 2, with_d0, [](Slice&, Slice&) {}, ""},
    {"BlurayTwoPrograms", 2, independent_alone,
     [](Slice& p, Slice& s) { p.nprograms = s.nprograms = 2; }, "113"},
    {"BlurayNoProgram", 2, independent_alone,
     [](Slice& p, Slice& s) { p.nprograms = s.nprograms = 0; }, "113"},
    {"BlurayTranscoded", 2, independent_alone, [](Slice&, Slice& s) { i0(s).strmtyp = 2; },
     "188"},
    {"BlurayChannelTotal", 2, independent_alone,
     [](Slice&, Slice& s) { s.program[0].total_channels = 7; }, "114"},
    {"BlurayLfeCount", 2, independent_alone,
     [](Slice&, Slice& s) { s.program[0].lfe_count = 0; }, "114"},
    {"BlurayTotalWordsAreFree", 2, independent_alone,
     [](Slice&, Slice& s) { s.program[0].total_words = 1; }, ""},
    {"BlurayRateChange", 2, independent_alone,
     [](Slice&, Slice& s) { i0(s).sample_rate = 32000; }, "116"},
    {"BlurayIndependentAbsent", 2, independent_alone,
     [](Slice&, Slice& s) { i0(s).present = 0; }, "117"},
    {"BluraySecondDependent", 2, with_d0,
     [](Slice&, Slice& s) { s.program[0].dependent[2].present = 1; }, "117"},
    {"BlurayBlocksDiffer", 2, with_d0, [](Slice&, Slice& s) { d0(s).numblks = 3; }, "118"},
    {"BlurayDependentCount", 2, independent_alone,
     [](Slice&, Slice& s) { s.program[0].num_dependent = 1; }, "120"},
    {"BlurayChannels", 2, independent_alone, [](Slice&, Slice& s) { i0(s).nfchans = 4; }, "122"},
    {"BlurayLfe", 2, independent_alone, [](Slice&, Slice& s) { i0(s).lfeon = 0; }, "122"},
    {"BlurayAcmod", 2, independent_alone, [](Slice&, Slice& s) { i0(s).acmod = 6; }, "123"},
    {"BlurayFrameWords", 2, independent_alone,
     [](Slice&, Slice& s) { i0(s).frame_words = 1; }, "127"},
    {"BlurayD0Channels", 2, with_d0, [](Slice&, Slice& s) { d0(s).nfchans = 4; }, "131"},
    {"BlurayD0Lfe", 2, with_d0, [](Slice&, Slice& s) { d0(s).lfeon = 1; }, "131"},
    {"BlurayD0Map", 2, with_d0, [](Slice&, Slice& s) { d0(s).chanmap = 1; }, "132"},
    {"BlurayD0Acmod", 2, with_d0, [](Slice&, Slice& s) { d0(s).acmod = 1; }, "134"},
    {"BlurayD0FrameWords", 2, with_d0, [](Slice&, Slice& s) { d0(s).frame_words = 1; }, "139"},
    {"BlurayHasNoFlushRule", 2, one_block,
     [](Slice& p, Slice& s) { convsync_both(p, s, 1, 0, 2); }, "", true},
    // Mode 3.
    {"SecondaryIsGood", 3, independent_alone, [](Slice&, Slice&) {}, ""},
    {"SecondaryCommonRules", 3, independent_alone, [](Slice&, Slice& s) { s.nprograms = 3; },
     "61"},
    {"SecondaryDependents", 3, with_d0, [](Slice&, Slice&) {}, "101"},
    {"SecondaryChannels", 3, independent_alone, [](Slice&, Slice& s) { i0(s).nfchans = 4; },
     "103"},
    {"SecondaryLfe", 3, independent_alone, [](Slice&, Slice& s) { i0(s).lfeon = 0; }, "103"},
    {"SecondaryAcmod", 3, independent_alone, [](Slice&, Slice& s) { i0(s).acmod = 6; }, "104"},
    {"SecondaryTotalWords", 3, independent_alone,
     [](Slice&, Slice& s) { s.program[0].total_words = 1; }, "63 109"},
    {"SecondaryBsid12", 3, independent_alone,
     [](Slice& p, Slice& s) {
         i0(p).bsid = i0(s).bsid = 12;
         i0(s).acmod = 6;
     },
     ""},
    {"SecondaryHasNoFlushRule", 3, one_block,
     [](Slice& p, Slice& s) { convsync_both(p, s, 1, 0, 2); }, "", true},
    // Mode 4.
    {"BluraySecondaryIsGood", 4, independent_alone, [](Slice&, Slice&) {}, ""},
    {"BluraySecondaryDependents", 4, with_d0, [](Slice&, Slice&) {}, "177"},
    {"BluraySecondaryChannels", 4, independent_alone,
     [](Slice&, Slice& s) { i0(s).nfchans = 4; }, "144"},
    {"BluraySecondaryLfe", 4, independent_alone, [](Slice&, Slice& s) { i0(s).lfeon = 0; },
     "144"},
    {"BluraySecondaryAcmod", 4, independent_alone, [](Slice&, Slice& s) { i0(s).acmod = 6; },
     "145"},
    {"BluraySecondaryAc3", 4, with_d0,
     [](Slice& p, Slice& s) {
         i0(p).bsid = i0(s).bsid = 8;
         i0(s).acmod = 6;
     },
     ""},
};

class ProgramRules : public testing::TestWithParam<ProgramCase> {};

TEST_P(ProgramRules, MarksTheRows) {
    const ProgramCase& test = GetParam();
    auto previous = std::make_unique<Timeslice>();
    auto current = std::make_unique<Timeslice>();
    test.base(*previous);
    test.base(*current);
    test.change(*previous, *current);
    ComplianceBlock stream;
    EXPECT_EQ(tsc_chkprg(test.mode, test.final_slice, *previous, *current, stream), 0);
    EXPECT_EQ(marked_rows(current->compliance), test.rows);
    EXPECT_EQ(marked_rows(stream), test.rows);
    EXPECT_EQ(stream.any_failure, *test.rows == '\0' ? 0U : 1U);
}

INSTANTIATE_TEST_SUITE_P(Tsc, ProgramRules, testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(TscProgram, ModeZeroCopiesTheFlagAlone) {
    auto timeslice = std::make_unique<Timeslice>();
    independent_alone(*timeslice);
    tsc_mark(timeslice->compliance, 74, Mark::kFailure);
    ComplianceBlock stream;
    EXPECT_EQ(tsc_chkprg(0, true, *timeslice, *timeslice, stream), 0);
    EXPECT_EQ(timeslice->compliance, ComplianceBlock{});
    EXPECT_EQ(stream, ComplianceBlock{});
}

TEST(TscProgram, UnknownModeIsRefused) {
    auto timeslice = std::make_unique<Timeslice>();
    ComplianceBlock stream;
    ExpectText text;
    EXPECT_EQ(tsc_chkprg(5, false, *timeslice, *timeslice, stream), 7169);
    EXPECT_EQ(text.err().find("FATAL ERROR:  Unknown compliance mode\n"), 2U);
}

TEST(TscRows, EveryRowFrom51HasItsText) {
    for (int row = -1; row < 200; ++row) {
        EXPECT_EQ(*tsc_row_text(row) != '\0', row >= 51 && row <= 191) << row;
    }
    EXPECT_STREQ(tsc_row_text(51), "FAILURE: OA+: AC3: BSID shall be 6 or 8");
    EXPECT_STREQ(tsc_row_text(79),
                 "FAILURE: Orvel Audio Plus: I0: For fs=48kHz, minimum number "
                 "of bytes per frame deos not met.");
    EXPECT_STREQ(tsc_row_text(152),
                 "FAILURE: Blu-ray: Secondary Audio: EC3 (I0): The "
                 "\"mixmdate\" metadata parameter shall be set to 1");
    EXPECT_STREQ(tsc_row_text(169), "TSC: Unspecified compliance error detected");
    EXPECT_STREQ(tsc_row_text(191),
                 "FAILURE: Blu-ray: Secondary Audio: EC3 (I0): The \"mixdef\" "
                 "metadata parameter shall be set to either 0 or 3");
}

}  // namespace
}  // namespace mediasplit
