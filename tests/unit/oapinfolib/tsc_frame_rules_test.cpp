#include <gtest/gtest.h>

#include <ostream>

#include "oapinfolib/src/tsc.h"
#include "tests/unit/oapinfolib/oap_test_support.h"
#include "tests/unit/oapinfolib/tsc_test_support.h"

// Each frame rule of each mode: the smallest change to a frame that breaks it, and the rows that
// come of it. A frame without the change marks nothing, or what `base` of its mode says.

namespace mediasplit {
namespace {

SubstreamRecord frame_of(std::uint16_t bsid, std::uint16_t strmtyp, std::uint16_t acmod,
                         std::int64_t words) {
    SubstreamRecord frame;
    frame.present = 1;
    frame.bsid = bsid;
    frame.strmtyp = strmtyp;
    frame.acmod = acmod;
    frame.nfchans = kChannelCount[acmod];
    frame.nchans = frame.nfchans;
    frame.numblks = 6;
    frame.sample_rate = 48000;
    frame.frame_words = words;
    frame.frame_bytes = words * 2;
    frame.rate = static_cast<float>(words) / 2;
    frame.status = kStatusGood;
    return frame;
}

SubstreamRecord independent() {
    return frame_of(16, 0, 7, 768);
}
SubstreamRecord dependent() {
    SubstreamRecord frame = frame_of(16, 1, 2, 300);
    frame.chanmap = 0x0200;  // Lrs/Rrs
    return frame;
}
SubstreamRecord core() {
    return frame_of(8, 0, 7, 1280);
}
SubstreamRecord secondary_hddvd() {
    return frame_of(16, 0, 1, 192);
}
SubstreamRecord secondary_bluray() {
    SubstreamRecord frame = frame_of(16, 0, 1, 192);
    frame.bsi.mixmdate = 1;
    frame.bsi.extpgmscle = 1;
    return frame;
}

struct FrameCase {
    const char* name;
    int mode;
    SubstreamRecord (*base)();
    void (*change)(SubstreamRecord&);
    const char* rows;
    bool fails;
};

void PrintTo(const FrameCase& test, std::ostream* out) {
    *out << test.name;
}

void nothing(SubstreamRecord&) {}

using Record = SubstreamRecord;

const FrameCase kCases[] = {
    // Mode 1.
    {"PrimaryIndependentIsGood", 1, independent, nothing, "", false},
    {"PrimaryBsid12IsGood", 1, independent, [](Record& f) { f.bsid = 12; }, "", false},
    {"PrimaryBsid11", 1, independent, [](Record& f) { f.bsid = 11; }, "68", true},
    {"PrimaryAc3", 1, core, nothing, "68", true},
    {"PrimaryAc3LooksAtNothingElse", 1, core,
     [](Record& f) {
         f.acmod = 0;
         f.sample_rate = 44100;
         f.substreamid = 5;
     },
     "68", true},
    {"PrimaryAc3StillLooksAtItsCrc", 1, core, [](Record& f) { f.status = 2; }, "68 166", true},
    {"PrimaryBsidOfDependent", 1, dependent, [](Record& f) { f.bsid = 14; }, "84", true},
    {"PrimarySubstreamThreeIsGood", 1, independent, [](Record& f) { f.substreamid = 3; }, "",
     false},
    {"PrimarySubstreamFour", 1, independent, [](Record& f) { f.substreamid = 4; }, "70", true},
    {"PrimaryDualMono", 1, independent, [](Record& f) { f.acmod = 0; }, "73", true},
    {"PrimaryRate", 1, independent, [](Record& f) { f.sample_rate = 44100; }, "74", true},
    {"PrimaryDependentIsGood", 1, dependent, nothing, "", false},
    {"PrimaryDependentId", 1, dependent, [](Record& f) { f.substreamid = 1; }, "85", true},
    {"PrimaryDependentMap", 1, dependent, [](Record& f) { f.chanmap = 0x0100; }, "88", true},
    {"PrimaryDependentMapCountsTheReservedBitOnce", 1, dependent,
     [](Record& f) { f.chanmap = 0x0004; }, "88", true},
    {"PrimaryDependentDualMono", 1, dependent, [](Record& f) { f.acmod = 0; }, "90", true},
    {"PrimaryDependentRate", 1, dependent, [](Record& f) { f.sample_rate = 32000; }, "91", true},
    {"PrimaryTranscoded", 1, independent, [](Record& f) { f.strmtyp = 2; }, "187", true},
    {"PrimaryCrcPartial", 1, independent, [](Record& f) { f.status = 2; }, "166", true},
    {"PrimaryCrcUnknown", 1, dependent, [](Record& f) { f.status = -1; }, "166", true},
    // Mode 2.
    {"BlurayCoreIsGood", 2, core, nothing, "", false},
    {"BlurayCoreBsid6IsGood", 2, core, [](Record& f) { f.bsid = 6; }, "", false},
    {"BlurayCoreBsid7", 2, core, [](Record& f) { f.bsid = 7; }, "119", true},
    {"BlurayCoreId", 2, core, [](Record& f) { f.substreamid = 1; }, "121", true},
    {"BlurayCoreDualMono", 2, core, [](Record& f) { f.acmod = 0; }, "124", true},
    {"BlurayCoreRate", 2, core, [](Record& f) { f.sample_rate = 32000; }, "125", true},
    {"BlurayCoreBlocks", 2, core, [](Record& f) { f.numblks = 3; }, "126", true},
    {"BlurayCoreBytes", 2, core, [](Record& f) { f.frame_bytes = 2562; }, "128", true},
    {"BlurayCoreDataRate", 2, core, [](Record& f) { f.rate = 640.5F; }, "128", true},
    {"BlurayCore256BytesIsGood", 2, core, [](Record& f) { f.frame_bytes = 256; }, "", false},
    {"BlurayCoreFewBytes", 2, core, [](Record& f) { f.frame_bytes = 254; }, "129", true},
    {"BlurayBsid12", 2, independent, [](Record& f) { f.bsid = 12; }, "119", true},
    {"BlurayBsid12Dependent", 2, dependent, [](Record& f) { f.bsid = 12; }, "130", true},
    {"BlurayIndependentEac3", 2, independent, nothing, "117", true},
    {"BlurayIndependentEac3Id", 2, independent, [](Record& f) { f.substreamid = 1; }, "117 121",
     true},
    {"BlurayExtensionIsGood", 2, dependent, nothing, "", false},
    {"BlurayExtensionId", 2, dependent, [](Record& f) { f.substreamid = 1; }, "189", true},
    {"BlurayExtensionMap", 2, dependent, [](Record& f) { f.chanmap = 0x0080; }, "133", true},
    {"BlurayExtensionDualMono", 2, dependent, [](Record& f) { f.acmod = 0; }, "135", true},
    {"BlurayExtensionRate", 2, dependent, [](Record& f) { f.sample_rate = 44100; }, "136", true},
    {"BlurayExtensionBlocks", 2, dependent, [](Record& f) { f.numblks = 1; }, "138", true},
    {"BlurayExtension4096BytesIsGood", 2, dependent, [](Record& f) { f.frame_bytes = 4096; }, "",
     false},
    {"BlurayExtensionBytes", 2, dependent, [](Record& f) { f.frame_bytes = 4098; }, "140", true},
    {"BlurayExtensionDataRate", 2, dependent, [](Record& f) { f.rate = 4737; }, "140", true},
    {"BlurayExtensionFewBytes", 2, dependent, [](Record& f) { f.frame_bytes = 254; }, "141",
     true},
    {"BlurayCrc", 2, core, [](Record& f) { f.status = 1; }, "166", true},
    // Mode 3.
    {"SecondaryIsGood", 3, secondary_hddvd, nothing, "", false},
    {"SecondaryBsid", 3, secondary_hddvd, [](Record& f) { f.bsid = 12; }, "100", true},
    {"SecondaryDependent", 3, dependent, nothing, "101", true},
    {"SecondaryTranscoded", 3, secondary_hddvd, [](Record& f) { f.strmtyp = 2; }, "187", true},
    {"SecondaryId", 3, secondary_hddvd, [](Record& f) { f.substreamid = 1; }, "102", true},
    {"SecondaryThreeChannels", 3, secondary_hddvd, [](Record& f) { f.acmod = 3; }, "105", true},
    {"SecondaryDualMono", 3, secondary_hddvd, [](Record& f) { f.acmod = 0; }, "105", true},
    {"SecondaryStereoIsAWarning", 3, secondary_hddvd, [](Record& f) { f.acmod = 2; }, "176w",
     false},
    {"SecondaryRate", 3, secondary_hddvd, [](Record& f) { f.sample_rate = 44100; }, "106", true},
    {"Secondary2016BytesIsGood", 3, secondary_hddvd, [](Record& f) { f.frame_bytes = 2016; }, "",
     false},
    {"SecondaryBytes", 3, secondary_hddvd, [](Record& f) { f.frame_bytes = 2018; }, "110", true},
    {"SecondaryBlocks", 3, secondary_hddvd, [](Record& f) { f.numblks = 3; }, "108", true},
    {"SecondaryBoundOfSixBlocks", 3, secondary_hddvd, [](Record& f) { f.frame_bytes = 127; },
     "111", true},
    {"SecondaryAboveBoundOfSixBlocks", 3, secondary_hddvd,
     [](Record& f) { f.frame_bytes = 128; }, "", false},
    {"SecondaryBoundOfThreeBlocks", 3, secondary_hddvd,
     [](Record& f) {
         f.numblks = 3;
         f.frame_bytes = 63;
     },
     "108 111", true},
    {"SecondaryAboveBoundOfThreeBlocks", 3, secondary_hddvd,
     [](Record& f) {
         f.numblks = 3;
         f.frame_bytes = 64;
     },
     "108", true},
    {"SecondaryBoundOfTwoBlocks", 3, secondary_hddvd,
     [](Record& f) {
         f.numblks = 2;
         f.frame_bytes = 43;
     },
     "108 111", true},
    {"SecondaryAboveBoundOfTwoBlocks", 3, secondary_hddvd,
     [](Record& f) {
         f.numblks = 2;
         f.frame_bytes = 44;
     },
     "108", true},
    {"SecondaryBoundOfOneBlock", 3, secondary_hddvd,
     [](Record& f) {
         f.numblks = 1;
         f.frame_bytes = 21;
     },
     "108 111", true},
    {"SecondaryAboveBoundOfOneBlock", 3, secondary_hddvd,
     [](Record& f) {
         f.numblks = 1;
         f.frame_bytes = 22;
     },
     "108", true},
    {"SecondaryHasNoBoundAtOtherRates", 3, secondary_hddvd,
     [](Record& f) {
         f.sample_rate = 44100;
         f.frame_bytes = 20;
     },
     "106", true},
    {"SecondaryPgmscle", 3, secondary_hddvd, [](Record& f) { f.bsi.pgmscle[0] = 1; }, "173",
     true},
    {"SecondaryExtpgmscle", 3, secondary_hddvd, [](Record& f) { f.bsi.extpgmscle = 1; }, "174",
     true},
    {"SecondaryPaninfoe", 3, secondary_hddvd, [](Record& f) { f.bsi.paninfoe[0] = 1; }, "175",
     true},
    {"SecondaryCrc", 3, secondary_hddvd, [](Record& f) { f.status = 2; }, "166", true},
    // Mode 4. A frame without any sign of the primary one is a mono frame with extpgmscle.
    {"BluraySecondaryIsGood", 4, secondary_bluray, nothing, "", false},
    {"BluraySecondaryBsid", 4, secondary_bluray, [](Record& f) { f.bsid = 8; }, "142", true},
    {"BluraySecondaryDependent", 4, dependent, nothing, "177", true},
    {"BluraySecondaryTranscoded", 4, secondary_bluray, [](Record& f) { f.strmtyp = 2; }, "188",
     true},
    {"BluraySecondaryId", 4, secondary_bluray, [](Record& f) { f.substreamid = 7; }, "143", true},
    {"BluraySecondaryDualMono", 4, secondary_bluray, [](Record& f) { f.acmod = 0; }, "146 180w",
     true},
    {"BluraySecondaryRate", 4, secondary_bluray, [](Record& f) { f.sample_rate = 32000; }, "147",
     true},
    {"BluraySecondaryBlocks", 4, secondary_bluray, [](Record& f) { f.numblks = 2; }, "149", true},
    {"BluraySecondary1024BytesIsGood", 4, secondary_bluray,
     [](Record& f) { f.frame_bytes = 1024; }, "", false},
    {"BluraySecondaryBytes", 4, secondary_bluray, [](Record& f) { f.frame_bytes = 1026; }, "151",
     true},
    {"BluraySecondaryMixmdate", 4, secondary_bluray, [](Record& f) { f.bsi.mixmdate = 0; }, "152",
     true},
    {"BluraySecondaryPgmscle", 4, secondary_bluray, [](Record& f) { f.bsi.pgmscle[0] = 1; },
     "153", true},
    {"BluraySecondaryPanOfMonoIsGood", 4, secondary_bluray,
     [](Record& f) { f.bsi.paninfoe[0] = 1; }, "", false},
    {"BluraySecondaryPan", 4, secondary_bluray,
     [](Record& f) {
         f.acmod = 0;
         f.bsi.paninfoe[0] = 1;
     },
     "146 154 180w", true},
    {"BluraySecondaryNoExternalScale", 4, secondary_bluray,
     [](Record& f) { f.bsi.extpgmscle = 0; }, "178w", false},
    {"BluraySecondaryMixdef3WithoutScales", 4, secondary_bluray,
     [](Record& f) {
         f.bsi.mixdef = 3;
         f.bsi.extpgmscle = 0;
     },
     "179w", false},
    {"BluraySecondaryMixdef3WithScaleIsGood", 4, secondary_bluray,
     [](Record& f) { f.bsi.mixdef = 3; }, "", false},
    {"BluraySecondaryStereo", 4, secondary_bluray, [](Record& f) { f.acmod = 2; }, "180w", false},
    {"BluraySecondaryLeftScale", 4, secondary_bluray, [](Record& f) { f.bsi.extpgmlscle = 1; },
     "181w", false},
    {"BluraySecondaryCenterScale", 4, secondary_bluray, [](Record& f) { f.bsi.extpgmcscle = 1; },
     "182w", false},
    {"BluraySecondaryRightScale", 4, secondary_bluray, [](Record& f) { f.bsi.extpgmrscle = 1; },
     "183w", false},
    {"BluraySecondaryLsScale", 4, secondary_bluray, [](Record& f) { f.bsi.extpgmlsscle = 1; },
     "184w", false},
    {"BluraySecondaryRsScale", 4, secondary_bluray, [](Record& f) { f.bsi.extpgmrsscle = 1; },
     "185w", false},
    {"BluraySecondaryLfeScale", 4, secondary_bluray, [](Record& f) { f.bsi.extpgmlfescle = 1; },
     "186w", false},
    {"BluraySecondaryPremixSelect", 4, secondary_bluray,
     [](Record& f) { f.bsi.premixcmpsel = 1; }, "190", true},
    {"BluraySecondaryPremixSource", 4, secondary_bluray, [](Record& f) { f.bsi.drcsrc = 1; },
     "190", true},
    {"BluraySecondaryPremixScale", 4, secondary_bluray,
     [](Record& f) { f.bsi.premixcmpscl = 4; }, "190", true},
    {"BluraySecondaryMixdef1", 4, secondary_bluray, [](Record& f) { f.bsi.mixdef = 1; }, "191",
     true},
    {"BluraySecondaryMixdef2", 4, secondary_bluray, [](Record& f) { f.bsi.mixdef = 2; }, "191",
     true},
    {"BluraySecondaryCrc", 4, secondary_bluray, [](Record& f) { f.status = 1; }, "166", true},
};

class FrameRules : public testing::TestWithParam<FrameCase> {};

TEST_P(FrameRules, MarksTheRows) {
    const FrameCase& test = GetParam();
    SubstreamRecord frame = test.base();
    test.change(frame);
    ComplianceBlock block;
    EXPECT_EQ(tsc_chkfrm(test.mode, frame, block), 0);
    EXPECT_EQ(marked_rows(block), test.rows);
    EXPECT_EQ(block.any_failure, test.fails ? 1U : 0U);
}

INSTANTIATE_TEST_SUITE_P(Tsc, FrameRules, testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(TscFrame, ModeZeroClearsTheBlock) {
    ComplianceBlock block;
    tsc_mark(block, 74, Mark::kFailure);
    EXPECT_EQ(tsc_chkfrm(0, core(), block), 0);
    EXPECT_EQ(block, ComplianceBlock{});
}

TEST(TscFrame, UnknownModeIsRefused) {
    for (const int mode : {-1, 5, 1000}) {
        ComplianceBlock block;
        ExpectText text;
        EXPECT_EQ(tsc_chkfrm(mode, core(), block), 7169);
        text.fatal("Unknown compliance mode requested", "tsc", 1);
    }
}

TEST(TscFrame, QuietMarkLeavesTheFlagAlone) {
    ComplianceBlock block;
    tsc_mark(block, 111, Mark::kQuietFailure);
    EXPECT_EQ(block.results[111], Verdict::kFailure);
    EXPECT_EQ(block.any_failure, 0U);
}

TEST(TscFrame, EveryFrameOfTheTimeSliceIsJudged) {
    auto timeslice = std::make_unique<Timeslice>();
    reset_timeslice(*timeslice);
    timeslice->nprograms = 2;
    timeslice->program[0].independent = independent();
    timeslice->program[1].independent = independent();
    timeslice->program[1].independent.sample_rate = 44100;
    timeslice->program[1].num_dependent = 1;
    timeslice->program[1].dependent[7] = dependent();
    timeslice->program[1].dependent[7].substreamid = 7;
    ComplianceBlock stream;
    EXPECT_EQ(tsc_chkts(1, *timeslice, stream), 0);
    EXPECT_EQ(marked_rows(timeslice->compliance), "74 85");
    EXPECT_EQ(marked_rows(stream), "74 85");
    EXPECT_EQ(stream.any_failure, 1U);
    ExpectText text;
    EXPECT_EQ(tsc_chkts(7, *timeslice, stream), 7169);
    text.fatal("Unknown compliance mode requested", "tsc", 1);
}

TEST(TscMerge, FailuresStandAndWarningsGiveWay) {
    const Verdict pass = Verdict::kPassed;
    const Verdict fail = Verdict::kFailure;
    const Verdict warn = Verdict::kWarning;
    const Verdict cases[][3] = {{pass, pass, pass}, {pass, fail, fail}, {pass, warn, warn},
                                {fail, pass, fail}, {fail, fail, fail}, {fail, warn, fail},
                                {warn, pass, warn}, {warn, fail, fail}, {warn, warn, warn}};
    auto timeslice = std::make_unique<Timeslice>();
    for (const auto& [before, found, after] : cases) {
        reset_timeslice(*timeslice);
        timeslice->compliance.results[100] = found;
        ComplianceBlock stream;
        stream.results[100] = before;
        EXPECT_EQ(tsc_chkts(1, *timeslice, stream), 0);
        EXPECT_EQ(stream.results[100], after);
        EXPECT_EQ(stream.any_failure, 0U);
    }
}

}  // namespace
}  // namespace mediasplit
