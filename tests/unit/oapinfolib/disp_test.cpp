#include "oapinfolib/src/disp.h"

#include <gtest/gtest.h>

#include <memory>

#include "oapinfolib/src/tsc.h"
#include "tests/unit/oapinfolib/oap_test_support.h"

namespace mediasplit {
namespace {

using test_support::Ac3Spec;
using test_support::build_ac3_frame;
using test_support::build_eac3_frame;
using test_support::Eac3Spec;

const std::string kSpacer = std::string(70, '~') + "\n";
const std::string kHalfSpacer = std::string(35, '~') + "\n";

template <typename Print>
std::string printed(Print&& print) {
    ExpectText text;
    print();
    return text.out();
}

// A 7.1 program of one independent and one dependent frame.
void fill_program(ProgramRecord& program) {
    program.num_dependent = 1;
    program.coded_channels = 9;
    program.coded_lfe = 1;
    program.total_channels = 7;
    program.lfe_count = 1;
    program.total_words = 1536;
    program.combined_rate = 768;
    program.status = kStatusGood;
    for (const std::size_t position : {0, 1, 2, 3, 4, 6, 15}) {
        program.channel_present[position] = 1;
    }
    SubstreamRecord& frame = program.independent;
    frame.present = 1;
    frame.bsid = 16;
    frame.acmod = 7;
    frame.lfeon = 1;
    frame.nfchans = 5;
    frame.numblks = 6;
    frame.convsync = 1;
    frame.sample_rate = 48000;
    frame.sourcefscod = 0;
    frame.frame_words = 896;
    frame.rate = 448;
    frame.status = kStatusGood;
    for (const std::size_t position : {0, 1, 2, 3, 4, 15}) {
        frame.channel_present[position] = 1;
    }
    SubstreamRecord& dependent = program.dependent[0];
    dependent = frame;
    dependent.strmtyp = 1;
    dependent.acmod = 6;
    dependent.lfeon = 0;
    dependent.nfchans = 4;
    dependent.chanmap = 0x1A00;
    dependent.frame_words = 640;
    dependent.rate = 320;
    dependent.channel_present = {};
    for (const std::size_t position : {3, 4, 6}) {
        dependent.channel_present[position] = 1;
    }
}

struct Disp : testing::Test {
    std::unique_ptr<Timeslice> owner = std::make_unique<Timeslice>();
    std::unique_ptr<Timeslice> shadow_owner = std::make_unique<Timeslice>();
    Timeslice& slice = *owner;
    Timeslice& shadow = *shadow_owner;
    std::int64_t last_printed = -7;

    void SetUp() override {
        for (Timeslice* timeslice : {&slice, &shadow}) {
            reset_timeslice(*timeslice);
            timeslice->nprograms = 1;
            fill_program(timeslice->program[0]);
        }
    }

    std::string print(std::uint16_t flags, std::int64_t number = 1, bool final_slice = true) {
        return printed([&] {
            EXPECT_EQ(disp_printtsinfo(flags, number, last_printed, slice, shadow, final_slice), 0);
        });
    }
};

const char* const kProgramLines =
    "    Combined data rate: 768.0 kbps\n"
    "    Number of dependent substreams: 1\n"
    "    Number of 16b words between sync frames (+/-1): 1536\n"
    "    Number of coded channels: 9.1\n"
    "    Program status: No CRC errors\n"
    "    Coded channels present: [L, C, R, Ls, Rs, Lrs, Rrs, LFE]\n";

const char* const kIndependentLines =
    "        INDEPENDENT SUBSTREAM INFORMATION:\n"
    "            BSID: 16 (Orvel Audio Plus)\n"
    "            Substream ID: 0\n"
    "            Converter sync flag: On\n"
    "            Number of blocks per frame: 6\n"
    "            Number of coded channels: 5.1\n"
    "            Audio coding mode: 3/2\n"
    "            LFE on: On\n"
    "            Coded channels: [L, C, R, Ls, Rs, LFE]\n"
    "            Source sample rate: 48000 Hz\n"
    "            Double source sample rate: Off\n"
    "            Number of 16b words in frame (+/-1): 896\n"
    "            Data rate: 448.0 kbps\n"
    "            Frame status: No CRC errors\n";

const char* const kDependentLines =
    "        DEPENDENT SUBSTREAM 0 INFORMATION:\n"
    "            BSID: 16 (Orvel Audio Plus)\n"
    "            Substream ID: 0\n"
    "            Number of blocks per frame: 6\n"
    "            Number of coded channels: 4.0\n"
    "            Audio coding mode: 2/2\n"
    "            LFE on: Off\n"
    "            Coded channels: [Ls, Rs, Lrs, Rrs]\n"
    "            Source sample rate: 48000 Hz\n"
    "            Double source sample rate: Off\n"
    "            Channel map: 0x1A00\n"
    "            Number of 16b words in frame (+/-1): 640\n"
    "            Data rate: 320.0 kbps\n"
    "            Frame status: No CRC errors\n";

TEST_F(Disp, SectionsAreSelectable) {
    EXPECT_EQ(print(kDispProgram), kSpacer + kProgramLines);
    EXPECT_EQ(print(kDispIndependent), kSpacer + kIndependentLines);
    EXPECT_EQ(print(kDispDependent), kSpacer + kDependentLines);
    EXPECT_EQ(print(kDispProgram | kDispIndependent | kDispDependent),
              kSpacer + kProgramLines + kIndependentLines + kDependentLines);
    EXPECT_EQ(print(0), "");
}

TEST_F(Disp, NumberZeroFillsTheShadowAlone) {
    slice.program[0].total_words = 99;
    EXPECT_EQ(print(0xFFFF, 0), "");
    EXPECT_TRUE(tsi_compare_ts(slice, shadow));
    EXPECT_EQ(last_printed, -7);
}

TEST_F(Disp, SameTimeSliceIsPrintedAtTheEndAlone) {
    EXPECT_EQ(print(kDispProgram, 5, false), "");
    EXPECT_EQ(last_printed, -7);
    EXPECT_NE(print(kDispProgram, 5, true), "");
    EXPECT_EQ(last_printed, 5);
}

TEST_F(Disp, ChangePrintsTheTimeSliceThatEnded) {
    slice.program[0].total_words = 1538;
    slice.program[0].combined_rate = 769;
    EXPECT_EQ(print(kDispProgram, 3, false), kSpacer + kProgramLines);
    EXPECT_EQ(last_printed, 3);
    EXPECT_EQ(print(kDispProgram, 4, false), "") << "taken up as the shadow";
}

TEST_F(Disp, EmptyTimeSlicePrintsNothing) {
    reset_timeslice(slice);
    reset_timeslice(shadow);
    EXPECT_EQ(print(0xFFFF), "");
}

TEST_F(Disp, DoubtMarksEachLineFromItsProgramOn) {
    shadow.nprograms = 3;
    for (ProgramRecord& program : shadow.program) {
        fill_program(program);
    }
    shadow.program[1].status = kStatusFullError;
    const std::string out = print(kDispProgram);
    EXPECT_EQ(count_of(out, " (?)\n"), 12U);
    EXPECT_EQ(out.rfind(kSpacer + kProgramLines + kHalfSpacer, 0), 0U);
    EXPECT_NE(out.find("    Program status: Full frame CRC error exists (information may be "
                       "corrupt!) (?)\n"),
              std::string::npos);
}

TEST_F(Disp, FrameLinesOfAFrameWithCrcError) {
    SubstreamRecord frame = slice.program[0].independent;
    frame.bsid = 8;
    frame.status = kStatusPartialError;
    frame.strmtyp = 2;
    frame.lfeon = 0;
    frame.convsync = 0;
    EXPECT_EQ(printed([&] { disp_printfrminfo(0, frame); }),
              "            BSID: 8 (Orvel Audio) (?)\n"
              "            Stream type: Transcoded (?)\n"
              "            Substream ID: 0 (?)\n"
              "            Converter sync flag: Off (?)\n"
              "            Number of blocks per frame: 6 (?)\n"
              "            Number of coded channels: 5.0 (?)\n"
              "            Audio coding mode: 3/2 (?)\n"
              "            LFE on: Off (?)\n"
              "            Coded channels: [L, C, R, Ls, Rs, LFE] (?)\n"
              "            Source sample rate: 48000 Hz (?)\n"
              "            Number of 16b words in frame (+/-1): 896 (?)\n"
              "            Data rate: 448.0 kbps (?)\n"
              "            Frame status: Partial frame CRC error exists (information may be "
              "corrupt!) (?)\n");
    frame.strmtyp = 3;
    frame.bsid = 9;
    frame.status = kStatusUnknown;
    const std::string out = printed([&] { disp_printfrminfo(0, frame); });
    EXPECT_EQ(out.rfind("            BSID: 9\n            Stream type: Reserved\n", 0), 0U);
    EXPECT_NE(out.find("            Frame status: Unknown\n"), std::string::npos);
    EXPECT_EQ(out.find("Converter sync"), std::string::npos);
}

TEST_F(Disp, EachChannelHasItsName) {
    SubstreamRecord frame = slice.program[0].independent;
    frame.channel_present.fill(1);
    EXPECT_NE(printed([&] { disp_printfrminfo(0, frame); })
                  .find("            Coded channels: [L, C, R, Ls, Rs, Lc, Rc, Lrs, Rrs, Cs, Ts, "
                        "Lsd, Rsd, Lw, Rw, Lvh, Rvh, Cvh, Reserved!, LFE2, LFE]\n"),
              std::string::npos);
}

TEST_F(Disp, AuxiliaryDataTenWordsALine) {
    std::array<std::uint16_t, 12> words{};
    for (std::size_t i = 0; i < words.size(); ++i) {
        words[i] = static_cast<std::uint16_t>(0xA0 + i);
    }
    EXPECT_EQ(printed([&] { disp_printauxdata(185, words.data(), false); }),
              "            Number of Auxdata bits: 185\n"
              "            Auxdata:\n"
              "            00A0 00A1 00A2 00A3 00A4 00A5 00A6 00A7 00A8 00A9\n"
              "            00AA 00AB\n");
    EXPECT_EQ(printed([&] { disp_printauxdata(0, words.data(), true); }),
              "            No Auxdata information exists (?)\n");
    EXPECT_EQ(printed([&] { disp_printencinfo(1, 1, false); }), "            Encinfo: On\n");
    EXPECT_EQ(printed([&] { disp_printencinfo(0, 1, false); }),
              "            No Encinfo information exists\n");
}

TEST_F(Disp, ExtrasFollowTheFrameLines) {
    const std::string out = print(kDispIndependent | kDispBsi | kDispAuxdata | kDispEncinfo);
    EXPECT_NE(out.find("            Frame status: No CRC errors\n"
                       "            Orvel Audio Bitstream Information:\n"),
              std::string::npos)
        << "the record's header is an empty one here";
    EXPECT_NE(out.find("            No Auxdata information exists\n"
                       "            No Encinfo information exists\n"),
              std::string::npos);
}

TEST_F(Disp, ComplianceLinesOfATimeSlice) {
    EXPECT_EQ(print(kDispCompliance), "");
    tsc_mark(slice.compliance, 176, Mark::kWarning);
    copy_timeslice(slice, shadow);
    EXPECT_EQ(print(kDispCompliance), "");
    const std::string warning =
        "    176 - WARNING: HD-DVD: EC3: Secondary Audio: I0: The \"acmod\" of primary cannot be "
        "1 (1/0)\n";
    EXPECT_EQ(print(kDispCompliance | kDispWarnings), warning);
    tsc_mark(slice.compliance, 74, Mark::kFailure);
    copy_timeslice(slice, shadow);
    const std::string failure =
        "    074 - FAILURE: Orvel Audio Plus: I0: Sample rate is not 48kHz.\n";
    EXPECT_EQ(print(kDispCompliance), failure);
    EXPECT_EQ(print(kDispCompliance | kDispWarnings), failure + warning);
    EXPECT_EQ(print(kDispWarnings), "") << "the lines of time slices aren't selected";
}

TEST_F(Disp, QuietFailureStandsInTheSummaryAlone) {
    tsc_mark(slice.compliance, 111, Mark::kQuietFailure);
    copy_timeslice(slice, shadow);
    EXPECT_EQ(print(kDispCompliance), "");
    auto state = std::make_unique<TimesliceState>();
    state->failures = slice.compliance;
    EXPECT_EQ(printed([&] { disp_printfilesummary(kDispSummaryCompliance, *state); }),
              "    111 - FAILURE: HD-DVD: EC3: Secondary Audio: I0: For fs=48kHz, min bytes per "
              "frame not met\n");
    EXPECT_EQ(printed([&] { disp_printfilesummary(kDispWarnings, *state); }), "");
}

TEST_F(Disp, SummaryTotals) {
    auto state = std::make_unique<TimesliceState>();
    state->timeslice_count = 12;
    state->frame_count = 24;
    state->playing_time = 0.384F;
    state->data_rate = 448.06F;
    EXPECT_EQ(printed([&] { EXPECT_EQ(disp_printfilesummary(kDispTotals, *state), 0); }),
              kSpacer +
                  "Total number of timeslices: 12\n"
                  "Total number of frames: 24\n"
                  "Total playing time: 0.4 seconds\n"
                  "Overall data rate: 448.1 kbps\n"
                  "Overall bitstream status: No CRC errors\n");
}

TEST_F(Disp, SummaryCompliance) {
    auto state = std::make_unique<TimesliceState>();
    tsc_mark(state->failures, 180, Mark::kWarning);
    const auto summary = [&](std::uint16_t flags) {
        return printed([&] { disp_printfilesummary(flags, *state); });
    };
    EXPECT_EQ(summary(kDispSummaryCompliance), "");
    EXPECT_EQ(summary(0), "");
    EXPECT_EQ(summary(kDispWarnings).rfind("    180 - WARNING: ", 0), 0U);
    tsc_mark(state->failures, 61, Mark::kFailure);
    EXPECT_EQ(summary(kDispSummaryCompliance),
              "    061 - FAILURE: Orvel Audio Plus: Number of program is not constant.\n");
    EXPECT_EQ(count_of(summary(kDispWarnings), "\n"), 2U);
    EXPECT_EQ(summary(0), "");
}

TEST_F(Disp, ReasonsForAReport) {
    const auto reason = [&](std::uint16_t flags, auto&& change) {
        auto changed = std::make_unique<Timeslice>(shadow);
        change(*changed);
        return disp_new_ts(flags, *changed, shadow);
    };
    const std::uint16_t all = kDispProgram | kDispIndependent | kDispDependent;
    using S = Timeslice;
    EXPECT_EQ(reason(all, [](S&) {}), 0);
    EXPECT_EQ(reason(all, [](S& s) { s.nprograms = 2; }), 1);
    EXPECT_EQ(reason(kDispDependent, [](S& s) { s.nprograms = 2; }), 2);
    EXPECT_EQ(reason(all, [](S& s) { s.program[0].num_dependent = 2; }), 1);
    EXPECT_EQ(reason(all, [](S& s) { s.program[0].total_words += 1; }), 0);
    EXPECT_EQ(reason(all, [](S& s) { s.program[0].total_words -= 1; }), 0);
    EXPECT_EQ(reason(all, [](S& s) { s.program[0].total_words += 2; }), 1);
    EXPECT_EQ(reason(all, [](S& s) { s.program[0].total_channels = 1; }), 1);
    EXPECT_EQ(reason(all, [](S& s) { s.program[0].lfe_count = 2; }), 1);
    EXPECT_EQ(reason(all, [](S& s) { s.program[0].status = 2; }), 1);
    EXPECT_EQ(reason(kDispIndependent, [](S& s) { s.program[0].status = 2; }), 0);
    const auto independent = [&](std::uint16_t flags, auto&& change) {
        return reason(flags, [&](S& s) { change(s.program[0].independent); });
    };
    using F = SubstreamRecord;
    EXPECT_EQ(independent(all, [](F& f) { f.present = 0; }), 2);
    EXPECT_EQ(independent(all, [](F& f) { f.bsid = 8; }), 2);
    EXPECT_EQ(independent(all, [](F& f) { f.strmtyp = 2; }), 2);
    EXPECT_EQ(independent(all, [](F& f) { f.substreamid = 2; }), 2);
    EXPECT_EQ(independent(all, [](F& f) { f.acmod = 2; }), 2);
    EXPECT_EQ(independent(all, [](F& f) { f.numblks = 2; }), 2);
    EXPECT_EQ(independent(all, [](F& f) { f.lfeon = 0; }), 2);
    EXPECT_EQ(independent(all, [](F& f) { f.nfchans = 2; }), 2);
    EXPECT_EQ(independent(all, [](F& f) { f.sample_rate = 2; }), 2);
    EXPECT_EQ(independent(all, [](F& f) { f.sourcefscod = 1; }), 2);
    EXPECT_EQ(independent(all, [](F& f) { f.frame_words += 1; }), 0);
    EXPECT_EQ(independent(all, [](F& f) { f.frame_words += 2; }), 2);
    EXPECT_EQ(independent(all, [](F& f) { f.status = 1; }), 2);
    EXPECT_EQ(independent(kDispDependent, [](F& f) { f.status = 1; }), 0);
    EXPECT_EQ(independent(all, [](F& f) { f.bsi.dialnorm[0] = 1; }), 0);
    EXPECT_EQ(independent(all | kDispBsi, [](F& f) { f.bsi.dialnorm[0] = 1; }), 5);
    EXPECT_EQ(independent(all, [](F& f) { f.aux.bits = 1; }), 0);
    EXPECT_EQ(independent(all | kDispAuxdata, [](F& f) { f.aux.bits = 1; }), 6);
    EXPECT_EQ(independent(all | kDispEncinfo, [](F& f) { f.encinfo_present = 1; }), 7);
    const auto dependent = [&](std::uint16_t flags, auto&& change) {
        return reason(flags, [&](S& s) { change(s.program[0].dependent[5]); });
    };
    EXPECT_EQ(dependent(all, [](F& f) { f.present = 1; }), 3);
    EXPECT_EQ(dependent(all, [](F& f) { f.acmod = 1; }), 3);
    EXPECT_EQ(dependent(kDispIndependent, [](F& f) { f.acmod = 1; }), 0);
    EXPECT_EQ(dependent(all | kDispBsi, [](F& f) { f.bsi.dialnorm[0] = 1; }), 5);
    EXPECT_EQ(dependent(all | kDispAuxdata, [](F& f) { f.aux.bits = 1; }), 6);
    EXPECT_EQ(dependent(all | kDispEncinfo, [](F& f) { f.encinfo_present = 1; }), 7);
    EXPECT_EQ(reason(0, [](S& s) { s.compliance.any_failure = 1; }), 4);
    EXPECT_EQ(reason(0, [](S& s) { s.compliance.results[60] = Verdict::kWarning; }), 4);
}

std::string bsi_lines(const test_support::Bytes& frame, bool doubtful = false) {
    const BitstreamInfo info = unpack(frame).info;
    return printed([&] { EXPECT_EQ(disp_printbsi(info, doubtful), 0); });
}

bool has_line(const std::string& text, const std::string& line) {
    const bool has = text.find("            " + line + "\n") != std::string::npos;
    EXPECT_TRUE(has) << line << "\nin\n" << text;
    return has;
}

TEST(DispBsi, Ac3Header) {
    Ac3Spec spec;
    spec.bsmod = 7;
    spec.cmixlev = 1;
    spec.surmixlev = 2;
    spec.compr[0] = 0x7F;
    spec.langcod[0] = 9;
    spec.audprod[0] = {.mixlevel = 25, .roomtyp = 2};
    spec.timecod1 = 0x123;
    const std::string out = bsi_lines(build_ac3_frame(spec));
    EXPECT_EQ(out.rfind("            Orvel Audio Bitstream Information:\n"
                        "            syncword: 0x0B77\n            crc1: 0x",
                        0),
              0U);
    for (const char* line :
         {"fscod: 0x0000 (Sample rate code: 48 kHz)",
          "frmsizecod: 0x0014 (Frame size: 384 16b words)",
          "bsid: 0x0008",
          "bsmod: 0x0007 (Bitstream mode: karaoke)",
          "acmod: 0x0007 (Audio coding mode: 3/2, channel ordering: L, C, R, ls, rs)",
          "lfeon: 0x0001 (LFE: On)",
          "nfchans: 0x0005",
          "nchans: 0x0006",
          "nprograms: 0x0001",
          "karaoke: 0x0001 (Karaoke: On)",
          "cmixlev: 0x0001 (Center mix level: -4.5 dB)",
          "surmixlev: 0x0002 (Surround mix level: -inf dB)",
          "dialnorm: 0x001B (Dialog Normalization: -27dB)",
          "compre: 0x0001 (Heavy compression: exists)",
          "compr: 0x7F00 (Heavy Compression: 47.889033dB)",
          "langcode: 0x0001 (Language code: exists)",
          "langcod: 0x0009",
          "audprodie: 0x0001 (Audio production information: exists)",
          "mixlevel: 0x0019 (Mix level: 105dB SPL)",
          "roomtyp: 0x0002 (Room type: small room, flat)",
          "copyrightb: 0x0000 (Copyright: not indicated as copyrighted)",
          "origbs: 0x0001 (Original: original bitstream)",
          "timecod1e: 0x0001 (Time code 1: exists)",
          "timecod1: 0x0123",
          "timecod2e: 0x0000 (Time code 2: does not exist)",
          "addbsie: 0x0000 (Additional bitstream information: does not exist)",
          "numblks: 0x0006 (Number of blocks: 6 blocks per syncframe)"}) {
        has_line(out, line);
    }
    EXPECT_EQ(out.find("strmtyp"), std::string::npos);
    EXPECT_EQ(out.find("timecod2:"), std::string::npos);
    EXPECT_EQ(out.find("dialnorm2"), std::string::npos);
}

TEST(DispBsi, AlternateHeader) {
    Ac3Spec spec;
    spec.bsid = 6;
    spec.xbsi1 = test_support::Xbsi1Spec{
        .dmixmod = 1, .ltrtcmixlev = 0, .ltrtsurmixlev = 3, .lorocmixlev = 7, .lorosurmixlev = 7};
    spec.xbsi2 = test_support::Xbsi2Spec{.dsurexmod = 2, .adconvtyp = 1, .xbsi2 = 0xC3};
    const std::string out = bsi_lines(build_ac3_frame(spec));
    for (const char* line : {"xbsi1e: 0x0001 (Extra bitstream information 1: exists)",
                             "dmixmod: 0x0001 (Preferred downmix mode: Lt/Rt)",
                             "ltrtcmixlev: 0x0000 (Lt/Rt center mix level: +3.0 dB)",
                             "ltrtsurmixlev: 0x0003 (Lt/Rt surround mix level: -1.5dB)",
                             "lorocmixlev: 0x0007 (Lo/Ro center mix level: -inf dB)",
                             "lorosurmixlev: 0x0007 (Lo/Ro surround mix level: -inf dB)",
                             "xbsi2e: 0x0001 (Extra bitstream information 2: exists)",
                             "dsurexmod: 0x0002 (Surround EX mode: Orvel Surround EX encoded)",
                             "adconvtyp: 0x0001 (A/D converter type: HDCD encoded)",
                             "xbsi2: 0x00C3", "encinfo: 0x0000"}) {
        has_line(out, line);
    }
    EXPECT_EQ(out.find("timecod"), std::string::npos);
}

TEST(DispBsi, Eac3Header) {
    Eac3Spec spec;
    spec.acmod = 2;
    spec.numblkscod = 1;
    spec.convsync = 0;
    spec.mix = test_support::MixSpec{.lfemixlevcod = 0, .mixdef = 3, .mixdeflen = 12};
    spec.mix->pgmscl[0] = 0;
    spec.mix->extpgmscl = 63;
    spec.mix->mixdata2 = test_support::Mixdata2Spec{.premixcmpscl = 2, .extpgmscl = {5}};
    spec.mix->blkmixcfginfo = {1, std::nullopt};
    spec.info =
        test_support::InfoSpec{.bsmod = 1, .dsurmod = 2, .dheadphonmod = 1, .sourcefscod = 1};
    spec.addbsi = test_support::Bytes{1, 16};
    const std::string out = bsi_lines(build_eac3_frame(spec), true);
    EXPECT_EQ(count_of(out, "\n"), count_of(out, " (?)\n"));
    EXPECT_EQ(out.rfind("            Orvel Audio Plus Bitstream Information: (?)\n", 0), 0U);
    for (const char* line :
         {"bsmod: 0x0001 (Bitstream mode: music and effects) (?)",
          "dsurmod: 0x0002 (Surround mode: Orvel Surround encoded) (?)",
          "dheadphonmod: 0x0001 (Headphone mode: not Orvel Headphone encoded) (?)",
          "copyrightb: 0x0000 (Copyright: not indicated as copyrighted) (?)",
          "origbs: 0x0000 (Original: copy of another bitstream) (?)",
          "addbsil: 0x0001 (2 bytes) (?)",
          "addbsi: 0x0001 0x0010 (?)",
          "strmtyp: 0x0000 (Stream type: Independent) (?)",
          "substreamid: 0x0000 (?)",
          "frmsiz: 0x0180 (Frame size: 384 16b words) (?)",
          "mixmdate: 0x0001 (Mixing metadata: exists) (?)",
          "lfemixlevcod: 0x0000 (LFE mix level: 10dB) (?)",
          "pgmscl: 0x0000 (Scale factor: mute) (?)",
          "extpgmscl: 0x003F (Scale factor: 12dB) (?)",
          "mixdef: 0x0003 (Mix control: 16-264 bits reserved by mixdeflen) (?)",
          "premixcmpscl: 0x0002 (?)",
          "extpgmlscl: 0x0005 (?)",
          "extpgmcscle: 0x0000 (Center scale factor: does not exist) (?)",
          "blkmixcfginfo[0]: 0x0001 (?)",
          "blkmixcfginfo[1]: 0x0000 (?)",
          "sourcefscod: 0x0001 (Source sample rate code: twice fscod) (?)",
          "convsync: 0x0000 (Converter synchronization: Off) (?)",
          "numblks: 0x0002 (Number of blocks: 2 blocks per syncframe) (?)"}) {
        has_line(out, line);
    }
    EXPECT_EQ(out.find("crc1"), std::string::npos);
    EXPECT_EQ(out.find("blkmixcfginfo[2]"), std::string::npos);
    EXPECT_EQ(out.find("extpgmcscl:"), std::string::npos);
    EXPECT_EQ(out.find("chanmap"), std::string::npos);
}

TEST(DispBsi, DependentHeaderHasItsChannelMap) {
    Eac3Spec spec;
    spec.strmtyp = 1;
    spec.chanmap = 0x8A05;
    const std::string out = bsi_lines(build_eac3_frame(spec));
    has_line(out, "chanmape: 0x0001 (Custom channel map: exists)");
    has_line(out,
             "chanmap: 0x8A05 (Channel map: Left, Right Surround, Lrs/Rrs pair, Reserved, LFE)");
    has_line(out, "strmtyp: 0x0001 (Stream type: Dependent)");
}

TEST(DispBsi, DualMonoHasItsSecondFields) {
    Eac3Spec spec;
    spec.acmod = 0;
    spec.dialnorm = {1, 31};
    spec.compr[1] = 0x80;
    const std::string out = bsi_lines(build_eac3_frame(spec));
    has_line(out, "dialnorm: 0x0001 (Dialog Normalization: -1dB)");
    has_line(out, "dialnorm2: 0x001F (Dialog Normalization: -31dB)");
    has_line(out, "compre: 0x0000 (Heavy compression: does not exist)");
    has_line(out, "compr2: 0x8000 (Heavy Compression: -48.164799dB)");
}

TEST(DispBsi, ComprZeroIsNoGain) {
    Ac3Spec spec;
    spec.compr[0] = 0;
    has_line(bsi_lines(build_ac3_frame(spec)), "compr: 0x0000 (Heavy Compression: 0.000000dB)");
    spec.compr[0] = 0xFF;
    has_line(bsi_lines(build_ac3_frame(spec)), "compr: 0xFF00 (Heavy Compression: -0.275766dB)");
}

TEST(DispBsi, BitstreamModesByChannelCount) {
    const char* const texts[] = {"complete main",    "music and effects", "visually impaired",
                                 "hearing impaired", "dialogue",          "commentary",
                                 "emergency",        "voice over"};
    Ac3Spec spec;
    spec.acmod = 1;
    for (spec.bsmod = 0; spec.bsmod < 8; ++spec.bsmod) {
        has_line(bsi_lines(build_ac3_frame(spec)), "bsmod: 0x000" + std::to_string(spec.bsmod) +
                                                       " (Bitstream mode: " + texts[spec.bsmod] +
                                                       ")");
    }
}

TEST(DispParts, Spacers) {
    EXPECT_EQ(printed(disp_spacer), kSpacer);
    EXPECT_EQ(printed(disp_half_spacer), kHalfSpacer);
}

}  // namespace
}  // namespace mediasplit
